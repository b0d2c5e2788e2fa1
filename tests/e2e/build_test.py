"""The main job: kxhost builds a real solution with the real MSBuild of this machine."""
import re
import unittest

import e2e


class BuildTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.examples = self.copy_example()

    def run_project(self, name, *options):
        return self.run_program(e2e.BIN / "kxhost", "run", self.examples / name, "--color", "never", *options)

    def break_the_library(self):
        """Returns the number of the line that no longer compiles."""
        file = self.examples / "Greeter/Greeter.Text/Greeting.cs"
        lines = file.read_text(encoding="utf-8").splitlines()
        number = next(i for i, line in enumerate(lines) if "return" in line)
        lines[number] = lines[number].replace("name", "nobody")
        file.write_text("\n".join(lines), encoding="utf-8")
        return number + 1

    def table_rows(self, output):
        """(configuration, result, errors, warnings) of each row of the table at the end."""
        rows = re.compile(r"^Build .*?  +(\S+\|Any CPU) +(\w+) +(\d+) +(\d+) +\d.*$", re.MULTILINE)
        return rows.findall(output, output.rindex("Warnings"))

    def test_every_configuration_that_matches_is_built(self):
        run = self.run_project("greeter.kxproj")
        self.assertEqual(run.returncode, 0, run.stdout)
        for configuration in ("Debug", "Release"):
            program = self.examples / f"Greeter/Greeter.App/bin/{configuration}/greeter.exe"
            said = self.run_program("mono", program, "you").stdout
            self.assertIn(f", you!\nGreeter 1.0.0.0, {configuration} build\n", said)
        self.assertEqual(run.stdout.count("CS0219"), 2, "the warning shows once a configuration: " + run.stdout)
        self.assertEqual(self.table_rows(run.stdout), [("Debug|Any CPU", "succeeded", "0", "1"),
                                                       ("Release|Any CPU", "succeeded", "0", "1")], run.stdout)

    def test_selected_projects_only(self):
        run = self.run_project("greeter-selected.kxproj", "--set", "Configuration=Debug")
        self.assertEqual(run.returncode, 0, run.stdout)
        built = sorted(file.name for file in self.examples.glob("Greeter/*/bin/*/*") if file.suffix in (".dll", ".exe")
                       and file.parts[-4] == file.stem)
        self.assertEqual(built, ["Greeter.Core.dll", "Greeter.Text.dll"])
        self.assertLess(run.stdout.index("Greeter.Core"), run.stdout.index("Greeter.Text"), "in dependency order")

    def test_project_by_project_in_a_loop(self):
        run = self.run_project("greeter-loop.kxproj", "--set", "Configuration=Debug")
        self.assertEqual(run.returncode, 0, run.stdout)
        program = self.examples / "Greeter/Greeter.App/bin/Debug/greeter.exe"
        self.assertIn("Debug build", self.run_program("mono", program).stdout)

    def test_a_solution_on_a_mapped_drive(self):
        run = self.run_program(
            e2e.BIN / "kxhost", "do", "DEVENV", "--drive", f"S={self.folder}", "Solution=S:\\EXAMPLES\\greeter\\Greeter.sln",
            "SolutionConfiguration=Release|Any CPU", "VStudioVersion=vs2010", "OutputDirectory=S:\\out put")
        self.assertEqual(run.returncode, 0, run.stdout)
        self.assertIn("Release build", self.run_program("mono", self.folder / "out put/greeter.exe").stdout)

    def test_an_error_is_shown_with_its_file_and_line(self):
        line = self.break_the_library()
        run = self.run_project("greeter.kxproj")
        self.assertEqual(run.returncode, 1, run.stdout)
        self.assertRegex(run.stdout, rf"Greeter\.Text/Greeting\.cs\({line},\d+\): error CS0103: .*nobody")
        self.assertEqual(self.table_rows(run.stdout), [("Debug|Any CPU", "failed", "1", "0"),
                                                       ("Release|Any CPU", "failed", "1", "0")], run.stdout)


    def test_a_dry_run_shows_what_stamping_changes_and_changes_nothing(self):
        folder = self.examples / "Greeter"
        content = lambda: {file: file.read_bytes() for file in folder.rglob("*") if file.is_file()}
        arguments = [e2e.BIN / "kxhost", "run", self.examples / "greeter-stamp.kxproj", "--set", f"Root={folder}"]
        before = content()
        run = self.run_program(*arguments, "--dry-run")
        self.assertEqual(run.returncode, 0, run.stdout)
        for line in ['+[assembly: AssemblyVersion("3.1.4.0")]', "- FILEVERSION 1,0,0,0", "+ FILEVERSION 3,1,4,0"]:
            self.assertIn(line, run.stdout)
        self.assertEqual(content(), before)

        run = self.run_program(*arguments)
        self.assertEqual(run.returncode, 0, run.stdout)
        program = (folder / "Greeter.App/bin/Release/greeter.exe").read_bytes()
        self.assertIn("3.1.4.0".encode("utf-16-le"), program)
        self.assertIn(b"FILEVERSION 3,1,4,0\r\n", (folder / "Greeter.Native/version.rc").read_bytes())
        self.assertNotIn("+", self.run_program(*arguments, "--dry-run").stdout, "stamping again changes nothing")

if __name__ == "__main__":
    unittest.main()
