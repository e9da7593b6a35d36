"""What ships: how large the stripped helper is, and what it leans on."""

import re
import shutil
import subprocess
import tempfile
from collections.abc import Iterator
from pathlib import Path

from measure.rounds import Band
from measure.rows import Plan, Row

# Every library that the helper may need, and what for.
_LIBRARIES = {
    "libstdc++.so.6": "the C++ library",
    "libgcc_s.so.1": "unwinding, for the C++ library",
    "libm.so.6": "for the C++ library",
    "libc.so.6": "the C library",
    "ld-linux-x86-64.so.2": "the loader",
    "ld-linux-aarch64.so.1": "the loader",
    "libsystemd.so.0": "D-Bus of the simulated transport",
    "libexpat.so.1": "property lists of the simulation",
}


def measure(plan: Plan) -> Iterator[Row]:
    if shutil.which("readelf") is None:
        return
    with tempfile.TemporaryDirectory(dir=plan.disk) as folder:
        helper = Path(folder) / "halvo-helper"
        _output("strip", "-o", helper, plan.build / "main/halvo-helper")
        yield Row("the helper, stripped", f"{helper.stat().st_size / 1024:.0f} KiB", simulated=True)
        sections = dict(re.findall(r"^(\.\S+)\s+(\d+)", _output("size", "-A", helper), re.MULTILINE))
        for name in (".text", ".rodata", ".eh_frame", ".data.rel.ro", ".data", ".bss"):
            yield Row(f"its section {name}", f"{int(sections.get(name, 0)) / 1024:.1f} KiB", simulated=True)
        relocations = _output("readelf", "--relocs", "--wide", helper).count("R_")
        yield Row("its relocations", str(relocations), simulated=True)
        yield from _libraries(_output("readelf", "--dynamic", helper))


def _libraries(dynamic: str) -> Iterator[Row]:
    needed = re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic)
    unknown = [library for library in needed if library not in _LIBRARIES]
    yield Row("its libraries without a reason", str(len(unknown)), {}, Band.exactly(len(unknown)), "libraries", 0)
    for library in needed:
        yield Row(f"its library {library}", _LIBRARIES.get(library, "no reason is known"), simulated=True)


def _output(*command: str | Path) -> str:
    return subprocess.run([str(word) for word in command], check=True, stdout=subprocess.PIPE, text=True).stdout
