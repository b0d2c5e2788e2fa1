#include "foundation/platform/PrivateFolder.h"

#include "foundation/platform/AbandonedFolders.h"
#include "foundation/platform/Files.h"
#include "foundation/platform/Shared.h"

#include <filesystem>
#include <fstream>
#include <utility>

namespace kx::platform {

namespace {

namespace fs = std::filesystem;

constexpr const char16_t* kKept = u".kept"; // a file in a folder that is not ours to remove any more

// What cannot be removed stays, for nobody else to read. A call may be interrupted, or lack a handle that is
// free a moment later.
void RemoveAll(const fs::path& path) {
  constexpr int tries = 2;
  std::error_code error;
  for (int i = 0; i < tries && (i == 0 || error); ++i)
    fs::remove_all(path, error);
}

} // namespace

PrivateFolder::PrivateFolder(PrivateFolder&& other) noexcept
    : path_(std::exchange(other.path_, {})), life_(std::move(other.life_)) {}

PrivateFolder& PrivateFolder::operator=(PrivateFolder&& other) noexcept {
  std::swap(path_, other.path_);
  std::swap(life_, other.life_);
  return *this;
}

PrivateFolder::~PrivateFolder() {
  life_.reset();
  if (!path_.empty()) RemoveAll(path_);
}

void PrivateFolder::Keep() {
  const std::ofstream mark(fs::path(path_) / kKept);
  path_.clear();
}

void PrivateFolder::RemoveAbandoned() {
  std::error_code error;
  fs::directory_iterator entry(fs::path(TemporaryDirectory()), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (!kPrivateFolders.Has(entry->path().filename().string())) continue;
    std::error_code ignored;
    if (IsAbandonedFolder(entry->path()) && !fs::exists(entry->path() / kKept, ignored))
      RemoveAll(entry->path());
  }
}

} // namespace kx::platform
