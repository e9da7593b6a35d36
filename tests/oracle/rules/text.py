"""The few rules about text that several decisions share. Text is UTF-8 in bytes, as a tool or a client gives it."""

import re

# Every code point with the Unicode property White_Space.
WHITE_SPACE = frozenset(
    "\t\n\v\f\r \u0085\u00a0\u1680"
    "\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u2007\u2008\u2009\u200a"
    "\u2028\u2029\u202f\u205f\u3000"
)
BLANKS = b" \t"

_DECIMAL = re.compile(rb"[+-]?[0-9]+")
_MOST_DIGITS = 19  # of a signed 64-bit number


def decimal(text: bytes) -> int | None:
    """An optional sign and ASCII digits, nothing else; None also for what a signed 64-bit number cannot hold."""
    if not _DECIMAL.fullmatch(text):
        return None
    digits = text.lstrip(b"+-").lstrip(b"0") or b"0"
    if len(digits) > _MOST_DIGITS:
        return None
    number = -int(digits) if text.startswith(b"-") else int(digits)
    return number if -(2**63) <= number < 2**63 else None


def code_points(text: bytes) -> str:
    """An ill-formed sequence counts as a character that is neither white space nor a digit."""
    return text.decode("utf-8", "replace")
