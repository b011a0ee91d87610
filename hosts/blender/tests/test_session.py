"""A session of an artist: a sign on a hill with a rail around it, saved, reopened and changed."""

import math
import os

import bpy
import korvale
import numpy
from scene import SceneTest, curve, grid, select, splines_of, text, values_of, vertices_of


class SessionTest(SceneTest):
    def test_twelve_steps(self):
        hill = grid(40, 8)
        bpy.ops.object.korvale_equation(text="z = 0.5 * SIN(x) * COS(y)")  # 1: a hill
        letters = text("Inn", location=(2, 3, 9))
        bpy.ops.object.korvale_bevel(height=0.3, bevel=0.05, both=True)  # 2: letters
        sign = bpy.context.object
        select(hill, sign)
        bpy.ops.object.korvale_drop(height=0.25)  # 3: on the hill
        ground = 0.5 * math.sin(2) * math.cos(3)
        self.assertAlmostEqual(sign.location.z, ground + 0.25, places=2)
        select(letters)
        bpy.ops.object.korvale_offset(distance=0.1, join="round")  # 4: an outline around them
        outline = bpy.context.object
        self.assertEqual(len(splines_of(outline)), 3)
        select(outline)
        bpy.ops.object.korvale_tube(radius=0.02, sides=8)  # 5: a neon tube along it
        neon = bpy.context.object
        self.assertEqual(len(vertices_of(neon)), 8 * sum(map(len, splines_of(outline))))
        track = curve([(0, 0, 0), (2, 1, 0.3), (5, 1, 0.2), (8, 4, 0)], closed=False, name="track")
        bpy.ops.object.korvale_band(distance=0.3, cap="round")  # 6: a way
        way = bpy.context.object
        select(hill)
        bpy.ops.object.korvale_scatter(count=500, seed=1)  # 7: grass
        grass = bpy.context.object
        self.assertEqual(len(values_of(grass, "surface_normal", 3)), 500)
        select(sign)
        bpy.ops.object.korvale_thickness()  # 8: how thick the letters are
        self.assertLessEqual(values_of(sign, "thickness").max(), 1)
        hill.shape_key_add(name="Basis")
        hill.shape_key_add(name="Bump").data[820].co.z += 1
        hill.active_shape_key_index = 1
        select(hill)
        bpy.ops.object.korvale_relax(steps=20)  # 9: a bump that settles
        bump = hill.active_shape_key.data[820].co.z - hill.data.shape_keys.key_blocks[0].data[820].co.z
        self.assertTrue(0 < bump < 0.9, bump)
        before = {obj.name: vertices_of(obj).tobytes() for obj in (hill, sign, neon, way, grass)}
        path = os.path.join(os.environ["TMPDIR"], "session.blend")
        bpy.ops.wm.save_as_mainfile(filepath=path)  # 10: saved
        self.setUp()
        bpy.ops.wm.open_mainfile(filepath=path)  # 11: reopened
        self.assertEqual({name: vertices_of(bpy.data.objects[name]).tobytes() for name in before}, before)
        track = bpy.data.objects["track"]
        track.data.splines[0].points[1].co.z = 1.5
        select(track)
        bpy.ops.object.korvale_band(distance=0.3, cap="round")  # 12: the way once more, over a bridge
        points = [point.co[:3] for point in track.data.splines[0].points]
        expected = korvale.band(points, numpy.float32(0.3).item(), both_sides=True, up=(0, 0, 1), cap="round")
        self.same(vertices_of(bpy.context.object), expected.outline)
