"""Tests that an interrupt from the keyboard ends every long call soon and leaves nothing behind.

Each call would take far longer than it may take to end: a look at the clock tells.
"""

import os
import signal
import threading
import time
import unittest

import korvale
import numpy
from test_sound import resident_kib, ring

# Seconds of the processor, which count alike on a machine that does other things as well.
SOON = 0.2


def coast(n):
    """An outline of n points with 900 bays."""
    turn = numpy.linspace(0, 2 * numpy.pi, n, endpoint=False)
    radius = 1 + 0.1 * numpy.sin(900 * turn)
    return numpy.column_stack([radius * numpy.cos(turn), radius * numpy.sin(turn)])


def islands(n):
    """n outlines apart from each other."""
    return [coast(10) + (3 * (k % 400), 3 * (k // 400)) for k in range(n)]


def made():
    """Long calls by their names: more than some seconds each."""
    generator = numpy.random.default_rng(8)
    grid = korvale.RayGrid(generator.uniform(-1, 1, (3000, 9)))
    solids = korvale.RayGrid(generator.uniform(-1, 1, (3000, 3)),  # tetrahedra
                             (4 * numpy.arange(750)[:, None] + [0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3]).reshape(-1, 3))
    tube = korvale.tube(ring(20000), ring(8) / 100)
    relaxer = korvale.Relaxer(tube).keep("lengths")
    points = numpy.zeros((5000000, 3))
    wave = korvale.Equations("y x z")
    wave.function("SLOWLY", lambda x: x)
    for text in ("y = " + " + ".join(["SIN(x)"] * 20), "y = RAND + " + " + ".join(["SIN(x)"] * 20), "z = SLOWLY(x)"):
        wave.add(text)
    x = numpy.zeros(40000000)
    outline = ring(300000)
    many, starts = numpy.tile(ring(300), (20000, 1)), numpy.arange(20001) * 300
    walk = generator.normal(size=(200000, 2)).cumsum(axis=0)
    wall, layers = coast(20000), [(-1e-6 * height, height) for height in range(200)]
    shore, sea = coast(2000000), islands(200000)
    return {
        "offset": lambda: korvale.offset(outline, 1),
        "offset with a hole": lambda: korvale.offset([outline, outline / 2], 1),
        "offset_many": lambda: korvale.offset_many(many, 1, starts=starts),
        "band": lambda: korvale.band(walk, 2),
        "bevel": lambda: korvale.bevel(wall, layers),
        "triangulate": lambda: korvale.triangulate(shore),
        "shapes": lambda: korvale.shapes(sea),
        "RayGrid.cast": lambda: grid.cast(points, (1, 2, 3)),
        "RayGrid.contains": lambda: solids.contains(points),
        "Relaxer.step": lambda: relaxer.step(tube.vertices * (1.5, 1, 1), 10**6),
        "Relaxer.run": lambda: relaxer.run(tube.vertices * (1.5, 1, 1), steps=10**6),
        "Equations.evaluate": lambda: wave.evaluate(0, x=x),
        "Equations.evaluate, row by row": lambda: wave.evaluate(1, x=x),
        "Equations.evaluate, a function in Python": lambda: wave.evaluate(2, x=x),
        "Equations.evaluate_all": lambda: wave.evaluate_all("y z", x=x),
    }


class ProgressTest(unittest.TestCase):
    def test_of_outlines_and_bands_is_told_in_thousandths(self):
        outline = ring(100000)
        for work in (korvale.offset, korvale.band):
            told = []
            result = work(outline, 1, progress=told.append)
            self.assertEqual(result, work(outline, 1))
            self.assertEqual((told[-1], told == sorted(told), len(told) > 1), (1000, True, True))
            with self.assertRaisesRegex(korvale.Error, f"{work.__name__}: progress must go on, but it has stopped the "
                                                       "work"):
                work(outline, 1, progress=lambda done: False)

    def test_of_solids_and_shapes_is_told_in_thousandths(self):
        wall, path, sea = coast(20000), numpy.arange(1500000)[:, None] * (1, 0, 0), islands(60000)
        for name, work in {
            "triangulate": lambda progress: korvale.triangulate(coast(500000), progress=progress),
            "shapes": lambda progress: korvale.shapes(sea, progress=progress),
            "bevel": lambda progress: korvale.bevel(wall, [(-1e-6 * k, k) for k in range(30)], progress=progress),
            "tube": lambda progress: korvale.tube(path, ring(4), progress=progress),
        }.items():
            with self.subTest(name):
                told = []
                work(told.append)
                self.assertEqual((told[-1], told == sorted(told), len(told) > 1), (1000, True, True))
                with self.assertRaisesRegex(korvale.Error, f"{name}: progress must go on, but it has stopped the work"):
                    work(lambda done: False)

    def test_of_making_a_grid_is_told_in_thousandths(self):
        corners = numpy.random.default_rng(9).normal(size=(1000000, 9))
        told = []
        grid = korvale.RayGrid(corners, progress=told.append)
        self.assertEqual((len(grid), told[-1], told == sorted(told), len(told) > 1), (1000000, 1000, True, True))


class InterruptTest(unittest.TestCase):
    def setUp(self):
        # Python ignores interrupts where it was started in the background.
        before = signal.signal(signal.SIGINT, signal.default_int_handler)
        self.addCleanup(signal.signal, signal.SIGINT, before)

    def interrupted(self, call):
        """Seconds of work from the interrupt to the end of a call."""
        sent = []

        def interrupt():
            sent.append(time.process_time())
            os.kill(os.getpid(), signal.SIGINT)

        timer = threading.Timer(0.3, interrupt)
        timer.start()
        with self.assertRaises(KeyboardInterrupt):
            call()
        taken = time.process_time() - sent[0]
        timer.join()
        return taken

    def growth(self, call):
        """KiB by which the process grows; what is lost is lost every time, what the heap keeps it keeps once."""
        before = resident_kib()
        self.assertLess(self.interrupted(call), SOON)
        return resident_kib() - before

    def test_ends_every_long_call_soon(self):
        for name, call in made().items():
            with self.subTest(name):
                self.assertLess(self.interrupted(call), SOON)
                self.assertLess(self.interrupted(call), SOON)  # the object is free for another call
                self.assertLess(min(self.growth(call) for _ in range(4)), 20000)


if __name__ == "__main__":
    unittest.main()
