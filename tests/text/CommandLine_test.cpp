#include "foundation/text/CommandLine.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

using Arguments = std::vector<std::u16string>;

TEST(SplitCommandLine, FollowsTheRulesOfTheWindowsRuntime) {
  const std::tuple<const char*, std::u16string_view, Arguments> rows[] = {
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
  for (const auto& [name, line, expected] : rows)
    EXPECT_EQ(SplitCommandLine(line), expected) << name;
}

TEST(QuoteArgument, IsReadBackAsOneArgument) {
  const std::tuple<std::u16string, std::u16string, std::u16string> rows[] = {
      {u"", u"\"\"", u"\"\""},
      {u"C:\\dir\\", u"\"C:\\dir\\\\\"", u"C:\\dir\\"},
      {u"C:\\a b\\", u"\"C:\\a b\\\\\"", u"\"C:\\a b\\\\\""},
      {u"a\\\\\"b", u"\"a\\\\\\\\\\\"b\"", u"\"a\\\\\\\\\\\"b\""},
      {u"tab\there", u"\"tab\there\"", u"\"tab\there\""},
  };
  for (const auto& [argument, always, ifNeeded] : rows) {
    EXPECT_EQ(QuoteArgument(argument), always);
    EXPECT_EQ(QuoteArgumentIfNeeded(argument), ifNeeded);
    EXPECT_EQ(SplitCommandLine(always + u" " + ifNeeded), (Arguments{argument, argument}));
  }
}

} // namespace
} // namespace kx::text
