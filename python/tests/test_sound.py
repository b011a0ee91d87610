"""Tests that nothing leaks, nothing is copied, and other threads run on."""

import concurrent.futures
import gc
import os
import sys
import threading
import time
import tracemalloc
import unittest

import korvale
import numpy
from calls import CALLS, CUBE, FAILING, REFUSED, SQUARE

CALLS_EACH = int(os.environ.get("KORVALE_CALLS", "10000"))


def resident_kib():
    with open("/proc/self/statm") as file:
        return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE") // 1024


def ring(n, wobble=0.0):
    """An outline of n vertices; `wobble` makes it one with events."""
    t = numpy.linspace(0, 2 * numpy.pi, n, endpoint=False)
    r = 10 + wobble * numpy.sin(7 * t)
    return numpy.stack([r * numpy.cos(t), r * numpy.sin(t), numpy.zeros(n)], axis=1)


class LeakTest(unittest.TestCase):
    def assertFlat(self, name, call, calls=CALLS_EACH, least=512):
        """A lost object in each call would show; of 10^5 calls, 10 bytes. What the heap keeps once, at a new peak or
        between blocks, does not come again and again.
        """
        for _ in range(calls // 20 + 3):
            call()
        for _ in range(4):
            before = resident_kib()
            for _ in range(calls):
                call()
            grown = resident_kib() - before
            if grown < max(least, calls // 100):
                return
        self.fail(f"{name}: {grown} KiB more after {calls} calls, once more")

    def test_calls_leave_the_resident_size_flat(self):
        for name, call in CALLS.items():
            with self.subTest(name):
                self.assertFlat(name, call)

    def test_refused_calls_leave_the_resident_size_flat(self):
        for name, call in REFUSED.items():
            def refused(call=call):
                try:
                    call()
                except ValueError:
                    return
                raise AssertionError("not refused")

            with self.subTest(name):
                self.assertFlat(name, refused)

    def test_large_results_are_released(self):
        outline = ring(100000)

        def move():
            border = korvale.offset(outline, 1, split=False)
            view = border.points
            del border
            self.assertEqual(view.shape, (100000, 3))

        self.assertFlat("offset", move, 50, 2000)  # a result takes 2,900

    def test_nothing_is_left_to_the_collector(self):
        for name, call in CALLS.items():
            call()
            gc.collect()
            gc.disable()
            try:
                for _ in range(20):
                    call()
                self.assertEqual(gc.collect(), 0, name)
            finally:
                gc.enable()

    def test_the_table_calls_everything_public(self):
        named = {name.partition(",")[0].partition(" of ")[0].partition(" with ")[0] for name in CALLS}
        self.assertEqual(set(korvale.__all__) - named - {"Error", "EquationError", "__version__", "raw"}, set())


class CopyTest(unittest.TestCase):
    def assertAllocates(self, most, call):
        """NumPy tells tracemalloc of its blocks."""
        call()
        tracemalloc.start()
        try:
            result = call()
            peak = tracemalloc.get_traced_memory()[1]
        finally:
            tracemalloc.stop()
        self.assertLess(peak, most + 20000)
        return result

    def test_points_are_read_where_they_are(self):
        outline = ring(20000)
        self.assertEqual(korvale._korvale.place_of(outline), outline.ctypes.data)
        self.assertEqual(korvale._korvale.place_of(outline[5:]), outline.ctypes.data + 120)
        self.assertNotEqual(korvale._korvale.place_of(outline[::2]), outline.ctypes.data)
        self.assertAllocates(0, lambda: korvale.offset(outline, 1, split=False))
        self.assertAllocates(0, lambda: korvale.band(outline[:2000], 1))
        self.assertAllocates(0, lambda: korvale.flatten(outline))
        self.assertAllocates(20000 * 128, lambda: korvale.frames(outline))
        self.assertAllocates(20000 * 24, lambda: korvale.Transform.translation((1, 2, 3))(outline))
        self.assertAllocates(20000 * 8, lambda: korvale.norm(outline))
        self.assertAllocates(20000 * 24, lambda: korvale.mix(outline, outline, 1, 2))

    def test_columns_are_read_and_written_where_they_are(self):
        points = ring(20000)
        wave = korvale.Equations("z x y")
        wave.add("z = x * y")
        out = numpy.empty(20000)
        self.assertAllocates(0, lambda: wave.evaluate(0, x=points[:, 0], y=points[:, 1], out=out))
        numpy.testing.assert_array_equal(out, points[:, 0] * points[:, 1])

    def test_results_are_the_librarys_own_memory(self):
        border = korvale.offset(ring(20000), 1, split=False)
        self.assertEqual(border.points.ctypes.data, border.points.ctypes.data)
        self.assertEqual(numpy.asarray(border).ctypes.data, border.xy.ctypes.data)
        self.assertIs(border.points.base, border)
        self.assertAllocates(0, lambda: (border.points, border.removed, border.merged_into))
        vertices, triangles = korvale.tube(ring(1000), SQUARE)
        self.assertIs(vertices.base, triangles.base)
        self.assertFalse(korvale.scatter(CUBE, 1000, seed=1).points.flags.owndata)

    def test_results_outlive_what_they_came_from(self):
        points = korvale.offset(SQUARE, 1).points
        triangles = korvale.triangulate(ring(100))
        gc.collect()
        blocks = [numpy.ones(n) for n in range(1, 200)]
        self.assertEqual(numpy.round(points).tolist(), [[-1, -1, 0], [5, -1, 0], [5, 5, 0], [-1, 5, 0]])
        self.assertEqual(len(set(triangles.ravel().tolist())), 100)
        self.assertEqual(len(blocks), 199)


class Ticker:
    """A thread that runs a little whenever the interpreter's lock is given away, and counts."""

    def __enter__(self):
        self.interval = sys.getswitchinterval()
        sys.setswitchinterval(1000)  # nobody is made to give it away
        self.ticks, self.done = 0, False
        self.thread = threading.Thread(target=self.run)
        self.thread.start()
        return self

    def run(self):
        while not self.done:
            self.ticks += 1
            time.sleep(0)

    def __exit__(self, *ignored):
        self.done = True
        self.thread.join()
        sys.setswitchinterval(self.interval)

    def during(self, call, seconds):
        """Ticks during calls, which end with the first one: on a busy machine the thread may miss many chances."""
        before, start = self.ticks, time.perf_counter()
        while self.ticks == before and time.perf_counter() - start < seconds:
            call()
        return self.ticks - before


class LockTest(unittest.TestCase):
    def test_long_calls_let_other_threads_run(self):
        outline, wavy = ring(128), ring(64, wobble=2)
        many = ring(30000)
        grid, relaxer = korvale.RayGrid(CUBE), korvale.Relaxer(korvale.tube(ring(100), SQUARE)).keep("lengths")
        shape = relaxer._given[0]
        wave = korvale.Equations("y x")
        wave.add("y = SIN(x) * x")
        down = numpy.array([(0, 0, -1.0)])
        calls = {
            "offset": lambda: korvale.offset(outline, 1),
            "offset with events": lambda: korvale.offset(wavy, -3),
            "offset with holes": lambda: korvale.offset([outline, outline / 2], 1),
            "band": lambda: korvale.band(outline, 1),
            "bevel": lambda: korvale.bevel(SQUARE, [(0, 0), (0, 1)]),
            "tube": lambda: korvale.tube(outline, SQUARE),
            "triangulate": lambda: korvale.triangulate(outline),
            "flatten": lambda: korvale.flatten(many),
            "frames": lambda: korvale.frames(many[:1000]),
            "scatter": lambda: korvale.scatter(CUBE, 1000, seed=1),
            "RayGrid": lambda: korvale.RayGrid(CUBE),
            "cast": lambda: grid.cast(many[:200], down),
            "evaluate": lambda: wave.evaluate(0, x=many[:500, 0]),
            "evaluate_all": lambda: wave.evaluate_all("y", x=many[:500, 0]),
            "run": lambda: relaxer.run(shape * 1.5, steps=3),
            "energy": lambda: relaxer.energy(shape),
            "forces": lambda: relaxer.forces(shape),
            "transform_points": lambda: korvale.Transform.scaling(2)(many),
            "norm": lambda: korvale.norm(many),
            "multiply": lambda: korvale.multiply(numpy.identity(4), numpy.zeros((1000, 4, 4))),
            "mix": lambda: korvale.mix(many, many, 1, 2),
            "bounds": lambda: korvale.bounds(many),
            "reverse": lambda: korvale.reverse(many),
            "random": lambda: korvale.random(10000),
        }
        with Ticker() as ticker:
            for name, call in calls.items():
                self.assertGreater(ticker.during(call, 10), 0, name)
            held = list(range(1000))
            self.assertEqual(ticker.during(lambda: sorted(held), 0.2), 0)  # what keeps the lock is found out

    def test_threads_on_their_own_objects_agree(self):
        def work(seed):
            generator = numpy.random.default_rng(seed)
            wave = korvale.Equations("y x")
            wave.function("TWICE", lambda x: 2 * x)
            wave.add("y = SIN(x) * TWICE(x)")
            grid = korvale.RayGrid(CUBE)
            relaxer = korvale.Relaxer(CUBE).keep("lengths")
            rays = generator.normal(size=(300, 3))
            results = [wave.evaluate(0, x=rays[:, 0]), *grid.cast((2, 2, 2), rays),
                       relaxer.run(CUBE.vertices * 1.5, steps=30).points]
            for _ in range(20):
                results.append(korvale.offset(ring(150, generator.uniform(0, 3)), generator.uniform(-4, 4)).points)
            return results

        serial = [work(seed) for seed in range(8)]
        with concurrent.futures.ThreadPoolExecutor(4) as executor:
            for alone, together in zip(serial, executor.map(work, range(8))):
                for a, b in zip(alone, together):
                    numpy.testing.assert_array_equal(a, b)

    def test_threads_on_one_object_take_turns(self):
        grid, relaxer = korvale.RayGrid(CUBE), korvale.Relaxer(CUBE).keep("lengths")
        wave = korvale.Equations("y x")
        wave.function("TWICE", lambda x: 2 * x)
        wave.add("y = TWICE(x) + 1")
        rays = numpy.random.default_rng(1).normal(size=(1000, 3))

        def work(ignored):
            return [*grid.cast((2, 2, 2), rays), relaxer.run(CUBE.vertices * 1.5, steps=40).points,
                    wave.evaluate(0, x=rays[:, 0]), [grid.count((2, 2, 2), ray) for ray in rays[:50]]]

        expected = work(0)
        with concurrent.futures.ThreadPoolExecutor(4) as executor:
            for results in executor.map(work, range(40)):
                for a, b in zip(expected, results):
                    numpy.testing.assert_array_equal(a, b)

    def test_an_exception_in_one_thread_is_that_threads(self):
        def work(k):
            try:
                FAILING.evaluate(0, x=[k])
            except ValueError as error:
                return str(error)

        with concurrent.futures.ThreadPoolExecutor(4) as executor:
            self.assertEqual(set(executor.map(work, range(100))), {"no"})


if __name__ == "__main__":
    unittest.main()
