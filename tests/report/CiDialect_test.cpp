#include "program/report/CiDialect.h"

#include "foundation/text/Text.h"
#include "program/findings/SourceLocation.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

TEST(SourceLocation, IsFoundWhereToolsPutIt) {
  const std::tuple<const char*, std::u16string, std::u16string> cases[] = {
      // file|line|column|rest; empty: none
      {"line and column", u"a\\b.cs(12,5): error CS0103: no x", u"a\\b.cs|12|5|error CS0103: no x"},
      {"a build of several projects", u"  3>x.cpp(7) : fatal error C1083: y",
       u"x.cpp|7|0|fatal error C1083: y"},
      {"a folder with brackets", u"C:\\App (x86)\\b.vb(1,2,3,4): warning BC1: t",
       u"C:\\App (x86)\\b.vb|1|2|warning BC1: t"},
      {"a range", u"b.cs(1,2-3,4): error X: t", u"b.cs|1|2|error X: t"},
      {"the project behind it", u"b.cs(1,2): error X: t [/s/App/App.csproj]", u"/s/App/b.cs|1|2|error X: t"},
      {"a call in prose", u"calling f(12) failed: no", u""},
      {"no colon", u"b.cs(12,5)", u""},
      {"nothing before it", u"(12): error", u""},
      {"brackets that never close", std::u16string(300'000, u'(') + u"1): t",
       std::u16string(299'999, u'(') + u"|1|0|t"},
  };
  for (const auto& [name, line, expected] : cases) {
    std::u16string shown;
    if (const auto found = FindSourceLocation(line))
      shown = found->File + u"|" + text::FromInteger(found->Line) + u"|" + text::FromInteger(found->Column) +
              u"|" + found->Rest;
    EXPECT_EQ(shown, expected) << name;
  }
}

TEST(CiDialect, EscapesWhatItPutsIntoCommands) {
  const std::u16string problem = u"/w/a,b.cs(3,4): error X1: 50% of [it];\nmore 'now'|";
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
      {"github", "::group::100%25 [a'b]",
       "::endgroup::", "::error file=a%2Cb.cs,line=3,col=4::error X1: 50%25 of [it];%0Amore 'now'|"},
      {"azure", "##[group]100% [a'b]", "##[endgroup]",
       "##vso[task.logissue type=error;sourcepath=a,b.cs;linenumber=3;columnnumber=4;]"
       "error X1: 50%AZP25 of [it];%0Amore 'now'|"},
      {"teamcity", "##teamcity[blockOpened name='100% |[a|'b|]']",
       "##teamcity[blockClosed name='100% |[a|'b|]']",
       "##teamcity[message text='/w/a,b.cs(3,4): error X1: 50% of |[it|];|nmore |'now|'||' status='ERROR']"},
      {"gitlab", "\x1b[0Ksection_start:9:kxhost_2\r\x1b[0K100% [a'b]",
       "\x1b[0Ksection_end:9:kxhost_2\r\x1b[0K", ""},
  };
  for (const auto& [name, start, end, error] : cases) {
    const TCiDialect* dialect = FindCiDialect(name);
    ASSERT_NE(dialect, nullptr) << name;
    EXPECT_EQ(dialect->GroupStart(u"100% [a'b]", 2, 9).Line(), start);
    EXPECT_EQ(dialect->GroupEnd(u"100% [a'b]", 2, 9).Line(), end);
    EXPECT_EQ(dialect->Problem(problem, true, u"/w").Line(), error);
  }
  EXPECT_EQ(FindCiDialect("jenkins"), nullptr);
}

// Titles are names of projects and configurations: whatever they hold, one line comes out.
TEST(CiDialect, HidesCommandsWithinItsOwn) {
  const std::u16string title = u"é::a\r\n::stop::##vso[b]##[c]\u2028::d";
  const std::pair<const char*, std::string_view> cases[] = {
      {"github", "::group::\u00E9::a%0A:\u200A:stop::##\u200Avso[b]##\u200A[c]\u2028:\u200A:d"},
      {"azure", "##[group]\u00E9::a :\u200A:stop::##\u200Avso[b]##\u200A[c]\u2028:\u200A:d"},
      {"teamcity", "##teamcity[blockOpened name='|0x00E9::a|r|n::stop::##vso|[b|]##|[c|]|0x2028::d']"},
      {"gitlab", "\x1b[0Ksection_start:9:kxhost_2\r\x1b[0K"
                 "\u00E9::a :\u200A:stop::##\u200Avso[b]##\u200A[c]\u2028:\u200A:d"},
  };
  for (const auto& [name, line] : cases)
    EXPECT_EQ(FindCiDialect(name)->GroupStart(title, 2, 9).Line(), line) << name;
}

} // namespace
} // namespace kx
