#include "foundation/platform/PrivateFolder.h"

#include "foundation/platform/Shared.h"

#include <fstream>
#include <utility>

namespace kx::platform {

PrivateFolder::PrivateFolder(PrivateFolder&& other) noexcept
    : path_(std::exchange(other.path_, {})), native_(std::move(other.native_)),
      life_(std::move(other.life_)) {}

PrivateFolder& PrivateFolder::operator=(PrivateFolder&& other) noexcept {
  std::swap(path_, other.path_);
  std::swap(native_, other.native_);
  std::swap(life_, other.life_);
  return *this;
}

PrivateFolder::~PrivateFolder() {
  life_.reset();
  if (!path_.empty()) RemoveTree(native_);
}

void PrivateFolder::Keep() {
  const std::ofstream mark(native_ / kKept);
  path_.clear();
}

} // namespace kx::platform
