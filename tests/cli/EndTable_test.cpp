#include "program/cli/ConsoleSink.h"

#include <gtest/gtest.h>

#include <regex>

namespace kx::cli {
namespace {

using std::chrono::milliseconds;

TActionResult Result(std::u16string name, TResultKind kind) {
  TActionResult result;
  result.Name = std::move(name);
  result.Result = kind;
  result.Elapsed = milliseconds(1234);
  return result;
}

TRunReport Report(std::vector<TActionResult> actions) {
  TRunReport report{.Result = TResultKind::Failed, .Elapsed = milliseconds(66'500)};
  for (const auto& action : actions)
    if (action.Nesting == 0) report.Counts += action.Counts;
  report.Actions = std::move(actions);
  return report;
}

TEST(EndTable, HasARowForEachConfigurationThatWasBuiltAndAddsUp) {
  TActionResult build = Result(u"Build", TResultKind::Failed);
  build.Configurations = {{u"Debug|Any CPU", TResultKind::Succeeded, u"", {0, 2}, milliseconds(400)},
                          {u"Release|Any CPU", TResultKind::Failed, u"", {1, 0}, milliseconds(65'000)}};
  build.Counts = {1, 2};
  TActionResult loop = Result(u"All", TResultKind::Failed);
  loop.IsLoop = true;
  loop.Counts = {1, 0};
  TActionResult nested = Result(u"Étiqueter", TResultKind::Failed);
  nested.Nesting = 1;
  nested.Pass = u"Lib";
  nested.Counts = {1, 0};
  TRunReport report = Report({build, loop, nested});
  report.Tests = {4, 1, 0};
  EXPECT_EQ(EndTable(report, TPalette(false)),
            "\n"
            "Action             Configuration    Result     Errors  Warnings        Time\n"
            "Build              Debug|Any CPU    succeeded       0         2      0.40 s\n"
            "Build              Release|Any CPU  failed          1         0  1 min 05 s\n"
            "All                                 failed          1         0      1.23 s\n"
            "  Étiqueter (Lib)                   failed          1         0      1.23 s\n"
            "\n"
            "Failed: 1 succeeded, 2 failed; 2 errors, 2 warnings; 5 tests, 1 failed; 1 min 06 s\n");
}

// Wherever the configurations alone would not tell what became of the action.
TEST(EndTable, ShowsWhatAnActionSaysBesideItsConfigurations) {
  const struct {
    const char* Case;
    TResultKind Result;
    std::u16string Reason;
    TProblemCounts Counts;
    std::string Row; // its result, errors, warnings, time; empty: none
    std::string Totals;
  } cases[] = {
      {"nothing", TResultKind::Succeeded, u"", {0, 1}, "", "1 succeeded;"},
      {"a warning of its own", TResultKind::Succeeded, u"", {0, 2}, "succeeded 0 1 1.00 s", "1 succeeded;"},
      {"a rule",
       TResultKind::Failed,
       u"no-tests",
       {1, 1},
       "failed (no-tests) 1 0 1.00 s",
       "1 succeeded, 1 failed;"},
      {"what is not minded",
       TResultKind::Ignored,
       u"",
       {0, 1},
       "ignored 0 0 1.00 s",
       "1 succeeded, 1 ignored;"},
  };
  for (const auto& row : cases) {
    TActionResult build = Result(u"Build", row.Result);
    build.Configurations = {{u"Debug", TResultKind::Succeeded, u"", {0, 1}, milliseconds(234)}};
    build.Reason = row.Reason;
    build.Counts = row.Counts;
    const std::string table =
        std::regex_replace(EndTable(Report({build}), TPalette(false)), std::regex(" +"), " ");
    const std::string debug = "\nBuild Debug succeeded 0 1 0.23 s\n";
    EXPECT_NE(table.find(debug + (row.Row.empty() ? "\n" : "Build (the rest) " + row.Row + "\n\n") +
                         "Failed: " + row.Totals),
              std::string::npos)
        << row.Case << table;
  }
}

TEST(EndTable, IsTheLastLineAloneWhenNothingRan) {
  EXPECT_EQ(EndTable(Report({}), TPalette(false)), "\nFailed: 0 errors, 0 warnings; 1 min 06 s\n");
}

TEST(EndTable, KeepsANameInItsLine) {
  const std::string table = EndTable(Report({Result(u"a\r\n::b", TResultKind::Failed)}), TPalette(false));
  EXPECT_NE(table.find("\na\u240D\u240A::b  "), std::string::npos) << table;
}

TEST(EndTable, PaintsOnlyTheResult) {
  const std::string table = EndTable(Report({Result(u"Build", TResultKind::Ignored)}), TPalette(true));
  EXPECT_NE(table.find("\x1b[33mignored\x1b[0m"), std::string::npos) << table;
  EXPECT_NE(table.find("\x1b[31mFailed\x1b[0m: 1 ignored;"), std::string::npos) << table;
}

TEST(Terminal, ToolOutputCannotSteerIt) {
  EXPECT_EQ(ForTerminal(u"a\x1b[2Jb\tc\x7f\u009b"), "a\u241b[2Jb\tc\u2421\u2421");
}

TEST(Terminal, MessagesThatQuoteWholeFilesAreCut) {
  const std::u16string shortOne(2000, u'x');
  EXPECT_EQ(Shortened(shortOne), shortOne);
  EXPECT_EQ(Shortened(shortOne + u"y"), shortOne + u"... (2001 characters)");
}

} // namespace
} // namespace kx::cli
