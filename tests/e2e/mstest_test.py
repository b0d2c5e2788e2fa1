"""The MSTest action from the command line to the reported results, with a recorder in place of MSTest.exe."""
import json
import os
import pathlib
import unittest
import xml.etree.ElementTree

import e2e

# Notes its folder and arguments, and leaves results as MSTest does; ends as the test says.
TOOL = """#!/bin/bash
here="$(dirname "$0")"
{ pwd; printf '%s\\n' "$@"; } > "$here/call.txt"
for argument; do case "$argument" in
  /resultsfile:*) [ ! -e "${argument#*:}" ] && cp "$here/results.trx" "${argument#*:}" ;;
esac; done
echo "Passed  A"
exit "${EXIT_CODE:-1}"
"""
RESULTS = """<TestRun xmlns="http://microsoft.com/schemas/VisualStudio/TeamTest/2006"><Results>
<UnitTestResult testName="A" outcome="Passed" duration="00:00:01.5000000"/>
<UnitTestResult testName="B &lt;\u00e9&gt;" outcome="Failed" duration="00:00:00.0200000"><Output><ErrorInfo>
<Message>Expected: 1&#xD;\nActual: "2"</Message><StackTrace>at B</StackTrace></ErrorInfo></Output></UnitTestResult>
</Results></TestRun>"""
BOMB = "<!DOCTYPE r [<!ENTITY a 'aaaaaaaaaa'>" + "".join(
    f"<!ENTITY {after} '{f'&{name};' * 10}'>" for name, after in zip("abcdefgh", "bcdefghi")) + "]><r>&i;</r>"


class MSTestTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write("tool/MSTest.exe", TOOL, executable=True)
        self.write("tool/results.trx", RESULTS)
        (self.folder / "temporary").mkdir()

    def run_action(self, *properties, **environment):
        return self.run_program(
            e2e.BIN / "kxhost", "do", "MSTEST", "UseStandaloneMSTest=True", *properties, "--color", "never", "--log",
            "log.jsonl", "--junit", "junit.xml", "--report", "report.html", "--option", f"VisualStudioDotNet.StandaloneMSTestDir={self.folder / 'tool'}",
            TMPDIR=str(self.folder / "temporary"), **environment)

    def call(self):
        folder, *arguments = (self.folder / "tool/call.txt").read_text(encoding="utf-8").splitlines()
        return pathlib.Path(folder), arguments

    def metrics(self):
        lines = (self.folder / "log.jsonl").read_text(encoding="utf-8").splitlines()
        events = [event for event in map(json.loads, lines) if event["event"] == "metric"]
        self.assertEqual({event["category"] for event in events}, {"Unit_Tests"})
        return {event["name"]: event["value"] for event in events}

    def test_a_run_reports_its_tests_and_leaves_nothing_behind(self):
        (self.folder / "bin dir").mkdir()
        run = self.run_action("AssemblyFileName=\"bin dir/a.dll\"|b.dll")
        self.assertEqual(run.returncode, 1, run.stdout)
        folder, arguments = self.call()
        self.assertEqual(folder, self.folder / "bin dir", "that of the first container")
        self.assertEqual(arguments[:2] + arguments[3:], ["/testcontainer:bin dir/a.dll", "/testcontainer:b.dll", "/nologo"])
        self.assertRegex(arguments[2], r"^/resultsfile:.*/temporary/kx-\w{12}/MSTRE[^/.]+$")
        metrics = self.metrics()
        suite = xml.etree.ElementTree.fromstring(metrics.pop("Test_Results"))
        self.assertEqual(metrics, {"Test_Run_Name": "Run MSTest", "Tests_Successful": 1, "Tests_Failed": 1,
                                   "Tests_Not_Run": 0, "Tests_Run_Time": 1520})
        self.assertEqual([test.get("name") for test in suite.iter("testcase")], ["A", "B <\u00e9>"])
        self.assertEqual(suite.find("testcase/failure").get("message"), "Expected: 1\r\nActual: \"2\"")
        self.assertEqual(suite.find("testcase/failure").text, "Expected: 1\r\nActual: \"2\"\nat B")
        suites = xml.etree.ElementTree.parse(self.folder / "junit.xml").getroot()
        self.assertEqual((suites.tag, suites.get("tests"), suites.get("failures")), ("testsuites", "2", "1"))
        self.assertIn("<pre class=\"error\">Expected: 1\n", (self.folder / "report.html").read_text("utf-8"))
        self.assertEqual(os.listdir(self.folder / "temporary"), [])

    def test_hostile_names_stay_one_argument_each(self):
        (self.folder / "out dir").mkdir()
        name = "$(touch evil); `touch evil` & 'x' \\\" /publish:evil"
        quoted = name.replace('"', '""').replace("$", "$$")
        run = self.run_action("AssemblyFileName=a.dll", "SpecifyTests=True", f"Tests=\"{quoted}\",end\\",
                              f"OutputFileName={self.folder}/out dir/r.trx")
        self.assertEqual(run.returncode, 1, run.stdout)
        self.assertEqual(self.call()[1], ["/testcontainer:a.dll", f"/resultsfile:{self.folder}/out dir/r.trx",
                                          f"/test:{name}", "/test:end\\", "/nologo"])
        self.assertFalse(list(self.folder.rglob("evil")))
        self.assertTrue((self.folder / "out dir/r.trx").exists(), "the user's own file")

    def test_results_that_cannot_be_read_are_none_and_the_run_fails_with_the_reason(self):
        rows = [("cut off", RESULTS[:-20], "Premature end"), ("a bomb", BOMB, "document type"), ("empty", "", "is empty"),
                ("no XML", "\x00\x01", "is empty")]
        for what, results, reason in rows:
            with self.subTest(what):
                self.write("tool/results.trx", results)
                run = self.run_action("AssemblyFileName=a.dll", EXIT_CODE="0")
                self.assertEqual(run.returncode, 1, run.stdout)
                self.assertRegex(run.stdout, f"The results file .* cannot be read: .*{reason}")
                self.assertEqual(self.metrics()["Tests_Successful"], 0)
                inspected = self.run_program(e2e.BIN / "kxhost", "inspect", "tool/results.trx", "--json")
                self.assertIn('{"results":[],"passed":0,"failed":0,"notRun":0,"totalMs":0}', inspected.stdout)

    def test_the_exit_code_and_the_settings_decide(self):
        self.assertEqual(self.run_action("AssemblyFileName=a.dll", EXIT_CODE="1").returncode, 1)
        self.assertEqual(self.metrics()["Tests_Successful"], 1)
        self.write("tool/results.trx", RESULTS.replace("Failed", "Passed"))
        self.assertEqual(self.run_action("AssemblyFileName=a.dll", EXIT_CODE="0").returncode, 0)
        run = self.run_action("AssemblyFileName=a b.dll\nc.dll", "StartingDirectory=.", EXIT_CODE="0")
        self.assertEqual((run.returncode, self.call()[1][:2]), (0, ["/testcontainer:a b.dll", "/testcontainer:c.dll"]))
        run = self.run_action("AssemblyFileName=a.dll", "PublishMode=pbSpecify")
        self.assertEqual(run.returncode, 1)
        self.assertIn("Team Server Name : a value is required.", run.stdout)

    def test_validation_misses_containers_that_nothing_before_makes(self):
        tests = """<Action Type="MSTEST"><UseStandaloneMSTest>True</UseStandaloneMSTest>
            <AssemblyFileName>gone.dll</AssemblyFileName></Action>"""
        for before, missed in [("", 1), (tests, 2), ('<Action Type="DEVENV"><Solution>a.sln</Solution></Action>', 0)]:
            self.write("p.kxproj", f"<BuildProject><Actions>{before}{tests}</Actions></BuildProject>")
            run = self.run_program(e2e.BIN / "kxhost", "validate", "p.kxproj", "--option",
                                   f"VisualStudioDotNet.StandaloneMSTestDir={self.folder / 'tool'}")
            self.assertEqual((run.returncode, run.stdout.count("There is no file")), (3, missed), run.stdout)

    def test_inspection_shows_results_to_programs_and_people(self):
        shown = self.run_program(e2e.BIN / "kxhost", "inspect", "tool/results.trx", "--json", "tool/results.trx", "no.trx")
        self.assertEqual(shown.returncode, 1, "one file is missing")
        first, second, missing = map(json.loads, shown.stdout.splitlines())
        self.assertEqual(first, second)
        self.assertEqual(list(first), ["file", "results", "passed", "failed", "notRun", "totalMs"])
        self.assertEqual(first["results"][1], {
            "passed": False, "executed": True, "testName": "B <\u00e9>", "errorMessage": "Expected: 1\r\nActual: \"2\"",
            "stackTrace": "at B", "durationMs": 20, "startTime": None, "endTime": None})
        self.assertIn("no.trx", missing["error"])
        self.assertEqual(self.run_program(e2e.BIN / "kxhost", "inspect", "tool/results.trx").stdout,
                         "Passed   1\nFailed   1\nNot run  0\nTime     1520 ms\n  B <\u00e9>: Expected: 1\n")


if __name__ == "__main__":
    unittest.main()
