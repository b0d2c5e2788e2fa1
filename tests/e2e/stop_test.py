"""Ctrl-C in the middle of a build."""
import signal
import subprocess
import unittest

import e2e

# A tool that leaves a child of its own in the background and does not end when it is asked to.
STUBBORN = """#!/bin/bash
trap '' INT TERM HUP
sleep 300 &
echo "$$ $!" > "$PIDS.new"
echo started
mv "$PIDS.new" "$PIDS"
while true; do sleep 300; done
"""
OBEDIENT = STUBBORN.replace("trap '' INT TERM HUP\n", "")


class StopTest(e2e.EndToEndTest):
    def stop_during(self, tool):
        self.write("framework/MSBuild.exe", tool, executable=True)
        pids = self.folder / "pids"
        project = self.copy_example() / "greeter.kxproj"
        command = [e2e.BIN / "kxhost", "run", project, "--option", f"DotNetFramework.v4.0={self.folder / 'framework'}"]
        with subprocess.Popen(command, env={**self.environment, "PIDS": str(pids)}, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8") as host:
            self.addCleanup(e2e.kill_quietly, host.pid)
            started = e2e.wait_until(lambda: pids.exists() or host.poll() is not None)
            family = [int(pid) for pid in pids.read_text(encoding="utf-8").split()] if pids.exists() else []
            for pid in family:
                self.addCleanup(e2e.kill_quietly, pid)
            host.send_signal(signal.SIGINT)
            output, _ = host.communicate(timeout=60)
        self.assertTrue(started and family, output)
        return host.returncode, output, family

    def test_the_whole_family_of_processes_ends(self):
        for name, tool in (("obedient", OBEDIENT), ("stubborn", STUBBORN)):
            with self.subTest(name):
                (self.folder / "pids").unlink(missing_ok=True)
                code, output, family = self.stop_during(tool)
                self.assertEqual(code, 130, output)
                self.assertIn("Action Terminated by User.", output)
                self.assertEqual([pid for pid in family if e2e.is_running(pid)], [], output)


if __name__ == "__main__":
    unittest.main()
