"""Python beside the same loops in C++: bench.py LOOPS, the program of loops.cpp.

Each job runs in turn in both, several times; the table has the medians. Columns are compared by their ratio, the offset
of one outline by what a call costs more. One more table has batches that two threads share out.
"""

import concurrent.futures
import os
import statistics
import subprocess
import sys
import time

import numpy as np

import korvale

MANY = 200_000
ROUNDS = 7
ROWS = 1_000_000
OUTLINES = 100_000


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


def many_outlines():
    """Points and starts of outlines like those of letters, 20 to 60 points each."""
    generator = np.random.default_rng(1)
    sizes = generator.integers(20, 61, OUTLINES)
    starts = np.concatenate([[0], sizes.cumsum()])
    turn = (np.arange(starts[-1]) - np.repeat(starts[:-1], sizes)) * (2 * np.pi / np.repeat(sizes, sizes))
    radius = generator.uniform(3, 5, starts[-1])
    return np.column_stack([radius * np.cos(turn), radius * np.sin(turn), 0 * turn]), starts


def threads():
    """Batches in one thread, and their halves in two."""
    points, starts = many_outlines()
    x = np.linspace(0.001, 9, 4 * ROWS)
    y = np.empty_like(x)
    grid = korvale.RayGrid(np.random.default_rng(2).uniform(-1, 1, (20000, 3, 3)) * 0.1
                           + np.random.default_rng(3).uniform(-1, 1, (20000, 1, 3)))
    origins = np.random.default_rng(4).uniform(-1, 1, (MANY, 3))

    def equation(text):
        system = korvale.Equations("y x a")
        system.add(f"y = {text}")
        copies = {first: system.copy() for first in (0, len(x) // 2)}
        return lambda first, last: copies[first].evaluate(x=x[first:last], out=y[first:last])

    batches = [("an equation of arithmetic", equation("x * 2 + a * (x - 1) / 3 - x * x"), len(x)),
               ("an equation of functions", equation("SIN(x * 2) * COS(a) + SQRT(x)"), len(x)),
               ("outlines in one call",
                lambda first, last: korvale.offset_many(points, -0.1, starts=starts[first:last + 1]), OUTLINES),
               ("rays at one grid", lambda first, last: grid.cast(origins[first:last], (0, 0, -1)), MANY)]
    print(f"\n| two threads on {os.cpu_count()} processors | one | two | |\n|---|---:|---:|---:|")
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for label, work, count in batches:
            halves = [(0, count // 2), (count // 2, count)]
            one, two = [], []
            for _ in range(5):
                one.append(fastest(lambda: [work(*half) for half in halves], 1))
                two.append(fastest(lambda: list(pool.map(work, *zip(*halves))), 1))
            alone, together = min(one) / 1e6, min(two) / 1e6
            print(f"| {label} | {alone:.1f} ms | {together:.1f} ms | {alone / together:.2f} x |", flush=True)


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
threads()
