"""A mouse on a virtual desktop."""

import subprocess


def click(desktop, left, top):
    """One click with the main button at that place of the screen."""
    subprocess.run(["xdotool", "mousemove", "--sync", str(left), str(top), "click", "1"], env=desktop.environment,
                   check=True, timeout=30, capture_output=True)
