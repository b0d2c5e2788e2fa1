// What a run runs on and with, as far as it can be told without asking another program.
#pragma once

#include "program/runner/Results.h"

#include <string>
#include <string_view>

namespace kx {

struct TWorkingCopy {
  std::u16string Commit = {}; // in hexadecimal digits
  std::u16string Branch = {}; // empty for a commit that was checked out by itself
};

// Of the Git working copy that the folder lies in, read from Git's own files; empty outside of one and where
// they say nothing.
TWorkingCopy ReadWorkingCopy(std::u16string_view folder);

// Machine, system and working copy; the caller knows the rest.
TRunSurroundings SurroundingsOf(std::u16string_view folder);

} // namespace kx
