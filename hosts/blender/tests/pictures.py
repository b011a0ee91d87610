"""usage: blender ... -P pictures.py -- FOLDER; draws the pictures of docs/hosts.md on the processor, by Cycles."""

import pathlib
import sys

import bpy

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import page
from mathutils import Euler, Vector

COLOURS = {"made": (0.85, 0.45, 0.08, 1), "source": (0.35, 0.4, 0.48, 1), "floor": (0.75, 0.75, 0.75, 1)}


def material(name):
    """A plain material."""
    made = bpy.data.materials.new(name)
    made.use_nodes = True
    shader = made.node_tree.nodes["Principled BSDF"]
    shader.inputs["Base Color"].default_value = COLOURS[name]
    shader.inputs["Roughness"].default_value = 0.5
    return made


def dress():
    """Gives everything a colour, what is selected another, and curves and texts a thin round wire."""
    made, source = material("made"), material("source")
    for obj in bpy.data.objects:
        if obj.type not in ("MESH", "CURVE", "FONT"):
            continue
        if obj.type != "MESH":
            obj.data.dimensions = "3D"
            obj.data.bevel_depth = 0.004 * max(obj.dimensions)
        obj.data.materials.clear()
        obj.data.materials.append(made if obj.select_get() else source)


def corners():
    """The corners of the boxes of everything, in the scene."""
    return [obj.matrix_world @ Vector(corner) for obj in bpy.data.objects if obj.type in ("MESH", "CURVE", "FONT")
            for corner in obj.bound_box]


def light(everything):
    """A floor below, a sun, a bright sky and a camera from the front that sees everything."""
    scene = bpy.context.scene
    bpy.ops.mesh.primitive_plane_add(size=1000, location=(0, 0, min(corner.z for corner in everything) - 0.01))
    bpy.context.object.data.materials.append(material("floor"))
    bpy.ops.object.light_add(type="SUN", rotation=(0.5, 0.35, 0))
    bpy.context.object.data.energy = 2
    bpy.context.object.data.angle = 0.1
    scene.world = bpy.data.worlds.new("sky")
    scene.world.color = (0.3, 0.32, 0.35)
    flat = max(corner.z for corner in everything) - min(corner.z for corner in everything) < 0.4
    camera = bpy.data.objects.new("camera", bpy.data.cameras.new("camera"))
    camera.rotation_euler = Euler((0.35 if flat else 0.95, 0, 0 if flat else 0.35))
    scene.collection.objects.link(camera)
    scene.camera = camera
    bpy.context.view_layer.update()
    middle = sum(everything, Vector()) / len(everything)
    wider = [axis for corner in everything for axis in middle + 1.1 * (corner - middle)]
    camera.location, _ = camera.camera_fit_coords(bpy.context.evaluated_depsgraph_get(), wider)


def render(target):
    """Draws the scene."""
    scene = bpy.context.scene
    scene.render.engine = "CYCLES"
    scene.cycles.device = "CPU"
    scene.cycles.samples = 40
    scene.cycles.use_denoising = False
    scene.view_settings.view_transform = "Standard"
    scene.render.resolution_x, scene.render.resolution_y = 640, 320
    scene.render.image_settings.file_format = "JPEG"
    scene.render.image_settings.quality = 82
    scene.render.filepath = str(target)
    bpy.ops.render.render(write_still=True)


folder = pathlib.Path(sys.argv[-1]).resolve()
names: dict[str, object] = {}
for block in page.blocks():
    if block.picture:
        bpy.ops.wm.read_factory_settings(use_empty=True)
        bpy.ops.preferences.addon_enable(module="korvale_blender")
        exec(compile(block.code, str(page.PAGE), "exec"), names)
        dress()
        bpy.context.view_layer.update()
        light(corners())
        render(folder / block.picture)
