#include "package/assemblyinfo/AssemblyInfoRewriter.h"
#include "foundation/text/Exceptions.h"
#include "foundation/text/Text.h"
#include "package/assemblyinfo/AssemblyInfoLiterals.h"
#include "package/assemblyinfo/AssemblyInfoText.h"

#include <algorithm>
#include <array>

namespace kx {

using enum TAssemblyInfoLanguage;

namespace {

constexpr std::array<std::u16string_view, 12> FrameworkAttributes{
    u"AssemblyTitle",   u"AssemblyDescription", u"AssemblyConfiguration", u"AssemblyCompany",
    u"AssemblyProduct", u"AssemblyCopyright",   u"AssemblyTrademark",     u"AssemblyCulture",
    u"AssemblyVersion", u"AssemblyFileVersion", u"AssemblyDefaultAlias",  u"AssemblyInformationalVersion"};

bool Means(const TSourceAttribute& attribute, std::u16string_view name, TAssemblyInfoLanguage language) {
  const bool same =
      language == VisualBasic ? text::EqualsIgnoreCase(attribute.Name, name) : attribute.Name == name;
  return same && (attribute.OfFramework || !IsFrameworkAttribute(name));
}

// How a new attribute is written: like the last one of the file, or as the language's templates have it.
struct TStyle {
  std::u16string Open;
  std::u16string Qualifier;
  bool Suffix = false;
  std::u16string Gap; // before the parenthesis
  std::u16string Close;
};

TStyle DefaultStyle(TAssemblyInfoLanguage language) {
  switch (language) {
  case VisualBasic:
    return {.Open = u"<Assembly: ", .Qualifier = {}, .Gap = {}, .Close = u">"};
  case Cpp:
    return {.Open = u"[assembly:", .Qualifier = {}, .Suffix = true, .Gap = {}, .Close = u"];"};
  case JSharp:
    return {.Open = u"/** @assembly ", .Qualifier = {}, .Gap = {}, .Close = u" */"};
  case FSharp:
    return {.Open = u"[<assembly: ", .Qualifier = {}, .Gap = {}, .Close = u">]"};
  case CSharp:
    break;
  }
  return {.Open = u"[assembly: ", .Qualifier = {}, .Gap = {}, .Close = u"]"};
}

std::u16string Concatenate(std::initializer_list<std::u16string_view> parts) {
  std::u16string whole;
  for (const std::u16string_view part : parts)
    whole += part;
  return whole;
}

// For a message: long ones are cut.
std::u16string Shortened(std::u16string_view expression) {
  static constexpr std::size_t most = 60;
  return std::u16string(expression.substr(0, most)) + (expression.size() > most ? u"..." : u"");
}

class TRewriter {
public:
  // Raises EKxException for a string that is never closed: what follows it cannot be told apart.
  TRewriter(const TSourceText& source, TAssemblyInfoLanguage language)
      : text_(source.Text()), language_(language),
        tokens_(ScanAssemblyInfo(text_, language, source.IsAnsi())),
        source_(ParseAssemblyInfo(text_, language, tokens_)) {
    if (!tokens_.OpenLiteral) return;
    throw EKxException(u"the string in line " + Line(*tokens_.OpenLiteral) + u" is not closed" +
                       (source.IsAnsi()
                            ? u"; if the file is in another code page than this system's, save it "
                              u"as UTF-8"
                            : u""));
  }

  void Set(const std::u16string& name, const std::u16string& value) {
    bool written = false;
    const std::size_t changes = edits_.size() + added_.size();
    std::optional<std::size_t> conditional;
    for (const TSourceSection& section : source_.Sections)
      for (const TSourceAttribute& attribute : section.Attributes) {
        if (!Means(attribute, name, language_)) continue;
        if (attribute.Certain)
          Replace(attribute, value);
        else
          conditional = attribute.NameRange.Begin;
        written = written || attribute.Certain;
      }
    if (conditional)
      Note(name + u" in line " + Line(*conditional) + u" stands under a condition and is left as it is");
    else if (!written && !IsFrameworkAttribute(name))
      Note(name +
           u" is not an attribute of the .NET framework and the file has none of that name: it is not added");
    else if (!written)
      added_.emplace_back(name, value);
    if (written || (!conditional && !added_.empty() && added_.back().first == name))
      rewrite_.Entries.emplace_back(name, value);
    if (edits_.size() + added_.size() != changes) rewrite_.Changed.push_back(name);
  }

  TAssemblyInfoRewrite Finish(const TSourceText& source, std::string_view bytes) {
    if (!added_.empty()) AddMissing();
    std::ranges::stable_sort(edits_, {}, [](const TSourceEdit& edit) { return edit.Range.Begin; });
    std::optional<std::string> changed = source.Apply(edits_);
    if (!changed)
      throw EKxException(u"a value holds characters that the file's encoding (" +
                         std::u16string(source.EncodingName()) + u") does not have; save the file as UTF-8");
    rewrite_.Bytes = edits_.empty() ? std::string(bytes) : *std::move(changed);
    return std::move(rewrite_);
  }

private:
  std::u16string_view Text(const TSourceRange& range) const {
    return text_.substr(range.Begin, range.End - range.Begin);
  }
  // Counts on from the place before, since notes mostly come in the order of the text.
  std::u16string Line(std::size_t at) {
    if (at < counted_) counted_ = feeds_ = returns_ = 0;
    for (; counted_ < at; ++counted_) {
      feeds_ += text_[counted_] == u'\n' ? 1 : 0;
      returns_ += text_[counted_] == u'\r' ? 1 : 0;
    }
    return text::FromInteger(static_cast<std::int64_t>(feeds_ > 0 ? feeds_ : returns_) + 1);
  }
  void Note(std::u16string text) { rewrite_.Messages.push_back(std::move(text)); }

  void Replace(const TSourceAttribute& attribute, const std::u16string& value) {
    const std::u16string_view old = Text(attribute.Argument);
    if (attribute.IsLiteral && DecodeLiteral(old, language_) == value) return;
    std::u16string literal = EncodeLiteral(value, language_, old);
    if (literal == old) return;
    if (!old.empty() && !attribute.IsLiteral)
      Note(u"the expression " + Shortened(old) + u" in line " + Line(attribute.Argument.Begin) +
           u" is replaced by the value");
    if (old.empty() && attribute.OthersFollow) literal += u", ";
    if (old.empty() && !attribute.HasParentheses) literal = u"(" + literal + u")";
    edits_.push_back({.Range = attribute.Argument, .Text = std::move(literal)});
  }

  // Behind the last attribute, else behind the imports, else before all code.
  void AddMissing() {
    const TSourceSection* last = nullptr;
    const TSourceAttribute* model = nullptr;
    for (const TSourceSection& section : source_.Sections) {
      if (!section.Certain) continue;
      last = &section;
      for (const TSourceAttribute& attribute : section.Attributes)
        if (IsModel(attribute)) model = &attribute;
    }
    const TStyle style = StyleOf(last, model);
    const std::u16string qualifier = QualifierOf(model);
    std::vector<std::u16string> lines;
    for (const auto& [name, value] : added_)
      lines.push_back(Concatenate({style.Open, qualifier, name, style.Suffix ? u"Attribute" : u"", style.Gap,
                                   u"(", EncodeLiteral(value, language_), u")", style.Close}));
    if (last != nullptr) return InsertBehind(last->Range, Indentation(last->Range.Begin), lines);
    const std::size_t preamble = PreambleEnd();
    const bool alone =
        language_ == FSharp && (tokens_.Tokens.empty() || tokens_.Tokens.back().Range.End <= preamble);
    if (alone) lines.emplace_back(u"do ()"); // attributes need something to stand before
    if (preamble > 0) return InsertBehind({.Begin = preamble, .End = preamble}, u"", lines);
    InsertBefore(lines);
  }

  // One that goes by an alias is no model for others.
  bool IsModel(const TSourceAttribute& attribute) const {
    return attribute.OfFramework && IsFrameworkAttribute(attribute.Name) &&
           Text(attribute.NameRange).find(attribute.Name) != std::u16string_view::npos;
  }

  TStyle StyleOf(const TSourceSection* section, const TSourceAttribute* model) const {
    TStyle style = DefaultStyle(language_);
    if (model != nullptr) style.Suffix = model->HasSuffix;
    if (model != nullptr && model->HasParentheses) {
      const std::u16string_view behind = text_.substr(model->NameRange.End);
      style.Gap = behind.substr(0, std::min(behind.find_first_not_of(u" \t"), behind.size()));
      if (!behind.substr(style.Gap.size()).starts_with(u'(')) style.Gap.clear();
    }
    if (section == nullptr || section->Attributes.empty()) return style;
    const std::u16string_view open = text_.substr(
        section->Range.Begin, section->Attributes.front().NameRange.Begin - section->Range.Begin);
    const bool plain = open.find_first_of(u"\r\n/'(_") == std::u16string_view::npos;
    // A J# section begins inside its comment.
    if (plain && language_ != JSharp) style.Open = open;
    return style;
  }

  bool Imports(std::u16string_view space) const {
    return std::ranges::any_of(source_.Preambles, [this, space](const TSourcePreamble& preamble) {
      return language_ == VisualBasic ? text::EqualsIgnoreCase(preamble.Namespace, space)
                                      : preamble.Namespace == space;
    });
  }

  // Nothing where the short name is known. A file that has imports gets the one it lacks.
  std::u16string QualifierOf(const TSourceAttribute* model) {
    static constexpr std::u16string_view space = u"System.Reflection";
    if (Imports(space)) return {};
    std::u16string full = language_ == Cpp ? u"System::Reflection::" : u"System.Reflection.";
    // A short name without an import here: the project imports, as Visual Basic's do.
    if (model != nullptr) return model->Qualifier;
    const TSourcePreamble* last = nullptr;
    for (const TSourcePreamble& preamble : source_.Preambles)
      if (!preamble.Namespace.empty()) last = &preamble;
    if (last == nullptr) return full;
    std::u16string import;
    switch (language_) {
    case CSharp:
      import = u"using System.Reflection;";
      break;
    case VisualBasic:
      import = u"Imports System.Reflection";
      break;
    case Cpp:
      import = u"using namespace System::Reflection;";
      break;
    case JSharp:
      import = u"import System.Reflection.*;";
      break;
    case FSharp:
      import = u"open System.Reflection";
      break;
    }
    InsertBehind(last->Range, Indentation(last->Range.Begin), {std::move(import)});
    return {};
  }

  std::size_t PreambleEnd() const {
    std::size_t end = tokens_.IncludesEnd;
    for (const TSourcePreamble& preamble : source_.Preambles)
      end = std::max(end, preamble.Range.End);
    return end;
  }

  bool IsLineEnd(std::size_t at) const { return at >= text_.size() || IsSourceLineEnd(text_[at], language_); }
  std::size_t LineBegin(std::size_t at) const {
    while (at > 0 && !IsSourceLineEnd(text_[at - 1], language_))
      --at;
    return at;
  }
  std::size_t LineEndFrom(std::size_t at) const {
    while (!IsLineEnd(at))
      ++at;
    return at;
  }
  std::u16string_view Indentation(std::size_t at) const {
    const std::size_t begin = LineBegin(at);
    std::size_t end = begin;
    while (end < at && IsSourceBlank(text_[end]))
      ++end;
    return text_.substr(begin, end - begin);
  }
  // The line end at a place, else the one before it, else that of Visual Studio.
  std::u16string_view LineEndAt(std::size_t at) const {
    if (at >= text_.size()) {
      const std::size_t before = text_.find_last_of(u"\r\n");
      if (before == std::u16string_view::npos) return u"\r\n";
      at = before > 0 && text_.substr(before - 1, 2) == u"\r\n" ? before - 1 : before;
    }
    return text_.substr(at, text_.substr(at, 2) == u"\r\n" ? 2 : 1);
  }

  // Lines of their own; a comment behind the range stays in its line.
  void InsertBehind(const TSourceRange& range, std::u16string_view indentation,
                    const std::vector<std::u16string>& lines) {
    const std::size_t lineEnd = LineEndFrom(range.End);
    const auto inside = [&](const TSourceRange& r) { return r.Begin < lineEnd && r.End > lineEnd; };
    const auto behind = [&](const TSourceToken& token) {
      return token.Range.Begin >= range.End && token.Range.Begin < lineEnd &&
             token.Kind != TSourceTokenKind::DocEnd;
    };
    const bool shared =
        std::ranges::any_of(tokens_.LongComments, inside) || std::ranges::any_of(tokens_.Tokens, behind);
    const std::size_t at = shared ? range.End : lineEnd;
    const std::u16string_view end = LineEndAt(lineEnd);
    std::u16string inserted;
    for (const std::u16string& line : lines)
      ((inserted += end) += indentation) += line;
    edits_.push_back({.Range = {.Begin = at, .End = at}, .Text = std::move(inserted)});
  }

  void InsertBefore(const std::vector<std::u16string>& lines) {
    std::size_t at = text_.size();
    if (!tokens_.Tokens.empty()) at = LineBegin(tokens_.Tokens.front().Range.Begin);
    if (tokens_.FirstCondition) at = std::min(at, LineBegin(*tokens_.FirstCondition));
    const std::u16string_view end = LineEndAt(LineEndFrom(at));
    std::u16string inserted;
    if (at == text_.size() && at > 0 && !IsSourceLineEnd(text_[at - 1], language_)) inserted = end;
    for (const std::u16string& line : lines)
      (inserted += line) += end;
    edits_.push_back({.Range = {.Begin = at, .End = at}, .Text = std::move(inserted)});
  }

  std::u16string_view text_;
  TAssemblyInfoLanguage language_;
  TSourceTokens tokens_;
  TAssemblyInfoSource source_;
  TAssemblyInfoValues added_;
  std::vector<TSourceEdit> edits_;
  TAssemblyInfoRewrite rewrite_;
  std::size_t counted_ = 0; // of the text, for Line
  std::size_t feeds_ = 0;
  std::size_t returns_ = 0;
};

TAssemblyInfoRewrite RewriteOnce(std::string_view bytes, TAssemblyInfoLanguage language,
                                 const TAssemblyInfoValues& values) {
  const TSourceText source(bytes);
  if (!source.IsText())
    throw EKxException(u"the file is not text; save it as UTF-8, or as UTF-16 with a byte-order mark");
  TRewriter rewriter(source, language);
  for (const auto& [name, value] : values)
    rewriter.Set(name, value);
  return rewriter.Finish(source, bytes);
}

} // namespace

bool IsFrameworkAttribute(std::u16string_view name) {
  return std::ranges::find(FrameworkAttributes, name) != FrameworkAttributes.end();
}

TAssemblyInfoInventory::TAssemblyInfoInventory(std::string_view bytes, TAssemblyInfoLanguage language)
    : language_(language) {
  const TSourceText source(bytes);
  if (!source.IsText()) return;
  const TSourceTokens tokens = ScanAssemblyInfo(source.Text(), language, source.IsAnsi());
  for (TSourceSection& section : ParseAssemblyInfo(source.Text(), language, tokens).Sections)
    std::ranges::move(section.Attributes, std::back_inserter(attributes_));
}

TAssemblyInfoPresence TAssemblyInfoInventory::Find(std::u16string_view name) const {
  TAssemblyInfoPresence presence = TAssemblyInfoPresence::Absent;
  for (const TSourceAttribute& attribute : attributes_)
    if (Means(attribute, name, language_))
      presence = std::max(presence, attribute.Certain ? TAssemblyInfoPresence::Certain
                                                      : TAssemblyInfoPresence::Conditional);
  return presence;
}

TAssemblyInfoRewrite RewriteAssemblyInfo(std::string_view bytes, TAssemblyInfoLanguage language,
                                         const TAssemblyInfoValues& values) {
  TAssemblyInfoRewrite rewrite = RewriteOnce(bytes, language, values);
  // What was written must be found again; in a source that is broken it may have become part of a comment.
  if (rewrite.Bytes != bytes && RewriteOnce(rewrite.Bytes, language, values).Bytes != rewrite.Bytes)
    throw EKxException(
        u"the file is no source that a compiler takes: a comment, string or bracket is not closed");
  return rewrite;
}

} // namespace kx
