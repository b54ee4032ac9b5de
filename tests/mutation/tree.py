"""A copy of the project that mutants are compiled and tested in; the checkout is never touched."""

import json
import os
import shlex
import shutil
import subprocess
import threading
from pathlib import Path

# Read once, not with each mutant; most of the time would go into them.
HEADERS = ('algorithm', 'array', 'atomic', 'bit', 'chrono', 'cmath', 'cstddef', 'cstdint',
           'cstring', 'filesystem', 'functional', 'initializer_list', 'iterator', 'map', 'memory',
           'mutex', 'new', 'span', 'string', 'string_view', 'thread', 'type_traits',
           'unordered_map', 'utility', 'vector')
# Bounds are checked as `./dev asan` would, where the library of the compiler can.
FLAGS = '-O1 -D_GLIBCXX_ASSERTIONS'


class Failure(Exception):
    """What keeps the check from being made at all."""


def output_of(command, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if done.returncode != 0:
        raise Failure(f'{shlex.join(map(str, command))}\n{done.stdout}{done.stderr}')
    return done.stdout


class Tree:
    """The copy, the build of what is not changed, and the commands by which it is built."""

    def __init__(self, root, work):
        self.root, self.work = root, work
        self.precompiling = threading.Lock()
        self.source, self.build = work / 'tree', work / 'build'
        self.copy()
        self.configure()
        database = json.loads((self.build / 'compile_commands.json').read_text())
        self.commands = {}  # path of a source, below the tree: object and command
        for entry in database:
            words = shlex.split(entry['command'])
            if 'ccache' in words[0]:
                del words[0]
            name = os.path.relpath(entry['file'], self.source)
            target = words[words.index('-o') + 1]
            if 'vkcl_objects' in target or 'vkcl_tests' in target:
                self.commands[name] = target, words
        self.link = self.link_command()

    def copy(self):
        listed = output_of(['git', 'ls-files', '-co', '--exclude-standard'], cwd=self.root)
        names = {name for name in listed.splitlines() if (self.root / name).is_file()}
        for name in names:
            old, new = self.root / name, self.source / name
            new.parent.mkdir(parents=True, exist_ok=True)
            if not new.exists() or new.read_bytes() != old.read_bytes():
                shutil.copy(old, new)
        for path in [p for p in self.source.rglob('*') if p.is_file()]:
            if str(path.relative_to(self.source)) not in names:
                path.unlink()

    def configure(self):
        options = ['-G', 'Ninja', '-DCMAKE_BUILD_TYPE=Debug', f'-DCMAKE_CXX_FLAGS_DEBUG={FLAGS}',
                   '-DCMAKE_EXPORT_COMPILE_COMMANDS=ON', '-DVKCL_BUILD_TESTS=ON',
                   '-DVKCL_BUILD_TOOL=OFF', '-DVKCL_BUILD_EXAMPLES=OFF',
                   '-DVKCL_WARNINGS_AS_ERRORS=OFF', '-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=mold']
        output_of(['cmake', '-S', self.source, '-B', self.build] + options)

    def link_command(self):
        lines = output_of(['ninja', '-C', self.build, '-t', 'commands', 'vkcl_tests']).splitlines()
        for line in reversed(lines):
            for part in line.split(' && '):
                if ' -o tests/vkcl_tests ' in part:
                    return shlex.split(part)
        raise Failure('there is no command that links vkcl_tests')

    def object_of(self, name):
        return self.commands[name][0]

    def sources_of(self, patterns):
        """The sources of the library and the named ones of the tests, all that are linked."""
        wanted = ['src/**/*.cpp', 'tests/support/*.cpp'] + list(patterns)
        found = []
        for pattern in wanted:
            found += [str(p.relative_to(self.source)) for p in sorted(self.source.glob(pattern))]
        return [name for name in dict.fromkeys(found) if name in self.commands]

    def build_objects(self, names):
        targets = [self.object_of(name) for name in names]
        jobs = str(os.cpu_count() // 2 or 1)
        done = subprocess.run(['ninja', '-C', str(self.build), '-j', jobs, *targets],
                              stdout=subprocess.PIPE, text=True)
        if done.returncode != 0:
            raise Failure(done.stdout[-4000:])

    def users_of(self, header, names):
        """The sources that include a header."""
        depends = output_of(['ninja', '-C', self.build, '-t', 'deps'] +
                            [self.object_of(name) for name in names])
        users, current = [], None
        by_object = {self.object_of(name): name for name in names}
        for line in depends.splitlines():
            if line.startswith('    '):
                if current and os.path.normpath(self.build / line.strip()) == str(
                        self.source / header):
                    users.append(current)
            elif line:
                current = by_object.get(line.split(':')[0])
        return users

    def precompiled(self, options):
        """Arguments that spare the reading of the standard headers to a source of the library."""
        header = self.work / f"headers{'_'.join(['', *options]).replace('-', '')}.h"
        text = ''.join(f'#include <{name}>\n' for name in HEADERS)
        compiled = header.with_name(header.name + '.gch')
        with self.precompiling:  # half of it is none, and the compiler does not notice
            if not compiled.exists() or header.read_text() != text:
                compiled.unlink(missing_ok=True)
                header.write_text(text)
                name = next(n for n, (target, _) in self.commands.items()
                            if 'vkcl_objects' in target)
                new = compiled.with_name(compiled.name + '.new')
                output_of(self.options_of(name) + [*options, '-w', '-x', 'c++-header', str(header),
                                                   '-o', str(new)], cwd=self.build)
                new.rename(compiled)
        return ['-include', str(header)]

    def options_of(self, name):
        """The project's own command for a source, without the files."""
        kept, skip = [], False
        for word in self.commands[name][1]:
            if skip:
                skip = False
            elif word in ('-MT', '-MF', '-o'):
                skip = True
            elif word not in ('-MD', '-c') and not word.endswith('/' + name):
                kept.append(word)
        return kept

    def compile_command(self, name, source, target, includes=(), options=()):
        """The project's own command for a source, with another file in its place."""
        words = self.options_of(name)
        words[1:1] = [f'-I{folder}' for folder in includes]
        if name.startswith('src/'):
            words += self.precompiled(options)
        return words + [*options, '-w', '-c', str(source), '-o', str(target)]

    def needed(self, names, folder):
        """Of these sources the tests, and what of the library is linked to them."""
        library = folder / 'library.a'
        inner = [name for name in names if name.startswith('src/')]
        outer = [name for name in names if not name.startswith('src/')]
        output_of(['ar', 'rcsT', library] + [self.build / self.object_of(name) for name in inner])
        trace = output_of(self.link_words([self.object_of(name) for name in outer] + [library],
                                          folder / 'tests') + ['-Wl,--trace'], cwd=self.build)
        return outer + [name for name in inner if self.object_of(name) in trace]

    def link_words(self, objects, target):
        """The project's own command, with these objects, for `target`."""
        words = [w for w in self.link if not w.endswith('.o')]
        place = words.index('-o')
        words[place + 1] = str(target)
        return words[:place] + [str(o) for o in objects] + words[place:]
