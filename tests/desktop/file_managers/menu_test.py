"""The menu in a real file manager, used as people use it. The file manager's name is the first argument."""
import os
import signal
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent)]

from installed import see_installed  # noqa: E402
from session import Desktop, active_window, answer_of, press, run_as_ordinary_user, wait_for  # noqa: E402

SCREENSHOTS = Path(os.environ["OSTRA_SCREENSHOTS"])

if __name__ == "__main__":
    see_installed(os.environ["OSTRA_STAGE"])
    run_as_ordinary_user(SCREENSHOTS)

from file_manager import START_SECONDS  # noqa: E402
from managers import ALL  # noqa: E402
from pictures import is_gray, make_many, make_pictures, width  # noqa: E402
from programs import profile_of  # noqa: E402
from started import all_started, wait_for_end, wait_for_start  # noqa: E402

# Titles, and the places in the submenu.
PROFILE = ("Convert Color Profile", 1)
GERMAN_PROFILE = ("Farbprofil umwandeln", 1)
GRAYSCALE = ("Convert to Grayscale", 2)
# More than a pipe holds at the least. Caja and Thunar themselves take many minutes to show ten times as many, and the
# machines that try every change have not the time for it with any.
MANY = 2000 if os.environ.get("CI") or sys.argv[1] in ("caja", "thunar") else 20_000


def setUpModule():
    global desktop
    desktop = Desktop().__enter__()
    unittest.addModuleCleanup(desktop.__exit__)


class Menu(unittest.TestCase):
    manager = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="Photos-", dir=desktop.folder / "home")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.addCleanup(self.end_programs)

    @staticmethod
    def end_programs():
        for program in all_started():
            os.kill(program.pid, signal.SIGTERM)
        wait_for_end()

    def shown(self, language="en"):
        return ALL[self.manager](desktop, self.folder, SCREENSHOTS, language)

    def test_converts_the_selected_pictures_whatever_their_names_are(self):
        pictures = make_pictures(self.folder)
        with self.shown() as manager:
            manager.open_menu()
            self.assertTrue(manager.offers_conversions())
            manager.keep_screenshot("menu")
            manager.open_conversions()
            manager.keep_screenshot("actions")
            manager.pick(GRAYSCALE)
            wait_for(lambda: all(map(is_gray, pictures)), "gray pictures", START_SECONDS)
            wait_for_end()
        self.assertEqual([width(picture) for picture in pictures], [40 + number for number in range(len(pictures))])
        self.assertEqual(sorted(self.folder.iterdir()), sorted(pictures))

    def test_offers_nothing_where_one_file_is_no_picture(self):
        make_pictures(self.folder, ["a.png", "b.jpg"])
        (self.folder / "c.txt").write_text("words", encoding="utf-8")
        with self.shown() as manager:
            manager.open_menu()
            manager.keep_screenshot("mixed")
            self.assertFalse(manager.offers_conversions())

    def test_brings_the_panel_to_the_front(self):
        pictures = make_pictures(self.folder, ["a.jpg", "b.jpg"])
        with self.shown() as manager:
            manager.open_menu()
            manager.open_conversions()
            manager.pick(PROFILE)
            program = wait_for_start()
            wait_for(lambda: answer_of("xdotool", "getwindowpid", active_window()).strip() == str(program.pid),
                     "the panel in front", START_SECONDS)
            manager.keep_screenshot("panel")
            press("Return")
            wait_for_end()
        self.assertEqual([profile_of(picture) for picture in pictures], ["sRGB IEC61966-2.1"] * 2)

    def test_speaks_german(self):
        make_pictures(self.folder, ["a.png", "b.jpg"])
        with self.shown("de") as manager:
            manager.open_menu()
            self.assertTrue(manager.offers_conversions())
            manager.open_conversions()
            manager.keep_screenshot("german")
            manager.pick(GERMAN_PROFILE)
            self.assertIn("/usr/share/ostra/bundles/convert-color-profile", wait_for_start().words())

    def test_hands_over_very_many_pictures(self):
        make_many(self.folder, MANY)
        with self.shown() as manager:
            manager.open_menu()
            self.assertTrue(manager.offers_conversions())
            manager.open_conversions()
            manager.pick(GRAYSCALE)
            program = wait_for_start()
            paths = program.paths()
            wait_for(manager.answers, "the file manager's answer")
            first = Path(paths[0])
            wait_for(lambda: is_gray(first), "the first gray picture", START_SECONDS)
        self.assertEqual(len(paths), MANY)
        self.assertEqual(sorted(map(Path, paths)), sorted(self.folder.iterdir()))


if __name__ == "__main__":
    Menu.manager = sys.argv.pop(1)
    unittest.main(verbosity=2)
