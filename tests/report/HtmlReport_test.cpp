#include "program/report/HtmlReport.h"

#include "contract/UnitTests.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/report/JUnitSink.h"
#include "tests/support/Results.h"
#include "tests/support/Written.h"

#include <gmock/gmock.h>

#include <sstream>

namespace kx {
namespace {

using enum TResultKind;
using testing::HasSubstr;
using testing::Not;
using tests::ConfigurationResult;
using tests::CountOf;
using tests::ProjectResult;
using tests::Written;

class Reports : public testing::Test {
protected:
  void Send(decltype(TRunEvent::What) what) {
    const TRunEvent event{std::chrono::system_clock::time_point(), 0, std::move(what)};
    Html.On(event);
    JUnit.On(event);
  }
  void SendTests() {
    TKxUnitTestRun run(
        {{.Passed = true, .Executed = true, .TestName = u"Good"},
         {.Executed = true, .TestName = u"Bad", .ErrorMessage = u"1 < 2", .StackTrace = u"at <x>"},
         {.TestName = u"Later"}});
    run.SetName(u"All & more");
    Send(TMetricSent{
        {std::u16string(UnitTestCategory), std::u16string(TestResultsMetric), run.AsXmlString()}});
  }

  std::string Page(const TRunReport& report) {
    std::string page = Written([&](const platform::PutBytes& put) { return Html.Write(report, put); });
    for (const std::string tag : {"a", "b", "details", "div", "h1", "h2", "nav", "pre", "section", "span",
                                  "summary", "svg", "table", "ul"})
      EXPECT_EQ(CountOf("<" + tag + " ", page) + CountOf("<" + tag + ">", page),
                CountOf("</" + tag + ">", page))
          << tag;
    return page;
  }
  std::string Document() {
    return Written([this](const platform::PutBytes& put) { return JUnit.Write({}, put); });
  }

  THtmlReport Html{u"Night<ly>"};
  TJUnitSink JUnit;
};

using std::chrono::milliseconds;

// More than stays in memory, in groups that are known to be bad only when they end.
TEST_F(Reports, KeepLinesAndGroupsInTheirOrderHoweverManyTheyAre) {
  std::vector<std::string> wanted;
  for (int group = 0; group < 3; ++group) {
    Send(TGroupStarted{u"G" + text::FromInteger(group)});
    for (int line = 0; line < 30'000; ++line) {
      wanted.push_back(std::to_string(group) + "/" + std::to_string(line) + " of many lines");
      Send(TMessageSent{text::FromUtf8(wanted.back())});
    }
    Send(TMessageSent{u"last", group == 1 ? TStatusTag::stError : TStatusTag::stNormal});
    Send(TGroupEnded{u"", TStatusTag::stNormal});
  }
  const std::string page = Page({});
  std::vector<std::string> lines;
  std::istringstream stream(page);
  for (std::string line; std::getline(stream, line);)
    if (line.ends_with("of many lines")) lines.push_back(line.substr(line.rfind('>') + 1));
  EXPECT_EQ(lines, wanted);
  const auto at = [&page](std::string_view text) { return page.find(text); };
  EXPECT_GT(at("<details class=bad open><summary>"), at("0/29999 of"));
  EXPECT_LT(at("<span>G1"), at("1/0 of"));
  EXPECT_GT(at("<span>G2"), at("1/29999 of"));
}

// Where nothing can be put aside the report fails, and not the run.
TEST_F(Reports, SayAtTheEndWhatTheyCouldNotPutAside) {
  THtmlReport report(u"Run", u"/no/such/folder");
  for (int i = 0; i < 30'000; ++i)
    report.On({{}, 0, TMessageSent{u"a line that is put aside"}});
  const auto written =
      report.Write({}, [](std::string_view) -> platform::Status { return platform::Done{}; });
  ASSERT_FALSE(written);
  EXPECT_THAT(text::ToUtf8(written.Message()), HasSubstr("no"));
}

// One row: what the run came to, and the sentence that says it.
TEST_F(Reports, SayInTheirHeadlineWhatBecameOfTheRunAndWhy) {
  const auto finding = [](const char16_t* project, const char16_t* file, const char16_t* rule = u"C1") {
    return TFinding{.Rule = rule,
                    .Severity = TFindingSeverity::Error,
                    .Message = u"No <x>",
                    .Place = {file},
                    .Project = project};
  };
  const auto built = [](TResultKind result, TResultKind one, TResultKind other) {
    const std::vector projects{ProjectResult(u"A", one, 0, 0), ProjectResult(u"B", other, 0, 0)};
    return TActionResult{.Name = u"Build",
                         .Result = result,
                         .Configurations = {ConfigurationResult(u"Debug", result, {}, 0, 0, projects)}};
  };
  const std::vector<std::pair<TRunReport, const char*>> rows{
      {{.Result = Succeeded,
        .Tests = {3},
        .Elapsed = milliseconds(320000),
        .Actions = {built(Succeeded, Succeeded, Succeeded)}},
       "<h1>Built 2 projects and passed 3 tests in 5 min 20 s</h1><p class=lead>No warnings."},
      {{.Result = Succeeded,
        .Actions = {{.IsLoop = true, .Result = Succeeded}, {.Result = Succeeded}, {.Result = Succeeded}}},
       ">Succeeded: 2 actions in"},
      {{.Result = Failed,
        .Actions = {built(Failed, Succeeded, Failed)},
        .Findings = {finding(u"B", u"src/F<o>.cs"), finding(u"B", u"G.cs")}},
       "<h1>Failed: 2 errors in B, first in F&lt;o&gt;.cs</h1><p class=lead>1 of 2 projects was built."},
      {{.Result = Failed, .Findings = {finding(u"A", u"F.cs"), finding(u"B", u"")}},
       ">Failed: 2 errors in 2 projects, first in F.cs<"},
      {{.Result = Failed, .Findings = {finding(u"", u"")}}, ">Failed: No &lt;x&gt;<"},
      {{.Result = Failed, .Actions = {{.Name = u"Tell", .Result = Failed, .Reason = u"no-tests"}}},
       ">Failed: Tell (no-tests)<"},
      {{.Result = Failed,
        .Actions = {{.Name = u"Fine", .Result = Succeeded},
                    {.Name = u"Odd", .Result = Ignored},
                    {.Name = u"Loop", .IsLoop = true, .Result = Failed},
                    {.Name = u"Build",
                     .Nesting = 1,
                     .Result = Failed,
                     .Configurations = {ConfigurationResult(u"Debug", Succeeded, {}, 0, 0),
                                        ConfigurationResult(u"Ship", Failed, {}, 0, 0)}}}},
       ">Failed: Build, Ship<"},
      {{.Result = Failed, .NothingExecuted = true, .Findings = {finding(u"", u"")}},
       ">Nothing was done: No &lt;x&gt;<"},
      {{.Result = Failed, .Tests = {1, 1}}, ">1 of 2 tests failed<"},
      {{.Result = FinishedWithFailures,
        .Tests = {410, 2},
        .Actions = {built(Succeeded, Succeeded, Succeeded)},
        .Findings = {finding(u"", u"", u"test-failed")}},
       ">Built, but 2 of 412 tests failed<"},
      {{.Result = Stopped, .Elapsed = milliseconds(62000)}, ">Stopped by you after 1 min 02 s<"},
      {{.Result = WouldRun}, ">Dry run: nothing was changed<"},
      {{.Result = NothingToDo}, ">There was nothing to do<"}};
  for (const auto& [report, said] : rows)
    EXPECT_THAT(Page(report), HasSubstr(said));
  TRunReport wordy{.Result = Failed, .Findings = {finding(u"", u"")}};
  wordy.Findings[0].Message = std::u16string(140, u'm');
  EXPECT_THAT(Page(wordy), HasSubstr(">Failed: " + std::string(140, 'm') + "<"));
  wordy.Findings[0].Message += u'm';
  EXPECT_THAT(Page(wordy), HasSubstr(">Failed: " + std::string(139, 'm') + "\u2026<"));
}

// Two projects at once, then one that waited for the longer of them.
TEST_F(Reports, UnderlineTheLongestChain) {
  TActionResult build{.Name = u"Build", .Elapsed = milliseconds(10000)};
  EXPECT_THAT(Page({.Elapsed = build.Elapsed, .Actions = {build}}), Not(HasSubstr("<svg")));
  build.Configurations = {
      ConfigurationResult(u"D", Succeeded, {}, 0, 10000,
                          {ProjectResult(u"A", Succeeded, 0, 4000), ProjectResult(u"B", Succeeded, 0, 3000),
                           ProjectResult(u"C", Succeeded, 4000, 6000)})};
  const std::string page = Page({.Elapsed = build.Elapsed, .Actions = {build}});
  for (const char* part :
       {"A, D: 4.00 s from 0.00 s, succeeded, on the longest chain<", "B, D: 3.00 s from 0.00 s, succeeded<",
        "C, D: 6.00 s from 4.00 s, succeeded, on the longest chain<", "<line class=chain x1=40.00%"})
    EXPECT_THAT(page, HasSubstr(part));
}

TEST_F(Reports, CollectAllRunsOfTestsForJUnit) {
  EXPECT_THAT(Document(), HasSubstr("<testsuites tests=\"0\" failures=\"0\" errors=\"0\" skipped=\"0\">"));
  SendTests();
  SendTests();
  Send(TMetricSent{{std::u16string(UnitTestCategory), std::u16string(TestResultsMetric), u"<broken"}});
  const std::string document = Document();
  for (const char* part : {"<testsuites tests=\"6\" failures=\"2\" errors=\"0\" skipped=\"2\">",
                           "<failure message=\"1 &lt; 2\">1 &lt; 2\nat &lt;x&gt;</failure>",
                           "<testcase name=\"Good\" classname=\"All &amp; more (2)\""})
    EXPECT_THAT(document, HasSubstr(part));
  EXPECT_THAT(document, Not(HasSubstr("broken")));
}

} // namespace
} // namespace kx
