"""Tests of rays into triangles."""

import concurrent.futures
import copy
import pickle
import unittest

import korvale
import numpy
from test_shapes import RefusingTest

CUBE = korvale.bevel([(0, 0), (2, 0), (2, 2), (0, 2)], [(0, 0), (0, 2)])


class RayGridTest(RefusingTest):
    def setUp(self):
        self.grid = korvale.RayGrid(CUBE)

    def test_finds_the_nearest_and_all(self):
        down = (0, 0, -1)
        hit = self.grid.nearest((0.5, 0.2, 7), down)
        self.assertEqual(hit.distance, 5)
        self.assertTrue((CUBE.vertices[CUBE.triangles[hit.triangle], 2] == 2).all())
        hits = self.grid.hits((0.5, 0.2, 7), down)
        self.assertEqual([h.distance for h in hits], [5, 7])
        self.assertEqual(hits[0], hit)
        self.assertEqual(self.grid.count((0.5, 0.2, 7), down), 2)
        self.assertEqual(self.grid.count((0.5, 0.2, 1), down), 1)
        self.assertIsNone(self.grid.nearest((9, 9, 7), down))
        self.assertEqual(self.grid.hits((9, 9, 7), down), [])

    def test_is_made_of_what_there_is(self):
        vertices, triangles = CUBE
        corners = vertices[triangles]
        quads = [(0, 1, 2, 3)]
        for grid in (korvale.RayGrid(vertices, triangles), korvale.RayGrid((vertices, triangles)),
                     korvale.RayGrid(corners), korvale.RayGrid(corners.reshape(-1, 9)),
                     korvale.RayGrid(corners.tolist())):
            self.assertEqual(grid, self.grid)
        square = korvale.RayGrid([(0, 0), (2, 0), (2, 2), (0, 2)], quads, cells=(2, 3, 1))
        self.assertEqual((len(square), square.faces.tolist(), square.cells), (2, [0, 0], (2, 3, 1)))
        self.assertEqual(self.grid.faces.tolist(), list(range(12)))
        self.assertEqual(len(korvale.RayGrid(numpy.zeros((0, 9)))), 0)

    def test_casts_as_single_rays_do(self):
        generator = numpy.random.default_rng(5)
        origins = generator.uniform(-1, 3, (500, 3))
        directions = generator.normal(size=(500, 3))
        cast = self.grid.cast(origins, directions, weights=True)
        for i in range(500):
            hit = self.grid.nearest(origins[i], directions[i])
            expected = (numpy.inf, -1) if hit is None else hit
            self.assertEqual((cast.distances[i], cast.triangles[i]), tuple(expected[:2]))
            if hit is not None:
                self.assertEqual(tuple(cast.weights[i]), hit.weights)
                self.assertEqual(hit.corners, tuple(CUBE.triangles[hit.triangle]))
                numpy.testing.assert_allclose(hit.weights @ CUBE.vertices[list(hit.corners)], origins[i] + hit.distance
                                              * directions[i] / numpy.linalg.norm(directions[i]), atol=1e-9)
            self.assertEqual(cast.counts[i], self.grid.count(origins[i], directions[i]))

    def test_casts_from_one_point_or_in_one_direction(self):
        points = [(0.5, 0.2, 7), (1, 0.3, 7), (9, 0, 7)]
        self.assertEqual(self.grid.cast(points, (0, 0, -1)).distances.tolist(), [5, 5, numpy.inf])
        fan = self.grid.cast((1, 0.9, 1), [(0, 0, 1), (1, 0, 0)])
        self.assertEqual(fan.distances.tolist(), [1, 1])
        self.assertEqual(fan.counts.tolist(), [1, 1])

    def test_writes_what_is_wanted_where_it_is_wanted(self):
        distances = numpy.empty(2)
        cast = self.grid.cast([(0.5, 0.2, 7), (9, 0, 7)], (0, 0, -1), distances=distances, triangles=False,
                              counts=False)
        self.assertIs(cast.distances, distances)
        self.assertEqual(distances.tolist(), [5, numpy.inf])
        self.assertEqual(cast[1:], (None, None, None))

    def test_tells_of_anything_met_and_of_what_is_inside(self):
        self.assertIs(self.grid.any((0.5, 0.2, 7), (0, 0, -1)), True)
        self.assertIs(self.grid.any((0.5, 0.2, 7), (0, 0, -1), 4.9), False)
        points = numpy.random.default_rng(6).uniform(-1, 3, (5000, 3))
        inside = ((points > 0) & (points < 2)).all(axis=1)
        numpy.testing.assert_array_equal(self.grid.contains(points), inside)

    def test_refuses_to_tell_the_inside_of_open_meshes(self):
        with self.assertRaisesRegex(korvale.Error,
                                    "RayGrid.contains: the grid must be of closed meshes, but 4 edges are open, "
                                    "one of them between points 0 and 1"):
            korvale.RayGrid([(0, 0), (2, 0), (2, 2), (0, 2)], [(0, 1, 2, 3)]).contains([(1, 1, 1)])

    def test_answers_threads_at_the_same_time(self):
        origins = numpy.random.default_rng(7).uniform(-1, 3, (20000, 3))
        alone = self.grid.cast(origins, (1, 2, 3))
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            for cast in pool.map(lambda _: self.grid.cast(origins, (1, 2, 3)), range(8)):
                numpy.testing.assert_array_equal(cast.counts, alone.counts)

    def test_tells_of_progress_and_stops_when_asked(self):
        origins = numpy.tile([(0.5, 0.2, 7.0)], (40000, 1))
        told = []
        whole = self.grid.cast(origins, (0, 0, -1), progress=told.append)
        self.assertEqual(told, [13333, 26666, 40000])
        numpy.testing.assert_array_equal(whole.distances, 5)
        counts = numpy.full(40000, 7, numpy.int32)
        self.grid.cast(origins, (0, 0, -1), counts=counts, progress=lambda done: False)
        self.assertEqual((counts[:13333] == 2).all() and (counts[13333:] == 7).all(), True)
        self.grid.contains(origins, progress=told.append)
        self.assertEqual((len(told), told[-1]), (3 + 20, 40000))

    def test_copies_and_pickles(self):
        square = korvale.RayGrid([(0, 0), (2, 0), (2, 2), (0, 2)], [(0, 1, 2, 3)])
        for grid in (self.grid, square):
            for twin in (copy.copy(grid), copy.deepcopy(grid), pickle.loads(pickle.dumps(grid))):
                self.assertEqual(twin, grid)
                self.assertEqual(twin.nearest((0.5, 0.2, 7), (0, 0, -1)), grid.nearest((0.5, 0.2, 7), (0, 0, -1)))
        self.assertNotEqual(self.grid, square)
        self.assertEqual(repr(square), "<korvale.RayGrid of 2 triangles in 1x1x1 cells>")

    def test_copies_corners_unless_told_not_to(self):
        corners = CUBE.vertices[CUBE.triangles].reshape(-1, 9)
        own = korvale.RayGrid(corners)
        borrowed = korvale.RayGrid(corners, copy=False)
        self.assertFalse(numpy.shares_memory(own.corners, corners))
        self.assertEqual(borrowed.corners.ctypes.data, corners.ctypes.data)
        for triangles in (corners.reshape(-1, 3, 3), memoryview(corners)):
            grid = korvale.RayGrid(triangles, copy=False)
            self.assertEqual(grid.corners.ctypes.data, corners.ctypes.data)

    def test_refuses_to_read_in_place_what_it_would_copy(self):
        corners = CUBE.vertices[CUBE.triangles].reshape(-1, 9)
        for triangles in (corners.astype(numpy.float32), corners.tolist(), numpy.asfortranarray(corners),
                          corners[::2], corners.astype(">f8")):
            self.assertRefuses("RayGrid: mesh must be float64 in C order where copy is False, but it would be copied",
                               lambda: korvale.RayGrid(triangles, copy=False))
        self.assertEqual(len(korvale.RayGrid(numpy.zeros((0, 9)), copy=False)), 0)

    def test_says_what_it_refuses(self):
        self.assertRefuses("RayGrid.nearest: origin must be a point, (3,) or (2,), but its shape is (4,)",
                           lambda: self.grid.nearest((1, 2, 3, 4), (0, 0, 1)))
        self.assertRefuses("RayGrid.cast: directions must be 1 or as many as the 2 origins, but there are 3",
                           lambda: self.grid.cast(numpy.zeros((2, 3)), numpy.ones((3, 3))))
        self.assertRefuses("RayGrid.cast: directions must be finite, but its row 1 is [nan, 0.0, 0.0]",
                           lambda: self.grid.cast((0, 0, 0), [(1, 0, 0), (numpy.nan, 0, 0)]))
        self.assertRefuses("RayGrid: mesh must be corners of triangles, (T, 3, 3) or (T, 9), but its shape is (4, 2)",
                           lambda: korvale.RayGrid(numpy.zeros((4, 2))))
        self.assertRefuses("RayGrid: triangles must name vertices 0 to 7, but -1 is among them",
                           lambda: korvale.RayGrid(CUBE.vertices, [(0, 1, -1)]))
        self.assertRefuses("RayGrid: cells must be 1 to 2147483647, but it is 0",
                           lambda: korvale.RayGrid(CUBE, cells=(1, 0, 1)))
        self.assertRefuses("RayGrid.cast: counts must be a writable array of int32, (1,), but it is int64 (1,)",
                           lambda: self.grid.cast((0, 0, 0), (0, 0, 1), counts=numpy.zeros(1, int)))


if __name__ == "__main__":
    unittest.main()
