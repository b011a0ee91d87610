"""Rays into triangles."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any, NamedTuple, SupportsIndex

import numpy

from . import _input, _korvale, _records
from ._errors import refuse
from ._progress import Progress, told
from ._types import (
    Doubles, FacesLike, Ints, MeshLike, Number, PointLike, PointsLike, ProgressLike, Truths, Wanted, WantedInts,
)

# Rays between two reports of progress, and points between two looks for signals.
_CHUNK = 16384
_POINTS = 2048


@_records.described(
    distance="From the origin of the ray, in units of length whatever the direction's.",
    triangle="The number of the triangle.",
    corners="The numbers of the triangle's points; 3 k and so on for one given by its corners.",
    weights="Of the corners at the meeting; they add up to 1.",
)
class RayHit(NamedTuple):
    """One triangle met by a ray."""

    distance: float
    triangle: int
    corners: tuple[int, int, int]
    weights: tuple[float, float, float]


@_records.compared
@_records.described(
    distances="float64, to the nearest triangle, infinity where there is none.",
    triangles="int32, the nearest triangle, -1 where there is none.",
    counts="int32, the number of triangles met.",
    weights="float64 (N, 3), of the corners of the nearest triangle, zeros where there is none.",
)
class Cast(NamedTuple):
    """What rays have met, one value a ray; None for what was not wanted."""

    distances: Doubles | None
    triangles: Ints | None
    counts: Ints | None
    weights: Doubles | None


class RayGrid:
    """RayGrid(mesh, triangles=None, *, cells=None, copy=True, progress=None): triangles for rays in a grid of cells.

    mesh: a mesh (a `Mesh`, a tuple (vertices, triangles), one of trimesh or meshio), vertices (V, 3) with `triangles`
        given apart, (T, 3) or faces of any number of corners, or the corners of triangles (T, 3, 3) or (T, 9).
    cells: (nx, ny, nz); else a number that suits the triangles is chosen.
    copy: False reads corners, float64 (T, 9) or (T, 3, 3), where they are at every query; they may change,
        and one thread at a time is served. What would have to be copied is refused then. Else any number of threads
        may ask one grid at a time.
    progress: see `Relaxer.run`; it is told of the thousandths done, and False is an error.

    Faces of more than three corners are cut into triangles about their first corner; `faces` tells which is whose.
    Triangles may be of any size, unless their sides are below 1/8 of a unit, 6e-05 of the largest coordinate and 1/500
    of the model, all three. But with `copy` False work in units in which they measure about 0.1 or more: one that shows
    less than half of 1e-06 square units to a ray is not met.

    >>> grid = korvale.RayGrid([(0, 0, 0), (4, 0, 0), (4, 4, 0), (0, 4, 0)], [(0, 1, 2), (0, 2, 3)])
    >>> grid.nearest((3, 1, 5), (0, 0, -1))
    RayHit(distance=5.0, triangle=0, corners=(0, 1, 2), weights=(0.25, 0.5, 0.25))
    >>> grid.cast([(3, 1, 5), (1, 3, 5), (9, 9, 5)], (0, 0, -1)).triangles
    array([ 0,  1, -1], dtype=int32)
    """

    __slots__ = ("_grid", "_faces", "_numbers")

    def __init__(self, mesh: MeshLike, triangles: FacesLike | None = None, *,
                 cells: Iterable[SupportsIndex] | None = None, copy: bool = True,
                 progress: ProgressLike = None) -> None:
        size: tuple[int, int, int] | None = None
        if cells is not None:
            counts = [_input.count(n, "RayGrid", "cells", 1)
                      for n in _input.items(cells, "RayGrid", "cells", "be three numbers")]
            if len(counts) != 3:
                raise refuse("RayGrid", "cells", "be three numbers", f"there are {len(counts)}")
            size = (counts[0], counts[1], counts[2])
        is_copied = _input.flag(copy, "RayGrid", "copy")
        self._faces: Ints | None = None
        self._numbers: Ints | None = None
        if triangles is not None or _input.is_mesh(mesh):
            if not is_copied:
                raise refuse("RayGrid", "copy", "be True for triangles on shared vertices", "it is False")
            vertices, sizes, numbers = _input.mesh(mesh, triangles, "RayGrid")
            if sizes is not None:
                numbers, self._faces = _korvale.fans(sizes, numbers)
            self._numbers = numpy.array(numbers).reshape(-1, 3)
            self._grid = told(progress, "RayGrid",
                              lambda report: _korvale.Grid.of_mesh(vertices, numbers, size, report))
        else:
            corners = _input.corners(mesh, "RayGrid", "mesh")
            if not is_copied and corners.size and not numpy.may_share_memory(corners, numpy.asarray(mesh)):
                raise refuse("RayGrid", "mesh", "be float64 in C order where copy is False", "it would be copied")
            self._grid = told(progress, "RayGrid",
                              lambda report: _korvale.Grid(corners, size, not is_copied, report))

    @property
    def cells(self) -> tuple[int, int, int]:
        """The number of cells along x, y and z."""
        nx, ny, nz = self._grid.cells
        return nx, ny, nz

    @property
    def corners(self) -> Doubles:
        """The corners of the triangles, float64 (T, 9), as the grid reads them."""
        return self._grid.corners

    @property
    def faces(self) -> Ints:
        """int32 (T,): the face that each triangle is of; its own number where the grid was made of triangles."""
        return numpy.arange(len(self), dtype=numpy.int32) if self._faces is None else self._faces

    def __len__(self) -> int:
        return len(self._grid)

    def nearest(self, origin: PointLike, direction: PointLike) -> RayHit | None:
        """The nearest triangle on a ray, or None; the one with the least number of several at one distance."""
        hit = self._grid.nearest(*_ray(origin, direction, "RayGrid.nearest"))
        return None if hit is None else RayHit(*hit)

    def hits(self, origin: PointLike, direction: PointLike) -> list[RayHit]:
        """All triangles on a ray, nearest first; those at one distance by their numbers."""
        return [RayHit(*hit) for hit in self._grid.hits(*_ray(origin, direction, "RayGrid.hits"))]

    def count(self, origin: PointLike, direction: PointLike) -> int:
        """The number of triangles that a ray meets: odd from inside a closed mesh.

        A ray aimed at an edge or a corner, up to rounding, may meet any of the triangles there, or none; `contains`
        knows how to ask.
        """
        return self._grid.count(*_ray(origin, direction, "RayGrid.count"))

    def any(self, origin: PointLike, direction: PointLike, reach: Number = numpy.inf) -> bool:
        """Whether a ray meets a triangle at a distance of at most `reach`. It stops at the first."""
        far = _input.number(reach, "RayGrid.any", "reach")
        return self._grid.any(*_ray(origin, direction, "RayGrid.any"), far)

    def contains(self, points: PointsLike, *, progress: ProgressLike = None) -> Truths:
        """Which points, (N, 3), lie inside the closed meshes that the triangles make: bool (N,).

        A ray from such a point meets an odd number of triangles. A ray that comes within 1e-09 of an edge, as a weight
        of a corner, is not trusted, and up to four others are cast; the last is taken as it is. Points on the surface
        come out either way. A mesh with open edges, each that of an odd number of triangles, is refused.
        progress: see `Relaxer.run`; it is told of the points done, and those that are not reached are False.
        """
        name = "RayGrid.contains"
        at = _input.finite(_input.points(points, name, "points"), name, "points")
        inside = numpy.zeros(len(at), bool)
        with Progress(progress, len(at), name) as report:
            for first, last in report.parts(_POINTS):
                self._grid.contains(at, inside, first, last)
        return inside

    def cast(self, origins: PointsLike | PointLike, directions: PointsLike | PointLike, *, distances: Wanted = True,
             triangles: WantedInts = True, counts: WantedInts = True, weights: Wanted = False,
             progress: ProgressLike = None) -> Cast:
        """Casts many rays.

        origins, directions: (N, 3) each, or one of them (3,) for all rays. Directions may have any length; distances
            are in units of the mesh. A direction of zeros meets nothing.
        distances, triangles, counts, weights: whether each is wanted, or the array that it goes to (float64, int32 and
            int32 (N,), float64 (N, 3)).
        progress: see `Relaxer.run`; it is told of the rays done.
        """
        name = "RayGrid.cast"
        start = _input.finite(_input.points_or_point(origins, name, "origins")[0], name, "origins")
        along = _input.finite(_input.points_or_point(directions, name, "directions")[0], name, "directions")
        n = len(along) if len(start) == 1 else len(start)
        if len(along) not in (1, n):
            raise refuse(name, "directions", f"be 1 or as many as the {n} origins", f"there are {len(along)}")
        columns: dict[str, Any] = {
            "distances": _column(distances, (n,), name, "distances", numpy.float64),
            "triangles": _column(triangles, (n,), name, "triangles", numpy.int32),
            "counts": _column(counts, (n,), name, "counts", numpy.int32),
            "weights": _column(weights, (n, 3), name, "weights", numpy.float64),
        }
        places: dict[str, Any] = {column: result if result is None else _input.workplace(result, start, along)
                  for column, result in columns.items()}
        for column, result in columns.items():
            if places[column] is not result:
                places[column][...] = result  # of rays that are not reached it stays
        with Progress(progress, n, name) as report:
            for first, last in report.parts(_CHUNK):
                self._grid.cast(start, along, places["distances"], places["triangles"], places["counts"],
                                places["weights"], first, last)
        for column, result in columns.items():
            if result is not None:
                _input.deliver(result, places[column])
        return Cast(**columns)

    def __repr__(self) -> str:
        return f"<korvale.RayGrid of {len(self)} triangles in {'x'.join(map(str, self.cells))} cells>"

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, RayGrid):
            return NotImplemented
        return (self.cells == other.cells and numpy.array_equal(self.corners, other.corners)
                and numpy.array_equal(self.faces, other.faces))

    __hash__ = None  # type: ignore[assignment]

    def __reduce__(self) -> Any:
        return _restored, (numpy.array(self.corners), self.cells, self._faces, self._numbers)


def _restored(corners: Doubles, cells: tuple[int, int, int], faces: Ints | None, numbers: Ints | None) -> RayGrid:
    if numbers is None:
        return RayGrid(corners, cells=cells)
    vertices = numpy.zeros((numbers.max(initial=-1) + 1, 3))
    vertices[numbers] = corners.reshape(-1, 3, 3)
    grid = RayGrid(vertices, numbers, cells=cells)
    grid._faces = faces
    return grid


def _ray(origin: Any, direction: Any, function: str) -> tuple[Doubles, Doubles]:
    return _input.point(origin, function, "origin"), _input.point(direction, function, "direction")


def _column(wanted: Any, shape: tuple[int, ...], function: str, argument: str, kind: Any) -> Any:
    if wanted is False or wanted is None:
        return None
    return _input.output(None if wanted is True else wanted, shape, function, argument, kind)
