"""What tools, tests and rules find wrong: one list, the files that are made of it, and the gates over it."""
import json
import re
import unittest

import e2e


class FindingsTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write_tool('cat "$(dirname "$0")/output"; exit 0')
        self.write("Own.sln", e2e.solution("a.csproj", configuration="Debug|Any CPU"))
        self.write("p.kxproj", e2e.project(e2e.build("Own.sln", 'Name="Build"')))

    def run_with(self, *lines, code=0, arguments=(), **environment):
        self.write("tools/output", "\n".join(lines) + "\n")
        return self.host("run", "p.kxproj", "--log", "log.jsonl", *arguments, *self.tools, code=code, **environment)

    def test_only_what_is_new_stops_a_run(self):
        baseline = ("--baseline", "known.txt")
        old = "a.c({},5): warning C4101: unused 'x'"
        self.write("a.c", "int f() {\n  int x;\n}\n")
        shown = self.run_with(old.format(2), arguments=baseline)
        self.assertIn("nothing is held up; --write-baseline writes it", shown)
        self.run_with(old.format(2), arguments=(*baseline, "--write-baseline"))
        self.assertRegex(self.read("known.txt"), r"(?m)^[0-9a-f]{16} a\.c: warning C4101: unused 'x'$")
        self.write("a.c", "\n\nint f() {\n  int x;\n}\n")
        self.assertIn("0 new, 1 known, 0 fixed\n", self.run_with(old.format(4), arguments=baseline))
        shown = self.run_with(old.format(4), "a.c(5): warning C4717: f", arguments=baseline, code=4)
        self.assertIn("1 new, 1 known, 0 fixed\na.c:5: warning C4717: f\nStopped by a gate: 1 new warning", shown)
        self.run_with(old.format(4), arguments=("--max-warnings", "0"), code=4)
        self.write("p.kxproj", self.read("p.kxproj").replace("<Actions>", '<Gates FailOn="warning"/><Actions>', 1))
        self.run_with(old.format(4), code=4)
        self.run_with(old.format(4), arguments=("--fail-on", "never"))
        self.host("run", "p.kxproj", "--write-baseline", *self.tools, code=2)

    def test_files_for_other_programs_hold_each_thing_once(self):
        self.run_with("2>b c.c(3): warning C1: {t}", "3>b c.c(3): warning C1: {t}", "LINK : fatal error LNK1104: no",
                      "b.h(1) : see declaration of 'z'",
                      arguments=("--sarif", "f.sarif", "--code-quality", "q.json", "--rule", "errors-counted=off"))
        found = self.events("finding")
        self.assertEqual([(one["rule"], one["line"], one["occurrences"], one["action"]) for one in found],
                         [("C1", 3, 2, "Build"), ("LNK1104", None, 1, "Build")])
        sarif = json.loads(self.read("f.sarif"))["runs"][0]
        places = [one["locations"][0]["physicalLocation"]["artifactLocation"] for one in sarif["results"]]
        self.assertEqual([place["uri"] for place in places], ["p.kxproj", "b%20c.c"])
        self.assertEqual([one["message"]["text"] for one in sarif["results"]], ["no", "{{t}}"])
        self.assertEqual({one["fingerprint"] for one in json.loads(self.read("q.json"))},
                         {one["fingerprint"] for one in found})

    def test_the_end_of_a_run_says_where_the_rest_is(self):
        elsewhere = "(--report FILE.html or --sarif FILE.sarif shows all)"
        for outputs, rest in (("", elsewhere), ("--junit j.xml", elsewhere), ("--sarif f.sarif", "in f.sarif"),
                              ("--code-quality q.json", "in q.json"), ("--report r.html --junit j.xml", "in r.html")):
            shown = self.run_with(*(f"a.c({line}): warning C{line}: x" for line in range(1, 31)), arguments=outputs.split())
            self.assertRegex(shown, rf"(?m)^a\.c:1: warning C1: x\n(?:a\.c.*\n){{19}}and 10 more {re.escape(rest)}$")

    def test_reports_from_a_log_are_those_of_its_run(self):
        files = {"--report": "r.html", "--junit": "j.xml", "--sarif": "f.sarif", "--code-quality": "q.json"}
        outputs = [word for pair in files.items() for word in pair]
        shown = self.run_with("c.c(3): warning C1: t", "LINK : warning LNK4: no", arguments=("--no-history", *outputs))
        live = {name: self.read(name) for name in files.values()}
        again = self.host("report", "log.jsonl", "--title", "p.kxproj", *outputs)
        self.assertEqual({name: self.read(name) for name in live}, live)
        self.assertIn(again.split("Unit tests written")[0], shown)
        whole = self.read("log.jsonl")
        self.write("torn.jsonl", whole[:len(whole) // 2])
        both = self.host("report", "torn.jsonl", "log.jsonl", "--sarif", "f.sarif", code=1)
        self.assertIn("The log of the run ends before the run did.", both)
        self.assertEqual(both.count("\nBuild "), 2)
        self.assertIn("p.kxproj:1: This is no log of a run", self.host("report", "log.jsonl", "p.kxproj", code=3))
        self.host("report", "log.jsonl", "--junit", "log.jsonl", code=2)

    def test_a_part_without_a_log_is_no_success(self):
        for _ in range(2):  # on one machine that was lost, and on another
            self.write("first.jsonl", self.read("log.jsonl") if (self.folder / "log.jsonl").exists() else "")
            self.run_with("c.c(3): warning C1: t", arguments=("--part", "build"))
        said = self.host("report", "first.jsonl", "log.jsonl", "--parts", "2", "--report", "r.html", code=1)
        self.assertRegex(said, r"(?s)error: There is no log of 1 of 2 parts.*\nParts without a log +failed \(parts-missing\) "
                               r".*; 1 error, 0 ")
        self.assertIn("There is no log of 1 of 2 parts", self.read("r.html"))
        self.host("report", "log.jsonl", "--parts", "1")
        log = self.read("log.jsonl")
        self.write("another.jsonl", re.sub(r'("place": ?)0', r"\g<1>1", log.replace("p.kxproj", "q.kxproj")))
        self.write("dry.jsonl", re.sub(r'("place": ?)0', r"\g<1>1", log).replace('"succeeded"', '"would run"'))
        for other in "another.jsonl", "dry.jsonl":
            self.host("report", "log.jsonl", other, "--parts", "2", code=1)
        self.write("two.jsonl", log + log)
        self.assertIn("two.jsonl:", self.host("report", "two.jsonl", code=3))

    def test_the_history_answers_what_earlier_runs_left(self):
        def ask(*words, code=0):
            return self.host("history", *words, "p.kxproj", code=code)

        self.assertIn("There is no history yet: ", ask(code=1))
        for lines in ("c.c(3): warning C1: t",), ("c.c(3): warning C1: t", "d.c(1): warning C2: u"):
            self.run_with(*lines)
        self.assertRegex(ask(), r"^Run  Began +Result .*\n +1  [-\d]{10} \d\d:\d\d  succeeded .*\n +2  .*\n$")
        self.assertEqual((ask(), ask("list").count("\n"), ask("--last", "1").count("\n")), (ask("list"), 3, 2))
        self.assertEqual([run["newFindings"] for run in json.loads(ask("--json"))["runs"]], [0, 1])
        self.assertEqual([len(json.loads(ask("show", run, "--json"))["findings"]) for run in ("1", "last")], [1, 2])
        self.assertIn("\nc.c:3: warning C1: t\nd.c:1: warning C2: u\n", ask("show", "2"))
        self.assertRegex(ask("findings"), r"^Since .*\nrun 1  .*C1: t\nrun 2  .*C2: u\n$")
        self.assertEqual([one["sinceRun"] for one in json.loads(ask("findings", "--json"))["findings"]], [1, 2])
        self.assertRegex(ask("times"), r"\n\(whole run\) +2  ")
        self.assertEqual({one["runs"] for one in json.loads(ask("times", "--last", "1", "--json"))["times"]}, {1})
        self.assertEqual((ask("tests"), json.loads(ask("tests", "--json"))), ("No tests ran.\n", {"tests": []}))
        for words, code, said in ((("show", "3"), 1, "There is no run 3 in the history."), (("show", "0"), 2, "RUN is"),
                                  (("show", "x"), 2, 'RUN is a number or "last"'), (("--last", "0"), 2, "--last"),
                                  (("findings", "--last", "1"), 2, 'findings" has no option --last'),
                                  (("show", "1", "--last", "1"), 2, 'show" has no option --last')):
            self.assertIn(said, ask(*words, code=code))

    def test_ci_systems_get_what_they_show(self):
        lines = [f"{self.folder}/d|e.c({i}): warning C{i}: <t>" for i in range(1, 13)] + ["LINK : fatal error LNK1104: no"]
        off = ("--rule", "errors-counted=off", "--ci")
        for i in range(2):  # appended, not replaced
            github = self.run_with(*lines, *lines, arguments=(*off, "github"), GITHUB_STEP_SUMMARY=f"{self.folder}/step.md")
        self.assertEqual(github.count("::warning "), 10)
        self.assertEqual(self.read("step.md").count(r"| warning C12 | d\|e.c:12 | &lt;t&gt; |"), 2)
        azure = self.run_with(*lines, arguments=(*off, "azure"), AGENT_TEMPDIRECTORY=str(self.folder))
        self.assertIn(f"##vso[task.uploadsummary]{self.folder}/kxhost-summary.md\n", azure)
        teamcity = self.run_with(*lines, arguments=(*off, "teamcity"))
        self.assertIn("##teamcity[inspection typeId='C12' file='d||e.c' line='12' message='<t>' SEVERITY='WARNING'", teamcity)
        self.assertRegex(teamcity, r"##teamcity\[buildProblem description='LNK1104: no' identity='kx_[0-9a-f]{16}'\]")


if __name__ == "__main__":
    unittest.main()
