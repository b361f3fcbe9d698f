#!/usr/bin/env python3
"""Scores the guess of `tarn inspect` on frames made of photographs, and fails below the bar.

    guess_score.py TARN WORK_DIR [train|score]

Frames differ in layout, cell, size, pitch, row padding, light and noise. Thresholds were set on the
`train` photographs; the bar holds on the others: layout, pitch and cell right in 90 % of the frames,
and no wrong guess rated certain. The photographs (Debian's libjxl-testdata, and the camera raw of
rawtran-doc) are fetched into WORK_DIR. Needs python3-numpy and python3-pil.
"""
import collections
import json
import pathlib
import subprocess
import sys

import numpy
from PIL import Image

tarn, work, split = sys.argv[1], pathlib.Path(sys.argv[2]), (sys.argv[3:] or ["score"])[0]
JXL, WESATURATE = "usr/share/libjxl-testdata/jxl", "usr/share/libjxl-testdata/external/wesaturate/500px"
PHOTOGRAPHS = {
    "train": [f"{JXL}/flower/flower.png", f"{JXL}/flower/flower_cropped.jpg", f"{WESATURATE}/tmshre_riaphotographs_srgb8.png"],
    "score": [f"{JXL}/hdr_room.png", f"{WESATURATE}/cvo9xd_keong_macan_srgb8.png", f"{WESATURATE}/u76c0g_bliznaca_srgb8.png"],
}
CAMERA_RAW = "usr/share/doc/rawtran/IMG_5952.CR2"
FRAMES_OF_EACH = 24
GROUPS = {"qc10": (4, 5), "vx10": (4, 5), "qc12": (2, 3), "vx12": (2, 3)}


def fetch():
    work.mkdir(parents=True, exist_ok=True)
    for package, wanted in (("libjxl-testdata", JXL), ("rawtran-doc", CAMERA_RAW)):
        if not (work / wanted).exists():
            subprocess.run(["apt-get", "download", "-qq", package], cwd=work, check=True)
            subprocess.run(["dpkg-deb", "-x", next(work.glob(f"{package}_*.deb")), work], check=True)


def pack(layout, codes):
    """Rows of whole groups: streams of bits for VX; high bytes, then the low bits, for QC."""
    pixels, _ = GROUPS[layout]
    bits = int(layout[2:])
    height, width = codes.shape
    codes = numpy.pad(codes, ((0, 0), (0, -width % pixels)))
    if layout.startswith("vx"):
        stream = (codes[:, :, None] >> numpy.arange(bits) & 1).astype("u1").reshape(height, -1)
        return numpy.packbits(stream, axis=1, bitorder="little")
    groups = codes.reshape(height, -1, pixels)
    low = bits - 8
    last = ((groups & (1 << low) - 1) << low * numpy.arange(pixels)).sum(axis=2, keepdims=True)
    return numpy.concatenate([groups >> low, last], axis=2).astype("u1").reshape(height, -1)


def random_geometry(random, layout, width):
    """A pitch of a usual kind: tight, the family's units, aligned, or odd."""
    pixels, size = GROUPS[layout]
    tight = -(-width // pixels) * size
    unit = {"qc10": 80, "vx10": 40}.get(layout, 96)
    return int(random.choice([tight, tight, -(-tight // unit) * unit, -(-tight // 64) * 64, -(-tight // 256) * 256, tight + int(random.integers(1, 60))]))


def sense(random, photograph, cell, bits):
    """The photograph through a colour filter of such cells, with black level, noise and clipping."""
    light = (photograph / 255.0) ** 2.2 * random.uniform(0.15, 1.3)
    light *= numpy.array([random.uniform(0.4, 0.9), 1, random.uniform(0.4, 0.9)])
    height, width = light.shape[:2]
    y, x = numpy.arange(height)[:, None] // cell % 2, numpy.arange(width)[None, :] // cell % 2
    mosaic = numpy.take_along_axis(light, (x + y)[:, :, None], 2)[:, :, 0]
    full = (1 << bits) - 1
    noise = random.normal(size=mosaic.shape) * numpy.sqrt(mosaic * random.uniform(0.0001, 0.001) + 4e-6)
    return numpy.clip((mosaic + noise) * (full * 15 / 16) + full / 16, 0, full).astype(int)


def random_crop(random, photograph, cell):
    height, width = photograph.shape[:2]
    portrait = random.random() < 0.25
    ratio = random.choice([4 / 3, 3 / 2, 16 / 9, 1.0])
    ratio = 1 / ratio if portrait else ratio
    w = min(width, int(height * ratio)) * random.uniform(0.55, 1)
    h, w = min(int(w / ratio), height), int(w)
    h, w = h - h % (2 * cell), w - w % (2 * cell)
    top, left = random.integers(0, height - h + 1), random.integers(0, width - w + 1)
    return photograph[top : top + h, left : left + w]


def frames_of(photograph_path, random):
    photograph = numpy.asarray(Image.open(work / photograph_path).convert("RGB"))
    for _ in range(FRAMES_OF_EACH):
        layout = str(random.choice(list(GROUPS)))
        bits = int(layout[2:])
        cell = int(random.integers(1, 5 if bits == 10 else 3))
        crop = random_crop(random, photograph, cell)
        packed = pack(layout, sense(random, crop, cell, bits))
        height, width = crop.shape[:2]
        pitch = max(random_geometry(random, layout, width), packed.shape[1])
        rows = numpy.full((height, pitch), random.choice([0, 0, 0, 0xFF]), "u1")
        rows[:, : packed.shape[1]] = packed
        data = rows.tobytes()
        if random.random() < 0.15:  # without the last row's padding
            data = data[: len(data) - (pitch - packed.shape[1])]
        yield data, (layout, pitch, cell), (width, height)


def camera_frames(random):
    for _ in range(FRAMES_OF_EACH):
        layout = str(random.choice(list(GROUPS)))
        cell = int(random.integers(1, 5 if layout.endswith("10") else 3))
        block = 2 * cell
        width, height = (int(side * random.uniform(0.4, 1)) // block * block for side in (3522, 2348))
        pitch = random_geometry(random, layout, width)
        frame = work / "camera.raw"
        options = ["--cell", str(cell), "-s", f"{width}x{height}", "--pitch", str(pitch), "--exposure", str(random.uniform(0.5, 4))]
        subprocess.run([tarn, "synth", work / CAMERA_RAW, "-o", frame, "-q", "-f", layout, *options], check=True)
        yield frame.read_bytes(), (layout, pitch, cell), (width, height)


def all_frames():
    for photograph in PHOTOGRAPHS[split]:
        random = numpy.random.default_rng(len(photograph))
        for frame in frames_of(photograph, random):
            yield pathlib.Path(photograph).name, *frame
    if split == "score":
        for frame in camera_frames(numpy.random.default_rng(1)):
            yield pathlib.Path(CAMERA_RAW).name, *frame


fetch()
counts = collections.Counter()
for source, data, truth, (width, height) in all_frames():
    (work / "frame.raw").write_bytes(data)
    done = subprocess.run([tarn, "inspect", work / "frame.raw", "--json"], capture_output=True, text=True)
    answer = json.loads(done.stdout) if done.returncode == 0 else None
    frame = answer["frame"] if answer else {}
    right = tuple(frame.get(key) for key in ("layout", "pitch", "cell")) == truth
    whole = answer["guess"]["whole"] if answer else "refused"
    counts["frames", source] += 1
    counts["right", source] += right
    counts["right" if right else "wrong", whole] += 1
    counts["size right"] += right and (frame["width"], frame["height"]) == (width, height)
    if not right:
        guess = answer["guess"] if answer else done.stderr.strip()
        print(f"{source}: {width}x{height} {truth}: guessed {tuple(frame.values())}, {guess}")

total = sum(n for key, n in counts.items() if key[0] == "frames")
right = sum(n for key, n in counts.items() if key[0] == "right" and key[1] in ("certain", "likely", "uncertain"))
for source in sorted({key[1] for key in counts if key[0] == "frames"}):
    print(f"{counts['right', source]:4} of {counts['frames', source]:3}  {source}")
for rating in ("certain", "likely", "uncertain", "refused"):
    print(f"  {rating:10} {counts['right', rating]:4} right {counts['wrong', rating]:4} wrong")
print(f"{right} of {total} right ({100 * right / total:.1f} %), {counts['size right']} with the size too; "
      f"{counts['wrong', 'certain']} wrong of those called certain")
sys.exit(right < 0.9 * total or counts["wrong", "certain"] > 0)
