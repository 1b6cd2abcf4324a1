"""Gives the client's window another size, as its user does by its edges."""

import subprocess

from harness.waiting import wait_until

_TITLE = "^Tarnwick Client$"


def resize_window(desktop, width, height):
    """The size is in screen pixels."""
    def run(*arguments):
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", _TITLE, *arguments], check=True,
                              env=desktop.environment, timeout=30, capture_output=True, text=True).stdout

    run("windowsize", str(width), str(height))
    wait_until(lambda: f"Geometry: {width}x{height}" in run("getwindowgeometry"), f"a window of {width} × {height}")
