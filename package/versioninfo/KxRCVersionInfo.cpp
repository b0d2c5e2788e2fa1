#include "package/versioninfo/KxRCVersionInfo.h"

#include "contract/FileUpdates.h"
#include "contract/Utilities.h"
#include "foundation/platform/TextFiles.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/versioninfo/VersionBlock.h"

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
    ReadVersionBlock(Load().Lines, fileName_, *callback_);
    return false;
  }

  text::TStringList FindLosses(const IVersionInformation& info) override {
    const TScript script = Load();
    text::TStringList warnings;
    for (const auto& loss : kx::FindLosses(script.Lines, fileName_, info))
      warnings.Add(u"Warning : " + fileName_ + u": stamping " + loss +
                   u". The script as it is now is kept in " + text::ExtractFileName(CopyOf(script)) + u".");
    if (script.SaysUtf8 && !script.IsUtf8)
      warnings.Add(u"Warning : " + fileName_ +
                   u" is not in UTF-8, though its pragma code_page(65001) says so: it is written in the ANSI "
                   u"code page. Save it as UTF-8.");
    return warnings;
  }

  bool Save(const IVersionInformation& info) override {
    warnings_.Clear();
    const TScript script = Load();
    const text::TStringList rewritten = RewriteVersionBlock(script.Lines, fileName_, info);
    const std::u16string newText = rewritten.GetText();
    const platform::LossyText text = script.IsUtf8
                                         ? platform::LossyText{.Bytes = script.Mark + text::ToUtf8(newText)}
                                         : platform::ToAnsiLossy(newText);
    const bool loses = text.Lost != 0 || !kx::FindLosses(script.Lines, fileName_, info).IsEmpty();
    const std::u16string copy = loses ? CopyOf(script) : fileName_ + u".orig";
    // The script must be stamped where it stands, even if nothing can be added beside it: unless the copy is
    // what the user is told to find the losses in.
    const auto kept = FileUpdates().CopyIfMissing(fileName_, copy);
    if (!kept && loses) throw EKxException(kept.Message());
    if (const auto written = FileUpdates().Replace(fileName_, text.Bytes); !written)
      throw EKxException(written.Message());
    Warn(rewritten, text.Lost, text::ExtractFileName(copy));
    if (!kept) warnings_.Add(u"Warning : the script as it was is not kept: " + kept.Message());
    return true;
  }

private:
  struct TScript {
    std::string Bytes;
    text::TStringList Lines;
    bool SaysUtf8 = false; // by a pragma
    bool IsUtf8 = false;   // and is that, so that it stays
    std::string Mark;      // the byte-order mark that stays too
  };

  TScript Load() const {
    auto bytes = FileUpdates().Read(fileName_);
    if (!bytes) throw EKxException(bytes.Message());
    TScript script{.Bytes = *std::move(bytes), .Lines = {}, .Mark = {}};
    script.Lines.SetText(platform::DecodeTextFile(script.Bytes));
    script.SaysUtf8 = CodePageOfVersionBlock(script.Lines) == Utf8Page;
    if (!script.SaysUtf8) return script;
    const auto mark = text::DetectByteOrderMark(script.Bytes);
    const std::string_view body = std::string_view(script.Bytes).substr(text::LengthOf(mark));
    const bool wide = mark >= text::ByteOrderMark::Utf16LE;
    script.IsUtf8 = wide || text::IsValidUtf8(body);
    if (!script.IsUtf8 || wide) return script;
    script.Lines.SetText(text::FromUtf8(body));
    script.Mark = script.Bytes.substr(0, text::LengthOf(mark));
    return script;
  }

  // Where the script as it is now is kept, or can be: the first copy that is missing or the same.
  std::u16string CopyOf(const TScript& script) const {
    for (int number = 1;; ++number) {
      std::u16string copy = fileName_ + u".orig";
      if (number > 1) copy += text::FromInteger(number);
      const auto bytes = FileUpdates().Read(copy);
      if (!bytes || *bytes == script.Bytes || number == MostCopies) return copy;
    }
  }

  void Warn(const text::TStringList& rewritten, std::size_t lost, const std::u16string& copy) {
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
          u" cannot be written in the ANSI code page and became \"?\"; the script as it was is kept in " +
          copy + u".");
  }

  static constexpr unsigned Utf8Page = 65001;
  static constexpr int MostCopies = 1000;

  std::u16string fileName_;
  std::shared_ptr<IKxVersionInfoCallback> callback_;
  text::TStringList warnings_;
};

} // namespace

std::optional<std::u16string> WhereRefused(const std::exception& error) {
  const auto* refused = dynamic_cast<const EKxParseError*>(&error);
  if (refused == nullptr || refused->File().empty()) return std::nullopt;
  return u"Warning : " + refused->File() + u" is not stamped: line " + text::FromInteger(refused->Line()) +
         u" does not fit into a version block as resource editors write it, one statement a line, BEGIN and "
         u"END "
         u"on lines of their own.";
}

std::shared_ptr<IKxVersionInfoParser> GetVersionInfoParser(std::shared_ptr<IKxVersionInfoCallback> callback,
                                                           std::u16string_view fileName) {
  auto parser = std::make_shared<TKxRCVersionInfoParser>(fileName);
  parser->SetCallback(std::move(callback));
  return parser;
}

} // namespace kx
