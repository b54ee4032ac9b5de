#!/usr/bin/env python3
"""Has mandoc and groff read the manual pages of all verbs, and compares them with the help.

usage: manual.py TOOL
"""
import pathlib
import re
import subprocess
import sys
import tempfile

from verbs import all_verbs

# A page tells its version instead: the same sources make the same page on any day. Lines of the
# source are as long as the sentences.
ACCEPTED = ("missing date, using", "input text line longer than 80 bytes")


def complaints(*command):
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    lines = (done.stdout + done.stderr).splitlines()
    return [line for line in lines if not any(text in line for text in ACCEPTED)]


def words_of(text):
    return re.sub(r"\s+", " ", text)


def main():
    tool = sys.argv[1]
    with tempfile.TemporaryDirectory(prefix="vkcl-manual-") as name:
        folder = pathlib.Path(name)
        subprocess.run([tool, "manual", "--all", name], check=True)
        pages = {path.stem for path in folder.iterdir()}
        for path, text in all_verbs(tool):
            page = "-".join(("vkcl", *path))
            pages.remove(page)
            file = folder / f"{page}.1"
            source = subprocess.run([tool, "manual", *path], capture_output=True, check=True).stdout
            assert source == file.read_bytes(), page
            assert complaints("mandoc", "-T", "lint", "-W", "style", str(file)) == [], page
            assert complaints("groff", "-man", "-ww", "-z", "-Tutf8", str(file)) == [], page
            shown = subprocess.run(["mandoc", "-T", "ascii", str(file)],
                                   capture_output=True, text=True, check=True).stdout
            shown = words_of(re.sub(".\b", "", shown))
            # Every line of the help but its headings and the list that is made of rows.
            for line in re.findall(r"^  +(?:\S.{0,22}  +)?(\S.*)$", text, re.M):
                assert words_of(line) in shown, (page, line)
        assert not pages, pages
    print("all pages read")


if __name__ == "__main__":
    main()
