"""The program finds what belongs to it wherever it was installed, and wherever that was moved to."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

BUILD = os.environ["OSTRA_BUILD"]


class Prefix(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        first = self.folder / "first"
        subprocess.run(["cmake", "--install", BUILD, "--prefix", str(first)], check=True, capture_output=True)
        self.place = self.folder / "another place"
        first.rename(self.place)

    def ostra(self, *words):
        done = subprocess.run([str(self.place / "bin/ostra"), *map(str, words)], capture_output=True, text=True, timeout=60,
                              env={"HOME": str(self.folder), "PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8"})
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_has_its_actions_and_modules(self):
        self.assertIn("grayscale-jpg", self.ostra("list"))
        formats = self.ostra("formats")
        self.assertIn("TIFF", formats)
        self.assertNotIn("missing", formats)

    def test_converts_there(self):
        for name in ("x.png", "x.tif"):
            picture = self.folder / name
            subprocess.run(["convert", "-size", "40x30", "gradient:red-blue", str(picture)], check=True)
            self.ostra("grayscale", picture)
            space = subprocess.run(["identify", "-format", "%[channels]", str(picture)], capture_output=True, text=True,
                                   check=True).stdout
            self.assertTrue(space.startswith("gray"), space)


if __name__ == "__main__":
    unittest.main()
