#include "solution/VSNETSLN.Syntax.h"

#include "host/RegEx.h"
#include "text/Encoding.h"
#include "text/StringList.h"

#include <gtest/gtest.h>
#include <random>

namespace kx::slnsyntax {

namespace {

std::string RandomText(std::mt19937& random, std::span<const std::string_view> pieces, std::size_t most) {
  std::string text;
  for (std::size_t count = random() % (most + 1); count > 0; --count)
    text += pieces[random() % pieces.size()];
  return text;
}

TEST(SolutionSyntax, KnowsTheVersionsOfHeaders) {
  using enum TVSDotNetVersion;
  const std::string title = "Microsoft Visual Studio Solution File, Format Version ";
  const std::pair<std::string, std::optional<TVSDotNetVersion>> cases[] = {
      {title + "7.00", vs2002},
      {title + "8.00", vs2003},
      {title + "9.00", vs2005},
      {title + "10.00", vs2008},
      {title + "11.00", vs2010},
      {title + "12.00", vsUnknown},
      {title + "6.99", vsUnknown},
      {title + "0011.x", vs2010},
      {title + "99999999999999999999.", vsUnknown},
      {"text before " + title + "9.00 and behind", vs2005},
      {title + "9 " + title + "10.", vs2008},
      {title + title + "8.", vs2003},
      {title + "10", std::nullopt},
      {title + " 10.00", std::nullopt},
      {title + ".", std::nullopt},
      {"microsoft Visual Studio Solution File, Format Version 10.00", std::nullopt},
      {"", std::nullopt},
  };
  for (const auto& [line, version] : cases)
    EXPECT_EQ(ReadHeader(line), version) << line;
}

TEST(SolutionSyntax, SplitsCommaTextLikeAStringList) {
  std::mt19937 random(1);
  const std::string_view pieces[] = {"\"", "\"\"", ",", " ", "\t", "a", "b c", "{1}", "\xC3\xA9"};
  TCommaItems items;
  for (int i = 0; i < 20'000; ++i) {
    const std::string text = RandomText(random, pieces, 12);
    text::TStringList list;
    list.SetCommaText(text::FromUtf8(text));
    ASSERT_EQ(items.Split(text), std::min(list.Count(), TCommaItems::Most)) << text;
    for (std::size_t k = 0; k < std::min(list.Count(), TCommaItems::Most); ++k)
      ASSERT_EQ(items[k], text::ToUtf8(list[k])) << text << " item " << k;
  }
}

TEST(SolutionSyntax, FindsInConfigurationLinesWhatTheExpressionFinds) {
  std::mt19937 random(2);
  const auto expression = RegEx::NewRegularExpression(u"\\.(.+)\\.(ActiveCfg|Build\\.0) = (.+)");
  const std::string_view pieces[] = {".",        ".ActiveCfg = ", ".Build.0 = ", " = ", "Debug|x86", "A",
                                     "\xC3\xA9", "ActiveCfg",     ".Build.0",    "=",   " "};
  int found = 0;
  for (int i = 0; i < 30'000; ++i) {
    const std::string text = RandomText(random, pieces, 9);
    const std::u16string wide = text::FromUtf8(text);
    const TRegExMatch match = expression->Match(wide);
    const auto line = ReadProjectConfig(text);
    ASSERT_EQ(line.has_value(), match.Success()) << text;
    if (!line) continue;
    ++found;
    ASSERT_EQ(text::FromUtf8(line->Solution), match.GetItem(1)) << text;
    ASSERT_EQ(line->Active, match.GetItem(2) == u"ActiveCfg") << text;
    ASSERT_EQ(text::FromUtf8(line->Project), match.GetItem(3)) << text;
  }
  EXPECT_GT(found, 3'000);
}

TEST(SolutionSyntax, CutsIdentifiersByCharacters) {
  std::mt19937 random(3);
  const std::string_view pieces[] = {"{AE-", "1", "\xC3\xA9", "\xF0\x9F\x98\x80", "\xE2\x82", "="};
  TIdentifierCut cut;
  for (int i = 0; i < 5'000; ++i) {
    const std::string text =
        RandomText(random, std::span(pieces).first(1 + random() % std::size(pieces)), 45);
    const std::u16string wide = text::FromUtf8(text);
    cut.Cut(text);
    ASSERT_EQ(cut.Identifier(), wide.substr(0, 38)) << text;
    // A character cut in two is none.
    ASSERT_EQ(text::FromUtf8(cut.Rest()),
              text::FromUtf8(text::ToUtf8(wide.substr(std::min<std::size_t>(38, wide.size())))))
        << text;
  }
}

} // namespace

} // namespace kx::slnsyntax
