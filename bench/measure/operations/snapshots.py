"""A tree copied as a snapshot keeps it. Away from a Mac the copy is the simulated copyfile's."""

import shutil
import tempfile
from collections.abc import Iterator
from pathlib import Path

from measure.drivers import Driver
from measure.rounds import interleave
from measure.rows import Plan, Row, compared


def measure(plan: Plan) -> Iterator[Row]:
    with tempfile.TemporaryDirectory(dir=plan.memory) as folder:
        tree, copy = Path(folder) / "tree", Path(folder) / "copy"
        with Driver(plan.driver("bench_removal")) as builder:
            builder.ask("build", tree, 600, 30)
        with Driver(plan.driver("bench_copies")) as driver:
            contenders = {
                "ours": lambda: driver.seconds("tree", 2, tree, copy),
                "cp -a": lambda: driver.seconds("command", 2, "/bin/cp", "-a", tree, copy),
            }
            if rsync := shutil.which("rsync"):
                contenders["rsync"] = lambda: driver.seconds("command", 2, rsync, "-a", f"{tree}/", copy)
            samples = interleave(contenders, plan.rounds, plan.discarded)
    yield compared("a snapshot of 600 files", samples, "cp -a", None, simulated=plan.simulated)
