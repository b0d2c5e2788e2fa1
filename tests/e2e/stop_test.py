"""The end of a run in the middle of a build: asked for once, twice, by the closing of the terminal, or by force."""
import os
import pty
import random
import signal
import time
import unittest

import e2e

# A tool that leaves a child of its own in the background and does not end when it is asked to.
STUBBORN = """trap '' INT TERM HUP
sleep 300 &
echo "$$ $!" > "$PIDS.new"
mv "$PIDS.new" "$PIDS"
while true; do sleep 300; done"""
OBEDIENT = STUBBORN.replace("trap '' INT TERM HUP\n", "")
# The child has moved away, or bears nothing any more of what it was started with.
SCATTERED = STUBBORN.replace("sleep 300 &", "setsid sleep 300 &")
STRIPPED = STUBBORN.replace("sleep 300 &", "env -i setsid sleep 300 &")
TWICE = (signal.SIGINT, signal.SIGTERM)


class StopTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.project = self.copy_example() / "greeter.kxproj"
        self.pids = self.folder / "pids"
        self.environment["PIDS"] = str(self.pids)

    def start_in_tool(self, tool, **options):
        """The program in the middle of its tool, and that tool's family."""
        self.pids.unlink(missing_ok=True)
        self.write_tool(tool)
        host = self.start_host("run", self.project, "--log", "log.jsonl", *self.tools, **options)
        e2e.wait_until(lambda: self.pids.exists() or host.poll() is not None)
        family = [int(pid) for pid in self.read("pids").split()]
        for pid in family:
            self.addCleanup(e2e.kill_quietly, pid)
        return host, family

    def running(self, family):
        return [pid for pid in family if e2e.is_running(pid)]

    def test_the_whole_family_of_processes_ends(self):
        for name, tool, signals in (("asked once", OBEDIENT, TWICE[:1]), ("refusing", STUBBORN, TWICE[:1]),
                                    ("refusing twice", STUBBORN, TWICE), ("scattered", SCATTERED, TWICE[:1]),
                                    ("scattered twice", SCATTERED, TWICE), ("stripped", STRIPPED, TWICE)):
            with self.subTest(name):
                host, family = self.start_in_tool(tool)
                for number in signals:
                    host.send_signal(number)
                    time.sleep(0.1)  # the second one comes within the grace of the first
                output, _ = host.communicate(timeout=60)
                self.assertEqual(self.running(family), [], output)
                self.assertEqual(host.returncode, 130, output)
                self.assertIn("Action Terminated by User.", output)
                self.assertEqual(len(self.events("runEnd")), 1)

    def test_the_family_ends_with_a_program_that_is_killed(self):
        for name, tool in (("refusing", STUBBORN), ("scattered", SCATTERED), ("stripped", STRIPPED)):
            with self.subTest(name):
                host, family = self.start_in_tool(tool)
                time.sleep(random.uniform(0, 0.2))
                host.kill()
                self.assertTrue(e2e.wait_until(lambda family=family: not self.running(family)), self.running(family))

    def test_the_closing_of_the_terminal_ends_all_at_once(self):
        for tool in (STUBBORN, SCATTERED):
            master, terminal = pty.openpty()
            host, family = self.start_in_tool(
                tool, stdin=terminal, stdout=terminal, stderr=terminal, start_new_session=True,
                preexec_fn=lambda: os.close(os.open(os.ttyname(0), os.O_RDWR)))
            os.close(terminal)
            os.close(master)
            self.assertEqual(host.wait(60), 130)
            self.assertEqual(self.running(family), [])
            self.assertEqual(len(self.events("runEnd")), 1)

    def test_a_tool_that_a_signal_ended_is_told_from_one_that_failed(self):
        for tool, said in (("kill -SEGV $$", True), ("exit 1", False)):
            self.write_tool(tool)
            shown = self.host("run", self.project, *self.tools, code=1)
            self.assertIn("MSBuild.exe returned Error code : ", shown)
            self.assertEqual("MSBuild.exe was ended by signal 11 (SIGSEGV)." in shown, said, shown)


class SaveTest(e2e.EndToEndTest):
    """Signals at any moment of a program that does little else than saving."""

    def test_a_signal_never_leaves_half_of_a_save(self):
        options, lock = self.folder / "options.ini", self.folder / "options.ini.lock"
        # Long enough to be met in the middle.
        text = "".join(f"[Section{i}]\nName={'x' * 1000}\n" for i in range(2000))
        ends = set()
        for trial in range(60):
            options.write_text(text, encoding="utf-8")
            lock.unlink(missing_ok=True)
            host = self.start_host("--options", options, "options", "set", "VisualStudioDotNet.MSDevPath2008", f"/value{trial}")
            # From the first sign of a save on, without any pause in which it could come to its end.
            while host.poll() is None and not lock.exists():
                pass
            while host.poll() is None:
                host.send_signal(random.choice((signal.SIGINT, signal.SIGTERM, signal.SIGHUP)))
            ends.add(host.returncode)
            saved = options.read_text(encoding="utf-8")
            self.assertTrue(saved == text or f"/value{trial}\n" in saved, saved[-200:])
            self.assertEqual(saved.count("Name="), 2000)
            self.assertEqual([path.name for path in self.folder.glob(".kx-*")], [])
        self.assertTrue(ends & {-signal.SIGINT, -signal.SIGTERM, -signal.SIGHUP}, ends)


if __name__ == "__main__":
    unittest.main()
