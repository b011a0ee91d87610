"""The types: mypy takes a typed program, refuses a wrong one, and finds each stub as the compiled module is."""

import ast
import inspect
import pathlib
import subprocess
import sys
import tempfile
import unittest

import korvale
from korvale import _korvale, raw
from test_pages import SOURCES, blocks

HERE = pathlib.Path(__file__).resolve().parent
PACKAGE = pathlib.Path(korvale.__file__).parent

# Mistakes that people make, by what stands in the tutorial and what they write instead.
MISTAKES = [
    ("korvale.shapes(TextPath", "korvale.shape(TextPath"),
    ("korvale.bevel(letter, profile)", "korvale.bevel(letter)"),
    ("len(solid.triangles)", "len(solid.triangle)"),
    ("korvale.band(centre, 4,", 'korvale.band(centre, "4",'),
    ("points, blended, on = korvale", "points, blended = korvale"),
    ('.keep("lengths")', '.keep("length")'),
    ("relaxer.run(pulled, steps=400)", "relaxer.run(pulled, step=400)"),
    ("if hit := grid.nearest((30, 0, 5), (-1, 0, 0)):\n    print(hit.distance, hit.triangle)",
     "print(grid.nearest((30, 0, 5), (-1, 0, 0)).distance)"),
    ("wave.evaluate(r=r,", "wave.evaluate(0, r,"),
]

# Classes of pybind11 have a class of their own; those that Python cannot make take any arguments and refuse them.
ALLOWED = """
korvale._raw.(Data|data_list_struct|DATAstruct|BorderStatus|BORDERStatus|EquationSystem|PreserveStatus|RayStatus)
korvale._raw.(_Status|_Initializerkorvale)
korvale._raw.(_Status|_Initializerkorvale).__init__
"""


def run(*command):
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run([sys.executable, "-m", *command], cwd=folder, capture_output=True, text=True)
    return done.returncode, done.stdout + done.stderr


class TypesTest(unittest.TestCase):
    def test_a_typed_program_passes(self):
        result, text = run("mypy", "--strict", str(HERE / "typed_use.py"))
        self.assertEqual(result, 0, text)

    def test_the_package_itself_passes(self):
        result, text = run("mypy", "--strict", "-p", "korvale")
        self.assertEqual(result, 0, text)

    def test_nine_mistakes_of_nine_are_found_in_the_tutorial(self):
        code = [text for language, _, text in blocks(SOURCES / "docs/python.md") if language == "python"]
        tutorial = "".join(text for text in code if "import raw" not in text)
        # Its functions are not annotated, and matplotlib is not typed.
        flags = ("--strict", "--allow-untyped-defs", "--allow-untyped-calls", "--ignore-missing-imports")
        with tempfile.TemporaryDirectory() as folder:
            right = pathlib.Path(folder) / "right.py"
            right.write_text(tutorial)
            result, text = run("mypy", *flags, str(right))
            self.assertEqual(result, 0, text)
            files = []
            for k, (written, mistake) in enumerate(MISTAKES):
                self.assertEqual(tutorial.count(written), 1, written)
                files.append(pathlib.Path(folder) / f"wrong{k}.py")
                files[-1].write_text(tutorial.replace(written, mistake))
            _, text = run("mypy", *flags, *map(str, files))
            for k, (written, mistake) in enumerate(MISTAKES):
                line = tutorial.split(written)[0].count("\n") + 1
                self.assertIn(f"wrong{k}.py:{line}: error:", text, mistake)

    def test_wrong_programs_do_not(self):
        wrong = (
            "import korvale; korvale.band([(0, 0), (1, 0)], 1).width",
            "import korvale; korvale.Equations().add(1)",
            "from korvale import raw; raw.norm()",
            "from korvale import raw; raw.DATADispose(raw.Data())",
            "from korvale import raw; raw.BORDERStatus().path = 'word'",
        )
        result, text = run("mypy", "--strict", "-c", "\n".join(wrong))
        self.assertEqual((result, text.count(": error:")), (1, len(wrong)), text)

    def test_each_raw_name_has_its_stub(self):
        with tempfile.NamedTemporaryFile("w", suffix=".txt") as allowed:
            allowed.write(ALLOWED)
            allowed.flush()
            result, text = run("mypy.stubtest", "korvale._raw", "--allowlist", allowed.name,
                               "--ignore-unused-allowlist")
        self.assertEqual(result, 0, text)

    def test_each_raw_function_takes_what_its_stub_says(self):
        stubs = {node.name: node for node in ast.parse((PACKAGE / "_raw.pyi").read_text()).body
                 if isinstance(node, ast.FunctionDef)}
        functions = [getattr(raw, name) for name in raw.__all__]
        for function in functions:
            if inspect.isbuiltin(function):
                with self.subTest(function.__name__):
                    stub = stubs.pop(function.__name__).args
                    said = function.__doc__.split("\n")[0].partition("(")[2].rpartition(")")[0]
                    parts = [part for part in said.split(", ") if part]
                    self.assertEqual([part.split(":")[0] for part in parts], [arg.arg for arg in stub.args])
                    self.assertEqual(sum(" = " in part for part in parts), len(stub.defaults))
        self.assertEqual(list(stubs), [])

    def test_each_member_of_a_compiled_class_has_its_stub(self):
        nodes = ast.parse((PACKAGE / "_korvale.pyi").read_text()).body
        stubs = {node.name: {part.name for part in node.body if isinstance(part, ast.FunctionDef)}
                 for node in nodes if isinstance(node, ast.ClassDef)}
        compiled = {name: kind for name, kind in vars(_korvale).items() if isinstance(kind, type)}
        self.assertEqual(set(stubs), set(compiled))
        for name, kind in compiled.items():
            self.assertEqual({part for part in vars(kind) if not part.startswith("_")},
                             {part for part in stubs[name] if not part.startswith("_")})
        functions = {node.name for node in nodes if isinstance(node, ast.FunctionDef)}
        self.assertEqual(functions, {name for name, what in vars(_korvale).items() if inspect.isbuiltin(what)})

    def test_every_public_name_is_annotated(self):
        for name in korvale.__all__:
            function = getattr(korvale, name)
            if inspect.isfunction(function):
                with self.subTest(name):
                    hints = function.__annotations__
                    self.assertEqual(set(hints), {*inspect.signature(function).parameters, "return"})


if __name__ == "__main__":
    unittest.main()
