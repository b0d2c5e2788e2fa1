#include "tests/build/BuildActionFixture.h"

namespace kx::tests {
namespace {

class BuildRun : public TBuildActionTest {};

const std::u16string Selection = std::u16string(AppId) + u"\r\n" + std::u16string(LibId);
const TSettings DevEnv{{u"UseMSBuild", u"False"}};
const TSettings DevEnvSelected{
    {u"UseMSBuild", u"False"}, {u"BuildType", u"btSelectedProjects"}, {u"SelectedProjects", Selection}};

struct TRunCase {
  const char* What;
  TSettings Settings;
  std::vector<TPlayback> Playbacks;
  const char* Result;
  const char* Log;
};

class BuildRunLog : public BuildRun, public testing::WithParamInterface<TRunCase> {};

TEST_P(BuildRunLog, IsExactly) {
  Set(GetParam().Settings);
  for (const auto& playback : GetParam().Playbacks)
    host_.Play(playback);
  EXPECT_EQ(Execute(), GetParam().Result);
  EXPECT_EQ(Log(), std::string(GetParam().Log).substr(1));
  EXPECT_EQ(host_.OpenGroups(), 0);
  for (const auto& run : host_.Runs())
    EXPECT_EQ(Plain(run.Directory), "DIR");
}

const TRunCase RunCases[] = {
    {"the whole solution with MSBuild and its structured output",
     {},
     {{{u"TandemorLogger|warning|file=|line=0|column=0|code=|project=|text=old", u"Time Elapsed"}}},
     "succeeded",
     R"(
> Solution DIR/App.sln
> MSBuild Properties
0 Configuration=Debug
0 Platform="Any CPU"
< 0
0 Running DIR/MSBuild.exe with parameters : /t:Build /logger:TandemorLogger,"BIN/TandemorLogger.dll" /noconlog /p:Configuration=Debug;Platform="Any CPU" /v:normal /m "DIR/App.sln"
0 ------
$ MSBuild.exe
2 warning: old
0 Time Elapsed
< 1
# Compiler Errors 0
# Compiler Warnings 1
)"},
    {"printed output of MSBuild, counted by its summary",
     {{u"StructuredOutput", u"False"}},
     {{{u"a.cs(1,1): error CS1: x", u"    0 Warning(s)", u"    2 Error(s)"}, 1, {u"an error = here"}}},
     "failed",
     R"(
> Solution DIR/App.sln
> MSBuild Properties
0 Configuration=Debug
0 Platform="Any CPU"
< 0
0 Running DIR/MSBuild.exe with parameters : /t:Build /p:Configuration=Debug;Platform="Any CPU" /v:normal /m "DIR/App.sln"
0 ------
$ MSBuild.exe
3 a.cs(1,1): error CS1: x
0     0 Warning(s)
# Compiler Errors 2
0     2 Error(s)
0 an error = here
3 DIR/MSBuild.exe returned Error code : 1
< 3
)"},
    {"two configurations that match, of which the first fails",
     {{u"UseMSBuild", u"False"}, {u"SolutionConfiguration", u"Debug.*|Rel"}},
     {{{}, 2}, {{u"Build complete -- 0 errors, 1 warnings"}}},
     "succeeded",
     R"(
> Solution DIR/App.sln
0 Running DIR/devenv.com with parameters : /build "Debug|Any CPU" "DIR/App.sln"
0 ------
$ devenv.com
3 DIR/devenv.com returned Error code : 2
< 3
> Solution DIR/App.sln
0 Running DIR/devenv.com with parameters : /build "Release|Any CPU" "DIR/App.sln"
0 ------
$ devenv.com
# Compiler Errors 0
# Compiler Warnings 1
0 Build complete -- 0 errors, 1 warnings
< 1
)"},
    {"selected projects, in build order",
     DevEnvSelected,
     {},
     "succeeded",
     R"(
> Project Lib
0 Processing Project : Lib
0 Building project configuration "Debug|x86" for solution configuration "Debug|Any CPU"
0 Running DIR/devenv.com with parameters : /build "Debug|Any CPU" /project "Lib\Lib.csproj" "DIR/App.sln"
0 ------
$ devenv.com
< 1
> Project App
0 Processing Project : App
0 Building project configuration "Debug|Any CPU" for solution configuration "Debug|Any CPU"
0 Running DIR/devenv.com with parameters : /build "Debug|Any CPU" /project "App\App.csproj" "DIR/App.sln"
0 ------
$ devenv.com
< 1
)"},
    {"a rebuild of selected projects whose second clean fails",
     {{u"UseMSBuild", u"False"},
      {u"BuildAction", u"baRebuild"},
      {u"BuildType", u"btSelectedProjects"},
      {u"SelectedProjects", Selection}},
     {{{}}, {{}, 1}},
     "failed",
     R"(
> Cleaning Projects
> Project Lib
0 Processing Project : Lib
0 Building project configuration "Debug|x86" for solution configuration "Debug|Any CPU"
0 Running DIR/devenv.com with parameters : /clean "Debug|Any CPU" /project "Lib\Lib.csproj" "DIR/App.sln"
0 ------
$ devenv.com
< 1
> Project App
0 Processing Project : App
0 Building project configuration "Debug|Any CPU" for solution configuration "Debug|Any CPU"
0 Running DIR/devenv.com with parameters : /clean "Debug|Any CPU" /project "App\App.csproj" "DIR/App.sln"
0 ------
$ devenv.com
3 DIR/devenv.com returned Error code : 1
< 3
< 3
)"},
    {"all projects with MSBuild: a setup project, and a platform that the project file writes without a "
     "blank",
     {{u"BuildType", u"btIncludeDisabledProjects"}, {u"StructuredOutput", u"False"}},
     {{{}}, {{}}, {{u"1 error here"}, 4}},
     "failed",
     R"(
> Project Lib
0 Processing Project : Lib
0 Building project configuration "Debug|x86" for solution configuration "Debug|Any CPU"
> MSBuild Properties
0 Configuration=Debug
0 Platform=x86
< 0
0 Running DIR/MSBuild.exe with parameters : /t:Build /p:Configuration=Debug;Platform=x86 /v:normal /m /p:solutionDir=DIR/ "Lib\Lib.csproj"
0 ------
$ MSBuild.exe
< 1
> Project App
0 Processing Project : App
0 Building project configuration "Debug|Any CPU" for solution configuration "Debug|Any CPU"
> MSBuild Properties
0 Configuration=Debug
0 Platform=AnyCPU
< 0
0 Running DIR/MSBuild.exe with parameters : /t:Build /p:Configuration=Debug;Platform=AnyCPU /v:normal /m /p:solutionDir=DIR/ "App\App.csproj"
0 ------
$ MSBuild.exe
< 1
2 Warning : Setup project Installer cannot be built with MSBuild. This project will be built with VisualStudio instead.
> Project Installer
0 Processing Project : Installer
0 Building project configuration "Debug" for solution configuration "Debug|Any CPU"
0 Running DIR/devenv.com with parameters : /build "Debug|Any CPU" /project "Setup\Setup.vdproj" "DIR/App.sln"
0 ------
$ devenv.com
3 1 error here
3 DIR/devenv.com returned Error code : 4
< 3
)"},
    {"a project that the configuration leaves out counts as done",
     {{u"SolutionConfiguration", u"Release|Any CPU"},
      {u"UseMSBuild", u"False"},
      {u"BuildType", u"btSelectedProjects"},
      {u"SelectedProjects", std::u16string(SetupId)}},
     {},
     "succeeded",
     R"(
> Project Installer
0 Processing Project : Installer
0 Project "Installer" is not built in solution configuration Release|Any CPU
< 1
)"},
    {"a configuration that nobody knows goes to the tool",
     {{u"UseMSBuild", u"False"},
      {u"SolutionConfiguration", u"Nightly"},
      {u"ExtraCmdLineParams", u"/out log.txt"}},
     {{{}, 1}},
     "failed",
     R"(
> Solution DIR/App.sln
0 Running DIR/devenv.com with parameters : /out log.txt /build "Nightly" "DIR/App.sln"
0 ------
$ devenv.com
3 DIR/devenv.com returned Error code : 1
< 3
)"},
    {"an expression that cannot be read",
     {{u"UseMSBuild", u"False"}, {u"SolutionConfiguration", u"Debug("}},
     {},
     "succeeded",
     R"(
3 Error matching config regular expression : missing closing parenthesis at position 7 of "Debug("
> Solution DIR/App.sln
0 Running DIR/devenv.com with parameters : /build "Debug(" "DIR/App.sln"
0 ------
$ devenv.com
< 1
)"},
    {"the user stops the tool",
     DevEnv,
     {{{u"Compiling..."}, ExitCodeTerminated}},
     "failed",
     R"(
> Solution DIR/App.sln
0 Running DIR/devenv.com with parameters : /build "Debug|Any CPU" "DIR/App.sln"
0 ------
$ devenv.com
0 Compiling...
3 Action Terminated by User.
< 3
)"},
    {"the tool cannot be started",
     DevEnv,
     {{{}, 0, {}, u"not a program"}},
     "not a program",
     R"(
> Solution DIR/App.sln
0 Running DIR/devenv.com with parameters : /build "Debug|Any CPU" "DIR/App.sln"
0 ------
$ devenv.com
3 Error Running DIR/devenv.com : not a program
< 3
)"},
    {"a list of warnings that MSBuild would not read, inside open groups",
     {{u"OverrideWarnings", u"True"}, {u"DisableSelectedWarnings", u"True"}, {u"DisableWarnings", u"168;x"}},
     {},
     "Disabled Warnings list \"168;x\" is not valid. Only warning numbers, separated by semicolons, can be "
     "specified.",
     "\n> Solution DIR/App.sln\n< 3\n"},
    {"extra parameters that cannot be expanded",
     {{u"ExtraCmdLineParams", u"%Nowhere%"}},
     {},
     "failed",
     R"(
> Solution DIR/App.sln
3 ExtraCmdLineParams : Unknown name: Nowhere
< 3
# Compiler Errors 0
# Compiler Warnings 0
)"},
    {"no configuration given",
     {{u"SolutionConfiguration", u""}},
     {},
     "failed",
     "\n3 Solution Configuration Name : a value is required.\n"},
    {"a solution name that cannot be expanded",
     {{u"Solution", u"%Nowhere%"}},
     {},
     "Failed to expand solution file name.",
     "\n3 Solution File Name : Unknown name: Nowhere\n"},
    {"a solution that is not there",
     {{u"Solution", u"No.sln"}},
     {},
     "Solution File \"DIR/No.sln\" does not exist",
     "\n"},
    {"nothing selected",
     {{u"BuildType", u"btSelectedProjects"}, {u"UseMSBuild", u"False"}},
     {},
     "failed",
     "\n3 No Projects selected to build\n"},
    {"a selection that the solution no longer holds",
     {{u"BuildType", u"btSelectedProjects"},
      {u"UseMSBuild", u"False"},
      {u"SelectedProjects", Selection + u"\n{44444444-4444-4444-4444-444444444444}"}},
     {},
     "failed",
     R"(
3 A Project selected is no longer part of this solution, please open the action properties dialog and select the correct projects
)"},
    {"no framework", {{u"VStudioVersion", u"vs2010"}}, {}, "failed", "\n3 .NET Framework not found.\n"},
    {"no Visual Studio",
     {{u"VStudioVersion", u"vs2003"}},
     {},
     "failed",
     "\n3 Path to Visual Studio installation not set in Options.\n"},
    {"stamping of Win32 resources without a name of the set",
     {{u"UpdateWin32Resource", u"True"}, {u"UseWin32PropertySet", u"True"}},
     {},
     "failed",
     "\n> Updating Win32 Version Info\n3 Win32 PropertySet name is blank\n< 3\n"},
    {"stamping of AssemblyInfo files from a set that is not there",
     {{u"UpdateAssemblyInfo", u"True"},
      {u"UseDotNetPropertySet", u"True"},
      {u"DotNetVersionInfoPropertySetName", u"Release"}},
     {},
     "failed",
     "\n> Updating AssemblyInfo\n3 Unable to find property set: Release\n< 3\n"},
};
INSTANTIATE_TEST_SUITE_P(Build, BuildRunLog, testing::ValuesIn(RunCases),
                         [](const auto& row) { return "Case" + std::to_string(row.index); });
void PrintTo(const TRunCase& row, std::ostream* out) {
  *out << row.What;
}

TEST_F(BuildRun, FailsWhenTheSummaryOfAnOldDevEnvNamesAFailedProjectAndForgetsItForTheNextRun) {
  VSDotNetOptions()->SetDevEnv2003Location(folder_.Path());
  Set({{u"VStudioVersion", u"vs2003"}, {u"SolutionConfiguration", u"^Debug|^Release"}});
  host_.Play({{u"    Build: 2 succeeded, 1 failed, 0 skipped"}})
      .Play({{u"    Build: 3 succeeded, 0 failed, 0 skipped"}});
  EXPECT_EQ(Execute(), "succeeded");
  EXPECT_THAT(host_.Log(), testing::Contains("3 One or more projects failed to build.").Times(1));
  host_.ClearLog();
  host_.Play({{u"    Build: 3 succeeded, 0 failed, 0 skipped"}})
      .Play({{u"    Build: 2 succeeded, 1 failed, 0 skipped"}});
  EXPECT_EQ(Execute(), "failed");
}

TEST_F(BuildRun, CountsStructuredErrorsOfEachConfigurationAndAddsThemUp) {
  const std::u16string error = u"TandemorLogger|error|file=|line=0|column=0|code=|project=|text=x";
  Set({{u"SolutionConfiguration", u"Debug|Release"}});
  host_.Play({{error, error}, 1}).Play({{error}, 1});
  EXPECT_EQ(Execute(), "failed");
  EXPECT_THAT(host_.Log(), testing::IsSupersetOf({"# Compiler Errors 2", "# Compiler Errors 1"}));
  EXPECT_EQ(Get(u"CompilerErrorCount"), "3");
  Execute();
  EXPECT_EQ(Get(u"CompilerErrorCount"), "0") << "each execution counts anew";
}

TEST_F(BuildRun, KnowsTheConfigurationThatIsBeingBuilt) {
  Set(DevEnv);
  Set({{u"SolutionConfiguration", u"Rel"},
       {u"ExtraCmdLineParams", u"/out $(currentconfigname)-%CURRENTPLATFORMNAME%"}});
  EXPECT_EQ(Execute(), "succeeded");
  EXPECT_EQ(Parameters(), "/out Release-Any CPU /build \"Release|Any CPU\" \"DIR/App.sln\"\n");
}

TEST_F(BuildRun, StopsBetweenConfigurationsAsWell) {
  Set(DevEnv);
  Set({{u"SolutionConfiguration", u"Debug|Release"}});
  host_.Play({{}, 0, {}, {}, [this] { action_.TerminateAction(); }});
  EXPECT_EQ(Execute(), "failed");
  EXPECT_EQ(host_.Runs().size(), 1U);
  EXPECT_EQ(Execute(), "succeeded") << "a new execution begins without the old request";
}

TEST_F(BuildRun, ReportsASolutionThatCannotBeRead) {
  folder_.Write("App.sln", "no solution\n");
  EXPECT_THAT(Execute(), testing::StartsWith("Error Parsing Solution File : "));
}

TEST_F(BuildRun, RefusesAToolThatIsConfiguredButMissing) {
  services_.Frameworks[u"v3.5"] = folder_.Path() + u"/gone";
  EXPECT_EQ(Execute(), "Executable not found : DIR/gone/MSBuild.exe");
}

TEST_F(BuildRun, EndsAnExpressionThatBacktracksForEver) {
  const std::string solution = text::ToUtf8(
      text::ReplaceAll(text::FromUtf8(SmallSolution), u"Debug|Any CPU", std::u16string(60, u'a') + u"b"));
  folder_.Write("App.sln", solution);
  Set(DevEnv);
  Set({{u"SolutionConfiguration", u"^(a|aa)+$"}});
  EXPECT_EQ(Execute(), "succeeded");
  EXPECT_THAT(Log(), testing::HasSubstr("3 Error matching config regular expression : "));
}

TEST_F(BuildRun, ASelectionByVariableIsLookedUpInEachRun) {
  Set({{u"UseMSBuild", u"False"}, {u"BuildType", u"btSelectedProjects"}, {u"SelectedProjects", u"%Which%"}});
  for (const std::u16string_view name : {u"App", u"Lib"}) {
    host_.ClearLog();
    host_.Variables[u"Which"] = name;
    EXPECT_EQ(Execute(), "succeeded");
    EXPECT_THAT(Log(), testing::HasSubstr("> Project " + text::ToUtf8(name) + "\n"));
  }
}

} // namespace
} // namespace kx::tests
