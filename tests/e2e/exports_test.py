"""What the package's shared library shows to the world, and where the programs search theirs."""
import re
import subprocess
import unittest

import e2e


class ExportsTest(unittest.TestCase):
    def test_what_is_loaded_shows_its_entry_and_nothing_else(self):
        for library, entry in [("KxVisualStudioDotNET.so", "KxVisualStudioDotNET"), ("kxwebdav.so", "KxNewWebDavClient")]:
            listing = subprocess.run(["nm", "-D", "--defined-only", e2e.BIN / library], check=True, stdout=subprocess.PIPE,
                                     encoding="utf-8").stdout
            self.assertEqual([line.split()[1:] for line in listing.splitlines()], [["T", entry]])

    def test_programs_search_libraries_beside_themselves_only(self):
        searched = {}
        for file in e2e.BIN.iterdir():
            listing = subprocess.run(["readelf", "-d", file], check=False, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                     encoding="utf-8").stdout
            searched.update({file.name: path for path in re.findall(r"R(?:UN)?PATH\).*\[(.*)\]", listing)})
        self.assertIn("kxhost", searched)
        self.assertEqual(set(searched.values()), {"$ORIGIN"}, searched)


if __name__ == "__main__":
    unittest.main()
