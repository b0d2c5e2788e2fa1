#include "foundation/text/Text.h"

#include "foundation/text/Exceptions.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <system_error>

namespace kx::text {
namespace {

TEST(FoldCase, PairsCapitalAndSmallLettersAndIsStable) {
  // Of each range the first letters and the last.
  const std::u16string_view capitals = uR"(AZÉŅŠŐẤÀÁÖØÙÞĀĂĮĲĴĶĹĻŇŊŌŶŸŹŻŽƏƑƠƢƤƯǄǇǊǍǏǛǞǠǮǱǴǸǺȞȢȤȲΆΈΉΊ
ΌΎΏΑΒΡΣΤΫϘϚϮЀЁЏАБЯѠѢҀҊҌҾӀӁӃӍӐӒԮḀḂẔẠẢỾἈἉἏἘἙἝἨἩἯἸἹἿὈὉὍὙὛὟὨ
ὩὯＡＢＺ)";
  const std::u16string_view smalls = uR"(azéņšőấàáöøùþāăįĳĵķĺļňŋōŷÿźżžəƒơƣƥưǆǉǌǎǐǜǟǡǯǳǵǹǻȟȣȥȳάέήί
όύώαβρστϋϙϛϯѐёџабяѡѣҁҋҍҿӏӂӄӎӑӓԯḁḃẕạảỿἀἁἇἐἑἕἠἡἧἰἱἷὀὁὅὑὓὗὠ
ὡὧａｂｚ)";
  for (std::size_t i = 0; i < capitals.size(); ++i)
    EXPECT_EQ(FoldCase(capitals[i]), smalls[i]) << std::hex << unsigned{smalls[i]};
  for (const char16_t c : std::u16string_view(u"@[`{0 ×÷ßµſİı€‰日"))
    EXPECT_EQ(FoldCase(c), c);
  int letters = 0;
  for (unsigned c = 0; c < 0x10000; ++c) {
    const char16_t folded = FoldCase(static_cast<char16_t>(c));
    letters += folded != c ? 1 : 0;
    ASSERT_EQ(FoldCase(folded), folded) << std::hex << c;
    ASSERT_EQ(c < 0x80, folded < 0x80) << std::hex << c;
  }
  EXPECT_EQ(letters, 565)
      << "no more and no fewer, whatever stands between the first and the last of a range";
}

TEST(Comparisons, IgnoreLetterCase) {
  EXPECT_TRUE(EqualsIgnoreCase(u"Größe.CSPROJ", u"GRÖßE.csproj"));
  EXPECT_FALSE(LessIgnoreCase(u"A", u"a"));
  EXPECT_TRUE(LessIgnoreCase(u"a", u"AB"));
  EXPECT_FALSE(StartsWithIgnoreCase(u"Pro", u"Project"));
  EXPECT_TRUE(EndsWithIgnoreCase(u"a.VCPROJ", u".vcproj"));
  EXPECT_FALSE(EndsWithIgnoreCase(u"j", u".vcproj"));
  EXPECT_EQ(IgnoreCaseHash()(u"Éa"), IgnoreCaseHash()(u"éA"));
}

TEST(FindIgnoreCase, StaysInsideTheText) {
  const auto none = std::u16string_view::npos;
  EXPECT_EQ(FindIgnoreCase(u"xxABab", u"AB", 3), 4U);
  EXPECT_EQ(FindIgnoreCase(u"abc", u"", 3), 3U);
  EXPECT_EQ(FindIgnoreCase(u"abc", u"", 4), none);
}

TEST(Trim, TakesControlCharactersButNotTheNoBreakSpace) {
  EXPECT_EQ(Trim(u"\x01\t \u00A0a b \r\n"), u"\u00A0a b");
}

TEST(SplitLines, TakesAllLineEnds) {
  const std::pair<std::u16string_view, std::vector<std::u16string_view>> rows[] = {
      {u"", {}},
      {u"a\r\n", {u"a"}},
      {u"a\n\n", {u"a", u""}},
      {u"a\r\nb\nc\rd", {u"a", u"b", u"c", u"d"}},
      {u"a\u2028b\vc", {u"a\u2028b\vc"}},
  };
  for (const auto& [text, lines] : rows)
    EXPECT_EQ(SplitLines(text), lines) << testing::PrintToString(text);
}

TEST(Split, KeepsEmptyPartsWhichJoinPutsBack) {
  EXPECT_EQ(Split(u",a,,b", u','), (std::vector<std::u16string_view>{u"", u"a", u"", u"b"}));
  EXPECT_EQ(Join(std::vector<std::u16string>{u"", u"a", u"", u"b"}, u", "), u", a, , b");
}

TEST(Shortened, CutsNoCharacter) {
  EXPECT_EQ(Shortened(u"abc", 3), u"abc");
  EXPECT_EQ(Shortened(u"abcd", 3), u"ab\u2026");
  EXPECT_EQ(Shortened(u"a\U0001F600b", 3), u"a\u2026");
  EXPECT_EQ(Shortened(u"\U0001F600b", 2), u"\u2026");
  EXPECT_EQ(Shortened(u"\U0001F600bc", 3), u"\U0001F600\u2026");
}

TEST(VisibleControls, LeavesLinesAndTabs) {
  EXPECT_EQ(VisibleControls(u"a\t\r\n \x1B\x1F\x7F\x85\u00A0~"), u"a\t\r\n \u241B\u241F\u2421\u2421\u00A0~");
}

TEST(Errors, SayWhatAndWhere) {
  const EKxParseError parsing(u"bad", u"a.sln", 3);
  EXPECT_EQ(PlaceOf(parsing) + PlaceOf(EKxParseError(u"x", u"", 1)) + PlaceOf(EKxParseError(u"x", u"a", 0)),
            u"a.sln, line 3");
  EXPECT_EQ(PlaceOf(EKxException(u"x")), u"");
  EXPECT_EQ(MessageOf(parsing) + MessageOf(std::bad_alloc()) + MessageOf(std::runtime_error("\xC3\xA9")),
            u"badOut of memoryé");
  for (const auto& [code, isThread] :
       {std::pair(std::errc::resource_unavailable_try_again, true), {std::errc::io_error, false}})
    EXPECT_EQ(MessageOf(std::system_error(std::make_error_code(code))).starts_with(u"A thread"), isThread);
}

TEST(ToInteger, RefusesWhatIsNoNumberOrDoesNotFit) {
  const std::pair<std::u16string_view, std::optional<std::int32_t>> rows[] = {
      {u"  -042", -42},    {u"+7", 7},     {u"-2147483648", std::numeric_limits<std::int32_t>::min()},
      {u"2147483648", {}}, {u"-", {}},     {u"+-1", {}},
      {u"42 ", {}},        {u"\u0664", {}}};
  for (const auto& [text, number] : rows)
    EXPECT_EQ(ToInteger(text), number) << testing::PrintToString(text);
}

TEST(NearestName, HelpsOnlyWhenItIsNear) {
  const std::vector<std::u16string> names{u"Solution", u"SolutionConfiguration", u"run"};
  EXPECT_EQ(NearestName(u"Solutoin", names), u"Solution");
  EXPECT_EQ(NearestName(u"SolutionConfig", names), u"SolutionConfiguration");
  EXPECT_EQ(NearestName(u"validate", names), u"");
  EXPECT_EQ(NearestName(u"ab", std::vector<std::u16string>{u"xy", u"ba", u"ac"}), u"ba")
      << "the first of equals";
  EXPECT_EQ(NearestName(u"a", std::vector<std::u16string>{u"b"}), u"") << "nothing is left of it";
}

} // namespace
} // namespace kx::text
