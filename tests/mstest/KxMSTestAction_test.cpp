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
  host_.Variables[u"Root"] = u"C:\\src";
  struct TCase {
    const char* What;
    TSettings Settings;
    std::string Directory;
  };
  const TCase cases[] = {
      {"a container", {{u"AssemblyFileName", u"%Root%\\bin\\a.dll"}}, "C:\\src\\bin\\"},
      {"a name alone", {{u"AssemblyFileName", u"a.dll"}}, ""},
      {"semicolons separate", {{u"AssemblyFileName", u"C:\\a\\1.dll;C:\\b\\2.dll"}}, "C:\\a\\"},
      {"bars do not", {{u"AssemblyFileName", u"C:\\a\\1.dll|C:\\b\\2.dll"}}, "C:\\a\\1.dll|C:\\b\\"},
      {"a blank ends the first", {{u"AssemblyFileName", u"C:\\My Tests\\a.dll"}}, "C:\\"},
      {"quotes keep it whole", {{u"AssemblyFileName", u"\"C:\\My Tests\\a.dll\""}}, "C:\\My Tests\\"},
      {"an empty first item", {{u"AssemblyFileName", u";C:\\b\\2.dll"}}, ""},
      {"a metadata file",
       {{u"UseMetadataFile", u"True"}, {u"MetadataFile", u"%Root%\\My Tests\\all.vsmdi"}},
       "C:\\src\\My Tests\\"},
      {"its own", {{u"StartingDirectory", u"%Root%"}}, "C:\\src"},
  };
  for (const auto& row : cases) { // each goes on from the one before
    Set(row.Settings);
    action_.Execute();
    EXPECT_EQ(host_.Runs().back().Directory, row.Directory) << row.What;
  }
  Set({{u"StartingDirectory", u"%No%"}});
  action_.Execute();
  EXPECT_EQ(host_.Runs().back().Directory, "") << "one that cannot be expanded";
  EXPECT_EQ(std::ranges::count(host_.Log(), "3 Starting Directory : Unknown name: No"), 1);
}

} // namespace
} // namespace kx::tests
