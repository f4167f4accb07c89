"""What Tab makes of the program's words in the real shells."""
import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

import shells


class InEveryShell:
    """Each test ends the line with a word of its own, so that Tab alone decides what stands before it."""
    behind_folder = "/"

    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)
        self.shell = type(self).start(self._folder.name)
        self.addCleanup(self.shell.close)
        for name in ("photo (1).png", "notes.txt", "-odd.jpg", "paths"):
            (self.shell.pictures / name).touch()
        for name in ("a bundle", "only"):
            (self.shell.pictures / name).mkdir()
        for name in ("one.webp", "one.txt"):
            (self.shell.pictures / "only" / name).touch()

    def check(self, keys, *words):
        with self.subTest(keys):
            self.assertEqual(self.shell.words_of(keys + " END"), [*words, "END"])

    def test_knows_the_actions_and_commands(self):
        self.check("conv\t", "convert-color-profile")
        self.check("grayscale-\t", "grayscale-jpg")
        self.check("--verbose inv\t", "--verbose", "invert")
        self.check("form\t", "formats")
        self.check("int\t", "integrate")

    def test_asks_for_the_profiles_and_quotes_their_names(self):
        self.check("--profile Adobe\t", "--profile", "Adobe RGB (1998)")
        self.check("--profile=Adobe\t", "--profile=Adobe RGB (1998)")
        self.check("convert-color-profile --profile Rec\\.\\ 20\t", "convert-color-profile", "--profile",
                   "Rec. 2020 (ITU-R BT.2020)")
        self.check('--profile "Rec. 20\t', "--profile", "Rec. 2020 (ITU-R BT.2020)")
        self.check("--profile 'Rec. 20\t", "--profile", "Rec. 2020 (ITU-R BT.2020)")

    def test_knows_the_options_and_their_values(self):
        self.check("--verb\t", "--verbose")
        self.check("integrate --rem\t", "integrate", "--remove")
        self.check("integrate --dry\t", "integrate", "--dry-run")
        self.check("--ui ter\t", "--ui", "terminal")
        self.check("--ui=no\t", "--ui=none")
        self.check("--bundle a\t", "--bundle", "a bundle" + self.behind_folder)
        self.check("--files-from=pa\t", "--files-from=paths")

    def test_offers_files_behind_an_action_and_a_bundle(self):
        self.check("srgb pho\t", "srgb", "photo (1).png")
        self.check("srgb notes\t", "srgb", "notes.txt")
        self.check("--profile sRGB srgb photo\t", "--profile", "sRGB", "srgb", "photo (1).png")
        self.check("srgb -- -od\t", "srgb", "--", "-odd.jpg")
        self.check("--bundle only pho\t", "--bundle", "only", "photo (1).png")

    def test_offers_nothing_behind_a_listing(self):
        self.check("list no\t", "list", "no")
        self.check("profiles no\t", "profiles", "no")

    def test_has_every_option_of_the_program(self):
        text = subprocess.run([os.environ["OSTRA_PROGRAM"], "--help"], capture_output=True, text=True, check=True).stdout
        known = (shells.COMPLETIONS / f"ostra.{self.start.__name__}").read_text()
        options = set(re.findall(r"--([a-z][a-z-]*)", text))
        self.assertIn("profile", options)
        self.assertEqual({option for option in options if not re.search(rf"(--|-l ){option}\b", known)}, set())


class Bash(InEveryShell, unittest.TestCase):
    start = staticmethod(shells.bash)

    def test_prefers_pictures(self):
        self.check("srgb only/\t", "srgb", "only/one.webp")


class Zsh(InEveryShell, unittest.TestCase):
    start = staticmethod(shells.zsh)
    behind_folder = ""  # it takes the slash back when the word ends

    def test_prefers_pictures(self):
        self.check("srgb only/\t", "srgb", "only/one.webp")


class Fish(InEveryShell, unittest.TestCase):
    start = staticmethod(shells.fish)


if __name__ == "__main__":
    unittest.main()
