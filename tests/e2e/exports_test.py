"""What the package's shared library shows to the world."""
import subprocess
import unittest

import e2e


class ExportsTest(unittest.TestCase):
    def test_the_package_shows_its_entry_and_nothing_else(self):
        listing = subprocess.run(["nm", "-D", "--defined-only", e2e.BIN / "KxVisualStudioDotNET.so"], check=True,
                                 stdout=subprocess.PIPE, encoding="utf-8").stdout
        self.assertEqual([line.split()[1:] for line in listing.splitlines()], [["T", "KxVisualStudioDotNET"]])


if __name__ == "__main__":
    unittest.main()
