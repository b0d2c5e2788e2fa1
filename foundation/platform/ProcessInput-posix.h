// The two ends of a pipe into a program.
#pragma once

#include "foundation/platform/Posix.h"
#include "foundation/platform/ProcessInput.h"

namespace kx::platform {

struct ProcessInput::Pipe {
  posix::Descriptor Read{};
  posix::Descriptor Write{};
};

} // namespace kx::platform
