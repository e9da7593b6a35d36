"""A package copied to where only root can write."""

import os
import tempfile
from collections.abc import Callable, Iterator
from pathlib import Path

from measure.drivers import Driver, peak_kilobytes
from measure.rounds import Band, interleave
from measure.rows import Plan, Row, compared

_SIZES = [("1 KiB", 1 << 10, 2000, 1.10), ("16 MiB", 16 << 20, 3, 1.05), ("256 MiB", 256 << 20, 1, 1.05)]


def measure(plan: Plan) -> Iterator[Row]:
    for place, parent in (("memory", plan.memory), ("disk", plan.disk)):
        with tempfile.TemporaryDirectory(dir=parent) as folder, Driver(plan.driver("bench_copies")) as driver:
            for name, size, times, bound in _SIZES:
                if plan.quick and (place == "disk" or size > 16 << 20):
                    continue
                source = Path(folder) / "package"
                source.write_bytes(os.urandom(size))
                yield _staged(plan, driver, f"{name} staged, {place}", source, times, bound)
    yield _peak(plan)


def _staged(plan: Plan, driver: Driver, operation: str, source: Path, times: int, bound: float) -> Row:
    copy = source.with_name("copy")

    def command(*words: str | Path) -> Callable[[], float]:
        # A command takes a millisecond to start: a few runs are enough.
        return lambda: driver.seconds("command", min(times, 3), *words)

    contenders = {
        "ours": lambda: driver.seconds("ours", times, source, copy),
        "loop": lambda: driver.seconds("loop", times, source, copy),
    }
    # They are for information, and the largest copies take long enough.
    if source.stat().st_size < _SIZES[-1][1]:
        contenders["cp"] = command("/bin/cp", source, copy)
        contenders["install"] = command("/usr/bin/install", source, copy)
        contenders["dd"] = command("/bin/dd", f"if={source}", f"of={copy}", f"bs={1 << 20}", "status=none")
    return compared(operation, interleave(contenders, plan.rounds, plan.discarded), "loop", bound)


def _peak(plan: Plan) -> Row:
    copies = plan.driver("bench_copies")
    with tempfile.TemporaryDirectory(dir=plan.memory) as folder:
        source, copy = Path(folder) / "package", Path(folder) / "copy"
        source.write_bytes(bytes(64 << 20))
        before = peak_kilobytes(copies, "ours", "0", source, copy)
        ours = peak_kilobytes(copies, "ours", "1", source, copy)
        loop = peak_kilobytes(copies, "loop", "1", source, copy)
    more = (ours - before) / 1024
    return Row(
        "memory that staging 64 MiB takes",
        f"{more:.2f} MiB",
        {"loop": f"{(loop - before) / 1024:.2f} MiB"},
        Band.exactly(more),
        "MiB",
        2.0,
    )
