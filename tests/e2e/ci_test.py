"""Nothing that a tool, a file or a name holds is a command to the CI system that reads the log."""
import re
import subprocess
import unittest
from xml.sax.saxutils import quoteattr

import e2e

INVISIBLE = "\u00ad\u034f\u061c\u115f\u1160\u180e\u200b-\u200f\u2060-\u206f\u3164\ufe0f\ufeff\uffa0"
LINE_ENDS = re.compile("[\n\r\x0b\x0c\x1c-\x1e\x85\u2028\u2029]")
# What each system obeys, as a reader that is laxer than any of them finds it; and the commands of kxhost's own.
SYSTEMS = {
    "github": (f"^[\\s{INVISIBLE}]*:[{INVISIBLE}]*:(?P<a>[^:, ]*)|##\\[(?P<b>[^\\] ]*)",
               {"group", "endgroup", "error", "warning"}),
    "azure": ("##vso\\[(?P<a>[^\\] ]*)|##\\[(?P<b>[^\\] ]*)", {"group", "endgroup", "task.logissue", "task.uploadsummary"}),
    "teamcity": ("(?i)##teamcity\\[(?P<a>[^\\] ]*)(?P<b>)",
                 {"blockOpened", "blockClosed", "message", "inspectionType", "inspection", "buildProblem"}),
    "gitlab": ("\x1b\\[0K(?P<a>section_(?:start|end):\\d+:kxhost_|section_start:1:a)?(?P<b>)", None),
}
COMMANDS = {
    "github": ("::evil::x", "##[evil]x"),
    "azure": ("##vso[evil]x", "##[evil]x"),
    "teamcity": ("##teamcity[evil]",),
    "gitlab": ("\x1b[0Ksection_start:1:a\r\x1b[0K",),
}
LEADS = ("", "  ", "\u00a0", "\u2003", "\ufeff", "\u200b", "\x0b", "\x0c", "a\r", "a\u0085", "a\u2028", "a\u2029",
         "\x1b[1m", "a")
PROJECT = e2e.project(
    e2e.build("Web.sln", 'Name={0} ContinueOnError="true"', ".*", UseRegExOnConfigName=True),
    e2e.action("SOLUTIONITERATOR", 'Name="Loop" ContinueOnError="true"', Solution="Web.sln", LoopVariable="P",
               Actions=e2e.action("DEVENV", 'Name="In"', Solution="%P%")),
    attributes="Name={0}")


def is_xml(text):
    return not re.search("[\x00-\x08\x0b\x0c\x0e-\x1f]", text)


class CiTest(e2e.EndToEndTest):
    def check(self, system, *command):
        run = subprocess.run([e2e.BIN / "kxhost", *command, "--ci", system], cwd=self.folder, env=self.environment, timeout=240,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=False)
        shown = run.stdout.decode()  # line ends as they are
        pattern, own = SYSTEMS[system]
        for line in LINE_ENDS.split(shown.replace("\r\x1b[0K", "\t") if system == "gitlab" else shown):
            for found in re.finditer(pattern, line):
                name = found["a"] or found["b"]
                allowed = name.endswith(":kxhost_") if own is None else name in own
                self.assertTrue(allowed, f"{command}: {line!r}")
        return shown

    def check_text(self, system, hostile):
        self.write_tool('cat "$(dirname "$0")/output"', "exit 1")
        self.write("tools/output", f"{hostile}\na.cs(1,2): error X1: {hostile}\n{hostile}(1): warning X2: b\n")
        named = "N" if re.search("[\r\n]", hostile) else hostile
        self.write("Web.sln", e2e.solution("a.csproj", name=named, configuration=f"{named}|Any CPU"))
        quoted = quoteattr(hostile, {"\r": "&#13;", "\n": "&#10;"}) if is_xml(hostile) else '"N"'
        self.write("p.kxproj", PROJECT.format(quoted))
        shown = self.check(system, "run", "p.kxproj", "--verbosity", "detailed", "--color", "always",
                           "--log", f"./{named}x.jsonl", *self.tools)
        self.assertIn("a.cs", shown)
        self.assertIn("failed", shown)
        self.check(system, "run", "p.kxproj", "--verbosity", "minimal", "--dry-run", *self.tools)
        self.check(system, "validate", "p.kxproj")
        self.check(system, "inspect", "Web.sln")
        for form in "dot", "mermaid", "svg", "json":
            self.check(system, "graph", "Web.sln", "--format", form)
        for wrong in (("run", hostile), (hostile,), ("run", "p.kxproj", f"--{hostile}"), ("run", "p.kxproj", "--set", hostile),
                      ("do", hostile), ("do", "DEVENV", f"Solution={hostile}", "SolutionConfiguration=a"), ("--ci", hostile)):
            self.check(system, *wrong)

    def test_no_text_is_a_command(self):
        for system, commands in COMMANDS.items():
            for command in commands:
                for lead in LEADS if command.startswith("::") else ("", "a ", "\u2003", "\x1b[1m"):
                    with self.subTest(system=system, text=lead + command):
                        self.check_text(system, lead + command)

    def test_a_line_feed_in_a_name_begins_no_line(self):
        for system, commands in COMMANDS.items():
            with self.subTest(system):
                self.check_text(system, "a\n" + commands[0] if system != "gitlab" else "a\nsection_start:1:a")


if __name__ == "__main__":
    unittest.main()
