"""The file managers that menus are made for, each as far as it differs from the others."""
from file_manager import AGAIN_SECONDS, MENU, FileManager, click_at
from icons import CUT, changed, find_icon, paint_icons, screen, wait_for_stillness
from session import press, wait_for


# More than a blinking cursor or a light under the mouse.
_SOME_PIXELS = 2000


class Thunar(FileManager):
    command = ("thunar",)
    landmark = "Properties..."


class Nemo(FileManager):
    command = ("nemo",)


class Caja(FileManager):
    command = ("caja", "--no-desktop")


class PCManFM(FileManager):
    command = ("pcmanfm",)


class Nautilus(FileManager):
    """Takes keys for its files after a click among them only, and does not say of its menus that they show."""

    command = ("nautilus", "--new-window")

    def select_all(self):
        left, top, width, height = self.place()
        click_at(left + width - 60, top + height - 60)
        press("ctrl+a")

    def press_for_menu(self):
        left, top, _, _ = self.place()
        click_at(left + 345, top + 120, "3")

    def is_menu_open(self):
        return self.menu_part(self.landmark if self.language == "en" else MENU[self.language]) is not None


class QtFileManager(FileManager):
    """Menus that only eyes can see: found by their icons, and used by mouse and keys."""

    first_file = (0, 0)

    def prepare(self):
        paint_icons(self._desktop.environment)

    def select_all(self):
        """Nothing tells what is selected; but it looks different."""
        before = wait_for_stillness()
        press("ctrl+a")
        wait_for(lambda: changed(before, screen()) > _SOME_PIXELS, "selected files", AGAIN_SECONDS)
        # What came could also have been the files.
        wait_for_stillness()
        press("ctrl+a")
        wait_for_stillness()

    def selects(self, _):
        return True

    def answers(self):
        """It draws what it is asked to."""
        before = wait_for_stillness()
        press("Escape")
        return changed(before, wait_for_stillness()) > _SOME_PIXELS

    def press_for_menu(self):
        left, top, _, _ = self.place()
        click_at(left + self.first_file[0], top + self.first_file[1], "3")

    def is_menu_open(self):
        return find_icon(CUT) is not None

    def offers_conversions(self):
        return find_icon() is not None

    def open_conversions(self):
        x, y = wait_for(find_icon, "the icon of the menu")
        click_at(x + 60, y + 8)

    def pick(self, action):
        press(*["Down"] * action[1], "Return")


class Dolphin(QtFileManager):
    command = ("dolphin", "--new-window")
    first_file = (325, 90)


class PCManFMQt(QtFileManager):
    command = ("pcmanfm-qt",)
    first_file = (206, 130)


ALL = {manager.__name__.lower(): manager for manager in (Thunar, Nemo, Caja, Nautilus, PCManFM, Dolphin, PCManFMQt)}
