"""The accessibility library, set up for reading a program that changes while it is read."""

import gi

gi.require_version("Atspi", "2.0")

from gi.repository import Atspi, GLib  # noqa: E402 (the version comes first)

Atspi.set_timeout(5000, 5000)


def unless_gone(question, otherwise=None):
    """The answer to a question about an object that its program may just have taken away."""
    try:
        return question()
    except GLib.Error:
        return otherwise


def application_of(pid):
    """The accessible application of a process; None while it has not come forward."""
    desktop = Atspi.get_desktop(0)
    desktop.clear_cache()
    for index in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(index)
        if application is not None and unless_gone(application.get_process_id) == pid:
            return application
    return None
