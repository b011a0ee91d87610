"""Installs the add-on as people do, from its zip, and enables, disables and enables it again."""

import pathlib
import sys

import bpy

bpy.ops.preferences.addon_install(filepath=sys.argv[-1])
for _ in range(2):
    bpy.ops.preferences.addon_enable(module="korvale_blender")
    assert "korvale_offset" in dir(bpy.ops.object)
    bpy.ops.preferences.addon_disable(module="korvale_blender")
    assert "korvale_offset" not in dir(bpy.ops.object)
folder = pathlib.Path(bpy.utils.user_resource("SCRIPTS", path="addons")) / "korvale_blender"
assert (folder / "LICENSE").is_file() and list((folder / "lib/korvale").glob("_korvale.*"))
