"""Files of web projects over WebDAV: a real lighttpd, and servers that no one would run on purpose."""
import hashlib
import os
import shutil
import socket
import ssl
import subprocess
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
OK = b"HTTP/1.1 200 OK\r\nConnection: close\r\n"
MOVED = "HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: {}\r\n\r\n"
NO = b'HTTP/1.1 401 No\r\nContent-Length: 0\r\nConnection: close\r\nWWW-Authenticate: Basic realm="r"\r\n\r\n'
OLD, NEW = '[assembly: AssemblyVersion("1.0.*")]\n', '[assembly: AssemblyVersion("2.3.4.5")]\n'


class WebDavTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        self.write_tool()

    def drive(self, port, path, password="secret word", *folder, scheme="http", **environment):
        address = f"{scheme}://127.0.0.1:{port}/{urllib.parse.quote(path)}"
        run = self.run_program(e2e.BIN / "kx_webdav_driver", address, "J\u00f6rg", password, *folder, **environment)
        self.assertEqual(run.returncode, 1 if run.stdout else 0, run.stdout)
        self.assertNotIn(password, run.stdout)
        return run.stdout

    def lighttpd(self, name, method="basic", certificate=None):
        """Serves the folder NAME/www on the port that it returns beside the process."""
        if LIGHTTPD is None:
            self.skipTest("lighttpd is not installed (scripts/install-packages test)")
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = free.getsockname()[1]
        self.write(f"{name}/users", "J\u00f6rg:r:" + hashlib.md5("J\u00f6rg:r:secret word".encode()).hexdigest() + "\n")
        config = CONFIG.format(folder=self.folder / name, port=port, method=method)
        config += TLS_CONFIG.format(certificate=certificate) if certificate else ""
        server = self.start(LIGHTTPD, "-D", "-f", self.write(f"{name}.conf", config), stderr=subprocess.DEVNULL)
        self.assertTrue(e2e.wait_until(lambda: is_open(port)))
        return server, port

    def check_failures(self, port, failures):
        for asked, reason in failures.items():
            with self.subTest(asked):
                lines = self.drive(port, *asked).splitlines()
                self.assertRegex(lines[0], f"^Error {reason}")
                self.assertEqual(lines[2:5], ["Servername: 127.0.0.1", f"Serverport: {port}", "UserID: J\u00f6rg"])
                self.assertEqual(list(self.temporary.iterdir()), [], "nothing is left behind")

    def test_a_real_server(self):
        for method in "basic", "digest":
            with self.subTest(method):
                address = f"{FOLDER}/{NAME}"
                file = self.write(f"{method}/www/{address}", "original\n" * 100000)
                self.write(f"{method}/www/MyWeb/big.cs", "x" * (1 << 20) + "x")
                server, port = self.lighttpd(method, method)
                self.assertEqual(self.drive(port, address), "")
                self.check_failures(port, {  # what is asked for, and what the message says
                    (address, "wrong"): "retrieving .* HTTP status 401, the server refuses the user name or p",
                    ("MyWeb/missing.cs",): "retrieving .* HTTP status 404, there is no such file or folder",
                    ("MyWeb/big.cs",): "retrieving .* the answer is larger than 1048576 bytes",
                    (address, "secret word", "MyWeb/none"): "uploading .* HTTP status 409, the folder does not exist"})
                self.assertEqual(file.read_text(), "original\n" * 100000 + "stamped\n")
                self.check_stamping(method, port)
                server.kill()
                server.wait()
                self.assertRegex(self.drive(port, address), "Unable to connect using WebDAV : No connection .*refused")

    def check_stamping(self, name, port):
        source = self.write(f"{name}/www/MyWeb/Properties/AssemblyInfo.cs", OLD)
        self.write(f"{name}/www/MyWeb/MyWeb.csproj", '<Compile Include="Properties\\AssemblyInfo.cs" />')
        self.write("Web.sln", e2e.web_solution(f"http://127.0.0.1:{port}"))
        planted = self.write("planted.cs", "another user's\n")
        link = self.temporary / "AssemblyInfo.cs"
        link.symlink_to(planted)
        command = [*e2e.STAMP_WEB, "Solution=Web.sln", "WebDAVUsername=J\u00f6rg", "WebDAVPassword=secret word", *self.tools]
        self.assertIn("+" + NEW, self.host(*command, "--dry-run"))
        self.assertEqual(source.read_text(), OLD, "a dry run uploads nothing")
        self.assertNotIn("secret word", self.host(*command))
        self.assertEqual(source.read_text(), NEW)
        self.assertEqual(list(self.temporary.iterdir()), [link])
        self.assertTrue(link.is_symlink(), "others' files stay, whatever their names")
        self.assertEqual(planted.read_text(), "another user's\n")
        link.unlink()

    def test_a_stored_password_that_cannot_be_read_is_not_replaced_by_none(self):
        server = e2e.start_server()
        self.write("Web.sln", e2e.web_solution(f"http://127.0.0.1:{server.port}"))
        for stored in "AAAA", "no secret":  # as another machine or user would have left it
            shown = self.host(*e2e.STAMP_WEB, "Solution=Web.sln", f"_WebDAVPassword={stored}", *self.tools, code=1)
            self.assertIn("The stored WebDAV password cannot be decrypted", shown)
        self.assertEqual(server.seen, [])

    def test_hostile_servers(self):
        other = e2e.start_server()
        places = {"other": f"http://127.0.0.1:{other.port}/a", "scheme": "file:///etc/passwd",
                  "loop": "loop.cs", "moved": "plain.cs"}
        answers = {name: MOVED.format(place).encode() for name, place in places.items()}
        answers["stall"] = answers["short"] = OK + b"Content-Length: 100\r\n\r\n0123456789"
        answers |= {"silent": b"", "garbage": b"hello\n", "endless": OK + b"\r\n" + b"x" * 2000000}
        server = e2e.start_server({"/plain.cs": b"0123456789"}, {f"/{name}.cs": answer for name, answer in answers.items()},
                                  slow=("/stall.cs", "/silent.cs"))
        reasons = {"stall": "too slow", "silent": "too slow", "short": "90 bytes remaining",
                   "endless": "larger than 1048576", "other": "a redirect to another server", "scheme": "a redirect",
                   "loop": "302", "garbage": "HTTP/0.9"}
        self.check_failures(server.port, {(f"{name}.cs",): f"retrieving .* failed: .*{why}" for name, why in reasons.items()})
        self.assertEqual(self.drive(server.port, "moved.cs"), "")
        uploads = [seen for seen in server.seen if seen[0] == "PUT"]
        self.assertEqual(uploads, [("PUT", "/moved.cs", None, b"0123456789stamped\n")])
        self.assertEqual(other.seen, [])
        self.assertFalse(any(seen[2] for seen in server.seen), "a password nobody asked for")

    def test_https(self):
        ours, theirs = (make_certificate(self.folder / name, "DNS:authority") for name in ("ours", "theirs"))
        ports = {}
        for name, subject, days in (
                ("good", "IP:127.0.0.1", 2), ("another name", "DNS:else.example", 2), ("expired", "IP:127.0.0.1", -1)):
            self.write(f"{name}/www/MyWeb/a.cs", "original\n")
            certificate = make_certificate(self.folder / f"{name}.pem", subject, days, ours)
            _, ports[name] = self.lighttpd(name, certificate=certificate)
        self.assertEqual(self.drive(ports["good"], "MyWeb/a.cs", scheme="https", SSL_CERT_FILE=str(ours)), "")
        refused = "No connection to \"https://.*the server's certificate is refused: .*"
        for name, known, reason in (
                ("good", "", refused), ("good", theirs, refused),
                ("good", "missing.pem", "No connection to .*missing.pem.*SSL_CERT_FILE"),
                ("another name", ours, refused + "127.0.0.1"), ("expired", ours, refused + "expired")):
            with self.subTest(name, known=known):
                shown = self.drive(ports[name], "MyWeb/a.cs", scheme="https", SSL_CERT_FILE=str(known))
                self.assertRegex(shown, "Unable to connect using WebDAV : " + reason)
        plain = self.drive(ports["good"], "MyWeb/a.cs", SSL_CERT_FILE=str(ours))  # of a server that speaks TLS only
        self.assertRegex(plain, "^(Error|Unable to connect)")
        self.assertEqual(self.read("good/www/MyWeb/a.cs"), "original\nstamped\n")

    def test_no_redirect_leads_from_https_to_http(self):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        certificate = make_certificate(self.folder / "ours", "IP:127.0.0.1")
        context.load_cert_chain(certificate)
        plain = e2e.start_server()
        server = e2e.start_server((), {"/down.cs": MOVED.format(f"http://127.0.0.1:{plain.port}/a.cs").encode(), "/a.cs": NO},
                                  context=context)
        for path, reason in ("down.cs", "a redirect to another server, which is not followed"), ("a.cs", "HTTP status 401"):
            shown = self.drive(server.port, path, scheme="https", SSL_CERT_FILE=str(certificate))
            self.assertRegex(shown, reason)
        self.assertEqual(plain.seen, [])
        self.assertEqual([seen[1] for seen in server.seen if seen[2]], ["/a.cs"], "the password goes where it is asked for")

    def test_two_runs_at_once_keep_their_files_apart(self):
        places, runs, servers = [f"MyWeb/{number}" for number in range(126)], [], {}
        for name in "left", "right":
            server = servers[name] = e2e.start_server(
                {f"/{place}/{file}": text.encode() for place in places for file, text in (
                    ("Web.csproj", '<Compile Include="AssemblyInfo.cs" />'), ("AssemblyInfo.cs", f"// {name} {place}\n{OLD}"))})
            self.write(f"{name}.sln", e2e.solution(*(f"http://127.0.0.1:{server.port}/{place}/Web.csproj" for place in places)))
            runs.append(self.start_host(*e2e.STAMP_WEB, f"Solution={name}.sln", "WebDAVUsername=me", *self.tools))
        for run in runs:
            output, _ = run.communicate(timeout=240)
            self.assertEqual(run.returncode, 0, output)
        for name, server in servers.items():
            for place in places:
                self.assertEqual(server.files[f"/{place}/AssemblyInfo.cs"].decode(), f"// {name} {place}\n{NEW}")
        self.assertEqual(list(self.temporary.iterdir()), [], "nothing is left behind")


def is_open(port):
    with socket.socket() as client:
        return client.connect_ex(("127.0.0.1", port)) == 0


def openssl(*arguments, given=""):
    return subprocess.run(["openssl", *arguments], input=given, stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="ascii",
                          check=True).stdout


def make_certificate(file, subject, days=2, issuer=None):
    """One file with key and certificate; below 0 it ended that many days ago."""
    made = openssl("req", *([] if issuer else ["-x509"]), "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                   "-subj", f"/CN={file.name}", "-addext", f"subjectAltName={subject}", "-keyout", file)
    if issuer:
        made = openssl("x509", "-req", "-copy_extensions", "copy", "-CA", issuer, "-CAkey", issuer, "-CAcreateserial",
                       "-days", str(days), given=made)
    file.write_text(file.read_text() + made)
    return file


if __name__ == "__main__":
    unittest.main()
