"""Meshes written to files."""

from __future__ import annotations

import os
from typing import Any

import numpy

from . import _input
from ._errors import refuse
from ._korvale import Mesh


def _obj(mesh: Mesh) -> bytes:
    """Wavefront OBJ. The shortest texts that read back as the same numbers; corners are counted from 1."""
    lines = ["v %r %r %r\n" % tuple(vertex) for vertex in mesh.vertices.tolist()]
    lines += ["f %d %d %d\n" % tuple(triangle) for triangle in (mesh.triangles + 1).tolist()]
    return "".join(lines).encode("ascii")


def _stl(mesh: Mesh) -> bytes:
    """Binary STL."""
    largest, most = abs(mesh.vertices).max(initial=0), numpy.finfo(numpy.float32).max
    if largest > most:
        raise refuse("Mesh.save", "vertices", f"be within {most:g} for STL", f"one has {largest:g}")
    facets = numpy.zeros(len(mesh.triangles), [("normal", "<f4", 3), ("corners", "<f4", (3, 3)), ("attribute", "<u2")])
    facets["normal"] = mesh.normals
    facets["corners"] = mesh.vertices[mesh.triangles]
    return b"korvale".ljust(80) + len(facets).to_bytes(4, "little") + facets.tobytes()


def _ply(mesh: Mesh) -> bytes:
    """Binary PLY."""
    coordinates = "".join(f"property double {name}\n" for name in "xyz")
    faces = numpy.empty(len(mesh.triangles), [("size", "u1"), ("corners", "<i4", 3)])
    faces["size"] = 3
    faces["corners"] = mesh.triangles
    header = (f"ply\nformat binary_little_endian 1.0\nelement vertex {len(mesh.vertices)}\n{coordinates}"
              f"element face {len(faces)}\nproperty list uchar int vertex_indices\nend_header\n")
    return header.encode("ascii") + mesh.vertices.astype("<f8").tobytes() + faces.tobytes()


_WRITERS = {".obj": _obj, ".stl": _stl, ".ply": _ply}


def save(mesh: Mesh, path: Any) -> None:
    """Writes a mesh in the format that the path ends in. What is refused leaves no file."""
    try:
        name = os.fspath(path)
    except TypeError:
        raise refuse("Mesh.save", "path", "be a path", f"it is {path!r}") from None
    writer = _WRITERS.get(os.path.splitext(os.fsdecode(name))[1].lower())
    if writer is None:
        raise refuse("Mesh.save", "path", "end in .obj, .stl or .ply", f"it is {name!r}")
    _input.finite(mesh.vertices, "Mesh.save", "vertices")
    content = writer(mesh)
    with open(name, "wb") as file:
        file.write(content)
