"""Which signature lets a package in: the maker's own, notarised, below Apple's pinned authorities."""

from rules.report import Signature, parse_report
from rules.text import WHITE_SPACE, code_points

ROOT = b"B0B1730ECBC7FF4505142C49F1295E6EDA6BCAED7E2C68C5BE91B5A11001F024"
INTERMEDIATE_G1 = b"7AFC9D01A62F03A2DE9637936D4AFE68090D2DE18D03F29C88CFB0B1BA63587F"
INTERMEDIATE_G2 = b"F16CD3C54C7F83CEA4BF1A3E6A0819C8AAA8E4A1528FD144715F350643D2DF3A"
SIGNED = b"signed by a developer certificate issued by Apple for distribution"
NOTARIZED = b"trusted by the Apple notary service"
INSTALLER = b"Developer ID Installer: "

# The verdict and its text: the leaf's name, or what is wrong.
Verdict = tuple[str, bytes]


def trust(signature: Signature, team: bytes) -> Verdict:
    status, notarization, chain = signature.status, signature.notarization, signature.chain
    if not status or b"no signature" in status.lower():
        return "unsigned", b"status: " + (status or b"<none>")
    if SIGNED not in status:
        return "not_developer_id", b"status: " + status
    if NOTARIZED not in notarization:
        return "not_notarized", b"notarization: " + (notarization or b"<none>")
    if len(chain) < 3:
        return "chain_truncated", b"chain has %d certificate(s)" % len(chain)

    leaf, intermediate, root = chain[:3]
    if not leaf.common_name.startswith(INSTALLER):
        return "not_developer_id", b"leaf: " + leaf.common_name
    if b"(" + team + b")" not in leaf.common_name:
        return "wrong_team", b"leaf: " + leaf.common_name
    if intermediate.sha256 not in (INTERMEDIATE_G1, INTERMEDIATE_G2):
        return "unknown_authority", b"intermediate: " + intermediate.common_name
    if root.sha256 != ROOT:
        return "unknown_authority", b"root: " + root.common_name
    return "trusted", leaf.common_name


def verify(output: bytes, exit_status: int, team: bytes) -> Verdict:
    """What the verifier says of a tool that printed `output`; the exit status counts only where there is no output."""
    if all(character in WHITE_SPACE for character in code_points(output)):
        return "unreadable", b"pkgutil rc=%d, no output" % exit_status
    return trust(parse_report(output), team)
