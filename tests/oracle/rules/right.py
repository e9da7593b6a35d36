"""Which definition of the administrator right is safe to rely on."""

from typing import Mapping

# A str stands for an object that is no text, no truth and no whole number.
Object = bool | int | bytes | str


def right_is_sound(definition: Mapping[Object, Object]) -> bool:
    """A definition with a key that is no text cannot be read, and what cannot be read is not sound."""
    return (
        all(isinstance(key, bytes) for key in definition)
        and definition.get(b"class") == b"user"
        and definition.get(b"group") == b"admin"
        and definition.get(b"authenticate-user") is True
        and definition.get(b"allow-root") is False
        and definition.get(b"shared") is False
        and definition.get(b"session-owner") is not True
    )
