"""Runs the examples of all docstrings."""

import doctest
import importlib
import inspect
import pkgutil
import unittest

import korvale
import numpy


class ExampleTest(unittest.TestCase):
    def test_examples_of_docstrings_run(self):
        tried = 0
        for name in ["korvale"] + [f"korvale.{m.name}" for m in pkgutil.iter_modules(korvale.__path__)]:
            module = importlib.import_module(name)
            with self.subTest(name):
                result = doctest.testmod(module, extraglobs={"korvale": korvale, "numpy": numpy})
                self.assertEqual(result.failed, 0)
                tried += result.attempted
        self.assertGreater(tried, 60)

    def test_everything_public_is_documented(self):
        for name in korvale.__all__:
            value = getattr(korvale, name)
            if name in ("__version__", "raw"):
                continue
            self.assertTrue(inspect.getdoc(value), name)
            if inspect.isfunction(value):
                self.assertIn(">>>", inspect.getdoc(value), name)
            for member, what in vars(value).items() if inspect.isclass(value) else ():
                if not member.startswith("_") and (callable(what) or inspect.isdatadescriptor(what)):
                    self.assertTrue(inspect.getdoc(what), f"{name}.{member}")
                    self.assertNotIn("Alias for field", inspect.getdoc(what), f"{name}.{member}")


if __name__ == "__main__":
    unittest.main()
