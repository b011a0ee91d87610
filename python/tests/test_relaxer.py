"""Tests of meshes that remember their shape."""

import copy
import pickle
import signal
import unittest

import korvale
import numpy
from test_shapes import RefusingTest

CUBE = korvale.bevel([(0, 0), (2, 0), (2, 2), (0, 2)], [(0, 0), (0, 2)])


def stretched():
    return CUBE.vertices * (1.5, 1, 1)


class Bar:
    """What of a progress bar is used."""

    def __init__(self, total=None):
        self.total, self.n, self.closed = total, 0, False
        type(self).latest = self

    def update(self, n=1):
        self.n += n

    def close(self):
        self.closed = True


class RelaxerTest(RefusingTest):
    def setUp(self):
        self.relaxer = korvale.Relaxer(CUBE).keep("lengths")

    def test_brings_a_stretched_cube_back(self):
        points = stretched()
        result = self.relaxer.run(points, steps=2000)
        self.assertLess(result.energy, 1e-3 * self.relaxer.energy(points))
        self.assertEqual(self.relaxer.energy(CUBE.vertices), 0)
        self.assertEqual(points.tolist(), stretched().tolist())

    def test_runs_as_many_steps_do(self):
        run = self.relaxer.run(stretched(), steps=7)
        step = self.relaxer.step(stretched(), 7)
        self.assertEqual((run.steps, run.stop), (7, "steps"))
        numpy.testing.assert_array_equal(run.points, step.points)
        self.assertEqual(run.energy, step.energy)

    def test_works_in_place_when_asked(self):
        points = stretched()
        result = self.relaxer.run(points, steps=5, out=points)
        self.assertIs(result.points, points)
        numpy.testing.assert_array_equal(points, self.relaxer.step(stretched(), 5).points)
        other = numpy.empty_like(points)
        self.relaxer.step(stretched(), 5, out=other)
        numpy.testing.assert_array_equal(points, other)

    def test_holds_points(self):
        for which in ([0, 3], numpy.array([True, False, False, True] + [False] * 4)):
            result = self.relaxer.hold(which).run(stretched(), steps=20)
            numpy.testing.assert_array_equal(result.points[[0, 3]], stretched()[[0, 3]])
            self.assertFalse((result.points[1] == stretched()[1]).all())
        self.relaxer.hold([])
        self.assertEqual(repr(self.relaxer), "<korvale.Relaxer of 8 points, keeps lengths>")

    def test_stops_for_each_reason(self):
        points = stretched()
        self.assertEqual(self.relaxer.run(CUBE.vertices).stop, "energy")
        self.assertEqual(self.relaxer.run(points, steps=3).stop, "steps")
        self.assertEqual(self.relaxer.run(points, least_drop=0.9).stop, "stalled")
        self.assertEqual(self.relaxer.run(points, progress=lambda step, energy: step < 4)[1::2], (4, "cancelled"))
        held = korvale.Relaxer(CUBE).keep("volume").hold(numpy.ones(8, bool)).run(points)
        self.assertEqual((held.steps, held.stop), (0, "no_force"))
        held = self.relaxer.hold(numpy.ones(8, bool)).run(points)
        self.assertEqual((held.steps, held.stop), (0, "held"))
        numpy.testing.assert_array_equal(held.points, points)

    def test_tells_of_progress(self):
        told = []
        self.relaxer.run(stretched(), steps=3, progress=lambda *news: told.append(news))
        self.assertEqual([step for step, energy in told], [1, 2, 3])
        self.assertEqual(told[-1][1], self.relaxer.step(stretched(), 3).energy)
        bar = Bar()
        self.relaxer.run(stretched(), steps=5, progress=bar)
        self.assertEqual((bar.n, bar.closed), (5, False))
        self.relaxer.run(stretched(), steps=5, progress=Bar)
        self.assertEqual((Bar.latest.total, Bar.latest.n, Bar.latest.closed), (5, 5, True))

    def test_tells_of_steps_and_takes_them_back(self):
        told, points = [], stretched()
        moved = self.relaxer.step(points, 1000, progress=told.append)
        self.assertEqual(moved, self.relaxer.step(points, 1000))
        self.assertEqual((told[-1], told == sorted(told)), (1000, True))
        circle = numpy.linspace(0, 2 * numpy.pi, 2000, endpoint=False)
        path = numpy.stack([9 * numpy.cos(circle), 9 * numpy.sin(circle), 0 * circle], axis=1)
        tube = korvale.tube(path, [(1, 0), (0, 1), (-1, 0), (0, -1)], closed=True)
        points = tube.vertices * (1.5, 1, 1)
        before = points.copy()
        with self.assertRaisesRegex(korvale.Error, "Relaxer.step: progress must go on, but it has stopped the work"):
            korvale.Relaxer(tube).keep("lengths").step(points, 10**6, out=points, progress=lambda done: False)
        numpy.testing.assert_array_equal(points, before)

    def test_passes_on_what_progress_raises(self):
        def fail(step, energy):
            raise RuntimeError("enough")

        with self.assertRaisesRegex(RuntimeError, "enough"):
            self.relaxer.run(stretched(), progress=fail)
        self.assertEqual(self.relaxer.run(stretched(), steps=1).steps, 1)

    def test_ends_when_interrupted(self):
        def interrupt(*ignored):
            raise KeyboardInterrupt

        circle = numpy.linspace(0, 2 * numpy.pi, 2000, endpoint=False)
        path = numpy.stack([9 * numpy.cos(circle), 9 * numpy.sin(circle), 0 * circle], axis=1)
        tube = korvale.tube(path, [(1, 0), (0, 1), (-1, 0), (0, -1)], closed=True)
        relaxer = korvale.Relaxer(tube).keep("lengths")
        before = signal.signal(signal.SIGALRM, interrupt)
        signal.setitimer(signal.ITIMER_REAL, 0.3)
        try:
            with self.assertRaises(KeyboardInterrupt):
                relaxer.run(tube.vertices * (1.5, 1, 1), steps=10**9)
        finally:
            signal.setitimer(signal.ITIMER_REAL, 0)
            signal.signal(signal.SIGALRM, before)

    def test_refuses_to_be_called_by_its_own_progress(self):
        with self.assertRaisesRegex(korvale.Error, "Relaxer.energy: the object must be free"):
            self.relaxer.run(stretched(), progress=lambda step, energy: self.relaxer.energy(CUBE.vertices))

    def test_takes_edges_and_faces_of_any_number_of_corners(self):
        chain = korvale.Relaxer([(0, 0), (1, 0), (2, 0)], edges=[(0, 1), (1, 2)]).keep("lengths", 2)
        self.assertEqual(chain.edges.tolist(), [[0, 1], [1, 2]])
        self.assertEqual(chain.kept, {"lengths": 2.0})
        square = korvale.Relaxer([(0, 0), (1, 0), (1, 1), (0, 1)], [(0, 1, 2, 3)])
        self.assertEqual(len(square.edges), 4)
        self.assertEqual(square.keep("area").energy([(0, 0), (2, 0), (2, 1), (0, 1)]) > 0, True)

    def test_gives_forces(self):
        forces = self.relaxer.forces(stretched())
        self.assertEqual(forces.shape, (8, 3))
        self.assertTrue((forces[stretched()[:, 0] > 1, 0] < 0).all())
        self.assertFalse(self.relaxer.forces(CUBE.vertices).any())

    def test_copies_and_pickles(self):
        self.relaxer.keep("volume", 1e-4).hold([2])
        for twin in (copy.copy(self.relaxer), copy.deepcopy(self.relaxer), pickle.loads(pickle.dumps(self.relaxer))):
            self.assertEqual(twin, self.relaxer)
            numpy.testing.assert_array_equal(twin.step(stretched(), 9).points,
                                             self.relaxer.step(stretched(), 9).points)
        self.assertNotEqual(self.relaxer, korvale.Relaxer(CUBE))
        chain = korvale.Relaxer([(0, 0), (1, 0)], edges=[(0, 1)]).keep("lengths")
        self.assertEqual(pickle.loads(pickle.dumps(chain)), chain)

    def test_says_what_it_refuses(self):
        self.assertRefuses('Relaxer.keep: measure must be lengths, angles, volume or area, but it is "size"',
                           lambda: self.relaxer.keep("size"))
        self.assertRefuses("Relaxer.keep: weight must be finite and above 0, but it is 0",
                           lambda: self.relaxer.keep("area", 0))
        self.assertRefuses("Relaxer.keep: measure must be one that the mesh has, but a volume is that of a closed "
                           "mesh, and 4 edges are open, one of them between points 0 and 1",
                           lambda: korvale.Relaxer([(0, 0), (1, 0), (1, 1), (0, 1)], [(0, 1, 2, 3)]).keep("volume"))
        self.assertRefuses("Relaxer.run: points must be 8 like the mesh's, but there are 3",
                           lambda: self.relaxer.run(numpy.zeros((3, 3))))
        self.assertRefuses("Relaxer.hold: which must be truths (8,) or numbers of points, but its shape is (3,)",
                           lambda: self.relaxer.hold([True, False, True]))
        self.assertRefuses("Relaxer.hold: which must name vertices 0 to 7, but 9 is among them",
                           lambda: self.relaxer.hold([9]))
        for move in (korvale.Relaxer(CUBE).run, korvale.Relaxer(CUBE).step):
            self.assertRefuses(f"Relaxer.{move.__name__}: the relaxer must keep a measure, but it keeps none",
                               lambda: move(stretched()))
        bad = stretched()
        bad[3, 1] = numpy.nan
        self.assertRefuses(f"Relaxer.step: points must be finite, but its row 3 is {bad[3].tolist()}",
                           lambda: self.relaxer.step(bad))
        self.assertRefuses("Relaxer: mesh must be a mesh, a tuple (vertices, triangles), or both as two arguments, "
                           "but it is 5", lambda: korvale.Relaxer(5))


if __name__ == "__main__":
    unittest.main()
