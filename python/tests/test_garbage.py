"""Tests that what makes no sense is refused by korvale.Error alone, whichever argument it is handed in as."""

import types
import unittest

import korvale
import numpy
from calls import (ABOVE, CUBE, DOWN, EQUATIONS, GRID, HOLE, LINE, MATRICES, PLACE, RELAXER, SECTION, SQUARE,
                   TRIANGLES, VERTICES, X)


class Odd:
    """Has the attributes of objects of other packages, with values that they never have."""

    def __init__(self, **attributes):
        self.__dict__.update(attributes)


GARBAGE = [
    None, "text", b"bytes", 3.5, 7, -1, float("nan"), float("inf"), 2**40, 1j, object(), [], [[]], [[[]]], {}, {1: 2},
    set(), (), ((), ()), [1, 2, 3], [[1, 2], [3]], ["a", "b"], [["a"]], [None], [[None, None, None]], range(5), int,
    types, True, memoryview(b"abc"), lambda: 0, numpy.zeros(0), numpy.zeros((0, 3)), numpy.zeros((3, 0)),
    numpy.zeros((2, 3)), numpy.zeros((3, 3)), numpy.zeros((4, 4)), numpy.zeros((5, 3), complex),
    numpy.full((4, 3), numpy.nan), numpy.full((4, 3), 1e308), numpy.full((4, 3), numpy.inf), numpy.zeros((2, 2, 2)),
    numpy.zeros((2, 3, 3)), numpy.array("x"), numpy.array(["2020-01-01"], "M8[D]"), numpy.zeros(3, [("x", float)]),
    numpy.array([object()]), numpy.ma.masked_array([1, 2, 3]), numpy.float32(1), numpy.arange(12).reshape(4, 3),
    numpy.arange(12, dtype=numpy.uint64).reshape(4, 3), numpy.zeros((4, 3), bool), SQUARE.copy(), SQUARE.tolist(),
    [SQUARE, None], [SQUARE, "x"], CUBE, (VERTICES, TRIANGLES), korvale.offset(SQUARE, 1), PLACE, GRID, RELAXER,
    EQUATIONS, Odd(vertices=1, faces=2), Odd(vertices=1, codes=[1, 2]), Odd(vertices=SQUARE, codes=[1]),
    Odd(exterior=1, interiors=2), Odd(points=SQUARE, cells=3), Odd(coords=None), Odd(geoms=[]),
]


def fresh():
    return korvale.Equations("y x")


# Functions with arguments that they take; each is replaced by everything above in turn.
CALLS = [
    (korvale.offset, SQUARE, 1.0, {"height": 0.0, "keep_vertices": True, "split": True}),
    (korvale.offset_many, [SQUARE, SQUARE], [1.0, 2.0], {"starts": None, "height": 0.0, "keep_vertices": True}),
    (korvale.offset_many, SQUARE, 1.0, {"starts": [0, 4]}),
    (korvale.outlines, SQUARE, {}),
    (korvale.shapes, [SQUARE], {}),
    (korvale.band, LINE, 1.0, {"height": 0.0, "both_sides": False, "up": (0, 0, 1),
                               "closed": False, "miter_limit": 4.0}),
    (korvale.bevel, SQUARE, [(0, 0), (0, 1)], {"split": True}),
    (korvale.tube, LINE, SECTION, {"closed": False, "caps": True}),
    (korvale.triangulate, SQUARE, {}),
    (korvale.flatten, SQUARE, {"closed": True, "by_extremes": False}),
    (korvale.frames, LINE, {"closed": False}),
    (korvale.scatter, CUBE, {"seed": 1, "attributes": None, "triangles": None, "count": 5, "weights": [1] * 12}),
    (korvale.Mesh, VERTICES, TRIANGLES, {}),
    (korvale.RayGrid, VERTICES, TRIANGLES, {"cells": (1, 1, 1)}),
    (GRID.nearest, (1, 1, 9), (0, 0, -1), {}),
    (GRID.hits, (1, 1, 9), (0, 0, -1), {}),
    (GRID.count, (1, 1, 9), (0, 0, -1), {}),
    (GRID.cast, ABOVE, DOWN, {"distances": True, "triangles": True, "counts": True}),
    (korvale.Relaxer, VERTICES, TRIANGLES, {}),
    (korvale.Relaxer, VERTICES, {"edges": [(0, 1)]}),
    (korvale.Relaxer(CUBE).keep, "lengths", 1.0, {}),
    (korvale.Relaxer(CUBE).hold, [0], {}),
    (RELAXER.step, ABOVE, {"steps": 1, "out": None}),
    (RELAXER.run, ABOVE, {"energy": 0.0, "least_drop": 0.0, "out": None}),
    (RELAXER.energy, ABOVE, {}),
    (RELAXER.forces, ABOVE, {}),
    (korvale.Equations, "x y", {}),
    (fresh().declare, "x y", {"reserved": False}),
    (EQUATIONS.add, "y = x", {}),
    (EQUATIONS.evaluate, 0, {"x": X}, {"out": None}),
    (EQUATIONS.evaluate_all, "y", {"x": X}, {}),
    (lambda name, function, arguments: fresh().function(name, function, arguments=arguments), "F", abs, 1, {}),
    (EQUATIONS.table, "RAND", {}),
    (lambda value: EQUATIONS.__setitem__("x", value), 1.0, {}),
    (lambda value: setattr(EQUATIONS, "table_position", value), 1.0, {}),
    (korvale.evaluate, "x", {"x": X}, {}),
    (korvale.Transform, MATRICES[0], {}),
    (PLACE, SQUARE, {"out": None}),
    (PLACE.vectors, SQUARE, {"out": None}),
    (korvale.Transform.scaling, 1, {}),
    (korvale.Transform.from_srt, (1, 2, 3), (1, 2, 3), (1, 2, 3), {}),
    (korvale.Transform.into_frame, (1, 2, 3), (0, 0, 1), (0, 1, 0), {}),
    (korvale.transform_points, MATRICES, SQUARE, {"out": None}),
    (korvale.transform_vectors, MATRICES, SQUARE, {"out": None}),
    *((function, SQUARE + 1.5, {}) for function in (
        korvale.norm, korvale.normalize, korvale.scaling, korvale.translation, korvale.rotation,
        korvale.rotation_in_degrees, korvale.normalize_lines, korvale.bounds, korvale.reverse)),
    *((function, SQUARE + 1.5, HOLE * (1, 2, 3), {}) for function in (
        korvale.dot, korvale.cross, korvale.angle, korvale.line_through, korvale.lines_meet, korvale.join)),
    *((function, SQUARE + 1.5, HOLE * (1, 2, 3), SQUARE * (3, 2, 1) + 1, {}) for function in (
        korvale.from_srt, korvale.inverse_from_srt, korvale.into_frame, korvale.frame_both_ways)),
    (korvale.take_apart, MATRICES, {}),
    (korvale.multiply, MATRICES, MATRICES, {}),
    (korvale.transpose, MATRICES, {}),
    (korvale.boxes_meet, numpy.zeros(6), numpy.zeros(6), {}),
    (korvale.determinant, [(1, 2), (3, 4)], {}),
    (korvale.solve, [(1, 2, 3), (4, 5, 6)], {}),
    (korvale.factorial, 3, {}),
    (korvale.binomial, 3, 2, {}),
    (korvale.power, 3.0, 2, {}),
    (korvale.mix, SQUARE, HOLE, 1.0, 2.0, {"out": None}),
    (korvale.mix4, SQUARE, HOLE, SQUARE, HOLE, 1.0, 2.0, 3.0, 4.0, {"out": None}),
    (korvale.seed, 1, {}),
]


class GarbageTest(unittest.TestCase):
    def test_is_taken_or_refused_by_name(self):
        before = [array.copy() for array in (SQUARE, HOLE, LINE, VERTICES, MATRICES, X)]
        refused = 0
        for function, *arguments, named in CALLS:
            function(*arguments, **named)
            for place in [*range(len(arguments)), *named]:
                for odd in GARBAGE:
                    given, by_name = list(arguments), dict(named)
                    (by_name if isinstance(place, str) else given)[place] = odd
                    try:
                        with numpy.errstate(all="ignore"):
                            function(*given, **by_name)
                    except korvale.Error as error:
                        self.assertTrue(error.function and error.argument and str(error).startswith(error.function))
                        refused += 1
                    except Exception as error:
                        self.fail(f"{function} {place} {odd!r}: {type(error).__name__}: {error}")
        self.assertGreater(refused, 5000)
        for array, known in zip((SQUARE, HOLE, LINE, VERTICES, MATRICES, X), before):
            numpy.testing.assert_array_equal(array, known)  # inputs stay as they were


if __name__ == "__main__":
    unittest.main()
