#include "program/runner/ProblemTally.h"
#include "program/runner/Run.h"

#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::Contains;
using testing::EndsWith;

class Verdict : public testing::Test {
protected:
  void Step(TStepAction::TDeed deed, TActionNode* parent = nullptr) {
    TStepAction::Deeds().insert_or_assign(u"step", std::move(deed));
    Host->AddStep(u"step", u"step", parent);
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
// A configuration with this many errors.
void Configuration(TStepAction& a, std::u16string_view name, TKxOutcome outcome, std::int64_t errors = 0) {
  a.StartConfiguration(name);
  Count(a, u"Errors", errors);
  a.EndConfiguration(outcome);
}

TEST_F(Verdict, IsStrictUntilTheUserSaysOtherwise) {
  using enum TKxOutcome;
  const std::string counted = "1 error was counted although the tool reports success. (rule errors-counted)";
  const std::string failed =
      "The configuration Debug failed, although a later one succeeded. (rule failed-configuration)";
  const struct {
    const char* Case;
    void (*Deed)(TStepAction&); // null: no action at all
    std::string Message;
    std::string InADryRun = "would run";
  } cases[] = {
      {"errors beside a success", [](TStepAction& a) { Count(a, u"Errors", 1); }, counted},
      {"errors in one configuration", [](auto& a) { Configuration(a, u"Debug", koSucceeded, 1); }, counted},
      {"errors in a configuration in which nothing was built",
       [](TStepAction& a) {
         Configuration(a, u"Debug", koNothingToDo, 1);
         Configuration(a, u"Release", koSucceeded);
       },
       counted},
      {"a configuration before the last that failed",
       [](TStepAction& a) {
         Configuration(a, u"Debug", koFailed);
         Configuration(a, u"Release", koSucceeded);
       },
       failed},
      {"a configuration that was never closed", [](auto& a) { a.StartConfiguration(u"Debug"); }, failed},
      {"a breach that the action reports",
       [](TStepAction& a) { a.ReportBreach(KxVerdictRules::NothingBuilt, u"Nothing."); },
       "Nothing. (rule nothing-built)"},
      {"a breach that needs no run",
       [](TStepAction& a) { a.ReportBreach(KxVerdictRules::NoConfiguration, u"There is no \"Relaese\"."); },
       "There is no \"Relaese\". (rule no-configuration)", "failed (no-configuration)"},
      {"nothing at all", nullptr, "The project holds no actions. (rule no-actions)", "failed"},
  };
  const std::pair<std::u16string_view, std::string> severities[] = {
      {u"", "3 "}, {u"warning", "2 Warning : "}, {u"off", ""}};
  for (const auto& row : cases) {
    const std::string rule = row.Message.substr(row.Message.rfind(' ') + 1);
    const auto prepare = [&] {
      if (row.Deed != nullptr) Step([&row](TStepAction& a) { return row.Deed(a), true; });
    };
    for (const auto& [severity, mark] : severities) {
      SCOPED_TRACE(row.Case + text::ToUtf8(severity));
      Again();
      if (!severity.empty())
        Host->Project().Rules.Set(text::FromUtf8(rule.substr(0, rule.size() - 1)), severity);
      prepare();
      const std::string failure = row.Deed != nullptr ? "failed (" + rule : "failed";
      EXPECT_EQ(Run(), severity.empty() ? failure : "succeeded");
      EXPECT_EQ(IsSuccess(Host->Report.Result), !severity.empty());
      if (row.Deed == nullptr) {
        EXPECT_EQ(Host->Report.Counts,
                  (TProblemCounts{severity.empty() ? 1 : 0, severity == u"warning" ? 1 : 0}));
      }
      const bool isSaid = testing::Value(Host->Sink.Lines, Contains(EndsWith(mark + row.Message)));
      EXPECT_EQ(isSaid, !mark.empty());
      if (isSaid && row.Deed != nullptr) {
        EXPECT_EQ(Host->Report.Findings.at(0).Rule + u")", text::FromUtf8(rule));
      }
    }
    Again(true);
    prepare();
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

TEST_F(Verdict, TellsConfigurationsFromTheirAction) {
  Step([](TStepAction& a) {
    Configuration(a, u"Debug", TKxOutcome::koSucceeded, 1);
    a.ReportBreach(KxVerdictRules::NothingBuilt, u"Nothing was built.");
    return true;
  });
  EXPECT_EQ(Run(), "failed (nothing-built)") << "what is said beside the configurations";
  EXPECT_EQ(Host->Report.Actions[0].Configurations[0].Reason, KxVerdictRules::ErrorsCounted);
  Host->Project().FindNamed(u"step")->SetOnFailure(TOnFailure::Ignore);
  EXPECT_EQ(Run(), "ignored (nothing-built)");
  EXPECT_EQ(Host->Report.Actions[0].Configurations[0].Result, TResultKind::Ignored);
}

// What an action counted stands for what its tool said; its own warnings come on top.
TEST(ProblemTally, CountsNothingTwice) {
  struct TRow {
    std::int64_t Analysed[2], Tool[2], Own[2];
    TProblemCounts Counts;
  };
  const TRow rows[] = {{{0, 0}, {2, 3}, {4, 5}, {2, 8}},
                       {{0, 0}, {0, 0}, {4, 5}, {4, 5}},
                       {{1, 1}, {2, 3}, {4, 5}, {1, 6}},
                       {{1, 0}, {2, 3}, {0, 0}, {1, 3}}};
  for (const auto& row : rows) {
    TProblemTally tally;
    for (const int kind : {0, 1}) {
      const TStatusTag status = kind == 0 ? TStatusTag::stError : TStatusTag::stWarning;
      for (int i = 0; i < row.Tool[kind]; ++i)
        tally.Take(status, true);
      for (int i = 0; i < row.Own[kind]; ++i)
        tally.Take(status, false);
      for (const char16_t* category : {u"Compiler", u"Other"})
        tally.Take(TKxMetric{category, kind == 0 ? u"Errors" : u"Warnings", row.Analysed[kind]});
    }
    EXPECT_EQ(tally.Counts(), row.Counts);
    tally.ForgetOwnErrors();
    EXPECT_EQ(tally.Counts().Errors, row.Tool[0] == 0 ? 0 : row.Counts.Errors);
  }
}

} // namespace
} // namespace kx::tests
