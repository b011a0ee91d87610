"""Everything the two libraries export has a way in from Python, and every way in is tried."""

import inspect
import pathlib
import subprocess
import unittest

from korvale import raw

import raw_calls

PACKAGING = pathlib.Path(__file__).resolve().parent.parent.parent / "packaging"

# What is not there under its own name.
OTHER_WAYS = {
    "_Initializerkorvale::_Initializerkorvale()": "run by loading the library; a third run ends the process",
    "_Initializerkorvale::~_Initializerkorvale()": "run by unloading the library",
}
# What is there and not among the ordinary calls: it ends the process, or belongs to the stages of loading.
TRIED_ELSEWHERE = {"MwApplicationBugCheck", "_Initializerkorvale"}


def exported():
    """The names that korvale.h and the layer export as they are written down, with their parameters."""
    names = []
    for file in ("exports.txt", "exports-platform.txt"):
        names += (PACKAGING / file).read_text().split("\n#")[0].split("\n")
    listed = subprocess.run(["c++filt"], input="\n".join(names), text=True, capture_output=True, check=True).stdout
    return [name for name in listed.split("\n") if name and name != "KORVALE_1.0"]


def way_in(name):
    """The object that a name leads to."""
    found = raw
    for part in name.split("(")[0].split("::"):
        found = getattr(found, part)
    return found


class ExportsTest(unittest.TestCase):
    def test_each_has_a_way_in(self):
        names = exported()
        self.assertGreater(len(names), 180)
        for name in names:
            if name not in OTHER_WAYS:
                with self.subTest(name):
                    way_in(name)

    def test_what_has_no_way_in_is_exported(self):
        for name in OTHER_WAYS:
            self.assertIn(name, exported())

    def test_each_function_is_tried(self):
        functions = {name.split("(")[0] for name in exported() if "::" not in name}
        self.assertEqual(functions - TRIED_ELSEWHERE, set(raw_calls.CALLS))

    def test_each_is_described(self):
        for name in raw_calls.CALLS:
            with self.subTest(name):
                text = inspect.getdoc(way_in(name))
                self.assertGreater(len(text.split("\n", 1)[1].strip()), 5)


if __name__ == "__main__":
    unittest.main()
