"""What the end-to-end tests share: a scratch folder a test, the built programs, and a look at processes."""
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BIN = pathlib.Path(os.environ.get("KX_BIN", ROOT / "build-default" / "bin"))


class EndToEndTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kx-e2e-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        # Nothing of the user's own settings reaches a test, nor the other way round.
        self.environment = dict(os.environ, HOME=str(self.folder), XDG_CONFIG_HOME=str(self.folder / "config"))
        for variable in ("KX_MSBUILD", "MONO_IOMAP"):
            self.environment.pop(variable, None)

    def write(self, name, text, executable=False):
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
        if executable:
            file.chmod(0o755)
        return file

    def run_program(self, *command, **environment):
        """Standard output and error together, as a person sees them."""
        return subprocess.run(
            [str(part) for part in command], cwd=self.folder, env={**self.environment, **environment},
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8",
            timeout=240, check=False)

    def copy_example(self):
        shutil.copytree(ROOT / "examples", self.folder / "examples", ignore=shutil.ignore_patterns("bin", "obj"),
                        dirs_exist_ok=True)
        return self.folder / "examples"


def is_running(pid):
    """A process that has ended but was not yet waited for does not count."""
    try:
        stat = pathlib.Path(f"/proc/{pid}/stat").read_text(encoding="utf-8")
    except OSError:
        return False
    return stat.rpartition(")")[2].split()[0] not in "ZX"


def kill_quietly(pid):
    if is_running(pid):
        os.kill(pid, signal.SIGKILL)


def wait_until(condition, seconds=60):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            return False
        time.sleep(0.02)
    return True
