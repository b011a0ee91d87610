"""Tools for the lines of curves, open or closed: bands and tubes along them."""

import bpy
import korvale
import numpy
from bpy.props import BoolProperty, EnumProperty, FloatProperty, IntProperty
from mathutils import Vector

from .bridge import Doubles, Ints, Refused, Tool, chosen, mesh_of, placed, polylines, show

KINDS = {"CURVE"}
WANTED = "a curve"

# A mesh: vertices, the corners of all faces one behind the other, how many corners each has.
Faces = tuple[Doubles, Ints, Ints]


def lines_of(obj: bpy.types.Object, context: bpy.types.Context) -> list[tuple[Doubles, bool]]:
    """The splines of a curve that have a length."""
    found = [(points, closed) for points, closed in polylines(obj, context) if len(points) > 1]
    if not found:
        raise Refused(f"{obj.name} has no spline of two points or more")
    return found


def joined(parts: list[Faces]) -> Faces:
    """Several meshes as one."""
    firsts = numpy.cumsum([0, *(len(vertices) for vertices, _, _ in parts)])
    return (numpy.concatenate([vertices for vertices, _, _ in parts]),
            numpy.concatenate([corners + first for (_, corners, _), first in zip(parts, firsts)]),
            numpy.concatenate([sizes for _, _, sizes in parts]))


def welded(vertices: Doubles, corners: Ints, sizes: Ints) -> Faces:
    """Vertices at exactly one place made one, in their order; corners and faces that come to nothing are left out."""
    _, firsts, group = numpy.unique(vertices, axis=0, return_index=True, return_inverse=True)
    corners = numpy.argsort(numpy.argsort(firsts))[group.ravel()][corners]
    face = numpy.repeat(numpy.arange(len(sizes)), sizes)
    following = numpy.arange(1, len(corners) + 1)
    ends = numpy.cumsum(sizes)
    following[ends - 1] = ends - sizes
    stays = corners != corners[following]
    counts = numpy.bincount(face[stays], minlength=len(sizes))
    stays &= counts[face] > 2
    return vertices[numpy.sort(firsts)], corners[stays], counts[counts > 2]


def strip_of(band: korvale.Band) -> Faces:
    """A band as quads from side to side, seen from above, with a face for each cap."""
    n = len(band.border)
    at_end = 0 if band.closed else max(int((band.sources == n - 1).sum()) - 2, 0)  # both sides end there as well
    outline = numpy.concatenate([band.border, band.other_side]) if band.closed else band.outline
    right = numpy.arange(n)
    left = 2 * n + at_end - 1 - right  # backwards, behind the points of the first cap
    if band.closed:
        quads = [right, numpy.roll(right, -1), numpy.roll(left, -1), left]
    else:
        quads = [right[:-1], right[1:], left[1:], left[:-1]]
    caps = [numpy.arange(n - 1, n + at_end + 1), numpy.append(numpy.arange(left[0], len(outline)), 0)]
    caps = [cap for cap in caps if not band.closed and len(cap) > 2]
    corners = numpy.concatenate([numpy.column_stack(quads).ravel(), *caps])
    sizes = numpy.array([4] * len(quads[0]) + [len(cap) for cap in caps])
    return welded(outline, corners, sizes)


class OBJECT_OT_korvale_band(Tool):
    """Lay a band along the selected curves, such as a road along its centre line"""

    bl_idname = "object.korvale_band"
    bl_label = "Band Along Curve"

    distance: FloatProperty(name="Distance", description="To the right; negative is to the left", unit="LENGTH",
                            default=0.1, step=1, precision=4)
    both_sides: BoolProperty(name="Both Sides", default=True)
    heights: BoolProperty(name="Keep Heights", description="Seen from above, each point of the border as high as its "
                          "point of the line; else the line has to lie in one plane", default=True)
    cap: EnumProperty(name="Ends", items=[("flat", "Flat", "Square to the line"),
                                          ("square", "Square", "A distance beyond it"),
                                          ("round", "Round", "An arc around it")])
    miter_limit: FloatProperty(name="Limit", description="No point of the border is farther from the line than so many "
                               "distances", default=4, min=1, soft_max=10)

    def work(self, context: bpy.types.Context) -> None:
        made = []
        crossing = 0
        for obj in chosen(context, KINDS, WANTED):
            place = placed(obj)[0]
            up = tuple(place.to_3x3().transposed() @ Vector((0, 0, 1))) if self.heights else None
            bands = [korvale.band(line, self.distance, both_sides=self.both_sides, up=up, closed=closed, cap=self.cap,
                                  miter_limit=self.miter_limit) for line, closed in lines_of(obj, context)]
            if all(band.collapsed for band in bands):
                raise Refused(f"{obj.name} has no border at this distance")
            crossing += sum(band.crossing is not None for band in bands)
            faces = joined([strip_of(band) for band in bands if not band.collapsed])
            made.append((obj, place, faces))
        if crossing:
            self.report({"WARNING"}, f"bands meet themselves ({crossing}): parts of a line are too near each other")
        show(context, [(mesh_of(f"{obj.name} band", *faces, obj), place) for obj, place, faces in made])


def circle(radius: float, sides: int) -> Doubles:
    """The section of a tube, (sides, 2)."""
    turns = numpy.arange(sides) * (2 * numpy.pi / sides)
    return radius * numpy.column_stack([numpy.cos(turns), numpy.sin(turns)])


def sleeve_of(tube: korvale.Mesh, sides: int, closed: bool, caps: bool) -> Faces:
    """A tube as quads, outwards, with a face for each end."""
    rings = numpy.arange(len(tube.vertices)).reshape(-1, sides)
    these = rings if closed else rings[:-1]
    following = numpy.roll(rings, -1, axis=0)[: len(these)]
    quads = numpy.stack([these, following, numpy.roll(following, -1, axis=1), numpy.roll(these, -1, axis=1)], axis=-1)
    ends = [] if closed or not caps else [rings[0], rings[-1][::-1]]
    sizes = numpy.array([4] * these.size + [sides] * len(ends))
    return tube.vertices, numpy.concatenate([quads.ravel(), *ends]), sizes


class OBJECT_OT_korvale_tube(Tool):
    """Carry a circle along the selected curves; the tube of a closed curve has no seam"""

    bl_idname = "object.korvale_tube"
    bl_label = "Tube Along Curve"

    radius: FloatProperty(name="Radius", unit="LENGTH", default=0.05, min=1e-6, step=1, precision=4)
    sides: IntProperty(name="Sides", default=16, min=3, max=1000, soft_max=64)
    caps: BoolProperty(name="Close Ends", default=True)
    smooth: BoolProperty(name="Shade Smooth", default=True)

    def work(self, context: bpy.types.Context) -> None:
        section = circle(self.radius, self.sides)
        made = []
        for obj in chosen(context, KINDS, WANTED):
            tubes = [sleeve_of(korvale.tube(line, section, closed=closed, caps=False), self.sides, closed, self.caps)
                     for line, closed in lines_of(obj, context)]
            made.append((obj, joined(tubes)))
        show(context, [(self.mesh(obj, faces), placed(obj)[0]) for obj, faces in made])

    def mesh(self, obj: bpy.types.Object, faces: Faces) -> bpy.types.Mesh:
        """The mesh, smooth but for the ends."""
        mesh = mesh_of(f"{obj.name} tube", *faces, obj)
        mesh.polygons.foreach_set("use_smooth", self.smooth & (faces[2] == 4) if self.sides != 4 else
                                  numpy.full(len(faces[2]), self.smooth))
        return mesh


TOOLS = (OBJECT_OT_korvale_band, OBJECT_OT_korvale_tube)
