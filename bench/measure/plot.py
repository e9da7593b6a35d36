"""The figures as a picture: each as a share of its bound, which is the one upright line."""

from collections.abc import Sequence
from xml.sax.saxutils import escape

from measure.rows import Row

_WIDTH, _LEFT, _RIGHT, _TOP, _LINE = 920, 310, 200, 56, 22
# The axis goes from nothing to this much of the bound.
_AXIS = 1.5

_STYLE = """
    text { font: 13px system-ui, sans-serif; fill: #24292f; }
    .quiet { fill: #57606a; } .grid { stroke: #d0d7de; } .bound { stroke: #24292f; stroke-width: 2; }
    .met { stroke: #1f6feb; fill: #1f6feb; } .missed { stroke: #cf222e; fill: #cf222e; }
    .page { fill: #ffffff; } .band { stroke-width: 5; stroke-opacity: 0.4; stroke-linecap: round; }
    @media (prefers-color-scheme: dark) {
      text { fill: #e6edf3; } .quiet { fill: #9da7b3; } .grid { stroke: #30363d; } .bound { stroke: #e6edf3; }
      .met { stroke: #58a6ff; fill: #58a6ff; } .missed { stroke: #ff7b72; fill: #ff7b72; } .page { fill: #0d1117; }
    }
"""


def as_svg(rows: Sequence[Row]) -> str:
    bounded = [row for row in rows if row.figure is not None and row.bound]
    bottom = _TOP + _LINE * len(bounded)
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {_WIDTH} {bottom + 40}" role="img">',
        "<title>Each figure as a share of its bound</title>",
        f"<style>{_STYLE}</style>",
        f'<rect class="page" width="{_WIDTH}" height="{bottom + 40}"/>',
        *_axis(bottom),
        *(part for place, row in enumerate(bounded) for part in _row(row, _TOP + _LINE * place + _LINE // 2)),
        "</svg>",
    ]
    return "\n".join(parts) + "\n"


def _axis(bottom: int) -> list[str]:
    parts = []
    for share in (0.0, 0.5, 1.0, 1.5):
        kind = "bound" if share == 1.0 else "grid"
        label = "bound" if share == 1.0 else f"{share:.0%}"
        parts.append(f'<line class="{kind}" x1="{_x(share)}" x2="{_x(share)}" y1="{_TOP - 8}" y2="{bottom + 4}"/>')
        parts.append(f'<text class="quiet" x="{_x(share)}" y="{bottom + 22}" text-anchor="middle">{label}</text>')
    heading = "Median, and the band from the 10th to the 90th percentile, as a share of the bound"
    return [*parts, f'<text class="quiet" x="16" y="26">{heading}</text>']


def _row(row: Row, y: int) -> list[str]:
    assert row.figure is not None and row.bound
    kind = "met" if row.met else "missed"
    low, middle, high = (_x(value / row.bound) for value in (row.figure.low, row.figure.median, row.figure.high))
    figure = f"{row.figure.median:.2f} {row.figure_is}"
    return [
        f'<text x="{_LEFT - 12}" y="{y + 4}" text-anchor="end">{escape(row.operation)}</text>',
        f'<line class="band {kind}" x1="{low}" x2="{high}" y1="{y}" y2="{y}"/>',
        f'<circle class="{kind}" cx="{middle}" cy="{y}" r="4"/>',
        f'<text x="{_WIDTH - _RIGHT + 14}" y="{y + 4}">{escape(figure)} '
        f'<tspan class="quiet">({row.bound:g})</tspan></text>',
    ]


def _x(share: float) -> float:
    """Where that share lies; what is beyond the axis lies at its end."""
    return round(_LEFT + (_WIDTH - _LEFT - _RIGHT) * min(share, _AXIS) / _AXIS, 1)
