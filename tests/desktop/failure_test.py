"""The alert after a batch in which pictures failed."""
import tempfile
import unittest
from pathlib import Path

from session import Desktop, press, run_as_ordinary_user, wait_for_focus, windows

if __name__ == "__main__":
    run_as_ordinary_user()

from programs import PANEL_PROGRAM, Program, convert_panel, make_picture, ostra, profile_of  # noqa: E402

DAMAGED = "damaged.png: not an image ImageIO can read."


def setUpModule():
    global desktop
    desktop = Desktop().__enter__()
    unittest.addModuleCleanup(desktop.__exit__)


class FailureAlert(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.damaged = Path(folder.name) / "damaged.png"
        self.damaged.write_text("no picture")
        self.whole = make_picture(Path(folder.name) / "whole.jpg")

    def test_stands_over_the_panel_and_names_what_failed(self):
        title = "Convert Color Profile could not convert every image"
        with convert_panel(desktop, self.damaged, self.whole) as program:
            press("Return")
            program.window("dialog", title)
            program.tree.wait("label", title)
            program.tree.wait("label", DAMAGED)
            program.tree.wait("dialog", "Convert Color Profile")
            program.tree.wait_for_focus("push button", "OK")
            press("Return")
            self.assertEqual(program.status(), 1)
            self.assertEqual(program.errors(), "")
        self.assertEqual(self.damaged.read_text(), "no picture")
        self.assertNotEqual(profile_of(self.whole), "")

    def test_comes_alone_where_no_panel_is(self):
        title = "Convert to Grayscale could not convert every image"
        with ostra(desktop, "grayscale", str(self.damaged)) as program:
            program.window("dialog", title)
            program.tree.wait("label", DAMAGED)
            press("Escape")
            self.assertEqual(program.status(), 1)

    def test_can_be_closed(self):
        with ostra(desktop, "grayscale", str(self.damaged)) as program:
            wait_for_focus(program.process)
            press("alt+F4")
            self.assertEqual(program.status(), 1)

    def test_nothing_is_shown_when_all_went_well(self):
        with ostra(desktop, "grayscale", str(self.whole)) as program:
            self.assertEqual(program.status(), 0)
            self.assertEqual(windows(program.process), [])

    def test_two_hundred_failures_are_all_in_it_and_fit_on_the_screen(self):
        text = "\n".join(f"{number}.png: the image could not be decoded." for number in range(200))
        with Program(desktop, PANEL_PROGRAM, "alert", "Two hundred", text) as program:
            program.window("dialog", "Two hundred")
            program.tree.wait("label", text)
            height = program.tree.find("dialog", "Two hundred").get_size().y
            self.assertLess(height, 600)
            press("Return")
            self.assertEqual(program.status(), 0)

    def test_shows_control_characters_as_question_marks(self):
        with Program(desktop, PANEL_PROGRAM, "alert", "Title", "a\x1b[31mb\nc") as program:
            program.window("dialog", "Title")
            program.tree.wait("label", "a?[31mb\nc")
            press("Escape")
            self.assertEqual(program.status(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
