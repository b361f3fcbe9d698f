#!/usr/bin/env python3
"""Runs the examples that the tool's help and the documents show, as a reader would paste them.

    check_examples.py PROGRAM WORK_DIR DOCUMENT...

The help's examples are its indented lines that begin with "tarn": first those of `tarn --help`, then
each verb's, in one folder, in that order. A document's examples are its sh blocks with such lines, in
a folder of their own. What a text block right after one shows is what it must print; times may
differ, and a line of three dots stands for any lines. A block that shows a complaint must fail.

What examples may start from lies in the folder: photo.png, a picture; photo.dng, a plain Bayer raw;
golden, the golden vectors.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys

import numpy
from PIL import Image

program, work, documents = sys.argv[1], pathlib.Path(sys.argv[2]).absolute(), sys.argv[3:]
os.environ["PATH"] = f"{pathlib.Path(program).absolute().parent}:{os.environ['PATH']}"
os.environ.pop("NO_COLOR", None)
failures = []


def shell(script, folder):
    done = subprocess.run(["bash", "-euo", "pipefail", "-c", script], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    return done.returncode, done.stdout


def fresh_folder(name):
    folder = work / name
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    y, x = numpy.mgrid[0:900, 0:1200]
    picture = numpy.stack([128 + 100 * numpy.sin(x / a) * numpy.cos(y / b) for a, b in ((90, 130), (70, 60), (150, 80))], 2)
    Image.fromarray(picture.astype("u1")).save(folder / "photo.png")
    make_raw = "tarn synth photo.png -q -o plain.raw -f qc10 --cell 1; tarn convert plain.raw -q -o photo.dng -f qc10 -s 1200x900; rm plain.raw"
    (folder / "golden").symlink_to(pathlib.Path(__file__).resolve().parents[2] / "golden/vectors")
    assert shell(make_raw, folder) == (0, ""), shell(make_raw, folder)
    return folder


def as_pattern(shown):
    """What is shown, with any time in the place of a time, and any lines in that of dots."""
    pattern = re.escape(shown.rstrip()).replace(re.escape("..."), r"[^\n]*(\n[^\n]*)*?")
    for unit in ("ms", "MP/s", "GB/s", "x the time"):
        pattern = re.sub(r"[0-9.\\]+" + re.escape(re.escape(" " + unit)), lambda m: r"[0-9.e+]+" + re.escape(" " + unit), pattern)
    return pattern


def check(where, script, folder, shown=None):
    code, printed = shell(script, folder)
    complains = shown is not None and shown.startswith("tarn: ")
    if complains != (code != 0):
        failures.append(f"{where}: exit code {code}:\n{script}\n{printed}")
    elif shown is not None and not re.fullmatch(as_pattern(shown), printed.rstrip()):
        failures.append(f"{where}: prints\n{printed}not\n{shown}")


def check_help():
    folder = fresh_folder("help")
    verbs = subprocess.run([program, "--complete", "tarn", ""], capture_output=True, text=True, check=True).stdout.split()
    count = 0
    for verb in [""] + verbs:
        text = subprocess.run([program, *verb.split(), "--help"], capture_output=True, text=True, check=True).stdout
        examples = [line for line in text.splitlines() if re.match(r"  (tarn |.*\| tarn )", line)]
        if not examples:
            failures.append(f"tarn {verb} --help: shows no example")
        for example in examples:
            check(f"tarn {verb} --help", example, folder)
        count += len(examples)
    return count


def check_document(path):
    folder = fresh_folder(path.stem)
    blocks = re.findall(r"^```(\w*)\n(.*?)^```\n\n?(?:^```text\n(.*?)^```)?", path.read_text(), re.M | re.S)
    blocks = [(script, shown or None) for kind, script, shown in blocks if kind == "sh" and re.search(r"^tarn ", script, re.M)]
    if not blocks:
        failures.append(f"{path}: shows no commands")
    for script, shown in blocks:
        check(path.name, script, folder, shown)
    return len(blocks)


print(f"tarn --help: {check_help()} examples")
for document in documents:
    print(f"{document}: {check_document(pathlib.Path(document))} blocks")
for failure in failures:
    print(f"FAILED: {failure}")
sys.exit(len(failures) > 0)
