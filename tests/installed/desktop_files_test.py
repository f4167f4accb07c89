"""The files that desktops read: valid, and without a word that would make a converter open pictures."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(os.environ["OSTRA_SOURCE"]) / "desktop"
ENTRY = SOURCE / "org.ostra.Ostra.desktop"


def run(*words):
    done = subprocess.run(words, capture_output=True, text=True, timeout=60)
    return done.returncode, done.stdout + done.stderr


class DesktopFiles(unittest.TestCase):
    def test_the_entry_is_valid(self):
        self.assertEqual(run("desktop-file-validate", str(ENTRY)), (0, ""))

    def test_the_entry_opens_no_type_of_file(self):
        self.assertNotIn("MimeType", ENTRY.read_text())

    def test_the_metadata_is_valid(self):
        status, said = run("appstreamcli", "validate", "--no-net", str(SOURCE / "org.ostra.Ostra.metainfo.xml"))
        self.assertEqual(status, 0, said)

    def test_the_icons_show_something_at_every_size(self):
        for icon in ("org.ostra.Ostra.svg", "org.ostra.Ostra-symbolic.svg"):
            for size in (16, 24, 48, 256):
                with self.subTest(f"{icon} at {size}"), tempfile.NamedTemporaryFile(suffix=".png") as picture:
                    self.assertEqual(run("rsvg-convert", f"-w{size}", f"-h{size}", str(SOURCE / "icons" / icon), "-o",
                                         picture.name), (0, ""))
                    _, opacity = run("convert", picture.name, "-alpha", "extract", "-format", "%[fx:mean]", "info:")
                    self.assertGreater(float(opacity), 0.5)
                    self.assertLess(float(opacity), 1)

    def test_the_coloured_icon_is_coloured_on_the_left_and_gray_on_the_right(self):
        with tempfile.NamedTemporaryFile(suffix=".png") as picture:
            run("rsvg-convert", "-w16", "-h16", str(SOURCE / "icons/org.ostra.Ostra.svg"), "-o", picture.name)
            for side, gray in (("West", False), ("East", True)):
                # Four columns, without the frame.
                _, saturation = run("convert", picture.name, "-background", "white", "-flatten", "-gravity", side, "-crop",
                                    "6x8+2+0", "-colorspace", "HSL", "-channel", "G", "-separate", "-format", "%[fx:mean]",
                                    "info:")
                self.assertEqual(float(saturation) < 0.1, gray, side)


if __name__ == "__main__":
    unittest.main()
