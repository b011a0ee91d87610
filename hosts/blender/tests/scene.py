"""What the tests of the add-on share: an empty scene, objects to work on, results as arrays."""

import unittest

import bpy
import numpy


class SceneTest(unittest.TestCase):
    """A test that begins with an empty scene."""

    def setUp(self):
        bpy.ops.wm.read_factory_settings(use_empty=True)
        bpy.ops.preferences.addon_enable(module="korvale_blender")

    def refused(self, call, *words, **more):
        """An operator has to be refused in a sentence with these words, and to leave the scene as it was."""
        before = names()
        with self.assertRaises(RuntimeError) as caught:
            call(**more)
        self.assertNotIn("Traceback", str(caught.exception))
        for word in words:
            self.assertIn(word, str(caught.exception))
        self.assertEqual(names(), before)

    def same(self, points, expected):
        """Points in Blender have to be those of the library, to the last bit of a float."""
        numpy.testing.assert_array_equal(points, numpy.asarray(expected).astype(numpy.float32))


def names():
    """All data there is, by kind."""
    return [sorted(data.name for data in kind) for kind in (bpy.data.objects, bpy.data.curves, bpy.data.meshes)]


def added(name, data, **fields):
    """A new object, selected and active, and nothing else."""
    obj = bpy.data.objects.new(name, data)
    bpy.context.collection.objects.link(obj)
    for field, value in fields.items():
        setattr(obj, field, value)
    select(obj)
    return obj


def select(*objects):
    """Selects these, the first one active."""
    for obj in bpy.context.selected_objects:
        obj.select_set(False)
    for obj in objects:
        obj.select_set(True)
    bpy.context.view_layer.objects.active = objects[0] if objects else None
    bpy.context.view_layer.update()


def curve(*splines, closed=True, name="curve", **fields):
    """A curve of straight splines."""
    data = bpy.data.curves.new(name, "CURVE")
    data.dimensions = "3D"
    for points in splines:
        spline = data.splines.new("POLY")
        spline.points.add(len(points) - 1)
        for row, point in zip(spline.points, points):
            row.co = (*point, 1)
        spline.use_cyclic_u = closed
    return added(name, data, **fields)


def text(body, **fields):
    """A text."""
    data = bpy.data.curves.new("text", "FONT")
    data.body = body
    return added("text", data, **fields)


def mesh(vertices, faces, name="mesh", **fields):
    """A mesh."""
    data = bpy.data.meshes.new(name)
    data.from_pydata([tuple(map(float, vertex)) for vertex in vertices], [], [tuple(map(int, face)) for face in faces])
    return added(name, data, **fields)


def grid(n=20, size=4.0):
    """A flat square of quads."""
    x, y = numpy.meshgrid(numpy.linspace(0, size, n), numpy.linspace(0, size, n))
    i = numpy.arange(n * n).reshape(n, n)
    faces = numpy.stack([i[:-1, :-1], i[:-1, 1:], i[1:, 1:], i[1:, :-1]], axis=-1).reshape(-1, 4)
    return mesh(numpy.column_stack([x.ravel(), y.ravel(), 0 * x.ravel()]), faces, "grid")


def cube(size=2.0, name="cube", **fields):
    """A closed cube around the origin."""
    half = size / 2
    vertices = [(x, y, z) for z in (-half, half) for y in (-half, half) for x in (-half, half)]
    faces = [(0, 2, 3, 1), (4, 5, 7, 6), (0, 1, 5, 4), (2, 6, 7, 3), (0, 4, 6, 2), (1, 3, 7, 5)]
    return mesh(vertices, faces, name, **fields)


def splines_of(obj):
    """The points of all splines of a curve, float32 (N, 3) each."""
    found = []
    for spline in obj.data.splines:
        points = numpy.empty(4 * len(spline.points), numpy.float32)
        spline.points.foreach_get("co", points)
        found.append(points.reshape(-1, 4)[:, :3])
    return found


def vertices_of(obj):
    """The vertices of a mesh, float32 (N, 3)."""
    points = numpy.empty(3 * len(obj.data.vertices), numpy.float32)
    obj.data.vertices.foreach_get("co", points)
    return points.reshape(-1, 3)


def faces_of(obj):
    """The faces of a mesh."""
    return [tuple(face.vertices) for face in obj.data.polygons]


def values_of(obj, name, width=1, kind=numpy.float32):
    """An attribute of a mesh."""
    stored = obj.data.attributes[name]
    values = numpy.empty(len(stored.data) * width, kind)
    stored.data.foreach_get("vector" if width == 3 else "value", values)
    return values.reshape(-1, width) if width > 1 else values
