#include "program/report/HtmlLog.h"
#include "program/report/HtmlPage.h"

#include "foundation/text/Encoding.h"
#include "tests/support/FailingMemory.h"
#include "tests/support/Failure.h"
#include "tests/support/Findings.h"
#include "tests/support/Results.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Written.h"

#include <gmock/gmock.h>

#include <functional>

namespace kx {
namespace {

using std::chrono::milliseconds;
using enum TResultKind;
using testing::HasSubstr;
using tests::ConfigurationResult;
using tests::ProjectResult;

std::string Written(const std::function<void(THtmlWriter&)>& write) {
  return tests::Written([&](const platform::PutBytes& put) {
    THtmlWriter out(put);
    write(out);
    return out.Finish();
  });
}

// What a section shows: its text, with "|" for tags, "[" for what folds, "{...}" for what one is called and
// "(...)" for a picture without a name, "^" before what is drawn around its place; drawn shapes as they are,
// but for what all of a kind have in common.
std::string Shown(const TRunReport& report, void (*write)(const THtmlPage& page, THtmlWriter& out),
                  std::span<const TFigure> figures = {}) {
  const TSuiteSpool suites(u"");
  const THtmlPage page{u"Night", report, report.Past.get(), suites, figures, {}};
  const std::string markup = Written([&](THtmlWriter& out) { write(page, out); });
  std::string shown;
  for (std::size_t at = 0; at < markup.size();) {
    const std::size_t end = markup[at] == '<' ? markup.find('>', at) + 1 : at + 1;
    const std::string_view piece = std::string_view(markup).substr(at, end - at);
    at = end;
    if (piece.starts_with("<rect") || piece.starts_with("<line"))
      shown += std::string(piece.substr(0, std::min(piece.find(" height="), piece.find(" x2=")))) + ">";
    else if (piece.starts_with("<path d") || piece.starts_with("<path class"))
      shown += piece.find("class=grid") == piece.npos && piece.find("class=here") == piece.npos ? piece : "";
    else if (piece.size() == 1)
      shown += piece == "\n" ? "" : piece;
    else if (const std::size_t label = piece.find("aria-label=\""); label != piece.npos)
      shown += "{" + std::string(piece.substr(label + 12, piece.find('"', label + 12) - label - 12)) + "}";
    else if (piece.starts_with("<i class=\"i "))
      shown += "(" + std::string(piece.substr(12, piece.find('"', 12) - 12)) + ")";
    else if (piece.find("text-anchor=middle") != piece.npos)
      shown += "|^";
    else if (piece.starts_with("<details"))
      shown += piece.find(" open") == piece.npos ? "[" : "[open ";
    else if (!shown.ends_with('|'))
      shown += '|';
  }
  return shown;
}

TFinding Found(TFindingSeverity severity, const char16_t* message, TFindingPlace place = {}) {
  return {.Rule = u"R", .Severity = severity, .Message = message, .Place = std::move(place)};
}

// A run that failed, and the three before it.
class HtmlPage : public testing::Test {
protected:
  HtmlPage() {
    using enum TFindingSeverity;
    TFinding error = tests::FullFinding({Folder.Write("d/b.c", "1\n2\n3\n4\n5\n6\n7\n8\n9\n"), 5});
    error.Rule = u"R";
    error.Message = u"bad";
    error.Code = u"C1";
    error.Project = u"src/Core/Core.csproj";
    error.Occurrences = 2;
    error.Steps = {{{u"c.c", 2}, u"see"}, {{u"d.c"}, u"then"}};
    TFinding known = Found(Warning, u"old", {u"a.c", 7});
    known.Fingerprint = u"k";
    known.Said = 3;
    TFinding log = Found(Note, u"said");
    log.Said = 4;
    TFinding test = Found(Error, u"failed");
    test.Rule = u"test-failed";
    Report.Findings = {known, log, error, Found(Warning, u"fresh", {u"z.c", 1}), test};
    Report.Tests = {5, 1, 2};
    const std::vector debug{ProjectResult(u"A", Succeeded, 0, 2000, {0, 2}),
                            ProjectResult(u"B", Failed, 2000, 3000, {1, 0}),
                            ProjectResult(u"C", Stopped, 0, 0)};
    const std::vector release{ProjectResult(u"A", Succeeded, 5000, 3000),
                              ProjectResult(u"A", Failed, 8000, 500, {1, 1})};
    TActionResult build{
        .Name = u"Build", .Pass = u"p", .Nesting = 1, .Result = Failed, .Reason = u"no-tests"};
    build.Counts = {1, 2};
    build.Elapsed = milliseconds(8000);
    build.Configurations = {ConfigurationResult(u"Debug", Failed, {1, 2}, 0, 5000, debug),
                            ConfigurationResult(u"Release", Succeeded, {}, 5000, 3000, release)};
    Report.Actions = {
        {.Name = u"All", .IsLoop = true, .Result = FinishedWithFailures, .Elapsed = milliseconds(9000)},
        build,
        {.Name = u"Tell", .Result = Succeeded, .Began = milliseconds(9000), .Elapsed = milliseconds(1000)}};
    Report.Past = std::make_shared<TPast>(
        TPast{.Runs = {{Day(1), Succeeded, milliseconds(4000), {0, 20}, {8}, u"0123456789abc"},
                       {Day(2), Failed, milliseconds(900), {3, 7}, {}, u""},
                       {Day(3), Succeeded, milliseconds(6000), {0, 1}, {4, 4}, u"c3"}},
              .KnownSince = {{u"k", 1}},
              .Fixed = {Found(Error, u"gone", {u"x/e.c"}), Found(Warning, u"gone, too"), test},
              .Tests = {}});
  }

  static std::chrono::system_clock::time_point Day(int day) {
    return std::chrono::sys_days(std::chrono::year(2026) / 11 / day);
  }

  tests::TTemporaryFolder Folder;
  TRunReport Report{.Result = Failed,
                    .Counts = {1, 2},
                    .Elapsed = milliseconds(10000),
                    .MoreFindings = 9,
                    .Root = Folder.Path(),
                    .Began = Day(4)};
};

TEST_F(HtmlPage, SaysFirstWhatBecameOfTheRun) {
  EXPECT_EQ(Shown(Report, WriteHeadline),
            "|{failed}|Failed: 1 error in Core, in b.c|1 of 4 projects was built, 1 was not begun. 5 of 8 "
            "tests passed. 2 warnings, 1 of them new.|Failed first|C1| bad|d/b.c, line 5, Core, Debug, "
            "Build|Problem|(error)|Errors|1|1 new|, 1 fixed|(warning)|Warnings|2|1 new|, 1 known, 1 "
            "fixed|(error)|Tests|1 |of 8 failed|2 not run|(error)|Projects|1 |of 4 built|2 failed, 1 not "
            "built|(clock)|Time|10.00 s|usually 6.00 s|");
  Report.Past = nullptr;
  Report.Result = Succeeded;
  Report.Tests.Failed = 0;
  Report.Findings.erase(Report.Findings.begin() + 2);
  EXPECT_EQ(Shown(Report, WriteHeadline),
            "|{succeeded}|Built 1 project and passed 5 tests in 10.00 s|2 "
            "warnings.|(done)|Errors|0|(warning)|Warnings|2|(done)|Tests|5 |of 7 passed|2 not "
            "run|(error)|Projects|1 |of 4 built|2 failed, 1 not built|(clock)|Time|10.00 s|No earlier run of "
            "this project is known: nothing is marked as new, and there are no trends.|");
}

TEST_F(HtmlPage, ShowsProblemsWithTheirHistory) {
  EXPECT_EQ(Shown(Report, WriteProblems),
            "|What several projects or configurations say is counted once. Compared with the run of 3 Nov "
            "2026, 00:00:00 UTC.|{Search problems}|All|Errors|Warnings|{Against the run "
            "before}|All|New|Known|Fixed|Group by |File|Rule|Project|[open |b.c |d| |\xC2\xB7 Core|1 "
            "new|{errors}|1|line 5|R|[open |bad|2|2|3|3|4|4|5|5|6|6|7|7|8|8|c.c:2 see|d.c then|mend "
            "it|Debug, Build, 2 times|new|[|In no file|1 new|{notes}|1|log|R|[|said|new|[|z.c|1 "
            "new|{warnings}|1|line 1|R|[|fresh|new|[|a.c|{warnings}|1|line 7|R|[|old|since 2 Nov 2026, 2 "
            "runs ago|[|Fixed since the run before|{fixed}|2|e.c|R|gone|R|gone, too|No problem matches. "
            "|Clear|9 more were not kept: there were too many.|");
  Report.Past = nullptr;
  Report.Findings.resize(1);
  EXPECT_EQ(Shown(Report, WriteProblems),
            "|What several projects or configurations say is counted once.|{Search "
            "problems}|All|Errors|Warnings|Group by |File|Rule|Project|[|a.c|{warnings}|1|line 7|R|[|old|No "
            "problem matches. |Clear|9 more were not kept: there were too many.|");
  Report.Findings.front().Place = {Folder.Write("d/c.c", "1\n2\n3\n4\n5\n"), 1};
  EXPECT_THAT(Shown(Report, WriteProblems), HasSubstr("|line 1|R|[|old|1|1|2|2|No problem"));
  Report.Findings.front().Severity = TFindingSeverity::Error;
  EXPECT_THAT(Shown(Report, WriteProblems), HasSubstr("|1|1|2|2|3|3|4|4|No problem"));
  EXPECT_THAT(Shown(Report, WriteHeadline), HasSubstr("|old|d/c.c, line 1|Problem"));
  Report.Findings.clear();
  EXPECT_EQ(Shown(Report, WriteProblems), "|No tool and no action said that anything is wrong.|");
}

TEST_F(HtmlPage, DrawsBarsOverTime) {
  EXPECT_EQ(Shown(Report, WriteTimeline),
            "|Actions|In loops|A|B|{Timeline of the run; the table of results has the times}<line "
            "x1=0.00%>|0:00|<line x1=20.00%>|^0:02|<line x1=40.00%>|^0:04|<line x1=60.00%>|^0:06|<line "
            "x1=80.00%>|^0:08|<line x1=100.00%>|^0:10|All: 9.00 s from 0.00 s, finished with failures|<rect "
            "class=\"bar outer failed\" x=0.00% width=90.00% y=1.75rem>|× All|Build (p): 8.00 s from 0.00 s, "
            "failed|<rect class=\"bar outer failed\" x=0.00% width=80.00% y=3.38rem>|× Build (p)|A, Debug: "
            "2.00 s from 0.00 s, succeeded|<rect class=\"bar\" x=0.00% width=20.00% y=5.00rem>|2.00 s|B, "
            "Debug: 3.00 s from 2.00 s, failed|<rect class=\"bar failed\" x=20.00% width=30.00% y=6.62rem>|× "
            "3.00 s|A, Release: 3.00 s from 5.00 s, succeeded|<rect class=\"bar\" x=50.00% width=30.00% "
            "y=5.00rem>|3.00 s|A, Release: 0.50 s from 8.00 s, failed|<rect class=\"bar failed\" x=80.00% "
            "width=5.00% y=5.00rem>|Tell: 1.00 s from 9.00 s, succeeded|<rect class=\"bar\" x=90.00% "
            "width=10.00% y=1.75rem>|Tell|ended well|failed ×|");
}

TEST_F(HtmlPage, ListsResultsAndFigures) {
  const TFigure figure{u"Size: Lines", u"Build", u"Debug", 1234};
  EXPECT_EQ(Shown(Report, WriteResults, {&figure, 1}),
            "|2 succeeded, 2 failed; 1 error, 2 warnings; 8 tests, 1 failed, 2 not "
            "run|Action|Configuration|Result|Errors|Warnings|Time|All|(error)|finished with failures|9.00 "
            "s|Build (p)|Debug|(error)|failed|(error)|1|(warning)|2|5.00 s|Build "
            "(p)|Release|(done)|succeeded|3.00 s|Build (p)|(the rest)|(error)|failed (no-tests)|0.00 "
            "s|Tell|(done)|succeeded|1.00 s|Projects|Project|Debug|Release|A|{succeeded}|2.00 s "
            "{warnings}|2|{failed}|3.50 s {errors}|1 {warnings}|1|B|{failed}|3.00 s "
            "{errors}|1|C|{stopped}|stopped|Metrics|Metric|Action|Configuration|Value|Size: "
            "Lines|Build|Debug|1,234|");
}

TEST_F(HtmlPage, ChartsTheLastRuns) {
  EXPECT_EQ(
      Shown(Report, WriteTrends),
      "|The last 4 runs, this one at the end.|{Errors of the last 4 runs, 1 in this one; Left and Right read "
      "the others}|Errors| |1|4|2|0|<path class=\"error\" d=\"M9.15 100h.7V25.00h-.7z\"/><path class=\"error "
      "this\" d=\"M11.15 100h.7V75.00h-.7z\"/>|this run|{Warnings of the last 4 runs, 2 in this one; Left "
      "and Right read the others}|Warnings| |2|20|10|0|<path class=\"plain\" d=\"M8.15 "
      "100h.7V0.00h-.7z\"/><path class=\"plain\" d=\"M9.15 100h.7V65.00h-.7z\"/><path class=\"plain\" "
      "d=\"M10.15 100h.7V95.00h-.7z\"/><path class=\"plain this\" d=\"M11.15 100h.7V90.00h-.7z\"/>|this "
      "run|{Failed tests of the last 4 runs, 1 of 8 in this one; Left and Right read the others}|Failed "
      "tests| |1 of 8|4|2|0|<path class=\"error\" d=\"M10.15 100h.7V0.00h-.7z\"/><path class=\"error this\" "
      "d=\"M11.15 100h.7V75.00h-.7z\"/>|this run|{Time of the last 4 runs, 10.00 s in this one; Left and "
      "Right read the others}|Time| |10.00 s|10.00 s|5.00 s|0.00 s|<path class=line d=\"M8.50 60.00L9.50 "
      "91.00L10.50 40.00L11.50 0.00\"/><path class=point d=\"M8.50 60.00h0M10.50 40.00h0\"/><path "
      "class=\"point failed\" d=\"M9.50 91.00h0M11.50 0.00h0\"/>|this run|[|The figures as a "
      "table|Run|Result|Errors|Warnings|Failed tests|Time|Commit|1 Nov 2026, 00:00:00 UTC|succeeded|0|20|0 "
      "of 8|4.00 s|0123456789|2 Nov 2026, 00:00:00 UTC|failed|3|7|0 of 0|0.90 s|3 Nov 2026, 00:00:00 "
      "UTC|succeeded|0|1|4 of 8|6.00 s|c3|4 Nov 2026, 00:00:00 UTC|failed|1|2|1 of 8|10.00 s|");
}

// What ends badly stands open; the lines of one kind share an element, and each second that passes is noted.
TEST(HtmlLog, FoldsGroupsAndSharesElements) {
  THtmlLog log(u"");
  const auto at = [](int seconds) {
    return std::chrono::sys_days(std::chrono::year(2026) / 11 / 4) + std::chrono::seconds(seconds);
  };
  log.Add({u"a<"}, at(0));
  log.Add({u"b"}, at(0));
  log.Add({u"c"}, at(2));
  log.OpenGroup(u"Good");
  log.Add({u"d", TStatusTag::stWarning}, at(3));
  log.CloseGroup(TStatusTag::stSuccess, "succeeded", milliseconds(1500));
  log.OpenGroup(u"Outer");
  log.OpenGroup(u"Inner");
  log.Add({u"e"}, at(3));
  log.CloseGroup(TStatusTag::stError, "failed", milliseconds(0));
  log.Add({u"f"}, at(4));
  log.CloseGroup(TStatusTag::stNormal, "done", milliseconds(0));
  log.CloseGroup(TStatusTag::stError, "failed", milliseconds(0)); // of a group that nobody opened
  for (int i = 0; i < 201; ++i)
    log.Add({u"g"}, at(5));
  log.End();
  EXPECT_EQ(log.Lines(), 207);
  const std::string markup = Written([&](THtmlWriter& out) { log.Write(out); });
  const std::size_t many = markup.find("g\n");
  EXPECT_EQ(markup.substr(0, many), R"x(<pre data-n=1 data-t=00:00:00 data-s="2:2" style=--n:3>
a&lt;
b
c
</pre>
<details class=bad><summary><i class="i done" role=img aria-label="succeeded"></i><span>Good</span><span class=time>1.50 s</span></summary>
<pre class=warning data-n=4 data-t=00:00:03>
<b id=L4>d</b>
</pre>
</details>
<details class=bad open><summary><i class="i plain" role=img aria-label="done"></i><span>Outer</span><span class=time>0.00 s</span></summary>
<details class=bad open><summary><i class="i error" role=img aria-label="failed"></i><span>Inner</span><span class=time>0.00 s</span></summary>
<pre data-n=5 data-t=00:00:03>
e
</pre>
</details>
<pre data-n=6 data-t=00:00:04>
f
</pre>
</details>
<pre data-n=7 data-t=00:00:05 style=--n:200>
)x");
  EXPECT_EQ(markup.substr(markup.find("</pre>", many)),
            "</pre>\n<pre data-n=207 data-t=00:00:05>\ng\n</pre>\n");
}

TEST(HtmlLog, AGroupThatThereIsNoMemoryForIsNone) {
  bool hasFailed = true;
  for (long allocation = 1; hasFailed; ++allocation) {
    THtmlLog log(u"");
    {
      const tests::TFailingMemory failing(allocation);
      const std::string failure = tests::FailureOf([&] { log.OpenGroup(u"a title that needs memory"); });
      hasFailed = !failure.empty();
    }
    log.CloseGroup(TStatusTag::stNormal, "done", milliseconds(0));
    const std::string markup = Written([&](THtmlWriter& out) { log.Write(out); });
    EXPECT_EQ(tests::CountOf("<summary>", markup), hasFailed ? 0U : 1U) << allocation;
    EXPECT_EQ(tests::CountOf("</details>", markup), hasFailed ? 0U : 1U) << allocation;
    EXPECT_TRUE(hasFailed || allocation > 3) << "some have failed";
  }
}

TEST(HtmlLog, MarksOnlySoManyLines) {
  const tests::TTemporaryFolder folder;
  THtmlLog log(folder.Path());
  for (int i = 0; i < 10'001; ++i)
    log.Add({u"w", i % 2 == 0 ? TStatusTag::stWarning : TStatusTag::stError}, {});
  log.End();
  const std::string markup = Written([&](THtmlWriter& out) { log.Write(out); });
  EXPECT_NE(markup.find("<b id=L10000>"), markup.npos);
  EXPECT_EQ(markup.find("<b id=L10001>"), markup.npos);
}

} // namespace
} // namespace kx
