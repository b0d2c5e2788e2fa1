#include "platform/PrivateFolder.h"

#include <filesystem>
#include <utility>

namespace kx::platform {

PrivateFolder::PrivateFolder(PrivateFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}

PrivateFolder& PrivateFolder::operator=(PrivateFolder&& other) noexcept {
  std::swap(path_, other.path_);
  return *this;
}

PrivateFolder::~PrivateFolder() {
  if (path_.empty()) return;
  std::error_code error; // what cannot be removed stays, for nobody else to read
  std::filesystem::remove_all(std::filesystem::path(path_), error);
}

} // namespace kx::platform
