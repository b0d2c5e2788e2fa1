#include "contract/LookAhead.h"
#include "tests/buildaction/BuildActionFixture.h"
#include "tests/support/Properties.h"

namespace kx::tests {
namespace {

class BuildAction : public TBuildActionTest {};

TEST_F(BuildAction, RegistersWhatAnExecutionChanges) {
  const std::pair<std::u16string, std::u16string> steps[] = {
      {u"AutoIncAssemblyRevisionNo=True", u"AssemblyVersion "},
      {u"AutoIncAssemblyBuildNumber=True", u"AssemblyVersion AssemblyVersionBuild "},
      {u"AutoIncAssemblyRevisionNo=False", u"AssemblyVersion AssemblyVersionBuild "},
      {u"AutoIncAssemblyBuildNumber=False", u"AssemblyVersion "},
      {u"AutoIncAssemblyRevisionNo=True&AutoIncAssemblyRevisionNo=False", u""},
      {u"AutoIncAssemblyFileBuildNumber=True&AutoIncAssemblyFileRevisionNo=True", u"AssemblyFileVersion "},
      {u"AutoIncAssemblyFileBuildNumber=False&AutoIncBuild=True", u"AssemblyFileVersion BuildVersion "},
      {u"AutoIncAssemblyFileRevisionNo=False", u"BuildVersion "},
      {u"AutoIncBuild=False", u""},
  };
  for (const auto& [settings, expected] : steps) {
    Set(settings);
    std::u16string dynamic;
    for (const std::u16string name :
         {u"AssemblyVersion", u"AssemblyVersionBuild", u"AssemblyFileVersion", u"BuildVersion"})
      if (action_->IsDynamicProperty(name)) dynamic += name + u" ";
    EXPECT_EQ(dynamic, expected) << text::ToUtf8(settings);
  }
}

TEST_F(BuildAction, TakesNoCodePageZeroAndNoNewLabel) {
  Set(u"CodePage=932&CodePage=0&AssemblyInfo=other");
  EXPECT_EQ(Get(u"CodePage") + Get(u"AssemblyInfo"), "1252Assembly Info");
}

TEST_F(BuildAction, KeepsThePasswordEncrypted) {
  Set(u"WebDAVPassword=secret");
  EXPECT_EQ(Get(u"_WebDAVPassword"), "enc(secret)");
  EXPECT_EQ(Get(u"WebDAVPassword"), "secret");
  Set(u"_WebDAVPassword=made elsewhere");
  EXPECT_EQ(Get(u"WebDAVPassword"), "");
  Set(u"WebDAVPassword=");
  EXPECT_EQ(Get(u"_WebDAVPassword"), "made elsewhere") << "saving what was read must not lose it";
  EXPECT_TRUE(Row(u"WebDAVPassword").Secret && !Row(u"WebDAVPassword").Stored);
  EXPECT_TRUE(Row(u"_WebDAVPassword").Secret && Row(u"_WebDAVPassword").Stored);
  TKxVSDotNetAction alone; // without a host
  EXPECT_EQ(alone.GetWebDAVPassword(), u"");
  TPropertyTexts(alone).Set(u"_WebDAVPassword=enc(p)");
  EXPECT_TRUE(alone.GetWebDAVPassword().empty() && alone.IsWebDAVPasswordLost());
}

TEST_F(BuildAction, TellsHostsOfItselfAndItsVariables) {
  const auto listed = [this](auto... how) {
    text::TStringList names;
    action_->CollectLocalVariables(names, how...);
    return text::ToUtf8(names.GetCommaText());
  };
  EXPECT_EQ(listed(false, false), "CURRENTCONFIGNAME,CURRENTPLATFORMNAME");
  EXPECT_EQ(listed(true, false), "CURRENTCONFIGNAME=btString,CURRENTPLATFORMNAME=btString");
  EXPECT_EQ(listed(false, true), "\"CURRENTCONFIGNAME=The currently building configuration name\","
                                 "\"CURRENTPLATFORMNAME=btString=The currently building platform name\"");
  Execute();
  std::u16string name, platform, other;
  EXPECT_TRUE(action_->GetLocalVariableValue(u"currentConfigName", name));
  EXPECT_TRUE(action_->GetLocalVariableValue(u"CURRENTPLATFORMNAME", platform));
  EXPECT_FALSE(action_->GetLocalVariableValue(u"CURRENT", other));
  EXPECT_EQ(name + u"|" + platform + other, u"Debug|Any CPU");
  text::TStringList hidden, aliases, help, needs;
  action_->GetHiddenProperties(hidden);
  action_->GetPropertyAlias(aliases);
  action_->GetPropertyHelp(help);
  action_->GetRequirements(needs);
  EXPECT_TRUE(hidden.IndexOf(u"BuildType") && !hidden.IndexOf(u"Solution"));
  EXPECT_TRUE(aliases.Value(u"UseMSBuild") == u"Use MSBuild" &&
              !help.Value(u"ExtraMSBuildProperties").empty());
  EXPECT_EQ(needs, text::TStringList{u"vs2008"});
  EXPECT_TRUE(action_->GetFormattedDescription().ends_with(u" [ App.sln ]"));
}

TEST_F(BuildAction, TellsWhatItsSettingsLack) {
  const std::string framework =
      ".NET Framework Settings: The selected version of the .NET Framework was not found.";
  const std::pair<std::u16string, std::vector<std::string>> cases[] = {
      {u"", {}},
      {u"Solution=&VStudioVersion=vs2010", {"Solution file: A solution file has not been set", framework}},
      {u"VStudioVersion=vs2003", {"VisualStudio.NET Options: Path to devenv.com has not been set [options]"}},
      {u"VStudioVersion=vsUnknown", {framework}},
      {u"UseMSBuild=False", {}},
  };
  for (const auto& [settings, entries] : cases) {
    Begin(settings);
    TRecordingValidation validation;
    EXPECT_EQ(action_->Validate(validation), entries.empty());
    EXPECT_EQ(validation.Entries, entries);
  }
}

TEST_F(BuildAction, LooksAheadAtWhatARunWouldStumbleOver) {
  services_.Frameworks[u"v2.0"] = folder_.Path() + u"/gone";
  host_.Sets.Sets[u"Old"] = {{u"MajorVersion", u"70000"}};
  host_.Sets.Sets[u"Word"] = {{u"MajorVersion", u"4x"}};
  folder_.Write("Bad.sln", "no solution\n");
  folder_.Write("Twins.sln", SolutionWithTwins());
  for (const std::string name : {"b c", "gone", "half"})
    folder_.Write(name + "/App.sln", SmallSolution);
  folder_.Write("b c/Lib/Lib.csproj");
  folder_.Write("half/Lib/Lib.csproj");
  const std::string gone = "Solution: Projects of Debug|Any CPU are not on disk: App\\App.csproj, ";
  const std::string none = "SolutionConfiguration: App.sln has no configuration ";
  const std::u16string release = u"SolutionConfiguration=release&UseRegExOnConfigName=False";
  const std::u16string selected = u"BuildType=btSelectedProjects&SelectedProjects=";
  const std::u16string win32 =
      u"UpdateWin32Resource=True&UseWin32PropertySet=True&Win32VersionInfoPropertySetName=";
  const std::u16string listed = u"OverrideWarnings=True&SelectedWarningsAsErrors=True&WarningsAsErrors=";
  const std::u16string dotNet = u"UpdateAssemblyInfo=True&UpdateAssemblyVersion=True&AssemblyVersion=";
  const std::u16string ofSet =
      dotNet + u"1|0|0|0&UseDotNetPropertySet=True&DotNetVersionInfoPropertySetName=";
  const std::u16string fileVersion =
      u"UpdateAssemblyInfo=True&UpdateAssemblyFileVersion=True&AssemblyFileVersion=";
  const std::pair<std::u16string, std::string> cases[] = {
      {u"Solution=%Loop%&SolutionConfiguration=%Loop%", ""},
      {selected + u"%Loop%\nLib", ""},
      {u"Solution=", ""},
      {u"Solution=No.sln", "Solution: Solution File \"DIR/No.sln\" does not exist"},
      {u"Solution=Bad.sln", "Solution: Error Parsing Solution File : Invalid Visual Studio Solution Header"},
      {u"Solution=gone/App.sln", gone},
      {u"Solution=gone/App.sln&BuildType=btIncludeDisabledProjects", gone},
      {u"Solution=gone/App.sln&SolutionConfiguration=Release|Any CPU", ""},
      {u"Solution=half/App.sln", ""},
      {u"Solution=half/App.sln&BuildType=btIncludeDisabledProjects", gone + "Setup\\Setup.vdproj"},
      {u"SolutionConfiguration=", "SolutionConfiguration: A configuration is required."},
      {u"SolutionConfiguration=Debgu", none + "\"Debgu\". Did you mean \"Debug|Any CPU\"?"},
      {u"SolutionConfiguration=Debug(", "SolutionConfiguration: missing closing parenthesis"},
      {u"SolutionConfiguration=Relase|Any CPU", none + "\"Relase|Any CPU\". Read as an expression"},
      {release, ""},
      {release + u"&" + selected + u"Lib", none + "\"release\". Did you mean"},
      {selected + u"Lbi", "SelectedProjects: App.sln has no project \"Lbi\""},
      {selected, "SelectedProjects: No projects are selected."},
      {selected + u"Lib&SolutionConfiguration=Release|Any CPU",
       "BuildType: None of the projects to build is part of Release|Any CPU."},
      {u"Solution=b c/App.sln&" + selected + u"Lib", "Solution: The solution's folder \"DIR/b c"},
      {u"Solution=Twins.sln&" + selected + u"Installer",
       "Solution: Twins.sln gives different projects one identifier: Lib\\Lib.csproj and "
       "Setup\\Setup.vdproj"},
      {u"Solution=Twins.sln&" + selected + u"App", ""},
      {u"VStudioVersion=vs2005", ".NET Framework Settings: Executable not found : DIR/gone/MSBuild.exe"},
      {u"VStudioVersion=vs2003",
       "VisualStudio.NET Options: The option VisualStudioDotNet.MSDevPath2003 names no folder"},
      {dotNet + u"2|||", ""},
      {dotNet + u"70000|0|0|0", "AssemblyVersion: AssemblyVersion \"70000.0.0.0\" is no version"},
      {dotNet + u"%Loop%|0|0|0", ""},
      {fileVersion + u"1|2|3|4|5&LinkAssemblyFileVersionInfo=False",
       "AssemblyFileVersion: AssemblyFileVersion \"1.2.3.4.5\" is no version"},
      {fileVersion + u"x&LinkAssemblyFileVersionInfo=True&AssemblyVersion=1|65535||", ""},
      {fileVersion + u"1&LinkAssemblyFileVersionInfo=True&AssemblyVersion=1|65536||",
       "AssemblyVersion: AssemblyFileVersion \"1.65536\" is no version"},
      {listed + u"x&AllWarningsAsErrors=False", "WarningsAsErrors: \"x\" is not valid."},
      {listed + u"x&AllWarningsAsErrors=True", ""},
      {listed + u"%Loop%&AllWarningsAsErrors=False", ""},
      {u"OverrideWarnings=False&SelectedWarningsAsErrors=True&WarningsAsErrors=x", ""},
      {dotNet + u"1|||&ApplyAssemblyInfoTo=btSelectedProjects&AssemblySelectedProjects=Lbi",
       "AssemblySelectedProjects: App.sln has no project \"Lbi\""},
      {u"UpdateWin32Resource=True&MinorVersion=-1", "UpdateWin32Resource: MinorVersion -1"},
      {u"UpdateWin32Resource=True&ApplyResourceInfoTo=btSelectedProjects",
       "ResourceSelectedProjects: No projects are selected."},
      {win32, "Win32VersionInfoPropertySetName: The name of the property set is blank."},
      {win32 + u"New", "Win32VersionInfoPropertySetName: Unable to find property set: New"},
      {win32 + u"Old", "Win32VersionInfoPropertySetName: MajorVersion 70000"},
      {win32 + u"Word",
       "Win32VersionInfoPropertySetName: Property set Word, MajorVersion: '4x' is not a valid integer"},
      {ofSet, "DotNetVersionInfoPropertySetName: The name of the property set is blank."},
      {ofSet + u"New", "DotNetVersionInfoPropertySetName: Unable to find property set: New"},
      {ofSet + u"Old", "AssemblyVersion: AssemblyVersion \"70000.0.0.0\" is no version"},
      {u"OverrideWarnings=True&DisableSelectedWarnings=True&DisableWarnings=168\n",
       "DisableWarnings: \"168\n\" is not valid."},
  };
  for (const auto& [settings, entry] : cases) {
    Begin(settings);
    TRecordingValidation validation;
    action_->LookAhead(validation);
    const std::string found = Plain(testing::PrintToString(validation.Entries));
    ASSERT_EQ(validation.Entries.size(), entry.empty() ? 0U : 1U) << text::ToUtf8(settings) << found;
    EXPECT_THAT(Plain(entry.empty() ? "" : validation.Entries[0]), testing::StartsWith(entry));
    EXPECT_THAT(host_.Log(), testing::IsEmpty()) << text::ToUtf8(settings);
  }
}

TEST_F(BuildAction, FindsDevEnvWhereTheOptionsSay) {
  host_.Variables[u"Tools"] = u"C:\\VS";
  VSDotNetOptions()->SetDevEnv2008Location(u" %Tools%\\IDE ");
  EXPECT_EQ(action_->GetExecutable(false), u"C:\\VS\\IDE\\devenv.com");
}

TEST_F(BuildAction, TellsBeforehandWhichFilesItReads) {
  const auto reads = [this](const std::u16string& settings) {
    Begin(settings);
    text::TStringList files;
    action_->GetFilesToRead(files);
    return Plain(text::ToUtf8(text::Join(std::vector(files.begin(), files.end()), u" ")));
  };
  const std::u16string chosen = u"BuildType=btSelectedProjects&SelectedProjects=";
  const std::pair<std::u16string, std::string> cases[] = {
      {u"", "DIR/App.sln DIR/App/App.csproj DIR/Lib/Lib.csproj DIR/Setup/Setup.vdproj"},
      {chosen + LibId, "DIR/App.sln DIR/Lib/Lib.csproj"},
      {chosen + u"%P%", "DIR/App.sln DIR/App/App.csproj DIR/Lib/Lib.csproj"}, // which it needs
      {chosen + u"Nothing", "DIR/App.sln"},
      {u"Solution=missing.sln", ""}};
  host_.Variables[u"P"] = u"App";
  for (const auto& [settings, expected] : cases)
    EXPECT_EQ(reads(settings), expected) << text::ToUtf8(settings);

  const auto count = [&reads] { return std::ranges::count(reads(u""), ' '); };
  {
    const TKxAskingScope nothingChanges;
    EXPECT_EQ(count(), 3);
    folder_.Write("App.sln", With(u"Lib\\Lib.csproj", u"Lib\\No.csproj"));
    EXPECT_EQ(count(), 3) << "read once";
    EXPECT_EQ(reads(u"Solution=missing.sln"), "");
  }
  EXPECT_EQ(count(), 2) << "projects that are on disk";
}

TEST_F(BuildAction, HasPropertiesOfWhichEachIsItsOwn) {
  std::string effects = SideEffects<TKxVSDotNetAction>([this](auto& action) { action.Attach(host_); });
  effects.erase(std::ranges::remove(effects, '\r').begin(), effects.end());
  EXPECT_EQ(effects, R"(
AssemblyInfo: AssemblyInfo=Assembly Info 
AssemblyFileVersion: AssemblyFileVersionMajor=x 
AssemblyVersion: AssemblyVersionMajor=x 
AssemblyVersionMajor: AssemblyVersion=x||| 
AssemblyVersionMinor: AssemblyVersion=|x|| 
AssemblyVersionBuild: AssemblyVersion=||x| 
AssemblyVersionRevision: AssemblyVersion=|||x 
AssemblyFileVersionMajor: AssemblyFileVersion=x||| 
AssemblyFileVersionMinor: AssemblyFileVersion=|x|| 
AssemblyFileVersionBuild: AssemblyFileVersion=||x| 
AssemblyFileVersionRevision: AssemblyFileVersion=|||x 
VersionInfoKeys: VersionInfoKeys=x
 
WebDAVPassword: _WebDAVPassword=enc(x) )");
}

} // namespace
} // namespace kx::tests
