#include "contract/FileUpdates.h"

#include "contract/Services.h"
#include "foundation/platform/Files.h"

namespace kx {

namespace {

class TFileUpdates : public IKxFileUpdates {
public:
  platform::Result<std::string> Read(std::u16string_view path) override { return platform::ReadFile(path); }

  platform::Status Replace(std::u16string_view path, std::string_view bytes) override {
    return platform::SaveFile(path, bytes);
  }

  platform::Status CopyIfMissing(std::u16string_view path, std::u16string_view copy) override {
    const auto made = platform::CopyToNewFile(path, copy);
    if (!made) return platform::Failure{made.Message()};
    return platform::Done{};
  }

  bool IsDryRun() const override { return false; }
};

} // namespace

IKxFileUpdates& FileUpdates() {
  static TFileUpdates files;
  IKxFileUpdates* const offered = CurrentServices().Files;
  return offered != nullptr ? *offered : files;
}

} // namespace kx
