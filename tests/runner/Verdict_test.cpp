#include "program/runner/Run.h"

#include "contract/UnitTests.h"
#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class Verdict : public testing::Test {
protected:
  using TDeed = std::function<bool(TStepAction&)>;

  void Step(TDeed deed, TActionNode* parent = nullptr) {
    TStepAction::Deeds().insert_or_assign(u"step", std::move(deed));
    Host->AddStep(u"step", u"", parent);
  }
  TActionNode& Loop(std::initializer_list<std::u16string_view> values) {
    TActionNode& node = Host->Project().AddAction(u"LOOP");
    auto& loop = static_cast<TLoopAction&>(node.Action());
    loop.SetLoopVariable(u"P");
    loop.Values = values;
    return node;
  }
  // "failed (rule)" of the first action, or of the run when it has none.
  std::string Run() {
    Host->Run();
    if (Host->Report.Actions.empty()) return WordOf(Host->Report.Result);
    const TActionResult& action = Host->Report.Actions[0];
    return WordOf(action.Result) + (action.Reason.empty() ? "" : " (" + text::ToUtf8(action.Reason) + ")");
  }
  void Again(bool dryRun = false) { Host = std::make_unique<TEmbeddedHost>(dryRun); }

  std::unique_ptr<TEmbeddedHost> Host = std::make_unique<TEmbeddedHost>();
};

void Count(TStepAction& a, std::u16string_view what, std::int64_t number) {
  a.SendMetricInt(u"Compiler", what, number);
}

// What the action does; what becomes of it, and what the log says then.
struct TSituation {
  const char* Case;
  std::function<bool(TStepAction&)> Deed; // null: nothing at all
  std::string Result;
  std::string Message;
  std::string InADryRun;
};

const TSituation Situations[] = {
    {"errors beside a success",
     [](TStepAction& a) {
       Count(a, u"Errors", 9);
       return true;
     },
     "failed (errors-counted)",
     "9 errors were counted although the tool reports success. (rule errors-counted)", "would run"},
    {"errors in one configuration",
     [](TStepAction& a) {
       a.StartConfiguration(u"Debug");
       Count(a, u"Errors", 1);
       a.EndConfiguration(TKxOutcome::koSucceeded);
       return true;
     },
     "failed (errors-counted)",
     "1 error was counted although the tool reports success. (rule errors-counted)", "would run"},
    {"errors in a configuration in which nothing was built",
     [](TStepAction& a) {
       a.StartConfiguration(u"Debug");
       Count(a, u"Errors", 1);
       a.EndConfiguration(TKxOutcome::koNothingToDo);
       a.StartConfiguration(u"Release");
       a.EndConfiguration(TKxOutcome::koSucceeded);
       return true;
     },
     "failed (errors-counted)",
     "1 error was counted although the tool reports success. (rule errors-counted)", "would run"},
    {"a configuration before the last that failed",
     [](TStepAction& a) {
       a.StartConfiguration(u"Debug");
       a.EndConfiguration(TKxOutcome::koFailed);
       a.StartConfiguration(u"Release");
       a.EndConfiguration(TKxOutcome::koSucceeded);
       return true;
     },
     "failed (failed-configuration)",
     "The configuration Debug failed, although a later one succeeded. (rule failed-configuration)",
     "would run"},
    {"a configuration that was never closed",
     [](TStepAction& a) {
       a.StartConfiguration(u"Debug");
       return true;
     },
     "failed (failed-configuration)",
     "The configuration Debug failed, although a later one succeeded. (rule failed-configuration)",
     "would run"},
    {"a breach that the action reports",
     [](TStepAction& a) {
       a.ReportBreach(KxVerdictRules::NothingBuilt, u"No project was built.");
       return true;
     },
     "failed (nothing-built)", "No project was built. (rule nothing-built)", "would run"},
    {"a breach that needs no run",
     [](TStepAction& a) {
       a.ReportBreach(KxVerdictRules::NoConfiguration, u"There is no \"Relaese\".");
       return true;
     },
     "failed (no-configuration)", "There is no \"Relaese\". (rule no-configuration)",
     "failed (no-configuration)"},
    {"nothing at all", nullptr, "failed", "The project holds no actions. (rule no-actions)", "failed"},
};

TEST_F(Verdict, IsStrictUntilTheUserSaysOtherwise) {
  for (const auto& row : Situations) {
    const std::string rule = row.Message.substr(row.Message.rfind(' ') + 1);
    const auto name = text::FromUtf8(rule.substr(0, rule.size() - 1));
    const struct {
      std::u16string_view Severity;
      std::string Line; // empty: none
    } severities[] = {{u"", "3 " + row.Message}, {u"warning", "2 Warning : " + row.Message}, {u"off", ""}};
    for (const auto& severity : severities) {
      Again();
      if (!severity.Severity.empty()) Host->Project().Rules.Set(name, severity.Severity);
      if (row.Deed) Step(row.Deed);
      EXPECT_EQ(Run(), severity.Severity.empty() ? row.Result : "succeeded") << row.Case;
      EXPECT_EQ(IsSuccess(Host->Report.Result), !severity.Severity.empty()) << row.Case;
      const auto said = [&](std::string_view line) {
        return std::ranges::any_of(Host->Sink.Lines,
                                   [line](const auto& known) { return known.ends_with(line); });
      };
      EXPECT_EQ(said(row.Message), !severity.Line.empty()) << row.Case;
      EXPECT_TRUE(severity.Line.empty() || said(severity.Line)) << row.Case;
    }
    Again(true);
    if (row.Deed) Step(row.Deed);
    EXPECT_EQ(Run(), row.InADryRun) << row.Case;
  }
}

TEST_F(Verdict, TakesTheCommandLineBeforeTheProject) {
  TRuleSettings commandLine;
  commandLine.Set(u"no-actions=off");
  Host = std::make_unique<TEmbeddedHost>(false, commandLine);
  Host->Project().Rules.Set(u"no-actions", u"error");
  EXPECT_EQ(Run(), "succeeded");
}

TEST_F(Verdict, BooksEverythingWhereItBelongs) {
  TActionNode& loop = Loop({u"x"});
  Step(
      [](TStepAction& a) {
        a.SendMessage(u"Warning : stamped elsewhere", TStatusTag::stWarning);
        a.StartConfiguration(u"Debug");
        a.StartMessageGroup(u"inside");
        a.EndMessageGroup(TStatusTag::stError); // a group inside says nothing about the whole
        Count(a, u"Warnings", 2);
        a.EndConfiguration(TKxOutcome::koSucceeded);
        a.StartConfiguration(u"Release");
        a.EndConfiguration(TKxOutcome::koNothingToDo);
        a.StartConfiguration(u"Ship");
        a.SendMessage(u"a.cs(1,1): error", TStatusTag::stError);
        a.SendMessage(u"tool returned Error code : 1", TStatusTag::stError);
        Count(a, u"Errors", 1);
        a.EndConfiguration(TKxOutcome::koFailed);
        return false;
      },
      &loop);
  Run();
  ASSERT_EQ(Host->Report.Actions.size(), 2U);
  EXPECT_TRUE(Host->Report.Actions[0].IsLoop) << "above what it ran";
  EXPECT_EQ(Host->Report.Actions[0].Counts, (TProblemCounts{1, 3}));
  EXPECT_EQ(Host->Report.Counts, (TProblemCounts{1, 3}));
  const auto& rows = Host->Report.Actions[1].Configurations;
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_EQ(rows[0].Result, TResultKind::Succeeded);
  EXPECT_EQ(rows[0].Counts, (TProblemCounts{0, 2}));
  EXPECT_EQ(rows[1].Result, TResultKind::NothingToDo);
  EXPECT_EQ(rows[1].Counts, (TProblemCounts{0, 0}));
  EXPECT_EQ(rows[2].Result, TResultKind::Failed);
  EXPECT_EQ(rows[2].Counts, (TProblemCounts{1, 0})) << "what the tool's end says is the same failure";
}

TEST_F(Verdict, NamesFailedTests) {
  Step([](TStepAction& a) {
    TKxUnitTestRun run({{.Passed = true, .Executed = true, .TestName = u"Good"},
                        {.Executed = true, .TestName = u"Bad", .ErrorMessage = u"1 < 2"},
                        {.TestName = u"Later"}});
    a.SendMetricString(UnitTestCategory, TestResultsMetric, run.AsXmlString());
    return false;
  });
  EXPECT_EQ(Run(), "failed");
  EXPECT_THAT(Host->Sink.Lines, Contains("  3 Test failed : Bad : 1 < 2"));
  EXPECT_EQ(Host->Report.Tests.Passed, 1);
  EXPECT_EQ(Host->Report.Tests.Failed, 1);
  EXPECT_EQ(Host->Report.Tests.NotRun, 1);
  EXPECT_EQ(Host->Report.Counts.Errors, 1);
}

TEST_F(Verdict, RefusesSettingsBeforeAnythingIsDone) {
  bool ran = false;
  Host->AddStep(u"", u"refused");
  Step([&ran](TStepAction&) { return ran = true; });
  EXPECT_EQ(Run(), "failed (settings)");
  EXPECT_THAT(Host->Sink.Lines, ElementsAre("refused {", "  3 Text : A text has not been set", "} False"));
  EXPECT_TRUE(Host->Report.NothingExecuted);
  Host->Project().FindNamed(u"refused")->SetOnFailure(TOnFailure::Continue);
  Run();
  EXPECT_TRUE(ran);
  EXPECT_FALSE(Host->Report.NothingExecuted);
  EXPECT_EQ(Host->Report.Result, TResultKind::FinishedWithFailures);
}

TEST_F(Verdict, CallsNothingFinishedThatWasRefused) {
  Host->AddStep(u"", u"refused");
  Host->Project().FindNamed(u"refused")->SetOnFailure(TOnFailure::Continue);
  Run();
  EXPECT_TRUE(Host->Report.NothingExecuted);
  EXPECT_EQ(Host->Report.Result, TResultKind::Failed);
}

TEST_F(Verdict, TellsConfigurationsFromTheirAction) {
  Host->AddStep(u"step", u"step");
  TStepAction::Deeds().insert_or_assign(u"step", [](TStepAction& a) {
    a.StartConfiguration(u"Debug");
    Count(a, u"Errors", 1);
    a.EndConfiguration(TKxOutcome::koSucceeded);
    a.ReportBreach(KxVerdictRules::NothingBuilt, u"Nothing was built.");
    return true;
  });
  EXPECT_EQ(Run(), "failed (nothing-built)") << "what is said beside the configurations";
  EXPECT_EQ(Host->Report.Actions[0].Configurations[0].Reason, KxVerdictRules::ErrorsCounted);
  Host->Project().FindNamed(u"step")->SetOnFailure(TOnFailure::Ignore);
  EXPECT_EQ(Run(), "ignored (nothing-built)");
  EXPECT_EQ(Host->Report.Actions[0].Configurations[0].Result, TResultKind::Ignored);
}

TEST_F(Verdict, SaysOfALoopThatItHadNothingToDo) {
  Host->Project().Rules.Set(u"empty-loop", u"off");
  Loop({});
  EXPECT_EQ(Run(), "nothing to do");
  Again();
  Step(
      [](TStepAction& a) {
        a.StartConfiguration(u"Debug");
        a.EndConfiguration(TKxOutcome::koNothingToDo);
        return true;
      },
      &Loop({u"x"}));
  EXPECT_EQ(Run(), "nothing to do");
}

// A child is asked when it is reached: before, its texts have no value.
TEST_F(Verdict, AsksTheActionsOfALoopOnEachPass) {
  TActionNode& loop = Loop({u"1", u"2"});
  int passes = 0;
  Step([&passes](TStepAction&) { return ++passes > 0; }, &loop);
  Host->AddStep(u"", u"refused", &loop);
  Run();
  EXPECT_EQ(passes, 1);
  EXPECT_FALSE(Host->Report.NothingExecuted);
}

} // namespace
} // namespace kx::tests
