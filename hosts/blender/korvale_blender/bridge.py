"""Between Blender's data and arrays: curves and meshes as points, results as new objects, all in bulk.

Points are read in the axes of their object without its scale, which they have instead: so distances are those of the
scene, and what is made lies where its source lies, with the same rotation and a scale of 1.
"""

from collections.abc import Iterable, Sequence
from typing import Any

import bpy
import korvale
import numpy
from mathutils import Matrix
from numpy.typing import NDArray

Doubles = NDArray[numpy.float64]
Ints = NDArray[numpy.int32]

# Chosen: Blender's coordinates are floats, so points of a plane that is tilted lie off it by some 1e-07 of its size.
FLAT = 1e-4


class Refused(Exception):
    """What a tool cannot work on, as one sentence for the status line."""


class Tool(bpy.types.Operator):
    """What all operators share: undo, the panel that adjusts the last operation, and refusals as reports."""

    bl_options = {"REGISTER", "UNDO"}

    def execute(self, context: bpy.types.Context) -> set[str]:
        """Called by Blender. Whatever is refused leaves the scene as it was."""
        try:
            if context.mode != "OBJECT":
                raise Refused("leave edit mode first: what is edited is not in the object yet")
            self.work(context)
        except (Refused, korvale.Error) as error:
            self.report({"ERROR"}, str(error))
            return {"CANCELLED"}
        return {"FINISHED"}

    def work(self, context: bpy.types.Context) -> None:
        """Does it; computes all before it changes anything."""
        raise NotImplementedError


def chosen(context: bpy.types.Context, kinds: set[str], what: str) -> list[bpy.types.Object]:
    """The selected objects of some kinds, by name, so that the order of results does not depend on clicks."""
    objects = sorted((obj for obj in context.selected_objects if obj.type in kinds), key=lambda obj: str(obj.name))
    if not objects:
        raise Refused(f"select {what} first")
    return objects


def active_mesh(context: bpy.types.Context) -> bpy.types.Object:
    """The active object, a mesh with faces."""
    obj = context.active_object
    if obj is None or obj.type != "MESH" or not obj.data.polygons:
        raise Refused("make a mesh with faces the active object first")
    return obj


# --- Places -----------------------------------------------------------------------------------------------------------


def placed(obj: bpy.types.Object) -> tuple[Matrix, Doubles]:
    """Where an object lies without its scale, and the scale."""
    world = numpy.array(obj.matrix_world, float)
    if not numpy.isfinite(world).all():
        raise Refused(f"the location, rotation and scale of {obj.name} must be finite")
    place, turn, scale = obj.matrix_world.decompose()
    if abs(world - Matrix.LocRotScale(place, turn, scale)).max() > FLAT * abs(world).max():
        raise Refused(f"{obj.name} is sheared by its parents: apply its transforms first")
    return Matrix.LocRotScale(place, turn, None), numpy.array(scale, float)


def moved(points: Doubles, matrix: Matrix) -> Doubles:
    """Points, (N, 3), through a matrix of Blender's."""
    return korvale.transform_points(numpy.array(matrix, float), points)


# --- In ---------------------------------------------------------------------------------------------------------------


def column(rows: Any, name: str, width: int) -> NDArray[numpy.float32]:
    """A property of all rows of a collection of Blender's, (N, width)."""
    values = numpy.empty(len(rows) * width, numpy.float32)
    rows.foreach_get(name, values)
    return values.reshape(-1, width)


def numbers(rows: Any, name: str, width: int) -> Ints:
    """Whole numbers of all rows. Blender copies them at once where they are unsigned, else one by one."""
    values = numpy.empty(len(rows) * width, numpy.uint32)
    rows.foreach_get(name, values)
    return values.view(numpy.int32).reshape(-1, width)


def polylines(obj: bpy.types.Object, context: bpy.types.Context) -> list[tuple[Doubles, bool]]:
    """The splines of a curve or a text as Blender draws them, (N, 3), each with whether it is closed.

    Bevels, fillings and modifiers are left out. They are read from a copy without them, which is removed again.
    """
    curve = obj.to_curve(context.evaluated_depsgraph_get()).copy()
    carrier = bpy.data.objects.new("", curve)
    try:
        curve.dimensions = "3D"  # else Blender fills it
        curve.extrude = curve.bevel_depth = curve.offset = 0
        curve.bevel_object = curve.taper_object = None
        mesh = carrier.to_mesh()
        if mesh is None:  # nothing is drawn
            return []
        points = column(mesh.vertices, "co", 3).astype(float) * placed(obj)[1]
        edges = numbers(mesh.edges, "vertices", 2)
    finally:
        carrier.to_mesh_clear()
        obj.to_curve_clear()
        bpy.data.curves.remove(curve)  # and with it the object
    onwards = abs(edges[:, 0] - edges[:, 1]) == 1
    begins = numpy.ones(len(points), bool)
    begins[edges[onwards].max(axis=1, initial=0)] = False
    begins[:1] = True
    starts = numpy.flatnonzero(begins)
    closed = set(edges[~onwards].min(axis=1, initial=len(points)).tolist())
    return [(part, start in closed) for start, part in zip(starts.tolist(), numpy.split(points, starts[1:]))]


def shapes(obj: bpy.types.Object, context: bpy.types.Context) -> list[list[Doubles]]:
    """The closed splines of a curve or a text, sorted into shapes: each an outer outline and its holes."""
    rings = [korvale.outlines(points)[0] for points, closed in polylines(obj, context) if closed and len(points) > 2]
    if not rings:
        raise Refused(f"{obj.name} has no closed spline")
    flat = flattened(rings, obj.name)
    by_place = {seen.tobytes(): ring for seen, ring in zip(flat, rings)}
    return [[by_place[outline.tobytes()] for outline in shape] for shape in korvale.shapes(flat)]


def flattened(rings: Sequence[Doubles], name: str) -> list[Doubles]:
    """Outlines of one plane laid into z = 0, as they are where they lie at one height."""
    everything = numpy.concatenate(rings)
    low, high = korvale.bounds(everything)
    if low[2] == high[2]:
        return list(rings)
    widest = max(rings, key=lambda ring: float(numpy.ptp(ring, axis=0).max()))
    to_plane = korvale.flatten(widest).to_plane
    if abs(to_plane(everything)[:, 2]).max() > FLAT * (high - low).max():
        raise Refused(f"the splines of {name} do not lie in one plane: make them flat, or take them one by one")
    return [to_plane(ring) * (1, 1, 0) for ring in rings]


def triangles(mesh: bpy.types.Mesh) -> Ints:
    """The faces of a mesh as Blender cuts them, (T, 3)."""
    mesh.calc_loop_triangles()
    return numbers(mesh.loop_triangles, "vertices", 3)


def weights(obj: bpy.types.Object, group: str) -> Doubles:
    """The weights of the vertices of a mesh in a group, 0 where they are not in it."""
    if group not in obj.vertex_groups:
        raise Refused(f'{obj.name} has no vertex group "{group}"')
    number = obj.vertex_groups[group].index
    found = [[entry.weight for entry in vertex.groups if entry.group == number] for vertex in obj.data.vertices]
    return numpy.array([weight[0] if weight else 0.0 for weight in found])


# --- Out --------------------------------------------------------------------------------------------------------------


def curve_of(name: str, rings: Iterable[tuple[Doubles, int]], source: bpy.types.Object) -> bpy.types.Curve:
    """A curve of closed splines with the materials of its source, each with the number of its own."""
    curve = bpy.data.curves.new(name, "CURVE")
    inherit(curve, source)
    is_level = True
    for points, material in rings:
        spline = curve.splines.new("POLY")
        spline.points.add(len(points) - 1)
        spline.points.foreach_set("co", numpy.insert(points, 3, 1.0, axis=1).astype(numpy.float32).ravel())
        spline.use_cyclic_u = True
        spline.material_index = material
        is_level &= not points[:, 2].any()
    curve.dimensions = "2D" if is_level else "3D"
    return curve


def mesh_of(name: str, vertices: Doubles, corners: Ints, sizes: Ints, source: bpy.types.Object) -> bpy.types.Mesh:
    """A mesh with the materials of its source, by the corners of all its faces and how many each has."""
    mesh = bpy.data.meshes.new(name)
    inherit(mesh, source)
    mesh.vertices.add(len(vertices))
    mesh.vertices.foreach_set("co", vertices.astype(numpy.float32).ravel())
    mesh.loops.add(len(corners))
    mesh.loops.foreach_set("vertex_index", corners.astype(numpy.uint32))
    mesh.polygons.add(len(sizes))
    mesh.polygons.foreach_set("loop_start", (numpy.cumsum(sizes) - sizes).astype(numpy.uint32))
    mesh.polygons.foreach_set("loop_total", sizes.astype(numpy.uint32))
    mesh.update(calc_edges=True)
    return mesh


def inherit(data: Any, source: bpy.types.Object) -> None:
    """Gives new data the materials of an object's."""
    for material in source.data.materials:
        data.materials.append(material)


def attribute(mesh: bpy.types.Mesh, name: str, kind: str, domain: str, values: NDArray[Any]) -> None:
    """Stores an attribute, in place of one of that name."""
    if name in mesh.attributes:
        mesh.attributes.remove(mesh.attributes[name])
    stored = mesh.attributes.new(name, kind, domain)
    stored.data.foreach_set("vector" if kind == "FLOAT_VECTOR" else "value", values.ravel())


def show(context: bpy.types.Context, made: Iterable[tuple[Any, Matrix]]) -> list[bpy.types.Object]:
    """Puts new data into the scene as objects that are selected, the first one active, and nothing else."""
    objects = []
    for data, place in made:
        obj = bpy.data.objects.new(data.name, data)
        obj.matrix_world = place
        context.collection.objects.link(obj)
        objects.append(obj)
    for obj in context.selected_objects:
        obj.select_set(False)
    for obj in objects:
        obj.select_set(True)
    context.view_layer.objects.active = objects[0]
    return objects
