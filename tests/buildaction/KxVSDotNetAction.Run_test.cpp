#include "tests/buildaction/BuildActionFixture.h"

namespace kx::tests {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class BuildRun : public TBuildActionTest {};

const std::u16string Select = u"BuildType=btSelectedProjects&SelectedProjects=";
// One by its id, one by its name.
const std::u16string Selection =
    u"UseMSBuild=False&" + Select + u"{11111111-1111-1111-1111-111111111111}\nLib";
const std::u16string OneByOne = u"BuildType=btIncludeDisabledProjects";

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

TEST_F(BuildRun, OfProjectsLogsExactly) {
  const std::string cleaning = "> Cleaning Projects\n" + DevEnvProjects("/clean");
  EXPECT_EQ(Outcome(Selection + u"&BuildAction=baRebuild"),
            Debug + cleaning + "< 1\n< 1\n" + DevEnvProjects("/build") + "< 1\n" + Succeeded);
  // Where a clean fails nothing is built.
  EXPECT_EQ(Outcome(Selection + u"&BuildAction=baRebuild", {{{}}, {{}, 1}}),
            Debug + cleaning + "3 DIR/devenv.com returned Error code : 1\n< 3\n< 3\n" + Failed);
  // One file writes the platform without its blank; MSBuild cannot build setup projects.
  EXPECT_EQ(Outcome(OneByOne + u"&StructuredOutput=False", {{{}}, {{}}, {{u"1 error here"}, 4}}),
            Debug + Project("Lib", "Debug|x86") + MSBuild("x86", "/p:solutionDir=DIR/ \"Lib\\Lib.csproj\"") +
                "< 1\n" + Project("App", "Debug|Any CPU") +
                MSBuild("AnyCPU", "/p:solutionDir=DIR/ \"App\\App.csproj\"") +
                "< 1\n2 Warning : Setup project Installer cannot be built with MSBuild. "
                "This project will be built with VisualStudio instead.\n" +
                Project("Installer", "Debug") +
                DevEnv("/build \"Debug|Any CPU\" /project \"Setup\\Setup.vdproj\"") +
                "3 1 error here\n3 DIR/devenv.com returned Error code : 4\n< 3\n" + Failed);
  // A project that the configuration leaves out counts as done.
  EXPECT_EQ(Outcome(u"UseMSBuild=False&SolutionConfiguration=Release|Any CPU&" + Select + u"lib"),
            "[ Release|Any CPU\n> Project Lib\n0 Processing Project : Lib\n"
            "0 Project \"Lib\" is not built in solution configuration Release|Any CPU\n< 1\n] 2\n"
            "! nothing-built Nothing was built: none of the projects is part of Release|Any CPU.\nsucceeded");
}

TEST_F(BuildRun, TellsWhyNothingWasRun) {
  folder_.Write("Bad.sln", "no solution\n");
  services_.Frameworks[u"v2.0"] = folder_.Path() + u"/gone";
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
      {u"UseMSBuild=False&" + Select, Debug + "3 No Projects selected to build\n" + Failed},
      {Selection + u"\n{4}",
       Debug +
           "2 Warning : SelectedProjects, \"{4}\": App.sln has no project \"{4}\".\n"
           "3 A Project selected is no longer part of this solution, please open the action "
           "properties dialog and select the correct projects\n" +
           Failed},
      {u"VStudioVersion=vs2010",
       "3 .NET Framework not found.\n" + option("DotNetFramework.v4.0", "MSBuild.exe")},
      {u"VStudioVersion=vs2003", "3 Path to Visual Studio installation not set in Options.\n" +
                                     option("VisualStudioDotNet.MSDevPath2003", "devenv.com")},
      {u"VStudioVersion=vs2005", "Executable not found : DIR/gone/MSBuild.exe"},
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

TEST_F(BuildRun, CountsStructuredErrorsOfEachConfigurationAndAddsThemUp) {
  const std::u16string error = u"TandemorLogger|error|file=|line=0|column=0|code=|project=|text=x";
  EXPECT_THAT(Outcome(u"SolutionConfiguration=Debug|Release", {{{error, error}, 1}, {{error}, 1}}),
              AllOf(HasSubstr("# Compiler Errors 2\n"), HasSubstr("# Compiler Errors 1\n")));
  EXPECT_EQ(Get(u"CompilerErrorCount"), "3");
  Execute();
  EXPECT_EQ(Get(u"CompilerErrorCount"), "0") << "each execution counts anew";
}

TEST_F(BuildRun, StartsNothingAfterAStop) {
  const std::string stopped = "3 Action Terminated by User.\n< 3\n";
  const std::string debug = Debug + Solution + DevEnv("/build \"Debug|Any CPU\"");
  const TPlayback during{.During = [this] { action_->TerminateAction(); }};
  const TPlayback after{.After = [this] { host_.StopRequest.Raise(); }};
  const std::u16string both = u"UseMSBuild=False&SolutionConfiguration=^Debug|^Release";
  EXPECT_EQ(Outcome(both, {during}), debug + stopped + Failed);
  EXPECT_EQ(Execute(), "succeeded") << "a new execution begins without the old request";
  EXPECT_EQ(Outcome(both, {after}), debug + "< 1\n] 0\n3 Action Terminated by User.\nfailed");
  host_.StopRequest.Clear();
  EXPECT_THAT(Outcome(Selection, {after}),
              EndsWith("< 1\n" + Project("App", "Debug|Any CPU") + stopped + Failed));
}

// Said before any tool runs, and not again for each configuration or project.
MATCHER_P(SaysFirst, text, "") {
  const std::size_t at = arg.find(text);
  return at < arg.find("0 Running ") && at == arg.rfind(text);
}

TEST_F(BuildRun, SaysInItsLogWhatIsAmissAndNothingOfWhatIsNot) {
  folder_.Write("App/Both.csproj", "Debug|AnyCPU, Debug|Any CPU");
  folder_.Write("both.sln", With(u"App\\App.csproj", u"App\\Both.csproj"));
  folder_.Write("twins.sln", SolutionWithTwins());
  folder_.Write("same.sln", With(u"\"Installer\"", u"\"App\""));
  for (const std::string file : {"App.sln", "App/App.csproj", "Lib/Lib.csproj", "Setup/Setup.vdproj"})
    folder_.Write("my app/" + file, file == "App.sln" ? SmallSolution : "<Project/>");
  folder_.Write("gone/App.sln", SmallSolution);
  folder_.Write("gone/Lib/Lib.csproj", "<Project/>");
  // The folder of a web site is there; a group of projects has nothing to be there.
  folder_.Write("web/Lib/Lib.csproj", "<Project/>");
  folder_.Write("web/Setup/Setup.vdproj/Default.aspx");
  folder_.Write("web/App.sln", With(u"FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}\") = \"App",
                                    u"2150E333-8FDC-42A3-9474-1A3956D46DE8}\") = \"App"));
  VSDotNetOptions()->SetDevEnv2003Location(folder_.Path());
  services_.Frameworks[u"v4.0"] = folder_.Path();
  const std::u16string good = u"    Build: 3 succeeded, 0 failed, 0 skipped";
  const std::u16string bad = u"    Build: 2 succeeded, 1 failed, 0 skipped";
  const std::u16string old = u"VStudioVersion=vs2003&SolutionConfiguration=^Debug|^Release";
  const std::string failure = "3 One or more projects failed to build.\n< 3\n";
  const std::u16string begun = u"TandemorLogger|projectStarted|project=a.csproj|targets=";
  const std::u16string unknown = u"&UseRegExOnConfigName=False&SolutionConfiguration=Relaese|Any CPU";
  const auto missing = HasSubstr("! no-configuration App.sln has no configuration \"Relaese|Any CPU\". Did "
                                 "you mean \"Release|Any CPU\"? It has Release|Any CPU, Debug|Any CPU.\n[ ");
  const std::u16string gone = u"Solution=gone/App.sln&", blank = u"Solution=my app/App.sln&";
  const std::string selected = "2 Warning : SelectedProjects, ";
  const auto folder = SaysFirst("2 Warning : The solution's folder \"DIR/my app");
  const auto quiet = AllOf(Not(HasSubstr("Warning : ")), Not(HasSubstr("!")), EndsWith(Succeeded));
  using TTools = std::vector<TPlayback>;
  const struct {
    const char* Name;
    std::u16string Settings;
    testing::Matcher<std::string> Log;
    TTools Tools = {};
  } cases[] = {
      {"an old devenv tells by its summary, and it is forgotten for the next run", old,
       AllOf(HasSubstr(failure), EndsWith(Succeeded)), TTools{{{u"x\n" + bad + u"\ny", good}}, {{good}}}},
      {"which counts in the last", old, EndsWith(failure + Failed), TTools{{{good}}, {{bad}}}},
      {"later ones tell by their exit code", u"UseMSBuild=False", quiet, TTools{{{bad}}}},
      {"projects that the tool left open are closed", u"SolutionConfiguration=.*",
       AllOf(HasSubstr("> Project a.csproj\n> Project a.csproj\n< 3\n< 3\n< 1\n"),
             EndsWith("> Project a.csproj\n< 3\n3 Error Running DIR/MSBuild.exe : no pipe\n< 3\nno pipe")),
       TTools{{{begun, begun}}, {.StdOut = {begun}, .Exception = u"no pipe"}}},
      {"the words are those of the tool that ran", Select + u"Installer",
       HasSubstr("3 1 error here\n# Compiler Errors 1\n# Compiler Warnings 2\n"),
       TTools{{{u"1 error here", u"complete -- 1 error, 2"}}}},
      {"a selected name without a value", Select + u"App\n%No%",
       AllOf(HasSubstr(selected + "\"%No%\": Unknown name: No\n3 A"), EndsWith(Failed))},
      {"a selected project that is not on disk", gone + Select + u"App",
       HasSubstr(selected + "\"App\": The file of the project \"App\" does not exist: DIR/gone/App/App")},
      {"a name of two projects", u"Solution=same.sln&" + Select + u"App",
       SaysFirst("2 Warning : SelectedProjects, \"App\": same.sln has 2 projects \"App\". Taken is "
                 "App\\App.csproj; name the file instead.\n")},
      {"no such configuration", Selection + unknown, AllOf(missing, HasSubstr("! nothing-built "))},
      {"a tool that says nothing of it does not make it good", u"UseMSBuild=False" + unknown, missing},
      {"tools choose a platform",
       u"UseMSBuild=False&UseRegExOnConfigName=False&SolutionConfiguration=release", quiet},
      {"no expression, which is run all the same", u"UseMSBuild=False&SolutionConfiguration=Debug(",
       AllOf(SaysFirst("3 Error matching config regular expression : missing closing parenthesis at "
                       "position 7 of \"Debug(\"\n! no-configuration "),
             EndsWith(Succeeded))},
      {"a name that is taken for an expression", u"UseMSBuild=False&SolutionConfiguration=Release|x86",
       SaysFirst("2 Warning : App.sln has no configuration \"Release|x86\". Read as an expression, it ")},
      {"a setup project without devenv ends it all", u"VStudioVersion=vs2010&" + OneByOne,
       AllOf(SaysFirst("3 Path to Visual Studio installation not set in Options.\n"), EndsWith("failed"),
             Not(HasSubstr("Running")))},
      {"others need none", u"VStudioVersion=vs2010&" + Select + u"Lib", quiet},
      {"nor a configuration without it",
       u"VStudioVersion=vs2010&SolutionConfiguration=Release|Any CPU&" + OneByOne,
       Not(HasSubstr("not set in Options"))},
      {"projects that are left out", gone + OneByOne,
       AllOf(SaysFirst("2 Warning : Projects of Debug|Any CPU are not on disk: App\\App.csproj, "
                       "Setup\\Setup.vdproj. They are not built.\n"),
             HasSubstr("> Project Lib\n"), Not(HasSubstr("> Project App\n")))},
      {"none is that must be there", u"Solution=web/App.sln&" + OneByOne, Not(HasSubstr("not on disk"))},
      {"a folder that MSBuild cannot be told", blank + Select + u"App\nLib", folder},
      {"devenv can", u"UseMSBuild=False&" + blank + Select + u"App\nLib", quiet},
      {"the solution as a whole needs not", blank, quiet},
      {"projects that share an identifier", u"BuildAction=baRebuild&Solution=twins.sln&" + OneByOne,
       SaysFirst("2 Warning : twins.sln gives different projects one identifier: Lib\\Lib.csproj and ")},
      {"the solution as a whole minds not", u"Solution=twins.sln", quiet},
      {"a file that writes its platform both ways", u"Solution=both.sln&" + Select + u"App",
       HasSubstr("0 Platform=\"Any CPU\"\n")},
  };
  for (const auto& row : cases)
    EXPECT_THAT(Outcome(row.Settings, row.Tools), row.Log) << row.Name;
}

// What the tool says of its projects decides, and a tool that says nothing is believed.
TEST_F(BuildRun, IsNoSuccessWhenTheToolBuiltNothing) {
  const std::u16string end = u"TandemorLogger|projectFinished|succeeded=true|project=/a/App.";
  const std::u16string begun = u"Project \"/a/App.sln\" (default target(s)):";
  const std::tuple<const char*, std::u16string, std::u16string, bool> cases[] = {
      {"devenv skipped all", u"UseMSBuild=False", u"===== Build: 0 succeeded, 0 failed, 2 skipped =====",
       true},
      {"devenv found some up to date", u"UseMSBuild=False",
       u"===== Build: 0 succeeded, 0 failed, 1 up-to-date, 2 skipped =====", false},
      {"MSBuild ended the solution alone", u"", end + u"sln", true},
      {"MSBuild ended a project", u"", end + u"sln\n" + end + u"csproj", false},
      {"the logger said nothing", u"", u"...", false},
      {"xbuild began the solution alone", u"StructuredOutput=False", begun, true},
      {"xbuild had nothing to clean", u"StructuredOutput=False&BuildAction=baClean", begun, false},
      {"xbuild began a project", u"StructuredOutput=False",
       begun + u"\n\tProject \"/a/Lib.csproj\" (default target(s)):", false},
  };
  for (const auto& [name, settings, output, nothing] : cases) {
    const std::string log = Outcome(settings, {{{output}}});
    EXPECT_THAT(log, AllOf(HasSubstr(nothing ? "] 2\n" : "] 0\n"), EndsWith("succeeded"))) << name;
    EXPECT_EQ(log.find("! nothing-built ") != std::string::npos, nothing) << name;
  }
  // One configuration that built something is enough.
  EXPECT_THAT(Outcome(u"SolutionConfiguration=.*", {{{end + u"sln"}}, {{end + u"csproj"}}}),
              AllOf(HasSubstr("] 2\n"), EndsWith(Succeeded), Not(HasSubstr("!"))));
}

} // namespace
} // namespace kx::tests
