"""Which path may be removed as the application's bundle."""

import re

MARKERS = (b"Contents/MacOS/halvo-helper", b"Contents/MacOS/halvo-app", b"Contents/MacOS/halvo-daemon")


def names_the_bundle(path: bytes) -> bool:
    """Absolute, without two dots in a row, called as the bundle is. A NUL would end the path for the system."""
    if b"\0" in path:
        return False
    last_component = path.rstrip(b"/").rpartition(b"/")[2]
    return path.startswith(b"/") and b".." not in path and last_component == b"Halvo.app"


def validate(path: bytes, existing_markers: int) -> tuple[bool, list[bytes]]:
    """The answer, and the markers that were asked for. Bit i of `existing_markers` is that of MARKERS[i]."""
    asked: list[bytes] = []
    if not names_the_bundle(path):
        return False, asked
    for index, marker in enumerate(MARKERS):
        asked.append(_joined(path, marker))
        if existing_markers & (1 << index):
            return True, asked
    return False, asked


def resolved_if_safe(resolved: bytes | None) -> bytes | None:
    return resolved if resolved is not None and names_the_bundle(resolved) else None


def _joined(path: bytes, component: bytes) -> bytes:
    """As a Mac joins them: one slash between, and runs of slashes become one."""
    return re.sub(rb"/+", b"/", path + b"/" + component)
