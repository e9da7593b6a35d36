"""Runs what a document quotes, and looks at what it prints."""

import os
import shutil
import signal
import subprocess
from dataclasses import dataclass, field
from pathlib import Path

from checkout import Workshop
from commands import HERE, IN_MACHINE, IN_MACHINE_AS_ROOT, Document
from pages import Block, Finding
from shell import commands_of, script_of
from transcripts import difference

_BOUND = 60  # seconds for all commands of a document
_CANNOT_START = 126
_SHOWN = 100  # characters of a command in the list of those that were only looked up
_ORDINARY_USER = 65534  # any uid will do that is nobody's
_USER_INSIDE = 501
_GOOD_REPORT = "sim/tools/reports/good.txt"
# What lies in the home of the simulated Mac's user when the commands of a document run there.
_PACKAGE = ("Halvo-2.1.pkg", "2.1")
_MANIFEST = ("manifest.json", '{"driver_version":"2.1"}\n')


@dataclass
class Tally:
    commands: int = 0
    as_ordinary_user: int = 0
    looked_up: list[str] = field(default_factory=list)
    not_run: list[str] = field(default_factory=list)


class Session:
    """All documents, run by the user who runs this, and as an ordinary one where root runs this."""

    def __init__(self, workshop: Workshop) -> None:
        self._workshop = workshop
        self._user = os.geteuid()
        self.tally = Tally()
        self._several_accounts = "as root, with several accounts: works" in self._check(self._user)[1]

    def findings(self, document: Document) -> list[Finding]:
        found = self._outside(document, self._user)
        if self._user == 0 and not found and self._uses_the_machine(document):
            found = self._as_ordinary_user(document)
        for mark, user in ((IN_MACHINE, _USER_INSIDE), (IN_MACHINE_AS_ROOT, 0)):
            found += self._inside(document, document.run_in(mark), user)
        return found

    @staticmethod
    def _uses_the_machine(document: Document) -> bool:
        return any("halvo-sim" in line for block in document.run_in(HERE) for line in block.lines)

    def _check(self, user: int) -> tuple[bool, str]:
        folder = self._workshop.new_folder(user)
        status, said = _run(["halvo-sim", "check"], folder, self._workshop.environment(folder, installed=True), user)
        return status == 0, said

    def _reaches_the_build(self, user: int) -> tuple[bool, str]:
        """Root may have put the repository where nobody else may go."""
        build = str(self._workshop.build)
        folder = self._workshop.new_folder(user)
        status, _ = _run(["test", "-x", build], folder, self._workshop.environment(folder, installed=False), user)
        return status == 0, f"{build} is out of that user's reach"

    def _as_ordinary_user(self, document: Document) -> list[Finding]:
        possible, reason = self._check(_ORDINARY_USER)
        if possible:
            possible, reason = self._reaches_the_build(_ORDINARY_USER)
        if not possible:
            self.tally.not_run.append(f"{document.path} as an ordinary user: {reason}")
            return []
        before = self.tally.commands
        found = self._outside(document, _ORDINARY_USER)
        self.tally.as_ordinary_user += self.tally.commands - before
        return [Finding(one.page, one.line, f"as an ordinary user: {one.text}") for one in found]

    def _outside(self, document: Document, user: int) -> list[Finding]:
        blocks = document.run_in(HERE)
        if not blocks:
            return []
        checkout = self._workshop.new_checkout(user)
        notes = self._workshop.new_folder(user)
        environment = self._workshop.environment(notes, document.installed)
        script = script_of(blocks, str(notes))
        _, said = _run(["bash", "-c", script], checkout, environment, user)
        return self._looked_up(document, notes) + self._judge(document, blocks, notes, said)

    def _looked_up(self, document: Document, notes: Path) -> list[Finding]:
        found = []
        for line, words in self._workshop.looked_up(notes):
            self.tally.looked_up.append(" ".join(words)[:_SHOWN])
            problem = self._workshop.problem_of(words)
            if problem:
                found.append(Finding(document.path, line, f"{words[0]} would not take these words: {problem}"))
        return found

    def _inside(self, document: Document, blocks: list[Block], user: int) -> list[Finding]:
        if not blocks:
            return []
        folder = self._workshop.new_folder(self._user)
        environment = self._workshop.environment(folder, installed=True)
        home = self._furnish(folder / "mac", environment)
        notes = home / ".notes"
        notes.mkdir()
        (notes / "script").write_text(
            "PATH=/Applications/Halvo.app/Contents/MacOS:/usr/bin:/bin:/usr/sbin:/sbin; cd /Users/user501\n"
            + script_of(blocks, "/Users/user501/.notes"), encoding="utf-8",
        )
        if self._several_accounts:
            for path in [home, *home.rglob("*")]:
                os.chown(path, _USER_INSIDE, -1)
        inside = str(user) if self._several_accounts else "0"
        command = ["halvo-sim", "run", "mac", "--user", inside, "--", "/bin/sh", "/Users/user501/.notes/script"]
        _, said = _run(command, folder, environment, self._user)
        return self._judge(document, blocks, notes, said)

    def _furnish(self, machine: Path, environment: dict[str, str]) -> Path:
        home = machine / "Users/user501"
        report = self._workshop.originals / _GOOD_REPORT
        package = ["halvo-sim", "package", str(home / _PACKAGE[0]), "--version", _PACKAGE[1], "--report", str(report)]
        for command in (["halvo-sim", "new", "mac"], package):
            subprocess.run(command, cwd=machine.parent, env=environment, check=True, timeout=_BOUND)
        (home / _MANIFEST[0]).write_text(_MANIFEST[1], encoding="utf-8")
        return home

    def _judge(self, document: Document, blocks: list[Block], notes: Path, said: str) -> list[Finding]:
        """Which command failed, and what was printed that the document does not say."""
        failed = notes / "failed"
        if failed.exists():
            line, status = failed.read_text(encoding="utf-8").split()
            block = max((block for block in blocks if block.line <= int(line)), key=lambda block: block.line)
            return [Finding(document.path, int(line), f"ends with status {status}:\n{_printed(notes, block)}")]
        last = notes / str(blocks[-1].line)
        if said or not last.exists():
            return [Finding(document.path, blocks[0].line, f"the commands did not run to their end: {said}")]
        self.tally.commands += sum(len(commands_of(block)) for block in blocks)
        return [finding for block in blocks for finding in _differences(document, block, _printed(notes, block))]


def _differences(document: Document, block: Block, printed: str) -> list[Finding]:
    shown = document.shown_output(block)
    different = difference(list(shown.lines), printed.splitlines()) if shown else None
    if shown is None or different is None:
        return []
    return [Finding(document.path, shown.line + different[0], f"the commands print: {different[1]}")]


def _printed(notes: Path, block: Block) -> str:
    path = notes / str(block.line)
    return path.read_text(encoding="utf-8", errors="replace") if path.exists() else ""


def _run(command: list[str], folder: Path, environment: dict[str, str], user: int) -> tuple[int, str]:
    """Answers the exit status and what was said, or that it took too long."""
    program = shutil.which(command[0], path=environment["PATH"]) or command[0]
    other = user if user != os.geteuid() else None
    try:
        process = subprocess.Popen(
            [program, *command[1:]], cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, start_new_session=True,
            user=other, group=other, extra_groups=None if other is None else [],
        )
    except OSError as error:  # such as a folder for temporary files that is out of that user's reach
        return _CANNOT_START, str(error)
    try:
        said, _ = process.communicate(timeout=_BOUND)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        return process.returncode, f"takes longer than {_BOUND} s"
    return process.returncode, said
