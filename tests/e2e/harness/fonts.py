"""The fonts of the virtual desktop: one family for text, one for emoji, whatever else the machine has installed."""

import os

TEXT_FAMILY = "DejaVu Sans"
EMOJI_FAMILY = "Noto Color Emoji"

TEXT_FILE = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
BOLD_FILE = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
EMOJI_FILE = "/usr/share/fonts/truetype/noto/NotoColorEmoji.ttf"

_ALL_FILES = TEXT_FILE, BOLD_FILE, EMOJI_FILE

# Hinting and smoothing are pinned too, so that letters look the same on every machine.
_CONFIGURATION = """<?xml version="1.0"?>
<!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd">
<fontconfig>
  <dir>/usr/share/fonts/truetype/dejavu</dir>
  <dir>/usr/share/fonts/truetype/noto</dir>
  <cachedir>{cache}</cachedir>
  <selectfont>
    <rejectfont><glob>*</glob></rejectfont>
    {accepted}
  </selectfont>
  <match target="pattern">
    <edit name="family" mode="append" binding="strong"><string>{text}</string><string>{emoji}</string></edit>
  </match>
  <match target="font">
    <edit name="antialias" mode="assign"><bool>true</bool></edit>
    <edit name="hinting" mode="assign"><bool>true</bool></edit>
    <edit name="hintstyle" mode="assign"><const>hintslight</const></edit>
    <edit name="rgba" mode="assign"><const>none</const></edit>
    <edit name="lcdfilter" mode="assign"><const>lcdnone</const></edit>
  </match>
</fontconfig>
"""


def write_font_configuration(folder, files=_ALL_FILES):
    """Writes a configuration with these fonts into the folder, which is made if need be, and returns its path."""
    missing = [name for name in files if not os.path.exists(name)]
    if missing:
        raise FileNotFoundError("Install fonts-dejavu-core and fonts-noto-color-emoji; missing: " + ", ".join(missing))
    os.makedirs(folder, exist_ok=True)
    path = os.path.join(folder, "fonts.conf")
    accepted = "\n    ".join(f"<acceptfont><glob>{name}</glob></acceptfont>" for name in files)
    with open(path, "w", encoding="utf-8") as target:
        target.write(_CONFIGURATION.format(cache=os.path.join(folder, "font-cache"), accepted=accepted,
                                           text=TEXT_FAMILY, emoji=EMOJI_FAMILY))
    return path
