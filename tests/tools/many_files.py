#!/usr/bin/env python3
"""Gives the tool many files and folders of files.

usage: many_files.py TOOL REAL_PROFILE_FOLDER
"""
import json
import os
import pathlib
import pty
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time

BAR = re.compile(rb"\r\[#*\.*\] (\d+) of (\d+)\x1b\[K")


def run(*words):
    done = subprocess.run(words, capture_output=True, check=False)
    return done.returncode, done.stdout, done.stderr


def check_order(tool, files):
    for verb in (["check"], ["check", "--json"], ["info"], ["info", "--json"]):
        alone = run(tool, *verb, "-j", "1", *files)
        assert run(tool, *verb, *files) == alone, verb
        assert run(tool, *verb, "--jobs=7", *files) == alone, verb
        if "--json" in verb:
            told = json.loads(alone[1])
            assert [row["file"] for row in told] == files, verb
            # As one document, to the byte.
            assert json.dumps(told, indent=2).encode() + b"\n" == alone[1], verb


def check_folders(tool, folder, real):
    tree = folder / "tree"
    (tree / "b" / "c").mkdir(parents=True)
    (tree / "empty").mkdir()
    for name in "b/c/two.ICM", "b/one.icc", "a.icc", "z.icc":
        shutil.copyfile(real / "LStar-RGB.icc", tree / name)
    (tree / "readme.txt").write_text("no profile", "utf-8")
    (tree / "b" / "back").symlink_to(tree)
    (tree / "b" / "back.icc").symlink_to(tree)
    code, text, _ = run(tool, "check", "-r", "--json", str(tree))
    seen = [os.path.relpath(row["file"], tree) for row in json.loads(text)]
    assert (code, seen) == (0, ["a.icc", "b/c/two.ICM", "b/one.icc", "z.icc"]), seen
    code, text, _ = run(tool, "check", "-r", str(tree / "empty"), str(tree / "readme.txt"))
    assert code == 1 and b"holds no files" in text and b"readme.txt: 1 finding" in text, text
    code, text, error = run(tool, "info", str(tree), str(tree / "a.icc"))
    assert code == 1 and b"--recursive" in error and b"a.icc\n" in text, error
    if os.geteuid() != 0:
        (tree / "b").chmod(0)
        code, text, _ = run(tool, "check", "-r", str(tree))
        (tree / "b").chmod(0o700)
        assert code == 1 and b"cannot be listed: Permission denied" in text, text


def check_gravest(tool, folder, real):
    (folder / "bad.icc").write_bytes(b"bad")
    good = str(real / "LStar-RGB.icc")
    for files in ([good] * 30 + [str(folder / "bad.icc")], [str(folder / "bad.icc")] + [good] * 30):
        assert run(tool, "check", "-j", "4", *files)[0] == 1
        assert run(tool, "info", "-j", "4", *files)[0] == 1
    assert run(tool, "check", "-j", "4", *[good] * 30)[0] == 0
    for number in "0", "257", "-1", "x":
        assert run(tool, "check", f"--jobs={number}", good)[0] == 2, number


def on_terminal(words, folder, term):
    """Seconds, standard output, and what a terminal got as error output."""
    upper, lower = pty.openpty()
    shown = bytearray()

    def read():
        try:
            while part := os.read(upper, 65536):
                shown.extend(part)
        except OSError:  # the end of a terminal
            pass
    begin = time.monotonic()
    with subprocess.Popen(words, stdout=subprocess.PIPE, stderr=lower, cwd=folder,
                          env={**os.environ, "TERM": term}) as tool:
        os.close(lower)
        reader = threading.Thread(target=read)
        reader.start()
        output = tool.stdout.read()
        seconds = time.monotonic() - begin
    reader.join()
    os.close(upper)
    return seconds, output, bytes(shown)


def check_progress(tool, folder, real):
    shutil.copyfile(real / "ghostscript" / "default_cmyk.icc", folder / "p")
    # The bar appears after half a second; on a busy machine one file may take as long.
    quick = [on_terminal([tool, "check", "p"], folder, "xterm")[:3:2] for _ in range(5)]
    assert all(shown == b"" for seconds, shown in quick if seconds < 0.5), quick
    count, bars = 500, []
    while not bars and count < 1000000:
        words = [tool, "info", "-j", "1", *["p"] * count]
        seconds, output, shown = on_terminal(words, folder, "xterm")
        bars = BAR.findall(shown)
        told, count = count, int(count * max(1.2, 0.75 / seconds))
    count = told
    assert bars and all(int(total) == count for _, total in bars), shown
    done = [int(number) for number, _ in bars]
    assert done == sorted(done) and 0 < done[-1] < count, done
    assert BAR.sub(b"", shown).replace(b"\r\x1b[K", b"") == b"", shown
    assert shown.endswith(b"\r\x1b[K"), shown
    assert b"\x1b" not in output and output.count(b"ICC 2.") == count
    assert on_terminal(words, folder, "dumb")[2] == b""


def main():
    tool, real = os.path.abspath(sys.argv[1]), pathlib.Path(sys.argv[2])
    with tempfile.TemporaryDirectory(prefix="vkcl-files-") as name:
        folder = pathlib.Path(name)
        files = [str(path) for path in sorted(real.rglob("*.icc"))] * 2
        check_order(tool, files)
        check_folders(tool, folder, real)
        check_gravest(tool, folder, real)
        check_progress(tool, folder, real)
    print(f"{len(files)} files, in order")


if __name__ == "__main__":
    main()
