"""What the commands of bench/ have in common."""

import argparse
import subprocess
import sys
from pathlib import Path
from typing import NoReturn

ROOT = Path(__file__).resolve().parents[2]
_USAGE = 64
_CANNOT_RUN = 70


class Parser(argparse.ArgumentParser):
    """Ends wrong usage with one line and the status of the other commands of this repository."""

    def error(self, message: str) -> NoReturn:
        self.exit(_USAGE, f"{self.prog}: {message}; see {self.prog} --help\n")


def build(program: str, preset: str) -> Path:
    """Sets up what is missing and builds what measures. Answers the folder of the build."""
    configure, compile_all = ["cmake", "--preset", preset], ["cmake", "--build", "--preset", preset, "--parallel"]
    for command in (["tools/setup"], configure, compile_all):
        if subprocess.run(command, cwd=ROOT, stdout=sys.stderr).returncode != 0:
            say(program, f"'{' '.join(command)}' fails; see above")
            sys.exit(_CANNOT_RUN)
    return ROOT / "build" / preset


def say(program: str, text: str) -> None:
    print(f"{program}: {text}", file=sys.stderr, flush=True)
