"""Results: repeated measurements as texts, and tables of them in Markdown."""

import statistics
from dataclasses import dataclass, field


def spread(values, digits=1):
    """The median, with the lower and upper quartile in brackets."""
    values = list(values)
    low, median, high = statistics.quantiles(values, n=4, method="inclusive") if len(values) > 1 else values * 3
    return f"{median:.{digits}f} ({low:.{digits}f}–{high:.{digits}f})"


def ratio(values, limits, digits=2):
    """How many times the limit: each value divided by the one from the same round, so that a slow phase of the machine
    affects both.
    """
    return spread([value / limit for value, limit in zip(values, limits, strict=True)], digits)


@dataclass
class Table:
    title: str
    head: list
    rows: list = field(default_factory=list)
    remark: str = ""

    def __str__(self):
        lines = [self.head, ["---"] + ["---:"] * (len(self.head) - 1), *self.rows]
        return "\n".join([f"### {self.title}", "", *(f"| {' | '.join(line)} |" for line in lines), "", self.remark, ""])
