#!/usr/bin/env python3
"""Loads the completion scripts into the shells, asks for completions, and compares.

usage: completion.py TOOL SHELL

bash and zsh run on a terminal of their own: a key inserts all that they offer, another one writes
the line to a file. fish tells without a terminal.
"""
import os
import pathlib
import pty
import re
import shlex
import subprocess
import sys
import tempfile
import time

KINDS = "trc profile1 profile2 profile3 profile4 vsd"

# What stands on the line, and what may take the place of its last word.
CASES = [
    ("vkcl in", "info"),
    ("vkcl colo", "colors"),
    ("vkcl colors ", "mode names"),
    ("vkcl colors mo", "mode"),
    ("vkcl colors names ", ""),
    ("vkcl vsd cr", "create"),
    ("vkcl vsd pre", "press.icc"),
    ("vkcl vsd extract pre", "press.icc"),
    ("vkcl info --js", "--json"),
    ("vkcl info --json pre", "press.icc"),
    ("vkcl info press.icc wi", "'with blank.icc'"),
    ("vkcl embed press.icc ", KINDS),
    ("vkcl embed --dry-run press.icc profile", "profile1 profile2 profile3 profile4"),
    ("vkcl embed press.icc trc lin", "link.icc"),
    ("vkcl set press.icc Wiz", "Wizard.value="),
    ("vkcl set press.icc Wizard.value=1 Chroma", "ChromaAdjust.text="),
    ("vkcl set press.icc Wizard.value=", ""),
    ("vkcl set --channels 4 press.icc CMS", "CMStoDither.value="),
    ("vkcl split --xml pre", "press.icc"),
    ("vkcl split --version 2 --fo", "--force"),
    ("vkcl split --default ", ""),
    ("vkcl completion ", "bash zsh fish"),
    ("vkcl help lis", "lists"),
    ("vkcl info --col", "--color"),
    ("vkcl info --color ", "always auto never"),
    ("vkcl --color al", "always"),
    ("vkcl --color never inf", "info"),
    ("vkcl --color=never embed press.icc tr", "trc"),
    ("vkcl nonsense --js", ""),
    ("vkcl info --nonsense", ""),
]

BASH = """
PS1=; bind 'set enable-bracketed-paste off'; bind '"\\t": insert-completions'
tell() { printf '%s\\n' "$READLINE_LINE" >>"$OUT"; READLINE_LINE=; }
bind -x '"\\C-g": tell'; . "$SCRIPT"; echo ready >>"$OUT"
"""
ZSH = """
PS1=; unsetopt beep; autoload -Uz compinit; compinit -D -u
zstyle ':completion:*' completer _all_matches _complete
zstyle ':completion:*:all-matches:*' insert yes
zstyle ':completion:*' list-prompt ''; LISTMAX=1000
tell() { print -r -- "$BUFFER" >>$OUT; BUFFER=; }
zle -N tell; bindkey -e; bindkey '^G' tell; . $SCRIPT; echo ready >>$OUT
"""


class Terminal:
    """An interactive shell, whose lines go to a file."""

    def __init__(self, words, environment, out):
        self.out, self.seen = out, 0
        out.touch()
        self.pid, self.handle = pty.fork()
        if self.pid == 0:
            os.execvpe(words[0], words, environment)
        os.set_blocking(self.handle, False)
        assert self.read() == "ready"

    def read(self):
        limit = time.monotonic() + 20
        while time.monotonic() < limit:
            try:
                os.read(self.handle, 65536)  # what the shell shows; nobody looks
            except BlockingIOError:
                pass
            lines = self.out.read_text("utf-8").splitlines(True)
            if len(lines) > self.seen and lines[self.seen].endswith("\n"):
                self.seen += 1
                return lines[self.seen - 1].rstrip("\n")
            time.sleep(0.005)
        raise AssertionError("the shell does not answer")

    def complete(self, line):
        os.write(self.handle, line.encode() + b"\t\x07")
        return self.read()

    def close(self):
        os.write(self.handle, b"exit\n")
        os.close(self.handle)
        os.waitpid(self.pid, 0)


def inserted(line, result):
    """The words that took the place of the last one; none when it still stands there."""
    start = line[:line.rindex(" ") + 1]
    assert result.startswith(start), (line, result)
    if result.rstrip() == line.rstrip():
        return []
    # zsh goes on behind an option with the "=" of its value.
    return [re.sub("^(--.*)=$", r"\1", word) for word in shlex.split(result[len(start):])]


def by_terminal(shell, environment, folder):
    rc = folder / ("bashrc" if shell == "bash" else ".zshrc")
    rc.write_text(BASH if shell == "bash" else ZSH, "utf-8")
    words = ["bash", "--noprofile", "--rcfile", str(rc), "-i"] if shell == "bash" else ["zsh", "-i"]
    terminal = Terminal(words, environment, folder / "out")
    try:
        return [inserted(line, terminal.complete(line)) for line, _ in CASES]
    finally:
        terminal.close()


def by_fish(environment):
    lines = "".join(f"complete -C {shlex.quote(line)}; echo .\n" for line, _ in CASES)
    done = subprocess.run(["fish", "--no-config", "-c", f"source $SCRIPT\n{lines}"],
                          env=environment, capture_output=True, text=True, check=True)
    assert done.stderr == "", done.stderr
    answers, words = [], []
    for line in done.stdout.splitlines():
        if line == ".":
            stem = CASES[len(answers)][0].split(" ")[-1]
            answers, words = answers + [[word for word in words if word != stem]], []
        else:
            words.append(line.split("\t")[0])
    return answers


def main():
    tool, shell = os.path.abspath(sys.argv[1]), sys.argv[2]
    with tempfile.TemporaryDirectory(prefix="vkcl-completion-") as name:
        folder = pathlib.Path(name)
        (folder / "work").mkdir()
        for file in ("press.icc", "link.icc", "with blank.icc"):
            (folder / "work" / file).touch()
        script = folder / "script"
        script.write_bytes(subprocess.run([tool, "completion", shell], capture_output=True,
                                          check=True).stdout)
        environment = {"PATH": os.environ["PATH"], "HOME": name, "ZDOTDIR": name, "TERM": "xterm",
                       "LC_ALL": "C.UTF-8", "SCRIPT": str(script), "OUT": str(folder / "out")}
        os.chdir(folder / "work")
        answers = by_fish(environment) if shell == "fish" else by_terminal(shell, environment, folder)
        os.chdir("/")
    wrong = 0
    for (line, expected), words in zip(CASES, answers, strict=True):
        if sorted(words) != sorted(shlex.split(expected)):
            wrong += 1
            print(f"{shell}: {line!r}: {words}, not {expected!r}")
    print(f"{shell}: {len(CASES)} lines, {wrong} wrong")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
