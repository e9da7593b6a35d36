"""The rows as text, as JSON and as a table for docs/performance.md."""

import dataclasses
import json
from collections.abc import Sequence

from measure.rows import Row

_HEADINGS = ["operation", "ours", "peers", "figure (10th to 90th percentile)", "bound", "met"]


def as_text(rows: Sequence[Row]) -> str:
    cells = [_HEADINGS, *(_cells(row) for row in rows)]
    widths = [max(len(line[column]) for line in cells) for column in range(len(_HEADINGS))]
    lines = ("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip() for line in cells)
    return "\n".join(lines)


def as_markdown(rows: Sequence[Row]) -> str:
    rule = ["---"] * len(_HEADINGS)
    return "\n".join("| " + " | ".join(line) + " |" for line in [_HEADINGS, rule, *(_cells(row) for row in rows)])


def as_json(rows: Sequence[Row]) -> str:
    return json.dumps([dataclasses.asdict(row) | {"met": row.met} for row in rows], indent=2) + "\n"


def beside(row: Row) -> str:
    """What follows the figure of a row that has something to be compared with."""
    return f", {_figure(row)}" if row.figure else ""


def _cells(row: Row) -> list[str]:
    peers = ", ".join(f"{name} {figure}" for name, figure in row.peers.items())
    met = {None: "simulated" if row.simulated else "", True: "yes", False: "NO"}[row.met]
    return [row.operation, row.ours, peers, _figure(row), "" if row.bound is None else f"{row.bound:g}", met]


def _figure(row: Row) -> str:
    if row.figure is None:
        return ""
    band = row.figure
    around = "" if band.low == band.high else f" ({band.low:.2f} to {band.high:.2f})"
    return f"{band.median:.2f}{around} {row.figure_is}"
