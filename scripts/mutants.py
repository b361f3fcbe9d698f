#!/usr/bin/env python3
"""How much the everyday tests see: plants a seeded sample of small faults (mutants) in the library,
one at a time, and counts those that a test notices.

  scripts/mutants.py [--count 300] [--seed 1] [--minutes 90] [--jobs 2] [--arm] [--find TEXT]

Only the library is mutated and only its objects are compiled anew; the tests are the ones of the
unchanged tree. A mutant that does not compile, or compiles to the very same code, does not count:
another is drawn. One that takes more than ten times the processor time is killed. Survivors are
looked up in tests/faults/equivalent_mutants.txt, which names those that no test can notice, with
the reason. Ends with the score, and non-zero below 95 % or with fewer mutants than asked for.

--arm takes the sample from the NEON files, compiles for aarch64 and runs under emulation.
--find takes the mutants whose line contains TEXT, all of them.
The source tree is only read; everything lies in build/mutants."""
import argparse
import concurrent.futures
import hashlib
import json
import os
import random
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
import threading
import time
from collections import Counter
from pathlib import Path

import mutation_operators

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ('engines', 'layout', 'platform', 'solution')
JUDGED = ROOT / 'tests/faults/equivalent_mutants.txt'
FRAMES = '--gtest_filter=Differential.'

# Program, arguments, environment, and seconds of processor time; the quickest that kill come first,
# and together they are the everyday tests of the library. TARN_PROCESSOR is emulated.
STAGES = [
    ('solution_test', [], {}, 10),
    ('engines_test', [], {'TARN_TEST_GAINS': '5'}, 15),
    ('differential_test', [FRAMES + 'RandomFrames'], {'TARN_TEST_CASES': '20000'}, 20),
    ('differential_test', [FRAMES + 'EveryWidth'], {}, 90),
    ('differential_test', [FRAMES + 'EverySum'], {}, 60),
    ('engines_test', [], {}, 60),
    ('checked_test', [], {}, 60),
    ('host_platform_test', [], {}, 10),
    *[('differential_test', [FRAMES + 'RandomFrames'], {'TARN_TEST_CASES': '2000', 'TARN_PROCESSOR': cpu}, 100)
      for cpu in ('Nehalem', 'Haswell', 'Haswell,-fma', 'Haswell,-avx2')],
    ('differential_test', [FRAMES + 'RandomFrames'], {}, 400),
]
PROGRAMS = sorted({stage[0] for stage in STAGES})


def run(command, **more):
    return subprocess.run(command, capture_output=True, text=True, errors='replace', **more)


class Bench:
    """The built tree: how each object is compiled, each program linked, and who includes what."""

    def __init__(self, arm):
        self.arm = arm
        self.work = ROOT / 'build' / ('mutants-arm' if arm else 'mutants')
        self.base = self.work / 'base'
        tools = ['--preset', 'aarch64' if arm else 'host', '-S', str(ROOT), '-B', str(self.base)]
        for command in (['cmake', *tools, '-DTARN_TOOL=OFF', '-DTARN_TESTS=ON', '-DTARN_WERROR=OFF'],
                        ['cmake', '--build', str(self.base), '-j2', '--target', 'tarn', *PROGRAMS]):
            done = run(command, cwd=ROOT)
            if done.returncode:
                sys.exit(done.stdout + done.stderr)
        self.objects = {}
        for entry in json.loads((self.base / 'compile_commands.json').read_text()):
            if 'tarn_objects.dir' in entry['command']:
                output = re.search(r' -o (\S+)', entry['command']).group(1)
                self.objects[output] = entry['command']
        self.includes = {o: (self.base / (o + '.d')).read_text() for o in self.objects}

    def objects_of(self, file):
        path = str(ROOT / file)
        return [o for o, names in self.includes.items() if re.search(re.escape(path) + r'(\s|$)', names)]

    def link(self, program, folder):
        """The command that links a program, or the library, from a worker's objects."""
        inside = '' if program == 'tarn' else 'tests/'
        text = (self.base / inside / f'CMakeFiles/{program}.dir/link.txt').read_text().strip()
        text = text.replace('../libtarn_objects.a', f'{folder}/libtarn_objects.a')
        text = re.sub(r'(?<=\s)\S*/libTarn\.camera\.mirova\.so', f'{folder}/libTarn.camera.mirova.so', text)
        text = text.replace(f'-rpath,{self.base}', f'-rpath,{folder}')
        text = re.sub(r'CMakeFiles/tarn_objects\.dir', f'{folder}/CMakeFiles/tarn_objects.dir', text)
        text = re.sub(r' -o \S+', f' -o {folder}/{"libTarn.camera.mirova.so" if program == "tarn" else program}', text)
        return ['sh', '-c', f'cd {self.base / inside} && {text}']


class Worker:
    """One mutant at a time, in a copy of the library's sources and objects."""

    def __init__(self, bench, number):
        self.bench = bench
        self.folder = bench.work / f'worker{number}'
        shutil.rmtree(self.folder, ignore_errors=True)
        for name in (*FOLDERS, 'include'):
            shutil.copytree(ROOT / name, self.folder / 'tree' / name)
        for output in bench.objects:
            (self.folder / output).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(bench.base / output, self.folder / output)

    def judge(self, file, text):
        """'refused', 'same', 'survived', or the name of the test that killed it."""
        place = self.folder / 'tree' / file
        original = place.read_text()
        place.write_text(text)
        changed = []
        try:
            for output in self.bench.objects_of(file):
                # Not -Wunused and the like: a warning is no test.
                command = self.bench.objects[output].replace(f'{ROOT}/', f'{self.folder}/tree/')
                command = command.replace(f'-I{ROOT} ', f'-I{self.folder}/tree ')
                command = re.sub(r' -o \S+', f' -w -o {self.folder}/new.o', command)
                if run(shlex.split(command), cwd=self.folder, timeout=600).returncode:
                    return 'refused'
                before = self.folder / output
                if (self.folder / 'new.o').read_bytes() != before.read_bytes():
                    shutil.copy(self.folder / 'new.o', before)
                    changed.append(output)
            return self.test() if changed else 'same'
        finally:
            place.write_text(original)
            for output in changed:
                shutil.copy(self.bench.base / output, self.folder / output)

    def test(self):
        (self.folder / 'libtarn_objects.a').unlink(missing_ok=True)
        objects = [str(self.folder / o) for o in self.bench.objects]
        commands = [['llvm-ar-19' if self.bench.arm else 'ar', 'qcs',
                     str(self.folder / 'libtarn_objects.a'), *objects]]
        for command in commands + [self.bench.link(p, self.folder) for p in ('tarn', *PROGRAMS)]:
            done = run(command)
            if done.returncode:
                return 'refused'
        for program, arguments, variables, seconds in STAGES:
            if self.bench.arm and 'TARN_PROCESSOR' in variables:
                continue
            if self.fails(program, arguments, variables, seconds * (5 if self.bench.arm else 1)):
                more = [a.replace(FRAMES, '') for a in arguments]
                return ' '.join([program, *more, *(f'{k}={v}' for k, v in variables.items())])
        return 'survived'

    def fails(self, program, arguments, variables, seconds):
        def limits():
            os.setsid()
            resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 26, 1 << 26))
        environment = {**os.environ, 'TARN_TEST_SEED': '1', **variables}
        emulator = ['qemu-aarch64', '-L', '/usr/aarch64-linux-gnu'] if self.bench.arm else []
        if 'TARN_PROCESSOR' in variables:
            emulator = ['qemu-x86_64', '-cpu', variables['TARN_PROCESSOR']]
        process = subprocess.Popen([*emulator, str(self.folder / program), *arguments], env=environment,
                                   cwd=self.folder, preexec_fn=limits,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            return process.wait(timeout=40 * seconds) != 0
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return True


def lines_of(text, start, end, other):
    """The whole lines around a change, before and after, each as one line of words."""
    first = text.rfind('\n', 0, start) + 1
    last = text.find('\n', end)
    one = lambda lines: ' '.join(lines.split())
    return one(text[first:last]), one(text[first:start] + other + text[end:last])


def judged():
    """(file, original, mutated) -> reason; mutated '*' stands for any change of that line."""
    known, entry = {}, {}
    for line in JUDGED.read_text().splitlines() if JUDGED.exists() else []:
        if line[:2] in ('@ ', '- ', '+ '):
            entry[line[0]] = line[2:]
        elif line.startswith('= '):
            known[entry['@'], entry['-'], entry['+']] = line[2:]
    return known


def draw(arm, seed, find):
    """All mutants in a random order: a random line, then a random mutant of it, and over again."""
    by_line = {}
    for folder in FOLDERS:
        for path in sorted((ROOT / folder).rglob('*')):
            file = str(path.relative_to(ROOT))
            if path.suffix not in ('.h', '.cpp') or ('neon' in path.name) != arm:
                continue
            text = path.read_text()
            for start, end, other, kind in mutation_operators.mutants(text):
                line = text.count('\n', 0, start)
                before, after = lines_of(text, start, end, other)
                if not find or find in before:
                    by_line.setdefault((file, line), []).append((file, text, start, end, other, kind, before, after))
    order = random.Random(seed)
    drawn = []
    for key in sorted(by_line):
        order.shuffle(by_line[key])
        drawn += [(turn, order.random(), mutant) for turn, mutant in enumerate(by_line[key])]
    drawn.sort(key=lambda d: d[:2])
    return [mutant for _, _, mutant in drawn]


class Tally:
    def __init__(self, options):
        self.options, self.known = options, judged()
        self.killers, self.dropped, self.survivors, self.equivalent = Counter(), Counter(), [], []
        self.counted, self.start, self.lock = 0, time.monotonic(), threading.Lock()

    def full(self):
        late = time.monotonic() - self.start > 60 * self.options.minutes
        return late or self.counted >= self.options.count

    def add(self, mutant, verdict):
        file, _, _, _, _, kind, before, after = mutant
        with self.lock:
            if verdict in ('refused', 'same'):
                self.dropped[verdict] += 1
                return
            if self.counted >= self.options.count:
                return
            self.counted += 1
            entry = f'@ {file}\n- {before}\n+ {after}'
            if verdict == 'survived':
                reason = self.known.get((file, before, after)) or self.known.get((file, before, '*'))
                (self.equivalent if reason else self.survivors).append(entry + (f'\n= {reason}' if reason else ''))
                verdict = 'EQUIVALENT' if reason else 'SURVIVED'
            else:
                self.killers[verdict] += 1
            print(f'{self.counted:4} {time.monotonic() - self.start:6.0f} s  {verdict}  ({kind})\n{entry}', flush=True)

    def report(self):
        killed = sum(self.killers.values())
        possible = killed + len(self.survivors)
        score = 100 * killed / possible if possible else 0
        for title, entries in (('equivalent, by judgement', self.equivalent), ('survivors', self.survivors)):
            print(f'\n== {len(entries)} {title}')
            print('\n\n'.join(entries))
        print('\n== killed by')
        for killer, times in self.killers.most_common():
            print(f'{times:5}  {killer}')
        print(f'\n{self.counted} mutants (seed {self.options.seed}): {killed} killed, {len(self.equivalent)} '
              f'equivalent, {len(self.survivors)} survived; not counted: {self.dropped["refused"]} that do not '
              f'compile, {self.dropped["same"]} with the same code; '
              f'{(time.monotonic() - self.start) / 60:.0f} minutes')
        print(f'score: {score:.1f} % of the {possible} not equivalent')
        return 0 if score >= 95 and (self.options.find or self.counted >= self.options.count) else 1


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('--count', type=int, default=300)
    parser.add_argument('--seed', type=int, default=1)
    parser.add_argument('--minutes', type=float, default=90)
    parser.add_argument('--jobs', type=int, default=2)
    parser.add_argument('--arm', action='store_true')
    parser.add_argument('--find', default='')
    options = parser.parse_args()
    bench, tally = Bench(options.arm), Tally(options)
    waiting = iter(draw(options.arm, options.seed, options.find))
    if Worker(bench, 0).test() != 'survived':
        sys.exit('the unchanged library fails its tests')

    def work(number):
        worker = Worker(bench, number)
        while not tally.full():
            with tally.lock:
                mutant = next(waiting, None)
            if mutant is None:
                return
            file, text, start, end, other = mutant[:5]
            tally.add(mutant, worker.judge(file, text[:start] + other + text[end:]))

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for done in [pool.submit(work, number) for number in range(options.jobs)]:
            done.result()
    sys.exit(tally.report())


if __name__ == '__main__':
    main()
