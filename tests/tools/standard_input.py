#!/usr/bin/env python3
"""Gives the tool profiles through the standard input.

usage: standard_input.py TOOL REAL_PROFILE_FOLDER
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

from run_golden import make_files

READING = [["info"], ["info", "--json"], ["check"], ["check", "--json"], ["lists", "--values"],
           ["target"], ["options"], ["split"], ["dump"], ["dump", "--json"]]
WRITING = [["set", "-", "Wizard.value=1"], ["lock", "-"], ["unlock", "-"], ["strip", "-", "out.icc"],
           ["strip", "own.icc", "-"], ["merge", "own.icc", "-"], ["embed", "-", "trc", "curves.txt"],
           ["split", "-", "--from-xml", "split.xml"], ["split", "own.icc", "--xml", "-"],
           ["compact", "own.icc", "-"], ["vsd", "-"], ["report", "-", "-o", "out.html"],
           ["apply", "-", "document.json"], ["dump", "own.icc", "-o", "-"]]


def main():
    tool, real = os.path.abspath(sys.argv[1]), pathlib.Path(sys.argv[2])
    with tempfile.TemporaryDirectory(prefix="vkcl-input-") as name:
        folder, kept = pathlib.Path(name) / "work", pathlib.Path(name) / "kept"
        folder.mkdir()
        kept.mkdir()
        make_files(folder, real)
        shutil.copyfile(folder / "own.icc", folder / "-")

        def run(*words, **given):
            done = subprocess.run([tool, *words], cwd=folder, capture_output=True, check=False,
                                  env={**os.environ, "TMPDIR": str(kept)}, **given)
            assert not list(kept.iterdir()), (words, list(kept.iterdir()))
            return done.returncode, done.stdout, done.stderr

        for verb in READING:
            for profile in "own.icc", "press.icc", "hostile.icc", "short.icc":
                expected = run(*verb, profile)
                content = (folder / profile).read_bytes()
                with open(folder / profile, "rb") as file:
                    seen = [run(*verb, "-", input=content), run(*verb, "-", stdin=file)]
                for code, text, error in seen:
                    named = (code, text.replace(b"-", profile.encode(), 1)
                             if text.startswith(b"-\n") or text.startswith(b"-: ")
                             else text.replace(b'"file": "-"', b'"file": "%s"' % profile.encode()),
                             error.replace(b"vkcl: -: ", b"vkcl: %s: " % profile.encode()))
                    assert named == expected, (verb, profile, named, expected)
            code, text, error = run(*verb, "-", stdin=subprocess.DEVNULL)
            assert code == 1 and b"nothing comes through" in text + error, (verb, text, error)
            code, text, error = run(*verb, "-", preexec_fn=lambda: os.close(0))
            assert code == 1 and b"cannot be read" in text + error, (verb, text, error)
        own = (folder / "own.icc").read_bytes()
        assert run("diff", "-", "own.icc", input=own) == (0, b"no differences\n", b"")
        for words in ["-", "plain.icc"], ["plain.icc", "-"]:
            same = ["own.icc" if word == "-" else word for word in words]
            seen = run("diff", *words, input=own)
            assert seen == run("diff", *same) and seen[0] == 1, (words, seen)
        code, _, error = run("diff", "own.icc", "-", input=b"hello")
        assert code == 1 and error.startswith(b"vkcl: -: the file is 5 bytes long"), error
        document = run("dump", "--json", "own.icc")[1]
        code, _, error = run("apply", "plain.icc", "-", "-o", "applied.icc", input=document)
        assert code == 0 and run("dump", "--json", "applied.icc")[1] == document, error
        before = {path.name: path.stat().st_mtime_ns for path in folder.iterdir()}
        for words in WRITING:
            code, text, error = run(*words, input=(folder / "own.icc").read_bytes())
            assert (code, text) == (2, b"") and b"-" in error, (words, code, text, error)
        assert before == {path.name: path.stat().st_mtime_ns for path in folder.iterdir()}
        assert run("info", "./-")[1].startswith(b"./-\n")
        twice = run("info", "-", "plain.icc", "-", input=(folder / "own.icc").read_bytes())
        assert twice[0] == 0 and twice[1].count(b"\n  own profile     yes\n") == 2, twice
        with open(folder / "endless", "w+b") as file:
            file.truncate(2 ** 32)
            code, _, error = run("lists", "-", stdin=file)
        assert code == 1 and b"more comes through the standard input" in error, error
    print("the standard input is as good as a file")


if __name__ == "__main__":
    main()
