"""TandemorLogger in a real build tool: what it writes at which verbosity, and whose an error is."""
import collections
import shutil
import unittest

import e2e

PROJECT = """<Project DefaultTargets="All" xmlns="http://schemas.microsoft.com/developer/msbuild/2003">{}
<Target Name="All">{}</Target></Project>"""


def events(output):
    """[(kind, {name: value})] of the lines that the logger wrote."""
    result = []
    for line in output.splitlines():
        if line.startswith("TandemorLogger|"):
            _, kind, *fields = line.split("|")
            values = (field.split("=", 1) for field in fields)
            result.append((kind, {name: unescape(value) for name, value in values}))
    return result


def without_ends(lines):
    """The events but for what is always told of projects."""
    return [line for line in lines if line[0] not in ("projectBegun", "projectFinished")]


def unescape(value):
    for code, character in (("%0A", "\n"), ("%0D", "\r"), ("%7C", "|"), ("%25", "%")):
        value = value.replace(code, character)
    return value


class LoggerTest(e2e.EndToEndTest):
    def build(self, text, *switches, code=0):
        run = self.run_program("xbuild", self.write("all.proj", text), f"/logger:TandemorLogger,{e2e.BIN}/TandemorLogger.dll",
                               "/noconlog", *switches)
        self.assertEqual(run.returncode, code, run.stdout)
        return events(run.stdout)

    def test_each_verbosity_adds_its_events(self):
        project = PROJECT.format("", """<Message Text="h" Importance="high" /><Message Text="n" Importance="normal" />
            <Message Text="l" Importance="low" /><Warning Text="w" />""")
        quiet = {"warning", "projectBegun", "projectFinished", "buildFinished"}
        minimal = quiet | {"high"}
        normal = minimal - {"projectBegun"} | {"normal", "projectStarted"}
        detailed = normal | {"low", "targetStarted", "targetFinished"}
        rows = [("/v:quiet", quiet), ("/verbosity:m", minimal), ("/nologo", normal), ("/v:normal", normal),
                ("/v:d", detailed), ("/v:diag", detailed)]
        written = collections.Counter()
        for switch, expected in rows:
            lines = self.build(project, switch)
            self.assertEqual({values.get("importance", kind) for kind, values in lines}, expected, switch)
            written[switch] = len(lines)
        self.assertGreater(written["/v:diag"], written["/v:d"], "tasks show only at the last verbosity")

    def test_values_survive_the_line(self):
        lines = self.build(PROJECT.format("", '<Message Text="100%25 a|b=c%0D%0Ad %257C é–漢" Importance="high" />'), "/v:minimal")
        self.assertIn(("message", {"importance": "high", "text": "100% a|b=c\r\nd %7C é–漢"}), lines)

    def test_errors_name_their_project_and_file(self):
        task = self.compile("RaiseTask.cs", "-target:library", "-r:Microsoft.Build.Framework")
        self.write("inner/src/real.cs", "")
        self.write("inner/Makefile", "")
        inner, outer = self.folder / "inner/inner.proj", self.folder / "all.proj"
        rows = [
            # project, kind, file given, file expected
            (inner, "warning", "src/real.cs", inner.parent / "src/real.cs"),
            (inner, "warning", "src/../gone.cs", inner.parent / "gone.cs"),
            (inner, "warning", "Makefile", inner.parent / "Makefile"),
            (inner, "warning", "CSC", "CSC"),
            (inner, "error", "/abs/x.cs", "/abs/x.cs"),
            (inner, "warning", "", ""),
            (outer, "error", "inner/src/real.cs", inner.parent / "src/real.cs"),
        ]

        def tasks(project):
            return "".join(f'<Raise IsError="{kind == "error"}" File="{file}" Code="X{i}" Line="{i}" Column="7" Text="t{i}"/>'
                           for i, (owner, kind, file, _) in enumerate(rows) if owner == project)

        using = f'<UsingTask TaskName="Raise" AssemblyFile="{task}" />'
        self.write("inner/inner.proj", PROJECT.format(using, tasks(inner)))
        outside = PROJECT.format(using, "<MSBuild Projects='inner/inner.proj' />" + tasks(outer))
        lines = without_ends(self.build(outside, "/v:quiet"))
        expected = [(kind, {"file": str(file), "line": str(i), "column": "7", "code": f"X{i}", "project": str(project),
                            "text": f"t{i}"}) for i, (project, kind, _, file) in enumerate(rows)]
        self.assertEqual(lines[:-1], expected)
        self.assertEqual(lines[-1][0], "buildFinished")

    def test_a_failed_build_says_so(self):
        lines = self.build(PROJECT.format("", '<Error Text="stop" Code="E7" />'), "/v:normal", code=1)
        self.assertEqual([(kind, values["text"]) for kind, values in lines if kind == "error"], [("error", "stop")])
        self.assertEqual(lines[-2:], [("projectFinished", {"project": str(self.folder / "all.proj"), "succeeded": "false"}),
                                      ("buildFinished", {"succeeded": "false"})])

    def test_parallel_projects_are_told_apart_by_context(self):
        shutil.copy(e2e.BIN / "TandemorLogger.dll", self.folder)
        program = self.compile("ParallelBuild.cs", "-r:TandemorLogger.dll", "-r:Microsoft.Build.Framework")
        lines = without_ends(events(self.run_program("mono", program).stdout))
        first, second = "/a/first.proj", "/b/second.proj"
        self.assertEqual([(values["code"], values["project"]) for _, values in lines],
                         [("before", ""), ("of-first", first), ("of-second", second), ("untold", second),
                          ("untold-after-first", second), ("late-of-first", first)])

    def compile(self, source, *options):
        result = self.folder / (source + ".out")
        run = self.run_program("mcs", f"-out:{result}", *options, e2e.ROOT / "tests/e2e" / source)
        self.assertEqual(run.returncode, 0, run.stdout)
        return result


if __name__ == "__main__":
    unittest.main()
