"""Pictures of a virtual screen."""

import struct
import subprocess
import time
import typing

from harness.waiting import wait_until


# How long nothing may change on a screen that counts as still, in seconds.
_STILL = 0.25

# No text has a colour that is made of smaller numbers only.
_DARK = 128
_BRIGHT = bytes(number > _DARK for number in range(256))


class Line(typing.NamedTuple):
    """The box around what is drawn of a line of text; right and bottom are just outside of it."""

    left: int
    top: int
    right: int
    bottom: int


class Screenshot:
    """The pixels of a whole screen, read from the file in which the virtual screen keeps them."""

    def __init__(self, desktop):
        with open(desktop.screen_file, "rb") as source:
            self._dump = source.read()
        # An X window dump: 25 big-endian numbers, then a colour map, then four bytes for each pixel.
        header = struct.unpack(">25I", self._dump[:100])
        self._width, self._height, self._line = header[4], header[5], header[12]
        self._pixels = header[0] + header[19] * 12

    def __eq__(self, other):
        return self._dump == other._dump

    def row(self, left, top, width):
        """The bytes of a part of one line: red, green and blue for each pixel."""
        start = self._pixels + top * self._line + left * 4
        kept = self._dump[start:start + width * 4]
        colours = bytearray(width * 3)
        for number in range(3):
            colours[number::3] = kept[2 - number::4]
        return bytes(colours)

    def part(self, box):
        """The bytes of a box, line by line."""
        left, top, width, height = box
        return b"".join(self.row(left, line, width) for line in range(top, top + height))

    def save(self, path, size=None):
        """Saves the screen as a PNG file, or as much of it as the size says from its upper left corner."""
        width, height = size or (self._width, self._height)
        # Without dates and other extras, the same screen always gives the same file.
        subprocess.run(["convert", "-size", f"{width}x{height}", "-depth", "8", "rgb:-", "-strip",
                        "-define", "png:exclude-chunks=date,time", "-define", "png:color-type=2", path],
                       input=self.part((0, 0, width, height)), check=True, timeout=60, capture_output=True)

    def lines_of_text(self, box):
        """The lines of text in a box, as they are drawn; all counts start at the box's upper left corner."""
        left, top, width, height = box
        lines = []
        for at in range(height):
            reach = _reach_of_text(self.row(left, top + at, width))
            if reach is None:
                continue
            if lines and lines[-1].bottom == at:
                last = lines.pop()
                lines.append(Line(min(last.left, reach[0]), last.top, max(last.right, reach[1]), at + 1))
            else:
                lines.append(Line(reach[0], at, reach[1], at + 1))
        return lines


def wait_for_stillness(desktop, ask):
    """Waits until everything that was changed has been drawn as well, and returns the picture of it.

    Between two looks the program is asked something, since a program that is too busy to draw looks still, too.
    """
    last, since = Screenshot(desktop), time.monotonic()

    def still():
        nonlocal last, since
        ask()
        now = Screenshot(desktop)
        if now != last:
            last, since = now, time.monotonic()
        if time.monotonic() - since < _STILL:
            return None
        # The screen may be too busy, too: once it has answered, it has drawn what it had been told before.
        subprocess.run(["xdotool", "getmouselocation"], env=desktop.environment, check=True, timeout=30,
                       capture_output=True)
        return last if Screenshot(desktop) == last else None

    return wait_until(still, "a screen on which nothing moves")


def contrasting_pixels(one, other, box, ratio):
    """How many pixels of a box differ between two screenshots by at least that contrast ratio."""
    left, top, width, height = box
    count = 0
    for line in range(top, top + height):
        before, after = one.row(left, line, width), other.row(left, line, width)
        if before != after:
            count += sum(contrast(before[at:at + 3], after[at:at + 3]) >= ratio
                         for at in range(0, len(before), 3) if before[at:at + 3] != after[at:at + 3])
    return count


def contrast(one, other):
    """The contrast ratio of two colours, from 1 for equal ones to 21 for black on white."""
    darker, lighter = sorted((_luminance(one), _luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)


def _luminance(colour):
    linear = [value / 255 / 12.92 if value <= 10 else ((value / 255 + 0.055) / 1.055) ** 2.4 for value in colour]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def _reach_of_text(row):
    """From which pixel up to which there is text in a row; None when there is none."""
    # Most pixels have no bright part, and are passed over quickly.
    bright = row.translate(_BRIGHT)
    first = bright.find(1)
    while first >= 0 and not _is_text(row, first // 3):
        first = bright.find(1, first // 3 * 3 + 3)
    if first < 0:
        return None
    last = bright.rfind(1)
    while not _is_text(row, last // 3):
        last = bright.rfind(1, 0, last // 3 * 3)
    return first // 3, last // 3 + 1


def _is_text(row, at):
    """Texts are bright; backgrounds are dark, and borders in between."""
    colour = row[at * 3:at * 3 + 3]
    return max(colour) > _DARK and _luminance(colour) > 0.3
