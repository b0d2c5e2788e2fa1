#include "program/cli/HistoryOutput.h"

#include <gtest/gtest.h>

#include <regex>

namespace kx::cli {
namespace {

using std::chrono::milliseconds;
using enum TResultKind;

const TPalette Plain(false);

// Lines end in "|"; where the clock on the wall counts, it is TIME.
std::string Shown(const std::string& text) {
  return std::regex_replace(
      std::regex_replace(text, std::regex("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d"), "TIME"), std::regex(" *\n"),
      "|");
}

history::TRememberedRun Remembered(history::TNumber number, TResultKind result) {
  return {number, {{}, result, milliseconds(1500), {3, 0}, {5, 2}, u"0123456789"}, u"main", 4, 0};
}

TEST(HistoryOutput, TellsOneRunWithItsPartsAndWhatWasWrong) {
  history::TRememberedDetails details{.Run = Remembered(7, Failed),
                                      .Surroundings = {u"box", u"Debian", u"abc", u"main", u"kxhost run"}};
  EXPECT_EQ(Shown(DetailLines(details, Plain)),
            "Run 7: failed, TIME, 1.50 s|Machine  box|System   Debian|Commit   abc|Branch   main|Command  "
            "kxhost run||Part  "
            "Result  Errors  Warnings  Time|");
  details.Parts = {{{u"B"}, 0, Failed, {1, 2}, {}, milliseconds(10)},
                   {{u"B", u"Debug", u"App"}, 1, Succeeded, {0, 0}, {}, milliseconds(2000)}};
  details.Findings = {
      {.Severity = TFindingSeverity::Error, .Message = u"no", .Place = {u"a.c", 3}, .Code = u"C1"}};
  details.FailedTests = {u"S/T"};
  const std::string all = Shown(DetailLines(details, Plain));
  EXPECT_EQ(all.substr(all.find("||")),
            "||Part               Result     Errors  Warnings    Time|B                  failed          1   "
            "      2  0.01 s|  B / Debug / App  succeeded       0         0  2.00 s||Failed "
            "tests|S/T||a.c:3: error C1: no|");
}

TEST(HistoryOutput, ListsFlakyAndSlowTests) {
  using enum TPastTest;
  const std::vector ran{Absent, Passed, Failed, NotRun}, well(40, Passed);
  std::vector<history::TTestHistory> tests{{u"a", 3, 1, 2, true, 9, milliseconds(20), ran}};
  for (int i = 0; i < 25; ++i)
    tests.push_back({u"t", 3, 0, 0, false, 0, milliseconds(i), well});
  const std::string text = Shown(TestLines(tests, Plain));
  EXPECT_EQ(std::ranges::count(text, '|'), 26);
  EXPECT_EQ(text.substr(0, text.find("|t ", text.find("|t ") + 1)),
            "Flaky: changed without another commit, or again and again|Test   Usual  Runs  Failed  Changes  "
            "Last failure  Last runs|a     0.02 s     3       1        2         run 9   .F-||Slowest|Test   "
            "Usual  Runs  Failed  Changes  Last failure  Last runs|t     0.02 s     3       -        -       "
            "      -  ..............................");
  EXPECT_EQ(TestLines({}, Plain), "No tests ran.\n");
  EXPECT_EQ(Shown(TestLines(std::span(tests).last(1), Plain)).substr(0, 70),
            "Flaky: changed without another commit, or again and again|none||Slowes");
}

TEST(HistoryOutput, SaysSinceWhenAndHowLong) {
  const history::TKnownFinding known{{.Message = u"old", .Place = {u"a.c", 3}}, 4, {}};
  EXPECT_EQ(Shown(KnownFindingLines(std::vector{known}, Plain)),
            "Since  Began             Finding|run 4  TIME  a.c(3): warning: old|");
  EXPECT_EQ(KnownFindingLines({}, Plain), "Nothing was wrong in the last run.\n");
  const std::vector<history::TUsualTime> times{
      {{}, 3, milliseconds(20), milliseconds(10), milliseconds(1000), milliseconds(30), 25},
      {{u"B", u"", u"App"}, 1, {}, {}, {}, {}, 0},
      {{u"C", u"Debug"}, 2, {}, {}, {}, {}, -5}};
  EXPECT_EQ(Shown(TimeLines(times, Plain)),
            "Part         Runs  Median            Spread    Last  Trend|(whole run)     3  0.02 s  0.01 s to "
            "1.00 s  0.03 s  +25 %|B / App         1  0.00 s  0.00 s to 0.00 s  0.00 s      -|C / Debug      "
            " 2  0.00 s  0.00 s to 0.00 s  0.00 s   -5 %|");
  EXPECT_EQ(TimeLines({}, Plain), "Nothing succeeded in these runs.\n");
}

} // namespace
} // namespace kx::cli
