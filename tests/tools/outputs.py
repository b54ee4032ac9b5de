#!/usr/bin/env python3
"""What verbs write stands whole at its place, and nothing else is touched.

usage: outputs.py TOOL PROFILE
"""
import os
import pathlib
import resource
import shutil
import struct
import subprocess
import sys
import tempfile

# No file may become longer than 100 bytes. A build that counts what runs cannot save its counts so,
# and says so behind the refusal.
LIMITED = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100)),
           "env": {**os.environ, "GCOV_PREFIX": os.devnull}}


def profile(entries, data):
    """A profile of (signature, offset behind the table, length) and their data."""
    start = 132 + 12 * len(entries)
    head = bytearray(128)
    head[0:4] = struct.pack(">I", start + len(data))
    head[8:12] = bytes.fromhex("02100000")
    head[12:24] = b"prtrCMYKLab "
    head[36:40] = b"acsp"
    table = b"".join(signature + struct.pack(">II", start + offset, length)
                     for signature, offset, length in entries)
    return bytes(head) + struct.pack(">I", len(entries)) + table + data


class Tool:
    def __init__(self, path, folder):
        self.path, self.folder = path, folder

    def run(self, *words, **options):
        return subprocess.run([self.path, *words], cwd=self.folder, capture_output=True, text=True,
                              check=False, **options)

    def does(self, *words, **options):
        done = self.run(*words, **options)
        assert done.returncode == 0, (words, done)

    def refuses(self, why, *words, **options):
        done = self.run(*words, **options)
        told = done.stderr.splitlines()[:1]
        assert (done.returncode, told) == (1, [f"vkcl: {why}"]), (words, done)


def strip_keeps_what_tags_hold(tool, folder):
    # Two tags that begin together, the longer one behind the shorter.
    data = b"data" + bytes(28) + b"of the longer one only" + bytes(10) + b"data" + bytes(range(32))
    (folder / "shared.icc").write_bytes(profile(
        [(b"AAAA", 0, 32), (b"BBBB", 0, 64), (b"QX74", 0, 32), (b"CCCC", 64, 36)], data))
    tool.does("strip", "shared.icc", "out.icc")
    copy = (folder / "out.icc").read_bytes()
    tags = [struct.unpack_from(">4sII", copy, 132 + 12 * i) for i in range(3)]
    held = [(signature, copy[offset:offset + length]) for signature, offset, length in tags]
    assert held == [(b"AAAA", data[:32]), (b"BBBB", data[:64]), (b"CCCC", data[64:100])], held
    # No zeros in the place of what is lost.
    (folder / "cut.icc").write_bytes((folder / "shared.icc").read_bytes()[:-1])
    tool.refuses("cut.icc: none.icc could not be written: its tag 'CCCC' reaches beyond the end of "
                 "the profile's file", "strip", "cut.icc", "none.icc")
    assert not (folder / "none.icc").exists()


def old_files_stay_or_are_replaced(tool, folder):
    (folder / "content").write_bytes(bytes(range(256)) * 10)
    tool.does("embed", "p.icc", "trc", "content")
    (folder / "empty").write_bytes(b"")
    tool.does("embed", "q.icc", "trc", "empty")
    tool.does("extract", "q.icc", "trc", "as-empty")
    assert (folder / "as-empty").read_bytes() == b""
    for verb, words in (("extract", ["extract", "p.icc", "trc"]), ("strip", ["strip", "p.icc"])):
        target, link, hard, out = (folder / f"{verb}-{name}" for name in
                                   ("target", "link", "hard", "out"))
        for path in (target, out):
            path.write_bytes(b"old")
            path.chmod(0o640)
        link.symlink_to(target.name)
        os.link(out, hard)
        for path in (link, out):
            tool.refuses(f"p.icc: {path.name} could not be written: the file system refuses it, or "
                         "is full", *words, "--force", path.name, **LIMITED)
            assert path.read_bytes() == b"old"
        for path in (link, out):
            tool.does(*words, "--force", path.name)
            assert path.stat().st_size > 2000 and path.stat().st_mode & 0o777 == 0o640, path
        assert link.is_symlink() and hard.read_bytes() == b"old"
    assert (folder / "extract-target").read_bytes() == (folder / "content").read_bytes()


def nothing_replaces_the_standard_input(tool, folder):
    tool.does("dump", "--json", "p.icc", "-o", "d.json")
    tool.does("split", "--default", "2", "--strengths", "1,1,1,1,0.5,0.5", "--xml", "s.xml")
    tool.does("split", "p.icc", "--from-xml", "s.xml")
    for words, out in ((["dump", "--json", "-", "-o", "p.icc"], "p.icc"),
                       (["split", "-", "--xml", "p.icc"], "p.icc"),
                       (["apply", "p.icc", "-", "-o", "d.json"], "d.json")):
        before = (folder / out).read_bytes()
        with open(folder / out, "rb") as given:
            done = tool.run(*words, "--force", stdin=given)
        assert done.returncode == 1, (words, done)
        assert f"{out} is the standard input, and not replaced" in done.stderr, (words, done)
        assert (folder / out).read_bytes() == before


def sidecars_lie_beside_the_folder_that_the_system_means(tool, folder):
    (folder / "a" / "icc").mkdir(parents=True)
    (folder / "b" / "c").mkdir(parents=True)
    (folder / "b" / "icc").mkdir()
    (folder / "a" / "link").symlink_to(pathlib.Path("..") / "b" / "c")
    for place, name in (("a", "Acme"), ("b", "Bolt")):
        shutil.copyfile(folder / "p.icc", folder / place / "icc" / "x.icc")
        tool.does("set", f"{place}/icc/x.icc", f"ColorParam.Make={name}")
    tool.does("vsd", "create", "a/link/../icc/x.icc")  # b/icc/x.icc
    assert b"Bolt" in (folder / "b" / "VSDProfile" / "x.icc").read_bytes()
    assert not (folder / "a" / "VSDProfile").exists()


def files_that_look_like_one_are_merged(tool, folder):
    (folder / "m" / "deep").mkdir(parents=True)
    (folder / "n").mkdir()
    (folder / "n" / "link").symlink_to(pathlib.Path("..") / "m" / "deep")
    shutil.copyfile(folder / "p.icc", folder / "n" / "x.icc")
    tool.does("set", "n/x.icc", "ColorParam.Make=Acme", "SingleInkLimit.limits[0]=50")
    for how in ([], ["--in-place"]):
        tool.does("strip", "p.icc", "m/x.icc", "--force")
        tool.does("merge", "n/x.icc", "n/link/../x.icc", *how)  # m/x.icc
        private = [(folder / place / "x.icc").read_bytes().count(b"QX") for place in ("m", "n")]
        assert private[0] == private[1] != 0, private


def main():
    with tempfile.TemporaryDirectory(prefix="vkcl-outputs-") as name:
        folder = pathlib.Path(name)
        shutil.copyfile(sys.argv[2], folder / "p.icc")
        tool = Tool(os.path.abspath(sys.argv[1]), folder)
        tool.does("set", "p.icc", "Wizard.value=1")
        shutil.copyfile(folder / "p.icc", folder / "q.icc")
        strip_keeps_what_tags_hold(tool, folder)
        old_files_stay_or_are_replaced(tool, folder)
        nothing_replaces_the_standard_input(tool, folder)
        sidecars_lie_beside_the_folder_that_the_system_means(tool, folder)
        files_that_look_like_one_are_merged(tool, folder)
        assert not [path for path in folder.iterdir() if path.name.startswith(".")]
    print("nothing was lost")


if __name__ == "__main__":
    main()
