"""The packages that users get, unpacked into a folder of any name: scripts/package has made them."""
import json
import os
import pathlib
import subprocess
import unittest
import zipfile

import e2e

OUT = pathlib.Path(os.environ.get("KX_PACKAGES", e2e.ROOT / "out"))
SOLUTION = e2e.solution("sub\\Gruß.vcproj", version="10.00")
PROJECT = ('<?xml version="1.0" encoding="Windows-1252"?>\n<VisualStudioProject><Files><Filter>'
           '<File RelativePath=".\\grüße.rc"/></Filter></Files></VisualStudioProject>')


class PackageTest(e2e.EndToEndTest):
    def setUp(self):
        super().setUp()
        # Longer than the 260 characters that old programs for Windows stop at.
        solution = self.folder.joinpath("My Prögramm", *(["folder with a long name, level by level"] * 8), "Gruß.sln")
        (solution.parent / "sub").mkdir(parents=True)
        solution.write_bytes(b"\xef\xbb\xbf" + SOLUTION.replace("\n", "\r\n").encode())
        (solution.parent / "sub" / "Gruß.vcproj").write_bytes(PROJECT.encode("cp1252"))
        (solution.parent / "sub" / "grüße.rc").write_text("1 VERSIONINFO\n", encoding="ascii")
        self.solution = solution

    def the_package(self, pattern):
        found = list(OUT.glob(pattern))
        self.assertEqual(len(found), 1, f"{pattern} in {OUT}")
        return found[0]

    def check_program(self, *program):
        listing = self.run_program(*program, "actions")
        self.assertIn("DEVENV", listing.stdout, "the plug-in lies beside the program")
        inspected = self.run_program(*program, "inspect", self.solution, "--json")
        project = json.loads(inspected.stdout)["projects"][0]
        self.assertEqual(project["fileName"], "sub\\Gruß.vcproj")
        scripts = [name.removeprefix("Z:").replace("\\", "/") for name in project["resourceScripts"]]
        self.assertEqual(scripts, [str(self.solution.parent / "sub" / "grüße.rc")])

    def test_the_zip_runs_from_any_folder_of_windows(self):
        folder = self.folder / "My Prögramm" / "tools"
        with zipfile.ZipFile(self.the_package("kxhost-*-windows-x64.zip")) as package:
            package.extractall(folder)
        names = {file.name for file in folder.rglob("*")}
        self.assertLessEqual({"TandemorLogger.dll", "LICENSE", "README.md", "curl.txt", "libxml2.txt", "pcre2.txt"}, names)
        self.environment["WINEPREFIX"] = str(self.folder / "wine")
        wine = e2e.ROOT / "scripts" / "under-wine"
        self.addCleanup(self.run_program, wine, "--stop")
        self.assertEqual(self.run_program(wine, "--start").returncode, 0)
        self.check_program(wine, next(folder.rglob("kxhost.exe")))

    def test_the_debian_package_runs_where_it_is_unpacked(self):
        package, folder = self.the_package("kxhost_*_amd64.deb"), self.folder / "My Prögramm" / "root"
        subprocess.run(["dpkg", "-x", package, folder], check=True)
        needed = subprocess.run(["dpkg-deb", "-f", package, "Depends"], check=True, stdout=subprocess.PIPE, encoding="utf-8")
        for library in ("libc6", "libcurl4", "libpcre2-16-0", "libsodium23", "libxml2"):
            self.assertIn(library, needed.stdout)
        self.assertTrue((folder / "usr/lib/kxhost/TandemorLogger.dll").exists())
        self.check_program(folder / "usr/bin/kxhost")


if __name__ == "__main__":
    unittest.main()
