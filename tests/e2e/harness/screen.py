"""Pictures of a virtual screen, and what can be told of them."""

import functools
import struct
import time

from PIL import Image, ImageFont

from harness.waiting import wait_until

# How long nothing may change on a screen that counts as still, in seconds.
_STILL = 0.25

# The least luminance of a text, of 255: backgrounds are dark, and borders in between.
_TEXT_LUMINANCE = 77

# Texts are measured large, since a small measure would be rounded to whole pixels.
_MEASURED_SIZE = 64


def screenshot(screen):
    """The whole screen, from the file in which the virtual screen keeps its pixels."""
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
    """Waits until everything that was changed has been drawn as well, and returns the picture of it.

    Between two looks the program is asked something, since a program that is too busy to draw looks still, too.
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
    """How many pixels of a box differ between two pictures by at least that contrast ratio."""
    pairs = zip(part(one, box).getdata(), part(other, box).getdata())
    return sum(before != after and _contrast(before, after) >= ratio for before, after in pairs)


@functools.cache
def _contrast(one, other):
    """The contrast ratio of two colours, from 1 for equal ones to 21 for black on white."""
    darker, lighter = sorted((_luminance(one), _luminance(other)))
    return (lighter + 0.05) / (darker + 0.05)


def _luminance(colour):
    red, green, blue = (_linear(value) for value in colour)
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


def _linear(value):
    return value / 255 / 12.92 if value <= 10 else ((value / 255 + 0.055) / 1.055) ** 2.4


_LINEAR = [round(_linear(value) * 255) for value in range(256)]


def lines_of_text(picture):
    """The boxes around what is drawn of each line of text: left, top, right and bottom, the latter two just outside."""
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
    """How wide a text is, measured without the client: from the first letter's left edge to the last one's right."""
    left, _, right, _ = _font(font).getmask(text).getbbox()
    return (right - left) * size / _MEASURED_SIZE


@functools.cache
def _font(path):
    return ImageFont.truetype(path, _MEASURED_SIZE)
