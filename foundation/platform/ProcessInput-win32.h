// The two ends of a pipe into a program.
#pragma once

#include "foundation/platform/ProcessInput.h"
#include "foundation/platform/Win32.h"

namespace kx::platform {

struct ProcessInput::Pipe {
  win32::Handle Read; // to be inherited by the program
  win32::Handle Write;
};

} // namespace kx::platform
