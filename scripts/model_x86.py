#!/usr/bin/env python3
"""Cycles per byte of input of the x86 levels' inner loops, by the scheduler models of llvm-mca 19:
for levels that no machine at hand can run. A model knows no memory: the data is in the first-level
cache, always. Prints the table of docs/performance.md, for clang's code."""
import os
import re
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FLAGS = {"avx2": ["-mavx2", "-mfma"],
         "avx512": ["-mavx512f", "-mavx512bw", "-mavx512vbmi", "-mavx512vnni"]}
LANES = {"avx2": 16, "avx512": 32}
CPUS = ["znver4", "icelake-server"]
BINNING = [("Tetra QC10", 2, 10), ("Tetra QC12", 2, 12), ("Tetra VX10", 2, 10),
           ("Tetra VX10 to 12", 2, 10), ("Tetra VX12", 2, 12), ("Tetra VX12 to 10", 2, 12),
           ("Nona QC", 3, 10), ("Nona VX", 3, 10), ("Hexadeca QC", 4, 10), ("Hexadeca VX", 4, 10),
           ("Hexadeca VX to 12", 4, 10)]
EV = [("EV QC10", 10), ("EV QC12", 12), ("EV VX10", 10), ("EV VX12", 12)]


def assembly(level):
    command = ["clang++-19", "-std=c++20", "-O2", *FLAGS[level], "-ffp-contract=off", "-fno-exceptions",
               "-fno-math-errno", "-fPIC", "-w", "-I" + ROOT, "-I" + ROOT + "/include", "-S", "-o", "-",
               f"{ROOT}/engines/kernels/{level}.cpp"]
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def functions(text):
    for match in re.finditer(r"^(_Z\w+):[^\n]*\n(.*?)^\t\.size\t\1", text, re.M | re.S):
        yield match.group(1), match.group(2).split("\n")


def inner_loops(lines):
    """Straight runs of vector instructions from a label to the jump back to it."""
    labels = {}
    for i, line in enumerate(lines):
        label, jump = re.match(r"(\.L\w+):", line), re.match(r"\tj\w+\t(\.L\w+)", line)
        if label:
            labels[label.group(1)] = i
        if jump and jump.group(1) in labels:
            body = [re.sub(r"#.*", "", x) for x in lines[labels[jump.group(1)] + 1:i]
                    if re.match(r"\t[a-z]", x)]
            if not any(x.startswith("\tj") for x in body) and any("mm" in x for x in body):
                yield body


def cycles(body, cpu):
    out = subprocess.run(["llvm-mca-19", "-mtriple=x86_64", "-mcpu=" + cpu, "-iterations=200"],
                         input="\n".join(body), capture_output=True, text=True, check=True).stdout
    return int(re.search(r"Total Cycles:\s+(\d+)", out).group(1)) / 200


def split_by_gain(loops):
    """The loops that add up rows, the last row's with a gain, and the last row's without."""
    fused = [any("fmadd" in x for x in body) for body in loops]
    at = fused.index(True)
    return loops[:at], loops[at], loops[at + 1] if at + 1 < len(loops) else None


def bin_figures(loops, cell, bits, level, cpu):
    adding, gain, plain = split_by_gain(loops)
    row = LANES[level] * cell * bits / 8
    together = 2 if cell == 2 or level == "avx512" else 1
    added = cycles(adding[0], cpu) + (cell - 2) * cycles(adding[-1], cpu)
    return [(added + cycles(last, cpu) / together) / (cell * row) for last in (plain, gain)]


def figures(level):
    """For each processor: operation -> cycles per byte, without a gain and with it."""
    binning, ev = [], []
    for name, lines in functions(assembly(level)):
        if re.search(r"BinBlocks.*3RunE", name) and "TopLanes" not in name:
            binning.append(list(inner_loops(lines)))
        elif "EvTopLanes" in name:
            ev.append(max((body for body in inner_loops(lines) if any("fmadd" in x for x in body)), key=len))
    if len(binning) != len(BINNING) or len(ev) != len(EV):
        sys.exit(f"{level}: {len(binning)} binning loops, {len(ev)} EV loops")
    tables = []
    for cpu in CPUS:
        table = {name: bin_figures(loops, cell, bits, level, cpu)
                 for loops, (name, cell, bits) in zip(binning, BINNING)}
        for body, (name, bits) in zip(ev, EV):
            table[name] = [None, cycles(body, cpu) / (2 * LANES[level] * bits / 8)]
        tables.append(table)
    return tables


def main():
    levels = [figures(level) for level in FLAGS]
    columns = [tables[i] for i in range(len(CPUS)) for tables in levels]
    print("| operation | " + " | ".join(f"{cpu}: {level}" for cpu in CPUS for level in FLAGS) + " |")
    print("|---|" + "---|" * len(columns))
    for name in [b[0] for b in BINNING] + [e[0] for e in EV]:
        cells = [", ".join(f"{x:.3f}".lstrip("0") for x in column[name] if x is not None) for column in columns]
        print(f"| {name} | " + " | ".join(cells) + " |")


main()
