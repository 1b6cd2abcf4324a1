"""The web addresses that the client hands to the desktop's browser."""

import os

from harness.waiting import wait_until

_SCRIPT = """#!/bin/sh
printf '%s\\n' "$1" >>'{record}'
"""


class OpenedAddresses:
    """A folder for the search path, with an xdg-open that writes down what it is asked to open."""

    def __init__(self, parent):
        self.folder = os.path.join(parent, "opener")
        self._record = os.path.join(parent, "opened-addresses")
        self._seen = 0
        os.mkdir(self.folder)
        script = os.path.join(self.folder, "xdg-open")
        with open(script, "w", encoding="utf-8") as target:
            target.write(_SCRIPT.format(record=self._record))
        os.chmod(script, 0o755)

    def all(self):
        try:
            with open(self._record, encoding="utf-8") as source:
                return [line.rstrip("\n") for line in source if line.endswith("\n")]
        except FileNotFoundError:
            return []

    def next(self):
        """Waits for an address that was not taken yet and takes it."""
        wait_until(lambda: len(self.all()) > self._seen, "an address handed to the browser")
        self._seen += 1
        return self.all()[self._seen - 1]
