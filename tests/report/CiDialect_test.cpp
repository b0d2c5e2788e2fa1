#include "program/report/CiDialect.h"

#include "foundation/text/Text.h"

#include <gmock/gmock.h>

namespace kx {
namespace {

TEST(CiDialect, EscapesWhatItPutsIntoCommands) {
  const TFinding problem{.Severity = TFindingSeverity::Error,
                         .Message = u"50% of [it];\nmore 'now'|",
                         .Place = {u"/w/a,b.cs", 3, 4},
                         .Code = u"X1"};
  const std::tuple<const char*, const char*, const char*, const char*> cases[] = {
      {"github", "::group::100%25 [a'b]",
       "::endgroup::", "::error file=a%2Cb.cs,line=3,col=4,title=X1::50%25 of [it];%0Amore 'now'|"},
      {"azure", "##[group]100% [a'b]", "##[endgroup]",
       "##vso[task.logissue type=error;sourcepath=a,b.cs;linenumber=3;columnnumber=4;code=X1;]"
       "50%AZP25 of [it];%0Amore 'now'|"},
      {"teamcity", "##teamcity[blockOpened name='100% |[a|'b|]']",
       "##teamcity[blockClosed name='100% |[a|'b|]']",
       "##teamcity[message text='a,b.cs(3,4): error X1: 50% of |[it|];|nmore |'now|'||' status='ERROR']"},
      {"gitlab", "\x1b[0Ksection_start:9:kxhost_2\r\x1b[0K100% [a'b]",
       "\x1b[0Ksection_end:9:kxhost_2\r\x1b[0K", ""},
  };
  for (const auto& [name, start, end, error] : cases) {
    const TCiDialect* dialect = FindCiDialect(name);
    ASSERT_NE(dialect, nullptr) << name;
    EXPECT_EQ(dialect->GroupStart(u"100% [a'b]", 2, 9).Line(), start);
    EXPECT_EQ(dialect->GroupEnd(u"100% [a'b]", 2, 9).Line(), end);
    EXPECT_EQ(dialect->Problem(problem, u"/w").Line(), error);
  }
  EXPECT_EQ(FindCiDialect("jenkins"), nullptr);
}

TEST(CiDialect, TellsTestsOneByOneWhereTheSystemReadsThemFromTheLog) {
  const TReportedSuite suite{.Name = u"S'",
                             .Seconds = {},
                             .Tests = {{u"a", u"1.250"},
                                       {u"b", u"0.007", true, false, u"no|", u"at B()"},
                                       {u"c", u"", false, true}}};
  std::string lines;
  for (const auto& command : FindCiDialect("teamcity")->Tests(suite))
    lines.append(command.Line().substr(std::size("##teamcity"))) += '\n';
  EXPECT_EQ(lines,
            "testSuiteStarted name='S|'']\ntestStarted name='a']\n"
            "testFinished name='a' duration='1250']\ntestStarted name='b']\n"
            "testFailed name='b' message='no||' details='at B()']\n"
            "testFinished name='b' duration='7']\ntestIgnored name='c']\ntestSuiteFinished name='S|'']\n");
}

TEST(CiDialect, CutsWhatTeamCityWouldRefuse) {
  const TFinding finding{.Rule = std::u16string(256, u'r'),
                         .Severity = TFindingSeverity::Error,
                         .Message = std::u16string(4'000, u'm')};
  EXPECT_THAT(FindCiDialect("teamcity")->Findings({&finding, 1}, u"").at(0).Line(),
              testing::HasSubstr("'" + std::string(255, 'r') + ": " + std::string(3'900, 'm') + "'"));
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
