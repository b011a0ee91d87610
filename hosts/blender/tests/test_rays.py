"""Drop onto Surface, Thickness to Attribute and Select Inside."""

import math

import bpy
import korvale
import numpy
from scene import SceneTest, cube, grid, mesh, select, values_of, vertices_of


class DropTest(SceneTest):
    def test_objects_come_down_to_the_surface(self):
        surface = mesh([(0, 0, 0), (4, 0, 4), (4, 4, 4), (0, 4, 0)], [(0, 1, 2, 3)], "slope", location=(0, 0, 1))
        objects = [bpy.data.objects.new(f"empty {i}", None) for i in range(3)]
        for obj, place in zip(objects, [(1, 2, 9), (3, 1, 9), (9, 9, 9)]):
            bpy.context.collection.objects.link(obj)
            obj.location = place
        select(surface, *objects)
        bpy.ops.object.korvale_drop(height=0.5)
        self.assertEqual([tuple(obj.location) for obj in objects], [(1, 2, 2.5), (3, 1, 4.5), (9, 9, 9)])

    def test_nothing_to_drop_or_to_drop_onto(self):
        surface = grid()
        self.refused(bpy.ops.object.korvale_drop, "select other objects")
        below = cube(location=(1, 1, -5))
        select(surface, below)
        self.refused(bpy.ops.object.korvale_drop, "nothing of grid is below")
        below.location = (math.nan, 0, 0)
        select(surface, below)
        self.refused(bpy.ops.object.korvale_drop, "finite")


class ThicknessTest(SceneTest):
    def test_a_ball_is_as_thick_as_its_scale_makes_it(self):
        bpy.ops.mesh.primitive_uv_sphere_add(radius=1, segments=32, ring_count=16)
        obj = bpy.context.object
        obj.scale = (2, 2, 2)
        select(obj)
        bpy.ops.object.korvale_thickness()
        thick = values_of(obj, "thickness")
        self.assertEqual(len(thick), len(obj.data.vertices))
        self.assertTrue((abs(thick - 4) < 0.08).all(), (thick.min(), thick.max()))
        points, normals = vertices_of(obj).astype(float) * 2, numpy.empty(3 * len(thick), numpy.float32)
        obj.data.vertices.foreach_get("normal", normals)
        inwards, below = -korvale.normalize(normals.reshape(-1, 3) / 2), 1e-4 * numpy.ptp(points, axis=0).max()
        obj.data.calc_loop_triangles()
        sphere = korvale.RayGrid(points, [triangle.vertices[:] for triangle in obj.data.loop_triangles])
        self.same(thick, sphere.cast(points + below * inwards, inwards).distances + below)
        bpy.ops.object.korvale_thickness()  # in place of the first
        self.assertEqual([a.name for a in obj.data.attributes].count("thickness"), 1)

    def test_an_open_mesh_has_none(self):
        obj = grid()
        bpy.ops.object.korvale_thickness()
        self.same(values_of(obj, "thickness"), numpy.zeros(400))


class InsideTest(SceneTest):
    def test_vertices_inside_are_selected(self):
        other = cube(2, location=(1, 1, 0))
        obj = grid()
        select(obj, other)
        bpy.ops.object.korvale_inside()
        chosen = numpy.array([vertex.select for vertex in obj.data.vertices])
        points = vertices_of(obj).astype(float)
        grid_of_cube = korvale.RayGrid(vertices_of(other).astype(float) + (1, 1, 0),
                                       [face.vertices[:] for face in other.data.polygons])
        numpy.testing.assert_array_equal(chosen, grid_of_cube.contains(points))
        clear = abs(points[:, :2] - 1).max(axis=1)
        self.assertTrue(chosen[clear < 0.99].all())
        self.assertFalse(chosen[clear > 1.01].any())
        for face in obj.data.polygons:
            self.assertEqual(face.select, all(chosen[vertex] for vertex in face.vertices))
        for edge in obj.data.edges:
            self.assertEqual(edge.select, all(chosen[vertex] for vertex in edge.vertices))

    def test_an_open_mesh_has_no_inside(self):
        obj, other = cube(), grid()
        select(obj, other)
        self.refused(bpy.ops.object.korvale_inside, "open")
