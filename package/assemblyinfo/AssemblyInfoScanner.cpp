#include "foundation/text/Text.h"
#include "foundation/text/WindowsPath.h"
#include "package/assemblyinfo/AssemblyInfoConditions.h"
#include "package/assemblyinfo/AssemblyInfoLiterals.h"

#include <algorithm>
#include <array>

namespace kx {

using enum TAssemblyInfoLanguage;

namespace {

struct TExtension {
  std::u16string_view Extension;
  TAssemblyInfoLanguage Language;
};
constexpr std::array<TExtension, 13> Extensions{{
    {u".cs", CSharp},
    {u".vb", VisualBasic},
    {u".cpp", Cpp},
    {u".cc", Cpp},
    {u".cxx", Cpp},
    {u".c", Cpp},
    {u".h", Cpp},
    {u".hh", Cpp},
    {u".hpp", Cpp},
    {u".hxx", Cpp},
    {u".inl", Cpp},
    {u".jsl", JSharp},
    {u".fs", FSharp},
}};

// Typographic marks, some of which count as quotation marks and apostrophes.
bool IsPunctuation(char16_t c) {
  return (c >= 0x2010 && c <= 0x206F) || (c >= 0xFF01 && c <= 0xFF0F);
}

// Of the escape (\u0041) with which the text begins and which stands for a character of a name; 0 when none
// does.
std::size_t LengthOfEscape(std::u16string_view text, TAssemblyInfoLanguage language) {
  if (language == VisualBasic || language == FSharp || text.size() < 2 || text[0] != u'\\') return 0;
  const std::size_t length = text[1] == u'u' ? 6 : text[1] == u'U' && language != JSharp ? 10 : 0;
  const auto digits = text.substr(2, std::max<std::size_t>(length, 2) - 2);
  const bool whole = length != 0 && digits.size() == length - 2;
  return whole && digits.find_first_not_of(u"0123456789abcdefABCDEF") == std::u16string_view::npos ? length
                                                                                                   : 0;
}

class TScanner {
public:
  TScanner(std::u16string_view text, TAssemblyInfoLanguage language, bool mayBeDoubleByte)
      : text_(text), language_(language), mayBeDoubleByte_(mayBeDoubleByte), conditions_(language) {}

  TSourceTokens Run() {
    while (at_ < text_.size())
      Step();
    return std::move(out_);
  }

private:
  char16_t At(std::size_t at) const { return at < text_.size() ? text_[at] : u'\0'; }
  bool LineEnd(std::size_t at) const { return at >= text_.size() || IsSourceLineEnd(text_[at], language_); }
  bool Starts(std::u16string_view wanted) const { return text_.substr(at_).starts_with(wanted); }
  // C++ ignores a line end behind a backslash everywhere.
  bool Continued(std::size_t at) const {
    if (language_ != Cpp) return false;
    if (At(at) == u'\n' && at > 0 && text_[at - 1] == u'\r') --at;
    if (at == 0 || text_[at - 1] != u'\\') return false;
    return !mayBeDoubleByte_ || at == 1 || text_[at - 2] < 0x80;
  }
  std::size_t EndOfLine(std::size_t at) const {
    while (at < text_.size() && (!LineEnd(at) || Continued(at)))
      ++at;
    return at;
  }
  bool IsWord(std::size_t at) const {
    const char16_t c = At(at);
    return c == u'_' || text::IsDigit(c) || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') ||
           (c >= 0x80 && !IsSourceBlank(c) && !LineEnd(at) && !IsPunctuation(c)) || EscapeLength(at) != 0;
  }
  std::size_t EscapeLength(std::size_t at) const { return LengthOfEscape(text_.substr(at), language_); }
  // Behind the name in brackets (Visual Basic) or backquotes (F#) that begins here, else the place itself.
  std::size_t SkipQuotedName(std::size_t at) {
    const bool basic = language_ == VisualBasic && At(at) == u'[';
    const bool fsharp = language_ == FSharp && Starts(u"``");
    if ((!basic && !fsharp) || at < unclosedUntil_) return at;
    const std::u16string_view close = basic ? u"]" : u"``";
    std::size_t end = at + close.size();
    while (!LineEnd(end) && !text_.substr(end).starts_with(close))
      ++end;
    if (!LineEnd(end)) return end + close.size();
    unclosedUntil_ = end;
    return at;
  }

  void Step() {
    const char16_t c = text_[at_];
    if (LineEnd(at_)) {
      firstOnLine_ = true;
      ++at_;
    } else if (IsSourceBlank(c)) {
      ++at_;
    } else if (c == u'#' && firstOnLine_) {
      ReadDirective();
    } else if (conditions_.Now() == TTruth::False && language_ != Cpp) {
      at_ = EndOfLine(at_); // only directives count there
    } else if (!SkipComment()) {
      ReadToken();
    }
  }

  void ReadDirective() {
    const std::size_t begin = at_;
    std::size_t end = at_;
    while (end < text_.size() && (!LineEnd(end) || Continued(end)) && !CommentAt(end))
      ++end;
    const std::u16string_view directive = text_.substr(begin + 1, end - begin - 1);
    const bool outermost = conditions_.Now() == TTruth::True;
    if (conditions_.Take(directive)) {
      ++piece_;
      if (outermost && !out_.FirstCondition) out_.FirstCondition = begin;
    }
    // Elsewhere no comment that goes on behind the line begins in a directive.
    at_ = language_ == Cpp ? end : EndOfLine(end);
    const bool include = language_ == Cpp && text::TrimLeft(directive).starts_with(u"include");
    if (include && conditions_.Now() == TTruth::True) out_.IncludesEnd = end;
  }

  bool CommentAt(std::size_t at) const {
    const char16_t c = text_[at];
    if (language_ == VisualBasic) return c == u'\'' || c == 0x2018 || c == 0x2019 || c == 0xFF07;
    return c == u'/' && (At(at + 1) == u'/' || (At(at + 1) == u'*' && language_ != FSharp));
  }

  bool SkipComment() {
    const std::size_t begin = at_;
    if (language_ == FSharp && Starts(u"(*") && !Starts(u"(*)")) {
      SkipNestedComment();
    } else if (!CommentAt(at_)) {
      return false;
    } else if (language_ == VisualBasic || Starts(u"//")) {
      at_ = EndOfLine(at_);
    } else {
      const std::size_t end = text_.find(u"*/", at_ + 2);
      at_ = end == std::u16string_view::npos ? text_.size() : end + 2;
      if (language_ == JSharp && text_.substr(begin, 3) == u"/**" && at_ - begin > 4) ReadTags(begin, at_);
    }
    NoteComment(begin);
    return true;
  }

  void NoteComment(std::size_t begin) {
    const auto comment = text_.substr(begin, at_ - begin);
    if (std::ranges::any_of(comment, [this](char16_t c) { return IsSourceLineEnd(c, language_); }))
      out_.LongComments.push_back({.Begin = begin, .End = at_});
  }

  // Strings count inside such a comment.
  void SkipNestedComment() {
    int depth = 0;
    do {
      if (Starts(u"(*")) {
        ++depth;
        at_ += 2;
      } else if (Starts(u"*)")) {
        --depth;
        at_ += 2;
      } else {
        const std::size_t end = SkipLiteral(text_, at_, language_).At;
        at_ = end != at_ ? end : at_ + 1;
      }
    } while (depth > 0 && at_ < text_.size());
    at_ = std::min(at_, text_.size());
  }

  // Tags stand at the beginning of a line of a documentation comment, behind its asterisks.
  void ReadTags(std::size_t begin, std::size_t end) {
    static constexpr std::u16string_view tag = u"@assembly";
    bool found = false;
    const std::size_t close = text_.substr(begin, end - begin).ends_with(u"*/") ? end - 2 : end;
    at_ = begin + 1;
    while (at_ < close) {
      while (at_ < close && (IsSourceBlank(text_[at_]) || text_[at_] == u'*' || LineEnd(at_)))
        ++at_;
      if (Starts(tag) && !IsWord(at_ + tag.size())) {
        found = true;
        ReadTag(close);
      } else {
        at_ = std::min(EndOfLine(at_), close);
      }
    }
    at_ = end;
    if (found) Add(TSourceTokenKind::DocEnd, close);
  }

  // "@assembly Name(arguments)"; prose may follow.
  void ReadTag(std::size_t close) {
    int depth = 0;
    for (bool done = false; at_ < close && !done;) {
      const char16_t c = text_[at_];
      if (IsSourceBlank(c) || LineEnd(at_)) {
        ++at_;
        continue;
      }
      if (c == u'(') ++depth;
      if (c == u')') done = --depth <= 0;
      ReadToken();
    }
    at_ = std::min(at_, close);
  }

  void ReadToken() {
    const std::size_t begin = at_;
    if (const TLiteralEnd end = SkipLiteral(text_, at_, language_); end.At != begin) {
      at_ = std::min(end.At, text_.size());
      if (!end.Closed && !out_.OpenLiteral && conditions_.Now() == TTruth::True) out_.OpenLiteral = begin;
      const char16_t last = text_[at_ - 1];
      Add(last == u'\'' ? TSourceTokenKind::Other : TSourceTokenKind::String, begin);
      return;
    }
    if (const std::size_t end = SkipQuotedName(at_); end != begin) {
      at_ = end;
      return Add(TSourceTokenKind::Word, begin);
    }
    const bool escaped = language_ == CSharp && text_[at_] == u'@' && IsWord(at_ + 1);
    if (!escaped && !IsWord(at_)) {
      ++at_;
      Add(TSourceTokenKind::Mark, begin);
      return;
    }
    ReadWord(begin);
  }

  void ReadWord(std::size_t begin) {
    const bool number = text::IsDigit(text_[begin]);
    at_ += std::max<std::size_t>(EscapeLength(at_), 1);
    // Primes belong to names of F#, apostrophes between the digits of a number to C++.
    while (IsWord(at_) ||
           (At(at_) == u'\'' && (language_ == FSharp || (language_ == Cpp && number && IsWord(at_ + 1)))))
      at_ += std::max<std::size_t>(EscapeLength(at_), 1);
    const std::u16string_view word = text_.substr(begin, at_ - begin);
    if (language_ == VisualBasic && text::EqualsIgnoreCase(word, u"REM") && !FollowsDot()) {
      at_ = EndOfLine(at_);
      return;
    }
    if (language_ == VisualBasic && word == u"_" && EndsLine()) return; // the statement goes on
    Add(number ? TSourceTokenKind::Other : TSourceTokenKind::Word, begin);
  }

  bool FollowsDot() const { return !out_.Tokens.empty() && text_[out_.Tokens.back().Range.Begin] == u'.'; }
  bool EndsLine() const {
    std::size_t at = at_;
    while (!LineEnd(at) && IsSourceBlank(text_[at]))
      ++at;
    return LineEnd(at);
  }

  void Add(TSourceTokenKind kind, std::size_t begin) {
    const TTruth now = conditions_.Now();
    if (now != TTruth::False)
      out_.Tokens.push_back({.Kind = kind,
                             .Range = {.Begin = begin, .End = at_},
                             .Certain = now == TTruth::True,
                             .FirstOnLine = firstOnLine_,
                             .Piece = piece_});
    firstOnLine_ = false;
  }

  std::u16string_view text_;
  TAssemblyInfoLanguage language_;
  bool mayBeDoubleByte_;
  TSourceConditions conditions_;
  TSourceTokens out_;
  std::size_t at_ = 0;
  std::size_t piece_ = 0;
  bool firstOnLine_ = true;
  std::size_t unclosedUntil_ = 0; // no name in brackets or backquotes ends before
};

} // namespace

std::optional<TAssemblyInfoLanguage> AssemblyInfoLanguageOf(std::u16string_view fileName) {
  const std::u16string extension = text::ExtractFileExt(fileName);
  for (const auto& row : Extensions)
    if (text::EqualsIgnoreCase(row.Extension, extension)) return row.Language;
  return std::nullopt;
}

bool IsSourceLineEnd(char16_t c, TAssemblyInfoLanguage language) {
  if (c == u'\n' || c == u'\r') return true;
  const bool more = language == CSharp || language == VisualBasic;
  return more && (c == 0x85 || c == 0x2028 || c == 0x2029);
}

bool IsSourceBlank(char16_t c) {
  return (c <= u' ' && c != u'\n' && c != u'\r') || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200B) || c == 0x202F || c == 0x205F || c == 0x3000 || c == 0xFEFF;
}

TSourceTokens ScanAssemblyInfo(std::u16string_view text, TAssemblyInfoLanguage language,
                               bool mayBeDoubleByte) {
  return TScanner(text, language, mayBeDoubleByte).Run();
}

std::u16string NameOfWord(std::u16string_view word, TAssemblyInfoLanguage language) {
  if (language == CSharp && word.starts_with(u'@')) word.remove_prefix(1);
  if (language == VisualBasic && word.starts_with(u'['))
    return std::u16string(word.substr(1, word.size() - 2));
  if (language == FSharp && word.starts_with(u"``")) return std::u16string(word.substr(2, word.size() - 4));
  std::u16string name;
  while (!word.empty()) {
    const std::size_t length = LengthOfEscape(word, language);
    if (length != 0)
      name += DecodeLiteral(u"\"" + std::u16string(word.substr(0, length)) + u"\"", language)
                  .value_or(std::u16string());
    else
      name += word.front();
    word.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return name;
}

} // namespace kx
