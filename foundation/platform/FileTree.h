// All files below a folder, with what tells whether they have changed.
#pragma once

#include "foundation/platform/Result.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx::platform {

struct FileStamp {
  std::u16string Path; // full
  std::uint64_t Size = 0;
  std::chrono::system_clock::time_point Changed; // as exactly as the file system tells
};

// The files below an existing folder, at any depth, sorted by path. Links to folders are not followed;
// folders that bear one of the names (letter case ignored) are left out. What cannot be looked into fails it.
Result<std::vector<FileStamp>> ListFileTree(std::u16string_view folder,
                                            std::span<const std::u16string_view> without);
// Of one file; fails where there is none.
Result<FileStamp> StampOfFile(std::u16string_view path);

} // namespace kx::platform
