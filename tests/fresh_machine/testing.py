"""Shared by the tests on fresh machines: skips them, and measures the steps of a command."""

import os
import pathlib
import re
import sys
import time
import unittest

from . import roots
from .machine import Machine

WORK = pathlib.Path(os.environ.get("TARNWICK_MACHINES", roots.REPOSITORY / "build" / "machines"))

# CTest takes this exit code as "skipped".
_SKIPPED = 77

_ANNOUNCED = re.compile(r"^(\S.*?) (\d+):(\d\d)$", re.MULTILINE)


def new_machine(test, suite, name):
    """A machine that is removed at the end of the test."""
    return test.enterContext(Machine(suite, WORK / name))


def timed(machine, title, *command, **options):
    """Runs a command of the project as the machine's user and prints how long each of its steps took."""
    started = time.monotonic()
    printed = machine.run_as_person(*command, **options)
    seconds = time.monotonic() - started
    told = [(name, int(minutes) * 60 + int(rest)) for name, minutes, rest in _ANNOUNCED.findall(printed)]
    ends = [start for _, start in told[1:]] + [seconds]
    print(f"{machine.suite}, {title}: {seconds / 60:.1f} minutes")
    for (name, start), end in zip(told, ends):
        print(f"    {max(end - start, 0) / 60:4.1f}  {name[:80]}", flush=True)
    return printed


def main(*suites):
    """Runs the calling program's tests, or skips all of them and prints the reason in one line."""
    roots.enter_own_namespaces()
    reason = roots.why_not(*suites)
    if reason:
        print(f"SKIPPED: {pathlib.Path(sys.argv[0]).stem}: {reason}", flush=True)
        sys.exit(_SKIPPED)
    unittest.main(verbosity=2)
