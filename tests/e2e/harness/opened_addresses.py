"""The web addresses that the client hands to the desktop, and who opens them."""

import os
import shlex

from harness.waiting import wait_until

# It also has to work where nothing but a shell is installed.
_SCRIPT = """#!/bin/sh
printf '%s\\n' "$1" >>'{record}'
[ ! -x '{browser}' ] || exec '{browser}' "$1"
"""


class OpenedAddresses:
    """A folder for the search path, with an xdg-open that writes down each address that it is asked to open, and then
    gives it to the desktop's browser, if there is one."""

    def __init__(self, parent):
        self.folder = os.path.join(parent, "opener")
        self._record = os.path.join(parent, "opened-addresses")
        self._browser = os.path.join(self.folder, "default-browser")
        self._seen = 0
        os.mkdir(self.folder)
        _write_program(os.path.join(self.folder, "xdg-open"),
                       _SCRIPT.format(record=self._record, browser=self._browser))

    def give_to(self, *command):
        """Makes the command, with an address as its last word, the desktop's browser."""
        _write_program(self._browser, f'#!/bin/sh\nexec {shlex.join(command)} "$1"\n')

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


def _write_program(path, text):
    with open(path, "w", encoding="utf-8") as target:
        target.write(text)
    os.chmod(path, 0o755)
