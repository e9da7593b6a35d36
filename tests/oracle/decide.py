#!/usr/bin/env -S python3 -B
"""Puts the same questions to the helper's decisions and to the rules in rules/, and compares the answers."""

import argparse
import subprocess
import sys
import time
from collections import Counter
from dataclasses import dataclass, field
from itertools import chain, islice
from pathlib import Path
from random import Random
from tempfile import TemporaryFile
from typing import Iterator

from cases import TABLES
from cases.table import Table
from fields import Fields, from_line, to_line

_PROBE = Path(__file__).resolve().parents[2] / "build/dev/tests/oracle/halvo_decision_probe"
_AT_ONCE = 20_000
_SHOWN = 5


class ProbeFailed(Exception):
    pass


@dataclass
class Result:
    cases: int = 0
    outcomes: Counter[str] = field(default_factory=Counter)
    differing: int = 0
    first_differing: list[tuple[Fields, Fields, str]] = field(default_factory=list)

    def compare(self, table: Table, question: Fields, answer: str) -> None:
        expected = table.expected(question)
        self.cases += 1
        self.outcomes[table.outcome(expected)] += 1
        if to_line(expected) == answer:
            return
        self.differing += 1
        if len(self.first_differing) < _SHOWN:
            self.first_differing.append((question, expected, answer))


def main() -> int:
    options = _options()
    if options.case is not None:
        return 0 if _judge(options, TABLES[options.table], iter([from_line(options.case)])) else 1
    names = list(TABLES) if options.table == "all" else [options.table]
    agreed = [_judge_table(options, TABLES[name]) for name in names]
    return 0 if all(agreed) else 1


def _options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="tests/oracle/decide.py", description=__doc__)
    parser.add_argument("table", choices=["all", *TABLES], help="which decision")
    parser.add_argument("--probe", type=Path, default=_PROBE, help="the program that answers (that of the dev build)")
    parser.add_argument("--seed", type=int, default=1, help="of the random questions (%(default)s)")
    parser.add_argument("--cases", type=int, help="how many random questions follow the complete part of a table")
    parser.add_argument("--case", metavar="LINE", help="put this one question, as a difference prints it")
    options = parser.parse_args()
    if options.case is not None and options.table == "all":
        parser.error("--case needs to know its table")
    if not options.probe.is_file():
        parser.error(f"there is no {options.probe}; build it: cmake --preset dev && cmake --build --preset dev")
    return options


def _judge_table(options: argparse.Namespace, table: Table) -> bool:
    count = table.random_cases if options.cases is None else options.cases
    # Each table draws its own numbers, so that it can be repeated alone.
    rng = Random(f"{table.name} {options.seed}")
    questions = chain(table.complete(), (table.random(rng) for _ in range(count)))
    return _judge(options, table, questions, f"--seed {options.seed} --cases {count}")


def _judge(options: argparse.Namespace, table: Table, questions: Iterator[Fields], repeat: str = "") -> bool:
    """Compares and reports. With the options that repeat a whole table, each kind of answer has to be among them."""
    began = time.monotonic()
    result = Result()
    try:
        while batch := list(islice(questions, _AT_ONCE)):
            for question, answer in zip(batch, _ask(options.probe, table, batch), strict=True):
                result.compare(table, question, answer)
    except ProbeFailed as failure:
        print(f"{table.name}: {failure}\n  repeat: {_command(options, table)} {repeat}")
        return False
    print(
        f"{table.name}: {result.cases} cases, {result.differing} differ, "
        f"{time.monotonic() - began:.1f} s, seed {options.seed}"
    )
    _show_differences(options, table, result)
    missing = table.outcomes - result.outcomes.keys() if repeat else frozenset()
    if missing:
        print(f"  no question has the answer: {', '.join(sorted(missing))}")
    agreed = not result.differing and not missing
    if repeat and not agreed:
        print(f"  repeat all: {_command(options, table)} {repeat}")
    return agreed


def _ask(probe: Path, table: Table, questions: list[Fields]) -> list[str]:
    lines = [to_line(question) for question in questions]
    # Through files: a pipe would wake both sides for every single answer.
    with TemporaryFile("w+") as asked, TemporaryFile("w+") as answered:
        asked.writelines(line + "\n" for line in lines)
        asked.seek(0)
        run = subprocess.run([probe, table.name], stdin=asked, stdout=answered, stderr=subprocess.PIPE, text=True)
        answered.seek(0)
        answers = answered.read().splitlines()
    if run.returncode != 0 or len(answers) != len(lines):
        unanswered = lines[len(answers)] if len(answers) < len(lines) else "none"
        raise ProbeFailed(
            f"the probe ended with status {run.returncode} after {len(answers)} of {len(lines)} answers: "
            f"{run.stderr.strip()}\n  first without an answer: --case '{unanswered}'"
        )
    return answers


def _show_differences(options: argparse.Namespace, table: Table, result: Result) -> None:
    kinds = ", ".join(f"{kind} {count}" for kind, count in sorted(result.outcomes.items()))
    print(f"  expected answers: {kinds}")
    for question, expected, answer in result.first_differing:
        print(f"  question {_readable(question)}")
        print(f"    expected {_readable(expected)}")
        print(f"    answered {_readable(from_line(answer))}")
        print(f"    repeat   {_command(options, table)} --case '{to_line(question)}'")


def _command(options: argparse.Namespace, table: Table) -> str:
    return f"tests/oracle/decide.py {table.name} --probe {options.probe}"


def _readable(fields: Fields) -> str:
    return " ".join(repr(item)[1:] if isinstance(item, bytes) else to_line((item,)) for item in fields)


if __name__ == "__main__":
    sys.exit(main())
