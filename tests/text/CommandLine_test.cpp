#include "text/CommandLine.h"

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
      {"nothing", u"", {}},
      {"only blanks", u" \t ", {}},
      {"blanks and tabs separate", u"  a\tb  c ", {u"a", u"b", u"c"}},
      {"a line break is an ordinary character", u"a\r\nb", {u"a\r\nb"}},
      {"quotes group", u"\"a b\" c", {u"a b", u"c"}},
      {"quotes in the middle of an argument", u"/p:\"A B\";C", {u"/p:A B;C"}},
      {"an empty argument", u"a \"\" b", {u"a", u"", u"b"}},
      {"an open quote runs to the end", u"\"a b ", {u"a b "}},
      {"backslashes before a letter stay", u"a\\\\b \\\\server\\x", {u"a\\\\b", u"\\\\server\\x"}},
      {"an odd backslash makes the quote literal", u"a\\\"b", {u"a\"b"}},
      {"two backslashes are one and the quote groups", u"\"a\\\\\" b", {u"a\\", u"b"}},
      {"three backslashes are one and a literal quote", u"a\\\\\\\"b c", {u"a\\\"b", u"c"}},
      {"backslashes at the end stay", u"C:\\dir\\\\", {u"C:\\dir\\\\"}},
      {"a doubled quote inside quotes is literal and does not end them",
       u"\"a\"\"b c\" d",
       {u"a\"b c", u"d"}},
      {"four quotes are one literal quote", u"\"\"\"\" x", {u"\"", u"x"}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(SplitCommandLine(row.CommandLine), row.Expected) << row.Case;
}

TEST(QuoteArgument, IsReadBackAsOneArgument) {
  const struct {
    std::u16string_view Argument;
    std::u16string_view Always;
    std::u16string_view IfNeeded;
  } rows[] = {
      {u"", u"\"\"", u"\"\""},
      {u"plain", u"\"plain\"", u"plain"},
      {u"C:\\a b\\", u"\"C:\\a b\\\\\"", u"\"C:\\a b\\\\\""},
      {u"C:\\dir\\", u"\"C:\\dir\\\\\"", u"C:\\dir\\"},
      {u"say \"hi\"", u"\"say \\\"hi\\\"\"", u"\"say \\\"hi\\\"\""},
      {u"a\\\\\"b", u"\"a\\\\\\\\\\\"b\"", u"\"a\\\\\\\\\\\"b\""},
      {u"tab\there", u"\"tab\there\"", u"\"tab\there\""},
  };
  for (const auto& row : rows) {
    const std::u16string argument(row.Argument);
    EXPECT_EQ(QuoteArgument(argument), row.Always);
    EXPECT_EQ(QuoteArgumentIfNeeded(argument), row.IfNeeded);
    EXPECT_EQ(SplitCommandLine(QuoteArgument(argument) + u" x"), (Arguments{argument, u"x"}));
    EXPECT_EQ(SplitCommandLine(QuoteArgumentIfNeeded(argument) + u" x"), (Arguments{argument, u"x"}));
  }
}

} // namespace
} // namespace kx::text
