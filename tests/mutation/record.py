"""What became of each change so far, kept beside the build: a run that was stopped goes on there.

A change is known by its file, the file's code and its number among the changes of that code, so
that comments may be edited. A source whose code has changed is tried again, and so is what survived
when a test of its area has changed.
"""

import hashlib
import json
import re
import threading

from mutants import MASKED


def digest(text):
    return hashlib.sha256(text.encode()).hexdigest()[:16]


def code_digest(source):
    """Of a source without its comments and its layout."""
    code = MASKED.sub(lambda m: ' ' if m.group(0)[:2] in ('//', '/*') else m.group(0), source)
    return digest(re.sub(r'\s+', ' ', code))


class Record:
    def __init__(self, path):
        self.path, self.outcomes, self.lock = path, {}, threading.Lock()
        for line in path.read_text().splitlines() if path.exists() else []:
            try:
                row = json.loads(line)
            except ValueError:
                continue  # the last line of a run that was killed
            self.outcomes[tuple(row['key'])] = row

    def forget(self):
        self.outcomes = {}
        self.path.unlink(missing_ok=True)

    def find(self, key, tests):
        """Outcome and noticing test; None for a change that is to be tried."""
        row = self.outcomes.get(key)
        if row is None or (row['outcome'] == 'survived' and row['tests'] != tests):
            return None
        return row['outcome'], row['test']

    def add(self, key, tests, outcome, test):
        row = {'key': key, 'tests': tests, 'outcome': outcome, 'test': test}
        with self.lock:
            self.outcomes[key] = row
            with open(self.path, 'a') as file:
                file.write(json.dumps(row) + '\n')
