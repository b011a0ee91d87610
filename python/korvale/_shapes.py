"""Outlines, bands, solids, frames and scattered points."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Iterator, Sequence
from contextlib import contextmanager
from typing import TYPE_CHECKING, Any, Literal, NamedTuple, overload

import numpy
from numpy.typing import NDArray

from . import _input, _korvale, _records, _show
from ._errors import Error, refuse, renamed
from ._korvale import Band, Mesh, Offset
from ._progress import Progress, told
from ._transform import Transform
from ._types import (
    CapLike, ChoiceLike, Doubles, FacesLike, HasArray, HasCoords, HasExterior, HasGeoms, Ints, JoinLike, LineLike,
    MeshLike, Number, NumbersLike, OutlinesLike, Path, PointLike, ProgressLike, RowsLike, ShapeLike, ShapesLike, Truths,
)

if TYPE_CHECKING:
    from shapely.geometry import Polygon  # type: ignore[import]


class Offsets(tuple):  # type: ignore[type-arg]
    """The borders of an outer outline and its holes, in their order. Made by `offset`."""

    __slots__ = ()

    @property
    def outer(self) -> Offset:
        """The border of the outer outline."""
        border: Offset = self[0]
        return border

    @property
    def holes(self) -> tuple[Offset, ...]:
        """The borders of the holes."""
        return tuple(self[1:])

    @property
    def collapsed(self) -> bool:
        """True where nothing is left of the outer outline. Each hole has a `collapsed` of its own."""
        return self.outer.collapsed

    def to_shapely(self) -> Polygon:
        """The borders as a polygon of Shapely with holes, without those that are collapsed and without the points of
        removed vertices; an empty one where nothing is left of the outer outline. Refused where a border meets itself
        or another, as holes do that have outgrown the outer outline, and where they lie in an upright plane.
        """
        return _show.offsets_to_shapely(self)

    def _repr_svg_(self) -> str:
        return _show.outlines_svg([border.points for border in self if not border.collapsed] or [self.outer.points],
                                  self.collapsed)

    def __repr__(self) -> str:
        return f"korvale.Offsets({super().__repr__()[1:-1].rstrip(',')})"


@_records.compared
@_records.described(
    points="float64 (P, 3), of all rings.",
    starts="int64 (n + 1,): where each ring begins in `points`, and where the last one ends.",
    sources="int32 (P,): the vertex of the outline that each point belongs to.",
    parents="int32 (n,): the ring that each one was cut from, one before it; -1 for ring 0.",
    births="float64 (n,): the distance at which it was, 0 for ring 0.",
    ends="float64 (n,): the distance at which it came to nothing, or the whole one.",
    collapsed="bool (n,): it has come to nothing.",
)
class Rings(NamedTuple):
    """All rings that an outline becomes, one behind the other in flat arrays. Made by `offset` with `pieces`.

    Ring 0 is the outline's own. Each has its points in the order of the outline; one that has come to nothing has none.
    """

    points: Doubles
    starts: NDArray[numpy.int64]
    sources: Ints
    parents: Ints
    births: Doubles
    ends: Doubles
    collapsed: Truths

    def singly(self) -> list[Doubles]:
        """The rings that are left, one by one, (., 3) each: views of `points`."""
        return [ring for ring in numpy.split(self.points, self.starts[1:-1]) if len(ring)]

    def _repr_svg_(self) -> str | None:
        return _show.many_svg(self.points, self.singly())


@overload
def offset(outline: HasArray | Iterable[Sequence[Number]] | HasCoords, distance: Number, *, height: Number = 0.0,
           keep_vertices: bool = True, split: bool = True, pieces: Literal[False] = False,
           progress: ProgressLike = None, join: JoinLike = "miter", miter_limit: Number | None = None,
           tolerance: Number | None = None) -> Offset: ...


@overload
def offset(outline: HasExterior | Iterable[HasArray | HasCoords] | Iterable[Sequence[Sequence[Number]]],
           distance: Number, *, height: Number = 0.0, keep_vertices: bool = True, split: bool = True,
           pieces: Literal[False] = False, progress: ProgressLike = None, join: JoinLike = "miter",
           miter_limit: Number | None = None, tolerance: Number | None = None) -> Offsets: ...


@overload
def offset(outline: Path | HasGeoms, distance: Number, *, height: Number = 0.0, keep_vertices: bool = True,
           split: bool = True, pieces: Literal[False] = False,
           progress: ProgressLike = None, join: JoinLike = "miter", miter_limit: Number | None = None,
           tolerance: Number | None = None) -> Offset | Offsets: ...


@overload
def offset(outline: HasArray | Iterable[Sequence[Number]] | HasCoords | HasExterior | Path | HasGeoms,
           distance: Number, *, height: Number = 0.0, keep_vertices: bool = True, split: bool = True,
           pieces: Literal[True], progress: ProgressLike = None, join: JoinLike = "miter",
           miter_limit: Number | None = None, tolerance: Number | None = None) -> Rings: ...


@overload
def offset(outline: HasArray | Iterable[Sequence[Number]] | HasCoords | HasExterior | Path | HasGeoms,
           distance: NumbersLike, *, height: Number = 0.0, keep_vertices: bool = True, split: bool = True,
           pieces: Literal[True], progress: ProgressLike = None, join: JoinLike = "miter",
           miter_limit: Number | None = None, tolerance: Number | None = None) -> list[Rings]: ...


def offset(outline: Any, distance: Any, *, height: Number = 0.0, keep_vertices: bool = True,
           split: bool = True, pieces: bool = False, progress: ProgressLike = None, join: JoinLike = "miter",
           miter_limit: Number | None = None, tolerance: Number | None = None
           ) -> Offset | Offsets | Rings | list[Rings]:
    """The border of a closed, planar outline: every edge moved sideways in the outline's own plane.

    outline: points (N, 3) or (N, 2) of at least three vertices, in any plane; the last joins the first. Points at the
        end that repeat the first are left out. A float64 array (N, 3) is read where it is. Or an outer outline and its
        holes: a list of outlines, a polygon of Shapely, a path of matplotlib or trimesh.
    distance: outwards where it is positive, in units of the outline. Corners stay sharp unless joins say otherwise.
        With `pieces` it may be numbers (n,), in any order: the result is a list of `Rings` then, each with the bits of
        that distance alone. The outline is swept once to the farthest distance each way and the others are passed on
        the way, so that all cost little more than the farthest, unless the outline crosses itself.
    height: lift of the border along the normal from which the outline runs counter-clockwise.
    keep_vertices: a point of the border for each vertex; else vertices that were removed are left out.
    split: also stop where parts of the outline meet (slower); else only where an edge shrinks to nothing, and parts
        that meet run through each other.
    pieces: keep every piece. Where a vertex runs into an edge both go on, the piece that is dropped else as an outline
        of its own: the result is `Rings` then, of which ring 0 has the points that there are without `keep_vertices`,
        to the last bit. Of one outline, without holes. Rings do not cross each other, but for rounding, unless the
        outline crosses or touches itself.
    progress: see `Relaxer.run`; it is told of the thousandths done, and False is an error, as there is no result then.
    join: what stands at corners that open, those that stick out where the outline grows and the others where it
        shrinks: "miter", edges that run on until they meet, "bevel", an edge straight across, or "round", an arc around
        the vertex. Or one of them for each point, of all outlines one behind the other.
    miter_limit: corners that would be farther than so many distances from their vertex are cut off at the distance.
    tolerance: how far a round join may be outside the arc, at least 1e-06 of the distance; 1 / 200 of it where it is
        not given or 0. No point of a round join is nearer to the vertex than the distance.

    With joins a vertex has as many points as its join has corners, which `Offset.sources` tells; vertices that are
    removed have none, whatever `keep_vertices` says. What moves is the outline with its joins: these meet other parts,
    split and vanish as edges do. A bevel beneath which something has vanished that it would bring to light is cut off
    at the distance instead.

    Returns an `Offset` for an outline, `Offsets`, a tuple of them, for one with holes: a positive distance shrinks the
    holes, whichever way round they run. Each outline is moved by itself: nothing tells where a hole that grows meets
    another or the outer border, and whether outlines are planar and free of crossings is not checked. Outlines may have
    any size; no random number is drawn.

    >>> square = [(0, 0), (4, 0), (4, 4), (0, 4)]
    >>> korvale.offset(square, 0.5).xy
    array([[-0.5, -0.5],
           [ 4.5, -0.5],
           [ 4.5,  4.5],
           [-0.5,  4.5]])
    >>> korvale.offset(square, -2.5).collapsed
    True
    >>> plate = korvale.offset([square, [(1, 1), (3, 1), (3, 3), (1, 3)]], 0.25)
    >>> plate.outer.xy.max(), plate.holes[0].xy.max()
    (4.25, 2.75)
    >>> korvale.offset(square, 1, join="bevel").xy[:3].round(9)
    array([[-1., -0.],
           [-0., -1.],
           [ 4., -1.]])
    >>> korvale.offset(square, 1, join=["round", "miter", "miter", "miter"], tolerance=0.1).sources
    array([0, 0, 1, 2, 3], dtype=int32)
    >>> waist = [(0, 0), (9, 0), (11, 4), (13, 0), (22, 0), (22, 9), (13, 9), (11, 5), (9, 9), (0, 9)]
    >>> rings = korvale.offset(waist, -1, pieces=True)
    >>> [len(ring) for ring in rings.singly()], rings.parents, rings.births.round(3)
    ([5, 5], array([-1,  0], dtype=int32), array([ 0.   , -0.224]))
    >>> [len(rings.singly()) for rings in korvale.offset(waist, [-0.2, -1, -5], pieces=True)]
    [1, 2, 0]
    """
    joins = _input.joins(join, miter_limit, tolerance, "offset")
    if pieces is not False and _input.flag(pieces, "offset", "pieces"):
        ring = _input.outline_or_shape(outline, "offset", "outline")
        if isinstance(ring, list) and len(ring) == 1:
            ring = ring[0]
        if isinstance(ring, list):
            holes = "1 hole" if len(ring) == 2 else f"{len(ring) - 1} holes"
            raise refuse("offset", "outline", "be one outline where pieces are kept", f"it has {holes}")
        distances = _many_distances(distance)
        with _join_named("offset"), Progress(progress, 1000, "offset") as report:
            how = height, keep_vertices, split, joins, None if progress is None else report
            if distances is None:
                rings = Rings(*_korvale.offset_rings(ring, distance, *how))
            else:
                rings = Rings(*_korvale.offset_distances(ring, distances, *how))
            report(1000)
        return rings if distances is None else _parts(rings)
    if joins[1] is not None:
        with _join_named("offset"):
            result = told(progress, "offset", lambda report: _korvale.offset(
                outline, distance, height, keep_vertices, split, joins, report))
    elif progress is None:
        result = _korvale.offset(outline, distance, height, keep_vertices, split, joins, None)
    else:
        result = told(progress, "offset",
                      lambda report: _korvale.offset(outline, distance, height, keep_vertices, split, joins, report))
    return result if type(result) is Offset else Offsets(result)


def _many_distances(distance: Any) -> Doubles | None:
    """Distances (n,), or None where it is one, or nothing that holds any."""
    if not hasattr(type(distance), "__len__") or isinstance(distance, (str, bytes)) or not getattr(distance, "ndim", 1):
        return None
    must = "be a number or, where pieces are kept, numbers (n,)"
    distances = _input.array(distance, "offset", "distance", must)
    if distances.ndim != 1:
        raise refuse("offset", "distance", must, f"its shape is {distances.shape}")
    return distances


def _parts(rings: Rings) -> list[Rings]:
    """The rings of each distance, of which each begins with one without a parent: views."""
    begins = [*numpy.flatnonzero(rings.parents < 0).tolist(), len(rings.parents)]
    parts = []
    for begin, end in zip(begins, begins[1:]):
        first, last = rings.starts[begin], rings.starts[end]
        parents = rings.parents[begin:end]
        parts.append(Rings(rings.points[first:last], rings.starts[begin : end + 1] - first, rings.sources[first:last],
                           numpy.where(parents < 0, parents, parents - numpy.int32(begin)), rings.births[begin:end],
                           rings.ends[begin:end], rings.collapsed[begin:end]))
    return parts


# What the library names otherwise.
_NAMES = {"distances": "distance", "corner_joins": "join"}


@contextmanager
def _join_named(function: str) -> Iterator[None]:
    """Joins of corners come in by the name of one, and so do distances."""
    try:
        yield
    except Error as error:
        raise renamed(error, function, _NAMES.get(error.argument, "")) from None


@_records.compared
@_records.described(
    points="float64 (P, 3), of all borders.",
    starts="int64 (n + 1,): where each border begins in `points`, and where the last one ends.",
    sources="int32 (P,): the vertex that each point belongs to.",
    collapsed="bool (n,): nothing is left.",
    removed="bool (V,): a vertex was removed on the way; so were last points that repeat the first.",
    merged_into="int32 (V,): the vertex that each one merged into, itself while it stayed.",
)
class Borders(NamedTuple):
    """The borders of many outlines, one behind the other in flat arrays. Made by `offset_many`.

    Points of outlines, the vertices here, have the numbers that they have in the points handed in, or in
    numpy.concatenate(outlines).
    """

    points: Doubles
    starts: NDArray[numpy.int64]
    sources: Ints
    collapsed: Truths
    removed: Truths
    merged_into: Ints

    def singly(self) -> list[Doubles]:
        """The borders one by one, (., 3) each: views of `points`."""
        return numpy.split(self.points, self.starts[1:-1]) if len(self.collapsed) else []

    def _repr_svg_(self) -> str | None:
        return _show.many_svg(self.points, [border for border, collapsed in zip(self.singly(), self.collapsed)
                                            if not collapsed])


def offset_many(outlines: OutlinesLike, distance: NumbersLike | Number, *, starts: ChoiceLike | None = None,
                height: Number = 0.0, keep_vertices: bool = True, split: bool = True,
                progress: ProgressLike = None, join: JoinLike = "miter", miter_limit: Number | None = None,
                tolerance: Number | None = None) -> Borders:
    """The borders of many outlines, each moved as `offset` moves it alone, to the last bit, in one call.

    outlines: a list of outlines, (N, 2) or (N, 3) each, or of lines, rings and polygons without holes of Shapely. Or
        the points of all of them, one behind the other, with `starts`.
    distance: one for all outlines, or one for each.
    starts: whole numbers (n + 1,): outline k is points[starts[k]:starts[k + 1]]. Part of them are part of the outlines,
        as for one thread of several: starts[a : b + 1] are outlines a to b - 1, with the same points.
    height, keep_vertices, split, progress, join, miter_limit, tolerance: as for `offset`; joins for each point are for
        those that are part of an outline.

    Every outline is an outer one here, whatever it lies in; a hole has a distance of its own. Outlines may repeat their
    first point at the end. Float64 points are read where they are, and other threads run meanwhile.

    >>> square = numpy.array([(0, 0), (4, 0), (4, 4), (0, 4)])
    >>> borders = korvale.offset_many([square, square / 2], [1, 0.5])
    >>> [border[0].round(9).tolist() for border in borders.singly()]
    [[-1.0, -1.0, 0.0], [-0.5, -0.5, 0.0]]
    >>> borders.sources
    array([0, 1, 2, 3, 4, 5, 6, 7], dtype=int32)
    >>> flat = korvale.offset_many(numpy.vstack([square, square / 2]), [1, 0.5], starts=[0, 4, 8])
    >>> flat == borders
    True
    """
    flat, begins = _input.many_outlines(outlines, starts, "offset_many", "outlines")
    distances = numpy.atleast_1d(_input.array(distance, "offset_many", "distance", "be a number or numbers (n,)"))
    if distances.ndim != 1:
        raise refuse("offset_many", "distance", "be a number or numbers (n,)", f"its shape is {distances.shape}")
    joins = _input.joins(join, miter_limit, tolerance, "offset_many")
    repeated = _input.repeats(flat, begins)
    first = 0
    if repeated.any():  # moved without them
        first, last = int(begins[0]), int(begins[-1])
        marks = numpy.zeros(last - first + 1, numpy.int64)
        numpy.add.at(marks, begins[1:] - repeated - first, 1)
        numpy.subtract.at(marks, begins[1:] - first, 1)
        kept = marks[:-1].cumsum() == 0
        given, begins = begins - first, begins - first - numpy.concatenate([[0], repeated.cumsum()])
        flat = flat[first:last][kept]
        if joins[1] is not None and len(joins[1]) == len(kept):
            joins = (joins[0], joins[1][kept], *joins[2:])
    try:
        borders = Borders(*told(progress, "offset_many", lambda report: _korvale.offset_many(
            flat, begins, distances, height, keep_vertices, split, joins, report)))
    except Error as error:
        raise renamed(error, "offset_many", _NAMES.get(error.argument, "")) from None
    if not repeated.any():
        return borders
    numbers = numpy.flatnonzero(kept).astype(numpy.int32) + numpy.int32(first)
    removed = numpy.ones(len(kept), bool)
    removed[kept] = borders.removed
    merged_into = numpy.empty(len(kept), numpy.int32)
    merged_into[kept] = numbers[borders.merged_into]
    merged_into[~kept] = given[:-1].repeat(repeated) + first
    return borders._replace(sources=numbers[borders.sources], removed=removed, merged_into=merged_into)


def outlines(shape: ShapeLike) -> list[Doubles]:
    """The outlines of a shape as korvale sees them: float64 (N, 3) each, the outer one first.

    None repeats its first point at the end, however often it does so in `shape`.

    shape: an outline, a list of outlines, a polygon of Shapely, a path of matplotlib or trimesh, an `Offset`, `Offsets`
        or a `Band`.

    >>> [len(outline) for outline in korvale.outlines([(0, 0), (1, 0), (1, 1), (0, 0)])]
    [3]
    """
    return [_input.without_repeat(outline) for outline in _input.shape(shape, "outlines", "shape")]


def shapes(path: ShapesLike, *, tolerance: Number = 0.0, crossing: bool = False,
           progress: ProgressLike = None) -> list[list[Doubles]]:
    """Sorts outlines seen from above into shapes, each a list with an outer outline and its holes.

    path: outlines in any order: a list of them, a path of matplotlib, such as that of a text, or of trimesh, polygons
        of Shapely, singly or many at a time.
    tolerance: outlines that lie within it of each other everywhere are one, and so are those that a chain of such ones
        joins: the first of them is taken, as drawings have contours that are nearly there twice. Edges side by side
        meet in corners that are farther apart, so corners, and bends shorter than twice the tolerance, may be up to
        twice as far. What is within it touches, and does not count as crossing: outlines that overlap are joined,
        each to the ones before it, by moving points no farther than the tolerance and adding some where edges come to
        lie side by side, and so again where they cross in their new places. All others stay as they are.
    crossing: outlines that cross each other, or themselves, are sorted all the same. Else they are refused: the error
        tells which ones and where.
    progress: as for `offset`.

    An outline inside an even number of others is an outer one; it does not matter which way round it runs. Outlines may
    touch each other and themselves. One that is there twice, number for number, is taken once, and one of fewer than
    three points, which enclose nothing, is left out. None that is returned repeats its first point at the end. Outlines
    whose details are so small beside the tolerance that they still cross where they are joined are refused.

    >>> square = numpy.array([(0, 0), (1, 0), (1, 1), (0, 1)])
    >>> [len(shape) for shape in korvale.shapes([square * 4, square + 1, square + 9])]
    [2, 1]
    >>> wide = korvale.shapes([square, square * (1.01, 1) + (0.99, 0)], tolerance=0.02)
    >>> wide[1][0][:, 0].tolist()
    [1.0, 2.0, 2.0, 1.0]
    """
    rings = _input.rings(path, "shapes", "path")
    return told(progress, "shapes", lambda report: _input.shapes_of(rings, "shapes", tolerance, crossing, report))


def band(
    line: LineLike,
    distance: Number,
    *,
    height: Number = 0.0,
    both_sides: bool = False,
    up: PointLike | None = None,
    closed: bool | None = None,
    miter_limit: Number = 4.0,
    cap: CapLike = "flat",
    tolerance: Number | None = None,
    progress: ProgressLike = None,
) -> Band:
    """The band between a line and its border, to the right of the line where the distance is positive.

    line: points (N, 3) or (N, 2), a line of Shapely, a path of matplotlib or trimesh with one part.
    distance: in units of the line, not 0.
    height: lift of the border along `up`.
    both_sides: from the border on one side to that on the other, 2 * distance apart, instead of to the line itself.
    up: the direction (3,) from which right is right. Without it the line has to be planar, and is seen from the side
        that is up in z (in y or x where its plane is upright). With it the line may rise and fall: each point of the
        border is as high as its point of the line. Parts above each other are near each other as seen from there, so a
        ramp of more than one turn has no inner side: lay it turn by turn, see limit 45 of docs/limits.md.
    closed: the last point joins the first; the band is a ring with two outlines, `border` and `other_side`. Where it is
        not given, rings and polygons of Shapely and paths of matplotlib with a mark that closes them are closed, and
        all other lines open.
    miter_limit: no point of the border is farther from the line than this many distances. That of a sharper corner ends
        there, on the bisector, as ``narrowed`` tells. The border runs straight to it from the points beside it, and so
        comes nearer to the line than the distance, the more the sharper the corner is.
    cap: how the band ends at both ends of an open line: "flat", square to it, "square", a distance beyond it, or
        "round", in an arc around it. Of one side it is half of that.
    tolerance: how far a round cap may be outside the arc, as for `offset`.
    progress: as for `offset`.

    The outline has two points for each point of the line, and those of caps, which belong to the ends, as `sources`
    tells. There is no cap where an end of the border has given way; what it runs into does not move it. Where a bend is
    tighter than the distance, points of the border give way and share a place; `removed` names them. Where another part
    of the line is nearer, as in a hairpin, the border keeps halfway between them; `narrowed` names these. Where the
    line goes back and forth within a distance, as a track does that stood still, the border passes by as if it were a
    point there: all points of such a knot share a place, seen along `up`, and keep their heights. So a border ends
    beside the middle of a knot in which its line ends. Beside a knot whose points deviate by up to a tenth of the
    distance the band is right to some hundredths of it, by three tenths to some tenths; noise of more than that makes
    borders that cross themselves: `thin` the track first. `crossing` tells where the outline meets itself after all, as
    it does halfway between legs of a hairpin that are nearer to each other than two distances, and where the distance
    is below the rounding of the coordinates. Inside a closed line that is tighter than the distance the border gives
    way to one place. A band that is `collapsed` has no border at this distance anywhere.

    >>> road = korvale.band([(0, 0), (10, 0), (10, 10)], 1, both_sides=True)
    >>> road.outline[:3, :2]
    array([[ 0., -1.],
           [11., -1.],
           [11., 10.]])
    >>> road.collapsed, road.crossing
    (False, None)
    >>> korvale.band([(0, 0), (4, 0), (4, 4), (0, 4)], 1, closed=True).border[2]
    array([5., 5., 0.])
    >>> pill = korvale.band([(0, 0), (4, 0)], 1, both_sides=True, cap="round", tolerance=0.1)
    >>> pill.sources
    array([0, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0], dtype=int32)
    """
    ends = _input.cap(cap, tolerance, "band")
    if progress is None:
        return _korvale.band(line, distance, height, both_sides, up, closed, miter_limit, *ends, None)
    return told(progress, "band", lambda report: _korvale.band(line, distance, height, both_sides, up, closed,
                                                               miter_limit, *ends, report))


def thin(line: LineLike, tolerance: Number) -> NDArray[numpy.int64]:
    """The numbers of the points that describe a line to within a tolerance, ascending, as an index for its rows.

    line: as for `band`.
    tolerance: every point left out lies within it of the stretch between the two points that stay around it.

    >>> track = numpy.array([(0, 0), (1, 0.4), (2, 0), (3, 0.6), (4, 0)])
    >>> korvale.thin(track, 0.5)
    array([0, 3, 4])
    >>> track[korvale.thin(track, 1)]
    array([[0., 0.],
           [4., 0.]])
    """
    return _korvale.thin(line, tolerance)


def bevel(outline: ShapeLike, profile: RowsLike, *, split: bool = True, crossing: bool = False,
          progress: ProgressLike = None) -> Mesh:
    """A closed mesh from an outline, with or without holes, and a profile.

    outline: as for `offset`.
    profile: (S, 2), at least two steps (distance outwards, height): a layer for each, strips between neighbours, a cap
        on the first and on the last. Height goes up: along z over outlines at one z, as those of a font, whichever way
        they run; else along the normal from which the outer outline runs counter-clockwise.
    crossing: outlines that cross themselves or each other, holes over each other or outside, and holes that leave
        nothing of the outer outline are taken as they are. Else they are refused.
    split, progress: as for `offset`.

    Each layer is `offset` of the outlines, so edges that shrink to nothing close like the hips of a roof. A step that
    would lose a part is held back: it keeps its height, goes as far as nothing is lost, and `Mesh.reached` tells how
    far that is. It is

    - where an outline would fall apart, as at a neck narrower than twice the way in, or a limb of it vanish, all of it
      at once; outlines that touch themselves go nowhere;
    - where the outer outline has come to nothing, at the ridge of a roof. Holes may vanish;
    - to a millionth where two outlines would cross, as those of a frame moved in by more than half its width.

    A layer that would cross itself or collapse without `split` is made with it. So caps do not overlap, unless the
    outlines do: with `crossing` they go no way on which they would still cross. The triangles face outwards. Vertices
    at exactly one place are one vertex. Outlines may have any size; no random number is drawn.

    >>> korvale.bevel([(0, 0), (4, 0), (4, 4), (0, 4)], [(0, 0), (0, 8), (-1, 9)])  # a wall with a chamfer
    <korvale.Mesh of 12 vertices, 20 triangles>
    >>> frame = [[(0, 0), (10, 0), (10, 10), (0, 10)], [(2, 2), (8, 2), (8, 8), (2, 8)]]
    >>> korvale.bevel(frame, [(0, 0), (0, 3), (-0.5, 4), (-1.5, 5)]).reached.round(3)  # it is 2 wide
    array([ 0. ,  0. , -0.5, -1. ])
    """
    steps = _input.array(profile, "bevel", "profile", "be steps, (S, 2)")
    if steps.ndim != 2 or steps.shape[1] != 2:
        raise refuse("bevel", "profile", "be steps, (S, 2)", f"its shape is {steps.shape}")
    rings = _input.shape(outline, "bevel", "outline")
    return told(progress, "bevel", lambda report: _korvale.bevel(rings, steps, split, crossing, report))


def tube(path: LineLike, section: LineLike, *, closed: bool = False, caps: bool = True,
         progress: ProgressLike = None) -> Mesh:
    """A mesh from a path and a section that is carried along it.

    path: points (N, 3), or a line as for `band`.
    section: an outline (K, 2) or (K, 3), without holes, in the plane z = 0 around the origin.
    closed: the last point of the path joins the first. caps: close the two ends of an open tube.
    progress: as for `offset`.

    Vertex k of ring i is at i * K + k. The triangles face outwards. Mitres keep the section's size at a bend; the wall
    gets thinner there.

    >>> korvale.tube([(0, 0, 0), (0, 0, 5)], [(1, 0), (0, 1), (-1, 0), (0, -1)])
    <korvale.Mesh of 8 vertices, 12 triangles>
    """
    return told(progress, "tube", lambda report: _korvale.tube(path, section, closed, caps, report))


def triangulate(outline: ShapeLike, *, progress: ProgressLike = None) -> Ints:
    """Cuts a planar outline, with or without holes, into triangles: int32 (T, 3). `progress` is that of `offset`.

    The triangles number the points of all outlines in their order, as `outlines` gives them, and run counter-clockwise
    where the outer outline does: two less than there are points, and two more for each hole. Holes may touch each other
    and the outer outline, at points and along edges; where outlines cross by more than rounding, triangles may overlap.

    >>> korvale.triangulate([(0, 0), (4, 0), (4, 4), (0, 4)]).shape
    (2, 3)
    """
    rings = _input.shape(outline, "triangulate", "outline")
    return told(progress, "triangulate", lambda report: _korvale.triangulate(rings, report))


@_records.described(
    to_plane="The outline into the plane z = 0.",
    from_plane="What lies there back to where the outline is.",
)
class Flattening(NamedTuple):
    """A transform into the plane z = 0 and its way back."""

    to_plane: Transform
    from_plane: Transform


def flatten(path: LineLike, *, closed: bool = True, by_extremes: bool = False) -> Flattening:
    """The transforms that lay a planar outline into the plane z = 0, counter-clockwise there, and carry it back.

    path: points (N, 3), or a line as for `band`. closed: it is an outline, else an open polyline. by_extremes: take the
    plane from the extremes of the bounds, whichever way the outline then runs.

    >>> outline = [(0, 0, 0), (0, 3, 0), (0, 3, 3), (0, 0, 3)]
    >>> way = korvale.flatten(outline)
    >>> bool(abs(way.to_plane(outline)[:, 2]).max() < 1e-12)
    True
    """
    to_plane, from_plane = _korvale.flatten(path, closed, by_extremes)
    return Flattening(Transform(to_plane), Transform(from_plane))


def frames(path: LineLike, *, closed: bool = False) -> Doubles:
    """One frame for each point of a polyline: float64 (N, 4, 4).

    path: points (N, 3), at least two, or a line as for `band`. closed: the last point joins the first.

    The columns of a frame are its x axis, y axis, z axis and the point, so it carries the plane z = 0 to the point. z
    points back along the path and halves the angle at a joint; x turns as little as it can from frame to frame.

    >>> korvale.frames([(0, 0, 0), (1, 0, 0), (2, 0, 0)])[1, :3, 3]
    array([1., 0., 0.])
    """
    return _korvale.frames(path, closed)


@_records.compared
@_records.described(
    points="float64 (N, 3).",
    attributes="float64 (N, k), or None where none are carried.",
    triangles="int32 (N,): the triangle that each point lies on.",
)
class Scattered(NamedTuple):
    """Points on triangles, and what they carry."""

    points: Doubles
    attributes: Doubles | None
    triangles: Ints


def scatter(mesh: MeshLike, count: int, *, seed: int, attributes: NumbersLike | None = None,
            triangles: FacesLike | None = None, weights: NumbersLike | None = None,
            progress: ProgressLike = None) -> Scattered:
    """Scatters `count` points over triangles, uniformly by area or as weights have it.

    mesh: a mesh (a `Mesh`, a tuple (vertices, triangles), one of trimesh or meshio), vertices (V, 3) with `triangles`
        (T, 3) given apart, or the corners of triangles (T, 3, 3) or (T, 9).
    seed: of random generators of the call's own: the same seed gives the same points, in any number of threads. The
        generator of the process is neither seeded nor drawn from. Seeds that follow each other begin almost alike:
        spread numbers that you count, as by `2654435761 * number % 2**32`. Every triangle gets its share of the points,
        however many there are.
    attributes: values to be blended to the points by the same weights: (V, k) or (V,) for a mesh, (T, 3, k) or (T, 3)
        for corners.
    weights: one for each triangle (T,), or face, which is as likely as its area times its weight; 0 leaves it without
        points.
    progress: as for `offset`.

    >>> points, colours, triangles = korvale.scatter([[(0, 0, 0), (1, 0, 0), (0, 1, 0)]], 1000, seed=42,
    ...                                              attributes=[[(1, 0, 0), (0, 1, 0), (0, 0, 1)]])
    >>> points.shape, colours.shape, triangles.shape
    ((1000, 3), (1000, 3), (1000,))
    """
    n = _input.count(count, "scatter", "count")
    start = _input.count(seed, "scatter", "seed", -(2**31), 2**32 - 1) % 2**32
    values = None if attributes is None else _input.array(attributes, "scatter", "attributes", "be numbers")
    if values is not None:
        values = numpy.ascontiguousarray(values)
    chances = None if weights is None else _input.array(weights, "scatter", "weights", "be numbers")
    if triangles is not None or _input.is_mesh(mesh):
        vertices, sizes, faces = _input.mesh(mesh, triangles, "scatter")
        chances = _one_each(chances, len(faces) if sizes is None else len(sizes), "scatter")
        if sizes is not None:
            faces, owners = _korvale.fans(sizes, faces)
            chances = None if chances is None else chances[owners]
        if values is not None and (values.ndim not in (1, 2) or len(values) != len(vertices)):
            raise refuse("scatter", "attributes", f"be ({len(vertices)},) or ({len(vertices)}, k), a row a vertex",
                         f"its shape is {values.shape}")
        return _scattered(progress, "mesh" if triangles is None else "triangles",
                          lambda report: _korvale.scatter_mesh(vertices, faces, n, start, values, chances, report))
    corners = _input.corners(mesh, "scatter", "mesh")
    chances = _one_each(chances, len(corners), "scatter")
    if values is not None and (values.ndim not in (2, 3) or values.shape[:2] != (len(corners), 3)):
        raise refuse("scatter", "attributes", f"be ({len(corners)}, 3) or ({len(corners)}, 3, k), a row a corner",
                     f"its shape is {values.shape}")
    return _scattered(progress, "mesh",
                      lambda report: _korvale.scatter_corners(corners, n, start, values, chances, report))


def _one_each(weights: Doubles | None, triangles: int, function: str) -> Doubles | None:
    """Weights, of which each triangle has one."""
    if weights is not None and weights.shape != (triangles,):
        raise refuse(function, "weights", f"be ({triangles},), one a triangle", f"its shape is {weights.shape}")
    return weights


def _scattered(progress: ProgressLike, argument: str,
               scatter: Callable[[Progress | None], tuple[Doubles, Doubles | None, Ints]]) -> Scattered:
    """The points, over triangles that came in by that argument."""
    try:
        return Scattered(*told(progress, "scatter", scatter))
    except Error as error:
        raise renamed(error, "scatter", argument if error.argument == "triangles" else "") from None

