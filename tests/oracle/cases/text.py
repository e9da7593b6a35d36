"""Random text for hostile questions."""

from random import Random
from typing import Sequence


def joined(rng: Random, pieces: Sequence[bytes], longest: int) -> bytes:
    return b"".join(rng.choices(pieces, k=rng.randint(0, longest)))


def mutated(rng: Random, text: bytes, alphabet: bytes) -> bytes:
    """Some bytes replaced, removed, doubled or put in; what comes in is mostly from `alphabet`."""
    changed = bytearray(text)
    for _ in range(rng.randint(1, 4)):
        at = rng.randint(0, len(changed))
        byte = rng.choice(alphabet) if rng.random() < 0.8 else rng.randrange(256)
        match rng.randrange(4):
            case 0:
                changed[at : at + 1] = bytes([byte])
            case 1:
                del changed[at : at + rng.randint(1, 3)]
            case 2:
                changed[at:at] = changed[at : at + rng.randint(1, 3)]
            case _:
                changed[at:at] = bytes([byte])
    return bytes(changed)
