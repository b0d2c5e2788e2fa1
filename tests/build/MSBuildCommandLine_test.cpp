#include "tests/build/BuildActionFixture.h"

namespace kx::tests {
namespace {

struct TCommandLineCase {
  const char* What;
  TSettings Settings;
  const char* Parameters; // without the solution behind them
};

class CommandLine : public TBuildActionTest, public testing::WithParamInterface<TCommandLineCase> {};

TEST_P(CommandLine, FollowsTheProperties) {
  host_.Variables[u"Extra"] = u"X";
  services_.Frameworks[u"v2.0"] = services_.Frameworks[u"v4.0"] = folder_.Path();
  Set({{u"StructuredOutput", u"False"}, {u"LogLevel", u"llMinimal"}, {u"MaxCPUs", u"2"}});
  Set(GetParam().Settings);
  EXPECT_EQ(Execute(), "succeeded") << Log();
  EXPECT_EQ(Parameters(), std::string(GetParam().Parameters) + " \"DIR/App.sln\"\n");
}

#define KX_CONFIG "Configuration=Debug;Platform=\"Any CPU\""
const TCommandLineCase CommandLineCases[] = {
    {"rebuild", {{u"BuildAction", u"baRebuild"}}, "/t:Rebuild /p:" KX_CONFIG " /v:minimal /m:2"},
    {"clean", {{u"BuildAction", u"baClean"}}, "/t:Clean /p:" KX_CONFIG " /v:minimal /m:2"},
    {"deploy", {{u"BuildAction", u"baDeploy"}}, "/t:Deploy /p:" KX_CONFIG " /v:minimal /m:2"},
    {"Visual Studio 2005 knows neither processors nor target frameworks",
     {{u"VStudioVersion", u"vs2005"}, {u"OverrideTargetFramework", u"True"}},
     "/t:Build /p:" KX_CONFIG " /v:minimal"},
    {"all processors", {{u"MaxCPUs", u"0"}}, "/t:Build /p:" KX_CONFIG " /v:minimal /m"},
    {"detailed", {{u"LogLevel", u"3"}}, "/t:Build /p:" KX_CONFIG " /v:detailed /m:2"},
    {"diagnostic", {{u"LogLevel", u"4"}}, "/t:Build /p:" KX_CONFIG " /v:diagnostic /m:2"},
    {"quiet structured output silences the console logger too",
     {{u"LogLevel", u"llQuiet"}, {u"StructuredOutput", u"True"}},
     "/t:Build /logger:TandemorLogger,\"BIN/TandemorLogger.dll\" "
     "/logger:NullLogger,\"BIN/TandemorLogger.dll\" "
     "/noconlog /p:" KX_CONFIG " /v:quiet /m:2"},
    {"a configuration without a platform",
     {{u"SolutionConfiguration", u"Nightly"}},
     "/t:Build /p:Configuration=Nightly /v:minimal /m:2"},
    {"compiler settings alone do nothing",
     {{u"DebugConstant", u"True"},
      {u"Optimize", u"True"},
      {u"WarningLevel", u"1"},
      {u"ReferencePaths", u"/a"}},
     "/t:Build /p:" KX_CONFIG " /v:minimal /m:2"},
    {"compiler settings",
     {{u"OverrideCompiler", u"True"},
      {u"CompilerConstants", u"A;%Extra%"},
      {u"DebugConstant", u"True"},
      {u"TraceConstant", u"True"},
      {u"AllowUnsafe", u"True"}},
     "/t:Build /p:" KX_CONFIG ";DefineConstants=A%3BX%3BDEBUG%3BTRACE;Optimize=False;AllowUnsafeBlocks=True "
     "/v:minimal /m:2"},
    {"one constant needs no separator",
     {{u"OverrideCompiler", u"True"}, {u"TraceConstant", u"True"}, {u"Optimize", u"True"}},
     "/t:Build /p:" KX_CONFIG ";DefineConstants=TRACE;Optimize=True;AllowUnsafeBlocks=False /v:minimal /m:2"},
    {"all warnings as errors leave the list out, but not the disabled ones",
     {{u"OverrideWarnings", u"True"},
      {u"AllWarningsAsErrors", u"True"},
      {u"SelectedWarningsAsErrors", u"True"},
      {u"WarningsAsErrors", u"not even read"},
      {u"DisableSelectedWarnings", u"True"},
      {u"DisableWarnings", u"168"}},
     "/t:Build /p:" KX_CONFIG ";WarningLevel=4;TreatWarningsAsErrors=True;NoWarn=168 /v:minimal /m:2"},
    {"selected warnings as errors",
     {{u"OverrideWarnings", u"True"},
      {u"WarningLevel", u"2"},
      {u"SelectedWarningsAsErrors", u"True"},
      {u"WarningsAsErrors", u"168;219"}},
     "/t:Build /p:" KX_CONFIG
     ";WarningLevel=2;TreatWarningsAsErrors=False;WarningsAsErrors=168%3B219 /v:minimal /m:2"},
    {"empty lists of warnings are not passed",
     {{u"OverrideWarnings", u"True"},
      {u"SelectedWarningsAsErrors", u"True"},
      {u"DisableSelectedWarnings", u"True"}},
     "/t:Build /p:" KX_CONFIG ";WarningLevel=4;TreatWarningsAsErrors=False /v:minimal /m:2"},
    {"target framework, in its own quotation marks",
     {{u"OverrideTargetFramework", u"True"}, {u"TargetFramework", u"fx35"}},
     "/t:Build /p:" KX_CONFIG ";TargetFramework=\"v3.5\" /v:minimal /m:2"},
    {"reference paths, environment, output folder and extra properties, in this order",
     {{u"OverrideReferencePaths", u"True"},
      {u"ReferencePaths", u" /a b\n/%Extra%\n"},
      {u"UseEnv", u"True"},
      {u"OutputDirectory", u"C:\\out dir"},
      {u"ExtraMSBuildProperties", u"A=1;2\n\nB=%Extra% y=z"}},
     "/t:Build /p:" KX_CONFIG
     ";ReferencePath=\"/a b%3B/X\";useenv=1;OutDir=\"C:\\out dir\\\\\";A=1%3B2;B=\"X y=z\" "
     "/v:minimal /m:2"},
    {"an output folder that ends in its separator",
     {{u"OutputDirectory", u"C:\\out\\"}},
     "/t:Build /p:" KX_CONFIG ";OutDir=C:\\out\\ /v:minimal /m:2"},
    {"extra parameters keep the blank at their end",
     {{u"ExtraCmdLineParams", u"/nr:%Extra% "}},
     "/nr:X /t:Build /p:" KX_CONFIG " /v:minimal /m:2"},
    {"devenv with its environment",
     {{u"UseMSBuild", u"False"}, {u"UseEnv", u"True"}, {u"BuildAction", u"baRebuild"}},
     "/useenv /rebuild \"Debug|Any CPU\""},
    {"devenv deploys",
     {{u"UseMSBuild", u"False"}, {u"BuildAction", u"baDeploy"}},
     "/deploy \"Debug|Any CPU\""},
    {"devenv cleans", {{u"UseMSBuild", u"False"}, {u"BuildAction", u"baClean"}}, "/clean \"Debug|Any CPU\""},
};
#undef KX_CONFIG
INSTANTIATE_TEST_SUITE_P(Build, CommandLine, testing::ValuesIn(CommandLineCases),
                         [](const auto& row) { return "Case" + std::to_string(row.index); });
void PrintTo(const TCommandLineCase& row, std::ostream* out) {
  *out << row.What;
}

class MSBuildSettings : public TBuildActionTest {};

TEST_F(MSBuildSettings, FailTheActionWhereTheyCannotBeExpanded) {
  const std::vector<std::pair<TSettings, std::string>> cases{
      {{{u"OverrideCompiler", u"True"}, {u"CompilerConstants", u"%No%"}},
       "Failed to expand compiler constants."},
      {{{u"OverrideWarnings", u"True"},
        {u"SelectedWarningsAsErrors", u"True"},
        {u"WarningsAsErrors", u"%No%"}},
       "Unable to expand list of warnings to treat as errors."},
      {{{u"OverrideWarnings", u"True"},
        {u"SelectedWarningsAsErrors", u"True"},
        {u"WarningsAsErrors", u"CS168"}},
       "Warnings As Errors list \"CS168\" is not valid. Only warning numbers, separated by semicolons, can "
       "be "
       "specified."},
      {{{u"OverrideWarnings", u"True"}, {u"DisableSelectedWarnings", u"True"}, {u"DisableWarnings", u"%No%"}},
       "Unable to expand list of disabled warnings"},
      {{{u"OverrideReferencePaths", u"True"}, {u"ReferencePaths", u"%No%"}},
       "Failed to expand Reference Paths list"},
      {{{u"OutputDirectory", u"%No%"}}, "Failed to expand output directory"},
      {{{u"ExtraMSBuildProperties", u"A=%No%"}}, "Failed to Extra MSBuild Properties: Unknown name: No"},
  };
  for (const auto& [settings, message] : cases) {
    TKxVSDotNetAction fresh;
    for (const auto& row : fresh.PublishedProperties().Rows())
      if (row.Stored) row.Set(action_, row.Get(fresh));
    Set({{u"VStudioVersion", u"vs2008"}, {u"Solution", u"App.sln"}, {u"SolutionConfiguration", u"Debug"}});
    Set(settings);
    EXPECT_EQ(Execute(), message);
    EXPECT_EQ(host_.OpenGroups(), 0) << message;
  }
}

} // namespace
} // namespace kx::tests
