#!/usr/bin/env python3
"""Holds the golden vectors to witnesses that share no code with this project.

    check_golden.py FOLDER [LIBRAW_UNPACK]

Pixel values: the VX layouts are unpacked by Pillow and by numpy, QC 10-bit and VX 12-bit by LibRaw
(when its program is given), QC 12-bit by two lines of numpy. Results: numpy recomputes every one from
the values, the multiply-add in double precision, where it is exact, rounded once. Needs python3-numpy
and python3-pil.
"""
import json
import pathlib
import subprocess
import sys

import numpy
from PIL import Image

folder = pathlib.Path(sys.argv[1])
libraw = sys.argv[2] if len(sys.argv) > 2 else None
manifest = json.loads((folder / "manifest.json").read_text())
counts = {}
failed = False


def expect(name, witness, values, expected):
    global failed
    counts[witness] = counts.get(witness, 0) + 1
    if values.shape != expected.shape:
        failed = True
        print(f"{name}: {witness} has {values.shape}, the file {expected.shape}")
    elif (values != expected).any():
        failed = True
        y, x = numpy.argwhere(values != expected)[0]
        print(f"{name}: {witness} has {values[y, x]} at ({x}, {y}), the file {expected[y, x]}")


def read_values(frame):
    magic, size, _, data = (folder / frame["values"]).read_bytes().split(b"\n", 3)
    width, height = map(int, size.split())
    assert magic == b"P5" and (width, height) == (frame["width"], frame["height"]), frame["name"]
    return numpy.frombuffer(data, ">u2").reshape(height, width).astype(int)


def rows_of(frame):
    data = numpy.frombuffer((folder / frame["packed"]).read_bytes(), "u1")
    return data.reshape(frame["height"], frame["pitch"])


def by_pillow(frame, bits):
    """A stream of bits, the least significant first; each row starts at a byte of its own."""
    size = (frame["width"], 1)
    rows = [Image.frombytes("F", size, row.tobytes(), "bit", bits, 8, 3, 0, 1) for row in rows_of(frame)]
    return numpy.vstack([numpy.asarray(row) for row in rows]).astype(int)


def by_numpy(frame, bits):
    stream = numpy.unpackbits(rows_of(frame), axis=1, bitorder="little")
    stream = stream[:, : frame["width"] * bits].reshape(frame["height"], frame["width"], bits)
    return (stream.astype(int) << numpy.arange(bits)).sum(axis=2)


def by_libraw(frame):
    shape = [str(frame[key]) for key in ("width", "height", "pitch")]
    done = subprocess.run([libraw, frame["layout"], *shape, folder / frame["packed"]], capture_output=True, check=True)
    return numpy.frombuffer(done.stdout, "<u2").reshape(frame["height"], frame["width"]).astype(int)


def qc12(frame):
    """High byte, high byte, low nibbles."""
    groups = rows_of(frame)[:, : (frame["width"] + 1) // 2 * 3].reshape(frame["height"], -1, 3).astype(int)
    both = numpy.stack([groups[..., 0] << 4 | groups[..., 2] & 15, groups[..., 1] << 4 | groups[..., 2] >> 4], 2)
    return both.reshape(frame["height"], -1)[:, : frame["width"]]


def check_values(frame):
    values = read_values(frame)
    layout = frame["layout"]
    if layout in ("vx10", "vx12"):
        expect(frame["name"], "Pillow", by_pillow(frame, int(layout[2:])), values)
        expect(frame["name"], "numpy", by_numpy(frame, int(layout[2:])), values)
    if layout in ("qc10", "vx12") and libraw:
        expect(frame["name"], "LibRaw", by_libraw(frame), values)
    if layout == "qc12":
        expect(frame["name"], "numpy", qc12(frame), values)
    padding = rows_of(frame)[:, row_bytes(frame) :]
    if (padding != (0xEE if "from" in frame else 0xA5)).any():
        raise SystemExit(f"{frame['name']}: row padding is written to")


def row_bytes(frame):
    pixels, size = (4, 5) if frame["layout"].endswith("10") else (2, 3)
    return -(-frame["width"] // pixels) * size


def compensate(sums, gain, pedestal, maximum, fused):
    distance = sums - pedestal
    if fused:
        value = (numpy.float64(gain) * distance + pedestal).astype(numpy.float32)
    else:
        value = gain * distance.astype(numpy.float32) + numpy.float32(pedestal)
    return numpy.clip(numpy.trunc(value), pedestal, maximum).astype(int)


def recompute(result, source, fused=True):
    cell, bits = result["cell"], int(source["layout"][2:])
    height, width = result["height"], result["width"]
    cells = read_values(source)[: height * cell, : width * cell].reshape(height, cell, width, cell)
    pixels = cell * cell
    if cell == 4 and source["layout"] == "qc10":  # each row of a cell is divided first
        sums, pixels = (cells.sum(axis=3) // 4).sum(axis=1), 4
    else:
        sums = cells.sum(axis=(1, 3))
    gain = numpy.array([int(result["gain_bits"], 16)], ">u4").astype("<u4").view("<f4")[0]
    if cell == 1 or gain > 1:
        # The black level of an exact sum is that of its pixels together; Nona's limit is 9 x 1024 - 1.
        pedestal = pixels << (bits - 4)
        sums = compensate(sums, gain, pedestal, (pixels << bits) - 1, fused)
    # The sum to the depth of the output.
    extra = int(result["layout"][2:]) - bits
    return sums // 9 if cell == 3 else (sums << extra) // pixels if extra > 0 else sums // (pixels << -extra)


frames = {frame["name"]: frame for frame in manifest["frames"]}
for frame in frames.values():
    check_values(frame)
for result in manifest["results"]:
    check_values(result)
    source = frames[result["from"]]
    expect(result["name"], "recomputation", recompute(result, source), read_values(result))
    if result["name"].endswith("fused"):
        steps = recompute(result, source, fused=False)
        if (steps == read_values(result)).all():
            failed = True
            print(f"{result['name']}: does not tell a fused multiply-add from two steps")

print(f"{len(frames)} frames, {len(manifest['results'])} results; compared:", counts)
sys.exit(failed)
