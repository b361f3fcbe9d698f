"""The library with a fault in it: compiles what a change touches, links the everyday tests with it and
runs them, the quickest that catch something first.

Only the library's objects are compiled anew; the tests are those of the unchanged tree, which is only
read. One built tree serves all faults, and each worker has its own copy of sources and objects."""
import json
import os
import re
import resource
import shlex
import shutil
import signal
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FOLDERS = ('engines', 'layout', 'platform', 'solution')
FRAMES = 'differential_test --gtest_filter=Differential.'
CHECKS = ROOT / 'tests/scripts'
CLIENT = f'clang++-19 -std=c++11 -O2 {ROOT}/tests/client/client.cpp libTarn.camera.mirova.so -Wl,-rpath,. -o client'

# Name, command in the worker's folder, and seconds of processor time. What needs this machine's own
# processor is not run elsewhere.
STAGES = [
    ('solution', './solution_test', 10),
    ('host_platform', './host_platform_test', 10),
    ('engines', 'env TARN_TEST_GAINS=5 ./engines_test', 15),
    ('differential_RandomFrames', f'env TARN_TEST_CASES=20000 ./{FRAMES}RandomFrames', 20),
    ('differential_scalar', f'env TARN_TEST_LEVEL=scalar TARN_TEST_CASES=1000 ./{FRAMES}RandomFrames', 20),
    ('differential_avx2', f'env TARN_TEST_LEVEL=avx2 TARN_TEST_CASES=1000 ./{FRAMES}RandomFrames', 20),
    ('other_compiler_client', f"sh -c '{CLIENT} && ./client'", 20),
    ('binary', f'{CHECKS}/check_binary.sh libTarn.camera.mirova.so nm readelf {ROOT}/tests/exports.txt 0', 10),
    ('kernel_objects', f"sh -c '{CHECKS}/check_kernels.sh nm CMakeFiles/tarn_objects.dir/engines/kernels/*.o'", 10),
    ('differential_EveryWidth', f'./{FRAMES}EveryWidth', 90),
    ('differential_EverySum', f'./{FRAMES}EverySum', 60),
    *[(f'on_{cpu}', f'env TARN_TEST_CASES=2000 qemu-x86_64 -cpu {cpu} ./{FRAMES}RandomFrames', 100)
      for cpu in ('Nehalem', 'Haswell', 'Haswell,-fma', 'Haswell,-avx2')],
    ('engines', './engines_test', 60),
    ('checked', './checked_test', 60),
    ('differential_RandomFrames', f'./{FRAMES}RandomFrames', 400),
]
PROGRAMS = sorted(set(re.findall(r'\./(\w+_test)', ' '.join(stage[1] for stage in STAGES))))
SUPPORT = 'CMakeFiles/tarn_test_support.dir'
EMULATOR = 'qemu-aarch64 -L /usr/aarch64-linux-gnu '


def run(command, **more):
    return subprocess.run(command, capture_output=True, text=True, errors='replace', **more)


class Bench:
    """The built tree: how each object is compiled, each program linked, and who includes what."""

    def __init__(self, arm=False):
        self.arm = arm
        self.work = ROOT / 'build' / ('faults-arm' if arm else 'faults')
        self.base = self.work / 'base'
        tools = ['--preset', 'aarch64' if arm else 'host', '-S', str(ROOT), '-B', str(self.base)]
        for command in (['cmake', *tools, '-DTARN_TOOL=OFF', '-DTARN_TESTS=ON', '-DTARN_WERROR=OFF'],
                        ['cmake', '--build', str(self.base), '-j2', '--target', 'tarn', *PROGRAMS]):
            done = run(command, cwd=ROOT)
            if done.returncode:
                sys.exit(done.stdout + done.stderr)
        self.objects, self.includes = {}, {}
        for entry in json.loads((self.base / 'compile_commands.json').read_text()):
            output = re.search(r' -o (\S+)', entry['command']).group(1)
            # The library's, and its source that the tests compile for processors that lack a level.
            if 'tarn_objects.dir' in output or '/emulated/' in output:
                folder = Path(entry['directory'])
                name = os.path.relpath(folder / output, self.base)
                self.objects[name] = entry['command']
                # Names may be relative: a compiler cache makes them so.
                included = (self.base / (name + '.d')).read_text().split()
                self.includes[name] = {os.path.normpath(folder / file) for file in included}
        self.support = {str(o.relative_to(self.base)): None for o in self.base.glob(f'tests/{SUPPORT}/**/*.o')}

    def objects_of(self, file):
        """The objects that a change of this file may change."""
        return [o for o, names in self.includes.items() if str(ROOT / file) in names]

    def stages(self):
        for name, command, seconds in STAGES:
            if not self.arm:
                yield name, command, seconds
            elif command.startswith(('./', 'env')) and 'qemu' not in command:
                command = command.replace('=avx2', '=neon')
                yield name.replace('avx2', 'neon'), re.sub(r'(?=\./\w+_test)', EMULATOR, command), 5 * seconds

    def link(self, program, folder):
        """The command that links a program, or the library, from a worker's objects."""
        inside = '' if program == 'tarn' else 'tests/'
        output = 'libTarn.camera.mirova.so' if program == 'tarn' else program
        text = (self.base / inside / f'CMakeFiles/{program}.dir/link.txt').read_text().strip()
        text = re.sub(r'(?<=\s)\S*(libtarn_objects|libtarn_test_support)\.a', rf'{folder}/\1.a', text)
        text = re.sub(r'(?<=\s)\S*/libTarn\.camera\.mirova\.so', f'{folder}/libTarn.camera.mirova.so', text)
        text = text.replace(f'-rpath,{self.base}', f'-rpath,{folder}')
        text = text.replace(f'{self.base}/exports.map', f'{folder}/exports.map')
        text = re.sub(r'CMakeFiles/tarn_objects\.dir', f'{folder}/CMakeFiles/tarn_objects.dir', text)
        text = re.sub(r' -o \S+', f' -o {folder}/{output}', text)
        return ['sh', '-c', f'cd {self.base / inside} && {text}']


class Worker:
    """One fault at a time, in a copy of the library's sources and objects."""

    def __init__(self, bench, number=0):
        self.bench = bench
        self.folder = bench.work / f'worker{number}'
        self.exports = (bench.base / 'exports.map').read_text()
        shutil.rmtree(self.folder, ignore_errors=True)
        for name in (*FOLDERS, 'include', 'tests/support'):
            shutil.copytree(ROOT / name, self.folder / 'tree' / name)
        for output in {**bench.objects, **bench.support}:
            (self.folder / output).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(bench.base / output, self.folder / output)
        (self.folder / 'exports.map').write_text(self.exports)

    def judge(self, texts, exports=None, tested=True):
        """What becomes of these files' new texts: 'refused' by compiler or linker, 'same' code,
        'survived', which all do that are not to be tested, or the name of the test that caught it."""
        originals = {file: (self.folder / 'tree' / file).read_text() for file in texts}
        (self.folder / 'exports.map').write_text(exports or self.exports)
        try:
            for file, text in texts.items():
                (self.folder / 'tree' / file).write_text(text)
            changed = [o for file in texts for o in self.bench.objects_of(file)]
            for output in dict.fromkeys(changed):
                if not self.compile(output):
                    return 'refused'
            if not exports and all(self.is_base(o) for o in changed):
                return 'same'
            if not tested:
                return 'survived'
            return self.test() if self.link() else 'refused'
        finally:
            for file, text in originals.items():
                (self.folder / 'tree' / file).write_text(text)
            for output in self.bench.objects:
                if not self.is_base(output):
                    shutil.copy(self.bench.base / output, self.folder / output)

    def is_base(self, output):
        made = self.folder / output  # not there after a compiler's refusal
        return made.exists() and made.read_bytes() == (self.bench.base / output).read_bytes()

    def compile(self, output):
        command = self.bench.objects[output].replace(f'{ROOT}/', f'{self.folder}/tree/')
        command = command.replace(f'-I{ROOT} ', f'-I{self.folder}/tree ')
        command = re.sub(r' -o \S+', f' -w -o {self.folder / output}', command)  # a warning is no test
        return run(shlex.split(command), cwd=self.folder, timeout=900).returncode == 0

    def link(self):
        links = [self.bench.link(p, self.folder) for p in ('tarn', *PROGRAMS)]
        archives = [self.archive('libtarn_objects.a', [o for o in self.bench.objects if '/emulated/' not in o]),
                    self.archive('libtarn_test_support.a', self.bench.support)]
        return all(run(command).returncode == 0 for command in (*archives, *links))

    def archive(self, name, objects):
        (self.folder / name).unlink(missing_ok=True)
        archiver = 'llvm-ar-19' if self.bench.arm else 'ar'
        return [archiver, 'qcs', str(self.folder / name), *(str(self.folder / o) for o in objects)]

    def test(self):
        for name, command, seconds in self.bench.stages():
            if self.fails(command, seconds):
                return name
        return 'survived'

    def fails(self, command, seconds):
        def limits():
            os.setsid()
            resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 26, 1 << 26))
        process = subprocess.Popen(shlex.split(command), env={**os.environ, 'TARN_TEST_SEED': '1'},
                                   cwd=self.folder, preexec_fn=limits,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            return process.wait(timeout=40 * seconds) != 0
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return True


def sound(worker):
    """The worker, whose tests pass without a fault: what always fails would catch everything."""
    verdict = worker.test() if worker.link() else 'refused'
    if verdict != 'survived':
        sys.exit(f'without any fault: {verdict}')
    return worker
