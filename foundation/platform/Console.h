// The user's terminal: UTF-8 text out, and what can be shown there.
#pragma once

#include "foundation/platform/Result.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kx::platform {

enum class ConsoleStream { Output, Error };

// One that obeys escape sequences, as consoles before Windows 10 do not.
bool IsTerminal(ConsoleStream stream);
struct TerminalSize {
  int Columns = 80; // when it is unknown
  int Rows = 24;
};
TerminalSize SizeOfTerminal(ConsoleStream stream);
// Writes everything or gives up; silently when nobody reads any more, else WriteFailure tells. A console of
// Windows gets UTF-16, so that its code page does not matter; pipes and files get the bytes.
void WriteConsole(ConsoleStream stream, std::string_view utf8);
// The system's reason for the latest writing that failed (a full disk); empty when there was none. A reader
// that has left is no failure: it has what it wanted.
std::u16string WriteFailure(ConsoleStream stream);

// Whether a person types what is read.
bool IsInputTerminal();
// A line from the terminal, in UTF-8, which shows the prompt (on standard error) but not what is typed.
// Nothing when the user gives up with Ctrl-C or Ctrl-D, and without a terminal.
std::optional<std::string> AskForSecret(std::string_view prompt);
// All that standard input still holds; a failure when that is more than `most` bytes.
Result<std::string> ReadStandardInput(std::size_t most);

// From now on writing to a pipe that nobody reads any more fails instead of ending the program, which may
// have a tool to look after. Programs started later are not affected.
void IgnoreBrokenPipes();

// The arguments of main as UTF-16, however the system hands them over.
std::vector<std::u16string> CommandLineArguments(int argc, char** argv);

} // namespace kx::platform
