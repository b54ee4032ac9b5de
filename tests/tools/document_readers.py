#!/usr/bin/env python3
"""Takes profiles through their documents with another reader and writer of JSON between.

usage: document_readers.py TOOL REAL_PROFILE_FOLDER

The tool dumps a profile, Python's json reads the document and writes it anew with its keys sorted,
and the tool applies that to the stripped profile: every private tag comes back byte for byte, and
every other one is untouched. The tag tables are read here, not by the tool.
"""
import json
import math
import pathlib
import random
import shutil
import struct
import subprocess
import sys
import tempfile

from run_golden import data_list, make_files, private, profile

# What a document may leave out: it follows from other fields.
DERIVED = {"count", "nameLength", "linkSizes", "NumOfSamples", "NumOfColors", "hasValues"}


def run(tool, *words, cwd):
    done = subprocess.run([tool, *words], cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          check=False, text=True, errors="replace")
    assert done.returncode == 0, (words, done.returncode, done.stderr)
    return done.stdout


def tags_of(path):
    """(signature, bytes that the file holds) of each table entry: private ones, and the others."""
    data = path.read_bytes()
    split = ([], [])
    for i in range(struct.unpack(">I", data[128:132])[0]):
        at = 132 + 12 * i
        offset, size = struct.unpack(">II", data[at + 4:at + 12])
        signature = data[at:at + 4]
        split[0 if signature.startswith(b"QX") else 1].append(
            (signature, data[offset:offset + size]))
    return split


def by_signature(tag):
    return tag[0]


def no_twins(pairs):
    """An object whose names are all different, or the document is wrong."""
    names = [name for name, _ in pairs]
    assert len(names) == len(set(names)), names
    return dict(pairs)


def no_constant(text):
    raise AssertionError(f"{text} is no JSON")


def read(text):
    text.encode("ascii")
    return json.loads(text, object_pairs_hook=no_twins, parse_constant=no_constant)


def without_derived(value):
    """The value without what follows, where a record is whole without it."""
    if isinstance(value, list):
        return [without_derived(entry) for entry in value]
    if not isinstance(value, dict):
        return value
    kept = {name: without_derived(entry) for name, entry in value.items()}
    # The counts of a list without values, and of rows of no values, are data; so is what stands
    # beside a list whose length is always the same.
    has_values = value.get("hasValues") == 1 and value["values"]
    if has_values or {"splits", "name"} & value.keys():
        kept = {name: entry for name, entry in kept.items() if name not in DERIVED}
    return kept


def applied(tool, folder, stripped, document):
    back = folder / "back.icc"
    shutil.copyfile(stripped, back)
    (folder / "document.json").write_text(document, "ascii")
    run(tool, "apply", back.name, "document.json", cwd=folder)
    return tags_of(back)


def check(tool, folder, path):
    """The number of private tags that came back."""
    stripped = folder / "stripped.icc"
    stripped.unlink(missing_ok=True)
    wanted, others = tags_of(path)
    document = read(run(tool, "dump", "--json", path.name, cwd=folder))
    assert document["format"] == "vkcl-private-tags" and document["formatVersion"] == 1, path
    assert len(document["tags"]) == len(wanted), path
    if not wanted or not others:
        return len(wanted)
    run(tool, "strip", path.name, stripped.name, cwd=folder)
    assert tags_of(stripped) == ([], others), path

    # Tags are stored in the order of the document, so only the keys within them are sorted.
    other = dict(reversed(document.items()))
    other["tags"] = {tag: dict(sorted(fields.items())) for tag, fields in document["tags"].items()}
    for attempt in (document, other, without_derived(other)):
        got, rest = applied(tool, folder, stripped, json.dumps(attempt))
        assert got == wanted, (path, [s for s, _ in got], [s for s, _ in wanted])
        assert rest == others, path
    # With every key sorted the tags stand in another order, but those of one signature do not.
    got, rest = applied(tool, folder, stripped, json.dumps(document, sort_keys=True))
    assert sorted(got, key=by_signature) == sorted(wanted, key=by_signature), path
    assert rest == others, path
    return len(wanted)


def split(version, colorants):
    length = {2: 76, 3: 6168, 4: 9240}[version]
    records = b""
    for colorant in colorants:
        numbers = (length - 8 if version == 2 else length - 24) // 4
        records += struct.pack(f"<Ii{numbers}f", length, colorant,
                               *[i % 11 / 7 for i in range(numbers)])
        records += b"" if version == 2 else struct.pack("<4i", 4, 3, -2, 1)
    return struct.pack("<iii8x", version, 20 + len(records), len(colorants)) + records


def odd_payloads():
    """(signature, element) pairs in every state."""
    nan = struct.pack("<Q", 0xfff0000000000001)
    numbers = [0.1, -0.0, math.inf, -math.inf, math.nan, 5e-324, 1.7976931348623157e308, 1 / 3]
    color = struct.pack("<iiii", 1, 1068, 9, 7) + "B\u00fctten \u7d19 \U0001f3a8".encode().ljust(
        128, b"\0") + b"M\xff".ljust(128, b"\0") + b"x" * 128 + bytes(range(256)) + b"\1" * 412
    assert len(color) == 1068
    yield b"QX53", private(color)
    yield b"QX53", private(color[:-1])
    yield b"QX53", b"text\0\0\0\0abc"
    yield b"QX53", b""
    for version in (2, 3, 4):
        yield b"QX50", private(split(version, [-1, 7]))
    yield b"QX50", private(split(2, [])[:-8])
    yield b"QX54", private(data_list(b"Lab ", 2, 4, numbers))
    yield b"QX55", private(data_list(b"refl", 1, 1, [0])[:24] + nan)
    yield b"QX56", private(data_list(b"Lab ", -3, 9, []))
    yield b"QX57", private(data_list(b"Lab ", 0, 9, [])[:20] + b"\7\0\0\0")
    yield b"QX66", private(struct.pack("<ii8xI", 1, 24, 4116) + b"abcd")
    yield b"QX68", private(struct.pack("<iii", 1, 32, 2) + b"Spot" + struct.pack("<2d", 1, .1))
    yield b"QX69", private(struct.pack("<iiii", 1, 33, 2, 4) + b"Spot" + struct.pack("<2i", 3, 2)
                           + b"abcde")
    yield b"QX71", private(struct.pack("<i128s", 1, b"press.icc") + bytes(range(256)))
    for text in (b"", b"\0", b"soft", b"soft\0", b"a\0b\0", b"\xff\0", b"\x1b\x7f\"\\\0"):
        yield b"QX75", private(text)
    yield b"QX99", private(bytes(range(256)))
    for number in range(12):  # "QX98#10" comes before "QX98#2" when names are sorted
        yield b"QX98", private(bytes(number))
    yield b"QX\x01\xff", private(b"x")
    yield b"QX\"\\", b"\0" * 13


def make_odd(folder):
    (folder / "odd.icc").write_bytes(profile([(b"cprt", b"text\0\0\0\0x\0"), *odd_payloads()]))


def with_private_tags(path, rng):
    """The profile at the path with some private tags between its own."""
    data = path.read_bytes()
    private_tags, others = tags_of(path)
    tags = others + private_tags
    for pair in rng.sample(list(odd_payloads()), 6):
        tags.insert(rng.randrange(len(tags) + 1), pair)
    made = bytearray(profile(tags))
    made[4:128] = data[4:128]
    return bytes(made)


def main():
    tool, real = sys.argv[1], pathlib.Path(sys.argv[2])
    rng = random.Random(76)
    profiles = tags = 0
    with tempfile.TemporaryDirectory(prefix="vkcl-documents-") as name:
        folder = pathlib.Path(name)
        make_files(folder, real)
        make_odd(folder)
        for path in sorted(folder.glob("*.icc")):
            if path.name in ("short.icc", "nomagic.icc", "count.icc"):
                continue
            tags += check(tool, folder, path)
            profiles += 1
        assert tags > 40, tags
        for source in sorted(real.rglob("*.ic[cm]")):
            copy = folder / "real.icc"
            copy.write_bytes(with_private_tags(source, rng))
            if copy.read_bytes()[16:20] in (b"Lab ", b"XYZ "):
                continue  # the number of channels is not known, so nothing is written
            got = check(tool, folder, copy)
            assert got >= 6, source
            tags += got
            profiles += 1
    assert profiles > 20, profiles
    print(f"{profiles} profiles, {tags} private tags came back byte for byte")


if __name__ == "__main__":
    main()
