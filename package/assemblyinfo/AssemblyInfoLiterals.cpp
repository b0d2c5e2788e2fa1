#include "package/assemblyinfo/AssemblyInfoLiterals.h"
#include "foundation/text/Text.h"

#include <algorithm>

namespace kx {

namespace {

using enum TAssemblyInfoLanguage;

constexpr std::size_t npos = std::u16string_view::npos;

// Strings inside the holes of interpolated strings may hold such strings again; nobody goes deeper.
constexpr int MaximumNesting = 16;

constexpr std::size_t LongestCharacter = 12; // '\U0001F600'

char16_t At(std::u16string_view text, std::size_t at) {
  return at < text.size() ? text[at] : u'\0';
}

// Visual Basic takes the typographic and the full-width quotation mark for the plain one.
bool IsQuote(char16_t c, TAssemblyInfoLanguage language) {
  return c == u'"' || (language == VisualBasic && (c == 0x201C || c == 0x201D || c == 0xFF02));
}

// How many of the character stand there; no more than `most` are counted.
std::size_t Run(std::u16string_view text, std::size_t at, char16_t c, std::size_t most) {
  const std::u16string_view there = text.substr(std::min(at, text.size())).substr(0, most);
  return std::min(there.find_first_not_of(c), there.size());
}

// F# has no more of them than three.
std::size_t MostQuotes(TAssemblyInfoLanguage language) {
  return language == FSharp ? 3 : npos;
}

bool IsPrefix(char16_t c, TAssemblyInfoLanguage language) {
  return language != JSharp && (c == u'$' || (c == u'@' && language != VisualBasic));
}

// How a literal begins.
struct TOpening {
  std::size_t Begin = 0; // behind the opening quotation mark
  bool Verbatim = false;
  bool Interpolated = false;
  std::size_t Quotes = 1; // of a raw or triple-quoted string: three or more
  std::u16string RawEnd;  // of a C++ raw string
};

std::optional<TOpening> OpenCpp(std::u16string_view text, std::size_t at) {
  std::size_t i = at;
  if (text.substr(i, 2) == u"u8")
    i += 2;
  else if (At(text, i) == u'L' || At(text, i) == u'u' || At(text, i) == u'U')
    ++i;
  const bool raw = At(text, i) == u'R';
  if (raw) ++i;
  if (At(text, i) != u'"') return std::nullopt;
  TOpening opening{.Begin = i + 1, .RawEnd = {}};
  if (!raw) return opening;
  const std::size_t parenthesis = text.substr(0, i + 18).find(u'(', i);
  if (parenthesis == npos) return opening;
  opening.RawEnd = u")" + std::u16string(text.substr(i + 1, parenthesis - i - 1)) + u"\"";
  opening.Begin = parenthesis + 1;
  return opening;
}

std::optional<TOpening> Open(std::u16string_view text, std::size_t at, TAssemblyInfoLanguage language) {
  if (language == Cpp) return OpenCpp(text, at);
  TOpening opening{.Begin = at, .RawEnd = {}};
  if (at > 0 && IsPrefix(text[at - 1], language)) return std::nullopt; // it would begin there
  for (; IsPrefix(At(text, opening.Begin), language); ++opening.Begin)
    (At(text, opening.Begin) == u'$' ? opening.Interpolated : opening.Verbatim) = true;
  if (!IsQuote(At(text, opening.Begin), language)) return std::nullopt;
  if ((language == CSharp || language == FSharp) && !opening.Verbatim)
    opening.Quotes = Run(text, opening.Begin, u'"', MostQuotes(language));
  if (opening.Quotes < 3) opening.Quotes = 1;
  opening.Begin += opening.Quotes;
  if (language == VisualBasic) opening.Verbatim = true; // doubled quotation marks, no escapes
  return opening;
}

TLiteralEnd SkipQuotes(std::u16string_view text, const TOpening& opening, TAssemblyInfoLanguage language) {
  for (std::size_t i = opening.Begin; (i = text.find(u'"', i)) != npos;) {
    const std::size_t run = Run(text, i, u'"', MostQuotes(language));
    if (run >= opening.Quotes) return {.At = i + run, .Closed = true};
    i += run;
  }
  return {.At = text.size()};
}

TLiteralEnd SkipString(std::u16string_view text, std::size_t at, TAssemblyInfoLanguage language, int depth);

// Behind the "}" that closes the hole.
std::size_t SkipHole(std::u16string_view text, std::size_t at, bool lines, TAssemblyInfoLanguage language,
                     int depth) {
  for (int open = 0; at < text.size();) {
    const char16_t c = text[at];
    if (!lines && IsSourceLineEnd(c, language)) return at;
    const std::size_t end = SkipString(text, at, language, depth + 1).At;
    if (end != at) {
      at = end;
      continue;
    }
    ++at;
    if (c == u'{') ++open;
    if (c == u'}' && --open == 0) return at;
  }
  return at;
}

TLiteralEnd SkipText(std::u16string_view text, const TOpening& opening, TAssemblyInfoLanguage language,
                     int depth) {
  const bool lines = opening.Verbatim || language == FSharp;
  for (std::size_t i = opening.Begin; i < text.size();) {
    const char16_t c = text[i];
    if (IsQuote(c, language)) {
      if (!opening.Verbatim || !IsQuote(At(text, i + 1), language)) return {.At = i + 1, .Closed = true};
      i += 2;
    } else if (c == u'\\' && !opening.Verbatim) {
      i += text.substr(i + 1, 2) == u"\r\n" && language == Cpp ? 3 : 2;
      if (language != Cpp && !lines && IsSourceLineEnd(At(text, i - 1), language)) return {.At = i - 1};
    } else if (c == u'{' && opening.Interpolated && depth < MaximumNesting) {
      i = At(text, i + 1) == u'{' ? i + 2 : SkipHole(text, i, lines, language, depth);
    } else if (!lines && IsSourceLineEnd(c, language)) {
      return {.At = i};
    } else {
      ++i;
    }
  }
  return {.At = text.size()};
}

TLiteralEnd SkipString(std::u16string_view text, std::size_t at, TAssemblyInfoLanguage language, int depth) {
  const std::optional<TOpening> opening = Open(text, at, language);
  if (!opening) return {.At = at};
  if (!opening->RawEnd.empty()) {
    const std::size_t end = text.find(opening->RawEnd, opening->Begin);
    if (end == npos) return {.At = text.size()};
    return {.At = end + opening->RawEnd.size(), .Closed = true};
  }
  if (opening->Quotes >= 3) return SkipQuotes(text, *opening, language);
  TLiteralEnd end = SkipText(text, *opening, language, depth);
  end.At = std::min(end.At, text.size());
  // The "c" behind a Visual Basic literal makes it a character.
  const char16_t behind = At(text, end.At);
  if (language == VisualBasic && (behind == u'c' || behind == u'C')) ++end.At;
  return end;
}

std::size_t SkipCharacter(std::u16string_view text, std::size_t at, TAssemblyInfoLanguage language) {
  if (language == VisualBasic || At(text, at) != u'\'') return at;
  // An apostrophe of F# also begins the name of a type parameter.
  if (language == FSharp && At(text, at + 1) != u'\\') return At(text, at + 2) == u'\'' ? at + 3 : at;
  const std::size_t limit = std::min(text.size(), at + LongestCharacter);
  for (std::size_t i = at + 1; i < limit && !IsSourceLineEnd(text[i], language); ++i) {
    if (text[i] == u'\'') return i + 1;
    if (text[i] == u'\\') ++i;
  }
  return at;
}

// The digits of an escape: their number and base. Text that has fewer is malformed.
struct TDigits {
  std::size_t Least = 0;
  std::size_t Most = 0;
  std::uint32_t Base = 16;
};

std::optional<TDigits> DigitsOf(char16_t letter, TAssemblyInfoLanguage language) {
  if (letter == u'u') return TDigits{.Least = 4, .Most = 4};
  if (letter == u'U' && language != JSharp) return TDigits{.Least = 8, .Most = 8};
  if (letter == u'x' && language == CSharp) return TDigits{.Least = 1, .Most = 4};
  if (letter == u'x' && language == FSharp) return TDigits{.Least = 2, .Most = 2};
  if (letter == u'x' && language == Cpp) return TDigits{.Least = 1, .Most = 8};
  return std::nullopt;
}

std::optional<std::uint32_t> ReadDigits(std::u16string_view text, std::size_t& at, const TDigits& digits) {
  std::uint32_t number = 0;
  std::size_t count = 0;
  for (; count < digits.Most && at < text.size(); ++count, ++at) {
    const char16_t c = text::FoldCase(text[at]);
    const std::uint32_t digit = text::IsDigit(c)         ? static_cast<std::uint32_t>(c - u'0')
                                : c >= u'a' && c <= u'f' ? static_cast<std::uint32_t>(c - u'a' + 10)
                                                         : 99;
    if (digit >= digits.Base) break;
    number = number * digits.Base + digit;
  }
  return count < digits.Least || number > 0x10FFFF ? std::nullopt : std::optional(number);
}

void Append(std::u16string& out, std::uint32_t codePoint) {
  if (codePoint < 0x10000) {
    out += static_cast<char16_t>(codePoint);
    return;
  }
  out += static_cast<char16_t>(0xD7C0 + (codePoint >> 10U));
  out += static_cast<char16_t>(0xDC00 + (codePoint & 0x3FFU));
}

// What stands behind a backslash, at `at`.
bool DecodeEscape(std::u16string_view text, std::size_t& at, TAssemblyInfoLanguage language,
                  std::u16string& out) {
  static constexpr std::u16string_view letters = u"abfnrtv\\\"'?";
  static constexpr std::u16string_view values = u"\a\b\f\n\r\t\v\\\"'?";
  const char16_t c = At(text, at);
  if (text::IsDigit(c)) {
    const bool decimal = language == FSharp && text::IsDigit(At(text, at + 1));
    const TDigits digits = decimal ? TDigits{.Least = 3, .Most = 3, .Base = 10}
                           : language == Cpp || language == JSharp
                               ? TDigits{.Least = 1, .Most = 3, .Base = 8}
                               : TDigits{.Least = 1, .Most = 1, .Base = 1};
    const auto number = ReadDigits(text, at, digits);
    if (number) Append(out, *number);
    return number.has_value();
  }
  ++at;
  if (const auto digits = DigitsOf(c, language)) {
    const auto number = ReadDigits(text, at, *digits);
    if (number) Append(out, *number);
    return number.has_value();
  }
  const std::size_t index = letters.find(c);
  if (index == npos || (c == u'?' && language != Cpp)) return false;
  out += values[index];
  return true;
}

// Between the marks of a raw or triple-quoted string stands its value, but for C# in several lines, where
// the indentation does not count.
std::optional<std::u16string> DecodeRaw(std::u16string_view literal, const TOpening& opening,
                                        TAssemblyInfoLanguage language) {
  const std::size_t closing = opening.RawEnd.empty() ? opening.Quotes : opening.RawEnd.size();
  if (literal.size() < opening.Begin + closing) return std::nullopt;
  const auto inner = literal.substr(opening.Begin, literal.size() - opening.Begin - closing);
  const bool lines = inner.find_first_of(u"\r\n") != npos;
  return language == CSharp && lines ? std::nullopt : std::optional<std::u16string>(inner);
}

std::u16string Octal(char16_t c) {
  std::u16string out = u"\\";
  for (const unsigned shift : {6U, 3U, 0U})
    out += static_cast<char16_t>(u'0' + ((static_cast<unsigned>(c) >> shift) & 7U));
  return out;
}

std::u16string Hexadecimal(char16_t c) {
  std::u16string out = u"\\u";
  for (const unsigned shift : {12U, 8U, 4U, 0U})
    out += u"0123456789ABCDEF"[(static_cast<unsigned>(c) >> shift) & 15U];
  return out;
}

// Characters that a line of source cannot hold as they are.
bool IsControl(char16_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

std::u16string EncodeBasic(std::u16string_view value) {
  std::u16string out;
  bool open = false;
  const auto part = [&out] { return out.empty() ? u"" : u" & "; };
  for (const char16_t c : value) {
    if (IsControl(c)) {
      if (open) out += u'"';
      open = false;
      out += part();
      out += u"Microsoft.VisualBasic.ChrW(" + text::FromInteger(c) + u")";
      continue;
    }
    if (!open) {
      out += part();
      out += u'"';
      open = true;
    }
    out += c;
    if (IsQuote(c, VisualBasic)) out += c;
  }
  if (open) return out + u'"';
  return out.empty() ? u"\"\"" : out;
}

std::u16string EncodeControl(char16_t c, TAssemblyInfoLanguage language) {
  if (c == u'\n') return u"\\n";
  if (c == u'\r') return u"\\r";
  if (c == u'\t') return u"\\t";
  const bool octal = (language == Cpp || language == JSharp) && c < 0x100;
  return octal ? Octal(c) : Hexadecimal(c);
}

} // namespace

TLiteralEnd SkipLiteral(std::u16string_view text, std::size_t at, TAssemblyInfoLanguage language) {
  const TLiteralEnd end = SkipString(text, at, language, 0);
  return end.At != at ? end : TLiteralEnd{.At = SkipCharacter(text, at, language), .Closed = true};
}

bool IsConstantLiteral(std::u16string_view literal, TAssemblyInfoLanguage language) {
  const std::optional<TOpening> opening = Open(literal, 0, language);
  return opening && !opening->Interpolated;
}

std::optional<std::u16string> DecodeLiteral(std::u16string_view literal, TAssemblyInfoLanguage language) {
  const std::optional<TOpening> opening = Open(literal, 0, language);
  if (!opening || opening->Interpolated) return std::nullopt;
  if (opening->Quotes >= 3 || !opening->RawEnd.empty()) return DecodeRaw(literal, *opening, language);
  if (literal.size() <= opening->Begin || !IsQuote(literal.back(), language)) return std::nullopt;
  const std::u16string_view inner = literal.substr(0, literal.size() - 1);
  std::u16string value;
  for (std::size_t i = opening->Begin; i < inner.size();) {
    const char16_t c = inner[i++];
    if (opening->Verbatim && IsQuote(c, language)) {
      value += c;
      ++i;
    } else if (!opening->Verbatim && c == u'\\') {
      if (!DecodeEscape(inner, i, language, value)) return std::nullopt;
    } else {
      value += c;
    }
  }
  return value;
}

std::u16string EncodeLiteral(std::u16string_view value, TAssemblyInfoLanguage language,
                             std::u16string_view old) {
  if (language == VisualBasic) return EncodeBasic(value);
  if (old.starts_with(u"@\"") && std::ranges::none_of(value, IsControl))
    return u"@\"" + text::ReplaceAll(value, u"\"", u"\"\"") + u"\"";
  std::u16string out = language == Cpp && old.starts_with(u"L\"") ? u"L\"" : u"\"";
  char16_t before = u'\0';
  for (const char16_t c : value) {
    // "??/" would be a backslash for C++ compilers, "*/" the end of a J# documentation comment.
    const bool trigraph = language == Cpp && c == u'?' && before == u'?';
    if (language == JSharp && c == u'/' && before == u'*')
      out += Octal(c);
    else if (IsControl(c))
      out += EncodeControl(c, language);
    else
      (out += c == u'"' || c == u'\\' || trigraph ? u"\\" : u"") += c;
    before = c;
  }
  return out + u'"';
}

} // namespace kx
