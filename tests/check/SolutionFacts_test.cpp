#include "program/check/SolutionFacts.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kx::check {
namespace {

std::string Shown(const char* what, const std::vector<TLineText>& lines) {
  std::string shown;
  for (const auto& line : lines)
    shown += std::string(what) + " " + std::to_string(line.Line) + " " + text::ToUtf8(line.Text) + "\n";
  return shown;
}

std::string Shown(const TSolutionFacts& facts) {
  std::string shown = Shown("format", facts.Headers) +
                      (facts.Product.Line > 0 ? Shown("product", {facts.Product}) : "") +
                      Shown("configuration", facts.Configurations) + Shown("bad", facts.BadProjects) +
                      Shown("not closed", facts.NotClosed) + Shown("not opened", facts.NotOpened) +
                      Shown("merge", facts.MergeMarks);
  for (const auto& project : facts.Projects) {
    shown += std::to_string(project.Line) + " " +
             text::ToUtf8(project.Name + u" " + project.Path + u" " + project.Id + u" " + project.TypeId) +
             (project.Folder.empty() ? "" : " in " + text::ToUtf8(project.Folder)) +
             (project.IsFolder() ? " folder" : "") + (project.IsWebSite() ? " site" : "") +
             (project.IsFile() ? " file" : "") + "\n" + Shown("  needs", project.Needs);
    for (const auto& mapping : project.Mappings)
      shown += "  " + std::to_string(mapping.Line) + " " +
               text::ToUtf8(mapping.Solution + u" = " + mapping.Project) +
               (mapping.IsActive ? " active\n" : "\n");
  }
  for (const auto& need : facts.OldNeeds)
    shown +=
        "old " + std::to_string(need.Line) + " " + text::ToUtf8(need.Owner + u" needs " + need.Needed) + "\n";
  return shown + "global " + std::to_string(facts.GlobalLine) + ", behind " +
         std::to_string(facts.LineBehindEnd) + ", format " + std::to_string(facts.Format()) + ", doubt " +
         std::to_string(static_cast<int>(facts.Doubt)) + " " + std::to_string(facts.DoubtLine) + ", mark " +
         std::to_string(static_cast<int>(facts.Mark)) + " " + text::ToUtf8(facts.Error);
}

constexpr const char* WithEverything = R"(Microsoft Visual Studio Solution File, Format Version 11.00
# Visual Studio 2010
Project("{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}") = "App", "App\App.csproj", "{11111111-0000-0000-0000-00000000000A}"
	ProjectSection(ProjectDependencies) = postProject
		{B} = {B}
		{c} = {C}
	EndProjectSection
	ProjectSection(WebsiteProperties) = preProject
		x = "y"
	EndProjectSection
EndProject
Project("{2150E333-8FDC-42A3-9474-1A3956D46DE8}") = "Folder", "Folder", "{B}"
EndProject
Project("{E24C65DC-7377-472B-9ABA-BC803B73C61A}") = "Site", "http://localhost/s", "{C}"
EndProject
Global
	GlobalSection(SolutionConfigurationPlatforms) = preSolution
		Debug|Any CPU = Debug|Any CPU
		Ship|x86 = Ship|x86
	EndGlobalSection
	GlobalSection(ProjectConfigurationPlatforms) = postSolution
		{11111111-0000-0000-0000-00000000000a}.Debug|Any CPU.ActiveCfg = D|x
		{11111111-0000-0000-0000-00000000000A}.Debug|Any CPU.Build.0 = D|x
		{22222222-0000-0000-0000-00000000000A}.Debug|Any CPU.Build.0 = D|x
		{11111111-0000-0000-0000-00000000000A}.odd = x
	EndGlobalSection
	GlobalSection(NestedProjects) = preSolution
		{11111111-0000-0000-0000-00000000000A} = {B}
		{Z} = {B}
	EndGlobalSection
EndGlobal

)";

constexpr const char* Broken = R"(Microsoft Visual Studio Solution File, Format Version 7.00
Project("{T}") = "A", "a.csproj", "{A}"
ProjectSection(ProjectDependencies) = postProject
{B}
Project("{T}") = "B", "b.csproj", "{A}"
EndProject
Project = x
EndProject
EndProject
<<<<<<< mine
=======
>>>>>>> theirs
Global
GlobalSection(SolutionConfiguration) = preSolution
ConfigName.0 = Debug
ConfigName.1 = Release
EndGlobalSection
EndGlobalSection
GlobalSection(ProjectDependencies) = postSolution
{A}.0 = {B}
{A}.1 = {C}
odd
EndGlobal
behind
Microsoft Visual Studio Solution File, Format Version 9.00
Global
)";

TEST(SolutionFacts, HoldAllThatAFileSaysWithItsLines) {
  const tests::TTemporaryFolder folder;
  const auto read = [&folder](const std::string& text) {
    folder.Write("s.sln", text);
    return Shown(ReadSolutionFacts(folder.Path("s.sln")));
  };
  std::string crlf = "\xEF\xBB\xBF\r\n";
  for (const char* c = WithEverything; *c != '\0'; ++c)
    crlf.append(*c == '\n' ? "\r" : "").append(1, *c);
  EXPECT_EQ(read(crlf), R"(format 2 11.00
product 3 Visual Studio 2010
configuration 19 Debug|Any CPU
configuration 20 Ship|x86
4 App App\App.csproj {11111111-0000-0000-0000-00000000000A} {FAE04EC0-301F-11D3-BF4B-00C04F79EFBC} in {B} file
  needs 6 {B}
  needs 7 {C}
  23 Debug|Any CPU = D|x active
  24 Debug|Any CPU = D|x
13 Folder Folder {B} {2150E333-8FDC-42A3-9474-1A3956D46DE8} folder
15 Site http://localhost/s {C} {E24C65DC-7377-472B-9ABA-BC803B73C61A} site
global 17, behind 0, format 11, doubt 0 0, mark 1 )");
  EXPECT_EQ(read(Broken), R"(format 1 7.00
configuration 15 Debug
configuration 16 Release
not closed 3 ProjectSection(ProjectDependencies)
not closed 2 Project A
not closed 19 GlobalSection(ProjectDependencies)
not opened 8 EndProject
not opened 9 EndProject
not opened 18 EndGlobalSection
merge 10 <<<<<<< mine
merge 11 =======
merge 12 >>>>>>> theirs
2 A a.csproj {A} {T} file
5 B b.csproj {A} {T} file
old 20 {A}.0 = {B} needs {B}
old 21 {A}.1 = {C} needs {C}
global 13, behind 24, format 7, doubt 0 0, mark 0 )");
  EXPECT_EQ(read("Microsoft Visual Studio Solution File, Format Version x\n# \xE4\n"),
            "global 0, behind 0, format 0, doubt 1 2, mark 0 ");
  EXPECT_EQ(read("# \xC3\xA4\r\n# \xC3\xA4\r# \xEF\xBF\xBD"),
            "global 0, behind 0, format 0, doubt 3 3, mark 0 ");
  EXPECT_NE(ReadSolutionFacts(folder.Path("none.sln")).Error, u"");
}

} // namespace
} // namespace kx::check
