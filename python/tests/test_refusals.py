"""Tests that whatever is refused is refused by the name of the function that was called and of its argument."""

import inspect
import math
import unittest

import korvale
import numpy
from calls import ABOVE, CORNERS, CUBE, DOWN, HOLE, LINE, MATRICES, SECTION, SQUARE, TRIANGLES, VERTICES, X

GRID = korvale.RayGrid(CUBE)
RELAXER = korvale.Relaxer(CUBE).keep("lengths")
MOVED = VERTICES * 1.5
PLACE = korvale.Transform()


def equations():
    """A system with an equation and a table."""
    made = korvale.Equations("y x")
    made.add("y = x + RAND")
    made.make_table("RAND", 2)
    return made


class Unlike:
    """What nothing takes."""

    def __repr__(self):
        return "<unlike>"


NOTHING = [Unlike(), 1j]
NUMBER = [*NOTHING, "1", True, None, [1, 2], math.nan, math.inf, numpy.ma.masked]
FREE = [*NOTHING, "1", True, None, [1, 2]]  # numbers that need not be finite
WHOLE = [*NOTHING, "1", True, None, 1.5, math.nan, 2**63]
FLAG = [*NOTHING, "yes", None, 0, 1, numpy.int8(1), 0.0, numpy.array([True])]
POINTS = [*NOTHING, "text", 5, None, [(1,)], [(0, 0, 0), (1, 2)], [("a", "b", "c")], {(0, 0, 0)},
          numpy.ones((4, 3), bool), numpy.ma.masked_less(SQUARE, 1), [(0, 0, math.nan)] * 8]
ROWS = POINTS[:-1]  # of numbers that need not be finite
POINT = [*NOTHING, "text", None, [1], (0, 0, 0, 0), (True, True, True), (math.nan, 0, 0),
         numpy.ma.masked_less([0, 1, 2], 1)]
JOIN = [*NOTHING, 5, None, b"round", "mitre", [], ["round"], ["round", 1, "miter", "miter"]]
JOINS = {"join": JOIN, "miter_limit": [bad for bad in NUMBER if bad is not None and bad is not math.inf] + [0.5, -1],
         "tolerance": [bad for bad in NUMBER if bad is not None] + [-1]}
TEXT = [*NOTHING, 5, None, b"x"]
OUT = [*NOTHING, "text", 5, [0.0], numpy.zeros((1, 1, 1)), numpy.zeros((8, 3), numpy.float32), numpy.ma.zeros((8, 3))]
PROGRESS = [*NOTHING, 5, "text", [1]]
FACES = [*NOTHING, "text", 5, [(0, 1, 99)], [(0, 1, -1)], [(0.5, 1, 2)], [(True, False, True)], [("a", "b", "c")]]
MESH = [*NOTHING, "text", 5, None, (VERTICES, [(0, 1, 99)]), (VERTICES * math.nan, TRIANGLES)]
NO_AREA = ([(0, 0, 0)] * 3, [(0, 1, 2)])
NUMBERS = [*NOTHING, "text", ["a"], [True], numpy.ma.masked_less(X, 2)]

# For each function that is called: what it is called with, and what is bad for each of its arguments.
CASES = {
    "offset": (korvale.offset, {"outline": SQUARE, "distance": 1},
               {"outline": POINTS, "distance": NUMBER, "height": NUMBER, "keep_vertices": FLAG, "split": FLAG,
                "pieces": FLAG, "progress": PROGRESS, **JOINS}),
    "offset of pieces": (korvale.offset, {"outline": SQUARE, "distance": 1, "pieces": True},
                         {"outline": POINTS,
                          "distance": [*[bad for bad in NUMBER if not isinstance(bad, list)], [[1, 2]], [1, "2"],
                                       [1, math.nan]],
                          "height": NUMBER, "keep_vertices": FLAG, "split": FLAG, "progress": PROGRESS, **JOINS}),
    "offset_many": (korvale.offset_many, {"outlines": [SQUARE, HOLE], "distance": 1},
                    {"outlines": [*NOTHING, "text", 5, [5], [SQUARE, "text"], [SQUARE, HOLE * math.nan], [SQUARE[:2]]],
                     "distance": [*NOTHING, "text", [1, 2, 3], [[1, 2]], math.nan, True], "starts": [],
                     "height": NUMBER, "keep_vertices": FLAG, "split": FLAG, "progress": PROGRESS, **JOINS}),
    "offset_many of parts": (korvale.offset_many, {"outlines": VERTICES, "distance": 1, "starts": [0, 4, 8]},
                             {"outlines": POINTS, "starts": [*NOTHING, "text", 5, [0, 4.0], [4, 0], [0, 99], [-1, 4],
                                                             [True, False], []], "distance": [[1, 2, 3]], "height": [],
                              "keep_vertices": [], "split": [], "progress": [], "join": [], "miter_limit": [],
                              "tolerance": []}),
    "outlines": (korvale.outlines, {"shape": SQUARE}, {"shape": ROWS}),
    "shapes": (korvale.shapes, {"path": [SQUARE, HOLE]},
               {"path": [*NOTHING, "text", 5, None, [5], [SQUARE, "text"]],
                "tolerance": [*NUMBER, -1], "crossing": FLAG, "progress": PROGRESS}),
    "band": (korvale.band, {"line": LINE, "distance": 1},
             {"line": POINTS, "distance": [*NUMBER, 0], "height": NUMBER, "both_sides": FLAG,
              "up": [p for p in POINT if p is not None] + [(0, 0, 0)],
              "closed": [flag for flag in FLAG if flag is not None], "miter_limit": [*NUMBER, 0.5],
              "cap": [*TEXT, "pointed", ["flat"]], "tolerance": JOINS["tolerance"],
              "progress": PROGRESS}),
    "carry": (korvale.carry, {"values": X[:4], "result": korvale.offset(SQUARE, 1)},
              {"values": [*NOTHING, "text", 5, X, [[1, 2], [3]], {1, 2}, numpy.ma.masked_less(X[:4], 2)],
               "result": [*NOTHING, "text", SQUARE], "mix": FLAG}),
    "thin": (korvale.thin, {"line": LINE, "tolerance": 1}, {"line": POINTS, "tolerance": [*NUMBER, -1]}),
    "bevel": (korvale.bevel, {"outline": SQUARE, "profile": [(0, 0), (0, 1)]},
              {"outline": POINTS, "profile": [*NOTHING, "text", None, [(0, 0)], [(0, 0, 0), (0, 0, 1)],
                                              [(0, 0), (math.nan, 1)]],
               "split": FLAG, "crossing": FLAG, "progress": PROGRESS}),
    "tube": (korvale.tube, {"path": LINE, "section": SECTION},
             {"path": POINTS, "section": [*POINTS, SECTION[:2]], "closed": FLAG, "caps": FLAG, "progress": PROGRESS}),
    "triangulate": (korvale.triangulate, {"outline": SQUARE}, {"outline": [*POINTS, SQUARE[:2]],
                                                               "progress": PROGRESS}),
    "flatten": (korvale.flatten, {"path": SQUARE}, {"path": POINTS, "closed": FLAG, "by_extremes": FLAG}),
    "frames": (korvale.frames, {"path": LINE}, {"path": POINTS, "closed": FLAG}),
    "scatter": (korvale.scatter, {"mesh": CUBE, "count": 5, "seed": 1},
                {"mesh": [*MESH, NO_AREA], "count": [*WHOLE, -1], "seed": WHOLE, "attributes": [*NUMBERS, X],
                 "weights": [*NUMBERS, X, numpy.zeros(12), -numpy.ones(12), numpy.full(12, math.nan)], "triangles": [],
                 "progress": PROGRESS}),
    "scatter of triangles": (korvale.scatter, {"mesh": VERTICES, "triangles": TRIANGLES, "count": 5, "seed": 1},
                             {"mesh": POINTS, "triangles": FACES, "count": [], "seed": [], "attributes": [],
                              "weights": [], "progress": []}),
    "scatter of corners": (korvale.scatter, {"mesh": CORNERS, "count": 5, "seed": 1},
                           {"mesh": [CORNERS[0], CORNERS * math.nan, CORNERS[:0]], "attributes": [X, [True]],
                            "weights": [X], "triangles": [], "count": [], "seed": [], "progress": []}),
    "RayGrid": (korvale.RayGrid, {"mesh": CUBE}, {"mesh": MESH, "triangles": [], "cells": [*NOTHING, 5, "ab", (1, 2),
                                                                                       (1, 2, 0), (1.0, 2, 3),
                                                                                       (True, 1, 1),
                                                                                       (65536, 65536, 1)],
                                                  "copy": FLAG, "progress": PROGRESS}),
    "RayGrid of triangles": (korvale.RayGrid, {"mesh": VERTICES, "triangles": TRIANGLES},
                             {"mesh": POINTS, "triangles": FACES, "cells": [], "copy": [False], "progress": []}),
    "RayGrid of corners": (korvale.RayGrid, {"mesh": CORNERS}, {"mesh": [CORNERS[0], CORNERS * math.nan],
                                                                "triangles": [], "cells": [], "copy": [],
                                                                "progress": []}),
    "RayGrid.nearest": (GRID.nearest, {"origin": (1, 2, 9), "direction": DOWN},
                        {"origin": POINT, "direction": POINT}),
    "RayGrid.hits": (GRID.hits, {"origin": (1, 2, 9), "direction": DOWN}, {"origin": POINT, "direction": POINT}),
    "RayGrid.count": (GRID.count, {"origin": (1, 2, 9), "direction": DOWN}, {"origin": POINT, "direction": POINT}),
    "RayGrid.any": (GRID.any, {"origin": (1, 2, 9), "direction": DOWN},
                    {"origin": POINT, "direction": POINT, "reach": FREE}),
    "RayGrid.contains": (GRID.contains, {"points": ABOVE}, {"points": POINTS, "progress": PROGRESS}),
    "RayGrid.cast": (GRID.cast, {"origins": ABOVE, "directions": DOWN},
                     {"origins": POINTS, "directions": [*POINTS, ABOVE[:3]],
                      **{name: [*NOTHING, "text", 1, 0, numpy.zeros(3), numpy.zeros((8, 3), numpy.int8)]
                         for name in ("distances", "triangles", "counts", "weights")}, "progress": PROGRESS}),
    "Relaxer": (korvale.Relaxer, {"mesh": CUBE}, {"mesh": MESH, "triangles": [], "edges": []}),
    "Relaxer of triangles": (korvale.Relaxer, {"mesh": VERTICES, "triangles": TRIANGLES},
                             {"mesh": POINTS, "triangles": FACES, "edges": [[(0, 1)]]}),
    "Relaxer of edges": (korvale.Relaxer, {"mesh": VERTICES, "edges": [(0, 1)]},
                         {"mesh": POINTS, "edges": [*NOTHING, "text", 5, [(0, 99)], [(0, 1, 2)], [(0.5, 1)],
                                                    [(True, False)]], "triangles": []}),
    "Relaxer.keep": (RELAXER.keep, {"measure": "lengths"}, {"measure": [*TEXT, "weight"], "weight": [*NUMBER, 0, -1]}),
    "Relaxer.hold": (RELAXER.hold, {"which": [1, 2]}, {"which": [*NOTHING, "text", 5, [0, 99], [-1], [0.5], [True],
                                                                 numpy.zeros(8, int)]}),
    "Relaxer.step": (RELAXER.step, {"points": MOVED},
                     {"points": [*POINTS, MOVED[:3]], "steps": [*WHOLE, -1], "progress": PROGRESS, "out": OUT}),
    "Relaxer.run": (RELAXER.run, {"points": MOVED, "steps": 2},
                    {"points": [*POINTS, MOVED[:3]], "steps": [*WHOLE, -1], "energy": FREE, "least_drop": FREE,
                     "progress": PROGRESS, "out": OUT}),
    "Relaxer.energy": (RELAXER.energy, {"points": MOVED}, {"points": [*POINTS, MOVED[:3]]}),
    "Relaxer.forces": (RELAXER.forces, {"points": MOVED}, {"points": [*POINTS, MOVED[:3]]}),
    "Equations": (korvale.Equations, {}, {"names": [*NOTHING, 5, None, [5], "x1", "SIN", "a" * 13]}),
    "Equations.declare": (equations().declare, {"names": "z"}, {"names": [*NOTHING, 5, None, [5], "x1", "SIN"],
                                                                "reserved": FLAG}),
    "Equations.add": (equations().add, {"equation": "y = x"}, {"equation": [*TEXT, "y = 2x", "y"]}),
    "Equations.evaluate": (lambda equation=0, columns=None, **more: equations().evaluate(equation, columns, **more),
                           {}, {"equation": [*WHOLE, 1, -2], "columns": [*NOTHING, 5, [5], {"w": 1}, {5: 1}],
                                "out": [], "progress": [], "x": NUMBERS}),
    "Equations.evaluate of columns": (
        lambda equation=0, columns=None, **more: equations().evaluate(equation, columns, **more), {"x": X},
        {"equation": [], "columns": [], "out": OUT, "progress": PROGRESS, "x": [], "y": [X[:2]]}),
    "Equations.evaluate_all": (
        lambda results=(), columns=None, **more: equations().evaluate_all(results, columns, **more), {"x": X},
        {"results": [*NOTHING, 5, None, [5], "w"], "columns": [*NOTHING, 5, [5], {"w": 1}, {5: 1}],
         "progress": PROGRESS, "x": NUMBERS}),
    "Equations.seed": (equations().seed, {"seed": 1}, {"seed": [*WHOLE, -1]}),
    "Equations.function": (lambda **given: equations().function(**given), {"name": "ONE", "callable": lambda: 1},
                           {"name": [*TEXT, "x", "SIN", "A1", "a" * 13, ""],
                            "callable": [*NOTHING, 5, "text", lambda a, b, c: 0], "arguments": [*NOTHING, "1", 3, -1]}),
    "Equations.make_table": (lambda **given: equations().make_table(**given), {"name": "RAND", "rows": 2},
                             {"name": [*TEXT, "SIN", "NONE", ""], "rows": [*WHOLE, 0]}),
    "Equations.table": (equations().table, {"name": "RAND"}, {"name": [*TEXT, "SIN", "NONE", ""]}),
    "Equations.fill_table": (equations().fill_table, {"name": "RAND", "values": [[1], [2]]},
                             {"name": [*TEXT, "SIN", "NONE", ""], "values": [*NUMBERS, X]}),
    "evaluate": (lambda expression, columns=None, **more: korvale.evaluate(expression, columns, **more),
                 {"expression": "x", "x": 2}, {"expression": [*TEXT, "2x", "", "= 3"],
                                       "columns": [*NOTHING, 5, [5], {5: 1}, {"x1": 1}], "x": NUMBERS}),
    "Transform": (korvale.Transform, {}, {"matrix": [*NOTHING, "text", 5, X, MATRICES[:1, :3]]}),
    "Transform.__call__": (PLACE, {"points": SQUARE}, {"points": ROWS, "out": OUT}),
    "Transform.vectors": (PLACE.vectors, {"vectors": SQUARE}, {"vectors": ROWS, "out": OUT}),
    "Transform.scaling": (korvale.Transform.scaling, {"scale": 2}, {"scale": [*POINT, math.nan]}),
    "Transform.translation": (korvale.Transform.translation, {"by": DOWN}, {"by": POINT}),
    "Transform.rotation": (korvale.Transform.rotation, {"radians": DOWN}, {"radians": POINT}),
    "Transform.rotation_in_degrees": (korvale.Transform.rotation_in_degrees, {"degrees": DOWN}, {"degrees": POINT}),
    "Transform.from_srt": (korvale.Transform.from_srt, {}, dict.fromkeys(("scale", "rotation", "translation"), POINT)),
    "Transform.inverse_of": (korvale.Transform.inverse_of, {},
                             dict.fromkeys(("scale", "rotation", "translation"), POINT)),
    "Transform.into_frame": (korvale.Transform.into_frame,
                             {"origin": DOWN, "z": (1, 0, 0), "reference": (0, 1, 0)},
                             {"origin": POINT, "z": [*POINT, (0, 0, 0)], "reference": [*POINT, (1, 0, 0)]}),
    "transform_points": (korvale.transform_points, {"matrices": MATRICES, "points": SQUARE},
                         {"matrices": [*NOTHING, "text", 5, X], "points": [*ROWS, SQUARE[:3]], "out": OUT}),
    "transform_vectors": (korvale.transform_vectors, {"matrices": MATRICES, "vectors": SQUARE},
                          {"matrices": [*NOTHING, "text", 5, X], "vectors": [*ROWS, SQUARE[:3]], "out": OUT}),
    "Mesh": (korvale.Mesh, {"vertices": VERTICES, "triangles": TRIANGLES}, {"vertices": ROWS, "triangles": FACES}),
    "Mesh.save": (CUBE.save, {"path": "/nowhere/at.obj"}, {"path": [*NOTHING, 5, None, "mesh.txt"]}),
    "mix": (korvale.mix, {"a": X, "b": X, "wa": 1, "wb": 1},
            {"a": [*NUMBERS, 5], "b": [*NUMBERS, X[:2]], "wa": FREE, "wb": FREE, "out": OUT}),
    "mix4": (korvale.mix4, {**dict.fromkeys("abcd", X), **dict.fromkeys(("wa", "wb", "wc", "wd"), 1)},
             {"a": [*NUMBERS, 5], **dict.fromkeys("bcd", [*NUMBERS, X[:2]]),
              **dict.fromkeys(("wa", "wb", "wc", "wd"), FREE), "out": OUT}),
    "bounds": (korvale.bounds, {"array": SQUARE}, {"array": [*NUMBERS, X, SQUARE[:0]]}),
    "reverse": (korvale.reverse, {"array": SQUARE}, {"array": [*NUMBERS, 5], "out": OUT}),
    "join": (korvale.join, {"a": SQUARE, "b": SQUARE}, {"a": [*NUMBERS, 5], "b": [*NUMBERS, SQUARE[:, :2]]}),
    "seed": (korvale.seed, {"seed": 1}, {"seed": WHOLE}),
    "random": (korvale.random, {"count": 1}, {"count": [*WHOLE, -1]}),
    "gauss": (korvale.gauss, {"count": 1}, {"count": [*WHOLE, -1]}),
    **{name: (getattr(korvale, name), {"a": SQUARE, "b": HOLE}, {"a": ROWS, "b": [*ROWS, HOLE[:3]]})
       for name in ("dot", "cross", "angle", "line_through")},
    **{name: (getattr(korvale, name), {"vectors": SQUARE}, {"vectors": ROWS}) for name in ("norm", "normalize")},
    **{name: (getattr(korvale, name), {"values": SQUARE}, {"values": ROWS})
       for name in ("scaling", "translation", "rotation", "rotation_in_degrees")},
    **{name: (getattr(korvale, name), dict.fromkeys(("scale", "rotation", "translation"), HOLE),
              {"scale": ROWS, "rotation": [*ROWS, HOLE[:3]], "translation": [*ROWS, HOLE[:3]]})
       for name in ("from_srt", "inverse_from_srt")},
    **{name: (getattr(korvale, name), {"matrices": MATRICES}, {"matrices": [*NUMBERS, X, 5]})
       for name in ("take_apart", "transpose")},
    "multiply": (korvale.multiply, {"a": MATRICES, "b": MATRICES},
                 {"a": [*NUMBERS, X, 5], "b": [*NUMBERS, X, 5, MATRICES[:3]]}),
    "into_frame": (korvale.into_frame, {"origin": SQUARE, "z": HOLE, "reference": (0, 0, 1)},
                   {"origin": ROWS, "z": ROWS, "reference": [*ROWS, HOLE[:3]]}),
    "frame_both_ways": (korvale.frame_both_ways, {"origin": SQUARE, "x": HOLE, "z": (0, 0, 1)},
                        {"origin": ROWS, "x": ROWS, "z": [*ROWS, HOLE[:3]]}),
    "normalize_lines": (korvale.normalize_lines, {"lines": HOLE}, {"lines": NUMBERS}),
    "lines_meet": (korvale.lines_meet, {"a": HOLE, "b": HOLE}, {"a": NUMBERS, "b": [*NUMBERS, HOLE[:3]]}),
    "boxes_meet": (korvale.boxes_meet, {"a": [0, 0, 0, 1, 1, 1], "b": [0, 0, 0, 1, 1, 1]},
                   {"a": NUMBERS, "b": NUMBERS}),
    "determinant": (korvale.determinant, {"matrices": [(1, 2), (3, 4)]}, {"matrices": NUMBERS}),
    "solve": (korvale.solve, {"systems": [(2, 0, 6), (0, 3, 12)]}, {"systems": NUMBERS}),
    "factorial": (korvale.factorial, {"n": 5}, {"n": WHOLE}),
    "binomial": (korvale.binomial, {"n": 5, "k": 2}, {"n": WHOLE, "k": WHOLE}),
    "power": (korvale.power, {"x": 1.5, "n": 3}, {"x": FREE, "n": WHOLE}),
}


def is_named(argument, told):
    """Whether a refusal names an argument, a part of it, or one of several: "mesh", "mesh.faces", "outline 3"."""
    return told == argument or told.startswith((f"{argument} ", f"{argument}.", f"{argument}[", f"{argument[:-1]} "))


class RefusalTest(unittest.TestCase):
    def test_what_the_cases_start_from_is_taken(self):
        for name, (function, given, _) in CASES.items():
            if name != "Mesh.save":
                with self.subTest(name):
                    function(**given)

    def test_names_function_and_argument(self):
        for name, (function, given, bad) in CASES.items():
            for argument, values in bad.items():
                for value in values:
                    with self.subTest(name, argument=argument, value=repr(value)[:60]):
                        with self.assertRaises(korvale.Error) as raised:
                            function(**{**given, argument: value})
                        error = raised.exception
                        self.assertEqual(error.function, name.partition(" of ")[0].removesuffix(".__call__"), error)
                        self.assertTrue(is_named(argument, error.argument), error)
                        self.assertTrue(str(error).startswith(f"{error.function}: {error.argument} must "), error)
                        self.assertNotIn("korvale_", str(error))

    def test_cases_have_each_argument_of_each_function(self):
        for name, (function, _, bad) in CASES.items():
            if isinstance(function, type) or inspect.isroutine(function) and function.__name__ != "<lambda>":
                try:
                    parameters = set(inspect.signature(function).parameters)
                except ValueError:  # a compiled one
                    continue
                with self.subTest(name):
                    known = set(bad) | {"names"} if name == "Equations" else set(bad)
                    if " of " in name:
                        known |= set(CASES[name.partition(" of ")[0]][2])
                    self.assertLessEqual(parameters, known)
        functions = {name for name in korvale.__all__ if inspect.isfunction(getattr(korvale, name))}
        self.assertLessEqual(functions, set(CASES))


if __name__ == "__main__":
    unittest.main()
