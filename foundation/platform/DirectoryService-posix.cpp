#include "foundation/platform/DirectoryService.h"

namespace kx::platform {

std::optional<DirectoryObject> ReadDirectoryObject(std::u16string_view /*path*/) {
  return std::nullopt;
}

} // namespace kx::platform
