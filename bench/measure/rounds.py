"""Contenders run in turn, so that what else the machine does meets all of them alike."""

import math
import statistics
from collections.abc import Callable, Mapping
from dataclasses import dataclass


@dataclass(frozen=True)
class Band:
    """A median between the 10th and the 90th percentile."""

    low: float
    median: float
    high: float

    @staticmethod
    def of(values: list[float]) -> "Band":
        deciles = statistics.quantiles(values, n=10, method="inclusive") if len(values) > 1 else values * 9
        return Band(deciles[0], statistics.median(values), deciles[8])

    @staticmethod
    def exactly(value: float) -> "Band":
        return Band(value, value, value)


@dataclass(frozen=True)
class Samples:
    """What one run took in each round, by contender."""

    rounds: Mapping[str, list[float]]

    def band(self, name: str, scale: float = 1.0) -> Band:
        return Band.of([value * scale for value in self.rounds[name]])

    def ratio(self, name: str, beside: str) -> Band:
        return Band.of([ours / theirs for ours, theirs in zip(self.rounds[name], self.rounds[beside])])


def interleave(contenders: Mapping[str, Callable[[], float]], rounds: int, discarded: int) -> Samples:
    """Each round runs all of them forwards and then backwards: A B B A. The quicker of both counts: what else the
    machine does only ever makes a run slower."""
    kept: dict[str, list[float]] = {name: [] for name in contenders}
    for number in range(discarded + rounds):
        taken = dict.fromkeys(contenders, math.inf)
        for name in [*contenders, *reversed(list(contenders))]:
            taken[name] = min(taken[name], contenders[name]())
        if number >= discarded:
            for name, seconds in taken.items():
                kept[name].append(seconds)
    return Samples(kept)
