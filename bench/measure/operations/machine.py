"""Whole requests in the simulated Mac, beside the tools that they run, and the helper while nobody asks it anything."""

from collections.abc import Iterator

from measure.drivers import Driver
from measure.rounds import Band, interleave
from measure.rows import Plan, Row, compared, duration

_TOOLS = 1.1
# Kilobytes: what the allocator keeps of one thread's arena or does not. A byte for each request would be as much.
_MORE_MEMORY = 1024
# The idle timer looks every 15 seconds, at most once in this time, which wakes two threads; nothing else does.
_TIMER_SECONDS = 14
_TIMER_WAKE_UPS = 2
_MINIMAL = "minimal sd-bus program"


def installs(plan: Plan) -> Iterator[Row]:
    with Driver(plan.driver("bench_machine")) as machine:
        contenders = {
            "ours": lambda: machine.seconds("install", 1),
            "its tools": lambda: machine.seconds("install-tools", 1),
        }
        yield compared("a whole install", interleave(contenders, plan.rounds, plan.discarded), "its tools", _TOOLS)


def users(plan: Plan) -> Iterator[Row]:
    with Driver(plan.driver("bench_machine")) as machine:
        # One list of a thousand accounts takes as long as a hundred of ten, and is as many runs of a tool.
        for accounts, rounds in [(10, plan.rounds)] if plan.quick else [(10, 15), (100, 15), (1000, 5)]:
            contenders = {
                "ours": lambda: machine.seconds("users", 1, accounts),
                "the tools": lambda: machine.seconds("users-tools", 1, accounts),
            }
            samples = interleave(contenders, rounds, min(plan.discarded, rounds // 5))
            yield compared(f"users listed, {accounts} accounts", samples, "the tools", _TOOLS)


def idle(plan: Plan) -> Iterator[Row]:
    pings, connections = (20_000, 1_000) if plan.quick else (1_000_000, 10_000)
    with Driver(plan.driver("bench_machine")) as machine:
        # What is made once is made before it counts.
        machine.ask("guest", "pings", 2_000)
        machine.ask("guest", "connections", 1_000)
        before = machine.ask("idle", 0)
        machine.ask("guest", "pings", pings)
        machine.ask("guest", "connections", connections)
        after = machine.ask("idle", _TIMER_SECONDS)
        sleeping = machine.ask("minimal")
    load = f"{pings:,} pings and {connections:,} connections"
    yield Row(
        "idle: private memory",
        f"{after[0]} KiB",
        {f"before {load}": f"{before[0]} KiB", "sleep": f"{sleeping[0]} KiB"},
        Band.exactly(after[0] - before[0]),
        "KiB more",
        _MORE_MEMORY,
    )
    for name, place in (("threads", 1), ("descriptors", 2)):
        more = Band.exactly(after[place] - before[place])
        peers = {f"before {load}": str(before[place]), "sleep": str(sleeping[place])}
        yield Row(f"idle: {name}", str(after[place]), peers, more, "more", 0)
    woken = Band.exactly(after[3])
    yield Row(f"idle: wake-ups in {_TIMER_SECONDS} s", str(after[3]), {}, woken, "wake-ups", _TIMER_WAKE_UPS)


def simulated(plan: Plan) -> Iterator[Row]:
    with Driver(plan.driver("bench_machine")) as machine, Driver(plan.driver("bench_minimal_service")) as minimal:
        contenders = {
            "ours": lambda: machine.seconds("first-reply", 1),
            "a later reply": lambda: machine.seconds("later-reply", 1),
            _MINIMAL: lambda: minimal.seconds("first-reply", 1),
        }
        samples = interleave(contenders, plan.rounds, plan.discarded)
        yield compared("start to first reply", samples, "a later reply", None, simulated=True)
        for name, verb, times in (("a ping", "pings", 1000), ("a connection and a ping", "connections", 50)):
            contenders = {
                "ours": lambda: machine.ask("guest", verb, times)[0] / times / 1e9,
                _MINIMAL: lambda: minimal.seconds(verb, times),
            }
            samples = interleave(contenders, plan.rounds, plan.discarded)
            yield compared(name, samples, _MINIMAL, None, simulated=True)
