#include "contract/UnitTests.h"
#include "foundation/platform/System.h"
#include "foundation/text/WindowsPath.h"
#include "tests/runner/TestActions.h"

#include <gtest/gtest.h>

namespace kx::tests {
namespace {

std::string Shown(TProblemCounts counts) {
  return std::to_string(counts.Errors) + "/" + std::to_string(counts.Warnings);
}

std::string Words(std::initializer_list<std::u16string> parts) {
  std::string words;
  for (const auto& part : parts)
    if (!part.empty()) words += " " + text::ToUtf8(part);
  return words;
}

std::string Shown(const TActionResult& row) {
  std::string shown = std::string(static_cast<std::size_t>(row.Nesting) * 2, ' ') +
                      text::ToUtf8(NameWithPass(row.Name, row.Pass)) + (row.IsLoop ? " loop " : " ") +
                      text::ToUtf8(row.Type) + " " + WordOf(row.Result) + Words({row.Reason}) + " " +
                      Shown(row.Counts) + " " + std::to_string(row.Tests.Passed) + "+" +
                      std::to_string(row.Tests.Failed) + "+" + std::to_string(row.Tests.NotRun) + "\n";
  for (const auto& built : row.Configurations) {
    shown += "    [" + text::ToUtf8(built.Configuration) + "] " + WordOf(built.Result) +
             Words({built.Reason}) + " " + Shown(built.Counts) + "\n";
    for (const auto& project : built.Projects)
      shown += "      " + text::ToUtf8(project.Project) + " " + WordOf(project.Result) +
               Words({project.Configuration}) + " " + Shown(project.Counts) + "\n";
  }
  return shown;
}

std::string Shown(const TFinding& finding) {
  std::string shown = std::to_string(finding.Said) + ". " + text::ToUtf8(TextOf(finding)) + " (" +
                      text::ToUtf8(finding.Rule) + ") of" +
                      Words({finding.Action, finding.Configuration, finding.Project});
  if (finding.Occurrences > 1) shown += " x" + std::to_string(finding.Occurrences);
  return shown + (finding.Fingerprint.empty() ? " without fingerprint\n" : "\n");
}

std::string Shown(const TRunReport& report) {
  std::string shown = std::string(WordOf(report.Result)) + " " + Shown(report.Counts) + " " +
                      std::to_string(report.Tests.Total()) + " tests" + (report.IsPartial ? " in part" : "") +
                      (report.NothingExecuted ? " nothing" : "") + "\n";
  for (const auto& row : report.Actions)
    shown += Shown(row);
  for (const auto& finding : report.Findings)
    shown += Shown(finding);

  return shown;
}

class RunReport : public testing::Test {
protected:
  void Add(std::u16string name, TStepAction::TDeed deed, TActionNode* loop = nullptr) {
    TStepAction::Deeds().emplace(name, std::move(deed));
    Host.AddStep(name, name, loop);
  }
  // The lines are what it writes; how it ends is its exit code.
  static int RunTool(TStepAction& a, std::u16string_view orders) {
    const auto process = a.Host().NewProcess(a);
    process->Settings().Executable = text::JoinPath(platform::ProgramDirectory(), KX_TEST_TOOL);
    process->Settings().Parameters = orders;
    process->Settings().OnStdOutData = [&a](IKxProcess&, std::u16string_view line) { a.SendMessage(line); };
    process->Run();
    return process->GetExitCode();
  }
  std::string Run() {
    Host.Run();
    return Shown(Host.Report);
  }

  TEmbeddedHost Host;
};

TEST_F(RunReport, HoldsEverythingThatARunWas) {
  TActionNode& loop = Host.AddLoop({u"x", u"y"});
  loop.SetOnFailure(TOnFailure::Continue);
  Add(
      u"build",
      [](TStepAction& a) {
        const bool isFirst = a.ExpandExpression(u"%P%") == u"x";
        a.SendMessage(u"Warning : own", TStatusTag::stWarning);
        a.StartConfiguration(u"Debug|Any CPU");
        a.Host().StartProject(a, u"Lib.csproj");
        RunTool(a, u"\"out:a.cs(3,4): error CS0103: no x\\na.cs(5): warning CS0168: unused\\n"
                   u"a.cs(3,4): error CS0103: no x\\n\" exit:1");
        a.Host().EndProject(a, u"Lib.csproj", false);
        a.Host().StartProject(a, u"Open.csproj");
        a.SendMessage(u"returned Error code : 1", TStatusTag::stError);
        a.EndConfiguration(isFirst ? TKxOutcome::koFailed : TKxOutcome::koSucceeded);
        a.StartConfiguration(u"Release");
        a.EndConfiguration(TKxOutcome::koNothingToDo);
        return !isFirst;
      },
      &loop);
  Host.Project().FindNamed(u"build")->SetOnFailure(TOnFailure::Ignore);
  Add(u"test", [](TStepAction& a) {
    TKxUnitTestRun run({{.Passed = true, .Executed = true, .TestName = u"Good"},
                        {.Executed = true,
                         .TestName = u"Bad",
                         .ErrorMessage = u"1 < 2",
                         .StackTrace = u" at A() in b.cs:line 7"},
                        {.TestName = u"Later"}});
    a.SendMetricString(UnitTestCategory, TestResultsMetric, run.AsXmlString());
    a.SendMessage(u"own words of the same", TStatusTag::stError);
    return false;
  });
  Add(u"never", [](TStepAction&) { return true; });
  EXPECT_EQ(Run(), R"(failed 4/2 3 tests in part
Loop loop LOOP succeeded 2/2 0+0+0
  build (x) STEP ignored 1/1 0+0+0
    [Debug|Any CPU] ignored 1/0
      Lib failed 2/1
      Open failed 0/0
    [Release] nothing to do 0/0
  build (y) STEP succeeded 1/1 0+0+0
    [Debug|Any CPU] succeeded 1/0
      Lib failed 2/1
      Open failed 0/0
    [Release] nothing to do 0/0
test STEP failed 2/0 1+1+1
1. warning: own (action-warning) of build (x) x2
2. a.cs(3,4): error CS0103: no x (CS0103) of build (x) Debug|Any CPU x4
3. a.cs(5): warning CS0168: unused (CS0168) of build (x) Debug|Any CPU x2
11. b.cs(7): error: Bad: 1 < 2 (test-failed) of test
)");
}

TEST_F(RunReport, OfAttemptsHoldsTheOneThatCounts) {
  int attempt = 0;
  Add(u"twice", [&attempt](TStepAction& a) {
    const bool isLast = ++attempt == 2;
    a.StartConfiguration(isLast ? u"Last" : u"First");
    RunTool(a, isLast ? u"\"out:b.cs(2): error CS2: b\\n\"" : u"\"out:a.cs(1): error CS1: a\\n\" exit:3");
    a.EndConfiguration(isLast ? TKxOutcome::koSucceeded : TKxOutcome::koFailed);
    a.SendMetricInt(u"C", u"N", attempt);
    return isLast;
  });
  TActionTerms terms;
  terms.Retries = 3;
  Host.Project().FindNamed(u"twice")->SetTerms(terms);
  Host.Project().FindNamed(u"twice")->SetOnFailure(TOnFailure::Continue);
  Add(u"skipped", [](TStepAction&) { return true; });
  terms = {};
  terms.Condition = u"1 == 2";
  Host.Project().FindNamed(u"skipped")->SetTerms(terms);
  Add(u"empty", [](TStepAction& a) {
    a.ReportBreach(u"nothing-built", u"Nothing was built.");
    return true;
  });
  Host.Project().Rules.Set(u"nothing-built", u"warning");
  Host.Runner.Choose({.Only = {{0, 1, 2}}});
  Add(u"left out", [](TStepAction&) { return true; });
  EXPECT_EQ(Run(), R"(succeeded 0/2 0 tests in part
twice STEP succeeded 0/1 0+0+0
    [Last] succeeded 0/0
skipped STEP skipped condition 0/0 0+0+0
empty STEP succeeded 0/1 0+0+0
3. warning: Attempt 1 of 4 failed, and another one follows: The action failed without a message. (action-warning) of twice
5. b.cs(2): error CS2: b (CS2) of twice Last
7. warning: Nothing was built. (nothing-built) of empty
)");
}

TEST_F(RunReport, OfAPartIsWhatItRan) {
  TProjectFile(Host.Project())
      .LoadBytes(
          "<BuildProject><Actions><Action Type='STEP' Name='a'><Text>a</Text></Action>"
          "<Action Type='LOOP' Name='L'><Values>x\ny</Values><LoopVariable>P</LoopVariable><Actions>"
          "<Action Type='STEP' Name='b'><Text>b</Text></Action></Actions></Action></Actions></BuildProject>",
          Host.Path("p.kxproj"));
  TStepAction::Deeds().emplace(u"b", [](TStepAction& a) {
    a.SendMessage(u"of b", TStatusTag::stWarning);
    return true;
  });
  EXPECT_EQ(Run(), R"(succeeded 0/2 0 tests
a STEP succeeded 0/0 0+0+0
L loop LOOP succeeded 0/2 0+0+0
  b (x) STEP succeeded 0/1 0+0+0
  b (y) STEP succeeded 0/1 0+0+0
2. warning: of b (action-warning) of b (x) x2
)");
  EXPECT_EQ(Host.Report.File, Host.Path("p.kxproj"));
  EXPECT_EQ(Host.Report.Root, text::ExtractFileDir(Host.Path("p.kxproj")));
  EXPECT_EQ(Host.Report.Surroundings.CommandLine, u"kxhost run p.kxproj");
  Host.Runner.Choose({.Only = {{1}}, .OnlyPass = 2, .WithoutNeeds = true});
  EXPECT_EQ(Run(), R"(succeeded 0/1 0 tests
L loop LOOP succeeded 0/1 0+0+0
  b (y) STEP succeeded 0/1 0+0+0
1. warning: of b (action-warning) of b (y)
)");
  EXPECT_EQ(std::pair(Host.Report.Part->Place, Host.Report.Part->Pass), std::pair(std::size_t{1}, 2));
  Host.Runner.Choose({.Only = {{1}}});
  EXPECT_TRUE(Run().starts_with("succeeded 0/2 0 tests in part\n"));
}

} // namespace
} // namespace kx::tests
