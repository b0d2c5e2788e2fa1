"""Files of web projects over WebDAV: a real lighttpd, and servers that no one would run on purpose."""
import hashlib
import http.client
import itertools
import os
import shutil
import socket
import socketserver
import ssl
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
server.modules += ("mod_auth", "mod_authn_file", "mod_webdav")
webdav.activate = "enable"
auth.backend = "htdigest"
auth.backend.htdigest.userfile = "{folder}/users"
auth.require = ("/MyWeb/" => ("method" => "{method}", "realm" => "r", "require" => "valid-user"))
"""
TLS_CONFIG = """server.modules += ("mod_openssl")
ssl.engine = "enable"
ssl.pemfile = "{certificate}"
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

    def drive(self, port, path, password="secret word", *folder, server="http://127.0.0.1", **environment):
        run = self.run_program(e2e.BIN / "kx_webdav_driver",
                               f"{server}:{port}/{urllib.parse.quote(path)}", "J\u00f6rg", password, *folder,
                               TMPDIR=str(self.temporary), no_proxy="*", **environment)
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
        server = self.start(config)
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

    def start(self, config):
        server = subprocess.Popen([LIGHTTPD, "-D", "-f", config], stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        return server

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


    @unittest.skipIf(LIGHTTPD is None, "lighttpd is not installed (scripts/install-packages test)")
    def test_https(self):
        authority, other = make_authority(self.folder, "ours"), make_authority(self.folder, "theirs")
        certificates = {
            "good": make_certificate(self.folder, authority, "IP:127.0.0.1", 2),
            "another name": make_certificate(self.folder, authority, "DNS:elsewhere.example", 2),
            "expired": make_certificate(self.folder, authority, "IP:127.0.0.1", -1),
        }
        self.write("www/MyWeb/a.cs", "original\n")
        self.write("users", "J\u00f6rg:r:" + hashlib.md5("J\u00f6rg:r:secret word".encode()).hexdigest() + "\n")
        ports = {}
        for name, certificate in certificates.items():
            ports[name] = free_port()
            self.start(self.write(f"{name}.conf", TLS_CONFIG.format(certificate=certificate) +
                                  CONFIG.format(folder=self.folder, port=ports[name], method="basic")))
        ours, missing = {"SSL_CERT_FILE": str(authority) + ".pem"}, {"SSL_CERT_FILE": str(self.folder / "missing.pem")}
        self.assertTrue(e2e.wait_until(lambda: all(is_open(port) for port in ports.values())))
        self.assertEqual(self.drive(ports["good"], "MyWeb/a.cs", server="https://127.0.0.1", **ours), "")
        self.assertEqual((self.folder / "www/MyWeb/a.cs").read_text(), "original\nstamped\n")
        refused = "No connection to \"https://.*the server's certificate is refused: .*"
        for name, environment, reason in (
                ("good", {}, refused), ("good", {"SSL_CERT_FILE": str(other) + ".pem"}, refused),
                ("good", missing, "No connection to .*missing.pem.*SSL_CERT_FILE"),
                ("another name", ours, refused + "127.0.0.1"), ("expired", ours, refused + "expired")):
            with self.subTest(name, environment=environment):
                environment = {"SSL_CERT_FILE": "", **environment}
                shown = self.drive(ports[name], "MyWeb/a.cs", server="https://127.0.0.1", **environment)
                self.assertRegex(shown, "Unable to connect using WebDAV : " + reason)
                self.assertNotIn("secret word", shown)
        plain = self.drive(ports["good"], "MyWeb/a.cs", **ours)  # a server that speaks TLS only
        self.assertRegex(plain, "^(Error|Unable to connect)")
        self.assertEqual((self.folder / "www/MyWeb/a.cs").read_text(), "original\nstamped\n")

    def test_no_redirect_leads_from_https_to_http(self):
        certificate = make_certificate(self.folder, make_authority(self.folder, "ours"), "IP:127.0.0.1", 2)
        plain = start_server({})
        place = f"http://127.0.0.1:{plain.server_address[1]}/a.cs"
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate)
        server = start_server({"/down.cs": MOVED.format(place).encode(), "/a.cs": b"HTTP/1.1 401 No\r\nContent-Length: 0\r\n"
                               b"Connection: close\r\nWWW-Authenticate: Basic realm=\"r\"\r\n\r\n"}, context)
        ours = {"SSL_CERT_FILE": str(self.folder / "ours.pem")}
        for path, reason in ("down.cs", "a redirect to another server, which is not followed"), ("a.cs", "HTTP status 401"):
            self.assertRegex(self.drive(server.server_address[1], path, server="https://127.0.0.1", **ours), reason)
        self.assertEqual(plain.seen, [])
        self.assertEqual([seen[1] for seen in server.seen if seen[2]], ["/a.cs"], "the password goes where it is asked for")

    @unittest.skipIf(LIGHTTPD is None, "lighttpd is not installed (scripts/install-packages test)")
    def test_two_runs_at_once_keep_their_files_apart(self):
        count, names = 126, ("left", "right")
        authority = make_authority(self.folder, "ours")
        certificate = make_certificate(self.folder, authority, "IP:127.0.0.1", 2)
        self.write("tools/MSBuild.exe", "#!/bin/sh\n", executable=True)
        runs = []
        for name in names:
            port = free_port()
            self.write(f"{name}/users", "me:r:" + hashlib.md5(b"me:r:secret word").hexdigest() + "\n")
            for number in range(count):
                self.write(f"{name}/www/MyWeb/{number}/AssemblyInfo.cs", f'// {name} {number}\n[assembly: AssemblyVersion("1.0")]\n')
                self.write(f"{name}/www/MyWeb/{number}/Web.csproj", '<Compile Include="AssemblyInfo.cs" />')
            self.start(self.write(f"{name}.conf", TLS_CONFIG.format(certificate=certificate) +
                                  CONFIG.format(folder=self.folder / name, port=port, method="digest")))
            self.assertTrue(e2e.wait_until(lambda at=port: is_open(at)))
            projects = [f'Project("{{FAE04EC0-301F-11D3-BF4B-00C04F79EFBC}}") = "Web{number}", "https://127.0.0.1:{port}/MyWeb/{number}/'
                        f'Web.csproj", "{{11111111-1111-1111-1111-{number:012}}}"\nEndProject\n' for number in range(count)]
            lines = SOLUTION.splitlines(keepends=True)
            self.write(f"{name}.sln", "".join(itertools.chain(lines[:1], projects, lines[3:])))
            runs.append(subprocess.Popen(
                [e2e.BIN / "kxhost", "do", "DEVENV", f"Solution={name}.sln", "SolutionConfiguration=Debug", "VStudioVersion=vs2010",
                 "UpdateAssemblyInfo=True", "UpdateAssemblyVersion=True", "AssemblyVersion=2|3|4|5", "ProjLocationDetectMethod=useWebDAV",
                 "WebDAVUsername=me", "--secret", "WebDAVPassword=DAV", "--option", f"DotNetFramework.v4.0={self.folder / 'tools'}"],
                cwd=self.folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, encoding="utf-8",
                env={**self.environment, "TMPDIR": str(self.temporary), "no_proxy": "*", "SSL_CERT_FILE": str(authority) + ".pem",
                     "DAV": "secret word"}))
        for run in runs:
            shown = run.communicate(timeout=240)[0]
            self.assertEqual(run.returncode, 0, shown)
            self.assertNotIn("secret word", shown)
        for name in names:
            for number in range(count):
                self.assertEqual((self.folder / f"{name}/www/MyWeb/{number}/AssemblyInfo.cs").read_text(),
                                 f'// {name} {number}\n[assembly: AssemblyVersion("2.3.4.5")]\n')
        self.assertEqual(list(self.temporary.iterdir()), [], "nothing is left behind")


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as free:
        return free.getsockname()[1]


def is_open(port):
    with socket.socket() as client:
        return client.connect_ex(("127.0.0.1", port)) == 0


def openssl(*arguments):
    subprocess.run(["openssl", *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=True)


def make_authority(folder, name):
    """NAME.key and NAME.pem, which vouch for the certificates of a test."""
    file = folder / name
    openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-days", "2",
            "-subj", f"/CN=Authority {name}", "-keyout", f"{file}.key", "-out", f"{file}.pem")
    return file


def make_certificate(folder, authority, name, days):
    """One file with key and certificate; below 0 it ended that many days ago."""
    file = folder / f"{name.partition(':')[2]}{days}"
    (folder / "names").write_text(f"subjectAltName={name}\n", encoding="utf-8")
    openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-subj", "/CN=server",
            "-keyout", f"{file}.key", "-out", f"{file}.csr")
    openssl("x509", "-req", "-in", f"{file}.csr", "-CA", f"{authority}.pem", "-CAkey", f"{authority}.key", "-CAcreateserial",
            "-days", str(days), "-extfile", str(folder / "names"), "-out", f"{file}.crt")
    both = folder / f"{file.name}.both"
    both.write_bytes((folder / f"{file.name}.key").read_bytes() + (folder / f"{file.name}.crt").read_bytes())
    return both


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


def start_server(answers, context=None):
    server = socketserver.ThreadingTCPServer(("127.0.0.1", 0), Handler)
    if context is not None:
        server.socket = context.wrap_socket(server.socket, server_side=True)
    server.daemon_threads = True
    server.handle_error = lambda *_: None
    server.answers, server.seen = answers, []
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server


if __name__ == "__main__":
    unittest.main()
