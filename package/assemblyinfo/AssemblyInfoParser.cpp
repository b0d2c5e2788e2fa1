#include "foundation/text/Text.h"
#include "package/assemblyinfo/AssemblyInfoLiterals.h"
#include "package/assemblyinfo/AssemblyInfoSource.h"

#include <algorithm>
#include <map>

namespace kx {

using enum TAssemblyInfoLanguage;

namespace {

// What a bracket of a section and what separates its attributes look like.
struct TBrackets {
  std::u16string_view Open;
  std::u16string_view Close;
  std::u16string_view Separators;
};

TBrackets BracketsOf(TAssemblyInfoLanguage language) {
  if (language == VisualBasic) return {.Open = u"<", .Close = u">", .Separators = u","};
  if (language == FSharp) return {.Open = u"[<", .Close = u">]", .Separators = u";"};
  if (language == JSharp) return {.Open = u"@", .Close = u"", .Separators = u""};
  return {.Open = u"[", .Close = u"]", .Separators = u","};
}

class TParser {
public:
  TParser(std::u16string_view text, TAssemblyInfoLanguage language, const std::vector<TSourceToken>& tokens)
      : text_(text), language_(language), brackets_(BracketsOf(language)), tokens_(tokens) {}

  TAssemblyInfoSource Run() {
    while (at_ < tokens_.size()) {
      const std::size_t begin = at_;
      if (ReadPreamble()) continue;
      at_ = begin;
      if (ReadSection()) continue;
      at_ = begin;
      CountBraces();
      ++at_;
    }
    return std::move(out_);
  }

private:
  const TSourceToken* Token(std::size_t at) const { return at < tokens_.size() ? &tokens_[at] : nullptr; }
  std::u16string_view Text(std::size_t at) const {
    const TSourceToken* token = Token(at);
    return token == nullptr ? std::u16string_view()
                            : text_.substr(token->Range.Begin, token->Range.End - token->Range.Begin);
  }
  bool Same(std::u16string_view a, std::u16string_view b) const {
    return language_ == VisualBasic ? text::EqualsIgnoreCase(a, b) : a == b;
  }
  bool IsWord(std::size_t at) const {
    return Token(at) != nullptr && Token(at)->Kind == TSourceTokenKind::Word;
  }
  std::u16string Name(std::size_t at) const { return NameOfWord(Text(at), language_); }
  bool IsWord(std::size_t at, std::u16string_view word) const { return IsWord(at) && Same(Name(at), word); }
  // The marks of `marks` stand here without anything between them.
  bool IsMark(std::size_t at, std::u16string_view marks) const {
    for (std::size_t i = 0; i < marks.size(); ++i) {
      const TSourceToken* token = Token(at + i);
      if (token == nullptr || token->Kind != TSourceTokenKind::Mark ||
          text_[token->Range.Begin] != marks[i] || token->Range.Begin != tokens_[at].Range.Begin + i)
        return false;
    }
    return true;
  }
  bool Accept(std::u16string_view marks) {
    if (!IsMark(at_, marks)) return false;
    at_ += marks.size();
    return true;
  }
  bool AcceptWord(std::u16string_view word) {
    if (!IsWord(at_, word)) return false;
    ++at_;
    return true;
  }

  void CountBraces() {
    if (!tokens_[at_].Certain || tokens_[at_].Kind != TSourceTokenKind::Mark) return;
    if (IsMark(at_, u"{")) ++depth_;
    if (IsMark(at_, u"}") && depth_ > 0) --depth_;
  }

  // A name of several parts, joined by dots; a leading "global" is left out.
  std::u16string ReadName() {
    std::u16string name;
    Accept(u"::");
    while (IsWord(at_)) {
      const std::u16string part = Name(at_);
      ++at_;
      const bool more =
          (IsMark(at_, u".") || IsMark(at_, u"::")) && IsWord(at_ + (IsMark(at_, u".") ? 1 : 2));
      if (!(name.empty() && more && Same(part, u"global"))) name += (name.empty() ? u"" : u".") + part;
      if (!more) break;
      at_ += IsMark(at_, u".") ? 1 : 2;
    }
    return name;
  }

  void AddPreamble(std::size_t begin, std::u16string space, std::u16string alias) {
    if (at_ == begin || !tokens_[begin].Certain || !tokens_[at_ - 1].Certain) return;
    if (!alias.empty()) aliases_[alias] = space;
    out_.Preambles.push_back(
        {.Range = {.Begin = tokens_[begin].Range.Begin, .End = tokens_[at_ - 1].Range.End},
         .Namespace = alias.empty() ? std::move(space) : std::u16string(),
         .Alias = std::move(alias)});
  }

  bool ReadPreamble() {
    if (!IsWord(at_) || depth_ > 0) return false;
    switch (language_) {
    case CSharp:
      return ReadCSharpPreamble();
    case VisualBasic:
      return tokens_[at_].FirstOnLine && ReadBasicPreamble();
    case Cpp:
      return ReadCppPreamble();
    case JSharp:
      return ReadJSharpPreamble();
    case FSharp:
      return tokens_[at_].FirstOnLine && ReadFSharpPreamble();
    }
    return false;
  }

  bool ReadCSharpPreamble() {
    const std::size_t begin = at_;
    if (AcceptWord(u"extern")) {
      if (!AcceptWord(u"alias") || ReadName().empty() || !Accept(u";")) return false;
      AddPreamble(begin, {}, {});
      return true;
    }
    AcceptWord(u"global");
    if (!AcceptWord(u"using")) return false;
    const bool type = AcceptWord(u"static");
    std::u16string alias;
    if (IsMark(at_ + 1, u"=")) {
      alias = Name(at_);
      at_ += 2;
    }
    std::u16string name = ReadName();
    if (name.empty() || !Accept(u";")) return false;
    AddPreamble(begin, type ? std::u16string() : std::move(name), std::move(alias));
    return true;
  }

  bool ReadBasicPreamble() {
    const std::size_t begin = at_;
    if (AcceptWord(u"Option")) {
      while (Token(at_) != nullptr && !Token(at_)->FirstOnLine)
        ++at_;
      AddPreamble(begin, {}, {});
      return true;
    }
    if (!AcceptWord(u"Imports")) return false;
    do {
      std::u16string alias;
      if (IsMark(at_ + 1, u"=")) {
        alias = text::ToLower(Name(at_));
        at_ += 2;
      }
      std::u16string name = ReadName();
      if (name.empty()) return false;
      AddPreamble(begin, std::move(name), std::move(alias));
    } while (Accept(u","));
    return true;
  }

  bool ReadCppPreamble() {
    const std::size_t begin = at_;
    const bool directive = AcceptWord(u"using");
    if (!AcceptWord(u"namespace")) return false;
    std::u16string alias;
    if (!directive) {
      if (!IsMark(at_ + 1, u"=")) return false;
      alias = Name(at_);
      at_ += 2;
    }
    std::u16string name = ReadName();
    if (name.empty() || !Accept(u";")) return false;
    AddPreamble(begin, std::move(name), std::move(alias));
    return true;
  }

  bool ReadJSharpPreamble() {
    const std::size_t begin = at_;
    const bool package = AcceptWord(u"package");
    if (!package && !AcceptWord(u"import")) return false;
    std::u16string name = ReadName();
    const bool all = Accept(u".*");
    if (name.empty() || !Accept(u";")) return false;
    AddPreamble(begin, all ? std::move(name) : std::u16string(), {});
    return true;
  }

  bool ReadFSharpPreamble() {
    const std::size_t begin = at_;
    const bool open = AcceptWord(u"open");
    if (!open && !AcceptWord(u"namespace") && !AcceptWord(u"module")) return false;
    std::u16string name = ReadName();
    if (name.empty() || IsMark(at_, u"=")) return false;
    AddPreamble(begin, open ? std::move(name) : std::u16string(), {});
    return true;
  }

  // What stands before the bracket cannot be code that the bracket belongs to.
  bool MayOpenSection() const {
    if (!IsMark(at_, brackets_.Open)) return false;
    if (at_ == 0 || language_ == JSharp) return true;
    const TSourceToken& before = tokens_[at_ - 1];
    if (language_ == VisualBasic) return tokens_[at_].FirstOnLine || IsMark(at_ - 1, u">");
    if (before.Piece != tokens_[at_].Piece || tokens_[at_].FirstOnLine) return true;
    return before.Kind == TSourceTokenKind::Mark && !IsMark(at_ - 1, u")");
  }

  // ":" that is not half of "::", or the one before a "::".
  bool AcceptTarget() {
    const bool scope = IsMark(at_, u"::");
    if (!IsMark(at_, u":") || (scope && !IsMark(at_, u":::"))) return false;
    ++at_;
    return true;
  }

  bool ReadSection() {
    if (!MayOpenSection()) return false;
    const std::size_t begin = at_;
    at_ += brackets_.Open.size();
    if (!AcceptWord(u"assembly") || (language_ != JSharp && !AcceptTarget())) return false;
    TSourceSection section;
    const bool whole = ReadAttributes(section);
    if (whole && language_ == Cpp) Accept(u";");
    const std::size_t last = std::max(at_, begin + 1) - 1;
    section.Range = {.Begin = tokens_[begin].Range.Begin,
                     .End = tokens_[std::min(last, tokens_.size() - 1)].Range.End};
    section.Certain = whole;
    for (std::size_t i = begin; i < at_ && i < tokens_.size(); ++i)
      section.Certain = section.Certain && tokens_[i].Certain;
    out_.Sections.push_back(std::move(section));
    return true;
  }

  // False when the section is not what the language allows.
  bool ReadAttributes(TSourceSection& section) {
    for (;;) {
      if (IsWord(at_, u"assembly") && IsMark(at_ + 1, u":") && language_ != JSharp) {
        ++at_;
        AcceptTarget();
      }
      const bool known = ReadAttribute(section);
      if (!known) return false;
      if (language_ == JSharp) {
        if (IsMark(at_, u"@") && IsWord(at_ + 1, u"assembly")) {
          at_ += 2;
          continue;
        }
        if (Token(at_) == nullptr || Token(at_)->Kind != TSourceTokenKind::DocEnd) return false;
        ++at_;
        return true;
      }
      const bool line = language_ == FSharp && Token(at_) != nullptr && Token(at_)->FirstOnLine;
      const bool more = Accept(brackets_.Separators) || line;
      if (Accept(brackets_.Close)) return true;
      if (!more) return false;
    }
  }

  bool ReadAttribute(TSourceSection& section) {
    const std::size_t begin = at_;
    std::u16string name = ReadName();
    if (name.empty()) return false;
    const std::size_t lastName = at_ - 1;
    TSourceAttribute attribute;
    attribute.NameRange = {.Begin = tokens_[begin].Range.Begin, .End = tokens_[lastName].Range.End};
    attribute.Qualifier =
        text_.substr(attribute.NameRange.Begin, tokens_[lastName].Range.Begin - attribute.NameRange.Begin);
    SetName(attribute, std::move(name));
    const bool whole = ReadArguments(attribute);
    attribute.Certain = attribute.Certain && whole;
    for (std::size_t i = begin; i < at_ && i < tokens_.size(); ++i)
      attribute.Certain = attribute.Certain && tokens_[i].Certain;
    section.Attributes.push_back(std::move(attribute));
    return whole;
  }

  // Aliases are followed once; they may stand for a namespace or for the attribute itself.
  void SetName(TSourceAttribute& attribute, std::u16string name) const {
    static constexpr std::u16string_view suffix = u"Attribute";
    const std::size_t dot = std::min(name.find(u'.'), name.size());
    const std::u16string first = name.substr(0, dot);
    const auto alias = aliases_.find(language_ == VisualBasic ? text::ToLower(first) : first);
    if (alias != aliases_.end()) name.replace(0, dot, alias->second);
    const std::size_t last = name.rfind(u'.');
    const std::u16string space = last == std::u16string::npos ? std::u16string() : name.substr(0, last);
    attribute.Name = last == std::u16string::npos ? name : name.substr(last + 1);
    attribute.OfFramework = space.empty() || Same(space, u"System.Reflection") || Same(space, u"Reflection");
    const std::size_t size = attribute.Name.size();
    if (size > suffix.size() &&
        Same(std::u16string_view(attribute.Name).substr(size - suffix.size()), suffix)) {
      attribute.HasSuffix = true;
      attribute.Name.resize(size - suffix.size());
    }
  }

  // A line that begins with a word is the next attribute.
  bool AtEndOfBareArgument(std::size_t begin) const {
    if (Token(at_) == nullptr || IsMark(at_, brackets_.Close) || IsMark(at_, brackets_.Separators))
      return true;
    return Token(at_)->FirstOnLine && (at_ > begin || IsWord(at_));
  }

  bool ReadArguments(TSourceAttribute& attribute) {
    attribute.HasParentheses = IsMark(at_, u"(");
    if (!attribute.HasParentheses) {
      const std::size_t begin = at_;
      // Only F# takes an argument without parentheses.
      while (language_ == FSharp && !AtEndOfBareArgument(begin))
        ++at_;
      if (at_ == begin)
        attribute.Argument = {.Begin = attribute.NameRange.End, .End = attribute.NameRange.End};
      else
        SetArgument(attribute, begin, at_);
      return true;
    }
    const std::size_t afterOpen = tokens_[at_].Range.End;
    attribute.Argument = {.Begin = afterOpen, .End = afterOpen};
    ++at_;
    attribute.OthersFollow = !IsMark(at_, u")");
    bool found = false;
    for (;;) {
      const std::size_t begin = at_;
      if (!SkipArgument()) return false;
      if (!found && at_ > begin) found = TakeArgument(attribute, begin, at_);
      if (Accept(u")")) return true;
      ++at_;
    }
  }

  // To the "," or ")" behind it; False at the end of the text.
  bool SkipArgument() {
    for (int depth = 0; Token(at_) != nullptr; ++at_) {
      const TSourceToken& token = tokens_[at_];
      if (token.Kind == TSourceTokenKind::DocEnd) return false;
      if (token.Kind != TSourceTokenKind::Mark) continue;
      const char16_t c = text_[token.Range.Begin];
      if (depth == 0 && (c == u',' || c == u')')) return true;
      if (c == u'(' || c == u'[' || c == u'{') ++depth;
      if (c == u')' || c == u']' || c == u'}') --depth;
    }
    return false;
  }

  // False for an argument that sets a property by its name.
  bool TakeArgument(TSourceAttribute& attribute, std::size_t begin, std::size_t end) const {
    if (IsWord(begin)) {
      if (IsMark(begin + 1, language_ == VisualBasic ? u":=" : u"=") && !IsMark(begin + 1, u"=="))
        return false;
      // "version: ..." names the parameter.
      const bool named = language_ == CSharp && IsMark(begin + 1, u":") && !IsMark(begin + 1, u"::");
      if (named) begin += 2;
    }
    if (begin >= end) return false;
    SetArgument(attribute, begin, end);
    return true;
  }

  void SetArgument(TSourceAttribute& attribute, std::size_t begin, std::size_t end) const {
    attribute.Argument = {.Begin = tokens_[begin].Range.Begin, .End = tokens_[end - 1].Range.End};
    attribute.IsLiteral = end - begin == 1 && tokens_[begin].Kind == TSourceTokenKind::String &&
                          IsConstantLiteral(Text(begin), language_);
    attribute.OthersFollow = false;
    // A condition inside the argument cannot be kept.
    attribute.Certain = attribute.Certain && tokens_[begin].Piece == tokens_[end - 1].Piece;
  }

  std::u16string_view text_;
  TAssemblyInfoLanguage language_;
  TBrackets brackets_;
  const std::vector<TSourceToken>& tokens_;
  TAssemblyInfoSource out_;
  std::map<std::u16string, std::u16string> aliases_;
  std::size_t at_ = 0;
  int depth_ = 0;
};

} // namespace

TAssemblyInfoSource ParseAssemblyInfo(std::u16string_view text, TAssemblyInfoLanguage language,
                                      const TSourceTokens& tokens) {
  return TParser(text, language, tokens.Tokens).Run();
}

} // namespace kx
