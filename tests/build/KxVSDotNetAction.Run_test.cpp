#include "tests/build/BuildActionFixture.h"

namespace kx::tests {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class BuildRun : public TBuildActionTest {};

const std::u16string Selection = u"UseMSBuild=False&BuildType=btSelectedProjects&SelectedProjects=" +
                                 std::u16string(AppId) + u"\n" + std::u16string(LibId);

// What the log holds of one run of a tool, up to its output.
std::string Ran(const std::string& tool, const std::string& parameters) {
  return "0 Running DIR/" + tool + " with parameters : " + parameters + "\n0 ------\n$ " + tool + "\n";
}
std::string DevEnv(const std::string& parameters) {
  return Ran("devenv.com", parameters + " \"DIR/App.sln\"");
}
std::string Project(const std::string& name, const std::string& configuration) {
  return "> Project " + name + "\n0 Processing Project : " + name + "\n0 Building project configuration \"" +
         configuration + "\" for solution configuration \"Debug|Any CPU\"\n";
}
std::string MSBuild(const std::string& platform, const std::string& project,
                    const std::string& loggers = "") {
  return "> MSBuild Properties\n0 Configuration=Debug\n0 Platform=" + platform + "\n< 0\n" +
         Ran("MSBuild.exe", "/t:Build " + loggers + "/p:Configuration=Debug;Platform=" + platform +
                                " /v:normal /m " + project);
}
const std::string Solution = "> Solution DIR/App.sln\n";
const std::string Debug = "[ Debug|Any CPU\n"; // a configuration begins
// What ends a configuration, and with it the execution.
const std::string Succeeded = "] 0\nsucceeded";
const std::string Failed = "] 1\nfailed";

// What devenv logs of the two selected projects, in build order.
std::string DevEnvProjects(const std::string& verb) {
  const std::string parameters = verb + " \"Debug|Any CPU\" /project ";
  return Project("Lib", "Debug|x86") + DevEnv(parameters + "\"Lib\\Lib.csproj\"") + "< 1\n" +
         Project("App", "Debug|Any CPU") + DevEnv(parameters + "\"App\\App.csproj\"");
}

TEST_F(BuildRun, OfTheWholeSolutionLogsExactly) {
  const std::string debug = Debug + Solution + DevEnv("/build \"Debug|Any CPU\"");
  EXPECT_EQ(Outcome(u"", {{{u"TandemorLogger|warning|file=|line=0|column=0|code=|project=|text=old", u"x"}}}),
            Debug + Solution +
                MSBuild("\"Any CPU\"", "\"DIR/App.sln\"",
                        "/logger:TandemorLogger,\"BIN/TandemorLogger.dll\" /noconlog ") +
                "2 warning: old\n0 x\n< 1\n# Compiler Errors 0\n# Compiler Warnings 1\n" + Succeeded);
  // The printed output of MSBuild, counted by its summary.
  EXPECT_EQ(Outcome(u"StructuredOutput=False",
                    {{{u"a.cs(1,1): error CS1: x", u"  2 Error(s)"}, 1, {u"an error = here"}}}),
            Debug + Solution + MSBuild("\"Any CPU\"", "\"DIR/App.sln\"") +
                "3 a.cs(1,1): error CS1: x\n# Compiler Errors 2\n0   2 Error(s)\n0 an error = here\n"
                "3 DIR/MSBuild.exe returned Error code : 1\n< 3\n" +
                Failed);
  EXPECT_EQ(Plain(host_.Runs().back().Directory), "DIR");
  // Two configurations that match, of which the first fails.
  EXPECT_EQ(Outcome(u"UseMSBuild=False&SolutionConfiguration=Debug.*|Rel",
                    {{{}, 2}, {{u"complete -- 0 errors, 1"}}}),
            debug + "3 DIR/devenv.com returned Error code : 2\n< 3\n] 1\n[ Release|Any CPU\n" + Solution +
                DevEnv("/build \"Release|Any CPU\"") +
                "# Compiler Errors 0\n# Compiler Warnings 1\n0 complete -- 0 errors, 1\n< 1\n" + Succeeded);
  EXPECT_EQ(Outcome(u"UseMSBuild=False&SolutionConfiguration=Debug("),
            "3 Error matching config regular expression : missing closing parenthesis at position 7 of "
            "\"Debug(\"\n! no-configuration App.sln has no configuration \"Debug(\". Did you mean "
            "\"Debug|Any CPU\"? "
            "It has Debug|Any CPU, Release|Any CPU.\n[ Debug(\n" +
                Solution + DevEnv("/build \"Debug(\"") + "< 1\n" + Succeeded);
  EXPECT_EQ(Outcome(u"UseMSBuild=False", {{{u"..."}, ExitCodeTerminated}}),
            debug + "0 ...\n3 Action Terminated by User.\n< 3\n" + Failed);
  EXPECT_EQ(Outcome(u"UseMSBuild=False", {{{}, 0, {}, u"no program"}}),
            debug + "3 Error Running DIR/devenv.com : no program\n< 3\nno program");
}

TEST_F(BuildRun, OfProjectsLogsExactly) {
  const std::string cleaning = "> Cleaning Projects\n" + DevEnvProjects("/clean");
  const std::string built = DevEnvProjects("/build") + "< 1\n" + Succeeded;
  EXPECT_EQ(Outcome(Selection), Debug + built);
  EXPECT_EQ(Outcome(Selection + u"&BuildAction=baRebuild"), Debug + cleaning + "< 1\n< 1\n" + built);
  // Where a clean fails nothing is built.
  EXPECT_EQ(Outcome(Selection + u"&BuildAction=baRebuild", {{{}}, {{}, 1}}),
            Debug + cleaning + "3 DIR/devenv.com returned Error code : 1\n< 3\n< 3\n" + Failed);
  // One file writes the platform without its blank; MSBuild cannot build setup projects.
  EXPECT_EQ(Outcome(u"BuildType=btIncludeDisabledProjects&StructuredOutput=False",
                    {{{}}, {{}}, {{u"1 error here"}, 4}}),
            Debug + Project("Lib", "Debug|x86") + MSBuild("x86", "/p:solutionDir=DIR/ \"Lib\\Lib.csproj\"") +
                "< 1\n" + Project("App", "Debug|Any CPU") +
                MSBuild("AnyCPU", "/p:solutionDir=DIR/ \"App\\App.csproj\"") +
                "< 1\n2 Warning : Setup project Installer cannot be built with MSBuild. "
                "This project will be built with VisualStudio instead.\n" +
                Project("Installer", "Debug") +
                DevEnv("/build \"Debug|Any CPU\" /project \"Setup\\Setup.vdproj\"") +
                "3 1 error here\n3 DIR/devenv.com returned Error code : 4\n< 3\n" + Failed);
  folder_.Write("App/App.csproj", "Debug|AnyCPU, Debug|Any CPU");
  EXPECT_THAT(Outcome(u"BuildType=btSelectedProjects&SelectedProjects=App"),
              HasSubstr("0 Platform=\"Any CPU\"\n"))
      << "a file that writes it both ways";
  // A project that the configuration leaves out counts as done.
  EXPECT_EQ(Outcome(u"UseMSBuild=False&SolutionConfiguration=Release|Any "
                    u"CPU&BuildType=btSelectedProjects&SelectedProjects=lib"),
            "[ Release|Any CPU\n> Project Lib\n0 Processing Project : Lib\n"
            "0 Project \"Lib\" is not built in solution configuration Release|Any CPU\n< 1\n] 2\n"
            "! nothing-built Nothing was built: none of the projects is part of Release|Any CPU.\nsucceeded");
}

TEST_F(BuildRun, TellsWhyNothingWasRun) {
  folder_.Write("Bad.sln", "no solution\n");
  services_.Frameworks[u"v2.0"] = folder_.Path() + u"/gone";
  const std::string unknown =
      "2 Warning : SelectedProjects, \"{44444444-4444-4444-4444-444444444444}\": App.sln has no project "
      "\"{44444444-4444-4444-4444-444444444444}\".\n";
  const auto option = [](const std::string& name, const std::string& tool) {
    return "2 Warning : The option " + name + " names no folder of " + tool +
           ". Set it: kxhost options set " + name + " FOLDER\nfailed";
  };
  const std::string no = " : Unknown name: No\n< 3\n";
  const std::pair<std::u16string, std::string> cases[] = {
      {u"SolutionConfiguration=", "3 Solution Configuration Name : a value is required.\nfailed"},
      {u"Solution=%No%", "3 Solution File Name : Unknown name: No\nFailed to expand solution file name."},
      {u"Solution=No.sln", "Solution File \"DIR/No.sln\" does not exist"},
      {u"Solution=Bad.sln",
       "2 Warning : reading stopped in DIR/Bad.sln, line 1.\n"
       "Error Parsing Solution File : Invalid Visual Studio Solution Header : no solution"},
      {u"UseMSBuild=False&BuildType=btSelectedProjects",
       Debug + "3 No Projects selected to build\n" + Failed},
      {Selection + u"\n{44444444-4444-4444-4444-444444444444}",
       Debug + unknown +
           "3 A Project selected is no longer part of this solution, please open the action properties "
           "dialog "
           "and select the correct projects\n" +
           Failed},
      {u"VStudioVersion=vs2010",
       "3 .NET Framework not found.\n" + option("DotNetFramework.v4.0", "MSBuild.exe")},
      {u"VStudioVersion=vs2003", "3 Path to Visual Studio installation not set in Options.\n" +
                                     option("VisualStudioDotNet.MSDevPath2003", "devenv.com")},
      {u"VStudioVersion=vs2005", "Executable not found : DIR/gone/MSBuild.exe"},
      {u"UpdateAssemblyInfo=True&UseDotNetPropertySet=True&DotNetVersionInfoPropertySetName=X",
       "> Updating AssemblyInfo\n3 Unable to find property set: X\n< 3\nfailed"},
      {u"ExtraCmdLineParams=%No%&UseMSBuild=False", Debug + Solution + "3 ExtraCmdLineParams" + no + Failed},
      {u"OverrideCompiler=True&CompilerConstants=%No%",
       Debug + Solution + "3 Define Constants" + no + "Failed to expand compiler constants."},
      {u"OverrideWarnings=True&DisableSelectedWarnings=True&DisableWarnings=1;x",
       Debug + Solution +
           "< 3\nDisabled Warnings list \"1;x\" is not valid. "
           "Only warning numbers, separated by semicolons, can be specified."},
      {u"ExtraMSBuildProperties=A=%No%",
       Debug + Solution + "< 3\nFailed to Extra MSBuild Properties: Unknown name: No"},
  };
  for (const auto& [settings, outcome] : cases)
    EXPECT_EQ(Outcome(settings), outcome);
}

TEST_F(BuildRun, FailsWhenTheSummaryOfAnOldDevEnvNamesAFailedProjectAndForgetsItForTheNextRun) {
  const std::u16string good = u"    Build: 3 succeeded, 0 failed, 0 skipped";
  const std::u16string bad = u"    Build: 2 succeeded, 1 failed, 0 skipped";
  const std::u16string old = u"VStudioVersion=vs2003&SolutionConfiguration=^Debug|^Release";
  const std::string failure = "3 One or more projects failed to build.\n< 3\n";
  VSDotNetOptions()->SetDevEnv2003Location(folder_.Path());
  EXPECT_THAT(Outcome(old, {{{u"x\n" + bad + u"\ny", good}}, {{good}}}),
              AllOf(HasSubstr(failure), EndsWith("succeeded")));
  EXPECT_THAT(Outcome(old, {{{good}}, {{bad}}}), EndsWith(failure + Failed));
  EXPECT_THAT(Outcome(u"UseMSBuild=False", {{{bad}}}), EndsWith("succeeded")) << "later exit codes tell";
}

TEST_F(BuildRun, CountsStructuredErrorsOfEachConfigurationAndAddsThemUp) {
  const std::u16string error = u"TandemorLogger|error|file=|line=0|column=0|code=|project=|text=x";
  EXPECT_THAT(Outcome(u"SolutionConfiguration=Debug|Release", {{{error, error}, 1}, {{error}, 1}}),
              AllOf(HasSubstr("# Compiler Errors 2\n"), HasSubstr("# Compiler Errors 1\n")));
  EXPECT_EQ(Get(u"CompilerErrorCount"), "3");
  Execute();
  EXPECT_EQ(Get(u"CompilerErrorCount"), "0") << "each execution counts anew";
}

TEST_F(BuildRun, ClosesTheProjectsThatTheToolLeftOpen) {
  const std::u16string begun = u"TandemorLogger|projectStarted|project=a.csproj|targets=";
  const TPlayback unfinished{.StdOut = {begun, begun}};
  EXPECT_THAT(
      Outcome(u"SolutionConfiguration=.*", {unfinished, {.StdOut = {begun}, .Exception = u"no pipe"}}),
      AllOf(HasSubstr("> Project a.csproj\n> Project a.csproj\n< 3\n< 3\n< 1\n"),
            EndsWith("> Project a.csproj\n< 3\n3 Error Running DIR/MSBuild.exe : no pipe\n< 3\nno pipe")));
}

TEST_F(BuildRun, StartsNothingAfterAStop) {
  const std::string stopped = "3 Action Terminated by User.\n< 3\n";
  const TPlayback during{.During = [this] { action_->TerminateAction(); }};
  const TPlayback after{.After = [this] { host_.StopRequest.Raise(); }};
  const std::u16string both = u"UseMSBuild=False&SolutionConfiguration=^Debug|^Release";
  EXPECT_EQ(Outcome(both, {during}),
            Debug + Solution + DevEnv("/build \"Debug|Any CPU\"") + stopped + Failed);
  EXPECT_EQ(Execute(), "succeeded") << "a new execution begins without the old request";
  EXPECT_EQ(Outcome(both, {after}), Debug + Solution + DevEnv("/build \"Debug|Any CPU\"") +
                                        "< 1\n] 0\n3 Action Terminated by User.\nfailed");
  host_.StopRequest.Clear();
  EXPECT_THAT(Outcome(Selection, {after}),
              EndsWith("< 1\n> Project App\n0 Processing Project : App\n0 Building project configuration "
                       "\"Debug|Any CPU\" for solution configuration \"Debug|Any CPU\"\n" +
                       stopped + Failed));
}

TEST_F(BuildRun, NamesTheEntriesOfASelectionThatMeanNoProject) {
  std::filesystem::remove(folder_.Native("Lib/Lib.csproj"));
  const std::pair<std::u16string, std::string> cases[] = {
      {u"%No%", "\"%No%\": Unknown name: No\n"},
      {u"Installler", "\"Installler\": App.sln has no project \"Installler\". Did you mean \"Installer\"?\n"},
      {u"Lib", "\"Lib\": The file of the project \"Lib\" does not exist: DIR/Lib/Lib.csproj\n"},
  };
  for (const auto& [entry, message] : cases)
    EXPECT_THAT(Outcome(u"BuildType=btSelectedProjects&SelectedProjects=App\n" + entry),
                AllOf(HasSubstr("2 Warning : SelectedProjects, " + message + "3 A Project selected"),
                      EndsWith(Failed)));
}

TEST_F(BuildRun, FailsForAConfigurationThatTheSolutionDoesNotHave) {
  const std::string missing =
      "! no-configuration App.sln has no configuration \"Relaese|Any CPU\". Did you mean \"Release|Any "
      "CPU\"? It has Release|Any CPU, Debug|Any CPU.\n";
  const std::u16string unknown = u"&UseRegExOnConfigName=False&SolutionConfiguration=Relaese|Any CPU";
  EXPECT_THAT(Outcome(Selection + unknown),
              AllOf(HasSubstr(missing + "[ Relaese"), HasSubstr("! nothing-built "), EndsWith("succeeded")));
  EXPECT_THAT(Outcome(u"UseMSBuild=False" + unknown), AllOf(HasSubstr(missing), EndsWith(Succeeded)))
      << "a tool that says nothing of it does not make it good";
  EXPECT_THAT(Outcome(u"UseMSBuild=False&UseRegExOnConfigName=False&SolutionConfiguration=release"),
              Not(HasSubstr("!")))
      << "tools choose a platform themselves";
}

TEST_F(BuildRun, ANameThatIsTakenForAnExpressionIsSaidBeforeAnythingRuns) {
  EXPECT_THAT(
      Outcome(u"UseMSBuild=False&SolutionConfiguration=Release|x86"),
      AllOf(testing::StartsWith("2 Warning : App.sln has no configuration \"Release|x86\". Read as an "
                                "expression, it matches Release|Any CPU."),
            EndsWith(Succeeded)));
}

// What the tool says of its projects decides, and a tool that says nothing is believed.
TEST_F(BuildRun, IsNoSuccessWhenTheToolBuiltNothing) {
  const std::u16string end = u"TandemorLogger|projectFinished|succeeded=true|project=";
  const struct {
    std::string Name;
    std::u16string Settings;
    std::vector<std::u16string> Output;
    bool Nothing;
  } cases[] = {
      {"devenv skipped all",
       u"UseMSBuild=False",
       {u"===== Build: 0 succeeded, 0 failed, 2 skipped ====="},
       true},
      {"devenv found some up to date",
       u"UseMSBuild=False",
       {u"===== Build: 0 succeeded, 0 failed, 1 up-to-date, 2 skipped ====="},
       false},
      {"MSBuild ended the solution alone", u"", {end + u"/a/App.sln"}, true},
      {"MSBuild ended a project", u"", {end + u"/a/App.sln", end + u"/a/App.csproj"}, false},
      {"the logger said nothing", u"", {u"..."}, false},
      {"xbuild began the solution alone",
       u"StructuredOutput=False",
       {u"Project \"/a/App.sln\" (default target(s)):"},
       true},
      {"xbuild had nothing to clean",
       u"StructuredOutput=False&BuildAction=baClean",
       {u"Project \"/a/App.sln\" (Clean target(s)):"},
       false},
      {"xbuild began a project",
       u"StructuredOutput=False",
       {u"Project \"/a/App.sln\" (default target(s)):", u"\tProject \"/a/Lib.csproj\" (default target(s)):"},
       false},
  };
  for (const auto& row : cases) {
    const std::string log = Outcome(row.Settings, {{row.Output}});
    EXPECT_THAT(log, EndsWith("succeeded")) << row.Name;
    EXPECT_EQ(log.find("! nothing-built ") != std::string::npos, row.Nothing) << row.Name;
    EXPECT_THAT(log, HasSubstr(row.Nothing ? "] 2\n" : "] 0\n")) << row.Name;
  }
  // One configuration that built something is enough.
  EXPECT_THAT(Outcome(u"SolutionConfiguration=.*", {{{end + u"/a/App.sln"}}, {{end + u"/a/App.csproj"}}}),
              AllOf(HasSubstr("] 2\n"), EndsWith(Succeeded), Not(HasSubstr("!"))));
}

TEST_F(BuildRun, ReadsTheWordsOfTheToolThatRan) {
  EXPECT_THAT(Outcome(u"BuildType=btSelectedProjects&SelectedProjects=Installer",
                      {{{u"1 error here", u"complete -- 1 error, 2"}}}),
              HasSubstr("3 1 error here\n# Compiler Errors 1\n# Compiler Warnings 2\n"));
}

TEST_F(BuildRun, NeedsDevEnvForSetupProjectsBeforeItBeginsAny) {
  VSDotNetOptions()->SetDevEnv2008Location(u"");
  const std::u16string all = u"BuildType=btIncludeDisabledProjects";
  EXPECT_THAT(Outcome(all),
              AllOf(testing::StartsWith("3 Path to Visual Studio installation not set in Options.\n"),
                    EndsWith(" FOLDER\nfailed")));
  EXPECT_THAT(host_.Runs(), testing::IsEmpty());
  EXPECT_THAT(Outcome(u"BuildType=btSelectedProjects&SelectedProjects=Lib"), EndsWith(Succeeded));
  EXPECT_THAT(Outcome(all + u"&SolutionConfiguration=Release|Any CPU"), Not(HasSubstr("not set in Options")))
      << "it leaves the setup project out";
}

TEST_F(BuildRun, WarnsOfProjectsThatItLeavesOutBecauseTheyAreNotOnDisk) {
  folder_.Write("gone/Lib/Lib.csproj", "<Project/>");
  folder_.Write("gone/App.sln", SmallSolution);
  const std::u16string oneByOne = u"BuildType=btIncludeDisabledProjects";
  EXPECT_THAT(Outcome(u"Solution=gone/App.sln&" + oneByOne),
              AllOf(HasSubstr("2 Warning : Projects of Debug|Any CPU are not on disk: App\\App.csproj, "
                              "Setup\\Setup.vdproj. They are not built.\n"),
                    HasSubstr("> Project Lib\n"), Not(HasSubstr("> Project App\n"))));
  EXPECT_THAT(Outcome(oneByOne), Not(HasSubstr("not on disk")));
  // The folder of a web site is there; a group of projects has nothing to be there.
  folder_.Write("gone/Setup/Setup.vdproj/Default.aspx");
  folder_.Write("gone/App.sln",
                text::ToUtf8(text::ReplaceAll(text::FromUtf8(SmallSolution),
                                              u"FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"App",
                                              u"2150E333-8FDC-42A3-9474-1A3956D46DE8}\") = \"App")));
  EXPECT_THAT(Outcome(u"Solution=gone/App.sln&" + oneByOne), Not(HasSubstr("not on disk")));
}

TEST_F(BuildRun, WarnsOnceOfAFolderThatMSBuildCannotBeTold) {
  const std::string warning = "2 Warning : The solution's folder \"DIR/my app";
  for (const auto* name : {"App/App.csproj", "Lib/Lib.csproj", "Setup/Setup.vdproj"})
    folder_.Write("my app/" + std::string(name), "<Project/>");
  folder_.Write("my app/App.sln", SmallSolution);
  const std::u16string both =
      u"&Solution=my app/App.sln&BuildType=btSelectedProjects&SelectedProjects=App\nLib";
  const std::string log = Outcome(both.substr(1));
  EXPECT_LT(log.find(warning), log.find("0 Running "));
  EXPECT_EQ(log.find(warning), log.rfind(warning));
  for (const std::u16string_view healthy : {u"&UseMSBuild=False", u"&BuildType=btAllProjects"})
    EXPECT_THAT(Outcome(both.substr(1) + std::u16string(healthy)), Not(HasSubstr("Warning : ")));
}

TEST_F(BuildRun, WarnsOnceOfProjectsThatShareAnIdentifier) {
  folder_.Write("App.sln", SolutionWithTwins());
  const std::string warning =
      "2 Warning : App.sln gives different projects one identifier: Lib\\Lib.csproj and ";
  const std::string log = Outcome(u"BuildType=btIncludeDisabledProjects&BuildAction=baRebuild");
  EXPECT_LT(log.find(warning), log.find("0 Running "));
  EXPECT_EQ(log.find(warning), log.rfind(warning));
  EXPECT_THAT(Outcome(u"BuildType=btAllProjects"), Not(HasSubstr("Warning : ")));
}

TEST_F(BuildRun, ASelectionByVariableIsLookedUpInEachRun) {
  Set(u"UseMSBuild=False&BuildType=btSelectedProjects&SelectedProjects=%Which%");
  for (const std::u16string_view name : {u"App", u"Lib"}) {
    host_.Variables[u"Which"] = name;
    EXPECT_EQ(Execute(), "succeeded");
    EXPECT_THAT(Log(), HasSubstr("> Project " + text::ToUtf8(name) + "\n"));
  }
}

} // namespace
} // namespace kx::tests
