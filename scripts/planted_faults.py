#!/usr/bin/env python3
"""Plants the faults of tests/faults/faults.txt in the library, one after the other, and shows that the
everyday tests of this machine notice each; they stop at the first failure.

  scripts/planted_faults.py [TEXT...]   only the faults whose title contains one of the TEXTs

Ends non-zero when a fault goes unnoticed, does not build, or no longer has its place in the sources.
The source tree is only read; everything lies in build/faults."""
import sys
import time

from faulty_library import ROOT, Bench, Worker, sound

EXPORTS = 'cmake/exports.map'


def read_faults():
    """(title, [(file, before, after)])"""
    faults, file, group = [], None, None
    for line in (ROOT / 'tests/faults/faults.txt').read_text().splitlines():
        mark, rest = line[:1], line[2:]
        if line[:2] == '# ':
            faults.append((rest, []))
        elif line[:2] == '@ ':
            file, group = rest, None
        elif mark == '-' and faults:
            if group is None or group[2]:
                group = [file, [], []]
                faults[-1][1].append(group)
            group[1].append(rest)
        elif mark == '+' and faults:
            group[2].append(rest)
    return [(title, [(f, '\n'.join(a), '\n'.join(b)) for f, a, b in changes]) for title, changes in faults]


def planted(changes, exports):
    """The new texts of the files, and of the linker's list; the places must be there, once."""
    originals = {f: exports if f == EXPORTS else (ROOT / f).read_text() for f, _, _ in changes}
    texts = dict(originals)
    for file, before, after in sorted(changes, key=lambda c: -originals[c[0]].find(c[1])):
        if originals[file].count(before) != 1:
            raise LookupError(f'{file}: not there, or not once:\n{before}')
        at = originals[file].find(before)
        texts[file] = texts[file][:at] + after + texts[file][at + len(before):]
    return texts, texts.pop(EXPORTS, None)


def main():
    wanted = sys.argv[1:] or ['']
    faults = [fault for fault in read_faults() if any(text in fault[0] for text in wanted)]
    bench = Bench()
    worker = sound(Worker(bench))
    missed, begin = 0, time.monotonic()
    for number, (title, changes) in enumerate(faults, 1):
        start = time.monotonic()
        try:
            texts, exports = planted(changes, worker.exports)
            verdict = worker.judge(texts, exports)
        except LookupError as missing:
            verdict = f'HAS NO PLACE: {missing}'
        caught = verdict not in ('refused', 'same', 'survived') and not verdict.startswith('HAS')
        missed += not caught
        print(f'{number:3} {time.monotonic() - start:5.1f} s  {verdict if caught else "NOT CAUGHT, " + verdict:28} {title}',
              flush=True)
    print(f'{len(faults) - missed} of {len(faults)} planted faults caught, {time.monotonic() - begin:.0f} s')
    return 1 if missed or not faults else 0


if __name__ == '__main__':
    sys.exit(main())
