"""The editor's door: what anybody on the machine can do to it without its token, and what a long run takes up."""
import re
import selectors
import signal
import socket
import unittest

import e2e

STRANGERS = 500
OWN_REQUESTS = 200
LINES = 500_000
SANITIZED = b"__asan_init" in (e2e.BIN / "kxhost").read_bytes()
MOST_MEGABYTES = 192 if SANITIZED else 64  # more than before, whatever they do; sanitizers keep books of their own


class Strangers:
    """A third of them say nothing, a third send a head that never ends, a third ask and never read the answer. Who is sent
    away comes again at once."""
    SAY = b"", b"GET / HTTP/1.1\r\nX: " + b"a" * 4000, b"GET / HTTP/1.1\r\nHost: x\r\n\r\n"

    def __init__(self, port):
        self.address = ("127.0.0.1", port)
        self.waiting = selectors.DefaultSelector()
        self.connections = 0
        for number in range(STRANGERS):
            self.come(self.SAY[number % 3])

    def come(self, words):
        connection = socket.socket()
        connection.setblocking(False)
        connection.connect_ex(self.address)
        self.connections += 1
        self.waiting.register(connection, selectors.EVENT_WRITE if words else selectors.EVENT_READ, words)

    def act(self):
        for key, _ in self.waiting.select(0.02):
            try:
                if not (key.fileobj.send(key.data) if key.data else key.fileobj.recv(4096)):
                    raise ConnectionResetError
            except OSError:
                self.waiting.unregister(key.fileobj)
                key.fileobj.close()
                self.come(key.data)

    def leave(self):
        for key in list(self.waiting.get_map().values()):
            key.fileobj.close()


class StrangersTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.copy_example()
        tool = self.write_tool(f"seq -f 'Compiling number %.0f, and what else there is to say' {LINES}",
                               "echo '========== Build: 1 succeeded, 0 failed, 0 skipped =========='", name="tool/devenv.com")
        self.write("p.kxproj", e2e.project(e2e.build("examples/Greeter/Greeter.sln", UseMSBuild=False)))
        # Sanitizers keep what was freed: little of it, so that it does not pass for growth.
        self.editor = self.start_host(
            "edit", "p.kxproj", "--no-browser", "--option", f"VisualStudioDotNet.MSDevPath2010={tool.parent}", stderr=None,
            environment={"ASAN_OPTIONS": "quarantine_size_mb=1"})
        self.addCleanup(self.editor.send_signal, signal.SIGINT)
        self.page = e2e.Editor(self.editor)
        self.page.enter()
        self.page.call("state")
        self.before = self.megabytes()

    def megabytes(self):
        return int(re.search(r"VmRSS:\s+(\d+)", self.read(f"/proc/{self.editor.pid}/status"))[1]) / 1024

    def test_strangers_cost_nothing(self):
        strangers = Strangers(int(self.page.host.partition(":")[2]))
        self.addCleanup(strangers.leave)
        for _ in range(OWN_REQUESTS):
            strangers.act()
            self.page.call("ping")
        more = self.megabytes() - self.before
        print(f"{strangers.connections} connections of {STRANGERS} strangers: {more:.1f} MB more")
        self.assertLess(more, MOST_MEGABYTES)

    def test_a_long_run_stays_light(self):
        self.page.call("run", dryRun=False)
        lines, most = 0, 0
        for events in self.page.events():
            lines += sum(1 for event in events if event.get("text", "").startswith("Compiling number"))
            most = max(most, self.megabytes() - self.before)
        print(f"a run of {lines} lines: {most:.1f} MB more")
        self.assertEqual(lines, LINES)
        self.assertLess(most, MOST_MEGABYTES)


if __name__ == "__main__":
    unittest.main()
