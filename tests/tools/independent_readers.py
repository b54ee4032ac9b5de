#!/usr/bin/env python3
"""Stores records in copies of real profiles and lets iccdump and exiftool judge the result.

usage: independent_readers.py TOOL REAL_PROFILE_FOLDER
"""
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile

PROFILES = ["ghostscript/default_cmyk.icc", "ghostscript/srgb.icc", "LStar-RGB.icc",
            "sRGB.icc",
            "compatibleWithAdobeRGB1998.icc", "Gray.icc"]
ASSIGNMENTS = ["ColorParam.Make=Acme", "SingleInkLimit.limits=90,80", "MultiInkLimit.limits[3]=7",
               "Wizard.value=1", "ChromaAdjust.text=odd", "ProfileExtra.value=2"]
ADDED = ["QX53", "QX51", "QX52", "QX74", "QX75", "QX76"]


def run(*words):
    return subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          errors="replace", check=True).stdout


def dump(path):
    """Tag signatures and the dump of each tag but the private ones, as iccdump gives them."""
    tags = {}
    for block in run("iccdump", "-v3", str(path)).split("\ntag ")[1:]:
        signature = block.split("sig")[1].split("'")[1]
        lines = [line for line in block.splitlines()[1:]
                 if line.strip() and not line.strip().startswith("offset")]
        tags[signature] = lines
    return tags


def describe(path):
    told = json.loads(run("exiftool", "-json", "-icc_profile:all", str(path)))[0]
    return {key: value for key, value in told.items() if key != "SourceFile"}


def main():
    tool, real = sys.argv[1], pathlib.Path(sys.argv[2])
    with tempfile.TemporaryDirectory(prefix="vkcl-readers-") as name:
        for source in PROFILES:
            path = pathlib.Path(name) / "p.icc"
            shutil.copyfile(real / source, path)
            before, told = dump(path), describe(path)
            assert before and len(told) > 5, source
            for round_ in range(2):
                run(tool, "set", str(path), *ASSIGNMENTS)
                run(tool, "set", str(path), f"ChromaAdjust.text={'x' * (50 * (2 - round_))}")
                after = dump(path)
                assert list(after) == list(before) + ADDED, (source, list(after))
                for signature, lines in before.items():
                    assert after[signature] == lines, (source, signature)
                now = describe(path)
                for key, value in told.items():
                    if key != "ProfileID":
                        assert now[key] == value, (source, key, value, now[key])
    print(f"{len(PROFILES)} profiles, the same for iccdump and exiftool as before")


if __name__ == "__main__":
    main()
