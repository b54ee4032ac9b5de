#!/usr/bin/env python3
"""Makes the seeds of the fuzz targets: sound inputs, and inputs with one defect each.

usage: make_seeds.py FOLDER
"""
import json
import pathlib
import random
import struct
import sys


def profile(tags, space=b"CMYK", device_class=b"prtr", pcs=b"Lab "):
    table, data = b"", b""
    start = 132 + 12 * len(tags)
    for signature, content in tags:
        table += signature + struct.pack(">II", start + len(data), len(content))
        data += content + b"\0" * (-len(content) % 4)
    head = bytearray(128)
    head[0:4] = struct.pack(">I", start + len(data))
    head[8:12] = bytes.fromhex("02100000")
    head[12:24] = device_class + space + pcs
    head[24:36] = struct.pack(">6H", 2024, 2, 29, 23, 59, 58)
    head[36:40] = b"acsp"
    head[68:80] = bytes.fromhex("0000f6d6000100000000d32d")
    return bytes(head) + struct.pack(">I", len(tags)) + table + data


def private(payload):
    return b"data\0\0\0\0\0\0\0\1" + payload


def data_list(values, samples=2, colors=3, flag=1, measured=2):
    return (b" baL" + struct.pack("<5i", samples, 1, colors, measured, flag)
            + struct.pack(f"<{len(values)}d", *values))


def split(version, count=1):
    if version == 2:
        record = struct.pack("<Ii17f", 76, 1, *[i / 16 for i in range(17)])
    else:
        columns = version - 1
        curve = struct.pack(f"<{3 * columns}f", *[i / 8 for i in range(3 * columns)])
        curve = curve.ljust(256 * 4 * columns, b"\0")
        record = (struct.pack("<Ii", 24 + 3 * len(curve), 1) + 3 * curve
                  + struct.pack("<4i", 3, 2, 300, 0))
    return struct.pack("<iii", version, 20 + count * len(record), count) + bytes(8) + count * record


def link():
    """A device link of class 'link' with an 8-bit table of two points an axis."""
    lut = b"mft1\0\0\0\0" + bytes([3, 4, 2, 0])
    lut += struct.pack(">9i", 65536, 0, 0, 0, 65536, 0, 0, 0, 65536)
    lut += 3 * bytes(range(256)) + bytes(range(0, 256, 8)) + 4 * bytes(range(256))
    return profile([(b"A2B0", lut), (b"desc", b"desc\0\0\0\0\0\0\0\1\0" + bytes(78))],
                   b"RGB ", b"link", b"CMYK")


def payloads():
    color = (struct.pack("<4i", 1, 1068, 9, 7) + b"Hewlett-Packard".ljust(128, b"\0")
             + b"Model".ljust(128, b"\0") + b"  Matte  ".ljust(128, b"\0")
             + struct.pack("<iffiiii", 3, 720, 1440.5, 1, 2, 3, 4) + bytes(range(256)) + bytes(384))
    chain = link()
    made = {
        "split2": split(2, 2), "split3": split(3), "split4": split(4),
        "single": struct.pack("<iii16d", 1, 140, 16, *range(16)),
        "multi1": struct.pack("<iii36d", 1, 300, 36, *range(36)), "color": color,
        "list": data_list([95, .1, -1, 50, -30, float("nan")]),
        "placeholder": b"\xff\xff\xff\xff" + struct.pack("<5i", 3, 1, 0, 3, 0),
        "dither": struct.pack("<ii", 1, 4132) + bytes(8) + struct.pack("<I", 4116) + bytes(4112),
        "short_dither": struct.pack("<ii", 1, 24) + bytes(8) + struct.pack("<II", 4116, 0),
        "compatibility": bytes(range(64)),
        "spot_limits": struct.pack("<iii", 1, 32, 2) + b"Spot" + struct.pack("<2d", 75, 82.5),
        "spot_links": (struct.pack("<iiii", 1, 20 + 4 + 8 + len(chain), 2, 4) + b"Spot"
                       + struct.pack("<2i", len(chain), 0) + chain),
        "extra_data": struct.pack("<i", 1) + b"lin".ljust(132, b"\0") + bytes(436),
        "sidecar": struct.pack("<i", 1) + b"press.icc".ljust(128, b"\0") + b"<VK_VSD_PROFILE/>",
        "flag": struct.pack("<i", 1), "text": b"soft\0", "extra": struct.pack("<ii", 1, 5),
        "file": profile([(b"cprt", b"text\0\0\0\0x\0")]), "empty": b"",
    }
    for name, payload in list(made.items()):
        made[name + "_cut"] = payload[:-1]
        for at in (0, 4, 8, 12, 16):  # each of the numbers at the front, wrong in turn
            for what, number in (("negative", -1), ("huge", 0x7FFFFFFF), ("zero", 0)):
                if at + 4 <= len(payload):
                    made[f"{name}_{at}_{what}"] = (
                        payload[:at] + struct.pack("<i", number) + payload[at + 4:])
    for status in (9, 10, 12):  # those that lock and unlock
        made[f"color_status_{status}"] = color[:8] + struct.pack("<i", status) + color[12:]
    return made


def profiles():
    text = b"text\0\0\0\0made by hand\0"
    small = {name: payload for name, payload in payloads().items() if len(payload) < 20000}
    tags = {"split4": b"QX50", "single": b"QX51", "multi1": b"QX52", "color": b"QX53",
            "list": b"QX54", "spot_limits": b"QX68", "spot_links": b"QX69", "text": b"QX75"}
    own = [(b"cprt", text)] + [(sig, private(small[name])) for name, sig in tags.items()]
    target = b"CGATS\nBEGIN_DATA_FORMAT\nCMYK_C LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\nBEGIN_DATA\n1 2 3 4\nEND_DATA\n"
    sound = profile(own + [(b"targ", b"text\0\0\0\0" + target)])
    made = {"plain": profile([(b"cprt", text)]), "own": sound, "link": link(),
            "lab": profile([(b"cprt", text)], b"Lab "), "none": profile([])}

    def defect(name, at, bytes_):
        made[name] = sound[:at] + bytes_ + sound[at + len(bytes_):]

    defect("no_magic", 36, b"psca")
    defect("size_small", 0, b"\0\0\0\x80")
    defect("size_large", 0, b"\x7f\xff\xff\xff")
    defect("count_large", 128, b"\x10\0\0\0")
    defect("count_more", 128, struct.pack(">I", len(own) + 2))
    defect("offset_in_header", 136, struct.pack(">I", 64))
    defect("offset_beyond", 136, b"\xff\xff\xff\xf0")
    defect("size_beyond", 140, b"\xff\xff\xff\xff")
    defect("size_zero", 140, b"\0\0\0\0")
    defect("shared", 148, sound[136:144])
    defect("twice", 144, sound[132:136])
    defect("type_unknown", struct.unpack(">I", sound[148:152])[0], b"what")
    defect("flag_text", struct.unpack(">I", sound[148:152])[0] + 8, b"\0\0\0\0")
    for length in (0, 127, 128, 131, 132, 143, len(sound) // 2, len(sound) - 1):
        made[f"cut_{length}"] = sound[:length]
    return made


def targets():
    head = "CGATS.17\nNUMBER_OF_FIELDS 7\nBEGIN_DATA_FORMAT\n{}\nEND_DATA_FORMAT\n"
    rows = "BEGIN_DATA\n0 100 40.5 12 50.5 -1e1 .5\n1 2 3 4 5 6 7\nEND_DATA\n"
    fields = "CMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B"
    sound = head.format(fields) + rows
    other = head.format("RGB_R RGB_G RGB_B R_380 R_390")
    return {name: text.encode() for name, text in {
        "sound": sound, "crlf": sound.replace("\n", "\r\n"), "tabs": sound.replace(" ", "\t"),
        "xyz": sound.replace("LAB_L LAB_A LAB_B", "XYZ_X XYZ_Y XYZ_Z"),
        "reflectance": other + rows,
        "no_format": sound.replace("BEGIN_DATA_FORMAT", ""),
        "format_open": sound.replace("END_DATA_FORMAT", ""), "no_data": head.format(fields),
        "data_open": sound.replace("END_DATA\n", ""), "reversed": rows + head.format(fields),
        "no_fields": head.format("") + rows, "no_numbers": head.format(fields) + "BEGIN_DATA\nEND_DATA\n",
        "words": sound.replace("40.5", "many"), "nan": sound.replace("40.5", "nan"),
        "huge": sound.replace("40.5", "1e999"), "gray": head.format("GRAY_K LAB_L LAB_A LAB_B") + rows,
        "no_device": head.format("LAB_L LAB_A LAB_B") + rows, "empty": "",
        "then_other": sound + "\0" + other + rows, "then_wider_refused": sound + "\0" + other,
        "then_narrower_refused": other + rows + "\0" + head.format(fields),
        "then_words": sound + "\0words", "refused_then_sound": other + "\0" + sound}.items()}


def sidecars():
    data = ("<DataFormat>1281450528</DataFormat><NumOfSamples>1</NumOfSamples><ColorMode>2</ColorMode>"
            "<NumOfColors>1</NumOfColors><Measured>1</Measured><DataList>000000000000f03f</DataList>")
    sizes = "".join(f"<{name}>{data}</{name}>" for name in ("Small", "Medium", "Large"))
    sound = ("<?xml version='1.0'?><VK_VSD_PROFILE><VK_VSD_COLORPARAM><Make>A</Make><Model/><MediaName>B"
             "</MediaName><MediaID>7</MediaID><PrintMode>1</PrintMode><ResolutionID>2</ResolutionID>"
             "<ResolutionX>720.5</ResolutionX><ResolutionY>1e3</ResolutionY><ColorMode>1</ColorMode>"
             "<DriverColorMode>0</DriverColorMode><DitherMethod>3</DitherMethod><DriverOption>00AB"
             f"</DriverOption></VK_VSD_COLORPARAM><MeasurementData>{sizes}</MeasurementData>"
             "<MediumStart><NumOfColors>1</NumOfColors><DataList>000000000000f03f</DataList></MediumStart>"
             "<LargeStart><DataList/></LargeStart><VK_VSD_SINGLE_INKLIMITS><Num_of_Channels>4"
             "</Num_of_Channels><Values>95.50;80</Values></VK_VSD_SINGLE_INKLIMITS>"
             "<VK_VSD_SPOT_SINGLE_INKLIMITS><Num_of_Channels>1</Num_of_Channels><ChannelS>Spot</ChannelS>"
             "<Values>70</Values></VK_VSD_SPOT_SINGLE_INKLIMITS></VK_VSD_PROFILE>")
    made = {"sound": sound, "other_root": sound.replace("VK_VSD_PROFILE>", "X>"),
            "many_samples": sound.replace("<NumOfSamples>1<", "<NumOfSamples>2147483647<"),
            "negative": sound.replace("<NumOfColors>1<", "<NumOfColors>-1<"),
            "no_hex": sound.replace("000000000000f03f", "xyz"), "cut": sound[:300],
            "entity": "<!DOCTYPE a [<!ENTITY b 'c'>]>" + sound, "comment": sound.replace("<Model/>", "<!-- -- -->"),
            "bare": "<VK_VSD_PROFILE><!--" + 300 * "x" + "--></VK_VSD_PROFILE>",
            "deep": "<a>" * 300, "cdata": sound.replace(">A<", "><![CDATA[<A>]]><"), "empty": ""}
    return {name: text.encode() for name, text in made.items()} | {
        "utf16": sound.replace("'1.0'", "'1.0'").encode("utf-16"), "raw": sound.encode().replace(b">A<", b">\xff\xfe<")}


def splits():
    sound = ('<S Version="4" NumofColor2Split="2"><ListSplit><item interpolation="1" colorantIndex="3">'
             "<light>0 0 0;0.3 0.4 0.25;</light><medium/><dark>0.3 0 0;1 1 0</dark></item>"
             '<item colorantIndex="-1"/></ListSplit></S>')
    return {name: text.encode() for name, text in {
        "sound": sound, "v2": sound.replace('"4"', '"2"'), "v3": sound.replace('"4"', '"3"'),
        "v9": sound.replace('"4"', '"9"'), "many": sound.replace('Split="2"', 'Split="1024"'),
        "too_many": sound.replace('Split="2"', 'Split="99999"'), "negative": sound.replace('Split="2"', 'Split="-1"'),
        "no_list": sound.replace("ListSplit", "List"), "words": sound.replace("0.4", "x"),
        "long": sound.replace("0.3 0.4 0.25;", "1 1 1;" * 300), "cut": sound[:90]}.items()}


def definitions():
    sound = "[Colours]\r\nViolet 10000 0 0 0\r\nOrange2 0x20000 0 -1 +2\r\n"
    return {name: text.encode("latin-1") for name, text in {
        "sound": sound, "short": "Short 40000 0 0\n", "long_name": "x" * 300 + " 1 2 3 4\n",
        "longest_name": "x" * 255 + " 1 2 3 4\n", "wide": "Wide 100000000 0 0 0\n", "blank": "\n \n",
        "bom": "\xef\xbb\xbf" + sound, "zero": "A\0B 1 2 3 4\n", "no_end": sound[:-2], "more": "A 1 2 3 4 5\n"}.items()}


def documents():
    def document(tags):
        return json.dumps({"format": "vkcl-private-tags", "formatVersion": 1, "tags": tags})
    sound = {
        "QX51": {"version": 1, "size": 140, "count": 16, "limits": list(range(16))},
        "QX54": {"DataFormat": "Lab ", "ColorMode": 1, "Measured": 2, "values": [[1, 2.5, "nan"], [3, "-inf", "-0"]]},
        "QX68": {"version": 1, "name": "Spot", "limits": [75]}, "QX74": {"value": -1}, "QX75": {"text": "soft"},
        "QX69": {"version": 1, "name": {"bytes": ["/w=="]}, "links": [["AAEC"], []]},
        "QX50": {"version": 2, "splits": [{"colorantIndex": 1, **{name: 0.5 for name in (
            "lightPeakInput", "lightEndInput", "mediumPeakInput", "mediumEndInput", "lightPeakAmount",
            "mediumPeakAmount", "darkAmount", "lightTailAmount", "lightPeakShape", "lightEndShape",
            "mediumTailAmount", "mediumStartShape", "mediumPeakShape", "mediumEndShape", "darkStartShape",
            "darkEndShape")}}]},
        "QX99": {"payload": ["AAEC"]}, "QX51#2": {"element": ["Zm9v"]}, "0x515801ff": {"payload": []}, "QX53": None}
    text = document(sound)
    return {name: text.encode() for name, text in {
        "sound": text, "cut": text[:200], "spaces": json.dumps(json.loads(text), indent=2),
        "sorted": json.dumps(json.loads(text), sort_keys=True), "array": "[]", "deep": "[" * 100,
        "twice": text.replace('"QX75"', '"QX74"'), "wide": text.replace("-1", "4294967296"),
        "exponent": text.replace("2.5", "2.5e400"), "standard": text.replace("QX99", "cprt"),
        "points": document({"QX50": {"version": 4, "splits": [
            {"colorantIndex": 0, "light": [[0, 0, 0], [.3, .4, .25]], "medium": [], "dark": [[1, 1, 0]],
             "lightCount": 2, "mediumCount": 0, "darkCount": 1, "interpolation": 0}]}})}.items()}


def shown():
    """Profiles that are shown: choices, and the payloads of the tags."""
    made = payloads()
    kinds = {50: "split4", 51: "single", 52: "multi1", 53: "color", 58: "file", 64: "flag", 66: "dither",
             67: "compatibility", 68: "spot_limits", 69: "spot_links", 70: "extra_data", 71: "sidecar",
             74: "flag", 75: "text", 76: "extra"}
    kinds |= {number: "list" for number in (54, 55, 56, 57, 59, 60, 72, 73)}

    def shown_profile(space, payload_of):
        tags = (payload_of(number) for number in range(50, 77))
        return bytes([space]) + b"".join(
            b"\0" if tag is None else b"\1" + struct.pack(">H", len(tag)) + tag for tag in tags)

    hostile = b"<script>alert(1)</script>\"'><img src=x onerror=alert(2)>&lt;\xe2\x80\xae"
    whole = lambda number: made[kinds[number]] if number in kinds else None
    shown = {f"all_{space}": shown_profile(space, whole) for space in range(4)}
    shown["markup"] = shown_profile(0, lambda number: hostile)
    shown["marked_color"] = shown_profile(
        1, lambda number: made["color"].replace(b"Model".ljust(128, b"\0"), hostile.ljust(128, b"\0"))
        if number == 53 else None)
    for number, name in kinds.items():
        shown[f"cut_{number}"] = shown_profile(
            0, lambda other: made[name][:-1] if other == number else whole(other))
    return shown


def lives():
    """Lives of the model that are written by hand; see ModelFuzz.cpp for what a step takes."""
    split, single, multi, color, spot, newer = 0, 1, 2, 3, 7, 11  # places in its signatures
    merge_refused, strip_refused, read, reopen = b"\3", b"\4", b"\6", b"\7"

    def new(channels):
        return bytes([4 * (channels - 3)])

    def ordered(tags):
        return bytes([1 + 4 * (tags - 1)]) + bytes(range(5, 5 + tags))

    def other(layout, more):  # that many tags more than the layout needs
        kinds = range(3 + 16 * layout, 16 + 16 * layout, 4)
        kind = next(kind for kind in kinds if kind // 4 % 3 == more)
        return bytes([kind]) + bytes(range(5, 6 + more + (layout == 3)))

    def content(payload):
        return bytes([len(payload)]) + payload

    def write(tag, payload):
        return bytes([0, tag]) + content(payload)

    def several(*tags):
        return bytes([2, len(tags) - 1]) + b"".join(
            bytes([tag]) + content(payload) for tag, payload in tags)

    def merge(adopt):
        return bytes([3, adopt])

    def strip(adopt):
        return bytes([4, adopt])

    def store(tag, element, occurrence=1):
        return bytes([5, tag, occurrence - 1, 1]) + content(element)

    def remove(tag, occurrence=1):
        return bytes([5, tag, occurrence - 1, 0]) + content(b"")

    def edit(tag, payload, asks=True):
        return bytes([0, asks, tag]) + content(payload)

    gap, backwards, unpadded, shared = range(4)
    own = write(single, b"limits") + write(color, b"colors")
    whole = private(b"whole")
    return {
        "merged": ordered(2) + own + merge(False) + write(multi, b"after") + read,
        "merged_adopted": ordered(2) + own + merge(True) + read
        + write(single, b"longer than before") + merge(True) + strip(True) + write(color, b"c"),
        "merged_new": new(16) + own + write(spot, b"") + merge(True) + reopen
        + strip(False),
        "merged_not_own": ordered(2) + own + merge(False) + write(newer, b"7")
        + merge_refused + read,
        "same_length": ordered(2) + write(single, b"one") + write(color, b"12345")
        + write(single, b"two") + read + write(color, b"54321") + reopen + read,
        "other_lengths": ordered(2) + own + write(single, b"l") + read
        + write(single, 200 * b"l") + write(color, b"") + read + write(color, b"abcd") + read,
        "stripped": ordered(2) + own + strip(False) + write(split, b"s") + strip(True)
        + strip(True) + write(split, b"again") + read,
        "stripped_none": new(4) + own + strip_refused + read,
        "removed": ordered(2) + own + remove(single) + read + remove(color)
        + remove(split) + own + read,
        "removed_last": new(3) + write(split, b"s") + remove(split) + write(single, b"x")
        + remove(split) + remove(single) + read,
        "appended": ordered(2) + several((single, b"1"), (color, b"12"), (split, b""))
        + read + several((single, b"second"), (spot, b"12345")) + store(single, whole, 2)
        + remove(single, 1) + read + write(single, b"third") + merge(True),
        "stored": ordered(2) + store(single, whole) + store(color, b"bare") + read
        + write(color, b"1234") + store(single, whole[:-1]) + store(single, whole, 2) + read,
        "gap": other(gap, 1) + strip(False) + edit(single, b"1") + own + read,
        "gap_stored": other(gap, 1) + store(single, whole) + own + merge(True),
        "gap_stripped": other(gap, 1) + read + reopen + strip(True) + own,
        "backwards": other(backwards, 1) + strip(False) + edit(single, b"1") + own + read,
        "backwards_stored": other(backwards, 1) + remove(split) + own + strip(True),
        "backwards_stripped": other(backwards, 1) + strip(True) + own + merge(False),
        "unpadded": other(unpadded, 1) + strip(False) + edit(single, b"1") + own + read,
        "unpadded_stored": other(unpadded, 1) + store(color, whole) + own + read,
        "unpadded_stripped": other(unpadded, 1) + strip(True) + several((single, b"1")),
        "shared": other(shared, 1) + edit(single, b"1") + edit(color, b"123") + read
        + edit(single, b"2") + edit(single, b"longer") + store(color, whole) + remove(single)
        + store(single, whole) + edit(split, b"s") + merge(False) + strip(False) + read,
        "shared_ordered": other(shared, 1) + edit(single, b"1") + edit(color, b"1", False) + own
        + strip(False) + read,
        "shared_stripped": other(shared, 1) + edit(single, b"1") + strip(True) + edit(color, b"2")
        + edit(single, b"1") + merge(True) + own,
        "shared_two": other(shared, 0) + edit(split, b"s") + edit(split, b"longer")
        + strip(True),
    }


def programs():
    """For the model: choices and payloads."""
    made = lives()
    for kind in range(64):
        source = random.Random(kind)
        # Small numbers: payloads are short then, and a life has room for many steps.
        made[f"life_{kind}"] = bytes([kind]) + bytes(source.randrange(16) for _ in range(200))
    return made


def main():
    folder = pathlib.Path(sys.argv[1])
    meta = b"dict\0\0\0\0" + struct.pack(">II", 1, 16) + struct.pack(">4I", 32, 16, 48, 6)
    meta += "InkTotal".encode("utf-16-be") + "300".encode("utf-16-be")
    profiler = profiles() | {"options": profile([(b"meta", meta), (b"cprt", b"text\0\0\0\0x\0")])}
    seeds = {"load": profiles(), "payload": payloads(), "target": targets(), "sidecar": sidecars(),
             "splitxml": splits(), "definitions": definitions(), "document": documents(),
             "profiler": profiler,
             "inspect": shown(), "model": programs()}
    for target, inputs in seeds.items():
        (folder / target).mkdir(parents=True)
        for name, content in inputs.items():
            (folder / target / name).write_bytes(content)


if __name__ == "__main__":
    main()
