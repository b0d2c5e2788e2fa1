#include "foundation/text/Text.h"

#include "foundation/text/Hash.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kx::text {

namespace {

// Capital letters First, First + Step, ... Last, each Distance away from its small letter.
struct CaseRange {
  char16_t First;
  char16_t Last;
  std::uint8_t Step;
  std::int16_t Distance;
};

// Sorted by code point. U+0130 is missing on purpose: its small letter would be the ASCII "i".
constexpr std::array<CaseRange, 45> kCaseRanges{{
    {0x00C0, 0x00D6, 1, 32},  {0x00D8, 0x00DE, 1, 32}, {0x0100, 0x012E, 2, 1},    {0x0132, 0x0136, 2, 1},
    {0x0139, 0x0147, 2, 1},   {0x014A, 0x0176, 2, 1},  {0x0178, 0x0178, 1, -121}, {0x0179, 0x017D, 2, 1},
    {0x018F, 0x018F, 1, 202}, {0x0191, 0x0191, 1, 1},  {0x01A0, 0x01A4, 2, 1},    {0x01AF, 0x01AF, 1, 1},
    {0x01C4, 0x01C4, 1, 2},   {0x01C7, 0x01C7, 1, 2},  {0x01CA, 0x01CA, 1, 2},    {0x01CD, 0x01DB, 2, 1},
    {0x01DE, 0x01EE, 2, 1},   {0x01F1, 0x01F1, 1, 2},  {0x01F4, 0x01F4, 1, 1},    {0x01F8, 0x021E, 2, 1},
    {0x0222, 0x0232, 2, 1},   {0x0386, 0x0386, 1, 38}, {0x0388, 0x038A, 1, 37},   {0x038C, 0x038C, 1, 64},
    {0x038E, 0x038F, 1, 63},  {0x0391, 0x03A1, 1, 32}, {0x03A3, 0x03AB, 1, 32},   {0x03D8, 0x03EE, 2, 1},
    {0x0400, 0x040F, 1, 80},  {0x0410, 0x042F, 1, 32}, {0x0460, 0x0480, 2, 1},    {0x048A, 0x04BE, 2, 1},
    {0x04C0, 0x04C0, 1, 15},  {0x04C1, 0x04CD, 2, 1},  {0x04D0, 0x052E, 2, 1},    {0x1E00, 0x1E94, 2, 1},
    {0x1EA0, 0x1EFE, 2, 1},   {0x1F08, 0x1F0F, 1, -8}, {0x1F18, 0x1F1D, 1, -8},   {0x1F28, 0x1F2F, 1, -8},
    {0x1F38, 0x1F3F, 1, -8},  {0x1F48, 0x1F4D, 1, -8}, {0x1F59, 0x1F5F, 2, -8},   {0x1F68, 0x1F6F, 1, -8},
    {0xFF21, 0xFF3A, 1, 32},
}};

char16_t FoldBeyondAscii(char16_t c) {
  const auto range = std::ranges::lower_bound(kCaseRanges, c, {}, &CaseRange::Last);
  if (range == kCaseRanges.end() || c < range->First || (c - range->First) % range->Step != 0) return c;
  return static_cast<char16_t>(c + range->Distance);
}

inline char16_t Fold(char16_t c) {
  if (c < 0x80) return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
  return FoldBeyondAscii(c);
}

bool SameLetters(const char16_t* a, const char16_t* b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (a[i] != b[i] && Fold(a[i]) != Fold(b[i])) return false;
  }
  return true;
}

// Edits that turn one name into the other: a letter more, less, changed, or exchanged with its neighbour.
std::size_t EditDistance(std::u16string_view a, std::u16string_view b) {
  std::vector<std::size_t> older(b.size() + 1);
  std::vector<std::size_t> previous(b.size() + 1);
  std::vector<std::size_t> current(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j)
    previous[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    current[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const bool same = Fold(a[i - 1]) == Fold(b[j - 1]);
      current[j] = std::min({previous[j] + 1, current[j - 1] + 1, previous[j - 1] + (same ? 0U : 1U)});
      const bool exchanged =
          i > 1 && j > 1 && Fold(a[i - 1]) == Fold(b[j - 2]) && Fold(a[i - 2]) == Fold(b[j - 1]);
      if (exchanged) current[j] = std::min(current[j], older[j - 2] + 1);
    }
    older.swap(previous);
    previous.swap(current);
  }
  return previous[b.size()];
}

} // namespace

char16_t FoldCase(char16_t c) {
  return Fold(c);
}

bool EqualsIgnoreCase(std::u16string_view a, std::u16string_view b) {
  return a.size() == b.size() && SameLetters(a.data(), b.data(), a.size());
}

bool LessIgnoreCase(std::u16string_view a, std::u16string_view b) {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char16_t x, char16_t y) { return Fold(x) < Fold(y); });
}

bool StartsWithIgnoreCase(std::u16string_view text, std::u16string_view prefix) {
  return text.size() >= prefix.size() && SameLetters(text.data(), prefix.data(), prefix.size());
}

bool EndsWithIgnoreCase(std::u16string_view text, std::u16string_view suffix) {
  return text.size() >= suffix.size() &&
         SameLetters(text.data() + (text.size() - suffix.size()), suffix.data(), suffix.size());
}

std::size_t FindIgnoreCase(std::u16string_view text, std::u16string_view wanted, std::size_t from) {
  if (from > text.size() || wanted.size() > text.size() - from) return std::u16string_view::npos;
  if (wanted.empty()) return from;
  const char16_t first = Fold(wanted.front());
  const std::size_t last = text.size() - wanted.size();
  for (std::size_t i = from; i <= last; ++i) {
    if (Fold(text[i]) == first && SameLetters(text.data() + i, wanted.data(), wanted.size())) return i;
  }
  return std::u16string_view::npos;
}

std::size_t IgnoreCaseHash::operator()(std::u16string_view text) const {
  const std::uint64_t hash = StableHash(text, Fold);
  return static_cast<std::size_t>(hash ^ (hash >> 32));
}

std::u16string_view Trim(std::u16string_view text) {
  return TrimLeft(TrimRight(text));
}

std::u16string_view TrimLeft(std::u16string_view text) {
  while (!text.empty() && IsBlank(text.front()))
    text.remove_prefix(1);
  return text;
}

std::u16string_view TrimRight(std::u16string_view text) {
  while (!text.empty() && IsBlank(text.back()))
    text.remove_suffix(1);
  return text;
}

std::u16string ToLower(std::u16string_view text) {
  std::u16string lower(text);
  std::ranges::transform(lower, lower.begin(), Fold);
  return lower;
}

std::u16string Shortened(std::u16string_view text, std::size_t most) {
  if (text.size() <= most) return std::u16string(text);
  std::size_t end = most - 1;
  const bool isPair = end > 0 && (text[end] & 0xFC00) == 0xDC00 && (text[end - 1] & 0xFC00) == 0xD800;
  if (isPair) --end;
  return std::u16string(text.substr(0, end)) + u'\u2026';
}

std::u16string VisibleControls(std::u16string_view text) {
  std::u16string shown(text);
  for (char16_t& c : shown) {
    const bool control = (c < 0x20 && c != u'\t' && c != u'\n' && c != u'\r') || (c >= 0x7F && c < 0xA0);
    if (control) c = c < 0x20 ? static_cast<char16_t>(0x2400 + c) : u'\u2421';
  }
  return shown;
}

std::u16string ReplaceAll(std::u16string_view text, std::u16string_view old, std::u16string_view replacement,
                          Case letters) {
  if (old.empty()) return std::u16string(text);
  std::u16string result;
  std::size_t done = 0;
  for (;;) {
    const std::size_t found =
        letters == Case::Ignore ? FindIgnoreCase(text, old, done) : text.find(old, done);
    if (found == std::u16string_view::npos) break;
    result.append(text, done, found - done).append(replacement);
    done = found + old.size();
  }
  return result.append(text.substr(done));
}

std::vector<std::u16string_view> SplitLines(std::u16string_view text) {
  std::vector<std::u16string_view> lines;
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] > u'\r' || (text[i] != u'\r' && text[i] != u'\n')) continue;
    lines.push_back(text.substr(start, i - start));
    if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') ++i;
    start = i + 1;
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return lines;
}

std::vector<std::u16string_view> Split(std::u16string_view text, char16_t separator) {
  std::vector<std::u16string_view> parts;
  std::size_t start = 0;
  for (std::size_t end = text.find(separator); end != std::u16string_view::npos;
       end = text.find(separator, start)) {
    parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  parts.push_back(text.substr(start));
  return parts;
}

std::u16string Join(std::span<const std::u16string> parts, std::u16string_view separator) {
  std::u16string result;
  for (const std::u16string& part : parts) {
    if (&part != parts.data()) result.append(separator);
    result.append(part);
  }
  return result;
}

std::optional<std::int32_t> ToInteger(std::u16string_view text) {
  text = TrimLeft(text);
  const bool negative = text.starts_with(u'-');
  if (negative || text.starts_with(u'+')) text.remove_prefix(1);
  if (text.empty()) return std::nullopt;
  constexpr std::int64_t limit = -static_cast<std::int64_t>(std::numeric_limits<std::int32_t>::min());
  std::int64_t number = 0;
  for (const char16_t c : text) {
    if (!IsDigit(c)) return std::nullopt;
    number = number * 10 + (c - u'0');
    if (number > limit) return std::nullopt;
  }
  if (!negative && number == limit) return std::nullopt;
  return static_cast<std::int32_t>(negative ? -number : number);
}

std::int32_t ToIntegerOr(std::u16string_view text, std::int32_t otherwise) {
  return ToInteger(text).value_or(otherwise);
}

std::u16string FromInteger(std::int64_t number) {
  const std::string digits = std::to_string(number);
  return {digits.begin(), digits.end()};
}

std::u16string NearestName(std::u16string_view name, std::span<const std::u16string> candidates) {
  const std::u16string* nearest = nullptr;
  std::size_t fewest = std::numeric_limits<std::size_t>::max();
  for (const std::u16string& candidate : candidates) {
    // A third of the letters may be wrong; beyond that a suggestion would rather mislead.
    const std::size_t allowed = std::max<std::size_t>(1, std::max(name.size(), candidate.size()) / 3);
    const std::size_t edits = EditDistance(name, candidate);
    if (edits > allowed || edits >= fewest || edits >= std::max(name.size(), candidate.size())) continue;
    nearest = &candidate;
    fewest = edits;
  }
  return nearest == nullptr ? std::u16string() : *nearest;
}

} // namespace kx::text
