"""A tool started and its output captured."""

import sys
from collections.abc import Iterator
from pathlib import Path

from measure.drivers import Driver
from measure.rounds import interleave
from measure.rows import Plan, Row, compared

_PEER = Path(__file__).parents[2] / "peers/capture.py"
# Has the C library fetch each large block from the system, as in a helper that was just started: what one contender
# gave back would else be found by the next.
_FRESH_MEMORY = {"MALLOC_MMAP_THRESHOLD_": str(128 << 10)}
_SIZES = [("nothing", 0, 40, 1.05), ("64 KiB", 64 << 10, 40, 1.05), ("16 MiB", 16 << 20, 3, 1.10)]


def measure(plan: Plan) -> Iterator[Row]:
    yield from _captures(plan)
    yield _growth(plan)


def _captures(plan: Plan) -> Iterator[Row]:
    writer = plan.driver("bench_writer")
    tool_start = plan.driver("bench_tool_start")
    with Driver(tool_start, environment=_FRESH_MEMORY) as driver, Driver(sys.executable, _PEER) as python:
        for name, size, often, bound in _SIZES:
            times = plan.times(often)
            samples = interleave(
                {
                    "ours": lambda: driver.seconds("ours", times, size),
                    "posix_spawn": lambda: driver.seconds("floor", times, size),
                    "fork and exec": lambda: driver.seconds("fork", times, size),
                    "popen": lambda: driver.seconds("popen", times, size),
                    "Python": lambda: python.seconds("capture", times, writer, size),
                },
                plan.rounds,
                plan.discarded,
            )
            yield compared(f"a tool that writes {name}", samples, "posix_spawn", bound)


def _growth(plan: Plan) -> Row:
    tool_start = plan.driver("bench_tool_start")
    with Driver(tool_start) as small, Driver(tool_start) as large:
        small.ask("ballast", 10 << 20)
        large.ask("ballast", 1 << 30)
        samples = interleave(
            {
                "ours": lambda: large.seconds("ours", plan.times(40), 0),
                "10 MiB": lambda: small.seconds("ours", plan.times(40), 0),
                "fork and exec, 1 GiB": lambda: large.seconds("fork", plan.times(6), 0),
            },
            plan.rounds,
            plan.discarded,
        )
    return compared("a tool started by a process of 1 GiB", samples, "10 MiB", 1.05)
