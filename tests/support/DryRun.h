#pragma once

#include "contract/FileUpdates.h"
#include "contract/Services.h"

namespace kx::tests {

// As long as it lives, the services are those of a dry run, which writes nothing.
class TFakeDryRun : public IKxFileUpdates {
public:
  TFakeDryRun() {
    TKxServices services = before_;
    services.Files = this;
    SetServices(services);
  }
  ~TFakeDryRun() override { SetServices(before_); }
  platform::Result<std::string> Read(std::u16string_view /*file*/) override { return std::string("x"); }
  platform::Status Replace(std::u16string_view, std::string_view) override { return platform::Done{}; }
  platform::Status CopyIfMissing(std::u16string_view, std::u16string_view) override {
    return platform::Done{};
  }
  bool IsDryRun() const override { return true; }

private:
  TKxServices before_ = CurrentServices();
};

} // namespace kx::tests
