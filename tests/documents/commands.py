"""Which commands do the documents quote, and does each stand where something looks at it?"""

import posixpath
import re
from dataclasses import dataclass, field
from fnmatch import fnmatch
from pathlib import Path
from typing import Iterator

import words as typed
from pages import Block, CodeSpan, Finding, Page, displays_of
from shell import Command, commands_of, simple_commands
from transcripts import DEMONSTRATION

HERE = "sh"
IN_MACHINE = "sh in the simulated Mac"
IN_MACHINE_AS_ROOT = "sh in the simulated Mac, as root"
ON_A_MAC = "sh on a Mac"
OUTPUT = "output"
_RUN = (HERE, IN_MACHINE, IN_MACHINE_AS_ROOT)

# Blocks that nothing runs here. Raise it only for what truly needs a Mac.
_AT_MOST_ON_A_MAC = 8
_MAC_TOOLS = frozenset(
    "brew codesign ditto dscl installer launchctl lipo pkgbuild pkgutil plutil pmset productsign profiles security "
    "stapler swiftc vtool xcode-select xcodebuild xcrun".split()
)
_PRODUCT = ("halvo-app", "halvo-sim")
_BUILDING = ("cmake", "ctest")


@dataclass
class Document:
    """A document with the blocks whose commands are run together, as one person types them in one window."""

    path: str
    blocks: list[Block]
    installed: bool  # does it presume that the product's programs are in reach?
    spans: list[CodeSpan] = field(default_factory=list)
    prose: list[str] = field(default_factory=list)

    @classmethod
    def of_page(cls, page: Page) -> "Document":
        return cls(page.path, page.blocks, installed=False, spans=list(page.code_spans()), prose=page.prose)

    @classmethod
    def of_manual(cls, root: Path, path: str) -> "Document":
        return cls(path, displays_of((root / path).read_text(encoding="utf-8")), installed=True)

    def run_in(self, mark: str) -> list[Block]:
        return [block for block in self.blocks if block.info == mark]

    def shown_output(self, block: Block) -> Block | None:
        """What the document says the block prints: the block after it, if that is output."""
        at = self.blocks.index(block) + 1
        follows = at < len(self.blocks) and self.blocks[at].info == OUTPUT
        return self.blocks[at] if follows else None


class Reader:
    """Looks at every command without running it."""

    def __init__(self, files: list[str], scripts: set[str], root: Path, programs: dict[str, Path]) -> None:
        self._files = files
        self._tops = {name.split("/", 1)[0] for name in files if "/" in name}
        self._scripts = scripts
        self._root = root
        self._programs = programs
        self.on_a_mac: list[str] = []

    def findings(self, documents: list[Document]) -> list[Finding]:
        found = [finding for document in documents for finding in self._of_document(document)]
        if len(self.on_a_mac) > _AT_MOST_ON_A_MAC:
            where = ", ".join(self.on_a_mac)
            found.append(Finding("tests/documents/commands.py", 1, f"more than {_AT_MOST_ON_A_MAC} on a Mac: {where}"))
        return found

    def _of_document(self, document: Document) -> Iterator[Finding]:
        for before, block in zip([None, *document.blocks], document.blocks):
            for line, problem in self._of_block(document, block):
                yield Finding(document.path, line, problem)
            if block.language == OUTPUT and not self._is_compared(before, block):
                yield Finding(document.path, block.line, "nothing is compared with this: put it behind what prints it")
        for number, text in enumerate(document.prose, start=1):
            if text.startswith("    ") and self._is_command(text):
                yield Finding(document.path, number, "put commands between ```sh and ```, so that they are run")
        for span in document.spans:
            problem = self._span_problem(span.text, posixpath.dirname(document.path))
            if problem:
                yield Finding(document.path, span.line, f"`{span.text}`: {problem}")

    @staticmethod
    def _is_compared(before: Block | None, block: Block) -> bool:
        if block.info == OUTPUT:
            return before is not None and before.info in _RUN
        return block.info == DEMONSTRATION

    def _of_block(self, document: Document, block: Block) -> Iterator[tuple[int, str]]:
        if block.info == ON_A_MAC:
            self.on_a_mac.append(f"{document.path}:{block.line}")
            yield from self._of_mac_block(block)
        elif block.language in ("sh", "bash", "shell", "console") and block.info not in _RUN:
            yield block.line, f"'{block.info}' says nothing known; say one of: {', '.join([*_RUN, ON_A_MAC])}"
        elif block.language not in (HERE, OUTPUT):
            for number, line in enumerate(block.lines, start=block.line):
                if self._is_command(line):
                    yield number, f"this is a command; say before it what runs it: {', '.join([*_RUN, ON_A_MAC])}"

    def _of_mac_block(self, block: Block) -> Iterator[tuple[int, str]]:
        commands = commands_of(block)
        if not any(self._needs_a_mac(words) for command in commands for words in simple_commands(command.text)):
            yield block.line, f"nothing in this block needs a Mac; say '{HERE}' instead"
        for command in commands:
            yield from ((command.line, problem) for problem in self._command_problems(command))

    def _needs_a_mac(self, words: list[str]) -> bool:
        packaging = self._script(words[0]).startswith("packaging/")
        return words[0] in _MAC_TOOLS or packaging or any(word.startswith("macos") for word in words)

    def _command_problems(self, command: Command) -> Iterator[str]:
        for words in simple_commands(command.text):
            problem = self._words_problem(words)
            if problem:
                yield f"{words[0]}: {problem}"

    def _span_problem(self, text: str, folder: str) -> str:
        try:
            commands = simple_commands(text)
        except ValueError:
            return ""  # a piece of something, such as half a quotation
        if len(commands) == 1 and len(commands[0]) == 1 and "/" in text:
            return self._path_problem(text, folder)
        return next((problem for problem in map(self._words_problem, commands) if problem), "")

    def _words_problem(self, words: list[str]) -> str:
        program = words[0]
        if self._script(program):
            return typed.problem_of_script(str(self._root / self._script(program)), words[1:], self._root)
        if program in self._programs:
            return typed.problem_of_program(str(self._programs[program]), words[1:])
        if program in _BUILDING:
            return typed.problem_of_build(program, words[1:], self._root)
        return ""

    def _path_problem(self, word: str, folder: str) -> str:
        """Of what looks like a file of the repository, seen from its top or from the document's folder."""
        if word.split("/", 1)[0] not in self._tops or re.search(r"\b[A-Z]{3,}\b|[<$]", word):
            return ""
        pattern = word.rstrip("/").replace("...", "*")
        known = self._is_there(pattern) or self._is_there(posixpath.join(folder, pattern))
        return "" if known else "the repository has no such file"

    def _is_there(self, pattern: str) -> bool:
        return any(fnmatch(name, pattern) or fnmatch(name, pattern + "/*") for name in self._files)

    def _script(self, word: str) -> str:
        """The path of the script that is meant; empty if none is. One in the top folder is called as ./NAME."""
        name = word.removeprefix("./")
        return name if name in self._scripts and "/" in word else ""

    def _is_command(self, line: str) -> bool:
        """Does it look like one? Names in a drawing or a list have something else behind them than words."""
        match = re.match(r"^\s*(?:[$#%] )?(?:sudo )?([\w./-]+)(?: +[\w./'\"-].*)?$", line)
        if not match:
            return False
        program = match[1]
        name = posixpath.basename(program)
        return bool(self._script(program)) or name in _PRODUCT or program in (*_BUILDING, *_MAC_TOOLS)
