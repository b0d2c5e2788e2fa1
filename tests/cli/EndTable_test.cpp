#include "program/cli/ConsoleSink.h"

#include "program/cli/Output.h"
#include "tests/support/Results.h"

#include <gtest/gtest.h>

namespace kx::cli {
namespace {

using std::chrono::milliseconds;
using tests::ConfigurationResult;

TActionResult Result(std::u16string name, TResultKind kind, TProblemCounts counts = {}) {
  return {.Name = std::move(name), .Result = kind, .Counts = counts, .Elapsed = milliseconds(1234)};
}

std::string Table(std::vector<TActionResult> actions, TTestCounts tests = {}, bool isPainted = false) {
  TRunReport report{.Result = TResultKind::Failed, .Tests = tests, .Elapsed = milliseconds(66'500)};
  for (const auto& action : actions)
    if (action.Nesting == 0) report.Counts += action.Counts;
  report.Actions = std::move(actions);
  return EndTable(report, TPalette(isPainted));
}

TEST(EndTable, HasARowForEachConfigurationThatWasBuiltAndAddsUp) {
  TActionResult build = Result(u"Build", TResultKind::Failed, {1, 2});
  build.Configurations = {ConfigurationResult(u"Debug|Any CPU", TResultKind::Succeeded, {0, 2}, 0, 400),
                          ConfigurationResult(u"Release|Any CPU", TResultKind::Failed, {1, 0}, 0, 65'000)};
  TActionResult loop = Result(u"All", TResultKind::Failed, {1, 0});
  loop.IsLoop = true;
  TActionResult told = Result(u"Tell", TResultKind::Failed, {1, 0});
  told.Configurations = {ConfigurationResult(u"Debug", TResultKind::Succeeded, {}, 0, 234)};
  told.Reason = u"no-tests";
  TActionResult nested = Result(u"Étiqueter", TResultKind::Failed, {1, 0});
  nested.Nesting = 1;
  nested.Pass = u"Lib";
  EXPECT_EQ(Table({build, told, loop, nested}, {4, 1, 0}),
            "\n"
            "Action             Configuration    Result             Errors  Warnings        Time\n"
            "Build              Debug|Any CPU    succeeded               0         2      0.40 s\n"
            "Build              Release|Any CPU  failed                  1         0  1 min 05 s\n"
            "Tell               Debug            succeeded               0         0      0.23 s\n"
            "Tell               (the rest)       failed (no-tests)       1         0      1.00 s\n"
            "All                                 failed                  1         0      1.23 s\n"
            "  Étiqueter (Lib)                   failed                  1         0      1.23 s\n"
            "\n"
            "Failed: 2 succeeded, 3 failed; 3 errors, 2 warnings; 5 tests, 1 failed; 1 min 06 s\n");
}

TEST(Terminal, ToolOutputCannotSteerItNorFloodIt) {
  EXPECT_EQ(ForTerminal(u"a\x1b[2Jb\tc\x7f\u009b"), "a\u241b[2Jb\tc\u2421\u2421");
  const std::u16string shortOne(2000, u'x');
  EXPECT_EQ(Shortened(shortOne), shortOne);
  EXPECT_EQ(Shortened(shortOne + u"y"), shortOne + u"... (2001 characters)");
}

} // namespace
} // namespace kx::cli
