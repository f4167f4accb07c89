"""The manual page: well formed, and of the same opinion as the program."""
import os
import re
import subprocess
import unittest
from pathlib import Path

PROGRAM = os.environ["OSTRA_PROGRAM"]
PAGE = Path(os.environ["OSTRA_BUILD"]) / "desktop/ostra.1"


def output(*words, **options):
    return subprocess.run(words, capture_output=True, text=True, check=True, timeout=60, **options)


def shown():
    """The page as a reader has it."""
    return output("man", "-l", str(PAGE), env={**os.environ, "LC_ALL": "C.UTF-8", "MANWIDTH": "120"}).stdout


class Manual(unittest.TestCase):
    def test_is_formatted_without_a_warning(self):
        self.assertEqual(output("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", str(PAGE),
                                env={**os.environ, "LC_ALL": "C.UTF-8", "MANROFFSEQ": "", "MANWIDTH": "80"}).stderr, "")

    def test_tells_every_option_and_command_of_the_program(self):
        text = output(PROGRAM, "--help").stdout
        words = set(re.findall(r"--[a-z][a-z-]*", text)) | set(re.findall(r"^  ostra ([a-z]+) ", text, re.MULTILINE))
        self.assertIn("profiles", words)
        page = shown()
        self.assertEqual({word for word in words if not re.search(rf"^ +{word}\b", page, re.MULTILINE)}, set())

    def test_tells_every_action(self):
        actions = [line.split()[0] for line in output(PROGRAM, "list").stdout.splitlines()]
        self.assertIn("grayscale", actions)
        page = shown()
        self.assertEqual([action for action in actions if not re.search(rf"^ +{action}$", page, re.MULTILINE)], [])


if __name__ == "__main__":
    unittest.main()
