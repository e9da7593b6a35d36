"""What a document holds: headings with their anchors, links, and blocks of text that stand for themselves."""

import re
from dataclasses import dataclass
from pathlib import Path
from typing import Iterator

_FENCE = re.compile(r"^(?P<indent> *)(?P<ticks>`{3,})(?P<info>[^`]*)$")
_HEADING = re.compile(r"^ {0,3}#{1,6} +(.*?)(?: +#+)? *$")
_CODE = re.compile(r"(?<!`)(`+)(?!`)(.+?)(?<!`)\1(?!`)", re.DOTALL)
_LINK = re.compile(r"\[(?:[^\[\]]|\[[^\]]*\]\([^)]*\))*\]\(\s*<?([^)\s>]+)>?(?:\s+\"[^\"]*\")?\s*\)")
_REFERENCE = re.compile(r"^ {0,3}\[[^\]]+\]:\s*(\S+)", re.MULTILINE)
_ATTRIBUTE = re.compile(r"<[a-z]+\b[^>]*?\b(?:href|src)=\"([^\"]+)\"")
_NAMED_PLACE = re.compile(r"<[a-z]+\b[^>]*?\b(?:id|name)=\"([^\"]+)\"")


@dataclass(frozen=True)
class Finding:
    """What is wrong, and where."""

    page: str
    line: int
    text: str

    def __str__(self) -> str:
        return f"{self.page}:{self.line}: {self.text}"


@dataclass(frozen=True)
class Block:
    """What stands between two fences, or in a display of a manual page."""

    line: int  # of the first line inside
    info: str  # what the opening fence says
    lines: tuple[str, ...]

    @property
    def language(self) -> str:
        return self.info.split(" ", 1)[0]


@dataclass(frozen=True)
class Link:
    line: int
    target: str


@dataclass(frozen=True)
class CodeSpan:
    line: int
    text: str


class Page:
    """A Markdown document, taken apart."""

    def __init__(self, path: str, text: str) -> None:
        self.path = path
        self.blocks: list[Block] = []
        self._prose: list[str] = []  # line by line, empty where a block stands
        self._take_apart(text.splitlines())

    @classmethod
    def read(cls, root: Path, path: str) -> "Page":
        return cls(path, (root / path).read_text(encoding="utf-8"))

    def _take_apart(self, lines: list[str]) -> None:
        opened: re.Match[str] | None = None
        inside: list[str] = []
        for number, line in enumerate(lines, start=1):
            fence = _FENCE.match(line)
            if opened is None and fence:
                opened, inside = fence, []
            elif opened and fence and fence["ticks"] >= opened["ticks"] and not fence["info"].strip():
                self.blocks.append(Block(number - len(inside), opened["info"].strip(), tuple(inside)))
                opened = None
            elif opened:
                inside.append(line.removeprefix(opened["indent"]))
            self._prose.append("" if opened or fence else line)

    @property
    def prose(self) -> list[str]:
        """The lines outside all blocks; empty ones stand for those inside, so that numbers stay."""
        return self._prose

    def anchors(self) -> list[str]:
        """The anchors that GitHub gives to the headings, in their order."""
        taken: dict[str, int] = {}
        found = []
        for line in self._prose:
            heading = _HEADING.match(line)
            if not heading:
                continue
            anchor = anchor_of(heading[1])
            repeated = taken.get(anchor, 0)
            taken[anchor] = repeated + 1
            found.append(f"{anchor}-{repeated}" if repeated else anchor)
        return found

    def named_places(self) -> list[str]:
        """Anchors that somebody wrote by hand."""
        return _NAMED_PLACE.findall("\n".join(self._prose))

    def links(self) -> Iterator[Link]:
        text = _CODE.sub(lambda code: re.sub(r"[^\n]", " ", code[0]), "\n".join(self._prose))
        for pattern in (_LINK, _REFERENCE, _ATTRIBUTE):
            for match in pattern.finditer(text):
                yield Link(_line_at(text, match.start(1)), match[1])

    def code_spans(self) -> Iterator[CodeSpan]:
        text = "\n".join(self._prose)
        for match in _CODE.finditer(text):
            yield CodeSpan(_line_at(text, match.start()), " ".join(match[2].split()))


def anchor_of(heading: str) -> str:
    """The heading as GitHub makes an anchor of it: what it shows, in small letters, without punctuation."""
    shown = re.sub(r"!?\[([^\]]*)\]\([^)]*\)", r"\1", heading)
    shown = re.sub(r"`+|<[^>]*>|(?<!\w)[*_]+|[*_]+(?!\w)", "", shown)
    return re.sub(r"[^\w\- ]", "", shown.strip().lower()).replace(" ", "-")


def _line_at(text: str, position: int) -> int:
    return text.count("\n", 0, position) + 1


_MARK = re.compile(r"^\.\\\" (sh\b.*|output)$")


def displays_of(text: str) -> list[Block]:
    """The literal displays of a manual page: `.Dl LINE`, and what stands between `.Bd -literal` and `.Ed`.

    A comment right before a display says what a fence says in Markdown; displays without one have no language.
    """
    blocks: list[Block] = []
    info, began = "", 0
    inside: list[str] | None = None
    for number, line in enumerate(text.splitlines(), start=1):
        mark = _MARK.match(line)
        if inside is not None and line != ".Ed":
            inside.append(_typed(line))
        elif inside is not None:
            blocks.append(Block(began, info, tuple(inside)))
            info, inside = "", None
        elif mark:
            info = mark[1]
        elif line.startswith(".Bd -literal"):
            inside, began = [], number + 1
        elif line.startswith(".Dl "):
            blocks.append(Block(number, info, (_typed(line[4:]),)))
            info = ""
        elif line != ".Pp":
            info = ""
    return blocks


_ESCAPES = {r"\&": "", r"\-": "-", r"\e": "\\", r"\(dq": '"', r"\(aq": "'"}


def _typed(line: str) -> str:
    """A line of a manual page as it is shown."""
    return re.sub(r"\\(?:\(..|.)", lambda escape: _ESCAPES.get(escape[0], escape[0]), line)
