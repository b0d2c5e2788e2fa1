// Every change that an action makes to a file of the user's own goes through here, so that a dry run can show
// the difference instead of making it.
#pragma once

#include "foundation/platform/Result.h"

#include <string>
#include <string_view>

namespace kx {

// Failures name the file and the system's reason.
class IKxFileUpdates {
public:
  virtual ~IKxFileUpdates() = default;

  // The file's bytes as they are after the changes so far: a dry run gives back what it was told to write.
  virtual platform::Result<std::string> Read(std::u16string_view path) = 0;
  // The old content or the new one stands, whatever happens (platform::SaveFile).
  virtual platform::Status Replace(std::u16string_view path, std::string_view bytes) = 0;
  // Nothing happens when `copy` is there already. The copy, too, is whole or missing.
  virtual platform::Status CopyIfMissing(std::u16string_view path, std::u16string_view copy) = 0;
  // Somebody else has put a new file there (a download, under a name used before): what a dry run keeps for
  // the path is void from now on.
  virtual void Forget(std::u16string_view /*path*/) {}
  // Then nothing may leave the machine either.
  virtual bool IsDryRun() const = 0;
};

// Those of the host (TKxServices), else the files themselves.
IKxFileUpdates& FileUpdates();

} // namespace kx
