"""Python beside the same loops in C++: bench.py LOOPS, the program of loops.cpp.

Each job runs in turn in both, several times; the table has the medians. Columns are compared by their ratio, the offset
of one outline by what a call costs more.
"""

import statistics
import subprocess
import sys
import time

import numpy as np

import korvale

MANY = 200_000
ROUNDS = 7


def fastest(job, times):
    """Nanoseconds of one job, the fastest of five turns."""
    taken = []
    for _ in range(5):
        start = time.perf_counter_ns()
        for _ in range(times):
            job()
        taken.append((time.perf_counter_ns() - start) / times)
    return min(taken)


def rays():
    i, j = np.meshgrid(np.arange(51.0), np.arange(51.0), indexing="ij")
    vertices = np.column_stack([i.ravel(), j.ravel(), (np.sin(0.3 * i) * np.cos(0.2 * j)).ravel()])
    corner = (51 * np.arange(50)[:, None] + np.arange(50)).ravel()
    triangles = np.stack([corner, corner + 51, corner + 52, corner, corner + 52, corner + 1], 1).reshape(-1, 3)
    grid = korvale.RayGrid(vertices, triangles)
    number = np.arange(MANY)
    origins = np.column_stack([0.618 * number % 50, 0.414 * number % 50, np.full(MANY, 10.0)])
    return fastest(lambda: grid.cast(origins, (0, 0, -1), triangles=False), 1)


def equation():
    system = korvale.Equations("y x")
    system.add("y = SIN(x) * 2 + x / (1 + x)")
    x, y = 1e-4 * np.arange(MANY), np.empty(MANY)
    return fastest(lambda: system.evaluate(x=x, out=y), 1)


def transform():
    turn = korvale.Transform.rotation((0.1, 0.2, 0.3))
    points = (np.arange(3 * MANY) % 1000.0).reshape(-1, 3)
    moved = np.empty_like(points)
    return fastest(lambda: turn(points, out=moved), 1)


def offset():
    turn = np.arange(64) * np.pi / 32
    circle = np.column_stack([10 * np.cos(turn), 10 * np.sin(turn), 0 * turn])
    return fastest(lambda: korvale.offset(circle, 0.5), 2000)


def main(loops):
    print("| job | C++ | Python | | at most |\n|---|---:|---:|---:|---:|")
    for job, label, times in ((rays, f"{MANY} rays", MANY), (equation, f"an equation over {MANY} rows", MANY),
                              (transform, f"{MANY} points transformed", MANY), (offset, "offset of 64 points", 1)):
        theirs, ours = [], []
        for _ in range(ROUNDS):
            theirs.append(float(subprocess.run([loops, job.__name__], capture_output=True, check=True).stdout))
            ours.append(job())
        cpp, python = statistics.median(theirs) / times, statistics.median(ours) / times
        if times > 1:
            compared = f"{python / cpp:.2f} x | 1.20 x"
        else:
            compared = f"{(python - cpp) / 1000:+.2f} us | +3.00 us"
        print(f"| {label} | {cpp:.1f} ns | {python:.1f} ns | {compared} |", flush=True)


main(sys.argv[1])
