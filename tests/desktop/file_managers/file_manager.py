"""A file manager under test: how it is started, and how its menu is opened and used. Each is a class in managers.py."""
import re
import subprocess
import time

import accessibility
from accessibility import Atspi, attempt, children, has_state, name, role
from session import STEP_SECONDS, answer_of, end, press, screenshot, wait_for

MENU = {"en": "Convert Picture", "de": "Bild umwandeln"}
# Starting one takes long on a busy machine.
START_SECONDS = 90
# Keys that came too early are lost, and nothing says so: they are pressed again.
AGAIN_SECONDS = 5
_SELECTED = re.compile("[Ss]elect|Auswahl|ausgewählt")
# Files are shown in these; a walk through twenty thousand of them would take minutes.
_VIEWS = {"layered pane", "table", "tree table", "list", "grid", "icon", "menu bar", "tool bar"}


def parts(node):
    for child in children(node) if node else ():
        yield child
        if role(child) not in _VIEWS:
            yield from parts(child)


def is_showing(part):
    return has_state(part, Atspi.StateType.SHOWING)


def click(part):
    action = attempt(part.get_action_iface)
    if action is None or not attempt(lambda: Atspi.Action.do_action(action, 0), False):
        raise RuntimeError(f"{role(part)} “{name(part)}” cannot be pressed")


def click_at(x, y, button="1"):
    subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", button], check=True, timeout=STEP_SECONDS)


class FileManager:
    """One that shows its menus to screen readers, and opens them with a key."""

    command = ()
    # A part of every menu of files.
    landmark = "Properties"

    def __init__(self, desktop, folder, screenshots, language="en"):
        self._desktop, self.folder, self._screenshots, self.language = desktop, folder, screenshots, language

    def __enter__(self):
        self.prepare()
        environment = {"GTK_MODULES": "gail:atk-bridge", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
                       "GSK_RENDERER": "cairo", "LANGUAGE": self.language}
        self._errors = (self._desktop.folder / "file-manager-errors").open("w+")
        self.process = self._desktop.start([*self.command, str(self.folder)], environment, stderr=self._errors)
        self.tree = accessibility.Application(self.process)
        try:
            self.window = wait_for(self._find_window, "the file manager's window", START_SECONDS)
            for words in (["windowsize", self.window, "1000", "760"], ["windowmove", self.window, "20", "20"]):
                subprocess.run(["xdotool", *words], check=False, timeout=STEP_SECONDS)
        except BaseException as failure:
            self.__exit__(type(failure))
            raise
        return self

    def __exit__(self, kind, *_):
        if kind is not None:
            self._errors.seek(0)
            print(f"-- {self.process.args}: {self.process.poll()}\n{self._errors.read()[-3000:]}")
            self.keep_screenshot("failed")
        end(self.process)
        self._errors.close()

    def prepare(self):
        """What the file manager must find when it starts."""

    def _find_window(self):
        """By the title that all of them give: that of the folder."""
        found = answer_of("xdotool", "search", "--onlyvisible", "--name", self.folder.name).split()
        return found[-1] if found else None

    def place(self):
        """Where the window's inside begins on the screen, and its size."""
        lines = answer_of("xdotool", "getwindowgeometry", "--shell", self.window).splitlines()
        values = dict(line.split("=") for line in lines)
        return [int(values[key]) for key in ("X", "Y", "WIDTH", "HEIGHT")]

    def keep_screenshot(self, what):
        screenshot("root", self._screenshots / f"{type(self).__name__.lower()}-{what}.png")

    def select_all(self):
        press("ctrl+a")

    def selects(self, count):
        """Whether so many files are selected, as the file manager itself tells."""
        return any(f"{count} " in name(part) and _SELECTED.search(name(part)) for part in parts(self.tree.root()))

    def press_for_menu(self):
        press("shift+F10")

    def open_menu(self):
        """Opens the menu of all files."""
        count = len(list(self.folder.iterdir()))
        patience = AGAIN_SECONDS + count / 400
        deadline = time.monotonic() + START_SECONDS + 2 * patience
        while time.monotonic() < deadline:
            subprocess.run(["xdotool", "windowactivate", "--sync", self.window], check=False, timeout=STEP_SECONDS)
            try:
                self.select_all()
                wait_for(lambda: self.selects(count), "the selection", patience)
                self.press_for_menu()
                wait_for(self.is_menu_open, "the menu", patience)
                return
            except TimeoutError:
                press("Escape")
        raise TimeoutError(f"the menu of {count} selected files does not open")

    def answers(self):
        """Whether it is there for who uses it, and does not wait for something."""
        return bool(attempt(lambda: self.tree.root().get_child_count(), 0))

    def menu_part(self, title):
        """The part of a menu with that title which can be seen, if one can."""
        found = [part for part in parts(self.tree.root())
                 if "menu" in role(part) and name(part) == title and accessibility.is_showing(part)]
        return next((part for part in found if is_showing(part)), found[0] if found else None)

    def is_menu_open(self):
        part = self.menu_part(self.landmark if self.language == "en" else MENU[self.language])
        return part is not None and is_showing(part)

    def offers_conversions(self):
        """Whether the open menu has ours."""
        return self.menu_part(MENU[self.language]) is not None

    def open_conversions(self):
        click(self.menu_part(MENU[self.language]))
        self.wait_for_entry("sRGB")

    def wait_for_entry(self, words):
        wait_for(lambda: any(words in name(part) and "menu" in role(part) for part in parts(self.tree.root())),
                 f"an entry with {words}")

    def pick(self, action):
        """`action` is the title of an entry and its place among them."""
        click(wait_for(lambda: self.menu_part(action[0]), f"the entry “{action[0]}”"))
