"""How long people wait for one small picture: startup.py BUILD_FOLDER [FORMER_PROGRAM [ROUNDS]].

A whole conversion of a PNG of 64 by 64 pixels, in turns with ImageMagick's, and with a former build of the program
where one is given; printed as ratios of the medians.
"""
import shutil
import sys
import tempfile
import time
from pathlib import Path

from measures import medians, run

BUILD = Path(sys.argv[1]).resolve()
FORMER = Path(sys.argv[2]).resolve() if len(sys.argv) > 2 else None
ROUNDS = int(sys.argv[3]) if len(sys.argv) > 3 else 51


def timed(picture, original, *words):
    def measure():
        shutil.copy(original, picture)
        began = time.monotonic()
        run(*words)
        return time.monotonic() - began
    return measure


with tempfile.TemporaryDirectory(prefix="ostra-bench-") as name:
    folder = Path(name)
    original, picture = folder / "original.png", folder / "small.png"
    run("convert", "-seed", 5, "-size", "64x64", "plasma:", "-depth", 8, original)
    measures = {
        "now": timed(picture, original, BUILD / "ostra", "srgb", picture),
        "ImageMagick": timed(picture, original, "convert", picture, "-colorspace", "sRGB", picture),
    }
    if FORMER:
        measures["former"] = timed(picture, original, FORMER, "srgb", picture)
    took = medians(ROUNDS, measures)
    for other in list(took)[1:]:
        print(f"start to end of a small picture, to {other}: {took['now'] / took[other]:.2f}", flush=True)
