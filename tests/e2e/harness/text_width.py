"""How wide a text is in the fonts of the virtual desktop, measured by a program that knows nothing of the client."""

import functools
import subprocess

from harness.fonts import BOLD_FILE, TEXT_FILE

# Measured large, since a small measure would be rounded to whole pixels.
_MEASURED = 64


def text_width(text, pixels, bold=False):
    """From the first letter's left edge to the last one's right edge, for letters of that size."""
    return _measured_width(text, bold) * pixels / _MEASURED


@functools.cache
def _measured_width(text, bold):
    done = subprocess.run(["convert", "-font", BOLD_FILE if bold else TEXT_FILE, "-pointsize", str(_MEASURED),
                           "-density", "72", f"label:{text}", "-trim", "-format", "%w", "info:"],
                          check=True, timeout=30, capture_output=True, text=True)
    return int(done.stdout)
