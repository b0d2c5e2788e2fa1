#include "tests/mstest/MSTestActionFixture.h"

#include "foundation/platform/Files.h"
#include "foundation/text/CommandLine.h"
#include "tests/support/Properties.h"

#include <set>

namespace kx::tests {
namespace {

struct TCase {
  const char* What;
  std::u16string Settings;
  std::string Parameters; // or the last line of the log where nothing was run
};

class MSTestCommandLine : public TMSTestActionTest {
protected:
  MSTestCommandLine() { host_.Variables[u"Root"] = u"C:\\src"; }

  // Each case has an action of its own.
  void Check(std::span<const TCase> cases) {
    for (const auto& row : cases) {
      host_.ClearLog();
      action_.Input() = {};
      action_.RunSettings() = {};
      action_.PublishMode() = TMSTestPublishMode::pbAuto;
      EXPECT_EQ(ParametersOf(row.Settings), row.Parameters) << row.What;
    }
  }
};

TEST_F(MSTestCommandLine, NamesTheContainers) {
  const std::string rest = " /resultsfile:TEMP /nologo",
                    two = "/testcontainer:C:\\a.dll /testcontainer:C:\\b.dll";
  const std::tuple<const char*, std::u16string, std::string> cases[] = {
      {"one", u"%Root%\\a.dll", "/testcontainer:C:\\src\\a.dll"},
      {"two, with a bar", u"C:\\a.dll|C:\\b.dll", two},
      {"two lines", u"C:\\a.dll\r\nC:\\b.dll", two},
      {"lines and bars, blanks and quotes", u"\"b c.dll\"|a.dll\r\n\r\nd e.dll\r\n",
       "/testcontainer:\"b c.dll\" /testcontainer:a.dll /testcontainer:\"d e.dll\""},
      {"a blank separates on one line", u"C:\\My Tests\\a.dll",
       "/testcontainer:C:\\My /testcontainer:Tests\\a.dll"},
      {"but not within quotes", u"\"C:\\My Tests\\a.dll\"|b.dll",
       "/testcontainer:\"C:\\My Tests\\a.dll\" /testcontainer:b.dll"},
      {"a line feed alone is a blank", u"C:\\a.dll\nC:\\b.dll", two},
      {"empty items do not count", u"|C:\\a.dll||C:\\b.dll|", two},
  };
  for (const auto& [what, names, containers] : cases) {
    host_.ClearLog();
    EXPECT_EQ(ParametersOf(u"AssemblyFileName=" + names), containers + rest) << what;
  }
}

TEST_F(MSTestCommandLine, KeepsTheOrderOfItsSwitches) {
  const TCase cases[] = {
      {"everything, with a metadata file",
       u"UseMetadataFile=True~MetadataFile=%Root%\\all tests.vsmdi~AssemblyFileName=ignored.dll~"
       u"OutputFileName=%Root%\\out dir\\~ConfigFileName=%Root%\\a.testrunconfig~SpecifyTestList=True~"
       u"TestList=one,\"two three\",,four five,~SpecifyTests=True~Tests=A.B,\"C \"\"D\"\"\"",
       "/testmetadata:\"C:\\src\\all tests.vsmdi\" /resultsfile:\"C:\\src\\out dir\\\\\" "
       "/runconfig:C:\\src\\a.testrunconfig /testlist:one /testlist:\"two three\" /testlist: /testlist:four "
       "/testlist:five /testlist: /test:A.B /test:\"C \\\"D\\\"\" /nologo"},
      {"tests of containers, no lists",
       u"AssemblyFileName=a.dll~SpecifyTestList=True~TestList=%No%~SpecifyTests=True~Tests=A|B;C,D~"
       u"ShowBanner=True",
       "/testcontainer:a.dll /resultsfile:TEMP /test:A|B;C /test:D"},
      {"what is not asked for is not expanded", u"AssemblyFileName=a.dll~Tests=%No%~MetadataFile=%No%",
       "/testcontainer:a.dll /resultsfile:TEMP /nologo"},
  };
  Check(cases);
}

TEST_F(MSTestCommandLine, StopsAtTheFirstFieldThatCannotBeExpanded) {
  const std::u16string meta = u"UseMetadataFile=True~MetadataFile=m~";
  const TCase cases[] = {
      {"no container", u"", "3 Test Container File : a value is required."},
      {"a container", u"AssemblyFileName=%No%", "3 Test Container File : Unknown name: No"},
      {"no metadata file", u"UseMetadataFile=True", "3 Test Metadata File : a value is required."},
      {"results", meta + u"OutputFileName=%No%", "3 Results File : Unknown name: No"},
      {"configuration", meta + u"ConfigFileName=%No%", "3 Run Configuration File : Unknown name: No"},
      {"no lists", meta + u"SpecifyTestList=True", "3 Test Lists : a value is required."},
      {"no tests", meta + u"SpecifyTests=True", "3 Test Names : a value is required."},
      {"no server", meta + u"PublishMode=pbSpecify", "3 Team Server Name : a value is required."},
  };
  Check(cases);
}

TEST_F(MSTestCommandLine, EveryRunHasATemporaryFileOfItsOwnThatDoesNotExistYet) {
  Set(u"AssemblyFileName=a.dll");
  std::set<std::u16string> names;
  for (int run = 0; run < 2; ++run) {
    action_.Execute();
    const auto arguments = text::SplitCommandLine(text::FromUtf8(host_.Runs().back().Parameters));
    const std::u16string file = arguments[1].substr(std::u16string_view(u"/resultsfile:").size());
    EXPECT_TRUE(file.starts_with(platform::TemporaryDirectory())) << text::ToUtf8(file);
    EXPECT_TRUE(!platform::FileExists(file) && names.insert(file).second);
  }
}

TEST_F(MSTestCommandLine, PublishesToTeamBuild) {
  const std::string warning = "2 Warning : It appears that this project is running under Team Build, but not "
                              "all Team Build parameters are available";
  const std::string run = "/testcontainer:a.dll /resultsfile:TEMP /nologo";
  const std::u16string others = u"_envTeamProject _envTeamBuildId _envBuildPlatform _envBuildFlavor";
  const std::u16string all = others + u" _envTeamServer";
  const struct {
    const char* What;
    std::u16string Variables, Settings;
    std::string Parameters, Log; // the first line, where it is not that of the run
  } cases[] = {
      {"not under Team Build", u"", u"", run, ""},
      {"half under Team Build", u"_envTeamServer", u"", run, warning},
      {"all but one", others, u"", run, warning},
      {"under Team Build", all, u"",
       run + " /publish:<_envTeamServer> /teamproject:<_envTeamProject> /publishbuild:<_envTeamBuildId> "
             "/flavor:<_envBuildFlavor> /platform:<_envBuildPlatform>",
       "0 Results will be published to Team Project <_envTeamProject> on <_envTeamServer>, Build Id "
       "<_envTeamBuildId> (<_envBuildFlavor>/<_envBuildPlatform>)"},
      {"never", all, u"PublishMode=pbNone", run, ""},
      {"to a build of one's own", all,
       u"PublishMode=pbSpecify~TeamServer=http://tfs:8080~TeamProject=My %Root%~BuildId=7",
       run + " /publish:http://tfs:8080 /teamproject:\"My C:\\src\" /publishbuild:7 /flavor:Tandemor "
             "/platform:\"Any CPU\"",
       "0 Results will be published to Team Project My C:\\src on http://tfs:8080, Build Id 7 "
       "(Tandemor/Any CPU)"},
      {"without a flavour", u"", u"BuildFlavor=", "3 Build Flavor : a value is required.", ""},
  };
  for (const auto& row : cases) { // settings go on from the row before
    host_.ClearLog();
    host_.Variables = {{u"Root", u"C:\\src"}};
    for (const auto name : text::Split(row.Variables, u' '))
      host_.Variables.emplace(name, u"<" + std::u16string(name) + u">");
    Set(u"AssemblyFileName=a.dll");
    EXPECT_EQ(ParametersOf(row.Settings), row.Parameters) << row.What;
    const std::string first =
        row.Log.empty() && !host_.Runs().empty() ? "0 Running C:\\VS9\\IDE\\MSTest.exe" : row.Log;
    EXPECT_TRUE(host_.Log().front().starts_with(first)) << row.What;
  }
}

TEST(MSTestProperties, AreEachTheirOwn) {
  EXPECT_EQ(tests::SideEffects<TKxMSTestAction>(), "");
}

} // namespace
} // namespace kx::tests
