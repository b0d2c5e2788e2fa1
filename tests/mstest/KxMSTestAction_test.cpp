#include "contract/LookAhead.h"
#include "tests/mstest/MSTestActionFixture.h"

#include <algorithm>

namespace kx::tests {
namespace {

using testing::ElementsAre;
using TEntries = std::vector<std::string>;

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

TEST_F(TMSTestActionTest, DescribesItselfByWhatItTests) {
  action_.SetDescription(u"Nightly tests");
  Set(u"AssemblyFileName=%Root%\\Tests.dll~MetadataFile=All.vsmdi");
  EXPECT_EQ(action_.GetFormattedDescription(), u"Run MSTest [ %Root%\\Tests.dll ]");
  Set(u"UseMetadataFile=True");
  EXPECT_EQ(action_.GetFormattedDescription(), u"Run MSTest [ All.vsmdi ]");
}

TEST_F(TMSTestActionTest, ValidatesTheTextsAsTheyAreWritten) {
  const std::string noTool =
      "Standalone MSTest Path: No path to a standalone MSTest installation was found [options]";
  const std::tuple<const char*, std::u16string, TEntries> cases[] = {
      {"a new action", u"", TEntries{"Assembly Filename: Assembly Filename is blank"}},
      {"an unknown variable is no business of the validation", u"AssemblyFileName=%No%", TEntries{}},
      {"a version that is not installed", u"VisualStudioVer=vs2010",
       TEntries{"VisualStudio.NET Options: Path to Visual Studio.NET 2010 not set [options]"}},
      {"no stand-alone MSTest", u"UseStandaloneMSTest=True", TEntries{noTool}},
      {"a metadata file is asked for, containers do not count", u"UseMetadataFile=True",
       TEntries{noTool, "Metadata File: A metadata file must be specified."}},
      {"a metadata file is there",
       u"UseStandaloneMSTest=False~VisualStudioVer=vs2008~AssemblyFileName=~MetadataFile= ", TEntries{}},
  };
  for (const auto& [what, settings, expected] : cases) { // each goes on from the one before
    Set(settings);
    TRecordingValidation errors;
    EXPECT_EQ(action_.Validate(errors), expected.empty()) << what;
    EXPECT_EQ(errors.Entries, expected) << what;
  }
}

TEST_F(TMSTestActionTest, RunsInTheFolderOfWhatItTests) {
  const TTemporaryFolder folder;
  for (const auto* name : {"project/sub/x", "bin/x", "other/x", "My Tests/x"})
    folder.Write(name);
  host_.Variables[u"Root"] = folder.Path();
  host_.Variables[u"ProjectDir"] = folder.Path("project");
  const std::tuple<const char*, std::u16string, std::string> cases[] = {
      {"a container", u"AssemblyFileName=%Root%/bin/a.dll", "DIR/bin/"},
      {"a name alone", u"AssemblyFileName=a.dll", "DIR/project"},
      {"a relative path", u"AssemblyFileName=sub/a.dll", "DIR/project/sub/"},
      {"semicolons separate", u"AssemblyFileName=%Root%/bin/1.dll;%Root%/other/2.dll", "DIR/bin/"},
      {"bars too", u"AssemblyFileName=%Root%/bin/1.dll|%Root%/other/2.dll", "DIR/bin/"},
      {"lines too", u"AssemblyFileName=%Root%/other/1.dll\r\n%Root%/bin/2.dll", "DIR/other/"},
      {"a blank ends the first", u"AssemblyFileName=%Root%/My Tests/a.dll", "DIR/"},
      {"quotes keep it whole", u"AssemblyFileName=\"%Root%/My Tests/a.dll\"|b.dll", "DIR/My Tests/"},
      {"an empty first item", u"AssemblyFileName=;%Root%/bin/2.dll", "DIR/project"},
      {"a folder that is not there", u"AssemblyFileName=%Root%/gone/a.dll", "DIR/project"},
      {"a metadata file", u"UseMetadataFile=True~MetadataFile=%Root%/My Tests/all.vsmdi", "DIR/My Tests/"},
      {"its own", u"StartingDirectory=%Root%", "DIR"},
  };
  for (const auto& [what, settings, expected] : cases) { // each goes on from the one before
    Set(settings);
    host_.ClearLog();
    action_.Execute();
    EXPECT_EQ(folder.Plain(host_.Runs().back().Directory), expected) << what;
    const bool isWarned = host_.Log().front().starts_with("2 Warning : there is no folder ");
    EXPECT_EQ(isWarned, std::string_view(what) == "a folder that is not there") << what;
  }
  host_.ClearLog();
  Set(u"StartingDirectory=%No%");
  EXPECT_FALSE(action_.Execute());
  EXPECT_THAT(host_.Log(), ElementsAre("3 Starting Directory : Unknown name: No"));
}

TEST_F(TMSTestActionTest, TellsBeforehandWhichFilesItReadsAndWrites) {
  host_.Variables[u"ProjectDir"] = u"/p";
  Set(u"AssemblyFileName=a.dll||%No%b.dll~ConfigFileName=%No%~OutputFileName=o.trx");
  text::TStringList none, files;
  action_.GetFilesToRead(none);
  EXPECT_EQ(none, text::TStringList()) << "what cannot be foreseen is not known";
  Set(u"AssemblyFileName=a.dll||b.dll~ConfigFileName=c~MetadataFile=m");
  action_.GetFilesToRead(files);
  Set(u"UseMetadataFile=True~ConfigFileName=");
  action_.GetFilesToRead(files);
  action_.GetFilesToWrite(files);
  EXPECT_EQ(files, (text::TStringList{u"/p/c", u"/p/a.dll", u"/p/b.dll", u"/p/m", u"/p/o.trx"}));
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
  Set(u"AssemblyFileName=here.dll|there.dll|gone.dll");
  for (const bool builds : {false, true})
    for (const auto& [start, missed] : {std::pair(u"", 2U), std::pair(u"bin", 1U), std::pair(u"lost", 3U)}) {
      Set(std::u16string(u"StartingDirectory=") + start);
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
  const std::tuple<const char*, std::u16string, TEntries> cases[] = {
      {"nothing", u"AssemblyFileName=a.dll", TEntries{}},
      {"what only a run knows", u"AssemblyFileName=%Loop%~ConfigFileName=%Loop%", TEntries{}},
      {"a tool that is not there", u"VisualStudioVer=vs2010",
       TEntries{"VisualStudio.NET Options: There is no DIR/no tool/MSTest.exe. [options]"}},
      {"texts that come out empty",
       u"VisualStudioVer=vs2008~AssemblyFileName=%Empty%~ConfigFileName=%Empty%~SpecifyTests=True",
       TEntries{"Assembly Filename: A value is required.", "Tests: A value is required."}},
      {"files that are not there", u"AssemblyFileName=a.dll~Tests=A~ConfigFileName=no.testrunconfig",
       TEntries{"Run Configuration File: There is no file DIR/no.testrunconfig."}},
      {"a metadata file, but no lists and no build",
       u"ConfigFileName=~UseMetadataFile=True~MetadataFile=all.vsmdi~SpecifyTestList=True~"
       u"PublishMode=pbSpecify~TeamServer=s~TeamProject=p",
       TEntries{"Test List: A value is required.", "Team Build Id: A value is required."}},
      {"an empty metadata file", u"MetadataFile=%Empty%~TestList=a~BuildId=1",
       TEntries{"Metadata File: A value is required."}},
      {"no metadata file", u"MetadataFile=no.vsmdi",
       TEntries{"Metadata File: There is no file DIR/no.vsmdi."}},
  };
  for (const auto& [what, settings, expected] : cases) { // each goes on from the one before
    Set(settings);
    TRecordingValidation errors;
    action_.LookAhead(errors);
    for (auto& entry : errors.Entries) {
      entry = folder.Plain(entry);
      std::ranges::replace(entry, '\\', '/'); // the system's own separator
    }
    EXPECT_EQ(errors.Entries, expected) << what;
  }
  EXPECT_TRUE(host_.Log().empty());
}

} // namespace
} // namespace kx::tests
