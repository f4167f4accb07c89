"""How the windows look: a picture of each is kept, light and dark, at two scales and with a large font."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from session import STEP_SECONDS, Desktop, press, run_as_ordinary_user, screenshot, wait_for, wait_for_focus

if __name__ == "__main__":
    run_as_ordinary_user(os.environ["OSTRA_SCREENSHOTS"])

import programs  # noqa: E402
from programs import PANEL_PROGRAM, SCREENSHOTS, Program, convert_panel, make_picture, make_work, start_portal  # noqa: E402

DARK = "[org/gnome/desktop/interface]\ncolor-scheme='prefer-dark'\n"
LARGE_FONT = "[Settings]\ngtk-font-name=Sans 16.5\n"
LOOKS = {
    "light": {},
    "dark": {"glib-2.0/settings/keyfile": DARK},
    "light-scale-2": {},
    "dark-scale-2": {"glib-2.0/settings/keyfile": DARK},
    "light-large-font": {"gtk-4.0/settings.ini": LARGE_FONT},
}


def setUpModule():
    global desktop
    desktop = Desktop().__enter__()
    unittest.addModuleCleanup(desktop.__exit__)


def measure(picture, what):
    """Of a picture: its width `w`, height `h`, or brightness `fx:mean`."""
    return float(subprocess.run(["convert", str(picture), "-format", f"%[{what}]", "info:"], capture_output=True,
                                check=True, text=True, timeout=STEP_SECONDS).stdout)


class Looks(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def environment(self, look):
        """Settings of the look, and nothing remembered."""
        settings = self.folder / look
        for name, text in LOOKS[look].items():
            (settings / name).parent.mkdir(parents=True)
            (settings / name).write_text(text)
        return {"XDG_CONFIG_HOME": str(settings), "GDK_SCALE": "2" if look.endswith("2") else "1"}

    def keep(self, program, what, look):
        """Keeps what a window shows once it has drawn itself."""
        path = SCREENSHOTS / f"{what}-{look}.png"
        window = wait_for_focus(program.process)
        shots = []

        def still():
            screenshot(window, path)
            shots.append(path.read_bytes())
            return measure(path, "fx:standard_deviation") > 0 and shots[-1] in shots[:-1]
        wait_for(still, "a window that has drawn itself")
        return path

    def panel(self, look):
        picture = make_picture(self.folder / "picture.png")
        with convert_panel(desktop, picture, environment=self.environment(look)) as program:
            path = self.keep(program, "panel", look)
            press("space")
            program.tree.wait("list item", "Display P3")
            wait_for_focus(program.process)
            screenshot("root", SCREENSHOTS / f"panel-list-{look}.png")
            press("Escape")
            wait_for(lambda: not program.tree.find("list item", "Display P3"), "a closed list")
            press("Escape")
            self.assertEqual(program.status(), 130)
        return path

    def alert(self, look):
        text = "\n".join(f"picture-{number}.png: the image could not be decoded." for number in range(30))
        title = "Convert Color Profile could not convert every image"
        with Program(desktop, PANEL_PROGRAM, "alert", title, text, environment=self.environment(look)) as program:
            program.window("dialog", title)
            path = self.keep(program, "alert", look)
            press("Return")
            self.assertEqual(program.status(), 0)
        return path

    def test_the_panel_has_its_size_and_follows_style_scale_and_font(self):
        shots = {look: self.panel(look) for look in LOOKS}
        width, height = (measure(shots["light"], what) for what in "wh")
        self.assertGreaterEqual(width, 460)
        self.assertLess(width, 500)
        self.assertGreaterEqual(height, 170)
        self.assertLess(height, 300)
        self.assertGreater(measure(shots["light"], "fx:mean"), 0.8)
        self.assertLess(measure(shots["dark"], "fx:mean"), 0.4)
        self.assertAlmostEqual(measure(shots["light-scale-2"], "w"), 2 * width, delta=10)
        self.assertGreater(measure(shots["light-large-font"], "w"), 1.4 * width)
        self.assertGreater(measure(shots["light-large-font"], "h"), 1.1 * height)

    def test_the_alert_follows_the_style(self):
        shots = {look: self.alert(look) for look in ("light", "dark", "light-large-font")}
        self.assertLess(measure(shots["dark"], "fx:mean"), 0.4)
        self.assertGreater(measure(shots["light"], "fx:mean"), 0.8)

    def test_a_portal_may_want_it_dark_too(self):
        portal = start_portal(self, desktop, "dark")
        with Program(desktop, PANEL_PROGRAM, "panel", environment=self.environment("light")) as program:
            self.assertEqual(portal.stdout.readline(), "org.freedesktop.appearance color-scheme\n")
            window = program.window("dialog", "Panel")
            path = self.folder / "panel.png"

            def is_dark():
                screenshot(window, path)
                return 0 < measure(path, "fx:mean") < 0.4
            wait_for(is_dark, "a dark window")

    def test_the_spinner_turns_while_pictures_are_converted(self):
        pictures = make_work(self.folder)
        with convert_panel(desktop, *pictures, environment=self.environment("light")) as program:
            press("Return")
            programs.is_working(program)
            first, second = (SCREENSHOTS / name for name in ("working-light.png", "working-light-later.png"))
            window = wait_for_focus(program.process)
            screenshot(window, first)

            def turned():
                screenshot(window, second)
                return first.read_bytes() != second.read_bytes()
            wait_for(turned, "a spinner that has turned")
            self.assertEqual(program.status(), 0)

    def test_the_save_panel(self):
        for look in ("light", "dark-scale-2"):
            with Program(desktop, PANEL_PROGRAM, "save", str(self.folder), "photo.png",
                         environment=self.environment(look)) as program:
                program.window("dialog", "Save")
                screenshot(wait_for_focus(program.process), SCREENSHOTS / f"save-{look}.png")
                press("Escape")
                self.assertEqual(program.status(), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
