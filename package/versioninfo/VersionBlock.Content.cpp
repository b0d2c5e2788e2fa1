// A version block as a resource compiler understands it, for telling what rewriting loses.
#include "package/versioninfo/VersionBlock.h"
#include "foundation/text/Text.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>
#include <vector>

namespace kx {

namespace {

enum class TTokenKind : std::uint8_t { Word, Number, String, Mark };

struct TToken {
  TTokenKind Kind = TTokenKind::Mark;
  std::u16string Text;
  std::size_t Line = 0;
};

bool IsWordCharacter(char16_t c) {
  return c == u'_' || c >= 0x80 || text::IsDigit(c) || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

// The constants of the headers that scripts use for these numbers
// (https://learn.microsoft.com/windows/win32/menurc/versioninfo-resource).
constexpr std::pair<std::u16string_view, std::int64_t> Constants[] = {
    {u"VS_FFI_FILEFLAGSMASK", 0x3F},
    {u"VS_FF_DEBUG", 0x01},
    {u"VS_FF_PRERELEASE", 0x02},
    {u"VS_FF_PATCHED", 0x04},
    {u"VS_FF_PRIVATEBUILD", 0x08},
    {u"VS_FF_INFOINFERRED", 0x10},
    {u"VS_FF_SPECIALBUILD", 0x20},
    {u"VOS_UNKNOWN", 0},
    {u"VOS_DOS", 0x10000},
    {u"VOS_NT", 0x40000},
    {u"VOS__WINDOWS16", 1},
    {u"VOS__WINDOWS32", 4},
    {u"VOS_DOS_WINDOWS16", 0x10001},
    {u"VOS_DOS_WINDOWS32", 0x10004},
    {u"VOS_NT_WINDOWS32", 0x40004},
    {u"VFT_UNKNOWN", 0},
    {u"VFT_APP", 1},
    {u"VFT_DLL", 2},
    {u"VFT_DRV", 3},
    {u"VFT_FONT", 4},
    {u"VFT_VXD", 5},
    {u"VFT_STATIC_LIB", 7},
    {u"VFT2_UNKNOWN", 0},
};

std::optional<std::int64_t> NumberOf(const TToken& token) {
  if (token.Kind == TTokenKind::Word) {
    const auto found =
        std::ranges::find(Constants, token.Text, &std::pair<std::u16string_view, std::int64_t>::first);
    return found == std::end(Constants) ? std::nullopt : std::optional(found->second);
  }
  std::u16string_view digits = token.Text;
  while (digits.ends_with(u'L') || digits.ends_with(u'l') || digits.ends_with(u'U') || digits.ends_with(u'u'))
    digits.remove_suffix(1);
  const bool hexadecimal = text::StartsWithIgnoreCase(digits, u"0x");
  if (hexadecimal) digits.remove_prefix(2);
  std::int64_t number = 0;
  for (const char16_t c : digits) {
    static constexpr std::u16string_view all = u"0123456789abcdef";
    const std::size_t digit = all.find(text::FoldCase(c));
    if (digit >= (hexadecimal ? 16U : 10U) || number > 0xFFFFFFFF) return std::nullopt;
    number = number * (hexadecimal ? 16 : 10) + static_cast<std::int64_t>(digit);
  }
  return digits.empty() ? std::nullopt : std::optional(number);
}

class TTokenizer {
public:
  TTokenizer(const text::TStringList& lines, std::size_t begin, bool doubleByte) : doubleByte_(doubleByte) {
    for (index_ = begin; index_ < lines.Count(); ++index_)
      ReadLine(lines[index_]);
  }
  std::vector<TToken> Tokens;
  // What stands among the tokens, by lines.
  std::vector<std::pair<std::size_t, std::u16string>> Extras;

private:
  void ReadLine(std::u16string_view line) {
    for (std::size_t at = 0; at < line.size();) {
      const std::size_t begin = at;
      if (inComment_) {
        const std::size_t end = line.find(u"*/", at);
        inComment_ = end == std::u16string_view::npos;
        at = inComment_ ? line.size() : end + 2;
      } else if (text::IsBlank(line[at])) {
        ++at;
      } else if (line.substr(at).starts_with(u"//")) {
        return Extras.emplace_back(index_, u"comments"), void();
      } else if (line.substr(at).starts_with(u"/*")) {
        Extras.emplace_back(index_, u"comments");
        inComment_ = true;
        at += 2;
      } else if (line[at] == u'#' && text::Trim(line.substr(0, at)).empty()) {
        return Extras.emplace_back(index_, text::Trim(line)), void();
      } else {
        at = ReadToken(line, begin);
      }
    }
  }

  std::size_t ReadToken(std::u16string_view line, std::size_t begin) {
    std::size_t at = begin;
    TTokenKind kind = TTokenKind::Mark;
    const bool wide = line[at] == u'L' && at + 1 < line.size() && line[at + 1] == u'"';
    if (wide || line[at] == u'"') {
      kind = TTokenKind::String;
      at = EndOfString(line, at + (wide ? 2 : 1));
    } else if (IsWordCharacter(line[at])) {
      kind = text::IsDigit(line[at]) ? TTokenKind::Number : TTokenKind::Word;
      while (at < line.size() && IsWordCharacter(line[at]))
        ++at;
    } else {
      ++at;
    }
    Tokens.push_back({.Kind = kind, .Text = std::u16string(line.substr(begin, at - begin)), .Line = index_});
    return at;
  }

  std::size_t EndOfString(std::u16string_view line, std::size_t at) const {
    for (; at < line.size(); ++at) {
      if (line[at] == u'\\' && !IsSecondHalf(line, at)) {
        ++at;
      } else if (line[at] == u'"') {
        if (at + 1 >= line.size() || line[at + 1] != u'"') return at + 1;
        ++at;
      }
    }
    return line.size();
  }
  bool IsSecondHalf(std::u16string_view line, std::size_t at) const {
    return doubleByte_ && at > 0 && line[at - 1] >= 0x80;
  }

  bool doubleByte_;
  std::size_t index_ = 0;
  bool inComment_ = false;
};

// The characters of a string token, what follows a NUL left out.
std::u16string ValueOf(std::u16string_view token, bool doubleByte) {
  if (token.starts_with(u'L')) token.remove_prefix(1);
  token.remove_prefix(1);
  if (token.ends_with(u'"')) token.remove_suffix(1);
  std::u16string value;
  for (std::size_t at = 0; at < token.size(); ++at) {
    const char16_t c = token[at];
    const char16_t next = at + 1 < token.size() ? token[at + 1] : u'\0';
    const bool half = doubleByte && at > 0 && token[at - 1] >= 0x80;
    if (c == u'"' && next == u'"') ++at;
    if (c != u'\\' || half || next == u'\0') {
      value += c;
    } else if (next >= u'0' && next <= u'7') {
      unsigned number = 0;
      for (int digits = 0;
           digits < 3 && at + 1 < token.size() && token[at + 1] >= u'0' && token[at + 1] <= u'7'; ++digits)
        number = number * 8 + static_cast<unsigned>(token[++at] - u'0');
      value += static_cast<char16_t>(number);
    } else {
      if (next != u'\\' && next != u'"') value += c; // what else it stands for stays the same
      value += token[++at];
    }
  }
  return value.substr(0, value.find(u'\0'));
}

class TContentReader {
public:
  TContentReader(const text::TStringList& lines, std::size_t begin, bool doubleByte,
                 TVersionBlockContent& content)
      : doubleByte_(doubleByte), content_(content), tokenizer_(lines, begin, doubleByte) {}

  void Run() {
    SkipHeader();
    ReadHead();
    if (Opens()) ReadBody();
    content_.End = at_ == 0 ? content_.Begin + 1 : Tokens()[at_ - 1].Line + 1;
    std::set<std::u16string> said(content_.Extras.begin(), content_.Extras.end());
    for (const auto& [line, what] : tokenizer_.Extras)
      if (line < content_.End && said.insert(what).second) content_.Extras.push_back(what);
  }

private:
  static constexpr std::array<std::u16string_view, 7> HeadStatements{
      u"FILEVERSION", u"PRODUCTVERSION", u"FILEFLAGSMASK", u"FILEFLAGS",
      u"FILEOS",      u"FILETYPE",       u"FILESUBTYPE"};

  const std::vector<TToken>& Tokens() const { return tokenizer_.Tokens; }
  bool Ended() const { return at_ >= Tokens().size(); }
  bool Is(std::u16string_view word) const {
    return !Ended() && Tokens()[at_].Kind == TTokenKind::Word &&
           text::EqualsIgnoreCase(Tokens()[at_].Text, word);
  }
  bool IsMark(char16_t mark) const {
    return !Ended() && Tokens()[at_].Kind == TTokenKind::Mark && Tokens()[at_].Text[0] == mark;
  }
  bool Opens() const { return Is(u"BEGIN") || IsMark(u'{'); }
  bool Closes() const { return Is(u"END") || IsMark(u'}'); }

  // Of 16-bit Windows; compilers pass over them.
  static bool IsMemoryOption(std::u16string_view word) {
    static constexpr std::array<std::u16string_view, 7> options{
        u"PRELOAD", u"LOADONCALL", u"FIXED", u"MOVEABLE", u"DISCARDABLE", u"PURE", u"IMPURE"};
    return std::ranges::find(options, word) != options.end();
  }

  void SkipHeader() {
    while (!Ended() && !Is(u"VERSIONINFO"))
      ++at_;
    if (!Ended()) ++at_;
  }

  void ReadHead() {
    while (!Ended() && !Opens() && !Closes()) {
      const auto statement =
          std::ranges::find_if(HeadStatements, [this](std::u16string_view name) { return Is(name); });
      const std::size_t begin = at_++;
      if (statement == HeadStatements.end()) {
        if (!IsMemoryOption(Tokens()[begin].Text)) content_.Extras.push_back(Tokens()[begin].Text);
        continue;
      }
      while (!Ended() && !Opens() && !Closes() &&
             std::ranges::none_of(HeadStatements, [this](std::u16string_view name) { return Is(name); }))
        ++at_;
      content_.Head.push_back(
          {.Name = std::u16string(*statement), .Written = Written(begin + 1), .Value = Numbers(begin + 1)});
    }
  }

  void ReadBody() {
    int depth = 0;
    do {
      if (Opens()) {
        ++depth;
        ++at_;
      } else if (Closes()) {
        --depth;
        ++at_;
      } else if (Is(u"BLOCK")) {
        ++at_;
        ReadBlockName(depth);
      } else if (Is(u"VALUE")) {
        ++at_;
        ReadValue();
      } else {
        content_.Extras.push_back(Tokens()[at_++].Text);
      }
    } while (depth > 0 && !Ended());
  }

  void ReadBlockName(int depth) {
    if (Ended() || Tokens()[at_].Kind != TTokenKind::String) return;
    const std::u16string name = text::ToLower(ValueOf(Tokens()[at_++].Text, doubleByte_));
    if (depth > 1) content_.Languages.push_back(name);
  }

  void ReadValue() {
    if (Ended()) return;
    const TToken name = Tokens()[at_++];
    if (IsMark(u',')) ++at_;
    const std::size_t begin = at_;
    while (!Ended() && !Opens() && !Closes() && !Is(u"VALUE") && !Is(u"BLOCK"))
      ++at_;
    const std::u16string text = name.Kind == TTokenKind::String ? ValueOf(name.Text, doubleByte_) : name.Text;
    if (text::EqualsIgnoreCase(text, u"Translation"))
      content_.Head.push_back({.Name = text, .Written = Written(begin), .Value = Numbers(begin)});
    else if (content_.Languages.size() <= 1)
      content_.Texts.push_back({.Name = text, .Written = Written(begin), .Value = Text(begin)});
  }

  // The tokens up to the reader's place as a person would write them.
  std::u16string Written(std::size_t begin) const {
    std::u16string out;
    for (std::size_t i = begin; i < at_; ++i) {
      const bool close = out.empty() || Tokens()[i].Text == u",";
      out += (close ? u"" : u" ") + Tokens()[i].Text;
    }
    return out;
  }

  // Numbers separated by commas, decimal; "|" and "+" join them. Anything else as it is written.
  std::u16string Numbers(std::size_t begin) const {
    std::u16string out;
    std::int64_t sum = 0;
    for (std::size_t i = begin; i < at_; ++i) {
      const TToken& token = Tokens()[i];
      if (token.Kind == TTokenKind::Mark && token.Text == u",") {
        out += text::FromInteger(std::exchange(sum, 0)) + u",";
      } else if (token.Kind != TTokenKind::Mark) {
        const auto number = NumberOf(token);
        if (!number) return Written(begin);
        sum |= *number;
      } else if (token.Text.find_first_of(u"|+()") == std::u16string::npos) {
        return Written(begin);
      }
    }
    return out + text::FromInteger(sum);
  }

  std::u16string Text(std::size_t begin) const {
    std::u16string out;
    for (std::size_t i = begin; i < at_; ++i)
      if (Tokens()[i].Kind == TTokenKind::String)
        out += ValueOf(Tokens()[i].Text, doubleByte_);
      else
        out += u"\n" + Tokens()[i].Text; // no plain text holds it
    return out;
  }

  bool doubleByte_;
  TVersionBlockContent& content_;
  TTokenizer tokenizer_;
  std::size_t at_ = 0;
};

} // namespace

TVersionBlockContent ReadVersionBlockContent(const text::TStringList& lines, bool doubleByte) {
  TVersionBlockContent content;
  std::size_t begin = 0;
  while (begin < lines.Count() && !OpensVersionBlock(lines[begin]))
    ++begin;
  content.Begin = begin;
  if (begin < lines.Count()) TContentReader(lines, begin, doubleByte, content).Run();
  return content;
}

std::optional<unsigned> CodePageOfVersionBlock(const text::TStringList& lines) {
  std::optional<unsigned> page;
  for (const auto& line : lines) {
    if (OpensVersionBlock(line)) break;
    std::u16string_view rest = text::Trim(line);
    for (const std::u16string_view part : {u"#", u"pragma", u"code_page", u"("}) {
      if (!rest.starts_with(part)) {
        rest = {};
        break;
      }
      rest = text::TrimLeft(rest.substr(part.size()));
    }
    const std::u16string_view digits = rest.substr(0, rest.find_first_not_of(u"0123456789"));
    if (!digits.empty()) page = static_cast<unsigned>(text::ToIntegerOr(digits, 0));
  }
  return page;
}

} // namespace kx
