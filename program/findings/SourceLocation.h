// Where a tool says that a problem is.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kx {

struct TSourceLocation {
  std::u16string
      File;     // as the tool wrote it, or below the folder of the project that MSBuild names behind the text
  int Line = 0; // from 1; 0 when the tool named only the file
  int Column = 0; // from 1; 0 when unknown
  std::u16string
      Rest; // what stands behind the location and its colon: "error CS0103: ...", without that project
};

// The form that Visual Studio and MSBuild give to the messages of their tools, "file(line,column): error
// CODE: text", with an optional "12>" of a parallel build before it (MSBuild documentation, "canonical error
// format"). A range
// ("(3,5-3,9)", "(3,5,3,9)") starts at its first position. Nothing when a line has no location.
std::optional<TSourceLocation> FindSourceLocation(std::u16string_view line);

} // namespace kx
