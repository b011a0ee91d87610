"""korvale in Blender: outlines, bands, tubes, bevels, relaxation, scattering, rays and equations as operators.

The geometry is that of the Python package `korvale`, whose compiled module lies beside this file in `lib`. Scripts in
Blender import it as anywhere else, once the add-on is enabled.
"""

import importlib.machinery
import importlib.util
import pathlib
import sys

bl_info = {
    "name": "korvale",
    "description": "Offset outlines, bands, tubes, bevels, relaxed meshes, scattered points, rays, equations",
    "author": "the authors of korvale",
    "version": (1, 1, 0),
    "blender": (3, 4, 0),
    "location": "View3D > Sidebar > korvale, and Object > korvale",
    "category": "Object",
}

LIBRARY = pathlib.Path(__file__).resolve().parent / "lib"
HERE = f"Blender's Python {sys.version_info.major}.{sys.version_info.minor}"


def unfit(library: pathlib.Path) -> str:
    """Why this Blender cannot load the package in a folder, in one sentence; empty where it can."""
    modules = sorted(file.name for file in (library / "korvale").glob("_korvale.*"))
    if not modules:
        return f"the korvale add-on has no compiled module in {library}; install the zip that ./dev blender makes"
    if not any(f"_korvale{suffix}" in modules for suffix in importlib.machinery.EXTENSION_SUFFIXES):
        return (f"the korvale add-on was built for another Python or system ({modules[0]}) than {HERE}; "
                "build its zip again for this Blender, as docs/hosts.md of korvale says")
    if importlib.util.find_spec("numpy") is None:
        return f"the korvale add-on needs NumPy, which {HERE} does not have"
    return ""


if _reason := unfit(LIBRARY):
    raise ImportError(_reason)
if str(LIBRARY) not in sys.path:
    sys.path.insert(0, str(LIBRARY))
try:
    import korvale
except ImportError as error:
    _reason = f"the korvale add-on cannot load its compiled module into {HERE} and its NumPy: {error}"
    raise ImportError(_reason) from None

import bpy

from . import lines, meshes, outlines, rays

TOOLS = (*outlines.TOOLS, *lines.TOOLS, *meshes.TOOLS, *rays.TOOLS)


class VIEW3D_MT_korvale(bpy.types.Menu):
    """All tools, in the Object menu."""

    bl_label = "korvale"

    def draw(self, _context: bpy.types.Context) -> None:
        for tool in TOOLS:
            self.layout.operator(tool.bl_idname)


class VIEW3D_PT_korvale(bpy.types.Panel):
    """All tools, in the sidebar."""

    bl_label = "korvale"
    bl_category = "korvale"
    bl_space_type = "VIEW_3D"
    bl_region_type = "UI"
    bl_context = "objectmode"

    def draw(self, _context: bpy.types.Context) -> None:
        column = self.layout.column()
        for tool in TOOLS:
            column.operator(tool.bl_idname)


CLASSES = (*TOOLS, VIEW3D_MT_korvale, VIEW3D_PT_korvale)


def _menu(self: bpy.types.Menu, _context: bpy.types.Context) -> None:
    self.layout.menu(VIEW3D_MT_korvale.__name__)


def register() -> None:
    """Called by Blender when the add-on is enabled."""
    for kind in CLASSES:
        bpy.utils.register_class(kind)
    bpy.types.VIEW3D_MT_object.append(_menu)


def unregister() -> None:
    """Called by Blender when the add-on is disabled."""
    bpy.types.VIEW3D_MT_object.remove(_menu)
    for kind in reversed(CLASSES):
        bpy.utils.unregister_class(kind)
