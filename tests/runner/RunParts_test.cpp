#include "contract/UnitTests.h"
#include "program/findings/FindingList.h"
#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

#include <chrono>

namespace kx::tests {
namespace {

using std::chrono::seconds;
using testing::ElementsAre;

class RunParts : public testing::Test {
protected:
  static std::string Step(const std::string& name, const std::string& attributes = "",
                          const std::string& text = "x") {
    return "<Action Type=\"STEP\" Name=\"" + name + "\" " + attributes + "><Text>" + text +
           "</Text></Action>\n";
  }
  static std::string Loop(const std::string& attributes, const std::string& actions) {
    return "<Action Type=\"LOOP\" Name=\"L\" " + attributes +
           "><Values>1\n2\n3</Values><LoopVariable>P</LoopVariable><Actions>" + actions +
           "</Actions></Action>\n";
  }

  // "A:succeeded B:skipped/needs L:failed A(2):failed = failed": the rows of the run and its result.
  static std::string Outcome(const std::string& actions, TRunChoice choice = {}, bool isDryRun = false) {
    TEmbeddedHost host(isDryRun);
    host.Runner.Choose(std::move(choice));
    TStepAction::Deeds().emplace(u"fail", [](TStepAction&) { return false; });
    TProjectFile(host.Project())
        .LoadBytes("<BuildProject><Actions>\n" + actions + "</Actions></BuildProject>",
                   host.Path("p.kxproj"));
    host.Run();
    std::string text;
    for (const auto& row : host.Report.Actions)
      text += text::ToUtf8(NameWithPass(row.Name, row.Pass)) + ":" + WordOf(row.Result) +
              (row.Reason.empty() ? "" : "/" + text::ToUtf8(row.Reason)) + " ";
    return text + "= " + WordOf(host.Report.Result) + (host.Report.NothingExecuted ? "!" : "");
  }

  static TActionTerms Terms(int retries, seconds time = seconds(0), seconds idle = seconds(0)) {
    return {.Retries = retries, .TimeLimit = time, .IdleLimit = idle};
  }
  TStepAction& Add(std::u16string_view name, TActionTerms terms, TStepAction::TDeed deed,
                   TActionNode* loop = nullptr) {
    TStepAction::Deeds().emplace(name, std::move(deed));
    TStepAction& step = Host.AddStep(name, name, loop);
    Host.Project().FindNamed(name)->SetTerms(std::move(terms));
    return step;
  }
  static bool WaitForStop(TStepAction& a) {
    EXPECT_TRUE(a.Host().Stop().WaitFor(seconds(60)));
    EXPECT_TRUE(a.Terminated.WaitFor(seconds(60)));
    a.SendMessage(TerminatedByUser, TStatusTag::stError);
    return false;
  }

  TEmbeddedHost Host;
};

TEST_F(RunParts, RunInTheOrderOfTheirNeedsAndSayWhatWasPassedOver) {
  const std::string a = Step("A"), b = Step("B"), fails = Step("F", "", "fail");
  const std::string failsOn = Step("F", "ContinueOnError='true'", "fail");
  TRunChoice all, keepGoing, second, pass, noPass, withoutNeeds;
  keepGoing.KeepGoing = true;
  second.Only = {1};
  pass.Only = noPass.Only = withoutNeeds.Only = {0};
  pass.OnlyPass = 2;
  noPass.OnlyPass = 9;
  withoutNeeds.WithoutNeeds = true;
  const std::tuple<const char*, std::string, TRunChoice, std::string> cases[] = {
      {"a later one first", Step("A", "Needs='B'") + Step("B", "Needs=''"), all,
       "B:succeeded A:succeeded = succeeded"},
      {"what failed is needed, the rest goes on", failsOn + Step("A", "Needs='F'") + Step("B", "Needs=''"),
       all, "F:failed B:succeeded A:skipped/needs = finished with failures"},
      {"behind a failure nothing is said of the rest", fails + Step("A", "Needs='F'") + b, all,
       "F:failed = failed"},
      {"keep going", fails + a + Step("B", "Needs=''"), keepGoing,
       "F:failed B:succeeded A:skipped/needs = failed"},
      {"a condition",
       Step("A", "Condition='%Both% == \"x\"'") + Step("B", "Condition='%Both% == \"command line\"'"), all,
       "A:skipped/condition B:succeeded = succeeded"},
      {"what is skipped is no obstacle", Step("A", "Condition='0'") + Step("B", "Needs='A'"), all,
       "A:skipped/condition B:succeeded = succeeded"},
      {"all skipped", Step("A", "Condition='0'"), all, "A:skipped/condition = nothing to do"},
      {"in a loop, by its variable", Loop("", Step("A", "Condition='%P% > 2'")), all,
       "L:succeeded A (1):skipped/condition A (2):skipped/condition A (3):succeeded = succeeded"},
      {"a loop of which all is skipped", Loop("", Step("A", "Condition='0'")), all,
       "L:nothing to do A (1):skipped/condition A (2):skipped/condition A (3):skipped/condition = succeeded"},
      {"a faulty condition", Step("A", "Condition='='"), all, "A:failed/settings = failed!"},
      {"needs that mean nothing", Step("A", "Needs='C'"), all, "= failed!"},
      {"one alone", fails + a + b, second, "A:succeeded = succeeded"},
      {"one alone whose needs somebody else saw to", Step("A", "Needs='C'"), withoutNeeds,
       "A:succeeded = succeeded"},
      {"a loop that goes on behind a failure", Loop("", failsOn), all,
       "L:finished with failures F (1):failed F (2):failed F (3):failed = finished with failures"},
      {"one pass", Loop("", a) + fails, pass, "L:succeeded A (2):succeeded = succeeded"},
      {"a pass that is none", Loop("", a), noPass, "L:failed = failed"},
  };
  for (const auto& [name, actions, choice, outcome] : cases)
    EXPECT_EQ(Outcome(actions, choice), outcome) << name;
  EXPECT_EQ(Outcome(Step("A", "Condition='0'") + Step("B", "Retries='3'", "fail"), {}, true),
            "A:skipped/condition B:failed = failed");
}

TEST_F(RunParts, AFailedAttemptIsAWarningAndTheLastOneCounts) {
  int attempts = 0;
  Add(u"a", Terms(2), [&attempts](TStepAction& a) {
    a.StartConfiguration(u"Release");
    a.SendMessage(u"broken " + text::FromInteger(++attempts), TStatusTag::stError);
    a.EndConfiguration(attempts == 3 ? TKxOutcome::koSucceeded : TKxOutcome::koFailed);
    return attempts == 3;
  });
  EXPECT_THAT(Host.Run(),
              ElementsAre("a {", "  2 broken 1",
                          "  2 Warning : Attempt 1 of 3 failed, and another one follows: broken 1",
                          "  0 Attempt 2 of 3", "  2 broken 2",
                          "  2 Warning : Attempt 2 of 3 failed, and another one follows: broken 2",
                          "  0 Attempt 3 of 3", "  3 broken 3", "} True"));
  EXPECT_EQ(Host.Report.Counts, (TProblemCounts{1, 2}));
  EXPECT_EQ(Host.Report.Actions.at(0).Configurations.size(), 1U);
  std::string found;
  for (const auto& finding : Host.Report.Findings)
    found += text::ToUtf8(finding.Message) + "|";
  EXPECT_EQ(found, "Attempt 1 of 3 failed, and another one follows: broken 1|Attempt 2 of 3 failed, and "
                   "another one follows: broken 2|broken 3|");
}

TEST_F(RunParts, AnAttemptThatCountsCountsTheFindingsThatAreNotKept) {
  Add(u"a", Terms(1), [](TStepAction& a) {
    for (std::size_t i = 0; i < TFindingList::MostKept + 7; ++i)
      a.SendMessage(u"w" + text::FromInteger(static_cast<int>(i)), TStatusTag::stWarning);
    return true;
  });
  Host.Run();
  EXPECT_EQ(Host.Report.Findings.size(), TFindingList::MostKept);
  EXPECT_EQ(Host.Report.MoreFindings, 7);
}

TEST_F(RunParts, ALimitEndsTheActionAndIsSaid) {
  Add(u"time", Terms(0, seconds(1)), WaitForStop);
  Host.Project().FindNamed(u"time")->SetOnFailure(TOnFailure::Continue);
  Add(u"idle", Terms(0, seconds(60), seconds(1)), [](TStepAction& a) {
    for (int i = 0; i < 4; ++i) {
      a.Sleep(400);
      a.SendMessage(u"still here");
    }
    return WaitForStop(a);
  });
  EXPECT_THAT(Host.Run(),
              ElementsAre("time {", "  3 The action was ended: its time limit of 1s is over.", "} False",
                          "idle {", "  0 still here", "  0 still here", "  0 still here", "  0 still here",
                          "  3 The action was ended: it had said nothing for 1s, its idle limit.",
                          "} False"));
  EXPECT_EQ(Host.Report.Actions.at(0).Reason, TimeLimitReached);
  EXPECT_EQ(Host.Report.Actions.at(1).Reason, IdleLimitReached);
  EXPECT_EQ(Host.Report.Result, TResultKind::Failed);
}

TEST_F(RunParts, AnAttemptBehindALimitBeginsAnew) {
  int attempts = 0;
  Add(u"a", Terms(2, seconds(1)), [&attempts](TStepAction& a) {
    a.Terminated.Clear();
    return ++attempts == 3 ? !a.Host().Stop().IsRaised() : WaitForStop(a);
  });
  const std::string ended = "The action was ended: its time limit of 1s is over.";
  EXPECT_THAT(Host.Run(),
              ElementsAre("a {", "  2 " + ended,
                          "  2 Warning : Attempt 1 of 3 failed, and another one follows: " + ended,
                          "  0 Attempt 2 of 3", "  2 " + ended,
                          "  2 Warning : Attempt 2 of 3 failed, and another one follows: " + ended,
                          "  0 Attempt 3 of 3", "} True"));
}

TEST_F(RunParts, TheLimitOfALoopEndsWhatRunsInItForGood) {
  TActionNode& loop = Host.AddLoop({u"1", u"2"});
  loop.SetTerms(Terms(0, seconds(1)));
  int runs = 0;
  Add(
      u"a", Terms(5, seconds(50)),
      [&runs](TStepAction& a) {
        ++runs;
        return WaitForStop(a);
      },
      &loop);
  Host.Run();
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(Host.Report.Actions.at(0).Reason, TimeLimitReached);
}

TEST_F(RunParts, BehindTheLimitOfALoopNothingRunsAndTheLimitIsWhatWasWrong) {
  TActionNode& loop = Host.AddLoop({u"1", u"2"});
  loop.SetTerms(Terms(0, seconds(1)));
  Add(
      u"a", {},
      [](TStepAction& a) {
        EXPECT_TRUE(a.Host().Stop().WaitFor(seconds(60)));
        a.SendMetricString(UnitTestCategory, TestResultsMetric,
                           u"<testsuite name='S'><testcase name='T'><failure/></testcase></testsuite>");
        return false;
      },
      &loop);
  Host.Project().FindNamed(u"a")->SetOnFailure(TOnFailure::Continue);
  Add(
      u"deploy", {}, [](TStepAction&) { return true; }, &loop);
  EXPECT_THAT(Host.Run(), testing::Not(testing::Contains(testing::HasSubstr("deploy"))));
  std::string found;
  for (const auto& finding : Host.Report.Findings)
    found += text::ToUtf8(finding.Message) + "|";
  EXPECT_EQ(found, "T|The action was ended: its time limit of 1s is over.|");
}

TEST_F(RunParts, TheUsersStopIsNoLimit) {
  Add(u"a", Terms(3, seconds(600), seconds(600)), [this](TStepAction& a) {
    Host.Stop.Raise();
    return WaitForStop(a);
  });
  EXPECT_THAT(Host.Run(), ElementsAre("a {", testing::EndsWith("Action Terminated by User."), "} False"));
  EXPECT_EQ(Host.Report.Result, TResultKind::Stopped);
}

// Once for an execution, however many attempts it takes; before all of them where actions have no order of
// their own; not at all where another process has done it.
TEST_F(RunParts, NumbersAreCountedUpOnce) {
  const auto countIn = [](TStepAction& a) {
    const std::u16string_view properties[] = {u"Number"};
    a.ChangeStored(properties, [&a] { ++a.Number; });
  };
  const auto numbers = [&](TRunChoice choice, const std::string& attributes) {
    TEmbeddedHost host;
    host.Runner.Choose(std::move(choice));
    std::string text;
    const auto deed = [&](TStepAction& a) {
      countIn(a);
      text += std::to_string(a.Number) + " ";
      return false;
    };
    TStepAction::Deeds() = {{u"n", deed}, {u"count n", [&](TStepAction& a) {
                                             countIn(a);
                                             text += "counted ";
                                             return true;
                                           }}};
    TProjectFile file(host.Project());
    file.LoadBytes("<BuildProject><Actions>" + Step("A", attributes, "n") + "</Actions></BuildProject>",
                   host.Path("p.kxproj"));
    host.Run();
    return text;
  };
  TRunChoice counted;
  counted.NumbersAreCounted = true;
  EXPECT_EQ(numbers({}, "Retries='1'"), "8 8 ");
  EXPECT_EQ(numbers({}, "Needs='' Retries='1'"), "counted 8 8 ");
  for (const char* condition : {"no", "%Nothing%"})
    EXPECT_EQ(numbers({}, "Needs='' Condition='" + std::string(condition) + "'"), "");
  EXPECT_EQ(numbers(counted, "Needs=''"), "7 ");
}

} // namespace
} // namespace kx::tests
