"""Runs, editors and users that are there at the same time: no number is given out twice, nothing is torn or widened."""
import fcntl
import os
import random
import re
import threading
import time
import unittest

import e2e

RUNS = int(os.environ.get("KX_RUNS", "8"))     # at once
KILLS = int(os.environ.get("KX_KILLS", "20"))  # one after the other
PROJECT = e2e.project(e2e.build("examples/Greeter/Greeter.sln", UpdateAssemblyInfo=True, UpdateAssemblyVersion=True,
                                AutoIncAssemblyRevisionNo=True, AssemblyVersion="1|2|3|0"))


class TwoAtOnceTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write_tool()
        self.examples = self.copy_example()
        self.project = self.write("own.kxproj", PROJECT)

    def command(self, project=None):
        return ["run", project or self.project, "--color", "never", *self.tools]

    def stored(self, project=None):
        text = (project or self.project).read_text(encoding="utf-8")
        self.assertTrue(text.endswith("</BuildProject>\n"), text)
        return int(re.search(r"<AssemblyVersion>1\|2\|3\|(\d+)<", text)[1])

    def numbers(self):
        """What each file bears; every file must be whole."""
        found = []
        for file in self.examples.glob("Greeter/**/AssemblyInfo.cs"):
            text = file.read_text(encoding="utf-8")
            self.assertRegex(text, r"(?s)\Ausing System.Reflection;.*AssemblyFileVersion\(\"1.0.0.0\"\)\]\s*\Z")
            version = re.search(r'AssemblyVersion\("([\d.]+)"\)', text)[1]
            found.append(0 if version == "1.0.0.0" else int(re.fullmatch(r"1\.2\.3\.(\d+)", version)[1]))
        self.assertEqual(len(found), 3)
        return found

    def check_nothing_is_left(self):
        self.assertEqual([file for file in self.folder.rglob("*") if re.search(r"\.kx-.*\.tmp$|\.lock$", file.name)], [])

    def test_runs_at_once_share_no_number(self):
        started = [self.start_host(*self.command()) for _ in range(RUNS)]
        outputs = [run.communicate(timeout=240)[0] for run in started]
        self.assertEqual([run.returncode for run in started], [0] * RUNS, outputs[0])
        used = [set(re.findall(r"AssemblyVersion : 1\.2\.3\.(\d+)", output)) for output in outputs]
        self.assertEqual(sorted(int(*numbers) for numbers in used), list(range(1, RUNS + 1)))
        self.assertEqual(self.stored(), RUNS)
        self.assertLessEqual(set(self.numbers()), set(range(1, RUNS + 1)))
        self.check_nothing_is_left()

    def test_a_number_is_stored_before_a_killed_run_can_have_used_it(self):
        begin = time.monotonic()
        self.host(*self.command())
        usual = time.monotonic() - begin
        seed = random.randrange(1 << 30)
        moments = random.Random(seed)
        counted = 0
        for kill in range(KILLS):
            before, inode = self.stored(), self.project.stat().st_ino
            run = self.start_host(*self.command())
            if kill % 2 == 0:
                time.sleep(moments.uniform(0, usual))
            else:  # among the files that follow the count
                e2e.wait_until(lambda old=inode, host=run: self.project.stat().st_ino != old or host.poll() is not None)
                time.sleep(moments.uniform(0, usual / 10))
            run.kill()
            run.communicate()
            with self.subTest(f"kill {kill} of seed {seed}"):
                self.assertIn(self.stored() - before, (0, 1))
                self.assertLessEqual(max(self.numbers()), self.stored())
            counted += self.stored() - before
        self.assertGreaterEqual(counted, KILLS // 2)
        self.host(*self.command())  # nothing that a kill has left stands in the way
        self.assertEqual(set(self.numbers()), {self.stored()})
        print(f"{KILLS} kills, {counted} of them behind the count", flush=True)

    def test_whoever_holds_the_project_is_named_and_waited_for(self):
        link = self.folder / "link.kxproj"
        link.symlink_to(self.project)
        with open(f"{self.project}.lock", "w", encoding="utf-8") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            lock.write("process 12 on elsewhere\n")
            lock.flush()
            run = self.start_host(*self.command(link))
            waiting = next(line for line in iter(run.stdout.readline, "") if "Waiting for " in line)
            self.assertIn("link.kxproj, held by process 12 on elsewhere", waiting)
            self.assertEqual(set(self.numbers()), {0}, "stamped without the lock")
        self.assertIn("Succeeded", run.communicate(timeout=60)[0])
        self.assertEqual((run.returncode, self.stored(), set(self.numbers())), (0, 1, {1}))
        self.check_nothing_is_left()

    def test_an_edit_during_a_run_is_kept(self):
        self.write_tool("touch started", "while [ ! -e go ]; do sleep 0.02; done")
        run = self.start_host(*self.command())
        self.assertTrue(e2e.wait_until((self.examples / "Greeter/started").exists))
        self.assertEqual(self.stored(), 1, "the number is not stored while the tool runs")
        edited = self.project.read_text(encoding="utf-8").replace("<Actions>", "<!-- mine --><Actions>").replace("|1<", "|40<")
        self.project.write_text(edited, encoding="utf-8")
        (self.examples / "Greeter/go").touch()
        output, _ = run.communicate(timeout=60)
        self.assertEqual(run.returncode, 0, output)
        self.assertEqual(self.project.read_text(encoding="utf-8"), edited)

    @unittest.skipIf(os.geteuid() != 0, "only the superuser can be two users")
    def test_another_user_widens_and_takes_over_nothing(self):
        self.folder.chmod(0o777)
        for path in self.folder.rglob("*"):
            os.chown(path, 4711, 4711, follow_symlinks=False)
        # owner and group of the project, whether user 4711 of the group 4712 may store numbers in it
        for owner, group, allowed in (4711, 4712, True), (4711, 4713, False), (4714, 4712, False):
            with self.subTest(f"{owner}:{group}"):
                self.project.write_text(PROJECT, encoding="utf-8")
                os.chown(self.project, owner, group)
                self.project.chmod(0o664)
                run = self.start_host(*self.command(), user=4711, group=4711, extra_groups=[4712])
                output, _ = run.communicate(timeout=60)
                info = self.project.stat()
                self.assertEqual((info.st_uid, info.st_gid, info.st_mode & 0o7777), (owner, group, 0o664))
                self.assertEqual((run.returncode, self.stored()), (0, 1) if allowed else (1, 0), output)
                refused = f"The numbers cannot be stored, so they are not used. Cannot write file {self.project}. "
                self.assertEqual(refused in output, not allowed, output)

    def test_runs_of_two_projects_tear_no_file_of_both(self):
        projects, ends = (self.project, self.write("other.kxproj", PROJECT)), []

        def repeat(project):
            ends.extend(self.host(*self.command(project)) for _ in range(RUNS))

        threads = [threading.Thread(target=repeat, args=(project,)) for project in projects]
        for thread in threads:
            thread.start()
        while any(thread.is_alive() for thread in threads):
            self.numbers()
        self.assertEqual(len(ends), 2 * RUNS)
        self.assertEqual([self.stored(project) for project in projects], [RUNS, RUNS])


if __name__ == "__main__":
    unittest.main()
