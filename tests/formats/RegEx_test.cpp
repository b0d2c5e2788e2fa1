#include "foundation/formats/RegEx.h"

#include "tests/support/Failure.h"

#include <gtest/gtest.h>

#include <string>

namespace kx {
namespace {

TEST(RegEx, MatchesAsItsOptionsSay) {
  using enum TRegExOptions;
  const std::tuple<const char*, std::u16string, std::u16string, TRegExOptions, std::u16string> cases[] = {
      {"the first match anywhere", u"a 12 b 34", u"(\\d+)", None, u"12/12"},
      {"letter case counts", u"ERROR", u"error", None, u"none"},
      {"letter case can be ignored", u"ÉCHOUÉ", u"(échoué)", IgnoreCase, u"ÉCHOUÉ/ÉCHOUÉ"},
      {"a dot stops at CR LF", u"ab\r\ncd", u"(b.*)", None, u"b/b"},
      {"a dot stops at a lone LF", u"ab\ncd", u"b.+", None, u"none"},
      {"^ means the start of the text", u"a\nb", u"^b", None, u"none"},
      {"^ means the start of a line when asked", u"a\nb", u"^(b)$", MultiLine, u"b/b"},
      {"digits are ASCII", u"٣", u"\\d", None, u"none"},
      {"a lone surrogate is no error", u"x\xD800y", u"(y)", None, u"y/y"},
      {"empty text", u"", u"^$", None, u"/"},
  };
  for (const auto& [what, input, pattern, options, expected] : cases) {
    const TRegExMatch match = RegEx::Match(input, pattern, options);
    const std::u16string found = std::u16string(match.Value()).append(u"/").append(match.GetItem(1));
    EXPECT_EQ(match.Success() ? found : u"none", expected) << what;
    EXPECT_EQ(RegEx::IsMatch(input, pattern, options), match.Success()) << what;
  }
}

TEST(RegEx, TellsAnEmptyGroupFromOneThatTookNoPart) {
  const TRegExMatch match = RegEx::Match(u"b", u"(a)|(b)()");
  ASSERT_TRUE(match);
  EXPECT_FALSE(match.HasItem(1));
  EXPECT_TRUE(match.HasItem(3));
  EXPECT_EQ(match.GetItem(3), u"");
  EXPECT_EQ(match.GetItem(99), u"");
}

TEST(RegEx, SaysWhatIsWrongAndWhereAndEndsWhatBacktracksForEver) {
  EXPECT_EQ(tests::FailureOf([] { RegEx::NewRegularExpression(u"Debug("); }),
            "missing closing parenthesis at position 7 of \"Debug(\"");
  EXPECT_THROW(RegEx::IsMatch(std::u16string(5000, u'a') + u"!", u"^(a+)+$"), ERegExError);
}

TEST(RegEx, MatchesAcrossALongLine) {
  std::u16string input(250'000, u'x');
  input += u" -- 3 errors";
  EXPECT_EQ(RegEx::Match(input, u"(?:x|y)+ -- (\\d+)").GetItem(1), u"3");
}

TEST(RegEx, Splits) {
  const std::tuple<std::u16string, std::u16string, std::vector<std::u16string>> cases[] = {
      {u"Debug|Any CPU", u"\\|", {u"Debug", u"Any CPU"}},
      {u"Debug", u"\\|", {u"Debug"}},
      {u"|x|", u"\\|", {u"", u"x", u""}},
      {u"", u"\\|", {u""}},
      {u"abc", u"", {u"a", u"b", u"c"}},
      {u"", u"", {u""}},
      {u"1,2;;3", u"[,;]*", {u"1", u"2", u"3"}},
  };
  for (const auto& [input, pattern, pieces] : cases)
    EXPECT_EQ(RegEx::Split(input, pattern), pieces);
}

} // namespace
} // namespace kx
