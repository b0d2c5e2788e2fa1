// Text of the whole program: UTF-16 in memory, converted only where bytes enter or leave.
//
// Everything here is pure and never throws (but for std::bad_alloc). "Blank" means any character at or below
// U+0020, as the readers of solution files and the host's lists have always understood it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kx::text {

// One-to-one lower-case folding: ASCII, Latin, Greek, Cyrillic and full-width letters; others stay as they
// are. It is the one folding behind every comparison "without regard to letter case".
char16_t FoldCase(char16_t c);

bool EqualsIgnoreCase(std::u16string_view a, std::u16string_view b);
bool LessIgnoreCase(std::u16string_view a, std::u16string_view b);
bool StartsWithIgnoreCase(std::u16string_view text, std::u16string_view prefix);
bool EndsWithIgnoreCase(std::u16string_view text, std::u16string_view suffix);
// Position of the first occurrence at or after `from`; npos when there is none.
std::size_t FindIgnoreCase(std::u16string_view text, std::u16string_view wanted, std::size_t from = 0);

// Orders and hashes keys without regard to letter case, for maps.
struct IgnoreCaseLess {
  using is_transparent = void;
  bool operator()(std::u16string_view a, std::u16string_view b) const { return LessIgnoreCase(a, b); }
};
struct IgnoreCaseHash {
  using is_transparent = void;
  std::size_t operator()(std::u16string_view text) const;
};
struct IgnoreCaseEqual {
  using is_transparent = void;
  bool operator()(std::u16string_view a, std::u16string_view b) const { return EqualsIgnoreCase(a, b); }
};

constexpr bool IsBlank(char16_t c) {
  return c <= u' ';
}
constexpr bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

std::u16string_view Trim(std::u16string_view text);
std::u16string_view TrimLeft(std::u16string_view text);
std::u16string_view TrimRight(std::u16string_view text);
std::u16string ToLower(std::u16string_view text);

// At most so many code units, at least one: of a longer text the beginning and an ellipsis. No character is
// cut.
std::u16string Shortened(std::u16string_view text, std::size_t most);

// Control characters but tab and line ends as the pictures that Unicode has for them (U+2400...), so that
// text from a tool or a file cannot steer what shows it.
std::u16string VisibleControls(std::u16string_view text);

enum class Case { Respect, Ignore };
std::u16string ReplaceAll(std::u16string_view text, std::u16string_view old, std::u16string_view replacement,
                          Case letters = Case::Respect);

// Lines end at CR LF, LF or CR; a line end at the end of the text adds no empty line. The views point into
// `text`.
std::vector<std::u16string_view> SplitLines(std::u16string_view text);
std::vector<std::u16string_view> Split(std::u16string_view text, char16_t separator);
std::u16string Join(std::span<const std::u16string> parts, std::u16string_view separator);

// A decimal number with an optional sign; leading blanks are allowed, anything else around it is not. Nothing
// when the text is no number or does not fit.
std::optional<std::int32_t> ToInteger(std::u16string_view text);
std::int32_t ToIntegerOr(std::u16string_view text, std::int32_t otherwise);
std::u16string FromInteger(std::int64_t number);

// For "did you mean": the candidate with the fewest edits (case ignored), or empty when none is near enough
// to help.
std::u16string NearestName(std::u16string_view name, std::span<const std::u16string> candidates);

} // namespace kx::text
