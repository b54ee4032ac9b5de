#!/usr/bin/env python3
"""Takes the tool's output away, in each way in which that happens.

usage: output.py TOOL PROFILE
"""
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile


def run(words, **options):
    return subprocess.run(words, stderr=subprocess.PIPE, check=False, **options)


def to_full_disk(words):
    with open("/dev/full", "wb") as full:
        done = run(words, stdout=full)
    assert done.returncode == 1, (words, done)
    assert done.stderr == b"vkcl: the output cannot be written: No space left on device\n", done


def to_closed_stream(words, file):
    before = file.read_bytes()
    done = run(["sh", "-c", 'exec "$@" >&-', "sh", *words])
    assert done.returncode == 1, (words, done)
    assert done.stderr == b"vkcl: the output cannot be written: Bad file descriptor\n", done
    return before == file.read_bytes()


def complaint_to_closed_stream(words, code):
    """Nobody hears why; the exit code tells all the same."""
    for stream in ("2>&-", "2>/dev/full"):
        done = run(["sh", "-c", f'exec "$@" {stream}', "sh", *words])
        assert done.returncode == code, (words, stream, done)


def to_gone_reader(words, ignored):
    """The reader closes its end before anything is written."""
    reader, writer = os.pipe()
    os.close(reader)
    action = signal.SIG_IGN if ignored else signal.SIG_DFL
    done = run(words, stdout=writer, preexec_fn=lambda: signal.signal(signal.SIGPIPE, action))
    os.close(writer)
    assert done.stderr == b"", done
    assert done.returncode == (1 if ignored else -signal.SIGPIPE), done


def main():
    tool = sys.argv[1]
    with tempfile.TemporaryDirectory(prefix="vkcl-output-") as name:
        file = pathlib.Path(name) / "p.icc"
        shutil.copyfile(sys.argv[2], file)
        shown = [[tool, "--version"], [tool, "--help"], [tool, "info", str(file)],
                 [tool, "info", "--json", *[str(file)] * 40], [tool, "check", *[str(file)] * 40],
                 [tool, "completion", "bash"]]
        for words in shown:
            to_full_disk(words)
            assert to_closed_stream(words, file), words
            to_gone_reader(words, ignored=True)
            to_gone_reader(words, ignored=False)
        complaint_to_closed_stream([tool, "lists", str(file) + ".missing"], 1)
        complaint_to_closed_stream([tool, "nonsense"], 2)
        # What is told goes nowhere, and above all not into the profile that is open.
        change = [tool, "set", "--in-place", str(file), "Wizard.value=1"]
        assert not to_closed_stream(change, file)
        assert run([tool, "check", str(file)], stdout=subprocess.DEVNULL).returncode == 0
        assert b"stored" not in file.read_bytes()
        head = subprocess.run(["sh", "-c", '"$1" info --json $2 $2 $2 | head -n 1', "sh", tool, file],
                              capture_output=True, check=True)
        assert (head.stdout, head.stderr) == (b"[\n", b""), head
    print("nothing was lost unseen")


if __name__ == "__main__":
    main()
