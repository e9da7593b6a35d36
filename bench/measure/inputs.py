"""Texts of every size for what reads them."""

from pathlib import Path

GOOD_REPORT = Path(__file__).parents[2] / "sim/tools/reports/good.txt"

# Of a report: what each of its lines is.
LINE_KINDS = {
    "words": "What a tool prints when it has much to say.\n",
    "status lines": "   Status: signed by a developer certificate issued by Apple for distribution\n",
    "certificates": "    1. Developer ID Installer: Halvo Audio (QX4TRM2ZL9)\n",
    "fingerprint lines": "           B8 67 9C 5B 91 E8 62 E4 A2 E6 EC 4C DE 0A 0B 18 7E 70 49 F5 39 5C\n",
    "rules": "       ------------------------------------------------------------------------\n",
    "accented words": "Ein längerer Text, den ein Werkzeug auf Französisch so schriebe: déjà vu.\n",
}


def report_of(kind: str, size: int) -> str:
    """A report with a status, a certificate, and then lines of that kind."""
    beginning = "   Status: unknown\n    1. A\n       SHA256 Fingerprint:\n"
    line = LINE_KINDS[kind]
    return beginning + line * (size // len(line.encode()))


def accounts_of(lines: int) -> str:
    return "".join(f"user{number:07} {number + 501:7}\n" for number in range(lines))


def version_of(pieces: int) -> str:
    return ".".join(str(piece % 100) for piece in range(pieces))


def manifest_of(members: int) -> str:
    inside = "".join(f'"member{number:06}":"text",' for number in range(members))
    return "{" + inside + '"driver_version":"1.2.0"}'


def reply_of(members: int) -> str:
    inside = "".join(f'"member{number:06}":{number},' for number in range(members))
    return "{" + inside + '"helper_version":6}'
