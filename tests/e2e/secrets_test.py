"""Secrets come by standard input, the environment or a terminal, and are shown nowhere."""
import base64
import html
import json
import os
import pty
import re
import select
import subprocess
import time
import unittest
import urllib.parse

import e2e

SECRET = 'p&ss "w\u00f6rd" %PATH% <$x>'
WEB = "{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}"
SOLUTION = f"""Microsoft Visual Studio Solution File, Format Version 11.00
Project("{WEB}") = "Web", "http://127.0.0.1:1/Web/Web.csproj", "{{11111111-1111-1111-1111-111111111111}}"
EndProject
Global
	GlobalSection(SolutionConfigurationPlatforms) = preSolution
		Debug = Debug
	EndGlobalSection
EndGlobal
"""
PROJECT = """<BuildProject Name="P">
  <Actions>
    <Action Type="DEVENV" Name="Build">
      <Solution>Web.sln</Solution>
      <SolutionConfiguration>Debug</SolutionConfiguration>
      <VStudioVersion Name="vs2010">4</VStudioVersion>%s
    </Action>
  </Actions>
</BuildProject>
"""
STAMPED = """
      <UpdateAssemblyInfo>True</UpdateAssemblyInfo>
      <ProjLocationDetectMethod Name="useWebDAV">2</ProjLocationDetectMethod>
      <_WebDAVPassword>AAAA</_WebDAVPassword>"""


def spellings(secret):
    quoted = secret.replace('"', '\\"')
    basic = base64.b64encode(f"user:{secret}".encode()).decode()
    return [secret, urllib.parse.quote(secret, safe=""), urllib.parse.quote_plus(secret), re.sub("%..", lambda byte: byte[0].lower(), urllib.parse.quote(secret, safe="")),
            html.escape(secret), json.dumps(secret), json.dumps(secret, ensure_ascii=False), f'"{quoted}"', basic,
            base64.b64encode(secret.encode()).decode(), base64.b64encode(secret.encode("utf-16le")).decode()]


class SecretsTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write("Web.sln", SOLUTION)
        self.write("tools/MSBuild.exe", '#!/bin/sh\nprintf "%s\\n" "$@" > "$HOME/arguments"\ncat "$HOME/output"\nexit 1\n', executable=True)
        self.write("output", "".join(f"a.cs(1,2): error X1: <{text}>\n" for text in spellings(SECRET)))
        self.tools = ("--option", f"DotNetFramework.v4.0={self.folder / 'tools'}")

    def host(self, *arguments, given=None, **environment):
        return subprocess.run([e2e.BIN / "kxhost", *arguments], cwd=self.folder, env={**self.environment, **environment},
                              input=given, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", timeout=240, check=False)

    def check_hidden(self, *texts):
        hidden = [part for text in spellings(SECRET) for part in (text, text[4:])]
        for text in texts:
            for spelled in hidden:
                self.assertNotIn(spelled, text)

    def test_a_variable_reaches_the_tool_and_nothing_else(self):
        self.write("p.kxproj", PROJECT % "<ExtraCmdLineParams>/p:Key=\"%Key%\"</ExtraCmdLineParams>")
        for given, arguments in ((SECRET + "\n", ("Key",)), ("\ufeff" + SECRET + "\r\n", ("Key",)), (None, ("Key=KX_SECRET",))):
            for verbosity in "diagnostic", "minimal":
                run = self.host("run", "p.kxproj", "--set-secret", *arguments, "--log", "l.jsonl", "--report", "r.html", "--junit", "j.xml",
                                "--verbosity", verbosity, *self.tools, given=given, KX_SECRET=SECRET)
                self.assertEqual(run.returncode, 1, run.stdout)
                files = [(self.folder / name).read_text(encoding="utf-8") for name in ("l.jsonl", "r.html", "j.xml", "p.kxproj")]
                self.assertIn("***", files[0])
                self.check_hidden(run.stdout, *files)
                self.assertIn(SECRET.replace('"', ""), (self.folder / "arguments").read_text(encoding="utf-8"))
        for command in ("run", "p.kxproj", "--dry-run", *self.tools), ("validate", "p.kxproj", *self.tools):
            self.check_hidden(self.host(*command, "--set-secret", "Key", given=SECRET).stdout)
        self.check_hidden(self.host("options", "list").stdout)

    def test_a_property_is_for_this_run_only(self):
        file = self.write("p.kxproj", PROJECT % STAMPED)
        before = file.read_bytes()
        lost = "The stored WebDAV password cannot be decrypted"
        self.assertIn(f"Build: WebDAVPassword: {lost}", self.host("validate", "p.kxproj", *self.tools).stdout)
        for name in "WebDAVPassword", "Build.webdavpassword":
            for command in "validate", "run":
                run = self.host(command, "p.kxproj", "--secret", name, *self.tools, given=SECRET)
                self.assertNotIn(lost, run.stdout)
                self.check_hidden(run.stdout)
            self.assertIn("No connection to", run.stdout)
        clear = PROJECT % "<WebDAVPassword>from the file</WebDAVPassword>"
        for project in before.decode(), clear:
            file.write_text(project, encoding="utf-8")
            self.host("run", "p.kxproj", "--secret", "WebDAVPassword", *self.tools, given=SECRET)
            self.assertEqual(file.read_text(encoding="utf-8"), project)

    def test_several_are_a_line_each(self):
        self.write("p.kxproj", PROJECT % "<ExtraCmdLineParams>/a:%A% /b:%B%</ExtraCmdLineParams>")
        self.write("output", "first second third\n")
        run = self.host("run", "p.kxproj", "--set-secret", "B", "--secret", "WebDAVPassword", "--set-secret", "A", *self.tools,
                        given="first\nsecond\nthird\n")
        self.assertIn("*** *** ***", run.stdout)
        arguments = (self.folder / "arguments").read_text(encoding="utf-8").split()
        self.assertLess({"/a:third", "/b:first"}, set(arguments))

    def test_what_cannot_be_had_is_said(self):
        self.write("p.kxproj", PROJECT % "")
        for arguments, given, said in (
                (("--secret", "WebDAVPassword"), "", "there is no value for WebDAVPassword."),
                (("--secret", "WebDAVPassword", "--set-secret", "B"), "one\n", "--set-secret: there is no value for B."),
                (("--secret", "WebDAVPassword=KX_NONE"), "x", "there is no value for WebDAVPassword."),
                (("--secret", "Solution"), SECRET, 'no action has a secret property "Solution"'),
                (("--secret", "Other.WebDAVPassword"), SECRET, "no action has a secret property"),
                (("--secret", "WebDAVPassword="), SECRET, "takes a name, or NAME=VARIABLE")):
            with self.subTest(arguments):
                run = self.host("run", "p.kxproj", *arguments, given=given)
                self.assertEqual(run.returncode, 2, run.stdout)
                self.assertIn(said, run.stdout)
                self.check_hidden(run.stdout)

    def ask(self, typed):
        """What a terminal shows to somebody who types that."""
        pid, terminal = pty.fork()
        if pid == 0:
            os.chdir(self.folder)
            os.execve(e2e.BIN / "kxhost", ["kxhost", "validate", "p.kxproj", "--set-secret", "Key", *self.tools], self.environment)
        shown, end = b"", time.monotonic() + 60
        sent = False
        while time.monotonic() < end:
            if not select.select([terminal], [], [], 1)[0]:
                continue
            try:
                part = os.read(terminal, 4096)
            except OSError:
                break
            if not part:
                break
            shown += part
            if not sent and b"Key: " in shown:
                os.write(terminal, typed.encode())
                sent = True
        os.close(terminal)
        return shown.decode(), os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1])

    def test_a_terminal_does_not_show_what_is_typed(self):
        self.write("p.kxproj", PROJECT % "<ExtraCmdLineParams>%Key%</ExtraCmdLineParams>")
        shown, code = self.ask("wrong\x15hush\u00f6\x7f!hush\n")
        self.assertNotIn("hush", shown)
        self.assertNotIn("wrong", shown)
        self.assertEqual(code, 0, shown)
        shown, code = self.ask("hush!\x03")
        self.assertIn("there is no value for Key", shown)
        self.assertNotIn("hush", shown)
        self.assertEqual(code, 2)


if __name__ == "__main__":
    unittest.main()
