"""Results as a table on the screen, as Markdown and as JSON."""

import json
from dataclasses import dataclass, field

_BEGIN, _END = "<!-- results: written by ./bench --publish -->", "<!-- end of results -->"


@dataclass
class Table:
    """One table: a title, a head, rows of texts, remarks below, and the figures behind the texts."""

    title: str
    head: list
    rows: list = field(default_factory=list)
    remarks: list = field(default_factory=list)
    figures: dict = field(default_factory=dict)

    def as_text(self):
        lines = [self.head, *self.rows]
        widths = [max(len(line[column]) for line in lines) for column in range(len(self.head))]
        texts = ["  ".join(_padded(cell, width, column) for column, (cell, width) in enumerate(zip(line, widths)))
                 for line in lines]
        texts.insert(1, "  ".join("─" * width for width in widths))
        return "\n".join(["", self.title, "", *texts, *self.remarks])

    def as_markdown(self):
        marks = ["---"] + ["---:"] * (len(self.head) - 1)
        lines = ["| " + " | ".join(line) + " |" for line in (self.head, marks, *self.rows)]
        remarks = ["", *self.remarks] if self.remarks else []
        return "\n".join([f"### {self.title}", "", *lines, *remarks, ""])


def write_results(folder, machine, tables):
    """Leaves results.md and results.json in the folder; returns the text of the former."""
    markdown = "\n".join([machine, "", *(table.as_markdown() for table in tables)])
    (folder / "results.md").write_text(markdown, encoding="utf-8")
    figures = {"machine": machine, **{table.title: table.figures for table in tables}}
    (folder / "results.json").write_text(json.dumps(figures, indent=1), encoding="utf-8")
    return markdown


def publish(document, text):
    """Puts the text between the two marks in the document that say where results stand."""
    before, begin, rest = document.partition(_BEGIN)
    _, end, after = rest.partition(_END)
    if not begin or not end:
        raise ValueError("the document has no place for results")
    return f"{before}{begin}\n{text.strip()}\n{end}{after}"


def _padded(cell, width, column):
    return cell.ljust(width) if column == 0 else cell.rjust(width)
