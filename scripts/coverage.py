#!/usr/bin/env python3
"""Lines and branches of the library that its tests reach, all levels united: this machine's and, under
emulation, aarch64's.

Every line or branch that no test reaches must stand in tests/coverage_gaps.txt with its reason: a gap
that is not named there fails; one that is named and is no gap any more is said. Throw branches do not
count. Ends with the figures."""
import json
import os
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
WORK = ROOT / 'build/coverage'
GAPS = ROOT / 'tests/coverage_gaps.txt'
FOLDERS = ('engines/', 'layout/', 'platform/', 'solution/')

ARM = ['-DCMAKE_SYSTEM_NAME=Linux', '-DCMAKE_SYSTEM_PROCESSOR=aarch64',
       '-DCMAKE_CXX_COMPILER=aarch64-linux-gnu-g++', '-DCMAKE_C_COMPILER=aarch64-linux-gnu-gcc']
EMULATOR = ['qemu-aarch64', '-L', '/usr/aarch64-linux-gnu']

# Stack use is of optimised code only. The rest is the everyday tests with fewer cases.
TESTS = [['solution_test'], ['host_platform_test'], ['checked_test'],
         ['engines_test', '--gtest_filter=-*SmallStacks'],
         ['differential_test', '--gtest_filter=*RandomFrames']]


def run(command, **more):
    done = subprocess.run(command, capture_output=True, text=True, **{'cwd': ROOT, **more})
    if done.returncode:
        sys.exit(f'{" ".join(map(str, command))}\n{done.stdout[-3000:]}{done.stderr[-3000:]}')
    return done.stdout


def measure(name, options, emulator, cases):
    """Builds, runs the tests, and returns gcovr's record of what they reached."""
    build = WORK / name
    run(['cmake', '-S', '.', '-B', build, '-DCMAKE_BUILD_TYPE=Debug', '-DCMAKE_CXX_FLAGS=-O0 --coverage',
         '-DTARN_TOOL=OFF', '-DTARN_TESTS=ON', *options])
    run(['cmake', '--build', build, '-j2', '--target', *(test[0] for test in TESTS)])
    for counts in build.rglob('*.gcda'):
        counts.unlink()
    settings = {**os.environ, 'TARN_TEST_CASES': cases, 'TARN_TEST_GAINS': '20', 'TARN_TEST_SEED': '1'}
    for test in TESTS:
        run([*emulator, build / test[0], *test[1:]], env=settings, cwd=build)
    record = WORK / f'{name}.json'
    run(['gcovr', '-r', '.', build, '--json', record, '--exclude-throw-branches', '--exclude-unreachable-branches',
         '--gcov-ignore-parse-errors', *(f'--filter={folder}' for folder in FOLDERS)])
    return record


def united(records):
    """(file, line) -> (how often, [how often each branch]) over all records. Branches of one line that
    are not the same ones in two builds are those of the build that reached most of them."""
    lines = {}
    for record in records:
        for file in json.loads(record.read_text())['files']:
            for line in file['lines']:
                if line.get('gcovr/noncode'):
                    continue
                key = file['file'], line['line_number']
                branches = [b['count'] for b in line['branches'] if not b.get('throw')]
                count, others = lines.get(key, (0, branches))
                if len(others) == len(branches):
                    branches = [max(pair) for pair in zip(branches, others)]
                elif sum(map(bool, others)) * len(branches) > sum(map(bool, branches)) * len(others):
                    branches = others
                lines[key] = count + line['count'], branches
    return lines


def gaps_of(lines):
    """(file, the line's text) -> number, of each line, or branch of it, not reached; and the figures."""
    gaps, figures = {}, {'lines': [0, 0], 'branches': [0, 0]}
    for (file, number), (count, branches) in lines.items():
        reached = sum(map(bool, branches))
        for kind, hits, of in (('lines', count > 0, 1), ('branches', reached, len(branches))):
            figures[kind][0] += hits
            figures[kind][1] += of
        if count == 0 or reached < len(branches):
            text = (ROOT / file).read_text().splitlines()[number - 1].strip()
            gaps[file, text] = number
    return gaps, figures


def named_gaps():
    """(file, the line's text) -> reason"""
    named, file, text = {}, None, None
    for line in GAPS.read_text().splitlines():
        if line.startswith('@ '):
            file = line[2:]
        elif line.startswith('- '):
            text = line[2:]
        elif line.startswith('= '):
            named[file, text] = line[2:]
    return named


def main():
    WORK.mkdir(parents=True, exist_ok=True)
    records = [measure('host', [], [], '60000'), measure('aarch64', ARM, EMULATOR, '5000')]
    gaps, figures = gaps_of(united(records))
    named = named_gaps()
    for (file, text), number in sorted(gaps.items()):
        print(f'{file}:{number}: {text}\n    {named.get((file, text), "NO REASON NAMED")}')
    over = [gap for gap in named if gap not in gaps]
    for file, text in over:
        print(f'{file}: {text}\n    named as a gap, but reached or gone')
    unnamed = sum(gap not in named for gap in gaps)
    shown = ', '.join(f'{hit} of {all_} {kind} ({100 * hit / all_:.1f} %)' for kind, (hit, all_) in figures.items())
    print(f'coverage of the library: {shown}; {len(gaps)} gaps, {unnamed} without a reason, {len(over)} out of date')
    return 1 if unnamed else 0


if __name__ == '__main__':
    sys.exit(main())
