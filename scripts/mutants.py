#!/usr/bin/env python3
"""How much the everyday tests see: plants a seeded sample of small faults (mutants) in the library,
one at a time, and counts those that a test notices.

  scripts/mutants.py [--count 300] [--seed 1] [--minutes 90] [--jobs 2] [--arm] [--find TEXT]
                     [--doubt]

A mutant that does not compile, or compiles to the very same code, does not count:
another is drawn. One that takes more than ten times the processor time is killed. Those that
tests/faults/equivalent_mutants.txt names, which no test can notice for the reason it gives, are
compiled but not tested. Ends with the score, and non-zero below 95 % or with fewer mutants than
asked for.

--arm takes the sample from the NEON files, compiles for aarch64 and runs under emulation.
--find takes the mutants whose line contains TEXT, all of them.
--doubt tests those too that are judged equivalent: one that a test catches was judged wrongly.
The source tree is only read; everything lies in build/faults, or build/faults-arm."""
import argparse
import concurrent.futures
import random
import sys
import threading
import time
from collections import Counter

import mutation_operators
from faulty_library import FOLDERS, ROOT, Bench, Worker, sound

JUDGED = ROOT / 'tests/faults/equivalent_mutants.txt'


def lines_of(text, start, end, other):
    """The whole lines around a change, before and after, each as one line of words; as many of those
    above them as it takes to name one place in the file."""
    first = text.rfind('\n', 0, start) + 1
    last = text.find('\n', end)
    while text.count('\n' + text[first:last] + '\n') > 1:
        first = text.rfind('\n', 0, first - 1) + 1
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
    there = {(m[0], m[6], after) for line in by_line.values() for m in line for after in (m[7], '*')}
    for file, before, after in set(judged()) - there:
        if ('neon' in file) == arm and not find:
            print(f'judged, but no mutant any more:\n@ {file}\n- {before}\n+ {after}')
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

    def reason(self, mutant):
        """Why no test can notice it, if that was found."""
        file, _, _, _, _, _, before, after = mutant
        return self.known.get((file, before, after)) or self.known.get((file, before, '*'))

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
                reason = self.reason(mutant)
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
    parser.add_argument('--doubt', action='store_true')
    options = parser.parse_args()
    bench, tally = Bench(options.arm), Tally(options)
    waiting = iter(draw(options.arm, options.seed, options.find))
    sound(Worker(bench))

    def work(number):
        worker = Worker(bench, number)
        while not tally.full():
            with tally.lock:
                mutant = next(waiting, None)
            if mutant is None:
                return
            file, text, start, end, other = mutant[:5]
            tested = options.doubt or not tally.reason(mutant)
            tally.add(mutant, worker.judge({file: text[:start] + other + text[end:]}, tested=tested))

    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for done in [pool.submit(work, number) for number in range(options.jobs)]:
            done.result()
    sys.exit(tally.report())


if __name__ == '__main__':
    main()
