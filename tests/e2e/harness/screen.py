"""Pictures of a virtual screen, and what they show."""

import functools
import struct
import time

from PIL import Image, ImageFont

from harness.waiting import wait_until

# A screen counts as still if nothing has changed for this time, in seconds.
_STILL = 0.25

# The minimum luminance of text, of 255: backgrounds are darker.
_TEXT_LUMINANCE = 77

# Texts are measured at a large size, since a small width would be rounded to whole pixels.
_MEASURED_SIZE = 64


def screenshot(screen):
    """The whole screen, from the file to which the virtual screen writes its pixels."""
    with open(screen.file, "rb") as source:
        dump = source.read()
    # An X window dump: 25 big-endian numbers, then a colour map, then four bytes for each pixel.
    header = struct.unpack(">25I", dump[:100])
    pixels = dump[header[0] + header[19] * 12 :]
    return Image.frombytes("RGB", (header[4], header[5]), pixels, "raw", "BGRX", header[12])


def part(picture, box):
    left, top, width, height = box
    return picture.crop((left, top, left + width, top + height))


def wait_for_stillness(desktop, ask):
    """Waits until all changes have been drawn, and returns the picture. Calls the program between two pictures, since a
    program that is too busy to draw looks still, too.
    """
    last, since = screenshot(desktop), time.monotonic()

    def still():
        nonlocal last, since
        ask()
        now = screenshot(desktop)
        if now != last:
            last, since = now, time.monotonic()
        if time.monotonic() - since < _STILL:
            return None
        desktop.wait_until_drawn()
        return last if screenshot(desktop) == last else None

    return wait_until(still, "a screen on which nothing moves")


def contrasting_pixels(one, other, box, ratio):
    """How many pixels of a box differ between two pictures by at least this contrast ratio."""
    pairs = zip(part(one, box).getdata(), part(other, box).getdata())
    return sum(before != after and _contrast(before, after) >= ratio for before, after in pairs)


@functools.cache
def _contrast(one, other):
    """The contrast ratio of two colours, from 1 (equal) to 21 (black on white)."""
    darker, lighter = sorted((_luminance(one), _luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)


def _luminance(colour):
    red, green, blue = (_linear(value) for value in colour)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def _linear(value):
    return value / 255 / 12.92 if value <= 10 else ((value / 255 + 0.055) / 1.055) ** 2.4


_LINEAR = [round(_linear(value) * 255) for value in range(256)]


def lines_of_text(picture):
    """The bounding boxes of the lines of text: left, top, right and bottom; the latter two are exclusive."""
    luminance = picture.point(_LINEAR * 3).convert("L", (0.2126, 0.7152, 0.0722, 0))
    text = luminance.point([0] * _TEXT_LUMINANCE + [255] * (256 - _TEXT_LUMINANCE))
    lines, start = [], None
    for row in range(picture.height + 1):
        empty = row == picture.height or text.crop((0, row, picture.width, row + 1)).getbbox() is None
        if not empty and start is None:
            start = row
        elif empty and start is not None:
            left, _, right, _ = text.crop((0, start, picture.width, row)).getbbox()
            lines.append((left, start, right, row))
            start = None
    return lines


def text_width(text, font, size):
    """The width of a text, measured without the client: from its first letter's left to its last one's right edge."""
    left, _, right, _ = _font(font).getmask(text).getbbox()
    return (right - left) * size / _MEASURED_SIZE


@functools.cache
def _font(path):
    return ImageFont.truetype(path, _MEASURED_SIZE)
