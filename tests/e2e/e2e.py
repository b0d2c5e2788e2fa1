"""What the end-to-end tests share: a scratch folder a test, the built programs, what they are given, servers, processes."""
import contextlib
import http.client
import json
import os
import pathlib
import re
import shutil
import signal
import socketserver
import subprocess
import tempfile
import threading
import time
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BIN = pathlib.Path(os.environ.get("KX_BIN", ROOT / "build-default" / "bin"))
STAMP_WEB = ("do", "DEVENV", "SolutionConfiguration=Debug", "VStudioVersion=vs2010", "UpdateAssemblyInfo=True",
             "UpdateAssemblyVersion=True", "AssemblyVersion=2|3|4|5", "ProjLocationDetectMethod=useWebDAV")
CSHARP, CPP = "{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}", "{8BC9CEB8-8B4A-11D0-8D11-00A0C91BC942}"


class EndToEndTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kx-e2e-"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.temporary = self.folder / "temporary"
        self.temporary.mkdir()
        # Nothing of the user's own settings reaches a test, nor the other way round.
        self.environment = dict(os.environ, HOME=str(self.folder), XDG_CONFIG_HOME=str(self.folder / "config"),
                                XDG_STATE_HOME=str(self.folder / "state"), TMPDIR=str(self.temporary), no_proxy="*")
        for variable in ("KX_MSBUILD", "MONO_IOMAP"):
            self.environment.pop(variable, None)
        self.tools = ("--option", f"DotNetFramework.v4.0={self.folder / 'tools'}")

    def write(self, name, text="", executable=False):
        file = self.folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")
        if executable:
            file.chmod(0o755)
        return file

    def write_tool(self, *lines, name="tools/MSBuild.exe"):
        return self.write(name, "\n".join(("#!/bin/bash", *lines, "")), executable=True)

    def read(self, name):
        return (self.folder / name).read_text(encoding="utf-8")

    def run_program(self, *command, given="", **environment):
        """Standard output and error together, as a person sees them."""
        return subprocess.run(
            [str(part) for part in command], cwd=self.folder, env={**self.environment, **environment}, input=given,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8", timeout=240, check=False)

    def host(self, *arguments, code=0, **options):
        """All that kxhost says; it must end with that code."""
        run = self.run_program(BIN / "kxhost", *arguments, **options)
        self.assertEqual(run.returncode, code, run.stdout)
        return run.stdout

    def start(self, *command, environment=None, **options):
        """A program in the background that does not outlive the test."""
        process = self.enterContext(subprocess.Popen(
            [str(part) for part in command], cwd=self.folder, env={**self.environment, **(environment or {})}, encoding="utf-8",
            **{"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, **options}))
        self.addCleanup(kill_quietly, process.pid)
        return process

    def start_host(self, *arguments, **options):
        return self.start(BIN / "kxhost", *arguments, **options)

    def events(self, kind, name="log.jsonl"):
        return [event for event in map(json.loads, self.read(name).splitlines()) if event["event"] == kind]

    def metrics(self):
        return {event["name"]: event["value"] for event in self.events("metric")}

    def copy_example(self):
        shutil.copytree(ROOT / "examples", self.folder / "examples", ignore=shutil.ignore_patterns("bin", "obj"),
                        dirs_exist_ok=True)
        return self.folder / "examples"


def solution(*places, name=None, configuration="Debug", version="11.00"):
    """Of the projects at these places, which are C++ by their ending."""
    projects = "".join(
        f'Project("{CPP if place.endswith(("vcproj", "vcxproj")) else CSHARP}") = "{name or pathlib.PureWindowsPath(place).stem}"'
        f', "{place}", "{{11111111-1111-1111-1111-{number:012}}}"\nEndProject\n' for number, place in enumerate(places))
    return (f"\nMicrosoft Visual Studio Solution File, Format Version {version}\n{projects}Global\n"
            f"\tGlobalSection(SolutionConfigurationPlatforms) = preSolution\n\t\t{configuration} = {configuration}\n"
            "\tEndGlobalSection\nEndGlobal\n")


def web_solution(address):
    return solution(f"{address}/MyWeb/MyWeb.csproj")


def action(kind, attributes="", **properties):
    inner = "".join(f"<{name}>{value}</{name}>" for name, value in properties.items())
    return f'<Action Type="{kind}" {attributes}>{inner}</Action>\n'


def build(place, attributes="", configuration="Debug|Any CPU", **properties):
    return action("DEVENV", attributes, Solution=place, SolutionConfiguration=configuration,
                  **{"VStudioVersion": "vs2010", **properties})


def project(*actions, attributes="", head=""):
    return f"<BuildProject {attributes}>{head}<Actions>\n{''.join(actions)}</Actions></BuildProject>\n"


def shown(terminal, wanted=None):
    """What comes from a terminal up to that text, or until nobody writes to it any more."""
    seen = b""
    while wanted is None or wanted not in seen:
        try:
            part = os.read(terminal, 65536)
        except OSError:  # the last program at the other end has gone
            part = b""
        if not part:
            break
        seen += part
    return seen


class WebHandler(socketserver.StreamRequestHandler):
    def handle(self):
        method, path, _ = self.rfile.readline().decode().split()
        headers = http.client.parse_headers(self.rfile)
        body = self.rfile.read(int(headers.get("Content-Length", 0)))
        server = self.server
        server.seen.append((method, path, headers["Authorization"], body))
        if method == "PUT":
            server.files[path] = body
        if path in server.answers and method != "PUT":
            self.wfile.write(server.answers[path])
        elif path in server.files:
            content = b"" if method == "PUT" else server.files[path]
            self.wfile.write(b"HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: %d\r\n\r\n%s" % (len(content), content))
        else:
            self.wfile.write(b"HTTP/1.1 404 None\r\nConnection: close\r\nContent-Length: 0\r\n\r\n")
        if path in server.slow:
            time.sleep(60)


def start_server(files=(), answers=(), slow=(), context=None):
    """Gives and takes the files; to what stands among the answers it says just that. Notes who asked for what."""
    server = socketserver.ThreadingTCPServer(("127.0.0.1", 0), WebHandler)
    if context is not None:
        server.socket = context.wrap_socket(server.socket, server_side=True)
    server.daemon_threads = True
    server.handle_error = lambda *_: None
    server.files, server.answers, server.slow, server.seen = dict(files), dict(answers), slow, []
    server.port = server.server_address[1]
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server


class Editor:
    """The page of `kxhost edit`, whose output is read up to the address."""

    def __init__(self, process):
        self.said, self.base, self.cookie = "", None, ""
        for line in process.stdout:
            self.said += line
            if found := re.search(r"http://(127\.0\.0\.1:\d+)(/\w+/)(\?token=\w+)", line):
                self.host, self.base, self.token = found.groups()
                break

    def enter(self):
        reply, _ = self.ask("GET", self.token)
        self.cookie = reply.headers["Set-Cookie"].partition(";")[0]

    def ask(self, method, path, body=None):
        with contextlib.closing(http.client.HTTPConnection(self.host, timeout=60)) as connection:
            connection.request(method, self.base + path, body, {"Cookie": self.cookie, "Origin": f"http://{self.host}"})
            reply = connection.getresponse()
            answer = reply.read().decode()
        if reply.status != 200:
            raise Refused(answer)
        return reply, answer

    def call(self, operation, **values):
        return json.loads(self.ask("POST", f"api/{operation}", json.dumps(values))[1])

    def events(self):
        """Those of the first run, in parts, to its end."""
        part = {"next": 0, "running": True}
        while part["running"]:
            part = json.loads(self.ask("GET", f"api/events?run=1&from={part['next']}")[1])
            yield part["events"]


class Refused(Exception):
    """By the editor, which says why."""


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
