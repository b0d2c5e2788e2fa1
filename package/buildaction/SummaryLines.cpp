#include "package/buildaction/SummaryLines.h"

#include "foundation/text/Text.h"
#include "package/buildaction/MSBuildLogger.h"
#include "package/buildaction/ToolOutputWords.h"

#include <algorithm>
#include <functional>

namespace kx {

namespace {

constexpr bool IsWhiteSpace(char16_t c) {
  return c == u' ' || (c >= u'\t' && c <= u'\r');
}
constexpr bool IsWordCharacter(char16_t c) {
  return text::IsDigit(c) || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
}

std::int32_t NumberOf(std::u16string_view digits) {
  return text::ToIntegerOr(digits, 0);
}

// Reads a text piece by piece; a step that does not fit takes nothing and answers False or empty.
class TCursor {
public:
  explicit TCursor(std::u16string_view rest) : rest_(rest) {}

  bool Take(std::u16string_view literal) {
    if (!rest_.starts_with(literal)) return false;
    rest_.remove_prefix(literal.size());
    return true;
  }
  bool TakeSpace() { return TakeWhile(IsWhiteSpace, 1).size() == 1; }
  std::u16string_view TakeDigits() { return TakeWhile(text::IsDigit, rest_.size()); }
  std::u16string_view TakeWord() { return TakeWhile(IsWordCharacter, rest_.size()); }

private:
  std::u16string_view TakeWhile(bool (*fits)(char16_t), std::size_t most) {
    std::size_t size = 0;
    while (size < std::min(most, rest_.size()) && fits(rest_[size]))
      ++size;
    const auto taken = rest_.substr(0, size);
    rest_.remove_prefix(size);
    return taken;
  }

  std::u16string_view rest_;
};

// The answer of the first place of `wanted` at which `read`, given what stands before and behind it, has one.
template <typename TRead>
auto ReadAt(std::u16string_view line, std::u16string_view wanted, TRead read) -> decltype(read(line, line)) {
  for (auto at = line.find(wanted); at != std::u16string_view::npos; at = line.find(wanted, at + 1))
    if (auto found = read(line.substr(0, at), line.substr(at + wanted.size()))) return found;
  return {};
}

bool IsFailureCount(std::u16string_view digits) {
  return digits.find_first_not_of(u'0') != std::u16string_view::npos;
}

bool IsFailureBehind(std::u16string_view text) {
  TCursor cursor(text);
  return !cursor.TakeDigits().empty() && cursor.Take(u" succeeded, ") &&
         IsFailureCount(cursor.TakeDigits()) && cursor.Take(u" failed, ") && !cursor.TakeDigits().empty() &&
         cursor.Take(u" skipped");
}

std::optional<TSummaryCounts> CountsBehind(std::u16string_view text) {
  TCursor cursor(text);
  if (!cursor.TakeSpace()) return std::nullopt;
  const auto errors = cursor.TakeDigits();
  if (errors.empty() || !cursor.TakeSpace() || cursor.TakeWord().empty()) return std::nullopt;
  if (!cursor.Take(u",") || !cursor.TakeSpace()) return std::nullopt;
  const auto warnings = cursor.TakeDigits();
  if (warnings.empty()) return std::nullopt;
  return TSummaryCounts{NumberOf(errors), NumberOf(warnings)};
}

bool TakeSpaceFromEnd(std::u16string_view& text) {
  if (text.empty() || !IsWhiteSpace(text.back())) return false;
  text.remove_suffix(1);
  return true;
}

std::u16string_view DigitsAtEnd(std::u16string_view text) {
  std::size_t begin = text.size();
  while (begin > 0 && text::IsDigit(text[begin - 1]))
    --begin;
  return text.substr(begin);
}

// The word of some language with which the text ends, as `isIt` (what the text ends with, a word) says; else
// empty.
template <typename TIsIt>
std::u16string_view WordAtEnd(std::u16string_view text, std::u16string_view TToolLanguage::*word,
                              TIsIt isIt) {
  for (const auto& language : ToolLanguages) {
    const std::u16string_view known = language.*word;
    if (text.size() >= known.size() && isIt(text.substr(text.size() - known.size()), known)) return known;
  }
  return {};
}

// The number before the word with a capital and "(s)".
std::optional<std::int32_t> ReadCount(std::u16string_view line, std::u16string_view TToolLanguage::*which) {
  return ReadAt(line, u"(s)",
                [&](std::u16string_view head, std::u16string_view) -> std::optional<std::int32_t> {
                  const auto word = WordAtEnd(head, which, IsCapitalised);
                  if (word.empty()) return std::nullopt;
                  head.remove_suffix(word.size());
                  if (!TakeSpaceFromEnd(head)) return std::nullopt;
                  const auto digits = DigitsAtEnd(head);
                  return digits.empty() ? std::nullopt : std::optional(NumberOf(digits));
                });
}

// The one number of a text; nothing when it has none or several.
std::optional<std::u16string_view> OnlyNumber(std::u16string_view text) {
  const auto begin = std::ranges::find_if(text, text::IsDigit);
  const auto end = std::find_if_not(begin, text.end(), text::IsDigit);
  if (begin == end || std::any_of(end, text.end(), text::IsDigit)) return std::nullopt;
  return std::u16string_view(begin, end);
}

std::optional<bool> HasUnskipped(std::u16string_view counts) {
  constexpr std::size_t fewest = 3; // succeeded, failed, skipped
  const auto parts = text::Split(counts, u',');
  if (parts.size() < fewest) return std::nullopt;
  bool some = false;
  for (const auto& part : parts) {
    const auto number = OnlyNumber(part);
    if (!number) return std::nullopt;
    if (&part != &parts.back()) some |= number->find_first_not_of(u'0') != std::u16string_view::npos;
  }
  return some;
}

} // namespace

bool IsFailureSummary(std::u16string_view line) {
  return ReadAt(line, u": ",
                [](std::u16string_view, std::u16string_view behind) { return IsFailureBehind(behind); });
}

std::optional<TSummaryCounts> ReadCountSummary(std::u16string_view line) {
  return ReadAt(line, u"--",
                [](std::u16string_view head, std::u16string_view behind) -> std::optional<TSummaryCounts> {
                  if (!TakeSpaceFromEnd(head)) return std::nullopt;
                  const auto word = WordAtEnd(head, &TToolLanguage::Complete, std::equal_to<>());
                  return word.empty() ? std::nullopt : CountsBehind(behind);
                });
}

std::optional<std::int32_t> ReadErrorCount(std::u16string_view line) {
  return ReadCount(line, &TToolLanguage::Error);
}

std::optional<std::int32_t> ReadWarningCount(std::u16string_view line) {
  return ReadCount(line, &TToolLanguage::Warning);
}

std::optional<bool> ReadBuildSummary(std::u16string_view line) {
  constexpr std::u16string_view frame = u"=====";
  const auto text = text::TrimLeft(line);
  const auto colon = text.find(u": ");
  if (colon == std::u16string_view::npos) return std::nullopt;
  const auto counts = text.substr(colon + 1);
  if (text.starts_with(frame)) return HasUnskipped(counts);
  const bool isOld = counts.find(u" succeeded, ") != std::u16string_view::npos &&
                     text::TrimRight(counts).ends_with(u" skipped");
  return isOld ? HasUnskipped(counts) : std::nullopt;
}

std::optional<bool> ReadProjectLine(std::u16string_view line) {
  const auto text = text::Trim(line);
  if (!text.starts_with(u"Project \"") && !text.starts_with(u"Projet \"")) return std::nullopt;
  const bool isBeginning = text.ends_with(u")") || text.ends_with(u").") || text.ends_with(u"):");
  const auto close = text.rfind(u'"');
  const auto open = text.rfind(u'"', close - 1);
  if (!isBeginning || open == std::u16string_view::npos) return std::nullopt;
  return IsProjectOfItsOwn(text.substr(open + 1, close - open - 1));
}

} // namespace kx
