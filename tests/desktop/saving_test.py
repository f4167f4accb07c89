"""The save panel, asked for by the thread that writes while the main loop turns."""
import subprocess
import tempfile
import unittest
from pathlib import Path

from session import Desktop, press, run_as_ordinary_user, type_text, wait_for

if __name__ == "__main__":
    run_as_ordinary_user()

from programs import PANEL_PROGRAM, Program, make_picture, ostra, start_portal  # noqa: E402

TITLE = "Save Converted Image"
MESSAGE = "Ostra is not allowed to write next to photo.png. Choose where to save the converted image."


def setUpModule():
    global desktop
    desktop = Desktop().__enter__()
    unittest.addModuleCleanup(desktop.__exit__)


def kind_of(path):
    return subprocess.run(["identify", "-format", "%m", str(path)], capture_output=True, text=True).stdout


class SavePanel(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.closed = Path(folder.name) / "closed"
        self.open = Path(folder.name) / "open"
        for each in (self.closed, self.open):
            each.mkdir()
        self.picture = make_picture(self.closed / "photo.png")
        self.closed.chmod(0o555)
        self.addCleanup(self.closed.chmod, 0o755)

    def refused(self):
        """The program with its save panel on the screen: it may not write beside the picture."""
        program = ostra(desktop, "jpg", str(self.picture))
        program.window("dialog", TITLE)
        program.tree.wait("label", MESSAGE)
        return program

    def answer(self, program, path):
        wait_for(lambda: program.tree.find("text", "Name") or program.tree.find("entry", "Name"), "the name")
        press("ctrl+a")
        type_text(str(path))
        press("Return")

    def test_saves_where_the_user_says(self):
        with self.refused() as program:
            self.answer(program, self.open / "chosen.jpg")
            self.assertEqual(program.status(), 0)
        self.assertEqual(kind_of(self.open / "chosen.jpg"), "JPEG")
        self.assertEqual([entry.name for entry in self.closed.iterdir()], ["photo.png"])

    def test_adds_the_extension_that_is_missing(self):
        with self.refused() as program:
            self.answer(program, self.open / "chosen")
            self.assertEqual(program.status(), 0)
        self.assertEqual([entry.name for entry in self.open.iterdir()], ["chosen.jpg"])

    def test_asks_before_the_name_with_its_extension_replaces_a_file(self):
        (self.open / "chosen.jpg").write_text("kept")
        with self.refused() as program:
            self.answer(program, self.open / "chosen")
            program.window("dialog", "“chosen.jpg” exists. Replace it?")
            press("Escape")
            program.window("dialog", TITLE)
            self.answer(program, self.open / "other")
            self.assertEqual(program.status(), 0)
        self.assertEqual((self.open / "chosen.jpg").read_text(), "kept")
        self.assertEqual(kind_of(self.open / "other.jpg"), "JPEG")

    def test_cancelled_it_fails_the_picture(self):
        with self.refused() as program:
            press("Escape")
            program.window("dialog", "Convert to JPG could not convert every image")
            program.tree.wait("label", "photo.png: save cancelled.")
            press("Return")
            self.assertEqual(program.status(), 1)

    def test_a_signal_takes_it_away(self):
        with self.refused() as program:
            program.process.terminate()
            self.assertEqual(program.status(), 128 + 15)


class SavePanelOfAPortal(unittest.TestCase):
    """A portal of the test's own answers."""

    def test_is_asked_and_its_answer_counts(self):
        with tempfile.TemporaryDirectory() as folder:
            portal = start_portal(self, desktop, "0", f"file://{folder}/by%20portal.png")
            with Program(desktop, PANEL_PROGRAM, "save", folder, "photo.png") as program:
                self.assertEqual(program.status(), 0)
                self.assertEqual(program.output(), f"1 {folder}/by portal.png\n")
        self.assertEqual(portal.stdout.readline(), f"Save photo.png {folder} *.png\n")

    def test_can_be_cancelled(self):
        start_portal(self, desktop, "1")
        with Program(desktop, PANEL_PROGRAM, "save", "/tmp", "photo.png") as program:
            self.assertEqual(program.status(), 0)
            self.assertEqual(program.output(), "0 nothing\n")

    def test_gives_way_to_our_own_when_it_fails(self):
        start_portal(self, desktop, "2")
        with Program(desktop, PANEL_PROGRAM, "save", "/tmp", "photo.png") as program:
            program.window("dialog", "Save")
            press("Escape")
            self.assertEqual(program.status(), 0)
            self.assertEqual(program.output(), "0 nothing\n")


if __name__ == "__main__":
    unittest.main(verbosity=2)
