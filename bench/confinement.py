"""What it costs to decode in a process without rights: confinement.py BUILD_FOLDER [ROUNDS].

Whole conversions of one picture, with and without, in turns; printed as the ratio of the medians.
"""
import shutil
import sys
import tempfile
import time
from pathlib import Path

from measures import medians, run

BUILD = Path(sys.argv[1]).resolve()
ROUNDS = int(sys.argv[2]) if len(sys.argv) > 2 else 21
SIZES = {"1 megapixel": "1152x868", "24 megapixels": "6000x4000"}


def conversion(program, original, picture):
    def measure():
        shutil.copy(original, picture)
        began = time.monotonic()
        run(program, "srgb", picture)
        return time.monotonic() - began
    return measure


with tempfile.TemporaryDirectory(prefix="ostra-bench-") as name:
    folder = Path(name)
    for size, pixels in SIZES.items():
        for extension in ("jpg", "png"):
            original = folder / f"original.{extension}"
            # Noise over clouds is about as hard to pack as a photograph.
            run("convert", "-seed", 5, "-size", pixels, "plasma:", "-attenuate", "0.2", "+noise", "Gaussian",
                "-depth", 8, original)
            took = medians(ROUNDS, {
                program: conversion(BUILD / program, original, folder / f"work.{extension}")
                for program in ("ostra", "ostra_in_process")
            })
            print(f"{size}, {extension}: {took['ostra'] / took['ostra_in_process']:.2f}", flush=True)
