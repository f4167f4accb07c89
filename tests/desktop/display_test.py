"""A display that goes away ends the program, in the middle of a picture too: every picture is whole, before or after."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from session import Desktop, press, run_as_ordinary_user, wait_for

if __name__ == "__main__":
    run_as_ordinary_user()

import programs  # noqa: E402
from programs import PROGRAM, convert_panel, make_work, profile_of  # noqa: E402


class LostDisplay(unittest.TestCase):
    def test_leaves_every_picture_whole(self):
        with tempfile.TemporaryDirectory() as folder, Desktop() as desktop:
            pictures = make_work(Path(folder))
            before = [picture.read_bytes() for picture in pictures]
            with convert_panel(desktop, *pictures) as program:
                press("Return")
                programs.is_working(program)
                wait_for(lambda: pictures[0].read_bytes() != before[0], "a first picture")
                self.assertFalse(program.has_ended())
                desktop.end_display()
                self.assertEqual(program.status(), 1)
            unchanged = [picture.read_bytes() == bytes_ for picture, bytes_ in zip(pictures, before)]
            for picture, is_unchanged in zip(pictures, unchanged):
                subprocess.run(["djpeg", "-outfile", os.devnull, str(picture)], check=True)
                self.assertEqual(profile_of(picture) == "", is_unchanged)
            self.assertIn(True, unchanged, "nothing was left to do: the pictures are too small")

    def test_that_is_not_there_is_said(self):
        with tempfile.TemporaryDirectory() as folder:
            environment = {**os.environ, "DISPLAY": ":12345", "HOME": folder}
            environment.pop("WAYLAND_DISPLAY", None)
            run = subprocess.run([PROGRAM, "--ui=desktop", "convert-color-profile", "/etc/hostname"], text=True,
                                 env=environment, capture_output=True)
            self.assertEqual(run.returncode, 2)
            self.assertIn("There is no display to show windows on.", run.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
