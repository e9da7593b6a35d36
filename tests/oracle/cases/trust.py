"""Signatures as the report's parser hands them on. Question: the team, the status line, the notarization line, then for
each certificate its position, its common name and its fingerprint. Answer: the verdict and its text."""

from itertools import product
from random import Random
from typing import Iterator

from cases.text import mutated
from fields import Field, Fields
from rules.report import Certificate, Signature
from rules.trust import INSTALLER, INTERMEDIATE_G1, INTERMEDIATE_G2, NOTARIZED, ROOT, SIGNED, trust

TEAM = b"QX4TRM2ZL9"

# In each list the first passes its check; the others pass by a hair or fail by one.
_STATUSES = (
    SIGNED,
    b"package is " + SIGNED + b" since today",
    b"",
    b"no signature",
    b"NO Signature, though " + SIGNED,
    SIGNED.upper(),
    SIGNED[:-1],
    b"signed by a certificate trusted by Mac OS X",
)
_NOTARIZATIONS = (NOTARIZED, b"(" + NOTARIZED + b")", b"", NOTARIZED.lower(), NOTARIZED[1:], SIGNED)
_LEAVES = (
    INSTALLER + b"Halvo Audio (" + TEAM + b")",
    INSTALLER + b"(" + TEAM + b") and (A1B2C3D4E5)",
    INSTALLER + b"Halvo Audio (A1B2C3D4E5)",
    INSTALLER + b"Halvo Audio (" + TEAM.lower() + b")",
    INSTALLER + TEAM,
    INSTALLER + b"(" + TEAM + b" )",
    b"Developer ID Application: Halvo Audio (" + TEAM + b")",
    INSTALLER.rstrip() + b"Halvo Audio (" + TEAM + b")",
    b"A " + INSTALLER + b"Halvo Audio (" + TEAM + b")",
    INSTALLER.lower() + b"(" + TEAM + b")",
    b"Apple Root CA",
)
_INTERMEDIATES = (
    INTERMEDIATE_G1,
    INTERMEDIATE_G2,
    ROOT,
    b"",
    INTERMEDIATE_G1.lower(),
    INTERMEDIATE_G2[:-1],
    INTERMEDIATE_G1 + b"0",
    INTERMEDIATE_G1[:-1] + b"0",
)
_ROOTS = (ROOT, INTERMEDIATE_G1, b"", ROOT.lower(), ROOT[:-1], ROOT + b"0", b"1" + ROOT[1:])
_FOURTH: Fields = (3, b"Apple Root CA", ROOT)
_POSITIONS = (0, 1, 2, -1, 2**63 - 1)
_OTHER_TEAMS = (TEAM.lower(), b"", b"A1B2C3D4E5", TEAM[:-1])


class TrustDecision:
    name = "trust"
    random_cases = 20_000
    outcomes = frozenset(
        (
            "trusted", "unsigned", "not_developer_id status", "not_notarized", "chain_truncated",
            "not_developer_id leaf", "wrong_team", "unknown_authority intermediate", "unknown_authority root",
        )
    )

    def complete(self) -> Iterator[Fields]:
        """Every way to pass or fail each check with every way to pass or fail each other one."""
        for status, notarization, chain in product(_STATUSES, _NOTARIZATIONS, list(_chains())):
            yield TEAM, status, notarization, *chain

    def random(self, rng: Random) -> Fields:
        """Positions count for nothing, names and fingerprints may be damaged anywhere, teams may differ."""
        team = TEAM if rng.random() < 0.8 else rng.choice(_OTHER_TEAMS)
        chain: list[Field] = []
        for names, fingerprints in ((_LEAVES, (ROOT,)), ((b"An authority",), _INTERMEDIATES), ((b"A root",), _ROOTS)):
            chain += (rng.choice(_POSITIONS), _likely(rng, names), _likely(rng, fingerprints))
        chain = chain[: 3 * rng.choice((0, 1, 2, 3, 3, 3, 3, 3))] + list(_FOURTH) * rng.choice((0, 0, 1, 2))
        return team, _likely(rng, _STATUSES), _likely(rng, _NOTARIZATIONS), *chain

    def expected(self, question: Fields) -> Fields:
        team, status, notarization, *chain = question
        assert isinstance(team, bytes) and isinstance(status, bytes) and isinstance(notarization, bytes)
        certificates = tuple(
            _certificate(*fields) for fields in zip(chain[::3], chain[1::3], chain[2::3], strict=True)
        )
        return trust(Signature(status, notarization, certificates), team)

    def outcome(self, answer: Fields) -> str:
        return verdict_kind(answer)


def verdict_kind(verdict: Fields) -> str:
    """The reason, and for one that two checks give, which of them."""
    reason, detail = verdict
    assert isinstance(reason, str) and isinstance(detail, bytes)
    if reason in ("not_developer_id", "unknown_authority"):
        return reason + " " + detail.partition(b":")[0].decode()
    return reason


def _chains() -> Iterator[Fields]:
    yield ()
    leaves = [(0, leaf, ROOT) for leaf in _LEAVES]
    pairs = [(*leaf, 1, b"An authority", sha256) for leaf, sha256 in product(leaves, _INTERMEDIATES)]
    whole = [(*pair, 2, b"A root", sha256) for pair, sha256 in product(pairs, _ROOTS)]
    yield from leaves
    yield from pairs
    yield from whole
    # A fourth certificate makes up for nothing.
    yield from ((*chain, *_FOURTH) for chain in whole[::7])


def _likely(rng: Random, texts: tuple[bytes, ...]) -> bytes:
    """Mostly one that passes, so that the checks behind it have their turn."""
    text = rng.choice(texts[:2]) if rng.random() < 0.8 else rng.choice(texts)
    return mutated(rng, text, b" ()QX4") if rng.random() < 0.1 else text


def _certificate(position: Field, common_name: Field, sha256: Field) -> Certificate:
    assert isinstance(position, int) and isinstance(common_name, bytes) and isinstance(sha256, bytes)
    return Certificate(position, common_name, sha256)
