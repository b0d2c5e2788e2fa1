#include "foundation/text/CommandLine.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

using Arguments = std::vector<std::u16string>;

TEST(SplitCommandLine, FollowsTheRulesOfTheWindowsRuntime) {
  const struct {
    const char* Case;
    std::u16string_view CommandLine;
    Arguments Expected;
  } rows[] = {
      {"only blanks", u" \t ", {}},
      {"blanks and tabs separate", u"  a\tb  c ", {u"a", u"b", u"c"}},
      {"quotes in the middle of an argument", u"/p:\"A B\";C d", {u"/p:A B;C", u"d"}},
      {"an empty argument", u"a \"\" b", {u"a", u"", u"b"}},
      {"an open quote runs to the end", u"\"a b ", {u"a b "}},
      {"backslashes before a letter stay", u"a\\\\b \\\\server\\x", {u"a\\\\b", u"\\\\server\\x"}},
      {"two backslashes are one and the quote groups", u"\"a\\\\\" b", {u"a\\", u"b"}},
      {"three backslashes are one and a literal quote", u"a\\\\\\\"b c", {u"a\\\"b", u"c"}},
      {"backslashes at the end stay", u"C:\\dir\\\\", {u"C:\\dir\\\\"}},
      {"a doubled quote inside quotes does not end them", u"\"a\"\"b c\" d", {u"a\"b c", u"d"}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(SplitCommandLine(row.CommandLine), row.Expected) << row.Case;
}

TEST(QuoteArgument, IsReadBackAsOneArgument) {
  const struct {
    std::u16string Argument, Always, IfNeeded;
  } rows[] = {
      {u"", u"\"\"", u"\"\""},
      {u"C:\\dir\\", u"\"C:\\dir\\\\\"", u"C:\\dir\\"},
      {u"C:\\a b\\", u"\"C:\\a b\\\\\"", u"\"C:\\a b\\\\\""},
      {u"a\\\\\"b", u"\"a\\\\\\\\\\\"b\"", u"\"a\\\\\\\\\\\"b\""},
      {u"tab\there", u"\"tab\there\"", u"\"tab\there\""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(QuoteArgument(row.Argument), row.Always);
    EXPECT_EQ(QuoteArgumentIfNeeded(row.Argument), row.IfNeeded);
    EXPECT_EQ(SplitCommandLine(row.Always + u" x"), (Arguments{row.Argument, u"x"}));
    EXPECT_EQ(SplitCommandLine(row.IfNeeded + u" x"), (Arguments{row.Argument, u"x"}));
  }
}

} // namespace
} // namespace kx::text
