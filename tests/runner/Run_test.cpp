#include "program/runner/Run.h"

#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::ElementsAre;

class RunTest : public testing::Test {
protected:
  using TDeed = TStepAction::TDeed;

  // Adds a step that does this.
  TStepAction& Add(std::u16string_view name, TActionNode* parent, TDeed deed) {
    TStepAction::Deeds().emplace(name, std::move(deed));
    return Host.AddStep(name, name, parent);
  }
  static bool Succeed(TStepAction&) { return true; }
  static bool Throw(TStepAction&) { throw EFailAction(u"own"); }

  TEmbeddedHost Host;
};

TEST_F(RunTest, ExceptionsFailTheActionWithTheirMessage) {
  const std::pair<const char*, TDeed> cases[] = {
      {"  3 own", Throw},
      {"  3 The action failed without a message.", [](TStepAction&) -> bool { throw 1; }},
      {"  3 Unknown name \"zzqqxxyyvv\".",
       [](TStepAction& a) { return a.ExpandExpression(u"%zzqqxxyyvv%").empty(); }},
  };
  Add(u"a", nullptr, Succeed);
  for (const auto& [message, deed] : cases) {
    TStepAction::Deeds().at(u"a") = deed;
    EXPECT_THAT(Host.Run(), ElementsAre("a {", message, "} False"));
  }
}

TEST_F(RunTest, GroupsLeftOpenAreClosedAndForeignOnesStay) {
  Add(u"a", &Host.AddLoop({u"x"}), [](TStepAction& a) {
    a.EndMessageGroup(TStatusTag::stSuccess); // none of its own is open
    a.StartMessageGroup(u"one");
    a.StartMessageGroup(u"two");
    a.SendMessage(u"in", TStatusTag::stWarning);
    a.EndMessageGroup(TStatusTag::stSuccess);
    a.StartMessageGroup(u"three");
    return true;
  });
  Add(u"b", nullptr, [](TStepAction& a) {
    a.StartMessageGroup(u"four");
    return Throw(a);
  });
  EXPECT_THAT(Host.Run(),
              ElementsAre("Loop {", "  a [x] {", "    > one", "      > two", "        2 in", "      < 1",
                          "      > three", "      <", "    <", "  } True", "} True", //
                          "b {", "  > four", "    3 own", "  < 3", "} False"));
}

TEST_F(RunTest, ASecretIsMaskedWhereverATextRepeatsIt) {
  const std::u16string secret = u"hush!";
  TStepAction& step = Add(secret, &Host.AddLoop({secret}), [&secret](TStepAction& a) {
    a.StartConfiguration(secret);
    a.SendMetricString(secret, secret, secret);
    a.StartMessageGroup(u"with " + secret);
    a.SendMessage(u"<" + secret + secret + u">");
    a.EndConfiguration(TKxOutcome::koSucceeded);
    return true;
  });
  EXPECT_EQ(step.DecryptString(step.EncryptString(secret)), secret);
  EXPECT_THAT(Host.Run(), ElementsAre("Loop {", "  *** [***] {", "    # *** *** *** ***", "    > with ***",
                                      "      0 <******>", "    <", "  } True", "} True"));
  const TActionResult& row = Host.Report.Actions.at(1);
  EXPECT_EQ(row.Name + row.Pass + row.Configurations.at(0).Configuration, u"*********");
}

TEST_F(RunTest, ALoopVariableLivesAsLongAsItsLoop) {
  TActionNode& outer = Host.AddLoop({u"outer"}, nullptr, u"Both");
  TActionNode& inner = Host.AddLoop({u"1", u"2"}, &outer, u"BOTH");
  outer.SetOnFailure(TOnFailure::Continue);
  Host.AddStep(u"%Both%", u"", &inner);
  Add(u"last", &inner, Succeed);
  Host.AddStep(u"%Both%", u"", &outer);
  Host.AddStep(u"%Both%");
  const std::tuple<TDeed, std::string> cases[] = {
      {Succeed, "1|2|outer|command line|"},
      {[](TStepAction&) { return false; }, "1|The action failed without a message.|command line|"},
      {Throw, "1|own|command line|"},
  };
  for (const auto& [last, expected] : cases) {
    TStepAction::Deeds().at(u"last") = last;
    std::string said;
    for (const auto& line : Host.Run())
      if (const auto at = line.find_first_not_of(' '); std::isdigit(line[at]) != 0)
        said += line.substr(at + 2) + "|";
    EXPECT_EQ(said, expected);
  }
}

TEST_F(RunTest, ALoopThatDoesNothingIsNoSuccess) {
  Host.AddLoop({});
  EXPECT_THAT(Host.Run(),
              ElementsAre("Loop {",
                          "  3 The loop has no pass: there is nothing to go through. (rule empty-loop)",
                          "} False"));
  static_cast<TLoopAction&>(Host.Project().FindNamed(u"Loop")->Action()).Values = {u"1", u"2"};
  EXPECT_THAT(Host.Run(),
              ElementsAre("Loop {", "  3 The loop holds no actions: its passes do nothing. (rule empty-loop)",
                          "} False"));
  Host.Project().FindNamed(u"Loop")->SetName(u"Renamed");
  EXPECT_EQ(Host.Project().FindNamed(u"Loop"), nullptr);
}

TEST_F(RunTest, AStopRequestEndsTheActionAndNothingMoreStarts) {
  Host.Stop.Raise(); // before the run: forgotten
  TActionNode& loop = Host.AddLoop({u"1", u"2"});
  Add(u"a", &loop, [this](TStepAction& a) {
    Host.Stop.Raise();
    EXPECT_TRUE(a.Terminated.WaitFor(std::chrono::minutes(1))) << "TerminateAction was not called";
    a.SendMessage(u"Action Terminated by User.", TStatusTag::stError);
    return false;
  });
  Host.Project().FindNamed(u"a")->SetOnFailure(TOnFailure::Continue);
  Add(u"b", &loop, Succeed);
  Add(u"c", nullptr, Succeed);
  EXPECT_THAT(Host.Run(),
              ElementsAre("Loop {", "  a [1] {", "    3 Action Terminated by User.", "  } False", "} False"));
  EXPECT_EQ(Host.Report.Result, TResultKind::Stopped);
  for (const auto& row : Host.Report.Actions)
    EXPECT_EQ(row.Result, TResultKind::Stopped);
  EXPECT_EQ(Host.Report.Counts, TProblemCounts{}) << "being stopped is no error";
}

} // namespace
} // namespace kx::tests
