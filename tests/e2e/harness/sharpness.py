"""How much fine detail a picture holds."""

import subprocess


def sharpness(picture, box, enlarged=1):
    """What the part of the picture would lose if it were reduced to half its size: near 0 for a blurred one.

    With `enlarged`, the part is first drawn that much larger, as a screen does with a picture that is too small.
    """
    left, top, width, height = box
    size = f"{round(width * enlarged)}x{round(height * enlarged)}!"
    return _lost_detail([picture, "-crop", f"{width}x{height}+{left}+{top}", "+repage", "-resize", size], size)


def _lost_detail(picture, size):
    done = subprocess.run(["convert", *picture, "(", "+clone", "-resize", "50%", "-resize", size, ")",
                           "-metric", "RMSE", "-compare", "-format", "%[distortion]", "info:"],
                          check=True, timeout=30, capture_output=True, text=True)
    return float(done.stdout)
