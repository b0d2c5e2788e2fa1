#include "tests/mstest/MSTestActionFixture.h"

#include "foundation/platform/Files.h"
#include "foundation/text/CommandLine.h"

namespace kx::tests {
namespace {

struct TCase {
  const char* What;
  TSettings Settings;
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
  const std::string rest = " /resultsfile:TEMP /nologo";
  const TCase cases[] = {
      {"one", {{u"AssemblyFileName", u"%Root%\\a.dll"}}, "/testcontainer:C:\\src\\a.dll" + rest},
      {"two, with a bar",
       {{u"AssemblyFileName", u"C:\\a.dll|C:\\b.dll"}},
       "/testcontainer:C:\\a.dll /testcontainer:C:\\b.dll" + rest},
      {"two lines",
       {{u"AssemblyFileName", u"C:\\a.dll\r\nC:\\b.dll"}},
       "/testcontainer:C:\\a.dll /testcontainer:C:\\b.dll" + rest},
      {"lines and bars, blanks and quotes",
       {{u"AssemblyFileName", u"\"b c.dll\"|a.dll\r\n\r\nd e.dll\r\n"}},
       "/testcontainer:\"b c.dll\" /testcontainer:a.dll /testcontainer:\"d e.dll\"" + rest},
      {"a blank separates on one line",
       {{u"AssemblyFileName", u"C:\\My Tests\\a.dll"}},
       "/testcontainer:C:\\My /testcontainer:Tests\\a.dll" + rest},
      {"but not within quotes",
       {{u"AssemblyFileName", u"\"C:\\My Tests\\a.dll\"|b.dll"}},
       "/testcontainer:\"C:\\My Tests\\a.dll\" /testcontainer:b.dll" + rest},
      {"a line feed alone is a blank",
       {{u"AssemblyFileName", u"a.dll\nb.dll"}},
       "/testcontainer:a.dll /testcontainer:b.dll" + rest},
      {"empty items do not count", {{u"AssemblyFileName", u"|a.dll||"}}, "/testcontainer:a.dll" + rest},
      {"none at all", {}, "3 Test Container File : a value is required."},
      {"an unknown variable", {{u"AssemblyFileName", u"%No%"}}, "3 Test Container File : Unknown name: No"},
  };
  Check(cases);
}

TEST_F(MSTestCommandLine, KeepsTheOrderOfItsSwitches) {
  const TCase cases[] = {
      {"everything, with a metadata file",
       {{u"UseMetadataFile", u"True"},
        {u"MetadataFile", u"%Root%\\all tests.vsmdi"},
        {u"AssemblyFileName", u"ignored.dll"},
        {u"OutputFileName", u"%Root%\\out dir\\"},
        {u"ConfigFileName", u"%Root%\\a.testrunconfig"},
        {u"SpecifyTestList", u"True"},
        {u"TestList", u"one,\"two three\",,four five,"},
        {u"SpecifyTests", u"True"},
        {u"Tests", u"A.B,\"C \"\"D\"\"\""}},
       "/testmetadata:\"C:\\src\\all tests.vsmdi\" /resultsfile:\"C:\\src\\out dir\\\\\" "
       "/runconfig:C:\\src\\a.testrunconfig /testlist:one /testlist:\"two three\" /testlist: /testlist:four "
       "/testlist:five /testlist: /test:A.B /test:\"C \\\"D\\\"\" /nologo"},
      {"tests of containers, no lists",
       {{u"AssemblyFileName", u"a.dll"},
        {u"SpecifyTestList", u"True"},
        {u"TestList", u"%No%"},
        {u"SpecifyTests", u"True"},
        {u"Tests", u"A|B;C,D"},
        {u"ShowBanner", u"True"}},
       "/testcontainer:a.dll /resultsfile:TEMP /test:A|B;C /test:D"},
      {"what is not asked for is not expanded",
       {{u"AssemblyFileName", u"a.dll"}, {u"Tests", u"%No%"}, {u"MetadataFile", u"%No%"}},
       "/testcontainer:a.dll /resultsfile:TEMP /nologo"},
  };
  Check(cases);
}

TEST_F(MSTestCommandLine, StopsAtTheFirstFieldThatCannotBeExpanded) {
  const TSettings meta{{u"UseMetadataFile", u"True"}, {u"MetadataFile", u"m"}};
  const auto with = [&meta](TSettings more) {
    more.insert(more.begin(), meta.begin(), meta.end());
    return more;
  };
  const TCase cases[] = {
      {"no metadata file", {{u"UseMetadataFile", u"True"}}, "3 Test Metadata File : a value is required."},
      {"results", with({{u"OutputFileName", u"%No%"}}), "3 Results File : Unknown name: No"},
      {"configuration", with({{u"ConfigFileName", u"%No%"}}), "3 Run Configuration File : Unknown name: No"},
      {"no lists", with({{u"SpecifyTestList", u"True"}}), "3 Test Lists : a value is required."},
      {"no tests", with({{u"SpecifyTests", u"True"}}), "3 Test Names : a value is required."},
      {"no server", with({{u"PublishMode", u"pbSpecify"}}), "3 Team Server Name : a value is required."},
  };
  Check(cases);
}

TEST_F(MSTestCommandLine, EveryItemArrivesAsOneArgument) {
  const std::u16string hostile[] = {u"a\" /publish:evil \"b", u"end\\", u"two\\\\\" x", u"\ttab",
                                    u"%PATH%&x|y"};
  for (const auto& name : hostile) {
    TKxCommandLineBuilder builder;
    builder.Add(u"/test:", name, TCommandLineOption::QuoteValue);
    const auto arguments = text::SplitCommandLine(builder.Text());
    ASSERT_EQ(arguments.size(), 1U) << text::ToUtf8(builder.Text());
    EXPECT_EQ(arguments[0], u"/test:" + name);
  }
}

TEST_F(MSTestCommandLine, EveryRunHasATemporaryFileOfItsOwnThatDoesNotExistYet) {
  Set({{u"AssemblyFileName", u"a.dll"}});
  std::vector<std::string> names;
  for (int run = 0; run < 2; ++run) {
    action_.Execute();
    const auto arguments = text::SplitCommandLine(text::FromUtf8(host_.Runs().back().Parameters));
    const std::u16string file = arguments[1].substr(std::u16string_view(u"/resultsfile:").size());
    EXPECT_TRUE(file.starts_with(platform::TemporaryDirectory())) << text::ToUtf8(file);
    EXPECT_FALSE(platform::FileExists(file));
    names.push_back(text::ToUtf8(file));
  }
  EXPECT_NE(names[0], names[1]);
}

// What the action publishes for these variables and settings.
struct TPublishCase {
  const char* What;
  std::vector<std::u16string> Variables;
  TSettings Settings;
  std::string Switches;
  std::vector<std::string> Log; // between the start and the run
};

TEST_F(MSTestCommandLine, PublishesToTeamBuild) {
  const std::string warning = "2 Warning : It appears that this project is running under Team Build, but not "
                              "all Team Build parameters are available";
  const std::vector<std::u16string> all{u"_envTeamServer", u"_envTeamProject", u"_envTeamBuildId",
                                        u"_envBuildPlatform", u"_envBuildFlavor"};
  const TPublishCase cases[] = {
      {"not under Team Build", {}, {}, "", {}},
      {"half under Team Build", {all[0]}, {}, "", {warning}},
      {"all but one", {all[1], all[2], all[3], all[4]}, {}, "", {warning}},
      {"under Team Build",
       all,
       {},
       " /publish:<_envTeamServer> /teamproject:<_envTeamProject> /publishbuild:<_envTeamBuildId> "
       "/flavor:<_envBuildFlavor> /platform:<_envBuildPlatform>",
       {"0 Results will be published to Team Project <_envTeamProject> on <_envTeamServer>, Build Id "
        "<_envTeamBuildId> (<_envBuildFlavor>/<_envBuildPlatform>)"}},
      {"never", all, {{u"PublishMode", u"pbNone"}}, "", {}},
      {"to a build of one's own",
       all,
       {{u"PublishMode", u"pbSpecify"},
        {u"TeamServer", u"http://tfs:8080"},
        {u"TeamProject", u"My %Root%"},
        {u"BuildId", u"7"}},
       " /publish:http://tfs:8080 /teamproject:\"My C:\\src\" /publishbuild:7 /flavor:Tandemor "
       "/platform:\"Any CPU\"",
       {"0 Results will be published to Team Project My C:\\src on http://tfs:8080, Build Id 7 "
        "(Tandemor/Any CPU)"}},
      {"without a flavour", {}, {{u"BuildFlavor", u""}}, "none", {"3 Build Flavor : a value is required."}},
  };
  for (const auto& row : cases) { // settings go on from the row before
    host_.ClearLog();
    host_.Variables = {{u"Root", u"C:\\src"}};
    for (const auto& name : row.Variables)
      host_.Variables[name] = u"<" + name + u">";
    Set({{u"AssemblyFileName", u"a.dll"}});
    Set(row.Settings);
    const std::string parameters = ParametersOf({});
    if (row.Switches != "none") {
      EXPECT_EQ(parameters, "/testcontainer:a.dll /resultsfile:TEMP /nologo" + row.Switches) << row.What;
    }
    for (std::size_t i = 0; i < row.Log.size(); ++i)
      EXPECT_EQ(host_.Log().at(i), row.Log[i]) << row.What;
    const std::string next = host_.Runs().empty() ? "" : host_.Log().at(row.Log.size());
    EXPECT_EQ(next.starts_with("0 Running C:\\VS9\\IDE\\MSTest.exe"), row.Switches != "none") << row.What;
  }
}

} // namespace
} // namespace kx::tests
