"""Requests between two ends in one process: on a Mac XPC over a listener without a name."""

from collections.abc import Iterator

from measure.drivers import Driver
from measure.rounds import Band
from measure.rows import Plan, Row, duration

# What each is, the verb of the driver, how many at once.
_REQUESTS = [("a ping within one process", "pings", 1000), ("a connection within one process", "connections", 50)]


def measure(plan: Plan) -> Iterator[Row]:
    with Driver(plan.driver("bench_service")) as driver:
        for name, verb, times in _REQUESTS:
            each = Band.of([driver.seconds(verb, times) for _ in range(plan.rounds)])
            yield Row(name, duration(each.median), simulated=plan.simulated)
