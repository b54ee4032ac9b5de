"""Tries one mutant after another: compile, compare, link, test."""

import hashlib
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import threading
import time

from tree import Failure

MEMORY = 8 << 30
SLOW = 0.25  # seconds: tests that take longer come last
BETTER = ('-O2',)  # tells more changes from none, and takes longer
LEAKS = ('-fsanitize=leak',)
RECENT = 8   # tests that noticed earlier changes of the same file come first

running = set()
running_lock = threading.Lock()


def stop_all():
    """Ends what is running, with all that it started."""
    with running_lock:
        for process in running:
            end_group(process)


def end_group(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def run(command, seconds, cpu_seconds=None, **options):
    """Exit code of a command, None when it was stopped for its time."""
    def limit():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if cpu_seconds:
            resource.setrlimit(resource.RLIMIT_CPU, (cpu_seconds, cpu_seconds + 1))
            resource.setrlimit(resource.RLIMIT_DATA, (MEMORY, MEMORY))
    process = subprocess.Popen(command, start_new_session=True, preexec_fn=limit,
                               stdin=subprocess.DEVNULL, **options)
    with running_lock:
        running.add(process)
    try:
        return process.wait(timeout=seconds)
    except subprocess.TimeoutExpired:
        return None
    finally:
        end_group(process)
        process.wait()
        with running_lock:
            running.discard(process)


class Bench:
    """One area's objects and tests, as they are without a change."""

    def __init__(self, tree, tests, folder):
        self.tree, self.folder = tree, folder
        self.names = tree.sources_of(tests)
        tree.build_objects(self.names)
        self.names = tree.needed(self.names, folder)
        self.recent = {}  # by source: the tests that noticed last
        self.outcomes = set()  # hashes of the objects that were tested
        self.base = {}  # hashes of objects without a change
        self.sound = set()  # sources that compile without a change
        self.measure()

    def measure(self):
        """Runs all tests once; sets the order and the limits of time."""
        place = self.place('base')
        program, report = place / 'tests', place / 'report.json'
        if self.link({}, program) != 0:
            raise Failure('the tests cannot be linked')
        start = time.monotonic()
        code = self.test(place, program, [f'--gtest_output=json:{report}'], 600, 600)
        self.seconds = time.monotonic() - start
        if code != 0:
            raise Failure('tests fail without a change:\n' +
                               '\n'.join(failed_in(place / 'output')))
        if self.leaks(place, {}, ''):
            raise Failure('tests leak without a change, or LeakSanitizer cannot be run')
        self.slow = []
        for suite in json.loads(report.read_text())['testsuites']:
            for case in suite['testsuite']:
                if float(case['time'].rstrip('s')) > SLOW:
                    self.slow.append(f"{suite['name']}.{case['name']}")

    def place(self, name):
        place = self.folder / name
        place.mkdir(exist_ok=True)
        return place

    def link(self, replaced, program, first='', options=()):
        """Links the tests. Those that are named like the changed source come first, then those of
        its folder."""
        folder, _, name = first.removeprefix('src/').rpartition('/')
        stem = name.split('.')[0]
        names = sorted(self.names, key=lambda name: (not (stem and stem in name),
                                                     not name.startswith(f'tests/{folder}/')))
        objects = [replaced.get(name, self.tree.object_of(name)) for name in names]
        return run(self.tree.link_words(objects, program) + list(options), 120,
                   cwd=self.tree.build, stderr=subprocess.DEVNULL)

    def test(self, place, program, options, seconds, cpu_seconds):
        scratch = place / 'scratch'
        shutil.rmtree(scratch, ignore_errors=True)
        scratch.mkdir()
        environment = dict(os.environ, TMPDIR=str(scratch), GTEST_FAIL_FAST='1')
        with open(place / 'output', 'wb') as output:
            return run([str(program)] + options, seconds, cpu_seconds, cwd=scratch,
                       env=environment, stdout=output, stderr=subprocess.STDOUT)

    def stages_of(self, path):
        """The sources that a changed file is compiled into. The tests that include a changed
        header come only when the library with the change has passed them, first those that are
        named like it: it takes its time."""
        if path.endswith('.cpp'):
            return [[path]]
        users = self.tree.users_of(path, self.names)
        # All of the library: of an inline variable the linker takes whichever it meets first.
        inner = [name for name in users if name.startswith('src/')]
        outer = [name for name in users if name.startswith('tests/')]
        stem = path.rsplit('/', 1)[-1].split('.')[0]
        named = [name for name in outer if stem in name]
        return [inner, named, [name for name in outer if name not in named]]

    def compile(self, place, path, text, names, options=()):
        """Objects of sources that hold the text; None when one does not compile."""
        changed = place / 'src' / path.removeprefix('src/')
        changed.parent.mkdir(parents=True, exist_ok=True)
        changed.write_text(text)
        objects = {}
        for name in names:
            target = place / (name.replace('/', '_') + ''.join(options) + '.o')
            source = changed if name == path else self.tree.source / name
            command = self.tree.compile_command(name, source, target, [place / 'src'], options)
            if run(command, 300, cwd=self.tree.build, stderr=subprocess.DEVNULL) != 0:
                objects = None
                break
            objects[name] = target
        changed.unlink()
        return objects

    def is_changed(self, place, path, source, objects, options=()):
        """Whether one of the objects differs from what the file gives without a change."""
        for name, target in objects.items():
            key = path, name, options
            if key not in self.base:
                if name.startswith('tests/'):
                    made = {name: self.tree.build / self.tree.object_of(name)}
                    self.base[key] = hash_of(made)
                else:
                    kept = target.rename(target.with_suffix('.kept'))
                    self.base[key] = hash_of(self.compile(place, path, source, [name], options))
                    kept.rename(target)
            if hash_of({name: target}) != self.base[key]:
                return True
        return False

    def demand_sound(self, place, path, source, names):
        """A change is to blame only when what is not changed compiles."""
        for name in names:
            if (path, name) in self.sound:
                continue
            if self.compile(place, path, source, [name]) is None:
                raise Failure(f'{name} does not compile, although nothing is changed in it')
            self.sound.add((path, name))

    def try_one(self, place, mutant, source):
        """What becomes of a mutant, and the test that noticed it."""
        text = source[:mutant.start] + mutant.text + source[mutant.end:]
        objects, is_tested = {}, False
        for names in self.stages_of(mutant.path):
            made = self.compile(place, mutant.path, text, names)
            if made is None:
                self.demand_sound(place, mutant.path, source, names)
                return 'broken', ''
            if not self.is_changed(place, mutant.path, source, made):
                continue
            objects.update(made)
            digest = hash_of(objects)
            if digest in self.outcomes:
                return 'repeated', ''
            self.outcomes.add(digest)
            program = place / 'tests'
            if self.link(objects, program, mutant.path) != 0:
                return 'broken', ''
            is_tested = True
            noticed = self.noticed_by(place, program, mutant.path)
            if noticed:
                return 'noticed', noticed
        if not is_tested:
            return 'identical', ''
        if self.leaks(place, objects, mutant.path):
            return 'noticed', LEAKS[0]
        inner = [name for name in objects if name.startswith('src/')]
        better = self.compile(place, mutant.path, text, inner, BETTER)
        if len(inner) == len(objects) and not self.is_changed(place, mutant.path, source, better,
                                                              BETTER):
            return 'identical', ''
        return 'survived', ''

    def leaks(self, place, objects, path):
        """Whether the tests fail when they look for leaks, as `./dev asan` does."""
        program = place / 'tests'
        if self.link(objects, program, path, LEAKS) != 0:
            return False
        return self.test(place, program, [], 10 + 20 * self.seconds,
                         int(5 + 8 * self.seconds)) != 0

    def noticed_by(self, place, program, path):
        recent = self.recent.setdefault(path, [])
        slow = ':'.join(self.slow)
        filters = [':'.join(recent)] if recent else []
        filters += [f'-{slow}', slow] if slow else ['*']
        seconds = 10 + 10 * self.seconds
        for names in filters:
            code = self.test(place, program, [f'--gtest_filter={names}'], seconds,
                             int(3 + 4 * self.seconds))
            if code == 0:
                continue
            failed = failed_in(place / 'output')
            name = failed[0] if failed else 'before any test'
            if failed:
                if name in recent:
                    recent.remove(name)
                recent.insert(0, name)
                del recent[RECENT:]
            return name
        return ''


def hash_of(objects):
    digest = hashlib.sha256()
    for name in sorted(objects):
        digest.update(name.encode() + b'\0' + objects[name].read_bytes())
    return digest.hexdigest()


def failed_in(output):
    """The tests that failed, or the one that was running at the end."""
    text = output.read_text(errors='replace')
    failed = re.findall(r'^\[  FAILED  \] ([\w/]+\.[\w/]+)', text, re.M)
    if failed:
        return list(dict.fromkeys(failed))
    begun = re.findall(r'^\[ RUN      \] (\S+)', text, re.M)
    return begun[-1:]
