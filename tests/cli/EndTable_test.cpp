#include "cli/ConsoleSink.h"

#include <gtest/gtest.h>

namespace kx::cli {
namespace {

using std::chrono::milliseconds;

TActionResult Result(std::u16string name, bool succeeded) {
  TActionResult result;
  result.Name = std::move(name);
  result.Succeeded = succeeded;
  result.Elapsed = milliseconds(1234);
  return result;
}

TEST(EndTable, HasARowForEachConfigurationThatWasBuilt) {
  TActionResult build = Result(u"Build", true);
  build.Configurations = {{u"Debug|Any CPU", true, 0, 2, milliseconds(400)},
                          {u"Release|Any CPU", false, 1, 0, milliseconds(65'000)}};
  TActionResult nested = Result(u"Étiqueter", false);
  nested.Nesting = 1;
  nested.Pass = u"Lib";
  EXPECT_EQ(EndTable({build, nested}, TPalette(false)),
            "\n"
            "Action             Configuration    Result     Errors  Warnings        Time\n"
            "Build              Debug|Any CPU    succeeded       0         2      0.40 s\n"
            "Build              Release|Any CPU  failed          1         0  1 min 05 s\n"
            "  Étiqueter (Lib)                   failed          0         0      1.23 s\n");
}

TEST(EndTable, ShowsAnActionThatFailedAfterItsConfigurationsSucceeded) {
  TActionResult build = Result(u"Build", false);
  build.Configurations = {{u"Debug", true, 0, 0, milliseconds(10)}};
  const std::string table = EndTable({build}, TPalette(false));
  EXPECT_NE(table.find("Build   Debug          succeeded"), std::string::npos) << table;
  EXPECT_NE(table.find("Build                  failed"), std::string::npos) << table;
}

TEST(EndTable, IsAbsentWhenNothingRan) {
  EXPECT_EQ(EndTable({}, TPalette(true)), "");
}

TEST(EndTable, PaintsOnlyTheResult) {
  const std::string table = EndTable({Result(u"Build", true)}, TPalette(true));
  EXPECT_NE(table.find("\x1b[32msucceeded\x1b[0m"), std::string::npos);
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
