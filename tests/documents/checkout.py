"""Places in which the commands of a document do no harm: copies of the repository that look built."""

import os
import shutil
from pathlib import Path

from repository import ROOT, scripts
from words import problem_of_build, problem_of_script

# Build directories that documents name; each looks like the one that is tested.
_BUILDS = ("dev", "release")
# Programs outside the repository that build or rewrite everything. What asks for no preset takes a moment, and runs.
_BUILDING = ("cmake", "ctest")
_REWRITING = ("clang-format-14",)
_UNLESS_PRESET = 'case " $* " in *" --preset "*) ;; *) PATH=$PATH_BEHIND_STAND_INS exec {} "$@" ;; esac\n'
# What stands in for a program that builds or tests for minutes: it does nothing but note the words it is given.
_NOTE = """{{ printf '%s\\037' "$DOCUMENT_LINE" '{}' "$@"; echo; }} >>"$DOCUMENT_LOG"\n"""


class Workshop:
    """What all copies share: the files themselves, the programs of the simulated Mac, and what stands in for others."""

    def __init__(self, folder: Path, build: Path, files: list[str]) -> None:
        self.folder = folder
        self.machine = folder / "machine"
        self.originals = folder / "originals"
        self._stand_ins = folder / "stand-ins"
        self.build = build
        self._files = files
        self._scripts = scripts(files)
        self._copies = 0
        folder.chmod(0o755)
        self._copy_originals()
        self._copy_machine_files()
        self._stand_ins.mkdir()
        for program in _BUILDING:
            self._write_script(self._stand_ins / program, _UNLESS_PRESET.format(program) + _NOTE.format(program))
        for program in _REWRITING:
            self._write_script(self._stand_ins / program, _NOTE.format(program))
        self._write_script(self._stand_ins / "sudo", 'exec "$@"\n')

    def environment(self, home: Path, installed: bool) -> dict[str, str]:
        """With the product's programs in reach if they are said to be installed. What stands in for others takes notes
        at home."""
        behind = os.environ["PATH"]
        if installed:
            behind = f"{self.machine}:{self.build / 'client'}:{behind}"
        return {
            "PATH": f"{self._stand_ins}:{behind}", "PATH_BEHIND_STAND_INS": behind,
            "HOME": str(home), "TMPDIR": str(home), "LC_ALL": "C.UTF-8", "DOCUMENT_LOG": str(self.log_in(home)),
        }

    @staticmethod
    def log_in(home: Path) -> Path:
        return home / "only-looked-up"

    @staticmethod
    def looked_up(home: Path) -> list[tuple[int, list[str]]]:
        """The line and the words of each program that did nothing."""
        log = Workshop.log_in(home)
        rows = log.read_text(encoding="utf-8").splitlines() if log.exists() else []
        words = [row.split("\037")[:-1] for row in rows]
        return [(int(line), rest) for line, *rest in words]

    def problem_of(self, words: list[str]) -> str:
        """What a program that did nothing would not take."""
        program = words[0]
        if program in _BUILDING:
            return problem_of_build(program, words[1:], self.originals)
        path = str(self.originals / program) if program in self._scripts else program
        return problem_of_script(path, words[1:], self.originals)

    def new_folder(self, owner: int) -> Path:
        self._copies += 1
        folder = self.folder / str(self._copies)
        folder.mkdir()
        self._give([folder], owner)
        return folder

    def new_checkout(self, owner: int) -> Path:
        """Its folders belong to the owner; its files are links to those that all share."""
        folder = self.new_folder(owner) / "halvo-helper"
        for name in self._files:
            path = folder / name
            path.parent.mkdir(parents=True, exist_ok=True)
            if name in self._scripts:
                self._write_script(path, _NOTE.format(name))
            else:
                path.symlink_to(self.originals / name)
        for name in _BUILDS:
            self._pretend_build(folder / "build" / name)
        self._give([Path(parent) for parent, _, _ in os.walk(folder)], owner)
        return folder

    def _copy_originals(self) -> None:
        for name in self._files:
            path = self.originals / name
            path.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, path)

    def _copy_machine_files(self) -> None:
        """halvo-sim reads where its files lie from a list beside it; the build itself may be out of a user's reach."""
        built = self.build / "sim/machine"
        self.machine.mkdir()
        shutil.copy(built / "halvo-sim", self.machine)
        rows = []
        for number, row in enumerate((built / "sim-machine-files").read_text(encoding="utf-8").splitlines()):
            source, rest = row.split("\t", 1)
            copy = self.machine / str(number)
            shutil.copy(source, copy)
            copy.chmod(0o755)
            rows.append(f"{copy}\t{rest}\n")
        (self.machine / "sim-machine-files").write_text("".join(rows), encoding="utf-8")

    def _pretend_build(self, folder: Path) -> None:
        (folder / "sim").mkdir(parents=True)
        (folder / "sim/machine").symlink_to(self.machine)
        for entry in self.build.iterdir():
            if entry.name != "sim":
                (folder / entry.name).symlink_to(entry)

    @staticmethod
    def _give(folders: list[Path], owner: int) -> None:
        for folder in folders if owner != os.geteuid() else []:
            os.chown(folder, owner, owner)

    @staticmethod
    def _write_script(path: Path, text: str) -> None:
        path.write_text(f"#!/bin/sh\n{text}", encoding="utf-8")
        path.chmod(0o755)
