"""The one way in which the end-to-end tests wait: for a condition, with a limit."""

import contextlib
import time
import unittest

from gi.repository import GLib

# How often a condition is looked at. More often, the answers to the questions asked would keep everyone busy.
_INTERVAL_MS = 5

# Who can tell what things looked like when something failed. Each is called without arguments and returns a text.
failure_reporters = []


class NotThere(LookupError):
    """Something that is looked for does not exist, or does not exist yet."""


class WaitedInVain(AssertionError):
    """A condition did not come true within its limit."""


def wait_until(condition, what, limit=15.0):
    """Returns the condition's first true value.

    While it waits it lets accessibility events arrive. A condition that raises because the object it asks is just
    coming or going counts as not true yet.
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
            raise WaitedInVain(f"Waited {limit:g} s in vain for {what}.\n{trouble}{_account()}")
        _let_events_arrive()


@contextlib.contextmanager
def leaving_an_account():
    """Whatever fails inside, be it an expectation or a program that does not answer, tells what things looked like."""
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
    except Exception as error:  # a report must not hide what it reports on
        return f"One more report failed: {error}"
