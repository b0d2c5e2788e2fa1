// What a CI system reads: however it comes in pieces, no command of any system starts in what has passed the
// door.
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "fuzz/FuzzTarget.h"
#include "program/report/CiGuard.h"

#include <algorithm>
#include <array>

namespace kx::fuzz {
namespace {

constexpr std::u16string_view LineEnds = u"\n\r\v\f\u0085\u2028\u2029";
constexpr std::u16string_view Blanks =
    u"\t \u00A0\u1680\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009"
    u"\u200A\u202F\u205F\u3000";
constexpr std::u16string_view WithoutWidth = u"\u200B\u200C\u200D\u2060\uFEFF";

std::u16string Without(std::u16string_view text, std::u16string_view characters) {
  std::u16string rest(text);
  std::erase_if(rest, [characters](char16_t c) { return characters.find(c) != characters.npos; });
  return rest;
}

// Only colours pass; they take no place.
std::u16string WithoutColours(std::u16string_view text) {
  std::u16string rest;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != u'\x1B') {
      rest += text[i];
      continue;
    }
    Require(text.substr(i + 1).starts_with(u'['), "no other sequences of a terminal pass");
    const std::size_t end = text.find_first_not_of(u"0123456789;", i + 2);
    Require(end != text.npos && text[end] == u'm', "no other sequences of a terminal pass");
    i = end;
  }
  return rest;
}

void CheckLine(std::u16string_view line) {
  const std::u16string shown = Without(line, WithoutWidth);
  const std::size_t start = shown.find_first_not_of(Blanks);
  Require(start == shown.npos || !std::u16string_view(shown).substr(start).starts_with(u"::"),
          "no command of GitHub starts a line");
}

void CheckPassed(std::string_view passed) {
  const std::u16string text = WithoutColours(text::FromUtf8(passed));
  constexpr std::array<std::u16string_view, 3> markers{u"##[", u"##vso[", u"##teamcity["};
  for (const auto marker : markers)
    Require(text::FindIgnoreCase(text, marker) == text.npos, "no command stands anywhere");
  Require(std::ranges::none_of(text, [](char16_t c) { return c < u' ' && c != u'\t' && c != u'\n'; }),
          "no control characters pass");
  std::size_t from = 0;
  for (std::size_t end = 0; from <= text.size(); from = end + 1) {
    end = std::min(text.find_first_of(LineEnds, from), text.size());
    CheckLine(std::u16string_view(text).substr(from, end - from));
  }
}

// A piece of about this size; what is printed comes in whole characters.
std::string_view Piece(std::string_view text, std::size_t size) {
  size = std::min(size, text.size());
  while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U)
    ++size;
  return text.substr(0, size);
}

void Check(std::string_view bytes) {
  TInput input(bytes);
  const std::size_t size = 1 + input.Below(9);
  const std::string text = text::ToUtf8(text::FromUtf8(input.Rest()));
  TCiGuard guard;
  std::string passed;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view piece = Piece(rest, size);
    passed += guard.Pass(piece);
    rest.remove_prefix(piece.size());
  }
  CheckPassed(passed);
  const std::string whole = TCiGuard().Pass(text);
  CheckPassed(whole);
  Require(TCiGuard().Pass(whole) == whole, "what has passed passes");
  CheckPassed(text::ToUtf8(HarmlessForCi(text::FromUtf8(text))));
}

const TRegistration registration({"ci_guard", Check});

} // namespace
} // namespace kx::fuzz
