"""Offset Outlines and Bevelled Text."""

import math
import os

import bpy
import korvale
import numpy
from korvale_blender import bridge
from scene import SceneTest, curve, faces_of, mesh, select, splines_of, text, values_of, vertices_of

SQUARE = [(0, 0, 0), (4, 0, 0), (4, 4, 0), (0, 4, 0)]
HOLE = [(1, 1, 0), (3, 1, 0), (3, 3, 0), (1, 3, 0)]
WAIST = [(0, 0, 0), (9, 0, 0), (11, 4, 0), (13, 0, 0), (22, 0, 0),
         (22, 9, 0), (13, 9, 0), (11, 5, 0), (9, 9, 0), (0, 9, 0)]
NAN = math.nan


def tilted(points, turn=0.7):
    """Points turned about the x axis, as doubles of what Blender keeps."""
    turned = [(x, y * math.cos(turn), y * math.sin(turn) + 5) for x, y, _ in points]
    return numpy.array(turned, numpy.float32).astype(float)


class OffsetTest(SceneTest):
    def test_a_hole_shrinks_where_the_outline_grows(self):
        curve(HOLE, SQUARE)
        bpy.ops.object.korvale_offset(distance=0.25)
        outer, hole = splines_of(bpy.context.object)
        self.same(outer, korvale.offset(SQUARE, 0.25).points)
        self.same(hole, korvale.offset(HOLE, -0.25).points)
        self.assertEqual(bpy.context.object.data.dimensions, "2D")

    def test_several_rings_keep_all_pieces_and_take_the_materials_in_turn(self):
        obj = curve(WAIST)
        for name in ("first", "others"):
            obj.data.materials.append(bpy.data.materials.new(name))
        bpy.ops.object.korvale_offset(distance=-0.75, rings=3, join="round", tolerance=0.01)
        made = bpy.context.object
        expected = [(ring, number) for number, rings in enumerate(
            korvale.offset(numpy.array(WAIST, float), [-0.75, -1.5, -2.25], pieces=True, join="round",
                           tolerance=numpy.float32(0.01).item())) for ring in rings.singly()]
        self.assertEqual(len(expected), 6)
        self.assertEqual([spline.material_index for spline in made.data.splines], [min(n, 1) for _, n in expected])
        for points, (ring, _) in zip(splines_of(made), expected, strict=True):
            self.same(points, ring)

    def test_joins_and_their_limit(self):
        for join, limit in (("bevel", 0), ("round", 0), ("miter", 1.25)):
            curve(SQUARE)
            bpy.ops.object.korvale_offset(distance=1, join=join, miter_limit=limit)
            expected = korvale.offset(SQUARE, 1, join=join, miter_limit=limit or None)
            self.same(splines_of(bpy.context.object)[0], expected.points)
            self.assertGreater(len(expected.points), 4)

    def test_letters_keep_their_holes(self):
        obj = text("A8")
        bpy.ops.object.korvale_offset(distance=-0.01)
        self.assertEqual(len(bpy.context.object.data.splines), 2 + 3)
        self.assertEqual(len(obj.data.body), 2)

    def test_outlines_in_a_tilted_plane(self):
        outer, hole = tilted(SQUARE), tilted(HOLE)
        curve(outer, hole)
        bpy.ops.object.korvale_offset(distance=0.5)
        made = bpy.context.object
        self.same(splines_of(made)[0], korvale.offset(outer, 0.5).points)
        self.same(splines_of(made)[1], korvale.offset(hole, -0.5).points)
        self.assertEqual(made.data.dimensions, "3D")

    def test_the_distance_is_that_of_the_scene_whatever_the_scale(self):
        obj = curve(SQUARE, scale=(3, 3, 3), location=(1, 2, 3), rotation_euler=(0.3, 0.2, 0.1))
        bpy.ops.object.korvale_offset(distance=0.5)
        made = bpy.context.object
        self.same(splines_of(made)[0], korvale.offset(numpy.array(SQUARE) * numpy.array(obj.matrix_world.to_scale()),
                                                      0.5).points)
        self.assertEqual(made.location, obj.location)
        for axis in made.scale:
            self.assertAlmostEqual(axis, 1, places=6)

    def test_several_objects_each_give_one(self):
        curve(SQUARE, name="b")
        first = bpy.context.object
        curve(HOLE, name="a")
        select(first, bpy.context.object)
        bpy.ops.object.korvale_offset(distance=0.5)
        self.assertEqual(sorted(obj.name for obj in bpy.context.selected_objects), ["a offset", "b offset"])

    def test_undo_redo_and_adjusting(self):
        curve(SQUARE)
        bpy.ops.ed.undo_push(message="before")
        bpy.ops.object.korvale_offset("EXEC_DEFAULT", True, distance=0.5)
        bits = splines_of(bpy.data.objects["curve offset"])[0].tobytes()
        bpy.ops.ed.undo()
        self.assertNotIn("curve offset", bpy.data.objects)
        bpy.ops.ed.redo()
        self.assertEqual(splines_of(bpy.data.objects["curve offset"])[0].tobytes(), bits)
        bpy.ops.ed.undo()
        bpy.ops.object.korvale_offset("EXEC_DEFAULT", True, distance=1)  # as the panel does: undo, and once more
        self.same(splines_of(bpy.data.objects["curve offset"])[0], korvale.offset(SQUARE, 1).points)

    def test_saved_and_reopened(self):
        curve(SQUARE)
        bpy.ops.object.korvale_offset(distance=0.1)
        bits = splines_of(bpy.context.object)[0].tobytes()
        path = os.path.join(os.environ["TMPDIR"], "offset.blend")
        bpy.ops.wm.save_as_mainfile(filepath=path)
        bpy.ops.wm.read_factory_settings(use_empty=True)
        bpy.ops.wm.open_mainfile(filepath=path)
        self.assertEqual(splines_of(bpy.data.objects["curve offset"])[0].tobytes(), bits)

    def test_what_cannot_be_offset_is_refused(self):
        offset = bpy.ops.object.korvale_offset
        select()
        self.refused(offset, "select a text or a curve")
        mesh([(0, 0, 0), (1, 0, 0), (0, 1, 0)], [(0, 1, 2)])
        self.refused(offset, "select a text or a curve")
        text("")
        self.refused(offset, "text has no closed spline")
        curve(SQUARE, closed=False)
        self.refused(offset, "no closed spline")
        curve(SQUARE, [(x, y, z + 1) for x, y, z in HOLE])
        self.refused(offset, "do not lie in one plane")
        curve([(0, 0, 0), (4, 0, 0), (4, 4, 2), (0, 4, 0)])
        self.refused(offset, "do not lie in one plane")
        curve(SQUARE, [(x + 2, y + 1, z) for x, y, z in SQUARE])
        self.refused(offset, "outlines 0 and 1", "near")
        curve(SQUARE, scale=(NAN, 1, 1))
        self.refused(offset, "finite")
        curve([*SQUARE[:3], (NAN, 0, 0)])
        self.refused(offset, "finite")
        curve(SQUARE, scale=(0, 0, 0))
        self.refused(offset)
        curve(SQUARE)
        self.refused(offset, "nothing is left", distance=-3)

    def test_one_refusal_leaves_all_objects_alone(self):
        good = curve(SQUARE, name="good")
        bad = curve(SQUARE, closed=False, name="bad")
        select(good, bad)
        self.refused(bpy.ops.object.korvale_offset, "bad has no closed spline")

    def test_a_hole_that_outgrows_its_outline_is_told(self):
        curve(SQUARE, [(0.5, 1, 0), (1, 1, 0), (1, 2, 0), (0.5, 2, 0)])
        bpy.ops.object.korvale_offset(distance=-0.4)  # a warning is no error
        self.assertEqual(len(bpy.context.object.data.splines), 2)


class BevelTest(SceneTest):
    def test_letters_are_the_solids_of_the_library(self):
        obj = text("Ko8")
        bpy.ops.object.korvale_bevel(height=0.5, bevel=0.125, form="chamfer", both=True)
        made = bpy.context.object
        shapes = bridge.shapes(obj, bpy.context)
        self.assertEqual([len(shape) for shape in shapes], [1, 2, 3])
        solids = [korvale.bevel(shape, [(-0.125, 0), (0, 0.125), (0, 0.375), (-0.125, 0.5)]) for shape in shapes]
        self.same(vertices_of(made), numpy.concatenate([solid.vertices for solid in solids]))
        firsts = numpy.cumsum([0, *(len(solid.vertices) for solid in solids)])
        expected = numpy.concatenate([solid.triangles + first for solid, first in zip(solids, firsts)])
        self.assertEqual(faces_of(made), [tuple(face) for face in expected.tolist()])
        numpy.testing.assert_array_equal(values_of(made, "shape", kind=numpy.int32),
                                         numpy.repeat([0, 1, 2], [len(solid.triangles) for solid in solids]))

    def test_outlines_of_letters_are_those_that_blender_draws(self):
        obj = text("Ko8")
        read = numpy.concatenate([points for points, _ in bridge.polylines(obj, bpy.context)])
        bpy.ops.object.convert(target="MESH")  # filled, from the same points
        drawn = vertices_of(bpy.context.object).astype(float)
        away = numpy.linalg.norm(read[:, None] - drawn, axis=2)
        self.assertLess(away.min(axis=1).max(), 1e-6)  # some letters are moved into their places in floats
        self.assertLess(away.min(axis=0).max(), 1e-6)

    def test_solids_are_closed_and_turned_outwards(self):
        curve(SQUARE, HOLE)
        for form in ("round", "chamfer", "hollow"):
            select(bpy.data.objects["curve"])
            bpy.ops.object.korvale_bevel(height=1, bevel=0.25, form=form, segments=3)
            made = bpy.context.object
            solid = korvale.Mesh(vertices_of(made).astype(float), faces_of(made))
            self.assertTrue(8 < solid.volume < 12, (form, solid.volume))  # 12 without the edge
            self.assertFalse(made.data.validate())

    def test_materials_come_along(self):
        obj = text("i")
        obj.data.materials.append(bpy.data.materials.new("gold"))
        bpy.ops.object.korvale_bevel()
        self.assertEqual(bpy.context.object.data.materials[0].name, "gold")

    def test_a_bevel_wider_than_the_strokes_goes_as_far_as_it_can(self):
        curve(WAIST)
        bpy.ops.object.korvale_bevel(height=4, bevel=3, segments=1)
        expected = korvale.bevel(WAIST, [(0, 0), (0, 1), (-3, 4)])
        self.assertGreater(expected.reached.min(), -3)
        self.same(vertices_of(bpy.context.object), expected.vertices)

    def test_what_cannot_be_bevelled_is_refused(self):
        text("")
        self.refused(bpy.ops.object.korvale_bevel, "no closed spline")
        curve(SQUARE)
        self.refused(bpy.ops.object.korvale_bevel, "must fit into the height", height=0.1, bevel=0.2)
        self.refused(bpy.ops.object.korvale_bevel, "must fit into the height", height=0.3, bevel=0.2, both=True)
