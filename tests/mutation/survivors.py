"""The list of changes that are known to go unnoticed, and why that is right.

A change stands there by its file and its line before and after, so that it is found again when
lines move:

    src/folder/File.cpp
    - the line as it is
    + the line as it becomes
      The reason, in one line or more.
"""


def read(path):
    """The reasons by file, line before and line after."""
    known, file, before, after, reason = {}, '', '', '', []

    def close():
        if after:
            if not reason:
                raise ValueError(f'{path}: no reason for "{after}" in {file}')
            known[file, before, after] = ' '.join(reason)

    for line in path.read_text().splitlines() if path.exists() else []:
        if line.startswith('src/'):
            close()
            file, before, after, reason = line.strip(), '', '', []
        elif line.startswith('- '):
            close()
            before, after, reason = line[2:], '', []
        elif line.startswith('+ '):
            if after and not reason:
                raise ValueError(f'{path}: no reason for "{after}" in {file}')
            close()
            after, reason = line[2:], []
        elif line.startswith('  '):
            reason.append(line.strip())
    close()
    return known


def show(mutant):
    return f'{mutant.path}\n- {mutant.before}\n+ {mutant.after}'
