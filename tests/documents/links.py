"""Do the documents find each other?"""

import posixpath
import re
from pathlib import Path
from typing import Iterator

from pages import Finding, Link, Page

_ELSEWHERE = re.compile(r"^[a-z][a-z0-9+.-]*:|^//")
_LINE = re.compile(r"^L[1-9][0-9]*(-L[1-9][0-9]*)?$")
_INVENTS_DOCUMENTS = "tests/documents/self-test"
# With its folder, or one of those in capital letters that lie at the top.
_MENTION = re.compile(r"(?<![\w./:$-])((?:\.\./)*(?:[\w.-]+/)+[\w-]+\.md|[A-Z]{4,}\.md)\b")


class Library:
    """The documents of a repository, and whether what they point at is there."""

    def __init__(self, root: Path, files: list[str]) -> None:
        self.files = set(files)
        self.folders = {parent for name in files for parent in map(str, Path(name).parents)}
        self.pages = {name: Page.read(root, name) for name in files if name.endswith(".md")}
        self.links = 0
        self.not_looked_at: list[str] = []
        self._wanted: set[tuple[str, str]] = set()
        self._root = root

    def findings(self) -> list[Finding]:
        found = [finding for page in self.pages.values() for finding in self._dead_links(page)]
        found += [finding for page in self.pages.values() for finding in self._unused_places(page)]
        found += self._unreachable()
        sources = self.files - self.pages.keys() - {_INVENTS_DOCUMENTS}
        found += [finding for name in sorted(sources) for finding in self._dead_mentions(name)]
        return found

    def _dead_links(self, page: Page) -> Iterator[Finding]:
        for link in page.links():
            if _ELSEWHERE.match(link.target):
                self.not_looked_at.append(link.target)
                continue
            self.links += 1
            problem = self._problem(page, link)
            if problem:
                yield Finding(page.path, link.line, f"the link to {link.target} is dead: {problem}")

    def _problem(self, page: Page, link: Link) -> str:
        target, _, anchor = link.target.partition("#")
        path = self._resolved(page, link)
        if path not in self.files and path not in self.folders:
            return "the repository has no such file" if target else ""
        if not anchor:
            return "" if "#" not in link.target else "it names no anchor"
        self._wanted.add((path, anchor))
        other = self.pages.get(path)
        if other is None:
            return "" if _LINE.match(anchor) else "only Markdown documents have anchors"
        return "" if anchor in [*other.anchors(), *other.named_places()] else f"{path} has no heading #{anchor}"

    @staticmethod
    def _resolved(page: Page, link: Link) -> str:
        target = link.target.partition("#")[0]
        return posixpath.normpath(posixpath.join(posixpath.dirname(page.path), target)) if target else page.path

    @staticmethod
    def _line_of(page: Page, text: str) -> int:
        return next((number for number, line in enumerate(page.prose, start=1) if text in line), 1)

    def _unused_places(self, page: Page) -> Iterator[Finding]:
        for name in page.named_places():
            if (page.path, name) not in self._wanted:
                yield Finding(page.path, self._line_of(page, name), f"nobody links to the anchor {name}")

    def _unreachable(self) -> list[Finding]:
        """A document that no chain of links reaches from README.md is read by nobody."""
        reached, waiting = set(), ["README.md"]
        while waiting:
            name = waiting.pop()
            if name in reached or name not in self.pages:
                continue
            reached.add(name)
            waiting += [self._resolved(self.pages[name], link) for link in self.pages[name].links()]
        return [Finding(name, 1, "no link leads here from README.md") for name in sorted(self.pages.keys() - reached)]

    def _dead_mentions(self, name: str) -> Iterator[Finding]:
        """Documents that sources, scripts and build files name."""
        try:
            lines = (self._root / name).read_text(encoding="utf-8").splitlines()
        except UnicodeDecodeError:
            return
        for number, line in enumerate(lines, start=1):
            for mention in _MENTION.findall(line):
                beside = posixpath.normpath(posixpath.join(posixpath.dirname(name), mention))
                if mention not in self.files and beside not in self.files:
                    yield Finding(name, number, f"names {mention}, which the repository does not have")
