"""Paths that a client may name as the application's bundle. Question: the path, which markers exist (a bit each), and
what it resolves to, or nothing. Answer: whether the path passes, the path that is safe to remove or nothing, then
the markers that were asked for."""

from itertools import product
from random import Random
from typing import Iterator

from cases.text import joined, mutated
from fields import Fields
from rules.bundle import resolved_if_safe, validate

_SMALL = [b"/", b"Halvo.app", b"halvo.app", b".", b"..", b"x", b"\0"]
_PIECES = [
    b"/", b"//", b"/Applications", b"/Applications/", b"/Users/someone/", b"Halvo.app", b"/Halvo.app", b"Halvo.app/",
    b"/Halvo.app//", b"Halvo..app", b"Halvo copy.app", b"halvo.app", b"HALVO.APP", b"Halvo.app.old", b"xHalvo.app",
    b"Halvo", b"/./", b"/../", b"..", b"...", b".", b" ", b"\n", b"\0", "Halvo\u2024app".encode(), b"\xff",
    b"/Contents/MacOS", b"~", b"Contents/MacOS/halvo-helper", "Ha\u0301lvo.app".encode(), b"\\", b":",
]
_ENDINGS = [b"/Halvo.app", b"/Halvo.app/", b"/Halvo.app//", b"Halvo.app", b""]
_ALL_MARKERS = 0b111


class BundlePaths:
    name = "bundle"
    random_cases = 20_000
    outcomes = frozenset(("refused", "accepted", "refused, resolved", "accepted, resolved"))

    def complete(self) -> Iterator[Fields]:
        """All paths of up to four small pieces; each is also what a good path resolves to, and each that may name the
        bundle is asked with every set of markers."""
        yield b"/Applications/Halvo.app", _ALL_MARKERS, None
        for length in range(5):
            for pieces in product(_SMALL, repeat=length):
                path = b"".join(pieces)
                yield b"/Applications/Halvo.app", _ALL_MARKERS, path
                for existing in range(_ALL_MARKERS + 1) if b"Halvo.app" in path else (_ALL_MARKERS,):
                    yield path, existing, None

    def random(self, rng: Random) -> Fields:
        resolved = None if rng.random() < 0.1 else _path(rng)
        return _path(rng), rng.randint(0, _ALL_MARKERS), resolved

    def expected(self, question: Fields) -> Fields:
        path, existing, resolved = question
        assert isinstance(path, bytes) and isinstance(existing, int)
        assert resolved is None or isinstance(resolved, bytes)
        accepted, asked = validate(path, existing)
        return accepted, resolved_if_safe(resolved), *asked

    def outcome(self, answer: Fields) -> str:
        accepted, resolved, *_ = answer
        return ("accepted" if accepted else "refused") + (", resolved" if resolved is not None else "")


def _path(rng: Random) -> bytes:
    path = joined(rng, _PIECES, 3) + rng.choice(_ENDINGS)
    if rng.random() < 0.6:
        path = b"/" + path
    return mutated(rng, path, b"/.Hap\0") if rng.random() < 0.2 else path
