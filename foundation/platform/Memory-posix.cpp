#include "foundation/platform/Memory.h"

#include <malloc.h>

namespace kx::platform {

// Setting one of them ends the library's own adjusting, so all are set.
void KeepFreedMemory() {
  constexpr int megabyte = 1 << 20;
  mallopt(M_TRIM_THRESHOLD, 32 * megabyte);
  mallopt(M_TOP_PAD, megabyte);
  mallopt(M_MMAP_THRESHOLD, 4 * megabyte);
}

} // namespace kx::platform
