"""The programs that do the measured work, kept running so that their contenders can be interleaved."""

import os
import subprocess
from collections.abc import Mapping
from pathlib import Path
from types import MappingProxyType


class DriverFailed(Exception):
    pass


class Driver:
    """A program that takes a verb a line and answers each with a line of figures."""

    def __init__(self, *command: str | Path, environment: Mapping[str, str] = MappingProxyType({})) -> None:
        self._name = " ".join(str(word) for word in command)
        self._process = subprocess.Popen(
            [str(word) for word in command],
            env=os.environ | environment,
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            text=True,
        )

    def __enter__(self) -> "Driver":
        return self

    def __exit__(self, *_: object) -> None:
        self._process.communicate()

    def ask(self, *words: str | int | Path) -> list[int]:
        assert self._process.stdin and self._process.stdout
        self._process.stdin.write(" ".join(str(word) for word in words) + "\n")
        self._process.stdin.flush()
        answer = self._process.stdout.readline()
        if not answer:
            raise DriverFailed(f"{self._name} ended at: {' '.join(str(word) for word in words)}")
        return [int(figure) for figure in answer.split()]

    def seconds(self, verb: str, times: int, *words: str | int | Path) -> float:
        """What one of so many runs took on average."""
        return self.ask(verb, times, *words)[0] / times / 1e9


def peak_kilobytes(program: Path, *words: str | int | Path) -> int:
    """The most memory that a process of its own holds for this."""
    with Driver(program) as driver:
        driver.ask(*words)
        return driver.ask("peak")[0]
