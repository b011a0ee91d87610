"""Tests that work spreads over processes and clusters, with the same bits."""

import concurrent.futures
import functools
import multiprocessing
import pathlib
import subprocess
import sys
import unittest

import korvale
import numpy
from calls import CUBE
from test_shapes import rings

EXAMPLE = pathlib.Path(__file__).resolve().parents[2] / "examples/python/many_outlines.py"


def frame(relaxer, k):
    return relaxer.run(CUBE.vertices * (1 + k / 10, 1, 1), steps=20)


class ParallelTest(unittest.TestCase):
    def test_20000_outlines_are_the_same_serially_in_processes_and_on_a_cluster(self):
        try:
            import distributed  # noqa: F401
        except ImportError:
            self.skipTest("python3-distributed is not installed")
        done = subprocess.run([sys.executable, str(EXAMPLE)], capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        lines = [line.split(None, 1) for line in done.stdout.splitlines()]
        self.assertEqual([name for name, result in lines], ["serial", "processes", "cluster"])
        self.assertEqual(len({result for name, result in lines}), 1)
        self.assertTrue(lines[0][1].startswith("20000 borders, "))

    def test_equations_over_slices_in_threads_give_what_one_gives(self):
        system = korvale.Equations("y x a")
        system.add("y = x * 2 + a * (x - 1) / 3 - x * x")
        system.add("y = SIN(x * 2) * COS(a) + SQRT(x)")
        system["a"] = 1.25
        x = numpy.random.default_rng(3).uniform(-2, 9, 100003)
        for equation in (0, 1):
            expected = system.evaluate(equation, x=x)
            out = numpy.empty_like(x)
            ends = numpy.linspace(0, len(x), 9).astype(int)
            with concurrent.futures.ThreadPoolExecutor(4) as executor:
                list(executor.map(lambda copied, first, last: copied.evaluate(equation, x=x[first:last],
                                                                              out=out[first:last]),
                                  [system.copy() for _ in ends[1:]], ends[:-1], ends[1:]))
            numpy.testing.assert_array_equal(out, expected)
            self.assertTrue(system.ran_in_blocks)

    def test_outlines_over_slices_in_threads_give_what_one_gives(self):
        outlines = rings(4000)
        points, starts = numpy.concatenate(outlines), numpy.cumsum([0, *map(len, outlines)])
        whole = korvale.offset_many(points, -0.5, starts=starts, keep_vertices=False)
        with concurrent.futures.ThreadPoolExecutor(4) as executor:
            parts = list(executor.map(lambda first: korvale.offset_many(
                points, -0.5, starts=starts[first:first + 501], keep_vertices=False), range(0, 4000, 500)))
        for name in ("points", "sources", "collapsed", "removed", "merged_into"):
            joined = numpy.concatenate([getattr(part, name) for part in parts])
            numpy.testing.assert_array_equal(joined, getattr(whole, name))

    def test_a_mesh_sequence_spreads_over_fresh_processes(self):
        relaxer = korvale.Relaxer(CUBE).keep("lengths").hold([0])
        work = functools.partial(frame, relaxer)
        context = multiprocessing.get_context("spawn")
        with concurrent.futures.ProcessPoolExecutor(2, mp_context=context) as executor:
            for here, there in zip(map(work, range(8)), executor.map(work, range(8))):
                numpy.testing.assert_array_equal(here.points, there.points)
                self.assertEqual(here[1:], there[1:])


if __name__ == "__main__":
    unittest.main()
