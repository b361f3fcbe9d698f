#!/usr/bin/env python3
"""Measures the DNGs of `tarn bin` by what LibRaw develops of them, and fails below the bar.

    dng_quality.py TARN WORK_DIR [PICTURE.png]

A picture, whose colours are known in every place, becomes a frame of each pattern with `tarn synth`.
Two mosaics are made of the frame: `tarn bin` to a DNG; and by numpy alone, the mean of each cell, not
rounded, in a DNG of the least tags. LibRaw (dcraw_emu of Debian's libraw-bin) develops both, ours by
what its tags say, and both are held against the picture's own means over the cells. The bar: ours has
at most 0.5 dB less than the plain one, with noise and without; and where there is no noise, both come near
the picture, by 30 dB or more.

With no PICTURE one is computed. Needs python3-numpy, python3-pil and libraw-bin.
"""
import pathlib
import struct
import subprocess
import sys

import numpy
from PIL import Image

tarn, work = sys.argv[1], pathlib.Path(sys.argv[2])
PATTERNS = [("tetra", 2, "qc10"), ("tetra", 2, "qc12"), ("tetra", 2, "vx12"), ("nona", 3, "qc10"), ("nona", 3, "vx10"), ("hexadeca", 4, "qc10"), ("hexadeca", 4, "vx10")]
BAR, FLOOR = 0.5, 30
BORDER = 8  # LibRaw interpolates the outermost pixels by other rules
COLOURS = numpy.array([[0, 1], [1, 2]])  # RGGB


def run(*command):
    subprocess.run([str(part) for part in command], check=True, capture_output=True)


def computed_picture(path):
    """Hues that change slowly, edges in all directions, and fine stripes: 576 x 432."""
    y, x = numpy.mgrid[0:432, 0:576]
    hues = [0.5 + 0.4 * numpy.sin(x / 70 + phase) * numpy.cos(y / 55 - phase) for phase in (0, 2, 4)]
    disc = numpy.hypot(x - 300, y - 210) < 120
    stripes = 0.15 * numpy.sin((x + 2 * y) / 9) * (x > 380)
    picture = numpy.stack([numpy.where(disc, 1 - hue, hue) + stripes for hue in hues], 2)
    Image.fromarray((picture.clip(0, 1) * 255).astype("u1")).save(path)


def linear(srgb):
    return numpy.where(srgb <= 0.04045, srgb / 12.92, ((srgb + 0.055) / 1.055) ** 2.4)


def encoded(light):
    return numpy.where(light <= 0.0031308, light * 12.92, 1.055 * numpy.maximum(light, 0.0031308) ** (1 / 2.4) - 0.055)


def read_pnm(path):
    """Samples of 16 bits, and the highest they could be."""
    data = path.read_bytes()
    kind, width, height, maximum = data.split(maxsplit=4)[:4]
    channels = 3 if kind == b"P6" else 1
    size = int(width) * int(height) * channels
    samples = numpy.frombuffer(data[-2 * size :], ">u2").reshape(int(height), int(width), channels)
    return samples.squeeze(), int(maximum)


def cell_means(image, cell):
    height, width = image.shape[0] // cell, image.shape[1] // cell
    cut = image[: height * cell, : width * cell].astype(float)
    return cut.reshape(height, cell, width, cell, -1).mean(axis=(1, 3)).squeeze()


def write_plain_dng(path, light):
    samples = (light.clip(0, 1) * 65535).round().astype("<u2")
    height, width = samples.shape
    start = 512
    tags = [(254, 4, 1, 0), (256, 4, 1, width), (257, 4, 1, height), (258, 3, 1, 16), (259, 3, 1, 1), (262, 3, 1, 32803), (271, 2, 4, 0x414141),
            (272, 2, 4, 0x424242), (273, 4, 1, start), (277, 3, 1, 1), (278, 4, 1, height), (279, 4, 1, samples.nbytes), (33421, 3, 2, 0x20002),
            (33422, 1, 4, 0x02010100), (50706, 1, 4, 0x401), (50717, 4, 1, 65535)]  # fmt: skip
    header = b"II*\0" + struct.pack("<IH", 8, len(tags)) + b"".join(struct.pack("<HHII", *tag) for tag in tags)
    path.write_bytes(header.ljust(start, b"\0") + samples.tobytes())


def develop(dng, *settings):
    """Linear light: no gamma, no brightening, white where the file says it is."""
    run("dcraw_emu", "-4", "-c", "0", *settings, "-Z", work / "developed.ppm", dng)
    return read_pnm(work / "developed.ppm")[0] / 65535.0


def decibels(light, truth):
    inner = (slice(BORDER, -BORDER), slice(BORDER, -BORDER))
    error = encoded(light[inner]) - encoded(truth[inner].clip(0, 1))
    return -10 * numpy.log10((error**2).mean())


def measure(picture, photo, cell, layout, noise):
    options = ["-f", layout, "--cell", cell]
    for frame in ("frame.raw", "frame.pgm"):
        run(tarn, "synth", photo, "-o", work / frame, *options, *noise)
    codes, white = read_pnm(work / "frame.pgm")
    height, width = codes.shape
    black = (white + 1) // 16
    truth = cell_means(picture[:height, :width], cell)

    means = (cell_means(codes, cell) - black) / (white - black)
    write_plain_dng(work / "plain.dng", means)
    plain = develop(work / "plain.dng", "-r", 1, 1, 1, 1, "-o", 0)
    # The picture's light is white: nobody has to guess it.
    run(tarn, "bin", work / "frame.raw", "-o", work / "ours.dng", "-s", f"{width}x{height}", *options, "--wb", "1,1,1")
    ours = develop(work / "ours.dng", "-w", "-o", 1)
    return decibels(ours, truth), decibels(plain, truth)


work.mkdir(parents=True, exist_ok=True)
photo = pathlib.Path(sys.argv[3]) if len(sys.argv) > 3 else work / "picture.png"
if len(sys.argv) < 4:
    computed_picture(photo)
picture = linear(numpy.asarray(Image.open(photo).convert("RGB")) / 255.0)

print(f"PSNR in dB against {photo.name}, as sRGB\npattern   as    noise   our DNG  plain means  difference")
worst, lowest = 0.0, numpy.inf
for pattern, cell, layout in PATTERNS:
    for noise in ([], ["--noise", "4,1.5"]):
        ours, plain = measure(picture, photo, cell, layout, noise)
        worst = numpy.maximum(worst, plain - ours)  # NaN stays
        if not noise:
            lowest = numpy.minimum(lowest, numpy.minimum(ours, plain))
        print(f"{pattern:9} {layout}  {noise[-1] if noise else 'none':5}  {ours:8.2f}  {plain:11.2f}  {ours - plain:+10.2f}")
print(f"worst: {worst:.2f} dB below the plain means; the bar is {BAR}. lowest: {lowest:.1f} dB; the bar is {FLOOR}")
sys.exit(0 if worst < BAR and lowest >= FLOOR else 1)
