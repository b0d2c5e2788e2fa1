#!/usr/bin/env python3
"""A plan on three workers of a real Buildbot, one of which is lost in the middle."""
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import unittest

import e2e
from e2e import BIN, ROOT, action, project, wait_until

WORKERS = {"[old-windows]": "one", "[new-windows]": "two", "[linux]": "three"}
WINDOWS = ["one", "two"]
SLOW = "Part 17"

# The first time that the slow part is run, it does not come to an end.
HOST = f"""#!/bin/bash
if [[ "$*" == *"--part {SLOW} "* ]] && mkdir "$KX_SCRATCH/begun" 2>/dev/null; then
  echo "$$ $PWD" > "$KX_SCRATCH/begun/who.new"
  mv "$KX_SCRATCH/begun/who.new" "$KX_SCRATCH/begun/who"
  exec sleep 900
fi
exec "{BIN}/kxhost" "$@"
"""


def parts():
    """Four rows of ten: each part needs its neighbour above and, but for the first, the one beside that."""
    for number in range(40):
        row, column = divmod(number, 10)
        needs = {f"Part {(row - 1) * 10 + above}" for above in (column, max(column - 1, 0)) if row > 0}
        yield action("MESSAGE", f'Name="Part {number}" Needs="{",".join(sorted(needs))}"', Text=f"says {number}",
                     Status="Warning" if number % 13 == 0 else "Normal")


class BuildbotTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write("bin/kxhost", HOST, executable=True)
        self.environment["PATH"] = f"{self.folder / 'bin'}:{os.environ['PATH']}"
        self.environment["KX_SCRATCH"] = str(self.folder)
        self.common = ("--plugin", BIN / "KxMessage.so", "--no-history")
        self.file = self.write("nightly.kxproj", project(*parts()))
        self.master = self.folder / "master"
        self.results = self.master / "results/plan-1"

    def run_tool(self, *command):
        run = self.run_program(*command)
        self.assertEqual(run.returncode, 0, run.stdout)

    def log_of_master(self):
        log = self.master / "twistd.log"
        return log.read_text(encoding="utf-8", errors="replace") if log.exists() else ""

    def require(self, condition, what):
        self.assertTrue(wait_until(condition, 240), f"{what}\n{self.log_of_master()[-5000:]}")

    def start_master(self):
        self.run_tool("buildbot", "create-master", "-r", self.master)
        config = (ROOT / "tools/buildbot/master.cfg").read_text(encoding="utf-8").replace("tcp:9989", "tcp:0")
        for name, ours in WORKERS.items():
            config = config.replace(name, ours)
        (self.master / "master.cfg").write_text(config, encoding="utf-8")
        shutil.copy(ROOT / "tools/buildbot/kxplan.py", self.master)
        self.start("buildbot", "start", "--nodaemon", self.master, stdout=subprocess.DEVNULL)
        self.require(lambda: re.search(r"PBServerFactory starting on \d+", self.log_of_master()), "The master has not started.")
        return re.search(r"PBServerFactory starting on (\d+)", self.log_of_master())[1]

    def start_workers(self, port):
        running = {}
        for name in WORKERS.values():
            self.run_tool("buildbot-worker", "create-worker", self.folder / name, f"localhost:{port}", name, "[password]")
            running[name] = self.start("buildbot-worker", "start", "--nodaemon", self.folder / name, stdout=subprocess.DEVNULL)
        return running

    def write_plan(self):
        plan = json.loads(self.host("plan", self.file, *self.common, "--format", "buildbot"))
        for part in plan["parts"]:
            part["capabilities"] = {0: ["linux"], 1: ["mstest"]}.get(int(part["id"].split()[1]) % 3, [])
        next(part for part in plan["parts"] if part["id"] == SLOW)["capabilities"] = ["windows"]
        self.write("plan.json", json.dumps(plan))
        return {part["id"]: set(part["capabilities"]) for part in plan["parts"]}

    def lose_a_worker(self, running):
        """The one that runs the slow part, in the middle of that."""
        begun = self.folder / "begun/who"
        self.require(begun.exists, "The slow part does not begin.")
        pid, folder = begun.read_text(encoding="utf-8").split()
        self.addCleanup(e2e.kill_quietly, int(pid))
        lost = next(name for name in running if name in pathlib.Path(folder).parts)
        running[lost].send_signal(signal.SIGKILL)
        return lost

    def report(self, name, *logs):
        """What is said of the logs, without times and files."""
        said = self.host("report", *logs, "--sarif", f"{name}.sarif", "--junit", f"{name}.xml", "--color", "never")
        found = json.loads(self.read(f"{name}.sarif"))["runs"][0]["results"]
        return re.sub(r" +(\d+ min )?[\d.]+ s$", "", said, flags=re.MULTILINE).replace(f"{name}.", ""), found

    def test_a_lost_worker_is_made_good(self):
        wanted = self.write_plan()
        port = self.start_master()
        running = self.start_workers(port)
        self.run_tool("buildbot", "sendchange", "--master", f"127.0.0.1:{port}", "--auth", "plans:[password]", "--who", "me",
                      "--property", f"plan:{self.folder / 'plan.json'}", "nightly")
        lost = self.lose_a_worker(running)
        self.require((self.results / "kx-report.html").exists, "There is no report.")
        self.assertNotIn("There is no log of", (self.results / "kx-report.html").read_text(encoding="utf-8"))

        done = json.loads((self.results / "parts.json").read_text(encoding="utf-8"))
        self.assertEqual({name for name, part in done.items() if not part["succeeded"]}, set())
        self.assertEqual(set(done), set(wanted))
        self.assertEqual({name for part in done.values() for name in part["workers"]}, set(WORKERS.values()))
        self.assertEqual(sorted(done[SLOW]["workers"]), WINDOWS)
        self.assertEqual(done[SLOW]["workers"][0], lost)
        has = {"one": {"windows", "vs2008", "mstest"}, "two": {"windows", "vs2010", "mstest"}, "three": {"linux"}}
        for name, part in done.items():
            for on in part["workers"]:
                self.assertLessEqual(wanted[name], has[on], f"{name} on {on}")

        self.host("run", self.file, *self.common, "--jobs", "1", "--log", "local.jsonl")
        merged = self.report("merged", *sorted(self.results.glob("part-*.jsonl")))
        self.assertEqual(merged, self.report("local", "local.jsonl"))


if __name__ == "__main__":
    unittest.main()
