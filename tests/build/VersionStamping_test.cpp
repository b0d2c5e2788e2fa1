#include "tests/build/BuildActionFixture.h"

#include <regex>

namespace kx::tests {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* Sources = "// é\r\n[assembly: AssemblyVersion(\"1.0.*\")]\r\n";
constexpr const char* Script = "#include <winver.h>\r\n1 VERSIONINFO\r\nFILEVERSION 1,2,3,4\r\nBEGIN\r\n"
                               "BLOCK \"StringFileInfo\"\r\nBEGIN\r\nBLOCK \"040904b0\"\r\nBEGIN\r\n"
                               "VALUE \"CompanyName\", \"Old\"\r\nEND\r\nEND\r\nEND\r\n";

// Two C# projects with their AssemblyInfo, and a C++ project with two scripts of which one has a version.
class VersionStamping : public TBuildActionTest {
protected:
  VersionStamping() {
    std::string solution = SmallSolution;
    solution.insert(
        solution.find("Global\n"),
        "Project(\"{8BC9CEB8-8B4A-11D0-8D11-00A0C91BC942}\") = \"Native\", \"Native\\Native.vcproj\", "
        "\"{55555555-5555-5555-5555-555555555555}\"\nEndProject\n");
    folder_.Write("App.sln", solution);
    for (const std::string name : {"App", "Lib"}) {
      folder_.Write(name + "/" + name + ".csproj", "<Compile Include=\"Properties\\AssemblyInfo.cs\"/>");
      folder_.Write(name + "/Properties/AssemblyInfo.cs", Sources);
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
  std::string VersionsOf(const std::string& name) const {
    const std::string text = folder_.Read(name + "/Properties/AssemblyInfo.cs");
    std::string found;
    const std::regex version("Assembly(File)?Version\\(\"([^\"]*)\"\\)");
    for (std::sregex_iterator match(text.begin(), text.end(), version), end; match != end; ++match)
      found += (*match)[1].str() + "=" + (*match)[2].str() + " ";
    return found;
  }
};

TEST_F(VersionStamping, WritesAttributesThatAreAskedForInEveryProject) {
  host_.Variables[u"Label"] = u"a \"b\"";
  const std::string log = Stamp(u"UpdateAssemblyInfo=True&UpdateAssemblyVersion=True&AssemblyVersion=2|3|4|5&"
                                u"UpdateAssemblyFileVersion=True&LinkAssemblyFileVersionInfo=True&"
                                u"UpdateAssemblyTitle=True&AssemblyTitle=%Label%&AssemblyCompany=unwanted");
  for (const auto* project : {"App", "Lib"}) {
    EXPECT_EQ(VersionsOf(project), "=2.3.4.5 File=2.3.4.5 ");
    EXPECT_THAT(folder_.Read(std::string(project) + "/Properties/AssemblyInfo.cs"),
                testing::AllOf(HasSubstr("AssemblyTitle(\"a \\\"b\\\"\")"), Not(HasSubstr("unwanted"))));
  }
  EXPECT_THAT(log, testing::StartsWith("> Updating AssemblyInfo\n0 4 projects to process.\n"));
  EXPECT_THAT(log, HasSubstr("0 Processing Assembly info in File : DIR/Lib/Properties/AssemblyInfo.cs\n"));
}

TEST_F(VersionStamping, IncrementsEachNumberOnceAnExecutionUnlessAPropertySetGivesThem) {
  const std::u16string all =
      u"UpdateAssemblyInfo=True&UpdateAssemblyVersion=True&UpdateAssemblyFileVersion=True&"
      u"AutoIncAssemblyBuildNumber=True&AutoIncAssemblyRevisionNo=True&"
      u"AutoIncAssemblyFileRevisionNo=True&AssemblyVersion=1|0|x|41&AssemblyFileVersion=9|8|7|6";
  host_.StoringFails = u"The disk is full.";
  EXPECT_THAT(Stamp(all), testing::EndsWith("3 The disk is full.\n< 3\nfailed"));
  EXPECT_EQ(VersionsOf("App"), "=1.0.* ") << "no file bears a number that is not stored";
  host_.StoringFails.clear();
  Stamp(all);
  EXPECT_EQ(host_.Stored, (std::vector<std::string>{"AssemblyVersion", "AssemblyFileVersion"}));
  EXPECT_EQ(VersionsOf("App"), "=1.0.1.42 File=9.8.7.7 ");
  EXPECT_EQ(VersionsOf("Lib"), VersionsOf("App"));
  EXPECT_EQ(Get(u"AssemblyVersion"), "1|0|1|42") << "kept for the next execution";

  host_.Sets.Sets[u"Set"] = {
      {u"MajorVersion", u"5"}, {u"LinkFileVersion", u"true"}, {u"FileMajorVersion", u"6"}};
  Stamp(all + u"&UseDotNetPropertySet=True&DotNetVersionInfoPropertySetName=Set&AssemblyVersion=1|0|7|41");
  EXPECT_EQ(VersionsOf("App"), "=5.0.7.41 File=5.0.7.41 ");
  EXPECT_EQ(Get(u"AssemblyVersion"), "1|0|7|41");
  EXPECT_EQ(host_.Stored.size(), 2U) << "nothing was counted";
  host_.Sets.Sets[u"Set"][u"LinkFileVersion"] = u"false";
  Stamp(all + u"&UseDotNetPropertySet=True&DotNetVersionInfoPropertySetName=Set&AssemblyVersion=1|0|7|41&"
              u"LinkAssemblyFileVersionInfo=True");
  EXPECT_EQ(VersionsOf("App"), "=5.0.7.41 File=6.8.7.6 ");
}

TEST_F(VersionStamping, ASelectionIsNarrowedByTheProjectsThatAreBuilt) {
  const std::u16string stamp = u"UpdateAssemblyInfo=True&UpdateAssemblyVersion=True&AssemblyVersion=7|7|7|7&"
                               u"ApplyAssemblyInfoTo=btSelectedProjects&AssemblySelectedProjects=App\nLib";
  Stamp(stamp + u"&BuildType=btSelectedProjects&SelectedProjects=Lib");
  EXPECT_EQ(VersionsOf("App"), "=1.0.* ");
  EXPECT_EQ(VersionsOf("Lib"), "=7.7.7.7 ");
  Stamp(stamp);
  EXPECT_EQ(VersionsOf("App"), "=7.7.7.7 ") << "the whole solution is built";
}

TEST_F(VersionStamping, ReplacesTheVersionOfTheOneScriptThatHasAny) {
  host_.Variables[u"Year"] = u"2010";
  const std::u16string settings =
      u"UpdateWin32Resource=True&MajorVersion=3&AutoIncBuild=True&BuildVersion=41&"
      u"VersionInfoKeys=LegalCopyright=(c) %Year%";
  host_.StoringFails = u"The disk is full.";
  EXPECT_THAT(Stamp(settings), testing::EndsWith("3 The disk is full.\n< 3\nfailed"));
  EXPECT_EQ(folder_.Read("Native/version.rc"), Script);
  host_.StoringFails.clear();
  const std::string log = Stamp(settings);
  EXPECT_EQ(host_.Stored, std::vector<std::string>{"BuildVersion"});
  EXPECT_EQ(log,
            "> Updating Win32 Version Info\n0 Updating Version info in file : DIR/Native/version.rc\n< 1\n");
  const std::string script = folder_.Read("Native/version.rc");
  EXPECT_THAT(script, HasSubstr("FILEVERSION 3,0,0,42\r\n"));
  EXPECT_THAT(script, HasSubstr("\"LegalCopyright\", \"(c) 2010"));
  EXPECT_THAT(script, HasSubstr("\"CompanyName\", \"Old")) << "texts that are not named stay";
  EXPECT_EQ(Get(u"BuildVersion"), "42");
  EXPECT_EQ(folder_.Read("Native/other.rc"), "STRINGTABLE\r\n");
  EXPECT_EQ(folder_.Read("Native/version.rc.orig"), Script);
}

// Names, ids in any letter case and variables; nothing of it is kept, so each pass of a loop stamps its own.
TEST_F(VersionStamping, StampsTheProjectsThatASelectionMeansNow) {
  const std::u16string stamp = u"UpdateAssemblyInfo=True&UpdateAssemblyVersion=True&AssemblyVersion=1|0|0|1&"
                               u"AutoIncAssemblyRevisionNo=True&ApplyAssemblyInfoTo=btSelectedProjects&"
                               u"AssemblySelectedProjects=%Which%&BuildType=btSelectedProjects&"
                               u"SelectedProjects=%Which%&UseMSBuild=False&UpdateWin32Resource=True&"
                               u"ApplyResourceInfoTo=btSelectedProjects&ResourceSelectedProjects=%Which%&"
                               u"MajorVersion=7";
  Begin(stamp);
  for (const std::u16string_view which : {u"App", u"{22222222-2222-2222-2222-222222222222}"}) {
    host_.Variables[u"Which"] = which;
    EXPECT_EQ(Execute(), "succeeded");
  }
  EXPECT_EQ(VersionsOf("App") + VersionsOf("Lib"), "=1.0.0.2 =1.0.0.3 ");
  EXPECT_EQ(folder_.Read("Native/version.rc"), Script);
  EXPECT_EQ(action_->Solution().SelectedProjects, text::TStringList({u"%Which%"}));
  EXPECT_EQ(action_->AssemblyInfo().SelectedProjects, text::TStringList({u"%Which%"}));
  EXPECT_EQ(action_->Win32Stamp().SelectedProjects, text::TStringList({u"%Which%"}));

  for (const std::u16string native : {u"native", u"{55555555-5555-5555-5555-55555555555a}"}) {
    std::string solution = folder_.Read("App.sln");
    folder_.Write("App.sln", text::ToUtf8(text::ReplaceAll(text::FromUtf8(solution), u"5555}", u"555A}")));
    folder_.Write("Native/version.rc", Script);
    Stamp(u"UpdateWin32Resource=True&MajorVersion=7&ApplyResourceInfoTo=btSelectedProjects&"
          u"ResourceSelectedProjects=" +
          native);
    EXPECT_THAT(folder_.Read("Native/version.rc"), HasSubstr("FILEVERSION 7,0,0,0\r\n"))
        << text::ToUtf8(native);
  }
}

TEST_F(VersionStamping, SaysWhichEntriesOfASelectionMeanNoProject) {
  for (const std::u16string kind : {u"Assembly", u"Resource"}) {
    const std::u16string update = kind == u"Assembly" ? u"UpdateAssemblyInfo" : u"UpdateWin32Resource";
    EXPECT_THAT(Stamp(update + u"=True&Apply" + kind + u"InfoTo=btSelectedProjects&" + kind +
                      u"SelectedProjects=Lib\nNatve"),
                HasSubstr("2 Warning : " + text::ToUtf8(kind) +
                          "SelectedProjects, \"Natve\": App.sln has no project "
                          "\"Natve\". Did you mean \"Native\"?\n"));
  }
}

TEST_F(VersionStamping, IsNoSuccessWhenASelectionMeansNoProjectAtAll) {
  const std::u16string assemblies = u"UpdateAssemblyInfo=True&ApplyAssemblyInfoTo=btSelectedProjects";
  const std::u16string resources = u"UpdateWin32Resource=True&ApplyResourceInfoTo=btSelectedProjects";
  const std::pair<std::u16string, bool> cases[] = {
      {assemblies, true},
      {assemblies + u"&AssemblySelectedProjects=Gone", true},
      {assemblies + u"&AssemblySelectedProjects=Gone\nLib", false},
      {assemblies + u"&AssemblySelectedProjects=Lib&BuildType=btSelectedProjects&SelectedProjects=App",
       false},
      {assemblies + u"&AssemblySelectedProjects=Lib&BuildType=btIncludeDisabledProjects", true},
      {resources, true},
      {resources + u"&ResourceSelectedProjects=Lib", false}, // it has no script
  };
  for (const auto& [settings, isEmpty] : cases)
    EXPECT_EQ(Stamp(settings).find("! empty-selection ") != std::string::npos, isEmpty)
        << text::ToUtf8(settings);
}

TEST_F(VersionStamping, TakesFromTheActionWhatAPropertySetOfWin32ValuesLacks) {
  host_.Sets.Sets[u"Set"] = {{u"MajorVersion", u"5"}, {u"CompanyName", u"Set"}};
  Stamp(
      u"UpdateWin32Resource=True&UseWin32PropertySet=True&Win32VersionInfoPropertySetName=Set&MajorVersion=1&"
      u"MinorVersion=4&AutoIncBuild=True&BuildVersion=41&VersionInfoKeys=Comments=c\r\nCompanyName=Action");
  const std::string script = folder_.Read("Native/version.rc");
  EXPECT_THAT(script,
              testing::AllOf(HasSubstr("FILEVERSION 5,4,0,42\r\n"), HasSubstr("\"CompanyName\", \"Set"),
                             HasSubstr("\"Comments\", \"c"), HasSubstr("\"FileVersion\", \"5.4.0.42"),
                             HasSubstr("\"ProductVersion\", \"5.4.0.42")));
  EXPECT_EQ(Get(u"BuildVersion") + Get(u"MajorVersion"), "421") << "only the increment stays in the action";
}

TEST_F(VersionStamping, RefusesNumbersBeforeTheyAreKeptOrWritten) {
  EXPECT_EQ(
      Stamp(u"UpdateAssemblyInfo=True&UpdateAssemblyVersion=True&AssemblyVersion=1|2||&"
            u"UpdateWin32Resource=True&AutoIncBuild=True&BuildVersion=65535"),
      "3 BuildVersion 65536 does not fit into a version resource, where numbers are 0 to 65535\nfailed");
  EXPECT_EQ(Get(u"BuildVersion"), "65535");
  EXPECT_THAT(Stamp(u"UpdateAssemblyInfo=True&UpdateAssemblyVersion=True&AssemblyVersion=1|0|*|4"),
              HasSubstr("3 Error Updating Assembly Info : AssemblyVersion \"1.0.*.4\" is no version"));
  EXPECT_EQ(VersionsOf("App") + VersionsOf("Lib"), "=1.0.* =1.0.* ") << "nothing was touched";
  EXPECT_EQ(folder_.Read("Native/version.rc"), Script);
}

TEST_F(VersionStamping, EndsTheActionBeforeAnyToolRunsWhenItFails) {
  const std::pair<std::u16string, std::string> cases[] = {
      {u"UpdateAssemblyInfo=True&UseDotNetPropertySet=True", "3 DotNet PropertySet name is blank\n"},
      {u"UpdateWin32Resource=True&UseWin32PropertySet=True", "3 Win32 PropertySet name is blank\n"},
      {u"UpdateWin32Resource=True&UseWin32PropertySet=True&Win32VersionInfoPropertySetName=X",
       "3 Unable to find property set: X\n"},
      {u"UpdateWin32Resource=True&VersionInfoKeys=Comments=%No%", "3 Comments : Unknown name: No\n"},
      {u"UpdateAssemblyInfo=True&UpdateAssemblyTitle=True&AssemblyTitle=%No%",
       "3 Error Updating Assembly Info : Unknown name: No\n"},
  };
  for (const auto& [settings, message] : cases)
    EXPECT_THAT(Stamp(settings), testing::EndsWith(message + "< 3\nfailed"));
  EXPECT_EQ(
      Stamp(u"UpdateAssemblyInfo=True&UpdateAssemblyVersion=True&AssemblyVersion=1|2||&"
            u"UpdateWin32Resource=True&AutoIncBuild=True&BuildVersion=65535"),
      "3 BuildVersion 65536 does not fit into a version resource, where numbers are 0 to 65535\nfailed");
  EXPECT_EQ(Get(u"BuildVersion"), "65535");
  EXPECT_THAT(Stamp(u"UpdateAssemblyInfo=True&UpdateAssemblyVersion=True&AssemblyVersion=1|0|*|4"),
              HasSubstr("3 Error Updating Assembly Info : AssemblyVersion \"1.0.*.4\" is no version"));
  EXPECT_EQ(VersionsOf("App") + VersionsOf("Lib"), "=1.0.* =1.0.* ") << "nothing was touched";
  folder_.Write("Native/version.rc", "1 VERSIONINFO\r\nEND\r\n");
  EXPECT_THAT(Stamp(u"UpdateWin32Resource=True"), HasSubstr("3 Error Parsing File : Unexpected END"));
  EXPECT_THAT(host_.Runs(), testing::IsEmpty());
}

TEST_F(VersionStamping, TellsBeforehandWhichFilesItWouldChange) {
  const auto files = [this] {
    text::TStringList names;
    action_->GetFilesToChange(names);
    return Plain(text::ToUtf8(names.GetText()));
  };
  EXPECT_EQ(files(), "");
  Set(u"UpdateAssemblyInfo=True&ApplyAssemblyInfoTo=btSelectedProjects&AssemblySelectedProjects=Lib&"
      u"UpdateAssemblyVersion=True&UpdateWin32Resource=True");
  EXPECT_EQ(files(), "DIR/Lib/Properties/AssemblyInfo.cs\r\nDIR/Native/version.rc\r\n");
  Set(u"Solution=%No%");
  EXPECT_EQ(files(), "");
}

} // namespace
} // namespace kx::tests
