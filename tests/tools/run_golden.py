#!/usr/bin/env python3
"""Runs the tool on made-up and real profiles and compares what a person sees with golden texts.

usage: run_golden.py TOOL REAL_PROFILE_FOLDER CASE...      (--rewrite instead of CASE: write all)

A case is a file golden/NAME.txt: lines beginning with "$ " are commands, run in a folder of their
own; what follows a command is its output (standard output, then standard error), and "[exit N]"
where it ended with another code than 0.
"""
import os
import pathlib
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).parent / "golden"


def profile(tags, space=b"CMYK", device_class=b"prtr", gap=0):
    """A profile of (signature, data) pairs, laid out by hand."""
    table, data = b"", b"\xee" * gap
    start = 132 + 12 * len(tags)
    for signature, content in tags:
        table += signature + struct.pack(">II", start + len(data), len(content))
        data += content + b"\0" * (-len(content) % 4)
    head = bytearray(128)
    head[0:4] = struct.pack(">I", start + len(data))
    head[4:8] = b"test"
    head[8:12] = bytes.fromhex("02100000")
    head[12:24] = device_class + space + b"Lab "
    head[24:36] = struct.pack(">6H", 2024, 2, 29, 23, 59, 58)
    head[36:40] = b"acsp"
    return bytes(head) + struct.pack(">I", len(tags)) + table + data


def private(payload):
    return b"data\0\0\0\0\0\0\0\1" + payload


def data_list(word, samples, colors, values, measured=0):
    return (word[::-1] + struct.pack("<iiii", samples, 1, colors, measured)
            + struct.pack("<i", 1 if values else 0) + struct.pack(f"<{len(values)}d", *values))


TARGET = b"""CGATS.5
NUMBER_OF_FIELDS 8
BEGIN_DATA_FORMAT
CMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B
END_DATA_FORMAT
NUMBER_OF_SETS 3
BEGIN_DATA
0 0 0 0 95.5 -0.25 1.5
100 0 0 0 54.1 -36 -49.75
0 100 0 40.5 33 1e1
END_DATA
"""


def make_own(folder):
    """A profile of the system's own: locked by status 9, linearised, with a target."""
    color = bytearray(1068)
    color[0:12] = struct.pack("<iii", 1, 1068, 9)
    color[16:32] = b"Hewlett-Packard\0"
    single = struct.pack("<iii16d", 1, 140, 16, *[90.0] * 16)
    reference = data_list(b"CMYK", 2, 4, [0, 0, 0, 0, 100, 0, 0, 50.5])
    measurement = data_list(b"Lab ", 2, 3, [95, 0.1, -1, 50, -30, -40], 2)
    tags = [(b"targ", b"text\0\0\0\0" + TARGET), (b"QX51", private(single)),
            (b"QX53", private(bytes(color))), (b"QX55", private(reference)),
            (b"QX54", private(measurement))]
    (folder / "own.icc").write_bytes(profile(tags))
    broken = TARGET.replace(b"CMYK_C", b"SAMPLE_ID", 1)
    (folder / "badtarget.icc").write_bytes(profile(
        [(b"targ", b"text\0\0\0\0" + broken), (b"QX73", private(reference[:-1]))]))
    (folder / "early.icc").write_bytes(profile(tags[1:3]))
    (folder / "curves.txt").write_bytes(bytes(range(256)))
    (folder / "private.icc").write_bytes(profile(tags[1:3]))
    (folder / "held.tmp").write_bytes(profile(tags[1:3]))
    cut = bytearray(color)
    cut[4:8] = struct.pack("<i", 500)
    (folder / "longer.icc").write_bytes(profile(
        [(b"QX51", private(single + bytes(60))), (b"QX53", private(bytes(cut)))]))
    os.mkfifo(folder / "pipe")


LIST = """<DataFormat>1281450528</DataFormat><NumOfSamples>2</NumOfSamples><ColorMode>2</ColorMode>
<NumOfColors>3</NumOfColors><Measured>{}</Measured><DataList>
  000000000000f03f 0000000000000040 0000000000000840
</DataList>"""


def make_documents(folder):
    """VSD documents and splits as others write them, and a tool with a colour definitions file."""
    sizes = "".join(f"<{name}>{LIST.format(2)}</{name}>" for name in ("Small", "Medium", "Large"))
    (folder / "full.vsd").write_text(
        "<?xml version='1.0'?><!-- by hand --><VK_VSD_PROFILE><VK_VSD_COLORPARAM><Make>Acme\x7f</Make>"
        "<Model/><MediaName>B\u00fctten \u7d19</MediaName><MediaID> 7</MediaID>"
        "<PrintMode>1</PrintMode><ResolutionID>2</ResolutionID><ResolutionX>720.5</ResolutionX>"
        "<ResolutionY>1e3</ResolutionY><ColorMode>-2147483631</ColorMode>"
        "<DriverColorMode>0</DriverColorMode><DitherMethod>3</DitherMethod>"
        "<DriverOption>00AB</DriverOption></VK_VSD_COLORPARAM>"
        f"<MeasurementData>{sizes}</MeasurementData>"
        "<MediumStart><NumOfColors>2</NumOfColors><DataList>000000000000f03f</DataList></MediumStart>"
        "<LargeStart><DataList/></LargeStart>"
        "<VK_VSD_SINGLE_INKLIMITS><Num_of_Channels>4</Num_of_Channels>"
        "<Values>95.50;80</Values></VK_VSD_SINGLE_INKLIMITS>"
        "<VK_VSD_SPOT_SINGLE_INKLIMITS><Num_of_Channels>1</Num_of_Channels>"
        "<ChannelS>Spot 1</ChannelS><Values>70.25</Values></VK_VSD_SPOT_SINGLE_INKLIMITS>"
        "</VK_VSD_PROFILE>", "utf-8")
    (folder / "partial.vsd").write_text(
        f"<VK_VSD_PROFILE><MeasurementData><Small>{LIST.format(1)}</Small></MeasurementData>"
        "</VK_VSD_PROFILE>", "utf-8")
    (folder / "other.xml").write_text("<vk_vsd_profile/>", "utf-8")
    (folder / "bomb.vsd").write_text(
        "<!DOCTYPE a [<!ENTITY b 'bbbbbbbbbb'>]><VK_VSD_PROFILE>&b;</VK_VSD_PROFILE>", "utf-8")
    (folder / "split.xml").write_text(
        '<Any Version="4" NumofColor2Split="1"><ListSplit><item colorantIndex="3">'
        "<dark>0 0 0; 0.5 0.25 0.1; 1 1 0</dark></item></ListSplit></Any>", "utf-8")
    (folder / "ICC").mkdir()
    (folder / "ICC" / "press.icc").write_bytes((folder / "own.icc").read_bytes())
    (folder / "ICC" / "plain.icc").write_bytes(profile([(b"cprt", b"text\0\0\0\0by hand\0")]))


def make_private_documents(folder):
    """Documents of private tags as people edit them, right and wrong."""
    start = '{"format": "vkcl-private-tags", "formatVersion": 1, "tags": '
    documents = {
        "edit": '{"QX75": {"text": "soft"}, "QX74": {"value": 3}, "QX51": null,'
                '"QX68": {"limits": [75, 82.5], "name": "Spot", "version": 1},'
                '"QX99": {"payload": ["AAEC"]}}}',
        "element": '{"QX99": {"element": ["Zm9v"]}}}',
        "size": '{"QX76": {"version": 1, "value": 5}, "QX51": {"version": 1, "size": 9, "count": 16,'
                '"limits": [1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16]}}}',
        "no_field": '{"QX74": {"valeu": 1}}}',
        "no_value": '{"QX76": {"version": 1}}}',
        "no_tag": '{"cprt": {"payload": []}}}',
        "too_many": '{"QX51": {"version": 1, "size": 140, "count": 16, "limits": [1, 2]}}}',
        "wide": '{"QX74": {"value": 4294967296}}}',
        "count": '{"QX68": {"version": 1, "count": 3, "name": "S", "limits": [1, 2]}}}',
        "points": '{"QX50": {"version": 4, "splits": [{"colorantIndex": 0, "light": [],'
                  '"lightCount": 0, "medium": [], "mediumCount": 0, "dark": [[0, 0, 0], [1, 1, 0]],'
                  '"darkCount": 1, "interpolation": 0}]}}}',
        "hostile": '{"QX5\\u001b[31m": {"payload": []}}}',
        "cut": '{"QX74": {"value": 4',
    }
    for name, tags in documents.items():
        (folder / f"{name}.json").write_text(start + tags, "utf-8")
    (folder / "array.json").write_text("[1]", "utf-8")
    (folder / "other.json").write_text('{"format": "other"}', "utf-8")


def make_installation(folder, tool):
    (folder / "Bin").mkdir()
    shutil.copy(tool, folder / "Bin" / "vkcl")
    (folder / "Program").mkdir()
    (folder / "Program" / "Colors.ini").write_text(
        "[Colours]\r\nViolet 10000 0 0 0\r\nOrange2 0x20000 0 -1 +2\r\nShort 40000 0 0\r\n")


def make_files(folder, real):
    make_own(folder)
    make_documents(folder)
    make_private_documents(folder)
    text = b"text\0\0\0\0made by hand\0"
    (folder / "plain.icc").write_bytes(profile([(b"cprt", text)]))
    (folder / "gap.icc").write_bytes(profile([(b"cprt", text)], gap=8))
    hostile = bytearray(1068)
    hostile[0:8] = struct.pack("<ii", 1, 1068)
    hostile[16:40] = b"\x1b]0;owned\x07\"quote\\\xff\xc3\xa4   "[:24]
    (folder / "hostile.icc").write_bytes(profile(
        [(b"QX53", private(bytes(hostile))), (b"QX54", private(b"\xff" * 30)),
         (b"Q\x1b\x00\x07", text), (b"QX99", private(b"?")), (b"QX53", private(b""))]))
    cut = bytearray(profile([(b"QX53", private(bytes(1068))), (b"QX50", private(b"1234"))]))
    cut[140:144] = struct.pack(">I", 0xfffffff0)
    (folder / "beyond.icc").write_bytes(bytes(cut))
    (folder / "short.icc").write_bytes(b"hello")
    (folder / "nomagic.icc").write_bytes(b"x" * 200)
    (folder / "count.icc").write_bytes(profile([(b"cprt", text)])[:128] + b"\xff\xff\xff\xff" * 8)
    (folder / "lab.icc").write_bytes(profile([(b"cprt", text)], space=b"Lab "))
    (folder / "folder").mkdir()
    (folder / "press.icc").write_bytes((real / "ghostscript" / "default_cmyk.icc").read_bytes())
    (folder / "lstar.icc").write_bytes((real / "LStar-RGB.icc").read_bytes())


def run_command(line, folder, tool):
    path = os.pathsep.join([str(pathlib.Path(tool).parent), os.environ.get("PATH", "")])
    done = subprocess.run(shlex.split(line), cwd=folder, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, check=False,
                          env={**os.environ, "LC_ALL": "C.UTF-8", "PATH": path})
    output = (done.stdout + done.stderr).decode("utf-8", "backslashreplace")
    output = output.replace(str(folder), "FOLDER")
    if output and not output.endswith("\n"):
        output += "\n"
    return output + (f"[exit {done.returncode}]\n" if done.returncode else "")


def run_case(path, tool, real):
    commands = [line for line in path.read_text("utf-8").splitlines() if line.startswith("$ ")]
    with tempfile.TemporaryDirectory(prefix="vkcl-golden-") as name:
        folder = pathlib.Path(name).resolve()
        make_files(folder, real)
        make_installation(folder, tool)
        return "".join(f"{line}\n{run_command(line[2:], folder, tool)}" for line in commands)


def main():
    tool, real, cases = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3:]
    rewrite = cases == ["--rewrite"]
    names = [path.stem for path in sorted(HERE.glob("*.txt"))] if rewrite else cases
    failed = False
    for name in names:
        path = HERE / f"{name}.txt"
        seen = run_case(path, tool, real)
        if rewrite:
            path.write_text(seen, "utf-8")
        elif seen != path.read_text("utf-8"):
            import difflib
            failed = True
            sys.stdout.writelines(difflib.unified_diff(
                path.read_text("utf-8").splitlines(True), seen.splitlines(True),
                f"{name}: expected", f"{name}: seen"))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
