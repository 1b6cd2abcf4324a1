"""What is made of repeated measurements: the middle, the spread, and ratios of what was measured side by side."""

import statistics
from dataclasses import dataclass


@dataclass(frozen=True)
class Spread:
    """The median of some values, with the quarter of them below `low` and the quarter above `high`."""

    median: float
    low: float
    high: float

    def text(self, digits=1):
        return f"{self.median:.{digits}f} ({self.low:.{digits}f}–{self.high:.{digits}f})"


def spread(values):
    """Of one value, that value is everything there is."""
    values = sorted(values)
    if not values:
        raise ValueError("nothing was measured")
    if len(values) == 1:
        return Spread(values[0], values[0], values[0])
    low, median, high = statistics.quantiles(values, n=4, method="inclusive")
    return Spread(median, low, high)


def ratio(values, limits):
    """How many times the limit something is: each value against the one that was measured in the same round.

    What slows the machine down for a while then slows down both.
    """
    if len(values) != len(limits):
        raise ValueError(f"{len(values)} values against {len(limits)} limits")
    return spread([value / limit for value, limit in zip(values, limits)])
