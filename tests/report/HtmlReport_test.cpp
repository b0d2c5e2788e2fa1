#include "program/report/HtmlReport.h"

#include "contract/UnitTests.h"
#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/report/JUnitSink.h"

#include <gmock/gmock.h>

#include <regex>
#include <sstream>

namespace kx {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string BytesOf(const platform::WriteContent& write) {
  std::string all;
  const auto written = write([&all](std::string_view bytes) -> platform::Status {
    all += bytes;
    return platform::Done{};
  });
  EXPECT_TRUE(written);
  return all;
}

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
    return BytesOf([&](const platform::PutBytes& put) { return Html.Write(report, put); });
  }
  std::string Document() {
    return BytesOf([this](const platform::PutBytes& put) { return JUnit.Write({}, put); });
  }

  THtmlReport Html{u"Night<ly>"};
  TJUnitSink JUnit;
};

TEST_F(Reports, FoldWhatWentWellAndLeaveOpenWhatDidNot) {
  Send(TActionStarted{.Name = u"Build", .Description = u"Build it"});
  Send(TGroupStarted{u"Solution <A>"});
  Send(TMessageSent{u"fine"});
  Send(TGroupEnded{u"", TStatusTag::stSuccess});
  Send(TGroupStarted{u"Solution B"});
  Send(TMessageSent{u"<script>\x1b[2J", TStatusTag::stError});
  Send(TGroupEnded{u"", std::nullopt});
  Send(TActionEnded{{.Result = TResultKind::Succeeded}});
  using std::chrono::milliseconds;
  const TActionResult whole{
      .Name = u"All", .Result = TResultKind::Succeeded, .Counts = {7, 3}, .Elapsed = milliseconds(1500)};
  TActionResult build = whole;
  build.Configurations = {{u"Debug", TResultKind::Succeeded, u"", {7, 3}, milliseconds(500)}};
  const std::string page = Page({.Result = TResultKind::Succeeded, .Actions = {whole, build}});
  for (const char* part :
       {"<title>Night&lt;ly&gt;: succeeded</title>",
        "<details class=\"success\"><summary><span class=\"title\">Solution &lt;A&gt;</span>",
        "<details class=\"plain bad\" open><summary><span class=\"title\">Solution B</span>",
        "<details class=\"success bad\" open><summary><span class=\"title\">Build it</span>",
        "<pre class=\"error\">&lt;script&gt;\u241b[2J\n</pre>",
        "All</td><td></td><td class=\"warning\">succeeded</td><td class=\"number\">7</td><td "
        "class=\"number\">3<",
        "<td class=\"number\">1.50 s<"})
    EXPECT_THAT(page, HasSubstr(part));
  EXPECT_THAT(page, Not(HasSubstr("(the rest)")));
}

// A run that ends in the middle, or that sends outside of every group, is a page all the same.
TEST_F(Reports, CloseTheirElementsWhateverComes) {
  for (int i = 0; i < 500; ++i)
    Send(TMessageSent{u"line"});
  Send(TGroupEnded{u"", std::nullopt});
  Send(TActionEnded{});
  const std::string page = Page({});
  const std::regex tags("<pre|</pre>|</details>");
  std::string found;
  for (std::sregex_iterator tag(page.begin(), page.end(), tags), end; tag != end; ++tag)
    found += tag->str();
  EXPECT_EQ(found, "<pre</pre><pre</pre><pre</pre>");
}

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
  EXPECT_GT(at("<details class=\"plain bad\" open><summary><span class=\"title\">G1"), at("0/29999 of"));
  EXPECT_LT(at("<span class=\"title\">G1"), at("1/0 of"));
  EXPECT_GT(at("<details class=\"plain\"><summary><span class=\"title\">G2"), at("1/29999 of"));
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

TEST_F(Reports, DrawEachFigureOfAMetricBesideItsAction) {
  for (const std::int64_t value : {5, 0}) {
    Send(TActionStarted{.Name = u"Build", .Pass = value == 5 ? u"Lib" : u"App"});
    Send(TMetricSent{{u"Compiler", u"Errors", value}, u"Debug"});
    Send(TActionEnded{});
  }
  const std::string page = Page({});
  EXPECT_THAT(page, HasSubstr("<figcaption>Compiler: Errors</figcaption>"));
  EXPECT_THAT(page,
              HasSubstr("Build (Lib), Debug</th><td><span class=\"bar\" style=\"width:100%\"></span></td>"
                        "<td class=\"number\">5</td>"));
  EXPECT_THAT(page, HasSubstr("Build (App), Debug</th><td><span class=\"bar\" style=\"width:0%\">"));
}

TEST_F(Reports, ShowUnitTestsFailedOnesFirstUnderANameOfTheirOwn) {
  SendTests();
  Send(TActionStarted{.Name = u"Tests", .Pass = u"A<1>"});
  SendTests();
  const std::string page = Page({});
  for (const char* part :
       {"<h3>All &amp; more</h3>\n<p>1 passed, 1 failed, 1 not run, 0.000 s</p>",
        "<pre class=\"error\">1 &lt; 2\n</pre><pre>at &lt;x&gt;</pre>",
        "<li class=\"success\"><span class=\"title\">Good<",
        "<li class=\"warning\"><span class=\"title\">Later<", "<h3>All &amp; more (A&lt;1&gt;)</h3>"})
    EXPECT_THAT(page, HasSubstr(part));
  EXPECT_LT(page.find(">Bad<"), page.find(">Good<"));
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
