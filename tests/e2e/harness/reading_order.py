"""The order in which a person reads a window.

What belongs together, such as the contents of a card, is read as a whole. Among things of the same kind, cards or the
controls of one card, it goes from row to row, and in each row from left to right.
"""


def reading_order(container):
    """The controls inside on which the focus can come to rest now, in that order."""
    parts = [(part.extents(), _stops(part)) for part in container.children() if "showing" in part.states()]
    rows = []
    for box, stops in sorted((part for part in parts if part[1]), key=lambda part: _top(part[0])):
        if not rows or _top(box) >= _middle(rows[-1][0][0]):
            rows.append([])
        rows[-1].append((box, stops))
    return [stop for row in rows for _box, stops in sorted(row, key=lambda part: part[0]) for stop in stops]


def _stops(part):
    # The tabs' box passes the focus on to the tabs.
    takes_focus = {"focusable", "enabled"} <= part.states() and part.role != "filler"
    return [part] if takes_focus else reading_order(part)


def _top(box):
    return box[1]


def _middle(box):
    _left, top, _width, height = box
    return top + height / 2
