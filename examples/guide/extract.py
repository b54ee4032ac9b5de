#!/usr/bin/env python3
"""Turns the C++ examples of docs/guide.md into source files, one for each.

usage: extract.py GUIDE FOLDER

An example is a block that begins with ```cpp and stands directly behind a comment that names it:

    <!-- example: name
    lines that the page does not show, at the front of the example
    -->

with the hidden lines, or <!-- example: name --> without any. Every such block has a name, and no two
have the same. An example is the body of a function; its #include lines go to the top of the file, in
front of anything else, so that it compiles with the headers that it names. Lines keep the numbers
that they have in the guide. Prints the names, with ; between them.
"""
import pathlib
import re
import sys

NAME = re.compile(r"<!-- example: ([a-z0-9_]+)( -->)?$")


class Guide:
    def __init__(self, path):
        self.path = path
        self.lines = path.read_text("utf-8").splitlines()

    def fail(self, number, what):
        sys.exit(f"{self.path}:{number + 1}: {what}")

    def hidden(self, fence):
        """Name and hidden lines, with their places, of the block whose fence is at a place."""
        end = fence - 1
        start = end
        if end >= 0 and self.lines[end] == "-->":
            while start >= 0 and not self.lines[start].startswith("<!-- "):
                start -= 1
        match = NAME.match(self.lines[start]) if start >= 0 else None
        if match is None or (match[2] is None) != (self.lines[end] == "-->"):
            self.fail(fence, "a C++ block without a comment that names it in the line before")
        return match[1], [(i, self.lines[i]) for i in range(start + 1, end)]

    def shown(self, fence):
        for i in range(fence + 1, len(self.lines)):
            if self.lines[i] == "```":
                return [(k, self.lines[k]) for k in range(fence + 1, i)]
        return self.fail(fence, "the block has no end")

    def examples(self):
        found = {}
        for i, line in enumerate(self.lines):
            if not line.strip().startswith("```cpp"):
                continue
            if line != "```cpp":
                self.fail(i, "a C++ block begins with ```cpp and nothing else in the line")
            name, lines = self.hidden(i)
            if name in found:
                self.fail(i, f"there are two examples of the name {name}")
            found[name] = lines + self.shown(i)
        return found


def source(guide, name, lines):
    def placed(chosen):
        return "".join(f'#line {i + 1} "{guide.path}"\n{line}\n' for i, line in chosen)

    includes = [entry for entry in lines if entry[1].startswith("#include ")]
    body = [entry for entry in lines if entry not in includes]
    return (f'{placed(includes)}#include "guide/guide_support.h"\n'
            f"namespace guide {{\nvoid Example_{name}() {{\n{placed(body)}}}\n}}  // namespace guide\n")


def write(path, text):
    if not path.exists() or path.read_text("utf-8") != text:
        path.write_text(text, "utf-8")


def main():
    guide, folder = Guide(pathlib.Path(sys.argv[1])), pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    examples = guide.examples()
    for name, lines in examples.items():
        write(folder / f"{name}.cpp", source(guide, name, lines))
    write(folder / "examples.inc", "".join(f"EXAMPLE({name})\n" for name in examples))
    print(";".join(examples), end="")


if __name__ == "__main__":
    main()
