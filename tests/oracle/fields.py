"""The line that a case is told in, and its answer: fields between single blanks. A text is "=" and its bytes in
hexadecimal digits, what is absent is "-", a truth is "true" or "false", a number is decimal, all else is one word."""

import re

# A str is a word, a bytes is a text.
Field = None | bool | int | bytes | str
Fields = tuple[Field, ...]

_NUMBER = re.compile("-?[0-9]+")


def to_line(fields: Fields) -> str:
    return " ".join(_to_word(field) for field in fields)


def from_line(line: str) -> Fields:
    return tuple(_from_word(word) for word in line.split(" "))


def _to_word(field: Field) -> str:
    if isinstance(field, bytes):
        return "=" + field.hex()
    if field is None:
        return "-"
    if isinstance(field, bool):
        return "true" if field else "false"
    return str(field)


def _from_word(word: str) -> Field:
    if word.startswith("="):
        return bytes.fromhex(word[1:])
    if _NUMBER.fullmatch(word):
        return int(word)
    return {"-": None, "true": True, "false": False}.get(word, word)
