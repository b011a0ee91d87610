"""How pip builds korvale: CMake compiles the package folder, and this packs it into a wheel.

It needs cmake, a compiler and pybind11, and nothing from the network. `--config-settings folder=FOLDER` names the build
folder; without it the build is in build/wheel, or, where that cannot be written, in a folder that is removed again.

For distributions `wheel.py FOLDER` puts into a folder what pip and importlib.metadata know an installed package by.
"""

import base64
import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import sysconfig
import tarfile
import tempfile
import zipfile

SOURCES = pathlib.Path(__file__).resolve().parent.parent.parent


def version():
    """The version, which stands in the header alone."""
    header = (SOURCES / "include/korvale.h").read_text()
    return re.search(r'#define KORVALE_VERSION "(.*)"', header).group(1)


def metadata():
    """What pip shows and asks for."""
    return f"""Metadata-Version: 2.1
Name: korvale
Version: {version()}
Summary: Numeric geometry: borders, bands, rays, relaxation, equations, frames, scattering
License: MIT
Requires-Python: >=3.9
Requires-Dist: numpy
Description-Content-Type: text/markdown

{(SOURCES / "README.md").read_text()}"""


def tag():
    """What the compiled modules fit: this Python on this kind of machine."""
    python = f"cp{sys.version_info.major}{sys.version_info.minor}"
    return f"{python}-{python}-{re.sub('[-.]', '_', sysconfig.get_platform())}"


def compile_package(folder):
    """Builds the package folder and returns its parent."""
    generator = ["-G", "Ninja"] if shutil.which("ninja") and not (folder / "CMakeCache.txt").exists() else []
    flags = ["-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O2", f"-DPYTHON_EXECUTABLE={sys.executable}"]
    options = ["-DKORVALE_PYTHON=ON", "-DKORVALE_INSTALL=OFF", "-Wno-dev"]
    configure = ["cmake", "-S", SOURCES, "-B", folder, *generator, *flags, *options]
    subprocess.run(configure, check=True, stdout=sys.stderr)
    build = ["cmake", "--build", folder, "--target", "python_package", "--parallel", str(os.cpu_count())]
    subprocess.run(build, check=True, stdout=sys.stderr)
    return folder / "python"


def described():
    """The name of the folder that describes the package."""
    return f"korvale-{version()}.dist-info"


def descriptions():
    """The texts of that folder by name."""
    return {
        "METADATA": metadata(),
        "WHEEL": f"Wheel-Version: 1.0\nGenerator: korvale\nRoot-Is-Purelib: false\nTag: {tag()}\n",
        "LICENSE": (SOURCES / "LICENSE").read_text(),
    }


def describe(parent):
    """Describes the package in a folder of a system, whose own tools keep the list of its files and its license."""
    folder = pathlib.Path(parent) / described()
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "METADATA").write_text(metadata())


def pack(parent, target):
    """Writes the wheel: the package folder, what describes it and a list of all with their digests."""
    contents = {f"{described()}/{name}": text.encode() for name, text in descriptions().items()}
    for file in sorted((parent / "korvale").rglob("*")):
        if file.is_file() and "__pycache__" not in file.parts:
            contents[file.relative_to(parent).as_posix()] = file.read_bytes()
    record = ""
    with zipfile.ZipFile(target, "w", zipfile.ZIP_DEFLATED) as wheel:
        for name, content in contents.items():
            write(wheel, name, content)
            digest = base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()
            record += f"{name},sha256={digest},{len(content)}\n"
        write(wheel, f"{described()}/RECORD", f"{record}{described()}/RECORD,,\n".encode())


def write(wheel, name, content):
    """Adds a file that all may read, always of the same day, so that equal contents give an equal wheel."""
    entry = zipfile.ZipInfo(name, (2026, 1, 1, 0, 0, 0))
    entry.external_attr = (0o100755 if ".so" in name else 0o100644) << 16
    entry.compress_type = zipfile.ZIP_DEFLATED
    wheel.writestr(entry, content)


# --- What pip calls ---------------------------------------------------------------------------------------------------


def prepare_metadata_for_build_wheel(metadata_directory, config_settings=None):
    """Describes the package without building it, so pip knows that NumPy is missing before anything is compiled."""
    folder = pathlib.Path(metadata_directory) / described()
    folder.mkdir()
    for name, text in descriptions().items():
        (folder / name).write_text(text)
    return folder.name


def build_wheel(wheel_directory, config_settings=None, metadata_directory=None):
    """Builds the wheel into a folder and returns the name of its file."""
    name = f"korvale-{version()}-{tag()}.whl"
    target = pathlib.Path(wheel_directory) / name
    given = (config_settings or {}).get("folder")
    if given or os.access(SOURCES, os.W_OK):
        pack(compile_package(pathlib.Path(given or SOURCES / "build/wheel").absolute()), target)
    else:
        with tempfile.TemporaryDirectory() as folder:
            pack(compile_package(pathlib.Path(folder)), target)
    return name


def build_sdist(sdist_directory, config_settings=None):
    """Packs the sources without what was built from them and returns the name of the file."""
    name = f"korvale-{version()}"

    def kept(entry):
        path = entry.name[len(name) + 1 :]
        return None if path in ("build", "out", ".git") or "__pycache__" in path else entry

    with tarfile.open(pathlib.Path(sdist_directory) / f"{name}.tar.gz", "w:gz", format=tarfile.PAX_FORMAT) as archive:
        archive.add(SOURCES, name, filter=kept)
        with tempfile.NamedTemporaryFile("w", suffix=".txt") as described:
            described.write(metadata())
            described.flush()
            archive.add(described.name, f"{name}/PKG-INFO")
    return f"{name}.tar.gz"


if __name__ == "__main__":
    describe(sys.argv[1])
