"""The documentation's pictures, which are replaced only when something about them has changed."""

import os
import shutil
import subprocess

# A difference in a colour that is smaller than this, and fewer pixels than that, are nothing a reader could see.
_SAME_COLOUR = "10%"
_SAME_PICTURE = 60


class PictureBook:
    """Compares new pictures with those that are kept in a folder.

    Some places of a picture differ from run to run: a link code is drawn by lot, and a local service takes whatever
    port is free. Such places are left out of the comparison.
    """

    def __init__(self, folder):
        self._folder = folder
        os.makedirs(folder, exist_ok=True)

    def keep(self, picture, name, changing_places=()):
        """Takes the picture in under that name, unless the one that is kept looks the same. Tells whether it did."""
        kept = os.path.join(self._folder, name)
        if os.path.exists(kept) and not self._differ(kept, picture, changing_places):
            return False
        shutil.copyfile(picture, kept)
        return True

    def _differ(self, one, other, changing_places):
        if _size(one) != _size(other):
            return True
        covers = [part for left, top, width, height in changing_places
                  for part in ("-draw", f"rectangle {left},{top} {left + width},{top + height}")]
        done = subprocess.run(["convert", one, other, "-alpha", "off", "-fill", "black", *covers,
                               "-fuzz", _SAME_COLOUR, "-metric", "AE", "-compare", "-format", "%[distortion]", "info:"],
                              check=True, timeout=60, capture_output=True, text=True)
        return float(done.stdout) > _SAME_PICTURE


def _size(picture):
    done = subprocess.run(["identify", "-format", "%wx%h", picture], check=True, timeout=30, capture_output=True,
                          text=True)
    return done.stdout
