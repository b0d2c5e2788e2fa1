#include "package/buildaction/ToolOutputWords.h"

#include "foundation/formats/RegEx.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "package/buildaction/SummaryLines.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace kx {
namespace {

using TExpression = std::shared_ptr<const IRegularExpression>;

TExpression Word(const std::u16string& words) {
  return RegEx::NewRegularExpression(u"[\\s|=;,.](?:" + words + u")[\\s|=;,.]", TRegExOptions::IgnoreCase);
}

// What the search and the readers of summaries promise to find, said by regular truth.
struct TExpressions {
  const std::vector<std::pair<TExpression, unsigned>> Words{
      {Word(u"error|erreur"), HasError},
      {Word(u"failed|échoué"), HasFailed},
      {Word(u"0 failed|0 a échoué"), HasZeroFailed},
      {Word(u"warning|avertissement"), HasWarning},
      {Word(u"succeeded|réussi"), HasSucceeded},
      {Word(u"0 succeeded|0 a réussi"), HasZeroSucceeded}};
  const TExpression FailureSummary =
      RegEx::NewRegularExpression(u": \\d+ succeeded, \\d*[1-9]\\d* failed, \\d+ skipped");
  const TExpression CountSummary =
      RegEx::NewRegularExpression(u"(?:complete|terminée)\\s--\\s(\\d+)\\s\\w+,\\s(\\d+)");
  const TExpression ErrorCount = RegEx::NewRegularExpression(u"(\\d+)\\s(?:Error\\(s\\)|Erreur\\(s\\))");
  const TExpression WarningCount =
      RegEx::NewRegularExpression(u"(\\d+)\\s(?:Warning\\(s\\)|Avertissement\\(s\\))");
};

// Everything that one line could mean, against the truth.
void ExpectAsTheExpressions(const TExpressions& truth, std::u16string_view line) {
  const auto number = [line](const TExpression& expression, std::size_t item) -> std::optional<std::int32_t> {
    const auto match = expression->Match(line);
    return match.Success() ? std::optional(text::ToIntegerOr(match.GetItem(item), 0)) : std::nullopt;
  };
  unsigned words = 0;
  for (const auto& [expression, finding] : truth.Words)
    if (expression->IsMatch(line)) words |= finding;
  const unsigned findings = FindOutputWords(line);
  const auto counts = ReadCountSummary(line);
  const auto errors = ReadErrorCount(line), warnings = ReadWarningCount(line);
  ASSERT_EQ(std::tuple(findings & (MayHoldCounts - 1U), IsFailureSummary(line), errors, warnings,
                       counts ? std::optional(counts->Errors) : std::nullopt,
                       counts ? std::optional(counts->Warnings) : std::nullopt),
            std::tuple(words, truth.FailureSummary->IsMatch(line), number(truth.ErrorCount, 1),
                       number(truth.WarningCount, 1), number(truth.CountSummary, 1),
                       number(truth.CountSummary, 2)))
      << text::ToUtf8(line);
  // Lines are read only where the search has found these.
  const unsigned needed = (counts ? MayHoldCounts : 0U) | (errors ? MayHoldErrorCount : 0U) |
                          (warnings ? MayHoldWarningCount : 0U) |
                          (IsFailureSummary(line) ? HasSucceeded : 0U);
  ASSERT_EQ(findings & needed, needed) << text::ToUtf8(line);
}

// Between slashes.
constexpr std::u16string_view Pieces =
    u"error/erreur/failed/échoué/0/a/0 failed/0 a échoué/warning/succeeded/avertissement/réussi/0 a réussi/"
    u"0 succeeded/ÉCHOUÉ/RÉUSSI/Error(s)/Erreur(s)/Warning(s)/Avertissement(s)/complete/terminée/--/ -- /: 1/"
    u" succeeded, / failed, / skipped/12/errors,/x/É/\u017Fucceeded/99999999999/(/e/err/\xD800/"
    u"-- 3 errors, 1/succee/\u00A0";
constexpr std::u16string_view Glue = u" / / //|/=/;/,/./\t/\v/:/  ";

// It begins anywhere: the search does not look at every character.
std::u16string RandomLine(std::mt19937& random) {
  static const auto pieces = text::Split(Pieces, u'/');
  static const auto glue = text::Split(Glue, u'/');
  std::u16string line(random() % 16, u'r');
  for (auto count = random() % 9; count > 0; --count) {
    std::u16string piece(pieces[random() % pieces.size()]);
    if (random() % 4 == 0)
      for (auto& c : piece)
        if (c >= u'a' && c <= u'z' && random() % 2 == 0) c = static_cast<char16_t>(c - u'a' + u'A');
    line.append(piece).append(glue[random() % glue.size()]);
  }
  return line;
}

TEST(ToolOutputWords, AreFoundAsTheExpressionsFindThem) {
  const TExpressions expressions;
  std::mt19937 random(20100401);
  for (int i = 0; i < 60000 && !testing::Test::HasFatalFailure(); ++i)
    ExpectAsTheExpressions(expressions, RandomLine(random));
}

TEST(SummaryLines, TellWhetherAnythingWasBuilt) {
  using TAnswer = std::optional<bool>;
  const std::pair<std::u16string_view, TAnswer> summaries[] = {
      {u"========== Build: 0 succeeded, 0 failed, 0 up-to-date, 3 skipped ==========", false},
      {u"========== Rebuild All: 0 succeeded, 1 failed, 0 skipped ==========", true},
      {u"========== Génération : 0 a réussi, 0 a échoué, 0 mis à jour, 12 a été ignoré ==========", false},
      {u"========== Génération : 10 a réussi, 0 a échoué, 0 mis à jour, 0 a été ignoré ==========", true},
      {u"========== Erstellen: 0 erfolgreich, Fehler bei 0, 0 aktuell, 2 übersprungen ==========", false},
      {u"    Build: 0 succeeded, 0 failed, 2 skipped", false},
      {u"========== Génération : 0 a réussi, 1 a échoué, 0 mis à jour, 0 a été ", true}, // wrapped
      {u"x.cpp: error: 0, 0, 0 skipped", std::nullopt},
      {u"======= Build: 0 succeeded, 0 failed", std::nullopt},
      {u"======= Build: 1 of 2 succeeded, 0 failed, 0 skipped", std::nullopt},
  };
  for (const auto& [line, answer] : summaries)
    EXPECT_EQ(ReadBuildSummary(line), answer) << text::ToUtf8(line);
  const std::pair<std::u16string_view, TAnswer> beginnings[] = {
      {u"\tProject \"/a/App.csproj\" (default target(s)):", true},
      {u"Project \"C:\\a\\App.sln\" on node 1 (Build target(s)).", false},
      {u"Project \"C:\\App.sln\" (1) is building \"C:\\Lib (x)\\Lib.csproj\" (2) on node 1 (default "
       u"targets).",
       true},
      {u"Projet \"C:\\App.sln\" sur le noeud 1 (cible(s) par défaut).", false},
      {u"Project \"App.sln\" is building \"Nat.vcproj.metaproj\" (default targets):", false},
      {u"Project \"Lib.csproj\" was skipped.", std::nullopt},
      {u"The project \"Lib\" is not selected for building in \"Debug\" (x)", std::nullopt}};
  for (const auto& [line, answer] : beginnings)
    EXPECT_EQ(ReadProjectLine(line), answer) << text::ToUtf8(line);
}

} // namespace
} // namespace kx
