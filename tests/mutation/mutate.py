#!/usr/bin/env python3
"""Changes the library in one place at a time and counts the changes that no test notices.

usage: mutate.py [AREA|FILE|each|again] [COUNT] [SEED] [--jobs N]
       mutate.py all [AREA] [--fresh] [--jobs N]

The first form tries a sample: of an area (areas.py), of a file, of each area (the default), or again
what survived in the last run. COUNT is the size of each sample, 0 for everything.

The second form tries every change, goes on where it was stopped, and writes its table into
docs/mutation.md. --fresh forgets what was found before.

The exit code is 0 when in each area at least 90 of 100 changes are noticed (97 with `all`), leaving
out those that survivors.txt names.
"""

import argparse
import json
import os
import queue
import random
import signal
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))

import areas
import page
import survivors
from mutants import mutants
from record import Record, code_digest, digest
from trial import Bench, stop_all
from tree import Failure, Tree

ROOT = Path(__file__).resolve().parents[2]
WORK = ROOT / 'build' / 'mutation'
LAST = WORK / 'last.json'
SHORT_LIVED = '/dev/shm'  # memory: the tests wait for what they write to be on the disk
RECORD = WORK / 'record.jsonl'
PAGE = ROOT / 'docs' / 'mutation.md'
LEAST_SHARE = 0.9
LEAST_OF_ALL = 0.97
COLUMNS = ('made', 'broken', 'identical', 'repeated', 'noticed', 'survived', 'known')


def sources_in(tree, patterns):
    found = [p for pattern in patterns for p in sorted(tree.source.glob(pattern))]
    return [str(p.relative_to(tree.source)) for p in found]


def work_of(tree, what):
    """Names, sources and tests of what is to be looked at."""
    if what in ('each', 'again'):
        return [(name, sources_in(tree, area['sources']), area['tests'])
                for name, area in areas.AREAS.items()]
    if what in areas.AREAS:
        area = areas.AREAS[what]
        return [(what, sources_in(tree, area['sources']), area['tests'])]
    if not (tree.source / what).is_file():
        raise Failure(f'{what} is no area, and no file of the project')
    for area in areas.AREAS.values():
        if what in sources_in(tree, area['sources']):
            return [(what, [what], area['tests'])]
    return [(what, [what], areas.tests_of(what))]


def sample_of(texts, count, seed, again):
    found = [m for path, text in texts.items() for m in mutants(path, text)]
    if again is not None:
        return [m for m in found if m.key in again]
    if count and count < len(found):
        found = random.Random(seed).sample(found, count)
    return sorted(found, key=lambda m: (m.path, m.start, m.end, m.text))


class Progress:
    def __init__(self, total):
        self.total, self.done, self.survived, self.start = total, 0, 0, time.monotonic()

    def show(self, mutant, outcome):
        self.done += 1
        if outcome == 'survived':
            self.survived += 1
            print(f'\rsurvived: {mutant.path}:{mutant.line}\n{mutant.after}', file=sys.stderr)
        pace = (time.monotonic() - self.start) / self.done
        if sys.stderr.isatty() or self.done % 20 == 0:
            print(f'\r{self.done} of {self.total}, {self.survived} survived, {pace:.1f} s each ',
                  end='' if sys.stderr.isatty() else '\n', file=sys.stderr, flush=True)


def try_all(bench, sample, texts, jobs, found=lambda mutant, outcome: None):
    """Outcome and noticing test of each mutant, in the order of the sample; `found` is told each."""
    places = queue.SimpleQueue()
    for i in range(jobs):
        places.put(bench.place(f'worker{i}'))
    progress = Progress(len(sample))

    def one(mutant):
        place = places.get()
        try:
            outcome = bench.try_one(place, mutant, texts[mutant.path])
        finally:
            places.put(place)
        progress.show(mutant, outcome[0])
        found(mutant, outcome)
        return outcome

    with ThreadPoolExecutor(jobs) as pool:
        try:
            return list(pool.map(one, sample))
        except BaseException:
            pool.shutdown(wait=False, cancel_futures=True)
            stop_all()
            raise


def print_counts(name, counts):
    part = '-'
    if counts['noticed'] + counts['survived']:
        part = f"{100 * page.share(counts):.1f} %"
    print(f'{name:<44}' + ''.join(f'{counts[c]:>10}' for c in COLUMNS) + f'{part:>10}')


def report(name, sample, outcomes, known):
    """Prints an area. Its counts, with those of survivors that are known apart; the others."""
    by_file, missed, forgiven, stale = {}, [], [], []
    for mutant, (outcome, test) in zip(sample, outcomes):
        counts = by_file.setdefault(mutant.path, dict.fromkeys(COLUMNS, 0))
        counts['made'] += 1
        if outcome == 'survived' and mutant.key in known:
            outcome = 'known'
            forgiven.append(mutant)
        elif outcome == 'survived':
            missed.append(mutant)
        elif outcome == 'noticed' and mutant.key in known:
            stale.append((mutant, test))
        counts[outcome] += 1
    total = {c: sum(counts[c] for counts in by_file.values()) for c in COLUMNS}
    print(f"\n{name:<44}" + ''.join(f'{c:>10}' for c in COLUMNS) + f"{'share':>10}")
    for path, counts in by_file.items():
        print_counts(path, counts)
    print_counts('together', total)
    print(f'share with the known survivors: {100 * page.share_with_known(total):.1f} %')
    for mutant in forgiven:
        print(f'\nknown: {mutant.path}:{mutant.line}\n- {mutant.before}\n+ {mutant.after}\n'
              f'  {known[mutant.key]}')
    for mutant, test in stale:
        print(f'\nlisted as a survivor, yet noticed by {test}: {survivors.show(mutant)}')
    for mutant in missed:
        print(f'\nSURVIVED: {mutant.path}:{mutant.line}\n- {mutant.before}\n+ {mutant.after}')
    return total, missed


def with_bench(tree, tests, use):
    """Gives `use` the tests of an area, in a folder that is gone afterwards."""
    memory = SHORT_LIVED if os.path.isdir(SHORT_LIVED) else None
    with tempfile.TemporaryDirectory(prefix='vkcl-mutate-', dir=memory) as run:
        os.chmod(run, 0o755)  # some tests go on as another user
        return use(Bench(tree, tests, Path(run)))


def sampled(options, tree, known):
    again = None
    if options.what == 'again':
        again = {tuple(key) for key in json.loads(LAST.read_text())['survived']}
    totals, survived, noticed = {}, [], {}
    for name, sources, tests in work_of(tree, options.what):
        texts = {path: (tree.source / path).read_text() for path in sources}
        sample = sample_of(texts, options.count, options.seed, again)
        if not sample:
            continue
        print(f'{name}: {len(sample)} changes, seed {options.seed}', flush=True)
        outcomes = with_bench(tree, tests,
                              lambda bench: try_all(bench, sample, texts, options.jobs))
        totals[name], missed = report(name, sample, outcomes, known)
        survived += [m.key for m in missed]
        for _, test in outcomes:
            noticed[test] = noticed.get(test, 0) + 1
    LAST.write_text(json.dumps({'survived': survived, 'noticed_by': noticed}, indent=1))
    return totals


def every_change(tree, name, record, jobs):
    """Every change of an area, in order, and what became of it; only the unknown ones are tried."""
    area = areas.AREAS[name]
    sources = sources_in(tree, area['sources'])
    texts = {path: (tree.source / path).read_text() for path in sources}
    tests = digest(''.join((tree.source / path).read_text()
                           for path in sources_in(tree, area['tests'])))
    keys, sample = {}, []
    for path, text in texts.items():
        for number, mutant in enumerate(mutants(path, text)):
            keys[mutant] = path, code_digest(text), number
            sample.append(mutant)
    left = [m for m in sample if record.find(keys[m], tests) is None]
    print(f'{name}: {len(sample)} changes, {len(left)} to be tried', flush=True)
    if left:
        with_bench(tree, area['tests'], lambda bench: try_all(
            bench, left, texts, jobs,
            lambda mutant, outcome: record.add(keys[mutant], tests, *outcome)))
    return sample, [record.find(keys[m], tests) for m in sample]


def every(options, tree, known):
    record = Record(RECORD)
    if options.fresh:
        record.forget()
    names = [options.area] if options.area else list(areas.AREAS)
    totals, survived = {}, []
    for name in names:
        sample, outcomes = every_change(tree, name, record, options.jobs)
        totals[name], missed = report(name, sample, outcomes, known)
        survived += [m.key for m in missed]
        page.write(PAGE, name, totals[name])
    LAST.write_text(json.dumps({'survived': survived}, indent=1))
    return totals


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, usage=argparse.SUPPRESS,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('what', nargs='?', default='each')
    parser.add_argument('count', nargs='?', default='100')
    parser.add_argument('seed', nargs='?', type=int, default=1)
    parser.add_argument('--fresh', action='store_true')
    parser.add_argument('--jobs', type=int, default=os.cpu_count() or 1)
    given = parser.parse_args()
    if given.what == 'all':
        given.area = given.count if given.count != '100' else None
        if given.area and given.area not in areas.AREAS:
            parser.error(f'{given.area} is not an area: {", ".join(areas.AREAS)}')
    else:
        given.count = int(given.count)
    return given


def main():
    options = arguments()
    known = survivors.read(Path(__file__).resolve().parent / 'survivors.txt')
    tree = Tree(ROOT, WORK)
    is_all = options.what == 'all'
    totals = (every if is_all else sampled)(options, tree, known)
    print()
    for name, total in totals.items():
        print(f'{name}: {100 * page.share(total):.1f} % noticed')
    least = LEAST_OF_ALL if is_all else LEAST_SHARE
    return 0 if all(page.share(total) >= least for total in totals.values()) else 1


def stop(*_):
    raise KeyboardInterrupt


if __name__ == '__main__':
    signal.signal(signal.SIGTERM, stop)
    signal.signal(signal.SIGINT, stop)  # also where the shell has it ignored
    try:
        sys.exit(main())
    except Failure as failure:
        sys.exit(f'mutate: {failure}')
    except KeyboardInterrupt:
        sys.exit('mutate: stopped')
