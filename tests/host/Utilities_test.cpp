#include "host/Utilities.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

TEST(Utilities, PathsAreExpandedAgainstTheirFolder) {
  EXPECT_EQ(TPathUtils::ExpandRelativePath(u"..\\Lib\\Lib.csproj", u"C:\\src\\App"),
            u"C:\\src\\Lib\\Lib.csproj");
  EXPECT_EQ(TPathUtils::ExpandRelativePath(u"http://host/../a.csproj", u"C:\\src"),
            u"http://host/../a.csproj");
  EXPECT_EQ(TPathUtils::ExpandRelativePath(u"", u"C:\\src", true), u"");
  EXPECT_EQ(TPathUtils::ExpandRelativePath(u"", u"C:\\src"), u"C:\\src");
}

TEST(Utilities, PositionsCountFromOne) {
  EXPECT_EQ(FastPos(u"b", u"abcb"), 2U);
  EXPECT_EQ(FastPos(u"b", u"abcb", 3), 4U);
  EXPECT_EQ(FastPos(u"x", u"abcb"), 0U);
  EXPECT_EQ(FastPos(u"", u"abcb"), 0U);
  EXPECT_EQ(FastPos(u"b", u"abcb", 99), 0U);
}

TEST(Utilities, QuotesAndReplacements) {
  EXPECT_EQ(DoubleQuoteString(u"a\"b"), u"\"a\"b\"");
  EXPECT_EQ(DoubleQuoteString(u"a\"b", true), u"\"a\"\"b\"");
  EXPECT_EQ(FastReplace(u"aBab", u"b", u"x"), u"aBax");
  EXPECT_EQ(FastReplace(u"aBab", u"b", u"x", false), u"axax");
}

TEST(Utilities, AFileThatCannotBeReadIsNamed) {
  try {
    TFileReader::LoadFromFile(u"/nowhere/at/all.txt");
    FAIL() << "there is no such file";
  } catch (const EKxException& error) {
    EXPECT_NE(error.Message().find(u"/nowhere/at/all.txt"), std::u16string::npos);
  }
}

} // namespace
} // namespace kx
