"""How long people wait for the panel, beside what cannot be faster: panel.py BUILD_FOLDER [ROUNDS].

Everything is measured in turns, in the same run, and printed as ratios of medians.
"""
import os
import shutil
import sys
import time
from pathlib import Path

BUILD = Path(sys.argv[1]).resolve()
ROUNDS = int(sys.argv[2]) if len(sys.argv) > 2 else 15
os.environ.update(OSTRA_PROGRAM=str(BUILD / "ostra"), OSTRA_PANEL_PROGRAM="", OSTRA_SCREENSHOTS="")
sys.path.insert(0, str(Path(__file__).resolve().parent.parent / "tests" / "desktop"))

from measures import medians, run  # noqa: E402
from programs import convert_panel  # noqa: E402
from session import Desktop, press, wait_for  # noqa: E402

PROFILES = 400
NAME = "Display P3"


def data_without_profiles(folder):
    """The system's shared data but for its profiles."""
    folder.mkdir()
    for entry in Path("/usr/share").iterdir():
        if entry.name != "color":
            (folder / entry.name).symlink_to(entry)
    return folder


def make_profiles(folder, picture):
    """Profiles that differ in their names only, made of the one in a picture."""
    folder.mkdir(parents=True)
    profile = run("exiftool", "-b", "-icc_profile", picture)
    assert NAME.encode("utf-16-be") in profile
    for number in range(PROFILES):
        name = f"Profil {number:03}"
        (folder / f"{number}.icc").write_bytes(profile.replace(NAME.encode("utf-16-be"), name.encode("utf-16-be")))


def frames(desktop, folder):
    picture = folder / "picture.jpg"
    run("convert", "-size", "300x200", "gradient:", picture)
    settings = {"XDG_DATA_DIRS": str(data_without_profiles(folder / "share"))}
    convert = [BUILD / "ostra", "--ui=desktop", "convert-color-profile", picture]
    run(BUILD / "ostra", "--profile", NAME, "convert-color-profile", picture, env={**desktop.environment, **settings})
    make_profiles(folder / "many" / "icc", picture)

    def first_frame(words, **environment):
        return lambda: float(run(BUILD / "bench" / "first_frame", *words,
                                 env={**desktop.environment, **settings, **environment}))
    took = medians(ROUNDS, {
        "an empty window": first_frame([BUILD / "bench" / "empty_window"]),
        "an empty window drawn in software": first_frame([BUILD / "bench" / "empty_window"], GSK_RENDERER="cairo"),
        "no profiles": first_frame(convert),
        "many profiles": first_frame(convert, XDG_DATA_HOME=str(folder / "many")),
    })
    for base in ("an empty window", "an empty window drawn in software"):
        for panel in ("no profiles", "many profiles"):
            print(f"first frame of the panel, {panel} / {base}: {took[panel] / took[base]:.2f}")


def until_changed(picture, start):
    """From the start of the work to the first byte of the new picture's place."""
    before = picture.stat().st_ino
    began = time.monotonic()
    start()
    wait_for(lambda: picture.stat().st_ino != before, "a converted picture")
    return time.monotonic() - began


def conversions(desktop, folder):
    original, picture = folder / "large.jpg", folder / "work.jpg"
    run("convert", "-size", "4000x3000", "plasma:", original)

    def by_panel():
        shutil.copy(original, picture)
        with convert_panel(desktop, picture) as program:
            took = until_changed(picture, lambda: press("Return"))
            program.status()
        return took

    def by_command():
        shutil.copy(original, picture)
        return until_changed(picture, lambda: run(BUILD / "ostra", "srgb", picture, env=desktop.environment))
    took = medians(ROUNDS, {"panel": by_panel, "command": by_command})
    print(f"from Convert to the picture / ostra srgb from its start: {took['panel'] / took['command']:.2f}")


if __name__ == "__main__":
    # A window manager would add its own time to both.
    with Desktop(window_manager=False) as bare:
        frames(bare, bare.folder)
    with Desktop() as managed:
        conversions(managed, managed.folder)
