"""Pairs of versions. Question: two texts. Answer: -1, 0 or 1."""

from itertools import product
from random import Random
from typing import Iterator

from cases.text import joined, mutated
from fields import Fields
from rules.versions import compare_versions

# Boundaries of the numbers, signs, leading zeros, text instead of a number, digits that are not ASCII.
_PIECES = [
    b"0", b"1", b"2", b"7", b"9", b"10", b"11", b"99", b"100", b"00", b"007", b"-0", b"+0", b"-1", b"+1", b"-2", b"+3",
    b"--1", b"+-1", b"-", b"+", b"", b"7b", b"b7", b"beta", b"1rc", b"0-rc1", b" 1", b"1 ", b"1_0", b"0x1", b"1e1",
    b"9223372036854775807", b"9223372036854775808", b"-9223372036854775808", b"-9223372036854775809",
    b"09223372036854775807", b"18446744073709551615", b"18446744073709551617", b"99999999999999999999", b"4294967297",
    b"2147483648", "\u0663".encode(), "\uff11".encode(), b"1\0", b"\xff", b"1,1",
]
_SMALL = [b"", b"0", b"1", b"2", b"10", b"-1", b"x", b"9223372036854775807", b"9223372036854775808"]
_ALPHABET = b"0123456789.+-a "


class Versions:
    name = "versions"
    random_cases = 100_000
    outcomes = frozenset(("-1", "0", "1"))

    def complete(self) -> Iterator[Fields]:
        """Each piece against each piece, and all versions of up to two small pieces against each other."""
        yield from product(_PIECES, repeat=2)
        versions = _SMALL + [b".".join(pieces) for pieces in product(_SMALL, repeat=2)]
        yield from product(versions, repeat=2)

    def random(self, rng: Random) -> Fields:
        a = _version(rng)
        # Versions that have nothing in common differ in their first piece and tell little about the others.
        b = _version(rng) if rng.random() < 0.3 else _neighbour(rng, a)
        return a, b

    def expected(self, question: Fields) -> Fields:
        a, b = question
        assert isinstance(a, bytes) and isinstance(b, bytes)
        return (compare_versions(a, b),)

    def outcome(self, answer: Fields) -> str:
        return str(answer[0])


def _version(rng: Random) -> bytes:
    if rng.random() < 0.1:
        return joined(rng, [bytes([byte]) for byte in _ALPHABET], 12)
    return b".".join(rng.choices(_PIECES, k=rng.randint(0, 6)))


def _neighbour(rng: Random, version: bytes) -> bytes:
    pieces = version.split(b".")
    at = rng.randrange(len(pieces))
    match rng.randrange(5):
        case 0:
            pieces[at] = rng.choice(_PIECES)
        case 1:
            del pieces[at]
        case 2:
            pieces.insert(at, rng.choice((b"", b"0", b"00")))
        case 3:
            pieces += rng.choices((b"0", b"", b"x", b"-0", b"1", b"-1"), k=rng.randint(1, 3))
        case _:
            return mutated(rng, version, _ALPHABET)
    return b".".join(pieces)
