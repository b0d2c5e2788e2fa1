"""A run whose parts are processes of their own, beside the same run in one process."""
import json
import os
import pty
import re
import signal
import termios
import unittest

import e2e

# Notes what it is given; fails, dies with the process that started it, or waits, as the test says by a file.
TOOL = """project="${@: -1}"; project="${project##*[\\\\/]}"; name="${project%.*}"
here="$(dirname "$0")"
echo "begin $name $KX_SECRET_1" >> "$here/runs.txt"
echo "$name.cs(3,1): warning CS0168: $name [$project]"
[ ! -e "$here/kill-$name" ] || kill -9 $PPID
while [ -e "$here/hold-$name" ]; do sleep 0.02; done
echo "end $name" >> "$here/runs.txt"
[ ! -e "$here/fail-$name" ]"""


def message(name, attributes="", text=None, status="Normal"):
    return e2e.action("MESSAGE", f'Name="{name}" {attributes}', Text=text or f"said by {name}", Status=status)


class PartsTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write_tool(TOOL)
        self.common = ("--color", "never", "--plugin", e2e.BIN / "KxMessage.so", *self.tools)

    def run_parts(self, *arguments, jobs=2, **options):
        return self.host("run", "p.kxproj", "--jobs", jobs, "--log", "log.jsonl", *self.common, *arguments, **options)

    def tool_runs(self):
        file = self.folder / "tools/runs.txt"
        return file.read_text(encoding="utf-8").splitlines() if file.exists() else []

    def table(self, shown):
        """The end table without its times."""
        return re.sub(r" +\d+(\.\d+)? (ms|s)\b", "", shown[shown.index("\nAction"):])

    def said(self):
        return sorted(event["text"] for event in self.events("message"))

    def found(self):
        return [(one["rule"], one["message"], one["action"], one["fingerprint"]) for one in self.events("finding")]

    def write_builds(self, *names, attributes=()):
        """Solutions of one project each, and the actions that build them."""
        for name in names:
            self.write(f"{name}.sln", e2e.solution(f"{name}.csproj", configuration="Debug|Any CPU"))
            self.write(f"{name}.csproj", "<Project/>")
        return [e2e.build(f"{name}.sln", f'Name="{name}" {dict(attributes).get(name, "")}') for name in names]

    def test_several_processes_leave_what_one_would(self):
        builds = self.write_builds("A", "B")
        needs = [builds[0], builds[1].replace("<Action ", '<Action Needs="" '), '<Group Name="Words" Needs="A">', message("One"),
                 message("Two", 'Needs=""', status="Warning"), "</Group>", message("Last", 'Needs="Words,B"'),
                 message("Never", 'Condition="1 == 2"')]
        plain = [*builds, message("One"), message("Two", status="Warning"), message("Last"),
                 message("Never", 'Condition="1 == 2"')]
        left = []
        for actions, jobs in (plain, 1), (plain, 2), (needs, 1), (needs, 3):  # the first one in one process
            self.write("p.kxproj", e2e.project(*actions))
            shown = self.run_parts(jobs=jobs)
            left.append((self.table(shown), self.said(), self.found(), self.events("runEnd")[0]["totals"]))
            for event in self.events("actionEnd"):
                self.assertGreaterEqual(event["beganMs"], 0)
        self.assertEqual(left, left[:1] * 4)
        again = self.host("report", "log.jsonl", "--color", "never")
        self.assertEqual(*(sorted(self.table(text).split("\nLog written")[0].splitlines()) for text in (shown, again)))
        self.assertEqual(sorted(os.listdir(self.temporary)), [], "nothing is left behind")

    def test_what_fails_holds_up_what_needs_it(self):
        self.write("p.kxproj", e2e.project(
            message("Bad", 'Needs=""', status="Error"), message("Behind", 'Needs="Bad"'), message("Free", 'Needs=""'),
            message("Far", 'Needs="Free"'), message("Other", 'Needs="" ContinueOnError="true"', status="Error"),
            message("Next", 'Needs="Other"')))
        for arguments, rows in (((), {"Bad": "failed"}), (("--keep-going",), {
                "Bad": "failed", "Behind": "skipped", "Free": "succeeded", "Far": "succeeded", "Other": "failed",
                "Next": "skipped"})):
            for jobs in 1, 2:
                self.run_parts(*arguments, jobs=jobs, code=1)
                held = [text for text in self.said() if text.startswith("Skipped")]
                self.assertEqual(held, ['Skipped: "Bad", which it needs, has not succeeded.',
                                        'Skipped: "Other", which it needs, has not succeeded.'][:2 * len(arguments)])
                self.assertLessEqual(rows.items(), {one["name"]: one["result"] for one in self.events("actionEnd")}.items())

    def test_only_what_is_named_runs_with_what_it_needs(self):
        self.write("p.kxproj", e2e.project(message("A"), message("B"), message("C", 'Needs="A"'), message("D", 'Needs=""')))
        for jobs in 1, 2:
            for names, ran in (("c",), "A C"), (("D", "A"), "A D"), (("b",), "A B"):
                self.run_parts(*names, jobs=jobs)
                self.assertEqual(" ".join(sorted(one["name"] for one in self.events("actionEnd"))), ran)
        shown = self.host("run", "A", *self.common)  # the folder has one project
        self.assertIn("said by A", shown)
        self.assertIn('Did you mean "A"?', self.run_parts("AA", code=2))
        self.run_parts("--part", "C", jobs=1)
        self.assertEqual([one["name"] for one in self.events("actionEnd")], ["C"])

    def test_a_terminal_shows_the_parts_that_run(self):
        self.write("p.kxproj", e2e.project(*self.write_builds("A", "B", attributes={"A": 'Needs=""', "B": 'Needs=""'})))
        for name in "A", "B":
            self.write(f"tools/hold-{name}")
        terminal, follower = pty.openpty()
        termios.tcsetwinsize(terminal, (24, 100))
        host = self.start_host("run", "p.kxproj", "--jobs", "2", *self.common, stdout=follower, stderr=follower,
                               environment={"TERM": "xterm"})
        os.close(follower)
        both = re.compile(rb"A +\d+:\d\d.*\n.*B +\d+:\d\d.*\n.*0 of 2 parts")
        self.assertTrue(e2e.wait_until(lambda: both.search(e2e.shown(terminal, b"0 of 2 parts"))))
        (self.folder / "tools/hold-A").unlink()
        e2e.shown(terminal, b"1 of 2 parts")
        behind = e2e.shown(terminal, b"1 of 2 parts")
        self.assertRegex(behind, rb"B +\d+:\d\d")
        self.assertNotRegex(behind, rb"A +\d+:\d\d")
        (self.folder / "tools/hold-B").unlink()
        e2e.shown(terminal)
        os.close(terminal)
        self.assertEqual(host.wait(60), 0)

    def test_a_part_that_dies_has_failed_and_says_how(self):
        builds = self.write_builds("A", "B", "C", attributes={name: 'Needs=""' for name in "ABC"})
        self.write("p.kxproj", e2e.project(*builds))
        self.write("tools/kill-B")
        for jobs in 1, 2:  # a process that had done A before, and one of its own
            shown = self.run_parts("--keep-going", "--junit", "j.xml", jobs=jobs, code=1)
            self.assertIn("The process of this part was ended by signal 9 (SIGKILL).", shown)
            self.assertEqual({one["name"]: one["result"] for one in self.events("actionEnd")},
                             {"A": "succeeded", "B": "failed", "C": "succeeded"})
            self.assertIn("part", [one["rule"] for one in self.events("finding")])

    def test_only_this_program_names_parts_to_its_processes(self):
        self.write("p.kxproj", e2e.project(message("One")))
        self.assertIn("kxhost starts itself", self.run_parts("--take-parts", given="One\n", code=2))

    def test_passes_of_a_parallel_loop_follow_the_dependencies_of_the_solution(self):
        self.copy_example()
        serial = '<Action Type="SOLUTIONITERATOR"'
        loop = self.read("examples/greeter-loop.kxproj")
        tables = []
        for jobs, written in (1, serial), (2, serial + ' Parallel="true"'):
            self.write("examples/p.kxproj", loop.replace('<Action Type="SOLUTIONITERATOR"', written))
            shown = self.host("run", "examples/p.kxproj", "--jobs", jobs, "--log", "log.jsonl", *self.common)
            tables.append((self.table(shown), self.said()))
            loops = [one for one in self.events("actionEnd") if one["isLoop"]]
            self.assertEqual([one["result"] for one in loops], ["succeeded"])
            self.assertEqual(len([one for one in self.events("action") if one["nesting"] == 0]), 1)
        self.assertEqual(*tables)
        runs = [line.split()[-1] for line in self.tool_runs() if line.startswith("begin")]
        self.assertEqual(runs, 2 * ["Greeter.Core", "Greeter.Text", "Greeter.App"])
        self.write("tools/hold-Greeter.App")
        host = self.start_host("run", "examples/p.kxproj", *self.common)
        e2e.wait_until(lambda: self.tool_runs()[-1].startswith("begin Greeter.App") or host.poll() is not None)
        later = f'Project("{e2e.CSHARP}") = "Later", "Later.csproj", "{{12345678-0000-0000-0000-000000000000}}"\nEndProject\n'
        held = self.read("examples/Greeter/Greeter.sln")
        self.write("examples/Greeter/Greeter.sln", held.replace("Global\n", f"{later}Global\n", 1))
        self.write("examples/Greeter/Later.csproj", "<Project/>")
        (self.folder / "tools/hold-Greeter.App").unlink()
        self.assertIn("What the loop runs over has changed", host.communicate(timeout=60)[0])
        self.assertEqual(host.returncode, 1)
        self.write("examples/Greeter/Greeter.sln", held)
        self.write("tools/hold-Greeter.App")
        host = self.start_host("run", "examples/p.kxproj", *self.common)
        e2e.wait_until(lambda: self.tool_runs()[-1].startswith("begin Greeter.App") or host.poll() is not None)
        host.send_signal(signal.SIGINT)
        self.assertNotIn("What the loop runs over has changed", host.communicate(timeout=60)[0], "it was stopped")
        self.assertEqual(host.returncode, 130)

    def test_a_pass_that_fails_leaves_a_loop_and_what_is_behind_it_whole(self):
        self.copy_example()
        inner = e2e.action("MESSAGE", 'Name="In"', Text="bad %Project%", Status="Error")
        for attributes, arguments, held_up in (('ContinueOnError="true"', (), 2), ("", ("--keep-going",), 4)):
            loop = (f'<Action Type="SOLUTIONITERATOR" Name="Loop" Parallel="true" {attributes}>'
                    "<LoopVariable>Project</LoopVariable><Solution>Greeter/Greeter.sln</Solution>"
                    "<SortByDependency>True</SortByDependency><IterateValue>svName</IterateValue>"
                    f"<Actions>{inner}</Actions></Action>\n")
            self.write("examples/p.kxproj", e2e.project(
                loop, message("Behind", 'Needs="Loop"'), message("Last", 'Needs="Behind"'),
                message("Free", 'Needs=""', status="Warning")))
            for jobs in 1, 2:
                with self.subTest(attributes, jobs=jobs):
                    self.host("run", "examples/p.kxproj", "--jobs", jobs, "--log", "log.jsonl", *arguments, *self.common, code=1)
                    ends = [(one["name"], one["result"]) for one in self.events("actionEnd") if one["nesting"] == 0]
                    self.assertEqual(sorted(ends), [("Behind", "skipped"), ("Free", "succeeded"), ("Last", "skipped"),
                                                    ("Loop", "failed")])
                    self.assertEqual(len(self.events("action")), len(self.events("actionEnd")))
                    texts = [one["text"] for one in self.events("message")]
                    self.assertEqual(sum(text.startswith("Skipped") for text in texts), held_up, texts)
                    for one in self.events("finding"):
                        self.assertEqual(texts[one["said"] - 1], one["message"])

    def test_a_stop_ends_all_parts_and_their_tools(self):
        builds = self.write_builds("A", "B", attributes={"A": 'Needs=""', "B": 'Needs=""'})
        self.write("p.kxproj", e2e.project(*builds))
        for name in "A", "B":
            self.write(f"tools/hold-{name}")
        host = self.start_host("run", "p.kxproj", "--jobs", "2", "--log", "log.jsonl", *self.common)
        e2e.wait_until(lambda: len(self.tool_runs()) == 2 or host.poll() is not None)
        host.send_signal(signal.SIGINT)
        output, _ = host.communicate(timeout=60)
        self.assertEqual(host.returncode, 130, output)
        self.assertNotIn("was ended by", output)
        self.assertEqual([one["result"] for one in self.events("actionEnd")], ["stopped", "stopped"])
        self.assertEqual(sorted(self.tool_runs()), ["begin A ", "begin B "])
        self.assertEqual(self.events("runEnd")[0]["result"], "stopped")
        self.assertTrue(e2e.wait_until(lambda: not self.running_tools()))
        killed = self.start_host("run", "p.kxproj", "--jobs", "2", *self.common)
        e2e.wait_until(lambda: len(self.tool_runs()) == 4 or killed.poll() is not None)
        killed.kill()
        self.assertTrue(e2e.wait_until(lambda: not self.running_tools()), "nothing outlives the program")

    def running_tools(self):
        marks = str(self.folder / "tools").encode()
        return [pid for pid in os.listdir("/proc") if pid.isdigit() and marks in read_command(pid)]

    def test_secrets_reach_parts_but_not_their_tools(self):
        builds = self.write_builds("A", "B", attributes={"A": 'Needs=""', "B": 'Needs=""'})
        self.write("p.kxproj", e2e.project(*builds, message("Tell", 'Needs=""', text="it is %Word%")))
        shown = self.run_parts("--set-secret", "Word", given="open sesame\n")
        self.assertIn("it is ***", shown)
        self.assertEqual(sorted(line for line in self.tool_runs() if "begin" in line), ["begin A ", "begin B "])
        self.assertNotIn("sesame", self.read("log.jsonl"))

    def test_a_resumed_run_passes_over_what_was_done_and_has_not_changed(self):
        def resumed(*arguments, code):
            self.run_parts(*arguments, code=code)
            return {one["name"]: one["result"] for one in self.events("actionEnd")}
        self.write_tool(TOOL.replace("here=", 'mkdir -p obj; date > "obj/$name"; here='))
        builds = []
        for name in "A", "B", "C":
            self.write(f"{name}/{name}.sln", e2e.solution(f"{name}.csproj", configuration="Debug|Any CPU"))
            self.write(f"{name}/{name}.csproj", "<Project/>")
            builds.append(e2e.build(f"{name}/{name}.sln", f'Name="{name}"' + ' Needs=""' * (name == "B")))
        self.write("p.kxproj", e2e.project(*builds))
        done, bad = {"A": "succeeded", "B": "succeeded"}, {"C": "failed"}
        self.write("tools/fail-C")
        self.write("p.kxproj", self.read("p.kxproj").replace(' Needs=""', ""))
        self.host("run", "p.kxproj", *self.common, code=1)  # in one process
        self.assertEqual(resumed("--resume", code=1), {"A": "skipped", "B": "skipped"} | bad)
        self.write("p.kxproj", e2e.project(*builds))
        self.assertEqual(resumed(code=1), done | bad)
        self.assertEqual(resumed("--resume", code=1), {"A": "skipped", "B": "skipped"} | bad)
        self.write("A/new.cs")
        self.assertEqual(resumed("--resume", code=1), {"A": "succeeded", "B": "skipped"} | bad)
        self.write("A/A.csproj", '<Compile Include="..\\common\\s.cs"/>')
        self.assertEqual(resumed("--resume", code=1), {"A": "succeeded", "B": "skipped"} | bad)
        self.write("common/s.cs")
        self.assertEqual(resumed("--resume", code=1), {"A": "succeeded", "B": "skipped"} | bad)
        self.write("B/obj/B", "by somebody else")
        self.write("tools/hold-B")  # in the middle of it a source is edited
        process = self.start_host("run", "p.kxproj", "--jobs", "2", "--resume", *self.common)
        e2e.wait_until(lambda: self.tool_runs()[-1].startswith("begin B"))
        self.write("B/new.cs")
        (self.folder / "tools/hold-B").unlink()
        self.assertEqual(process.wait(60), 1)
        self.assertEqual(resumed("--resume", code=1), {"A": "skipped", "B": "succeeded"} | bad)
        self.write("p.kxproj", self.read("p.kxproj").replace('Name="A"', 'Name="A" Condition="1"', 1))
        (self.folder / "tools/fail-C").unlink()
        self.assertEqual(resumed("--resume", code=0), {"A": "succeeded", "B": "skipped", "C": "succeeded"})
        self.assertEqual(resumed("--resume", code=0), done | {"C": "succeeded"}, "a run that succeeded leaves nothing to do")

    def test_what_a_run_did_not_do_is_neither_fixed_nor_green(self):
        def known():
            return [one["sinceRun"] for one in json.loads(self.host("history", "findings", "p.kxproj", "--json"))["findings"]]
        self.write("p.kxproj", e2e.project(*(message(f"Try {i}", text=f"try {i}", status="Warning") for i in (1, 2))))
        for jobs in 1, 2:  # which differ in no more than a number
            said = self.run_parts("--max-warnings", "1", "--no-history", jobs=jobs, code=4)
            self.assertIn("2 warnings, and no more than 1 are allowed", said)
        self.write("p.kxproj", e2e.project(*self.write_builds("A", "B")))
        self.run_parts()
        for jobs in 1, 2:
            said = self.run_parts("A", "--baseline", "known.txt", "--write-baseline", jobs=jobs, code=1)
            self.assertIn("the baseline is not written: the run is none that says all.", said)
            self.assertEqual(known(), [1, 1])
            self.write("tools/fail-A")
            self.run_parts(jobs=jobs, code=1)  # which ends before B
            (self.folder / "tools/fail-A").rename(self.folder / "tools/fail-B")
            self.run_parts("--fail-on", "warning", jobs=jobs, code=1)
            (self.folder / "tools/fail-B").unlink()
            # Passed over, A would tell of no warning.
            self.assertIn("2 warnings (fail on warning)", self.run_parts("--resume", "--fail-on", "warning", code=4))
            self.assertEqual(len(known()), 2)

    def test_numbers_are_counted_once_before_the_parts_begin(self):
        self.copy_example()
        self.write("examples/Greeter/again.sln", self.read("examples/Greeter/Greeter.sln"))
        counts = {"UpdateAssemblyInfo": True, "UpdateAssemblyVersion": True, "AutoIncAssemblyBuildNumber": True,
                  "AssemblyVersion": "1|2|3|4"}
        self.write("examples/p.kxproj", e2e.project(
            e2e.build("Greeter/Greeter.sln", 'Name="Stamp"', "Release|Any CPU", **counts), message("Other", 'Needs=""')))
        for jobs in 1, 2:
            self.host("run", "examples/p.kxproj", "--jobs", jobs, *self.common)
            self.assertIn(f"1|2|{3 + jobs}|4", self.read("examples/p.kxproj"))
            stamped = self.read("examples/Greeter/Greeter.Core/Properties/AssemblyInfo.cs")
            self.assertIn(f"1.2.{3 + jobs}.4", stamped)
        shown = self.host("run", "examples/p.kxproj", "--jobs", "2", "--no-save", *self.common)
        self.assertIn("so that all actions run in it", shown)  # other processes would not know the number
        self.assertIn("1|2|5|4", self.read("examples/p.kxproj"))
        self.assertIn("1.2.6.4", self.read("examples/Greeter/Greeter.Core/Properties/AssemblyInfo.cs"))


def read_command(pid):
    try:
        with open(f"/proc/{pid}/cmdline", "rb") as file:
            return file.read()
    except OSError:
        return b""


if __name__ == "__main__":
    unittest.main()
