#include "tests/buildaction/BuildActionFixture.h"

namespace kx::tests {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;

constexpr const char* Script = "#include <winver.h>\r\n1 VERSIONINFO\r\nFILEVERSION 1,2,3,4\r\nBEGIN\r\n"
                               "BLOCK \"StringFileInfo\"\r\nBEGIN\r\nBLOCK \"040904b0\"\r\nBEGIN\r\n"
                               "VALUE \"CompanyName\", \"Old\"\r\nEND\r\nEND\r\nEND\r\n";

const std::u16string Assemblies = u"UpdateAssemblyInfo=True&";
const std::u16string Version = Assemblies + u"UpdateAssemblyVersion=True&AssemblyVersion=";
const std::u16string InSelected = u"&ApplyAssemblyInfoTo=btSelectedProjects&AssemblySelectedProjects=";
const std::u16string FromSet = u"&UseDotNetPropertySet=True&DotNetVersionInfoPropertySetName=Set";
const std::u16string Scripts = u"UpdateWin32Resource=True&";
const std::u16string OfSelected = u"ApplyResourceInfoTo=btSelectedProjects&ResourceSelectedProjects=";
const std::u16string Build = u"&BuildType=btSelectedProjects&SelectedProjects=";

// Two C# projects with their AssemblyInfo, and a C++ project with two scripts of which one has a version.
class VersionStamping : public TBuildActionTest {
protected:
  VersionStamping() {
    folder_.Write("App.sln",
                  With(u"\nGlobal\n", u"\nProject(\"{8BC9CEB8-8B4A-11D0-8D11-00A0C91BC942}\") = \"Native\", "
                                      u"\"Native\\Native.vcproj\", \"{5A}\"\nEndProject\nGlobal\n"));
    for (const std::string name : {"App", "Lib"}) {
      folder_.Write(std::string(name).append("/").append(name).append(".csproj"),
                    "<Compile Include=\"Properties\\AssemblyInfo.cs\"/>");
      folder_.Write(name + "/Properties/AssemblyInfo.cs",
                    "// é\r\n[assembly: AssemblyVersion(\"1.0.*\")]\r\n");
    }
    folder_.Write("Native/Native.vcproj",
                  "<VisualStudioProject><Files><Filter><File RelativePath=\"other.rc\"/>"
                  "<File RelativePath=\"version.rc\"/></Filter></Files></VisualStudioProject>");
    folder_.Write("Native/other.rc", "STRINGTABLE\r\n");
    folder_.Write("Native/version.rc", Script);
    Begin();
  }

  // Begins with the settings, executes, and gives the log without what the build itself says.
  std::string Stamp(std::u16string_view settings) {
    const std::string log = Outcome(settings);
    return log.substr(0, log.find("[ Debug"));
  }
  // The versions in App's file, then in Lib's; "F" before that of a file.
  std::string Versions() const {
    std::string found;
    for (const char* name : {"App/Properties/AssemblyInfo.cs", "Lib/Properties/AssemblyInfo.cs"}) {
      const std::string text = folder_.Read(name);
      for (auto at = text.find("Version(\""); at != text.npos; at = text.find("Version(\"", at + 1))
        found +=
            (text[at - 1] == 'e' ? "F" : "") + text.substr(at + 9, text.find('"', at + 9) - at - 9) + " ";
    }
    return found;
  }
};

TEST_F(VersionStamping, IncrementsEachNumberOnceAnExecutionUnlessAPropertySetGivesThem) {
  const std::u16string all = u"UpdateAssemblyFileVersion=True&AutoIncAssemblyBuildNumber=True&"
                             u"AutoIncAssemblyRevisionNo=True&AutoIncAssemblyFileRevisionNo=True&"
                             u"AssemblyFileVersion=9|8|7|6&" +
                             Version;
  host_.StoringFails = u"The disk is full.";
  EXPECT_THAT(Stamp(all + u"1|0|x|41"), EndsWith("3 The disk is full.\n< 3\nfailed"));
  EXPECT_EQ(Versions(), "1.0.* 1.0.* ") << "no file bears a number that is not stored";
  host_.StoringFails.clear();
  Stamp(all + u"1|0|x|41");
  EXPECT_EQ(host_.Stored, (std::vector<std::string>{"AssemblyVersion", "AssemblyFileVersion"}));
  EXPECT_EQ(Versions(), "1.0.1.42 F9.8.7.7 1.0.1.42 F9.8.7.7 ");
  EXPECT_EQ(Get(u"AssemblyVersion"), "1|0|1|42") << "kept for the next execution";

  host_.Sets.Sets[u"Set"] = {
      {u"MajorVersion", u"5"}, {u"LinkFileVersion", u"true"}, {u"FileMajorVersion", u"6"}};
  Stamp(all + u"1|0|7|41" + FromSet);
  EXPECT_EQ(Versions(), "5.0.7.41 F5.0.7.41 5.0.7.41 F5.0.7.41 ");
  EXPECT_EQ(Get(u"AssemblyVersion"), "1|0|7|41");
  EXPECT_EQ(host_.Stored.size(), 2U) << "nothing was counted";
  host_.Sets.Sets[u"Set"][u"LinkFileVersion"] = u"false";
  Stamp(all + u"1|0|7|41&LinkAssemblyFileVersionInfo=True" + FromSet);
  EXPECT_EQ(Versions(), "5.0.7.41 F6.8.7.6 5.0.7.41 F6.8.7.6 ");
}

TEST_F(VersionStamping, NumbersThatWereCountedBeforehandAreWrittenAsTheyAre) {
  const std::u16string all =
      Version + u"1|0|7|41&AutoIncAssemblyRevisionNo=True&" + Scripts + u"AutoIncBuild=True&BuildVersion=";
  Begin(all + u"41");
  action_->CountUp();
  EXPECT_EQ(Get(u"AssemblyVersion") + " " + Get(u"BuildVersion"), "1|0|7|42 42");
  EXPECT_EQ(host_.Stored,
            (std::vector<std::string>{"AssemblyVersion", "AssemblyFileVersion", "BuildVersion"}));
  host_.NumbersAreCounted = true;
  Execute();
  EXPECT_EQ(Versions(), "1.0.7.42 1.0.7.42 ");
  EXPECT_THAT(folder_.Read("Native/version.rc"), HasSubstr("FILEVERSION 0,0,0,42\r\n"));
  host_.NumbersAreCounted = false;
  for (const auto* settings :
       {u"AutoIncBuild=True&AutoIncAssemblyRevisionNo=True",
        u"UpdateAssemblyInfo=True&AutoIncAssemblyRevisionNo=True&UseDotNetPropertySet=True",
        u"UpdateWin32Resource=True&AutoIncBuild=True&UseWin32PropertySet=True"}) {
    Begin(settings);
    action_->CountUp();
    EXPECT_EQ(host_.Stored.size(), 3U) << "nothing of it would be written: " << text::ToUtf8(settings);
  }
}

TEST_F(VersionStamping, ReplacesTheVersionOfTheOneScriptThatHasAny) {
  host_.Variables[u"Year"] = u"2010";
  const std::u16string settings = Scripts + u"MajorVersion=3&AutoIncBuild=True&BuildVersion=41&"
                                            u"VersionInfoKeys=LegalCopyright=(c) %Year%";
  host_.StoringFails = u"The disk is full.";
  EXPECT_THAT(Stamp(settings), EndsWith("3 The disk is full.\n< 3\nfailed"));
  EXPECT_EQ(folder_.Read("Native/version.rc"), Script);
  host_.StoringFails.clear();
  EXPECT_EQ(Stamp(settings),
            "> Updating Win32 Version Info\n0 Updating Version info in file : DIR/Native/version.rc\n< 1\n");
  EXPECT_EQ(host_.Stored, std::vector<std::string>{"BuildVersion"});
  EXPECT_THAT(folder_.Read("Native/version.rc"),
              AllOf(HasSubstr("FILEVERSION 3,0,0,42\r\n"), HasSubstr("\"LegalCopyright\", \"(c) 2010"),
                    HasSubstr("\"CompanyName\", \"Old")));
  EXPECT_EQ(Get(u"BuildVersion"), "42");
  EXPECT_EQ(folder_.Read("Native/other.rc"), "STRINGTABLE\r\n");
  EXPECT_EQ(folder_.Read("Native/version.rc.orig"), Script);
}

TEST_F(VersionStamping, TakesFromTheActionWhatAPropertySetOfWin32ValuesLacks) {
  host_.Sets.Sets[u"Set"] = {{u"MajorVersion", u"5"}, {u"CompanyName", u"Set"}};
  Stamp(Scripts +
        u"UseWin32PropertySet=True&Win32VersionInfoPropertySetName=Set&MajorVersion=1&MinorVersion=4&"
        u"AutoIncBuild=True&BuildVersion=41&VersionInfoKeys=Comments=c\r\nCompanyName=Action");
  EXPECT_THAT(folder_.Read("Native/version.rc"),
              AllOf(HasSubstr("FILEVERSION 5,4,0,42\r\n"), HasSubstr("\"CompanyName\", \"Set"),
                    HasSubstr("\"Comments\", \"c"), HasSubstr("\"FileVersion\", \"5.4.0.42"),
                    HasSubstr("\"ProductVersion\", \"5.4.0.42")));
  EXPECT_EQ(Get(u"BuildVersion") + Get(u"MajorVersion"), "421") << "only the increment stays in the action";
}

// Names, ids in any letter case and variables; nothing of it is kept, so each pass of a loop stamps its own.
TEST_F(VersionStamping, StampsTheProjectsThatASelectionMeansNowAndThatAreBuilt) {
  Begin(Version + u"1|0|0|1&AutoIncAssemblyRevisionNo=True&UseMSBuild=False" + Build + u"%Which%" +
        InSelected + u"%Which%&MajorVersion=7&" + Scripts + OfSelected + u"%Which%");
  for (const std::u16string& which : {std::u16string(u"App"), LibId}) {
    host_.Variables[u"Which"] = which;
    EXPECT_EQ(Execute(), "succeeded");
  }
  EXPECT_EQ(Versions(), "1.0.0.2 1.0.0.3 ");
  EXPECT_EQ(folder_.Read("Native/version.rc"), Script);
  for (const std::u16string name : {u"", u"Assembly", u"Resource"})
    EXPECT_EQ(Get(name + u"SelectedProjects"), "%Which%\r\n");
  Stamp(Version + u"7|7|7|7" + InSelected + u"App\nLib" + Build + u"Lib");
  EXPECT_EQ(Versions(), "1.0.0.2 7.7.7.7 ");
  Stamp(Version + u"7|7|7|7" + InSelected + u"App\nLib");
  EXPECT_EQ(Versions(), "7.7.7.7 7.7.7.7 ") << "the whole solution is built";
  for (const std::u16string native : {u"native", u"{5a}"}) {
    folder_.Write("Native/version.rc", Script);
    Stamp(std::u16string(Scripts).append(u"MajorVersion=7&").append(OfSelected).append(native));
    EXPECT_THAT(folder_.Read("Native/version.rc"), HasSubstr("FILEVERSION 7,0,0,0\r\n"));
  }
}

TEST_F(VersionStamping, IsNoSuccessWhenASelectionMeansNoProjectAtAll) {
  const std::pair<std::u16string, bool> cases[] = {
      {Assemblies + InSelected, true},
      {Assemblies + InSelected + u"Natve", true},
      {Assemblies + InSelected + u"Natve\nLib", false},
      {Assemblies + InSelected + u"Lib" + Build + u"App", false},
      {Assemblies + InSelected + u"Lib&BuildType=btIncludeDisabledProjects", true},
      {Scripts + OfSelected, true},
      {Scripts + OfSelected + u"Natve", true},
      {Scripts + OfSelected + u"Lib", false}, // it has no script
  };
  for (const auto& [settings, isEmpty] : cases) {
    const std::string log = Stamp(settings);
    const auto says = [&log](std::string_view text) { return log.find(text) != std::string::npos; };
    EXPECT_EQ(says("! empty-selection "), isEmpty) << text::ToUtf8(settings);
    EXPECT_EQ(says(settings.starts_with(Scripts)
                       ? "2 Warning : ResourceSelectedProjects, \"Natve\": App.sln"
                       : "2 Warning : AssemblySelectedProjects, \"Natve\": App.sln"),
              settings.find(u"Natve") != settings.npos);
  }
}

TEST_F(VersionStamping, EndsTheActionBeforeAnyToolRunsWhenItFails) {
  const std::pair<std::u16string, std::string> cases[] = {
      {Assemblies + u"UseDotNetPropertySet=True", "3 DotNet PropertySet name is blank\n< 3\nfailed"},
      {Assemblies + FromSet.substr(1), "3 Unable to find property set: Set\n< 3\nfailed"},
      {Assemblies + u"UpdateAssemblyTitle=True&AssemblyTitle=%No%",
       "3 Error Updating Assembly Info : Unknown name: No\n< 3\nfailed"},
      {Scripts + u"UseWin32PropertySet=True", "3 Win32 PropertySet name is blank\n< 3\nfailed"},
      {Scripts + u"UseWin32PropertySet=True&Win32VersionInfoPropertySetName=X",
       "3 Unable to find property set: X\n< 3\nfailed"},
      {Scripts + u"VersionInfoKeys=Comments=%No%", "3 Comments : Unknown name: No\n< 3\nfailed"},
      {Version + u"1|2||&" + Scripts + u"AutoIncBuild=True&BuildVersion=65535",
       "3 BuildVersion 65536 does not fit into a version resource, where numbers are 0 to 65535\nfailed"},
  };
  for (const auto& [settings, end] : cases)
    EXPECT_THAT(Stamp(settings), EndsWith(end));
  EXPECT_EQ(Get(u"BuildVersion"), "65535");
  EXPECT_THAT(Stamp(Version + u"1|0|*|4"),
              HasSubstr("3 Error Updating Assembly Info : AssemblyVersion \"1.0.*.4\" is no version"));
  EXPECT_EQ(Versions(), "1.0.* 1.0.* ") << "nothing was touched";
  EXPECT_EQ(folder_.Read("Native/version.rc"), Script);
  folder_.Write("Native/version.rc", "1 VERSIONINFO\r\nEND\r\n");
  EXPECT_THAT(Stamp(Scripts), HasSubstr("3 Error Parsing File : Unexpected END"));
  EXPECT_THAT(host_.Runs(), testing::IsEmpty());
}

TEST_F(VersionStamping, TellsBeforehandWhichFilesItWouldChange) {
  const std::u16string all = Version + InSelected + u"Lib&" + Scripts;
  const std::pair<std::u16string, std::string> cases[] = {
      {u"Solution=App.sln", ""},
      {all, "DIR/Lib/Properties/AssemblyInfo.cs\r\nDIR/Native/version.rc\r\n"},
      {Version + InSelected + u"Lib", "DIR/Lib/Properties/AssemblyInfo.cs\r\n"},
      {Scripts, "DIR/Native/version.rc\r\n"},
      {all + u"Solution=%No%", ""}};
  for (const auto& [settings, expected] : cases) {
    Begin(settings);
    text::TStringList names;
    action_->GetFilesToChange(names);
    EXPECT_EQ(Plain(text::ToUtf8(names.GetText())), expected);
  }
}

} // namespace
} // namespace kx::tests
