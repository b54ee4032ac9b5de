#!/usr/bin/env python3
"""Looks at the tool's colours, on a terminal and off it.

usage: color.py TOOL PROFILE
"""
import json
import os
import pathlib
import pty
import re
import subprocess
import sys
import tempfile

PAINT = re.compile(r"\x1b\[([0-9;]*)m")
TERM = {"PATH": os.environ["PATH"], "TERM": "xterm", "LC_ALL": "C.UTF-8"}


def on_terminal(words, **more):
    """What a terminal gets, which is both outputs."""
    pid, handle = pty.fork()
    if pid == 0:
        os.execve(words[0], words, {**TERM, **more})
    text = b""
    try:
        while part := os.read(handle, 65536):
            text += part
    except OSError:  # the end of a terminal
        pass
    os.close(handle)
    os.waitpid(pid, 0)
    return text.decode().replace("\r\n", "\n")


def off_terminal(words, **more):
    done = subprocess.run(words, capture_output=True, text=True, check=False, env={**TERM, **more})
    return done.stdout, done.stderr


def painted(text):
    return set(re.findall(r"\x1b\[[1-9][0-9;]*m([^\x1b]*)\x1b\[0m", text))


def main():
    tool = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory(prefix="vkcl-color-") as name:
        cut, whole = pathlib.Path(name) / "cut.icc", pathlib.Path(name) / "whole.icc"
        content = pathlib.Path(sys.argv[2]).read_bytes()
        whole.write_bytes(content)
        cut.write_bytes(content[:5000])
        look = [tool, "check", str(cut)], [tool, "info", str(cut)], [tool, "info", "no.icc"]
        marks = {"error  ", "note   ", str(cut)}, {"reaches beyond the end of the file", str(cut)}, \
            {"vkcl:"}
        for words, expected in zip(look, marks, strict=True):
            text = on_terminal(words)
            assert expected <= painted(text), (words, painted(text))
            plain = "".join(off_terminal(words))
            assert "\x1b" not in plain
            assert PAINT.sub("", text) == plain, words
            for more in {"NO_COLOR": "1"}, {"NO_COLOR": "0"}, {"TERM": "dumb"}:
                assert on_terminal(words, **more) == plain, (words, more)
            assert on_terminal(words, NO_COLOR="") == text, words
            assert on_terminal([*words, "--color=never"]) == plain, words
            always = "".join(off_terminal([*words, "--color", "always"], NO_COLOR="1"))
            assert always == text, words
            assert on_terminal([tool, "--color=never", *words[1:]]) == plain, words
        for verb in "check", "info":
            for text in (on_terminal([tool, verb, "--json", str(whole)]),
                         off_terminal([tool, verb, "--json", "--color=always", str(whole)])[0]):
                assert json.loads(text) and "\x1b" not in text
        assert "\x1b" not in on_terminal([tool, "--help"])
        wrong = off_terminal([tool, "info", "--color=green", str(whole)])
        assert wrong[0] == "" and "--color" in wrong[1], wrong
    print("colours as they should be")


if __name__ == "__main__":
    main()
