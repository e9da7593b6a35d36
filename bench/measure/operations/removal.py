"""A tree removed."""

import tempfile
from collections.abc import Callable, Iterator
from itertools import count
from pathlib import Path

from measure.drivers import Driver
from measure.rounds import interleave
from measure.rows import Plan, Row, compared

# What it is, files, files in each folder, trees at once, bound.
_TREES = [("a bundle of 600 files", 600, 30, 4, 0.85), ("20,000 small files", 20_000, 200, 1, 1.0)]


def measure(plan: Plan) -> Iterator[Row]:
    with tempfile.TemporaryDirectory(dir=plan.memory) as folder, Driver(plan.driver("bench_removal")) as driver:
        names = count()

        def removing(verb: str, files: int, each: int, trees: int) -> Callable[[], float]:
            def run() -> float:
                paths = [Path(folder) / str(next(names)) for _ in range(trees)]
                for path in paths:
                    driver.ask("build", path, files, each)
                return driver.ask(verb, *paths)[0] / trees / 1e9

            return run

        for name, files, each, trees, bound in _TREES:
            contenders = {
                "ours": removing("ours", files, each, trees),
                "rm -rf": removing("rm", files, each, trees),
                "remove_all": removing("remove_all", files, each, trees),
            }
            samples = interleave(contenders, plan.rounds, plan.discarded)
            yield compared(f"removal of {name}", samples, "rm -rf", bound)
