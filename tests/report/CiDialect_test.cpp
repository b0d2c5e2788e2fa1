#include "program/report/CiDialect.h"

#include "foundation/text/Text.h"
#include "tests/support/Written.h"

#include <gmock/gmock.h>

namespace kx {
namespace {

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

TEST(CiDialect, TellsAsMuchOfAPlaceAsIsKnown) {
  const auto finding = [](TFindingPlace place, TFindingSeverity severity = TFindingSeverity::Warning) {
    return TFinding{.Rule = u"r",
                    .Severity = severity,
                    .Message = u"m",
                    .Place = std::move(place),
                    .Fingerprint = u"1-2"};
  };
  const std::vector<TFinding> findings{finding({u"/w/a.c", 3}), finding({u"a.c"}), finding({}),
                                       finding({}, TFindingSeverity::Error),
                                       finding({u"b.c", 1, 1}, TFindingSeverity::Error)};
  std::string told;
  for (const char* dialect : {"github", "azure"})
    for (const auto& one : findings)
      told += std::string(FindCiDialect(dialect)->Problem(one, u"/w").Line()) + "\n";
  for (const auto& command : FindCiDialect("teamcity")->Findings(findings, u"/w"))
    told += std::string(command.Line()) + "\n";
  EXPECT_EQ(told, R"(::warning file=a.c,line=3::m
::warning file=a.c::m
::warning::m
::error::m
::error file=b.c,line=1,col=1::m
##vso[task.logissue type=warning;sourcepath=a.c;linenumber=3;]m
##vso[task.logissue type=warning;sourcepath=a.c;]m
##vso[task.logissue type=warning;]m
##vso[task.logissue type=error;]m
##vso[task.logissue type=error;sourcepath=b.c;linenumber=1;columnnumber=1;]m
##teamcity[inspectionType id='r' name='r' category='kxhost' description='r']
##teamcity[inspection typeId='r' file='a.c' line='3' message='m' SEVERITY='WARNING']
##teamcity[inspection typeId='r' file='a.c' line='0' message='m' SEVERITY='WARNING']
##teamcity[buildProblem description='r: m' identity='kx_1_2']
##teamcity[inspection typeId='r' file='b.c' line='1' message='m' SEVERITY='ERROR']
)");
}

TEST(CiDialect, SumsUpARunOnAPage) {
  TRunReport report{.Result = TResultKind::Failed, .Counts = {2, 1}, .Root = u"/w"};
  EXPECT_EQ(CiSummary(report), R"(### kxhost: failed

2 errors, 1 warning

)");
  report.Findings = {
      {.Rule = u"a_b", .Message = u"<x> | `y`\n[z] * & w", .Place = {u"/w/a.c", 3}},
      {.Rule = u"e", .Severity = TFindingSeverity::Error, .Message = u"worse", .Place = {u"b.c"}},
      {.Rule = u"n", .Severity = TFindingSeverity::Note, .Message = u"note"}};
  report.MoreFindings = 2;
  EXPECT_EQ(CiSummary(report), R"(### kxhost: failed

2 errors, 1 warning

| | Place | |
|---|---|---|
| error e | b.c | worse |
| warning a\_b | a.c:3 | &lt;x&gt; \| \`y\` \[z] \* &amp; w |

and 2 more
)");
  report.Findings.assign(501, {.Rule = u"w", .Message = std::u16string(600, u'm')});
  report.MoreFindings = 0;
  const std::string page = CiSummary(report);
  EXPECT_EQ(tests::CountOf("| warning w |  | " + std::string(500, 'm') + " |\n", page), 500U);
  EXPECT_TRUE(page.ends_with("\nand 1 more\n"));
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
