"""Runs, editors and users that are there at the same time: no number is given out twice, nothing is torn or widened."""
import contextlib
import fcntl
import os
import random
import re
import subprocess
import threading
import time
import unittest

import e2e

RUNS = int(os.environ.get("KX_RUNS", "8"))     # at once
KILLS = int(os.environ.get("KX_KILLS", "20"))  # one after the other
PROJECT = """<BuildProject><Actions>
  <Action Type="DEVENV" Name="Build">
    <Solution>%Root%/Greeter.sln</Solution><SolutionConfiguration>Debug|Any CPU</SolutionConfiguration>
    <VStudioVersion>vs2010</VStudioVersion><UpdateAssemblyInfo>True</UpdateAssemblyInfo>
    <UpdateAssemblyVersion>True</UpdateAssemblyVersion><AutoIncAssemblyRevisionNo>True</AutoIncAssemblyRevisionNo>
    <AssemblyVersion>1|2|3|0</AssemblyVersion>
  </Action>
</Actions></BuildProject>
"""
# user::rw-, user:4711:rw-, group::---, mask::rw-, other::---
ACCESS_LIST = bytes.fromhex("02000000 01000600ffffffff 0200060067120000 04000000ffffffff 10000600ffffffff 20000000ffffffff")


class TwoAtOnceTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write("framework/MSBuild.exe", "#!/bin/sh\n", executable=True)
        self.examples = self.copy_example()
        self.project = self.write("own.kxproj", PROJECT)

    def command(self, *arguments, root="examples/Greeter"):
        return [str(part) for part in (
            e2e.BIN / "kxhost", "run", self.project, "--set", f"Root={self.folder / root}", "--color", "never",
            "--option", f"DotNetFramework.v4.0={self.folder / 'framework'}", *arguments)]

    def start(self, command, **options):
        return subprocess.Popen(command, cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", **options)

    def stored(self, project=None):
        text = (project or self.project).read_text(encoding="utf-8")
        self.assertTrue(text.endswith("</BuildProject>\n"), text)
        return int(re.search(r"<AssemblyVersion>1\|2\|3\|(\d+)<", text).group(1))

    def sources(self, root="examples/Greeter"):
        files = sorted((self.folder / root).rglob("AssemblyInfo.cs"))
        self.assertEqual(len(files), 3)
        return files

    def numbers(self, root="examples/Greeter"):
        """What each file bears; every file must be whole."""
        found = []
        for file in self.sources(root):
            text = file.read_text(encoding="utf-8")
            self.assertRegex(text, r"(?s)\Ausing System.Reflection;.*AssemblyFileVersion\(\"1.0.0.0\"\)\]\s*\Z")
            version = re.search(r'AssemblyVersion\("([\d.]+)"\)', text).group(1)
            found.append(0 if version == "1.0.0.0" else int(re.fullmatch(r"1\.2\.3\.(\d+)", version).group(1)))
        return found

    def leftovers(self):
        return [file.name for file in self.folder.rglob("*") if re.search(r"\.kx-.*\.tmp$|\.lock$", file.name)]

    def test_runs_at_once_share_no_number(self):
        started = [self.start(self.command()) for _ in range(RUNS)]
        outputs = [run.communicate(timeout=240)[0] for run in started]
        self.assertEqual([run.returncode for run in started], [0] * RUNS, outputs[0])
        used = [re.findall(r"AssemblyVersion : 1\.2\.3\.(\d+)", output) for output in outputs]
        self.assertEqual(sorted(int(numbers[0]) for numbers in used), list(range(1, RUNS + 1)))
        self.assertTrue(all(len(set(numbers)) == 1 for numbers in used), used)
        self.assertEqual(self.stored(), RUNS)
        self.assertLessEqual(set(self.numbers()), set(range(1, RUNS + 1)))
        self.assertEqual(self.leftovers(), [])

    def test_a_number_is_stored_before_a_killed_run_can_have_used_it(self):
        begin = time.monotonic()
        self.assertEqual(self.run_program(*self.command()).returncode, 0)
        usual = time.monotonic() - begin
        seed = random.randrange(1 << 30)
        moments = random.Random(seed)
        counted = 0
        for kill in range(KILLS):
            before, inode = self.stored(), self.project.stat().st_ino
            run = self.start(self.command())
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
        last = self.run_program(*self.command())
        self.assertEqual(last.returncode, 0, f"what a kill has left stands in the way\n{last.stdout}")
        self.assertEqual(set(self.numbers()), {self.stored()})
        print(f"{KILLS} kills, {counted} of them behind the count", flush=True)

    def test_whoever_holds_the_project_is_named_and_waited_for(self):
        link = self.folder / "link.kxproj"
        link.symlink_to(self.project)
        with open(f"{self.project}.lock", "w", encoding="utf-8") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            lock.write("process 12 on elsewhere\n")
            lock.flush()
            run = self.start([str(link) if part == str(self.project) else part for part in self.command()])
            output = iter(run.stdout.readline, "")
            waiting = next(line for line in output if "Waiting for " in line)
            self.assertIn("link.kxproj, held by process 12 on elsewhere", waiting)
            self.assertEqual(set(self.numbers()), {0}, "stamped without the lock")
        self.assertIn("Succeeded", "".join(output))
        self.assertEqual(run.wait(60), 0)
        run.stdout.close()
        self.assertEqual((self.stored(), set(self.numbers())), (1, {1}))
        self.assertEqual(self.leftovers(), [])

    def test_an_edit_during_a_run_is_kept(self):
        self.write("framework/MSBuild.exe", "#!/bin/sh\ntouch started\nwhile [ ! -e go ]; do sleep 0.02; done\n", True)
        run = self.start(self.command())
        wait = self.examples / "Greeter"
        self.assertTrue(e2e.wait_until((wait / "started").exists))
        self.assertEqual(self.stored(), 1, "the number is not stored while the tool runs")
        edited = self.project.read_text(encoding="utf-8").replace("<Actions>", "<!-- mine --><Actions>").replace("|1<", "|40<")
        self.project.write_text(edited, encoding="utf-8")
        (wait / "go").touch()
        output, _ = run.communicate(timeout=60)
        self.assertEqual(run.returncode, 0, output)
        self.assertEqual(self.project.read_text(encoding="utf-8"), edited)

    def test_what_files_have_beside_their_content_is_kept(self):
        traits = {"user.note": b"mine", "system.posix_acl_access": ACCESS_LIST}
        files = [self.project, *self.sources()]
        try:
            for file in files:
                for name, value in traits.items():
                    os.setxattr(file, name, value)
        except OSError as error:
            self.skipTest(f"this file system keeps no attributes: {error}")
        self.project.chmod(0o660)
        run = self.run_program(*self.command())
        self.assertEqual(run.returncode, 0, run.stdout)
        self.assertEqual((self.stored(), set(self.numbers())), (1, {1}))
        for file in files:
            for name, value in traits.items():
                self.assertEqual(os.getxattr(file, name), value, f"{file} {name}")

    def test_a_file_of_two_names_is_refused_by_name(self):
        twin = self.sources()[0]
        os.link(twin, self.folder / "twin")
        run = self.run_program(*self.command())
        self.assertEqual(run.returncode, 1, run.stdout)
        self.assertIn(f"Cannot write file {twin}. It has 2 names (hard links)", run.stdout)
        self.assertEqual(twin.stat().st_nlink, 2)
        self.assertEqual((self.folder / "twin").read_bytes(), twin.read_bytes())
        self.assertLessEqual(max(self.numbers()), self.stored())

    @unittest.skipIf(os.geteuid() != 0, "only the superuser can be two users")
    def test_another_user_widens_and_takes_over_nothing(self):
        self.folder.chmod(0o777)
        self.write("config/kxhost/.keep", "")
        rows = [
            # owner and group of the project, whether user 4711 of the group 4712 may store numbers in it
            (4711, 4711, True), (4711, 4712, True), (4711, 4713, False), (4714, 4712, False),
        ]
        for path in (*self.folder.rglob("*"),):
            os.chown(path, 4711, 4711, follow_symlinks=False)
        for owner, group, allowed in rows:
            with self.subTest(f"{owner}:{group}"):
                self.project.write_text(PROJECT, encoding="utf-8")
                os.chown(self.project, owner, group)
                self.project.chmod(0o664)
                run = self.start(self.command(), user=4711, group=4711, extra_groups=[4712])
                output, _ = run.communicate(timeout=60)
                self.assertEqual(run.returncode, 0 if allowed else 1, output)
                info = self.project.stat()
                self.assertEqual((info.st_uid, info.st_gid, info.st_mode & 0o7777), (owner, group, 0o664))
                self.assertEqual(self.stored(), 1 if allowed else 0)
                if not allowed:
                    self.assertIn(f"The numbers cannot be stored, so they are not used. Cannot write file {self.project}. ", output)

    def test_a_full_disk_gives_out_no_number(self):
        disk = self.folder / "disk"
        disk.mkdir()
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "none", disk], capture_output=True, check=False)
        if mounted.returncode != 0:
            self.skipTest(f"no small file system can be made: {mounted.stderr.decode().strip()}")
        self.addCleanup(subprocess.run, ["umount", disk], check=False)
        self.project = self.write("disk/own.kxproj", PROJECT)
        with contextlib.suppress(OSError), open(disk / "filler", "wb", buffering=0) as filler:
            while True:
                filler.write(b"x" * 4096)
        run = self.run_program(*self.command())
        self.assertEqual(run.returncode, 1, run.stdout)
        self.assertIn(f"Cannot write file {self.project}. No space left on device", run.stdout)
        self.assertEqual((self.stored(), set(self.numbers())), (0, {0}))
        self.assertEqual(self.leftovers(), [])

    def test_runs_of_two_projects_tear_no_file_of_both(self):
        own = self.project
        other = self.write("other.kxproj", PROJECT)
        ends = []

        def repeat(project):
            command = [str(project) if part == str(own) else part for part in self.command()]
            ends.extend(self.run_program(*command).returncode for _ in range(RUNS))

        threads = [threading.Thread(target=repeat, args=(project,)) for project in (own, other)]
        for thread in threads:
            thread.start()
        while any(thread.is_alive() for thread in threads):
            self.numbers()
        for thread in threads:
            thread.join()
        self.assertEqual(ends, [0] * 2 * RUNS)
        self.assertEqual((self.stored(own), self.stored(other)), (RUNS, RUNS))


if __name__ == "__main__":
    unittest.main()
