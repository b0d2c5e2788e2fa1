#include "text/Text.h"

#include <gtest/gtest.h>

namespace kx::text {
namespace {

TEST(FoldCase, PairsCapitalAndSmallLetters) {
  const std::u16string_view pairs[] = {u"Aa", u"Zz", u"Éé", u"Ÿÿ", u"Ņņ", u"Šš", u"Žž",
                                       u"Őő", u"Ưư", u"Ǆǆ", u"Șș", u"Άά", u"Ωω", u"Жж",
                                       u"Ђђ", u"Ґґ", u"Ӏӏ", u"Ấấ", u"Ẁẁ", u"Ỹỹ", u"Ａａ"};
  for (const auto pair : pairs) {
    EXPECT_EQ(FoldCase(pair[0]), pair[1]) << testing::PrintToString(pair);
    EXPECT_EQ(FoldCase(pair[1]), pair[1]) << testing::PrintToString(pair);
  }
}

TEST(FoldCase, LeavesEverythingElseAndIsStable) {
  for (const char16_t c : std::u16string_view(u"@[`{0 ×÷ßµſİı€‰日"))
    EXPECT_EQ(FoldCase(c), c);
  for (unsigned c = 0; c < 0x10000; ++c) {
    const char16_t folded = FoldCase(static_cast<char16_t>(c));
    ASSERT_EQ(FoldCase(folded), folded) << std::hex << c;
    ASSERT_EQ(c < 0x80, folded < 0x80) << std::hex << c;
  }
}

TEST(Comparisons, IgnoreLetterCase) {
  EXPECT_TRUE(EqualsIgnoreCase(u"Größe.CSPROJ", u"GRÖßE.csproj"));
  EXPECT_FALSE(EqualsIgnoreCase(u"a", u"ab"));
  EXPECT_TRUE(LessIgnoreCase(u"a", u"B"));
  EXPECT_FALSE(LessIgnoreCase(u"A", u"a"));
  EXPECT_TRUE(LessIgnoreCase(u"a", u"AB"));
  EXPECT_TRUE(StartsWithIgnoreCase(u"Project(x", u"PROJECT("));
  EXPECT_FALSE(StartsWithIgnoreCase(u"Pro", u"Project"));
  EXPECT_TRUE(EndsWithIgnoreCase(u"a.VCPROJ", u".vcproj"));
  EXPECT_FALSE(EndsWithIgnoreCase(u"j", u".vcproj"));
  EXPECT_EQ(IgnoreCaseHash()(u"Éa"), IgnoreCaseHash()(u"éA"));
}

TEST(FindIgnoreCase, StaysInsideTheText) {
  const struct {
    std::u16string_view Text, Wanted;
    std::size_t From, Expected;
  } rows[] = {
      {u"xxABab", u"ab", 0, 2},
      {u"xxABab", u"AB", 3, 4},
      {u"xxAB", u"abc", 0, std::u16string_view::npos},
      {u"abc", u"", 2, 2},
      {u"abc", u"c", 2, 2},
      {u"abc", u"c", 3, std::u16string_view::npos},
      {u"abc", u"", 3, 3},
      {u"abc", u"", 4, std::u16string_view::npos},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(FindIgnoreCase(row.Text, row.Wanted, row.From), row.Expected)
        << testing::PrintToString(row.Text) << testing::PrintToString(row.Wanted) << row.From;
  }
}

TEST(ReplaceAll, ReplacesEveryOccurrenceOnce) {
  EXPECT_EQ(ReplaceAll(u"aaa", u"aa", u"b"), u"ba");
  EXPECT_EQ(ReplaceAll(u"x|y", u"|", u"||"), u"x||y");
  EXPECT_EQ(ReplaceAll(u"Ab aB ab", u"AB", u"-", Case::Ignore), u"- - -");
  EXPECT_EQ(ReplaceAll(u"Ab ab", u"ab", u"-"), u"Ab -");
  EXPECT_EQ(ReplaceAll(u"abc", u"", u"-"), u"abc");
}

TEST(Trim, TakesControlCharactersButNotTheNoBreakSpace) {
  EXPECT_EQ(Trim(u"\x01\t a b \r\n"), u"a b");
  EXPECT_EQ(TrimLeft(u"  a "), u"a ");
  EXPECT_EQ(TrimRight(u"  a "), u"  a");
  EXPECT_EQ(Trim(u"\u00A0a"), u"\u00A0a");
  EXPECT_EQ(Trim(u" \t"), u"");
}

TEST(SplitLines, TakesAllLineEnds) {
  const struct {
    const char* Case;
    std::u16string_view Text;
    std::vector<std::u16string_view> Lines;
  } rows[] = {
      {"nothing", u"", {}},
      {"no line end", u"a", {u"a"}},
      {"a last line end adds no line", u"a\r\n", {u"a"}},
      {"an empty last line", u"a\n\n", {u"a", u""}},
      {"all three kinds", u"a\r\nb\nc\rd", {u"a", u"b", u"c", u"d"}},
      {"LF CR are two", u"a\n\rb", {u"a", u"", u"b"}},
      {"other separators do not end lines", u"a\u2028b\vc", {u"a\u2028b\vc"}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(SplitLines(row.Text), row.Lines) << row.Case;
}

TEST(SplitAndJoin, AreInverse) {
  const struct {
    std::u16string_view Text;
    std::size_t Parts;
  } rows[] = {{u"", 1}, {u"a", 1}, {u"a;b", 2}, {u";", 2}, {u"a;;b;", 4}};
  for (const auto& row : rows) {
    const auto parts = Split(row.Text, u';');
    EXPECT_EQ(parts.size(), row.Parts);
    EXPECT_EQ(Join(std::vector<std::u16string>(parts.begin(), parts.end()), u";"), row.Text);
  }
}

TEST(ToInteger, RefusesWhatIsNoNumberOrDoesNotFit) {
  const struct {
    std::u16string_view Text;
    std::optional<std::int32_t> Number;
  } rows[] = {
      {u"0", 0},
      {u"  42", 42},
      {u"-7", -7},
      {u"+7", 7},
      {u"007", 7},
      {u"2147483647", 2147483647},
      {u"-2147483648", std::numeric_limits<std::int32_t>::min()},
      {u"2147483648", std::nullopt},
      {u"-2147483649", std::nullopt},
      {u"99999999999999999999999", std::nullopt},
      {u"", std::nullopt},
      {u"-", std::nullopt},
      {u"+-1", std::nullopt},
      {u"4 2", std::nullopt},
      {u"42 ", std::nullopt},
      {u"0x1F", std::nullopt},
      {u"\u0664", std::nullopt},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ToInteger(row.Text), row.Number) << testing::PrintToString(row.Text);
    EXPECT_EQ(ToIntegerOr(row.Text, 5), row.Number.value_or(5)) << testing::PrintToString(row.Text);
  }
  EXPECT_EQ(FromInteger(-9'000'000'000), u"-9000000000");
}

TEST(NearestName, HelpsOnlyWhenItIsNear) {
  const std::vector<std::u16string> names{u"Solution", u"SolutionConfiguration", u"run", u"do"};
  const struct {
    std::u16string_view Name, Nearest;
  } rows[] = {
      {u"Solutoin", u"Solution"},
      {u"SOLUTION", u"Solution"},
      {u"SolutionConfig", u"SolutionConfiguration"},
      {u"rnu", u"run"},
      {u"od", u"do"},
      {u"validate", u""},
      {u"", u""},
      {u"x", u""},
  };
  for (const auto& row : rows)
    EXPECT_EQ(NearestName(row.Name, names), row.Nearest) << testing::PrintToString(row.Name);
}

} // namespace
} // namespace kx::text
