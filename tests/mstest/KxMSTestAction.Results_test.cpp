#include "tests/mstest/MSTestActionFixture.h"

#include "platform/Files.h"

namespace kx::tests {
namespace {

using testing::ElementsAre;

constexpr const char* ThreeResults = R"(<TestRun xmlns="urn:results"><Results>
<UnitTestResult testName="A" outcome="Passed" duration="00:00:01.2345678"/>
<UnitTestResult testName="B" outcome="Failed" duration="00:00:00.5"/>
<UnitTestResult testName="C" outcome="NotExecuted"/></Results></TestRun>)";

class MSTestResults : public TMSTestActionTest {
protected:
  MSTestResults() {
    Set({{u"AssemblyFileName", u"a.dll"}, {u"OutputFileName", folder_.Path() + u"/out.trx"}});
  }

  // MSTest writes this and ends so.
  bool Run(const std::string& trx, int exitCode) {
    host_.ClearLog();
    host_.Play({.ExitCode = exitCode, .During = [this, trx] { folder_.Write("out.trx", trx); }});
    return action_.Execute();
  }
  // What followed the run; a run's XML by its length only.
  std::vector<std::string> Outcome() const {
    std::vector<std::string> lines;
    bool ended = false;
    for (const auto& line : host_.Log()) {
      if (ended) lines.push_back(line.substr(0, line.find('<')));
      ended = ended || line == "$ MSTest.exe";
    }
    return lines;
  }

  TTemporaryFolder folder_;
};

std::vector<std::string> Metrics(const std::string& passed, const std::string& failed,
                                 const std::string& time) {
  return {"# Unit_Tests Test_Results ",
          "# Unit_Tests Test_Run_Name Run MSTest",
          "# Unit_Tests Tests_Successful " + passed,
          "# Unit_Tests Tests_Failed " + failed,
          "# Unit_Tests Tests_Not_Run 0",
          "# Unit_Tests Tests_Run_Time " + time};
}

TEST_F(MSTestResults, TheExitCodeAloneDecides) {
  struct TCase {
    const char* What;
    std::string Trx;
    int ExitCode;
    std::vector<std::string> Log;
  };
  const TCase cases[] = {
      {"failed tests, a good exit code", ThreeResults, 0, Metrics("1", "2", "1239")},
      {"a bad exit code", ThreeResults, 1, Metrics("1", "2", "1239")},
      {"a file cut off", std::string(ThreeResults).substr(0, 200), 0, Metrics("0", "0", "0")},
      {"an empty file", "", 0, Metrics("0", "0", "0")},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(Run(row.Trx, row.ExitCode), row.ExitCode == 0) << row.What;
    EXPECT_EQ(Outcome(), row.Log) << row.What;
    EXPECT_TRUE(platform::FileExists(folder_.Path() + u"/out.trx")) << "the user's own file stays";
  }
}

TEST_F(MSTestResults, AMissingFileIsARunWithoutTests) {
  EXPECT_TRUE(action_.Execute());
  EXPECT_EQ(Outcome(), Metrics("0", "0", "0"));
}

TEST_F(MSTestResults, TheRunBearsTheExpandedDescription) {
  host_.Variables[u"Env"] = u"night";
  action_.SetDescription(u"Tests of %Env%");
  Run(ThreeResults, 0);
  EXPECT_EQ(Outcome().at(1), "# Unit_Tests Test_Run_Name Tests of night");
  action_.SetDescription(u"%No%");
  EXPECT_THROW(Run(ThreeResults, 0), EExpressionError);
}

TEST_F(MSTestResults, CountsArePublishedInOnePlace) {
  for (const auto* name :
       {u"_envTeamServer", u"_envTeamProject", u"_envTeamBuildId", u"_envBuildPlatform", u"_envBuildFlavor"})
    host_.Variables[name] = u"x";
  Run(ThreeResults, 0);
  EXPECT_THAT(Outcome(), ElementsAre("# Unit_Tests Test_Results ", "# Unit_Tests Test_Run_Name Run MSTest"));
  Set({{u"PublishMode", u"pbSpecify"}, {u"TeamServer", u"s"}, {u"TeamProject", u"p"}, {u"BuildId", u"b"}});
  Run(ThreeResults, 0);
  EXPECT_EQ(Outcome(), Metrics("1", "2", "1239"));
}

// The results file that MSTest was told of.
std::u16string ResultsFile(const TRun& run) {
  constexpr std::string_view name = "/resultsfile:";
  const std::size_t begin = run.Parameters.find(name) + name.size();
  return text::FromUtf8(run.Parameters.substr(begin, run.Parameters.find(' ', begin) - begin));
}

TEST_F(MSTestResults, ATemporaryFileGoesOnceItWasRead) {
  Set({{u"OutputFileName", u""}});
  host_.Play({.During = [this] {
    ASSERT_TRUE(platform::SaveFile(ResultsFile(host_.Runs().back()), ThreeResults));
  }});
  EXPECT_TRUE(action_.Execute());
  EXPECT_EQ(Outcome(), Metrics("1", "2", "1239"));
  EXPECT_FALSE(platform::FileExists(ResultsFile(host_.Runs().back())));
  // The next run's file is the user's own again.
  Set({{u"OutputFileName", folder_.Path() + u"/out.trx"}});
  Run(ThreeResults, 0);
  EXPECT_TRUE(platform::FileExists(folder_.Path() + u"/out.trx"));
}

TEST_F(MSTestResults, ATemporaryFileStaysWhenItCannotBeInterpreted) {
  TKxMSTestAction action([](std::u16string_view) -> TKxArrayOfMSTestResult {
    throw EKxException(u"The results make no sense.");
  });
  action.Attach(host_);
  action.Input().AssemblyFileName = u"a.dll";
  host_.Play({.During = [this] {
    ASSERT_TRUE(platform::SaveFile(ResultsFile(host_.Runs().back()), ThreeResults));
  }});
  EXPECT_FALSE(action.Execute());
  const std::u16string file = ResultsFile(host_.Runs().back());
  EXPECT_THAT(Outcome(), ElementsAre("3 Could not interpret MSTest results: The results make no sense.",
                                     "3 MSTest test results file: " + text::ToUtf8(file)));
  EXPECT_TRUE(platform::FileExists(file));
  EXPECT_TRUE(platform::RemoveFile(file));
}

TEST_F(MSTestResults, OutputIsPassedOnAndAStopEndsTheAction) {
  host_.Play({.StdOut = {u"Passed  A", u"Failed  B"}, .ExitCode = ExitCodeTerminated});
  EXPECT_FALSE(action_.Execute());
  EXPECT_THAT(Outcome(), ElementsAre("0 Passed  A", "0 Failed  B", "3 Action Terminated by User."));
}

} // namespace
} // namespace kx::tests
