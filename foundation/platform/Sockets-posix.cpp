#include "foundation/platform/Sockets.h"

#include <fcntl.h>

namespace kx::platform {

void KeepFromChildren(std::intptr_t socket) noexcept {
  static_cast<void>(fcntl(static_cast<int>(socket), F_SETFD, FD_CLOEXEC));
}

} // namespace kx::platform
