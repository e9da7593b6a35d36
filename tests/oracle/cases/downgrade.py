"""What happens to an installed driver. Question: its version or nothing, and the incoming one."""

from itertools import product
from random import Random
from typing import Iterator

from cases.versions import Versions
from fields import Fields
from rules.versions import downgrade_decision

_ALPHABET = (b"0", b"1", b"2", b".", b"-", b"a")
_LONGEST = 3


class Downgrade:
    name = "downgrade"
    random_cases = 10_000
    outcomes = frozenset(("install", "overwrite", "refuse"))

    def complete(self) -> Iterator[Fields]:
        """All texts of up to three characters, and nothing at all, against all such texts."""
        versions = [
            b"".join(characters) for length in range(_LONGEST + 1) for characters in product(_ALPHABET, repeat=length)
        ]
        yield from product([None, *versions], versions)

    def random(self, rng: Random) -> Fields:
        installed, incoming = Versions().random(rng)
        return (None if rng.random() < 0.05 else installed), incoming

    def expected(self, question: Fields) -> Fields:
        installed, incoming = question
        assert (installed is None or isinstance(installed, bytes)) and isinstance(incoming, bytes)
        return (downgrade_decision(installed, incoming),)

    def outcome(self, answer: Fields) -> str:
        return str(answer[0])
