"""The texts that the client's window shows, and whether each of them is drawn completely."""

import typing

from harness.screen import lines_of_text, part, text_width
from harness.virtual_desktop import BOLD_FONT, TEXT_FONT

# The space around the text in a control of each role, in layout units: left, above, right, below.
_BESIDE = {
    "label": (0, 0, 0, 0),
    "table cell": (0, 0, 0, 0),
    "table column header": (0, 0, 0, 0),
    "push button": (2, 2, 2, 2),  # its border
    "page tab": (2, 2, 10, 2),  # its border, and the gap to the next tab
    "text": (5, 5, 5, 5),  # its rounded corners
    "combo box": (5, 5, 30, 5),  # its corners and its arrow
    "check box": (29, 0, 0, 0),  # its box
}

# Texts in other font sizes, in layout units.
_USUAL = 14
_LARGE = {
    "Tarnwick Desktop Client": 28,
    "Link Tarnwick Account": 22,
    "Linked Account": 22,
    "Your Tarnwick Projects": 22,
    "Create a New GDPS": 22,
    "Not linked yet": 20,
    "Signed in as Robin Vale": 20,
}
_BOLD = ("push button", "table column header")

# The maximum effect of rounding on a line, in layout units. Few letters are narrower.
_ROUNDING = 3


class ShownText(typing.NamedTuple):
    """A control with a text. The box is the area for the text, in layout units."""

    role: str
    name: str
    text: str
    box: tuple

    def fault(self, picture, scale):
        """What is wrong with the drawn text; None if it is complete and does not touch the box's edges."""
        box = tuple(round(value * scale) for value in self.box)
        lines = lines_of_text(part(picture, box))
        if not lines:
            return "nothing is drawn"
        lefts, tops, rights, bottoms = zip(*lines)
        if tops[0] == 0 or bottoms[-1] >= box[3] or max(rights) >= box[2]:
            return f"cut off by its box of {box[2]} × {box[3]}: {lines}"
        # An emoji is not as wide as measured.
        if not self.text.isascii():
            return None
        # A line break replaces a space.
        space = self._width("| |", scale) - self._width("||", scale)
        drawn = sum(rights) - sum(lefts) + (len(lines) - 1) * space
        needed = self._width(self.text, scale)
        if abs(drawn - needed) > len(lines) * _ROUNDING * scale:
            return f"{drawn:.0f} pixels are drawn where {needed:.0f} are needed: {lines}"
        return None

    def _width(self, text, scale):
        size = _LARGE.get(self.text, _USUAL)
        bold = size != _USUAL or self.role in _BOLD
        return text_width(text, BOLD_FONT if bold else TEXT_FONT, size * scale)


def shown_controls(window):
    """The controls that the window shows, in reading order: those that are completely visible, and those that are
    scrolled out of their page, completely or partly."""
    whole, others = [], []
    for control, in_view in _shown_inside(window.frame, window.frame.extents()):
        if control.role in _BESIDE or control.role in ("image", "table"):
            (whole if in_view else others).append(control)
    return whole, others


def shown_texts(controls):
    texts = [_shown_text(control) for control in controls if control.role in _BESIDE]
    return [text for text in texts if text.text]


def _shown_inside(control, view):
    """All visible descendants, and for each whether it is completely visible. None is drawn outside its parent."""
    for child in control.children():
        if "showing" in child.states():
            box = child.extents()
            seen = _overlap(box, view)
            yield child, seen == box
            yield from _shown_inside(child, seen)


def _overlap(one, other):
    left, top = max(one[0], other[0]), max(one[1], other[1])
    right, bottom = (min(one[at] + one[at + 2], other[at] + other[at + 2]) for at in (0, 1))
    return left, top, max(right - left, 0), max(bottom - top, 0)


def _shown_text(control):
    left, top, width, height = control.extents()
    before, above, behind, below = _BESIDE[control.role]
    box = left + before, top + above, width - before - behind, height - above - below
    return ShownText(control.role, control.name, control.text() if control.role == "text" else control.name, box)
