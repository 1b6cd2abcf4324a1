"""How much fine detail a picture holds."""

import subprocess


def sharpness(screenshot, box, enlarged=1):
    """What that part of the screen would lose if it were reduced to half its size: near 0 for a blurred one.

    With `enlarged`, the part is first drawn that much larger, as a screen does with a picture that is too small.
    """
    _, _, width, height = box
    size = f"{round(width * enlarged)}x{round(height * enlarged)}!"
    done = subprocess.run(["convert", "-size", f"{width}x{height}", "-depth", "8", "rgb:-", "-resize", size,
                           "(", "+clone", "-resize", "50%", "-resize", size, ")",
                           "-metric", "RMSE", "-compare", "-format", "%[distortion]", "info:"],
                          input=screenshot.part(box), check=True, timeout=30, capture_output=True)
    return float(done.stdout)
