#include "contract/Utilities.h"

#include "tests/support/Failure.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

TEST(Utilities, PathsAreExpandedAgainstTheirFolder) {
  const auto& expand = TPathUtils::ExpandRelativePath;
  EXPECT_EQ(expand(u"..\\Lib\\Lib.csproj", u"C:\\src\\App", false), u"C:\\src\\Lib\\Lib.csproj");
  EXPECT_EQ(expand(u"http://host/../a.csproj", u"C:\\src", false), u"http://host/../a.csproj");
  EXPECT_EQ(expand(u"", u"C:\\src", true) + u"|" + expand(u"", u"C:\\src", false), u"|C:\\src");
}

TEST(Utilities, PositionsCountFromOne) {
  EXPECT_EQ(FastPos(u"b", u"abcb") * 10 + FastPos(u"b", u"abcb", 3), 24U);
  EXPECT_EQ(FastPos(u"x", u"abcb") + FastPos(u"", u"abcb") + FastPos(u"b", u"abcb", 99), 0U);
}

TEST(Utilities, QuotesAndReplacements) {
  EXPECT_EQ(DoubleQuoteString(u"a\"b"), u"\"a\"b\"");
  EXPECT_EQ(DoubleQuoteString(u"a\"b", true), u"\"a\"\"b\"");
  EXPECT_EQ(FastReplace(u"aBab", u"b", u"x"), u"aBax");
  EXPECT_EQ(FastReplace(u"aBab", u"b", u"x", false), u"axax");
}

TEST(Utilities, AFileThatCannotBeReadIsNamed) {
  EXPECT_NE(
      tests::FailureOf([] { TFileReader::LoadFromFile(u"/nowhere/at/all.txt"); }).find("/nowhere/at/all.txt"),
      std::string::npos);
}

} // namespace
} // namespace kx
