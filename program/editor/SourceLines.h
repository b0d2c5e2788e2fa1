// Some lines of a file that a message names.
#pragma once

#include "contract/Process.h"

#include <string>
#include <string_view>
#include <vector>

namespace kx::editor {

struct TSourceLines {
  std::u16string File;
  int Line = 0;  // the one that was named, from 1
  int First = 0; // of those shown
  std::vector<std::u16string> Lines = {};
};

// The line and some around it, without control characters. However long the file is, only these are kept.
// Ends soon after `stop` is raised. Raises EKxException.
TSourceLines ReadSourceLines(std::u16string_view file, int line, const TKxEvent& stop);

} // namespace kx::editor
