#!/usr/bin/env python3
"""Documents of private tags, judged by a JSON Schema validator that knows nothing of the tool.

usage: document_schema.py TOOL DOCS_FOLDER

Every tag that there is, in every form, is dumped and validated; documents with one mistake each are
refused by the validator and by the tool alike; the generated pages in docs/ are up to date.
"""
import copy
import json
import pathlib
import struct
import subprocess
import sys
import tempfile

import jsonschema

from run_golden import data_list, private, profile


def text(value, width):
    return value.encode().ljust(width, b"\0")


def split(version):
    if version == 2:
        record = struct.pack("<Ii17f", 76, 1, *[i / 8 for i in range(17)])
    else:
        columns = version - 1
        curve = struct.pack(f"<{columns}f", *[0.5, 1.0, 0.25][:columns]).ljust(256 * 4 * columns, b"\0")
        record = struct.pack("<Ii", 8 + 3 * len(curve) + 16, 2) + 3 * curve + struct.pack("<4i", 1, 1, 1, 0)
    return struct.pack("<iii", version, 20 + 2 * len(record), 2) + bytes(8) + 2 * record


def all_tags():
    """A payload of every tag, by hand."""
    color = (struct.pack("<4i", 1, 1068, 9, 7) + text("Acme", 128) + text("B\u00fctten", 128)
             + b"\xff\xfe".ljust(128, b"\0") + struct.pack("<iffiiii", 3, 720, 1440.5, 1, 2, 3, 4)
             + bytes(range(256)) + bytes(384))
    plain_list = data_list(b"Lab ", 2, 3, [95, 0.1, -1, float("nan"), float("-inf"), -0.0], 2)
    links = [b"link one", b""]
    tags = {
        b"QX51": struct.pack("<iii16d", 1, 140, 16, *range(16)),
        b"QX52": struct.pack("<iii36d", 4, 300, 36, *range(36)),
        b"QX53": color,
        b"QX58": b"a whole file" * 20, b"QX61": b"one", b"QX62": b"two", b"QX63": b"3", b"QX65": b"4",
        b"QX64": struct.pack("<i", 1), b"QX74": struct.pack("<i", -1),
        b"QX66": struct.pack("<ii", 1, 4132) + bytes(8) + struct.pack("<I", 4116) + bytes(4112),
        b"QX67": bytes(range(64)),
        b"QX68": struct.pack("<iii", 1, 32, 2) + b"Spot" + struct.pack("<2d", 75, 82.5),
        b"QX69": struct.pack("<iiii", 1, 36, 2, 4) + b"Spot" + struct.pack("<2i", 8, 0) + links[0],
        b"QX70": struct.pack("<i", 1) + text("lin", 132) + struct.pack("<i", 5) + bytes(432),
        b"QX71": struct.pack("<i", 1) + text("press.icc", 128) + b"<xml/>",
        b"QX75": b"soft\0", b"QX76": struct.pack("<ii", 1, 5),
    }
    for name in (b"QX54", b"QX55", b"QX56", b"QX57", b"QX59", b"QX60", b"QX72"):
        tags[name] = plain_list
    tags[b"QX73"] = data_list(b"\xff\xff\xff\xff", -1, 0, [])
    return [(name, private(payload)) for name, payload in tags.items()]


RAW = [(b"QX50", private(b"no split")), (b"QX99", private(b"unknown")), (b"QX51", b"text of another type"),
       (b"QX\x01\xff", private(b"")), (b"QX99", private(b"once more"))]

MISTAKES = {
    "an unknown member": lambda d: d.update(other=1),
    "another format": lambda d: d.update(format="other"),
    "another version": lambda d: d.update(formatVersion=2),
    "no tags": lambda d: d.pop("tags"),
    "a standard tag": lambda d: d["tags"].update(cprt={"payload": []}),
    "an unknown field": lambda d: d["tags"]["QX76"].update(valeu=1),
    "a missing field": lambda d: d["tags"]["QX53"].pop("MediaID"),
    "a text for a number": lambda d: d["tags"]["QX53"].update(MediaID="7"),
    "a fraction for an integer": lambda d: d["tags"]["QX53"].update(MediaID=7.5),
    "a number of 33 bits": lambda d: d["tags"]["QX53"].update(MediaID=2**32),
    "a number for a text": lambda d: d["tags"]["QX53"].update(Make=7),
    "a long text": lambda d: d["tags"]["QX53"].update(Make="x" * 129),
    "one limit too many": lambda d: d["tags"]["QX51"]["limits"].append(1),
    "a null limit": lambda d: d["tags"]["QX51"]["limits"].__setitem__(0, None),
    "an unknown word": lambda d: d["tags"]["QX51"]["limits"].__setitem__(0, "infinite"),
    "no base64": lambda d: d["tags"]["QX58"].update(file=["a"]),
    "base64 alone": lambda d: d["tags"]["QX58"].update(file="YQ=="),
    "a short signature": lambda d: d["tags"]["QX54"].update(DataFormat="Lab"),
    "fields and a payload": lambda d: d["tags"]["QX76"].update(payload=[]),
    "a point of two numbers": lambda d: d["tags"]["QX50"]["splits"][0]["light"].__setitem__(0, [0, 1]),
    "a flag": lambda d: d["tags"].update(QX74=True),
}


def main():
    tool, docs = sys.argv[1], pathlib.Path(sys.argv[2])
    failures = []

    def expect(good, what):
        if not good:
            failures.append(what)

    def run(*arguments):
        return subprocess.run([tool, *map(str, arguments)], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, check=False)

    schema_text = run("schema").stdout
    expect(schema_text == (docs / "profile-document.schema.json").read_bytes(),
           "docs/profile-document.schema.json differs from `vkcl schema`")
    expect(run("schema", "--markdown").stdout == (docs / "tags.md").read_bytes(),
           "docs/tags.md differs from `vkcl schema --markdown`")
    schema = json.loads(schema_text)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)

    with tempfile.TemporaryDirectory(prefix="vkcl-schema-") as name:
        folder = pathlib.Path(name)
        (folder / "clean.icc").write_bytes(profile([(b"cprt", b"text\0\0\0\0by hand\0")]))

        def dump(tags):
            (folder / "own.icc").write_bytes(profile(tags))
            return json.loads(run("dump", "--json", folder / "own.icc").stdout)

        for version in (2, 3, 4):
            document = dump(all_tags() + [(b"QX50", private(split(version)))])
            expect(len(document["tags"]) == 27, "not every tag is dumped")
            for tag, content in document["tags"].items():
                expect("payload" not in content and "element" not in content,
                       f"{tag} is not shown by its fields")
            for error in validator.iter_errors(document):
                failures.append(f"version {version}: {error.json_path}: {error.message[:200]}")
        raw = dump(RAW)
        expect(set(raw["tags"]) == {"QX50", "QX99", "QX51", "0x515801ff", "QX99#2"}, "raw tags")
        for error in validator.iter_errors(raw):
            failures.append(f"raw: {error.json_path}: {error.message[:200]}")

        for what, mistake in MISTAKES.items():
            wrong = copy.deepcopy(document)
            mistake(wrong)
            (folder / "wrong.json").write_text(json.dumps(wrong), "utf-8")
            expect(not validator.is_valid(wrong), f"the schema takes {what}")
            expect(run("apply", folder / "clean.icc", folder / "wrong.json").returncode == 1,
                   f"the tool takes {what}")

    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
