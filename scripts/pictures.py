#!/usr/bin/env python3
"""Makes the pictures that README and docs show, with the tool: docs/pictures/*.png.

    pictures.py TARN WORK_DIR

The photograph is Debian's libjxl-testdata, jxl/flower/flower.png (its notice is in
docs/pictures/NOTICE); it is fetched into WORK_DIR. Needs python3-numpy and python3-pil.
"""
import pathlib
import subprocess
import sys

import numpy
from PIL import Image

tarn, work = sys.argv[1], pathlib.Path(sys.argv[2])
pictures = pathlib.Path(__file__).resolve().parent.parent / "docs/pictures"
PHOTOGRAPH = "usr/share/libjxl-testdata/jxl/flower/flower.png"
CELL = 4
FRAME = ["-f", "qc10", "--cell", str(CELL)]
FILTERS = numpy.array([[[1.0, 0.25, 0.25], [0.25, 1.0, 0.25]], [[0.25, 1.0, 0.25], [0.3, 0.3, 1.0]]])  # RGGB


def run(*command):
    print("tarn", *command)
    subprocess.run([tarn, *map(str, command)], cwd=work, check=True, capture_output=True)


def fetch():
    work.mkdir(parents=True, exist_ok=True)
    if not (work / PHOTOGRAPH).exists():
        subprocess.run(["apt-get", "download", "-qq", "libjxl-testdata"], cwd=work, check=True)
        subprocess.run(["dpkg-deb", "-x", next(work.glob("libjxl-testdata_*.deb")), "."], cwd=work, check=True)


def close_up(pgm, left, top, width, height, scale):
    """Some pixels of a mosaic, enlarged, each in the colour of its filter."""
    data = (work / pgm).read_bytes()
    columns, rows = map(int, data.split(maxsplit=4)[1:3])
    codes = numpy.frombuffer(data[-2 * columns * rows :], ">u2").reshape(rows, columns)[top : top + height, left : left + width]
    light = ((codes - 64.0) / 959).clip(0, 1) ** (1 / 2.2)
    y, x = numpy.mgrid[top : top + height, left : left + width] // CELL % 2
    tinted = (light[:, :, None] * FILTERS[y, x] * 255).astype("u1")
    return Image.fromarray(tinted).resize((width * scale, height * scale), Image.Resampling.NEAREST)


def save(image, name):
    image.save(pictures / name, optimize=True)
    print(f"{name}: {image.width}x{image.height}, {(pictures / name).stat().st_size // 1024} KiB")


fetch()
pictures.mkdir(exist_ok=True)
run("synth", PHOTOGRAPH, "-o", "flower.raw", *FRAME, "--noise", "4,1.5")
run("synth", PHOTOGRAPH, "-o", "flower.pgm", *FRAME, "--noise", "4,1.5")
run("bin", "flower.raw", "-o", "flower.png", "-s", "2264x1512", *FRAME, "--wb", "1,1,1")
save(close_up("flower.pgm", 1176, 732, 283, 189, 2), "mosaic.png")
save(Image.open(work / "flower.png"), "binned.png")

run("synth", "--chart", "all", "-o", "chart.raw", "-f", "qc10", "--cell", 2, "-s", "1200x900")
run("bin", "chart.raw", "-o", "chart.png", "-f", "qc10", "-s", "1200x900", "--cell", 2, "--wb", "1,1,1")
save(Image.open(work / "chart.png"), "chart.png")
run("inspect", "flower.raw", "--png", "histogram.png")
save(Image.open(work / "histogram.png").convert("P", palette=Image.Palette.ADAPTIVE, colors=32), "histogram.png")
