#include "program/runner/Run.h"

#include "tests/runner/TestActions.h"

#include <gmock/gmock.h>

namespace kx::tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RunTest : public testing::Test {
protected:
  using TDeed = std::function<bool(TStepAction&)>;

  // Adds a step that does this.
  TStepAction& Add(std::u16string_view name, TActionNode* parent, TDeed deed) {
    TStepAction::Deeds().emplace(name, std::move(deed));
    return Host.AddStep(name, name, parent);
  }
  TActionNode& AddLoop(std::initializer_list<std::u16string_view> values, TActionNode* parent = nullptr) {
    TActionNode& node = Host.Project().AddAction(u"LOOP", parent);
    node.SetName(u"Loop");
    auto& loop = static_cast<TLoopAction&>(node.Action());
    loop.SetLoopVariable(u"P");
    loop.Values = values;
    return node;
  }
  static bool Succeed(TStepAction&) { return true; }
  static bool Fail(TStepAction&) { return false; }

  TEmbeddedHost Host;
};

TEST_F(RunTest, TheFirstFailureEndsTheRunUnlessTheProjectSaysOtherwise) {
  const struct {
    TOnFailure First;
    TOnFailure Second;
    std::string Ran;
    TResultKind Result;
    TResultKind FirstRow;
  } cases[] = {
      {TOnFailure::Stop, TOnFailure::Stop, "b", TResultKind::Failed, TResultKind::Failed},
      {TOnFailure::Continue, TOnFailure::Stop, "bc", TResultKind::Failed, TResultKind::Failed},
      {TOnFailure::Continue, TOnFailure::Ignore, "bcd", TResultKind::FinishedWithFailures,
       TResultKind::Failed},
      {TOnFailure::Ignore, TOnFailure::Continue, "bcd", TResultKind::FinishedWithFailures,
       TResultKind::Ignored},
      {TOnFailure::Ignore, TOnFailure::Ignore, "bcd", TResultKind::Succeeded, TResultKind::Ignored},
  };
  std::string ran;
  for (const char16_t name : {u'b', u'c', u'd'})
    Add(std::u16string(1, name), nullptr, [&ran, name](TStepAction&) {
      ran += static_cast<char>(name);
      return name == u'd';
    });
  for (const auto& row : cases) {
    ran.clear();
    Host.Project().FindNamed(u"b")->SetOnFailure(row.First);
    Host.Project().FindNamed(u"c")->SetOnFailure(row.Second);
    Host.Run();
    EXPECT_EQ(ran, row.Ran);
    EXPECT_EQ(Host.Report.Result, row.Result) << row.Ran;
    EXPECT_EQ(Host.Report.Actions[0].Result, row.FirstRow) << row.Ran;
  }
}

TEST_F(RunTest, ExceptionsFailTheActionWithTheirMessage) {
  const struct {
    const char* Message;
    TDeed Deed;
  } cases[] = {
      {"  3 own", [](TStepAction&) -> bool { throw EFailAction(u"own"); }},
      {"  3 The action failed without a message.", [](TStepAction&) -> bool { throw 1; }},
      {"  3 Unknown name \"zzqqxxyyvv\".",
       [](TStepAction& a) { return a.ExpandExpression(u"%zzqqxxyyvv%").empty(); }},
  };
  Add(u"a", nullptr, Succeed);
  for (const auto& row : cases) {
    TStepAction::Deeds().at(u"a") = row.Deed;
    EXPECT_THAT(Host.Run(), ElementsAre("a {", row.Message, "} False"));
  }
}

TEST_F(RunTest, GroupsLeftOpenAreClosedAndForeignOnesStay) {
  TActionNode& loop = AddLoop({u"x"});
  Add(u"a", &loop, [](TStepAction& a) {
    a.EndMessageGroup(TStatusTag::stSuccess); // none of its own is open
    a.StartMessageGroup(u"one");
    a.StartMessageGroup(u"two");
    a.SendMessage(u"in", TStatusTag::stWarning);
    a.EndMessageGroup(TStatusTag::stSuccess);
    a.StartMessageGroup(u"three");
    return true;
  });
  Add(u"b", nullptr, [](TStepAction& a) -> bool {
    a.StartMessageGroup(u"four");
    throw EFailAction(u"no");
  });
  EXPECT_THAT(Host.Run(),
              ElementsAre("Loop {", "  a [x] {", "    > one", "      > two", "        2 in", "      < 1",
                          "      > three", "      <", "    <", "  } True", "} True", //
                          "b {", "  > four", "    3 no", "  < 3", "} False"));
}

TEST_F(RunTest, ASecretIsMaskedWhereverATextRepeatsIt) {
  Add(u"a", nullptr, [](TStepAction& a) {
    const std::u16string clear = a.DecryptString(a.EncryptString(u"hush!"));
    EXPECT_EQ(clear, u"hush!");
    a.StartMessageGroup(u"with " + clear);
    a.SendMessage(u"<" + clear + clear + u">");
    return true;
  });
  EXPECT_THAT(Host.Run(), ElementsAre("a {", "  > with ***", "    0 <******>", "  <", "} True"));
}

TEST_F(RunTest, LoopsRunTheirChildrenWithTheLoopVariable) {
  TActionNode& outer = AddLoop({u"1", u"%P%"});
  TActionNode& inner = AddLoop({u"x", u"y"}, &outer);
  static_cast<TLoopAction&>(inner.Action()).SetLoopVariable(u"Q");
  Host.Project().AddAction(u"STEP", &inner).Set(u"Text", u"%P%-$(q)");
  Add(u"after", nullptr, Succeed);
  EXPECT_THAT(Host.Run(),
              ElementsAre("Loop {", "  Loop [1] {", "    Step [x] {", "      0 1-x", "    } True",
                          "    Step [y] {", "      0 1-y", "    } True", "  } True", "  Loop [%P%] {",
                          "    Step [x] {", "      0 %P%-x", "    } True", "    Step [y] {", "      0 %P%-y",
                          "    } True", "  } True", "} True", "after {", "} True"));
}

TEST_F(RunTest, ALoopVariableLivesAsLongAsItsLoop) {
  const TDeed say = [](TStepAction& a) {
    a.SendMessage(a.ExpandExpression(u"%Both%"));
    return true;
  };
  const struct {
    const char* What;
    TDeed LastChild; // of the inner loop
    std::vector<std::string> Said;
  } cases[] = {
      {"to its end", Succeed, {"command line", "inner", "outer", "command line"}},
      {"a failure", Fail, {"command line", "inner", "The action failed without a message.", "command line"}},
      {"an exception",
       [](TStepAction&) -> bool { throw EFailAction(u"no"); },
       {"command line", "inner", "no", "command line"}},
  };
  Add(u"before", nullptr, say);
  TActionNode& outer = AddLoop({u"outer"});
  TActionNode& inner = AddLoop({u"inner"}, &outer);
  static_cast<TLoopAction&>(outer.Action()).SetLoopVariable(u"Both");
  static_cast<TLoopAction&>(inner.Action()).SetLoopVariable(u"BOTH");
  outer.SetOnFailure(TOnFailure::Continue);
  Add(u"inside", &inner, say);
  Add(u"last", &inner, Succeed);
  Add(u"behind", &outer, say);
  Add(u"after", nullptr, say);
  for (const auto& row : cases) {
    TStepAction::Deeds().at(u"last") = row.LastChild;
    std::vector<std::string> said;
    for (const auto& line : Host.Run())
      if (const auto at = line.find_first_not_of(' '); std::isdigit(line[at]) != 0)
        said.push_back(line.substr(at + 2));
    EXPECT_EQ(said, row.Said) << row.What;
  }
}

TEST_F(RunTest, ALoopThatDoesNothingIsNoSuccess) {
  AddLoop({});
  EXPECT_THAT(Host.Run(),
              ElementsAre("Loop {",
                          "  3 The loop has no pass: there is nothing to go through. (rule empty-loop)",
                          "} False"));
  static_cast<TLoopAction&>(Host.Project().FindNamed(u"Loop")->Action()).Values = {u"1", u"2"};
  EXPECT_THAT(Host.Run(),
              ElementsAre("Loop {", "  3 The loop holds no actions: its passes do nothing. (rule empty-loop)",
                          "} False"));
}

TEST_F(RunTest, AFailingChildEndsTheLoop) {
  TActionNode& loop = AddLoop({u"1", u"2", u"3"});
  Add(u"a", &loop, [](TStepAction& a) { return a.GetVariableValue(u"P") != u"2"; });
  Add(u"b", &loop, Succeed);
  EXPECT_THAT(Host.Run(), ElementsAre("Loop {", "  a [1] {", "  } True", "  b [1] {", "  } True", "  a [2] {",
                                      "    3 The action failed without a message.", "  } False", "} False"));
}

TEST_F(RunTest, AStopRequestEndsTheActionAndNothingMoreStarts) {
  Host.Stop.Raise(); // before the run: forgotten
  TActionNode& loop = AddLoop({u"1", u"2"});
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

TEST_F(RunTest, ValidationAsksEveryActionAndRunsNone) {
  TActionNode& loop = AddLoop({});
  Host.Project().AddAction(u"STEP", &loop).SetName(u"nested");
  Host.AddStep(u"throws", u"thrower");
  Host.AddStep(u"fine", u"fine");
  const auto entries = Host.Runner.Validate();
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].Action, u"nested");
  EXPECT_EQ(entries[0].Message, u"A text has not been set");
  EXPECT_EQ(entries[1].Message, u"cannot validate");
  EXPECT_THAT(Host.Sink.Lines, IsEmpty());
}

} // namespace
} // namespace kx::tests
