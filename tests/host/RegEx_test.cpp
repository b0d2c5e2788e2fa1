#include "host/RegEx.h"

#include <gtest/gtest.h>

#include <string>

namespace kx {
namespace {

struct TMatchCase {
  const char* What;
  std::u16string Input;
  std::u16string Pattern;
  TRegExOptions Options;
  bool Matches;
  std::u16string Whole;
  std::u16string Group1;
};

TEST(RegEx, MatchesAsItsOptionsSay) {
  constexpr auto none = TRegExOptions::None;
  constexpr auto ignoreCase = TRegExOptions::IgnoreCase;
  constexpr auto multiLine = TRegExOptions::MultiLine;
  const TMatchCase cases[] = {
      {"the first match anywhere", u"a 12 b 34", u"(\\d+)", none, true, u"12", u"12"},
      {"letter case counts", u"ERROR", u"error", none, false, u"", u""},
      {"letter case can be ignored", u"ÉCHOUÉ", u"(échoué)", ignoreCase, true, u"ÉCHOUÉ", u"ÉCHOUÉ"},
      {"a dot stops at CR LF", u"ab\r\ncd", u"(b.*)", none, true, u"b", u"b"},
      {"a dot stops at a lone LF", u"ab\ncd", u"b.+", none, false, u"", u""},
      {"^ means the start of the text", u"a\nb", u"^b", none, false, u"", u""},
      {"^ means the start of a line when asked", u"a\nb", u"^(b)$", multiLine, true, u"b", u"b"},
      {"digits are ASCII", u"٣", u"\\d", none, false, u"", u""},
      {"words are ASCII", u"é", u"\\w", none, false, u"", u""},
      {"white space is ASCII", u"\u00A0", u"\\s", none, false, u"", u""},
      {"lazy and non-capturing groups", u"\"a\\0\"", u"\"(.*?)(?:\\\\0)?\"", none, true, u"\"a\\0\"", u"a"},
      {"a lone surrogate is no error", u"x\xD800y", u"(y)", none, true, u"y", u"y"},
      {"empty text", u"", u"^$", none, true, u"", u""},
  };
  for (const auto& row : cases) {
    const TRegExMatch match = RegEx::Match(row.Input, row.Pattern, row.Options);
    EXPECT_EQ(match.Success(), row.Matches) << row.What;
    EXPECT_EQ(match.Value(), row.Whole) << row.What;
    EXPECT_EQ(match.GetItem(1), row.Group1) << row.What;
    EXPECT_EQ(RegEx::IsMatch(row.Input, row.Pattern, row.Options), row.Matches) << row.What;
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

TEST(RegEx, SaysWhatIsWrongAndWhere) {
  try {
    RegEx::NewRegularExpression(u"Debug(");
    FAIL() << "a wrong expression was accepted";
  } catch (const ERegExError& error) {
    EXPECT_EQ(error.Message(), u"missing closing parenthesis at position 7 of \"Debug(\"");
  }
}

TEST(RegEx, EndsAnExpressionThatBacktracksForEver) {
  const std::u16string input(5000, u'a');
  EXPECT_THROW(RegEx::IsMatch(input + u"!", u"^(a+)+$"), ERegExError);
}

TEST(RegEx, MatchesAcrossALongLine) {
  std::u16string input(250'000, u'x');
  input += u" -- 3 errors";
  EXPECT_EQ(RegEx::Match(input, u"(?:x|y)+ -- (\\d+)").GetItem(1), u"3");
}

TEST(RegEx, Splits) {
  using TPieces = std::vector<std::u16string>;
  struct TCase {
    std::u16string Input;
    std::u16string Pattern;
    TPieces Pieces;
  };
  const TCase cases[] = {
      {u"Debug|Any CPU", u"\\|", {u"Debug", u"Any CPU"}},
      {u"Debug", u"\\|", {u"Debug"}},
      {u"|x|", u"\\|", {u"", u"x", u""}},
      {u"", u"\\|", {u""}},
      {u"abc", u"", {u"a", u"b", u"c"}},
  };
  for (const auto& row : cases)
    EXPECT_EQ(RegEx::Split(row.Input, row.Pattern), row.Pieces);
}

} // namespace
} // namespace kx
