"""A keyboard on a virtual desktop: real key presses, which the window manager gives to the active window."""

import subprocess


class Keyboard:
    def __init__(self, desktop):
        self._environment = desktop.environment

    def press(self, *keys):
        """Presses keys one after the other; 'shift+Tab' is a chord."""
        self._run("key", *keys)

    def type(self, text):
        self._run("type", "--delay", "4", "--", text)

    def _run(self, *arguments):
        subprocess.run(["xdotool", *arguments], env=self._environment, check=True, timeout=30, capture_output=True)
