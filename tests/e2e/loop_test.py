"""A loop over the projects of a solution, from the project file to the tool that each pass starts."""
import json
import os
import pty
import signal
import subprocess
import unittest
import xml.etree.ElementTree

import e2e

# Notes the project that it is given; the test may let it fail, or hold it until it says go.
TOOL = """#!/bin/bash
project="${@: -1}"
echo "${project##*[\\\\/]}" >> runs.txt
[ "$FAIL" != "${project##*[\\\\/]}" ] || exit 1
while [ -n "$HOLD" ] && [ ! -e "go-${project##*[\\\\/]}" ]; do sleep 0.02; done
"""
IN_ORDER = ["Greeter.Core.csproj", "Greeter.Text.csproj", "Greeter.App.csproj"]
IDS = {"Core": "{7C6B2A31-5D0F-4E8B-9A35-1E4F20D6B801}", "Text": "{B1E07F64-93C2-4D5A-8C17-6A0D3F9E4702}",
       "App": "{E48D9C05-2F7A-4B36-A1D8-95C3B7106E03}"}


class LoopTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write("framework/MSBuild.exe", TOOL, executable=True)
        self.examples = self.copy_example()

    def command(self, verb, *arguments):
        return [str(part) for part in (e2e.BIN / "kxhost", verb, *arguments, "--color", "never",
                                       "--plugin", e2e.BIN / "KxMessage.so",
                                       "--option", f"DotNetFramework.v4.0={self.folder / 'framework'}")]

    def run_loop(self, *arguments, **environment):
        return self.run_program(*self.command("run", self.examples / "greeter-loop.kxproj", *arguments), **environment)

    def built(self):
        """The projects that the tool was given; it runs in the solution's folder."""
        file = self.examples / "Greeter/runs.txt"
        return file.read_text(encoding="utf-8").split() if file.exists() else []

    def messages(self, actions):
        """Runs these actions; what the plug-in's MESSAGE wrote."""
        self.write("examples/own.kxproj", f"<BuildProject Name='Own'><Actions>{actions}</Actions></BuildProject>")
        run = self.run_program(*self.command("run", self.examples / "own.kxproj", "--log", "own.jsonl"))
        self.assertEqual(run.returncode, 0, run.stdout)
        events = [json.loads(line) for line in (self.folder / "own.jsonl").read_text(encoding="utf-8").splitlines()]
        return [event["text"] for event in events if event["event"] == "message" and event["text"].startswith("-> ")]

    def test_each_project_is_built_once_behind_those_it_needs(self):
        before = (self.examples / "greeter-loop.kxproj").read_bytes()
        run = self.run_loop()
        self.assertEqual(run.returncode, 0, run.stdout)
        self.assertEqual(self.built(), IN_ORDER, run.stdout)
        self.assertEqual((self.examples / "greeter-loop.kxproj").read_bytes(), before, "a run changes nothing in the file")

    def test_a_failing_child_ends_the_loop(self):
        run = self.run_loop(FAIL=IN_ORDER[1])
        self.assertEqual(run.returncode, 1, run.stdout)
        self.assertEqual(self.built(), IN_ORDER[:2], run.stdout)

    def test_a_stop_request_ends_the_running_child_and_the_loop(self):
        (self.examples / "Greeter" / f"go-{IN_ORDER[0]}").touch()
        with subprocess.Popen(self.command("run", self.examples / "greeter-loop.kxproj"), cwd=self.folder,
                              env={**self.environment, "HOLD": "1"}, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, encoding="utf-8") as host:
            self.addCleanup(e2e.kill_quietly, host.pid)
            e2e.wait_until(lambda: len(self.built()) == 2 or host.poll() is not None)
            host.send_signal(signal.SIGINT)
            output, _ = host.communicate(timeout=60)
        self.assertEqual(host.returncode, 130, output)
        self.assertIn("Action Terminated by User.", output)
        self.assertEqual(self.built(), IN_ORDER[:2], output)

    def test_the_status_line_counts_projects_and_the_log_does_not(self):
        leader, follower = pty.openpty()
        with subprocess.Popen([*self.command("run", self.examples / "greeter-loop.kxproj"), "--log", "run.jsonl"],
                              cwd=self.folder, env={**self.environment, "HOLD": "1", "TERM": "xterm"},
                              stdin=subprocess.DEVNULL, stdout=follower, stderr=follower) as host:
            self.addCleanup(e2e.kill_quietly, host.pid)
            os.close(follower)
            with os.fdopen(leader, "rb", buffering=0) as terminal:
                for number, project in enumerate(IN_ORDER, 1):
                    shown = f"project {number} of 3  Project {project.removesuffix('.csproj')}"
                    self.assertTrue(self.read_until(terminal, shown.encode()), shown)
                    (self.examples / "Greeter" / f"go-{project}").touch()
                self.read_until(terminal, b"nothing more")
        self.assertEqual(host.returncode, 0)
        log = (self.folder / "run.jsonl").read_text(encoding="utf-8")
        self.assertNotIn("of 3", log)
        self.assertIn('"iteration":2,"iterations":3', log)

    def read_until(self, terminal, wanted):
        """False when the terminal is closed before."""
        seen = b""
        while wanted not in seen:
            try:
                part = terminal.read(4096)
            except OSError:  # the last program at the other end has gone
                part = b""
            if not part:
                return False
            seen += part
        return True

    def test_functions_constants_and_loop_values_in_the_texts_of_another_plug_in(self):
        solution = "<Solution>Greeter\\Greeter.sln</Solution>"
        loop = f"""<Action Type="SOLUTIONITERATOR">{solution}<LoopVariable>P</LoopVariable>%s
            <Actions><Action Type="MESSAGE"><Text>-&gt; %s</Text></Action></Actions></Action>"""
        build = f"""<Action Type="DEVENV" Name="The build">{solution}<VStudioVersion>vs2010</VStudioVersion>
            <SolutionConfiguration>Debug|Any CPU</SolutionConfiguration></Action>"""
        folder = self.examples / "Greeter"
        rows = [
            # properties of the loop, text, expected on each pass
            ("", "%P%", [f"{folder}/Greeter.{name}/Greeter.{name}.csproj" for name in IDS]),
            ("<SortByDependency>False</SortByDependency><IterateValue>svProjectId</IterateValue>",
             "$(The build.GetProjectName(\"%P%\"))", ["Greeter.App", "Greeter.Text", "Greeter.Core"]),
            ("<IterateValue>svName</IterateValue>", "$(The build.GetProjectID(\"%P%\"))", list(IDS.values())),
            ("<IterateValue>svRelativePath</IterateValue>", "%p% $(The build.GetProjectPath(\"$(P)\"))",
             [f"Greeter.{name}\\Greeter.{name}.csproj {folder}/Greeter.{name}/Greeter.{name}.csproj" for name in IDS]),
            ("", "[$(The build.GetProjectID(\"Nobody\"))] %baBuild%%baRebuild%%baClean%%baDeploy%", ["[] 0123"] * 3),
            ("", "%vs2010% $(svProjectId) $(btSelectedProjects) $(warning)", ["4 3 1 2"] * 3),
        ]
        for properties, text, expected in rows:
            with self.subTest(text):
                self.assertEqual(self.messages(loop % (properties, text) + build), [f"-> {line}" for line in expected])

    def test_a_second_plug_in_is_listed_beside_the_package(self):
        listed = json.loads(self.run_program(*self.command("actions", "--json")).stdout)
        types = {action["type"]: action for action in listed}
        self.assertEqual(types["MESSAGE"]["category"], "Examples")
        self.assertEqual(types["SOLUTIONITERATOR"]["name"], "VS.NET Solution Iterator")
        images = {name: action["image"] for name, action in types.items()}
        self.assertEqual(images.pop("MESSAGE"), "")
        for name, image in images.items():
            root = xml.etree.ElementTree.fromstring(image)
            self.assertEqual((root.tag, root.get("viewBox")), ("{http://www.w3.org/2000/svg}svg", "0 0 16 16"), name)
        run = self.run_program(*self.command("do", "MESSAGE", "Text=%baDeploy%", "Status=error"))
        self.assertEqual(run.returncode, 1, "an error of the plug-in's action fails the run")


if __name__ == "__main__":
    unittest.main()
