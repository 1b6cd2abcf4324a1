"""./run and ./test in a new clone on Debian 12 and 13, as a user with sudo. Without apt they name missing programs and
use those that exist."""

import pathlib
import struct
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1]))

from fresh_machine import roots  # noqa: E402 (the path comes first)
from fresh_machine.project import clone_into  # noqa: E402
from fresh_machine.testing import main, new_machine, timed  # noqa: E402

PICTURES = ["1-first-start.png", "2-code-shown.png", "3-linked.png", "4-created.png"]

# A PATH with every program except those of Debian's packaging.
WITHOUT_APT = {"PATH": "/opt/without-apt"}
_LINKS = """
rm -rf /opt/without-apt; mkdir /opt/without-apt
for program in /usr/bin/* /usr/sbin/*; do
    case ${program##*/} in apt* | dpkg*) ;; *) ln -s "$program" /opt/without-apt/ ;; esac
done
"""


class Commands(unittest.TestCase):
    def test_debian_12(self):
        machine = new_machine(self, roots.BOOKWORM, "commands-debian-12")
        clone = clone_into(machine)
        machine.run("sh", "-c", _LINKS)
        printed = timed(machine, "./run without anything", "./run", folder=clone, expected=1, **WITHOUT_APT)
        for line in (
            "Missing: c++, a compiler for C++20 (Debian's package g++)",
            "Missing: Qt 6.4 or newer, with Network and Widgets (Debian's package qt6-base-dev)",
            "Missing: Python's waitress (Debian's package python3-waitress)",
            "Missing: Xvfb (Debian's package xvfb)",
        ):
            self.assertIn(line, printed)

        timed(machine, "./run", "./run", folder=clone, limit=1500)
        self.check_pictures(machine, clone)

        machine.run("sh", "-c", _LINKS)
        other_clone = clone_into(machine, "tarnwick-without-apt")
        timed(machine, "./run without apt", "./run", folder=other_clone, limit=900, **WITHOUT_APT)
        self.check_pictures(machine, other_clone)

    def test_debian_13(self):
        machine = new_machine(self, roots.TRIXIE, "commands-debian-13")
        clone = clone_into(machine)
        timed(machine, "./run", "./run", folder=clone, limit=1500)
        self.check_pictures(machine, clone)
        printed = timed(machine, "./test", "./test", folder=clone, limit=2400)
        self.assertIn("100% tests passed, 0 tests failed", printed)

    def check_pictures(self, machine, clone):
        folder = machine.path(clone) / "build/demo/pictures"
        self.assertEqual(sorted(path.name for path in folder.iterdir()), PICTURES)
        for name in PICTURES:
            picture = (folder / name).read_bytes()
            self.assertEqual((picture[:8], struct.unpack(">II", picture[16:24])), (b"\x89PNG\r\n\x1a\n", (1220, 1080)))


if __name__ == "__main__":
    main(roots.BOOKWORM, roots.TRIXIE)
