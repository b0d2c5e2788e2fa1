"""The editor's door: what anybody on the machine can do to it without its token, and what a long run takes up."""
import http.client
import json
import pathlib
import re
import selectors
import signal
import socket
import subprocess
import threading
import time
import unittest
import urllib.parse

import e2e

STRANGERS = 500
OWN_REQUESTS = 200
LINES = 500_000
SANITIZED = b"__asan_init" in (e2e.BIN / "kxhost").read_bytes()
MOST_MEGABYTES = 192 if SANITIZED else 64  # more than before, whatever they do; sanitizers keep books of their own

PROJECT = """<BuildProject>
  <Actions>
    <Action Type="DEVENV" Name="Build">
      <Solution>examples/Greeter/Greeter.sln</Solution>
      <SolutionConfiguration>Release|Any CPU</SolutionConfiguration>
      <VStudioVersion Name="vs2010">4</VStudioVersion>
      <UseMSBuild>False</UseMSBuild>
    </Action>
  </Actions>
</BuildProject>
"""


class Strangers:
    """A third of them say nothing, a third send a head that never ends, a third ask and never read the answer. Who is sent
    away comes again at once."""

    def __init__(self, port):
        self.address = ("127.0.0.1", port)
        self.waiting = selectors.DefaultSelector()
        self.connections = 0
        self.ending = threading.Event()
        self.thread = threading.Thread(target=self.work)

    def __enter__(self):
        for kind in range(STRANGERS):
            self.come(kind % 3)
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.ending.set()
        self.thread.join()
        for key in list(self.waiting.get_map().values()):
            key.fileobj.close()

    def come(self, kind):
        connection = socket.socket()
        connection.setblocking(False)
        connection.connect_ex(self.address)
        self.connections += 1
        events = {0: selectors.EVENT_READ, 1: selectors.EVENT_WRITE, 2: selectors.EVENT_WRITE}[kind]
        self.waiting.register(connection, events, kind)

    def work(self):
        while not self.ending.is_set():
            for key, _ in self.waiting.select(0.1):
                try:
                    self.act(key.fileobj, key.data)
                except OSError:
                    self.waiting.unregister(key.fileobj)
                    key.fileobj.close()
                    self.come(key.data)
            time.sleep(0.001)  # leaves some of the machine to the others

    def act(self, connection, kind):
        if kind == 0 and not connection.recv(4096):
            raise ConnectionResetError
        if kind == 1:
            connection.send(b"GET / HTTP/1.1\r\nX: " + b"a" * 4000)
        if kind == 2:
            connection.send(b"GET / HTTP/1.1\r\nHost: x\r\n\r\n")


class StrangersTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.copy_example()
        tool = self.write("tool/devenv.com", "#!/bin/sh\nseq -f 'Compiling number %.0f, and what else there is to say' "
                          f"{LINES}\necho '========== Build: 1 succeeded, 0 failed, 0 skipped =========='\n", executable=True)
        self.write("p.kxproj", PROJECT)
        # Sanitizers keep what was freed: little of it, so that it does not pass for growth.
        self.environment["ASAN_OPTIONS"] = "quarantine_size_mb=1"
        self.editor = subprocess.Popen(
            [e2e.BIN / "kxhost", "edit", self.folder / "p.kxproj", "--no-browser",
             "--option", f"VisualStudioDotNet.MSDevPath2010={tool.parent}"],
            stdout=subprocess.PIPE, text=True, env=self.environment, cwd=self.folder)
        self.addCleanup(self.end)
        for line in self.editor.stdout:
            if found := re.search(r"http://127\.0\.0\.1:(\d+)(/\w+/)(\?token=\w+)", line):
                self.port, self.base, query = int(found[1]), found[2], found[3]
                break
        reply, _ = self.ask("GET", self.base + query)
        self.cookie = reply.headers["Set-Cookie"].partition(";")[0]

    def end(self):
        self.editor.send_signal(signal.SIGINT)
        self.editor.communicate(timeout=60)

    def ask(self, method, path, body=None, cookie=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        headers = {"Cookie": cookie or ""}
        if method == "POST":
            headers["Origin"] = f"http://127.0.0.1:{self.port}"
        connection.request(method, path, body, headers)
        reply = connection.getresponse()
        answer = reply.read()
        connection.close()
        return reply, answer

    def call(self, operation, **values):
        reply, answer = self.ask("POST", f"{self.base}api/{operation}", json.dumps(values), self.cookie)
        self.assertEqual(reply.status, 200, answer)
        return json.loads(answer)

    def megabytes(self):
        status = pathlib.Path(f"/proc/{self.editor.pid}/status").read_text(encoding="ascii")
        return int(re.search(r"VmRSS:\s+(\d+)", status)[1]) / 1024

    def test_strangers_cost_nothing(self):
        self.call("state")
        before = self.megabytes()
        times = []
        with Strangers(self.port) as strangers:
            for _ in range(OWN_REQUESTS):
                began = time.monotonic()
                self.call("ping")
                times.append(time.monotonic() - began)
                time.sleep(0.02)
        times.sort()
        more = self.megabytes() - before
        print(f"{strangers.connections} connections of {STRANGERS} strangers: {more:.1f} MB more, own requests "
              f"{times[len(times) // 2] * 1000:.0f} ms, the slowest {times[-1] * 1000:.0f} ms")
        self.assertLess(more, MOST_MEGABYTES)

    def test_a_long_run_stays_light(self):
        self.call("state")
        before = self.megabytes()
        self.call("run", dryRun=False)
        lines, position, goes_on, most = 0, 0, True, 0
        while goes_on:
            query = urllib.parse.urlencode({"run": 1, "from": position})
            _, answer = self.ask("GET", f"{self.base}api/events?{query}", cookie=self.cookie)
            events = json.loads(answer)
            lines += sum(1 for event in events["events"] if event.get("text", "").startswith("Compiling number"))
            position, goes_on = events["next"], events["running"]
            most = max(most, self.megabytes() - before)
        print(f"a run of {lines} lines: {most:.1f} MB more")
        self.assertEqual(lines, LINES)
        self.assertLess(most, MOST_MEGABYTES)


if __name__ == "__main__":
    unittest.main()
