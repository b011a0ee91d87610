"""Band Along Curve and Tube Along Curve."""

import math

import bpy
import korvale
import numpy
from scene import SceneTest, curve, faces_of, select, text, vertices_of

LINE = [(0, 0, 0), (4, 0, 1), (8, 2, 1), (10, 6, 3)]
LOOP = [(0, 0, 0), (6, 0, 0), (6, 6, 0), (0, 6, 0)]


def knot(n):
    """A closed line in space, as doubles of what Blender keeps."""
    turns = numpy.arange(n) * (2 * math.pi / n)
    radius = 2 + numpy.cos(3 * turns)
    points = numpy.column_stack([radius * numpy.cos(2 * turns), radius * numpy.sin(2 * turns), numpy.sin(3 * turns)])
    return points.astype(numpy.float32).astype(float)


def areas(obj):
    """The areas of faces as seen from above, with their signs."""
    points = vertices_of(obj).astype(float)[:, :2]
    return [area(points[list(face)]) for face in faces_of(obj)]


def area(outline):
    """The area of an outline, positive where it is counter-clockwise."""
    x, y = outline.T
    return 0.5 * float(numpy.sum(x * numpy.roll(y, -1) - numpy.roll(x, -1) * y))


class BandTest(SceneTest):
    def test_both_sides_with_heights(self):
        curve(LINE, closed=False)
        bpy.ops.object.korvale_band(distance=0.5)
        expected = korvale.band(LINE, 0.5, both_sides=True, up=(0, 0, 1))
        self.same(vertices_of(bpy.context.object), expected.outline)
        self.assertEqual(faces_of(bpy.context.object), [(0, 1, 6, 7), (1, 2, 5, 6), (2, 3, 4, 5)])
        self.assertGreater(min(areas(bpy.context.object)), 0)

    def test_caps_are_faces_of_their_own(self):
        for cap in ("square", "round"):
            for both in (True, False):
                curve(LINE, closed=False)
                bpy.ops.object.korvale_band(distance=0.5, both_sides=both, cap=cap)
                made = bpy.context.object
                expected = korvale.band(LINE, 0.5, both_sides=both, up=(0, 0, 1), cap=cap)
                self.same(vertices_of(made), expected.outline)
                self.assertEqual([len(face) for face in faces_of(made)][:3], [4, 4, 4])
                self.assertEqual(len(faces_of(made)), 5)
                self.assertAlmostEqual(sum(areas(made)), area(expected.outline[:, :2]), places=4)
                self.assertGreater(min(areas(made)), 0)

    def test_a_closed_line_gives_a_ring(self):
        curve(LOOP)
        bpy.ops.object.korvale_band(distance=1, heights=False)
        made = bpy.context.object
        band = korvale.band(LOOP, 1, both_sides=True, closed=True)
        self.same(vertices_of(made), numpy.concatenate([band.border, band.other_side]))
        self.assertEqual(faces_of(made), [(0, 1, 6, 7), (1, 2, 5, 6), (2, 3, 4, 5), (3, 0, 7, 4)])
        self.assertAlmostEqual(sum(areas(made)), 48, places=4)

    def test_points_that_share_a_place_are_one_vertex(self):
        tight = [(0, 0, 0), (4, 0, 0), (4.2, 0.2, 0), (4.2, 4, 0)]
        curve(tight, closed=False)
        bpy.ops.object.korvale_band(distance=-1, both_sides=False, heights=False)
        made = bpy.context.object
        points = numpy.array(tight, numpy.float32).astype(float)
        expected = korvale.band(points, -1).outline
        self.assertEqual(len(vertices_of(made)), len(numpy.unique(expected, axis=0)))
        self.assertLess(len(vertices_of(made)), 8)
        self.assertFalse(made.data.validate())

    def test_up_is_that_of_the_scene(self):
        curve([(0, 0, 0), (0, 4, 0), (0, 8, 4)], closed=False, rotation_euler=(0, math.pi / 2, 0))
        bpy.ops.object.korvale_band(distance=1)
        made = bpy.context.object
        heights = [(made.matrix_world @ vertex.co).z for vertex in made.data.vertices]
        self.assertAlmostEqual(max(heights) - min(heights), 0, places=5)

    def test_what_has_no_band_is_refused(self):
        text("words")
        self.refused(bpy.ops.object.korvale_band, "select a curve")
        curve([(0, 0, 0)], closed=False)
        self.refused(bpy.ops.object.korvale_band, "no spline of two points")
        curve(LINE, closed=False)
        self.refused(bpy.ops.object.korvale_band, "distance", distance=0)
        curve([(0, 0, 0), (math.nan, 0, 0)], closed=False)
        self.refused(bpy.ops.object.korvale_band, "finite")
        curve([(0, 0, 0), (0, 0, 0)], closed=False)
        self.refused(bpy.ops.object.korvale_band)


class TubeTest(SceneTest):
    def tube(self, line, closed, sides=12, radius=0.25):
        turns = numpy.arange(sides) * (2 * math.pi / sides)
        section = radius * numpy.column_stack([numpy.cos(turns), numpy.sin(turns)])
        return korvale.tube(line, section, closed=closed)

    def solid(self, obj):
        return korvale.Mesh(vertices_of(obj).astype(float), [list(face) for face in faces_of(obj)])

    def test_an_open_line(self):
        curve(LINE, closed=False)
        bpy.ops.object.korvale_tube(radius=0.25, sides=12)
        made = bpy.context.object
        expected = self.tube(LINE, False)
        self.same(vertices_of(made), expected.vertices)
        self.assertEqual(sorted(map(len, faces_of(made))), [4] * 36 + [12] * 2)
        self.assertAlmostEqual(volume(made), expected.volume, places=5)

    def test_a_closed_line_has_no_seam(self):
        line = knot(90)
        curve(line)
        bpy.ops.object.korvale_tube(radius=0.25, sides=12)
        made = bpy.context.object
        expected = self.tube(line, True)
        self.same(vertices_of(made), expected.vertices)
        self.assertEqual(set(map(len, faces_of(made))), {4})
        self.assertAlmostEqual(volume(made), expected.volume, places=4)
        edges = made.data.edges
        lengths = [(made.data.vertices[a].co - made.data.vertices[b].co).length for a, b in (e.vertices for e in edges)]
        self.assertLess(max(lengths), 0.6)  # a seam would have some as long as the tube is wide

    def test_planar_loops_are_finite(self):
        for tilt in (0.1, 0.35, 0.7, 1.3):
            points = [(x, y * math.cos(tilt), y * math.sin(tilt)) for x, y, _ in LOOP]
            curve(points)
            bpy.ops.object.korvale_tube(radius=0.25, sides=12)
            self.assertTrue(numpy.isfinite(vertices_of(bpy.context.object)).all())
            self.assertEqual(len(faces_of(bpy.context.object)), 48)

    def test_several_splines_are_one_mesh(self):
        curve(LINE, [(x, y + 9, z) for x, y, z in LINE], closed=False)
        bpy.ops.object.korvale_tube(radius=0.25, sides=3, caps=False)
        self.assertEqual(len(faces_of(bpy.context.object)), 2 * 3 * 3)
        self.assertEqual(len(bpy.context.object.data.vertices), 2 * 4 * 3)

    def test_a_bent_spline_is_taken_as_it_is_drawn(self):
        bpy.ops.curve.primitive_bezier_circle_add(radius=2)
        bpy.ops.object.korvale_tube(radius=0.5, sides=32)
        self.assertEqual(len(bpy.context.object.data.vertices), 32 * 48)
        self.assertAlmostEqual(volume(bpy.context.object), 2 * math.pi ** 2 * 2 * 0.25, delta=0.2)

    def test_what_has_no_tube_is_refused(self):
        select()
        self.refused(bpy.ops.object.korvale_tube, "select a curve")
        curve(LINE, closed=False, scale=(1, math.nan, 1))
        self.refused(bpy.ops.object.korvale_tube, "finite")


def volume(obj):
    """What the faces enclose, outwards positive."""
    obj.data.calc_loop_triangles()
    triangles = [tuple(triangle.vertices) for triangle in obj.data.loop_triangles]
    return korvale.Mesh(vertices_of(obj).astype(float), triangles).volume
