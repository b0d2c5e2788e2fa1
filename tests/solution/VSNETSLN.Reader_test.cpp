#include "tests/solution/SolutionFolder.h"

#include "foundation/platform/System.h"
#include "foundation/text/Text.h"

#include <thread>

namespace kx::tests {

namespace {

const std::string Header = "Microsoft Visual Studio Solution File, Format Version 11.00\n";

// 38 characters, like any identifier.
std::string Id(char letter) {
  std::string id(36, letter);
  for (const std::size_t dash : {8U, 13U, 18U, 23U})
    id[dash] = '-';
  return "{" + id + "}";
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

class OpenedSolution : public SolutionFolder {};

TEST_F(OpenedSolution, HasTheProjectsOfItsLines) {
  const std::string type = "Project(\"" + Id('F') + "\")";
  const std::tuple<const char*, std::string, std::string_view> cases[] = {
      {"no quotes, blanks separate", "  " + type + "=a b c d", "a|b|c"},
      {"blanks and doubled quotes", type + " = \"a \"\"b\", \"a b.csproj\", {1}", "a \"b|a b.csproj|{1}"},
      {"empty items", type + "=a,,", "a||"},
      {"a type of any 38 characters", "Project(\"" + std::string(37, '=') + "x=a,b,c", "a|b|c"},
      {"many megabytes above", std::string(20'000'000, 'x') + "\n" + type + "=a,b,c", "a|b|c"},
      {"another word", "Projects(\"x\") = a, b, c\nproject(\"x\") = a, b, c", ""},
      {"no blank line ends the list", type + "=a,b,c\n Global\nGlobal \n" + type + "=d,e,f", "a|b|c d|e|f"},
  };
  for (const auto& [what, lines, expected] : cases) {
    const auto solution = OpenText(Solution(lines + "\n"));
    std::string fields;
    for (int i = 0; i < solution->GetProjects()->GetCount(); ++i) {
      const auto project = solution->GetProjects()->GetItem(i);
      fields += std::string(i > 0 ? " " : "") + text::ToUtf8(project->GetName()) + "|" +
                text::ToUtf8(project->GetFileName()) + "|" + text::ToUtf8(project->GetProjectID());
    }
    EXPECT_EQ(fields, expected) << what;
  }
}

TEST_F(OpenedSolution, LeavesOutProjectsThatAreNotOnDisk) {
  Write("src/Here.csproj");
  platform::MapDrive(u'Q', Path("src")); // where drives are not the system's own
  const std::string here =
      platform::IsWindows() ? text::ToUtf8(Path("src/Here.csproj")) : std::string("q:\\Here.csproj");
  Write("sub/x.sln",
        Solution(Project('A', "", "..\\SRC\\here.CSPROJ") + Project('B', Needs("A"), "missing.csproj") +
                 Project('C', "", "http://server/c.csproj") + Project('D', "", "x https://d") +
                 Project('E', "", "HTTP://e") + Project('F', "", "..\\src") + Project('G', "", here)));
  EXPECT_EQ(NamesOf(Open("sub/x.sln", false)->GetProjects()), (Strings{"A", "C", "D", "G"}));
  EXPECT_EQ(NamesOf(Open("sub/x.sln", true)->GetProjects()), (Strings{"A", "B", "C", "D", "E", "F", "G"}));
  for (const bool all : {false, true}) {
    std::string notFound;
    const auto solution = Open("sub/x.sln", all);
    for (const auto& project : solution->GetProjectsNotFound())
      notFound += text::ToUtf8(project->GetName() + u" " + project->GetFileName() + u"\n");
    EXPECT_EQ(notFound, "B missing.csproj\nE HTTP://e\nF ..\\src\n");
  }
}

TEST_F(OpenedSolution, HasTheConfigurationsOfItsLastSection) {
  const std::string platforms =
      Section("SolutionConfigurationPlatforms", "\tD|Any = D|Any\n\tDescription = d\nx\n");
  const std::string old = Section("SolutionConfiguration", "ConfigName.0 = Debug\nConfigName.1 = Release\n");
  const std::string many(500'000, '\n');
  const std::tuple<const char*, std::string, Strings> cases[] = {
      {"none", Solution(""), {"null"}},
      {"the oldest form", Solution("", old), {"Debug", "Release"}},
      {"the last of two", Solution("", old + platforms), {"D|Any"}},
      {"a line above names it, in other letters",
       Header + "\t\tDÉ = above \nGlobal\n" +
           Section("SolutionConfiguration", "\t\tdé = here\n\t\tdé= other\n") + "EndGlobal\n",
       {"above", "other"}},
      {"in a file larger than its buffer",
       Header + "Debug =far above\n" + many + "Global\n" + many +
           Section("SolutionConfiguration", "Release =x\nDebug =y\n") + "EndGlobal\n" + many,
       {"x", "far above"}},
  };
  for (const auto& [what, text, expected] : cases)
    EXPECT_EQ(NamesOf(OpenText("\xEF\xBB\xBF" + text)->GetConfigurations()), expected) << what;
}

TEST_F(OpenedSolution, KeepsTheFirstProjectConfigurationOfEachName) {
  const std::string a = "\t\t" + Id('A');
  const std::string lines = a + ".Debug.ActiveCfg = X|Win32\n" + a + ".Debug.Build.0 = other\n" + a +
                            ".Release.Build.0 = Y\n" + a + ".RELEASE.ActiveCfg = other\n" + a +
                            ".x=y.Build.0 = 1\n" + a + ".x=y.ActiveCfg = 2\n" + a + ".Test.Build.0 = Z\n" +
                            a + ".Debug.Deploy.0 = Y\n" + Id('B') + ".Other.ActiveCfg = X\nshort\n";
  std::string many; // so many that they get an index
  for (int i = 0; i < 60; ++i)
    many += a + ".C" + std::to_string(i) + ".Build.0 = " + std::to_string(i) + "\n";
  many += a + ".DEBUG.Build.0 = other\n" + a + ".c40.ActiveCfg = other\n";
  for (const std::string section : {"ProjectConfiguration", "ProjectConfigurationPlatforms"})
    for (const std::string& further : {std::string(), many}) {
      const auto project =
          OpenText(Solution(Project('A'), Section(section, lines + further)))->GetProjects()->GetItem(0);
      std::string configs;
      for (int i = 0; i < project->GetConfigCount(); ++i) {
        const TVSDotNetProjectConfig config = project->GetConfigItem(i);
        configs +=
            text::ToUtf8(config.Solution) + "=" + text::ToUtf8(config.Project) + (config.Active ? "* " : " ");
      }
      EXPECT_THAT(configs, testing::StartsWith("Debug=X|Win32* Release=Y* x=y=1 x=y=2* Test=Z ")) << section;
      EXPECT_EQ(project->GetConfigCount(), further.empty() ? 5 : 65) << section;
      std::u16string found;
      for (const auto* name : {u"debug", u"RELEASE", u"c59"})
        found.append(project->GetConfig(name)).append(u" ");
      EXPECT_EQ(found, further.empty() ? u"X|Win32 Y  " : u"X|Win32 Y 59 ");
      EXPECT_EQ(project->IsActiveConfig(u"C40"), !further.empty()) << section;
    }
}

// "AB" for "A needs B".
std::string OldNeeds(const std::vector<std::string>& pairs) {
  std::string lines;
  for (const std::string& pair : pairs)
    lines += "\t\t" + Id(pair[0]) + ".0 = " + Id(pair[1]) + "\n";
  return Section("ProjectDependencies", lines);
}

TEST_F(OpenedSolution, IsInOrderOfTheDependenciesOfItsGlobalSectionUnlessTheyCloseACircle) {
  const std::string three = Project('A') + Project('B') + Project('C');
  const std::string bFirst = Project('A', Needs("B")) + Project('B') + Project('C');
  const std::tuple<const char*, std::string, Strings> cases[] = {
      {"alone", Solution(three, OldNeeds({"AB", "BC"})), {"C", "B", "A"}},
      {"beside those of the blocks", Solution(bFirst, OldNeeds({"BC"})), {"C", "B", "A"}},
      {"of unknown projects", Solution(three, OldNeeds({"XA", "AX"})), {"A", "B", "C"}},
      {"a pair keeps the order of the blocks", Solution(bFirst, OldNeeds({"AC", "CA"})), {"B", "A", "C"}},
      {"so does a pair of both kinds", Solution(bFirst, OldNeeds({"BA", "AC"})), {"B", "A", "C"}},
      {"and a longer circle", Solution(bFirst, OldNeeds({"BC", "CA"})), {"B", "A", "C"}},
      {"oneself is no circle", Solution(three, OldNeeds({"AA", "AB"})), {"B", "A", "C"}},
      {"of two with one identifier the first has them",
       Solution(Project('A') + Project('B') + Project('A'), OldNeeds({"AB"})),
       {"B", "A", "A"}},
  };
  for (const auto& [what, text, expected] : cases)
    EXPECT_EQ(NamesOf(OpenText(text)->GetProjects()), expected) << what;
}

TEST_F(OpenedSolution, RefusesCirclesWhereSomebodyOnlyLooks) {
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"none", Project('A', Needs("BC")) + Project('B', Needs("C")) + Project('C', Needs("C")), "C B A"},
      {"a pair", Project('A', Needs("B")) + Project('B', Needs("A")), "A needs B, B needs A"},
      {"three, and one that leads to them",
       Project('A', Needs("B")) + Project('B', Needs("C")) + Project('C', Needs("D")) +
           Project('D', Needs("B")),
       "B needs C, C needs D, D needs B"},
      {"two circles",
       Project('A', Needs("B")) + Project('B', Needs("A")) + Project('C', Needs("D")) +
           Project('D', Needs("CA")),
       "A needs B, B needs A; C needs D, D needs C"},
  };
  for (const auto& [what, projects, expected] : cases) {
    Write("a.sln", Solution(projects));
    std::string seen;
    seen += FailureOf([&] {
      for (const std::string& name : NamesOf(LookAtSolution(Path("a.sln"), true)->GetProjects()))
        seen += (seen.empty() ? "" : " ") + name;
    });
    EXPECT_THAT(seen, testing::EndsWith(expected)) << what;
  }
}

TEST_F(OpenedSolution, AddsTheDependenciesOfTheGlobalSection) {
  const auto solution = OpenText(Solution(
      Project('A') + Project('B', "", "b.csproj"),
      Section("ProjectDependencies", "\t\t" + Id('A') + ".0 = " + Id('B') + "\n\t\t" + Id('A') + "\n")));
  const auto needs = solution->GetProjects()->GetItem(1)->GetDependancies();
  EXPECT_EQ(Lines(needs->GetList()), Strings{Id('B')});
  EXPECT_TRUE(needs->Contains(text::ToLower(needs->GetItem(0))));
  const auto first = solution->GetProjects()->GetItemInFileOrder(0);
  EXPECT_EQ(first, solution->GetProjects()->FindByID(text::FromAscii(Id('A'))));
  EXPECT_EQ(first, solution->GetProjects()->FindByFileName(u"a.csproj"));
  EXPECT_EQ(solution->GetProjects()->FindByFileName(u"A.csproj"), nullptr) << "as it is written";
  EXPECT_EQ(text::ToUtf8(first->GetProjectTypeID()), Id('F'));
  EXPECT_EQ(std::pair(solution->GetFileName(), solution->GetVisualStudioVersion()),
            std::pair(Path("a.sln"), TVSDotNetVersion::vs2010));
}

TEST_F(OpenedSolution, IsRefusedWithTheReasonAndTheLine) {
  const std::string type = "Project(\"" + Id('F') + "\")";
  const std::tuple<const char*, std::string, std::string> cases[] = {
      {"empty", "", "List index out of bounds (0) @ 1"},
      {"a line of blanks first", " \n" + Header, "Invalid Visual Studio Solution Header :   @ 1"},
      {"another file", "\nMZ\x90\n", "Invalid Visual Studio Solution Header : MZ\xC2\x90 @ 2"},
      {"no Global", "\n" + Header + "x\n", "List index out of bounds (2) @ 4"},
      {"ends in a dependency section", Header + Project('A', "ProjectSection(ProjectDependencies)\n"),
       "List index out of bounds (5) @ 6"},
      {"no EndGlobal", Header + "Global\n\tEndGlobalSection\n", "List index out of bounds (3) @ 4"},
      {"no end of a project section", Header + "Global\nGlobalSection(ProjectConfiguration)\n",
       "List index out of bounds (3) @ 4"},
      {"nor behind lines that nobody reads",
       "\n\n" + Header + "Global\nGlobalSection(ProjectConfiguration)\na = b\n\n c\n",
       "List index out of bounds (6) @ 9"},
      {"two items", Header + type + " = \"a\", \"b\"\n", "Error parsing project string @ 2"},
  };
  for (const auto& [what, text, expected] : cases)
    EXPECT_EQ(RefusalOf(text), expected) << what;
}

TEST_F(OpenedSolution, NeedsAReadableFileAndStopsWhenAsked) {
  EXPECT_THAT(FailureOf([&] { Open("missing.sln"); }), testing::HasSubstr("missing.sln"));
  Write("a.sln", Solution(""));
  TKxEvent stop;
  const auto open = [&] { OpenSolution(Path("a.sln"), true, &stop); };
  stop.Raise();
  EXPECT_EQ(FailureOf(open), "Action Terminated by User.");

  // Between two of its projects, each of which takes its time; the solution itself was read in one piece.
  Write("a.vcxproj", "<Project>" + std::string(1'000'000, '\n') + "</Project>");
  std::string projects;
  for (int i = 0; i < 800; ++i)
    projects += Project('A', "", "a.vcxproj");
  Write("a.sln", Solution(projects));
  stop.Clear();
  std::thread user([&stop] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    stop.Raise();
  });
  EXPECT_EQ(FailureOf(open), "Action Terminated by User.");
  user.join();
}

} // namespace

} // namespace kx::tests
