"""usage: blender ... -P suite.py -- [unittest arguments]; the tests in the files beside this one."""

import pathlib
import sys
import unittest

here = str(pathlib.Path(__file__).resolve().parent)
sys.path.insert(0, here)
more = sys.argv[sys.argv.index("--") + 1:]
unittest.main(module=None, argv=["blender", "discover", "-s", here, *more])
