#!/usr/bin/env python3
"""Whether the exact costs of every operation are those that docs/performance.md tells.

usage: check_costs.py PROGRAM PAGE

PROGRAM is vkcl_costs. Calls and bytes must be the same. Memory may be less than the page tells, or
more by half and 500 KiB: pages, threads' heaps and locales differ from one machine to the next. What
a rewrite may take at most is a matter of tests/profile/CostTest.cpp.
"""
import json
import re
import subprocess
import sys
from pathlib import Path

from table import cost_rows


def told(page):
    """The rows of the page by operation, as texts."""
    found = re.search("<!-- costs -->\n(.*?)<!-- /costs -->", page, re.DOTALL)
    rows = [[cell.strip() for cell in line.strip("|").split("|")]
            for line in found[1].splitlines()[2:]]
    return {row[0]: row[1:] for row in rows}


def kibibytes(cell):
    return float(cell.replace(",", "")) if cell else None


def main():
    program, page = sys.argv[1:]
    costs = json.loads(subprocess.run([program], capture_output=True, text=True, check=True).stdout)
    expected = told(Path(page).read_text(encoding="utf-8"))
    wrong = []
    for name, *cells in cost_rows(costs):
        row = expected.pop(name, None)
        if row is None:
            wrong.append(f"{name}: not on the page")
            continue
        if cells[:-1] != row[:-1]:
            wrong.append(f"{name}: {cells[:-1]} instead of {row[:-1]}")
        memory, most = kibibytes(cells[-1]), kibibytes(row[-1])
        if memory is not None and memory > 1.5 * most + 500:
            wrong.append(f"{name}: {memory:,.0f} KiB of memory instead of {most:,.0f}")
    wrong += [f"{name}: on the page, and not measured" for name in expected]
    print("\n".join(wrong) or f"{len(list(cost_rows(costs)))} operations cost what the page tells")
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
