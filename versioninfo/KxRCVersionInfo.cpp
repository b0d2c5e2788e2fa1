#include "versioninfo/KxRCVersionInfo.h"

#include "host/Exceptions.h"
#include "host/FileUpdates.h"
#include "host/Utilities.h"
#include "platform/TextFiles.h"
#include "text/Text.h"
#include "text/WindowsPath.h"
#include "versioninfo/VersionBlock.h"

namespace kx {

namespace {

class TKxRCVersionInfoParser : public IKxVersionInfoParser {
public:
  explicit TKxRCVersionInfoParser(std::u16string_view fileName) : fileName_(fileName) {}
  void SetCallback(std::shared_ptr<IKxVersionInfoCallback> callback) override {
    callback_ = std::move(callback);
  }
  const text::TStringList& GetWarnings() const override { return warnings_; }

  bool Parse() override {
    ReadVersionBlock(Load(), fileName_, *callback_);
    return false;
  }

  bool Save(const IVersionInformation& info) override {
    warnings_.Clear();
    const text::TStringList lines = Load();
    // The script must be stamped where it stands, even if nothing can be added beside it.
    static_cast<void>(FileUpdates().CopyIfMissing(fileName_, fileName_ + u".orig"));
    const text::TStringList rewritten = RewriteVersionBlock(lines, fileName_, info);
    const platform::LossyText text = platform::ToAnsiLossy(rewritten.GetText());
    if (const auto written = FileUpdates().Replace(fileName_, text.Bytes); !written)
      throw EKxException(written.Message());
    Warn(rewritten, text.Lost);
    return true;
  }

private:
  text::TStringList Load() const {
    const auto bytes = FileUpdates().Read(fileName_);
    if (!bytes) throw EKxException(bytes.Message());
    text::TStringList lines;
    lines.SetText(platform::DecodeTextFile(*bytes));
    return lines;
  }

  void Warn(const text::TStringList& rewritten, std::size_t lost) {
    const std::u16string folder = text::ExtractFileDir(fileName_);
    const auto readInclude = [&folder](std::u16string_view name) -> std::optional<std::u16string> {
      auto content = platform::ReadTextFile(TPathUtils::ExpandRelativePath(name, folder));
      return content ? std::optional(*std::move(content)) : std::nullopt;
    };
    if (!DefinesVersionName(rewritten, readInclude))
      warnings_.Add(u"Warning : " + fileName_ +
                    u" includes no header that defines VS_VERSION_INFO before its version block, so Windows "
                    u"will not see the version: include winver.h.");
    if (lost != 0)
      warnings_.Add(
          u"Warning : " + text::FromInteger(static_cast<std::int64_t>(lost)) +
          (lost == 1 ? u" character of " : u" characters of ") + fileName_ +
          u" cannot be written in the ANSI code page and became \"?\"; the script as it was is kept "
          u"in " +
          text::ExtractFileName(fileName_) + u".orig.");
  }

  std::u16string fileName_;
  std::shared_ptr<IKxVersionInfoCallback> callback_;
  text::TStringList warnings_;
};

} // namespace

std::shared_ptr<IKxVersionInfoParser> GetVersionInfoParser(std::shared_ptr<IKxVersionInfoCallback> callback,
                                                           std::u16string_view fileName) {
  auto parser = std::make_shared<TKxRCVersionInfoParser>(fileName);
  parser->SetCallback(std::move(callback));
  return parser;
}

} // namespace kx
