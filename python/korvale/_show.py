"""Results as pictures, and as objects of Shapely."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from typing import TYPE_CHECKING, Any

import numpy

from . import _input
from ._errors import refuse
from ._types import Doubles, Ints, Truths

if TYPE_CHECKING:
    from shapely.geometry import Polygon  # type: ignore[import]

# Pixels across a picture, and the margin around what it shows.
_WIDTH, _MARGIN = 320.0, 8.0

# What a picture shows at most, so that pages stay small.
_MOST_POINTS, _MOST_TRIANGLES = 20000, 4000

# Where meshes are seen from, which way is up there, and where the light is.
_EYE, _UP, _LIGHT = numpy.array([0.5, -0.75, 0.55]), numpy.array([0.0, 0.0, 1.0]), numpy.array([0.25, -0.5, 0.83])


def polygon(function: str, outlines: Sequence[tuple[str, Doubles]]) -> Polygon:
    """A polygon of Shapely with the first outline and the others as its holes, seen from above; z is kept where one is
    not 0. An empty one of no outlines. What is no valid polygon is refused by the names of the outlines.
    """
    from shapely.geometry import Polygon as Made

    named = [(name, ring) for name, ring in outlines if len(ring) > 2]
    if not named:
        return Made()
    if _is_upright(named[0][1]):
        raise refuse(function, named[0][0], "not lie in an upright plane",
                     "it does: Shapely sees x and y alone, so flatten it")
    width = 3 if any(ring[:, 2].any() for _, ring in named) else 2
    rings = [ring[:, :width] for _, ring in named]
    made = Made(rings[0], rings[1:])
    if made.is_valid:
        return made
    for (name, _), alone in zip(named, map(Made, rings)):
        if not alone.is_valid:
            raise refuse(function, name, "not meet itself", f"it does {_where(alone)}")
        if not Made(rings[0]).covers(alone):
            raise refuse(function, name, f"lie inside {named[0][0]}", "it does not")
    raise refuse(function, " and ".join(dict(named)), "not meet each other", f"they do {_where(made)}")


def _is_upright(ring: Doubles) -> bool:
    """Whether nothing is seen of a ring from above, but for rounding."""
    steps = ring - ring[0]
    x, y, z = numpy.cross(steps[:-1], steps[1:]).sum(axis=0).tolist()
    return bool(abs(z) <= 1e-9 * max(abs(x), abs(y)) and (x, y) != (0.0, 0.0))


def _where(invalid: Polygon) -> str:
    """The place at which Shapely finds a polygon invalid."""
    from shapely.validation import explain_validity  # type: ignore[import]

    text: str = explain_validity(invalid)  # such as "Ring Self-intersection[1 2]"
    return f"at ({', '.join(text.partition('[')[2].rstrip(']').split())})"


def outlines_svg(outlines: Iterable[Doubles], collapsed: bool = False) -> str:
    """A picture of outlines, along the axis in which they reach least."""
    rings = [outline[:: len(outline) // _MOST_POINTS + 1] for outline in outlines if len(outline)]
    points = numpy.vstack(rings) if rings else numpy.zeros((0, 3))
    first, second = _widest(points)
    at, height = _fitted(points[:, [first, second]])
    paths, start = [], 0
    for ring in rings:
        paths.append("M" + "L".join(f"{x:.1f},{y:.1f}" for x, y in at[start:start + len(ring)]) + "Z")
        start += len(ring)
    style = "fill='none' stroke='#999' stroke-dasharray='4 3'" if collapsed else \
        "fill='#4c78a8' fill-opacity='0.3' fill-rule='evenodd' stroke='#4c78a8'"
    return _picture(height, f"<path {style} stroke-linejoin='round' d='{' '.join(paths)}'/>")


def many_svg(points: Doubles, left: list[Doubles]) -> str | None:
    """A picture of the outlines that are left of many, or of all their points where none is; None where they are too
    many for one.
    """
    return None if len(points) > _MOST_POINTS else outlines_svg(left or [points], not left)


def mesh_svg(vertices: Doubles, triangles: Ints) -> str | None:
    """A picture of a mesh, z upwards, the nearest triangles last; None where they are too many for one."""
    if not 0 < len(triangles) <= _MOST_TRIANGLES:
        return None
    towards = _EYE / numpy.linalg.norm(_EYE)
    right = numpy.cross(_UP, towards)
    right /= numpy.linalg.norm(right)
    at, height = _fitted(vertices @ numpy.column_stack([right, numpy.cross(towards, right)]))
    corners = vertices[triangles]
    normals = numpy.cross(corners[:, 1] - corners[:, 0], corners[:, 2] - corners[:, 0])
    lengths = numpy.linalg.norm(normals, axis=1)
    light = normals @ _LIGHT / numpy.where(lengths > 0, lengths, 1)
    shades = (150 + 90 * numpy.clip(light, -1, 1)).astype(int)
    drawn = []
    for k in numpy.argsort(corners.mean(axis=1) @ towards, kind="stable").tolist():
        if normals[k] @ towards > 0:
            places = " ".join(f"{x:.1f},{y:.1f}" for x, y in at[triangles[k]])
            shade = f"rgb({shades[k] * 9 // 10},{shades[k] * 19 // 20},{shades[k]})"
            drawn.append(f"<polygon fill='{shade}' stroke='{shade}' points='{places}'/>")
    return _picture(height, "".join(drawn))


def _widest(points: Doubles) -> tuple[int, int]:
    """The two axes along which points reach farthest, x before y before z."""
    reach = numpy.ptp(points, axis=0) if len(points) else numpy.zeros(3)
    least = 2 - int(numpy.argmin(reach[::-1]))
    first, second = (axis for axis in range(3) if axis != least)
    return first, second


def _fitted(at: Doubles) -> tuple[Doubles, float]:
    """Places in a picture, whose y runs downwards, and its height."""
    finite = at[numpy.isfinite(at).all(axis=1)]
    low, high = (finite.min(axis=0), finite.max(axis=0)) if len(finite) else (numpy.zeros(2), numpy.zeros(2))
    reach = high - low
    scale = (_WIDTH - 2 * _MARGIN) / max(reach[0], reach[1]) if reach.max() > 0 else 1.0
    height = reach[1] * scale + 2 * _MARGIN
    return numpy.column_stack([(at[:, 0] - low[0]) * scale + _MARGIN, (high[1] - at[:, 1]) * scale + _MARGIN]), height


def _picture(height: float, drawn: str) -> str:
    return (f"<svg xmlns='http://www.w3.org/2000/svg' width='{_WIDTH:.0f}' height='{height:.0f}' "
            f"viewBox='0 0 {_WIDTH:.0f} {height:.0f}'>{drawn}</svg>")


def offset_to_shapely(border: Any) -> Polygon:
    """The polygon of one border."""
    return polygon("Offset.to_shapely", [] if border.collapsed else [("border", live(border))])


def offsets_to_shapely(borders: Sequence[Any]) -> Polygon:
    """The polygon of the borders of an outline with holes."""
    left = [(f"border {k}", live(border)) for k, border in enumerate(borders) if not border.collapsed]
    return polygon("Offsets.to_shapely", [] if borders[0].collapsed else left)


def band_to_shapely(band: Any) -> Polygon:
    """The polygon of a band, which must not meet itself."""
    if band.crossing is not None:
        raise refuse("Band.to_shapely", "band", "not meet itself",
                     "its edges from points {} and {} do".format(*band.crossing))
    return polygon("Band.to_shapely", [("band", ring) for ring in _input.rings_of_band(band, "Band.to_shapely")])


def live(border: Any) -> Doubles:
    """The points of a border without those of removed vertices."""
    points: Doubles = border.points
    stays: Truths = ~border.removed[border.sources]
    live_points: Doubles = points[stays]
    return live_points
