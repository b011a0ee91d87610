"""Turns what people hand in into plain arrays: lists, arrays of any kind, and objects of other packages.

Other packages are known by their attributes alone, so none of them is imported: Shapely by `exterior`, `interiors` and
`coords`, trimesh by `vertices` and `faces`, meshio by `points` and `cells`, matplotlib by `vertices` and `codes`.
"""

from __future__ import annotations

import operator
from collections.abc import Iterable, Sequence
from typing import Any

import numpy

from . import _korvale
from ._errors import Error, refuse
from ._types import Numbers

# How matplotlib marks the vertices of a path.
_MOVE, _LINE, _CLOSE = 1, 2, 79


def _shown(value: Any) -> str:
    text = repr(value)
    return text if len(text) <= 60 else text[:57] + "..."


def number(value: Any, function: str, argument: str) -> float:
    """A real number."""
    try:
        if isinstance(value, (str, bytes)):
            raise TypeError
        return float(value)
    except (TypeError, ValueError, OverflowError):
        raise refuse(function, argument, "be a number", f"it is {_shown(value)}") from None


def count(value: Any, function: str, argument: str, least: int = 0, most: int = 2**31 - 1) -> int:
    """A whole number within bounds."""
    try:
        n = operator.index(value)
    except TypeError:
        raise refuse(function, argument, "be a whole number", f"it is {_shown(value)}") from None
    if not least <= n <= most:
        raise refuse(function, argument, f"be {least} to {most}", f"it is {n}")
    return n


def flag(value: Any, function: str, argument: str) -> bool:
    """Yes or no."""
    if isinstance(value, (bool, numpy.bool_)) or (isinstance(value, (int, numpy.integer)) and value in (0, 1)):
        return bool(value)
    raise refuse(function, argument, "be True or False", f"it is {_shown(value)}")


def text(value: Any, function: str, argument: str) -> str:
    """A text; what UTF-8 has no code for, half of a surrogate pair, becomes a question mark."""
    if not isinstance(value, str):
        raise refuse(function, argument, "be a str", f"it is {_shown(value)}")
    return value if value.isascii() else value.encode("utf-8", "replace").decode()


def items(value: Any, function: str, argument: str, must: str) -> list[Any]:
    """The items of something to go through."""
    if not isinstance(value, (str, bytes)):
        try:
            return list(value)
        except TypeError:
            pass
    raise refuse(function, argument, must, f"it is {_shown(value)}")


def array(value: Any, function: str, argument: str, must: str) -> Numbers:
    """Numbers as an array of doubles, without a copy where they are that already."""
    if hasattr(value, "coords") and not isinstance(value, numpy.ndarray):
        value = value.coords
    if isinstance(value, (str, bytes)):
        raise refuse(function, argument, must, f"it is {_shown(value)}")
    if not isinstance(value, numpy.ndarray) and not hasattr(value, "__array__") and not isinstance(value, Sequence):
        if isinstance(value, Iterable):
            value = list(value)
    try:
        given = numpy.asarray(value)
        if given.dtype.kind not in "fiub":
            if given.dtype.kind == "O" and given.size and not any(isinstance(v, Sequence) for v in given.flat):
                given = given.astype(float)  # such as Fraction and Decimal
            else:
                raise refuse(function, argument, must, f"it holds {_kind(given)}")
    except Error:
        raise
    except (TypeError, ValueError):
        raise refuse(function, argument, must, "its rows differ in length or are no numbers") from None
    return numpy.ascontiguousarray(given, dtype=numpy.float64) if given.ndim else given.astype(numpy.float64)


def _kind(given: Numbers) -> str:
    names = {"U": "text", "S": "bytes", "c": "complex numbers", "O": "objects, or rows that differ in length",
             "M": "dates", "m": "times", "V": "records"}
    return names.get(given.dtype.kind, str(given.dtype))


def points(value: Any, function: str, argument: str) -> Numbers:
    """Points as a plain array of doubles (N, 3); a missing z is 0."""
    must = "be points, (N, 2) or (N, 3)"
    given = array(value, function, argument, must)
    if given.ndim == 2 and given.shape[1] == 3:
        return numpy.require(given, numpy.float64, ["C", "A"])
    if given.ndim == 2 and given.shape[1] == 2:
        lifted = numpy.zeros((len(given), 3))
        lifted[:, :2] = given
        return lifted
    if given.size == 0 and given.ndim <= 2:
        return numpy.zeros((0, 3))
    raise refuse(function, argument, must, f"its shape is {given.shape}")


def point(value: Any, function: str, argument: str) -> Numbers:
    """One point as an array (1, 3)."""
    must = "be a point, (3,) or (2,)"
    given = array(value, function, argument, must)
    if given.shape == (1, 3) or given.shape == (1, 2):
        given = given[0]
    if given.shape == (3,) or given.shape == (2,):
        return points(given[None], function, argument)
    raise refuse(function, argument, must, f"its shape is {given.shape}")


def points_or_point(value: Any, function: str, argument: str) -> tuple[Numbers, bool]:
    """Points (N, 3), and whether they were a single one, (3,), which becomes (1, 3)."""
    given = array(value, function, argument, "be points, (N, 3) or (3,)")
    is_single = given.ndim == 1 and given.size > 0
    return points(given[None] if is_single else given, function, argument), is_single


def finite(given: Numbers, function: str, argument: str) -> Numbers:
    """The array, which must not hold NaN or infinity."""
    good = numpy.isfinite(given)
    if not good.all():
        row = int(numpy.argmin(good.reshape(len(given), -1).all(axis=1)))
        raise refuse(function, argument, "be finite", f"its row {row} is {given[row].tolist()}")
    return given


# --- Outlines --------------------------------------------------------------------------------------------------------


def _path_outlines(path: Any, function: str, argument: str) -> list[Numbers]:
    """The outlines of a matplotlib path."""
    codes = path.codes
    if codes is None:
        return [points(path.vertices, function, argument)]
    codes = numpy.asarray(codes)
    if codes.shape != numpy.shape(path.vertices)[:1]:
        raise refuse(function, argument, "have a code for each vertex", f"there are {codes.size}")
    if not numpy.isin(codes, (_MOVE, _LINE, _CLOSE)).all():  # curves, which the path flattens itself
        return [points(polygon, function, argument) for polygon in path.to_polygons() if len(polygon) > 2]
    given = points(path.vertices, function, argument)
    starts = numpy.flatnonzero(codes == _MOVE)
    pieces = numpy.split(given[codes != _CLOSE], numpy.searchsorted(numpy.flatnonzero(codes != _CLOSE), starts))
    return [piece for piece in pieces if len(piece) > 1]


def _is_outline(value: Any) -> bool:
    """Whether something is one outline rather than several."""
    if hasattr(value, "coords"):
        return True
    if hasattr(value, "__array__"):
        given = numpy.asarray(value)
        if given.ndim != 1 or given.dtype.kind != "O":
            return given.ndim < 3
    for first in value:
        if hasattr(first, "coords") or isinstance(first, (str, bytes)):
            return False
        return numpy.ndim(first) < 2 if isinstance(first, numpy.ndarray) else not _is_row_of_rows(first)
    return True


def _is_row_of_rows(value: Any) -> bool:
    if hasattr(value, "__array__"):
        return numpy.ndim(value) >= 2
    try:
        for first in value:
            return not isinstance(first, (str, bytes)) and hasattr(first, "__len__")
    except TypeError:
        pass
    return False


def outline_or_shape(value: Any, function: str, argument: str) -> Any:
    """One outline as an array (N, 3), or an outer outline and its holes as a list of such arrays."""
    if hasattr(value, "exterior") and hasattr(value, "interiors"):
        holes = items(value.interiors, function, argument, "have interiors")
        return [points(ring, function, argument) for ring in (value.exterior, *holes)]
    if hasattr(value, "geoms"):
        raise refuse(function, argument, "be one outline or shape",
                     f"it has {len(value.geoms)}: take its .geoms singly")
    if hasattr(value, "vertices") and hasattr(value, "codes"):
        outlines = _path_outlines(value, function, argument)
        if len(outlines) == 1:
            return outlines[0]
        if len(shapes_of(outlines)) > 1:
            raise refuse(function, argument, "be one outline or shape",
                         "it has several: take those that korvale.shapes gives singly")
        return shapes_of(outlines)[0]
    if isinstance(value, memoryview):
        value = numpy.asarray(value)
    if isinstance(value, (str, bytes)) or not (hasattr(value, "__array__") or hasattr(value, "coords")
                                               or isinstance(value, Iterable)):
        raise refuse(function, argument, "be an outline, (N, 2) or (N, 3), or a list of outlines",
                     f"it is {_shown(value)}")
    if not hasattr(value, "__array__") and not hasattr(value, "coords"):
        value = list(value)
    if _is_outline(value):
        return points(value, function, argument)
    return [points(outline, function, f"{argument} {k}") for k, outline in enumerate(value)]


def shape(value: Any, function: str, argument: str) -> list[Numbers]:
    """An outer outline and its holes, in plain arrays."""
    given = outline_or_shape(value, function, argument)
    return given if isinstance(given, list) else [given]


def without_repeat(outline: Numbers) -> Numbers:
    """An outline without a last point that repeats the first."""
    return outline[:-1] if len(outline) > 1 and (outline[0] == outline[-1]).all() else outline


def shapes_of(outlines: Iterable[Numbers]) -> list[list[Numbers]]:
    """Sorts outlines into shapes: those inside an even number of others are outer ones, the rest their holes.

    One that is there twice is taken once.
    """
    rings = [without_repeat(outline) for outline in outlines]
    outer = _korvale.shapes(rings).tolist()
    shapes = {k: [ring] for k, ring in enumerate(rings) if outer[k] == k}
    for k, ring in enumerate(rings):
        if 0 <= outer[k] != k:
            shapes[outer[k]].append(ring)
    return list(shapes.values())


# --- Meshes ----------------------------------------------------------------------------------------------------------


def triangles(value: Any, vertices: int, function: str, argument: str) -> Numbers:
    """Triangles on shared vertices as a plain array of 32-bit integers (T, 3)."""
    must = "be triangles, whole numbers (T, 3)"
    try:
        given = numpy.asarray(value)
    except ValueError:
        raise refuse(function, argument, must, "its rows differ in length") from None
    if given.size == 0:
        return numpy.zeros((0, 3), numpy.int32)
    if given.dtype.kind not in "iu":
        raise refuse(function, argument, must, f"it holds {_kind(given)}")
    if given.ndim != 2 or given.shape[1] != 3:
        raise refuse(function, argument, must, f"its shape is {given.shape}")
    _require_vertices(given, vertices, function, argument)
    return numpy.require(given, numpy.int32, ["C", "A"])


def _require_vertices(corners: Numbers, vertices: int, function: str, argument: str) -> None:
    if corners.size and (corners.min() < 0 or corners.max() >= vertices):
        wrong = corners[(corners < 0) | (corners >= vertices)].flat[0]
        raise refuse(function, argument, f"name vertices 0 to {vertices - 1}", f"{wrong} is among them")


def faces(value: Any, vertices: int, function: str, argument: str) -> tuple[Numbers | None, Numbers]:
    """Faces as (sizes, corners), both 32-bit; sizes is None where all are triangles."""
    try:
        given = numpy.asarray(value)
    except ValueError:
        given = numpy.empty(0, object)
    if given.dtype.kind in "iu" and given.ndim == 2 and given.shape[1] == 3:
        return None, triangles(given, vertices, function, argument)
    must = "be faces: whole numbers (F, k), or a list of lists of them"
    if isinstance(value, numpy.ndarray) and value.dtype.kind not in "iuO":
        raise refuse(function, argument, must, f"it holds {_kind(value)}")
    try:
        rows = [[operator.index(corner) for corner in face] for face in value]
    except TypeError:
        raise refuse(function, argument, must, f"it is {_shown(value)}") from None
    corners = numpy.array([corner for row in rows for corner in row], numpy.int64)
    _require_vertices(corners, vertices, function, argument)
    if all(len(row) == 3 for row in rows):
        return None, corners.astype(numpy.int32).reshape(-1, 3)
    return numpy.array([len(row) for row in rows], numpy.int32), corners.astype(numpy.int32)


def is_mesh(value: Any) -> bool:
    """Whether something brings vertices and faces along."""
    return ((hasattr(value, "vertices") and hasattr(value, "faces"))
            or (hasattr(value, "points") and hasattr(value, "cells"))
            or (isinstance(value, tuple) and len(value) == 2))


def mesh(value: Any, more: Any, function: str) -> tuple[Numbers, Numbers | None, Numbers]:
    """(vertices, sizes, corners) of a mesh, of a pair, or of vertices and faces given apart."""
    if more is None:
        if hasattr(value, "vertices") and hasattr(value, "faces"):
            value, more = value.vertices, value.faces
        elif hasattr(value, "points") and hasattr(value, "cells"):
            return _meshio(value, function)
        elif isinstance(value, tuple) and len(value) == 2:
            value, more = value
        else:
            raise refuse(function, "mesh", "be a mesh, a tuple (vertices, triangles), or both as two arguments",
                         f"it is {_shown(value)}")
    vertices = finite(points(value, function, "vertices"), function, "vertices")
    return (vertices, *faces(more, len(vertices), function, "triangles"))


def _meshio(given: Any, function: str) -> tuple[Numbers, Numbers | None, Numbers]:
    vertices = finite(points(given.points, function, "mesh.points"), function, "mesh.points")
    cells = given.cells.items() if hasattr(given.cells, "items") else given.cells
    blocks = [(block.type, block.data) if hasattr(block, "type") else block
              for block in items(cells, function, "mesh.cells", "be blocks of cells")]
    rows: list[Any] = []
    for kind, data in blocks:
        if kind in ("triangle", "quad", "polygon"):
            rows.extend(numpy.asarray(data).tolist())
        elif kind not in ("vertex", "line"):
            raise refuse(function, "mesh.cells", "be triangles, quads and polygons",
                         f"there are cells of kind {kind!r}")
    return (vertices, *faces(rows, len(vertices), function, "mesh.cells"))


def corners(value: Any, function: str, argument: str) -> Numbers:
    """Triangles given by their corners, as a plain array (T, 9)."""
    must = "be corners of triangles, (T, 3, 3) or (T, 9)"
    given = array(value, function, argument, must)
    if given.size == 0:
        return numpy.zeros((0, 9))
    if not (given.ndim == 3 and given.shape[1:] == (3, 3)) and not (given.ndim == 2 and given.shape[1] == 9):
        raise refuse(function, argument, must, f"its shape is {given.shape}")
    return finite(given.reshape(-1, 9), function, argument)


# --- Results ---------------------------------------------------------------------------------------------------------


def output(out: Any, shape: tuple[int, ...], function: str, kind: Any = numpy.float64) -> Numbers:
    """The array that a result goes to: a new one, or the caller's."""
    if out is None:
        return numpy.empty(shape, kind)
    if (not isinstance(out, numpy.ndarray) or out.dtype != kind or out.shape != shape
            or not out.flags.c_contiguous or not out.flags.aligned or not out.flags.writeable):
        what = f"{out.dtype} {out.shape}" if isinstance(out, numpy.ndarray) else _shown(out)
        raise refuse(function, "out", f"be a contiguous, writable array of {numpy.dtype(kind)}, {shape}",
                     f"it is {what}")
    return out
