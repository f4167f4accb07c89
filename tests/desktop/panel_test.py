"""The panel of the profile conversion, used by keyboard alone."""
import signal
import tempfile
import unittest
from pathlib import Path

from session import Desktop, press, run_as_ordinary_user, type_text, wait_for, windows

if __name__ == "__main__":
    run_as_ordinary_user()

import programs  # noqa: E402
from programs import convert_panel, make_picture, make_work, profile_of, wait_for_pop_up  # noqa: E402

FIRST = "sRGB IEC61966-2.1"


def setUpModule():
    global desktop
    desktop = Desktop().__enter__()
    unittest.addModuleCleanup(desktop.__exit__)


class Panel(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.pictures = [make_picture(self.folder / name) for name in ("a.jpg", "b.png")]
        self.before = self.bytes()

    def panel(self, pictures):
        """With settings of this test's own."""
        return convert_panel(desktop, *pictures, environment={"XDG_CONFIG_HOME": str(self.folder)})

    def bytes(self):
        return [picture.read_bytes() for picture in self.pictures]

    def open_list(self, program):
        press("space")
        program.tree.wait("list item", FIRST)

    def pick(self, program, beginning, title):
        self.open_list(program)
        type_text(beginning)
        wait_for(lambda: not program.tree.find("list item", FIRST), "a shorter list")
        press("Return")
        wait_for_pop_up(program, title)

    def test_converts_to_the_profile_that_was_picked_and_remembers_it(self):
        with self.panel(self.pictures) as program:
            wait_for_pop_up(program, FIRST)
            self.pick(program, "adobe rgb", "Adobe RGB (1998)")
            self.assertEqual(self.bytes(), self.before)
            press("Return")
            self.assertEqual(program.status(), 0)
            self.assertEqual(program.errors(), "")
        self.assertEqual([profile_of(picture) for picture in self.pictures], ["Adobe RGB (1998)"] * 2)

        with self.panel(self.pictures) as program:
            wait_for_pop_up(program, "Adobe RGB (1998)")
            self.pick(program, "display", "Display P3")
            press("Return")
            self.assertEqual(program.status(), 0)
        self.assertEqual([profile_of(picture) for picture in self.pictures], ["Display P3"] * 2)

    def test_escape_closes_the_list_first_and_then_cancels(self):
        with self.panel(self.pictures) as program:
            self.open_list(program)
            press("Escape")
            wait_for(lambda: not program.tree.find("list item", FIRST), "a closed list")
            self.assertFalse(program.has_ended())
            press("Escape")
            self.assertEqual(program.status(), 130)
        self.assertEqual(self.bytes(), self.before)

    def test_closing_the_window_cancels(self):
        with self.panel(self.pictures) as program:
            press("alt+F4")
            self.assertEqual(program.status(), 130)
        self.assertEqual(self.bytes(), self.before)

    def test_return_presses_a_button_that_has_the_focus(self):
        with self.panel(self.pictures) as program:
            press("Tab")
            program.tree.wait_for_focus("push button", "Cancel")
            press("Return")
            self.assertEqual(program.status(), 130)
        self.assertEqual(self.bytes(), self.before)

    def test_the_work_goes_on_when_the_window_is_closed(self):
        pictures = make_work(self.folder)
        with self.panel(pictures) as program:
            press("Return")
            programs.is_working(program)
            press("alt+F4")
            wait_for(lambda: program.has_ended() or not windows(program.process), "a hidden window")
            self.assertFalse(program.has_ended(), "nothing was left to do: the pictures are too small")
            self.assertEqual(program.status(), 0)
        self.assertNotIn("", [profile_of(picture) for picture in pictures])

    def test_a_signal_takes_the_panel_away(self):
        with self.panel(self.pictures) as program:
            program.process.send_signal(signal.SIGTERM)
            self.assertEqual(program.status(), 128 + signal.SIGTERM)
        self.assertEqual(self.bytes(), self.before)

    def test_reads_well_to_a_screen_reader(self):
        with self.panel(self.pictures) as program:
            tree = program.tree
            self.assertEqual(tree.root().get_name(), "org.ostra.Ostra")
            tree.wait("dialog", "Convert Color Profile")
            tree.wait("label", "Convert Color Profile")
            tree.wait("combo box", "Profile:")
            tree.wait_for_focus("push button", f"Profile: {FIRST}")
            tree.wait("push button", "Cancel")
            tree.wait("push button", "Convert")
            self.assertIsNone(tree.find("progress bar"))
            press("Escape")
            self.assertEqual(program.status(), 130)


if __name__ == "__main__":
    unittest.main(verbosity=2)
