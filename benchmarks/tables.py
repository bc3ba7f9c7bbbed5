"""How figures look as a table."""

from dataclasses import dataclass


@dataclass
class Row:
    what: str
    other: object = None  # What the launcher is compared with, when it is.
    ours: object = None
    figure: object = None
    ceiling: object = None  # The most that the figure may be; None where it is only for comparison.

    @property
    def held(self):
        return self.ceiling is None or self.figure <= self.ceiling


def ratio(what, other, ours, ceiling=None):
    return Row(what, other, ours, ours / other, ceiling)


def text_of(value):
    """A count as it is; another figure with three digits or, above a hundred, none behind the point."""
    if value is None:
        return ""
    if isinstance(value, str):
        return value
    return f"{value:,.0f}" if value >= 100 or isinstance(value, int) else f"{value:.2f}" if value >= 10 else f"{value:.3f}"


def _ceiling_cells(row):
    if row.ceiling is None:
        return ["", ""]
    return [text_of(row.ceiling), "yes" if row.held else "NO"]


def print_table(rows, with_ceilings):
    """As Markdown, so that it can be quoted."""
    titles = ["What", "Compared with", "The launcher", "Figure"] + ["Ceiling", "Held"] * with_ceilings
    lines = []
    for row in rows:
        cells = [row.what, text_of(row.other), text_of(row.ours), text_of(row.figure)]
        lines.append(cells + _ceiling_cells(row) * with_ceilings)
    print_markdown(titles, lines)


def print_markdown(titles, lines):
    """The first column to the left, the others to the right."""
    lines = [titles, ["---"] + ["---:"] * (len(titles) - 1), *lines]
    widths = [max(len(line[column]) for line in lines) for column in range(len(titles))]
    for what, *cells in lines:
        padded = [what.ljust(widths[0])] + [cell.rjust(width) for cell, width in zip(cells, widths[1:])]
        print("| " + " | ".join(padded) + " |")
