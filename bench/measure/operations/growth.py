"""How the work grows with the text, counted in instructions: no clock, no noise."""

import shutil
import tempfile
from collections.abc import Callable, Iterator
from pathlib import Path

from measure.counting import instructions
from measure.inputs import accounts_of, manifest_of, reply_of, report_of, version_of
from measure.rounds import Band
from measure.rows import Plan, Row

_BOUND = 10.5
# What it is, the verb of the driver, the text of a size, the larger size, whether the simulated port does the work.
_TEXTS: list[tuple[str, str, Callable[[int], str], int, bool]] = [
    ("a report, bytes", "verdict", lambda size: report_of("certificates", size), 1_000_000, False),
    ("an account listing, lines", "accounts", accounts_of, 100_000, False),
    ("a version, pieces", "versions", version_of, 10_000, False),
    ("a reply, members", "reply", reply_of, 10_000, True),
    ("a manifest, members", "manifest", manifest_of, 10_000, True),
]


def measure(plan: Plan) -> Iterator[Row]:
    if shutil.which("valgrind") is None:
        return
    for name, verb, text_of, size, simulated in _TEXTS:
        large = size // 10 if plan.quick else size
        few, few_bytes = _cost(plan, verb, text_of(large // 10))
        many, many_bytes = _cost(plan, verb, text_of(large))
        yield Row(
            f"{name}: {large // 10:,} to {large:,}",
            f"{many:,.0f} instr.",
            {"a tenth": f"{few:,.0f} instr.", "each byte": f"{few / few_bytes:.1f}, then {many / many_bytes:.1f}"},
            Band.exactly(many / few),
            "of a tenth",
            None if simulated else _BOUND,
            simulated,
        )


def _cost(plan: Plan, verb: str, text: str) -> tuple[float, int]:
    with tempfile.NamedTemporaryFile("w", dir=plan.memory, encoding="utf-8") as file:
        file.write(text)
        file.flush()
        program = plan.driver("bench_texts")
        return instructions(lambda times: [program, verb, str(times), Path(file.name)], 1, 2), len(text.encode())
