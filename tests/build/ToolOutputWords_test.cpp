#include "build/ToolOutputWords.h"

#include "build/SummaryLines.h"
#include "host/RegEx.h"
#include "text/Encoding.h"
#include "text/Text.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace kx {
namespace {

// What the search and the readers of summaries promise to find, said by regular expressions.
class TExpressions {
public:
  unsigned Findings(std::u16string_view line) const {
    unsigned findings = 0;
    for (const auto& [expression, finding] : words_)
      if (expression->IsMatch(line)) findings |= finding;
    return findings;
  }

  const std::shared_ptr<const IRegularExpression> FailureSummary =
      RegEx::NewRegularExpression(u": \\d+ succeeded, \\d*[1-9]\\d* failed, \\d+ skipped");
  const std::shared_ptr<const IRegularExpression> CountSummary =
      RegEx::NewRegularExpression(u"(?:complete|terminée)\\s--\\s(\\d+)\\s\\w+,\\s(\\d+)");
  const std::shared_ptr<const IRegularExpression> ErrorCount =
      RegEx::NewRegularExpression(u"(\\d+)\\s(?:Error\\(s\\)|Erreur\\(s\\))");
  const std::shared_ptr<const IRegularExpression> WarningCount =
      RegEx::NewRegularExpression(u"(\\d+)\\s(?:Warning\\(s\\)|Avertissement\\(s\\))");

private:
  static std::pair<std::shared_ptr<const IRegularExpression>, unsigned> Word(std::u16string_view word,
                                                                             unsigned finding) {
    const std::u16string delimiter = u"[\\s|=;,.]";
    return {
        RegEx::NewRegularExpression(delimiter + std::u16string(word) + delimiter, TRegExOptions::IgnoreCase),
        finding};
  }

  const std::vector<std::pair<std::shared_ptr<const IRegularExpression>, unsigned>> words_{
      Word(u"error", HasError),
      Word(u"erreur", HasError),
      Word(u"failed", HasFailed),
      Word(u"échoué", HasFailed),
      Word(u"0 failed", HasZeroFailed),
      Word(u"0 a échoué", HasZeroFailed),
      Word(u"warning", HasWarning),
      Word(u"avertissement", HasWarning),
      Word(u"succeeded", HasSucceeded),
      Word(u"réussi", HasSucceeded),
      Word(u"0 succeeded", HasZeroSucceeded),
      Word(u"0 a réussi", HasZeroSucceeded)};
};

constexpr unsigned AllWords =
    HasError | HasFailed | HasZeroFailed | HasWarning | HasSucceeded | HasZeroSucceeded;

// Everything that one line could mean, against the expressions.
void ExpectAsTheExpressions(const TExpressions& expressions, std::u16string_view line) {
  const std::string shown = text::ToUtf8(line);
  const unsigned findings = FindOutputWords(line);
  ASSERT_EQ(findings & AllWords, expressions.Findings(line)) << shown;
  const auto number = [](std::u16string_view digits) { return text::ToIntegerOr(digits, 0); };

  ASSERT_EQ(IsFailureSummary(line), expressions.FailureSummary->IsMatch(line)) << shown;
  ASSERT_TRUE(!IsFailureSummary(line) || (findings & HasSucceeded) != 0) << shown;

  const auto summary = expressions.CountSummary->Match(line);
  const auto counts = ReadCountSummary(line);
  ASSERT_EQ(counts.has_value(), summary.Success()) << shown;
  if (counts) {
    ASSERT_EQ(counts->Errors, number(summary.GetItem(1))) << shown;
    ASSERT_EQ(counts->Warnings, number(summary.GetItem(2))) << shown;
    ASSERT_NE(findings & MayHoldCounts, 0U) << shown;
  }

  const auto expectCount = [&](std::optional<std::int32_t> count, const IRegularExpression& expression,
                               unsigned finding) {
    const auto match = expression.Match(line);
    ASSERT_EQ(count.has_value(), match.Success()) << shown;
    if (!count) return;
    ASSERT_EQ(*count, number(match.GetItem(1))) << shown;
    ASSERT_NE(findings & finding, 0U) << shown;
  };
  expectCount(ReadErrorCount(line), *expressions.ErrorCount, MayHoldErrorCount);
  expectCount(ReadWarningCount(line), *expressions.WarningCount, MayHoldWarningCount);
}

const std::vector<std::u16string> Pieces{u"error",
                                         u"erreur",
                                         u"failed",
                                         u"échoué",
                                         u"0",
                                         u"a",
                                         u"0 failed",
                                         u"0 a échoué",
                                         u"warning",
                                         u"succeeded",
                                         u"avertissement",
                                         u"réussi",
                                         u"0 a réussi",
                                         u"0 succeeded",
                                         u"ÉCHOUÉ",
                                         u"RÉUSSI",
                                         u"Error(s)",
                                         u"Erreur(s)",
                                         u"Warning(s)",
                                         u"Avertissement(s)",
                                         u"complete",
                                         u"terminée",
                                         u"--",
                                         u" -- ",
                                         u": 1",
                                         u" succeeded, ",
                                         u" failed, ",
                                         u" skipped",
                                         u"12",
                                         u"errors,",
                                         u"x",
                                         u"É",
                                         u"\u017Fucceeded",
                                         u"99999999999",
                                         u"(",
                                         u"e",
                                         u"err",
                                         u"\xD800",
                                         u"-- 3 errors, 1",
                                         u"succee",
                                         u"\u00A0"};
const std::vector<std::u16string> Glue{u" ", u" ", u" ",  u"",   u"|", u"=", u";",
                                       u",", u".", u"\t", u"\v", u":", u"  "};

std::u16string RandomLine(std::mt19937& random) {
  const auto pick = [&random](const auto& from) -> const std::u16string& {
    return from[random() % from.size()];
  };
  std::u16string line;
  for (auto count = random() % 9; count > 0; --count) {
    std::u16string piece = pick(Pieces);
    if (random() % 4 == 0)
      for (auto& c : piece)
        if (c >= u'a' && c <= u'z' && random() % 2 == 0) c = static_cast<char16_t>(c - u'a' + u'A');
    line += piece + pick(Glue);
  }
  return line;
}

TEST(ToolOutputWords, AreFoundAsTheExpressionsFindThem) {
  const TExpressions expressions;
  std::mt19937 random(20100401);
  for (int i = 0; i < 60000 && !testing::Test::HasFatalFailure(); ++i)
    ExpectAsTheExpressions(expressions, RandomLine(random));
}

TEST(ToolOutputWords, AreFoundAtEveryPlaceOfALine) {
  const TExpressions expressions;
  for (const auto& piece : Pieces)
    for (std::size_t before = 0; before < 16; ++before)
      for (const std::u16string_view end : {u"", u" ", u" and so on"}) {
        const std::u16string line = std::u16string(before, u'r') + u" " + piece + std::u16string(end);
        ASSERT_NO_FATAL_FAILURE(ExpectAsTheExpressions(expressions, line));
      }
}

} // namespace
} // namespace kx
