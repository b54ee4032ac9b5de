#!/usr/bin/env python3
"""Kills the tool in the middle of edits: the profile must be the old one or the new one, whole; of
a copy, there must be none or the whole one.

usage: kill_edits.py TOOL REAL_PROFILE_FOLDER [--kills N] [--seed S] [--verb VERB ...]
       kill_edits.py TOOL REAL_PROFILE_FOLDER --calls [--verb VERB ...]

Each verb is tried on a profile in table order and on one whose tags share blocks. Without --calls
it is killed N times: in turn at a random moment of its run, and at a random moment from the one on
where its new file stands beside the profile, which is a small part of the run. With --calls it is
killed by strace, before each system call from the first that names the profile on. Exit 77 where
strace is missing or may not trace.
"""
import argparse
import collections
import ctypes
import ctypes.util
import os
import pathlib
import random
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time

PROFILES = {"ordered": "ghostscript/esrgb.icc", "shared": "ghostscript/default_cmyk.icc"}
LINK = "ghostscript/srgb.icc"
OWN = ["ColorParam.Make=Acme", "SingleInkLimit.limits=100,95,90,85", "MultiInkLimit.limits[4]=180"]
VERBS = ["set", "embed", "merge", "unlock", "lock", "compact", "strip"]
COPIES = ["compact", "strip"]
SKIPPED = 77
# So many more kills may be aimed at the new file of an edit until one has left it behind.
MORE_KILLS = 500


def run(*words):
    subprocess.run(words, stdout=subprocess.DEVNULL, check=True)


class LittleCms:
    """Whether Little CMS opens a profile and reads every tag of it, where there is one."""

    def __init__(self):
        self.lib = ctypes.CDLL(ctypes.util.find_library("lcms2"))
        self.lib.cmsOpenProfileFromMem.restype = ctypes.c_void_p
        self.seen = {None: True}

    def reads(self, content):
        if content not in self.seen:
            self.seen[content] = self.read(content)
        return self.seen[content]

    def read(self, content):
        profile = self.lib.cmsOpenProfileFromMem(content, ctypes.c_uint32(len(content)))
        if not profile:
            return False
        profile = ctypes.c_void_p(profile)
        count = self.lib.cmsGetTagCount(profile)
        lengths = [self.lib.cmsReadRawTag(profile, self.lib.cmsGetTagSignature(
            profile, ctypes.c_uint32(i)), None, ctypes.c_uint32(0)) for i in range(count)]
        self.lib.cmsCloseProfile(profile)
        return count > 0 and all(length > 0 for length in lengths)


class Edit:
    """One verb on one profile, in a folder of its own."""

    def __init__(self, tool, real, folder, verb, layout):
        self.name = f"{verb} {layout}"
        self.folder = folder / self.name.replace(" ", "-")
        self.folder.mkdir()
        self.path = self.folder / "press.icc"
        other = folder / f"{self.folder.name}-other.icc"
        shutil.copyfile(real / PROFILES[layout], self.path)
        shutil.copyfile(real / LINK, other)
        if verb in ("unlock", "lock"):
            run(tool, "set", str(self.path), *OWN)
        if verb == "lock":
            run(tool, "unlock", str(self.path))
        if verb in ("merge", "strip"):
            run(tool, "set", str(other), *OWN)
        if verb == "compact":
            shutil.copyfile(real / PROFILES[layout], other)
        if verb in COPIES:
            self.path.unlink()
        path = str(self.path)
        self.command = {"set": [tool, "set", path, *OWN, "Wizard.value=1"],
                        "embed": [tool, "embed", path, "profile1", str(other)],
                        "merge": [tool, "merge", str(other), path],
                        "unlock": [tool, "unlock", path],
                        "lock": [tool, "lock", path],
                        "compact": [tool, "compact", str(other), path],
                        "strip": [tool, "strip", str(other), path]}[verb]
        self.old = self.content()
        self.new = None
        self.counts = collections.Counter()

    def content(self):
        return self.path.read_bytes() if self.path.exists() else None

    def restore(self):
        if self.old is None:
            self.path.unlink(missing_ok=True)
        else:
            self.path.write_bytes(self.old)

    def first_file(self):
        """The file that the tool opens first."""
        return next(word for word in self.command if word.endswith(".icc"))

    def leftovers(self):
        return [path for path in self.folder.iterdir() if path != self.path]

    def undisturbed(self):
        """The profile after the edit, and how long that took. It must be all that there is."""
        self.restore()
        process = subprocess.Popen(self.command, stdout=subprocess.DEVNULL)
        start = time.perf_counter()
        assert process.wait() == 0, self.name
        took = time.perf_counter() - start
        assert not self.leftovers(), (self.name, self.leftovers())
        return self.content(), took

    def judge(self, little_cms):
        """Looks at what a killed edit has left, and edits again."""
        content = self.content()
        kind = "old" if content == self.old else "new" if content == self.new else "other"
        if not little_cms.reads(content):
            kind = "other"
        self.counts[kind] += 1
        if kind == "other":
            print(f"{self.name}: {len(content or b'')} bytes that are neither the old nor the new profile")
        if self.leftovers():
            self.counts["leftovers"] += 1
            if self.undisturbed()[0] != self.new:
                self.counts["other"] += 1
                print(f"{self.name}: the next edit gives something else")
        if self.content() != self.old:
            self.restore()


def prepare(edits, little_cms):
    """What each edit gives, by undisturbed runs in different seconds."""
    for edit in edits:
        edit.new, _ = edit.undisturbed()
        assert edit.new != edit.old, edit.name
        assert little_cms.reads(edit.old) and little_cms.reads(edit.new), edit.name
    time.sleep(1.1)
    for edit in edits:
        assert edit.undisturbed()[0] == edit.new, f"{edit.name} depends on the time"


class Run:
    """A run of an edit from its start, to be killed."""

    def __init__(self, edit):
        self.edit = edit
        self.process = subprocess.Popen(edit.command, stdout=subprocess.DEVNULL)
        self.start = time.perf_counter()

    def wait_for_new_file(self):
        """Waits until there is a file beside the profile, or until the run has ended."""
        while self.process.poll() is None and not self.edit.leftovers():
            pass
        return time.perf_counter()

    def kill(self, moment, little_cms):
        while time.perf_counter() < moment:
            pass
        self.process.kill()
        killed = self.process.wait() == -signal.SIGKILL
        self.edit.counts["killed" if killed else "ended before"] += 1
        self.edit.judge(little_cms)


def with_new_file(edit):
    """For how long an undisturbed edit has its new file beside the profile."""
    edit.restore()
    run_of_edit = Run(edit)
    appeared = run_of_edit.wait_for_new_file()
    while run_of_edit.process.poll() is None and edit.leftovers():
        pass
    gone = time.perf_counter()
    assert run_of_edit.process.wait() == 0, edit.name
    edit.restore()
    return gone - appeared


def kill_at_random(edits, kills, seed, little_cms):
    chance = random.Random(seed)
    print(f"seed {seed}")
    for number, edit in enumerate(edits):
        duration = statistics.median(edit.undisturbed()[1] for _ in range(7))
        window = statistics.median(with_new_file(edit) for _ in range(7))
        edit.restore()
        share = kills // len(edits) + (number < kills % len(edits))
        done = 0
        while done < share or (edit.counts["leftovers"] == 0 and done < share + MORE_KILLS):
            begun = Run(edit)
            if done < share and done % 2 == 0:
                begun.kill(begun.start + chance.uniform(0, 1.1 * duration), little_cms)
            else:
                begun.kill(begun.wait_for_new_file() + chance.uniform(0, window), little_cms)
            done += 1
        print(f"{edit.name}: {1000 * duration:.1f} ms, {1000 * window:.2f} ms of them with a new "
              f"file; {dict(edit.counts)}", flush=True)


def may_trace():
    if shutil.which("strace") is None:
        return False
    return subprocess.run(["strace", "-o", os.devnull, "true"], stdout=subprocess.DEVNULL,
                          stderr=subprocess.DEVNULL, check=False).returncode == 0


def calls_of(edit, log):
    """The system calls from the first that names the profile on: names, and the how manieth each
    is of its name."""
    edit.restore()
    run("strace", "-o", str(log), *edit.command)
    lines = [line for line in log.read_text("utf-8", "replace").splitlines() if "(" in line]
    count = collections.Counter()
    calls = []
    for line in lines:
        name = line.split("(")[0]
        count[name] += 1
        if name != "execve" and (calls or edit.first_file() in line):
            calls.append((name, count[name]))
    return calls


def kill_at_calls(edits, little_cms):
    # Leaks cannot be looked for under a tracer.
    os.environ["ASAN_OPTIONS"] = os.environ.get("ASAN_OPTIONS", "") + ":detect_leaks=0"
    for edit in edits:
        edit.restore()
        for name, number in calls_of(edit, edit.folder.parent / "calls"):
            edit.restore()
            ended = subprocess.run(["strace", "-qq", "-o", os.devnull, "-e", f"trace={name}", "-e",
                                    f"inject={name}:signal=KILL:when={number}", *edit.command],
                                   stdout=subprocess.DEVNULL, check=False).returncode
            killed = ended in (-signal.SIGKILL, 128 + signal.SIGKILL)
            assert killed or ended == 0, (edit.name, name, number, ended)
            edit.counts["killed" if killed else "ended before"] += 1
            edit.judge(little_cms)
        print(f"{edit.name}: {dict(edit.counts)}", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("tool")
    parser.add_argument("real", type=pathlib.Path)
    parser.add_argument("--kills", type=int, default=150)
    parser.add_argument("--seed", type=int, default=20011204)
    parser.add_argument("--verb", choices=VERBS, action="append")
    parser.add_argument("--calls", action="store_true")
    given = parser.parse_args()
    if given.calls and not may_trace():
        print("SKIPPED: strace is not installed, or may not trace here")
        return SKIPPED
    verbs = given.verb or VERBS
    little_cms = LittleCms()
    with tempfile.TemporaryDirectory(prefix="vkcl-kill-") as name:
        edits = [Edit(given.tool, given.real, pathlib.Path(name), verb, layout)
                 for verb in verbs for layout in PROFILES]
        prepare(edits, little_cms)
        if given.calls:
            kill_at_calls(edits, little_cms)
        else:
            kill_at_random(edits, given.kills, given.seed, little_cms)
        total = sum((edit.counts for edit in edits), collections.Counter())
    print(f"all: {dict(total)}")
    whole = [edit.name for edit in edits if edit.counts["leftovers"] == 0]
    if whole:  # chance, where a single processor or a file system in memory leaves it no time
        print(f"never killed while there was a new file: {', '.join(whole)}")
    return 0 if total["other"] == 0 and len(whole) < len(edits) else 1


if __name__ == "__main__":
    sys.exit(main())
