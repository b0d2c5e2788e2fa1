#include "tests/solution/SolutionFolder.h"

#include "text/Text.h"

namespace kx::tests {

namespace {

const std::string Header = "Microsoft Visual Studio Solution File, Format Version 11.00\n";

// 38 characters, like any identifier.
std::string Id(char letter) {
  const std::string eight(8, letter);
  const std::string four(4, letter);
  return "{" + eight + "-" + four + "-" + four + "-" + four + "-" + eight + four + "}";
}

std::string Project(char letter, const std::string& block = "", const std::string& path = "a.csproj") {
  return "Project(\"" + Id('F') + "\") = \"" + letter + "\", \"" + path + "\", \"" + Id(letter) + "\"\n" +
         block + "EndProject\n";
}

std::string Needs(const std::string& ids) {
  std::string lines = "\tProjectSection(ProjectDependencies) = postProject\n";
  for (const char letter : ids)
    lines += "\t\t" + Id(letter) + " = " + Id(letter) + "\n";
  return lines + "\tEndProjectSection\n";
}

std::string Section(const std::string& name, const std::string& lines) {
  return "\tGlobalSection(" + name + ") = preSolution\n" + lines + "\tEndGlobalSection\n";
}

std::string Solution(const std::string& projects, const std::string& sections = "") {
  return Header + projects + "Global\n" + sections + "EndGlobal\n";
}

class OpenedSolution : public SolutionFolder {
protected:
  // "solution=project", with a "*" for an active one.
  static Strings ConfigsOf(const IVSDotNetProject& project) {
    Strings configs;
    for (int i = 0; i < project.GetConfigCount(); ++i) {
      const TVSDotNetProjectConfig config = project.GetConfigItem(i);
      configs.push_back(text::ToUtf8(config.Solution) + "=" + text::ToUtf8(config.Project) +
                        (config.Active ? "*" : ""));
    }
    return configs;
  }
  static Strings ConfigurationsOf(const IVSDotNetSolution& solution) {
    if (!solution.GetConfigurations()) return {"null"};
    Strings names;
    for (int i = 0; i < solution.GetConfigurations()->GetCount(); ++i)
      names.push_back(text::ToUtf8(solution.GetConfigurations()->GetItem(i)->GetName()));
    return names;
  }
};

TEST_F(OpenedSolution, HasTheProjectsOfItsLines) {
  const std::string type = "Project(\"" + Id('F') + "\")";
  const struct {
    const char* What;
    std::string Lines;
    std::string_view Fields; // name|path|id of each
  } cases[] = {
      {"blanks in quotes", type + " = \"My App\", \"a b.csproj\", \"{1}\"", "My App|a b.csproj|{1}"},
      {"no quotes, blanks separate", "  " + type + "=a b c d", "a|b|c"},
      {"doubled quotes", type + "=\"a\"\"b\",\"p\",\"{1}\"", "a\"b|p|{1}"},
      {"an item that is empty", type + "=a,,c", "a||c"},
      {"a comma at the end", type + "=a,b,", "a|b|"},
      {"text between the type and the equals sign", type + "whatever = a, b, c", "a|b|c"},
      {"the type is 38 characters, whatever they are", "Project(\"" + std::string(37, '=') + "x=a,b,c",
       "a|b|c"},
      {"another word", "Projects(\"x\") = a, b, c\nproject(\"x\") = a, b, c", ""},
      {"no blank line ends the list", type + "=a,b,c\n Global\nGlobal \n" + type + "=d,e,f", "a|b|c d|e|f"},
  };
  for (const auto& row : cases) {
    const auto solution = OpenText(Solution(row.Lines + "\n"));
    std::string fields;
    for (int i = 0; i < solution->GetProjects()->GetCount(); ++i) {
      const auto project = solution->GetProjects()->GetItem(i);
      fields += std::string(i > 0 ? " " : "") + text::ToUtf8(project->GetName()) + "|" +
                text::ToUtf8(project->GetFileName()) + "|" + text::ToUtf8(project->GetProjectID());
    }
    EXPECT_EQ(fields, row.Fields) << row.What;
  }
}

TEST_F(OpenedSolution, LeavesOutProjectsThatAreNotOnDisk) {
  Write("src/Here.csproj");
  Write("sub/x.sln",
        Solution(Project('A', "", "..\\SRC\\here.CSPROJ") + Project('B', Needs("A"), "missing.csproj") +
                 Project('C', "", "http://server/c.csproj") + Project('D', "", "x https://d") +
                 Project('E', "", "HTTP://e") + Project('F', "", "..\\src")));
  EXPECT_EQ(Names(*Open("sub/x.sln", false)), (Strings{"A", "C", "D"}));
  EXPECT_EQ(Names(*Open("sub/x.sln", true)), (Strings{"A", "B", "C", "D", "E", "F"}));
}

TEST_F(OpenedSolution, IsInOrderOfTheDependenciesOfProjectBlocks) {
  const std::string web = "\tProjectSection(WebsiteProperties) = preProject\n\tEndProjectSection\n";
  const std::string missing =
      "Project(\"" + Id('F') + "\") = \"M\", \"missing.csproj\", \"{M}\"\n"; // without an end of its own
  const struct {
    const char* What;
    std::string Projects;
    Strings Expected;
    Strings NeedsOfFirst; // of the first in the file
  } cases[] = {
      {"before its library", Project('A', Needs("B")) + Project('B'), {"B", "A"}, {Id('B')}},
      {"behind another section they are lost", Project('A', web + Needs("B")) + Project('B'), {"A", "B"}, {}},
      {"behind their own section they are read",
       Project('A', Needs("C") + Needs("B")) + Project('B'),
       {"B", "A"},
       {Id('C'), Id('B')}},
      {"a section without an end swallows what follows",
       Project('A', "ProjectSection(ProjectDependencies)\n=x\nEndProject\n a = b = c \n") + Project('B') +
           "EndProjectSection\n",
       {"A"},
       {"x", "b = c", "\"B\", \"a.csproj\", \"" + Id('B') + "\""}},
      {"outside a project", Needs("B") + Project('A') + Project('B'), {"A", "B"}, {}},
  };
  for (const auto& row : cases) {
    const auto solution = OpenText(Solution(row.Projects));
    EXPECT_EQ(Names(*solution), row.Expected) << row.What;
    const auto first = solution->GetProjects()->GetItemInFileOrder(0);
    EXPECT_EQ(first->GetName(), u"A") << row.What;
    EXPECT_EQ(Lines(first->GetDependancies()->GetList()), row.NeedsOfFirst) << row.What;
  }
  Write("a.csproj");
  const auto skipped =
      OpenText(Solution("Project(\"" + Id('F') + "\") = A, a.csproj, {A}\n" + missing + Needs("B")), false);
  EXPECT_EQ(skipped->GetProjects()->GetItem(0)->GetDependancies()->GetCount(), 0)
      << "they are those of the missing one";
}

TEST_F(OpenedSolution, HasTheConfigurationsOfItsLastSection) {
  const std::string old =
      Section("SolutionConfiguration", "\t\tConfigName.0 = Debug\n\t\tConfigName.1 = Release\n");
  const std::string platforms =
      Section("SolutionConfigurationPlatforms",
              "\t\tDebug|Any CPU = Debug|Any CPU\n\t\tDescription = text\n\t\tno sign\n");
  const struct {
    const char* What;
    std::string Text;
    Strings Expected;
  } cases[] = {
      {"none", Solution(""), {"null"}},
      {"an empty section", Solution("", Section("SolutionConfiguration", "")), {}},
      {"the oldest form", Solution("", old), {"Debug", "Release"}},
      {"platforms", Solution("", platforms), {"Debug|Any CPU"}},
      {"the last of two", Solution("", old + platforms), {"Debug|Any CPU"}},
      {"twice the same", Solution("", Section("SolutionConfiguration", "a=1\na=2\n")), {"1", "1"}},
      {"a line above names it, in other letters",
       Header + "\t\tDÉ = above \nGlobal\n" +
           Section("SolutionConfiguration", "\t\tdé = here\n\t\tdé= other\n") + "EndGlobal\n",
       {"above", "other"}},
      {"blanks before the name count",
       Header + "a = above\nGlobal\n" + Section("SolutionConfiguration", "\ta = here\n") + "EndGlobal\n",
       {"here"}},
      {"an empty name",
       Header + "no sign\n=above\nGlobal\n" + Section("SolutionConfiguration", "= here\n") + "EndGlobal\n",
       {"above"}},
      {"short names", Solution("", Section("SolutionConfiguration", "a=1\nb=2\nab=3\n")), {"1", "2", "3"}},
      {"another section's name", Solution("", Section("SolutionConfigurations", "a=1\n")), {"null"}},
  };
  for (const auto& row : cases)
    EXPECT_EQ(ConfigurationsOf(*OpenText("\xEF\xBB\xBF" + row.Text)), row.Expected) << row.What;
}

TEST_F(OpenedSolution, FindsTheFirstNameInAFileLargerThanItsBuffer) {
  const std::string many = [] {
    std::string lines;
    while (lines.size() < 500'000)
      lines += "# padding\n";
    return lines;
  }();
  const auto solution =
      OpenText(Header + "Debug =far above\n" + many + "Global\n" + many +
               Section("SolutionConfiguration", "Release =x\nDebug =y\n") + "EndGlobal\n" + many);
  EXPECT_EQ(ConfigurationsOf(*solution), (Strings{"x", "far above"}));
}

TEST_F(OpenedSolution, KeepsTheFirstProjectConfigurationOfEachName) {
  const std::string a = "\t\t" + Id('A');
  const struct {
    const char* What;
    std::string Lines;
    Strings Expected;
  } cases[] = {
      {"both kinds", a + ".Debug.ActiveCfg = X|Win32\n" + a + ".Debug.Build.0 = Y\n", {"Debug=X|Win32*"}},
      {"the flag comes later", a + ".Debug.Build.0 = Y\n" + a + ".DEBUG.ActiveCfg = X\n", {"Debug=Y*"}},
      {"never active", a + ".Debug.Build.0 = Y\n", {"Debug=Y"}},
      {"others are ignored", a + ".Debug.Deploy.0 = Y\n" + Id('B') + ".Debug.ActiveCfg = X\nshort\n", {}},
      {"other letters in the identifier",
       text::ToUtf8(text::ToLower(text::FromUtf8(a))) + ".D.ActiveCfg = X\n",
       {}},
      {"an equals sign in the name",
       a + ".x=y.Build.0 = 1\n" + a + ".x=y.ActiveCfg = 2\n",
       {"x=y=1", "x=y=2*"}},
  };
  for (const std::string section : {"ProjectConfiguration", "ProjectConfigurationPlatforms"}) {
    for (const auto& row : cases) {
      const auto solution = OpenText(Solution(Project('A'), Section(section, row.Lines)));
      EXPECT_EQ(ConfigsOf(*solution->GetProjects()->GetItem(0)), row.Expected) << row.What;
    }
  }
}

TEST_F(OpenedSolution, FindsManyProjectConfigurationsByName) {
  std::string lines;
  for (int i = 0; i < 40; ++i)
    lines += Id('A') + ".C" + std::to_string(i) + ".Build.0 = P" + std::to_string(i) + "\n";
  lines += Id('A') + ".c39.ActiveCfg = other\n";
  const auto project =
      OpenText(Solution(Project('A'), Section("ProjectConfiguration", lines)))->GetProjects()->GetItem(0);
  EXPECT_EQ(project->GetConfigCount(), 40);
  EXPECT_EQ(project->GetConfig(u"c3"), u"P3");
  EXPECT_EQ(project->GetConfig(u"C39"), u"P39");
  EXPECT_TRUE(project->IsActiveConfig(u"C39"));
  EXPECT_FALSE(project->IsActiveConfig(u"C3"));
  EXPECT_EQ(project->GetConfig(u"C40"), u"");
  EXPECT_FALSE(project->IsActiveConfig(u"C40"));
}

TEST_F(OpenedSolution, TakesOldDependenciesAfterTheProjectsAreOrdered) {
  const auto solution = OpenText(Solution(
      Project('A') + Project('B'),
      Section("ProjectDependencies", "\t\t" + Id('A') + ".0 = " + Id('B') + "\n\t\t" + Id('A') + "\n")));
  EXPECT_EQ(Names(*solution), (Strings{"A", "B"}));
  const auto needs = solution->GetProjects()->GetItem(0)->GetDependancies();
  EXPECT_EQ(Lines(needs->GetList()), Strings{Id('B')});
  EXPECT_TRUE(needs->Contains(text::ToLower(needs->GetItem(0))));
  solution->GetProjects()->SortByDependancies();
  EXPECT_EQ(Names(*solution), (Strings{"B", "A"}));
  EXPECT_EQ(solution->GetProjects()->GetItemInFileOrder(0)->GetName(), u"A");
}

TEST_F(OpenedSolution, GivesTheFirstProjectInBuildOrderToAnIdentifier) {
  // The second A comes first once it is ordered, so it gets the configurations.
  const auto solution =
      OpenText(Solution(Project('A', Needs("B")) + Project('B') + Project('A', "", "second.csproj"),
                        Section("ProjectConfiguration", Id('B') + ".D.ActiveCfg = X\n")));
  const auto projects = solution->GetProjects();
  EXPECT_EQ(projects->FindByFileName(u"second.csproj"), projects->GetItem(2));
  EXPECT_EQ(projects->FindByFileName(u"Second.csproj"), nullptr);
  EXPECT_EQ(projects->FindByID(text::FromAscii(Id('B'))), projects->GetItem(0));
  EXPECT_EQ(projects->FindByID(text::FromAscii(Id('A'))), projects->GetItem(1));
  EXPECT_EQ(projects->FindByID(u"{b}"), nullptr);
}

TEST_F(OpenedSolution, AnswersBadIndexesAndKeepsItsFileName) {
  const auto solution = OpenText("\n\n" + Solution(Project('A'), Section("SolutionConfiguration", "a=1\n")));
  for (const int bad : {-1, 1}) {
    EXPECT_EQ(solution->GetProjects()->GetItem(bad), nullptr);
    EXPECT_EQ(solution->GetProjects()->GetItemInFileOrder(bad), nullptr);
    EXPECT_EQ(solution->GetConfigurations()->GetItem(bad), nullptr);
    EXPECT_EQ(solution->GetProjects()->GetItem(0)->GetDependancies()->GetItem(bad), u"");
  }
  EXPECT_EQ(solution->GetProjects()->GetItem(0)->GetProjectTypeID(), text::FromAscii(Id('F')));
  EXPECT_EQ(solution->GetFileName(), Path("a.sln"));
  EXPECT_EQ(solution->GetVisualStudioVersion(), TVSDotNetVersion::vs2010);
  EXPECT_EQ(VSDotNetVersionEnumeration.OrdinalOf(u"VS2010"), static_cast<int>(TVSDotNetVersion::vs2010));
}

TEST_F(OpenedSolution, IsRefusedWithTheReasonAndTheLine) {
  const std::string type = "Project(\"" + Id('F') + "\")";
  const struct {
    const char* What;
    std::string Text;
    std::string Expected;
  } cases[] = {
      {"empty", "", "List index out of bounds (0) @ 1"},
      {"only empty lines", "\n\n", "List index out of bounds (0) @ 3"},
      {"a line of blanks first", " \n" + Header, "Invalid Visual Studio Solution Header :   @ 1"},
      {"another file", "\nMZ\x90\n", "Invalid Visual Studio Solution Header : MZ\xC2\x90 @ 2"},
      {"no Global", "\n" + Header + "x\n", "List index out of bounds (2) @ 4"},
      {"ends in a dependency section", Header + Project('A', "ProjectSection(ProjectDependencies)\n"),
       "List index out of bounds (5) @ 6"},
      {"no EndGlobal", Header + "Global\n\tEndGlobalSection\n", "List index out of bounds (3) @ 4"},
      {"a blank EndGlobal is one", Header + "Global\n EndGlobal \n", "no error"},
      {"no end of a section", Header + "Global\nGlobalSection(SolutionConfiguration)\nEndGlobal\n",
       "List index out of bounds (4) @ 5"},
      {"no end of a project section", Header + "Global\nGlobalSection(ProjectConfiguration)\n",
       "List index out of bounds (3) @ 4"},
      {"two items", Header + type + " = \"a\", \"b\"\n", "Error parsing project string @ 2"},
      {"no equals sign", Header + type + "\n", "Error parsing project string @ 2"},
      {"a pair of projects", Solution(Project('A', Needs("B")) + Project('B', Needs("A"))),
       "Solution has invalid circular dependancies between : B and A"},
      {"a pair, and no Global", Header + Project('A', Needs("B")) + Project('B', Needs("A")),
       "Solution has invalid circular dependancies between : B and A"},
  };
  for (const auto& row : cases)
    EXPECT_EQ(RefusalOf(row.Text), row.Expected) << row.What;
}

TEST_F(OpenedSolution, NeedsAReadableFileAndStopsWhenAsked) {
  EXPECT_THAT(Raised([&] { Open("missing.sln"); }), testing::HasSubstr("missing.sln"));
  Write("a.sln", Solution(""));
  TKxEvent stop;
  stop.Raise();
  EXPECT_EQ(Raised([&] { OpenSolution(Path("a.sln"), true, &stop); }), "Action Terminated by User.");
}

TEST_F(OpenedSolution, SurvivesOneLineOfManyMegabytes) {
  const std::string line(std::size_t{1} << 24, 'x');
  EXPECT_EQ(OpenText(Header + line + "\n" + Project('A') + "Global\nEndGlobal\n")->GetProjects()->GetCount(),
            1);
}

} // namespace

} // namespace kx::tests
