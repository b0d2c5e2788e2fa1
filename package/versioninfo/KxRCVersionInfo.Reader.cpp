#include "foundation/formats/RegEx.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "package/versioninfo/VersionBlock.h"

#include <array>

namespace kx {

namespace {

bool Contains(std::u16string_view line, std::u16string_view word) {
  return text::FindIgnoreCase(line, word) != std::u16string_view::npos;
}

int HexDigit(char16_t c) {
  if (text::IsDigit(c)) return c - u'0';
  const char16_t lower = text::FoldCase(c);
  if (lower >= u'a' && lower <= u'f') return lower - u'a' + 10;
  return lower >= u'A' && lower <= u'F' ? lower - u'A' + 10 : -1;
}

std::int32_t HexNumber(std::u16string_view digits) {
  std::int32_t number = 0;
  for (const char16_t c : digits) {
    if (HexDigit(c) < 0) return 0;
    number = number * 16 + HexDigit(c);
  }
  return number;
}

// Resource editors write flags as two hexadecimal digits; nothing else is understood.
std::int32_t TwoHexDigits(std::u16string_view line, std::size_t keywordLength) {
  const std::u16string_view value = text::Trim(text::Trim(line).substr(keywordLength));
  return value.size() < 3 ? 0 : HexNumber(value.substr(2, 2));
}

class TVersionBlockReader {
public:
  TVersionBlockReader(const text::TStringList& lines, std::u16string_view file,
                      IKxVersionInfoCallback& callback)
      : lines_(lines), file_(file), callback_(callback) {}

  void Run() {
    while (index_ < lines_.Count() && !OpensVersionBlock(lines_[index_]))
      ++index_;
    for (++index_; index_ < lines_.Count() && !ended_; ++index_)
      ReadStatement(text::Trim(lines_[index_]));
  }

private:
  struct TStatement {
    std::u16string_view Keyword;
    unsigned Needs;
    void (TVersionBlockReader::*Read)();
  };

  // By prefix, so a keyword stands before its own beginnings.
  void ReadStatement(std::u16string_view line) {
    static constexpr std::array<TStatement, 10> statements{{
        {u"FILEVERSION", HeaderToken, &TVersionBlockReader::ReadFileVersion},
        {u"PRODUCTVERSION", 0, nullptr},
        {u"FILEFLAGSMASK", HeaderToken, nullptr},
        {u"FILEFLAGS", HeaderToken, &TVersionBlockReader::ReadFileFlags},
        {u"FILEOS", HeaderToken, nullptr},
        {u"FILETYPE", HeaderToken, &TVersionBlockReader::ReadFileType},
        {u"FILESUBTYPE", HeaderToken, nullptr},
        {u"BEGIN", BeginToken, &TVersionBlockReader::ReadBegin},
        {u"END", EndToken, &TVersionBlockReader::ReadEnd},
        {u"BLOCK", 0, &TVersionBlockReader::ReadBlock},
    }};
    for (const auto& statement : statements) {
      if (!text::StartsWithIgnoreCase(line, statement.Keyword)) continue;
      if (statement.Needs != 0) Require(allowed_, statement.Needs, statement.Keyword);
      if (statement.Read != nullptr) (this->*statement.Read)();
      return;
    }
  }

  void Require(unsigned allowed, unsigned needed, std::u16string_view keyword) const {
    RequireToken(allowed, needed, keyword, file_, index_);
  }
  [[noreturn]] void Fail(std::u16string message) const {
    throw EKxParseError(std::move(message), file_, static_cast<int>(index_) + 1);
  }

  void ReadFileVersion() {
    static const auto expression = RegEx::NewRegularExpression(
        u"FILEVERSION\\s*(-?\\d+)\\,(-?\\d+)\\,(-?\\d+)\\,(-?\\d+)|FILEVERSION\\s*(\\w*)",
        TRegExOptions::IgnoreCase);
    const TRegExMatch match = expression->Match(lines_[index_]);
    if (!match) Fail(u"Unable to parse file : could not match FILEVERSION field.");
    callback_.SetMajorVersion(text::ToIntegerOr(match.GetItem(1), 0));
    callback_.SetMinorVersion(text::ToIntegerOr(match.GetItem(2), 0));
    callback_.SetReleaseVersion(text::ToIntegerOr(match.GetItem(3), 0));
    callback_.SetBuildVersion(text::ToIntegerOr(match.GetItem(4), 0));
  }

  void ReadFileFlags() {
    const std::int32_t flags = TwoHexDigits(lines_[index_], 9);
    callback_.SetDebugBuild((flags & 0x01) != 0);
    callback_.SetPreReleaseBuild((flags & 0x02) != 0);
    callback_.SetSpecialBuild((flags & 0x20) != 0);
    callback_.SetPrivateBuild((flags & 0x08) != 0);
  }

  void ReadFileType() { callback_.SetDLL(TwoHexDigits(lines_[index_], 8) != 0); }
  void ReadBegin() { allowed_ = BlockToken | EndToken; }
  void ReadEnd() { ended_ = true; }

  void ReadBlock() {
    const std::u16string& line = lines_[index_++];
    if (Contains(line, u"\"STRINGFILEINFO\"")) {
      ReadStrings();
    } else if (Contains(line, u"\"VARFILEINFO\"")) {
      ReadTranslation();
    }
    allowed_ = EndToken;
  }

  void ReadStrings() {
    text::TStringList values;
    std::u16string all; // the text of the values
    unsigned allowed = BeginToken;
    for (int depth = 0; index_ < lines_.Count(); ++index_) {
      const std::u16string_view line = text::Trim(lines_[index_]);
      if (text::StartsWithIgnoreCase(line, u"BEGIN")) {
        Require(allowed, BeginToken, u"BEGIN");
        ++depth;
        allowed = BlockToken | EndToken | ValueToken;
      } else if (text::StartsWithIgnoreCase(line, u"BLOCK")) {
        Require(allowed, BlockToken, u"BLOCK");
        allowed = BeginToken;
      } else if (text::StartsWithIgnoreCase(line, u"END")) {
        Require(allowed, EndToken, u"END");
        if (--depth == 0) return;
        allowed = BlockToken | EndToken;
      } else if (Contains(line, u"VALUE")) {
        ReadValues(values);
        all = values.GetText();
        allowed = EndToken | ValueToken;
      }
      callback_.SetStringValues(all);
    }
  }

  // Leaves the index on the last line that it took, if it took any.
  void ReadValues(text::TStringList& values) {
    static const auto expression = RegEx::NewRegularExpression(
        u"\\s*VALUE\\s*\"(.*)\"\\s*?,\\s*?\"(.*?)(?:\\\\0)?\"|\\s*VALUE\\s*\"(.*)\"\\s*?,\\s*(\\w*)",
        TRegExOptions::IgnoreCase | TRegExOptions::MultiLine);
    const std::size_t first = index_;
    for (; index_ < lines_.Count(); ++index_) {
      const TRegExMatch match = expression->Match(lines_[index_]);
      if (!match) break;
      const std::u16string_view name = match.HasItem(1) ? match.GetItem(1) : match.GetItem(3);
      values.Add(std::u16string(name) + u"=" + std::u16string(match.GetItem(2)));
    }
    if (index_ > first) --index_;
  }

  void ReadTranslation() {
    static const auto expression =
        RegEx::NewRegularExpression(u"VALUE\\s\"Translation\".*?((?:0x)?[a-f0-9]{1,4}).*?(\\d{1,4})");
    if (allLines_.empty()) allLines_ = lines_.GetText();
    const TRegExMatch match = expression->Match(allLines_);
    if (!match) Fail(u"Unable to parse file");
    const std::u16string_view locale = match.GetItem(1);
    callback_.SetLocale(locale.starts_with(u"0x") ? HexNumber(locale.substr(2))
                                                  : text::ToIntegerOr(locale, 0));
    callback_.SetCodePage(text::ToIntegerOr(match.GetItem(2), 0));
  }

  const text::TStringList& lines_;
  std::u16string file_;
  IKxVersionInfoCallback& callback_;
  std::u16string allLines_; // once they are needed
  std::size_t index_ = 0;
  unsigned allowed_ = HeaderToken | BeginToken;
  bool ended_ = false;
};

} // namespace

bool OpensVersionBlock(std::u16string_view line) {
  return line.find(u"VERSIONINFO") != std::u16string_view::npos &&
         line.find(u'"') == std::u16string_view::npos;
}

void RequireToken(unsigned allowed, unsigned needed, std::u16string_view keyword, const std::u16string& file,
                  std::size_t index) {
  if ((allowed & needed) == 0)
    throw EKxParseError(u"Unexpected " + std::u16string(keyword), file, static_cast<int>(index) + 1);
}

void ReadVersionBlock(const text::TStringList& lines, const std::u16string& file,
                      IKxVersionInfoCallback& callback) {
  TVersionBlockReader(lines, file, callback).Run();
}

} // namespace kx
