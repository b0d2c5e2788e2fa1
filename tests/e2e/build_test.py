"""The main job: kxhost builds a real solution with the real MSBuild of this machine."""
import re
import unittest

import e2e


class BuildTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.examples = self.copy_example()

    def run_project(self, name, *options, code=0):
        return self.host("run", self.examples / name, "--color", "never", *options, code=code)

    def said(self, program, *arguments):
        return self.run_program("mono", self.folder / program, *arguments).stdout

    def table_rows(self, output):
        """(configuration, result, errors, warnings) of each row of the table at the end."""
        rows = re.compile(r"^Build .*?  +(\S+\|Any CPU) +(\w+) +(\d+) +(\d+) +\d.*$", re.MULTILINE)
        return rows.findall(output, output.rindex("Warnings"))

    def test_every_configuration_that_matches_is_built(self):
        shown = self.run_project("greeter.kxproj")
        for configuration in ("Debug", "Release"):
            said = self.said(self.examples / f"Greeter/Greeter.App/bin/{configuration}/greeter.exe", "you")
            self.assertIn(f", you!\nGreeter 1.0.0.0, {configuration} build\n", said)
        self.assertEqual(shown.count("CS0219"), 3, "the warning shows once a configuration, and in the list at the end: " + shown)
        self.assertEqual(self.table_rows(shown), [(f"{name}|Any CPU", "succeeded", "0", "1") for name in ("Debug", "Release")])

    def test_selected_projects_only(self):
        shown = self.run_project("greeter-selected.kxproj", "--set", "Configuration=Debug")
        built = sorted(file.name for file in self.examples.glob("Greeter/*/bin/*/*") if file.suffix in (".dll", ".exe")
                       and file.parts[-4] == file.stem)
        self.assertEqual(built, ["Greeter.Core.dll", "Greeter.Text.dll"])
        self.assertLess(shown.index("Greeter.Core"), shown.index("Greeter.Text"), "in dependency order")

    def test_a_solution_on_a_mapped_drive(self):
        self.host("do", "DEVENV", "--drive", f"S={self.folder}", "Solution=S:\\EXAMPLES\\greeter\\Greeter.sln",
                  "SolutionConfiguration=Release|Any CPU", "VStudioVersion=vs2010", "OutputDirectory=S:\\out put")
        self.assertIn("Release build", self.said("out put/greeter.exe"))

    def test_an_error_is_shown_with_its_file_and_line(self):
        file = self.examples / "Greeter/Greeter.Text/Greeting.cs"
        before, _, after = file.read_text(encoding="utf-8").partition("return")
        file.write_text(f"{before}return{after.replace('name', 'nobody', 1)}", encoding="utf-8")
        shown = self.run_project("greeter.kxproj", "--log", "run.jsonl", code=1)
        self.assertRegex(shown, rf"Greeter\.Text/Greeting\.cs\({before.count(chr(10)) + 1},\d+\): error CS0103: .*nobody")
        self.assertEqual(self.table_rows(shown), [(f"{name}|Any CPU", "failed", "1", "0") for name in ("Debug", "Release")])
        for configuration in self.events("actionEnd", "run.jsonl")[0]["configurations"]:
            self.assertEqual([(built["project"], built["result"], built["errors"], built["elapsedMs"] > 0)
                              for built in configuration["projects"]],
                             [("Greeter.Core", "succeeded", 0, True), ("Greeter.Text", "failed", 1, True)])

    def test_a_dry_run_shows_what_stamping_changes_and_changes_nothing(self):
        folder = self.examples / "Greeter"

        def content():
            return {file: file.read_bytes() for file in folder.rglob("*") if file.is_file()}

        options = ("greeter-stamp.kxproj", "--set", f"Root={folder}")
        before = content()
        shown = self.run_project(*options, "--dry-run")
        for line in ['+[assembly: AssemblyVersion("3.1.4.0")]', "- FILEVERSION 1,0,0,0", "+ FILEVERSION 3,1,4,0"]:
            self.assertIn(line, shown)
        self.assertEqual(content(), before)
        self.run_project(*options)
        self.assertIn("3.1.4.0".encode("utf-16-le"), (folder / "Greeter.App/bin/Release/greeter.exe").read_bytes())
        self.assertIn(b"FILEVERSION 3,1,4,0\r\n", (folder / "Greeter.Native/version.rc").read_bytes())
        self.assertNotIn("+", self.run_project(*options, "--dry-run"), "stamping again changes nothing")


if __name__ == "__main__":
    unittest.main()
