"""Secrets come by standard input, the environment or a terminal, and are shown nowhere."""
import base64
import html
import json
import os
import pty
import re
import unittest
import urllib.parse

import e2e

SECRET = 'p&ss "w\u00f6rd" %PATH% <$x>'
STAMPED = {"UpdateAssemblyInfo": "True", "ProjLocationDetectMethod": "2", "_WebDAVPassword": "AAAA"}


def spellings(secret):
    escaped, quoted = urllib.parse.quote(secret, safe=""), secret.replace('"', '\\"')
    return [secret, escaped, urllib.parse.quote_plus(secret), re.sub("%..", lambda byte: byte[0].lower(), escaped),
            html.escape(secret), json.dumps(secret), json.dumps(secret, ensure_ascii=False), f'"{quoted}"',
            *(base64.b64encode(each).decode()
              for each in (f"user:{secret}".encode(), secret.encode(), secret.encode("utf-16le")))]


class SecretsTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write("Web.sln", e2e.web_solution("http://127.0.0.1:1"))
        self.write_tool('printf "%s\\n" "$@" > "$HOME/arguments"', 'cat "$HOME/output"', "exit 1")
        self.write("output", "".join(f"a.cs(1,2): error X1: <{text}>\n" for text in spellings(SECRET)))

    def write_project(self, **properties):
        return self.write("p.kxproj", e2e.project(e2e.build("Web.sln", 'Name="Build"', "Debug", **properties)))

    def check_hidden(self, *texts):
        for text in texts:
            for spelled in spellings(SECRET):
                self.assertNotIn(spelled, text)
                self.assertNotIn(spelled[4:], text)

    def test_a_variable_reaches_the_tool_and_nothing_else(self):
        self.write_project(ExtraCmdLineParams='/p:Key="%Key%"')
        for given, source in ((SECRET + "\n", "Key"), ("\ufeff" + SECRET + "\r\n", "Key"), ("", "Key=KX_SECRET")):
            for verbosity in "diagnostic", "minimal":
                shown = self.host("run", "p.kxproj", "--set-secret", source, "--log", "log", "--report", "report", "--junit",
                                  "tests", "--verbosity", verbosity, *self.tools, given=given, code=1, KX_SECRET=SECRET)
                files = [self.read(name) for name in ("log", "report", "tests", "p.kxproj")]
                self.assertIn("***", files[0])
                self.check_hidden(shown, *files)
                self.assertIn(SECRET.replace('"', ""), self.read("arguments"))
        for command in ("run", "p.kxproj", "--dry-run"), ("validate", "p.kxproj"):
            self.check_hidden(self.host(*command, "--set-secret", "Key", *self.tools, given=SECRET))

    def test_a_property_is_for_this_run_only(self):
        stamped = self.write_project(**STAMPED).read_text(encoding="utf-8")
        lost = "The stored WebDAV password cannot be decrypted"
        self.assertIn(f"Build: WebDAVPassword: {lost}", self.host("validate", "p.kxproj", *self.tools, code=3))
        for project in stamped, stamped.replace("_WebDAVPassword>", "WebDAVPassword>"):
            file = self.write("p.kxproj", project)
            for name in "WebDAVPassword", "Build.webdavpassword":
                shown = self.host("run", "p.kxproj", "--secret", name, *self.tools, given=SECRET, code=1)
                self.assertIn("No connection to", shown)
                self.check_hidden(shown)
                self.assertEqual(file.read_text(encoding="utf-8"), project)
                self.assertNotIn(lost, self.host("validate", "p.kxproj", "--secret", name, *self.tools, given=SECRET))

    def test_several_are_a_line_each(self):
        self.write_project(ExtraCmdLineParams="/a:%A% /b:%B%")
        self.write("output", "first second third\n")
        shown = self.host("run", "p.kxproj", "--set-secret", "B", "--secret", "WebDAVPassword", "--set-secret", "A", *self.tools,
                          given="first\nsecond\nthird\n", code=1)
        self.assertIn("*** *** ***", shown)
        self.assertLess({"/a:third", "/b:first"}, set(self.read("arguments").split()))

    def test_what_cannot_be_had_is_said(self):
        self.write_project()
        for arguments, given, said in (
                ("--secret WebDAVPassword", "", "there is no value for WebDAVPassword."),
                ("--secret WebDAVPassword --set-secret B", "one\n", "--set-secret: there is no value for B."),
                ("--secret WebDAVPassword=KX_NONE", "x", "there is no value for WebDAVPassword."),
                ("--secret Solution", SECRET, 'no action has a secret property "Solution"'),
                ("--secret Other.WebDAVPassword", SECRET, "no action has a secret property"),
                ("--secret WebDAVPassword=", SECRET, "takes a name, or NAME=VARIABLE")):
            with self.subTest(arguments):
                shown = self.host("run", "p.kxproj", *arguments.split(), given=given, code=2)
                self.assertIn(said, shown)
                self.check_hidden(shown)

    def test_a_terminal_does_not_show_what_is_typed(self):
        self.write_project(ExtraCmdLineParams="%Key%")
        for typed, code, said in ("wrong\x15hush\u00f6\x7f!hush\n", 0, "Key: "), ("hush!\x03", 2, "there is no value for Key"):
            pid, terminal = pty.fork()
            if pid == 0:
                os.chdir(self.folder)
                command = ["kxhost", "validate", "p.kxproj", "--set-secret", "Key", *self.tools]
                os.execve(e2e.BIN / "kxhost", command, self.environment)
            shown = e2e.shown(terminal, b"Key: ")
            os.write(terminal, typed.encode())
            shown = (shown + e2e.shown(terminal)).decode()
            os.close(terminal)
            self.assertEqual(os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]), code, shown)
            self.assertIn(said, shown)
            self.assertNotRegex(shown, "hush|wrong")


if __name__ == "__main__":
    unittest.main()
