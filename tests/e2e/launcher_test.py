"""MSBuild.exe of this system: what the tool it finds is given, and that it becomes that tool."""
import json
import signal
import unittest

import e2e

RECORDER = """#!/usr/bin/env python3
import json, os, sys, time
record = os.environ["RECORD"]
json.dump({"arguments": sys.argv[1:], "pid": os.getpid(), "iomap": os.environ.get("MONO_IOMAP")}, open(record + ".new", "w"))
os.rename(record + ".new", record)
time.sleep(float(os.environ.get("SLEEP", "0")))
sys.exit(7)
"""


class LauncherTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.record = self.folder / "record.json"
        self.environment["RECORD"] = str(self.record)
        self.xbuild = self.write("tools/xbuild", RECORDER, executable=True)
        self.environment["KX_MSBUILD"] = str(self.xbuild)

    def launch(self, *arguments, **environment):
        return self.run_program(e2e.BIN / "MSBuild.exe", *arguments, **environment)

    def recorded(self):
        return json.loads(self.read("record.json"))

    def test_the_tool_gets_the_file_as_it_is_on_disk(self):
        file = self.write("Lib Été/Lib.csproj", "")
        run = self.launch("/t:Build", "/m", "lib Été\\LIB.csproj", '/p:A="x y"', "")
        self.assertEqual(run.returncode, 7, "the tool's own exit code: " + run.stdout)
        arguments = self.recorded()["arguments"]
        self.assertEqual(arguments[0:1] + arguments[2:], ["/t:Build", '/p:A="x y"', ""])
        self.assertTrue((self.folder / arguments[1]).samefile(file), arguments[1])

    def test_a_file_that_is_missing_is_named(self):
        run = self.launch("/t:Build", "Lib\\Gone.csproj")
        self.assertEqual((run.returncode, self.record.exists()), (1, False))
        self.assertIn(r"'Lib\Gone.csproj' does not exist", run.stdout)

    def test_xbuild_finds_files_in_any_letter_case_unless_the_user_says_otherwise(self):
        other = self.write("tools/msbuild", RECORDER, executable=True)
        rows = [({}, "all"), ({"MONO_IOMAP": "drive"}, "drive"), ({"MONO_IOMAP": ""}, ""), ({"KX_MSBUILD": str(other)}, None)]
        for environment, expected in rows:
            self.launch("/nologo", **environment)
            self.assertEqual(self.recorded()["iomap"], expected, environment)

    def test_it_becomes_the_tool(self):
        launcher = self.start(e2e.BIN / "MSBuild.exe", environment={"SLEEP": "100"})
        self.assertTrue(e2e.wait_until(self.record.exists))
        self.assertEqual(self.recorded()["pid"], launcher.pid)
        launcher.send_signal(signal.SIGTERM)
        self.assertEqual(launcher.wait(), -signal.SIGTERM)

    def test_a_real_xbuild_takes_what_an_msbuild_takes(self):
        solution = self.copy_example() / "Greeter"
        (solution / "Greeter.Core" / "DayTime.cs").rename(solution / "Greeter.Core" / "daytime.cs")
        out = self.folder / "Out Put"
        run = self.launch("/t:Rebuild", "/p:Configuration=Release;Platform=Any CPU;OutDir=" + f"{out}\\", "/V:minimal", "/m:2",
                          "/nr:false", "/nologo", f"{solution}\\greeter.SLN", KX_MSBUILD="xbuild")
        self.assertEqual(run.returncode, 0, run.stdout)
        program = self.run_program("mono", out / "greeter.exe", "everyone")
        self.assertIn(", everyone!\nGreeter 1.0.0.0, Release build", program.stdout)


if __name__ == "__main__":
    unittest.main()
