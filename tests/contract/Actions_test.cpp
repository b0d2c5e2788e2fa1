#include "contract/Iterator.h"
#include "contract/LookAhead.h"
#include "contract/ProcessActions.h"
#include "contract/Services.h"
#include "tests/support/BareAction.h"
#include "tests/support/Failure.h"
#include "tests/support/RecordingHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace kx {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// A tool action whose hooks do what the test says.
class TTool : public tests::TBareAction<TKxExecuteAbstractAction> {
public:
  bool CommandLine = true;

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

class TLoop : public tests::TBareAction<TKxBaseIterator> {
public:
  int Number = 0;
  bool Loaded = true;

protected:
  bool BeforeFirstIteration() override {
    if (Number > 0) SetIterationCount(Number);
    return Loaded;
  }
  std::u16string GetCurrentValue() override { return u"v" + text::FromInteger(GetCurrentIteration()); }
};

class Actions : public testing::Test {
protected:
  tests::TRecordingHost host_;
};

TEST_F(Actions, ExpansionFailuresAreLoggedUnderTheirLabel) {
  TTool tool;
  tool.Attach(host_);
  host_.Variables[u"Empty"] = u"";
  const std::string missing = "3 Field : a value is required.";
  const std::tuple<std::u16string, bool, std::vector<std::string>> cases[] = {
      {u"a", true, {}},
      {u"", true, {missing}},
      {u"%Empty%", true, {missing}},
      {u"%Empty%", false, {}},
      {u"%No%", false, {"3 Field : Unknown name: No"}},
  };
  for (const auto& [text, required, log] : cases) {
    host_.ClearLog();
    std::u16string result;
    EXPECT_EQ(tool.TryExpandExpression(u"Field", text, required, result), log.empty());
    EXPECT_EQ(host_.Log(), log);
  }
}

TEST_F(Actions, RunOneToolAndJudgeItsExitCode) {
  const struct {
    tests::TPlayback Playback;
    bool Succeeds;
    std::string LastLine;
  } cases[] = {
      {{.StdOut = {u"done"}, .ExitCode = 0}, true, "0 done"},
      {{.ExitCode = 3}, false, "3 C:\\bin\\tool.exe returned Error code : 3"},
      {{.ExitCode = ExitCodeTerminated}, false, "3 Action Terminated by User."},
  };
  TTool tool;
  EXPECT_THROW(tool.Execute(), EKxException) << "there is no host";
  tool.Attach(host_);
  host_.Variables[u"ProjectDir"] = u"C:\\project";
  for (const auto& row : cases) {
    host_.Play(row.Playback);
    EXPECT_EQ(tool.Execute(), row.Succeeds);
    EXPECT_EQ(host_.Log().back(), row.LastLine);
    EXPECT_EQ(host_.Runs().back().Parameters, "/nologo /in:\"a b.dll\" /dir:\"C:\\x\\\\\"");
    EXPECT_EQ(host_.Runs().back().Directory, "C:\\project\\work");
  }
  host_.ClearLog();
  tool.CommandLine = false;
  EXPECT_FALSE(tool.Execute());
  EXPECT_THAT(host_.Runs(), IsEmpty());
}

TEST_F(Actions, DynamicPropertiesComeAndGo) {
  TTool tool;
  tool.UnRegisterDynamicProperty(u"A");
  for (const auto* name : {u"A", u"B", u"A"})
    tool.RegisterDynamicProperty(name);
  tool.UnRegisterDynamicProperty(u"A");
  EXPECT_EQ(std::pair(tool.IsDynamicProperty(u"A"), tool.IsDynamicProperty(u"B")), std::pair(false, true));
}

TEST_F(Actions, AGroupThatNobodyClosedFailed) {
  TTool tool;
  tool.Attach(host_);
  { const TKxMessageGroup group(tool, u"a"); }
  { EXPECT_TRUE(TKxMessageGroup(tool, u"b").Close(true)); }
  { TKxMessageGroup(tool, u"c").CloseNormal(); }
  EXPECT_THAT(host_.Log(), ElementsAre("> a", "< 3", "> b", "< 1", "> c", "< 0"));
}

TEST_F(Actions, ALoopSetsItsVariableForEachPassAndEndsAtTheFirstFailureOrAStop) {
  const struct {
    int Passes, FailingPass, StoppedPass;
    bool Loaded, Succeeds;
    std::vector<std::string> Log;
  } cases[] = {
      {3, 0, 0, true, true, {"= Item v1", "= Item v2", "= Item v3"}},
      {3, 2, 0, true, false, {"= Item v1", "= Item v2"}},
      {0, 0, 0, true, true, {"! empty-loop The loop has no pass: there is nothing to go through."}},
      {3, 0, 0, false, false, {}},
      {5, 0, 1, true, false, {"= Item v1", "= Item v2"}},
  };
  for (const auto& row : cases) {
    host_.ClearLog();
    host_.Children = [&](TKxBaseIterator& loop) {
      EXPECT_FALSE(host_.StopRequest.IsRaised()) << "no pass after a stop";
      if (loop.GetCurrentIteration() == row.StoppedPass) host_.StopRequest.Raise();
      return loop.GetCurrentIteration() != row.FailingPass;
    };
    TLoop loop;
    loop.Attach(host_);
    loop.SetLoopVariable(u"Item");
    loop.Number = row.Passes;
    loop.Loaded = row.Loaded;
    EXPECT_EQ(loop.Execute(), row.Succeeds);
    EXPECT_EQ(host_.Log(), row.Log);
    EXPECT_EQ(loop.GetCurrentIteration(), 0);
  }
}

TEST_F(Actions, ALoopVariableThatNoTextCanReadIsFoundBeforehand) {
  const std::pair<std::u16string, std::size_t> cases[] = {
      {u"Item", 0}, {u"", 0},    {u"a.b_1", 0}, {u"\u00C9l\u00E9ment", 0}, {u"azAZ09\u00C0", 0}, {u"a b", 1},
      {u"a-b", 1},  {u"%a%", 1}, {u" a", 1},    {u"a\u00BF", 1},
  };
  for (const auto& [name, entries] : cases) {
    TLoop loop;
    loop.SetLoopVariable(name);
    tests::TRecordingValidation errors;
    loop.LookAhead(errors);
    EXPECT_EQ(errors.Entries.size(), entries) << text::ToUtf8(name);
  }
  EXPECT_FALSE(IsVariableName(u""));
}

TEST_F(Actions, ValuesStandInQuotesWhereTheyMust) {
  const std::tuple<TCommandLineOption, std::u16string_view, std::u16string_view> cases[] = {
      {TCommandLineOption::Plain, u"a b\\", u"/x /s:a b\\"},
      {TCommandLineOption::QuoteValue, u"a", u"/x /s:a"},
      {TCommandLineOption::QuoteValue, u"a b", u"/x /s:\"a b\""},
      {TCommandLineOption::QuoteValue, u"a\\", u"/x /s:\"a\\\\\""},
      {TCommandLineOption::QuoteValue, u"", u"/x /s:"},
  };
  TKxCommandLineBuilder builder;
  for (const auto& [option, value, text] : cases) {
    builder.Reset(0);
    builder.Add(u"/x", u"", TCommandLineOption::QuoteValue);
    builder.Add(u"/s:", value, option);
    EXPECT_EQ(builder.Text(), text);
  }
}

TEST_F(Actions, TellTheirHostWhatTheyDo) {
  TTool tool;
  EXPECT_EQ(tool.GetDescription(), u"Bare");
  tool.Attach(host_);
  tool.SendMetricInt(u"Tests", u"Passed", 3);
  tool.SendMetricString(u"Tests", u"Name", u"x");
  tool.StartConfiguration(u"Release");
  tool.EndConfiguration(TKxOutcome::koSucceeded);
  tool.StartProject(u"a.csproj");
  tool.EndProject(u"a.csproj", false);
  host_.Play({.StdOut = {u"out"}, .ExitCode = 1, .StdErr = {u"err"}});
  EXPECT_FALSE(tool.Execute());
  EXPECT_THAT(host_.Log(),
              ElementsAre("# Tests Passed 3", "# Tests Name x", "[ Release", "] 0",
                          "0 Running C:\\bin\\tool.exe with parameters : /nologo /in:\"a b.dll\" "
                          "/dir:\"C:\\x\\\\\"",
                          "$ tool.exe", "0 out", "0 err", "3 C:\\bin\\tool.exe returned Error code : 1"));
  EXPECT_THAT(host_.Projects, ElementsAre("> a.csproj", "! a.csproj"));
  EXPECT_EQ(tool.DecryptString(tool.EncryptString(u"s")), u"s");
  EXPECT_EQ(tool.FullProjectPath(u"C:\\a"), u"C:\\a");
}

TEST(AskingScope, GivesWhatWasReadLastForTheSameKey) {
  int reads = 0;
  const auto read = [&reads](const std::u16string& key) {
    return *std::static_pointer_cast<int>(
        TKxAskingScope::Read(key, [&reads] { return std::make_shared<int>(++reads); }));
  };
  EXPECT_EQ(read(u"a") * 10 + read(u"a"), 12) << "without a scope each is read";
  const TKxAskingScope outer;
  EXPECT_EQ(read(u"a") * 10 + read(u"a"), 33);
  {
    const TKxAskingScope inner;
    EXPECT_EQ(read(u"a") * 100 + read(u"b") * 10 + read(u"a"), 456);
    EXPECT_THROW(TKxAskingScope::Read(u"c", []() -> std::shared_ptr<void> { throw EKxException(u"no"); }),
                 EKxException);
    EXPECT_EQ(read(u"a"), 7) << "what raised is no answer to anything";
  }
  EXPECT_EQ(read(u"a"), 3);
}

TEST(Services, AMissingOneIsNamed) {
  SetServices({});
  EXPECT_EQ(tests::FailureOf([] { OptionsService(); }), "This host offers no options service.");
}

} // namespace
} // namespace kx
