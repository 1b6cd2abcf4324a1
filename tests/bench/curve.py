"""Draws lines over numbers of projects, both axes logarithmic, as an SVG picture."""

import math
from dataclasses import dataclass
from xml.sax.saxutils import escape

_WIDTH, _HEIGHT = 460, 320
_LEFT, _TOP, _RIGHT, _BOTTOM = 64, 48, 90, 44
_LINE_HEIGHT = 15
_COLOURS = ("#c2570c", "#4b5563")


@dataclass(frozen=True)
class Line:
    name: str
    points: list  # of (projects, value)


@dataclass(frozen=True)
class Chart:
    title: str
    lines: list


def draw(file, charts):
    file.write_text(picture(charts), encoding="utf-8")


def picture(charts):
    """The charts side by side."""
    drawn = "".join(f'<g transform="translate({number * _WIDTH} 0)">{_chart(chart)}</g>'
                    for number, chart in enumerate(charts))
    width = len(charts) * _WIDTH
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {_HEIGHT}" width="{width}" '
            f'height="{_HEIGHT}" font-family="sans-serif" font-size="12">'
            f'<rect width="{width}" height="{_HEIGHT}" fill="white"/>{drawn}</svg>\n')


def decades(values):
    """The powers of ten that enclose the values; at least one step."""
    low = math.floor(math.log10(min(values)))
    high = math.ceil(math.log10(max(values)))
    return list(range(low, max(high, low + 1) + 1))


def apart(places, least):
    """The places, in their order, moved up as far as needed to keep that distance from the one below."""
    moved = dict.fromkeys(places, 0.0)
    last = math.inf
    for place in sorted(places, reverse=True):
        last = moved[place] = min(place, last - least)
    return [moved[place] for place in places]


def _chart(chart):
    projects = [x for line in chart.lines for x, _ in line.points]
    across = (math.log10(min(projects)), math.log10(max(projects)))
    up = decades([y for line in chart.lines for _, y in line.points])

    def place(x, y):
        return (_between(math.log10(x), across, _LEFT, _WIDTH - _RIGHT),
                _between(math.log10(y), up, _HEIGHT - _BOTTOM, _TOP))

    parts = [_text(_LEFT, 24, chart.title, "start", "font-weight='bold'")]
    for power in up:
        y = _between(power, up, _HEIGHT - _BOTTOM, _TOP)
        parts += [_grid_line(_LEFT, y, _WIDTH - _RIGHT, y), _text(_LEFT - 8, y + 4, f"{10 ** power:,g}", "end")]
    for power in range(math.ceil(across[0]), math.floor(across[1]) + 1):
        x = _between(power, across, _LEFT, _WIDTH - _RIGHT)
        parts += [_grid_line(x, _HEIGHT - _BOTTOM, x, _TOP),
                  _text(x, _HEIGHT - _BOTTOM + 18, f"{10 ** power:,}", "middle")]
    parts.append(_text((_LEFT + _WIDTH - _RIGHT) / 2, _HEIGHT - 6, "projects", "middle"))

    ends = [place(*line.points[-1]) for line in chart.lines]
    heights = apart([y for _, y in ends], _LINE_HEIGHT)
    for line, colour, (x, _), y in zip(chart.lines, _COLOURS, ends, heights):
        parts += [_curve(line, place, colour), _text(x + 8, y + 4, line.name, "start", f"fill='{colour}'")]
    return "".join(parts)


def _curve(line, place, colour):
    places = [place(x, y) for x, y in line.points]
    path = " ".join(f"{x:.1f},{y:.1f}" for x, y in places)
    dots = "".join(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{colour}"/>' for x, y in places)
    return f'<polyline points="{path}" fill="none" stroke="{colour}" stroke-width="2"/>{dots}'


def _between(value, scale, start, end):
    return start + (value - scale[0]) / (scale[-1] - scale[0]) * (end - start)


def _grid_line(x1, y1, x2, y2):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" stroke="#e5e7eb"/>'


def _text(x, y, text, anchor, more=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" {more}>{escape(text)}</text>'
