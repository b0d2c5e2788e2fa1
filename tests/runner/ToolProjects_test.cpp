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
      {u"1>------ Build started: Project: Lib, Configuration: Debug Win32 ------\n2>------ Build started: "
       u"Project: A.B, Configuration: Debug Win32 ------\n1>a.cpp(1) : error C2065: 'x'\n2>b.cpp(2) : "
       u"warning C4101: 'y'\n1>Lib - 1 error(s), 0 warning(s)\n2>A.B - 0 error(s), 1 warning(s)\n------ "
       u"Skipped Build: Project: Doc, Configuration: Debug Win32 ------\n========== Build: 1 succeeded, 1 "
       u"failed, 0 up-to-date, 1 skipped ==========\n2>c.cpp(1): error C1: x",
       "Lib Debug Win32 failed 1e 0w 1+4\nA.B Debug Win32 succeeded 0e 1w 2+4\nDoc Debug Win32 nothing to do "
       "0e 0w 7+0\n"},
      {u"------ Début de la génération : Projet : Un, Configuration : Debug|.NET ------\nx\n------ Début de "
       u"la génération : Projet : Deux, Configuration : Debug|.NET ------\na.cs(1,2): error CS0103: "
       u"y\n---------------------- Terminé ----------------------",
       "Un Debug|.NET succeeded 0e 0w 1+1\nDeux Debug|.NET failed 1e 0w 3+1\n"},
      {u"Project \"C:\\x\\App.sln\" on node 1 (Build target(s)).\nProject \"C:\\x\\App.sln\" (1) is building "
       u"\"C:\\x\\App.csproj\" (2) on node 1 (default targets).\nProject \"C:\\x\\App.csproj\" (2) is "
       u"building \"C:\\x\\Lib.csproj\" (3) on node 1 (default targets).\nLib.cs(1,2): error CS0103: no "
       u"[C:\\x\\Lib.csproj]\nDone Building Project \"C:\\x\\Lib.csproj\" (default targets) -- "
       u"FAILED.\nApp.cs(1,2): warning CS0168: x [C:\\x\\App.csproj]\nDone Building Project "
       u"\"C:\\x\\App.csproj\" (default targets).\nProject \"C:\\x\\Z.csproj\" (4) is building "
       u"\"C:\\x\\App.csproj\" (2) on node 1 (GetTargetPath target(s)).\nDone Building Project "
       u"\"C:\\x\\App.csproj\" (GetTargetPath target(s)).\nProject \"C:\\x\\App.sln\" (1) is building "
       u"\"C:\\x\\Cut.csproj\" (5) on node 1 (default targets).\n  Lib.cs(1,2): error CS0103: no "
       u"[C:\\x\\Lib.csproj]",
       "App  succeeded 0e 1w 2+5\nLib  failed 1e 0w 3+2\nCut  stopped 0e 0w 10+0\n"},
      {u"Project \"/x/App.sln\" (default target(s)):\n\tProject \"/x/App.csproj\" (default "
       u"target(s)):\nMain.cs(3,4): error CS0103: no\nDone building project \"App.csproj\".-- FAILED\n",
       "App  failed 1e 0w 2+2\n"},
      {u"     1>Project \"/x/App.sln\" on node 1 (Build target(s)).\n   1:2>Project \"/x/A.csproj\" (2) on "
       u"node 1 "
       u"(default targets)\n2>a.cs(1): error CS1: x [/x/A.csproj]\n2>Project \"/x/A.csproj\" on node 1 "
       u"(Clean "
       u"target):\n2>Done Building Project \"/x/A.csproj\" (Clean target) -- FAILED.\n2>Done Building "
       u"Project "
       u"\"/x/A.csproj\" (default targets).\n2>Done Building Project \"/x/A.csproj\" (default "
       u"targets).\nProject \"/x/S.metaproj\" on node 1 (default targets).\nProject \"/x/B.csproj\" (7) on "
       u"node 1\nDone \"\nDone B.csproj\"\n\n \n1>",
       "A  failed 1e 0w 2+4\n"},
      {u"Projet \"C:\\x\\A.csproj\" (2) sur le noud 1 (cibles par defaut).\nG\u00E9n\u00E9ration du projet "
       u"\"C:\\x\\a.CSPROJ\" termin\u00E9e (cibles par d\u00E9faut) -- \u00C9CHEC.\nProjet "
       u"\"C:\\x\\A.csproj\" "
       u"(cibles).\n\nx\ny\nG\u00E9n\u00E9ration du projet \"A.csproj\" termin\u00E9e.\n",
       "A  failed 0e 0w 3+4\n"},
      {u"------ Build started: Project: A, Configuration: Debug ------\na\n------ Skipped Build: Project: A, "
       u"Configuration: Debug ------\nb\n------ Ignor\u00E9 : Projet : B, Configuration : Debug "
       u"------\nc\n2>------ "
       u"Build started: Project: C, Configuration: Debug ------\n2>x\ny\n-- end\n2>late.cs(1): error CS1: z",
       "A Debug succeeded 0e 0w 1+1\nB Debug nothing to do 0e 0w 5+0\nC Debug succeeded 0e 0w 7+1\n"},
      {u"Project \"x\" was saved.\n------ no heading ------\n=====\nDone \"with\" it", ""},
  };
  for (const auto& [output, told] : cases)
    EXPECT_EQ(ProjectsOf(output), told);
}

} // namespace
} // namespace kx
