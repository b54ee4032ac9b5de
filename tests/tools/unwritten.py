#!/usr/bin/env python3
"""Asks for files where none can be written: the tool says why, and leaves everything as it was.

usage: unwritten.py TOOL PROFILE
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

# Of root's rights the one to write everywhere is taken away.
AS_ANYBODY = ["setpriv", "--bounding-set=-dac_override,-dac_read_search"]

# A file that may be written is written into, or removed where its folder allows that.
CAN_WRITE = {("strip", "closed/file"), ("extract", "closed/file"), ("extract", "kept")}


def run(words, folder):
    return subprocess.run(words, cwd=folder, capture_output=True, text=True, check=False)


def content_of(folder):
    return {path.relative_to(folder): path.read_bytes() if path.is_file() else None
            for path in folder.rglob("*")}


def main():
    tool = os.path.abspath(sys.argv[1])
    anybody = AS_ANYBODY if os.geteuid() == 0 else []
    permissions_count = run([*anybody, "true"], ".").returncode == 0
    with tempfile.TemporaryDirectory(prefix="vkcl-unwritten-") as name:
        folder = pathlib.Path(name)
        shutil.copyfile(sys.argv[2], folder / "p.icc")
        for words in (["set", "p.icc", "Wizard.value=1"], ["embed", "p.icc", "profile1", "p.icc"]):
            assert run([tool, *words], folder).returncode == 0, words
        (folder / "file").write_bytes(b"old")
        (folder / "closed").mkdir()
        (folder / "closed" / "file").write_bytes(b"old")
        (folder / "kept").write_bytes(b"old")
        (folder / "kept").chmod(0o444)
        (folder / "closed").chmod(0o555)
        os.mkfifo(folder / "pipe")
        (folder / "dangling").symlink_to("none/new")
        verbs = {"compact": lambda to: ["compact", "p.icc", to],
                 "strip": lambda to: ["strip", "--force", "p.icc", to],
                 "dump": lambda to: ["dump", "--force", "p.icc", "-o", to],
                 "extract": lambda to: ["extract", "--force", "p.icc", "profile1", to],
                 "report": lambda to: ["report", "--force", "p.icc", "-o", to],
                 "split": lambda to: ["split", "--default", "2", "--force", "--xml", to]}
        into_closed = "nothing can be written into the folder closed: Permission denied"
        cases = {"none/new": "none/new could not be written: there is no folder none",
                 "file/new": "file/new could not be written: file is no folder",
                 "closed": "closed is a folder",
                 "pipe": "pipe is not a regular file",
                 "dangling": "dangling could not be written: it is a link that leads nowhere",
                 "x" * 300: "x" * 300 + " could not be written: File name too long",
                 "closed/new": f"closed/new could not be written: {into_closed}",
                 "closed/file": f"closed/file could not be written: {into_closed}",
                 "kept": "kept could not be written: Permission denied"}
        if not permissions_count:
            print("without permissions: root keeps its rights here")
            anybody = []
            cases = {to: why for to, why in cases.items() if "Permission" not in why}
        before = content_of(folder)
        for verb, words in verbs.items():
            for to, why in cases.items():
                if (verb, to) in CAN_WRITE:
                    continue
                if verb == "compact" and len(to) < 256 and (folder / to).exists():
                    why = f"{to} exists"  # it never replaces anything
                done = run([*anybody, tool, *words(to)], folder)
                of = "" if verb in ("report", "split") else "p.icc: "
                told = (done.returncode, done.stdout, done.stderr)
                assert told == (1, "", f"vkcl: {of}{why}\n"), (verb, to, told)
            assert content_of(folder) == before, verb
            done = run([*anybody, tool, *words("new")], folder)
            assert done.returncode == 0 and (folder / "new").stat().st_size > 0, (verb, done)
            (folder / "new").unlink()
        (folder / "closed").chmod(0o755)
    print("every refusal has its reason")


if __name__ == "__main__":
    main()
