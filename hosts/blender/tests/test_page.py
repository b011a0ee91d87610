"""docs/hosts.md: every block runs, one after the other, and prints what the page says; every picture is there."""

import contextlib
import io

import bpy
import page
from scene import SceneTest


class PageTest(SceneTest):
    def test_every_block(self):
        names = {}
        found = list(page.blocks())
        self.assertEqual(page.PAGE.read_text().count("```python\n"), len(found))
        for block in found:
            with self.subTest(line=block.line):
                if block.picture:
                    self.setUp()
                printed = io.StringIO()
                with contextlib.redirect_stdout(printed):
                    exec(compile("\n" * (block.line - 1) + block.code, str(page.PAGE), "exec"), names)
                if block.printed:
                    self.assertEqual(printed.getvalue(), block.printed)
                self.assertTrue(bpy.context.object)

    def test_every_picture_is_there(self):
        pictures = {block.picture for block in page.blocks() if block.picture}
        self.assertEqual(pictures, {file.name for file in (page.PAGE.parent / "images").glob("hosts-*")})
