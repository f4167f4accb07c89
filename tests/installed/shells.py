"""Real shells at a terminal of their own, and what they start when keys are typed."""
import fcntl
import os
import pty
import select
import struct
import subprocess
import termios
import time
from pathlib import Path

STEP_SECONDS = 30
COMPLETIONS = Path(os.environ["OSTRA_COMPLETIONS"])

# Answers questions as the program does where no profile is installed, and keeps the words of everything else.
STAND_IN = """#!/bin/sh
case "$*" in list|profiles|formats) XDG_DATA_DIRS=/none exec "$OSTRA_PROGRAM" "$@" ;; esac
printf '%s\\0' "$@" >"$RECORD.new"
mv "$RECORD.new" "$RECORD"
"""


class Shell:
    def __init__(self, folder, words, preparation):
        self._folder = Path(folder)
        (self._folder / "bin").mkdir()
        stand_in = self._folder / "bin/ostra"
        stand_in.write_text(STAND_IN)
        stand_in.chmod(0o755)
        self._record = self._folder / "record"
        self.pictures = self._folder / "work"
        self.pictures.mkdir()
        self._terminal, inside = pty.openpty()
        fcntl.ioctl(inside, termios.TIOCSWINSZ, struct.pack("HHHH", 40, 200, 0, 0))
        self._process = subprocess.Popen(
            ["setsid", "--ctty", *words], cwd=self.pictures, stdin=inside, stdout=inside, stderr=inside,
            env={"PATH": f"{self._folder / 'bin'}:/usr/bin:/bin", "HOME": str(folder), "TERM": "xterm",
                 "LC_ALL": "C.UTF-8", "OSTRA_PROGRAM": os.environ["OSTRA_PROGRAM"], "RECORD": str(self._record)})
        os.close(inside)
        self.shown = ""
        try:
            self._type(preparation + "\n")
            self._wait(lambda: "READY2" in self.shown)
        except Exception:
            self.close()
            raise

    def close(self):
        self._process.kill()
        self._process.wait()
        os.close(self._terminal)

    def words_of(self, line):
        """The words that the program gets when these keys and Return are pressed."""
        self._record.unlink(missing_ok=True)
        self._type("ostra " + line + "\n")
        self._wait(self._record.exists)
        return self._record.read_bytes().decode().split("\0")[:-1]

    def _type(self, keys):
        os.write(self._terminal, keys.encode())

    def _wait(self, happened):
        end = time.monotonic() + STEP_SECONDS
        while not happened():
            if time.monotonic() > end:
                raise TimeoutError(f"The shell shows:\n{self.shown}")
            if select.select([self._terminal], [], [], 0.05)[0]:
                try:
                    self.shown += os.read(self._terminal, 65536).decode(errors="replace")
                except OSError as failure:
                    raise RuntimeError(f"The shell ended:\n{self.shown}") from failure


def bash(folder):
    return Shell(folder, ["bash", "--norc", "--noprofile", "-i"],
                 f". /usr/share/bash-completion/bash_completion; . {COMPLETIONS}/ostra.bash; echo READY$((1+1))")


def zsh(folder):
    functions = Path(folder) / "functions"
    functions.mkdir()
    (functions / "_ostra").symlink_to(COMPLETIONS / "ostra.zsh")
    return Shell(folder, ["zsh", "-f", "-i"],
                 f"fpath=({functions} $fpath); autoload -Uz compinit; compinit -u -D; echo READY$((1+1))")


def fish(folder):
    return Shell(folder, ["fish", "-i"], f"source {COMPLETIONS}/ostra.fish; echo READY(math 1+1)")
