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

    def test_may_be_real_shapelys(self):
        try:
            import shapely.geometry as shapely
        except ImportError:
            self.skipTest("python3-shapely is not installed")
        self.assertEqual(korvale.offset(shapely.LinearRing(SQUARE), 0.5), self.expected)
        self.assertEqual(korvale.offset(shapely.Polygon(SQUARE[:, :2], [HOLE[:, :2]]), 0.5), self.plate)
        self.assertEqual(shapely.Polygon(self.expected.xy).area, 25)

    def test_may_be_matplotlibs(self):
        self.assertEqual(korvale.offset(Path(SQUARE[:, :2]), 0.5), self.expected)
        self.assertEqual(korvale.offset(path_of(SQUARE), 0.5), self.expected)
        self.assertEqual(korvale.offset(path_of(SQUARE, HOLE), 0.5), self.plate)
        self.assertEqual(korvale.offset(path_of(HOLE, SQUARE), 0.5), self.plate)
        self.assertEqual(korvale.offset(Path(SQUARE[:, :2], [1, 3, 3, 2]), 0.5), self.expected)
        self.assertRefuses("offset: outline must be one outline or shape, but it has several: take those that "
                           "korvale.shapes gives singly", lambda: korvale.offset(path_of(SQUARE, SQUARE + 9), 1))

    def test_may_be_real_matplotlibs(self):
        try:
            from matplotlib.path import Path as Real
        except ImportError:
            self.skipTest("python3-matplotlib is not installed")
        path = Real.make_compound_path(Real(SQUARE[:, :2], closed=False), Real(HOLE[:, :2], closed=False))
        self.assertEqual(korvale.offset(path, 0.5), self.plate)
        circle = korvale.offset(Real.unit_circle(), 1)
        radii = korvale.norm(circle.points)
        self.assertTrue(((radii > 2) & (radii < 2.1)).all())

    def test_text_becomes_shapes(self):
        dot = SQUARE / 8 + (1.75, 1.75, 0)
        far = SQUARE + (9, 0, 0)
        shapes = korvale.shapes(path_of(HOLE, far, dot, SQUARE))
        self.assertEqual(sorted(len(shape) for shape in shapes), [1, 1, 2])
        ring = next(shape for shape in shapes if len(shape) == 2)
        self.assertEqual([outline.tolist() for outline in ring], [SQUARE.tolist(), HOLE.tolist()])


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
