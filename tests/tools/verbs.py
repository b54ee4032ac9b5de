"""The verbs of the tool, as its own help lists them."""
import re
import subprocess


def help_of(tool, path):
    """The help of a verb, which `vkcl VERB --help` and `vkcl help VERB` show alike."""
    def run(*words):
        return subprocess.run([tool, *words], capture_output=True, text=True, check=True).stdout
    text = run("help", *path)
    assert text == run(*path, "--help"), path
    return text


def section(text, heading):
    found = re.search(rf"^{heading}:\n((?:  .*\n)+)", text, re.M)
    return found.group(1) if found else ""


def all_verbs(tool, path=()):
    """(path, help) of the verbs at and below the path, the tool itself first."""
    text = help_of(tool, path)
    yield path, text
    for name in re.findall(r"^  (\w\S*)", section(text, "Verbs"), re.M):
        yield from all_verbs(tool, (*path, name))
