#include "program/report/CiGuard.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

TEST(CiGuard, BreaksWhatASystemWouldObey) {
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"ordinary text", "std::move ## a::b #[x] C#\n", "std::move ## a::b #[x] C#\n"},
      {"at the start", "::set-env name=A::b", ":\u200A:set-env name=A::b"},
      {"in another line", "a\n ::b", "a\n :\u200A:b"},
      {"colons in a row", ":::b", ":\u200A::b"},
      {"behind blanks beyond ASCII", "\u00A0\u2003\u3000::b", "\u00A0\u2003\u3000:\u200A:b"},
      {"behind what has no width", "\uFEFF\u200B\u2060::b", "\uFEFF\u200B\u2060:\u200A:b"},
      {"around what has no width", ":\u200B:b", ":\u200B\u200A:b"},
      {"behind a colour", "\x1b[1;31m::b", "\x1b[1;31m:\u200A:b"},
      {"behind a lone CR", "a\r::b", "a\n:\u200A:b"},
      {"behind CR LF", "a\r\n::b", "a\n:\u200A:b"},
      {"behind a vertical tab", "a\v::b", "a\u240B:\u200A:b"},
      {"behind NEL", "a\u0085::b", "a\u2421:\u200A:b"},
      {"behind a line separator", "a\u2028::b\u2029::c", "a\u2028:\u200A:b\u2029:\u200A:c"},
      {"the older form, anywhere", "a ##[add-path]b", "a ##\u200A[add-path]b"},
      {"more than two", "###[x]", "###\u200A[x]"},
      {"any letter case", "a##VSO[task]b ##TeamCity[c]", "a##\u200AVSO[task]b ##\u200ATeamCity[c]"},
      {"not quite", "##vsx[ ##team [", "##vsx[ ##team ["},
      {"a section", "\x1b[0Ksection_start:1:a\r\x1b[0K", "\u241B[0Ksection_start:1:a\n\u241B[0K"},
      {"bytes that are no text", "\xFF\xC3::\xE2\x80", "\xFF\xC3::\xE2\x80"},
  };
  for (const auto& [name, text, passed] : cases)
    EXPECT_EQ(TCiGuard().Pass(text), passed) << name;
  for (const std::string text : {"  ::a", "x\n::a", "b ##vso[a", "##teamcity[a", "##[a"})
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
      TCiGuard guard;
      const std::string begun = guard.Pass(text.substr(0, cut));
      EXPECT_NE((begun + guard.Pass(text.substr(cut))).find("\u200A"), text.npos)
          << text << " cut at " << cut;
    }
}

TEST(CiGuard, KnowsWhereALineBegins) {
  TCiGuard guard;
  EXPECT_TRUE(guard.IsAtLineStart());
  for (const auto& [text, is] :
       {std::pair("a", false), {"\n", true}, {"\u2028", false}, {"b\r\n", true}, {"\x1b[0m", false}}) {
    guard.Pass(text);
    EXPECT_EQ(guard.IsAtLineStart(), is) << text;
  }
}

} // namespace
} // namespace kx
