"""Reads what include-what-you-use says of each file, and fails for an include that is not used.

Only that: what a file's own header includes is not included again, and the standard library's
headers are named as the standard names them.
usage: iwyu_tool ... | unused_includes.py
"""
import re
import sys

# Headers that libraries want included for others that they have.
FACADES = {"<CLI/CLI.hpp>", "<fmt/format.h>", "<nlohmann/json.hpp>"}


def unused(lines):
    """Yields (file, include) for every include that is to be removed."""
    file = None
    for line in lines:
        head = re.match(r"(\S+) should (add|remove) these lines:", line)
        if head:
            file = head[1] if head[2] == "remove" else None
        elif line.startswith("The full include-list"):
            file = None
        elif file and line.startswith("- #include"):
            include = line[2:].split("//")[0].strip()
            if include.split()[1] not in FACADES:
                yield file, include


def main():
    lines = sys.stdin.read().splitlines()
    if not any("has correct #includes" in line or "full include-list" in line for line in lines):
        sys.exit("include-what-you-use said nothing")
    found = sorted(set(unused(lines)))
    for file, include in found:
        print(f"{file}: {include} is not used")
    sys.exit(1 if found else 0)


main()
