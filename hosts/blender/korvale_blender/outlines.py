"""Tools for the closed splines of curves and texts: offset outlines and bevelled text."""

import math
from typing import Literal

import bpy
import korvale
import numpy
from bpy.props import BoolProperty, EnumProperty, FloatProperty, IntProperty

from .bridge import Doubles, Refused, Tool, attribute, chosen, curve_of, flattened, mesh_of, placed, shapes, show

KINDS = {"CURVE", "FONT"}
WANTED = "a text or a curve with closed splines"


def rings_of(shape: list[Doubles], distance: float, rings: int, join: Literal["miter", "round", "bevel"],
             tolerance: float, miter_limit: float) -> list[list[Doubles]]:
    """The outlines of a shape at one, two and more distances, with all pieces: a list for each distance."""
    limit = miter_limit if miter_limit >= 1 else None
    found: list[list[Doubles]] = [[] for _ in range(rings)]
    for number, outline in enumerate(shape):
        steps = (-distance if number else distance) * numpy.arange(1, rings + 1)  # holes shrink where a shape grows
        for part, pieces in zip(found, korvale.offset(outline, steps, pieces=True, join=join, miter_limit=limit,
                                                      tolerance=tolerance or None)):
            part += pieces.singly()
    return found


class OBJECT_OT_korvale_offset(Tool):
    """Move the closed splines of the selected texts and curves sideways, in the plane in which they lie"""

    bl_idname = "object.korvale_offset"
    bl_label = "Offset Outlines"

    distance: FloatProperty(name="Distance", description="Outwards; negative is inwards", unit="LENGTH", default=0.05,
                            step=1, precision=4)
    rings: IntProperty(name="Rings", description="How many, each a distance from the one before", default=1, min=1,
                       max=1000, soft_max=20)
    join: EnumProperty(name="Corners", items=[("miter", "Sharp", "Edges run on until they meet"),
                                              ("round", "Round", "An arc around each corner"),
                                              ("bevel", "Bevelled", "An edge straight across")])
    miter_limit: FloatProperty(name="Limit", description="Corners farther than so many distances from theirs are cut "
                               "off at the distance; below 1 none is", default=0, min=0, soft_max=10)
    tolerance: FloatProperty(name="Tolerance", description="How far round corners may be outside the arc; 0 is a "
                             "200th of the distance", unit="LENGTH", default=0, min=0, precision=5)

    def work(self, context: bpy.types.Context) -> None:
        made = []
        for obj in chosen(context, KINDS, WANTED):
            found: list[list[Doubles]] = [[] for _ in range(self.rings)]
            for shape in shapes(obj, context):
                for part, outlines in zip(found, rings_of(shape, self.distance, self.rings, self.join, self.tolerance,
                                                          self.miter_limit)):
                    part += outlines
            made.append((obj, found))
        if not any(outlines for _, found in made for outlines in found):
            raise Refused("nothing is left at this distance")
        self.warn([part for _, found in made for part in found])
        show(context, [(curve_of(f"{obj.name} offset", self.coloured(obj, found), obj), placed(obj)[0])
                       for obj, found in made if any(found)])

    def coloured(self, obj: bpy.types.Object, found: list[list[Doubles]]) -> list[tuple[Doubles, int]]:
        """The rings with the materials of their source in turn, the last one for all that are left."""
        last = max(len(obj.data.materials) - 1, 0)
        return [(ring, min(number, last)) for number, rings in enumerate(found) for ring in rings]

    def warn(self, found: list[list[Doubles]]) -> None:
        """Tells where outlines of one ring cross each other, as holes do that have outgrown their shape."""
        for rings in filter(None, found):
            try:
                korvale.shapes(flattened(rings, "this ring"))
            except (korvale.Error, Refused) as error:
                self.report({"WARNING"}, f"new outlines cross each other: {error}")
                return


FORMS = [("round", "Round", "A quarter of a circle outwards"), ("chamfer", "Chamfer", "Straight"),
         ("hollow", "Hollow", "A quarter of a circle inwards")]


def profile_of(height: float, bevel: float, form: str, segments: int, both: bool) -> list[tuple[float, float]]:
    """Steps of a profile, (outwards, high): a wall and an edge that goes in by a width, above or on both sides."""
    if bevel == 0:
        return [(0.0, 0.0), (0.0, height)]
    if bevel * (2 if both else 1) > height:
        raise Refused(f"the bevel must fit into the height, but it is {bevel:g} of {height:g}")
    count = 1 if form == "chamfer" else segments
    turns = [math.pi / 2 * step / count for step in range(count + 1)]
    if form == "hollow":
        edge = [(-math.sin(turn), 1 - math.cos(turn)) for turn in turns]
    else:
        edge = [(math.cos(turn) - 1, math.sin(turn)) for turn in turns]
    top = [(bevel * out, height - bevel + bevel * up) for out, up in edge]
    return [(out, height - high) for out, high in reversed(top)] + top if both else [(0.0, 0.0), *top]


class OBJECT_OT_korvale_bevel(Tool):
    """Make solids of the selected texts and closed curves, with bevelled edges that never overlap"""

    bl_idname = "object.korvale_bevel"
    bl_label = "Bevelled Text"

    height: FloatProperty(name="Height", unit="LENGTH", default=0.2, min=1e-6, step=1, precision=4)
    bevel: FloatProperty(name="Bevel", description="How wide and high the bevelled edge is", unit="LENGTH",
                         default=0.02, min=0, step=1, precision=4)
    form: EnumProperty(name="Form", items=FORMS)
    segments: IntProperty(name="Segments", default=4, min=1, max=100, soft_max=16)
    both: BoolProperty(name="Both Sides", description="Bevel the lower edge too")

    def work(self, context: bpy.types.Context) -> None:
        profile = profile_of(self.height, self.bevel, self.form, self.segments, self.both)
        made = [(obj, [korvale.bevel(shape, profile) for shape in shapes(obj, context)])
                for obj in chosen(context, KINDS, WANTED)]
        self.tell([solid for _, solids in made for solid in solids], min(out for out, _ in profile))
        show(context, [(self.mesh(obj, solids), placed(obj)[0]) for obj, solids in made])

    def mesh(self, obj: bpy.types.Object, solids: list[korvale.Mesh]) -> bpy.types.Mesh:
        """One mesh of all solids, whose faces have the number of theirs as the attribute "shape"."""
        firsts = numpy.cumsum([0, *(len(solid.vertices) for solid in solids)])
        faces = numpy.concatenate([solid.triangles + first for solid, first in zip(solids, firsts)]).astype(numpy.int32)
        mesh = mesh_of(f"{obj.name} solid", numpy.concatenate([solid.vertices for solid in solids]), faces.ravel(),
                       numpy.full(len(faces), 3, numpy.int32), obj)
        numbers = numpy.repeat(numpy.arange(len(solids)), [len(solid.triangles) for solid in solids])
        attribute(mesh, "shape", "INT", "FACE", numbers.astype(numpy.int32))
        return mesh

    def tell(self, solids: list[korvale.Mesh], asked: float) -> None:
        """Says how far the bevel came where shapes are too narrow for it."""
        short = [float(solid.reached.min()) for solid in solids if solid.reached.min() > asked]
        if short:
            self.report({"INFO"}, f"{len(short)} of {len(solids)} shapes are too narrow for this bevel: there it goes "
                        f"in by {-max(short):.4g} or more, as far as nothing is lost")


TOOLS = (OBJECT_OT_korvale_offset, OBJECT_OT_korvale_bevel)
