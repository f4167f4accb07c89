"""The programs under test, and the pictures that they are given."""
import os
import shutil
import subprocess
from pathlib import Path

import accessibility
from session import STEP_SECONDS, wait_for, wait_for_focus

PROGRAM = os.environ["OSTRA_PROGRAM"]
PANEL_PROGRAM = os.environ["OSTRA_PANEL_PROGRAM"]
SCREENSHOTS = Path(os.environ["OSTRA_SCREENSHOTS"])


class Program:
    """A program on the desktop, and the tree of its windows."""

    def __init__(self, desktop, *words, environment=None):
        self._errors = (desktop.folder / "errors").open("w+")
        self._output = (desktop.folder / "output").open("w+")
        self.process = desktop.start(words, environment, stdin=subprocess.PIPE, stdout=self._output,
                                     stderr=self._errors)
        self.tree = accessibility.Application(self.process)

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        if kind is not None:
            print(f"-- {self.process.args}: {self.process.poll()}\n{self.tree.dump()}\n{self.errors()}")
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        for file in (self._errors, self._output, self.process.stdin):
            file.close()

    def window(self, role, name):
        """Waits for a window and for its focus; its number."""
        self.tree.wait(role, name)
        return wait_for_focus(self.process)

    def status(self):
        """Of the program's end; 128 + n when signal n ended it."""
        code = self.process.wait(STEP_SECONDS)
        return code if code >= 0 else 128 - code

    def has_ended(self):
        return self.process.poll() is not None

    def errors(self):
        return read_again(self._errors)

    def output(self):
        return read_again(self._output)


def read_again(file):
    file.seek(0)
    return file.read()


def ostra(desktop, *words, environment=None):
    return Program(desktop, PROGRAM, "--ui=desktop", *words, environment=environment)


def convert_panel(desktop, *pictures, environment=None):
    """The program with its panel on the screen."""
    program = ostra(desktop, "convert-color-profile", *map(str, pictures), environment=environment)
    program.window("dialog", "Convert Color Profile")
    return program


def make_picture(path, size="300x200"):
    """A picture without a profile."""
    subprocess.run(["convert", "-size", size, "gradient:red-blue", str(path)], check=True, timeout=STEP_SECONDS)
    return path


def make_work(folder):
    """Pictures that keep the program busy for a while."""
    first = make_picture(folder / "0.jpg", "3000x3000")
    return [first] + [Path(shutil.copy(first, folder / f"{number}.jpg")) for number in range(1, 10)]


def profile_of(path):
    """The name that exiftool reads in the picture's profile; empty without one."""
    return subprocess.run(["exiftool", "-s3", "-ProfileDescription", str(path)], check=True, capture_output=True,
                          text=True, timeout=STEP_SECONDS).stdout.strip()


def wait_for_pop_up(program, title):
    """Waits until the panel's pop-up shows a title as its choice."""
    program.tree.wait("push button", f"Profile: {title}")


def is_working(program):
    return wait_for(lambda: program.tree.find("progress bar", "Working"), "the spinner")


def start_service(test, desktop, script, *words):
    """A service on the bus for the length of a test; what it prints can be read."""
    service = desktop.start(["/usr/bin/python3", "-B", str(Path(__file__).parent / script), *words],
                            stdout=subprocess.PIPE, text=True)
    test.addCleanup(service.stdout.close)
    test.addCleanup(service.wait)
    test.addCleanup(service.kill)
    test.assertEqual(service.stdout.readline(), "ready\n")
    return service


def start_portal(test, desktop, *words):
    return start_service(test, desktop, "portal.py", *words)
