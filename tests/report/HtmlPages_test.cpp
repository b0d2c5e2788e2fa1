#include "contract/UnitTests.h"
#include "program/report/HtmlReport.h"
#include "tests/support/Results.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Written.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

using enum TResultKind;
using std::chrono::milliseconds;
using std::chrono::system_clock;
using tests::ConfigurationResult;
using tests::ProjectResult;

class HtmlPages : public testing::Test {
protected:
  void Send(int second, decltype(TRunEvent::What) what) {
    html_.On({system_clock::time_point(std::chrono::seconds(1'790'000'000 + second)), 0, std::move(what)});
  }
  // From the contents to the script.
  std::string Page(const TRunReport& report) {
    const std::string page =
        tests::Written([&](const platform::PutBytes& put) { return html_.Write(report, put); });
    const auto begin = page.find("<div class=page>");
    return folder_.Plain(page.substr(begin, page.find("<script>", begin) - begin));
  }
  // What stands in front of them for the section "".
  static std::string Section(const std::string& page, const std::string& id) {
    const std::string start = "<section id=";
    const auto begin = id.empty() ? 0 : page.find(start + id + ">");
    return begin == page.npos
               ? "none"
               : page.substr(begin, page.find(id.empty() ? start : "</section>", begin) - begin);
  }
  static TPastRun Past(int day, TResultKind result, TProblemCounts counts, TTestCounts tests, int seconds) {
    return {.Began = system_clock::time_point(std::chrono::hours(24 * (20'000 + day))),
            .Result = result,
            .Elapsed = milliseconds(1000 * seconds),
            .Counts = counts,
            .Tests = tests,
            .Commit = u"c" + text::FromInteger(day)};
  }

  tests::TTemporaryFolder folder_;
  THtmlReport html_{u"Night"};
};

TEST_F(HtmlPages, ShowAFailedRunWhole) {
  Send(0, TActionStarted{.Name = u"Build", .Description = u"Build it", .Pass = u"x"});
  Send(0, TMessageSent{u"first"});
  Send(0, TMessageSent{u"second"});
  Send(3, TMessageSent{u"later"});
  Send(3, TMessageSent{u"careful", TStatusTag::stWarning});
  Send(4, TGroupStarted{u"Inner"});
  Send(64, TMessageSent{u"bad", TStatusTag::stError});
  Send(64, TGroupEnded{u"Inner", TStatusTag::stError, milliseconds(60'000)});
  Send(64, TMetricSent{{u"Coverage", u"Lines", std::int64_t{12'345}}, u"Debug"});
  Send(64, TActionEnded{{.Name = u"Build", .Result = Failed, .Elapsed = milliseconds(64'000)}});
  Send(65, TActionStarted{.Name = u"Tests", .Description = u"Tests"});
  TKxUnitTestRun run(
      {{.Passed = true, .Executed = true, .TestName = u"Good", .Duration = 1500},
       {.Passed = true, .Executed = true, .TestName = u"Flaky", .Duration = 20},
       {.Executed = true, .TestName = u"Bad", .ErrorMessage = u"1 < 2", .StackTrace = u"at A()"},
       {.TestName = u"Later"}});
  run.SetName(u"All");
  Send(65,
       TMetricSent{{std::u16string(UnitTestCategory), std::u16string(TestResultsMetric), run.AsXmlString()}});
  Send(65, TMessageSent{u"Processing Assembly info in File : /x/a.cs"});
  Send(65, TMessageSent{u"AssemblyVersion : 1.2.3.4"});
  Send(66, TActionEnded{{.Name = u"Tests", .Result = Succeeded, .Elapsed = milliseconds(1000)}});

  const auto built = [](const char16_t* name, TResultKind result, TProblemCounts counts, int began,
                        int elapsed) {
    return ConfigurationResult(name, result, counts, began, elapsed,
                               {ProjectResult(u"Lib", Succeeded, began, elapsed / 2),
                                ProjectResult(u"App", result, began + elapsed / 2, elapsed / 2, counts)});
  };
  TRunReport report{
      .Result = Failed,
      .Counts = {2, 3},
      .Tests = {2, 1, 1},
      .Elapsed = milliseconds(66'000),
      .Actions = {{.Name = u"Loop",
                   .IsLoop = true,
                   .Result = Failed,
                   .Counts = {2, 3},
                   .Elapsed = milliseconds(64'000)},
                  {.Name = u"Build",
                   .Pass = u"x",
                   .Nesting = 1,
                   .Result = Failed,
                   .Counts = {2, 3},
                   .Elapsed = milliseconds(64'000),
                   .Configurations = {built(u"Debug", Succeeded, {0, 2}, 1000, 30'000),
                                      built(u"Release", Failed, {2, 0}, 31'000, 30'000)}},
                  {.Name = u"Tests",
                   .Result = Succeeded,
                   .Tests = {2, 1, 1},
                   .Began = milliseconds(65'000),
                   .Elapsed = milliseconds(1000)},
                  {.Name = u"Never", .Result = Skipped, .Reason = u"condition"}},
      .Findings =
          {{.Rule = u"CS1",
            .Severity = TFindingSeverity::Warning,
            .Message = u"unused",
            .Place = {folder_.Path("src/a.cs"), 3},
            .Code = u"CS1",
            .Project = u"Lib",
            .Configuration = u"Debug",
            .Action = u"Build (x)",
            .Occurrences = 2,
            .Fingerprint = u"f1",
            .Advice = u"Use it.",
            .Said = 4},
           {.Rule = u"CS2",
            .Severity = TFindingSeverity::Error,
            .Message = u"bad",
            .Place = {folder_.Write("src/b.cs", "one\ntwo\nthree\nfour\nfive\n"), 3, 2},
            .Project = u"App",
            .Fingerprint = u"f2",
            .Steps = {{{u"c.cs", 4}, u"from here"}, {{u"d.cs"}, u"to there"}},
            .Said = 5},
           {.Rule = u"no-place", .Severity = TFindingSeverity::Error, .Message = u"whole"},
           {.Rule = u"test-failed",
            .Severity = TFindingSeverity::Error,
            .Message = u"Bad: 1 < 2",
            .Fingerprint = u"f3"},
           {.Rule = u"see", .Severity = TFindingSeverity::Note, .Message = u"noted", .Place = {u"e.cs", 9}}},
      .MoreFindings = 4,
      .Root = folder_.Path(),
      .File = folder_.Path("p.kxproj"),
      .Began = system_clock::time_point(std::chrono::seconds(1'790'000'000)),
      .Surroundings = {.Machine = u"M",
                       .System = u"S",
                       .Commit = u"abc",
                       .Branch = u"main",
                       .CommandLine = u"kxhost run p",
                       .Tools = {u"xbuild 14.0", u"mono 6"}}};
  report.Past = std::make_shared<TPast>(
      TPast{.Runs = {Past(1, Succeeded, {0, 1}, {3, 0, 1}, 50), Past(2, Failed, {3, 1}, {2, 1, 1}, 58),
                     Past(3, Succeeded, {0, 3}, {4, 0, 0}, 62)},
            .KnownSince = {{u"f1", 1}},
            .Fixed = {{.Rule = u"CS9", .Message = u"was bad", .Place = {u"old.cs", 1}}},
            .Tests = {{u"All/Good", {TPastTest::Passed, TPastTest::Passed, TPastTest::Passed}},
                      {u"All/Flaky", {TPastTest::Passed, TPastTest::Failed, TPastTest::Passed}},
                      {u"All/Bad", {TPastTest::NotRun, TPastTest::Passed, TPastTest::Passed}},
                      {u"All/Later", {TPastTest::Absent, TPastTest::Passed, TPastTest::NotRun}}}});
  const std::string page = Page(report);
  EXPECT_EQ(Section(page, {}), R"(<div class=page>
<nav class=contents aria-label=Contents tabindex=-1><a href=#problems>Problems <span>4</span></a><a href=#tests>Tests <span>1</span></a><a href=#timeline>Timeline</a><a href=#results>Results <span>2</span></a><a href=#trends>Trends</a><a href=#versions>Versions <span>1</span></a><a href=#log>Log <span>7</span></a><a href=#facts>Facts</a></nav>
<main>
<div class=head><div class=result><i class="i error" role=img aria-label="failed"></i><div><h1>Failed: 2 errors in App, first in b.cs</h1><p class=lead>3 of 4 projects were built. 2 of 4 tests passed. 1 warning.</p></div></div>
<div class=first><h2>Failed first</h2><p class=message>bad</p><p class=where>src/b.cs, line 3, App</p><p class=links><a href=#first>Problem</a> <a href=#L5>Log line 5</a></p></div>
<dl class=figures><div><dt><i class="i error"></i>Errors</dt><dd class=value>2</dd><dd><b class=new>2 new</b></div><div><dt><i class="i warning"></i>Warnings</dt><dd class=value>1</dd><dd>1 known, 1 fixed</div><div><dt><i class="i error"></i>Tests</dt><dd class=value>1 <small>of 4 failed</small></dd><dd>1 not run</dd></div><div><dt><i class="i error"></i>Projects</dt><dd class=value>3 <small>of 4 built</small></dd><dd>1 failed, 0 not built</dd></div><div><dt><i class="i clock"></i>Time</dt><dd class=value>1 min 06 s</dd><dd>usually 1 min 02 s</dd></div></dl>
</div>
)");
  EXPECT_EQ(Section(page, "problems"), R"(<section id=problems><h2>Problems</h2>
<p>What several projects or configurations say is counted once. Compared with the run of 7 Oct 2024, 00:00:00 UTC.</p>
<div class=tools hidden><input type=search id=problem-find placeholder="Search text, file or code" aria-label="Search problems"><div class=choice role=group aria-label=Severity><button data-severity="" aria-pressed=true>All</button><button data-severity="error" aria-pressed=false>Errors</button><button data-severity="warning" aria-pressed=false>Warnings</button></div><div class=choice role=group aria-label="Against the run before"><button data-novelty="" aria-pressed=true>All</button><button data-novelty="new" aria-pressed=false>New</button><button data-novelty="known" aria-pressed=false>Known</button><button data-novelty="fixed" aria-pressed=false>Fixed</button></div><label>Group by <select id=problem-group><option value=file>File<option value=rule>Rule<option value=project>Project</select></label><output id=problem-count></output></div>
<div id=groups>
<details class=group open data-f="src/b.cs" data-p="App"><summary><h3>b.cs <span>src</span> <span>· App</span></h3><span class=counts><span class=new>1 new</span><span><i class="i error" role=img aria-label="errors"></i>1</span></span></summary>
<div class="f error new" id=first><a href=#L5>line 3</a><code>CS2</code><details open><summary>bad</summary><pre class=src><u>1</u>one
<u>2</u>two
<mark><u>3</u>three</mark>
<u>4</u>four
<u>5</u>five
</pre><ol><li>c.cs:4 from here<li>d.cs to there</ol><p class=origin></details><b>new</b></div>
</details>
<details class=group open data-f="" data-p=""><summary><h3>In no file</h3><span class=counts><span class=new>1 new</span><span><i class="i error" role=img aria-label="errors"></i>1</span></span></summary>
<div class="f error new"><span></span><code>no-place</code><details><summary>whole</summary><p class=origin></details><b>new</b></div>
</details>
<details class=group data-f="e.cs" data-p=""><summary><h3>e.cs</h3><span class=counts><span class=new>1 new</span><span><i class="i note" role=img aria-label="notes"></i>1</span></span></summary>
<div class="f note new"><span>line 9</span><code>see</code><details><summary>noted</summary><p class=origin></details><b>new</b></div>
</details>
<details class=group data-f="src/a.cs" data-p="Lib"><summary><h3>a.cs <span>src</span> <span>· Lib</span></h3><span class=counts><span><i class="i warning" role=img aria-label="warnings"></i>1</span></span></summary>
<div class="f warning known"><a href=#L4>line 3</a><code>CS1</code><details><summary>unused</summary><p>Use it.<p class=origin>Debug, Build (x), 2 times, since 6 Oct 2024, 2 runs ago</details></div>
</details>
<details class="group fixed"><summary><h3>Fixed since the run before</h3><span class=counts><span><i class="i done" role=img aria-label="fixed"></i>1</span></span></summary>
<div class="f warning fixed"><span>old.cs</span><code>CS9</code><span>was bad</span></div>
</details>
</div>
<p class=none id=no-problem hidden>No problem matches. <button id=clear>Clear</button></p>
<p class=remark>4 more were not kept: there were too many.</p>
)");
  EXPECT_EQ(Section(page, "tests"), R"(<section id=tests><h2>Tests</h2>
<p>2 passed, 1 failed, 1 not run. A strip shows the last runs, this one at its end: a tall bar is a failure, a dot was not run.</p>
<div class="test row"><i class="i flaky" role=img aria-label="flaky"></i><h3>Flaky <b class=flaky>flaky: failed in 1 of 4 runs</b></h3><svg class=strip viewBox="0 0 24 16" role=img aria-label="Failed in 1 of the last 4 runs"><path class=passed d="M2 11v5M14 11v5M20 11v5"/><path class=failed d="M8 0v16"/></svg><span class=time>0.02 s</span></div>
<details class=test open><summary><i class="i error" role=img aria-label="failed"></i><h3>Bad <b class=new>new</b></h3><svg class=strip viewBox="0 0 24 16" role=img aria-label="Failed in 1 of the last 4 runs"><path class=passed d="M8 11v5M14 11v5"/><path class=failed d="M20 0v16"/><path class=skipped d="M2 14v2"/></svg><span class=time>0.00 s</span></summary><pre class=error>1 &lt; 2
</pre><pre class=stack tabindex=0 role=region aria-label="Stack trace of Bad">at A()</pre></details>
<div class=two><div class=wide><h3>Slowest</h3><table><thead><tr><th>Test<th class=number>Time</thead><tbody>
<tr><td>Good<td class=number>1.50 s
</tbody></table></div>
<div class=wide><h3>Suites</h3><table><thead><tr><th>Suite<th class=number>Passed<th class=number>Failed<th class=number>Not run<th class=number>Time</thead><tbody>
<tr><td>All<td class=number>2<td class=number>1<td class=number>1<td class=number>1.52 s
</tbody></table></div>
</div>
<div class=tools hidden><input type=search id=test-find placeholder="Search all tests" aria-label="Search all tests"><output id=test-count></output></div>
<div id=suites>
<details class=suite><summary><span>All of All</span><span class=time>4 tests</span></summary><ol>
<li>Good<span>1.50 s</span>
<li>Flaky<svg class=strip viewBox="0 0 24 16" role=img aria-label="Failed in 1 of the last 4 runs"><path class=passed d="M2 11v5M14 11v5M20 11v5"/><path class=failed d="M8 0v16"/></svg><span>0.02 s</span>
<li class=error>Bad<span>0.00 s</span>
<li class=skipped>Later<span>0.00 s</span>
</ol></details>
</div>
)");
  EXPECT_EQ(Section(page, "timeline"), R"(<section id=timeline><h2>Timeline</h2>
<div class=timeline><ol><li title="Actions">Actions<li title="In loops">In loops<li title="Lib">Lib<li title="App">App</ol>
<svg height=8.00rem role=img aria-label="Timeline of the run; the table of results has the times">
<line x1=0.00% x2=0.00% y1=1.25rem y2=8.00rem /><text x=0.00% y=.75rem>0:00</text>
<line x1=15.15% x2=15.15% y1=1.25rem y2=8.00rem /><text class=odd x=15.15% y=.75rem text-anchor=middle>0:10</text>
<line x1=30.30% x2=30.30% y1=1.25rem y2=8.00rem /><text x=30.30% y=.75rem text-anchor=middle>0:20</text>
<line x1=45.45% x2=45.45% y1=1.25rem y2=8.00rem /><text class=odd x=45.45% y=.75rem text-anchor=middle>0:30</text>
<line x1=60.61% x2=60.61% y1=1.25rem y2=8.00rem /><text x=60.61% y=.75rem text-anchor=middle>0:40</text>
<line x1=75.76% x2=75.76% y1=1.25rem y2=8.00rem /><text class=odd x=75.76% y=.75rem text-anchor=middle>0:50</text>
<line x1=90.91% x2=90.91% y1=1.25rem y2=8.00rem /><text x=90.91% y=.75rem text-anchor=middle>1:00</text>
<g><title>Loop: 1 min 04 s from 0.00 s, failed</title><rect class="bar outer failed" x=0.00% width=96.97% y=1.75rem height=1.06rem rx=3 /><text class="label failed" x=0.00% dx=.4375rem y=2.56rem>× Loop</text></g>
<g><title>Build (x): 1 min 04 s from 0.00 s, failed</title><rect class="bar outer failed" x=0.00% width=96.97% y=3.38rem height=1.06rem rx=3 /><text class="label failed" x=0.00% dx=.4375rem y=4.19rem>× Build (x)</text></g>
<g><title>Lib, Debug: 15.00 s from 1.00 s, succeeded</title><rect class="bar" x=1.52% width=22.73% y=5.00rem height=1.06rem rx=3 /><text class="label" x=1.52% dx=.4375rem y=5.81rem>15.00 s</text></g>
<g><title>App, Debug: 15.00 s from 16.00 s, succeeded</title><rect class="bar" x=24.24% width=22.73% y=6.62rem height=1.06rem rx=3 /><text class="label" x=24.24% dx=.4375rem y=7.44rem>15.00 s</text></g>
<g><title>Lib, Release: 15.00 s from 31.00 s, succeeded</title><rect class="bar" x=46.97% width=22.73% y=5.00rem height=1.06rem rx=3 /><text class="label" x=46.97% dx=.4375rem y=5.81rem>15.00 s</text></g>
<g><title>App, Release: 15.00 s from 46.00 s, failed</title><rect class="bar failed" x=69.70% width=22.73% y=6.62rem height=1.06rem rx=3 /><text class="label failed" x=69.70% dx=.4375rem y=7.44rem>× 15.00 s</text></g>
<g><title>Tests: 1.00 s from 1 min 05 s, succeeded</title><rect class="bar" x=98.48% width=1.52% y=1.75rem height=1.06rem rx=3 /></g>
</svg></div>
<p class=key><span><i></i>ended well</span><span><i class=error></i>failed ×</span></p>
)");
  EXPECT_EQ(Section(page, "results"), R"(<section id=results><h2>Results</h2>
<p>2 succeeded, 2 failed, 1 skipped; 2 errors, 3 warnings; 4 tests, 1 failed, 1 not run</p>
<div class=wide tabindex=0 role=region aria-label=Results><table class=actions><thead><tr><th scope=col>Action<th scope=col>Configuration<th scope=col>Result<th scope=col class=number>Errors<th scope=col class=number>Warnings<th scope=col class=number>Time</thead><tbody>
<tr><td style=--d:0>Loop<td><td><i class="i error"></i>failed<td class=number><i class="i error"></i>2<td class=number><i class="i warning"></i>3<td class=number>1 min 04 s
<tr><td style=--d:1>Build (x)<td>Debug<td><i class="i done"></i>succeeded<td class=number><td class=number><i class="i warning"></i>2<td class=number>30.00 s
<tr><td style=--d:1>Build (x)<td>Release<td><i class="i error"></i>failed<td class=number><i class="i error"></i>2<td class=number><td class=number>30.00 s
<tr><td style=--d:1>Build (x)<td>(the rest)<td><i class="i error"></i>failed<td class=number><td class=number><i class="i warning"></i>1<td class=number>4.00 s
<tr><td style=--d:0>Tests<td><td><i class="i done"></i>succeeded<td class=number><td class=number><td class=number>1.00 s
<tr><td style=--d:0>Never<td><td><i class="i skipped"></i>skipped (condition)<td class=number><td class=number><td class=number>0.00 s
</tbody></table></div>
<h3>Projects</h3>
<div class=wide tabindex=0 role=region aria-label=Projects><table class=projects><thead><tr><th scope=col>Project<th scope=col>Debug<th scope=col>Release</thead><tbody>
<tr><th scope=row>Lib<td><i class="i done" role=img aria-label="succeeded"></i>15.00 s<td><i class="i done" role=img aria-label="succeeded"></i>15.00 s
<tr><th scope=row>App<td><i class="i done" role=img aria-label="succeeded"></i>15.00 s <i class="i warning" role=img aria-label="warnings"></i>2<td><i class="i error" role=img aria-label="failed"></i>15.00 s <i class="i error" role=img aria-label="errors"></i>2
</tbody></table></div>
<h3>Metrics</h3>
<div class=wide tabindex=0 role=region aria-label=Metrics><table><thead><tr><th scope=col>Metric<th scope=col>Action<th scope=col>Configuration<th scope=col class=number>Value</thead><tbody>
<tr><td>Coverage: Lines<td>Build (x)<td>Debug<td class=number>12,345
</tbody></table></div>
)");
  EXPECT_EQ(Section(page, "trends"), R"(<section id=trends><h2>Trends</h2>
<p>The last 4 runs, this one at the end.</p>
<div class=charts>
<figure class=chart tabindex=0 role=group aria-label="Errors of the last 4 runs, 2 in this one; Left and Right read the others" data-column=2><figcaption><b>Errors</b> <output>2</output></figcaption><p class=y><span style=bottom:100.00%>4</span><span style=bottom:50.00%>2</span><span style=bottom:0.00%>0</span></p><div><svg viewBox="0 0 12 100" preserveAspectRatio=none aria-hidden=true><path class=grid d="M0 0h12M0 50h12"/><path class="error" d="M9.15 100h.7V25.00h-.7z"/><path class="error this" d="M11.15 100h.7V50.00h-.7z"/><path class=here d=""/></svg></div><p class=x><span></span><span>this run</span></p></figure>
<figure class=chart tabindex=0 role=group aria-label="Warnings of the last 4 runs, 3 in this one; Left and Right read the others" data-column=3><figcaption><b>Warnings</b> <output>3</output></figcaption><p class=y><span style=bottom:100.00%>4</span><span style=bottom:50.00%>2</span><span style=bottom:0.00%>0</span></p><div><svg viewBox="0 0 12 100" preserveAspectRatio=none aria-hidden=true><path class=grid d="M0 0h12M0 50h12"/><path class="plain" d="M8.15 100h.7V75.00h-.7z"/><path class="plain" d="M9.15 100h.7V75.00h-.7z"/><path class="plain" d="M10.15 100h.7V25.00h-.7z"/><path class="plain this" d="M11.15 100h.7V25.00h-.7z"/><path class=here d=""/></svg></div><p class=x><span></span><span>this run</span></p></figure>
<figure class=chart tabindex=0 role=group aria-label="Failed tests of the last 4 runs, 1 of 4 in this one; Left and Right read the others" data-column=4><figcaption><b>Failed tests</b> <output>1 of 4</output></figcaption><p class=y><span style=bottom:100.00%>2</span><span style=bottom:50.00%>1</span><span style=bottom:0.00%>0</span></p><div><svg viewBox="0 0 12 100" preserveAspectRatio=none aria-hidden=true><path class=grid d="M0 0h12M0 50h12"/><path class="error" d="M9.15 100h.7V50.00h-.7z"/><path class="error this" d="M11.15 100h.7V50.00h-.7z"/><path class=here d=""/></svg></div><p class=x><span></span><span>this run</span></p></figure>
<figure class=chart tabindex=0 role=group aria-label="Time of the last 4 runs, 1 min 06 s in this one; Left and Right read the others" data-column=5><figcaption><b>Time</b> <output>1 min 06 s</output></figcaption><p class=y><span style=bottom:100.00%>1 min 20 s</span><span style=bottom:50.00%>40.00 s</span><span style=bottom:0.00%>0.00 s</span></p><div><svg viewBox="0 0 12 100" preserveAspectRatio=none aria-hidden=true><path class=grid d="M0 0h12M0 50h12"/><path class=line d="M8.50 37.50L9.50 27.50L10.50 22.50L11.50 17.50"/><path class=point d="M8.50 37.50h0M10.50 22.50h0"/><path class="point failed" d="M9.50 27.50h0M11.50 17.50h0"/><path class=here d=""/></svg></div><p class=x><span></span><span>this run</span></p></figure>
</div>
<details class=fold><summary>The figures as a table</summary><div class=wide><table id=runs><thead><tr><th scope=col>Run<th scope=col>Result<th scope=col class=number>Errors<th scope=col class=number>Warnings<th scope=col class=number>Failed tests<th scope=col class=number>Time<th scope=col>Commit</thead><tbody>
<tr><th scope=row>5 Oct 2024, 00:00:00 UTC<td>succeeded<td class=number>0<td class=number>1<td class=number>0 of 4<td class=number>50.00 s<td><code>c1</code>
<tr><th scope=row>6 Oct 2024, 00:00:00 UTC<td>failed<td class=number>3<td class=number>1<td class=number>1 of 4<td class=number>58.00 s<td><code>c2</code>
<tr><th scope=row>7 Oct 2024, 00:00:00 UTC<td>succeeded<td class=number>0<td class=number>3<td class=number>0 of 4<td class=number>1 min 02 s<td><code>c3</code>
<tr><th scope=row>21 Sep 2026, 14:13:20 UTC<td>failed<td class=number>2<td class=number>3<td class=number>1 of 4<td class=number>1 min 06 s<td><code>abc</code>
</tbody></table></div></details>
)");
  EXPECT_EQ(Section(page, "versions"), R"(<section id=versions><h2>Versions</h2>
<div class=wide tabindex=0 role=region aria-label=Versions><table><thead><tr><th scope=col>File<th scope=col>What<th scope=col>Value</thead><tbody>
<tr><td>/x/a.cs<td>AssemblyVersion<td><code>1.2.3.4</code>
</tbody></table></div>
)");
  EXPECT_EQ(Section(page, "log"), R"(<section id=log><h2>Log</h2>
<p>What failed is open. Times are those of UTC.</p>
<div class=tools hidden><input type=search id=log-find placeholder="Search the log" aria-label="Search the log"><output id=log-found></output><div class=choice role=group aria-label=Match><button id=log-previous>Previous</button><button id=log-next>Next</button></div><div class=choice role=group aria-label=Lines><button id=log-all aria-pressed=true>All lines</button><button id=log-problems aria-pressed=false>Problems</button></div><div class=choice role=group aria-label=Groups><button id=log-fold>Fold all</button><button id=log-unfold>Unfold all</button></div></div>
<div class=log>
<details class=bad open><summary><i class="i error" role=img aria-label="failed"></i><span>Build it (x)</span><span class=time>1 min 04 s</span></summary>
<pre data-n=1 data-t=14:13:20 data-s="2:3" style=--n:3>
first
second
later
</pre>
<pre class=warning data-n=4 data-t=14:13:23>
<b id=L4>careful</b>
</pre>
<details class=bad open><summary><i class="i error" role=img aria-label="failed"></i><span>Inner</span><span class=time>1 min 00 s</span></summary>
<pre class=error data-n=5 data-t=14:14:24>
<b id=L5>bad</b>
</pre>
</details>
</details>
<details><summary><i class="i done" role=img aria-label="succeeded"></i><span>Tests</span><span class=time>1.00 s</span></summary>
<pre data-n=6 data-t=14:14:25 style=--n:2>
Processing Assembly info in File : /x/a.cs
AssemblyVersion : 1.2.3.4
</pre>
</details>
</div>)");
  EXPECT_EQ(Section(page, "facts"), R"(<section id=facts><h2>Facts</h2>
<dl class=facts>
<dt>Started<dd>21 Sep 2026, 14:13:20 UTC
<dt>Ended<dd>21 Sep 2026, 14:14:26 UTC
<dt>Result<dd>failed
<dt>Build project<dd>DIR/p.kxproj
<dt>Machine<dd>M
<dt>System<dd>S
<dt>Commit<dd>abc
<dt>Branch<dd>main
<dt>Tools<dd>xbuild 14.0, mono 6
<dt>Command line<dd><code>kxhost run p</code>
</dl>
)");
}

TEST_F(HtmlPages, ShowARunWithoutTestsAndProjectsWhole) {
  Send(0, TActionEnded{}); // of nothing
  const auto finding = [](const char16_t* file, TFindingSeverity severity, const char16_t* print,
                          int line = 0) {
    return TFinding{.Rule = u"r",
                    .Severity = severity,
                    .Message = print,
                    .Place = {file, line},
                    .Fingerprint = print,
                    .Steps = {{{file, 0}, u"here"}}};
  };
  using enum TFindingSeverity;
  TRunReport report{
      .Result = Succeeded,
      .Counts = {0, 4},
      .Elapsed = milliseconds(500),
      .Actions =
          {{.Name = u"Build",
            .Result = Succeeded,
            .Counts = {0, 4},
            .Elapsed = milliseconds(900),
            .Configurations = {ConfigurationResult(u"Debug", Succeeded, {0, 4}, 0, 400),
                               ConfigurationResult(u"Release", NothingToDo, {}, 400, 200),
                               ConfigurationResult(u"Ship", Ignored, {}, 700, 190)}},
           {.Name = u"Odd", .Result = Ignored, .Began = milliseconds(650), .Elapsed = milliseconds(20)}},
      .Findings = {finding(u"a.cs", Warning, u"known of a"), finding(u"b.cs", Note, u"new of b", 9999),
                   finding(u"b.cs", Warning, u"known of b"), finding(u"c.cs", Warning, u"other of c"),
                   finding(u"a.cs", Warning, u"known too", 1)}};
  TPast past{
      .KnownSince = {{u"known of a", 0}, {u"known of b", 13}, {u"known too", 20}, {u"other of c", 12}}};
  for (int i = 0; i < 14; ++i)
    past.Runs.push_back(Past(i, i == 3 ? Failed : Succeeded, {i == 3 ? 1 : 0, i}, {}, i % 3));
  for (int i = 0; i < 9; ++i)
    past.Fixed.push_back(
        {.Rule = i % 7 == 0 ? u"test-failed" : u"r", .Message = u"f" + text::FromInteger(i)});
  report.Past = std::make_shared<TPast>(past);
  const std::string page = Page(report);
  EXPECT_EQ(Section(page, {}), R"(<div class=page>
<nav class=contents aria-label=Contents tabindex=-1><a href=#problems>Problems <span>5</span></a><a href=#timeline>Timeline</a><a href=#results>Results</a><a href=#trends>Trends</a><a href=#log>Log</a><a href=#facts>Facts</a></nav>
<main>
<div class=head><div class=result><i class="i done" role=img aria-label="succeeded"></i><div><h1>Built 1 configuration in 0.50 s</h1><p class=lead>4 warnings. 1 action failed, which the project says not to mind.</p></div></div>
<dl class=figures><div><dt><i class="i done"></i>Errors</dt><dd class=value>0</dd></div><div><dt><i class="i warning"></i>Warnings</dt><dd class=value>4</dd><dd>4 known, 7 fixed</div><div><dt><i class="i error"></i>Configurations</dt><dd class=value>1 <small>of 3 built</small></dd><dd>1 failed, 1 not built</dd></div><div><dt><i class="i clock"></i>Time</dt><dd class=value>0.50 s</dd><dd>0.50 s below the usual 1.00 s</dd></div></dl>
</div>
)");
  EXPECT_EQ(Section(page, "problems"), R"(<section id=problems><h2>Problems</h2>
<p>What several projects or configurations say is counted once. Compared with the run of 17 Oct 2024, 00:00:00 UTC.</p>
<div class=tools hidden><input type=search id=problem-find placeholder="Search text, file or code" aria-label="Search problems"><div class=choice role=group aria-label=Severity><button data-severity="" aria-pressed=true>All</button><button data-severity="error" aria-pressed=false>Errors</button><button data-severity="warning" aria-pressed=false>Warnings</button></div><div class=choice role=group aria-label="Against the run before"><button data-novelty="" aria-pressed=true>All</button><button data-novelty="new" aria-pressed=false>New</button><button data-novelty="known" aria-pressed=false>Known</button><button data-novelty="fixed" aria-pressed=false>Fixed</button></div><label>Group by <select id=problem-group><option value=file>File<option value=rule>Rule<option value=project>Project</select></label><output id=problem-count></output></div>
<div id=groups>
<details class=group data-f="b.cs" data-p=""><summary><h3>b.cs</h3><span class=counts><span class=new>1 new</span><span><i class="i warning" role=img aria-label="warnings"></i>1</span><span><i class="i note" role=img aria-label="notes"></i>1</span></span></summary>
<div class="f warning known"><span></span><code>r</code><details><summary>known of b</summary><ol><li>b.cs here</ol><p class=origin>since 17 Oct 2024, 1 run ago</details></div>
<div class="f note new"><span>line 9999</span><code>r</code><details><summary>new of b</summary><ol><li>b.cs here</ol><p class=origin></details><b>new</b></div>
</details>
<details class=group data-f="a.cs" data-p=""><summary><h3>a.cs</h3><span class=counts><span><i class="i warning" role=img aria-label="warnings"></i>2</span></span></summary>
<div class="f warning known"><span></span><code>r</code><details><summary>known of a</summary><ol><li>a.cs here</ol><p class=origin>since 4 Oct 2024, 14 runs ago</details></div>
<div class="f warning known"><span>line 1</span><code>r</code><details><summary>known too</summary><ol><li>a.cs here</ol><p class=origin></details></div>
</details>
<details class=group data-f="c.cs" data-p=""><summary><h3>c.cs</h3><span class=counts><span><i class="i warning" role=img aria-label="warnings"></i>1</span></span></summary>
<div class="f warning known"><span></span><code>r</code><details><summary>other of c</summary><ol><li>c.cs here</ol><p class=origin>since 16 Oct 2024, 2 runs ago</details></div>
</details>
<details class="group fixed"><summary><h3>Fixed since the run before</h3><span class=counts><span><i class="i done" role=img aria-label="fixed"></i>7</span></span></summary>
<div class="f warning fixed"><span></span><code>r</code><span>f1</span></div>
<div class="f warning fixed"><span></span><code>r</code><span>f2</span></div>
<div class="f warning fixed"><span></span><code>r</code><span>f3</span></div>
<div class="f warning fixed"><span></span><code>r</code><span>f4</span></div>
<div class="f warning fixed"><span></span><code>r</code><span>f5</span></div>
<div class="f warning fixed"><span></span><code>r</code><span>f6</span></div>
<div class="f warning fixed"><span></span><code>r</code><span>f8</span></div>
</details>
</div>
<p class=none id=no-problem hidden>No problem matches. <button id=clear>Clear</button></p>
)");
  EXPECT_EQ(Section(page, "timeline"), R"(<section id=timeline><h2>Timeline</h2>
<div class=timeline><ol><li title="Actions">Actions<li title="Debug">Debug<li title="Release">Release<li title="Ship">Ship</ol>
<svg height=8.00rem role=img aria-label="Timeline of the run; the table of results has the times">
<line x1=0.00% x2=0.00% y1=1.25rem y2=8.00rem /><text x=0.00% y=.75rem>0.0 s</text>
<line x1=22.22% x2=22.22% y1=1.25rem y2=8.00rem /><text class=odd x=22.22% y=.75rem text-anchor=middle>0.2 s</text>
<line x1=44.44% x2=44.44% y1=1.25rem y2=8.00rem /><text x=44.44% y=.75rem text-anchor=middle>0.4 s</text>
<line x1=66.67% x2=66.67% y1=1.25rem y2=8.00rem /><text class=odd x=66.67% y=.75rem text-anchor=middle>0.6 s</text>
<line x1=88.89% x2=88.89% y1=1.25rem y2=8.00rem /><text x=88.89% y=.75rem text-anchor=middle>0.8 s</text>
<g><title>Build: 0.90 s from 0.00 s, succeeded</title><rect class="bar outer" x=0.00% width=100.00% y=1.75rem height=1.06rem rx=3 /><text class="label" x=0.00% dx=.4375rem y=2.56rem>Build</text></g>
<g><title>Build, Debug: 0.40 s from 0.00 s, succeeded</title><rect class="bar" x=0.00% width=44.44% y=3.38rem height=1.06rem rx=3 /><text class="label" x=0.00% dx=.4375rem y=4.19rem>0.40 s</text></g>
<g><title>Build, Release: 0.20 s from 0.40 s, nothing to do</title><rect class="bar" x=44.44% width=22.22% y=5.00rem height=1.06rem rx=3 /><text class="label" x=44.44% dx=.4375rem y=5.81rem>0.20 s</text></g>
<g><title>Build, Ship: 0.19 s from 0.70 s, ignored</title><rect class="bar failed" x=77.78% width=21.11% y=6.62rem height=1.06rem rx=3 /><text class="label failed" x=77.78% dx=.4375rem y=7.44rem>× 0.19 s</text></g>
<g><title>Odd: 0.02 s from 0.65 s, ignored</title><rect class="bar failed" x=72.22% width=2.22% y=1.75rem height=1.06rem rx=3 /></g>
</svg></div>
<p class=key><span><i></i>ended well</span><span><i class=error></i>failed ×</span></p>
)");
  EXPECT_EQ(Section(page, "tests"), "none");
}

} // namespace
} // namespace kx
