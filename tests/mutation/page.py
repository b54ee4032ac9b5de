"""The table of every change, in docs/mutation.md."""

import re

BEGIN = '<!-- every change -->'
END = '<!-- end of every change -->'
HEAD = ('| Area | Changes | Counted | Noticed | Survived | Known | Share | With the known ones |\n'
        '|---|---|---|---|---|---|---|---|\n')


def share(counts):
    """Of no changes that count, none was noticed."""
    counted = counts['noticed'] + counts['survived']
    return counts['noticed'] / counted if counted else 0.0


def share_with_known(counts):
    counted = counts['noticed'] + counts['survived'] + counts['known']
    return counts['noticed'] / counted if counted else 0.0


def row(name, counts):
    counted = counts['noticed'] + counts['survived']
    return (f"| `{name}` | {counts['made']:,} | {counted:,} | {counts['noticed']:,} "
            f"| {counts['survived']:,} | {counts['known']:,} | {100 * share(counts):.1f} % "
            f"| {100 * share_with_known(counts):.1f} % |\n")


def write(path, name, counts):
    """Puts the row of an area into the page, in the place of its old one."""
    text = path.read_text()
    start, end = text.index(BEGIN) + len(BEGIN), text.index(END)
    rows = {}
    for line in text[start:end].splitlines():
        match = re.match(r'\| `([\w]+)` \|', line)
        if match:
            rows[match.group(1)] = line + '\n'
    rows[name] = row(name, counts)
    path.write_text(text[:start] + '\n' + HEAD + ''.join(rows.values()) + text[end:])
