// Finds the words that decide what an output line of a build tool means.
#pragma once

#include <array>
#include <string_view>

namespace kx {

// The words by which a tool tells of its work in one language, in lower case. Tools capitalise them as they
// like.
struct TToolLanguage {
  std::u16string_view Error;
  std::u16string_view Failed;
  std::u16string_view Warning;
  std::u16string_view Succeeded;
  std::u16string_view None;     // what stands between a delimiter and Failed or Succeeded when nothing did
  std::u16string_view Complete; // before the dashes and counts of devenv's last line
};
inline constexpr std::array<TToolLanguage, 2> ToolLanguages{{
    {u"error", u"failed", u"warning", u"succeeded", u"0 ", u"complete"},
    {u"erreur", u"échoué", u"avertissement", u"réussi", u"0 a ", u"terminée"},
}};

// Whether the text is the word with a capital, otherwise in lower case.
constexpr bool IsCapitalised(std::u16string_view text, std::u16string_view word) {
  return text.size() == word.size() && text.front() == word.front() - (u'a' - u'A') &&
         text.substr(1) == word.substr(1);
}

// What one line holds, as bits. A word counts between two delimiters (white space, "|", "=", ";", "," or
// "."); letter case is ignored; the words are those of all languages.
enum TOutputFinding : unsigned {
  HasError = 1U << 0U,
  HasFailed = 1U << 1U,
  HasZeroFailed = 1U << 2U, // "0 failed"
  HasWarning = 1U << 3U,
  HasSucceeded = 1U << 4U,
  HasZeroSucceeded = 1U << 5U, // "0 succeeded"
  // The piece without which no summary line can be: look closer only where it was seen.
  MayHoldCounts = 1U << 6U,       // "complete --"
  MayHoldErrorCount = 1U << 7U,   // "Error(s)"
  MayHoldWarningCount = 1U << 8U, // "Warning(s)"
};

// One pass over the line. It looks at every sixth character or so where no such word can stand: builds of a
// few hundred megabytes of output are read in less than a second.
unsigned FindOutputWords(std::u16string_view line);

} // namespace kx
