#include "program/runner/DryRun.h"

#include "foundation/platform/Files.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/UnifiedDiff.h"
#include "foundation/text/WindowsPath.h"

namespace kx {

namespace {

class TDryRunProcess : public IKxProcess {
public:
  explicit TDryRunProcess(TDryRunMessages messages) : messages_(std::move(messages)) {}
  TKxProcessSettings& Settings() override { return settings_; }
  void Run() override {
    messages_(u"Dry run : this would start " + settings_.Executable + u" " + settings_.Parameters);
  }
  int GetExitCode() const override { return 0; }

private:
  TDryRunMessages messages_;
  TKxProcessSettings settings_;
};

std::u16string LineEndsOf(std::u16string_view text) {
  const auto lines = text::SplitLines(text);
  std::u16string found;
  for (const auto line : lines) {
    const std::u16string_view behind =
        text.substr(static_cast<std::size_t>(line.data() + line.size() - text.data()));
    const std::u16string_view end = behind.starts_with(u"\r\n") ? u"CR LF"
                                    : behind.starts_with(u'\n') ? u"LF"
                                    : behind.starts_with(u'\r') ? u"CR"
                                                                : u"";
    if (!end.empty() && !found.empty() && found != end) return u"mixed";
    if (!end.empty()) found = end;
  }
  return found;
}

} // namespace

std::u16string DescribeChange(std::u16string_view path, std::string_view before, std::string_view after) {
  const std::u16string oldText = platform::DecodeUtf8OrAnsi(before);
  const std::u16string newText = platform::DecodeUtf8OrAnsi(after);
  std::u16string message =
      u"Dry run : this would change\r\n--- " + std::u16string(path) + u"\r\n+++ " + std::u16string(path);
  const auto lines = text::UnifiedDiff(oldText, newText);
  for (const auto& line : lines)
    message += u"\r\n" + line;
  const std::u16string oldEnds = LineEndsOf(oldText);
  const std::u16string newEnds = LineEndsOf(newText);
  if (oldEnds != newEnds && !oldEnds.empty())
    message += u"\r\n\\ Line ends: " + oldEnds + u" becomes " + newEnds;
  else if (lines.empty())
    message += u"\r\n\\ Only the bytes differ: encoding, byte-order mark or the last line end";
  return message;
}

platform::Result<std::string> TDryRunFiles::Read(std::u16string_view path) {
  const auto found = changed_.find(text::ExpandPath(path, platform::CurrentDirectory()));
  if (found != changed_.end()) return found->second;
  return platform::ReadFile(path);
}

platform::Status TDryRunFiles::Replace(std::u16string_view path, std::string_view bytes) {
  platform::Status allowed = platform::CheckSaveFile(path);
  if (!allowed) return allowed;
  std::string before;
  if (platform::FileExists(path)) {
    auto old = Read(path);
    if (!old) return platform::Failure{old.Message()};
    before = *std::move(old);
  }
  if (before != bytes) messages_(DescribeChange(path, before, bytes));
  changed_.insert_or_assign(text::ExpandPath(path, platform::CurrentDirectory()), std::string(bytes));
  return platform::Done{};
}

platform::Status TDryRunFiles::CopyIfMissing(std::u16string_view path, std::u16string_view copy) {
  if (!platform::FileExists(copy))
    messages_(u"Dry run : " + std::u16string(path) + u" would be copied to " + std::u16string(copy));
  return platform::Done{};
}

void TDryRunFiles::Forget(std::u16string_view path) {
  changed_.erase(text::ExpandPath(path, platform::CurrentDirectory()));
}

std::shared_ptr<IKxProcess> NewDryRunProcess(TDryRunMessages messages) {
  return std::make_shared<TDryRunProcess>(std::move(messages));
}

} // namespace kx
