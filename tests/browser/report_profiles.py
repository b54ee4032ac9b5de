#!/usr/bin/env python3
"""Makes the profiles that the report is looked at with: one as a print shop has it, with every kind
of record, and hostile ones that try to become markup, or hold numbers that no chart can show.

usage: report_profiles.py FOLDER REAL_PROFILE_FOLDER     (prints the paths that it made)
"""
import math
import pathlib
import struct
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tools"))
from run_golden import data_list, private, profile  # noqa: E402

# Texts that do something wherever they are taken for markup. The page's title is "pwned" then, a
# dialog opens, or somebody is asked for a picture.
PAYLOADS = [
    b"<script>document.title='pwned'</script>",
    b"\"><img src=x onerror=\"document.title='pwned'\">",
    b"</title><script>alert(1)</script>",
    b"\"></svg><svg onload=alert(1)>",
    b"javascript:alert(1)//' onmouseover='alert(1)",
    b"]]><![CDATA[<script>alert(1)</script>",
    b"&lt;script&gt;&#x3c;img src=http://192.0.2.1/x&#x3e;",
    b"</style><style>@import 'http://192.0.2.1/x.css';</style>",
    b"<link rel=stylesheet href=http://192.0.2.1/y.css><base href=http://192.0.2.1/>",
    b"--><iframe src=http://192.0.2.1/></iframe>",
    "\u202egnp.evil\u202c \u2066x\u2069 \u200b".encode() + b"\x01\x1b[2J\x7f\xff\xc3(",
]
NUMBERS = [math.nan, math.inf, -math.inf, 1e308, -1e308, -5.0, 0.0, 5e-324, 1e17, -0.0]
FILE_NAME = "a<img src=x onerror=alert(1)>&\"' \u202egnp.icc"


def field(text, width):
    return text[:width - 1].ljust(width, b"\0")


def color_param(status, make, model, medium, mode, option=b"", texts=(b"", b"", b"")):
    return (struct.pack("<4i", 1, 1068, status, 4711) + field(make, 128) + field(model, 128)
            + field(medium, 128) + struct.pack("<iff4i", 3, 720.0, 1440.0, mode, 0, 2, 1)
            + option.ljust(256, b"\0") + b"".join(field(text, 128) for text in texts))


def single_limits(values):
    return struct.pack("<iii16d", 1, 140, 16, *values)


def multi_limits(values):
    return struct.pack("<iii36d", 2, 300, 36, *values)


def split4(curves):
    """Curves of version 4: for each colorant its index and the points of light, medium, dark."""
    records = b""
    for colorant, points, interpolation in curves:
        records += struct.pack("<Ii", 9240, colorant)
        for curve in points:
            flat = [number for point in curve for number in point]
            records += struct.pack("<768f", *(flat + [0.0] * (768 - len(flat))))
        records += struct.pack("<4i", *[len(curve) for curve in points], interpolation)
    return struct.pack("<iii8x", 4, 20 + len(records), len(curves)) + records


def knots2(colorant, **knots):
    """A record of version 2; knots by the number of their float."""
    values = [-1.0] * 8 + [0.0] * 9
    for place, value in knots.items():
        values[int(place[1:])] = value
    return struct.pack("<Ii17f", 76, colorant, *values)


def tone(amount, gain=0.18):
    return amount + gain * 4 * amount * (1 - amount)


SOLIDS = {0: (55.0, -37.0, -50.0), 1: (48.0, 74.0, -3.0), 2: (89.0, -5.0, 93.0), 3: (16.0, 0.0, 0.0)}
PAPER = (95.2, 0.8, -2.4)


def lab_of(amounts):
    """What paper and inks might give: each ink takes its part of what is left."""
    color = list(PAPER)
    least = min(tone(amount / 100) for amount in amounts[:3])
    gray = 1 - 0.93 * least / max(1e-9, *(tone(amount / 100) for amount in amounts[:3]))
    for channel, amount in enumerate(amounts):
        cover = tone(amount / 100)
        keep = 1 - cover * (1 - SOLIDS[channel][0] / PAPER[0])
        color[0] = color[0] * keep
        for axis in (1, 2):
            color[axis] = color[axis] * (1 - 0.45 * cover) + SOLIDS[channel][axis] * cover * gray
    return color


def linearisation():
    steps = [0, 5, 10, 15, 20, 30, 40, 50, 60, 70, 80, 90, 95, 100]
    device = [[step if other == channel else 0 for other in range(4)]
              for channel in range(4) for step in steps]
    return device, [lab_of(amounts) for amounts in device]


def gray_balance():
    device = [[c, c * 0.78 + shift, c * 0.76 - shift, 0]
              for c in range(10, 100, 10) for shift in (-4, 0, 4)]
    return device, [lab_of(amounts) for amounts in device]


def characterisation(real):
    """The public FOGRA39 measurements where they are installed, else the same by computation."""
    path = real / "FOGRA39L.ti3"
    device = []
    measured = []
    if path.exists():
        lines = path.read_text("ascii", "replace").splitlines()
        names = lines[lines.index("BEGIN_DATA_FORMAT") + 1].split()
        columns = [names.index(name) for name in
                   ("CMYK_C", "CMYK_M", "CMYK_Y", "CMYK_K", "LAB_L", "LAB_A", "LAB_B")
                   if name in names]
        if len(columns) == 7:
            for line in lines[lines.index("BEGIN_DATA") + 1:lines.index("END_DATA")]:
                row = [float(line.split()[column]) for column in columns]
                device.append(row[:4])
                measured.append(row[4:])
    if not device:
        steps = (0, 20, 40, 70, 100)
        device = [[c, m, y, k] for k in steps for y in steps for m in steps for c in steps]
        measured = [lab_of(amounts) for amounts in device]
    return device, measured


def flat(rows):
    return [value for row in rows for value in row]


def pair(word, device, measured):
    columns = len(device[0])
    return (private(data_list(word, len(device), columns, flat(device))),
            private(data_list(b"Lab ", len(measured), 3, flat(measured), len(measured))))


def tags_of(path):
    content = path.read_bytes()
    count = struct.unpack(">I", content[128:132])[0]
    entries = [struct.unpack(">4sII", content[132 + 12 * i:144 + 12 * i]) for i in range(count)]
    return [(signature, content[offset:offset + size]) for signature, offset, size in entries]


def full_profile(real):
    mode = 2  # Cyan, Magenta, Yellow, Black, light cyan and light magenta
    two = [[(0, 0, 0), (0.3, 0.4, 0.25), (0.6, 0, 0.25)], [],
           [(0.3, 0, 0.25), (0.6, 0.6, 0.25), (1, 1, 0)]]
    three = [[(0, 0, 0), (0.2, 0.2, 0.25), (0.4, 0, 0.25)],
             [(0.2, 0, 0.25), (0.5, 0.4, 0.25), (0.8, 0, 0.25)],
             [(0.5, 0, 0.25), (0.8, 0.75, 0.25), (1, 1, 0)]]
    single = [85.5, 90, 95.25, 80, 70, 72.5] + [100.0] * 10
    multi = [100.0] * 36
    multi[0:10] = [100, 90, 95, 180, 185, 190, 240, 260, 280, 300]
    lin = pair(b"CMYK", *linearisation())
    gray = pair(b"CMYK", *gray_balance())
    patches = pair(b"CMYK", *characterisation(real))
    spot = b"Spot Orange"
    limits = (struct.pack("<iii", 1, 12 + len(spot) + 16, 2) + spot + struct.pack("<2d", 75, 82.5))
    extra = struct.pack("<i", 1) + b"linearised on stock 12".ljust(132, b"\0") + \
        struct.pack("<i", 12) + bytes(range(144)) + bytes(288)
    own = [
        (b"QX51", private(single_limits(single))),
        (b"QX53", private(color_param(11, b"Acme", b"Wide 64", "Bütten Baryta 310".encode(), mode,
                                      b"\xab\xcd"))),
        (b"QX50", private(split4([(0, two, 0), (1, two, 0), (3, three, 1)]))),
        (b"QX55", lin[0]), (b"QX54", lin[1]),
        (b"QX52", private(multi_limits(multi))),
        (b"QX57", gray[0]), (b"QX56", gray[1]),
        (b"QX60", patches[0]), (b"QX59", patches[1]),
        (b"QX64", private(struct.pack("<i", 1))),
        (b"QX66", private(struct.pack("<ii8xI", 1, 4132, 4116) + bytes(range(256)) * 16 + bytes(16))),
        (b"QX68", private(limits)),
        (b"QX70", private(extra)),
        (b"QX75", private(b"soft 0.85\0")),
        (b"QX76", private(struct.pack("<ii", 1, 7))),
    ]
    press = real / "ghostscript" / "default_cmyk.icc"
    return profile(tags_of(press) + own)


def early_profile():
    knots = [knots2(0, k1=0.3, k2=0.6, k5=0.4, k7=0.6), knots2(1, k1=0.3, k2=0.6, k5=0.4, k7=0.6)]
    split = struct.pack("<iii8x", 2, 20 + 76 * 2, 2) + b"".join(knots)
    spectra = [[0.1 + 0.7 * math.exp(-((band - 18) / (4 + 3 * patch)) ** 2) for band in range(36)]
               for patch in range(6)]
    return profile([
        (b"QX51", private(single_limits([90.0] * 16))),
        (b"QX53", private(color_param(0, b"Acme", b"Wide 24", b"Proof Satin", 1))),
        (b"QX50", private(split)),
        (b"QX54", private(data_list(b"refl", 6, 36, flat(spectra), 6))),
    ])


def hostile_texts(which):
    """Payload `which` in every text there is."""
    text = PAYLOADS[which % len(PAYLOADS)]
    others = [PAYLOADS[(which + i) % len(PAYLOADS)] for i in range(1, 6)]
    spot = others[0]
    limits = struct.pack("<iii", 1, 12 + len(spot) + 8, 1) + spot + struct.pack("<d", 50.0)
    links = struct.pack("<iiii", 1, 16 + len(text) + 4, 1, len(text)) + text + struct.pack("<i", 0)
    ascii_count = struct.pack(">I", len(text) + 1)
    mluc = text.decode("utf-8", "replace").encode("utf-16-be")
    target = (b"CGATS.5\nORIGINATOR \"" + text + b"\"\nBEGIN_DATA_FORMAT\nCMYK_C CMYK_M CMYK_Y CMYK_K "
              b"LAB_L LAB_A LAB_B\nEND_DATA_FORMAT\nBEGIN_DATA\n0 0 0 0 95 0 0\n"
              b"100 0 0 0 nan inf -inf\nEND_DATA\n")
    return profile([
        (b"desc", b"desc\0\0\0\0" + ascii_count + text + b"\0" + bytes(78)),
        (b"cprt", b"mluc\0\0\0\0" + struct.pack(">II2s2sII", 1, 12, b"en", b"US", len(mluc), 28)
         + mluc),
        (b"targ", b"text\0\0\0\0" + target),
        (b"<b>&", b"\"'<>" + text),
        (b"QX51", private(single_limits([90.0] * 16))),
        (b"QX53", private(color_param(9, text, others[1], others[2], -1, text, others[2:5]))),
        (b"QX68", private(limits)),
        (b"QX69", private(links)),
        (b"QX70", private(struct.pack("<i", 1) + text.ljust(568, b"\0"))),
        (b"QX71", private(struct.pack("<i", 1) + field(text, 128) + text)),
        (b"QX75", private(text + b"\0")),
        (b"QX\x1b<", text),
    ], space=b"<\"'>", device_class=b"&<>\x00")


def hostile_numbers():
    numbers = (NUMBERS * 8)[:36]
    nan = math.nan
    odd = [[(nan, nan, nan), (0.5, math.inf, 0), (-3, 2, 0), (1e30, -1e30, 0)], [],
           [(0, 0, 0), (1, 1, nan)]]
    broken = bytearray(split4([(0, odd, -1), (-1, odd, 0), (2147483647, odd, 5)]))
    struct.pack_into("<3i", broken, 20 + 9224, 2147483647, -5, 3)
    rows = [[a, b, c] for a in NUMBERS for b in NUMBERS for c in NUMBERS]
    device = [[a, 0, 0, 0] for a in NUMBERS for _ in range(100)]
    return profile([
        (b"QX51", private(single_limits(numbers[:16]))),
        (b"QX53", private(color_param(12, b"", b"", b"", -2147483648))),
        (b"QX52", private(multi_limits(numbers))),
        (b"QX50", private(bytes(broken))),
        (b"QX55", private(data_list(b"CMYK", 1000, 4, flat(device)))),
        (b"QX54", private(data_list(b"Lab ", 1000, 3, flat(rows), -7))),
        (b"QX57", private(data_list(b"Lab ", 1000, 3, flat(rows)))),
        (b"QX56", private(data_list(b"Lab ", 1000, 3, flat(rows)))),
        (b"QX60", private(data_list(b"CMYK", 1000, 4, flat(device)))),
        (b"QX59", private(data_list(b"Lab ", 1000, 3, flat(rows)))),
        (b"QX72", private(data_list(b"\xff\xff\xff\xff", 10, 100, [nan] * 1000))),
        (b"QX73", private(data_list(b"refl", 1, 1, [math.inf]))),
        (b"QX66", private(struct.pack("<ii", 1, 24))),
        (b"QX53", private(b"")),
        (b"QX76", private(b"1234")),
        (b"QX74", b"text"),
        (b"QX99", private(b"?")),
    ])


def empty_lists():
    """Records that are there and hold nothing, and those that are cut."""
    cut = bytearray(profile([
        (b"QX51", private(b"")), (b"QX53", private(bytes(1068))),
        (b"QX50", private(struct.pack("<iii8x", 4, 20, 0))),
        (b"QX54", private(struct.pack("<Iiiiii", 0xffffffff, 12, 1, 4, 12, 0))),
        (b"QX55", private(struct.pack("<Iiiiii", 0xffffffff, 2147483647, 1, 2147483647, 0, 0))),
        (b"QX57", private(struct.pack("<Iiiiii", 0, -1, 0, -1, 0, 1))),
        (b"QX59", private(bytes(24))), (b"QX60", b""), (b"QX75", private(b"")),
        (b"targ", b"text\0\0\0\0no target")]))
    struct.pack_into(">I", cut, 132 + 12 * 7 + 4, 0xfffffff0)
    return bytes(cut)


def make(folder, real):
    """Writes the files, and gives their paths."""
    files = {"press.icc": full_profile(real), "early.icc": early_profile(),
             FILE_NAME: hostile_numbers(), "empty.icc": empty_lists(),
             "short.icc": b"hello", "plain.icc": (real / "LStar-RGB.icc").read_bytes()}
    for which in range(len(PAYLOADS)):
        files[f"hostile{which}.icc"] = hostile_texts(which)
    for name, content in files.items():
        (folder / name).write_bytes(content)
    return [folder / name for name in files]


def main():
    for path in make(pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2])):
        print(path)
    return 0


if __name__ == "__main__":
    sys.exit(main())
