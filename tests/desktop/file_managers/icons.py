"""Menus that no accessibility tree shows are found by the colour of an icon: the user's own icons come first, and some
are one plain colour there.
"""
import subprocess
from pathlib import Path

from session import STEP_SECONDS, wait_for

# Ours, and one that is in every menu of selected files and in no other. Desktops that give a submenu the icon of its
# entries show theirs.
OURS = (255, 0, 254)
CUT = (0, 255, 1)
_ICONS = {"org.ostra.Ostra": OURS, "image-x-generic": OURS, "edit-cut": CUT}
_SIZES = (16, 22, 24)
_THEME = "plain-colors"


def _paint(folder):
    for size in _SIZES:
        place = folder / f"{size}x{size}" / "actions"
        place.mkdir(parents=True)
        for name, color in _ICONS.items():
            subprocess.run(["convert", "-size", f"{size}x{size}", "xc:rgb(%d,%d,%d)" % color,
                            f"PNG32:{place}/{name}.png"], check=True, timeout=STEP_SECONDS)


def paint_icons(environment):
    """Puts the colours where file managers look, with a theme of their own or without."""
    icons = Path(environment["HOME"]) / ".local/share/icons"
    if icons.exists():
        return
    _paint(icons / "hicolor")
    _paint(icons / _THEME)
    folders = [f"{size}x{size}/actions" for size in _SIZES]
    index = f"[Icon Theme]\nName={_THEME}\nInherits=breeze\nDirectories={','.join(folders)}\n"
    for size, folder in zip(_SIZES, folders):
        index += f"[{folder}]\nSize={size}\nType=Fixed\n"
    (icons / _THEME / "index.theme").write_text(index, encoding="utf-8")
    settings = Path(environment["XDG_CONFIG_HOME"]) / "kdeglobals"
    settings.write_text(f"[Icons]\nTheme={_THEME}\n", encoding="utf-8")


def screen():
    """What is on the screen: its width, and three bytes for each pixel."""
    picture = subprocess.run(["import", "-window", "root", "-depth", "8", "ppm:-"], check=True, capture_output=True,
                             timeout=STEP_SECONDS).stdout
    width, height = map(int, picture.split(maxsplit=3)[1:3])
    return width, picture[-3 * width * height:]


def changed(before, after):
    """In how many pixels two screens differ."""
    return sum(one != other for one, other in zip(memoryview(before[1])[::3], memoryview(after[1])[::3]))


def wait_for_stillness():
    """What is on the screen when nothing moves there any more."""
    seen = []

    def is_still():
        seen.append(screen())
        return len(seen) > 1 and seen[-1] == seen[-2]

    wait_for(is_still, "a screen that stands still")
    return seen[-1]


def find_icon(color=OURS):
    """Where on the screen an icon begins: a run of eight pixels of its colour; None when it is not to be seen."""
    width, pixels = screen()
    run = bytes(color) * 8
    at = pixels.find(run)
    while at >= 0 and at % 3:
        at = pixels.find(run, at + 1)
    return None if at < 0 else (at // 3 % width, at // 3 // width)
