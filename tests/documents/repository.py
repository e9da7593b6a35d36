"""The files of this repository."""

import os
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def files() -> list[str]:
    """Every file of the repository, also those not committed yet. A copy without its history has no index: there
    everything outside build/ counts."""
    if (ROOT / ".git").exists():
        # Continuous integration often runs as another user than the one who owns the checkout.
        listed = subprocess.run(
            ["git", "-c", "safe.directory=*", "ls-files", "--cached", "--others", "--exclude-standard", "-z"],
            cwd=ROOT, check=True, capture_output=True, text=True,
        ).stdout.split("\0")
        return sorted({name for name in listed if name and (ROOT / name).is_file()})
    return sorted(
        str(path.relative_to(ROOT))
        for path in ROOT.rglob("*")
        if path.is_file() and path.relative_to(ROOT).parts[0] != "build"
    )


def scripts(names: list[str]) -> set[str]:
    """Those that people can start."""
    return {name for name in names if os.access(ROOT / name, os.X_OK)}
