#!/usr/bin/python3
"""Peers in Python, as main.cpp has those in C++: numpy_peers.py list, or time JOB SIZE.

The equations of column_jobs.cpp over columns by NumPy, and by numexpr in one thread. The list is empty where neither is
installed.
"""

import resource
import sys
import time

try:
    import numpy as np
except ImportError:
    np = None
try:
    import numexpr
    numexpr.set_num_threads(1)
except ImportError:
    numexpr = None

A = 1.25
TEXTS = {"arith": "x * 2 + a * (x - 1) / 3 - x * x", "power": "a * x ** 2", "square": "a * x * x", "sine": "sin(x)",
         "functions": "sin(x * 2) * cos(a) + sqrt(x)"}


def work(name, peer, rows):
    """A call of the job."""
    x = 0.001 + 9 * np.arange(rows) / rows
    if peer == "numexpr":
        y = np.empty(rows)
        return lambda: numexpr.evaluate(TEXTS[name], {"x": x, "a": A}, out=y)
    return eval(f"lambda: {TEXTS[name]}", {"x": x, "a": A, "sin": np.sin, "cos": np.cos, "sqrt": np.sqrt})


def time_calls(call):
    """Nanoseconds and page faults a call, as main.cpp measures them."""
    call()
    first = time.process_time_ns()
    call()
    batch = max(1, 10_000_000 // max(1, time.process_time_ns() - first))
    faults = resource.getrusage(resource.RUSAGE_SELF).ru_minflt
    rounds = []
    for _ in range(9):
        start = time.process_time_ns()
        for _ in range(batch):
            call()
        rounds.append((time.process_time_ns() - start) / batch)
    faults = resource.getrusage(resource.RUSAGE_SELF).ru_minflt - faults
    print(f"{min(rounds):.1f} {faults / (9 * batch):.3f}")


if sys.argv[1:] == ["list"]:
    for peer, module in (("NumPy", np), ("numexpr", numexpr)):
        for name in TEXTS if np and module else ():
            print(f"columns.{name}@{peer} 0 0 1000000")
else:
    _, job, size = sys.argv[1:]
    name, peer = job.removeprefix("columns.").split("@")
    time_calls(work(name, peer, int(size)))
