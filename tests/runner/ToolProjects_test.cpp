#include "program/runner/ToolProjects.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Text.h"
#include "program/findings/ToolFindings.h"

#include <gtest/gtest.h>

namespace kx {
namespace {

using namespace std::chrono_literals;

// Each line comes a millisecond after the one before it. "App Debug|x86 failed 1e 0w 2+3" began at 2 ms.
std::string ProjectsOf(std::u16string_view output) {
  TFindingList list;
  TToolFindings findings(list);
  TToolProjects projects;
  const TToolProjects::TTime start{1h};
  auto now = start;
  for (const auto line : text::SplitLines(output)) {
    projects.Read(line, now += 1ms);
    findings.Read(line, [&](const TFinding& finding) { projects.Count(line, finding); });
  }
  std::string told;
  for (const auto& project : projects.Take(start, TResultKind::Stopped))
    told += text::ToUtf8(project.Project + u" " + project.Configuration) + " " + WordOf(project.Result) +
            " " + std::to_string(project.Counts.Errors) + "e " + std::to_string(project.Counts.Warnings) +
            "w " + std::to_string(project.Began.count()) + "+" + std::to_string(project.Elapsed.count()) +
            "\n";
  return told;
}

TEST(ToolProjects, AreToldByWhatToolsPrint) {
  const std::pair<std::u16string_view, std::string> cases[] = {
      {u"1>------ Build started: Project: Lib, Configuration: Debug Win32 ------\n"
       u"2>------ Build started: Project: A.B, Configuration: Debug Win32 ------\n"
       u"1>a.cpp(1) : error C2065: 'x'\n2>b.cpp(2) : warning C4101: 'y'\n1>Lib - 1 error(s), 0 warning(s)\n"
       u"2>A.B - 0 error(s), 1 warning(s)\n------ Skipped Build: Project: Doc, Configuration: Debug Win32 "
       u"------\n"
       u"========== Build: 1 succeeded, 1 failed, 0 up-to-date, 1 skipped ==========\n2>c.cpp(1): error C1: "
       u"x",
       "Lib Debug Win32 failed 1e 0w 1+4\nA.B Debug Win32 succeeded 0e 1w 2+4\n"
       "Doc Debug Win32 nothing to do 0e 0w 7+0\n"},
      {u"------ Début de la génération : Projet : Un, Configuration : Debug|.NET ------\nx\n"
       u"------ Début de la génération : Projet : Deux, Configuration : Debug|.NET ------\n"
       u"a.cs(1,2): error CS0103: y\n---------------------- Terminé ----------------------",
       "Un Debug|.NET succeeded 0e 0w 1+1\nDeux Debug|.NET failed 1e 0w 3+1\n"},
      {u"Project \"C:\\x\\App.sln\" on node 1 (Build target(s)).\n"
       u"Project \"C:\\x\\App.sln\" (1) is building \"C:\\x\\App.csproj\" (2) on node 1 (default targets).\n"
       u"Project \"C:\\x\\App.csproj\" (2) is building \"C:\\x\\Lib.csproj\" (3) on node 1 (default "
       u"targets).\n"
       u"Lib.cs(1,2): error CS0103: no [C:\\x\\Lib.csproj]\n"
       u"Done Building Project \"C:\\x\\Lib.csproj\" (default targets) -- FAILED.\n"
       u"App.cs(1,2): warning CS0168: x [C:\\x\\App.csproj]\n"
       u"Done Building Project \"C:\\x\\App.csproj\" (default targets).\n"
       u"Project \"C:\\x\\Z.csproj\" (4) is building \"C:\\x\\App.csproj\" (2) on node 1 (GetTargetPath "
       u"target(s)).\n"
       u"Done Building Project \"C:\\x\\App.csproj\" (GetTargetPath target(s)).\n"
       u"Project \"C:\\x\\App.sln\" (1) is building \"C:\\x\\Cut.csproj\" (5) on node 1 (default targets).\n"
       u"  Lib.cs(1,2): error CS0103: no [C:\\x\\Lib.csproj]",
       "App  succeeded 0e 1w 2+5\nLib  failed 1e 0w 3+2\nCut  stopped 0e 0w 10+0\n"},
      {u"Project \"/x/App.sln\" (default target(s)):\n\tProject \"/x/App.csproj\" (default target(s)):\n"
       u"Main.cs(3,4): error CS0103: no\nDone building project \"App.csproj\".-- FAILED\n",
       "App  failed 1e 0w 2+2\n"},
      {u"Project \"x\" was saved.\n------ no heading ------\n=====\nDone \"with\" it", ""},
  };
  for (const auto& [output, told] : cases)
    EXPECT_EQ(ProjectsOf(output), told);
}

TEST(ToolProjects, TakeTheCountsThatComeBeforeTheirEndsWhereBeginningsAreNotTold) {
  TToolProjects projects;
  TFinding finding;
  finding.Project = u"Lib/Lib.csproj";
  projects.Count(u"", finding);
  projects.End(finding.Project, true, {});
  projects.Count(u"", finding);
  projects.Start(u"Site/.metaproj", {});
  const auto results = projects.Take({}, TResultKind::Succeeded);
  ASSERT_EQ(results.size(), 2U);
  EXPECT_EQ(results[0].Counts.Warnings, 2);
  EXPECT_EQ(results[1].Project, u"Site");
  EXPECT_EQ(results[1].Result, TResultKind::Failed);
}

} // namespace
} // namespace kx
