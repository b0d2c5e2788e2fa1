"""A loop over the projects of a solution, from the project file to the tool that each pass starts."""
import json
import os
import pty
import signal
import termios
import unittest
import xml.etree.ElementTree

import e2e

# Notes the project that it is given; the test may let it fail, or hold it until it says go.
TOOL = """project="${@: -1}"
project="${project##*[\\\\/]}"
echo "$project" >> runs.txt
[ "$FAIL" != "$project" ] || exit 1
while [ -n "$HOLD" ] && [ ! -e "go-$project" ]; do sleep 0.02; done"""
IN_ORDER = ["Greeter.Core.csproj", "Greeter.Text.csproj", "Greeter.App.csproj"]
IDS = {"Core": "{7C6B2A31-5D0F-4E8B-9A35-1E4F20D6B801}", "Text": "{B1E07F64-93C2-4D5A-8C17-6A0D3F9E4702}",
       "App": "{E48D9C05-2F7A-4B36-A1D8-95C3B7106E03}"}


class LoopTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write_tool(TOOL)
        self.folder_of_solution = self.copy_example() / "Greeter"
        self.project = self.folder / "examples/greeter-loop.kxproj"
        self.with_plugin = ("--color", "never", "--plugin", e2e.BIN / "KxMessage.so", *self.tools)

    def built(self):
        """The projects that the tool was given; it runs in the solution's folder."""
        file = self.folder_of_solution / "runs.txt"
        return file.read_text(encoding="utf-8").split() if file.exists() else []

    def let_go(self, project):
        (self.folder_of_solution / f"go-{project}").touch()

    def test_each_project_is_built_once_behind_those_it_needs_until_one_fails(self):
        before = self.project.read_bytes()
        self.host("run", self.project, *self.tools)
        self.assertEqual(self.built(), IN_ORDER)
        self.host("run", self.project, *self.tools, FAIL=IN_ORDER[1], code=1)
        self.assertEqual(self.built(), IN_ORDER + IN_ORDER[:2])
        self.assertEqual(self.project.read_bytes(), before, "a run changes nothing in the file")

    def test_a_stop_request_ends_the_running_child_and_the_loop(self):
        self.let_go(IN_ORDER[0])
        host = self.start_host("run", self.project, *self.tools, environment={"HOLD": "1"})
        e2e.wait_until(lambda: len(self.built()) == 2 or host.poll() is not None)
        host.send_signal(signal.SIGINT)
        output, _ = host.communicate(timeout=60)
        self.assertEqual((host.returncode, self.built()), (130, IN_ORDER[:2]), output)
        for said in "Action Terminated by User.", "\nStopped: ", "1 stopped; 0 errors, 0 warnings; ":
            self.assertIn(said, output)

    def test_the_last_lines_of_a_terminal_count_projects_and_the_log_does_not(self):
        terminal, follower = pty.openpty()
        termios.tcsetwinsize(terminal, (24, 60))
        host = self.start_host("run", self.project, *self.tools, "--log", "log.jsonl", stdout=follower, stderr=follower,
                               environment={"HOLD": "1", "TERM": "xterm"})
        os.close(follower)
        for number, project in enumerate(IN_ORDER, 1):
            beside = "0:0" if number == 3 else f"Project {project.removesuffix('.csproj')}"
            wanted = f"project {number} of 3  {beside}".encode()
            self.assertIn(wanted, e2e.shown(terminal, wanted))
            termios.tcsetwinsize(terminal, (24, 60 if number == 1 else 100))  # a wide one has a line each
            self.let_go(project)
        e2e.shown(terminal)
        os.close(terminal)
        self.assertEqual(host.wait(60), 0)
        self.assertNotIn("of 3", self.read("log.jsonl"))
        self.assertIn('"iteration":2,"iterations":3', self.read("log.jsonl"))

    def test_functions_constants_and_loop_values_in_the_texts_of_another_plug_in(self):
        folder = self.folder_of_solution
        rows = [
            # properties of the loop, text, expected on each pass
            ({}, "%P%", [f"{folder}/Greeter.{name}/Greeter.{name}.csproj" for name in IDS]),
            ({"SortByDependency": False, "IterateValue": "svProjectId"},
             '$(The build.GetProjectName("%P%"))', ["Greeter.App", "Greeter.Text", "Greeter.Core"]),
            ({"IterateValue": "svName"}, '$(The build.GetProjectID("%P%"))', list(IDS.values())),
            ({"IterateValue": "svRelativePath"}, '%p% $(The build.GetProjectPath("$(P)"))',
             [f"Greeter.{name}\\Greeter.{name}.csproj {folder}/Greeter.{name}/Greeter.{name}.csproj" for name in IDS]),
            ({}, '[$(The build.GetProjectID("Nobody"))] %baBuild%%baRebuild%%baClean%%baDeploy%', ["[] 0123"] * 3),
            ({}, "%vs2010% $(svProjectId) $(btSelectedProjects) $(warning)", ["4 3 1 2"] * 3),
        ]
        solution = "Greeter\\Greeter.sln"
        for properties, text, expected in rows:
            with self.subTest(text):
                loop = e2e.action("SOLUTIONITERATOR", Solution=solution, LoopVariable="P", **properties,
                                  Actions=e2e.action("MESSAGE", Text=f"-&gt; {text}"))
                self.write("examples/own.kxproj", e2e.project(loop, e2e.build(solution, 'Name="The build"')))
                self.host("run", "examples/own.kxproj", "--log", "log.jsonl", *self.with_plugin)
                texts = [event["text"] for event in self.events("message")]
                self.assertEqual([line[3:] for line in texts if line.startswith("-> ")], expected)

    def test_a_second_plug_in_is_listed_beside_the_package(self):
        types = {action["type"]: action for action in json.loads(self.host("actions", "--json", *self.with_plugin))}
        message = types.pop("MESSAGE")
        self.assertEqual((message["category"], message["image"]), ("Examples", ""))
        self.assertEqual(types["SOLUTIONITERATOR"]["name"], "VS.NET Solution Iterator")
        for name, action in types.items():
            root = xml.etree.ElementTree.fromstring(action["image"])
            self.assertEqual((root.tag, root.get("viewBox")), ("{http://www.w3.org/2000/svg}svg", "0 0 16 16"), name)
        self.host("do", "MESSAGE", "Text=%baDeploy%", "Status=error", *self.with_plugin, code=1)


if __name__ == "__main__":
    unittest.main()
