#!/usr/bin/env python3
"""Reads the help of every verb as a person does who has 80 columns.

usage: help_of_verbs.py TOOL
"""
import re
import sys

from verbs import all_verbs, section


def main():
    seen = []
    for path, text in all_verbs(sys.argv[1]):
        name = " ".join(("vkcl", *path))
        seen.append(name)
        for line in text.splitlines():
            assert len(line) <= 80, (name, line)
            assert line == line.rstrip(), (name, line)
        assert f"Usage: {name} " in text, name
        assert re.findall(r"^  ([012])  ", section(text, "Exit codes"), re.M) == list("012"), name
        examples = section(text, "Examples?").splitlines()
        assert examples and all(line.startswith("  vkcl ") for line in examples), name
        if path:
            assert any(line.split()[1:len(path) + 1] == list(path) or path[0] == "help"
                       for line in examples), name
    assert len(seen) > 20, seen
    print(f"{len(seen)} helps read")


if __name__ == "__main__":
    main()
