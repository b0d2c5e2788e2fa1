#include "foundation/platform/Sockets.h"

namespace kx::platform {

// A program gets those handles only that its start names.
void KeepFromChildren(std::intptr_t /*socket*/) noexcept {}

} // namespace kx::platform
