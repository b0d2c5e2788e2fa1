"""What a run is called at its end, and everything that says so: table, exit code, log, report, terminal."""
import json
import os
import pty
import re
import resource
import signal
import subprocess
import unittest

import e2e

# Fails for the configurations that the test names, and may wait in the first.
TOOL = """#!/bin/bash
for part in "$@"; do case "$part" in /p:*) configuration=${part#/p:Configuration=}; configuration=${configuration%%;*};; esac; done
echo started >> runs.txt
while [ -n "$HOLD" ]; do sleep 0.02; done
[[ "$FAIL" != *"$configuration"* ]]
"""
BUILD = """<Action Type="DEVENV" Name="{name}"{attributes}><Solution>Greeter\\Greeter.sln</Solution><VStudioVersion>vs2010</VStudioVersion>
<SolutionConfiguration>{configuration}</SolutionConfiguration></Action>"""


class VerdictTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write("framework/MSBuild.exe", TOOL, executable=True)
        self.examples = self.copy_example()

    def command(self, verb, *arguments):
        return [str(part) for part in (e2e.BIN / "kxhost", verb, *arguments,
                                       "--option", f"DotNetFramework.v4.0={self.folder / 'framework'}")]

    def project(self, actions, head=""):
        return self.write("examples/own.kxproj", f"<BuildProject Name='Own'>{head}<Actions>{actions}</Actions></BuildProject>")

    def build(self, configuration="Debug|Any CPU", attributes="", name="Build"):
        return BUILD.format(name=name, attributes=attributes, configuration=configuration)

    def run_project(self, actions, *arguments, **environment):
        return self.run_program(*self.command("run", self.project(actions), *arguments), **environment)

    def test_what_follows_from_a_failure(self):
        rows = [
            # attributes of the first action, what fails, exit code, headline, rows of the table
            ("", "", 0, "succeeded", {"First": "succeeded", "Second": "succeeded"}),
            ("", "Debug", 1, "failed", {"First": "failed"}),
            (" ContinueOnError='true'", "Debug", 1, "finished with failures", {"First": "failed", "Second": "succeeded"}),
            (" ContinueOnError='true'", "DebugRelease", 1, "failed", {"First": "failed", "Second": "failed"}),
            (" ContinueOnError='ignore'", "Debug", 0, "succeeded", {"First": "ignored", "Second": "succeeded"}),
        ]
        for attributes, fail, code, headline, results in rows:
            with self.subTest(attributes + fail):
                run = self.run_project(self.build(attributes=attributes, name="First") + self.build("Release|Any CPU", name="Second"),
                                       "--log", "log.jsonl", "--report", "report.html", FAIL=fail)
                self.assertEqual(run.returncode, code, run.stdout)
                end = run.stdout[run.stdout.index("Action  "):]
                shown = dict(re.findall(r"^(\w+) .*? ((?:succeeded|failed|ignored)) ", end, re.MULTILINE))
                self.assertEqual(shown, results, end)
                self.assertIn(f"\n{headline.capitalize()}: ", end)
                for line in (f"Report written to {self.folder}/report.html", f"Log written to {self.folder}/log.jsonl"):
                    self.assertIn(line, end)
                last = json.loads((self.folder / "log.jsonl").read_text(encoding="utf-8").splitlines()[-1])
                self.assertEqual((last["event"], last["result"], last["succeeded"]), ("runEnd", headline, code == 0))
                self.assertIn(f"<title>Own: {headline}</title>", (self.folder / "report.html").read_text(encoding="utf-8"))

    def test_a_dry_run_shows_what_it_is_for_unless_it_is_to_be_quiet(self):
        for verbosity, shown in (("quiet", False), ("minimal", True), ("normal", True)):
            with self.subTest(verbosity):
                run = self.run_project(self.build(".*"), "--dry-run", "--verbosity", verbosity)
                self.assertEqual(run.returncode, 0, run.stdout)
                self.assertEqual(run.stdout.count("this would start"), 2 if shown else 0, run.stdout)
                self.assertEqual(len(re.findall(r"^Build .*\|Any CPU +would run ", run.stdout, re.MULTILINE)), 2, run.stdout)
                self.assertFalse((self.examples / "Greeter/runs.txt").exists())

    def test_output_that_cannot_be_written_is_no_success(self):
        rows = [
            # where standard output goes, arguments, what standard error says
            ("/dev/full", (), "standard output could not be written. No space left on device"),
            ("/dev/null", (), ""),
            ("/dev/null", ("--log", "/dev/full"), "the log /dev/full could not be written completely."),
        ]
        command = self.command("run", self.project(self.build()))
        for output, arguments, said in rows:
            with self.subTest(output + " ".join(arguments)), open(output, "wb") as stream:
                run = subprocess.run([*command, *arguments], cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
                                     stdout=stream, stderr=subprocess.PIPE, encoding="utf-8", timeout=60, check=False)
                self.assertIn(said, run.stderr)
                self.assertEqual(run.returncode, 1 if said else 0, run.stderr)

    def test_a_report_that_is_not_written_leaves_the_one_before(self):
        tool = "#!/bin/bash\nyes 'src/a.cpp(1): warning C1: a line of a long log' | head -n 20000\ntouch said\nsleep $SECONDS_LEFT\n"
        self.write("framework/MSBuild.exe", tool, executable=True)
        command = self.command("run", self.project(self.build()), "--report", "out/report.html", "--verbosity", "quiet")
        report = self.write("out/report.html", "as it was")

        def shrink_files():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (500_000, 500_000))
        run = subprocess.run(command, cwd=self.folder, env={**self.environment, "SECONDS_LEFT": "0"}, stdin=subprocess.DEVNULL,
                             capture_output=True, encoding="utf-8", timeout=60, check=False, preexec_fn=shrink_files)
        self.assertIn(f"the report could not be written. Cannot write file {report}. File too large", run.stderr)
        self.assertEqual(run.returncode, 1, run.stdout)

        (self.examples / "Greeter/said").unlink()
        with subprocess.Popen(command, cwd=self.folder, env={**self.environment, "SECONDS_LEFT": "3"}, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL) as host:
            e2e.wait_until(lambda: (self.examples / "Greeter/said").exists() or host.poll() is not None)
            host.kill()
        self.assertEqual(report.read_text(encoding="utf-8"), "as it was")
        self.assertEqual(os.listdir(report.parent), [report.name])

        run = self.run_program(*command, SECONDS_LEFT="0")
        self.assertEqual(report.read_text(encoding="utf-8").count("a line of a long log"), 20000, run.stdout)

    def test_outputs_that_cannot_be_written_are_refused_before_the_run(self):
        self.write("own/readonly.html", "old").chmod(0o444)
        self.write("own/twin.html", "old")
        os.link(self.folder / "own/twin.html", self.folder / "own/other.html")
        (self.folder / "own/loop").symlink_to("loop")
        os.mkfifo(self.folder / "own/pipe")
        everything, reports = ("--log", "--report", "--junit"), ("--report", "--junit")
        rows = [
            # which options, target, what is said
            (everything, "own", "own is a folder."), (everything, "none/a.html", "there is no folder "),
            (everything, "own/readonly.html", "Permission denied"), (everything, "own/twin.html", "It has 2 names (hard links)"),
            (everything, "own/loop", "Too many levels of symbolic links"), (reports, "/dev/full", "Invalid argument"),
            (reports, "own/pipe", "Invalid argument"),
        ]
        command = self.command("run", self.project(self.build()))
        for options, target, said in rows:
            for option in options:
                with self.subTest(f"{option} {target}"):
                    run = self.run_program(*command, option, target)
                    self.assertEqual(run.returncode, 2, run.stdout)
                    self.assertRegex(run.stdout, f"{option}: .*{re.escape(said)}")
        for one, other in ("a.out", "A.OUT"), ("a.out", "own/../a.out"), ("own/readonly.html", "own/readonly.html"):
            run = self.run_program(*command, "--log", one, "--report", other)
            self.assertEqual(run.returncode, 2, run.stdout)
        self.assertFalse((self.examples / "Greeter/runs.txt").exists(), "a build was started")
        self.assertFalse((self.folder / "a.out").exists())

    def test_what_a_run_leaves_replaces_nothing_that_was_written_by_hand(self):
        project = self.project(self.build())
        (self.examples / "link.jsonl").symlink_to(project)
        os.link(project, self.examples / "hard.jsonl")
        self.write("examples/Old.TXT", "Microsoft Visual Studio Solution File, Format Version 8.00\nGlobal\nEndGlobal\n")
        self.write("examples/old.log", '{"message": "Microsoft Visual Studio Solution File, Format Version 8.00"}\n')
        options = self.write("config/kxhost/options.ini", "")
        sources = {file: file.read_bytes() for file in self.examples.rglob("*") if file.is_file()}
        rows = [
            # target, what it is; nothing: it may be replaced
            ("examples/own.kxproj", "a build project"), ("examples\\OWN.KXPROJ", "a build project"),
            ("examples/../examples/link.jsonl", "a build project"), ("examples/hard.jsonl", "a build project"),
            ("examples/Greeter/Greeter.sln", "a solution"), ("examples/Old.TXT", "a solution"),
            ("examples/Greeter/Greeter.Text/Greeter.Text.csproj", "a project of Visual Studio"),
            ("examples/Greeter/Greeter.Text/Greeting.cs", "a source"), (options, "a file of this run"),
            ("examples/old.log", ""), ("new.log", ""),
        ]
        for target, what in rows:
            for option in "--log", "--report", "--junit":
                with self.subTest(f"{option} {target}"):
                    run = self.run_program(*self.command("run", project, option, target))
                    self.assertEqual(run.returncode, 2 if what else 0, run.stdout)
                    self.assertIn(f"{option}: " if what else "Succeeded", run.stdout)
                    self.assertIn(f" is {what} and would be replaced." if what else "", run.stdout)
        for file, content in sources.items():
            self.assertTrue(file.name == "old.log" or file.read_bytes() == content, file)

    def test_a_stop_ends_the_configuration_and_starts_no_other(self):
        command = [*self.command("run", self.project(self.build(".*"))), "--log", "log.jsonl"]
        with subprocess.Popen(command, cwd=self.folder, env={**self.environment, "HOLD": "1"}, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8") as host:
            self.addCleanup(e2e.kill_quietly, host.pid)
            e2e.wait_until(lambda: (self.examples / "Greeter/runs.txt").exists() or host.poll() is not None)
            host.send_signal(signal.SIGINT)
            output, _ = host.communicate(timeout=60)
        self.assertEqual(host.returncode, 130, output)
        self.assertEqual(output.count("Running "), 1, output)
        end = output[output.index("Action  "):]
        self.assertNotIn("failed", end)
        self.assertIn("Stopped: 1 stopped; 0 errors, 0 warnings; ", end)

    def test_settings_are_refused_before_anything_is_started(self):
        run = self.run_project(self.build() + self.build().replace("Greeter\\Greeter.sln", ""), "--verbosity", "minimal")
        self.assertEqual(run.returncode, 1, run.stdout)
        self.assertIn("Solution file : A solution file has not been set", run.stdout)
        run = self.run_project(self.build().replace("Greeter\\Greeter.sln", "") + self.build())
        self.assertEqual(run.returncode, 3, run.stdout)
        self.assertIn("failed (settings)", run.stdout)
        self.assertEqual((self.examples / "Greeter/runs.txt").read_text(encoding="utf-8").split(), ["started"], run.stdout)

    def test_validate_finds_what_a_run_would_stumble_over(self):
        loop = "<Action Type='SOLUTIONITERATOR' Name='Loop'><Solution>Greeter\\Greeter.sln</Solution><LoopVariable>P</LoopVariable>{}</Action>"
        extra = "<ExtraCmdLineParams>{}</ExtraCmdLineParams></Action>"
        variables = "<Variables><Variable Name='Root'>Greeter</Variable>{}</Variables>"
        with_extra = lambda text: self.build().replace("</Action>", extra.format(text))
        rows = [
            # actions, variables, what is said (nothing: no problems)
            (self.build(), "", ""),
            (loop.format(f"<Actions>{with_extra('%P% %CURRENTCONFIGNAME%')}</Actions>"), "", ""),
            (self.build().replace("Greeter\\", "%Rot%\\"), "", 'Build: Solution: Unknown name "Rot". Did you mean "Root"?'),
            (with_extra("%P%"), "", 'Build: ExtraCmdLineParams: Unknown name "P".'),
            (loop.format(f"<Actions>{with_extra('%P%%Q%')}</Actions>"), "", 'Build: ExtraCmdLineParams: Unknown name "Q".'),
            (self.build(), "<Variable Name='A'>%B%</Variable><Variable Name='B'>%A%</Variable>",
             'Project: Variables: The variable "A" refers to itself: A, B, A.'),
            (loop.format(""), "", "Loop: Actions: The loop holds no actions. Add one."),
            ("", "", "Project: Actions: The project holds no actions. Add one."),
        ]
        for actions, more, said in rows:
            with self.subTest(said or actions):
                project = self.project(actions, variables.format(more))
                run = self.run_program(*self.command("validate", project))
                self.assertEqual(run.returncode, 3 if said else 0, run.stdout)
                self.assertEqual(run.stdout, f"{said or 'No problems found.'}\n")

    def test_no_escape_sequence_reaches_a_terminal_that_wants_none(self):
        for wish, escapes in (({}, True), ({"NO_COLOR": "1"}, False), ({"TERM": "dumb"}, False)):
            with self.subTest(wish):
                leader, follower = pty.openpty()
                with subprocess.Popen(self.command("run", self.project(self.build())), cwd=self.folder,
                                      env={**self.environment, "TERM": "xterm", **wish}, stdin=subprocess.DEVNULL,
                                      stdout=follower, stderr=follower) as host:
                    os.close(follower)
                    seen = b""
                    with os.fdopen(leader, "rb", buffering=0) as terminal:
                        try:
                            while part := terminal.read(4096):
                                seen += part
                        except OSError:  # the program at the other end has gone
                            pass
                self.assertEqual(host.returncode, 0, seen)
                self.assertEqual(b"\x1b" in seen, escapes, seen)

    def test_the_rules_are_described_as_the_program_knows_them(self):
        listed = re.findall(r"^  ([a-z]+(?:-[a-z]+)+) +(.+)$",
                            self.run_program(e2e.BIN / "kxhost", "run", "--help").stdout.partition("Rules (")[2], re.MULTILINE)
        page = (e2e.ROOT / "docs/verdict.md").read_text(encoding="utf-8").partition("## Rules")[2]
        self.assertEqual(re.findall(r"^\| `([a-z-]+)` \| (.+?) \| error \|", page, re.MULTILINE), listed)
        self.assertIn("nothing-built", dict(listed))


if __name__ == "__main__":
    unittest.main()
