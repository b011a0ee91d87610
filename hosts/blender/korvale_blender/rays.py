"""Tools that cast rays: dropping objects, thickness, what lies inside."""

import bpy
import korvale
import numpy
from bpy.props import FloatProperty

from .bridge import Doubles, Refused, Tool, active_mesh, attribute, column, moved, numbers, placed, triangles

# Chosen: so far below the surface, as a share of the mesh's size, rays start that must not meet their own faces.
BELOW = 1e-4


def grid_of(obj: bpy.types.Object) -> korvale.RayGrid:
    """The faces of a mesh where they lie in the scene."""
    vertices = column(obj.data.vertices, "co", 3).astype(float)
    return korvale.RayGrid(moved(vertices, obj.matrix_world), triangles(obj.data))


def reached(grid: korvale.RayGrid, origins: Doubles, directions: Doubles) -> Doubles:
    """How far rays go, (N,), infinitely where they meet nothing."""
    distances = numpy.empty(len(origins))
    grid.cast(origins, directions, distances=distances, triangles=False, counts=False)
    return distances


def others_of(context: bpy.types.Context, surface: bpy.types.Object) -> list[bpy.types.Object]:
    """The selected objects but one, by name."""
    others = sorted((obj for obj in context.selected_objects if obj != surface), key=lambda obj: str(obj.name))
    if not others:
        raise Refused(f"select other objects beside {surface.name} first")
    return others


class OBJECT_OT_korvale_drop(Tool):
    """Drop the selected objects straight down until their origins lie on the active mesh"""

    bl_idname = "object.korvale_drop"
    bl_label = "Drop onto Surface"

    height: FloatProperty(name="Height", description="Above the surface in the end", unit="LENGTH", default=0)

    def work(self, context: bpy.types.Context) -> None:
        surface = active_mesh(context)
        objects = others_of(context, surface)
        origins = numpy.array([obj.matrix_world.translation for obj in objects], float)
        distances = reached(grid_of(surface), origins, numpy.array([(0.0, 0.0, -1.0)]))
        met = numpy.isfinite(distances)
        if not met.any():
            raise Refused(f"nothing of {surface.name} is below the selected objects")
        for obj, distance in zip(objects, distances):
            if numpy.isfinite(distance):
                place = obj.matrix_world.copy()
                place.translation.z += self.height - distance
                obj.matrix_world = place
        if not met.all():
            self.report({"WARNING"}, f"{int((~met).sum())} of {len(objects)} objects have nothing below them, and stay")


class OBJECT_OT_korvale_thickness(Tool):
    """Store how thick the active mesh is below each vertex, as the attribute "thickness" """

    bl_idname = "object.korvale_thickness"
    bl_label = "Thickness to Attribute"

    def work(self, context: bpy.types.Context) -> None:
        obj = active_mesh(context)
        attribute(obj.data, "thickness", "FLOAT", "POINT", thickness(obj).astype(numpy.float32))
        obj.data.update()


def thickness(obj: bpy.types.Object) -> Doubles:
    """How far it is from each vertex to the other side, against its normal; 0 where there is none."""
    scale = placed(obj)[1]
    vertices = column(obj.data.vertices, "co", 3) * scale
    inwards = -korvale.normalize(column(obj.data.vertices, "normal", 3) / scale)
    low, high = korvale.bounds(vertices)
    below = BELOW * float((high - low).max())
    distances = reached(korvale.RayGrid(vertices, triangles(obj.data)), vertices + below * inwards, inwards)
    return numpy.where(numpy.isfinite(distances), distances + below, 0)


class OBJECT_OT_korvale_inside(Tool):
    """Select the vertices of the active mesh that lie inside the other selected meshes, for edit mode"""

    bl_idname = "object.korvale_inside"
    bl_label = "Select Inside"

    def work(self, context: bpy.types.Context) -> None:
        obj = active_mesh(context)
        points = moved(column(obj.data.vertices, "co", 3).astype(float), obj.matrix_world)
        inside = numpy.zeros(len(points), bool)
        for other in others_of(context, obj):
            if other.type == "MESH" and other.data.polygons:
                inside |= grid_of(other).contains(points)
        mesh = obj.data
        corners = inside[numbers(mesh.loops, "vertex_index", 1).ravel()]
        starts = numbers(mesh.polygons, "loop_start", 1).ravel()
        mesh.vertices.foreach_set("select", inside)
        mesh.edges.foreach_set("select", inside[numbers(mesh.edges, "vertices", 2)].all(axis=1))
        mesh.polygons.foreach_set("select", numpy.logical_and.reduceat(corners, starts))
        mesh.update()
        self.report({"INFO"}, f"{int(inside.sum())} of {len(points)} vertices lie inside")


TOOLS = (OBJECT_OT_korvale_drop, OBJECT_OT_korvale_thickness, OBJECT_OT_korvale_inside)
