"""Tests of the Python module, run by `./dev python`."""

import unittest

import korvale
import numpy

SQUARE = [[0, 0, 0], [4, 0, 0], [4, 4, 0], [0, 4, 0]]


class ArrayTest(unittest.TestCase):
    def test_numpy_sees_the_arrays_own_memory(self):
        array = korvale.Array([[1, 2], [3, 4], [5, 6]])
        view = numpy.asarray(array)
        self.assertEqual(view.shape, (3, 2))
        array.reverse()
        self.assertEqual(view.tolist(), [[5, 6], [3, 4], [1, 2]])
        view[0, 0] = 7
        self.assertEqual(numpy.asarray(array.bounds()).tolist(), [[1, 2], [7, 6]])

    def test_numpy_keeps_the_array_alive(self):
        view = numpy.asarray(korvale.Array(numpy.arange(30000.0).reshape(-1, 3)))
        self.assertEqual(view.sum(), 30000 * 29999 / 2)

    def test_takes_any_numpy_array_by_value(self):
        source = numpy.arange(12).reshape(4, 3)[::2]
        array = korvale.Array(source)
        source[0, 0] = 100
        self.assertEqual(numpy.asarray(array).tolist(), [[0, 1, 2], [6, 7, 8]])

    def test_joins_and_mixes(self):
        a = korvale.Array([[1, 2], [3, 4]])
        b = korvale.Array([[10, 20], [30, 40]])
        self.assertEqual(numpy.asarray(a.joined(b)).tolist(), [[1, 2], [3, 4], [10, 20], [30, 40]])
        self.assertEqual(numpy.asarray(a.mixed(b, 2, 0.5)).tolist(), [[7, 14], [21, 28]])

    def test_transforms_points(self):
        matrix = numpy.identity(4)
        matrix[:3, 3] = [1, 2, 3]
        moved = korvale.Array(SQUARE).transformed(matrix)
        self.assertEqual(numpy.asarray(moved).tolist(), [[1, 2, 3], [5, 2, 3], [5, 6, 3], [1, 6, 3]])

    def test_refuses_wrong_shapes(self):
        points = korvale.Array(SQUARE)
        flat = korvale.Array([1, 2, 3])
        for call in (
            lambda: korvale.Array([]),
            lambda: korvale.Array(numpy.zeros((2, 2, 2))),
            lambda: points.joined(flat),
            lambda: points.mixed(flat, 1, 1),
            lambda: points.transformed(numpy.zeros((3, 3))),
            lambda: flat.transformed(numpy.identity(4)),
        ):
            with self.assertRaises(ValueError):
                call()


class OffsetTest(unittest.TestCase):
    def test_moves_the_edges_of_a_square(self):
        border = korvale.offset(SQUARE, 0.5)
        numpy.testing.assert_allclose(
            border, [[-0.5, -0.5, 0], [4.5, -0.5, 0], [4.5, 4.5, 0], [-0.5, 4.5, 0]], atol=1e-12
        )

    def test_lifts_by_the_height(self):
        border = korvale.offset(SQUARE, -1, height=2)
        numpy.testing.assert_allclose(border, [[1, 1, 2], [3, 1, 2], [3, 3, 2], [1, 3, 2]], atol=1e-12)

    def test_keeps_a_point_for_each_collapsed_one_when_asked(self):
        self.assertEqual(korvale.offset(SQUARE, -10, keep_collapsed=True).shape, (4, 3))
        self.assertLess(len(korvale.offset(SQUARE, -10)), 4)

    def test_moves_holes_the_other_way(self):
        hole = [[1, 1, 0], [3, 1, 0], [3, 3, 0], [1, 3, 0]]
        outer, inner = korvale.offset_with_holes([SQUARE, hole], 0.25)
        numpy.testing.assert_allclose(outer.max(axis=0), [4.25, 4.25, 0], atol=1e-12)
        numpy.testing.assert_allclose(inner.max(axis=0), [2.75, 2.75, 0], atol=1e-12)

    def test_refuses_what_is_no_outline(self):
        for outline in ([[0, 0], [1, 0], [1, 1]], []):
            with self.assertRaises(ValueError):
                korvale.offset(outline, 1)
        with self.assertRaises(ValueError):
            korvale.offset(SQUARE, float("nan"))
        with self.assertRaises(ValueError):
            korvale.offset_with_holes([], 1)
        with self.assertRaises(ValueError):
            korvale.offset_with_holes([SQUARE, [[0, 0]]], 1)


class EquationsTest(unittest.TestCase):
    def test_evaluates_text(self):
        equations = korvale.Equations()
        equations.declare("x y")
        equation = equations.add("y = 3 * x + 1")
        equations["x"] = 2
        self.assertEqual(equations.evaluate(equation), 7)
        self.assertEqual(equations["y"], 7)

    def test_evaluates_all_in_order(self):
        equations = korvale.Equations()
        equations.declare("a b c")
        self.assertEqual(equations.add("b = a + 1"), 0)
        self.assertEqual(equations.add("c = b * b"), 1)
        equations["a"] = 4
        equations.evaluate_all()
        self.assertEqual(equations["c"], 25)

    def test_refuses_what_it_cannot_read(self):
        equations = korvale.Equations()
        equations.declare("x")
        for text in ("x", "x = (1", "z = 1", "x = 1 +"):
            with self.assertRaises(ValueError):
                equations.add(text)
        with self.assertRaises(ValueError):
            equations.declare("SIN")
        with self.assertRaises(KeyError):
            equations["nobody"]
        with self.assertRaises(IndexError):
            equations.evaluate(100)


if __name__ == "__main__":
    unittest.main()
