#include "foundation/platform/System.h"
#include "package/buildaction/MSBuildCommandLine.h"
#include "tests/buildaction/BuildActionFixture.h"

namespace kx::tests {
namespace {

class CommandLine : public TBuildActionTest {
protected:
  // Expects the parameters in front of the solution.
  void Expect(const std::u16string& settings, const std::string& parameters) {
    Begin(u"StructuredOutput=False&LogLevel=llMinimal&MaxCPUs=2&" + settings);
    ASSERT_EQ(Execute(), "succeeded") << text::ToUtf8(settings) << "\n" << Log();
    EXPECT_EQ(Plain(host_.Runs().back().Parameters), parameters + " \"DIR/App.sln\"");
  }
};

TEST_F(CommandLine, OfMSBuildFollowsTheProperties) {
  host_.Variables[u"Extra"] = u"X";
  host_.Variables[u"Folders"] = u"/a b\n/X\n";
  services_.Frameworks[u"v2.0"] = folder_.Path();
  const std::u16string framework = u"OverrideTargetFramework=True&TargetFramework=fx";
  const std::string rest = " /p:Configuration=Debug;Platform=\"Any CPU\"", build = "/t:Build" + rest;
  const std::string logger = "Logger,\"BIN/TandemorLogger.dll\" ";
  const std::string end = " /v:minimal /m:2";
  // Windows' own MSBuild reads its command line itself, others take a ";" for the next property.
  const bool windows = platform::IsWindows();
  const std::string list = windows ? "\"A;X;DEBUG\"" : "A%3BX%3BDEBUG";
  const std::string numbers = windows ? "\"168;219\"" : "168%3B219", pair = windows ? "\"1;2\"" : "1%3B2";
  const std::string folders = windows ? "\"/a b;/X\"" : "\"/a b%3B/X\"";
  const std::pair<std::u16string, std::string> cases[] = {
      {u"BuildAction=baDeploy&" + framework + u"20", "/t:Deploy" + rest + ";TargetFramework=\"v2.0\"" + end},
      {u"BuildAction=baRebuild&" + framework + u"30",
       "/t:Rebuild" + rest + ";TargetFramework=\"v3.0\"" + end},
      {u"BuildAction=baClean&LogLevel=llDiagnostic&" + framework + u"40",
       "/t:Clean" + rest + ";TargetFramework=\"v4.0\" /v:diagnostic /m:2"},
      // Visual Studio 2005 knows neither processors nor target frameworks.
      {u"VStudioVersion=vs2005&" + framework + u"20", build + " /v:minimal"},
      {framework + u"35", build + ";TargetFramework=\"v3.5\"" + end},
      {u"MaxCPUs=0&LogLevel=llDetailed", build + " /v:detailed /m"},
      {u"LogLevel=llQuiet&StructuredOutput=True", "/t:Build /logger:Tandemor" + logger + "/logger:Null" +
                                                      logger + "/noconlog" + rest + " /v:quiet /m:2"},
      {u"SolutionConfiguration=Nightly", "/t:Build /p:Configuration=Nightly" + end},
      // Settings of a group that is not switched on do nothing.
      {u"DebugConstant=True&Optimize=True&WarningLevel=1&ReferencePaths=/a", build + end},
      {u"OverrideCompiler=True&CompilerConstants=A;%Extra%&DebugConstant=True&AllowUnsafe=True",
       build + ";DefineConstants=" + list + ";Optimize=False;AllowUnsafeBlocks=True" + end},
      {u"OverrideCompiler=True&TraceConstant=True&Optimize=True",
       build + ";DefineConstants=TRACE;Optimize=True;AllowUnsafeBlocks=False" + end},
      // All warnings as errors leave the list out, unread, but not the disabled ones.
      {u"OverrideWarnings=True&AllWarningsAsErrors=True&SelectedWarningsAsErrors=True&WarningsAsErrors=x"
       u"&DisableSelectedWarnings=True&DisableWarnings=168",
       build + ";WarningLevel=4;TreatWarningsAsErrors=True;NoWarn=168" + end},
      {u"OverrideWarnings=True&WarningLevel=2&SelectedWarningsAsErrors=True&WarningsAsErrors=168;219",
       build + ";WarningLevel=2;TreatWarningsAsErrors=False;WarningsAsErrors=" + numbers + end},
      {u"OverrideWarnings=True&SelectedWarningsAsErrors=True&DisableSelectedWarnings=True",
       build + ";WarningLevel=4;TreatWarningsAsErrors=False" + end},
      {u"OverrideReferencePaths=True&ReferencePaths= /a b\n/%Extra%\n&UseEnv=True"
       u"&OutputDirectory=C:\\out dir&ExtraMSBuildProperties=A=1;2\n\nB=%Extra% y=z",
       build + ";ReferencePath=" + folders + ";useenv=1;OutDir=\"C:\\out dir\\\\\";A=" + pair +
           ";B=\"X y=z\"" + end},
      // No line break gets into the command line.
      {u"OverrideCompiler=True&CompilerConstants=A\nX\n&DebugConstant=True",
       build + ";DefineConstants=" + list + ";Optimize=False;AllowUnsafeBlocks=False" + end},
      {u"OverrideReferencePaths=True&ReferencePaths=%Folders%", build + ";ReferencePath=" + folders + end},
      {u"OutputDirectory=C:\\out\\", build + ";OutDir=C:\\out\\" + end},
      {u"ExtraCmdLineParams=/nr:%Extra% ", "/nr:X " + build + end},
  };
  for (const auto& [settings, parameters] : cases)
    Expect(settings, parameters);
}

TEST_F(CommandLine, TakesNothingButNumbersInAListOfWarnings) {
  for (const std::u16string_view list : {u"168\n", u"\n", u"168\r\n219", u" 168", u"168,219", u"CS168"})
    EXPECT_FALSE(IsWarningList(list)) << text::ToUtf8(list);
  for (const std::u16string_view list : {u"", u"168", u"168;219;"})
    EXPECT_TRUE(IsWarningList(list)) << text::ToUtf8(list);
}

} // namespace
} // namespace kx::tests
