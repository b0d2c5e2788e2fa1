"""The MSTest action from the command line to the reported results, with a recorder in place of MSTest.exe."""
import json
import os
import unittest
import xml.etree.ElementTree

import e2e

# Notes its folder and arguments, and leaves results as MSTest does; ends as the test says.
TOOL = """here="$(dirname "$0")"
{ pwd; printf '%s\\n' "$@"; } > "$here/call.txt"
for argument; do case "$argument" in
  /resultsfile:*) [ ! -e "${argument#*:}" ] && cp "$here/results.trx" "${argument#*:}" ;;
esac; done
exit 1"""
RESULTS = """<TestRun xmlns="http://microsoft.com/schemas/VisualStudio/TeamTest/2006"><Results>
<UnitTestResult testName="A" outcome="Passed" duration="00:00:01.5000000"/>
<UnitTestResult testName="B &lt;\u00e9&gt;" outcome="Failed" duration="00:00:00.0200000"><Output><ErrorInfo>
<Message>Expected: 1&#xD;\nActual: "2"</Message><StackTrace>at B</StackTrace></ErrorInfo></Output></UnitTestResult>
</Results></TestRun>"""


class MSTestTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write_tool(TOOL, name="tools/MSTest.exe")
        self.write("tools/results.trx", RESULTS)

    def run_action(self, *properties):
        return self.host("do", "MSTEST", "UseStandaloneMSTest=True", *properties, "--color", "never", "--log", "log.jsonl",
                         "--junit", "junit.xml", "--report", "report.html", "--option",
                         f"VisualStudioDotNet.StandaloneMSTestDir={self.folder / 'tools'}", code=1)

    def call(self):
        folder, *arguments = self.read("tools/call.txt").splitlines()
        return folder, arguments

    def test_a_run_reports_its_tests_and_leaves_nothing_behind(self):
        (self.folder / "bin dir").mkdir()
        self.run_action('AssemblyFileName="bin dir/a.dll"|b.dll')
        folder, arguments = self.call()
        self.assertEqual(folder, str(self.folder / "bin dir"), "that of the first container")
        self.assertEqual(arguments[:2] + arguments[3:], ["/testcontainer:bin dir/a.dll", "/testcontainer:b.dll", "/nologo"])
        self.assertRegex(arguments[2], r"^/resultsfile:.*/temporary/kx-\w{12}/MSTRE[^/.]+$")
        metrics = self.metrics()
        suite = xml.etree.ElementTree.fromstring(metrics.pop("Test_Results"))
        self.assertEqual(metrics, {"Test_Run_Name": "Run MSTest", "Tests_Successful": 1, "Tests_Failed": 1,
                                   "Tests_Not_Run": 0, "Tests_Run_Time": 1520})
        self.assertEqual([test.get("name") for test in suite.iter("testcase")], ["A", "B <\u00e9>"])
        failure = suite.find("testcase/failure")
        message = "Expected: 1\r\nActual: \"2\""
        self.assertEqual((failure.get("message"), failure.text), (message, f"{message}\nat B"))
        suites = xml.etree.ElementTree.parse(self.folder / "junit.xml").getroot()
        self.assertEqual((suites.tag, suites.get("tests"), suites.get("failures")), ("testsuites", "2", "1"))
        self.assertIn("<pre class=error>Expected: 1\n", self.read("report.html"))
        self.assertEqual(os.listdir(self.temporary), [])

    def test_only_the_attempt_that_counts_has_tests_and_rows(self):
        self.write_tool(TOOL.replace("exit 1", 'mv "$here/passed.trx" "$here/results.trx" || exit 0; exit 1'),
                        name="tools/MSTest.exe")
        self.write("s.sln", e2e.solution("a.csproj", configuration="Debug|Any CPU"))
        self.write("a.csproj", "<Project/>")

        def action(attributes):
            return e2e.action("MSTEST", f'Name="T" {attributes}', UseStandaloneMSTest="True", AssemblyFileName="a.dll")
        loop = ('<Action Type="SOLUTIONITERATOR" Name="L" Retries="2"><LoopVariable>P</LoopVariable><Solution>s.sln</Solution>'
                f"<IterateValue>svName</IterateValue><Actions>{action('')}</Actions></Action>")
        for actions, suite in (action('Retries="1"'), "T"), (loop, "T (a)"):
            self.write("p.kxproj", e2e.project(actions))
            self.write("tools/results.trx", RESULTS)
            self.write("tools/passed.trx", RESULTS.replace("Failed", "Passed"))
            shown = self.host("run", "p.kxproj", "--color", "never", "--no-history", "--log", "log.jsonl", "--junit", "junit.xml",
                              "--option", f"VisualStudioDotNet.StandaloneMSTestDir={self.folder / 'tools'}")
            told = self.host("report", "log.jsonl", "--color", "never", "--junit", "again.xml")
            for file in "junit.xml", "again.xml":
                suites = xml.etree.ElementTree.parse(self.folder / file).getroot()
                self.assertEqual((suites.get("tests"), suites.get("failures")), ("2", "0"), file)
                self.assertEqual([each.get("name") for each in suites], [suite], file)
            self.assertNotRegex(shown + told, r", \d failed")

    def test_hostile_names_stay_one_argument_each(self):
        (self.folder / "out dir").mkdir()
        name = "$(touch evil); `touch evil` & 'x' \\\" /publish:evil"
        quoted = name.replace('"', '""').replace("$", "$$")
        self.run_action("AssemblyFileName=a.dll", "SpecifyTests=True", f"Tests=\"{quoted}\",end\\",
                        f"OutputFileName={self.folder}/out dir/r.trx")
        self.assertEqual(self.call()[1], ["/testcontainer:a.dll", f"/resultsfile:{self.folder}/out dir/r.trx",
                                          f"/test:{name}", "/test:end\\", "/nologo"])
        self.assertFalse(list(self.folder.rglob("evil")))
        self.assertTrue((self.folder / "out dir/r.trx").exists(), "the user's own file")

    def test_inspection_shows_results_to_programs_and_people(self):
        shown = self.host("inspect", "tools/results.trx", "--json", "tools/results.trx", "no.trx", code=1)
        first, second, missing = map(json.loads, shown.splitlines())
        self.assertEqual(first, second)
        self.assertEqual(list(first), ["file", "results", "passed", "failed", "notRun", "totalMs"])
        self.assertEqual(first["results"][1], {
            "passed": False, "executed": True, "testName": "B <\u00e9>", "errorMessage": "Expected: 1\r\nActual: \"2\"",
            "stackTrace": "at B", "durationMs": 20, "startTime": None, "endTime": None})
        self.assertIn("no.trx", missing["error"])
        self.assertEqual(self.host("inspect", "tools/results.trx"),
                         "Passed   1\nFailed   1\nNot run  0\nTime     1520 ms\n  B <\u00e9>: Expected: 1\n")


if __name__ == "__main__":
    unittest.main()
