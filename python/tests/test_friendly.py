"""Tests of what people hand in: lists, numbers of any kind, and objects of other packages.

Stand-ins have the attributes that are looked at; the packages themselves are tried where they are installed.
"""

import decimal
import fractions
import types
import unittest

import korvale
import numpy
from test_shapes import HOLE, SQUARE, RefusingTest

CUBE = korvale.bevel(SQUARE, [(0, 0), (0, 4)])


class Ring:
    """As Shapely's rings and lines are: coordinates with the first repeated at the end."""

    def __init__(self, points):
        self.coords = [tuple(point[:2]) for point in [*points, points[0]]]


class Polygon:
    """As Shapely's polygons are."""

    def __init__(self, outer, holes=()):
        self.exterior, self.interiors = Ring(outer), [Ring(hole) for hole in holes]


class Path:
    """As matplotlib's paths are."""

    def __init__(self, vertices, codes=None):
        self.vertices, self.codes = numpy.array(vertices, float), None if codes is None else numpy.array(codes)

    def to_polygons(self):
        return [self.vertices[:, :2]]


def path_of(*outlines):
    vertices, codes = [], []
    for outline in outlines:
        vertices += [*outline[:, :2].tolist(), (0, 0)]
        codes += [1] + [2] * (len(outline) - 1) + [79]
    return Path(vertices, codes)


class OutlineTest(RefusingTest):
    def setUp(self):
        self.expected = korvale.offset(SQUARE, 0.5)
        self.plate = korvale.offset([SQUARE, HOLE], 0.5)

    def test_may_be_anything_with_numbers(self):
        given = SQUARE.astype(int)
        for outline in (SQUARE.tolist(), tuple(map(tuple, SQUARE)), given, given.astype(numpy.int16), SQUARE[:, :2],
                        SQUARE.astype(numpy.float32), SQUARE.astype(">f8"), numpy.asfortranarray(SQUARE),
                        numpy.repeat(SQUARE, 2, axis=0)[::2], [(x, y) for x, y, z in given.tolist()], iter(SQUARE),
                        (row for row in given), [list(map(fractions.Fraction, row)) for row in given.tolist()],
                        [tuple(map(decimal.Decimal, row)) for row in given.tolist()], list(SQUARE),
                        numpy.vstack([SQUARE, SQUARE[:1]]), given.astype(object), memoryview(SQUARE)):
            self.assertEqual(korvale.offset(outline, 0.5), self.expected)

    def test_is_not_changed(self):
        outline = SQUARE.copy()
        outline.flags.writeable = False
        korvale.offset(outline, 0.5)
        korvale.bevel([outline, HOLE], [(0, 0), (0, 1)])
        self.assertEqual(outline.tolist(), SQUARE.tolist())

    def test_may_have_holes_in_many_ways(self):
        for shape in ([SQUARE, HOLE], (SQUARE, HOLE), numpy.stack([SQUARE, HOLE]), [SQUARE.tolist(), HOLE.tolist()],
                      [SQUARE, HOLE.tolist()], (outline for outline in (SQUARE, HOLE)), [Ring(SQUARE), Ring(HOLE)],
                      [SQUARE, Ring(HOLE)]):
            self.assertEqual(korvale.offset(shape, 0.5), self.plate)

    def test_may_be_shapelys(self):
        self.assertEqual(korvale.offset(Ring(SQUARE), 0.5), self.expected)
        self.assertEqual(korvale.offset(Polygon(SQUARE, [HOLE]), 0.5), self.plate)
        self.assertEqual(korvale.offset(Polygon(SQUARE), 0.5).outer, self.expected)
        self.assertEqual(korvale.bevel(Polygon(SQUARE, [HOLE]), [(0, 0), (0, 1)]),
                         korvale.bevel([SQUARE, HOLE], [(0, 0), (0, 1)]))
        line = types.SimpleNamespace(coords=[(0, 0), (5, 0), (5, 5)])
        self.assertEqual(korvale.band(line, 1), korvale.band([(0, 0), (5, 0), (5, 5)], 1))
        both = types.SimpleNamespace(geoms=[Polygon(SQUARE), Polygon(HOLE)])
        self.assertRefuses("offset: outline must be one outline or shape, but it has 2: take its .geoms singly",
                           lambda: korvale.offset(both, 1))

    def test_may_be_matplotlibs(self):
        self.assertEqual(korvale.offset(Path(SQUARE[:, :2]), 0.5), self.expected)
        self.assertEqual(korvale.offset(path_of(SQUARE), 0.5), self.expected)
        self.assertEqual(korvale.offset(path_of(SQUARE, HOLE), 0.5), self.plate)
        self.assertEqual(korvale.offset(path_of(HOLE, SQUARE), 0.5), self.plate)
        self.assertEqual(korvale.offset(Path(SQUARE[:, :2], [1, 3, 3, 2]), 0.5), self.expected)
        self.assertRefuses("offset: outline must be one outline or shape, but it has 2: take those that korvale.shapes "
                           "gives singly", lambda: korvale.offset(path_of(SQUARE, SQUARE + 9), 1))

    def test_paths_that_are_closed_are_closed_lines(self):
        self.assertEqual(korvale.band(path_of(SQUARE), 1), korvale.band(SQUARE, 1, closed=True))
        self.assertEqual(korvale.band(path_of(SQUARE), 1, closed=False), korvale.band([*SQUARE, SQUARE[0]], 1))
        for codes in (None, [1, 2, 2, 2]):
            self.assertEqual(korvale.band(Path(SQUARE[:, :2], codes), 1), korvale.band(SQUARE, 1))

    def test_may_be_trimeshs_paths(self):
        closed = numpy.vstack([SQUARE, SQUARE[:1]])
        self.assertEqual(korvale.offset(types.SimpleNamespace(discrete=[closed]), 0.5), self.expected)
        self.assertEqual(korvale.offset(types.SimpleNamespace(discrete=[HOLE, closed]), 0.5), self.plate)
        self.assertEqual(korvale.band(types.SimpleNamespace(discrete=[SQUARE]), 1), korvale.band(SQUARE, 1))

    def test_text_becomes_shapes(self):
        dot = SQUARE / 8 + (1.75, 1.75, 0)
        far = SQUARE + (9, 0, 0)
        shapes = korvale.shapes(path_of(HOLE, far, dot, SQUARE))
        self.assertEqual(sorted(len(shape) for shape in shapes), [1, 1, 2])
        ring = next(shape for shape in shapes if len(shape) == 2)
        self.assertEqual([outline.tolist() for outline in ring], [SQUARE.tolist(), HOLE.tolist()])


# Whatever takes an outline, with holes or without, and whatever takes a line.
TAKE_SHAPES = {
    "offset": lambda shape: korvale.offset(shape, 0.5),
    "outlines": lambda shape: [outline.tolist() for outline in korvale.outlines(shape)],
    "shapes": lambda shape: [[outline.tolist() for outline in one] for one in korvale.shapes(shape)],
    "bevel": lambda shape: korvale.bevel(shape, [(0, 0), (0, 1)]),
    "triangulate": lambda shape: korvale.triangulate(shape).tolist(),
}
TAKE_OUTLINES = TAKE_SHAPES | {
    "flatten": lambda outline: korvale.flatten(outline),
    "tube": lambda outline: korvale.tube([(0, 0, 0), (0, 0, 5)], outline),
}
TAKE_LINES = {
    "band": lambda line: korvale.band(line, 1),
    "thin": lambda line: korvale.thin(line, 1).tolist(),
    "tube": lambda line: korvale.tube(line, SQUARE / 8 - 0.25),
    "frames": lambda line: korvale.frames(line).tolist(),
    "flatten": lambda line: korvale.flatten(line, closed=False),
    "transform_points": lambda line: korvale.Transform()(line).tolist(),
}


class OthersTest(RefusingTest):
    """Objects of the packages themselves, in every function that takes what they are."""

    def assertTaken(self, takers, given, plain):
        for name, take in takers.items():
            with self.subTest(name):
                self.assertEqual(take(given), take(plain))

    def test_shapelys_are_taken_by_all(self):
        try:
            import shapely.geometry as shapely
        except ImportError:
            self.skipTest("python3-shapely is not installed")
        plate = shapely.Polygon(SQUARE[:, :2], [HOLE[:, :2]])
        self.assertTaken(TAKE_SHAPES, plate, [*korvale.outlines([SQUARE, HOLE])])
        self.assertTaken(TAKE_SHAPES, shapely.MultiPolygon([plate]), [SQUARE, HOLE])
        for outline in (shapely.LinearRing(SQUARE), shapely.Polygon(SQUARE), shapely.MultiPolygon(
                [shapely.Polygon(SQUARE)])):
            self.assertTaken({name: take for name, take in TAKE_OUTLINES.items() if name not in ("offset", "shapes")},
                             outline, SQUARE)
            self.assertEqual(korvale.band(outline, 1), korvale.band(SQUARE, 1, closed=True))
            self.assertEqual(korvale.band(outline, 1, closed=False), korvale.band([*SQUARE, SQUARE[0]], 1))
        line = [(0, 0), (5, 0), (5, 5)]
        for given in (shapely.LineString(line), shapely.MultiLineString([line]), shapely.MultiPoint(line)):
            self.assertTaken(TAKE_LINES, given, line)
        far = shapely.Polygon(SQUARE[:, :2] + 9)
        self.assertEqual([len(shape) for shape in korvale.shapes(shapely.MultiPolygon([plate, far]))], [2, 1])
        self.assertEqual([len(shape) for shape in korvale.shapes([plate, far])], [2, 1])
        self.assertEqual(korvale.RayGrid(CUBE).nearest(shapely.Point(1, 2, 9), (0, 0, -1)).distance, 5)
        self.assertRefuses("band: line must be points, (N, 2) or (N, 3), but it is a polygon with 1 hole",
                           lambda: korvale.band(plate, 1))
        self.assertRefuses("frames: path must be points, (N, 2) or (N, 3), but it has 2 parts: take its .geoms singly",
                           lambda: korvale.frames(shapely.MultiLineString([line, line])))
        self.assertRefuses("bevel: outline must be one outline or shape, but it has 2: take its .geoms singly",
                           lambda: korvale.bevel(shapely.MultiPolygon([plate, far]), [(0, 0), (0, 1)]))
        self.assertEqual(len(korvale.outlines(shapely.Polygon())[0]), 0)

    def test_matplotlibs_are_taken_by_all(self):
        try:
            from matplotlib.path import Path as Real
        except ImportError:
            self.skipTest("python3-matplotlib is not installed")
        square = Real([*SQUARE[:, :2], (0, 0)], [1, 2, 2, 2, 79])
        hole = Real([*HOLE[:, :2], (0, 0)], [1, 2, 2, 2, 79])
        self.assertTaken(TAKE_SHAPES, Real.make_compound_path(square, hole), [SQUARE, HOLE])
        self.assertTaken(TAKE_OUTLINES, square, SQUARE)
        self.assertTaken(TAKE_LINES, Real([(0, 0), (5, 0), (5, 5)]), [(0, 0), (5, 0), (5, 5)])
        self.assertTaken({name: take for name, take in TAKE_LINES.items() if name != "band"}, square,
                         numpy.vstack([SQUARE, SQUARE[:1]]))  # it is closed
        self.assertEqual(korvale.band(square, 1), korvale.band(SQUARE, 1, closed=True))
        circle = korvale.offset(Real.unit_circle(), 1)
        radii = korvale.norm(circle.points)
        self.assertTrue(((radii > 2) & (radii < 2.1)).all())

    def test_meshios_are_taken_by_all(self):
        try:
            import meshio
        except ImportError:
            self.skipTest("python3-meshio is not installed")
        vertices, triangles = CUBE
        mesh = meshio.Mesh(vertices, [("triangle", triangles)])
        self.assertTaken({"RayGrid": korvale.RayGrid, "Relaxer": korvale.Relaxer,
                          "scatter": lambda given: korvale.scatter(given, 9, seed=3)}, mesh, CUBE)
        quads = meshio.Mesh(SQUARE, [("quad", [(0, 1, 2, 3)]), ("triangle", [(0, 1, 2)])])
        self.assertEqual(korvale.RayGrid(quads).faces.tolist(), [0, 0, 1])


class AmbiguousTest(RefusingTest):
    """What could be meant in two ways is refused by name."""

    def test_zeros_and_ones_are_no_mask(self):
        relaxer = korvale.Relaxer(CUBE)
        self.assertRefuses("Relaxer.hold: which must be truths (8,) or numbers of points, but it has a 0 or 1 for each "
                           "of 8 points: truths are bool", lambda: relaxer.hold(numpy.array([0, 0, 1, 1, 0, 0, 1, 1])))
        self.assertRefuses("Relaxer.hold: which must be truths (8,) or numbers of points, but it is [0.0, 1.0]",
                           lambda: relaxer.hold([0.0, 1.0]))
        self.assertEqual(repr(relaxer.hold([0, 1, 1])), "<korvale.Relaxer of 8 points, holds 2>")

    def test_truths_are_no_numbers(self):
        self.assertRefuses("offset: distance must be a number, but it is True", lambda: korvale.offset(SQUARE, True))
        self.assertRefuses("scatter: count must be a whole number, but it is True",
                           lambda: korvale.scatter(CUBE, True, seed=1))
        self.assertRefuses("offset: outline must be points, (N, 2) or (N, 3), but it holds truths",
                           lambda: korvale.offset(SQUARE > 1, 1))
        self.assertRefuses("RayGrid: triangles must be faces: whole numbers (F, k), or a list of lists of them, but it "
                           "holds truths", lambda: korvale.RayGrid(SQUARE, numpy.ones((2, 3), bool)))
        with self.assertRaisesRegex(korvale.Error, "^evaluate: x must be numbers, but it holds truths"):
            korvale.evaluate("x", x=numpy.array([True, False]))

    def test_masked_values_are_refused(self):
        masked = numpy.ma.masked_array(SQUARE, SQUARE > 3)
        text = "but 4 of its 12 values are masked: fill them, or leave them out"
        self.assertRefuses(f"offset: outline must be points, (N, 2) or (N, 3), {text}",
                           lambda: korvale.offset(masked, 1))
        self.assertRefuses(f"bounds: array must be numbers (N, k), {text}", lambda: korvale.bounds(masked))
        self.assertRefuses(f"RayGrid.cast: origins must be points, (N, 3) or (3,), {text}",
                           lambda: korvale.RayGrid(CUBE).cast(masked, (0, 0, 1)))
        wave = korvale.Equations("y x")
        wave.add("y = x")
        self.assertRefuses("Equations.evaluate: x must be numbers, but 2 of its 4 values are masked: fill them, or "
                           "leave them out", lambda: wave.evaluate(x=masked[:, 0]))
        self.assertRefuses("Relaxer.hold: which must be truths (8,) or numbers of points, but 1 of its 2 values are "
                           "masked: fill them, or leave them out",
                           lambda: korvale.Relaxer(CUBE).hold(numpy.ma.masked_equal([1, 2], 2)))
        self.assertRefuses("offset: distance must be a number, but it is masked",
                           lambda: korvale.offset(SQUARE, numpy.ma.masked))
        self.assertRefuses("reverse: out must be a writable array of float64, (4, 3), but it has a mask",
                           lambda: korvale.reverse(SQUARE, out=masked))
        self.assertEqual(korvale.offset(numpy.ma.masked_array(SQUARE), 1), korvale.offset(SQUARE, 1))  # nothing masked

    def test_what_has_no_order_is_refused(self):
        corners = {(0, 0), (4, 0), (4, 4)}
        for given in (corners, frozenset(corners), dict.fromkeys(corners)):
            for take in (TAKE_OUTLINES | TAKE_LINES).values():
                with self.assertRaisesRegex(korvale.Error, "must be .*, but it is "):
                    take(given)


class OutTest(RefusingTest):
    """Results go where they are wanted, however that lies in memory."""

    def test_may_be_strided(self):
        points = numpy.random.default_rng(3).normal(size=(40, 3))
        place = korvale.Transform.from_srt((1, 2, 3), (1, 2, 3), (4, 5, 6))
        wide = numpy.zeros((80, 5))
        into = wide[::2, 1:4]
        relaxer = korvale.Relaxer(points[:8], [(0, 1, 2), (3, 4, 5, 6, 7)]).keep("lengths")
        for name, call in {
            "transform_points": lambda **out: korvale.transform_points(place, points, **out),
            "vectors": lambda **out: place.vectors(points, **out),
            "mix": lambda **out: korvale.mix(points, points, 1, 2, **out),
            "mix4": lambda **out: korvale.mix4(points, points, points, points, 1, 2, 3, 4, **out),
            "reverse": lambda **out: korvale.reverse(points, **out),
        }.items():
            with self.subTest(name):
                self.assertIs(call(out=into), into)
                numpy.testing.assert_array_equal(into, call())
        self.assertFalse(wide[1::2].any() or wide[:, 0].any() or wide[:, 4].any())
        for move in (relaxer.step, relaxer.run):
            self.assertIs(move(points[:8], steps=3, out=into[:8]).points.base, wide)
            numpy.testing.assert_array_equal(into[:8], move(points[:8], steps=3).points)

    def test_may_be_a_column_of_the_points(self):
        points = numpy.random.default_rng(4).normal(size=(3000, 3))
        expected = points[:, 0] * points[:, 1]
        wave = korvale.Equations("z x y")
        wave.add("z = x * y")
        result = wave.evaluate(x=points[:, 0], y=points[:, 1], out=points[:, 2])
        numpy.testing.assert_array_equal(points[:, 2], expected)
        self.assertTrue(numpy.shares_memory(result, points))
        grid = korvale.RayGrid(CUBE)
        wide = numpy.zeros((40, 2))
        cast = grid.cast(points[:40], (0, 0, 1), distances=wide[:, 1], weights=points[40:80, ::-1])
        numpy.testing.assert_array_equal(wide[:, 1], grid.cast(points[:40], (0, 0, 1)).distances)
        numpy.testing.assert_array_equal(cast.weights, points[40:80, ::-1])

    def test_may_lie_across_the_input(self):
        points = numpy.random.default_rng(5).normal(size=(41, 3))
        expected = 2 * points[:40]
        korvale.Transform.scaling(2)(points[:40], out=points[1:])
        numpy.testing.assert_array_equal(points[1:], expected)

    def test_says_what_it_refuses(self):
        fixed = SQUARE.copy()
        fixed.flags.writeable = False
        must = "reverse: out must be a writable array of float64, (4, 3), but it "
        self.assertRefuses(must + "cannot be written to", lambda: korvale.reverse(SQUARE, out=fixed))
        self.assertRefuses(must + "is float32 (4, 3)",
                           lambda: korvale.reverse(SQUARE, out=SQUARE.astype(numpy.float32)))
        self.assertRefuses(must + "is [1]", lambda: korvale.reverse(SQUARE, out=[1]))


class NumberTest(RefusingTest):
    def test_may_be_of_any_kind(self):
        expected = korvale.offset(SQUARE, 2)
        for two in (2, 2.0, numpy.float32(2), numpy.int64(2), fractions.Fraction(2), decimal.Decimal(2),
                    numpy.array(2)):
            self.assertEqual(korvale.offset(SQUARE, two), expected)
        self.assertEqual(len(korvale.scatter(CUBE, numpy.int64(5), seed=numpy.uint8(1)).points), 5)
        for wrong in ("2", None, [2], 2j, SQUARE):
            with self.assertRaisesRegex(korvale.Error, "offset: distance must be a number, but it is"):
                korvale.offset(SQUARE, wrong)
        with self.assertRaisesRegex(korvale.Error, "scatter: count must be a whole number, but it is 2.5"):
            korvale.scatter(CUBE, 2.5, seed=1)


class MeshTest(RefusingTest):
    def test_may_be_trimeshs(self):
        mesh = types.SimpleNamespace(vertices=CUBE.vertices, faces=CUBE.triangles.astype(numpy.int64))
        self.assertEqual(korvale.RayGrid(mesh), korvale.RayGrid(CUBE))
        self.assertEqual(korvale.Relaxer(mesh), korvale.Relaxer(CUBE))
        numpy.testing.assert_array_equal(korvale.scatter(mesh, 9, seed=3).points,
                                         korvale.scatter(CUBE, 9, seed=3).points)

    def test_may_be_meshios(self):
        block = types.SimpleNamespace
        quads = [(0, 1, 2, 3), (3, 2, 1, 0)]
        triangles = types.SimpleNamespace(points=CUBE.vertices, cells=[block(type="vertex", data=[(0,)]),
                                                                      block(type="triangle", data=CUBE.triangles)])
        self.assertEqual(korvale.RayGrid(triangles), korvale.RayGrid(CUBE))
        self.assertEqual(korvale.Relaxer(triangles), korvale.Relaxer(CUBE))
        mixed = types.SimpleNamespace(points=SQUARE, cells=[block(type="quad", data=quads), ("triangle", [(0, 1, 2)])])
        self.assertEqual(korvale.RayGrid(mixed).faces.tolist(), [0, 0, 1, 1, 2])
        self.assertEqual(korvale.RayGrid(types.SimpleNamespace(points=SQUARE, cells={"quad": quads})).faces.tolist(),
                         [0, 0, 1, 1])
        tetrahedra = types.SimpleNamespace(points=SQUARE, cells=[block(type="tetra", data=[(0, 1, 2, 3)])])
        self.assertRefuses("RayGrid: mesh.cells must be triangles, quads and polygons, but there are cells of kind "
                           "'tetra'", lambda: korvale.RayGrid(tetrahedra))

    def test_may_have_faces_of_any_number_of_corners(self):
        pyramid = [(0, 0, 0), (2, 0, 0), (2, 2, 0), (0, 2, 0), (1, 1, 3)]
        faces = [(3, 2, 1, 0), (0, 1, 4), (1, 2, 4), (2, 3, 4), (3, 0, 4)]
        grid = korvale.RayGrid(pyramid, faces)
        self.assertEqual(grid.faces.tolist(), [0, 0, 1, 2, 3, 4])
        self.assertEqual(grid.count((1, 1, 1), (0.1, 0.2, 1)), 1)
        self.assertEqual(len(korvale.Relaxer(pyramid, faces).edges), 8)
        self.assertEqual(korvale.scatter((pyramid, faces), 4, seed=1).points.shape, (4, 3))
        self.assertRefuses("RayGrid: triangles must be faces: whole numbers (F, k), or a list of lists of them, but it "
                           "holds float64", lambda: korvale.RayGrid(pyramid, numpy.array(faces[1:], float)))


if __name__ == "__main__":
    unittest.main()
