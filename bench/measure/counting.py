"""What an operation costs without a clock: the instructions that it executes and the system calls that it makes."""

import os
import re
import subprocess
import tempfile
from collections.abc import Callable
from pathlib import Path

# The C library picks its copies and searches by the processor; these are the ones that every 64-bit processor has.
_TUNABLES = "glibc.cpu.hwcaps=-AVX2,-AVX,-BMI2,-ERMS,-FSRM,-SSSE3,-SSE4_1,-SSE4_2,-MOVBE,-LZCNT,-POPCNT"

# The command that carries an operation out so many times.
Command = Callable[[int], list[str | Path]]


def instructions(command: Command, few: int = 1, many: int = 3) -> float:
    """For each time. Two runs are told apart, so that what a program does once does not count."""
    return (_instructions(command(many)) - _instructions(command(few))) / (many - few)


def system_calls(command: Command, few: int = 1, many: int = 3) -> float:
    """For each time, with those of the tools that are started."""
    return (_system_calls(command(many)) - _system_calls(command(few))) / (many - few)


def _instructions(command: list[str | Path]) -> int:
    said = _errors_of(["valgrind", "--tool=cachegrind", "--cache-sim=no", "--cachegrind-out-file=/dev/null", *command])
    found = re.search(r"I\s+refs:\s+([\d,]+)", said)
    assert found, said
    return int(found[1].replace(",", ""))


def _system_calls(command: list[str | Path]) -> int:
    with tempfile.NamedTemporaryFile("r") as table:
        _errors_of(["strace", "-f", "-c", "-U", "calls,name", "-o", table.name, *command])
        found = re.search(r"^\s*(\d+)\s+total$", table.read(), re.MULTILINE)
    assert found, command
    return int(found[1])


def _errors_of(command: list[str | Path]) -> str:
    environment = os.environ | {"GLIBC_TUNABLES": _TUNABLES, "LC_ALL": "C.UTF-8"}
    result = subprocess.run(
        [str(word) for word in command], env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True
    )
    if result.returncode != 0:
        raise RuntimeError(f"{' '.join(str(word) for word in command)} failed: {result.stderr}")
    return result.stderr
