"""A desktop of its own: an X server, a session bus, a window manager, and the tree that screen readers read.

Everything that is started is ended by its id. Nothing waits for a time to pass, only for what is to come.
"""
import os
import subprocess
import sys
import tempfile
import time
from pathlib import Path

STEP_SECONDS = 20
SCREEN = "1400x1100x24"


def wait_for(condition, what, seconds=STEP_SECONDS):
    """The first true value of `condition`, asked for again and again."""
    limit = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > limit:
            raise TimeoutError(f"{what}: nothing within {seconds} s")
        time.sleep(0.02)


class Desktop:
    """Starts with the scope and ends with it. One in a process reads trees: their library connects once."""

    def __init__(self, window_manager=True):
        self._has_window_manager = window_manager

    def __enter__(self):
        self._folder = tempfile.TemporaryDirectory(prefix="ostra-desktop-")
        self.folder = Path(self._folder.name)
        self._processes = []
        for name in ("home", "run", "config"):
            (self.folder / name).mkdir(mode=0o700)
        self.environment = {
            "PATH": os.environ["PATH"],
            "HOME": str(self.folder / "home"),
            "XDG_RUNTIME_DIR": str(self.folder / "run"),
            "XDG_CONFIG_HOME": str(self.folder / "config"),
            "LC_ALL": "C.UTF-8",
            "GDK_BACKEND": "x11",
            # Settings are a file, written by the tests, instead of a service.
            "GSETTINGS_BACKEND": "keyfile",
        }
        try:
            self._start_services()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self._processes):
            end(process)
        self._folder.cleanup()

    def _start_services(self):
        self.environment["DISPLAY"] = ":" + self._answer(
            ["Xvfb", "-displayfd", "{}", "-screen", "0", SCREEN, "-nolisten", "tcp", "-noreset"])
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self._answer(
            ["dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address={}"])
        if self._has_window_manager:
            self.start(["openbox", "--sm-disable"])
        os.environ.clear()
        os.environ.update(self.environment)

    def _answer(self, command):
        """Starts a service that tells where it is on a descriptor, {} in the command."""
        reader, writer = os.pipe()
        self.start([word.format(writer) for word in command], pass_fds=(writer,))
        os.close(writer)
        with os.fdopen(reader) as answer:
            return answer.readline().strip()

    def end_display(self):
        end(self._processes[0])

    def start(self, command, environment=None, **options):
        """Starts a program that ends with the desktop, if not before."""
        process = subprocess.Popen(
            command, env={**self.environment, **(environment or {})}, stdin=options.pop("stdin", subprocess.DEVNULL),
            stdout=options.pop("stdout", subprocess.DEVNULL), stderr=options.pop("stderr", subprocess.DEVNULL),
            **options)
        self._processes.append(process)
        return process


def end(process):
    if process.poll() is not None:
        return
    process.terminate()
    try:
        process.wait(5)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait(5)


def press(*keys):
    """Types keys, by their X names, into the window that has the focus."""
    subprocess.run(["xdotool", "key", "--clearmodifiers", *keys], check=True, timeout=STEP_SECONDS)


def type_text(text):
    subprocess.run(["xdotool", "type", "--clearmodifiers", "--delay", "5", text], check=True, timeout=STEP_SECONDS)


def answer_of(*words):
    """What a small program prints; nothing when it fails."""
    return subprocess.run(words, capture_output=True, text=True, timeout=STEP_SECONDS).stdout


def windows(process):
    """The numbers of a process's visible windows."""
    return answer_of("xdotool", "search", "--onlyvisible", "--pid", str(process.pid)).split()


def active_window():
    return answer_of("xdotool", "getactivewindow").strip()


def activate(window):
    """Gives a window, by its number, the focus."""
    subprocess.run(["xdotool", "windowactivate", "--sync", window], check=True, timeout=STEP_SECONDS)


def wait_for_focus(process):
    """The number of the process's window that gets what is typed."""
    return wait_for(lambda: {active_window()}.intersection(windows(process)), "a window with the focus").pop()


def screenshot(window, path):
    """Of a window by its number, or of the "root" of all; without an even border."""
    subprocess.run(["import", "-window", window, "-trim", "+repage", str(path)], check=True, timeout=STEP_SECONDS)


def has_rights_of_root():
    with open("/proc/self/status", encoding="ascii") as status:
        return any(line.startswith("CapEff:") and int(line.split()[1], 16) != 0 for line in status)


def run_as_ordinary_user(output=None):
    """Starts this program again as nobody where it runs as root: no test may depend on root's rights. That user may
    write in the folder `output`, which is made. A checkout that is closed to others is read as root without rights."""
    if output:
        os.makedirs(output, exist_ok=True)
    if os.getuid() != 0 or not has_rights_of_root():
        return
    user = 65534
    ordinary = ["setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups", "--inh-caps=-all"]
    if subprocess.run([*ordinary, "test", "-r", os.path.abspath(sys.argv[0])], check=False).returncode != 0:
        user = 0
        ordinary = ["setpriv", "--bounding-set=-all", "--inh-caps=-all"]
    if output:
        os.chown(output, user, user)
    os.execvp("setpriv", [*ordinary, sys.executable, "-B", *sys.argv])
