"""Definitions of the administrator right as the authorization database may hand them back. Question: the values of the
six keys below, then any number of further keys, each followed by its value. Answer: whether the right is sound."""

from itertools import combinations, product
from random import Random
from typing import Iterator

from fields import Fields
from rules.right import right_is_sound

_KEYS = (b"class", b"group", b"authenticate-user", b"allow-root", b"shared", b"session-owner")
_SOUND: Fields = (b"user", b"admin", True, False, False, False)
_TEXTS_AND_NUMBERS = (
    (b"user", b"other", 1),
    (b"admin", b"other", 1),
    (b"true", b"other", 1),
    (b"false", b"other", 0),
    (b"false", b"other", 0),
    (b"true", b"other", 1),
)
# Every type that a definition can hold, with what is easily taken for the right text, for a truth or for nothing.
_OTHER_VALUES: Fields = (
    None, True, False, 0, 1, -1, b"", b"user", b"admin", b"User", b"ADMIN", b"user ", b" admin", b"use", b"admins",
    b"user\0", b"true", b"false", b"0", b"1", b"rule", b"allow", 2**63 - 1, "real-0", "real-1", "data", "dictionary",
    "half-character",
)
# The last two are no text.
_FURTHER_KEYS = (
    b"timeout", b"version", b"Class", b"class ", b"Shared", b"session_owner", b"rule", b"", b"tries", "half-character",
    0,
)


class RightSoundness:
    name = "right"
    random_cases = 10_000
    outcomes = frozenset(("sound", "unsound"))

    def complete(self) -> Iterator[Fields]:
        """All six keys with absent, true, false, the right text, other text, and a number, where there is one the
        number that looks right; then each pair of keys with each pair of the other values, all else being sound."""
        yield from product(*((None, True, False, *texts_and_number) for texts_and_number in _TEXTS_AND_NUMBERS))
        for first, second in combinations(range(len(_KEYS)), 2):
            for values in product(_OTHER_VALUES, repeat=2):
                definition = list(_SOUND)
                definition[first], definition[second] = values
                yield tuple(definition)

    def random(self, rng: Random) -> Fields:
        values = [value if rng.random() < 0.85 else rng.choice(_OTHER_VALUES) for value in _SOUND]
        for key in rng.sample(_FURTHER_KEYS, rng.randrange(4)):
            values += (key, rng.choice(_OTHER_VALUES))
        return tuple(values)

    def expected(self, question: Fields) -> Fields:
        further = question[len(_KEYS) :]
        pairs = [*zip(_KEYS, question), *zip(further[::2], further[1::2])]
        return (right_is_sound({key: value for key, value in pairs if value is not None}),)

    def outcome(self, answer: Fields) -> str:
        return "sound" if answer[0] else "unsound"
