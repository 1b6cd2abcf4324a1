"""The only way in which the end-to-end tests wait: for a condition, with a limit."""

import contextlib
import time
import unittest

from gi.repository import GLib

# How often a condition is checked. More frequent checks would keep all processes busy.
_INTERVAL_MS = 5

# Functions that describe the situation when something has failed. They take no arguments and return a text.
failure_reporters = []


class NotThere(LookupError):
    """Something does not exist, or does not exist yet."""


class WaitedInVain(AssertionError):
    """A condition did not become true within its limit."""


def wait_until(condition, what, limit=15.0):
    """Returns the condition's first true value. Meanwhile it processes accessibility events. A condition that raises
    because its object is being created or deleted counts as false.
    """
    end = time.monotonic() + limit
    while True:
        trouble = ""
        try:
            value = condition()
            if value:
                return value
        except (LookupError, GLib.Error) as error:
            trouble = f"The last look failed: {error}\n"
        if time.monotonic() > end:
            raise WaitedInVain(f"Waited {limit:g} s for {what}.\n{trouble}{_account()}")
        _let_events_arrive()


@contextlib.contextmanager
def leaving_an_account():
    """Adds a description of the situation to every failure inside: an assertion, or a program that hangs."""
    try:
        yield
    except (WaitedInVain, unittest.SkipTest):
        raise
    except Exception as error:
        if not getattr(error, "__notes__", None):
            error.add_note(_account())
        raise


def _let_events_arrive():
    over = []
    GLib.timeout_add(_INTERVAL_MS, lambda: over.append(True))
    while not over:
        GLib.MainContext.default().iteration(True)


def _account():
    return "\n".join(_told_by(report) for report in failure_reporters)


def _told_by(report):
    try:
        return report()
    except Exception as error:  # a failing report must not hide the failure
        return f"One more report failed: {error}"
