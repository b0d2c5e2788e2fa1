#!/usr/bin/env python3
"""Plans as others read them: ninja runs one, and the files of engines are what those take."""
import json
import os
import pathlib
import re
import shutil
import unittest

import e2e
import yaml
from e2e import BIN, action, build, project

NODE = os.environ.get("KX_NODE")


def message(name, attributes="", status="Normal"):
    return action("MESSAGE", f'Name="{name}" {attributes}', Text=f"says {name}", Status=status)


class PlanTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.environment["PATH"] = f"{BIN}:{os.environ['PATH']}"
        self.common = ("--plugin", BIN / "KxMessage.so", "--no-history")

    def plan(self, form, *actions):
        self.write("p.kxproj", project(*actions))
        return self.host("plan", "p.kxproj", *self.common, "--format", form)

    def test_ninja_runs_the_parts(self):
        parts = [message("A", 'ContinueOnError="true"', "Error"), message("B's $x"), message("C", 'Needs="A"'),
                 message("D", 'Needs=""', "Error"), message("E", 'Needs="D"')]
        self.write("build.ninja", self.plan("ninja", *parts))
        first = self.run_program("ninja", "-j", "4", "-k", "0")
        self.assertNotEqual(first.returncode, 0, first.stdout)
        logs = sorted((self.folder / "kx-run").glob("*.jsonl"))
        # B waits for the end of A only; C and E need what has failed.
        self.assertEqual([log.name for log in logs], ["part-1-A.jsonl", "part-2-B_s_x.jsonl", "part-4-D.jsonl"])
        report = self.host("report", *logs, "--color", "never", code=1)
        self.assertRegex(report, r"A +failed .*\nB's \$x +succeeded .*\nD +failed ")
        shutil.copy(logs[1], self.folder / "copy.jsonl")
        self.assertIn("give each run once", self.host("report", *logs, "copy.jsonl", code=2))

        self.write("p.kxproj", self.read("p.kxproj").replace(">Error<", ">Normal<"))
        second = self.run_program("ninja", "-j", "4")
        self.assertEqual(second.returncode, 0, second.stdout)
        self.assertEqual(len(list((self.folder / "kx-run").glob("*.done"))), 5)
        self.assertIn("no work to do", self.run_program("ninja").stdout)

    def wide(self):
        """Names that are no names for engines, one that fails without harm, and more needs than some take."""
        yield message("build: it's \\$HOME \\${{ x }}", 'ContinueOnError="true"')
        yield message("behind")
        for number in range(70):
            yield message(f"part {number}", 'Needs=""')
        yield message("all", f'Needs="{",".join(f"part {number}" for number in range(70))},behind"')

    def check_jobs(self, jobs):
        """name -> those that it needs: names are legal, known, and make no circle."""
        for name, needed in jobs.items():
            self.assertRegex(name, "^[A-Za-z_][A-Za-z0-9_]{0,99}$")
            self.assertLessEqual(set(needed), set(jobs))
        while begun := [name for name, needed in jobs.items() if not set(needed) & set(jobs)]:
            for name in begun:
                del jobs[name]
        self.assertEqual(jobs, {})

    @unittest.skipUnless(NODE, "there is no node")
    def test_workflows_are_valid(self):
        for parts in self.wide(), (message(f"p{number}", 'Needs=""') for number in range(400)):
            run = self.run_program(NODE, os.environ["KX_ACTION_VALIDATOR"], self.write("w.yml", self.plan("github", *parts)))
            self.assertEqual(run.returncode, 0, run.stdout)

    def test_each_engine_gets_a_job_a_part(self):
        workflow, pipeline, stage = (yaml.safe_load(self.plan(form, *self.wide())) for form in ("github", "gitlab", "azure"))
        self.assertEqual(pipeline.pop("stages"), ["parts", "report"])
        rows = (
            # jobs, how many, what says on whom one waits, what makes the report run always, what jobs may have
            (workflow["jobs"], 74, "needs", "if", {"name", "needs", "if", "runs-on", "steps"}),
            (pipeline, 76, "needs", "when",
             {"stage", "needs", "tags", "allow_failure", "script", "artifacts", "when", "variables"}),
            ({job["job"]: job for job in stage["jobs"]}, 74, "dependsOn", "condition",
             {"job", "displayName", "dependsOn", "condition", "pool", "steps"}))
        for jobs, count, needs, when, known in rows:
            self.assertEqual((len(jobs), jobs["report"][when].removesuffix("()")), (count, "always"))
            self.check_jobs({name: job.get(needs, []) for name, job in jobs.items()})
            for name, job in jobs.items():  # a condition asks for needed jobs only
                self.assertLessEqual(set(job), known)
                asked = set(re.findall(r"(?:dependencies|needs)\.(\w+)\.", str(job.get(when, ""))))
                self.assertLessEqual(asked, set(job.get(needs, [])), name)
        self.assertIn("'build: it'\\''s \\$HOME \\${{ '${{' }} x }}'", rows[0][0]["part_build_it_s_HOME_x"]["steps"][1]["run"])
        self.assertLessEqual(max(len(job.get("needs", [])) for job in pipeline.values()), 50)
        self.assertEqual([name for name, job in pipeline.items() if job.get("allow_failure")], ["part_build_it_s_HOME_x"])
        self.assertIn("part_build_it_s_HOME_x.result, 'Succeeded', 'SucceededWithIssues', 'Failed', 'Skipped')",
                      rows[2][0]["part_behind"]["condition"])

    def test_what_writes_one_file_side_by_side_is_refused(self):
        parts = [action("MSTEST", f'Name="{name}" Needs=""', AssemblyFileName="t.dll", OutputFileName="r.trx") for name in "AB"]
        self.write("p.kxproj", project(*parts))
        for command in ("plan", "p.kxproj"), ("run", "p.kxproj", "--jobs", "2"):
            said = self.host(*command, code=3)
            self.assertRegex(said, r'p\.kxproj: "A" and "B" both write .*r\.trx, and neither waits for the other\.')
        self.write("p.kxproj", project(*parts).replace('Name="B" Needs=""', 'Name="B" Needs="A"'))
        plan = json.loads(self.host("plan", "p.kxproj", "--format", "json"))
        self.assertEqual([part["capabilities"] for part in plan["parts"]], [["mstest"]] * 2)
        self.assertTrue(plan["parts"][0]["outputs"][0].endswith("r.trx"))
        self.assertTrue(plan["parts"][0]["inputs"][0].endswith("t.dll"))

    def test_passes_are_told_with_what_they_read_and_change(self):
        self.copy_example()
        place = "examples/Greeter/Greeter.sln"
        only = {"BuildType": "btSelectedProjects", "SelectedProjects": "<Line>%P%</Line>"}
        stamp = build(place, UpdateAssemblyInfo="True", UpdateAssemblyVersion="True", AssemblyVersion="2|0|0|0",
                      ApplyAssemblyInfoTo="btSelectedProjects", AssemblySelectedProjects="<Line>%P%</Line>", **only)
        loop = action("SOLUTIONITERATOR", 'Name="Each" Parallel="true"', Solution=place, LoopVariable="P", IterateValue="svName")
        self.write("p.kxproj", project(loop.replace("</Action>", f"<Actions>{stamp}</Actions></Action>")))
        parts = json.loads(self.host("plan", "p.kxproj", "--format", "json"))["parts"]
        told = {part["id"]: (sorted(pathlib.Path(file).name for file in part["inputs"]),
                             [str(pathlib.Path(file).relative_to(self.folder / "examples/Greeter")) for file in part["outputs"]],
                             part["needs"], part["capabilities"]) for part in parts}

        def part(name, *needs):
            return (sorted(["Greeter.sln", *(f"{one}.csproj" for one in (name, *needs))]), [f"{name}/Properties/AssemblyInfo.cs"],
                    [f"Each/{need}" for need in needs], ["vs2010"])
        self.assertEqual(told, {"Each/Greeter.Core": part("Greeter.Core"),
                                "Each/Greeter.Text": part("Greeter.Text", "Greeter.Core"),
                                "Each/Greeter.App": part("Greeter.App", "Greeter.Core", "Greeter.Text")})


if __name__ == "__main__":
    unittest.main()
