"""Files of web projects over WebDAV: a real lighttpd, and servers that no one would run on purpose."""
import hashlib
import http.server
import os
import shutil
import socket
import subprocess
import threading
import time
import unittest
import urllib.parse

import e2e

LIGHTTPD = shutil.which("lighttpd", path=os.environ.get("PATH", "") + ":/usr/sbin:/usr/local/sbin")
FOLDER, NAME = "MyWeb/a b#\u00e9", "100%41 c.cs"
CONFIG = """server.document-root = "{folder}/www"
server.bind = "127.0.0.1"
server.port = {port}
server.modules = ("mod_auth", "mod_authn_file", "mod_webdav")
webdav.activate = "enable"
auth.backend = "htdigest"
auth.backend.htdigest.userfile = "{folder}/users"
auth.require = ("/MyWeb/" => ("method" => "{method}", "realm" => "r", "require" => "valid-user"))
"""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class WebDavTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.temporary = self.folder / "temporary"
        self.temporary.mkdir()

    def drive(self, port, path, password="secret word", *folder):
        run = self.run_program(e2e.BIN / "kx_webdav_driver",
                               f"http://127.0.0.1:{port}/{urllib.parse.quote(path)}", "J\u00f6rg", password, *folder,
                               TMPDIR=str(self.temporary), no_proxy="*")
        self.assertEqual(run.returncode, 1 if run.stdout else 0, run.stdout)
        return run.stdout

    @unittest.skipIf(LIGHTTPD is None, "lighttpd is not installed (scripts/install-packages test)")
    def test_a_real_server(self):
        for method in "basic", "digest":
            with self.subTest(method):
                self.check_real_server(method)

    def check_real_server(self, method):
        port = free_port()
        address = f"{FOLDER}/{NAME}"
        file = self.write(f"www/{address}", "original\n" * 100000)
        self.write("www/MyWeb/big.cs", "x" * (1 << 20) + "x")
        self.write("users", "J\u00f6rg:r:" + hashlib.md5("J\u00f6rg:r:secret word".encode()).hexdigest() + "\n")
        config = self.write("lighttpd.conf", CONFIG.format(folder=self.folder, port=port, method=method))
        server = subprocess.Popen([LIGHTTPD, "-D", "-f", config], stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        self.assertTrue(e2e.wait_until(lambda: "No connection" not in self.drive(port, "MyWeb/missing.cs")))

        self.assertEqual(self.drive(port, address), "")
        failures = {  # what is asked for, and what the message says
            (address, "wrong"): "retrieving .* HTTP status 401, the server refuses the user name or password",
            ("MyWeb/missing.cs",): "retrieving .* HTTP status 404, there is no such file or folder",
            ("MyWeb/big.cs",): "retrieving .* the answer is larger than 1048576 bytes",
            (address, "secret word", "MyWeb/missing"): "uploading .* HTTP status 409, the folder does not exist on the server",
        }
        self.check_failures(port, failures)
        self.assertEqual(file.read_text(), "original\n" * 100000 + "stamped\n")
        server.kill()
        server.wait()
        self.assertRegex(self.drive(port, address), "Unable to connect using WebDAV : No connection .*refused")

    def check_failures(self, port, failures):
        for asked, reason in failures.items():
            with self.subTest(asked):
                lines = self.drive(port, *asked).splitlines()
                self.assertRegex(lines[0], f"^Error {reason}")
                self.assertEqual(lines[2:5], ["Servername: 127.0.0.1", f"Serverport: {port}", "UserID: J\u00f6rg"])
                left = [f"Local filename: {file}" for file in self.temporary.iterdir()]
                self.assertIn(left, ([], lines[1:2]), "a download leaves nothing half, an upload its file")

    def test_hostile_servers(self):
        server, other = start_server(), start_server()
        for stop in server.shutdown, server.server_close, other.shutdown, other.server_close:
            self.addCleanup(stop)
        server.redirects = {"/other.cs": f"http://127.0.0.1:{other.server_port}/plain.cs", "/loop.cs": "/loop.cs",
                            "/scheme.cs": "file:///etc/passwd", "/moved.cs": "/plain.cs"}
        reasons = {"stall": "too slow", "silent": "too slow", "short": "90 bytes remaining", "endless": "larger than 1048576",
                   "other": "a redirect to another server", "scheme": "a redirect", "loop": "HTTP status 302",
                   "garbage": "HTTP/0.9"}
        self.check_failures(server.server_port,
                            {(f"{name}.cs",): f"retrieving .* failed: .*{reason}" for name, reason in reasons.items()})
        self.assertEqual((other.seen, server.uploaded), ([], {}))
        self.assertEqual(self.drive(server.server_port, "moved.cs"), "")
        self.assertEqual(server.uploaded, {"/moved.cs": b"0123456789stamped\n"})
        self.assertEqual(set(server.seen), {None}, "a password nobody asked for")


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_GET(self):
        self.server.seen.append(self.headers["Authorization"])
        if self.path in ("/silent.cs", "/garbage.cs"):
            self.wfile.write(b"" if self.path == "/silent.cs" else b"hello\n")
            time.sleep(60)
        target = self.server.redirects.get(self.path)
        self.send_response(302 if target else 200)
        if target:
            self.send_header("Location", target)
        if self.path != "/endless.cs":
            self.send_header("Content-Length", "100" if self.path in ("/short.cs", "/stall.cs") else "10")
        self.end_headers()
        self.wfile.write(b"0123456789")
        self.close_connection = self.path in ("/short.cs", "/endless.cs")
        if self.path == "/stall.cs":
            time.sleep(60)
        while self.path == "/endless.cs":
            self.wfile.write(b"x" * 65536)

    do_OPTIONS = do_GET

    def do_PUT(self):
        self.server.uploaded[self.path] = self.rfile.read(int(self.headers["Content-Length"]))
        self.send_response(201)
        self.send_header("Content-Length", "0")
        self.end_headers()

    def log_message(self, *_):
        pass


def start_server():
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
    server.daemon_threads = True
    server.handle_error = lambda *_: None
    server.seen, server.uploaded, server.redirects = [], {}, {}
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server


if __name__ == "__main__":
    unittest.main()
