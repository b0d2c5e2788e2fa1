"""The commands that only look, and what is said to those who use one wrongly."""
import json
import pathlib
import signal
import unittest

import e2e

ID = "{{{0}0000000-0000-0000-0000-000000000000}}".format
HEADER, END = "Microsoft Visual Studio Solution File, Format Version 8.00\n", "Global\nEndGlobal\n"


def project(name, needs="", path=None):
    section = "".join(f"\t\t{ID(need)} = {ID(need)}\n" for need in needs)
    return (f'Project("{ID("F")}") = "{name}", "{path or name + ".csproj"}", "{ID(name)}"\n'
            f"\tProjectSection(ProjectDependencies) = postProject\n{section}\tEndProjectSection\nEndProject\n")


class CommandsTest(e2e.EndToEndTest):
    def check_table(self, rows, code=2):
        for arguments, said in rows:
            with self.subTest(arguments):
                self.assertIn(said, self.host(*arguments.split(), code=code))

    def test_the_editor_says_its_address_and_gives_the_browser_a_page_that_only_the_user_reads(self):
        asked = self.folder / "asked"
        opener = f'echo "$1" > {asked}.new; /bin/mv {asked}.new {asked}'
        for browser, said in (None, "No browser could be started"), (opener, "The browser opens"):
            with self.subTest(browser):
                if browser:
                    self.write_tool(browser, name="browsers/xdg-open")
                editor = self.start_host("edit", "new.kxproj", environment={"PATH": str(self.folder / "browsers")})
                self.assertIn(said, editor.stdout.readline())
                address = [editor.stdout.readline() for _ in range(2)][-1].strip()
                self.assertRegex(address, r"^http://127\.0\.0\.1:\d+/\w+/\?token=\w+$")
                if browser:
                    self.assertTrue(e2e.wait_until(asked.exists))
                    page = pathlib.Path(self.read("asked").strip())
                    self.assertIn(f'content="0;url={address}"', page.read_text(encoding="utf-8"))
                    self.assertEqual([path.stat().st_mode & 0o777 for path in (page, page.parent)], [0o600, 0o700])
                editor.send_signal(signal.SIGINT)
                self.assertEqual(editor.wait(60), 0)
        self.assertFalse(page.parent.exists())

    def test_wrong_use_says_what_is_right(self):
        self.assertRegex(self.host("--help"), "Exit codes: 0 .*130 stopped")
        self.write("App.sln", HEADER + END)
        self.check_table([("run", 'holds none. "kxhost init SOLUTION" writes one.')])
        for name in "p.kxproj", "q.kxproj":
            self.write(name, "<BuildProject><Actions/></BuildProject>")
        self.check_table([
            ("run", "holds p.kxproj and q.kxproj."),
            ("run p.kxproj --verbosity loud", 'takes quiet, minimal, normal, detailed or diagnostic, not "loud".'),
            ("run p.kxproj --ci=github2", 'Did you mean "github"?'),
            ("run p.kxproj --st A=1", 'Unknown option "--st". Did you mean "--set"?\nRun "kxhost run --help" for'),
            ("run p.kxproj --log", "--log needs FILE.jsonl."),
            ("run p.kxproj --log -", '--log takes the name of a file, not "-".'),
            ("run p.kxproj --options=--dry-run", '--options takes the name of a file, not "--dry-run".'),
            ("run p.kxproj --log a --log b", "--log is given more than once."),
            ("--set A=1 run p.kxproj",
             "--set is an option of run, plan, edit, do, validate and check; it stands behind that word."),
            ("options ste A.B 1", 'Unexpected argument "ste". Did you mean "set"?'),
            ("run p.kxproj x", 'No action outside loops and no group is named "x".'),
            ("validate p.kxproj --report x.html", "--report is an option of run, do and report; validate does not use it."),
            ("inspect App.sln --lines", "--lines is for build logs"),
            ("inspect App.sln --tool msbuild --encoding klingon", "Unknown encoding klingon: say utf-8"),
            ("inspect App.sln --tool msbuild --all-projects", "--all-projects is for solutions"),
            ("graph App.sln --format dott", 'takes dot, mermaid, svg or json, not "dott". Did you mean "dot"?'),
            ("rum p.kxproj", 'Unknown subcommand "rum". Did you mean "run"?\nRun "kxhost --help" for'),
            ("options set", 'KEY is required.\nRun "kxhost options set --help" for'),
            ("run p.kxproj --option VisualStudioDotNet.MSDevPat2008=x", 'Did you mean "VisualStudioDotNet.MSDevPath2008"?'),
            ("actions DEVEN", "Unknown action type"),
            ("do DEVENV Solution", "Properties are given as Property=Value, not Solution."),
            ("do DEVENV Solution=a Solution=b", "Solution is given twice."),
            ("do VERSIONINFO --property-set A=1", "Values of property sets are given as SET.NAME=VALUE, not A=1."),
            ("do VERSIONINFO --property-set A.B", "not A.B."),
            ("run p.kxproj --rule x", "expected NAME=error, NAME=warning or NAME=off."),
            ("check App.sln --rule x", "expected NAME=error, NAME=warning, NAME=note or NAME=off."),
            ("run p.kxproj --option x", "expected SECTION.KEY=VALUE."),
            ("check App.sln --fail-on x", "A gate is never, error, warning or new-warning, not x."),
            ("check App.sln --max-warnings x", "--max-warnings: The most warnings are a number from 0, not x."),
            ("run p.kxproj --baseline no/x.txt --write-baseline", "--baseline: there is no folder "),
            ("check App.sln --fail-on new-warning", "compares with the file that --baseline names"),
            ("plan p.kxproj --secret A", "Name the variable in which each machine has it: A=VARIABLE."),
            ("inspect App.sln --tool devenv --lines --json", "give one of them."),
            ("inspect App.sln --tool devenv --vs vs1", 'not "vs1".'),
        ])

    def test_a_project_is_begun_for_a_solution_and_never_replaced(self):
        section = "\tGlobalSection(SolutionConfigurationPlatforms) = preSolution\n{}\tEndGlobalSection\n"
        names = "".join(f"\t\t{name} = {name}\n" for name in ("Debug|Any CPU", "Release|Any CPU"))
        self.write("A--B.sln",
                   f'{HEADER.replace("8.00", "11.00")}{project("A")}Global\n{section.format(names)}EndGlobal\n')
        self.assertIn("kxhost validate A--B.kxproj", self.host("init", "A--B.sln"))
        for line in ('>Release|Any CPU</Variable>', '<Solution>A--B.sln</Solution>', 'Name="vs2010">4<'):
            self.assertIn(line, self.read("A--B.kxproj"))
        self.host("validate")
        self.assertIn("is there already", self.host("init", "A--B.sln", code=1))
        for shell in "bash", "zsh", "fish", "powershell":
            self.assertRegex(self.host("completion", shell), f"(?m)kxhost.*$(?s:.*) completion {shell} -- ")
        for shell, line, words in [
                ("bash", 'do DEVENV Solution=A--B.sln SolutionConfiguration="Rel', ['Release|Any CPU" ']),
                ("bash", "do DEVENV Solution=A--B.sln SolutionConfiguration=deb", ["Debug\\|Any\\ CPU "]),
                ("zsh", "do DEVENV Solution=A--B.sln SelectedProjects=", ["SelectedProjects=A"]),
                ("powershell", "check A--B.sln --configuration Rel", ["'Release|Any CPU'"]),
                ("fish", "run --verbosity=d", ["--verbosity=detailed", "--verbosity=diagnostic"]),
                ("fish", "run A--B.kxproj ", ["Build A--B"]),
                ("bash", "plan --format dot Bui", ["Build\\ A--B ", ":files"]),
                ("fish", "graph --log", []),
                ("bash", "opt", ["options "]),
                ("bash", "options s", ["set "]),
                ("bash", "options get visualstudiodotnet.defvs", ["VisualStudioDotNet.DefVSVersion "]),
                ("fish", "options set VisualStudioDotNet.MSDevPath ", [":files"]),
                ("bash", "run --option VisualStudioDotNet.StandaloneM", ["VisualStudioDotNet.StandaloneMSTestDir="]),
                ("bash", "run --rule errors", ["errors-counted="]),
                ("bash", "check --rule solution-h", ["solution-header="]),
                ("bash", "explain solution-h", ["solution-header "]),
                ("bash", "inspect a.log --tool m", ["msbuild "]),
                ("bash", "inspect a.log --vs 8", []),
                ("bash", "inspect a.log --vs=vs200", ["vs2002 ", "vs2003 ", "vs2005 ", "vs2008 "]),
                ("bash", "do DEVE", ["DEVENV "]),
                ("bash", "completion ", ["bash ", "zsh ", "fish ", "powershell "]),
                ("bash", "history ti", ["times ", ":files"]),
                ("bash", "do DEVENV UseMSB", ["UseMSBuild="]),
                ("bash", "do DEVENV UseMSBuild=", ["True ", "False "]),
                ("bash", "do DEVENV VStudioVersion=vs201", ["vs2010 "]),
                ("bash", "do DEVENV Solution=A--B.sln SolutionConfiguration=Debug\\|Any\\ C", ["Debug\\|Any\\ CPU "]),
                ("powershell", "check A--B.sln --configuration Debug`|A", ["'Debug|Any CPU'"]),
                ("fish", "run --log ", [":files"])]:
            with self.subTest(line):
                answer = self.host("completion", shell, "--", "kxhost " + line)
                self.assertEqual([found.split("\t")[0] for found in answer.splitlines()], words)

    def test_a_project_that_is_begun_suits_what_the_solution_holds(self):
        kind, name = "{3ac096d0-a1c2-e12c-1390-a8335801fdab}", "A.Tests"
        tests = f"<ProjectTypeGuids>{kind}</ProjectTypeGuids><AssemblyName>{name}</AssemblyName>"
        output = "<PropertyGroup Condition=\" '$(Configuration)' == '%s' \"><OutputPath>%s</OutputPath></PropertyGroup>"
        outputs = output % ("Debug", "d") + output % ("Release", "..\\out\\")
        usual = ">True</UseMSBuild>"
        rows = [
            # projects and what they hold, configurations, version; what the build project holds, and what it does not
            (["a.csproj"], ["Debug|x86", "Final|x86"], "11.00", ['"Configuration">Debug|x86<', usual], ["MSTEST", "..."]),
            (["a.csproj"], [f"C{i}" for i in range(13)], "11.00", [">C0<", "The solution has C0, C1,", ", C11, ..."], ["C12"]),
            (["a.csproj"], ["A|x", "Release|Mixed Platforms", "Release|Any CPU"], "9.00",
             [">Release|Any CPU<", '"vs2005">2<'], []),
            (["a.csproj"], ["Debug"], "8.00", ["Visual Studio itself (devenv.com)", ">False</UseMSBuild>", '"vs2003">1<'], []),
            (["a.vcproj"], ["Debug"], "10.00", ["a is a C++ project of before 2010", ">False</UseMSBuild>"], []),
            (["s\\t.csproj"], ["Release|Any CPU"], "11.00",
             [">%ProjectDir%/out/A.Tests.dll<", "where Release leaves", usual], ["Debug"]),
            (["s\\t.csproj"], ["It's"], "11.00", ["/s/bin/It's/A.Tests.dll<"], ["out"]),
        ]
        self.write("s/t.csproj", f"<Project><PropertyGroup>{tests}</PropertyGroup>{outputs}</Project>")
        for places, configurations, version, held, missing in rows:
            one = e2e.solution(*places, version=version)
            self.write("A.sln", one.replace("\t\tDebug = Debug\n", "".join(f"\t\t{name} = {name}\n" for name in configurations)))
            self.host("init", "A.sln", "p.kxproj")
            text = self.read("p.kxproj")
            for part in held:
                self.assertIn(part, text)
            for part in missing:
                self.assertNotIn(part, text)
            (self.folder / "p.kxproj").unlink()

    def test_a_file_of_another_kind_is_named_with_the_command_that_takes_it(self):
        self.write("App.sln", HEADER + END)
        self.write("renamed.txt", "\n" + HEADER + END)
        self.write("run.xml", '<TestRun xmlns="http://microsoft.com/schemas/VisualStudio/TeamTest/2010"/>')
        for name in ("App.rc2", "App.vcxproj", "App.slnx", "App.res"):
            self.write(name, "x")
        self.write("p.kxproj", "<BuildProject/>")
        self.write("torn.trx", "<TestRun>")
        self.write("p.xml", "<BuildProject><Actions/></BuildProject>")
        self.write("notes.txt", "to do\n")
        self.check_table([
            ("run App.sln", 'App.sln is a solution. "kxhost inspect App.sln" shows it'),
            ("run renamed.txt", "renamed.txt is a solution."),
            ("edit new.SLN --no-browser", "There is no file new.SLN. By its name it would be a solution."),
            ("edit . --no-browser", ". is a folder; a build project is a file."),
            ("validate App.rc2", "App.rc2 is a resource script."),
            ("validate App.vcxproj", "App.vcxproj is a project of Visual Studio."),
            ("run App.slnx", "App.slnx is a solution in XML, of a newer Visual Studio."),
            ("run App.res", "App.res is a compiled resource."),
            ("run run.xml", "run.xml is a file of test results."),
            ("run notes.txt", "notes.txt is no build project, which is XML"),
            ("do App.sln", "App.sln is a solution."),
            ("p.kxproj", 'p.kxproj is a build project. "kxhost run p.kxproj" runs it'),
            ("check notes.txt", "notes.txt is nothing of that."),
            ("check App.res", "App.res is a compiled resource."),
        ])
        self.check_table([("inspect p.kxproj", "p.kxproj is a build project."),
                          ("inspect App.csproj", "There is no file App.csproj."),
                          ("inspect nowhere", "There is no file nowhere."),
                          ("inspect torn.trx", "No results were read: "),
                          ("inspect .", ". is a folder")], code=1)
        self.write("App.rc2", "1 VERSIONINFO\nFILEVERSION 3,1,4,0\nBEGIN\nEND\n")
        self.check_table([("inspect App.rc2", "majorVersion    3\n"), ("inspect renamed.txt", "Format          vs2003"),
                          ("inspect run.xml", "Passed   0")], code=0)
        self.write("two.xml", '<BuildProject><Actions><Action Type="MSTEST"/><Action Type="MSTEST"/></Actions></BuildProject>')
        self.check_table([("validate p.xml", "The project holds no actions."), ("validate two.xml", "(action 2): ")], code=3)

    def test_options_are_listed_checked_and_unset(self):
        folder = self.folder / "framework"
        folder.mkdir()
        store = ("options", "--options", "new.ini")
        for arguments, code, said in (
                ("set VisualStudioDotNet.MSDevPath2008 x", 2, "takes the full path of a folder"),
                ("set VisualStudioDotNet.MSDevPath2008 C:\\VS9", 0, "Warning : There is no folder C:\\VS9"),
                ("set visualstudiodotnet.defvsversion VS2010", 0, ""),
                (f"set DotNetFramework.v4.0 {folder}", 0, ""),
                ("get VisualStudioDotNet.DefVSVersion", 0, "vs2010\n"),
                ("unset VisualStudioDotNet.MSDevPath2008", 0, ""),
                ("unset VisualStudioDotNet.MSDevPath2008", 1, "is not set"),
                ("get VisualStudioDotNet", 2, "SECTION.KEY"),
                ("get Old.Key", 2, 'Unknown option "Old.Key"')):
            output = self.host(*store, *arguments.split(), code=code)
            self.assertEqual(bool(said), bool(output), (arguments, output))
            self.assertIn(said, output)
        stored = self.folder / "new.ini"
        self.assertEqual(stored.read_text(), f"[VisualStudioDotNet]\nDefVSVersion=4\n\n[DotNetFramework]\nv4.0={folder}\n")
        stored.write_text(stored.read_text() + "[Old]\nKey=1\n")
        self.assertEqual(self.host(*store, "get", "Old.Key"), "1\n")
        self.assertEqual(self.host(*store), self.host(*store, "list"))
        shown = self.host(*store, "list", "--option", "VisualStudioDotNet.DefVSVersion=vs2003")
        for line in ("VisualStudioDotNet.DefVSVersion=vs2003\n", "WebSites.ApplicationHostConfig=\n", "Old.Key=1\n",
                     f"DotNetFramework.v4.0={folder}\n", "nothing reads the option Old.Key"):
            self.assertIn(line, shown)

    def test_a_solution_is_shown_with_what_it_lacks(self):
        for name in "ABC":
            self.write(f"{name}.csproj", "<Project/>")
        self.write("App.sln", HEADER + project("A", "BBDE") + project("B") + project("C") + project("D") + "Global\n"
                   f"\tGlobalSection(ProjectDependencies) = postSolution\n\t\t{ID('B')}.0 = {ID('C')}\n"
                   f"\t\t{ID('C')}.0 = {ID('A')}\n\tEndGlobalSection\nEndGlobal\n")
        self.assertEqual(self.host("inspect", "App.sln"), f"""Format          vs2003
Configurations  none
Projects in build order  3
  B  B.csproj  {ID('B')}
      needs C
  A  A.csproj  {ID('A')}
      needs B
      needs D (not on disk)
      needs {ID('E')} (no project of this solution)
  C  C.csproj  {ID('C')}
      needs A
Projects not on disk     1  (left out of every build)
  D  D.csproj  {ID('D')}
Circle, passed over by the order: A needs B, B needs C, C needs A
""")
        known = json.loads(self.host("inspect", "App.sln", "--json", "--all-projects"))
        self.assertEqual(known["projectsNotFound"], [{"name": "D", "fileName": "D.csproj", "id": ID("D")}])
        self.write("App.sln", HEADER + project("A") + project("A", path="Gone.csproj") + END)
        self.assertIn(f"  A  A.csproj  {ID('A')}\n  A  Gone.csproj  {ID('A')}  (not on disk)\n",
                      self.host("inspect", "App.sln", "--all-projects"))
        self.write("App.sln", HEADER + project("A", "B") + project("B", "A") + END)
        self.assertEqual(self.host("inspect", "App.sln", code=1),
                         "Solution has invalid circular dependancies between : A needs B, B needs A\n")

    def test_a_solution_is_drawn_with_its_circles_or_around_a_project(self):
        folder = project("F").replace(ID("F"), "{2150E333-8FDC-42A3-9474-1A3956D46DE8}", 1)
        self.write("A.csproj", "<Project/>")
        self.write("App.sln", HEADER + folder + project("A", "bBE") + project("B") + project("C", "A") + project("D") + END)
        known = json.loads(self.host("graph", "App.sln", "--format", "json"))
        self.assertEqual([(each["order"], each["name"], each["exists"], each["needs"]) for each in known["projects"]],
                         [(1, "B", False, []), (2, "A", True, [ID("B"), ID("E")]), (3, "C", False, [ID("A")]),
                          (4, "D", False, [])])
        self.assertEqual((known["unknown"], known["circles"]), ([ID("E")], []))
        for name in "c", "C.CSPROJ", ID("c"):
            self.assertEqual(self.host("graph", "App.sln", "--around", name).count("[label="), 4, name)
        self.check_table([("graph App.sln --around A.csprj", 'has no project "A.csprj". Did you mean "A.csproj"?'),
                          ("graph A.csproj", "A.csproj is a project of Visual Studio."), ("graph .", ". is a folder"),
                          ("graph no.sln", "There is no file no.sln.")], code=1)
        self.write("App.sln", HEADER + project("A", "B") + project("B", "C") + project("C", "A") + END)
        drawn = json.loads(self.host("graph", "App.sln", "--format", "json"))
        self.assertEqual(drawn["circles"], [[{"id": ID(id), "line": line} for id, line in (("A", 4), ("B", 9), ("C", 14))]])
        self.assertEqual([each["order"] for each in drawn["projects"]], [None] * 3)

    def test_a_folder_is_checked_and_every_rule_is_explained(self):
        self.write("a b/App.sln", HEADER + project("A", "B") + project("B", "A") + END)
        self.write("a b/B.csproj", "<Project/>")
        place = str(pathlib.Path("a b", "App.sln"))
        said = self.host("check", ".", code=1)
        self.assertIn(f"{place}:4: error: Projects need each other: A needs B (line 4), B needs A (line 9) [solution-cycle]\n"
                      f"    {place}:4: A needs B\n    {place}:9: B needs A\n", said)
        self.assertTrue(said.endswith("\n2 errors, 0 warnings, 0 notes in 2 files.\n"), said)
        levels = "--rule", "project-missing=off", "--rule"
        found = json.loads(self.host("check", "a b", "--json", *levels, "solution-cycle=note"))
        self.assertEqual([(each["rule"], each["severity"], each["line"], len(each["steps"])) for each in found["findings"]],
                         [("solution-cycle", "note", 4, 2)])
        self.assertEqual(self.host("check", "a b", *levels, "solution-cycle=off"), "No problems found in 2 files.\n")
        (self.folder / "empty").mkdir()
        self.assertIn("There is no solution, project or build project in", self.host("check", "empty", code=1))
        marked = self.host("check", ".", "--ci", "github", code=1)
        self.assertRegex(marked, r"\n::error file=.*App.sln,line=4,title=solution-cycle::Projects need")
        self.check_table([("check . --rule path-cas=off", 'There is no rule "path-cas". Did you mean "path-case"?'),
                          ("explain path-cas", 'Did you mean "path-case"?')])
        self.check_table([("check no.sln", "There is no file or folder no.sln.")], code=1)
        self.assertIn("For example:", self.host("explain", "Path-Case"))
        # Made by: kxhost explain --markdown > docs/rules.md
        page = (e2e.ROOT / "docs/rules.md").read_text(encoding="utf-8")
        self.assertEqual(self.host("explain", "--markdown"), page)
        self.assertEqual(page.count("\n## "), len(self.host("explain").splitlines()))

    def test_a_build_project_is_checked_line_by_line(self):
        self.write("App.sln", HEADER + project("A") + "Global\n\tGlobalSection(SolutionConfiguration) = preSolution\n"
                   "\t\tDebug = Debug\n\t\tRelease = Release\n\tEndGlobalSection\nEndGlobal\n")
        self.write("A.csproj", "<Project/>")
        self.write("all.kxproj", "<BuildProject>\n<Variables><Variable Name='Used'>App</Variable>\n"
                   "<Variable Name='DbPassword'>x</Variable></Variables><Actions>\n"
                   "<Action Type='DEVENV'><Solution>%Used%.sln</Solution><VStudioVersion>vs2003</VStudioVersion>\n"
                   "<SelectedProjects><Line>A</Line></SelectedProjects></Action></Actions></BuildProject>\n")
        self.write("broken.kxproj", "<BuildProject>\n<Acts/></BuildProject>")
        found = json.loads(self.host("check", "all.kxproj", "broken.kxproj", "--json", "--sarif", "found.sarif", code=1))
        rules = [(each["line"], each["rule"]) for each in found["findings"]]
        for expected in (3, "variable-unused"), (3, "secret-clear"), (5, "setting-ineffective"), (2, "build-project"):
            self.assertIn(expected, rules)
        results = json.loads(self.read("found.sarif"))["runs"][0]["results"]
        self.assertEqual([each["ruleId"] for each in results], [rule for _, rule in rules])
        baseline = "check", "all.kxproj", "broken.kxproj", "--baseline", "known.txt"
        self.assertIn("--write-baseline writes it", self.host(*baseline))
        self.host(*baseline, "--write-baseline")
        self.assertIn(" 0 new, ", self.host(*baseline))
        self.write("broken.kxproj", "<BuildProject>\n<New/></BuildProject>")
        self.assertIn(" 1 new, ", self.host(*baseline, code=4))
        self.host(*baseline[:3], "--fail-on", "never")
        levels = "--rule", "project-unmapped=off"
        self.assertIn("App.sln: Debug, Release\n", self.host("check", "App.sln", "--configuration", "e", *levels))
        self.assertIn('Did you mean "Release"?',
                      self.host("check", "App.sln", "--configuration", "Relaese", *levels, code=1))

    def test_what_is_inspected_is_shown_to_people_and_programs(self):
        folder, own = self.folder / "Nat", "{11111111-1111-1111-1111-000000000000}"
        self.write("Nat/Nat.vcxproj", '<Project xmlns="http://schemas.microsoft.com/developer/msbuild/2003"><ItemGroup>'
                   '<ResourceCompile Include="a.rc"/><ResourceCompile Include="v.rc"/></ItemGroup></Project>')
        self.write("Nat/a.rc", "x")
        self.write("Nat/v.rc", "#include <winver.h>\n1 VERSIONINFO\nFILEVERSION 3,1,4,2\nFILEFLAGSMASK 0x3fL\n"
                   "FILEFLAGS 0x1bL\nFILETYPE 0x2L\nBEGIN\nBLOCK \"StringFileInfo\"\nBEGIN\nBLOCK \"040c04e2\"\nBEGIN\n"
                   'VALUE "CompanyName", "We\\0"\nVALUE "FileVersion", "3.1"\nEND\nEND\nBLOCK "VarFileInfo"\nBEGIN\n'
                   'VALUE "Translation", 0x40c, 1250\nEND\nEND\n')
        self.write("App.sln", e2e.solution("Nat\\Nat.vcxproj", configuration="Debug|Win32").replace(
            "EndGlobal\n", "\tGlobalSection(ProjectConfigurationPlatforms) = postSolution\n"
            f"\t\t{own}.Debug|Win32.ActiveCfg = Debug|x64\n\tEndGlobalSection\nEndGlobal\n"))
        self.write("build.log", 'Project "/App.csproj" (default target(s)):\na.cs(3,7): error CS1: x\nb.cs(1): warning CS2: y\n'
                   'Done building project "/App.csproj".-- FAILED\n    1 Warning(s)\n    1 Error(s)\n')
        nat = {"name": "Nat", "fileName": "Nat\\Nat.vcxproj", "id": own, "typeId": e2e.CPP, "isVCProject": True,
               "dependencies": [], "resourceScripts": [f"{folder}/a.rc", f"{folder}/v.rc"], "versionScript": f"{folder}/v.rc",
               "configurations": [{"solution": "Debug|Win32", "project": "Debug|x64", "active": True}]}
        rows = (
            ("App.sln", "Format          vs2010\nConfigurations  1\n  Debug|Win32\nProjects in build order  1\n"
             f"  Nat  Nat\\Nat.vcxproj  {own}\n      script {folder}/a.rc\n      script {folder}/v.rc  (version)\n",
             {"version": "vs2010", "configurations": ["Debug|Win32"], "projects": [nat], "projectsNotFound": [], "circles": []}),
            ("Nat/v.rc", "majorVersion    3\nminorVersion    1\nreleaseVersion  4\nbuildVersion    2\ndebug           true\n"
             "preRelease      true\nspecial         false\nprivate         true\ndll             false\n"
             "locale          1036\ncodePage        1250\n  CompanyName=We\n  FileVersion=3.1\n",
             {"majorVersion": 3, "minorVersion": 1, "releaseVersion": 4, "buildVersion": 2, "debug": True, "preRelease": True,
              "special": False, "private": True, "dll": False, "locale": 1036, "codePage": 1250,
              "strings": ["CompanyName=We", "FileVersion=3.1"]}),
            ("build.log --tool msbuild", "Errors    1\nWarnings  1\nLines     4 plain, 0 success, 1 warning, 1 error\n"
             "Project   App: failed, 1 error, 1 warning\n\na.cs:3:7: error CS1: x\nb.cs:1: warning CS2: y\n",
             {"errors": 1, "warnings": 1, "failed": False, "statuses": [4, 0, 1, 1],
              "metrics": [["Warnings", 1], ["Errors", 1]], "hasSummary": True, "hasOtherSummary": False,
              "projects": [{"project": "App", "configuration": "", "succeeded": False, "result": "failed", "errors": 1,
                            "warnings": 1}], "findings": ["CS1", "CS2"], "moreFindings": 0}),
        )
        for arguments, shown, known in rows:
            self.assertEqual(self.host("inspect", *arguments.split()), shown)
            read = json.loads(self.host("inspect", *arguments.split(), "--json"))
            if "findings" in read:
                read["findings"] = [finding["rule"] for finding in read["findings"]]
            self.assertEqual(read, known)
        many = self.host("inspect", *["App.sln", "Nat/v.rc"] * 40, "nowhere.sln", "App.sln", "--json", code=1).splitlines()
        self.assertEqual([json.loads(line)["file"] for line in many], ["App.sln", "Nat/v.rc"] * 40 + ["nowhere.sln", "App.sln"])
        self.assertEqual(self.host("inspect", "build.log", "--tool", "msbuild", "--lines"),
                         '0\tProject "/App.csproj" (default target(s)):\n3\ta.cs(3,7): error CS1: x\n'
                         '2\tb.cs(1): warning CS2: y\n0\tDone building project "/App.csproj".-- FAILED\n'
                         "0\t    1 Warning(s)\n0\t    1 Error(s)\n")

    def test_the_properties_of_an_action_stand_in_groups(self):
        listed = self.host("actions")
        actions = json.loads(self.host("actions", "--json"))
        self.assertEqual("".join(f"{each['type']}  {each['name']}  ({each['category']})\n" for each in actions), listed)
        self.assertEqual([action["type"] for action in actions], ["DEVENV", "MSTEST", "VERSIONINFO", "SOLUTIONITERATOR"])
        for action in actions:
            self.assertEqual(list(action), ["type", "name", "category", "keywords", "image", "groups", "properties"])
            for row in action["properties"]:
                self.assertEqual(row.keys() - {"values", "labels"},
                                 {"name", "kind", "default", "stored", "readOnly", "hidden", "group", "help"})
        shown = self.host("actions", "DEVENV")
        for piece in "\nBuild: Warnings\n  OverrideWarnings: Boolean", "\n      fx35: .NET Framework 3.5\n", "\nOn no page of":
            self.assertIn(piece, shown)
        properties = {row["name"]: row for row in json.loads(self.host("actions", "DEVENV", "--json"))["properties"]}
        for name in properties:
            self.assertEqual(shown.count(f"\n  {name}: "), 1, f"{name} stands once in the groups")
        self.assertEqual(properties["BuildAction"]["labels"], ["Build", "Rebuild", "Clean", "Deploy"])

    def test_a_log_says_where_its_counts_come_from(self):
        rows = (("msbuild", "b = warning = c\n    2 Warning(s)\n    0 Error(s)\n", "Warnings  2", "are told by"),
                ("devenv", "a = warning = b\n    2 Warning(s)\n", "Warnings  0", "change --tool"),
                ("devenv", "a = warning = b\nBuild complete -- 0 errors, 1 warnings\n", "Warnings  1", ""))
        for tool, log, counts, reason in rows:
            self.write("build.log", log)
            shown = self.host("inspect", "build.log", "--tool", tool)
            self.assertIn(counts, shown)
            self.assertIn(reason, shown)
            self.assertEqual(shown.endswith(" error\n"), not reason, shown)


if __name__ == "__main__":
    unittest.main()
