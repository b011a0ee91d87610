"""The pages for Python: every block of code runs, prints what the page says and draws the picture that is stored.

With KORVALE_PICTURES=1 pictures are stored anew instead of compared.
"""

import contextlib
import io
import os
import pathlib
import shutil
import tempfile
import unittest
from unittest import mock

import matplotlib

matplotlib.use("Agg")

import matplotlib.image
import matplotlib.pyplot
import matplotlib.text

SOURCES = pathlib.Path(__file__).resolve().parent.parent.parent
PICTURES = SOURCES / "docs/images"
RENEW = os.environ.get("KORVALE_PICTURES")


def blocks(page):
    """The blocks of a page in order: language, first line, text."""
    inside = None
    for number, line in enumerate(page.read_text().split("\n"), 1):
        if inside is None and line.startswith("```"):
            inside = (line[3:], number, [])
        elif inside is not None and line == "```":
            yield inside[0], inside[1], "\n".join(inside[2]) + "\n"
            inside = None
        elif inside is not None:
            inside[2].append(line)


class PagesTest(unittest.TestCase):
    def run_page(self, name):
        """Runs a page from a folder that has the examples' data and a place for pictures."""
        page, printed, names = SOURCES / name, None, {"__name__": "__main__"}
        matplotlib.rcdefaults()
        with tempfile.TemporaryDirectory() as folder, contextlib.chdir(folder):
            os.makedirs("images")
            os.symlink(SOURCES / "examples", "examples")
            for language, line, text in blocks(page):
                if language == "text" and printed is not None:
                    self.assertEqual(printed, text, f"{name}:{line}")
                elif language != "python":
                    printed = None # what another language prints is not for this test
                if language != "python":
                    continue
                output = io.StringIO()
                # On a screen of 380 pixels lettering would be too small to read.
                without_lettering = mock.patch.object(
                    matplotlib.text.Text, "draw", lambda text, _: self.assertEqual(text.get_text(), "")
                )
                with contextlib.redirect_stdout(output), without_lettering:
                    exec(compile("\n" * line + text, str(page), "exec"), names)
                printed = output.getvalue()
            matplotlib.pyplot.close("all")
            self.compare([pathlib.Path("images") / file for file in sorted(os.listdir("images"))], page)

    def compare(self, drawn, page):
        for file in drawn:
            with self.subTest(file.name):
                self.assertIn(f"(images/{file.name})", page.read_text())
                if RENEW:
                    shutil.copy(file, PICTURES)
                stored = matplotlib.image.imread(PICTURES / file.name)
                picture = matplotlib.image.imread(file)
                self.assertEqual(picture.shape, stored.shape)
                self.assertEqual(abs(picture - stored).max(), 0)

    def test_the_first_program_of_the_readme(self):
        self.run_page("README.md")

    def test_the_tutorial(self):
        self.run_page("docs/python.md")

    def test_the_page_for_those_who_come_from_elsewhere(self):
        self.run_page("docs/python-from.md")

    def test_the_page_on_borders(self):
        self.run_page("docs/border.md")

    def test_the_page_on_equations(self):
        self.run_page("docs/equations.md")

    def test_the_page_on_shape_preservation(self):
        self.run_page("docs/preserve.md")

    def test_the_page_on_which_point_is_which(self):
        self.run_page("docs/correspondence.md")


if __name__ == "__main__":
    unittest.main()
