"""The documentation's pictures, which are replaced only when something about them has changed."""

import os
import shutil
import subprocess

# Two hundredths of the way from black to white: in each of a colour's three parts, nobody sees less than that.
_SAME_COLOUR = 5


class PictureBook:
    """Compares new pictures with those that are kept in a folder.

    Some places of a picture differ from run to run: a link code is drawn by lot, and a local service takes whatever
    port is free. Such places are left out of the comparison.
    """

    def __init__(self, folder):
        self.folder = folder
        os.makedirs(folder, exist_ok=True)

    def keep(self, picture, name, changing_places=()):
        """Takes the picture in under that name, unless the one that is kept looks the same. Tells whether it did."""
        kept = os.path.join(self.folder, name)
        if os.path.exists(kept) and not look_different(kept, picture, changing_places):
            return False
        shutil.copyfile(picture, kept)
        return True


def look_different(one, other, changing_places=()):
    """Whether any pixel outside the changing places has another colour."""
    size = _size(one)
    if size != _size(other):
        return True
    line = size[0] * 3
    before, after = _pixels(one), _pixels(other)
    for left, top, width, height in changing_places:
        for start in range(top * line + left * 3, (top + height) * line, line):
            before[start:start + width * 3] = after[start:start + width * 3]
    return any(_lines_differ(before[start:start + line], after[start:start + line])
               for start in range(0, len(before), line))


def _lines_differ(before, after):
    return before != after and any(abs(one - other) > _SAME_COLOUR for one, other in zip(before, after))


def _size(picture):
    done = subprocess.run(["identify", "-format", "%w %h", picture], check=True, timeout=30, capture_output=True,
                          text=True)
    return tuple(int(number) for number in done.stdout.split())


def _pixels(picture):
    """Red, green and blue of each pixel, line by line."""
    done = subprocess.run(["convert", picture, "-alpha", "off", "-depth", "8", "rgb:-"], check=True, timeout=60,
                          capture_output=True)
    return bytearray(done.stdout)
