// The system's directory service (COM's "IIS://" names), for the folders that a web server publishes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kx::platform {

struct DirectoryObject {
  std::u16string Class; // "IIsWebVirtualDir", ...
  std::u16string Path;  // the physical folder; empty for classes without one
};

// Nothing when there is no such object, or no such service on this system.
std::optional<DirectoryObject> ReadDirectoryObject(std::u16string_view path);

} // namespace kx::platform
