"""What a run is called at its end, and everything that says so: table, exit code, log, report, terminal."""
import os
import pty
import re
import subprocess
import unittest

import e2e

# Fails for the configurations that the test names.
TOOL = """for part in "$@"; do
  case "$part" in /p:*) configuration=${part#/p:Configuration=}; configuration=${configuration%%;*};; esac
done
echo started >> runs.txt
[[ "$FAIL" != *"$configuration"* ]]"""
BUILD = e2e.build("Greeter\\Greeter.sln", 'Name="Build"')
UNSET = BUILD.replace("Greeter\\Greeter.sln", "")


class VerdictTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write_tool(TOOL)
        self.examples = self.copy_example()
        self.runs = self.examples / "Greeter/runs.txt"

    def command(self, *actions):
        project = e2e.project(*(actions or (BUILD,)), attributes='Name="Own"')
        return ["run", self.write("examples/own.kxproj", project), *self.tools]

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
                actions = (e2e.build("Greeter\\Greeter.sln", 'Name="First"' + attributes),
                           e2e.build("Greeter\\Greeter.sln", 'Name="Second"', "Release|Any CPU"))
                shown = self.host(*self.command(*actions), "--log", "log.jsonl", "--report", "report.html", FAIL=fail, code=code)
                end = shown[shown.index("Action  "):]
                self.assertEqual(dict(re.findall(r"^(\w+) .*? (succeeded|failed|ignored) ", end, re.MULTILINE)), results, end)
                for line in (f"\n{headline.capitalize()}: ", f"Report written to {self.folder}/report.html",
                             f"Log written to {self.folder}/log.jsonl"):
                    self.assertIn(line, end)
                self.assertEqual([(last["result"], last["succeeded"]) for last in self.events("runEnd")], [(headline, code == 0)])
                self.assertIn(f"<title>Own: {headline}</title>", self.read("report.html"))

    def test_a_dry_run_shows_what_it_is_for_unless_it_is_to_be_quiet(self):
        for verbosity, count in (("quiet", 0), ("minimal", 2)):
            command = self.command(e2e.build("Greeter\\Greeter.sln", 'Name="Build"', ".*"))
            shown = self.host(*command, "--dry-run", "--verbosity", verbosity)
            self.assertEqual(shown.count("this would start"), count, shown)
            self.assertEqual(len(re.findall(r"^Build .*\|Any CPU +would run ", shown, re.MULTILINE)), 2, shown)
            self.assertFalse(self.runs.exists())

    def test_output_that_cannot_be_written_is_no_success(self):
        rows = [
            # where standard output goes, arguments, what standard error says
            ("/dev/full", (), "standard output could not be written. No space left on device"),
            ("/dev/null", (), ""),
            ("/dev/null", ("--log", "/dev/full"), "the log /dev/full could not be written completely."),
        ]
        for output, arguments, said in rows:
            with self.subTest(output + " ".join(arguments)), open(output, "wb") as stream:
                run = self.start_host(*self.command(), *arguments, stdout=stream, stderr=subprocess.PIPE)
                self.assertIn(said, run.communicate(timeout=60)[1])
                self.assertEqual(run.returncode, 1 if said else 0)

    def test_a_report_that_is_not_written_leaves_the_one_before(self):
        self.write_tool("yes 'src/a.cpp(1): a line of a long log' | head -n 20000", "touch said", "sleep $SECONDS_LEFT")
        command = [*self.command(), "--report", "out/report.html", "--verbosity", "quiet"]
        report = self.write("out/report.html", "as it was")

        said = self.examples / "Greeter/said"
        run = self.start_host(*command, environment={"SECONDS_LEFT": "3"})
        e2e.wait_until(lambda: said.exists() or run.poll() is not None)
        run.kill()
        run.wait()
        self.assertEqual(report.read_text(encoding="utf-8"), "as it was")
        self.assertEqual(os.listdir(report.parent), [report.name])
        self.host(*command, SECONDS_LEFT="0")
        self.assertEqual(report.read_text(encoding="utf-8").count("a line of a long log"), 20000)

    def test_outputs_that_cannot_be_written_are_refused_before_the_run(self):
        self.write("own/readonly.html", "old").chmod(0o444)
        os.link(self.write("own/twin.html", "old"), self.folder / "own/other.html")
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
        for options, target, said in rows:
            for option in options:
                with self.subTest(f"{option} {target}"):
                    self.assertRegex(self.host(*self.command(), option, target, code=2), f"{option}: .*{re.escape(said)}")
        for one, other in ("a.out", "A.OUT"), ("a.out", "own/../a.out"), ("own/readonly.html", "own/readonly.html"):
            self.host(*self.command(), "--log", one, "--report", other, code=2)
        self.assertFalse(self.runs.exists(), "a build was started")
        self.assertFalse((self.folder / "a.out").exists())

    def test_what_a_run_leaves_replaces_nothing_that_was_written_by_hand(self):
        command = self.command()
        (self.examples / "link.jsonl").symlink_to("own.kxproj")
        os.link(self.examples / "own.kxproj", self.examples / "hard.jsonl")
        self.write("examples/Old.TXT", e2e.solution())
        self.write("examples/old.log", '{"message": "Microsoft Visual Studio Solution File, Format Version 8.00"}\n')
        options = self.write("config/kxhost/options.ini")
        sources = {file: file.read_bytes() for file in self.examples.rglob("*") if file.is_file() and file.name != "old.log"}
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
                    shown = self.host(*command, option, target, code=2 if what else 0)
                    self.assertIn(f"{option}: " if what else "Succeeded", shown)
                    self.assertIn(f" is {what} and would be replaced." if what else "", shown)
        self.assertEqual({file: file.read_bytes() for file in sources}, sources)

    def test_settings_are_refused_before_anything_is_started(self):
        self.assertIn("failed (settings)", self.host(*self.command(UNSET, BUILD), code=3))
        self.assertFalse(self.runs.exists())
        self.assertIn("Solution file : A solution file has not been set", self.host(*self.command(BUILD, UNSET), code=1))

    def test_no_escape_sequence_reaches_a_terminal_that_wants_none(self):
        for wish, escapes in (({}, True), ({"NO_COLOR": "1"}, False), ({"TERM": "dumb"}, False)):
            with self.subTest(wish):
                leader, follower = pty.openpty()
                run = self.start_host(*self.command(), environment={"TERM": "xterm", **wish}, stdout=follower, stderr=follower)
                os.close(follower)
                seen = e2e.shown(leader)
                os.close(leader)
                self.assertEqual((run.wait(60), b"\x1b" in seen), (0, escapes), seen)

    def test_the_rules_are_described_as_the_program_knows_them(self):
        listed = re.findall(r"^  ([a-z]+(?:-[a-z]+)+) +(.+)$", self.host("run", "--help").partition("Rules (")[2], re.MULTILINE)
        page = (e2e.ROOT / "docs/verdict.md").read_text(encoding="utf-8").partition("## Rules")[2]
        self.assertEqual(re.findall(r"^\| `([a-z-]+)` \| (.+?) \| error \|", page, re.MULTILINE), listed)
        self.assertIn("nothing-built", dict(listed))


if __name__ == "__main__":
    unittest.main()
