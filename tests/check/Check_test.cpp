#include "program/check/Check.h"

#include "foundation/text/Encoding.h"
#include "foundation/text/Exceptions.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <set>

namespace kx::check {
namespace {

// "12 rule, 13 rule", each with the lines of its steps behind it: "12 rule 9 10". `said` gets "rule, project:
// message | message of a step".
std::string Found(TChecker& checker, std::set<std::string>& said) {
  std::string found;
  for (const TFinding& finding : checker.TakeFindings()) {
    std::u16string all = finding.Rule + u", " + finding.Project + u": " + finding.Message;
    for (const TFindingStep& step : finding.Steps)
      all += u" | " + step.Message;
    said.insert(text::ToUtf8(all));
    found +=
        (found.empty() ? "" : ", ") + std::to_string(finding.Place.Line) + " " + text::ToUtf8(finding.Rule);
    for (const TFindingStep& step : finding.Steps)
      found += " " + std::to_string(step.Place.Line);
  }
  return found;
}

std::string Listed(const tests::TTemporaryFolder& folder, const std::set<std::string>& said) {
  std::string all;
  for (const auto& line : said)
    all += "\n" + folder.Plain(line);
  return all;
}

constexpr std::string_view SolutionMessages = R"(
dependency-old, : Dependencies in the Global section change the build order | A needs B
dependency-unknown, A: A needs {CCCCCCCC-0000-0000-0000-000000000000}, which no project of the solution has
path-case, C: .\b.CSPROJ is called B.csproj on the disk
path-case, d: d.csproj is called D.csproj on the disk
project-file-twice, C: C has the file of B (line 5) | the first one
project-half-mapped, A: 2 projects have no configuration in R | A | B
project-half-mapped, A: A has no configuration in R
project-id-twice, A: A has the identifier of A (line 3) | the first one
project-kind, Q: B.dbp is of a kind that neither MSBuild nor Visual Studio 2002 to 2010 builds
project-missing, Q: There is no file B.dbp
project-missing, X: There is no file X.csproj
project-missing, a: There is no file d\A.csproj
project-name-twice, a: a has the name of A (line 3) | the first one
project-never-built, B: B has configurations, but none of the solution's builds it
project-unmapped, B: B has no configuration in any configuration of the solution
project-unmapped, C: 2 projects have no configuration in any configuration of the solution | C | D
project-unmapped, C: C has no configuration in any configuration of the solution
projects-missing, : None of its projects is there: S.csproj, T.csproj, U.csproj, V.csproj, X.csproj and 2 more
projects-missing, : None of its projects is there: S.csproj, T.csproj, U.csproj, V.csproj, X.csproj, Y.csproj
projects-missing, : None of its projects is there: X.csproj, Y.csproj
solution-cycle, D: Projects need each other: D needs A (line 5), A needs B (line 10), B needs C (line 15), C needs D (line 21) | D needs A | A needs B | B needs C | C needs D
solution-encoding, : A letter was lost: U+FFFD stands in its place
solution-encoding, : Letters are in UTF-8, but no byte-order mark says so: Visual Studio and MSBuild take them for those of the machine's code page
solution-encoding, : Letters are in the code page of the machine that wrote them; nothing says which
solution-encoding, : The file begins with a damaged byte-order mark
solution-end, : Text behind EndGlobal is read by nobody
solution-format, : Format 12.00 is newer than Visual Studio 2010
solution-header, : A second header, of format 10.00; the first one says 9.00 (line 1)
solution-header, : Visual Studio 2010 writes format 11.00, but the header says 9.00
solution-merge, : A merge was not finished: <<<<<<< mine
solution-merge, : A merge was not finished: =======
solution-merge, : A merge was not finished: >>>>>>> theirs
solution-section, : EndProject closes nothing
solution-section, : Global is not closed
solution-section, : GlobalSection(X) is not closed
solution-section, : Project A is not closed
solution-section, : Project B is not closed
solution-unreadable, : A project needs a name, a file and an identifier: Project("0") = "A", "A.csproj"
solution-unreadable, : A project needs a name, a file and an identifier: Project("x") = "A"
solution-unreadable, : No line says "Microsoft Visual Studio Solution File, Format Version ...")";

constexpr std::string_view ProjectMessages = R"(
assembly-info-missing, : The project compiles no AssemblyInfo file, so its assembly has no version of its own
assembly-info-several, : The project compiles 2 AssemblyInfo files | one of them | one of them
attribute-twice, : AssemblyVersion is there a second time | the first one
hint-missing, : There is no referenced assembly ..\L.dll
project-unreadable, : Opening and ending tag mismatch: a line 2 and Project (line 2)
script-refused, : Unexpected BEGIN
script-unseen, : No header before the version block defines VS_VERSION_INFO
source-case, : B.cs is called b.cs on the disk
source-missing, : 3 of 4 sources are not there | x.cs | y.cs | z.resx
source-missing, : There is no source DIR/gone.cs
source-missing, : There is no source Gone.cs
source-missing, : There is no source y.cpp
source-twice, : B.cs is listed already in line 5 | the first one
source-twice, : b.cs is listed already in line 5 | the first one
version-impossible, : AssemblyFileVersion "1.70000" is no version that compilers take: 70000 is more than 65535
version-impossible, : AssemblyVersion "70000" is no version that compilers take: 70000 is more than 65534
version-impossible, : ReleaseVersion 70000 does not fit into a version resource, where numbers are 0 to 65535)";

constexpr std::string_view ReferenceMessages = R"(
configuration-unknown, A: A has no configuration Debug|x86; it has Debug|AnyCPU
framework-new, A: A is for .NET v4.0, App.sln for Visual Studio.NET 2008 with 3.5
reference-order, A: A references B, which stands behind it in the build order | the reference
reference-outside, A: A references ..\X.csproj, which is not in App.sln)";

const std::string Title = "Microsoft Visual Studio Solution File, Format Version ";

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
    text.append("Project(\"").append(Id('0')).append("\") = \"").append(name).append("\", \"");
    text.append(name).append(".csproj\", \"").append(Id(name[0])).append("\"\n");
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

// Of another kind, name and file than theirs.
std::string Other(const std::string& name, const std::string& file, char id, const std::string& type = "0") {
  return "Project(\"" + type + "\") = \"" + name + "\", \"" + file + "\", \"{" + id + "}\"\nEndProject\n";
}

// Of the Global block, which has no other.
std::string Section(const std::string& name, const std::string& lines) {
  return "Global\n\tGlobalSection(" + name + ") = preSolution\n" + lines + "\tEndGlobalSection\nEndGlobal\n";
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
  std::string_view Found;
};

TEST(Check, FindsWhatIsWrongWithASolutionInItsLine) {
  const std::string head = Title + "10.00\n# Visual Studio 2008\n";
  const std::string end = "Global\nEndGlobal\n";
  const TSolutionCase rows[]{
      {"a healthy one", head + Projects({"A:B", "B"}) + Global({"D"}, {"A.D!", "B.D!"}), ""},
      {"none", "", "1 solution-unreadable"},
      {"a header of another product, and one more", Title + "9.00\n# Visual Studio 2010\n" + head + end,
       "2 solution-header, 3 solution-header"},
      {"a newer one", Title + "12.00\n# Visual Studio 15\n" + end, "1 solution-format"},
      {"headers of two more products", Title + "9.00\n# Visual Studio 2005\n" + end, ""},
      {"and the last of them", Title + "11.00\n# Visual Studio 10\n" + end, ""},
      {"UTF-16", "\xFF\xFE" + text::ToUtf16LE(text::FromUtf8(head + "# \xC3\xBC\n" + end)), ""},
      {"no project", head + "Project(\"x\") = \"A\"\n" + end, "3 solution-unreadable"},
      {"UTF-8 that does not say so", head + "# \xC3\xBC\n" + end, "3 solution-encoding"},
      {"a code page, with CR LF", "\r\n" + head + "\r\n# \xFC\r\n" + end, "5 solution-encoding"},
      {"UTF-8 with its mark", "\xEF\xBB\xBF" + head + "# \xC3\xBC\n" + end, ""},
      {"a damaged mark", "\xBB\xBF\n" + head + end, "1 solution-encoding"},
      {"nothing closed", head + Projects({"<A:B", "<B"}) + "Global\n\tGlobalSection(X) = y\n",
       "3 solution-section, 7 solution-section, 8 solution-section, 9 solution-section"},
      {"closed twice", head + Projects({"A"}) + "EndProject\n" + end, "5 solution-section"},
      {"an open merge and a second end", head + "<<<<<<< mine\n" + end + "Project(\n",
       "3 solution-merge, 6 solution-end"},
      {"a circle of three, and one that leads to it", head + Projects({"D:A", "A:B", "B:C", "C:AD"}) + end,
       "5 solution-cycle 5 10 15 21"},
      {"an unknown need", head + Projects({"A:CB", "B"}) + end, "5 dependency-unknown"},
      {"old needs against the order of the file",
       head + Projects({"A", "B"}) + Section("ProjectDependencies", Id('A') + ".0 = " + Id('B') + "\n"),
       "9 dependency-old 9"},
      {"old needs in their own format",
       Title + "7.00\n" + Projects({"A", "B"}) +
           Section("ProjectDependencies", Id('A') + ".0 = " + Id('B') + "\n"),
       ""},
      {"old needs of nobody, and in the order of the file",
       head + Projects({"A", "B"}) +
           Section("ProjectDependencies",
                   Id('X') + ".0 = " + Id('A') + "\n" + Id('B') + ".0 = " + Id('A') + "\n"),
       ""},
      {"one twice", head + Projects({"A", "B", "A"}) + Global({"D"}, {"A.D!", "B.D!"}),
       "7 project-id-twice 3"},
      {"one that is missing, and one in another letter case", head + Projects({"A", "X", "d"}) + end,
       "5 project-missing, 7 path-case"},
      {"none is there", head + Projects({"X", "Y"}) + end, "3 projects-missing"},
      {"none of many is there", head + Projects({"S", "T", "U", "V", "X", "Y"}) + end, "3 projects-missing"},
      {"none of even more", head + Projects({"S", "T", "U", "V", "X", "Y", "Z"}) + end, "3 projects-missing"},
      {"half, not at all and never",
       head + Projects({"A", "B", "C"}) + Global({"D", "R"}, {"A.D!", "B.D", "B.R"}),
       "3 project-half-mapped, 5 project-never-built, 7 project-unmapped"},
      {"half and not at all, two of each, in other letter case",
       head + Projects({"A", "B", "C", "D"}) + Global({"D", "R"}, {"A.d!", "B.D!"}),
       "3 project-half-mapped 3 5, 7 project-unmapped 7 9"},
      {"mappings of the oldest formats",
       Title + "7.00\n" + Projects({"A", "B"}) +
           Section("SolutionConfiguration", "ConfigName.0 = D\n\tEndGlobalSection\n"
                                            "\tGlobalSection(ProjectConfiguration) = postSolution\n" +
                                                Id('A') + ".D.ActiveCfg = D|.NET\n" + Id('A') +
                                                ".D.Build.0 = D|.NET\n"),
       "4 project-unmapped"},
      {"a description is no configuration",
       head + Projects({"A"}) + Section("SolutionConfigurationPlatforms", "Description = x\n"), ""},
      {"a name and a file twice",
       head + Projects({"A", "B"}) + Other("a", "d\\A.csproj", '1') + Other("C", ".\\b.CSPROJ", '2') + end,
       "7 project-name-twice 3, 7 project-missing, 9 project-file-twice 5, 9 path-case"},
      {"a name twice, but in folders of the solution",
       head + Projects({"A"}) + Other("F", "F", 'F', "{2150E333-8FDC-42A3-9474-1A3956D46DE8}") +
           Other("A", "D.csproj", '1') + Section("NestedProjects", "{1} = {F}\n"),
       ""},
      {"a strange kind, a web site and an address are not looked for in the same way",
       head + Projects({"A"}) + Other("Q", "B.dbp", '1') +
           Other("W", "W\\", '2', "{E24C65DC-7377-472B-9ABA-BC803B73C61A}") +
           Other("H", "http://h/H.csproj", '3') + Global({"D"}, {"A.D!"}),
       "5 project-missing, 5 project-kind"},
      {"lines of a merge, line ends of a Macintosh", Title + "10.00\r=======\rGlobal\rEndGlobal\r",
       "2 solution-merge"},
      {"a merge that ends, and a comment behind the projects",
       head + Projects({"A"}) + ">>>>>>> theirs\n# Visual Studio 2010\n" + end, "5 solution-merge"},
      {"a lost letter, with a mark and without", "\xEF\xBB\xBF" + head + "# \xC3\xBC\n#\xEF\xBF\xBD\n" + end,
       "4 solution-encoding"},
      {"too little of a project", head + "Project(\"0\") = \"A\", \"A.csproj\"\nEndProject\n" + end,
       "3 solution-unreadable, 4 solution-section"},
      {"a section in a section",
       head + "Global\n\tGlobalSection(X) = y\n\tGlobalSection(Y) = z\n"
              "\tEndGlobalSection\nEndGlobal\n",
       "4 solution-section"},
  };
  tests::TTemporaryFolder folder;
  std::set<std::string> said;
  for (const auto* name : {"A", "B", "C", "D"})
    folder.Write(std::string(name) + ".csproj", "<Project/>");
  for (const TSolutionCase& row : rows) {
    SCOPED_TRACE(row.Name);
    TChecker checker{TCheckLevels()};
    checker.CheckSolution(folder.Write("App.sln", row.Text));
    EXPECT_EQ(Found(checker, said), row.Found);
    EXPECT_GE(checker.FileCount(), 1U);
  }
  EXPECT_EQ(Listed(folder, said), SolutionMessages);
}

TEST(Check, FindsWhatIsWrongWithAProjectInItsLine) {
  const std::string debug =
      "<PropertyGroup Condition=\" '$(Configuration)|$(Platform)' == 'Debug|AnyCPU' \"/>\n";
  const std::string info = "<Compile Include='AssemblyInfo.cs'/>\n";
  const std::string native = "<VisualStudioProject ProjectType='Visual C++'><Configurations>\n<Configuration "
                             "Name='Debug|Win32'/></Configurations><Files>\n";
  const auto managed = [&](const std::string& items) {
    return "<Project>" + debug + "<ItemGroup>\n" + info + items + "</ItemGroup></Project>";
  };
  tests::TTemporaryFolder folder;
  const auto full = [&folder](const char* name) {
    return "<Compile Include='" + text::ToUtf8(folder.Path(name)) + "'/>";
  };
  struct TProjectCase {
    std::string_view Name, File;
    std::string Text;
    std::string_view Found;
  };
  const TProjectCase rows[]{
      {"a healthy one", "A.csproj", managed("<Compile Include='b.cs;*.gen.cs;$(X).cs'/>"), ""},
      {"broken XML", "A.csproj", "<Project>\n<a></Project>", "2 project-unreadable"},
      {"a setup project is none", "A.vdproj", "\"DeployProject\"", ""},
      {"missing and twice, unless a condition chooses", "A.csproj",
       managed(
           "<Compile Include='Gone.cs'/>\n<Compile Include='.\\b.cs'/>\n<Compile Include='b.cs'/>\n<Compile "
           "Include='b.cs' Condition=\"'$(X)' == '1'\"/>\n<Compile Include='B.cs'/>"),
       "4 source-missing, 6 source-twice 5, 8 source-case, 8 source-twice 5"},
      {"full paths", "A.csproj", managed(full("b.cs") + full("more") + "\n" + full("gone.cs")),
       "5 source-missing"},
      {"most are missing", "A.csproj",
       managed("<Compile Include='x.cs'/>\n<Compile Include='y.cs'/>\n<EmbeddedResource Include='z.resx'/>"),
       "4 source-missing 4 5 6"},
      {"a hint", "A.csproj", managed("<Reference Include='L'>\n<HintPath>..\\L.dll</HintPath></Reference>"),
       "5 hint-missing"},
      {"no AssemblyInfo, of the oldest form", "A.csproj",
       "<VisualStudioProject><CSHARP><Files><Include>\n<File RelPath='b.cs' "
       "BuildAction='Compile'/></Include></Files></CSHARP></VisualStudioProject>",
       "0 assembly-info-missing"},
      {"attributes stand in files that are called so, of sources that are compiled", "A.csproj",
       managed("<Compile Include='OwnVersion.cs'/>\n<Compile Include='other.cs'/>\n<None "
               "Include='more\\AssemblyInfo.cs'/><Compile Include='more\\AssemblyInfo.cs' Condition='x'/>"),
       "0 assembly-info-several 0 0, 1 attribute-twice 1, 1 version-impossible"},
      {"two with the same attribute, and one that no compiler takes", "A.csproj",
       managed("<Compile Include='more\\AssemblyInfo.cs'/>"),
       "0 assembly-info-several 0 0, 2 attribute-twice 1, 3 version-impossible"},
      {"sources left out of a C++ project, headers", "A.vcproj",
       native + "<File RelativePath='x.cpp'><FileConfiguration ExcludedFromBuild='true'/></File><File "
                "RelativePath='x.h'/>\n<File RelativePath='y.cpp'/></Files></VisualStudioProject>",
       "4 source-missing"},
      {"scripts whose headers define the name of a version, do not, or are not there", "A.vcproj",
       native + "<File RelativePath='own.rc'/><File RelativePath='empty.rc'/><File "
                "RelativePath='unknown.rc'/></Files></VisualStudioProject>",
       "2 script-unseen"},
      {"scripts", "A.vcproj",
       native + "<File RelativePath='a.rc'/><File RelativePath='b.rc'/><File "
                "RelativePath='c.rc'/></Files></VisualStudioProject>",
       "2 version-impossible, 6 script-refused, 1 script-unseen"},
  };
  std::set<std::string> said;
  folder.Write("b.cs");
  folder.Write("AssemblyInfo.cs", "[assembly: AssemblyVersion(\"1.0.*\")]\n");
  for (const auto* name : {"OwnVersion.cs", "other.cs"})
    folder.Write(name, "[assembly: System.Reflection.AssemblyVersion(\"70000\")]\n");
  folder.Write("more/AssemblyInfo.cs",
               "using System.Reflection;\n[assembly: AssemblyVersionAttribute(\"1.2\")]\n"
               "[assembly: AssemblyFileVersion(\"1.70000\")]\n");
  const auto script = [](const std::string& version, const std::string& end) {
    return "VS_VERSION_INFO VERSIONINFO\n FILEVERSION " + version + "\n FILEOS 0x40004L\nBEGIN\n" + end;
  };
  folder.Write("own.h", "#define VS_VERSION_INFO 1\n");
  folder.Write("empty.h");
  for (const std::string header : {"own", "empty", "unknown"})
    folder.Write(header + ".rc", "#include \"" + header + ".h\"\n" + script("1,0,0,0", "END\n"));
  folder.Write("a.rc", script("1,0,0,0", "END\n"));
  folder.Write("b.rc", "#include <winver.h>\n" + script("1,0,70000,0", "END\n"));
  folder.Write("c.rc", "#include \"gone.h\"\n" + script("1,0,0,0", "BEGIN\n"));
  for (const TProjectCase& row : rows) {
    SCOPED_TRACE(row.Name);
    TCheckLevels levels;
    levels.Set(u"script-loss=off");
    TChecker checker(levels);
    checker.CheckProject(folder.Write(row.File, row.Text));
    EXPECT_EQ(Found(checker, said), row.Found);
  }
  EXPECT_EQ(Listed(folder, said), ProjectMessages);
  folder.Write("own.rc", "#include <winver.h>\n1 VERSIONINFO\nFILETYPE 0x2L\nBEGIN\nEND\n");
  TChecker checker{TCheckLevels()};
  checker.CheckProject(
      folder.Write("A.vcproj", native + "<File RelativePath='own.rc'/></Files></VisualStudioProject>"));
  said.clear();
  EXPECT_EQ(Found(checker, said), "2 script-loss");
}

TEST(Check, LooksForFilesInAFolderAndBelow) {
  tests::TTemporaryFolder folder;
  const auto found = [&folder](std::string_view name) {
    const TFilesToCheck files = FilesToCheck(folder.Path(name));
    std::string all;
    for (const auto* list : {&files.Files, &files.Troubles})
      for (const auto& file : *list)
        all += " " + folder.Plain(text::ToUtf8(file));
    return all;
  };
  for (const auto* name :
       {"b.kxproj", "b.CSPROJ", "sub/c.csproj", "sub/d.sln", "a.txt", "a.vcproj", ".git/e.sln"})
    folder.Write(name);
  folder.Write("e.sln/none.txt");
  EXPECT_EQ(found(""), " DIR/sub/d.sln DIR/b.CSPROJ DIR/sub/c.csproj DIR/a.vcproj DIR/b.kxproj");
  EXPECT_EQ(found("a.txt"), " DIR/a.txt") << "whatever it is called";
  EXPECT_EQ(found("e.sln"), " There is no solution, project or build project in DIR/e.sln.");
  EXPECT_THROW(found("gone"), EKxException);
}

TEST(Check, FindsWhatDoesNotFitBetweenASolutionAndItsProjects) {
  tests::TTemporaryFolder folder;
  const auto project = [](const std::string& items) {
    return "<Project>\n<PropertyGroup><TargetFrameworkVersion>v4.0</TargetFrameworkVersion></"
           "PropertyGroup>\n<PropertyGroup "
           "Condition=\"'$(Configuration)|$(Platform)'=='Debug|AnyCPU'\"/><ItemGroup>\n" +
           items + "</ItemGroup></Project>";
  };
  folder.Write(
      "A.csproj",
      project(
          "<ProjectReference Include='B.csproj'/><ProjectReference Include='A.csproj'/>\n<ProjectReference "
          "Include='..\\X.csproj'><Project>{x}</Project></ProjectReference>\n<ProjectReference "
          "Include='C:\\b\\B.csproj'><Project>BBBBBBBB-0000-0000-0000-000000000000</Project></"
          "ProjectReference>"));
  folder.Write("B.csproj", "<Project><Import Project='own.targets'/></Project>");
  TCheckLevels levels;
  levels.Set(u"reference-order=note");
  TChecker checker(levels);
  checker.CheckSolution(
      folder.Write("App.sln", Title + "10.00\n" + Projects({"A", "B"}) + Global({"D"}, {"A.D!", "B.D!"})));
  std::set<std::string> said;
  EXPECT_EQ(Found(checker, said),
            "2 reference-order 4, 2 reference-order 6, 11 configuration-unknown, 2 framework-new, "
            "5 reference-outside");
  EXPECT_EQ(Listed(folder, said), ReferenceMessages);
}

TEST(Check, ComparesTheVersionsOfNativeFilesAndAssemblies) {
  struct TVersions {
    std::string_view Native; // of the script
    std::string_view Managed;
    std::string_view Found;
  };
  const TVersions rows[]{
      {"1,2,0,0", "[assembly: AssemblyVersion(\"1.1.0.0\")]",
       "versions-differ, : No native file has the version of an assembly: 1.2.0.0 and 1.1.0.0 | 1.2.0.0 | "
       "1.1.0.0"},
      {"1,2,0,0", "[assembly: AssemblyVersion(\"1.2\")]", ""},
      {"1,2,0,0", "[assembly: AssemblyVersion(\"1.1\")]\n[assembly: AssemblyFileVersion(\"1.2.0\")]", ""},
      {"1,2,0,0", "[assembly: AssemblyVersion(\"1.1.*\")]", ""},
      {"0,0,0,0", "[assembly: AssemblyVersion(\"1.1\")]", ""},
  };
  tests::TTemporaryFolder folder;
  folder.Write("A.csproj", "<Project><ItemGroup><Compile Include='AssemblyInfo.cs'/></ItemGroup></Project>");
  folder.Write("N.vcproj",
               "<VisualStudioProject ProjectType='Visual C++'><Files><File RelativePath='n.rc'/></Files>"
               "</VisualStudioProject>");
  const auto solution = folder.Write("App.sln", Title + "10.00\n" + Projects({"A"}) +
                                                    Other("N", "N.vcproj", 'B') + Global({}, {}));
  for (const auto& [native, managed, found] : rows) {
    SCOPED_TRACE(managed);
    folder.Write("AssemblyInfo.cs", std::string("using System.Reflection;\n").append(managed));
    folder.Write("n.rc", std::string("#include <winver.h>\nVS_VERSION_INFO VERSIONINFO\n FILEVERSION ")
                             .append(native)
                             .append("\nBEGIN\nEND\n"));
    TChecker checker{TCheckLevels()};
    checker.CheckSolution(solution);
    std::set<std::string> said;
    Found(checker, said);
    std::erase_if(said, [](const std::string& line) { return !line.starts_with("versions-differ"); });
    EXPECT_EQ(said.empty() ? "" : *said.begin(), found);
  }
}

} // namespace
} // namespace kx::check
