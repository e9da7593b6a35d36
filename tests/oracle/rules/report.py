"""How the report of `pkgutil --check-signature` is read."""

from dataclasses import dataclass, field

from rules.text import BLANKS, WHITE_SPACE, code_points, decimal

_HEX_DIGITS = frozenset("0123456789abcdefABCDEF")


@dataclass(frozen=True)
class Certificate:
    position: int
    common_name: bytes
    sha256: bytes


@dataclass(frozen=True)
class Signature:
    status: bytes
    notarization: bytes
    chain: tuple[Certificate, ...]


def parse_report(report: bytes) -> Signature:
    reader = _Reader()
    for piece in report.split(b"\n"):
        reader.take(piece.strip(BLANKS))
    reader.finish_certificate()
    return Signature(reader.status, reader.notarization, tuple(reader.chain))


@dataclass
class _Reader:
    status: bytes = b""
    notarization: bytes = b""
    chain: list[Certificate] = field(default_factory=list)
    # The certificate whose lines are being read.
    position: int = -1
    name: bytes = b""
    fingerprint: str = ""
    in_fingerprint: bool = False

    def take(self, line: bytes) -> None:
        """The first rule that matches has the line."""
        position = _certificate_position(line)
        if position is not None:
            self.finish_certificate()
            self.position = position
            self.name = line.partition(b".")[2].strip(BLANKS)
        elif line.startswith(b"Status:"):
            self.status = line[len(b"Status:") :].strip(BLANKS)
        elif line.startswith(b"Notarization:"):
            self.notarization = line[len(b"Notarization:") :].strip(BLANKS)
        elif line.startswith(b"SHA256 Fingerprint:"):
            self.in_fingerprint = True
        elif line.startswith(b"Expires:"):
            pass
        elif line.startswith(b"---"):
            self.in_fingerprint = False
        elif self.in_fingerprint:
            self._take_fingerprint(line)

    def _take_fingerprint(self, line: bytes) -> None:
        visible = [character for character in code_points(line) if character not in WHITE_SPACE]
        if all(character in _HEX_DIGITS for character in visible):
            self.fingerprint += "".join(visible)
        else:
            self.in_fingerprint = False

    def finish_certificate(self) -> None:
        if self.position >= 0 and self.name:
            self.chain.append(Certificate(self.position, self.name, self.fingerprint.upper().encode()))
        self.position = -1
        self.name = b""
        self.fingerprint = ""
        self.in_fingerprint = False


def _certificate_position(line: bytes) -> int | None:
    """Counted from zero, while the report counts from one."""
    before, dot, after = line.partition(b".")
    number = decimal(before)
    if not dot or not after or number is None or number < 1:
        return None
    return number - 1
