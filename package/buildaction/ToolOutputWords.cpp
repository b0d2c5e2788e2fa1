#include "package/buildaction/ToolOutputWords.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kx {

namespace {

// The search is that of Wu and Manber: every word is known by a window of seven characters, which begins with
// the delimiter before it; the pair of characters under the window's end says how far the window can move
// without missing one. Most pairs are in no word and move it by six.
constexpr std::size_t WindowSize = 7;

// Characters as the search sees them: letters without case, one class for all delimiters, 0 for all others.
using TClass = std::uint8_t;
constexpr TClass Delimiter = 1;
constexpr std::u16string_view Alphabet = u"acdefghilmnorstuvwé(-"; // what the windows hold, in lower case
constexpr std::size_t ClassCount = 32;
constexpr char16_t LongS = u'\u017F'; // the other lower case of "S"
constexpr std::size_t TableSize = LongS + 1;

constexpr bool IsWhiteSpace(char16_t c) {
  return c == u' ' || (c >= u'\t' && c <= u'\r');
}
constexpr bool IsDelimiter(char16_t c) {
  return IsWhiteSpace(c) || c == u'|' || c == u'=' || c == u';' || c == u',' || c == u'.';
}

constexpr std::array<TClass, TableSize> MakeClasses() {
  std::array<TClass, TableSize> classes{};
  TClass next = Delimiter + 1;
  for (const char16_t letter : Alphabet) {
    if (classes[letter] != 0) continue;
    classes[letter] = next;
    if (letter >= u'a') classes[letter - (u'a' - u'A')] = next;
    ++next;
  }
  for (char16_t c = 0; c < TableSize; ++c)
    if (IsDelimiter(c)) classes[c] = Delimiter;
  classes[LongS] = classes[u's'];
  return classes;
}
constexpr auto Classes = MakeClasses();
constexpr TClass ClassOf(char16_t c) {
  return c < TableSize ? Classes[c] : TClass{0};
}

struct TWord {
  std::u16string_view Text;
  unsigned Finding;
  std::u16string_view ZeroPrefix = {}; // between a delimiter and the word it makes ZeroFinding of it
  unsigned ZeroFinding = 0;
  unsigned CountFinding = 0; // what the word says with a capital and "(s)" behind it: the end of a count
};
constexpr std::size_t WordsPerLanguage = 4;
constexpr auto Words = [] {
  std::array<TWord, WordsPerLanguage * ToolLanguages.size()> words;
  auto next = words.begin();
  for (const auto& language : ToolLanguages) {
    *next++ = {.Text = language.Error, .Finding = HasError, .CountFinding = MayHoldErrorCount};
    *next++ = {.Text = language.Warning, .Finding = HasWarning, .CountFinding = MayHoldWarningCount};
    *next++ = {.Text = language.Failed,
               .Finding = HasFailed,
               .ZeroPrefix = language.None,
               .ZeroFinding = HasZeroFailed};
    *next++ = {.Text = language.Succeeded,
               .Finding = HasSucceeded,
               .ZeroPrefix = language.None,
               .ZeroFinding = HasZeroSucceeded};
  }
  return words;
}();

using TWindow = std::array<char16_t, WindowSize>;

// A delimiter and what follows it; `behind` fills up a word that is too short.
constexpr TWindow BeginOf(std::u16string_view word, char16_t behind) {
  TWindow window{u' '};
  for (std::size_t i = 1; i < WindowSize; ++i)
    window[i] = i <= word.size() ? word[i - 1] : behind;
  return window;
}

// Of "complete -- " as much as fits.
constexpr TWindow EndOf(std::u16string_view word) {
  constexpr std::u16string_view dashes = u" -- ";
  TWindow window{};
  for (std::size_t i = 0; i < WindowSize; ++i) {
    const std::size_t letters = WindowSize - dashes.size();
    window[i] = i < letters ? word[word.size() - letters + i] : dashes[i - letters];
  }
  return window;
}

// " " stands for any delimiter.
constexpr auto Windows = [] {
  std::array<TWindow, 2 * Words.size() + ToolLanguages.size()> windows;
  auto next = windows.begin();
  for (const auto& word : Words) {
    *next++ = BeginOf(word.Text, u' ');
    *next++ = BeginOf(word.Text, u'(');
  }
  for (const auto& language : ToolLanguages)
    *next++ = EndOf(language.Complete);
  return windows;
}();
static_assert(std::ranges::all_of(Words,
                                  [](const TWord& word) { return word.Text.size() + 2 >= WindowSize; }),
              "a word and the character behind it fill a window");

constexpr std::array<std::uint8_t, ClassCount * ClassCount> MakeShifts() {
  std::array<std::uint8_t, ClassCount * ClassCount> shifts{};
  shifts.fill(WindowSize - 1);
  for (const TWindow& window : Windows) {
    for (std::size_t i = 0; i + 1 < WindowSize; ++i) {
      auto& shift = shifts[ClassOf(window[i]) * ClassCount + ClassOf(window[i + 1])];
      const auto distance = static_cast<std::uint8_t>(WindowSize - 2 - i);
      if (shift > distance) shift = distance;
    }
  }
  return shifts;
}
constexpr auto Shifts = MakeShifts();

constexpr char16_t Fold(char16_t c) {
  if ((c >= u'A' && c <= u'Z') || c == u'É') return static_cast<char16_t>(c + (u'a' - u'A'));
  return c == LongS ? u's' : c;
}

bool StandsAt(std::u16string_view line, std::size_t position, std::u16string_view lowerText) {
  if (line.size() - position < lowerText.size()) return false;
  for (std::size_t i = 0; i < lowerText.size(); ++i)
    if (Fold(line[position + i]) != lowerText[i]) return false;
  return true;
}

unsigned WordsAt(std::u16string_view line, std::size_t position) {
  for (const auto& word : Words) {
    const std::size_t end = position + word.Text.size();
    if (!StandsAt(line, position, word.Text)) continue;
    if (end >= line.size() || !IsDelimiter(line[end])) return 0; // no other word begins with this one
    const std::size_t prefix = word.ZeroPrefix.size();
    const bool isZero = prefix > 0 && position > prefix && IsDelimiter(line[position - prefix - 1]) &&
                        StandsAt(line, position - prefix, word.ZeroPrefix);
    return word.Finding | (isZero ? word.ZeroFinding : 0U);
  }
  return 0;
}

// "Error(s)": here letter case counts.
bool IsCountAt(std::u16string_view line, std::size_t position, std::u16string_view word) {
  const std::u16string_view text = line.substr(position);
  return text.size() > word.size() && IsCapitalised(text.substr(0, word.size()), word) &&
         text.substr(word.size()).starts_with(u"(s)");
}

// `window` may begin one of the words or be the end of one of the summary pieces.
unsigned FindingsAt(std::u16string_view line, std::size_t window) {
  if (!IsDelimiter(line[window])) {
    const bool isDashes = line[window + 4] == u'-' && line[window + 5] == u'-';
    return isDashes ? MayHoldCounts : 0U;
  }
  const unsigned findings = WordsAt(line, window + 1);
  if (findings != 0) return findings;
  for (const auto& word : Words)
    if (word.CountFinding != 0 && IsCountAt(line, window + 1, word.Text)) return word.CountFinding;
  return 0;
}

} // namespace

unsigned FindOutputWords(std::u16string_view line) {
  unsigned findings = 0;
  for (std::size_t end = WindowSize - 1; end < line.size();) {
    const std::size_t shift = Shifts[ClassOf(line[end - 1]) * ClassCount + ClassOf(line[end])];
    if (shift == 0) findings |= FindingsAt(line, end + 1 - WindowSize);
    end += shift == 0 ? 1 : shift;
  }
  return findings;
}

} // namespace kx
