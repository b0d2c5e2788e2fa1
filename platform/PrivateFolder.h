// A folder that only this user gets into.
#pragma once

#include "platform/Result.h"

#include <string>

namespace kx::platform {

// A new folder in the temporary one, under a name that nobody can foresee: what is put into it has the name
// it is given, is nobody else's file and follows nobody's link. It goes away with this object, and all that
// is in it; links in it are removed, not followed. (On Windows the temporary folder is the user's own
// already.)
class PrivateFolder {
public:
  static Result<PrivateFolder> Create();
  PrivateFolder(PrivateFolder&& other) noexcept;
  PrivateFolder& operator=(PrivateFolder&& other) noexcept;
  ~PrivateFolder();

  const std::u16string& Path() const { return path_; }

private:
  explicit PrivateFolder(std::u16string path) : path_(std::move(path)) {}

  std::u16string path_; // empty once it was moved away
};

} // namespace kx::platform
