// The lock of every file that is read, changed and written back: options store, build projects.
#pragma once

#include "foundation/platform/FileLock.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace kx {

// How long somebody waits for others who are saving.
struct TSavePatience {
  std::chrono::milliseconds Longest = std::chrono::seconds(30);
  std::function<void(const std::u16string& message)> Say = {}; // once, when it takes longer than usual
  std::function<bool()> GoesOn = {};                           // False gives up
};

// Failures name the file and whoever holds it.
platform::Result<platform::FileLock> LockForSaving(std::u16string_view file, const TSavePatience& patience);

} // namespace kx
