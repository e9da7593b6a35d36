"""From the report about a signature to the verdict."""

import shutil
import sys
import tempfile
from collections.abc import Iterator
from pathlib import Path

from measure.drivers import Driver, peak_kilobytes
from measure.inputs import GOOD_REPORT, LINE_KINDS, report_of
from measure.rounds import Band, interleave
from measure.rows import Plan, Row, compared, duration

_PEER = Path(__file__).parents[2] / "peers/verdict.py"
_GREP = shutil.which("grep") or "grep"
_MICROSECONDS = 3.0
_TIMES_GREP = 4.0
_TEXTS = 1.5


def measure(plan: Plan) -> Iterator[Row]:
    yield _small(plan)
    size = (8 if plan.quick else 64) << 20
    with tempfile.TemporaryDirectory(dir=plan.memory) as folder, Driver(plan.driver("bench_texts")) as driver:
        for kind in LINE_KINDS:
            report = Path(folder) / "report"
            report.write_text(report_of(kind, size), encoding="utf-8")
            yield _large(plan, driver, f"verdict on {size >> 20} MiB of {kind}", report)
            yield _memory(plan, f"memory for {size >> 20} MiB of {kind}", report)


def _small(plan: Plan) -> Row:
    with Driver(plan.driver("bench_texts")) as driver, Driver(sys.executable, _PEER) as python:
        contenders = {
            "ours": lambda: driver.seconds("verdict", 5000, GOOD_REPORT),
            "Python's re": lambda: python.seconds("verdict", 500, GOOD_REPORT),
        }
        samples = interleave(contenders, plan.rounds, plan.discarded)
    peers = {"Python's re": duration(samples.band("Python's re").median)}
    ours = samples.band("ours", 1e6)
    return Row("verdict on a report of 1.1 kB", f"{ours.median:.2f} us", peers, ours, "us", _MICROSECONDS)


def _large(plan: Plan, driver: Driver, operation: str, report: Path) -> Row:
    contenders = {
        "ours": lambda: driver.seconds("verdict", 1, report),
        "grep -c": lambda: driver.seconds("command", 1, _GREP, "-c", "Status:", report),
    }
    return compared(operation, interleave(contenders, plan.rounds, plan.discarded), "grep -c", _TIMES_GREP)


def _memory(plan: Plan, operation: str, report: Path) -> Row:
    texts = plan.driver("bench_texts")
    size = report.stat().st_size / 1024
    more = peak_kilobytes(texts, "verdict", "1", report) - peak_kilobytes(texts, "verdict", "0", report)
    held = 1 + max(more, 0) / size
    return Row(operation, f"{held:.2f} texts", {}, Band.exactly(held), "texts", _TEXTS)
