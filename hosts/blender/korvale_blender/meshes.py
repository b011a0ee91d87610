"""Tools for meshes: relaxing, scattering, deforming by equations."""

import math
from typing import Literal

import bpy
import korvale
import numpy
from bpy.props import FloatProperty, IntProperty, StringProperty

from .bridge import (
    Doubles, Refused, Tool, active_mesh, attribute, column, mesh_of, numbers, placed, show, triangles, weights,
)

NO_FACES = numpy.zeros(0, numpy.int32)

# What a weight of 1 is for a mesh some 8 to 16 across, which is the size at which meshes are relaxed here: lengths and
# angles are sums of small deviations, volume and area one large number squared. Chosen.
WEIGHTS: dict[Literal["lengths", "angles", "volume", "area"], float]
WEIGHTS = {"lengths": 1.0, "angles": 1.0, "volume": 1e-4, "area": 1e-3}


def scale_of(points: Doubles) -> float:
    """The power of two by which a mesh becomes 8 to 16 across."""
    low, high = korvale.bounds(points)
    return math.ldexp(1.0, 4 - math.frexp(float((high - low).max()))[1])


class OBJECT_OT_korvale_relax(Tool):
    """Bring the active mesh, deformed, back towards the lengths, angles, volume and area of its reference"""

    bl_idname = "object.korvale_relax"
    bl_label = "Relax Mesh"

    lengths: FloatProperty(name="Lengths", default=1, min=0, soft_max=10)
    angles: FloatProperty(name="Angles", default=0, min=0, soft_max=10)
    volume: FloatProperty(name="Volume", description="Of a closed mesh", default=0, min=0, soft_max=10)
    area: FloatProperty(name="Area", default=0, min=0, soft_max=10)
    steps: IntProperty(name="Steps", default=200, min=1, soft_max=2000)
    pins: StringProperty(name="Pins", description="A vertex group: weights of 0.5 and more stay where they are")
    reference: StringProperty(name="Reference", description="A shape key; the first one where it is empty")

    def draw(self, context: bpy.types.Context) -> None:
        """The panel that adjusts the last operation."""
        layout, obj = self.layout, context.active_object
        layout.use_property_split = True
        for name in ("lengths", "angles", "volume", "area", "steps"):
            layout.prop(self, name)
        layout.prop_search(self, "pins", obj, "vertex_groups")
        if obj.data.shape_keys:
            layout.prop_search(self, "reference", obj.data.shape_keys, "key_blocks")

    def work(self, context: bpy.types.Context) -> None:
        obj = active_mesh(context)
        shape, rows = self.compared(context, obj)
        if not any(getattr(self, measure) for measure in WEIGHTS):
            raise Refused("keep something: set lengths, angles, volume or area above 0")
        deformed = column(rows, "co", 3).astype(float)
        scale = scale_of(shape)
        relaxer = korvale.Relaxer(shape * scale, triangles(obj.data))
        for measure, unit in WEIGHTS.items():
            if weight := getattr(self, measure):
                relaxer.keep(measure, weight * unit)
        if self.pins:
            relaxer.hold(weights(obj, self.pins) >= 0.5)
        wm = context.window_manager
        wm.progress_begin(0, self.steps)
        try:
            result = relaxer.run(deformed * scale, steps=self.steps,
                                 progress=lambda step, _: wm.progress_update(step))
        finally:
            wm.progress_end()
        if not numpy.isfinite(result.points).all():
            raise Refused("the mesh would come apart: make the weights smaller")
        rows.foreach_set("co", (result.points / scale).astype(numpy.float32).ravel())
        obj.data.update()
        before = relaxer.energy(deformed * scale)
        self.report({"INFO"}, f"{result.steps} steps, energy {result.energy:.3g} of {before:.3g}")

    def compared(self, context: bpy.types.Context,
                 obj: bpy.types.Object) -> tuple[Doubles, bpy.types.bpy_prop_collection]:
        """The points of the reference, and the rows that are deformed: a shape key's or the mesh's own."""
        if obj.data.shape_keys:
            keys = obj.data.shape_keys.key_blocks
            name = self.reference or keys[0].name
            if name not in keys:
                raise Refused(f'{obj.name} has no shape key "{name}"')
            if obj.active_shape_key.name == name:
                raise Refused(f'make the deformed shape key active: "{name}" is the reference')
            return column(keys[name].data, "co", 3).astype(float), obj.active_shape_key.data
        others = [other for other in context.selected_objects if other.type == "MESH" and other != obj]
        if len(others) != 1:
            raise Refused(f"select one mesh as the reference beside {obj.name}, or give {obj.name} shape keys")
        if len(others[0].data.vertices) != len(obj.data.vertices):
            raise Refused(f"{others[0].name} has {len(others[0].data.vertices)} vertices, but {obj.name} has "
                          f"{len(obj.data.vertices)}")
        return column(others[0].data.vertices, "co", 3).astype(float), obj.data.vertices


def spread(seed: int) -> int:
    """A seed for korvale from one that people count: seeds that follow each other begin almost alike."""
    return seed * 2654435761 % 2**32


class OBJECT_OT_korvale_scatter(Tool):
    """Scatter points over the active mesh, evenly or by a vertex group; each has the normal below it"""

    bl_idname = "object.korvale_scatter"
    bl_label = "Scatter on Mesh"

    count: IntProperty(name="Count", default=1000, min=1, max=100_000_000, soft_max=100_000)
    seed: IntProperty(name="Seed", default=0, min=0)
    density: StringProperty(name="Density", description="A vertex group: faces are as likely as its mean weight there")
    surface: StringProperty(options={"HIDDEN", "SKIP_SAVE"})

    def draw(self, context: bpy.types.Context) -> None:
        """The panel that adjusts the last operation."""
        self.layout.use_property_split = True
        self.layout.prop(self, "count")
        self.layout.prop(self, "seed")
        self.layout.prop_search(self, "density", bpy.data.objects[self.surface], "vertex_groups")

    def work(self, context: bpy.types.Context) -> None:
        obj = active_mesh(context)
        self.surface = obj.name
        place, scale = placed(obj)
        vertices = column(obj.data.vertices, "co", 3) * scale
        corners = triangles(obj.data)
        density = weights(obj, self.density)[corners].mean(axis=1) if self.density else None
        outwards = numpy.sign(scale.prod())  # a mirror turns triangles over
        points, _, on = korvale.scatter((vertices, corners), self.count, seed=spread(self.seed), weights=density)
        mesh = mesh_of(f"{obj.name} points", points, NO_FACES, NO_FACES, obj)
        attribute(mesh, "surface_normal", "FLOAT_VECTOR", "POINT",
                  outwards * korvale.Mesh(vertices, corners).normals[on])
        attribute(mesh, "surface_face", "INT", "POINT", numbers(obj.data.loop_triangles, "polygon_index", 1)[on])
        show(context, [(mesh, place)])


class OBJECT_OT_korvale_equation(Tool):
    """Move the vertices of the active mesh by equations written as text"""

    bl_idname = "object.korvale_equation"
    bl_label = "Equation Deform"

    text: StringProperty(name="Equations", description="Over x y z, the normal nx ny nz, the weight w, the frame and "
                         "PI; several with ; between them", default="z = z + 0.1 * SIN(6 * x + frame / 10)")
    group: StringProperty(name="Weight w", description="A vertex group; without one w is 1")
    seed: IntProperty(name="Seed", description="Of RAND and GAUSS", default=0, min=0)

    def draw(self, context: bpy.types.Context) -> None:
        """The panel that adjusts the last operation."""
        self.layout.prop(self, "text")
        self.layout.prop_search(self, "group", context.active_object, "vertex_groups")
        self.layout.prop(self, "seed")

    def work(self, context: bpy.types.Context) -> None:
        obj = active_mesh(context)
        if obj.data.shape_keys:
            raise Refused(f"{obj.name} has shape keys, which decide where its vertices are: apply them first")
        equations = korvale.Equations("x y z nx ny nz w frame")
        equations.seed(spread(self.seed))
        texts = [text.strip() for text in self.text.split(";") if text.strip()]
        if not texts:
            raise Refused("write an equation first, such as z = z + 0.1 * SIN(6 * x)")
        for text in texts:
            equations.add(text)
        rows = obj.data.vertices
        points = column(rows, "co", 3).astype(float)
        normals = column(rows, "normal", 3).astype(float)
        share = weights(obj, self.group) if self.group else numpy.ones(len(rows))
        columns = {**dict(zip("xyz", points.T)), **dict(zip(("nx", "ny", "nz"), normals.T)), "w": share}
        moved = equations.evaluate_all("x y z", columns, frame=float(context.scene.frame_current))
        result = numpy.column_stack([moved["x"], moved["y"], moved["z"]])
        lost = ~numpy.isfinite(result).all(axis=1)
        if lost.any():
            raise Refused(f"{int(lost.sum())} vertices would have no place, the first of them vertex {lost.argmax()}")
        rows.foreach_set("co", result.astype(numpy.float32).ravel())
        obj.data.update()


TOOLS = (OBJECT_OT_korvale_relax, OBJECT_OT_korvale_scatter, OBJECT_OT_korvale_equation)
