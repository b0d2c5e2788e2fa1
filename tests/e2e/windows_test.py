"""kxhost.exe as a user of Windows has it: registry, tools, code pages, long paths, stops."""
import os
import pathlib
import pty
import shutil
import signal
import subprocess
import unittest

import e2e

EMULATOR = os.environ.get("KX_EMULATOR", "")
VISUAL_STUDIO = "HKLM\\SOFTWARE\\Microsoft\\VisualStudio\\9.0"


def windows(path):
    return "Z:" + str(path).replace("/", "\\")


@unittest.skipUnless(EMULATOR and shutil.which("wine"), "needs Wine and a build for Windows")
class WindowsTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.environment["WINEPATH"] = windows(e2e.BIN)  # what the tools need beside themselves
        self.addCleanup(lambda: [os.kill(pid, signal.SIGKILL) for pid in self.running()])

    def command(self):
        return [EMULATOR, e2e.BIN / "kxhost.exe", "--options", windows(self.folder / "options.ini")]

    def host(self, *arguments):
        """Exit code and output, which goes to a file: Wine hands a pipe down to what a tool leaves behind."""
        with open(self.folder / "output.txt", "w+", encoding="utf-8") as output:
            code = subprocess.run([*self.command(), *arguments], cwd=self.folder, env=self.environment,
                                  stdin=subprocess.DEVNULL, stdout=output, stderr=output, timeout=240, check=False).returncode
            output.seek(0)
            return code, output.read()

    def prepare(self, folder, *script):
        """A solution and, in a folder beside it, tools that do what the script says. Returns the arguments of a build."""
        self.write(f"{folder}/App é.sln", e2e.solution("App\\App.csproj", configuration="Debug|Any CPU", version="10.00"))
        self.write(f"{folder}/App/App.csproj", "<Project/>")
        for tool in ("devenv.com", "MSBuild.exe"):
            self.write(f"{folder}/V S/{tool}.script", "\n".join(script))
            shutil.copy(e2e.BIN / "kx_test_tool.exe", self.folder / folder / "V S" / tool)
        place = windows(self.folder / folder)
        return ["do", "DEVENV", f"Solution={place}\\App é.sln", "SolutionConfiguration=Debug|Any CPU", "--color", "never",
                "VStudioVersion=vs2008", "--log", windows(self.folder / "log.jsonl"),
                "--option", f"VisualStudioDotNet.MSDevPath2008={place}\\V S", "--option", f"DotNetFramework.v3.5={place}\\V S"]

    def running(self):
        """The numbers of the tools of this test that run."""
        found = []
        for process in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                command = (process / "cmdline").read_text(encoding="utf-8", errors="replace")
            except OSError:
                continue
            if self.folder.name in command and "kxhost" not in command and e2e.is_running(process.name):
                found.append(int(process.name))
        return found

    def test_the_registry_gives_defaults(self):
        self.assertIn("MSDevPath2008=\n", self.host("options", "list")[1])
        key = ["wine", "reg", "add", VISUAL_STUDIO, "/v", "InstallDir", "/d", "C:\\Été 9\\IDE\\", "/f", "/reg:32"]
        self.assertEqual(self.run_program(*key).returncode, 0)
        self.addCleanup(self.run_program, "wine", "reg", "delete", VISUAL_STUDIO, "/f", "/reg:32")
        _, shown = self.host("options", "list")
        self.assertIn("MSDevPath2008=C:\\Été 9\\IDE\\\n", shown)
        self.assertIn("DefVSVersion=vs2008\n", shown)

    def test_tools_get_the_exact_command_line_and_are_understood_in_both_code_pages(self):
        deep = "/".join(["Très long " + "x" * 40] * 6)
        rows = [("Été & 'co'", "False", "devenv.com", '/build "Debug|Any CPU" "{}"'),
                (deep, "False", "devenv.com", '/build "Debug|Any CPU" "{}"'),
                (deep, "True", "MSBuild.exe",
                 '/t:Build {} /noconlog /p:Configuration=Debug;Platform="Any CPU" /v:normal /m "{}"')]
        for folder, by_msbuild, tool, arguments in rows:
            for accent in ("\\x82", "\\xE9"):
                with self.subTest(f"{tool} {accent} {folder}"):
                    said = f"out:G{accent}n{accent}ration termin{accent}e -- 1 erreurs, 2 avertissements\\n"
                    _, output = self.host(*self.prepare(folder, f"record:{tool}.txt", said), f"UseMSBuild={by_msbuild}")
                    self.assertIn("Génération terminée", output)
                    if tool == "devenv.com":  # of MSBuild the logger reports them
                        self.assertEqual((self.metrics()["Errors"], self.metrics()["Warnings"]), (1, 2), output)
                    record = self.folder / folder / "V S" / f"{tool}.txt"
                    place, call = record.read_text(encoding="utf-8").splitlines()
                    record.unlink()
                    folder_path = windows(self.folder / folder)
                    logger = f'/logger:TandemorLogger,"{windows(e2e.BIN)}\\TandemorLogger.dll"'
                    expected = arguments.replace("{}", logger, 1) if by_msbuild == "True" else arguments
                    self.assertEqual(call, f'"{folder_path}\\V S\\{tool}" ' + expected.format(f"{folder_path}\\App é.sln"))
                    self.assertTrue(place == folder_path or len(folder_path) > 260 > len(place), place)

    def test_a_server_left_behind_neither_holds_the_run_nor_ends_with_it(self):
        code, output = self.host(*self.prepare("a", "server:wait", "wait:100"), "UseMSBuild=False")
        self.assertEqual(code, 0, output)
        self.assertEqual(len(self.running()), 1, output)

    def stop(self, end):
        """Runs a tool with a child, both deaf, on a terminal; `end` stops the run. Returns exit code and output."""
        terminal, inside = pty.openpty()
        command = [*self.command(), *self.prepare("a", "deaf", "server:deaf,wait", "out:started\\n", "wait")]
        with subprocess.Popen(command, cwd=self.folder, env={**self.environment, "TERM": "xterm"}, stdin=inside, stdout=inside,
                              stderr=inside, start_new_session=True) as host:
            os.close(inside)
            self.addCleanup(e2e.kill_quietly, host.pid)
            os.set_blocking(terminal, False)
            output = []

            def has_read(text=None):
                try:
                    output.append(os.read(terminal, 65536).decode(errors="replace"))
                except BlockingIOError:
                    pass
                except OSError:  # nobody writes to it any more
                    return True
                return text is not None and text in "".join(output)

            self.assertTrue(e2e.wait_until(lambda: has_read("started")), "".join(output))
            self.assertEqual(len(self.running()), 2, "".join(output))
            end(host, terminal)
            e2e.wait_until(has_read)
            os.close(terminal)
            return host.wait(60), "".join(output)

    def test_an_interrupt_ends_the_whole_family(self):
        code, output = self.stop(lambda _, terminal: os.write(terminal, b"\x03"))
        self.assertEqual(code, 130, output)
        self.assertIn("Action Terminated by User.", output)
        self.assertEqual(self.running(), [], output)

    def test_a_kill_of_the_host_ends_the_whole_family(self):
        self.stop(lambda host, _: host.kill())
        self.assertTrue(e2e.wait_until(lambda: not self.running()))


if __name__ == "__main__":
    unittest.main()
