"""Meshes that remember their shape."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any, NamedTuple

import numpy

from . import _input, _korvale, _records
from ._errors import Error, refuse, renamed
from ._progress import Progress, told
from ._types import (
    Bar, ChoiceLike, Doubles, FacesLike, Ints, Measure, MeshLike, Number, Numbers, PointsLike, ProgressLike, Stop,
)


@_records.compared
@_records.described(
    points="float64 (N, 3), moved towards the shape.",
    steps="The steps done.",
    energy="The energy left; 0 where the shape is the remembered one.",
    stop='Why it ended: "steps", "energy", "stalled", "cancelled", "no_force" or "held".',
)
class Relaxation(NamedTuple):
    """What a relaxation came to."""

    points: Doubles
    steps: int
    energy: float
    stop: Stop


class Relaxer:
    """Relaxer(mesh, triangles=None, *, edges=None): a mesh that remembers its shape and brings deformed copies back.

    mesh: a mesh (a `Mesh`, a tuple (vertices, triangles), one of trimesh or meshio), or vertices (V, 3) with
        `triangles` given apart, (T, 3) or faces of any number of corners.
    edges: (E, 2) instead of triangles; of edges alone only lengths can be kept.

    Say what to keep, then relax deformed points; with nothing to keep there is nothing to do, and that is refused.
    Weights are not comparable: lengths and angles are sums over many small deviations, volume and area are one large
    number squared.

    It measures in the units of its points: edges shorter than 1e-06 exert no force, nor do an area and a volume that
    are off by less than 1e-06. Multiply a mesh that measures less than about 1 by a power of two, and divide what comes
    back.

    >>> square = numpy.array([(0, 0, 0), (4, 0, 0), (4, 4, 0), (0, 4, 0)], float)
    >>> relaxer = korvale.Relaxer(square, [(0, 1, 2), (0, 2, 3)])
    >>> relaxer.keep("lengths").hold([0])
    <korvale.Relaxer of 4 points, keeps lengths, holds 1>
    >>> result = relaxer.run(square * (1.5, 1, 1), steps=800)
    >>> bool(result.energy < 1e-5), result.points[0]
    (True, array([0., 0., 0.]))
    """

    __slots__ = ("_mesh", "_given", "_kept", "_held")

    def __init__(self, mesh: MeshLike, triangles: FacesLike | None = None, *,
                 edges: FacesLike | None = None) -> None:
        self._kept: dict[Measure, float] = {}
        self._held: Numbers | None = None
        try:
            self._take(mesh, triangles, edges)
        except Error as error:
            raise renamed(error, "Relaxer", "mesh" if error.argument == "vertices" else "") from None

    def _take(self, mesh: Any, triangles: Any, edges: Any) -> None:
        if edges is not None:
            vertices = _input.finite(_input.points(mesh, "Relaxer", "mesh"), "Relaxer", "mesh")
            if triangles is not None:
                raise refuse("Relaxer", "edges", "be given without triangles", "both are given")
            pairs = _input.edges(edges, len(vertices), "Relaxer", "edges")
            self._given: tuple[Any, ...] = (vertices.copy(), None, pairs)
            self._mesh = _korvale.RelaxerMesh.of_edges(vertices, pairs)
        else:
            vertices, sizes, corners = _input.mesh(mesh, triangles, "Relaxer")
            if sizes is None:
                sizes = numpy.full(len(corners), 3, numpy.int32)
            self._given = (vertices.copy(), sizes, corners.ravel().copy())
            self._mesh = _korvale.RelaxerMesh.of_faces(vertices, sizes, corners.ravel())

    def __len__(self) -> int:
        return len(self._mesh)

    @property
    def edges(self) -> Ints:
        """The edges as pairs of points: int32 (E, 2)."""
        return self._mesh.edges

    @property
    def kept(self) -> dict[Measure, float]:
        """What is kept, with its weights."""
        return dict(self._kept)

    def keep(self, measure: Measure, weight: Number = 1.0) -> Relaxer:
        """Keeps a measure of the mesh as it is at the vertices: "lengths", "angles", "volume" or "area".

        weight: above 0. Only a closed mesh that is turned one way has a volume; points at exactly one place count as
        one there. Returns the relaxer.
        """
        name = _input.text(measure, "Relaxer.keep", "measure")
        number = _input.number(weight, "Relaxer.keep", "weight")
        self._mesh.keep(name, number)
        self._kept[measure] = number
        return self

    def hold(self, which: ChoiceLike) -> Relaxer:
        """Holds points where they are: bool (N,), true for those that do not move, or the numbers of these points.

        An empty list frees all. Zeros and ones, one a point, are refused: as numbers they would hold points 0 and 1.
        Returns the relaxer.
        """
        mask = _input.chosen(which, len(self), "Relaxer.hold", "which")
        self._mesh.hold(mask)
        self._held = mask
        return self

    def step(self, points: PointsLike, steps: int = 1, *, progress: ProgressLike = None,
             out: Doubles | None = None) -> Relaxation:
        """Exactly `steps` steps of steepest descent towards the shape.

        points: (N, 3). out: where the moved points go, which may be `points` itself; else a new array.
        progress: see `run`; it is told of the thousandths done, and False is an error, as nothing has moved then.
        Where there is energy but nothing free to move lowers it, the points stay as they were; where the energy becomes
        exactly 0 the steps left do nothing.
        """
        name = "Relaxer.step"
        most = _input.count(steps, name, "steps")
        result, moving = self._moving(points, out, name)
        energy = told(progress, name, lambda report: self._mesh.step(moving, most, report))
        return Relaxation(_input.deliver(result, moving), most, energy, "steps")

    def run(self, points: PointsLike, *, steps: int = 1000, energy: Number = 0.0, least_drop: Number = 0.0,
            progress: Callable[[int, float], object] | Bar | type[Bar] | None = None,
            out: Doubles | None = None) -> Relaxation:
        """Moves points towards the shape, step by step until one of the conditions holds.

        It ends at once, as "held", where all that is kept is lengths and angles between points that are held.

        points: (N, 3), the deformed mesh. steps: at most. energy: stop at this energy or below. least_drop: stop when
        a step lowers the energy by less than this share of it.
        progress: called after every step as progress(step, energy), False stops; or a bar with `update(n)`, such as
            tqdm's; or the class of such bars. An interrupt from the keyboard ends the run in any case.
        out: where the moved points go, which may be `points` itself; else a new array.
        """
        name = "Relaxer.run"
        most = _input.count(steps, name, "steps")
        least = _input.number(energy, name, "energy")
        drop = _input.number(least_drop, name, "least_drop")
        result, moving = self._moving(points, out, name)
        if progress is None:
            came_to = self._mesh.run(moving, most, least, drop, None)
        else:
            with Progress(progress, most, name) as report:
                came_to = self._mesh.run(moving, most, least, drop, report)
        return Relaxation(_input.deliver(result, moving), *came_to)

    def energy(self, points: PointsLike) -> float:
        """The energy at points (N, 3), which are only read. Edges and angles whose points are all held do not count."""
        return self._mesh.energy(self._points(points, "Relaxer.energy"))

    def forces(self, points: PointsLike) -> Doubles:
        """The force on every point, held ones included: float64 (N, 3)."""
        return self._mesh.forces(self._points(points, "Relaxer.forces"))

    def _points(self, points: Any, function: str) -> Doubles:
        given = _input.finite(_input.points(points, function, "points"), function, "points")
        if len(given) != len(self):
            raise refuse(function, "points", f"be {len(self)} like the mesh's", f"there are {len(given)}")
        return given

    def _moving(self, points: Any, out: Doubles | None, function: str) -> tuple[Doubles, Doubles]:
        """Where the result goes, and the points to move, there where that can be."""
        given = self._points(points, function)
        result = _input.output(out, given.shape, function)
        moving = _input.workplace(result, given)
        if moving is not given:
            moving[...] = given
        return result, moving

    def __repr__(self) -> str:
        text = f"<korvale.Relaxer of {len(self)} points"
        if self._kept:
            text += ", keeps " + ", ".join(self._kept)
        if self._held is not None and self._held.any():
            text += f", holds {int(self._held.sum())}"
        return text + ">"

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Relaxer):
            return NotImplemented
        mine, others = self._held, other._held
        if mine is None or others is None:
            same_hold = not (mine is not None and mine.any()) and not (others is not None and others.any())
        else:
            same_hold = numpy.array_equal(mine, others)
        return (same_hold and self._kept == other._kept
                and all(numpy.array_equal(a, b) for a, b in zip(self._given, other._given)))

    __hash__ = None  # type: ignore[assignment]

    def __reduce__(self) -> Any:
        return _restored, (self._given, self._kept, self._held)


def _restored(given: tuple[Any, ...], kept: dict[Measure, float], held: Numbers | None) -> Relaxer:
    vertices, sizes, numbers = given
    relaxer = Relaxer.__new__(Relaxer)
    relaxer._given, relaxer._kept, relaxer._held = given, {}, None
    relaxer._mesh = (_korvale.RelaxerMesh.of_edges(vertices, numbers) if sizes is None
                     else _korvale.RelaxerMesh.of_faces(vertices, sizes, numbers))
    for measure, weight in kept.items():
        relaxer.keep(measure, weight)
    return relaxer if held is None else relaxer.hold(held)
