#include "foundation/platform/Memory.h"

namespace kx::platform {

void KeepFreedMemory() {} // the heap of Windows does so by itself

} // namespace kx::platform
