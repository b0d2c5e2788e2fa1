#include "contract/LookAhead.h"
#include "tests/mstest/MSTestActionFixture.h"

#include <algorithm>

namespace kx::tests {
namespace {

using testing::ElementsAre;

TEST_F(TMSTestActionTest, EveryPropertyKeepsItsOwnValue) {
  const auto different = [](const TKxPublishedProperty& row) -> std::u16string {
    if (row.Kind == TKxPropertyKind::Boolean) return u"True";
    if (row.Kind == TKxPropertyKind::Enumeration) return std::u16string(row.Enumeration->Values[2]);
    return u"value of " + std::u16string(row.Name);
  };
  for (const auto& row : action_.PublishedProperties().Rows())
    Set({{std::u16string(row.Name), different(row)}});
  for (const auto& row : action_.PublishedProperties().Rows())
    EXPECT_EQ(Get(row.Name), text::ToUtf8(different(row)));
}

TEST_F(TMSTestActionTest, ANewActionTakesAVersionThatHasMSTest) {
  using enum TVSDotNetVersion;
  const std::pair<TVSDotNetVersion, TVSDotNetVersion> cases[] = {
      {vs2002, vs2005}, {vs2003, vs2005}, {vs2005, vs2005}, {vs2008, vs2008}, {vs2010, vs2010}};
  for (const auto& [preferred, taken] : cases) {
    VSDotNetOptions()->SetDefaultVSVersion(preferred);
    TKxMSTestAction action;
    EXPECT_EQ(action.RunSettings().VisualStudioVer, taken) << static_cast<int>(preferred);
  }
}

TEST(MSTestAction, WithoutOptionsItIsMadeAndRefused) {
  const TKxMSTestAction made;
  TRecordingHost host;
  TKxMSTestAction action;
  action.Attach(host);
  action.Input().AssemblyFileName = u"a.dll";
  TRecordingValidation errors;
  EXPECT_FALSE(action.Validate(errors));
  EXPECT_THAT(errors.Entries,
              ElementsAre("VisualStudio.NET Options: Path to Visual Studio.NET 2005 not set"));
}

TEST_F(TMSTestActionTest, DescribesItselfByWhatItTests) {
  action_.SetDescription(u"Nightly tests");
  Set({{u"AssemblyFileName", u"%Root%\\Tests.dll"}, {u"MetadataFile", u"All.vsmdi"}});
  EXPECT_EQ(action_.GetFormattedDescription(), u"Run MSTest [ %Root%\\Tests.dll ]");
  Set({{u"UseMetadataFile", u"True"}});
  EXPECT_EQ(action_.GetFormattedDescription(), u"Run MSTest [ All.vsmdi ]");
}

TEST_F(TMSTestActionTest, ValidatesTheTextsAsTheyAreWritten) {
  struct TCase {
    const char* What;
    TSettings Settings;
    std::vector<std::string> Entries;
  };
  const std::string noContainer = "Assembly Filename: Assembly Filename is blank";
  const TCase cases[] = {
      {"a new action", {}, {noContainer}},
      {"an unknown variable is no business of the validation", {{u"AssemblyFileName", u"%No%"}}, {}},
      {"a version that is not installed",
       {{u"VisualStudioVer", u"vs2010"}},
       {"VisualStudio.NET Options: Path to Visual Studio.NET 2010 not set [options]"}},
      {"no stand-alone MSTest",
       {{u"UseStandaloneMSTest", u"True"}},
       {"Standalone MSTest Path: No path to a standalone MSTest installation was found [options]"}},
      {"a metadata file is asked for, containers do not count",
       {{u"UseMetadataFile", u"True"}},
       {"Standalone MSTest Path: No path to a standalone MSTest installation was found [options]",
        "Metadata File: A metadata file must be specified."}},
      {"a metadata file is there",
       {{u"UseStandaloneMSTest", u"False"},
        {u"VisualStudioVer", u"vs2008"},
        {u"AssemblyFileName", u""},
        {u"MetadataFile", u" "}},
       {}},
  };
  for (const auto& row : cases) { // each goes on from the one before
    Set(row.Settings);
    TRecordingValidation errors;
    EXPECT_EQ(action_.Validate(errors), row.Entries.empty()) << row.What;
    EXPECT_EQ(errors.Entries, row.Entries) << row.What;
  }
}

TEST_F(TMSTestActionTest, RunsTheMSTestOfTheVersionOrTheStandaloneOne) {
  VSDotNetOptions()->SetDevEnv2010Location(u" D:\\VS10\\ ");
  VSDotNetOptions()->SetStandaloneMSTestDir(u"E:\\MSTest");
  const std::pair<TSettings, std::string> cases[] = {
      {{{u"AssemblyFileName", u"a.dll"}}, "C:\\VS9\\IDE\\MSTest.exe"},
      {{{u"VisualStudioVer", u"vs2010"}}, "D:\\VS10\\MSTest.exe"},
      {{{u"VisualStudioVer", u"vs2005"}}, ""},
      {{{u"UseStandaloneMSTest", u"True"}}, "E:\\MSTest\\MSTest.exe"},
  };
  for (const auto& [settings, executable] : cases) {
    Set(settings);
    action_.Execute();
    EXPECT_EQ(host_.Runs().back().Executable, executable);
  }
}

TEST_F(TMSTestActionTest, RunsInTheFolderOfWhatItTests) {
  const TTemporaryFolder folder;
  for (const auto* name : {"project/sub/x", "bin/x", "other/x", "My Tests/x"})
    folder.Write(name);
  host_.Variables[u"Root"] = folder.Path();
  host_.Variables[u"ProjectDir"] = folder.Path("project");
  struct TCase {
    const char* What;
    TSettings Settings;
    std::string Directory;
  };
  const TCase cases[] = {
      {"a container", {{u"AssemblyFileName", u"%Root%/bin/a.dll"}}, "DIR/bin/"},
      {"a name alone", {{u"AssemblyFileName", u"a.dll"}}, "DIR/project"},
      {"a relative path", {{u"AssemblyFileName", u"sub/a.dll"}}, "DIR/project/sub/"},
      {"semicolons separate", {{u"AssemblyFileName", u"%Root%/bin/1.dll;%Root%/other/2.dll"}}, "DIR/bin/"},
      {"bars too", {{u"AssemblyFileName", u"%Root%/bin/1.dll|%Root%/other/2.dll"}}, "DIR/bin/"},
      {"lines too", {{u"AssemblyFileName", u"%Root%/other/1.dll\r\n%Root%/bin/2.dll"}}, "DIR/other/"},
      {"a blank ends the first", {{u"AssemblyFileName", u"%Root%/My Tests/a.dll"}}, "DIR/"},
      {"quotes keep it whole", {{u"AssemblyFileName", u"\"%Root%/My Tests/a.dll\"|b.dll"}}, "DIR/My Tests/"},
      {"an empty first item", {{u"AssemblyFileName", u";%Root%/bin/2.dll"}}, "DIR/project"},
      {"a folder that is not there", {{u"AssemblyFileName", u"%Root%/gone/a.dll"}}, "DIR/project"},
      {"a metadata file",
       {{u"UseMetadataFile", u"True"}, {u"MetadataFile", u"%Root%/My Tests/all.vsmdi"}},
       "DIR/My Tests/"},
      {"its own", {{u"StartingDirectory", u"%Root%"}}, "DIR"},
  };
  for (const auto& row : cases) { // each goes on from the one before
    Set(row.Settings);
    host_.ClearLog();
    action_.Execute();
    EXPECT_EQ(folder.Plain(host_.Runs().back().Directory), row.Directory) << row.What;
    const bool isWarned = host_.Log().front().starts_with("2 Warning : there is no folder ");
    EXPECT_EQ(isWarned, std::string_view(row.What) == "a folder that is not there") << row.What;
  }
  host_.ClearLog();
  Set({{u"StartingDirectory", u"%No%"}});
  EXPECT_FALSE(action_.Execute());
  EXPECT_THAT(host_.Log(), ElementsAre("3 Starting Directory : Unknown name: No"));
}

TEST_F(TMSTestActionTest, MissesWhatNothingBeforeItMakes) {
  struct TForeseen : TRecordingValidation, IKxForeseenRun {
    bool Builds = false;
    bool MayMakeFilesBefore() const override { return Builds; }
  };
  const TTemporaryFolder folder;
  folder.Write("tool/MSTest.exe");
  folder.Write("here.dll");
  folder.Write("bin/there.dll");
  host_.Variables[u"ProjectDir"] = folder.Path();
  VSDotNetOptions()->SetDevEnv2008Location(folder.Path("tool"));
  Set({{u"AssemblyFileName", u"here.dll|there.dll|gone.dll"}});
  for (const bool builds : {false, true})
    for (const auto& [start, missed] : {std::pair(u"", 2U), std::pair(u"bin", 1U), std::pair(u"lost", 3U)}) {
      Set({{u"StartingDirectory", start}});
      TForeseen errors;
      errors.Builds = builds;
      action_.LookAhead(errors);
      EXPECT_EQ(errors.Entries.size(), builds ? 0U : missed);
      for (const auto& entry : errors.Entries)
        EXPECT_THAT(folder.Plain(entry),
                    testing::AnyOf("Starting Directory: There is no folder DIR/lost.",
                                   testing::StartsWith("Assembly Filename: There is no file DIR/")));
    }
}

TEST_F(TMSTestActionTest, LooksAheadForWhatARunWouldMiss) {
  const TTemporaryFolder folder;
  folder.Write("tool/MSTest.exe");
  folder.Write("all.vsmdi");
  host_.Variables = {{u"ProjectDir", folder.Path()}, {u"Empty", u""}};
  VSDotNetOptions()->SetDevEnv2008Location(folder.Path("tool"));
  VSDotNetOptions()->SetDevEnv2010Location(folder.Path("no tool"));
  struct TCase {
    const char* What;
    TSettings Settings;
    std::vector<std::string> Entries;
  };
  const TCase cases[] = {
      {"nothing", {{u"AssemblyFileName", u"a.dll"}}, {}},
      {"what only a run knows", {{u"AssemblyFileName", u"%Loop%"}, {u"ConfigFileName", u"%Loop%"}}, {}},
      {"a tool that is not there",
       {{u"VisualStudioVer", u"vs2010"}},
       {"VisualStudio.NET Options: There is no DIR/no tool/MSTest.exe. [options]"}},
      {"texts that come out empty",
       {{u"VisualStudioVer", u"vs2008"},
        {u"AssemblyFileName", u"%Empty%"},
        {u"ConfigFileName", u"%Empty%"},
        {u"SpecifyTests", u"True"}},
       {"Assembly Filename: A value is required.", "Tests: A value is required."}},
      {"files that are not there",
       {{u"AssemblyFileName", u"a.dll"}, {u"Tests", u"A"}, {u"ConfigFileName", u"no.testrunconfig"}},
       {"Run Configuration File: There is no file DIR/no.testrunconfig."}},
      {"a metadata file, but no lists and no build",
       {{u"ConfigFileName", u""},
        {u"UseMetadataFile", u"True"},
        {u"MetadataFile", u"all.vsmdi"},
        {u"SpecifyTestList", u"True"},
        {u"PublishMode", u"pbSpecify"},
        {u"TeamServer", u"s"},
        {u"TeamProject", u"p"}},
       {"Test List: A value is required.", "Team Build Id: A value is required."}},
      {"an empty metadata file",
       {{u"MetadataFile", u"%Empty%"}, {u"TestList", u"a"}, {u"BuildId", u"1"}},
       {"Metadata File: A value is required."}},
      {"no metadata file",
       {{u"MetadataFile", u"no.vsmdi"}},
       {"Metadata File: There is no file DIR/no.vsmdi."}},
  };
  for (const auto& row : cases) { // each goes on from the one before
    Set(row.Settings);
    TRecordingValidation errors;
    action_.LookAhead(errors);
    for (auto& entry : errors.Entries) {
      entry = folder.Plain(entry);
      std::ranges::replace(entry, '\\', '/'); // the system's own separator
    }
    EXPECT_EQ(errors.Entries, row.Entries) << row.What;
  }
  EXPECT_TRUE(host_.Log().empty());
}

} // namespace
} // namespace kx::tests
