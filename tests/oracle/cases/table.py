"""What every table offers."""

from random import Random
from typing import Iterator, Protocol

from fields import Fields


class Table(Protocol):
    name: str
    # How many random questions follow the complete part unless somebody asks for another number.
    random_cases: int
    # Each of these must be an expected answer at least once, else the questions are too tame to show anything.
    outcomes: frozenset[str]

    def complete(self) -> Iterator[Fields]:
        """Every question over a small alphabet, the same in each run."""
        ...

    def random(self, rng: Random) -> Fields:
        """One question out of the wide world."""
        ...

    def expected(self, question: Fields) -> Fields:
        """The answer by the rules."""
        ...

    def outcome(self, answer: Fields) -> str:
        """The kind of an answer."""
        ...
