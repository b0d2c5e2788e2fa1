"""What happens when the system says no: each call of each command that writes something fails once, in turn.

The calls are counted and refused by tests/faults/Faults.cpp. Every fault is followed by the same questions: is each file
the old one or the new one, is nothing left behind, was it said what failed, does the exit code say so, does the next run
work. Without KX_FAULTS only the first call of its kind on each file is tried; KX_FAULTS=5 tries every fifth call, too,
KX_FAULTS=all each, and lets each allocation fail, which takes a quarter of an hour."""
import collections
import contextlib
import http.client
import json
import os
import re
import shutil
import signal
import subprocess
import threading
import unittest

import e2e

ALL = os.environ.get("KX_FAULTS") == "all"
EVERY = 1 if ALL else int(os.environ.get("KX_FAULTS", "0"))
MODES = "refuse", "interrupt", "shorten", "full", "memory"
SEED = 20021  # where the walk over the allocations begins
TOO_LONG = 60  # seconds
# How each call fails, as the library lets it.
REASON_OF = {
    **dict.fromkeys(("open", "rename", "unlink"), "Permission denied"),
    **dict.fromkeys(("write", "mkdir", "setxattr"), "No space left on device"),
    **dict.fromkeys(("read", "fsync", "close", "stat", "readdir", "ftruncate", "getxattr"), "Input/output error"),
    **dict.fromkeys(("link", "fchmod", "fchown", "futimens"), "Operation not permitted"),
    "flock": "No locks available", "pipe": "Too many open files", "eventfd": "Too many open files",
    "spawn": "Resource temporarily unavailable", "thread": "Resource temporarily unavailable"}
# The results come as a whole, since the tool dies with a run that fails.
TOOL = """#!/bin/sh
for argument; do case "$argument" in
  /resultsfile:*) part="${0%/*/*/*}/part"; cat "$0.trx" > "$part"; mv "$part" "${argument#*:}" ;;
esac; done
echo "Passed  A"
"""
RESULTS = """<TestRun xmlns="http://microsoft.com/schemas/VisualStudio/TeamTest/2006"><Results>
<UnitTestResult testName="A" outcome="Passed" duration="00:00:01.5000000"/></Results></TestRun>"""
STAMPING = e2e.project(
    e2e.build("App.sln", UseMSBuild=True, UpdateAssemblyInfo=True, UpdateAssemblyVersion=True, AssemblyVersion="2|0|0|7",
              AutoIncAssemblyBuildNumber=True, UpdateWin32Resource=True, UseWin32PropertySet=True,
              Win32VersionInfoPropertySetName="Set"),
    head="""<PropertySets><PropertySet Name="Set" Kind="Win32"><Value Name="MajorVersion">3</Value>
            <Value Name="CompanyName">The Greeters</Value></PropertySet></PropertySets>""")
SCRIPT = (e2e.ROOT / "examples/Greeter/Greeter.Native/version.rc").read_text(encoding="ascii")
COPY_ITEM = '<Compile Include="Properties\\AssemblyInfo.cs" />'
RESOURCE_ITEM = '<Project><ItemGroup><ResourceCompile Include="version.rc" /></ItemGroup></Project>'
ASSEMBLY_INFO = '[assembly: AssemblyVersion("1.0.0.0")]\n'
# What no two runs have in common.
CHANGING = re.compile(rb'"time":"[^"]*"|"(?:elapsed|began)Ms":\d+|started [\d :-]+ UTC|\d+\.\d+ s\b|time="[^"]*"'
                      rb'|timestamp="[^"]*"|kx-\w{12}|MSTRE\w+')
LOST = "The editor does not answer."
TEMPORARY = re.compile(r"kx-\w{12}|MSTRE\w+|\.kx-\w{12}\.tmp")


class Fault(collections.namedtuple("Fault", "mode number call path")):
    def __str__(self):
        return f"{self.mode} {self.number}: {self.call} {self.path}"

    def kind(self):
        return self.mode, self.call, TEMPORARY.sub("*", self.path)


Outcome = collections.namedtuple("Outcome", "code said")


class FaultsTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.work = self.folder / "work"
        self.trace = self.folder / "trace"
        self.faulty = self.work  # the history lies beside it
        places = {"HOME": "", "XDG_CONFIG_HOME": "config", "TMPDIR": "temporary"}
        self.environment.update({name: str(self.work / place) for name, place in places.items()})
        self.environment["ASAN_OPTIONS"] = "verify_asan_link_order=0"
        for name, text in {"temporary/of others": "", "config/kxhost/options.ini": "; mine\n[VisualStudioDotNet]\nMSDevPath=/a\n",
                           "tools/MSBuild.exe": TOOL, "tools/MSTest.exe": TOOL, "tools/MSTest.exe.trx": RESULTS}.items():
            self.write(f"work/{name}", text, executable=name.endswith(".exe"))
        kept = self.write("work/temporary/kx-ofanearlier1/.kept").parent  # whoever sweeps the folder leaves that
        kept.chmod(0o700)
        self.options = ["--color", "never", "--option", f"DotNetFramework.v4.0={self.work / 'tools'}",
                        "--option", f"VisualStudioDotNet.StandaloneMSTestDir={self.work / 'tools'}"]
        self.accounts = set()  # files that tell of the run: as a whole, but with other words each time
        self.on_server = {}
        self.following = None  # where the command cannot simply be given again
        self.asked = ()  # of the editor, one after the other
        self.wanted = ()  # texts; one that could not be saved is kept beside its project

    # What is there, and putting it back.

    def look(self):
        return {f"on the server{name}": content for name, content in self.on_server.items()} | {
            str(path.relative_to(self.work)): b"a folder" if path.is_dir() else path.read_bytes()
            for path in self.work.rglob("*")}

    def put_back(self, wanted):
        self.on_server.update({name.removeprefix("on the server"): content for name, content in wanted.items()
                               if name.startswith("on the server")})
        there = self.look()
        for name in sorted(there.keys() - wanted.keys(), reverse=True):
            file = self.work / name
            file.rmdir() if file.is_dir() else file.unlink()
        for name in sorted(name for name in wanted if there.get(name) != wanted[name]):
            if wanted[name] == b"a folder":
                (self.work / name).mkdir()
            else:
                (self.work / name).write_bytes(wanted[name])

    # One run.

    def run_command(self, arguments, fault=None):
        environment = {}
        if fault is not None:
            self.trace.unlink(missing_ok=True)
            environment.update(LD_PRELOAD=str(e2e.BIN / "kx_faults.so"), KX_FAULT_FOLDER=str(self.faulty),
                               KX_FAULT_MODE=fault.mode, KX_FAULT_AT=str(fault.number), KX_FAULT_TRACE=str(self.trace))
            if fault.mode == "memory":  # the JSON library loses what an object had when there is no memory for the rest
                environment["ASAN_OPTIONS"] = self.environment["ASAN_OPTIONS"] + ":detect_leaks=0"
        with subprocess.Popen([str(part) for part in (e2e.BIN / "kxhost", *arguments)], cwd=self.work, stdin=subprocess.DEVNULL,
                              env={**self.environment, **environment}, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              encoding="utf-8", errors="replace") as host, killed_after(TOO_LONG, host):
            failed, talk = ask_editor(host, self.asked) if arguments[0] == "edit" else (False, "")
            said = host.communicate()[0]
        return Outcome(host.returncode or int(failed), talk + said)

    def faults_in_trace(self, mode):
        lines = self.trace.read_text(encoding="utf-8").splitlines() if self.trace.exists() else []
        for line in lines:
            number, call, path = line.split(" ", 2)
            yield Fault(mode, int(number), call, path.replace(str(self.work) + "/", ""))

    # The questions.

    def complaints(self, fault, outcome, before, after):
        """What is wrong behind a run with this fault, a line each."""
        now = self.look()
        if outcome.code not in (0, 1, 2, 3) or "Sanitizer" in outcome.said or "runtime error" in outcome.said:
            yield f"it ended with {outcome.code}"
        passing = fault.mode in ("interrupt", "shorten")
        if passing and outcome.code != 0:
            yield f"it ended with {outcome.code}, though nothing had failed for good"
        # What a tool has left and the program cannot read is kept for somebody to look at, and said to be there.
        kept = tuple(name.removesuffix("/.kept") for name in now if name.endswith("/.kept"))
        kept = tuple(folder for folder in kept if "results file: " + str(self.work / folder) in outcome.said)
        for name in sorted(name for name in now.keys() | before.keys() | after.keys() if not name.startswith(kept)):
            yield from self.complaints_of_file(name, fault, outcome, *(state.get(name) for state in (now, before, after)))
        if outcome.code != 0 and not passing:
            yield from self.complaints_of_words(fault, outcome, after)

    def complaints_of_file(self, name, fault, outcome, now, before, after):
        if name in self.accounts:
            if outcome.code == 0 and not is_whole(name, now):
                yield f"{name} is not whole"
            if outcome.code != 0 and now != before and not is_whole(name, now, name in outcome.said):
                yield f"{name} is not whole, which is not said"
        elif before is None and after is None:
            if fault.call != "unlink" and not (name.endswith(".unsaved.kxproj") and now in self.wanted):
                yield f"{name} is left behind"
        elif steady(now) not in (steady(before), steady(after)):
            yield f"{name} is neither the old one nor the new one: {now!r}"
        elif outcome.code == 0 and steady(now) != steady(after) and not (fault.call == "unlink" and after is None):
            yield f"{name} is the old one, and the exit code is 0"

    def complaints_of_words(self, fault, outcome, after):
        if fault.mode == "memory":
            if "Out of memory" not in outcome.said and LOST not in outcome.said:
                yield "nothing is said of memory"
            return
        reason = "No space left on device" if fault.mode == "full" else REASON_OF.get(fault.call)
        if reason not in outcome.said and fault.call not in ("stat", "readdir"):  # what cannot be seen may be called missing
            yield f"\"{reason}\" is not said"
        folder, name = os.path.split(fault.path)
        names = {name, os.path.basename(folder)} | {each.rpartition("/")[2] for each in after if os.path.dirname(each) == folder}
        if fault.path and fault.path != "pipe" and not any(name in outcome.said for name in names if name):
            yield "no file is named"

    # All faults of one command.

    def try_faults(self, name, *arguments):
        before, tried = self.look(), collections.Counter()
        clean = self.run_command(arguments)
        self.assertEqual(clean.code, 0, clean.said)
        after = self.look()
        self.wanted = after.values()
        for mode in MODES:
            self.put_back(before)
            traced = self.run_command(arguments, Fault(mode, 0, "", ""))
            self.assertEqual(traced.code, 0, traced.said)
            for fault in self.chosen(list(self.faults_in_trace(mode))):
                self.put_back(before)
                outcome = self.run_command(arguments, fault)
                struck = next((each for each in self.faults_in_trace(mode) if each.call != "allocations"), None)
                if struck is None:  # fewer calls than before
                    continue
                tried[mode] += 1
                with self.subTest(f"{name}, {struck}"):
                    wrong = list(self.complaints(struck, outcome, before, after))
                    following = self.run_again(arguments, before, after)
                    if following:
                        wrong.append("the next run fails: " + following)
                    self.assertEqual(wrong, [], outcome.said)
        self.put_back(before)
        print(f"{name}: {', '.join(f'{count} {mode}' for mode, count in tried.items())}")

    def run_again(self, arguments, before, after):
        """What a run says that fails. From where a clean run has started or ended nothing else is to be expected."""
        now = self.look()
        if now == before or now.keys() == after.keys():
            return ""
        following = self.run_command(self.following or arguments)
        return following.said if following.code != 0 else ""

    def chosen(self, faults):
        if faults and faults[-1].call == "allocations":
            return spread(faults[-1])
        first = {fault.kind(): fault for fault in reversed(faults)}.values()
        return list(dict.fromkeys((*first, *(faults[::EVERY] if EVERY else ()))))

    # The commands.

    def test_options(self):
        self.try_faults("options set", "options", "set", "VisualStudioDotNet.MSDevPath2008", "/opt")
        self.following = ["options"]
        self.try_faults("options unset", "options", "unset", "VisualStudioDotNet.MSDevPath")

    def make_solution(self, project=STAMPING):
        for name, text in {"App.sln": e2e.solution("App\\App.csproj", "Native\\Native.vcxproj", configuration="Debug|Any CPU"),
                           "App/App.csproj": COPY_ITEM, "App/Properties/AssemblyInfo.cs": ASSEMBLY_INFO,
                           "Native/Native.vcxproj": RESOURCE_ITEM, "Native/version.rc": SCRIPT, "p.kxproj": project}.items():
            self.write(f"work/{name}", text)

    def test_a_run_that_stamps_and_saves_its_numbers(self):
        self.make_solution()
        self.try_faults("run", "run", "p.kxproj", *self.options)

    def test_what_a_run_leaves_for_others(self):
        self.make_solution(e2e.project(e2e.build("App.sln", UseMSBuild=True)))
        self.accounts = {"log.jsonl", "tests.xml", "report.html"}
        for name in self.accounts:
            self.write(f"work/{name}", "of an earlier run\n")
        self.try_faults("run with log and reports", "run", "p.kxproj", *self.options,
                        "--log", "log.jsonl", "--junit", "tests.xml", "--report", "report.html")

    def test_a_history_fails_no_run(self):
        self.make_solution(e2e.project(e2e.build("App.sln", UseMSBuild=True)))
        self.faulty = self.folder / "state"
        command = ["run", "p.kxproj", *self.options]
        kinds = set()

        def run_anew(fault):
            shutil.rmtree(self.faulty, ignore_errors=True)
            return self.run_command(command, fault)

        for mode in MODES[:-1]:
            run_anew(Fault(mode, 0, "", ""))
            for fault in self.chosen([fault for fault in self.faults_in_trace(mode) if "/history" in fault.path]):
                outcome = run_anew(fault)
                if not any("/history" in struck.path for struck in self.faults_in_trace(mode)):
                    continue  # threads take turns, and another call was the one of this number
                kinds.add(fault.call)
                with self.subTest(str(fault)):
                    self.assertEqual(outcome.code, 0, outcome.said)
                    self.assertLessEqual(outcome.said.count("Warning : the "), 1, outcome.said)
        self.assertNotIn("Warning : the ", self.run_command(command).said)
        print("history:", ", ".join(sorted(kinds)))
        self.assertIn("open", kinds)

    def test_results_of_tests(self):
        self.write("work/a.dll")
        command = ["do", "MSTEST", "UseStandaloneMSTest=True", "AssemblyFileName=a.dll", *self.options]
        self.try_faults("do MSTEST", *command)
        self.try_faults("do MSTEST into a file", *command, "OutputFileName=r.trx")

    def test_one_script(self):
        self.write("work/version.rc", SCRIPT)
        self.try_faults("do VERSIONINFO", "do", "VERSIONINFO", "ResourceFile=version.rc", "PropertySetName=Now",
                        "PropertiesToUpdate=MajorVersion=True", "--property-set", "Now.MajorVersion=3", *self.options)

    def test_files_of_a_web_project(self):
        server = e2e.start_server({"/MyWeb/MyWeb.csproj": COPY_ITEM.encode(),
                                   "/MyWeb/Properties/AssemblyInfo.cs": ASSEMBLY_INFO.encode()})
        self.write("work/Web.sln", e2e.web_solution(f"http://127.0.0.1:{server.port}"))
        self.on_server = server.files
        self.try_faults("do DEVENV over WebDAV", *e2e.STAMP_WEB, "Solution=Web.sln", "WebDAVUsername=me", *self.options)

    def test_the_editor(self):
        self.make_solution()
        self.following = ["validate", "p.kxproj", *self.options[2:]]
        value = {"id": "0", "name": "Name", "value": "Greeter"}
        for name, self.asked in {
                "changes and saves": (("attribute", value), ("undo", {}), ("redo", {}), ("list", {"path": ""}), ("save", {})),
                "runs": (("validate", {}), ("run", {})), "ends unsaved": (("attribute", value),)}.items():
            self.try_faults(f"edit {name}", "edit", "p.kxproj", "--no-browser", *self.options)

    def test_what_changes_nothing(self):
        self.make_solution()
        self.try_faults("validate", "validate", "p.kxproj", *self.options[2:])
        self.try_faults("run --dry-run", "run", "p.kxproj", "--dry-run", *self.options)
        self.try_faults("inspect", "inspect", "App.sln", "Native/version.rc")


@contextlib.contextmanager
def killed_after(seconds, process):
    """Whatever it does, and with what is done meanwhile: nothing waits for it behind that."""
    clock = threading.Timer(seconds, process.kill)
    clock.start()
    try:
        yield
    finally:
        clock.cancel()
        process.kill()


def ask_editor(process, asked):
    """One after the other, until something fails. Whether it did, and all that was said."""
    editor = e2e.Editor(process)
    said = [editor.said]
    failed = editor.base is None  # then the exit code tells more
    try:
        if not failed:
            editor.enter()
        for operation, values in () if failed else asked:
            answer = editor.call(operation, **values)
            said += answer["messages"]
            failed = bool(answer["messages"])
            if operation == "run":
                said += [json.dumps(event, ensure_ascii=False) for events in editor.events() for event in events]
                run = editor.call("runs")
                said += run["messages"] + [run["runs"][-1]["error"]]
                failed = bool(run["messages"]) or run["runs"][-1]["result"] == "failed"
            if failed:
                break
    except e2e.Refused as error:
        said.append(str(error))
        failed = True
    except (OSError, http.client.HTTPException):  # the page says what it cannot know better
        said.append(LOST)
        failed = True
    process.send_signal(signal.SIGINT)
    return failed, "\n".join(said) + "\n"


def spread(last):
    """Over all allocations, of which there are too many to let each fail each time."""
    stride = 1 if ALL else max(1, last.number // (150 // EVERY if EVERY else 10))
    return [last._replace(number=number, call="allocate") for number in range(1 + SEED % stride, last.number + 1, stride)]


def steady(content):
    return content if content is None else CHANGING.sub(b"", content)


def is_whole(name, content, may_be_cut=None):
    """A log grows with its run: what ends early leaves the lines so far, and part of one where that is said."""
    if content is None:
        return False
    if name.endswith(".jsonl"):
        if may_be_cut is not None:
            return may_be_cut or content == b"" or content.endswith(b"}\n")
        return content.endswith(b"}\n") and b'"event":"runEnd"' in content.splitlines()[-1]
    return content.endswith(b"</html>\n" if name.endswith(".html") else b"</testsuites>\n")


if __name__ == "__main__":
    unittest.main()
