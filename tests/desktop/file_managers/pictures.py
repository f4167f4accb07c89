"""The pictures that file managers are shown, and what became of them."""
import subprocess

from session import STEP_SECONDS

AWKWARD_NAMES = ["a b.png", "it's \"so\".jpg", "ü ñ Łódź.png", "100 %s%20%n.png", "-dash.jpg", "$(id);&.png",
                 "two\nlines.png"]


def _convert(*words):
    subprocess.run(["convert", *words], check=True, timeout=STEP_SECONDS)


def make_pictures(folder, names=AWKWARD_NAMES):
    """Red pictures, each of a size of its own."""
    pictures = [folder / name for name in names]
    for number, picture in enumerate(pictures):
        _convert("-size", f"{40 + number}x30", "xc:red", f"{picture.suffix[1:]}:{picture}")
    return pictures


def make_many(folder, count):
    """As many red pictures of one pixel."""
    picture = folder / "00000.png"
    _convert("-size", "1x1", "xc:red", "-strip", f"PNG24:{picture}")
    content = picture.read_bytes()
    for number in range(1, count):
        (folder / f"{number:05}.png").write_bytes(content)


def is_gray(picture):
    """Whether a picture is whole and holds gray samples."""
    shown = subprocess.run(["identify", "-format", "%[channels] %wx%h", f"{picture.suffix[1:]}:{picture}"],
                           capture_output=True, text=True, check=False, timeout=STEP_SECONDS)
    return shown.returncode == 0 and shown.stdout.startswith("gray")


def width(picture):
    return int(subprocess.run(["identify", "-format", "%w", f"{picture.suffix[1:]}:{picture}"], check=True,
                              capture_output=True, text=True, timeout=STEP_SECONDS).stdout)
