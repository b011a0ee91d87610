"""Relax Mesh, Scatter on Mesh and Equation Deform."""

import math
import os

import bpy
import korvale
import numpy
from scene import SceneTest, cube, faces_of, grid, mesh, select, text, values_of, vertices_of


def corners_of(obj):
    """The triangles into which Blender cuts the faces."""
    obj.data.calc_loop_triangles()
    return numpy.array([triangle.vertices for triangle in obj.data.loop_triangles])


def group(obj, name, values):
    """A vertex group; where the weight is 0 the vertex is not in it."""
    made = obj.vertex_groups.new(name=name)
    for vertex, weight in enumerate(values):
        if weight:
            made.add([vertex], float(weight), "REPLACE")


def with_keys(obj, deformed):
    """Shape keys: the mesh as it is, and another, which is active."""
    obj.shape_key_add(name="Basis")
    key = obj.shape_key_add(name="Pulled")
    key.data.foreach_set("co", numpy.asarray(deformed, numpy.float32).ravel())
    obj.active_shape_key_index = 1
    key.value = 1
    return key


def points_of(key):
    """The points of a shape key."""
    points = numpy.empty(3 * len(key.data), numpy.float32)
    key.data.foreach_get("co", points)
    return points.reshape(-1, 3)


class RelaxTest(SceneTest):
    def pulled(self, obj):
        points = vertices_of(obj).astype(float)
        points[-40:, 2] += 1
        return points.astype(numpy.float32).astype(float)

    def test_a_shape_key_is_brought_back_towards_the_basis(self):
        obj = grid()
        shape, pulled = vertices_of(obj).astype(float), self.pulled(obj)
        key = with_keys(obj, pulled)
        bpy.ops.object.korvale_relax(lengths=2, angles=0.5, steps=50)
        relaxer = korvale.Relaxer(shape * 2, corners_of(obj)).keep("lengths", 2).keep("angles", 0.5)
        expected = relaxer.run(pulled * 2, steps=50)  # a grid of 4 is relaxed at a size of 8
        self.same(points_of(key), expected.points / 2)
        self.assertLess(expected.energy, relaxer.energy(pulled * 2) / 10)
        self.same(points_of(obj.data.shape_keys.key_blocks[0]), shape)

    def test_volume_and_area_of_a_closed_mesh(self):
        obj = cube(20)
        shape = vertices_of(obj).astype(float)
        key = with_keys(obj, shape * (1, 1, 0.5))
        bpy.ops.object.korvale_relax(lengths=0, volume=1, area=0.5, steps=30)
        relaxer = korvale.Relaxer(shape / 2, corners_of(obj)).keep("volume", 1e-4).keep("area", 0.5e-3)
        self.same(points_of(key), relaxer.run(shape * (0.5, 0.5, 0.25), steps=30).points * 2)

    def test_the_size_of_a_mesh_does_not_matter(self):
        found = []
        for size in (2.0 ** -20, 1.0, 2.0 ** 20):
            obj = grid(size=4 * size)
            key = with_keys(obj, self.pulled_by(obj, size))
            bpy.ops.object.korvale_relax(steps=20)
            found.append(points_of(key).astype(float) / size)
        self.same(found[1], found[0])
        self.same(found[2], found[0])

    def pulled_by(self, obj, size):
        points = vertices_of(obj).astype(float)
        points[:, 2] += (size + points[:, 0]) / 4
        return points

    def test_pins_stay(self):
        obj = grid()
        pulled = self.pulled(obj)
        key = with_keys(obj, pulled)
        held = numpy.zeros(len(pulled))
        held[:20], held[-20:], held[100] = 1, 0.5, 0.25
        group(obj, "pins", held)
        bpy.ops.object.korvale_relax(steps=40, pins="pins")
        moved = points_of(key)
        self.same(moved[held >= 0.5], pulled[held >= 0.5])
        relaxer = korvale.Relaxer(vertices_of(obj).astype(float) * 2, corners_of(obj)).keep("lengths")
        self.same(moved, relaxer.hold(held >= 0.5).run(pulled * 2, steps=40).points / 2)
        self.assertNotEqual(moved[100].tolist(), pulled[100].tolist())

    def test_another_mesh_as_the_reference(self):
        shape = cube(name="shape")
        obj = cube(name="deformed")
        points = vertices_of(obj).astype(float)
        points[7] += 1
        obj.data.vertices.foreach_set("co", points.astype(numpy.float32).ravel())
        select(obj, shape)
        bpy.ops.object.korvale_relax(steps=60)
        relaxer = korvale.Relaxer(vertices_of(shape).astype(float) * 4, corners_of(obj)).keep("lengths")
        self.same(vertices_of(obj), relaxer.run(points * 4, steps=60).points / 4)

    def test_undo_and_redo(self):
        obj = grid()
        pulled = self.pulled(obj)
        with_keys(obj, pulled)
        bpy.ops.ed.undo_push(message="before")
        bpy.ops.object.korvale_relax("EXEC_DEFAULT", True, steps=10)
        relaxed = points_of(bpy.data.objects["grid"].data.shape_keys.key_blocks[1])
        bpy.ops.ed.undo()
        self.same(points_of(bpy.data.objects["grid"].data.shape_keys.key_blocks[1]), pulled)
        bpy.ops.ed.redo()
        self.same(points_of(bpy.data.objects["grid"].data.shape_keys.key_blocks[1]), relaxed)

    def test_what_cannot_be_relaxed_is_refused(self):
        relax = bpy.ops.object.korvale_relax
        select()
        self.refused(relax, "make a mesh with faces the active object")
        text("words")
        self.refused(relax, "make a mesh with faces")
        obj = grid()
        self.refused(relax, "select one mesh as the reference")
        other = cube()
        select(obj, other)
        self.refused(relax, "cube has 8 vertices, but grid has 400")
        key = with_keys(obj, self.pulled(obj))
        self.refused(relax, "keep something", lengths=0)
        self.refused(relax, "no vertex group", pins="none")
        self.refused(relax, "no shape key", reference="none")
        self.refused(relax, "is the reference", reference="Pulled")
        self.refused(relax, "closed", volume=1)
        key.data[3].co.x = math.nan
        self.refused(relax, "finite")
        obj.active_shape_key_index = 0
        self.refused(relax, "is the reference")


class ScatterTest(SceneTest):
    def test_points_normals_and_faces(self):
        obj = cube(scale=(1, 2, 3), location=(5, 6, 7))
        bpy.ops.object.korvale_scatter(count=500, seed=3)
        made = bpy.context.object
        vertices, corners = vertices_of(obj).astype(float) * (1, 2, 3), corners_of(obj)
        points, _, on = korvale.scatter((vertices, corners), 500, seed=3 * 2654435761 % 2**32)
        self.same(vertices_of(made), points)
        self.same(values_of(made, "surface_normal", 3), korvale.Mesh(vertices, corners).normals[on])
        numpy.testing.assert_array_equal(values_of(made, "surface_face", kind=numpy.int32), on // 2)
        self.assertEqual(made.location, obj.location)

    def test_normals_of_a_mirrored_mesh_point_outwards(self):
        cube(scale=(-1, 1, 2))
        bpy.ops.object.korvale_scatter(count=300)
        made = bpy.context.object
        points = vertices_of(made)
        self.assertTrue((numpy.sum(points * values_of(made, "surface_normal", 3), axis=1) > 0.99).all())

    def test_a_seed_repeats_and_another_does_not(self):
        found = []
        for seed in (1, 1, 2):
            cube()
            bpy.ops.object.korvale_scatter(count=100, seed=seed)
            found.append(vertices_of(bpy.context.object).tobytes())
        self.assertEqual(found[0], found[1])
        self.assertNotEqual(found[0], found[2])

    def test_a_vertex_group_says_where_points_are(self):
        obj = grid()
        group(obj, "here", vertices_of(obj)[:, 0] > 2.5)
        bpy.ops.object.korvale_scatter(count=2000, seed=1, density="here")
        points = vertices_of(bpy.context.object)
        chances = (vertices_of(obj)[:, 0] > 2.5)[corners_of(obj)].mean(axis=1)
        surface = vertices_of(obj).astype(float), corners_of(obj)
        self.same(points, korvale.scatter(surface, 2000, seed=2654435761 % 2**32, weights=chances).points)
        self.assertGreater(points[:, 0].min(), 2.2)

    def test_saved_and_reopened(self):
        cube()
        bpy.ops.object.korvale_scatter(count=100)
        bits = values_of(bpy.context.object, "surface_normal", 3).tobytes()
        path = os.path.join(os.environ["TMPDIR"], "scatter.blend")
        bpy.ops.wm.save_as_mainfile(filepath=path)
        bpy.ops.wm.read_factory_settings(use_empty=True)
        bpy.ops.wm.open_mainfile(filepath=path)
        self.assertEqual(values_of(bpy.data.objects["cube points"], "surface_normal", 3).tobytes(), bits)

    def test_what_has_no_area_is_refused(self):
        scatter = bpy.ops.object.korvale_scatter
        select()
        self.refused(scatter, "make a mesh with faces the active object")
        mesh([(0, 0, 0), (1, 0, 0)], [])
        self.refused(scatter, "make a mesh with faces")
        mesh([(0, 0, 0)] * 3, [(0, 1, 2)])
        self.refused(scatter, "area")
        mesh([(0, 0, 0), (1, 0, 0), (0, math.nan, 0)], [(0, 1, 2)])
        self.refused(scatter, "finite")
        cube(scale=(1, 1, math.nan))
        self.refused(scatter, "finite")
        obj = cube()
        self.refused(scatter, "no vertex group", density="none")
        group(obj, "empty", [0] * 8)
        self.refused(scatter, density="empty")


class EquationTest(SceneTest):
    def test_vertices_move_by_the_equations(self):
        obj = grid()
        points = vertices_of(obj).astype(float)
        bpy.context.scene.frame_set(25)
        group(obj, "half", points[:, 0] / 4)
        bpy.ops.object.korvale_equation(text="z = z + w * SIN(6 * x + frame / 10); x = x + nz * z / 8", group="half")
        share = numpy.array([next((g.weight for g in v.groups), 0) for v in obj.data.vertices])
        equations = korvale.Equations("x y z nz w frame")
        equations.add("z = z + w * SIN(6 * x + frame / 10)")
        equations.add("x = x + nz * z / 8")
        moved = equations.evaluate_all("x y z", x=points[:, 0], y=points[:, 1], z=points[:, 2], nz=numpy.ones(400),
                                       w=share, frame=25)
        self.same(vertices_of(obj), numpy.column_stack([moved["x"], moved["y"], moved["z"]]))

    def test_noise_repeats_with_its_seed(self):
        found = []
        for seed in (4, 4, 5):
            obj = grid()
            bpy.ops.object.korvale_equation(text="z = z + 0.1 * GAUSS", seed=seed)
            found.append(vertices_of(obj).tobytes())
        self.assertEqual(found[0], found[1])
        self.assertNotEqual(found[0], found[2])

    def test_undo_and_redo(self):
        plain = vertices_of(grid())
        bpy.ops.ed.undo_push(message="before")
        bpy.ops.object.korvale_equation("EXEC_DEFAULT", True, text="z = 1 + x")
        bpy.ops.ed.undo()
        self.same(vertices_of(bpy.data.objects["grid"]), plain)
        bpy.ops.ed.redo()
        self.same(vertices_of(bpy.data.objects["grid"])[:, 2], plain[:, 0] + 1.0)

    def test_a_refused_text_is_told_at_the_word(self):
        obj = grid()
        plain, deform = vertices_of(obj), bpy.ops.object.korvale_equation
        self.refused(deform, "character 13", '"height" is neither a variable', text="z = 1; z = SIN(x * height)")
        self.refused(deform, "write SIN", text="z = sin(x)")
        self.refused(deform, "write an equation first", text=" ; ")
        self.refused(deform, "would have no place", text="z = EXP(x * 1000)")
        self.refused(deform, "no vertex group", text="z = w", group="none")
        self.same(vertices_of(obj), plain)
        with_keys(obj, plain)
        self.refused(deform, "has shape keys", text="z = 1")
