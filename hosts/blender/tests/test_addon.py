"""The add-on itself: where it does not fit, what it shows, whether bulk stays bulk."""

import importlib
import pathlib
import shutil
import sys
import tempfile
from unittest import mock

import bpy
import korvale
import korvale_blender
from scene import SceneTest, cube, curve, text


class AddonTest(SceneTest):
    def test_a_library_for_another_python_is_told_in_a_sentence(self):
        with tempfile.TemporaryDirectory() as folder:
            package = pathlib.Path(folder) / "korvale"
            package.mkdir()
            self.assertIn("no compiled module", korvale_blender.unfit(pathlib.Path(folder)))
            (package / "_korvale.cpython-39-x86_64-linux-gnu.so").touch()
            told = korvale_blender.unfit(pathlib.Path(folder))
            self.assertIn("another Python or system (_korvale.cpython-39-x86_64-linux-gnu.so) than Blender's", told)
        with mock.patch("importlib.util.find_spec", return_value=None):
            self.assertIn("needs NumPy", korvale_blender.unfit(korvale_blender.LIBRARY))
        self.assertEqual(korvale_blender.unfit(korvale_blender.LIBRARY), "")

    def test_a_module_that_does_not_load_is_told_in_a_sentence(self):
        with tempfile.TemporaryDirectory() as folder:
            other = pathlib.Path(folder) / "korvale_other"
            shutil.copytree(pathlib.Path(korvale_blender.__file__).parent, other)
            for file in (other / "lib/korvale").glob("*.so"):
                file.write_bytes(b"")
            modules = {name: module for name, module in sys.modules.items() if name.split(".")[0] != "korvale"}
            with mock.patch.dict(sys.modules, modules, clear=True), mock.patch("sys.path", [folder, *sys.path]):
                with self.assertRaisesRegex(ImportError, "cannot load its compiled module into Blender's Python 3"):
                    importlib.import_module("korvale_other")

    def test_the_version_is_that_of_the_library(self):
        self.assertEqual(".".join(map(str, korvale_blender.bl_info["version"])), korvale.__version__)

    def test_every_tool_is_in_the_menu_with_undo(self):
        for tool in korvale_blender.TOOLS:
            self.assertEqual(tool.bl_options, {"REGISTER", "UNDO"})
            self.assertTrue(tool.__doc__)
        drawn = mock.Mock()
        korvale_blender.VIEW3D_MT_korvale.draw(drawn, bpy.context)
        self.assertEqual([call.args[0] for call in drawn.layout.operator.call_args_list],
                         [tool.bl_idname for tool in korvale_blender.TOOLS])

    def test_the_panels_that_adjust_show_every_property(self):
        obj = cube()
        obj.shape_key_add(name="Basis")
        for tool in korvale_blender.TOOLS:
            if "draw" in vars(tool):
                drawn = mock.Mock(surface="cube")
                tool.draw(drawn, bpy.context)
                calls = drawn.layout.prop.call_args_list + drawn.layout.prop_search.call_args_list
                shown = {call.args[1] for call in calls}
                self.assertEqual(shown, set(tool.__annotations__) - {"surface"}, tool.bl_label)
                for call in drawn.layout.prop_search.call_args_list:
                    self.assertIn(call.args[3], call.args[2].bl_rna.properties)

    def test_disabled_and_enabled_again(self):
        bpy.ops.preferences.addon_disable(module="korvale_blender")
        self.assertNotIn("korvale_offset", dir(bpy.ops.object))
        bpy.ops.preferences.addon_enable(module="korvale_blender")
        text("on")
        bpy.ops.object.korvale_offset(distance=0.01)
        self.assertEqual(bpy.context.object.name, "text offset")

    def test_edit_mode_is_refused(self):
        obj = cube()
        bpy.ops.object.mode_set(mode="EDIT")
        self.refused(bpy.ops.object.korvale_scatter, "leave edit mode first")
        bpy.ops.object.mode_set(mode="OBJECT")
        self.assertEqual(bpy.context.object, obj)

    def test_reading_a_curve_leaves_nothing_behind(self):
        curve([(0, 0, 0), (1, 0, 0), (0, 1, 0)])
        for _ in range(3):
            self.refused(bpy.ops.object.korvale_offset, "nothing is left", distance=-9)
        self.assertEqual((len(bpy.data.curves), len(bpy.data.objects), len(bpy.data.meshes)), (1, 1, 0))
