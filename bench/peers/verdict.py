#!/usr/bin/env python3
"""The re module as a peer of the report's parser: a line "verdict TIMES FILE" is answered by nanoseconds."""

import re
import sys
import time

_STATUS = re.compile(r"^[ \t]*Status:[ \t]*(.*?)[ \t]*$", re.MULTILINE)
_NOTARIZATION = re.compile(r"^[ \t]*Notarization:[ \t]*(.*?)[ \t]*$", re.MULTILINE)
_CERTIFICATE = re.compile(
    r"^[ \t]*(\d+)\. (.*?)[ \t]*$"
    r"(?:(?!^[ \t]*\d+\. )(?s:.))*?SHA256 Fingerprint:[ \t]*\n((?:[ \t]*[0-9A-F][0-9A-F ]*\n)+)",
    re.MULTILINE,
)


def read(report: str) -> tuple[str | None, str | None, list[tuple[int, str, str]]]:
    status = _STATUS.search(report)
    notarization = _NOTARIZATION.search(report)
    chain = [(int(place), name, "".join(digits.split())) for place, name, digits in _CERTIFICATE.findall(report)]
    return status and status[1], notarization and notarization[1], chain


for line in sys.stdin:
    _, times, path = line.split()
    with open(path, encoding="utf-8") as file:
        text = file.read()
    assert len(read(text)[2]) == 3
    begin = time.perf_counter_ns()
    for _ in range(int(times)):
        read(text)
    print(time.perf_counter_ns() - begin, flush=True)
