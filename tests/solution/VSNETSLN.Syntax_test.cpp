#include "package/solution/VSNETSLN.Syntax.h"

#include "foundation/formats/RegEx.h"
#include "foundation/text/Encoding.h"

#include <gtest/gtest.h>
#include <random>

namespace kx::slnsyntax {

namespace {

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
      {title + "99999999999999999999.", vsUnknown},
      {"text before " + title + "9.00 and behind", vs2005},
      {title + "10", std::nullopt},
      {"microsoft" + title.substr(9) + "10.00", std::nullopt}};
  for (const auto& [line, version] : cases)
    EXPECT_EQ(ReadHeader(line), version) << line;
}

TEST(SolutionSyntax, SplitsNoMoreItemsThanAProjectHas) {
  TCommaItems items;
  for (const auto& [text, count] : {std::pair("a, \"b,c\" ,d,e", 3U), {"a,b,", 3U}, {" a,", 2U}, {"", 0U}})
    EXPECT_EQ(items.Split(text), count) << text;
}

TEST(SolutionSyntax, FindsInConfigurationLinesWhatTheExpressionFinds) {
  std::mt19937 random(2);
  const auto expression = RegEx::NewRegularExpression(u"\\.(.+)\\.(ActiveCfg|Build\\.0) = (.+)");
  const std::string_view pieces[] = {".",        ".ActiveCfg = ", ".Build.0 = ", " = ", "Debug|x86", "A",
                                     "\xC3\xA9", "ActiveCfg",     ".Build.0",    "=",   " "};
  int found = 0;
  for (int i = 0; i < 30'000; ++i) {
    std::string text;
    for (std::size_t count = random() % 10; count > 0; --count)
      text += pieces[random() % std::size(pieces)];
    const std::u16string wide = text::FromUtf8(text);
    const TRegExMatch match = expression->Match(wide);
    const auto line = ReadProjectConfig(text);
    ASSERT_EQ(line.has_value(), match.Success()) << text;
    if (!line) continue;
    ++found;
    const std::string active = line->Active ? "ActiveCfg" : "Build.0";
    ASSERT_EQ(
        text::FromUtf8("." + std::string(line->Solution) + "." + active + " = " + std::string(line->Project)),
        match.Value());
  }
  EXPECT_GT(found, 3'000);
}

} // namespace

} // namespace kx::slnsyntax
