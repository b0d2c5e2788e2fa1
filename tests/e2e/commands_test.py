"""The commands that only look, and what is said to those who use one wrongly."""
import json
import pathlib
import signal
import subprocess
import unittest

import e2e

ID = "{{{0}0000000-0000-0000-0000-000000000000}}".format
HEADER = "Microsoft Visual Studio Solution File, Format Version 8.00\n"


def project(name, needs="", path=None):
    section = "".join(f"\t\t{ID(need)} = {ID(need)}\n" for need in needs)
    return (f'Project("{ID("F")}") = "{name}", "{path or name + ".csproj"}", "{ID(name)}"\n'
            f"\tProjectSection(ProjectDependencies) = postProject\n{section}\tEndProjectSection\nEndProject\n")


class CommandsTest(e2e.EndToEndTest):
    def host(self, *arguments):
        run = self.run_program(e2e.BIN / "kxhost", *arguments)
        return run.returncode, run.stdout

    def check_table(self, rows, code=2):
        for arguments, said in rows:
            with self.subTest(arguments):
                status, output = self.host(*arguments.split())
                self.assertIn(said, output)
                self.assertEqual(status, code, output)

    def test_the_editor_says_its_address_whether_or_not_a_browser_starts(self):
        browsers = self.folder / "browsers"
        browsers.mkdir()
        for browser, said in ((None, "No browser could be started"), ("exit 1", "The browser opens the project.")):
            with self.subTest(browser):
                if browser:
                    self.write("browsers/xdg-open", f"#!/bin/sh\n{browser}\n", executable=True)
                with subprocess.Popen([e2e.BIN / "kxhost", "edit", self.folder / "new.kxproj"], text=True,
                                      stdout=subprocess.PIPE, env={**self.environment, "PATH": str(browsers)}) as editor:
                    self.addCleanup(e2e.kill_quietly, editor.pid)
                    self.assertIn(said, editor.stdout.readline())
                    editor.stdout.readline()
                    self.assertRegex(editor.stdout.readline(), r"^http://127\.0\.0\.1:\d+/\w+/\?token=\w+$")
                    editor.send_signal(signal.SIGINT)
                    self.assertEqual(editor.wait(60), 0)

    def test_the_browser_is_given_a_page_that_only_the_user_reads(self):
        self.write("browsers/xdg-open", '#!/bin/sh\necho "$1" > "$HOME/asked.new"\n/bin/mv "$HOME/asked.new" "$HOME/asked"\n',
                   executable=True)
        environment = {**self.environment, "PATH": str(self.folder / "browsers")}
        with subprocess.Popen([e2e.BIN / "kxhost", "edit", self.folder / "new.kxproj"], text=True,
                              stdout=subprocess.PIPE, env=environment) as editor:
            self.addCleanup(e2e.kill_quietly, editor.pid)
            address = [editor.stdout.readline() for _ in range(3)][-1].strip()
            self.assertTrue(e2e.wait_until((self.folder / "asked").exists))
            page = pathlib.Path((self.folder / "asked").read_text(encoding="utf-8").strip())
            self.assertIn(f'content="0;url={address}"', page.read_text(encoding="utf-8"))
            modes = [path.stat().st_mode & 0o777 for path in (page, page.parent)]
            self.assertEqual(modes, [0o600, 0o700])
            editor.send_signal(signal.SIGINT)
            self.assertEqual(editor.wait(60), 0)
        self.assertFalse(page.parent.exists())

    def test_wrong_use_says_what_is_right(self):
        self.write("App.sln", HEADER + "Global\nEndGlobal\n")
        self.write("p.kxproj", "<BuildProject><Actions/></BuildProject>")
        self.check_table([
            ("run p.kxproj --verbosity loud", 'takes quiet, minimal, normal, detailed or diagnostic, not "loud".'),
            ("run p.kxproj --color sometimes", 'takes auto, always or never, not "sometimes".'),
            ("run p.kxproj --ci=github2", 'Did you mean "github"?'),
            ("run p.kxproj --st A=1", 'Unknown option "--st". Did you mean "--set"?\nRun "kxhost run --help" for'),
            ("run p.kxproj --log", "--log needs FILE.jsonl."),
            ("run p.kxproj --log -", '--log takes the name of a file, not "-".'),
            ("run p.kxproj --log --dry-run", '--log takes the name of a file, not "--dry-run".'),
            ("run p.kxproj --options=--dry-run", '--options takes the name of a file, not "--dry-run".'),
            ("run p.kxproj --log a --log b", "--log is given more than once."),
            ("--set A=1 run p.kxproj", "--set is an option of run, edit, do and validate; it stands behind that word."),
            ("options ste A.B 1", 'Unexpected argument "ste". Did you mean "set"?'),
            ("run p.kxproj x", 'Unexpected argument "x".'),
            ("validate p.kxproj --report x.html", "--report is an option of run and do; validate does not use it."),
            ("--dry-run inspect App.sln", "--dry-run is an option of run and do; inspect does not use it."),
            ("inspect App.sln --set A=1", "--set is an option of"),
            ("inspect App.sln --lines", "--lines is for build logs"),
            ("inspect App.sln --tool msbuid", 'Did you mean "msbuild"?'),
            ("inspect App.sln --tool msbuild --all-projects", "--all-projects is for solutions"),
            ("rum p.kxproj", 'Unknown subcommand "rum". Did you mean "run"?\nRun "kxhost --help" for'),
            ("options set", 'KEY is required.\nRun "kxhost options set --help" for'),
            ("run p.kxproj --option VisualStudioDotNet.MSDevPat2008=x", 'Did you mean "VisualStudioDotNet.MSDevPath2008"?'),
            ("run p.kxproj --option VisualStudioDotNet.DefVSVersion=vs2009", 'not "vs2009".'),
        ])

    def test_a_file_of_another_kind_is_named_with_the_command_that_takes_it(self):
        self.write("App.sln", HEADER + "Global\nEndGlobal\n")
        self.write("renamed.txt", "\n" + HEADER + "Global\nEndGlobal\n")
        self.write("run.xml", '<TestRun xmlns="http://microsoft.com/schemas/VisualStudio/TeamTest/2010"/>')
        for name in ("App.rc2", "App.vcxproj", "App.slnx", "App.res"):
            self.write(name, "x")
        self.write("p.kxproj", "<BuildProject/>")
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
        ])
        self.check_table([("inspect p.kxproj", "p.kxproj is a build project."),
                          ("inspect App.csproj", "There is no file App.csproj."),
                          ("inspect nowhere", "There is no file nowhere."),
                          ("inspect .", ". is a folder")], code=1)
        self.write("App.rc2", "1 VERSIONINFO\nFILEVERSION 3,1,4,0\nBEGIN\nEND\n")
        self.check_table([("inspect App.rc2", "majorVersion    3\n"), ("inspect renamed.txt", "Format          vs2003"),
                          ("inspect run.xml", "Passed   0")], code=0)
        self.check_table([("validate p.xml", "The project holds no actions.")], code=3)

    def test_help_of_a_command_lists_all_that_it_takes(self):
        for command, options in (("run", "--dry-run --report --ci --verbosity --log --junit --option --plugin --set"),
                                 ("validate", "--set --options --drive"), ("inspect", "--json --drive")):
            status, shown = self.host(command, "--help")
            self.assertEqual(status, 0, shown)
            for option in options.split():
                self.assertIn(f"  {option} ", shown, command)
            self.assertIn(f"\nExamples:\n  kxhost {command} ", shown)
            self.assertIn("\nExit codes: 0 ", shown)
        self.assertNotIn("--report", self.host("validate", "--help")[1])

    def test_options_are_listed_checked_and_unset(self):
        folder = self.folder / "framework"
        folder.mkdir()
        store = ("options", "--options", "new.ini")
        for arguments, code, said in (
                (("set", "VisualStudioDotNet.MSDevPat", "/x"), 2, 'Did you mean "VisualStudioDotNet.MSDevPath"?'),
                (("set", "VisualStudioDotNet.MSDevPath2008", "x"), 2, "takes the full path of a folder"),
                (("set", "VisualStudioDotNet.MSDevPath2008", self.write("devenv.com", "")), 2, "takes a folder"),
                (("set", "VisualStudioDotNet.MSDevPath2008", "C:\\VS9"), 0, "Warning : There is no folder C:\\VS9"),
                (("set", "visualstudiodotnet.defvsversion", "VS2010"), 0, ""),
                (("set", "VisualStudioDotNet.DefVSVersion", "6"), 2, "takes vs2002, vs2003"),
                (("set", "DotNetFramework.v4.0", folder), 0, ""),
                (("get", "VisualStudioDotNet.DefVSVersion"), 0, "vs2010\n"),
                (("unset", "VisualStudioDotNet.MSDevPath2008"), 0, ""),
                (("unset", "VisualStudioDotNet.MSDevPath2008"), 1, "is not set"),
                (("get", "VisualStudioDotNet"), 2, "SECTION.KEY"),
                (("get", "Old.Key"), 2, 'Unknown option "Old.Key"'),
                (("unset", "Nothing.x"), 2, "Unknown option")):
            status, output = self.host(*store, *arguments)
            self.assertEqual(status, code, (arguments, output))
            self.assertEqual(bool(said), bool(output), (arguments, output))
            self.assertIn(said, output)
        stored = self.folder / "new.ini"
        self.assertEqual(stored.read_text(), f"[VisualStudioDotNet]\nDefVSVersion=4\n\n[DotNetFramework]\nv4.0={folder}\n")
        stored.write_text(stored.read_text() + "[Old]\nKey=1\n")
        self.assertEqual(self.host(*store, "get", "Old.Key"), (0, "1\n"))
        self.assertEqual(self.host(*store), self.host(*store, "list"))
        shown = self.host(*store, "list", "--option", "VisualStudioDotNet.DefVSVersion=vs2003")[1]
        for line in ("VisualStudioDotNet.DefVSVersion=vs2003\n", "WebSites.ApplicationHostConfig=\n", "Old.Key=1\n",
                     f"DotNetFramework.v4.0={folder}\n", "nothing reads the option Old.Key"):
            self.assertIn(line, shown)

    def test_a_solution_is_shown_with_what_it_lacks(self):
        for name in "ABC":
            self.write(f"{name}.csproj", "<Project/>")
        self.write("App.sln", HEADER + project("A", "BBDE") + project("B") + project("C") + project("D") + "Global\n"
                   f"\tGlobalSection(ProjectDependencies) = postSolution\n\t\t{ID('B')}.0 = {ID('C')}\n"
                   f"\t\t{ID('C')}.0 = {ID('A')}\n\tEndGlobalSection\nEndGlobal\n")
        status, shown = self.host("inspect", "App.sln")
        self.assertEqual(status, 0)
        self.assertEqual(shown, "Format          vs2003\nConfigurations  none\nProjects in build order  3\n"
                         f"  B  B.csproj  {ID('B')}\n      needs C\n"
                         f"  A  A.csproj  {ID('A')}\n      needs B\n      needs D (not on disk)\n"
                         f"      needs {ID('E')} (no project of this solution)\n"
                         f"  C  C.csproj  {ID('C')}\n      needs A\n"
                         f"Projects not on disk     1  (left out of every build)\n  D  D.csproj  {ID('D')}\n"
                         "Circle, passed over by the order: A needs B, B needs C, C needs A\n")
        known = json.loads(self.host("inspect", "App.sln", "--json", "--all-projects")[1])
        self.assertEqual(known["projectsNotFound"], [{"name": "D", "fileName": "D.csproj", "id": ID("D")}])
        self.assertIn(f"{ID('D')}  (not on disk)\n", self.host("inspect", "App.sln", "--all-projects")[1])

    def test_what_is_inspected_is_shown_to_people_and_programs(self):
        folder = self.folder / "Nat"
        self.write("Nat/Nat.vcxproj", '<Project xmlns="http://schemas.microsoft.com/developer/msbuild/2003"><ItemGroup>'
                   '<ResourceCompile Include="a.rc"/><ResourceCompile Include="v.rc"/></ItemGroup></Project>')
        self.write("Nat/a.rc", "x")
        self.write("Nat/v.rc", "#include <winver.h>\n1 VERSIONINFO\nFILEVERSION 3,1,4,2\nFILEFLAGSMASK 0x3fL\n"
                   "FILEFLAGS 0x1bL\nFILETYPE 0x2L\nBEGIN\nBLOCK \"StringFileInfo\"\nBEGIN\nBLOCK \"040c04e2\"\nBEGIN\n"
                   'VALUE "CompanyName", "We\\0"\nVALUE "FileVersion", "3.1"\nEND\nEND\nBLOCK "VarFileInfo"\nBEGIN\n'
                   'VALUE "Translation", 0x40c, 1250\nEND\nEND\n')
        self.write("App.sln", HEADER.replace("8.00", "11.00") + project("Nat", path="Nat\\Nat.vcxproj").replace(ID("Nat"), ID("A"))
                   + f'Project("{{2150E333-8FDC-42A3-9474-1A3956D46DE8}}") = "Group", "Group", "{ID("B")}"\nEndProject\nGlobal\n'
                   "\tGlobalSection(SolutionConfigurationPlatforms) = preSolution\n\t\tDebug|Win32 = Debug|Win32\n"
                   "\tEndGlobalSection\n\tGlobalSection(ProjectConfigurationPlatforms) = postSolution\n"
                   f"\t\t{ID('A')}.Debug|Win32.ActiveCfg = Debug|x64\n\tEndGlobalSection\nEndGlobal\n")
        self.write("build.log", "a.cs(3,7): error CS1: x\nb.cs(1): warning CS2: y\n    1 Warning(s)\n    1 Error(s)\n")
        nat = {"name": "Nat", "fileName": "Nat\\Nat.vcxproj", "id": ID("A"), "typeId": ID("F"), "isVCProject": True,
               "dependencies": [], "resourceScripts": [f"{folder}/a.rc", f"{folder}/v.rc"], "versionScript": f"{folder}/v.rc",
               "configurations": [{"solution": "Debug|Win32", "project": "Debug|x64", "active": True}]}
        rows = (
            ("App.sln", "Format          vs2010\nConfigurations  1\n  Debug|Win32\nProjects in build order  1\n"
             f"  Nat  Nat\\Nat.vcxproj  {ID('A')}\n      script {folder}/a.rc\n      script {folder}/v.rc  (version)\n",
             {"version": "vs2010", "configurations": ["Debug|Win32"], "projects": [nat], "projectsNotFound": [], "circles": []}),
            ("Nat/v.rc", "majorVersion    3\nminorVersion    1\nreleaseVersion  4\nbuildVersion    2\ndebug           true\n"
             "preRelease      true\nspecial         false\nprivate         true\ndll             false\n"
             "locale          1036\ncodePage        1250\n  CompanyName=We\n  FileVersion=3.1\n",
             {"majorVersion": 3, "minorVersion": 1, "releaseVersion": 4, "buildVersion": 2, "debug": True, "preRelease": True,
              "special": False, "private": True, "dll": False, "locale": 1036, "codePage": 1250,
              "strings": ["CompanyName=We", "FileVersion=3.1"]}),
            ("build.log --tool msbuild", "Errors    1\nWarnings  1\nLines     2 plain, 0 success, 1 warning, 1 error\n",
             {"errors": 1, "warnings": 1, "failed": False, "statuses": [2, 0, 1, 1],
              "metrics": [["Warnings", 1], ["Errors", 1]], "hasSummary": True, "hasOtherSummary": False}),
        )
        for arguments, shown, known in rows:
            self.assertEqual(self.host("inspect", *arguments.split()), (0, shown))
            self.assertEqual(json.loads(self.host("inspect", *arguments.split(), "--json")[1]), known)
        both = self.host("inspect", "App.sln", "Nat/v.rc", "--json")[1].splitlines()
        self.assertEqual([json.loads(line)["file"] for line in both], ["App.sln", "Nat/v.rc"])
        self.assertEqual(self.host("inspect", "build.log", "--tool", "msbuild", "--lines")[1],
                         "3\ta.cs(3,7): error CS1: x\n2\tb.cs(1): warning CS2: y\n0\t    1 Warning(s)\n0\t    1 Error(s)\n")

    def test_projects_that_share_an_identifier_are_told_apart(self):
        self.write("A.csproj", "<Project/>")
        self.write("App.sln", HEADER + project("A") + project("A", path="Gone.csproj") + "Global\nEndGlobal\n")
        self.assertIn(f"  A  A.csproj  {ID('A')}\nProjects not on disk     1  (left out of every build)\n"
                      f"  A  Gone.csproj  {ID('A')}\n", self.host("inspect", "App.sln")[1])
        self.assertIn(f"  A  A.csproj  {ID('A')}\n  A  Gone.csproj  {ID('A')}  (not on disk)\n",
                      self.host("inspect", "App.sln", "--all-projects")[1])

    def test_a_circle_of_projects_is_named_instead_of_searched_for_an_order(self):
        for name in "ABC":
            self.write(f"{name}.csproj", "<Project/>")
        self.write("App.sln", HEADER + project("A", "B") + project("B", "C") + project("C", "A") + "Global\nEndGlobal\n")
        status, shown = self.host("inspect", "App.sln")
        self.assertEqual((status, shown), (1, "Solution has invalid circular dependancies between : "
                                              "A needs B, B needs C, C needs A\n"))

    def test_the_properties_of_an_action_stand_in_groups(self):
        listed = "".join(f"{line}\n" for line in (
            "DEVENV  Build VS.Net Solution  (Compilers)", "MSTEST  Run MSTest  (Testing Tools)",
            "VERSIONINFO  Win32 Version Info Updater  (Compilers)", "SOLUTIONITERATOR  VS.NET Solution Iterator  (Compilers)"))
        self.assertEqual(self.host("actions"), (0, listed))
        actions = json.loads(self.host("actions", "--json")[1])
        self.assertEqual([action["type"] for action in actions], [line.split()[0] for line in listed.splitlines()])
        for action in actions:
            self.assertEqual(list(action), ["type", "name", "category", "keywords", "image", "groups", "properties"])
            for row in action["properties"]:
                self.assertEqual([key for key in row if key not in ("values", "labels")],
                                 ["name", "kind", "default", "stored", "readOnly", "hidden", "group", "help"])
        self.check_table([("actions DEVEN", 'Unknown action type')])
        shown = self.host("actions", "DEVENV")[1]
        for piece in ("\nBuild: Warnings\n  OverrideWarnings: Boolean", "\n      fx35: .NET Framework 3.5\n",
                      "3|1|4|0 is 3.1.4.0", "\nOn no page of the editor\n", "An enumeration takes a name or its number"):
            self.assertIn(piece, shown)
        properties = {row["name"]: row for row in json.loads(self.host("actions", "DEVENV", "--json")[1])["properties"]}
        for name in properties:
            self.assertEqual(shown.count(f"\n  {name}: "), 1, f"{name} stands once in the groups")
        self.assertEqual(properties["BuildAction"]["labels"], ["Build", "Rebuild", "Clean", "Deploy"])

    def test_a_log_says_where_its_counts_come_from(self):
        rows = (("msbuild", "b = warning = c\n    2 Warning(s)\n    0 Error(s)\n", "Warnings  2", "are told by"),
                ("msbuild", "a = warning = b\n", "Warnings  0", "this log holds none"),
                ("devenv", "a = warning = b\n    2 Warning(s)\n", "Warnings  0", "change --tool"),
                ("devenv", "a = warning = b\nBuild complete -- 0 errors, 1 warnings\n", "Warnings  1", ""))
        for tool, log, counts, reason in rows:
            self.write("build.log", log)
            shown = self.host("inspect", "build.log", "--tool", tool)[1]
            self.assertIn(counts, shown)
            self.assertIn(reason, shown)
            self.assertEqual(shown.endswith(" error\n"), not reason, shown)


if __name__ == "__main__":
    unittest.main()
