"""Files of web projects over WebDAV: a real lighttpd, and servers that no one would run on purpose."""
import hashlib
import http.client
import os
import shutil
import socket
import socketserver
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
SOLUTION = """Microsoft Visual Studio Solution File, Format Version 11.00
Project("{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}") = "MyWeb", "%s", "{11111111-1111-1111-1111-111111111111}"
EndProject
Global
	GlobalSection(SolutionConfigurationPlatforms) = preSolution
		Debug = Debug
	EndGlobalSection
EndGlobal
"""
OK = b"HTTP/1.1 200 OK\r\nConnection: close\r\n"
MOVED = "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: {}\r\n\r\n"


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
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
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
            (address, "secret word", "MyWeb/none"): "uploading .* HTTP status 409, the folder does not exist",
        }
        self.check_failures(port, failures)
        self.assertEqual(file.read_text(), "original\n" * 100000 + "stamped\n")
        self.check_stamping(port)
        server.kill()
        server.wait()
        self.assertRegex(self.drive(port, address), "Unable to connect using WebDAV : No connection .*refused")

    def check_stamping(self, port):
        source = self.write("www/MyWeb/Properties/AssemblyInfo.cs", '[assembly: AssemblyVersion("1.0.*")]\n')
        self.write("www/MyWeb/MyWeb.csproj", '<Compile Include="Properties\\AssemblyInfo.cs" />')
        self.write("Web.sln", SOLUTION % f"http://127.0.0.1:{port}/MyWeb/MyWeb.csproj")
        self.write("tools/MSBuild.exe", "#!/bin/sh\n", executable=True)
        arguments = [e2e.BIN / "kxhost", "do", "DEVENV", "Solution=Web.sln", "SolutionConfiguration=Debug", "VStudioVersion=vs2010",
                     "UpdateAssemblyInfo=True", "UpdateAssemblyVersion=True", "AssemblyVersion=2|3|4|5",
                     "ProjLocationDetectMethod=useWebDAV", "WebDAVUsername=J\u00f6rg", "WebDAVPassword=secret word",
                     "--option", f"DotNetFramework.v4.0={self.folder / 'tools'}"]
        environment = {"TMPDIR": str(self.temporary), "no_proxy": "*"}
        planted = self.write("planted.cs", "another user's\n")
        link = self.temporary / "AssemblyInfo.cs"
        link.symlink_to(planted)
        run = self.run_program(*arguments, "--dry-run", **environment)
        self.assertIn('+[assembly: AssemblyVersion("2.3.4.5")]', run.stdout)
        self.assertIn("1.0.*", source.read_text(), "a dry run uploads nothing")
        run = self.run_program(*arguments, **environment)
        self.assertEqual(run.returncode, 0, run.stdout)
        self.assertEqual(source.read_text(), '[assembly: AssemblyVersion("2.3.4.5")]\n')
        self.assertNotIn("secret word", run.stdout)
        self.assertEqual([file.name for file in self.temporary.iterdir()], ["AssemblyInfo.cs"])
        self.assertTrue(link.is_symlink(), "others' files stay, whatever their names")
        self.assertEqual(planted.read_text(), "another user's\n")
        link.unlink()

    def test_a_stored_password_that_cannot_be_read_is_not_replaced_by_none(self):
        server = start_server({})
        self.write("Web.sln", SOLUTION % f"http://127.0.0.1:{server.server_address[1]}/MyWeb/MyWeb.csproj")
        self.write("tools/MSBuild.exe", "#!/bin/sh\n", executable=True)
        for stored in "AAAA", "no secret":  # as another machine or user would have left it
            run = self.run_program(e2e.BIN / "kxhost", "do", "DEVENV", "Solution=Web.sln", "SolutionConfiguration=Debug",
                                   "VStudioVersion=vs2010", "UpdateAssemblyInfo=True", "ProjLocationDetectMethod=useWebDAV",
                                   "WebDAVUsername=me", f"_WebDAVPassword={stored}", "--option",
                                   f"DotNetFramework.v4.0={self.folder / 'tools'}", no_proxy="*")
            self.assertEqual(run.returncode, 1, run.stdout)
            self.assertIn("The stored WebDAV password cannot be decrypted", run.stdout)
        self.assertEqual(server.seen, [])

    def check_failures(self, port, failures):
        for asked, reason in failures.items():
            with self.subTest(asked):
                lines = self.drive(port, *asked).splitlines()
                self.assertRegex(lines[0], f"^Error {reason}")
                self.assertEqual(lines[2:5], ["Servername: 127.0.0.1", f"Serverport: {port}", "UserID: J\u00f6rg"])
                self.assertEqual(list(self.temporary.iterdir()), [], "nothing is left behind")

    def test_hostile_servers(self):
        other = start_server({})
        places = {"other": f"http://127.0.0.1:{other.server_address[1]}/a", "scheme": "file:///etc/passwd",
                  "loop": "loop.cs", "moved": "plain.cs"}
        answers = {name: MOVED.format(place).encode() for name, place in places.items()}
        answers["stall"] = answers["short"] = OK + b"Content-Length: 100\r\n\r\n0123456789"
        answers |= {"silent": b"", "garbage": b"hello\n", "endless": OK + b"\r\n" + b"x" * 2000000}
        server = start_server({f"/{name}.cs": answer for name, answer in answers.items()})
        reasons = {"stall": "too slow", "silent": "too slow", "short": "90 bytes remaining",
                   "endless": "larger than 1048576", "other": "a redirect to another server", "scheme": "a redirect",
                   "loop": "302", "garbage": "HTTP/0.9"}
        port = server.server_address[1]
        self.check_failures(port, {(f"{name}.cs",): f"retrieving .* failed: .*{reason}" for name, reason in reasons.items()})
        self.assertEqual(self.drive(port, "moved.cs"), "")
        uploads = [seen for seen in server.seen if seen[0] == "PUT"]
        self.assertEqual(uploads, [("PUT", "/moved.cs", None, b"0123456789stamped\n")])
        self.assertEqual(other.seen, [])
        self.assertFalse(any(seen[2] for seen in server.seen), "a password nobody asked for")


class Handler(socketserver.StreamRequestHandler):
    def handle(self):
        method, path, _ = self.rfile.readline().decode().split()
        headers = http.client.parse_headers(self.rfile)
        body = self.rfile.read(int(headers.get("Content-Length", 0)))
        self.server.seen.append((method, path, headers["Authorization"], body))
        answer = self.server.answers.get(path, OK + b"Content-Length: 10\r\n\r\n0123456789")
        self.wfile.write(b"HTTP/1.1 201 Created\r\nContent-Length: 0\r\n\r\n" if method == "PUT" else answer)
        if path in ("/stall.cs", "/silent.cs"):
            time.sleep(60)


def start_server(answers):
    server = socketserver.ThreadingTCPServer(("127.0.0.1", 0), Handler)
    server.daemon_threads = True
    server.handle_error = lambda *_: None
    server.answers, server.seen = answers, []
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server


if __name__ == "__main__":
    unittest.main()
