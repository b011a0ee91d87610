"""Turns what people hand in into plain arrays. Whatever korvale takes is known here, and nowhere else.

- numbers: real ones of any kind, but no truth, text or array; whole numbers: int and NumPy's integers
- points, a line: whatever NumPy makes an array of real numbers of, (N, 2) or (N, 3); rings and lines of Shapely,
  polygons without holes, groups of points; paths of matplotlib and trimesh with one part
- an outline, a shape: the same; lists of outlines, polygons of Shapely and paths with holes; bands
- shapes: the same; whatever holds several of them
- a mesh: objects with `vertices` and `faces`, such as trimesh's, or with `points` and `cells`, as meshio's; tuples
- faces: whole numbers (F, k), or rows of them of any lengths
- a choice of points: truths, one a point, or whole numbers

Other packages are known by their attributes alone, so none of them is imported: Shapely by `exterior`, `interiors`,
`coords`, `geoms` and `geom_type`, matplotlib by `vertices` and `codes`, trimesh by `vertices` and `faces` or
`discrete`, meshio by `points` and `cells`. Whatever has `__array__` is an array.

What could be meant in two ways is refused: truths among numbers, masked values, sets and dicts, which have no order,
zeros and ones where a choice of points is wanted.
"""

from __future__ import annotations

import operator
from collections.abc import Callable, Iterable, Mapping, Sequence
from typing import Any

import numpy

from . import _korvale
from ._errors import Error, refuse, renamed
from ._types import Ints, Numbers

# How matplotlib marks the vertices of a path.
_MOVE, _LINE, _CLOSE = 1, 2, 79

_WITHOUT_ORDER = (set, frozenset, Mapping)


def _shown(value: Any) -> str:
    text = repr(value)
    return text if len(text) <= 60 else text[:57] + "..."


def number(value: Any, function: str, argument: str) -> float:
    """A real number."""
    kind = getattr(getattr(value, "dtype", None), "kind", "f")
    try:
        if isinstance(value, (str, bytes, bool)) or kind not in "fiuO" or getattr(value, "ndim", 0) != 0:
            raise TypeError
        if is_masked(value):
            raise TypeError
        return float(value)
    except (TypeError, ValueError, OverflowError):
        raise refuse(function, argument, "be a number", f"it is {_shown(value)}") from None


def count(value: Any, function: str, argument: str, least: int = 0, most: int = 2**31 - 1) -> int:
    """A whole number within bounds."""
    try:
        if isinstance(value, (bool, numpy.bool_)):
            raise TypeError
        n = operator.index(value)
    except TypeError:
        raise refuse(function, argument, "be a whole number", f"it is {_shown(value)}") from None
    if not least <= n <= most:
        raise refuse(function, argument, f"be {least} to {most}", f"it is {n}")
    return n


def flag(value: Any, function: str, argument: str) -> bool:
    """Yes or no."""
    if isinstance(value, (bool, numpy.bool_)):
        return bool(value)
    raise refuse(function, argument, "be True or False", f"it is {_shown(value)}")


JOINS = ("miter", "bevel", "round")
Joins = tuple[int, "Ints | None", float, float]
SHARP: Joins = (0, None, 0.0, 0.0)


def joins(join: Any, miter_limit: Any, tolerance: Any, function: str) -> Joins:
    """What stands at corners: the number of a join, or those of all corners, a limit and a tolerance, 0 for none."""
    if miter_limit is None and tolerance is None and isinstance(join, str) and join == "miter":
        return SHARP
    limit = 0.0 if miter_limit is None else number(miter_limit, function, "miter_limit")
    width = 0.0 if tolerance is None else number(tolerance, function, "tolerance")
    must = 'be "miter", "bevel" or "round", or one of them for each point'
    if isinstance(join, str):
        if join not in JOINS:
            raise refuse(function, "join", must, f"it is {_shown(join)}")
        return JOINS.index(join), None, limit, width
    each = items(join, function, "join", must)
    for i, name in enumerate(each):
        if not isinstance(name, str) or name not in JOINS:
            raise refuse(function, "join", must, f"number {i} is {_shown(name)}")
    if not each:
        raise refuse(function, "join", must, "there is none")
    return 0, numpy.array([JOINS.index(name) for name in each], numpy.int32), limit, width


CAPS = ("flat", "square", "round")


def cap(cap: Any, tolerance: Any, function: str) -> tuple[int, float]:
    """How a band ends: the number of a cap, and a tolerance, 0 for none."""
    if not isinstance(cap, str) or cap not in CAPS:
        raise refuse(function, "cap", 'be "flat", "square" or "round"', f"it is {_shown(cap)}")
    return CAPS.index(cap), 0.0 if tolerance is None else number(tolerance, function, "tolerance")


def text(value: Any, function: str, argument: str) -> str:
    """A text; what UTF-8 has no code for, half of a surrogate pair, becomes a question mark."""
    if not isinstance(value, str):
        raise refuse(function, argument, "be a str", f"it is {_shown(value)}")
    return value if value.isascii() else value.encode("utf-8", "replace").decode()


def items(value: Any, function: str, argument: str, must: str) -> list[Any]:
    """The items of something to go through."""
    if not isinstance(value, (str, bytes, *_WITHOUT_ORDER)):
        try:
            return list(value)
        except TypeError:
            pass
    raise refuse(function, argument, must, f"it is {_shown(value)}")


def is_masked(value: Any) -> bool:
    """Whether any of an array's values are masked."""
    return isinstance(value, numpy.ma.MaskedArray) and bool(numpy.any(value.mask))


def _given(value: Any, function: str, argument: str, must: str) -> Numbers:
    """What NumPy makes of something, of whatever kind."""
    if is_masked(value):
        raise refuse(function, argument, must, f"{numpy.count_nonzero(value.mask)} of its {value.size} values are "
                     "masked: fill them, or leave them out")
    if isinstance(value, (str, bytes, *_WITHOUT_ORDER)):
        raise refuse(function, argument, must, f"it is {_shown(value)}")
    if not hasattr(value, "__array__") and not isinstance(value, Sequence) and isinstance(value, Iterable):
        value = list(value)
    try:
        return numpy.asarray(value)
    except (TypeError, ValueError):
        raise refuse(function, argument, must, "its rows differ in length or are no numbers") from None


def rows(value: Any, function: str, argument: str) -> Numbers:
    """An array of whatever kind with a row for each of something."""
    must = "be an array, (N, ...)"
    given = _given(value, function, argument, must)
    if given.ndim == 0:
        raise refuse(function, argument, must, f"it is {_shown(value)}")
    return given


def array(value: Any, function: str, argument: str, must: str) -> Numbers:
    """Numbers as an array of doubles, without a copy where they are that already."""
    given = _given(value, function, argument, must)
    if given.dtype.kind == "O" and given.size and not any(isinstance(v, (Sequence, bool)) for v in given.flat):
        try:
            given = given.astype(float)  # such as Fraction and Decimal
        except (TypeError, ValueError):
            raise refuse(function, argument, must, "its rows differ in length or are no numbers") from None
    if given.dtype.kind not in "fiu":
        raise refuse(function, argument, must, f"it holds {_kind(given)}")
    return numpy.ascontiguousarray(given, dtype=numpy.float64) if given.ndim else given.astype(numpy.float64)


def _kind(given: Numbers) -> str:
    names = {"U": "text", "S": "bytes", "c": "complex numbers", "O": "objects, or rows that differ in length",
             "M": "dates", "m": "times", "V": "records", "b": "truths"}
    return names.get(given.dtype.kind, str(given.dtype))


def points(value: Any, function: str, argument: str) -> Numbers:
    """Points, or the points of a line, as a plain array of doubles (N, 3); a missing z is 0."""
    must = "be points, (N, 2) or (N, 3)"
    given = array(_line_of(value, function, argument, must), function, argument, must)
    if given.ndim == 2 and given.shape[1] == 3:
        return numpy.require(given, numpy.float64, ["C", "A"])
    if given.ndim == 2 and given.shape[1] == 2:
        lifted = numpy.zeros((len(given), 3))
        lifted[:, :2] = given
        return lifted
    if given.size == 0 and given.ndim <= 2:
        return numpy.zeros((0, 3))
    raise refuse(function, argument, must, f"its shape is {given.shape}")


def _line_of(value: Any, function: str, argument: str, must: str) -> Any:
    """The points of a line of another package; whatever else as it is."""
    if isinstance(value, (numpy.ndarray, list, tuple)) or hasattr(value, "__array__"):
        return value
    if _has(value, "exterior", "interiors"):
        if holes := items(value.interiors, function, argument, "have interiors"):
            raise refuse(function, argument, must, f"it is a polygon with {len(holes)} hole" + "s" * (len(holes) > 1))
        return _coordinates(value.exterior)
    if _has(value, "geoms"):
        parts = items(value.geoms, function, argument, must)
        if len(parts) == 1:
            return _line_of(parts[0], function, argument, must)
        places = [_coordinates(part) for part in parts]
        if any(not isinstance(place, Iterable) or len(list(place)) != 1 for place in places):
            raise refuse(function, argument, must, f"it has {len(parts)} parts: take its .geoms singly")
        return [tuple(place)[0] for place in places]  # points
    if is_path(value):
        parts = path_outlines(value, function, argument)
        if len(parts) != 1:
            raise refuse(function, argument, must, f"it is a path of {len(parts)} parts")
        return parts[0]
    return _coordinates(value)


def is_ring(line: Any) -> bool:
    """Whether a line is closed by what it is: rings and polygons of Shapely, paths of matplotlib with a mark."""
    if isinstance(line, (numpy.ndarray, list, tuple)):
        return False
    if _has(line, "geoms"):
        parts = list(line.geoms)
        return len(parts) == 1 and is_ring(parts[0])
    if is_path(line):
        codes = getattr(line, "codes", None)
        return codes is not None and _CLOSE in numpy.asarray(codes)
    return _has(line, "exterior", "interiors") or getattr(line, "geom_type", None) == "LinearRing"


def _has(value: Any, *names: str) -> bool:
    """Whether something has attributes; those that raise when they are looked at are none."""
    try:
        return all(hasattr(value, name) for name in names)
    except NotImplementedError:  # as the coords of Shapely's polygons do
        return False


def _coordinates(value: Any) -> Any:
    return value.coords if _has(value, "coords") else value


def point(value: Any, function: str, argument: str) -> Numbers:
    """One point as an array (1, 3)."""
    must = "be a point, (3,) or (2,)"
    given = array(_coordinates(value), function, argument, must)
    if given.shape == (1, 3) or given.shape == (1, 2):
        given = given[0]
    if given.shape == (3,) or given.shape == (2,):
        return points(given[None], function, argument)
    raise refuse(function, argument, must, f"its shape is {given.shape}")


def points_or_point(value: Any, function: str, argument: str) -> tuple[Numbers, bool]:
    """Points (N, 3), and whether they were a single one, (3,), which becomes (1, 3)."""
    must = "be points, (N, 3) or (3,)"
    given = array(_line_of(value, function, argument, must), function, argument, must)
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


def is_path(value: Any) -> bool:
    """Whether something is a path of matplotlib or of trimesh."""
    return _has(value, "vertices", "codes") or _has(value, "discrete")


def path_outlines(path: Any, function: str, argument: str) -> list[Numbers]:
    """The lines of a path. Those that are closed repeat their first point."""
    if not _has(path, "codes"):
        return [points(line, function, argument) for line in items(path.discrete, function, argument, "have lines")]
    codes = path.codes
    if codes is None:
        return [points(path.vertices, function, argument)]
    codes = numpy.asarray(codes)
    if codes.shape != numpy.shape(path.vertices)[:1]:
        raise refuse(function, argument, "have a code for each vertex", f"there are {codes.size}")
    if not numpy.isin(codes, (_MOVE, _LINE, _CLOSE)).all():  # curves, which the path flattens itself
        return [points(polygon, function, argument) for polygon in path.to_polygons() if len(polygon) > 2]
    given = points(path.vertices, function, argument)
    ends = [*numpy.flatnonzero(codes == _MOVE)[1:], len(codes)]
    lines, first = [], 0
    for end in ends:
        line, marks = given[first:end], codes[first:end]
        if (marks == _CLOSE).any():
            line = numpy.vstack([line[marks != _CLOSE], line[:1]])
        if len(line) > 1:
            lines.append(line)
        first = end
    return lines


def _is_row_of_rows(value: Any) -> bool:
    if hasattr(value, "__array__"):
        return numpy.ndim(value) >= 2
    try:
        for first in value:
            return not isinstance(first, (str, bytes)) and hasattr(first, "__len__")
    except TypeError:
        pass
    return False


def _is_outline(value: Any) -> bool:
    """Whether rows are those of one outline, rather than several outlines."""
    if hasattr(value, "__array__"):
        given = numpy.asarray(value)
        if given.ndim != 1 or given.dtype.kind != "O":
            return given.ndim < 3
    for first in value:
        return isinstance(first, (str, bytes)) or not (_is_geometry(first) or _is_row_of_rows(first))
    return True


def _is_geometry(value: Any) -> bool:
    """Whether something is a line, a polygon or a path of another package."""
    return not hasattr(value, "__array__") and (_has(value, "exterior", "interiors") or _has(value, "coords")
                                                or _has(value, "geoms") or is_path(value))


def outline_or_shape(value: Any, function: str, argument: str) -> Any:
    """One outline as an array (N, 3), or an outer outline and its holes as a list of such arrays."""
    must = "be an outline, (N, 2) or (N, 3), or a list of outlines"
    if isinstance(value, memoryview):
        value = numpy.asarray(value)
    if hasattr(value, "outlines") and hasattr(value, "closed"):  # a band
        return value.outlines[0] if len(value.outlines) == 1 else rings_of_band(value, function)
    if _is_geometry(value):
        if _has(value, "exterior", "interiors"):
            holes = items(value.interiors, function, argument, "have interiors")
            return [points(ring, function, argument) for ring in (value.exterior, *holes)]
        if _has(value, "geoms"):
            parts = items(value.geoms, function, argument, must)
            if len(parts) == 1:
                return outline_or_shape(parts[0], function, argument)
            raise refuse(function, argument, "be one outline or shape",
                         f"it has {len(parts)}: take its .geoms singly")
        if is_path(value):
            outlines = path_outlines(value, function, argument)
            if len(outlines) == 1:
                return outlines[0]
            sorted_out = shapes_of(outlines, function)
            if len(sorted_out) != 1:
                raise refuse(function, argument, "be one outline or shape",
                             f"it has {len(sorted_out)}: take those that korvale.shapes gives singly")
            return sorted_out[0]
        return points(value, function, argument)
    if isinstance(value, (str, bytes, *_WITHOUT_ORDER)) or not isinstance(value, Iterable):
        raise refuse(function, argument, must, f"it is {_shown(value)}")
    if not hasattr(value, "__array__"):
        value = list(value)
    if is_masked(value) or _is_outline(value):
        return points(value, function, argument)
    return [points(outline, function, f"{argument} {k}") for k, outline in enumerate(value)]


def rings(value: Any, function: str, argument: str) -> list[Numbers]:
    """All outlines of something that holds any number of them."""
    if _has(value, "geoms"):
        value = items(value.geoms, function, argument, "be outlines")
    if is_path(value):
        return path_outlines(value, function, argument)
    if not hasattr(value, "__array__") and isinstance(value, Iterable):
        value = items(value, function, argument, "be outlines")
        if any(map(_is_geometry, value)):
            return [ring for part in value for ring in rings(part, function, argument)]
    return shape(value, function, argument)


def shape(value: Any, function: str, argument: str) -> list[Numbers]:
    """An outer outline and its holes, in plain arrays."""
    given = outline_or_shape(value, function, argument)
    return given if isinstance(given, list) else [given]


def many_outlines(value: Any, starts: Any, function: str, argument: str) -> tuple[Numbers, Numbers]:
    """Outlines as points (N, 2) or (N, 3), one behind the other, and the numbers (n + 1,) at which they begin."""
    if starts is not None:
        given = array(value, function, argument, "be points, (N, 2) or (N, 3)")
        if given.ndim != 2 or given.shape[1] not in (2, 3):
            given = points(given, function, argument)
        return numpy.require(given, numpy.float64, ["C", "A"]), _starts(starts, function)
    if _has(value, "geoms"):
        value = value.geoms
    outlines = items(value, function, argument, "be outlines, or points with starts")
    sizes = {outline.shape[1:] if type(outline) is numpy.ndarray and outline.dtype.kind in "fiu" else None
             for outline in outlines}
    if len(sizes) != 1 or not sizes <= {(2,), (3,)}:
        outlines = [points(outline, function, f"outline {k}") for k, outline in enumerate(outlines)]
    flat = numpy.concatenate(outlines, dtype=numpy.float64) if outlines else numpy.zeros((0, 3))
    ends = numpy.fromiter(map(len, outlines), numpy.int64, len(outlines)).cumsum()
    return flat, numpy.concatenate([numpy.zeros(1, numpy.int64), ends])


def _starts(value: Any, function: str) -> Numbers:
    must = "be whole numbers (n + 1,)"
    given = _given(value, function, "starts", must)
    if given.dtype.kind not in "iu" or given.ndim != 1:
        raise refuse(function, "starts", must, f"it is {_shown(value)}")
    return numpy.require(given, numpy.int64, ["C", "A"])


def repeats(flat: Numbers, starts: Numbers) -> Numbers:
    """How many points at the end of each outline repeat its first; none where the starts are not sound."""
    first, last = starts[:-1], starts[1:] - 1
    counts = numpy.zeros(len(first), numpy.int64)
    if not len(first) or first.min() < 0 or last.max() >= len(flat) or (last < first - 1).any():
        return counts
    closed = numpy.flatnonzero(last > first)
    closed = closed[(flat[first[closed]] == flat[last[closed]]).all(axis=1)]
    counts[closed] = 1
    for k in closed[(flat[first[closed]] == flat[last[closed] - 1]).all(axis=1)]:  # rare
        counts[k] = last[k] + 1 - first[k] - len(without_repeat(flat[first[k]:last[k] + 1]))
    return counts


def without_repeat(outline: Numbers) -> Numbers:
    """An outline without points at its end that repeat the first."""
    if len(outline) < 2 or (outline[0] != outline[-1]).any():
        return outline
    others = numpy.flatnonzero((outline != outline[0]).any(axis=1))
    return outline[:others[-1] + 1 if len(others) else 1]


def rings_of_band(band: Any, function: str) -> list[Numbers]:
    """The outlines of a band, the outer one first, without a side that has given way to one place."""
    rings = []
    for outline in band.outlines:
        steps = outline - outline[0]
        longest = steps[numpy.argmax((steps * steps).sum(axis=1))]
        if not band.removed.all() or numpy.cross(steps, longest).any():
            rings.append(outline)
    return shapes_of(rings, function)[0] if len(rings) > 1 else rings


def shapes_of(outlines: Iterable[Numbers], function: str, tolerance: Any = 0.0, crossing: Any = False,
              report: Callable[[int], bool] | None = None) -> list[list[Numbers]]:
    """Sorts outlines into shapes: those inside an even number of others are outer ones, the rest their holes.

    One that is there twice is taken once. With a tolerance they are joined where they overlap.
    """
    rings = [without_repeat(outline) for outline in outlines]
    try:
        numbers, joined = _korvale.shapes(rings, tolerance, crossing, report)
    except Error as error:
        raise renamed(error, function) from None
    if joined is not None:
        points, starts = joined
        rings = numpy.split(points, starts[1:-1]) if len(starts) > 1 else []
    outer = numbers.tolist()
    shapes = {k: [ring] for k, ring in enumerate(rings) if outer[k] == k}
    for k, ring in enumerate(rings):
        if 0 <= outer[k] != k:
            shapes[outer[k]].append(ring)
    return list(shapes.values())


# --- Meshes ----------------------------------------------------------------------------------------------------------


def chosen(value: Any, n: int, function: str, argument: str) -> Numbers:
    """A choice of n points as truths (n,): truths, or the numbers of those chosen."""
    must = f"be truths ({n},) or numbers of points"
    given = _given(value, function, argument, must)
    if given.dtype == bool:
        if given.shape != (n,):
            raise refuse(function, argument, must, f"its shape is {given.shape}")
        return numpy.array(given)
    if given.size and (given.dtype.kind not in "iu" or given.ndim != 1):
        raise refuse(function, argument, must, f"it is {_shown(value)}")
    if given.size == n and ((given == 0) | (given == 1)).all():
        raise refuse(function, argument, must, f"it has a 0 or 1 for each of {n} points: truths are bool")
    require_vertices(given, n, function, argument)
    truths = numpy.zeros(n, bool)
    truths[given.astype(numpy.intp)] = True
    return truths


def edges(value: Any, vertices: int, function: str, argument: str) -> Numbers:
    """Edges between vertices as a plain array of 32-bit integers (E, 2)."""
    must = "be whole numbers (E, 2)"
    given = _given(value, function, argument, must)
    if given.size == 0:
        return numpy.zeros((0, 2), numpy.int32)
    if given.dtype.kind not in "iu":
        raise refuse(function, argument, must, f"it holds {_kind(given)}")
    if given.ndim != 2 or given.shape[1] != 2:
        raise refuse(function, argument, must, f"its shape is {given.shape}")
    require_vertices(given, vertices, function, argument)
    return numpy.require(given, numpy.int32, ["C", "A"])


def triangles(value: Any, vertices: int, function: str, argument: str) -> Numbers:
    """Triangles on shared vertices as a plain array of 32-bit integers (T, 3)."""
    must = "be triangles, whole numbers (T, 3)"
    given = _given(value, function, argument, must)
    if given.size == 0:
        return numpy.zeros((0, 3), numpy.int32)
    if given.dtype.kind not in "iu":
        raise refuse(function, argument, must, f"it holds {_kind(given)}")
    if given.ndim != 2 or given.shape[1] != 3:
        raise refuse(function, argument, must, f"its shape is {given.shape}")
    require_vertices(given, vertices, function, argument)
    return numpy.require(given, numpy.int32, ["C", "A"])


def require_vertices(corners: Numbers, vertices: int, function: str, argument: str) -> None:
    if corners.size and (corners.min() < 0 or corners.max() >= vertices):
        wrong = corners[(corners < 0) | (corners >= vertices)].flat[0]
        raise refuse(function, argument, f"name vertices 0 to {vertices - 1}", f"{wrong} is among them")


def faces(value: Any, vertices: int, function: str, argument: str) -> tuple[Numbers | None, Numbers]:
    """Faces as (sizes, corners), both 32-bit; sizes is None where all are triangles."""
    must = "be faces: whole numbers (F, k), or a list of lists of them"
    rows = value if hasattr(value, "__array__") else items(value, function, argument, must)
    try:
        given = numpy.asarray(rows)
    except ValueError:
        given = numpy.empty(len(rows), object)  # rows of several lengths
    if given.dtype.kind == "b" or (rows is value and given.dtype.kind not in "iuO"):
        raise refuse(function, argument, must, f"it holds {_kind(given)}")
    if given.dtype.kind in "iu" and given.ndim == 2:
        if given.shape[1] == 3:
            return None, triangles(rows, vertices, function, argument)
        require_vertices(given, vertices, function, argument)
        return numpy.full(len(given), given.shape[1], numpy.int32), numpy.ascontiguousarray(given, numpy.int32).ravel()
    try:
        listed = [[count(corner, function, argument, -(2**63), 2**63 - 1) for corner in face] for face in rows]
    except TypeError:
        raise refuse(function, argument, must, f"it is {_shown(value)}") from None
    corners = numpy.array([corner for face in listed for corner in face], numpy.int64)
    require_vertices(corners, vertices, function, argument)
    if all(len(face) == 3 for face in listed):
        return None, corners.astype(numpy.int32).reshape(-1, 3)
    return numpy.array([len(face) for face in listed], numpy.int32), corners.astype(numpy.int32)


def is_mesh(value: Any) -> bool:
    """Whether something brings vertices and faces along."""
    return ((hasattr(value, "vertices") and hasattr(value, "faces"))
            or (hasattr(value, "points") and hasattr(value, "cells"))
            or (isinstance(value, tuple) and len(value) == 2))


def mesh(value: Any, more: Any, function: str) -> tuple[Numbers, Numbers | None, Numbers]:
    """(vertices, sizes, corners) of a mesh, of a pair, or of vertices and faces given apart."""
    names = "mesh", "triangles"
    if more is None:
        if hasattr(value, "vertices") and hasattr(value, "faces"):
            value, more = value.vertices, value.faces
            names = "mesh.vertices", "mesh.faces"
        elif hasattr(value, "points") and hasattr(value, "cells"):
            return _meshio(value, function)
        elif isinstance(value, tuple) and len(value) == 2:
            value, more = value
            names = "mesh[0]", "mesh[1]"
        else:
            raise refuse(function, "mesh", "be a mesh, a tuple (vertices, triangles), or both as two arguments",
                         f"it is {_shown(value)}")
    vertices = finite(points(value, function, names[0]), function, names[0])
    return (vertices, *faces(more, len(vertices), function, names[1]))


def _meshio(given: Any, function: str) -> tuple[Numbers, Numbers | None, Numbers]:
    vertices = finite(points(given.points, function, "mesh.points"), function, "mesh.points")
    cells = given.cells.items() if hasattr(given.cells, "items") else given.cells
    blocks = [(block.type, block.data) if hasattr(block, "type") else block
              for block in items(cells, function, "mesh.cells", "be blocks of cells")]
    rows: list[Any] = []
    for kind, data in blocks:
        if kind in ("triangle", "quad", "polygon"):
            rows.extend(items(data, function, "mesh.cells", "be blocks of cells"))
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


def output(out: Any, shape: tuple[int, ...], function: str, argument: str = "out",
           kind: Any = numpy.float64) -> Numbers:
    """The array that a result goes to: a new one, or the caller's, which may be strided."""
    if out is None:
        return numpy.empty(shape, kind)
    must = f"be a writable array of {numpy.dtype(kind)}, {shape}"
    if not isinstance(out, numpy.ndarray):
        raise refuse(function, argument, must, f"it is {_shown(out)}")
    if isinstance(out, numpy.ma.MaskedArray):
        raise refuse(function, argument, must, "it has a mask")
    if out.dtype != kind or out.shape != shape:
        raise refuse(function, argument, must, f"it is {out.dtype} {out.shape}")
    if not out.flags.writeable:
        raise refuse(function, argument, must, "it cannot be written to")
    return out


def workplace(out: Numbers, *inputs: Numbers) -> Numbers:
    """Where a result for `out` is computed: there, or in an array of its own where `out` is strided or lies across an
    input. `deliver` brings it home.
    """
    lies_across = any(given.ctypes.data != out.ctypes.data and numpy.may_share_memory(out, given) for given in inputs)
    is_plain = type(out) is numpy.ndarray and out.flags.c_contiguous and out.flags.aligned and not lies_across
    return out if is_plain else numpy.empty(out.shape, out.dtype)


def deliver(out: Numbers, computed: Numbers) -> Numbers:
    """`out` with what was computed for it."""
    if computed is not out:
        out[...] = computed
    return out
