#!/usr/bin/env python3
"""The subprocess module as a peer: a line "capture TIMES PROGRAM BYTES" is answered by nanoseconds."""

import subprocess
import sys
import time

for line in sys.stdin:
    _, times, program, size = line.split()
    begin = time.perf_counter_ns()
    for _ in range(int(times)):
        result = subprocess.run([program, size], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, check=True)
        assert len(result.stdout) == int(size)
    print(time.perf_counter_ns() - begin, flush=True)
