"""Would a program take these words? Looked up in its help and in the presets, without doing what they ask."""

import json
import re
import subprocess
from functools import cache
from pathlib import Path

_HELP_BOUND = 20  # seconds
_PRESETS = {"configure": "configurePresets", "build": "buildPresets", "test": "testPresets"}


@cache
def help_of(program: str, *words: str) -> str:
    """What the program says about itself; empty when it does not."""
    told = subprocess.run(
        [program, *words, "--help"], capture_output=True, text=True, stdin=subprocess.DEVNULL, timeout=_HELP_BOUND
    )
    return told.stdout if told.returncode == 0 else ""


def presets(root: Path, kind: str) -> set[str]:
    known = json.loads((root / "CMakePresets.json").read_text(encoding="utf-8"))
    return {preset["name"] for preset in known[_PRESETS[kind]] if not preset.get("hidden")}


def problem_of_script(program: str, words: list[str], root: Path) -> str:
    """What a script would not take; empty when all is well."""
    text = help_of(program)
    if not text:
        return "it has no --help"
    for word in _options(words):
        if not _names(text, word):
            return f"its --help does not know {word}"
    return _preset_problem(words, presets(root, "configure"))


def problem_of_program(program: str, words: list[str]) -> str:
    """The same for a built program whose first word says what to do."""
    text = help_of(program)
    verb = next((word for word in words if not word.startswith("-")), "")
    if verb and not _is_placeholder(verb) and not _names(text, verb):
        return f"its --help does not know {verb}"
    # Programs of the simulation tell the options of a command behind its name.
    text += help_of(program, verb) if verb and not _is_placeholder(verb) else ""
    return next((f"its --help does not know {word}" for word in _options(words) if not _names(text, word)), "")


def problem_of_build(program: str, words: list[str], root: Path) -> str:
    """For cmake and ctest, asked for a preset."""
    kind = "test" if program == "ctest" else "build" if "--build" in words else "configure"
    return _preset_problem(words, presets(root, kind))


def _preset_problem(words: list[str], known: set[str]) -> str:
    chosen = [after for word, after in zip(words, words[1:]) if word == "--preset"]
    return next((f"there is no such preset as {name}" for name in chosen if name not in known), "")


def _options(words: list[str]) -> list[str]:
    own = words[: words.index("--")] if "--" in words else words
    return [word.partition("=")[0].strip("[]") for word in own if word.startswith(("-", "[-")) and word != "-"]


def _names(text: str, word: str) -> bool:
    return re.search(rf"(?<![\w-]){re.escape(word)}(?![\w-])", text) is not None


def _is_placeholder(word: str) -> bool:
    return word.upper() == word
