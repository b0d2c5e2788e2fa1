#include "package/build/ToolOutputWords.h"

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
constexpr std::u16string_view Alphabet = u"eroflaildéchuwnvtgs(-"; // in lower case; a letter may stand twice
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

// " " stands for any delimiter. The last two are the ends of "complete --" and "terminée --".
constexpr std::array<std::u16string_view, 11> Windows{u" error ", u" error(", u" erreur", u" failed",
                                                      u" échoué", u" warnin", u" averti", u" succee",
                                                      u" réussi", u"ete -- ", u"née -- "};

constexpr std::array<std::uint8_t, ClassCount * ClassCount> MakeShifts() {
  std::array<std::uint8_t, ClassCount * ClassCount> shifts{};
  shifts.fill(WindowSize - 1);
  for (const auto window : Windows) {
    for (std::size_t i = 0; i + 1 < WindowSize; ++i) {
      auto& shift = shifts[ClassOf(window[i]) * ClassCount + ClassOf(window[i + 1])];
      const auto distance = static_cast<std::uint8_t>(WindowSize - 2 - i);
      if (shift > distance) shift = distance;
    }
  }
  return shifts;
}
constexpr auto Shifts = MakeShifts();

struct TWord {
  std::u16string_view Text; // in lower case
  unsigned Finding;
  std::u16string_view ZeroPrefix; // between a delimiter and the word it makes ZeroFinding of it
  unsigned ZeroFinding;
};
constexpr std::array<TWord, 8> Words{{{u"error", HasError, {}, 0},
                                      {u"erreur", HasError, {}, 0},
                                      {u"failed", HasFailed, u"0 ", HasZeroFailed},
                                      {u"échoué", HasFailed, u"0 a ", HasZeroFailed},
                                      {u"warning", HasWarning, {}, 0},
                                      {u"avertissement", HasWarning, {}, 0},
                                      {u"succeeded", HasSucceeded, u"0 ", HasZeroSucceeded},
                                      {u"réussi", HasSucceeded, u"0 a ", HasZeroSucceeded}}};

struct TSummaryPiece {
  std::u16string_view Text; // letter case counts
  unsigned Finding;
};
constexpr std::array<TSummaryPiece, 4> CountPieces{{{u"Error(s)", MayHoldErrorCount},
                                                    {u"Erreur(s)", MayHoldErrorCount},
                                                    {u"Warning(s)", MayHoldWarningCount},
                                                    {u"Avertissement(s)", MayHoldWarningCount}}};

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

// `window` may begin one of the words or be the end of one of the summary pieces.
unsigned FindingsAt(std::u16string_view line, std::size_t window) {
  if (!IsDelimiter(line[window])) {
    const bool isDashes = line[window + 4] == u'-' && line[window + 5] == u'-';
    return isDashes ? MayHoldCounts : 0U;
  }
  const unsigned findings = WordsAt(line, window + 1);
  if (findings != 0) return findings;
  for (const auto& piece : CountPieces)
    if (line.substr(window + 1).starts_with(piece.Text)) return piece.Finding;
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
