"""Do documents show what programs print?"""

import re
import subprocess
from pathlib import Path

from pages import Block, Finding, Page

DEMONSTRATION = "output of ./demo"
_LEFT_OUT = "..."
_DEMONSTRATION_BOUND = 120  # seconds
# What differs from run to run: times, snapshots (which are named by the time), process numbers, scratch folders.
_CHANGING = (
    (re.compile(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d"), "TIME"),
    (re.compile(r"(install-rollback/)\d+"), r"\1SECOND"),
    (re.compile(r"(halvo-helper\[|\bpid=|\bprocess )\d+"), r"\1NUMBER"),
    (re.compile(r"(/tmp|/dev/shm)/[\w.-]*\.[A-Za-z0-9]{6}\b"), "SCRATCH"),
)


def difference(shown: list[str], printed: list[str]) -> tuple[int, str] | None:
    """The first line of `shown` that was not printed, with what was instead; `...` stands for any lines, and at the end
    of a line for its rest."""
    lines = [settled(line) for line in printed]
    at, anywhere = 0, False
    for number, line in enumerate(map(settled, shown)):
        if line == _LEFT_OUT:
            anywhere = True
            continue
        found = next((i for i in range(at, len(lines)) if _matches(line, lines[i]) or not anywhere), len(lines))
        if found == len(lines) or not _matches(line, lines[found]):
            return number, lines[found] if found < len(lines) else "nothing more"
        at, anywhere = found + 1, False
    if at < len(lines) and not anywhere:
        return len(shown) - 1, f"further lines, the first of them: {lines[at]}"
    return None


def settled(line: str) -> str:
    for pattern, name in _CHANGING:
        line = pattern.sub(name, line)
    return line.rstrip()


def _matches(shown: str, printed: str) -> bool:
    if shown.endswith(_LEFT_OUT):
        return printed.startswith(shown[: -len(_LEFT_OUT)].rstrip())
    return shown == printed


def is_whole(block: Block) -> bool:
    return not any(line.endswith(_LEFT_OUT) for line in block.lines)


class DemonstrationFailed(Exception):
    pass


def demonstration(build: Path) -> list[str]:
    """What it prints."""
    run = subprocess.run(
        [build / "sim/demo/halvo-demo"], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        text=True, timeout=_DEMONSTRATION_BOUND,
    )
    if run.returncode != 0:
        raise DemonstrationFailed(f"it ends with {run.returncode}:\n{run.stdout}")
    return run.stdout.strip("\n").splitlines()


def findings(pages: list[Page], printed: list[str]) -> list[Finding]:
    shown = [(page, block) for page in pages for block in page.blocks if block.info == DEMONSTRATION]
    found = []
    for page, block in shown:
        different = difference(list(block.lines), printed)
        if different:
            found.append(Finding(page.path, block.line + different[0], f"the demonstration prints: {different[1]}"))
    if not any(is_whole(block) for _, block in shown):
        found.append(Finding("docs", 1, f"no document shows the whole {DEMONSTRATION}"))
    return found


def renew(root: Path, pages: list[Page], printed: list[str]) -> list[str]:
    """Puts what was printed into the documents that show all of it. Answers their names."""
    written = []
    for page in pages:
        lines = (root / page.path).read_text(encoding="utf-8").splitlines()
        for block in reversed([block for block in page.blocks if block.info == DEMONSTRATION and is_whole(block)]):
            lines[block.line - 1 : block.line - 1 + len(block.lines)] = printed
            (root / page.path).write_text("\n".join(lines) + "\n", encoding="utf-8")
            written.append(page.path)
    return written
