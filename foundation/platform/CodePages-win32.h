// The output of tools, in the code pages of this machine.
#pragma once

#include "foundation/text/Encoding.h"

#include <string>
#include <string_view>

namespace kx::platform::win32 {

// Decodes the output lines of one tool: a line of well-formed UTF-8 is that, any other is in the console's or
// in the ANSI page, whichever gives more letters in all such lines so far. One object a stream and run.
class MachineOutputDecoder {
public:
  MachineOutputDecoder();
  std::u16string Decode(std::string_view line);

private:
  unsigned console_;
  unsigned ansi_;
  std::size_t consoleLetters_ = 0;
  std::size_t ansiLetters_ = 0;
  text::ToolOutputDecoder westEuropean_;
};

} // namespace kx::platform::win32
