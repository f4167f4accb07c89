"""What is seen of work that goes on, and the notification of its end."""
import os
import re
import shutil
import signal
import tempfile
import time
import unittest
from pathlib import Path

from session import (Desktop, activate, active_window, press, run_as_ordinary_user, screenshot, wait_for, wait_for_focus,
                     windows)

if __name__ == "__main__":
    run_as_ordinary_user(output=os.environ["OSTRA_SCREENSHOTS"])

from accessibility import below, name, role  # noqa: E402
from programs import (PANEL_PROGRAM, SCREENSHOTS, Program, convert_panel, make_picture, ostra,  # noqa: E402
                      start_service)

COUNT = re.compile(r"\d+ of (15|30) done")
TITLE = "Convert to Grayscale"


def setUpModule():
    global desktop
    desktop = Desktop().__enter__()
    unittest.addModuleCleanup(desktop.__exit__)


def pause(program, seconds):
    """Time goes by for the program and its work does not go on, however fast the machine is."""
    program.process.send_signal(signal.SIGSTOP)
    time.sleep(seconds)
    program.process.send_signal(signal.SIGCONT)


class ProgressOfWork(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        first = make_picture(self.folder / "0.png", "3000x2000")
        self.pictures = [str(first)] + [shutil.copy(first, self.folder / f"Föhr {n}.png") for n in range(1, 30)]

    def window(self, program):
        program.tree.wait("frame", TITLE)
        return wait_for(lambda: windows(program.process), "the window of the progress")[0]

    def close(self, program):
        window = self.window(program)
        activate(window)
        press("Escape")
        wait_for(lambda: window not in windows(program.process), "no window")

    def start_long_work(self, *more):
        program = ostra(desktop, "grayscale", *self.pictures, *more)
        wait_for(lambda: self.is_gray(self.pictures[0]), "work")
        return program

    @staticmethod
    def is_gray(path):
        with open(path, "rb") as file:
            return file.read(26)[25] == 0

    @staticmethod
    def labels(program):
        root = program.tree.root()
        return [name(node) for node in below(root) if role(node) == "label"] if root else []

    def name_shown(self, program):
        names = [text for text in self.labels(program) if text.endswith(".png")]
        counts = [text for text in self.labels(program) if COUNT.fullmatch(text)]
        return names[0] if names and counts else None

    def test_shows_name_and_count_without_taking_the_keyboard(self):
        with Program(desktop, PANEL_PROGRAM, "alert", "Typing", "elsewhere") as other:
            typing = wait_for_focus(other.process)
            with self.start_long_work() as program:
                pause(program, 2)
                window = self.window(program)
                self.assertEqual(active_window(), typing)
                shown = wait_for(lambda: self.name_shown(program), "a name")
                self.assertRegex(shown, r"^(0|Föhr \d+)\.png$")
                self.assertIsNotNone(program.tree.find("progress bar", "Progress"))
                screenshot(window, SCREENSHOTS / "progress.png")
                self.assertEqual(program.status(), 0)
                self.assertEqual(program.errors(), "")
            other.process.kill()
        self.assertEqual([p for p in self.pictures if not self.is_gray(p)], [])

    def test_closing_it_stops_nothing_and_the_end_is_told(self):
        service = start_service(self, desktop, "notifications.py")
        with self.start_long_work() as program:
            pause(program, 2)
            self.close(program)
            pause(program, 9)
            self.assertFalse(program.has_ended(), "nothing was left to do: the pictures are too small")
            self.assertEqual(program.status(), 0)
        service.terminate()
        self.assertEqual(service.stdout.read(),
                         f"Ostra|org.ostra.Ostra|silent|{TITLE}|All 30 pictures are done.\n")
        self.assertEqual([p for p in self.pictures if not self.is_gray(p)], [])

    def test_whoever_watches_is_told_nothing(self):
        service = start_service(self, desktop, "notifications.py")
        with self.start_long_work() as program:
            pause(program, 11)
            self.window(program)
            self.assertEqual(program.status(), 0)
        service.terminate()
        self.assertEqual(service.stdout.read(), "")

    def test_an_alert_takes_its_place_and_is_the_last_that_is_seen(self):
        service = start_service(self, desktop, "notifications.py")
        damaged = self.folder / "damaged.png"
        damaged.write_text("no picture")
        with self.start_long_work(str(damaged)) as program:
            pause(program, 11)
            self.close(program)
            program.window("dialog", f"{TITLE} could not convert every image")
            self.assertEqual(len(windows(program.process)), 1)
            press("Return")
            self.assertEqual(program.status(), 1)
        service.terminate()
        self.assertEqual(service.stdout.read(), "")

    def test_stands_in_the_panel_where_there_is_one(self):
        with convert_panel(desktop, *self.pictures[:15]) as program:
            press("Return")
            wait_for(lambda: program.tree.find("progress bar", "Working"), "the spinner")
            pause(program, 2)
            wait_for(lambda: self.name_shown(program), "a name")
            self.assertEqual(len(windows(program.process)), 1)
            screenshot(windows(program.process)[0], SCREENSHOTS / "progress-in-panel.png")
            press("alt+F4")
            wait_for(lambda: not windows(program.process), "no window")
            time.sleep(0.5)
            self.assertEqual(windows(program.process), [])
            self.assertFalse(program.has_ended(), "nothing was left to do: the pictures are too small")
            self.assertEqual(program.status(), 0)

    def test_a_signal_ends_it(self):
        with self.start_long_work() as program:
            pause(program, 2)
            self.window(program)
            program.process.send_signal(signal.SIGTERM)
            self.assertEqual(program.status(), 128 + signal.SIGTERM)


if __name__ == "__main__":
    unittest.main(verbosity=2)
