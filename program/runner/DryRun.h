// What stands in for processes and changed files while a run only shows what it would do.
#pragma once

#include "contract/FileUpdates.h"
#include "contract/Process.h"
#include "foundation/text/Text.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace kx {

// Receives what would have been done, as messages for the log.
using TDryRunMessages = std::function<void(std::u16string_view text)>;

// Shows each change of a file as a unified difference and keeps it for later reads. A file that could not be
// written fails as it would.
class TDryRunFiles : public IKxFileUpdates {
public:
  explicit TDryRunFiles(TDryRunMessages messages) : messages_(std::move(messages)) {}

  platform::Result<std::string> Read(std::u16string_view path) override;
  platform::Status Replace(std::u16string_view path, std::string_view bytes) override;
  platform::Status CopyIfMissing(std::u16string_view path, std::u16string_view copy) override;
  void Forget(std::u16string_view path) override;
  bool IsDryRun() const override { return true; }

private:
  TDryRunMessages messages_;
  std::map<std::u16string, std::string, text::IgnoreCaseLess> changed_; // by full path
};

// A process that is not started and succeeds without a word of its own.
std::shared_ptr<IKxProcess> NewDryRunProcess(TDryRunMessages messages);

// The difference for people: the lines that change, and what changes beside them (line ends, encoding).
std::u16string DescribeChange(std::u16string_view path, std::string_view before, std::string_view after);

} // namespace kx
