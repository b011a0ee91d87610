"""Offsets 20,000 outlines three times: here, in two processes, and on a Dask cluster of two workers.

Every bit is the same wherever an outline was offset. A cluster on several machines is used in the same way:
`Client("scheduler:8786")` instead of a local one.

    python3 many_outlines.py [number of outlines]
"""

import concurrent.futures
import functools
import hashlib
import sys
import time

import dask.bag
import korvale
import numpy
from dask.distributed import Client, LocalCluster


def outlines(count):
    """Islands of 8 to 40 points, each another one."""
    generator = numpy.random.default_rng(7)
    for _ in range(count):
        n = generator.integers(8, 40)
        t = numpy.linspace(0, 2 * numpy.pi, n, endpoint=False)
        r = generator.uniform(5, 10, n)
        yield numpy.stack([r * numpy.cos(t), r * numpy.sin(t), numpy.zeros(n)], axis=1)


def digest(borders):
    """What all bits of the results come to."""
    digest = hashlib.sha256()
    for border in borders:
        for part in (border.points, border.removed, border.merged_into, numpy.array(border.collapsed)):
            digest.update(part.tobytes())
    return digest.hexdigest()[:16]


def timed(name, work):
    start = time.perf_counter()
    borders = work()
    seconds = time.perf_counter() - start
    print(f"{name:<14} {len(borders)} borders, {sum(map(len, borders))} points, {digest(borders)}")
    print(f"{name:<14} {seconds:.2f} s", file=sys.stderr)


def main(count):
    islands = list(outlines(count))
    shrink = functools.partial(korvale.offset, distance=-1.5)

    def in_processes():
        with concurrent.futures.ProcessPoolExecutor(2) as executor:
            return list(executor.map(shrink, islands, chunksize=500))

    def on_a_cluster():
        with LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as cluster, Client(cluster):
            return dask.bag.from_sequence(islands, npartitions=40).map(shrink).compute()

    timed("serial", lambda: list(map(shrink, islands)))
    timed("processes", in_processes)
    timed("cluster", on_a_cluster)


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 20000)
