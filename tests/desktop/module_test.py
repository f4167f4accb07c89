"""The windows are a module of their own: whoever shows nothing loads nothing of them, and they share the program's
main queue."""
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from session import STEP_SECONDS, run_as_ordinary_user

if __name__ == "__main__":
    run_as_ordinary_user()

PROGRAM = os.environ["OSTRA_PROGRAM"]
MODULE = Path(PROGRAM).parent / "modules" / "ostra-gtk4.so"
TOOLKIT = ("libgtk", "libgdk", "libglib", "libgio", "libgobject", "libpango")


def output(*words, environment=None):
    return subprocess.run(words, capture_output=True, text=True, check=True, timeout=STEP_SECONDS,
                          env={**os.environ, **(environment or {})}).stdout


def symbols(*words):
    """Pairs of a kind and a name."""
    return [line[17:].split(" ", 1) for line in output("nm", "-C", *words).splitlines() if len(line) > 18]


class Module(unittest.TestCase):
    def test_is_not_linked_into_the_program(self):
        self.assertEqual([line for line in output("ldd", PROGRAM).splitlines() if line.strip().startswith(TOOLKIT)],
                         [])

    def test_is_not_loaded_by_a_request_that_shows_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            picture = Path(folder) / "x.png"
            subprocess.run(["convert", "-size", "20x20", "gradient:", str(picture)], check=True)
            trace = Path(folder) / "trace"
            # A display that is there is no reason to look at it.
            output("strace", "-f", "-e", "trace=openat,open", "-o", str(trace), PROGRAM, "srgb", str(picture),
                   environment={"DISPLAY": ":0", "HOME": folder})
            opened = trace.read_text()
        self.assertIn(picture.name, opened)
        for library in (*TOOLKIT, MODULE.name):
            self.assertNotIn(library, opened)

    def test_exports_its_entry_only(self):
        self.assertEqual([name for _, name in symbols("-D", "--defined-only", str(MODULE))], ["ostra_window_renderer"])

    def test_has_no_state_of_the_platform_of_its_own(self):
        state = [name for kind, name in symbols(str(MODULE)) if kind in "bBdDuG" and name.startswith("ostra::")
                 and not name.startswith("ostra::gtk::")]
        self.assertEqual(state, [])

    def test_finds_in_the_program_what_it_uses_of_the_platform(self):
        used = {name for kind, name in symbols("-D", "--undefined-only", str(MODULE)) if "ostra::" in name}
        self.assertIn("ostra::MainLoop::descriptor()", used)
        self.assertEqual(used - {name for _, name in symbols("-D", "--defined-only", PROGRAM)}, set())


if __name__ == "__main__":
    unittest.main(verbosity=2)
