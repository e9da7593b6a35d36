"""How two versions are ordered, and when an install would lower the installed one."""

from itertools import zip_longest

from rules.text import decimal


def compare_versions(a: bytes, b: bytes) -> int:
    """-1, 0 or 1: whether `a` is below, the same as, or above `b`."""
    for left, right in zip_longest(_numbers(a), _numbers(b), fillvalue=0):
        if left != right:
            return -1 if left < right else 1
    return 0


def downgrade_decision(installed: bytes | None, incoming: bytes) -> str:
    if not installed:
        return "install"
    return "refuse" if compare_versions(incoming, installed) < 0 else "overwrite"


def _numbers(version: bytes) -> list[int]:
    return [decimal(piece) or 0 for piece in version.split(b".") if piece]
