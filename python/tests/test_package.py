"""Tests of the installed package: it stands on its own, and is the version the header names."""

import importlib.metadata
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import korvale

PACKAGE = pathlib.Path(korvale.__file__).parent
SOURCES = pathlib.Path(__file__).resolve().parent.parent.parent


class PackageTest(unittest.TestCase):
    def test_is_the_installed_one(self):
        self.assertIn("site-packages", PACKAGE.parts)

    def test_has_the_version_of_the_header(self):
        header = (SOURCES / "include/korvale.h").read_text()
        self.assertEqual(korvale.__version__, re.search('KORVALE_VERSION "(.*)"', header).group(1))

    def test_carries_both_libraries_and_loads_no_others(self):
        text = "import korvale._raw; print(open('/proc/self/maps').read())"
        maps = subprocess.run([sys.executable, "-c", text], check=True, capture_output=True, text=True).stdout
        loaded = set(re.findall(r"\S*libkorvale\S*", maps))
        self.assertEqual(loaded, {str(PACKAGE / name) for name in ("libkorvale.so.1", "libkorvale-platform.so.1")})

    def test_is_marked_as_typed(self):
        self.assertTrue((PACKAGE / "py.typed").exists())

    def test_is_described_to_distributions(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([sys.executable, "-B", SOURCES / "python/backend/wheel.py", folder], check=True)
            (described,) = importlib.metadata.distributions(path=[folder])
            self.assertEqual((described.name, described.version, described.requires),
                             ("korvale", korvale.__version__, ["numpy"]))

    def test_is_refused_before_anything_is_compiled_where_there_is_no_numpy(self):
        with tempfile.TemporaryDirectory() as folder:
            environment = pathlib.Path(folder) / "environment"
            subprocess.run([sys.executable, "-m", "venv", environment], check=True)
            cmake = environment / "bin/cmake"
            cmake.write_text(f'#!/bin/sh\ntouch "{folder}/called"\nexit 1\n')
            cmake.chmod(0o755)
            variables = {name: value for name, value in os.environ.items() if not name.startswith("PIP_")}
            variables |= {"PATH": f"{environment}/bin:{os.environ['PATH']}", "PIP_CONFIG_FILE": os.devnull}
            pip = [environment / "bin/pip", "install", "--no-index", SOURCES]
            run = subprocess.run(pip, env=variables, capture_output=True, text=True)
            self.assertNotEqual(run.returncode, 0)
            self.assertIn("No matching distribution found for numpy", run.stderr)
            self.assertFalse((pathlib.Path(folder) / "called").exists())


if __name__ == "__main__":
    unittest.main()
