#include "program/check/Check.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace kx::check {
namespace {

using testing::ElementsAre;

// "12 rule", with the lines of the steps behind it: "12 rule 9 10".
std::vector<std::string> Found(TChecker& checker) {
  std::vector<std::string> found;
  for (const TFinding& finding : checker.TakeFindings()) {
    found.push_back(std::to_string(finding.Place.Line) + " " + text::ToUtf8(finding.Rule));
    for (const TFindingStep& step : finding.Steps)
      found.back() += " " + std::to_string(step.Place.Line);
  }
  return found;
}

std::string Id(char letter) {
  return "{" + std::string(8, letter) + "-0000-0000-0000-000000000000}";
}

// "A" is the project A.csproj, "<A" the same without its end; "A:BC" depends on B and C, in lines of their
// own.
std::string Projects(std::initializer_list<std::string_view> projects) {
  std::string text;
  for (std::string_view project : projects) {
    const bool isOpen = project.starts_with('<');
    if (isOpen) project.remove_prefix(1);
    const std::string name(1, project.front());
    text +=
        "Project(\"" + Id('0') + "\") = \"" + name + "\", \"" + name + ".csproj\", \"" + Id(name[0]) + "\"\n";
    if (project.size() > 1) {
      text += "\tProjectSection(ProjectDependencies) = postProject\n";
      for (const char needed : project.substr(2))
        text += "\t\t" + Id(needed) + " = " + Id(needed) + "\n";
      text += "\tEndProjectSection\n";
    }
    if (!isOpen) text += "EndProject\n";
  }
  return text;
}

// "A.Debug", "A.Debug!" for one that is built.
std::string Global(std::initializer_list<std::string_view> configurations,
                   std::initializer_list<std::string_view> mappings) {
  std::string text = "Global\n\tGlobalSection(SolutionConfigurationPlatforms) = preSolution\n";
  for (const auto configuration : configurations)
    text += "\t\t" + std::string(configuration) + " = " + std::string(configuration) + "\n";
  text += "\tEndGlobalSection\n\tGlobalSection(ProjectConfigurationPlatforms) = postSolution\n";
  for (std::string_view mapping : mappings) {
    const bool isBuilt = mapping.ends_with('!');
    if (isBuilt) mapping.remove_suffix(1);
    const std::string start = "\t\t" + Id(mapping.front()) + std::string(mapping.substr(1));
    text += start + ".ActiveCfg = Debug|x86\n";
    if (isBuilt) text += start + ".Build.0 = Debug|x86\n";
  }
  return text + "\tEndGlobalSection\nEndGlobal\n";
}

struct TSolutionCase {
  std::string_view Name;
  std::string Text;
  std::vector<std::string> Found;
};

TEST(Check, FindsWhatIsWrongWithASolutionInItsLine) {
  const std::string head =
      "Microsoft Visual Studio Solution File, Format Version 10.00\n# Visual Studio 2008\n";
  const std::string end = "Global\nEndGlobal\n";
  const TSolutionCase rows[]{
      {"a healthy one", head + Projects({"A:B", "B"}) + Global({"D"}, {"A.D!", "B.D!"}), {}},
      {"none", "", {"1 solution-unreadable"}},
      {"a header of another product, and one more",
       "Microsoft Visual Studio Solution File, Format Version 9.00\n# Visual Studio 2010\n" + head + end,
       {"2 solution-header", "3 solution-header"}},
      {"a newer one",
       "Microsoft Visual Studio Solution File, Format Version 12.00\n# Visual Studio 15\n" + end,
       {"1 solution-format"}},
      {"no project", head + "Project(\"x\") = \"A\"\n" + end, {"3 solution-unreadable"}},
      {"UTF-8 that does not say so", head + "# \xC3\xBC\n" + end, {"3 solution-encoding"}},
      {"a code page, with CR LF", "\r\n" + head + "\r\n# \xFC\r\n" + end, {"5 solution-encoding"}},
      {"UTF-8 with its mark", "\xEF\xBB\xBF" + head + "# \xC3\xBC\n" + end, {}},
      {"a damaged mark", "\xBB\xBF\n" + head + end, {"1 solution-encoding"}},
      {"nothing closed",
       head + Projects({"<A:B", "<B"}) + "Global\n\tGlobalSection(X) = y\n",
       {"3 solution-section", "7 solution-section", "8 solution-section", "9 solution-section"}},
      {"closed twice", head + Projects({"A"}) + "EndProject\n" + end, {"5 solution-section"}},
      {"an open merge and a second end",
       head + "<<<<<<< mine\n" + end + "Project(\n",
       {"3 solution-merge", "6 solution-end"}},
      {"a circle of three, and one that leads to it",
       head + Projects({"D:A", "A:B", "B:C", "C:DA"}) + end,
       {"5 solution-cycle 5 10 15 20"}},
      {"an unknown need", head + Projects({"A:CB", "B"}) + end, {"5 dependency-unknown"}},
      {"old needs against the order of the file",
       head + Projects({"A", "B"}) + "Global\n\tGlobalSection(ProjectDependencies) = postSolution\n\t\t" +
           Id('A') + ".0 = " + Id('B') + "\n\tEndGlobalSection\nEndGlobal\n",
       {"9 dependency-old 9"}},
      {"one twice",
       head + Projects({"A", "B", "A"}) + Global({"D"}, {"A.D!", "B.D!"}),
       {"7 project-id-twice 3"}},
      {"one that is missing, and one in another letter case",
       head + Projects({"A", "X", "d"}) + end,
       {"5 project-missing", "7 path-case"}},
      {"none is there", head + Projects({"X", "Y"}) + end, {"3 projects-missing"}},
      {"half, not at all and never",
       head + Projects({"A", "B", "C"}) + Global({"D", "R"}, {"A.D!", "B.D", "B.R"}),
       {"3 project-half-mapped", "5 project-never-built", "7 project-unmapped"}},
  };
  tests::TTemporaryFolder folder;
  for (const auto* name : {"A", "B", "C", "D"})
    folder.Write(std::string(name) + ".csproj", "<Project/>");
  for (const TSolutionCase& row : rows) {
    SCOPED_TRACE(row.Name);
    TChecker checker{TCheckLevels()};
    checker.CheckSolution(folder.Write("App.sln", row.Text));
    EXPECT_EQ(Found(checker), row.Found);
  }
}

TEST(Check, FindsWhatIsWrongWithAProjectInItsLine) {
  const std::string debug =
      "<PropertyGroup Condition=\" '$(Configuration)|$(Platform)' == 'Debug|AnyCPU' \"/>\n";
  const std::string info = "<Compile Include=\"AssemblyInfo.cs\"/>\n";
  const std::string native =
      "<VisualStudioProject ProjectType=\"Visual C++\"><Configurations>\n<Configuration "
      "Name=\"Debug|Win32\"/></Configurations><Files>\n";
  const auto managed = [&](const std::string& items) {
    return "<Project>" + debug + "<ItemGroup>\n" + info + items + "</ItemGroup></Project>";
  };
  struct TProjectCase {
    std::string_view Name, File;
    std::string Text;
    std::vector<std::string> Found;
  };
  const TProjectCase rows[]{
      {"a healthy one", "A.csproj", managed("<Compile Include=\"b.cs;*.gen.cs;$(X).cs\"/>"), {}},
      {"broken XML", "A.csproj", "<Project>\n<a></Project>", {"2 project-unreadable"}},
      {"a setup project is none", "A.vdproj", "\"DeployProject\"", {}},
      {"missing and twice, unless a condition chooses",
       "A.csproj",
       managed("<Compile Include=\"Gone.cs\"/>\n<Compile Include=\".\\b.cs\"/>\n<Compile Include=\"b.cs\"/>\n"
               "<Compile Include=\"b.cs\" Condition=\"'$(X)' == '1'\"/>\n<Compile Include=\"B.cs\"/>"),
       {"4 source-missing", "6 source-twice 5", "8 source-case", "8 source-twice 5"}},
      {"most are missing",
       "A.csproj",
       managed("<Compile Include=\"x.cs\"/>\n<Compile Include=\"y.cs\"/>\n<EmbeddedResource "
               "Include=\"z.resx\"/>"),
       {"4 source-missing 4 5 6"}},
      {"a hint",
       "A.csproj",
       managed("<Reference Include=\"L\">\n<HintPath>..\\L.dll</HintPath></Reference>"),
       {"5 hint-missing"}},
      {"no AssemblyInfo, of the oldest form",
       "A.csproj",
       "<VisualStudioProject><CSHARP><Files><Include>\n<File RelPath=\"b.cs\" "
       "BuildAction=\"Compile\"/></Include>"
       "</Files></CSHARP></VisualStudioProject>",
       {"0 assembly-info-missing"}},
      {"two with the same attribute, and one that no compiler takes",
       "A.csproj",
       managed("<Compile Include=\"more\\AssemblyInfo.cs\"/>"),
       {"0 assembly-info-several 0 0", "2 attribute-twice 1", "3 version-impossible"}},
      {"sources left out of a C++ project, headers",
       "A.vcproj",
       native + "<File RelativePath=\"x.cpp\"><FileConfiguration ExcludedFromBuild=\"true\"/></File><File "
                "RelativePath=\"x.h\"/>\n<File RelativePath=\"y.cpp\"/></Files></VisualStudioProject>",
       {"4 source-missing"}},
      {"scripts",
       "A.vcproj",
       native + "<File RelativePath=\"a.rc\"/><File RelativePath=\"b.rc\"/><File RelativePath=\"c.rc\"/>"
                "</Files></VisualStudioProject>",
       {"2 version-impossible", "6 script-refused", "1 script-unseen"}},
  };
  tests::TTemporaryFolder folder;
  folder.Write("b.cs");
  folder.Write("AssemblyInfo.cs", "[assembly: AssemblyVersion(\"1.0.*\")]\n");
  folder.Write("more/AssemblyInfo.cs",
               "using System.Reflection;\n[assembly: AssemblyVersionAttribute(\"1.2\")]\n"
               "[assembly: AssemblyFileVersion(\"1.70000\")]\n");
  const auto script = [](const std::string& version, const std::string& end) {
    return "VS_VERSION_INFO VERSIONINFO\n FILEVERSION " + version + "\n FILEOS 0x40004L\nBEGIN\n" + end;
  };
  folder.Write("a.rc", script("1,0,0,0", "END\n"));
  folder.Write("b.rc", "#include <winver.h>\n" + script("1,0,70000,0", "END\n"));
  folder.Write("c.rc", "#include \"gone.h\"\n" + script("1,0,0,0", "BEGIN\n"));
  for (const TProjectCase& row : rows) {
    SCOPED_TRACE(row.Name);
    TCheckLevels levels;
    levels.Set(u"script-loss=off");
    TChecker checker(levels);
    checker.CheckProject(folder.Write(row.File, row.Text));
    EXPECT_EQ(Found(checker), row.Found);
  }
}

TEST(Check, FindsWhatDoesNotFitBetweenASolutionAndItsProjects) {
  tests::TTemporaryFolder folder;
  const auto project = [](const std::string& items) {
    return "<Project>\n<PropertyGroup><TargetFrameworkVersion>v4.0</TargetFrameworkVersion></PropertyGroup>\n"
           "<PropertyGroup Condition=\"'$(Configuration)|$(Platform)'=='Debug|AnyCPU'\"/><ItemGroup>\n" +
           items + "</ItemGroup></Project>";
  };
  folder.Write("A.csproj",
               project("<ProjectReference Include=\"B.csproj\"/>\n<ProjectReference "
                       "Include=\"..\\X.csproj\"><Project>{x}</Project></ProjectReference>\n"
                       "<ProjectReference Include=\"C:\\b\\B.csproj\"><Project>BBBBBBBB-0000-0000-"
                       "0000-000000000000</Project></ProjectReference>"));
  folder.Write("B.csproj", "<Project><Import Project=\"own.targets\"/></Project>");
  TCheckLevels levels;
  levels.Set(u"reference-order=note");
  TChecker checker(levels);
  checker.CheckSolution(
      folder.Write("App.sln", "Microsoft Visual Studio Solution File, Format Version 10.00\n" +
                                  Projects({"A", "B"}) + Global({"D"}, {"A.D!", "B.D!"})));
  EXPECT_EQ(Found(checker),
            (std::vector<std::string>{"2 reference-order 4", "2 reference-order 6",
                                      "11 configuration-unknown", "2 framework-new", "5 reference-outside"}));
}

TEST(Check, SaysWhatTheUserHasMadeOfItsRules) {
  tests::TTemporaryFolder folder;
  const auto file = folder.Write("App.sln", "x");
  TCheckLevels levels;
  levels.Set(u"solution-unreadable=off");
  levels.Set(u" Solution-Unreadable = NOTE ");
  TChecker checker(levels);
  checker.CheckSolution(file);
  EXPECT_EQ(checker.TakeFindings().at(0).Severity, TFindingSeverity::Note);
  EXPECT_THROW(levels.Set(u"solution-cycel=off"), EKxException);
  EXPECT_THROW(levels.Set(u"solution-cycle=fatal"), EKxException);
}

} // namespace
} // namespace kx::check
