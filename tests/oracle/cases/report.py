"""Reports of the package tool. Question: the team, the tool's exit status and what it printed. Answer: the verdict and
its text, the status line, the notarization line, then position, common name and fingerprint of each certificate."""

from itertools import product
from random import Random
from typing import Callable, Iterator

from cases.text import mutated
from cases.trust import TEAM, verdict_kind
from fields import Fields
from rules.report import Signature, parse_report
from rules.text import WHITE_SPACE
from rules.trust import INSTALLER, INTERMEDIATE_G1, INTERMEDIATE_G2, NOTARIZED, ROOT, SIGNED, verify

_SMALL = (
    b"1. A", b"2.", b"Status: s", b"Notarization: n", b"SHA256 Fingerprint:", b"Expires: e", b"---", b"7A fc", b"xy",
    b"",
)
_LONGEST = 4

_NUMBERS = (
    b"1", b"2", b"3", b"0", b"-1", b"+1", b"+-1", b"01", b"1 ", b"", b"x", b"1x", b"10", b"9223372036854775807",
    b"9223372036854775808", b"0000000000000000000001", "\u0661".encode(), b"1\t", b"\xc2\xa01",
)
_NAMES = (
    INSTALLER + b"Halvo Audio (" + TEAM + b")", INSTALLER + b"Somebody (A1B2C3D4E5)",
    b"Developer ID Certification Authority", b"Apple Root CA", b"5", b"", b".", b" . ", b"Status: x",
    "Zo\u00eb".encode(), b"\xa0", b"\r",
)
_DOTS = (b". ", b".", b".. ", b" .", b".\t", b"", b". \xc2\xa0", b",")
_KEYS = (
    b"Status:", b"Notarization:", b"SHA256 Fingerprint:", b"Expires:", b"---", b"----------", b"--", b"status:",
    b"Status :", b"Statu", b"SHA256 fingerprint:", b"SHA1 Fingerprint:", b"1.Status:", b"SHA256 Fingerprint",
)
_TEXTS = (
    b"", SIGNED, NOTARIZED, b"no signature", b"No Signature", b"x", b"2027-02-01 22:12:15 +0000", b"7A FC", b"1. A",
    b"\r", b"\t \t", b"\0",
)
_INDENTS = (b"", b"", b"   ", b"\t", b" \t ", b"\xc2\xa0", b"\r", b"\v")
_HEX_SEPARATORS = [space.encode() for space in sorted(WHITE_SPACE - {"\n"})] + [b"", b":", "\u200b".encode(), b"\x1f"]
_OTHER_LINES = (
    b"", b"  ", b"\t", b"\r", b"Certificate Chain:", b'Package "Halvo-1.2.0.pkg":', b"g", b"7A FG", b"0x7A", b"7A.FC",
    b"Signed with a trusted timestamp on: 2025-05-01 10:11:12 +0000", "\u00a0".encode(), "\uff11".encode(), b"\xff",
    b"spawn failed: no such file",
)
_ALPHABET = b"123. \t\n\nSN:-ABCDEFabcdef07\r"


class Reports:
    name = "reports"
    random_cases = 40_000
    outcomes = frozenset(
        (
            "trusted", "unreadable", "unsigned", "not_developer_id status", "not_notarized", "chain_truncated",
            "not_developer_id leaf", "wrong_team", "unknown_authority intermediate", "unknown_authority root",
        )
    )

    def complete(self) -> Iterator[Fields]:
        """All reports of up to four small lines."""
        for length in range(_LONGEST + 1):
            for lines in product(_SMALL, repeat=length):
                yield TEAM, 0, b"\n".join(lines)

    def random(self, rng: Random) -> Fields:
        """A real report with lines changed, or one of chance lines; some of either with bytes changed."""
        lines = _real_lines(rng) if rng.random() < 0.3 else [_chance_line(rng) for _ in range(rng.randrange(10))]
        for _ in range(rng.choice((0, 0, 1, 1, 2, 3))):
            _change(rng, lines)
        report = b"\n".join(lines)
        if rng.random() < 0.3:
            report = mutated(rng, report, _ALPHABET)
        return TEAM, rng.choice((0, 0, 1, -1, 2**31 - 1)), report

    def expected(self, question: Fields) -> Fields:
        team, exit_status, report = question
        assert isinstance(team, bytes) and isinstance(exit_status, int) and isinstance(report, bytes)
        return *verify(report, exit_status, team), *_flat(parse_report(report))

    def outcome(self, answer: Fields) -> str:
        return verdict_kind(answer[:2])


def _flat(signature: Signature) -> Fields:
    certificates = ((each.position, each.common_name, each.sha256) for each in signature.chain)
    return signature.status, signature.notarization, *(field for fields in certificates for field in fields)


def _real_lines(rng: Random) -> list[bytes]:
    """Shorter than the tool's only where nothing looks: in the leaf's fingerprint and the lines of dashes."""
    return [
        b'Package "Halvo-1.2.0.pkg":',
        b"   Status: " + SIGNED,
        b"   Notarization: " + NOTARIZED,
        b"   Signed with a trusted timestamp on: 2025-05-01 10:11:12 +0000",
        b"   Certificate Chain:",
        *_certificate(rng, 1, _NAMES[0], b"0123456789ABCDEF" * 2),
        b"       ------------",
        *_certificate(rng, 2, _NAMES[2], rng.choice((INTERMEDIATE_G1, INTERMEDIATE_G2))),
        b"       ------------",
        *_certificate(rng, 3, _NAMES[3], ROOT),
        b"",
    ]


def _certificate(rng: Random, number: int, name: bytes, sha256: bytes) -> list[bytes]:
    digits = sha256.lower() if rng.random() < 0.2 else sha256
    pairs = [digits[at : at + 2] for at in range(0, len(digits), 2)]
    return [
        b"    %d. " % number + name,
        b"       Expires: 2027-02-01 22:12:15 +0000",
        b"       SHA256 Fingerprint:",
        b"           " + b" ".join(pairs[:16]) + b" ",
        b"           " + b" ".join(pairs[16:]),
    ]


def _chance_line(rng: Random) -> bytes:
    kinds: tuple[Callable[[Random], bytes], ...] = (_numbered_line, _key_line, _hex_line, _other_line)
    return rng.choice(_INDENTS) + rng.choice(kinds)(rng)


def _numbered_line(rng: Random) -> bytes:
    return rng.choice(_NUMBERS) + rng.choice(_DOTS) + rng.choice(_NAMES)


def _key_line(rng: Random) -> bytes:
    return rng.choice(_KEYS) + rng.choice((b"", b" ", b"\t")) + rng.choice(_TEXTS)


def _hex_line(rng: Random) -> bytes:
    separator = b" " if rng.random() < 0.5 else rng.choice(_HEX_SEPARATORS)
    return separator.join(b"%02X" % rng.randrange(256) for _ in range(rng.randrange(1, 5)))


def _other_line(rng: Random) -> bytes:
    return rng.choice(_OTHER_LINES)


def _change(rng: Random, lines: list[bytes]) -> None:
    at = rng.randint(0, len(lines))
    match rng.randrange(6):
        case 0:
            del lines[at : at + 1]
        case 1:
            del lines[at : at + rng.randint(1, 8)]
        case 2:
            lines[at : at + 1] = [_chance_line(rng)]
        case 3:
            lines.insert(at, _chance_line(rng))
        case 4:
            lines.extend(lines[at : at + rng.randint(1, 6)])
        case _:
            rest = lines[at:]
            del lines[at:]
            lines[0:0] = rest
