"""Draws lines over numbers of projects as an SVG picture; both axes are logarithmic."""

import math
from xml.sax.saxutils import escape

_WIDTH, _HEIGHT = 460, 320
_LEFT, _TOP, _RIGHT, _BOTTOM = 64, 48, 370, 276  # the edges of the drawing area
_LINE_HEIGHT = 15
_COLOURS = ("#c2570c", "#4b5563")


def draw(file, charts):
    """The charts side by side: a dictionary by title, then by the line's name, of lists of (projects, value)."""
    drawn = [
        f'<g transform="translate({at * _WIDTH} 0)">{_chart(*chart)}</g>' for at, chart in enumerate(charts.items())
    ]
    width = len(charts) * _WIDTH
    file.write_text(
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {_HEIGHT}" width="{width}" '
        f'height="{_HEIGHT}" font-family="sans-serif" font-size="12">'
        f'<rect width="{width}" height="{_HEIGHT}" fill="white"/>{"".join(drawn)}</svg>\n',
        encoding="utf-8",
    )


def _chart(title, lines):
    points = [point for line in lines.values() for point in line]
    across = [math.log10(pick(x for x, _ in points)) for pick in (min, max)]
    up = [math.floor(math.log10(min(y for _, y in points))), math.ceil(math.log10(max(y for _, y in points)))]

    def place(x, y):
        return (
            _LEFT + (math.log10(x) - across[0]) / (across[1] - across[0]) * (_RIGHT - _LEFT),
            _BOTTOM - (math.log10(y) - up[0]) / max(up[1] - up[0], 1) * (_BOTTOM - _TOP),
        )

    parts = [_text(_LEFT, 24, title, "start", "font-weight='bold'")]
    for power in range(up[0], up[1] + 1):
        _, y = place(10 ** across[0], 10.0**power)
        parts += [_grid(_LEFT, y, _RIGHT, y), _text(_LEFT - 8, y + 4, f"{10.0 ** power:,g}", "end")]
    for power in range(math.ceil(across[0]), math.floor(across[1]) + 1):
        x, _ = place(10**power, 10.0 ** up[0])
        parts += [_grid(x, _BOTTOM, x, _TOP), _text(x, _BOTTOM + 18, f"{10 ** power:,}", "middle")]
    parts.append(_text((_LEFT + _RIGHT) / 2, _HEIGHT - 6, "projects", "middle"))

    taken = _HEIGHT
    # Starts with the lowest line's name, so that each of the others can stay above it.
    for (name, line), colour in sorted(zip(lines.items(), _COLOURS), key=lambda one: one[0][1][-1][1]):
        places = [place(*point) for point in line]
        path = " ".join(f"{x:.1f},{y:.1f}" for x, y in places)
        parts.append(f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>')
        parts += [f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>' for x, y in places]
        taken = min(places[-1][1] + 4, taken - _LINE_HEIGHT)
        parts.append(_text(places[-1][0] + 8, taken, name, "start", f"fill='{colour}'"))
    return "".join(parts)


def _grid(x1, y1, x2, y2):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="#e5e7eb"/>'


def _text(x, y, text, anchor, more=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" {more}>{escape(text)}</text>'
