"""What a measurement comes to: one row of the table."""

from collections.abc import Callable, Iterator, Mapping
from dataclasses import dataclass, field
from pathlib import Path

from measure.rounds import Band, Samples


@dataclass(frozen=True)
class Plan:
    """How much is measured, and where things lie."""

    build: Path
    disk: Path
    memory: Path
    quick: bool
    # Whether the frameworks are the simulated ones.
    simulated: bool

    @property
    def rounds(self) -> int:
        return 5 if self.quick else 15

    @property
    def discarded(self) -> int:
        return 1 if self.quick else 2

    def times(self, often: int) -> int:
        """How often a short operation is repeated for one sample."""
        return max(often // 3, 1) if self.quick else often

    def driver(self, name: str) -> Path:
        return self.build / "bench" / name


@dataclass(frozen=True)
class Row:
    operation: str
    ours: str
    peers: Mapping[str, str] = field(default_factory=dict)
    # The figure that the bound is for, and the name of what it is: a ratio to a peer, or a figure of its own.
    figure: Band | None = None
    figure_is: str = ""
    bound: float | None = None
    # Of the simulated frameworks or the simulated transport: says nothing about a Mac.
    simulated: bool = False

    @property
    def met(self) -> bool | None:
        """By the lower end of the band: noise only ever makes a run slower."""
        if self.figure is None or self.bound is None:
            return None
        return self.figure.low <= self.bound


Measurement = Callable[[Plan], Iterator[Row]]


def duration(seconds: float) -> str:
    for unit, factor in (("s", 1.0), ("ms", 1e-3), ("us", 1e-6)):
        if seconds >= factor:
            return f"{seconds / factor:.3g} {unit}"
    return f"{seconds / 1e-9:.3g} ns"


def compared(operation: str, samples: Samples, beside: str, bound: float | None, simulated: bool = False) -> Row:
    """The row of "ours" and its peers, the ratio being to that one."""
    peers = {name: duration(samples.band(name).median) for name in samples.rounds if name != "ours"}
    return Row(
        operation=operation,
        ours=duration(samples.band("ours").median),
        peers=peers,
        figure=samples.ratio("ours", beside),
        figure_is=f"of {beside}",
        bound=bound,
        simulated=simulated,
    )
