// A folder that only this user gets into.
#pragma once

#include "foundation/platform/Result.h"

#include <filesystem>
#include <memory>
#include <string>

namespace kx::platform {

// A new folder in the temporary one, under a name that nobody can foresee: what is put into it has the name
// it is given, is nobody else's file and follows nobody's link. It goes away with this object, and all that
// is in it; links in it are removed, not followed. (On Windows the temporary folder is the user's own
// already.)
class PrivateFolder {
public:
  static Result<PrivateFolder> Create();
  // Removes the folders that this user's killed programs have left. Those of living ones stay, and what was
  // to be kept.
  static void RemoveAbandoned();

  PrivateFolder(PrivateFolder&& other) noexcept;
  PrivateFolder& operator=(PrivateFolder&& other) noexcept;
  ~PrivateFolder();

  const std::u16string& Path() const { return path_; }
  // It stays when this object goes, for somebody to look at what is in it.
  void Keep();

private:
  PrivateFolder(std::u16string path, std::shared_ptr<void> life)
      : path_(std::move(path)), native_(path_), life_(std::move(life)) {}

  std::u16string path_;          // empty once it was moved away or kept
  std::filesystem::path native_; // the same, for its removal, which may find no memory
  std::shared_ptr<void> life_;   // by it others see that its owner lives
};

} // namespace kx::platform
