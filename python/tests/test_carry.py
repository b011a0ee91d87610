"""Tests of values that travel with points."""

import unittest

import korvale
import numpy

# Moved in by 1 its edge of 0.28 is lost, and vertex 2 merges into 3.
CHAMFERED = numpy.array([(0, 0), (4, 0), (4, 3.8), (3.8, 4), (0, 4)])
NAMES = numpy.array(["south", "east", "chamfer", "north", "west"])
HEAT = numpy.array([0, 1, 2, 4, 8], numpy.float32)
SQUARE = numpy.array([(0, 0), (4, 0), (4, 4), (0, 4)], float)


class CarryTest(unittest.TestCase):
    def test_gives_the_array_itself_where_points_are_the_vertices(self):
        for distance in (1, -1):  # also where one was removed and is kept
            self.assertIs(korvale.carry(NAMES, korvale.offset(CHAMFERED, distance)), NAMES)
        self.assertIs(korvale.carry(NAMES, korvale.offset(CHAMFERED, 1, miter_limit=4)), NAMES)
        self.assertIs(korvale.carry(HEAT, korvale.offset(CHAMFERED, 1), mix=True), HEAT)

    def test_takes_rows_of_any_kind(self):
        border = korvale.offset(CHAMFERED, -1, keep_vertices=False)
        records = numpy.array([(1, "a"), (2, "b"), (3, "c"), (4, "d"), (5, "e")], "i4, U1")
        self.assertEqual(korvale.carry(records, border).tolist(), [(1, "a"), (2, "b"), (4, "d"), (5, "e")])
        self.assertEqual(korvale.carry(["a", "b", "c", "d", "e"], border).tolist(), ["a", "b", "d", "e"])
        colours = numpy.arange(15, dtype=numpy.uint8).reshape(5, 3)
        self.assertEqual(korvale.carry(colours, border).tolist(), colours[[0, 1, 3, 4]].tolist())
        self.assertEqual(korvale.carry(colours, border).dtype, numpy.uint8)

    def test_gives_all_points_of_a_join_the_row_of_their_vertex(self):
        border = korvale.offset(CHAMFERED, 1, join="bevel")
        self.assertEqual(korvale.carry(NAMES, border).tolist(), NAMES.repeat(2).tolist())

    def test_mixes_what_merged(self):
        mixed = korvale.carry(HEAT, korvale.offset(CHAMFERED, -1), mix=True)
        self.assertEqual((mixed.tolist(), mixed.dtype), ([0, 1, 3, 3, 8], numpy.float32))
        self.assertEqual(HEAT.tolist(), [0, 1, 2, 4, 8])
        left = korvale.carry(HEAT.astype(int), korvale.offset(CHAMFERED, -1, join="round"), mix=True)
        self.assertEqual((left.tolist(), left.dtype), ([0, 1, 3, 8], numpy.float64))
        rows = numpy.column_stack([HEAT, -HEAT])
        self.assertEqual(korvale.carry(rows, korvale.offset(CHAMFERED, -1), mix=True)[2].tolist(), [3, -3])

    def test_mixes_as_numpy_does_over_what_is_one_vertex_in_the_end(self):
        random = numpy.random.default_rng(5)
        for _ in range(50):
            n = int(random.integers(5, 60))
            around = 2 * numpy.pi * numpy.arange(n) / n
            outline = (random.uniform(1, 9, n) * [numpy.cos(around), numpy.sin(around)]).T
            border = korvale.offset(outline, -random.uniform(0.2, 1.5))
            values = random.uniform(size=n)
            heirs = numpy.arange(n)
            for i in range(n):
                while border.merged_into[heirs[i]] != heirs[i]:
                    heirs[i] = border.merged_into[heirs[i]]
            expected = [values[heirs == heirs[i]].mean() for i in range(n)]
            numpy.testing.assert_allclose(korvale.carry(values, border, mix=True), expected, rtol=1e-14)

    def test_takes_rows_of_an_outline_and_its_holes(self):
        plate = korvale.offset([SQUARE, CHAMFERED / 2 + 1], 0.5, keep_vertices=False)
        outer, hole = korvale.carry(numpy.arange(9), plate)
        self.assertEqual(outer.tolist(), [0, 1, 2, 3])
        self.assertEqual(hole.tolist(), [4, 5, 7, 8])

    def test_takes_rows_of_many_outlines(self):
        flat = numpy.vstack([[(9, 9)], CHAMFERED, CHAMFERED])
        borders = korvale.offset_many(flat, [1, -1], starts=[1, 6, 11], keep_vertices=False)
        values = numpy.arange(11)
        self.assertEqual(korvale.carry(values, borders).tolist(), [1, 2, 3, 4, 5, 6, 7, 9, 10])
        self.assertEqual(korvale.carry(values, borders, mix=True).tolist(), [1, 2, 3, 4, 5, 6, 7, 8.5, 10])
        with self.assertRaisesRegex(korvale.Error, "values must have at least 11 rows, .* but it has 10"):
            korvale.carry(values[:10], borders)
        self.assertEqual(len(korvale.carry([], korvale.offset_many([], 1))), 0)
        closed = [numpy.vstack([CHAMFERED, CHAMFERED[:1]])] * 2  # each repeats its first point
        self.assertEqual(korvale.carry(numpy.arange(12), korvale.offset_many(closed, -1), mix=True).tolist(),
                         [0 + 2.5, 1, 2.5, 2.5, 4, 8.5, 7, 8.5, 8.5, 10])

    def test_takes_rows_to_all_pieces(self):
        waist = [(0, 0), (9, 0), (11, 4), (13, 0), (22, 0), (22, 9), (13, 9), (11, 5), (9, 9), (0, 9)]
        rings = korvale.offset(waist, -1, pieces=True)
        self.assertEqual(korvale.carry(numpy.arange(10), rings).tolist(), rings.sources.tolist())
        with self.assertRaisesRegex(korvale.Error, "carry: mix must be False where nothing tells what merged"):
            korvale.carry(numpy.arange(10), rings, mix=True)

    def test_takes_rows_along_a_line_and_back(self):
        road = korvale.band([(0, 0), (4, 0), (8, 3)], 0.5, both_sides=True)
        self.assertEqual(korvale.carry(["a", "b", "c"], road).tolist(), list("abccba"))
        self.assertEqual(road.sources.dtype, numpy.int32)

    def test_refuses_what_has_no_row_for_each_point(self):
        border = korvale.offset(SQUARE, 1)
        with self.assertRaisesRegex(korvale.Error, "carry: values must have 4 rows, one for each point of the outline, "
                                                   "but it has 5"):
            korvale.carry(NAMES, border)
        with self.assertRaisesRegex(korvale.Error, "carry: values must be numbers where they are mixed, but they are"):
            korvale.carry(NAMES[:4], border, mix=True)
        with self.assertRaisesRegex(korvale.Error, "carry: result must be what offset, offset_many or band has made, "
                                                   "but it is of type Mesh"):
            korvale.carry(NAMES, korvale.bevel(SQUARE, [(0, 0), (0, 1)]))


if __name__ == "__main__":
    unittest.main()
