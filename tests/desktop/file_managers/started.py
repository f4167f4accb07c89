"""The program that a menu started: found among all processes, since it is nobody's child here."""
import os
from pathlib import Path

from session import wait_for

PROGRAM = "/usr/bin/ostra"


class Started:
    """One such process; looks like those that the desktop starts to what reads windows."""

    def __init__(self, pid):
        self.pid = pid
        self._folder = Path("/proc") / str(pid)

    def words(self):
        return [os.fsdecode(word) for word in (self._folder / "cmdline").read_bytes().split(b"\0")[:-1]]

    def is_running(self):
        try:
            return (self._folder / "stat").read_text(encoding="utf-8", errors="replace").rsplit(")", 1)[1].split()[0] != "Z"
        except OSError:
            return False

    def paths(self):
        """What it was started for, in its arguments or on its standard input."""
        words = self.words()
        if "--files-from=-" not in words:
            return words[words.index("--") + 1:]
        # A memory file: opened anew, it is read from its beginning.
        return [os.fsdecode(path) for path in (self._folder / "fd/0").read_bytes().split(b"\0")[:-1]]


def all_started():
    """Those on this desktop, without the processes that decode for them."""
    mark = b"DISPLAY=" + os.fsencode(os.environ["DISPLAY"])
    found = []
    for folder in Path("/proc").iterdir():
        try:
            if folder.name.isdigit() and os.readlink(folder / "exe") == PROGRAM \
                    and mark in (folder / "environ").read_bytes().split(b"\0"):
                found.append(Started(int(folder.name)))
        except OSError:
            continue
    return found


def wait_for_start():
    return min(wait_for(all_started, "the program's start"), key=lambda process: process.pid)


def wait_for_end(seconds=60):
    wait_for(lambda: not any(process.is_running() for process in all_started()), "the program's end", seconds)
