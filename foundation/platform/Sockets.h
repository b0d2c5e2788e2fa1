// What the library for connections leaves to the system.
#pragma once

#include <cstdint>

namespace kx::platform {

// A program that is started from now on does not take over this socket.
void KeepFromChildren(std::intptr_t socket) noexcept;

} // namespace kx::platform
