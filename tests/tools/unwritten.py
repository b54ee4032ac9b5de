#!/usr/bin/env python3
"""Asks for files where none can be written: the tool says why, and leaves everything as it was.

usage: unwritten.py TOOL PROFILE
"""
import os
import pathlib
import resource
import shutil
import subprocess
import sys
import tempfile

# Of root's rights the one to write everywhere is taken away.
AS_ANYBODY = ["setpriv", "--bounding-set=-dac_override,-dac_read_search"]

VERBS = {"compact": lambda to: ["compact", "p.icc", to],
         "strip": lambda to: ["strip", "--force", "p.icc", to],
         "dump": lambda to: ["dump", "--force", "p.icc", "-o", to],
         "extract": lambda to: ["extract", "--force", "p.icc", "profile1", to],
         "report": lambda to: ["report", "--force", "p.icc", "-o", to],
         "split": lambda to: ["split", "--default", "2", "--force", "--xml", to]}

# No file may become longer than 100 bytes. A build that counts what runs cannot save its counts so,
# and says so behind the refusal.
LIMITED = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100)),
           "env": {**os.environ, "GCOV_PREFIX": os.devnull}}

# A file that may be written is written into, or removed where its folder allows that.
CAN_WRITE = {("strip", "closed/file"), ("extract", "closed/file"), ("extract", "kept")}


def run(words, folder, **options):
    return subprocess.run(words, cwd=folder, capture_output=True, text=True, check=False,
                          **options)


def content_of(folder):
    return {path.relative_to(folder): path.read_bytes() if path.is_file() else None
            for path in folder.rglob("*")}


def make_files(tool, profile, folder):
    shutil.copyfile(profile, folder / "p.icc")
    for words in (["set", "p.icc", "Wizard.value=1"], ["embed", "p.icc", "profile1", "p.icc"]):
        assert run([tool, *words], folder).returncode == 0, words
    (folder / "closed").mkdir()
    for name in ("file", "kept", "closed/file"):
        (folder / name).write_bytes(b"old")
    for name in ("kept.icc", "closed/p.icc"):
        shutil.copyfile(folder / "p.icc", folder / name)
    os.mkfifo(folder / "pipe")
    (folder / "dangling").symlink_to("none/new")
    (folder / "link.icc").symlink_to("closed/p.icc")
    for name, mode in (("kept", 0o444), ("kept.icc", 0o444), ("closed", 0o555)):
        (folder / name).chmod(mode)


def refusals(folder):
    """Commands, and why they are refused."""
    into_closed = "nothing can be written into the folder {}: Permission denied"
    cases = {"none/new": "none/new could not be written: there is no folder none",
             "file/new": "file/new could not be written: file is no folder",
             "closed": "closed is a folder",
             "pipe": "pipe is not a regular file",
             "dangling": "dangling could not be written: it is a link that leads nowhere",
             "x" * 300: "x" * 300 + " could not be written: File name too long",
             "closed/new": "closed/new could not be written: " + into_closed.format("closed"),
             "closed/file": "closed/file could not be written: " + into_closed.format("closed"),
             "kept": "kept could not be written: Permission denied"}
    for verb, words in VERBS.items():
        for to, why in cases.items():
            if (verb, to) in CAN_WRITE:
                continue
            if verb == "compact" and len(to) < 256 and (folder / to).exists():
                why = f"{to} exists"  # it never replaces anything
            yield words(to), why if verb in ("report", "split") else f"p.icc: {why}"
    for to in ("none/new", "file/new", "dangling", "closed/new"):
        for how in (["--dry-run"], []):
            yield ["set", *how, "--create", "4", to, "Wizard.value=1"], f"{to}: {cases[to]}"
    beside = "it cannot be written, or a file cannot be made beside it: "
    for name, why in (("kept.icc", "Permission denied"),
                      ("closed/p.icc", into_closed.format("closed")),
                      ("link.icc", into_closed.format(folder / "closed"))):
        yield ["set", name, "Wizard.value=2"], f"{name}: {beside}{why}"


def main():
    tool = os.path.abspath(sys.argv[1])
    anybody = AS_ANYBODY if os.geteuid() == 0 else []
    permissions_count = run([*anybody, "true"], ".").returncode == 0
    if not permissions_count:
        print("without permissions: root keeps its rights here")
        anybody = []
    with tempfile.TemporaryDirectory(prefix="vkcl-unwritten-") as name:
        folder = pathlib.Path(name).resolve()
        make_files(tool, sys.argv[2], folder)
        before = content_of(folder)
        for words, why in refusals(folder):
            if "Permission" in why and not permissions_count:
                continue
            done = run([*anybody, tool, *words], folder)
            told = (done.returncode, done.stdout, done.stderr)
            assert told == (1, "", f"vkcl: {why}\n"), (words, told)
            assert content_of(folder) == before, words
        # The system would end the tool, unless it asks for errors.
        for words in (["set", "p.icc", "Wizard.value=2"], ["embed", "p.icc", "trc", "file"],
                      ["embed", "--in-place", "p.icc", "trc", "file"],
                      *(words("new") for words in VERBS.values())):
            done = run([tool, *words], folder, **LIMITED)
            assert done.returncode == 1 and done.stderr.startswith("vkcl: "), (words, done)
            assert content_of(folder) == before, words
        for verb, words in VERBS.items():
            done = run([*anybody, tool, *words("new")], folder)
            assert done.returncode == 0 and (folder / "new").stat().st_size > 0, (verb, done)
            (folder / "new").unlink()
        (folder / "closed").chmod(0o755)
    print("every refusal has its reason")


if __name__ == "__main__":
    main()
