"""What it costs to write HEIC and AVIF: heic.py BUILD_FOLDER PHOTOGRAPH...

Whole conversions of each photograph to sRGB in its own format, beside the formats' own encoder and libvips at the same
quality. Printed are ratios of ours to theirs, processor time and size, and how near each comes to the photograph.
"""
import re
import resource
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

from measures import medians, run

BUILD = Path(sys.argv[1]).resolve()
ROUNDS = 3
TOOLS = {"heic": ("heif-enc", ["-q", "90"]), "avif": ("avifenc", ["--min", "6", "--max", "6"])}


def processorTime(*words):
    def used():
        usage = resource.getrusage(resource.RUSAGE_CHILDREN)
        return usage.ru_utime + usage.ru_stime

    before = used()
    run(*words)
    return used() - before


def noise(folder, photograph, picture):
    decoded = folder / "decoded.png"
    tool = ["heif-convert"] if picture.suffix == ".heic" else ["avifdec", "-j", "1"]
    run(*tool, picture, decoded)
    answer = subprocess.run(["compare", "-metric", "PSNR", photograph, decoded, "null:"], capture_output=True, text=True)
    return float(re.match(r"[\d.]+", answer.stderr)[0])


def ours(original, picture):
    def measure():
        shutil.copy(original, picture)
        return processorTime(BUILD / "ostra", "--ui=none", "srgb", picture)
    return measure


def measureOne(folder, photograph, extension):
    tool, options = TOOLS[extension]
    pictures = {name: folder / f"{name}.{extension}" for name in ("ours", "tool", "vips", "original")}
    # As near to the photograph as the format goes, so that what is lost is lost in what is measured.
    lossless = ["-q", "100", "-p", "chroma=444"] if extension == "heic" else ["--lossless", "-s", "9"]
    run(tool, *lossless, photograph, "-o", pictures["original"])
    took = medians(ROUNDS, {
        "ours": ours(pictures["original"], pictures["ours"]),
        "tool": lambda: processorTime(tool, *options, photograph, "-o", pictures["tool"]),
        "vips": lambda: processorTime("vips", "copy", photograph, f"{pictures['vips']}[Q=90]"),
    })
    for other in ("tool", "vips"):
        near = [noise(folder, photograph, pictures[name]) for name in ("ours", other)]
        size = pictures["ours"].stat().st_size / pictures[other].stat().st_size
        name = tool if other == "tool" else "vips"
        print(f"{extension} to {name}: time {took['ours'] / took[other]:.2f}, size {size:.2f}, "
              f"{near[0]:.1f} dB to {near[1]:.1f}", flush=True)


with tempfile.TemporaryDirectory(prefix="ostra-bench-") as name:
    folder = Path(name)
    for given in sys.argv[2:]:
        print(Path(given).name)
        photograph = folder / "photograph.png"
        run("convert", given, "-resize", "2000x2000>", "-strip", "-depth", 8, f"PNG24:{photograph}")
        for extension in TOOLS:
            measureOne(folder, photograph, extension)
