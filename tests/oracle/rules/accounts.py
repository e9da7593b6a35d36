"""Which accounts of the directory service's listing are people's, and how they are told to the application."""

import re
from typing import Collection

from rules.text import WHITE_SPACE, code_points, decimal

FIRST_LOGIN_UID = 500

_LINE_END = re.compile("[\n\v\f\r\u0085\u2028\u2029]")
_WHITE_SPACE = re.compile("[" + "".join(sorted(WHITE_SPACE)) + "]")


def login_uids(listing: bytes) -> list[int]:
    last_words = (_last_word(line) for line in _LINE_END.split(code_points(listing)))
    uids = {decimal(word.encode()) for word in last_words}
    return sorted(uid for uid in uids if uid is not None and uid >= FIRST_LOGIN_UID)


def active_uids(listing: bytes, with_gui_domain: Collection[int]) -> list[int]:
    return [uid for uid in login_uids(listing) if uid in with_gui_domain]


def uids_reply(uids: list[int]) -> bytes:
    return b'{"uids":[' + b",".join(b"%d" % uid for uid in uids) + b"]}"


def _last_word(line: str) -> str:
    words = [word for word in _WHITE_SPACE.split(line) if word]
    return words[-1] if words else ""
