#!/usr/bin/env python3
"""How many instructions an operation takes outside the system's kernel, and where: callgrind counts
them, the same in every run.

usage: instructions.py PROGRAM [--write PAGE] [ROW...]

PROGRAM is vkcl_instructions. ROWs are names of operations; without any, all that have a goal. With
--write the table is put between its markers in PAGE.
"""
import argparse
import re
import subprocess
import sys
import tempfile
from pathlib import Path

from table import markdown, plain, put

TIMES = 20
HEAD = ("operation", "floor", "ours", "where ours are")


def counted(program, row, way):
    """Instructions of one go, and those of each function itself."""
    with tempfile.TemporaryDirectory() as folder:
        out = Path(folder) / "out"
        run = subprocess.run(
            ["valgrind", "--tool=callgrind", f"--callgrind-out-file={out}",
             "--toggle-collect=vkcl::bench::Measured*", program, row, way, str(TIMES)],
            capture_output=True, text=True, check=False)
        total = re.search(r"Collected : (\d+)", run.stderr)
        if run.returncode != 0 or not total:
            sys.exit(f"{row}, {way}: callgrind failed\n{run.stderr}")
        listed = subprocess.run(["callgrind_annotate", "--threshold=95", str(out)],
                                capture_output=True, text=True, check=True).stdout
    functions = re.findall(r"^ *([\d,]+) \([ \d.]+%\)  (?:\S*?:)(.+?)(?: \[.*\])?$", listed,
                           re.MULTILINE)
    return int(total[1]) // TIMES, [(int(cost.replace(",", "")) // TIMES, name)
                                    for cost, name in functions]


def short(name):
    """A function's name without its arguments, templates and outer namespace."""
    name = re.sub(r"\(anonymous namespace\)::", "", name)
    while re.search(r"<[^<>]*>", name):
        name = re.sub(r"<[^<>]*>", "", name)
    name = name.split("(")[0].strip().split(" ")[-1]
    name = re.sub(r"@.*|\.part\.\d+|'\d+", "", name)
    return re.sub(r"^vkcl::", "", name)


def row_of(program, name):
    floor, _ = counted(program, name, "floor")
    ours, functions = counted(program, name, "ours")
    joined = {}
    for cost, function in functions:
        joined[short(function)] = joined.get(short(function), 0) + cost
    top = sorted(joined.items(), key=lambda item: -item[1])[:3]
    where = ", ".join(f"`{function}` {cost:,}" for function, cost in top)
    return name, f"{floor:,}", f"{ours:,}", where


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("rows", nargs="*")
    parser.add_argument("--write", metavar="PAGE")
    arguments = parser.parse_args()
    names = arguments.rows or subprocess.run(
        [arguments.program], capture_output=True, text=True, check=True).stdout.splitlines()
    rows = [row_of(arguments.program, name) for name in names]
    print(plain(HEAD, rows))
    if arguments.write:
        page = Path(arguments.write)
        page.write_text(put(page.read_text(encoding="utf-8"), "instructions",
                            markdown(HEAD, rows)), encoding="utf-8")


if __name__ == "__main__":
    main()
