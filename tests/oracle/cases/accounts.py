"""Listings of the directory service. Question: the listing, the tool's exit status, then the ids whose GUI domain is
there. Answer: the application's reply with all accounts of people, and with those that are logged in."""

from itertools import product
from random import Random
from typing import Iterator

from cases.text import joined, mutated
from fields import Fields
from rules.accounts import active_uids, login_uids, uids_reply

_LINE_ENDS = [ending.encode() for ending in ("\n", "\r\n", "\r", "\v", "\f", "\u0085", "\u2028", "\u2029", "\n\n")]
_SPACES = [
    space.encode()
    for space in (" ", "\t", "        ", "\u00a0", "\u1680", "\u2000", "\u2003", "\u200a", "\u202f", "\u205f", "\u3000")
]
# No white space, though some of it looks or is named like it.
_NO_SPACES = [text.encode() for text in ("\u200b", "\u2060", "\ufeff", "\u180e", "\x1c", "\x1f", "\0", "_", "-")]
_NAMES = [b"root", b"_spotlight", b"user501", b"nobody", b"Anna", "Zo\u00eb".encode(), b"502", b""]
_IDS = [
    b"0", b"1", b"89", b"-2", b"498", b"499", b"500", b"501", b"502", b"503", b"0501", b"+501", b"-501", b"++501",
    b"501a", b"5_0_1", b"501.0", b"0x1F5", b"4294967294", b"4294967295", b"9223372036854775807",
    b"9223372036854775808", b"-9223372036854775809", b"99999999999999999999", b"000000000000000000000000501",
    "\u0665\u0660\u0661".encode(), "\uff15\uff10\uff11".encode(), b"", b"root",
]
_SMALL = [b"500", b"499", b"0501", b"a", b" ", b"\n", "\u00a0".encode(), "\u2028".encode()]
_ALPHABET = b"05149 \n\t-+\r\xc2\x85\xa0\xe2\x80\xa8"


class Accounts:
    name = "accounts"
    random_cases = 20_000
    outcomes = frozenset(("nobody", "nobody logged in", "some logged in", "all logged in"))

    def complete(self) -> Iterator[Fields]:
        """All listings of up to four small pieces, and one line each of every name, separator, id and line end."""
        for length in range(5):
            for pieces in product(_SMALL, repeat=length):
                yield b"".join(pieces), 0, 500
        for separator, uid, ending in product(_SPACES + _NO_SPACES, _IDS, _LINE_ENDS):
            yield b"Anna" + separator + uid + ending + b"user502 502", 1, 501, 502

    def random(self, rng: Random) -> Fields:
        listing = b"".join(_line(rng) for _ in range(rng.randrange(8)))
        if rng.random() < 0.3:
            listing = mutated(rng, listing, _ALPHABET)
        live = rng.sample((500, 501, 502, 503, 499, 4294967294, 2**63 - 1), rng.randrange(6))
        return listing, rng.choice((0, 0, 1, 78, -1)), *live

    def expected(self, question: Fields) -> Fields:
        listing, _, *live = question
        assert isinstance(listing, bytes)
        present = {uid for uid in live if isinstance(uid, int)}
        return uids_reply(login_uids(listing)), uids_reply(active_uids(listing, present))

    def outcome(self, answer: Fields) -> str:
        everybody, logged_in = answer
        if everybody == uids_reply([]):
            return "nobody"
        if logged_in == uids_reply([]):
            return "nobody logged in"
        return "all logged in" if everybody == logged_in else "some logged in"


def _line(rng: Random) -> bytes:
    separators = _SPACES if rng.random() < 0.8 else _NO_SPACES
    line = rng.choice(_NAMES) + rng.choice(separators) + rng.choice(_IDS)
    if rng.random() < 0.2:
        line += joined(rng, _SPACES + _IDS + _NO_SPACES, 3)
    return line + (b"\n" if rng.random() < 0.5 else rng.choice(_LINE_ENDS))
