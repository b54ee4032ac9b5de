#!/usr/bin/env python3
"""Checks that vcpkg.json says what the CMake files say.

usage: vcpkg_manifest.py SOURCE_FOLDER VERSION DESCRIPTION

Version and description are the project's, and each part of the manifest names the packages that the
CMake file of that part looks for, and no others.
"""
import json
import pathlib
import re
import sys

# CMake's or pkg-config's name of a package, and vcpkg's.
PORTS = {"lcms2": "lcms", "pugixml": "pugixml", "CLI11": "cli11", "fmt": "fmt",
         "nlohmann_json": "nlohmann-json", "GTest": "gtest"}
TOOLS = {"PkgConfig", "Python3", "Threads"}  # of the build machine and its system

PARTS = {None: "cmake/Dependencies.cmake", "tool": "tools/CMakeLists.txt",
         "tests": "tests/CMakeLists.txt"}


def packages_of(text):
    found = set(re.findall(r"find_package\((\w+)", text)) - TOOLS
    for modules in re.findall(r"pkg_check_modules\(\w+([^)]*)\)", text):
        found |= {re.split("[<>=]", word)[0] for word in modules.split() if word.islower()
                  or re.search("[<>=]", word)}
    return {PORTS.get(name, f"unknown package {name}") for name in found}


def main():
    folder, version, description = pathlib.Path(sys.argv[1]), sys.argv[2], sys.argv[3]
    manifest = json.loads((folder / "vcpkg.json").read_text("utf-8"))
    wrong = []

    def expect(what, seen, wanted):
        if seen != wanted:
            wrong.append(f"{what}: {seen!r} in vcpkg.json, {wanted!r} in the project")

    expect("version", manifest["version-semver"], version)
    expect("description", manifest["description"], description)
    expect("features", set(manifest["features"]), set(PARTS) - {None})
    for feature, file in PARTS.items():
        part = manifest if feature is None else manifest["features"].get(feature, {})
        expect(f"dependencies of {feature or 'the library'}", set(part.get("dependencies", [])),
               packages_of((folder / file).read_text("utf-8")))
    print("\n".join(wrong) or "vcpkg.json agrees with the project")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
