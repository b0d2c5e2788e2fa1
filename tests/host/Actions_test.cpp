#include "host/Iterator.h"
#include "host/ProcessActions.h"
#include "host/Services.h"
#include "tests/support/RecordingHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kx {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A tool action whose hooks do what the test says.
class TTool : public TKxExecuteAbstractAction {
public:
  bool CommandLine = true;
  const TKxPropertyTable& PublishedProperties() const override {
    static const TKxPropertyTable none;
    return none;
  }
  std::u16string GetActionName() const override { return u"Tool"; }

protected:
  std::u16string GetExecutable() override { return u"C:\\bin\\tool.exe"; }
  bool GetStartingDir(std::u16string& folder) override {
    folder = u"work";
    return true;
  }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    builder.Reset(0);
    builder.Add(u"/nologo", u"", TCommandLineOption::Plain);
    builder.Add(u"/in:", u"a b.dll", TCommandLineOption::QuoteValue);
    builder.Add(u"/dir:", u"C:\\x\\", TCommandLineOption::QuoteValue);
    return CommandLine;
  }
};

class TLoop : public TKxBaseIterator {
public:
  int Passes = 0;
  bool Loaded = true;
  const TKxPropertyTable& PublishedProperties() const override {
    static const TKxPropertyTable none;
    return none;
  }
  std::u16string GetActionName() const override { return u"Loop"; }

protected:
  bool BeforeFirstIteration() override {
    SetIterationCount(Passes);
    return Loaded;
  }
  std::u16string GetCurrentValue() override {
    return u"v" + std::u16string(1, static_cast<char16_t>(u'0' + GetCurrentIteration()));
  }
};

class Actions : public testing::Test {
protected:
  tests::TRecordingHost host_;
};

TEST_F(Actions, ExpansionFailuresAreLoggedUnderTheirLabel) {
  TTool tool;
  tool.Attach(host_);
  host_.Variables[u"Empty"] = u"";
  struct TCase {
    std::u16string Text;
    bool Required;
    bool Succeeds;
    std::vector<std::string> Log;
  };
  const TCase cases[] = {
      {u"a", true, true, {}},
      {u"", true, false, {"3 Field : a value is required."}},
      {u"%Empty%", true, false, {"3 Field : a value is required."}},
      {u"%Empty%", false, true, {}},
      {u"%No%", false, false, {"3 Field : Unknown name: No"}},
  };
  for (const auto& row : cases) {
    host_.ClearLog();
    std::u16string result;
    EXPECT_EQ(tool.TryExpandExpression(u"Field", row.Text, row.Required, result), row.Succeeds);
    EXPECT_EQ(host_.Log(), row.Log);
  }
}

TEST_F(Actions, RunOneToolAndJudgeItsExitCode) {
  struct TCase {
    tests::TPlayback Playback;
    bool Succeeds;
    std::string LastLine;
  };
  const TCase cases[] = {
      {{.StdOut = {u"done"}, .ExitCode = 0}, true, "0 done"},
      {{.ExitCode = 3}, false, "3 C:\\bin\\tool.exe returned Error code : 3"},
      {{.ExitCode = ExitCodeTerminated}, false, "3 Action Terminated by User."},
  };
  for (const auto& row : cases) {
    TTool tool;
    tool.Attach(host_);
    host_.Variables[u"ProjectDir"] = u"C:\\project";
    host_.Play(row.Playback);
    EXPECT_EQ(tool.Execute(), row.Succeeds);
    EXPECT_EQ(host_.Log().back(), row.LastLine);
    EXPECT_EQ(host_.Runs().back().Parameters, "/nologo /in:\"a b.dll\" /dir:\"C:\\x\\\\\"");
    EXPECT_EQ(host_.Runs().back().Directory, "C:\\project\\work");
  }
}

TEST_F(Actions, WithoutACommandLineNothingIsRun) {
  TTool tool;
  tool.Attach(host_);
  tool.CommandLine = false;
  EXPECT_FALSE(tool.Execute());
  EXPECT_THAT(host_.Runs(), IsEmpty());
}

TEST_F(Actions, WithoutAHostNothingCanBeDone) {
  TTool tool;
  EXPECT_THROW(tool.Execute(), EKxException);
}

TEST_F(Actions, AGroupThatNobodyClosedFailed) {
  TTool tool;
  tool.Attach(host_);
  { const TKxMessageGroup group(tool, u"a"); }
  { EXPECT_TRUE(TKxMessageGroup(tool, u"b").Close(true)); }
  { TKxMessageGroup(tool, u"c").CloseNormal(); }
  EXPECT_THAT(host_.Log(), ElementsAre("> a", "< 3", "> b", "< 1", "> c", "< 0"));
}

TEST_F(Actions, ALoopSetsItsVariableForEachPassAndEndsAtTheFirstFailure) {
  struct TCase {
    int Passes;
    int FailingPass;
    bool Loaded;
    bool Succeeds;
    std::vector<std::string> Log;
  };
  const TCase cases[] = {
      {3, 0, true, true, {"= Item v1", "= Item v2", "= Item v3"}},
      {3, 2, true, false, {"= Item v1", "= Item v2"}},
      {0, 0, true, true, {"! empty-loop The loop has no pass: there is nothing to go through."}},
      {3, 0, false, false, {}},
  };
  for (const auto& row : cases) {
    host_.ClearLog();
    host_.Children = [&row](TKxBaseIterator& loop) { return loop.GetCurrentIteration() != row.FailingPass; };
    TLoop loop;
    loop.Attach(host_);
    loop.SetLoopVariable(u"Item");
    loop.Passes = row.Passes;
    loop.Loaded = row.Loaded;
    EXPECT_EQ(loop.Execute(), row.Succeeds);
    EXPECT_EQ(host_.Log(), row.Log);
    EXPECT_EQ(loop.GetCurrentIteration(), 0);
  }
}

TEST_F(Actions, ALoopVariableThatNoTextCanReadIsFoundBeforehand) {
  const std::pair<std::u16string, std::size_t> cases[] = {
      {u"Item", 0}, {u"", 0},    {u"a.b_1", 0}, {u"\u00C9l\u00E9ment", 0},
      {u"a b", 1},  {u"a-b", 1}, {u"%a%", 1},   {u" a", 1},
  };
  for (const auto& [name, entries] : cases) {
    TLoop loop;
    loop.SetLoopVariable(name);
    tests::TRecordingValidation errors;
    loop.LookAhead(errors);
    EXPECT_EQ(errors.Entries.size(), entries) << text::ToUtf8(name);
  }
}

TEST_F(Actions, AStopRequestEndsALoop) {
  TLoop loop;
  loop.Attach(host_);
  loop.Passes = 5;
  int passes = 0;
  host_.Children = [&](TKxBaseIterator&) {
    ++passes;
    host_.StopRequest.Raise();
    return true;
  };
  EXPECT_FALSE(loop.Execute());
  EXPECT_EQ(passes, 1);
}

TEST(Services, AMissingOneIsNamed) {
  SetServices({});
  try {
    OptionsService();
    FAIL() << "there is no options service";
  } catch (const EKxException& error) {
    EXPECT_EQ(error.Message(), u"This host offers no options service.");
  }
}

} // namespace
} // namespace kx
