#include "tests/mstest/MSTestActionFixture.h"

#include "foundation/platform/Files.h"
#include "foundation/text/CommandLine.h"
#include "tests/support/DryRun.h"

#include <filesystem>
#include <functional>

namespace kx::tests {
namespace {

using testing::ElementsAre;

constexpr const char* ThreeResults = R"(<TestRun xmlns="urn:results"><Results>
<UnitTestResult testName="A" outcome="Passed" duration="00:00:01.2345678"/>
<UnitTestResult testName="B" outcome="Failed" duration="00:00:00.5"/>
<UnitTestResult testName="C" outcome="NotExecuted"/></Results></TestRun>)";

class MSTestResults : public TMSTestActionTest {
protected:
  MSTestResults() { Set(u"AssemblyFileName=a.dll~OutputFileName=" + folder_.Path() + u"/out.trx"); }

  // MSTest writes this and ends so.
  bool Run(const std::string& trx, int exitCode) {
    host_.ClearLog();
    host_.Play({.ExitCode = exitCode, .During = [this, trx] { folder_.Write("out.trx", trx); }});
    return action_.Execute();
  }
  // What followed the run, without the XML of its tests and with the test's folder as DIR.
  std::vector<std::string> Outcome() const {
    std::vector<std::string> lines;
    bool ended = false;
    for (const auto& line : host_.Log()) {
      if (ended) lines.push_back(folder_.Plain(line.substr(0, line.find('<'))));
      ended = ended || line == "$ MSTest.exe";
    }
    return lines;
  }

  TTemporaryFolder folder_;
  std::filesystem::file_time_type stamp_;
};

std::vector<std::string> Metrics(const std::string& passed, const std::string& failed,
                                 const std::string& time, const std::string& breach = "") {
  std::vector<std::string> lines{"# Unit_Tests Test_Results ",
                                 "# Unit_Tests Test_Run_Name Run MSTest",
                                 "# Unit_Tests Tests_Successful " + passed,
                                 "# Unit_Tests Tests_Failed " + failed,
                                 "# Unit_Tests Tests_Not_Run 0",
                                 "# Unit_Tests Tests_Run_Time " + time};
  if (!breach.empty()) lines.push_back("! " + breach);
  return lines;
}

TEST_F(MSTestResults, TheExitCodeAloneDecides) {
  const std::string noTests =
      "no-tests No test was run: the results file DIR/out.trx holds no result of a unit test.";
  std::vector<std::string> unnamed = Metrics("0", "1", "0");
  unnamed.insert(
      unnamed.begin(),
      "2 Warning : the results file DIR/out.trx holds 1 result without a name, as Visual Studio 2005 writes "
      "them: their tests count as failed. Run the tests with the MSTest of Visual Studio 2008 or later.");
  const std::tuple<const char*, std::string, int, std::vector<std::string>> cases[] = {
      {"failed tests, a good exit code", ThreeResults, 0,
       Metrics("1", "2", "1239", "errors-counted 1 test failed although MSTest ended with exit code 0.")},
      {"a bad exit code", ThreeResults, 1, Metrics("1", "2", "1239")},
      {"tests that were not executed, a good exit code",
       R"(<r><UnitTestResult testName="A" outcome="NotExecuted"/></r>)", 0,
       Metrics("0", "1", "0", "no-tests No test was run: 1 test found, none executed.")},
      {"some tests that were not executed, a good exit code",
       R"(<r><UnitTestResult outcome="NotExecuted" testName="A"/>)"
       R"(<UnitTestResult outcome="Passed" testName="B"/></r>)",
       0, Metrics("1", "1", "0")},
      {"a file cut off", std::string(ThreeResults).substr(0, 200), 0,
       Metrics("0", "0", "0",
               "results-missing The results file DIR/out.trx cannot be read: Couldn't find end of "
               "Start Tag UnitTestResult line 4 (line 4)")},
      {"no tests", "<TestRun/>", 0, Metrics("0", "0", "0", noTests)},
      {"no tests, a bad exit code", "<TestRun/>", 1, Metrics("0", "0", "0", noTests)},
      {"results without names", R"(<Tests><UnitTestResult><testName>A</testName></UnitTestResult></Tests>)",
       1, unnamed},
  };
  for (const auto& [what, trx, exitCode, log] : cases) {
    EXPECT_EQ(Run(trx, exitCode), exitCode == 0) << what;
    EXPECT_EQ(Outcome(), log) << what;
    EXPECT_TRUE(platform::FileExists(folder_.Path() + u"/out.trx")) << "the user's own file stays";
  }
}

TEST_F(MSTestResults, OnlyWhatThisRunHasWrittenCounts) {
  const auto none = [](const std::string& reason) {
    return Metrics("0", "0", "0", "results-missing The results file DIR/out.trx " + reason);
  };
  const auto all = Metrics("1", "2", "1239");
  const auto copyWithItsTimeStamp = [this] {
    std::filesystem::copy(folder_.Native("out.trx"), folder_.Native("copy.trx"));
    std::filesystem::last_write_time(folder_.Native("copy.trx"), stamp_);
    std::filesystem::rename(folder_.Native("copy.trx"), folder_.Native("out.trx"));
  };
  const std::tuple<const char*, std::function<void()>, std::vector<std::string>> cases[] = {
      {"nothing", {}, none("is missing: MSTest has not written it.")},
      {"an older file",
       {},
       none("was there before, and MSTest has not written it: its results are not those of this run.")},
      {"the same content again", [this] { folder_.Write("out.trx", ThreeResults); }, all},
      {"a copy that keeps its time stamp", copyWithItsTimeStamp, all},
  };
  for (const auto& [what, during, log] : cases) {
    host_.ClearLog();
    host_.Play({.ExitCode = 1, .During = during});
    EXPECT_FALSE(action_.Execute());
    EXPECT_EQ(Outcome(), log) << what;
    if (!during && stamp_ != decltype(stamp_)()) {
      EXPECT_EQ(std::filesystem::last_write_time(folder_.Native("out.trx")), stamp_) << "left as it was";
    }
    folder_.Write("out.trx", ThreeResults);
    stamp_ = std::filesystem::last_write_time(folder_.Native("out.trx"));
  }
}

TEST_F(MSTestResults, ADryRunInterpretsNothing) {
  folder_.Write("out.trx", ThreeResults);
  const TFakeDryRun dryRun;
  EXPECT_TRUE(action_.Execute());
  EXPECT_THAT(Outcome(), ElementsAre());
}

// The file that the property names, as MSTest is told of it in its own folder, and where its results are
// read.
TEST_F(MSTestResults, RelativePathsMeanTheProjectsFolder) {
  host_.Variables[u"ProjectDir"] = folder_.Path();
  folder_.Write("bin/a.dll", "");
  folder_.Write("a.testrunconfig", "");
  const std::tuple<const char*, std::u16string, std::string, std::string> cases[] = {
      {"in the project's folder", u"AssemblyFileName=a.dll", "DIR",
       "/testcontainer:a.dll /resultsfile:out.trx"},
      {"a container below it", u"AssemblyFileName=bin/a.dll", "DIR/bin/",
       "/testcontainer:DIR/bin/a.dll /resultsfile:DIR/out.trx"},
      {"a folder of the user's, from which the container is seen",
       u"AssemblyFileName=a.dll~StartingDirectory=bin", "DIR/bin",
       "/testcontainer:a.dll /resultsfile:DIR/out.trx"},
      {"a run configuration", u"ConfigFileName=a.testrunconfig", "DIR/bin",
       "/testcontainer:a.dll /resultsfile:DIR/out.trx /runconfig:DIR/a.testrunconfig"},
  };
  for (const auto& [what, settings, directory, parameters] : cases) { // each goes on from the one before
    Set(u"OutputFileName=out.trx");
    Set(settings);
    Run(ThreeResults, 1);
    EXPECT_EQ(Outcome(), Metrics("1", "2", "1239")) << what;
    EXPECT_EQ(folder_.Plain(host_.Runs().back().Directory), directory) << what;
    EXPECT_EQ(folder_.Plain(host_.Runs().back().Parameters), parameters + " /nologo") << what;
  }
}

class MSTestTemporaryResults : public MSTestResults {
protected:
  MSTestTemporaryResults() { Set(u"OutputFileName="); }

  // Runs an MSTest that writes where it was told to and ends so; that file.
  std::u16string RunInto(TCustomKxAction& action, int exitCode) {
    std::u16string file;
    host_.ClearLog();
    host_.Play({.StdOut = {u"Passed  A"}, .ExitCode = exitCode, .During = [&] {
                  const auto arguments =
                      text::SplitCommandLine(text::FromUtf8(host_.Runs().back().Parameters));
                  file = arguments[1].substr(arguments[1].find(u':') + 1);
                  ASSERT_TRUE(platform::SaveFile(file, ThreeResults));
                }});
    EXPECT_FALSE(action.Execute());
    return file;
  }
};

TEST_F(MSTestTemporaryResults, GoOnceTheyWereRead) {
  for (const int exitCode : {1, ExitCodeTerminated}) {
    EXPECT_FALSE(platform::FileExists(RunInto(action_, exitCode)));
    auto expected = Metrics("1", "2", "1239");
    if (exitCode == ExitCodeTerminated) expected.insert(expected.begin(), "3 Action Terminated by User.");
    expected.insert(expected.begin(), "0 Passed  A");
    EXPECT_EQ(Outcome(), expected);
  }
  // The next run's file is the user's own again.
  Set(u"OutputFileName=" + folder_.Path() + u"/out.trx");
  Run(ThreeResults, 0);
  EXPECT_TRUE(platform::FileExists(folder_.Path() + u"/out.trx"));
}

TEST_F(MSTestTemporaryResults, StayWhenTheyCannotBeInterpreted) {
  TKxMSTestAction action([](std::u16string_view, std::u16string&) -> TKxArrayOfMSTestResult {
    throw EKxException(u"The results make no sense.");
  });
  action.Attach(host_);
  action.Input().AssemblyFileName = u"a.dll";
  const std::u16string file = RunInto(action, 0);
  EXPECT_THAT(Outcome(),
              ElementsAre("0 Passed  A", "3 Could not interpret MSTest results: The results make no sense.",
                          "3 MSTest test results file: " + text::ToUtf8(file)));
  EXPECT_TRUE(platform::RemoveFile(file));
}

TEST_F(MSTestResults, CountsArePublishedInOnePlace) {
  for (const auto* name :
       {u"_envTeamServer", u"_envTeamProject", u"_envTeamBuildId", u"_envBuildPlatform", u"_envBuildFlavor"})
    host_.Variables[name] = u"x";
  Run(ThreeResults, 1);
  EXPECT_THAT(Outcome(), ElementsAre("# Unit_Tests Test_Results ", "# Unit_Tests Test_Run_Name Run MSTest"));
  Set(u"PublishMode=pbSpecify~TeamServer=s~TeamProject=p~BuildId=b");
  Run(ThreeResults, 1);
  EXPECT_EQ(Outcome(), Metrics("1", "2", "1239"));
}

} // namespace
} // namespace kx::tests
