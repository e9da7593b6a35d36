"""Commands as a person types them, a line or several at a time, and a script that runs them one after the other."""

import re
import shlex
from dataclasses import dataclass

from pages import Block

_HERE_DOCUMENT = re.compile(r"<<-?\s*['\"]?(\w+)")
_OPERATOR = re.compile(r"^[();<>|&]+$")


@dataclass(frozen=True)
class Command:
    line: int
    text: str


def commands_of(block: Block) -> list[Command]:
    """Line by line, but for those that go on in the next."""
    found: list[Command] = []
    parts: list[str] = []
    for number, line in enumerate(block.lines, start=block.line):
        parts.append(line)
        text = "\n".join(parts)
        if _goes_on(text):
            continue
        if shlex.split(text, comments=True):
            found.append(Command(number - len(parts) + 1, text))
        parts = []
    return found + ([Command(block.line + len(block.lines) - len(parts), "\n".join(parts))] if parts else [])


def _goes_on(text: str) -> bool:
    ended = _HERE_DOCUMENT.search(text)
    if ended:
        return text.splitlines()[-1] != ended[1]
    if text.endswith("\\"):
        return True
    try:
        shlex.split(text, comments=True)
    except ValueError:
        return True
    return False


def simple_commands(text: str) -> list[list[str]]:
    """The words of each program that a line starts. What a line redirects to comes as a command of its own."""
    lexer = shlex.shlex(text.replace("\\\n", " "), posix=True, punctuation_chars=True)
    lexer.whitespace_split = True
    found: list[list[str]] = [[]]
    for word in lexer:
        if _OPERATOR.match(word):
            found.append([])
        elif word != "sudo" or found[-1]:
            found[-1].append(word)
    return [words for words in found if words]


def script_of(blocks: list[Block], folder: str) -> str:
    """Runs the commands in one shell, as in one window. Stops at the first that fails and leaves its line and status in
    `folder`/failed; what a block prints goes to a file there, named by its line."""
    lines = ["export DOCUMENT_LINE"]
    for block in blocks:
        lines.append(f"exec >'{folder}/{block.line}' 2>&1")
        for command in commands_of(block):
            note = f"echo {command.line} $status_ >'{folder}/failed'"
            lines += [f"DOCUMENT_LINE={command.line}", command.text]
            lines.append(f"status_=$?; [ $status_ = 0 ] || {{ {note}; exit 1; }}")
    return "\n".join(lines) + "\n"
