"""Values that travel with points."""

from __future__ import annotations

from typing import Any, overload

import numpy

from . import _input
from ._errors import refuse
from ._korvale import Band, Offset
from ._shapes import Borders, Offsets, Rings
from ._types import Ints, Numbers, ValuesLike


@overload
def carry(values: ValuesLike, result: Offset | Borders | Rings | Band, *, mix: bool = False) -> Numbers: ...


@overload
def carry(values: ValuesLike, result: Offsets, *, mix: bool = False) -> list[Numbers]: ...


def carry(values: ValuesLike, result: Offset | Offsets | Borders | Rings | Band, *,
          mix: bool = False) -> Numbers | list[Numbers]:
    """Takes values along: a row for each point of an outline becomes a row for each point of what was made of it.

    values: (N, ...) of any dtype, a row for each point of the outline or the line; of many outlines, and of one with
        holes, for each point of all of them one behind the other. Points at the end of an outline that repeat its first
        have none, but for those of `offset_many`.
    result: what `offset`, `offset_many` or `band` has made of it.
    mix: where vertices merged their point has the mean of their values, as has each that was removed and is kept.
        float32 and float64 stay what they are, other numbers become float64. Not for `Rings` and bands, which do not
        tell what merged.

    Each point takes the row of the point that it belongs to, `values[result.sources]`. Where these are the points of
    the outline in their order, and nothing is mixed, that is `values` itself, and nothing is copied. Returns a list of
    arrays for `Offsets`, one for each border.

    >>> corner = [(0, 0), (4, 0), (4, 3.8), (3.8, 4), (0, 4)]
    >>> names = numpy.array(["south", "east", "chamfer", "north", "west"])
    >>> korvale.carry(names, korvale.offset(corner, 1)) is names
    True
    >>> border = korvale.offset(corner, -1, keep_vertices=False)  # the short edge is lost
    >>> korvale.carry(names, border).tolist()
    ['south', 'east', 'north', 'west']
    >>> korvale.carry([0, 1, 2, 4, 8], border, mix=True)
    array([0., 1., 3., 8.])
    >>> korvale.carry(names, korvale.offset(corner, 1, join="bevel")).tolist()[:4]
    ['south', 'south', 'east', 'east']
    """
    mixes = _input.flag(mix, "carry", "mix")
    rows = _input.rows(values, "carry", "values")
    if isinstance(result, Offsets):
        _require(rows, sum(len(border.removed) for border in result), "")
        ends = numpy.cumsum([len(border.removed) for border in result])[:-1]
        return [_carried(part, border, mixes) for part, border in zip(numpy.split(rows, ends), result)]
    if not isinstance(result, (Offset, Borders, Rings, Band)):
        raise refuse("carry", "result", "be what offset, offset_many or band has made",
                     f"it is of type {type(result).__name__}")
    return _carried(rows, result, mixes)


def _require(rows: Numbers, count: int, least: str) -> None:
    """Refuses other than one row for each point."""
    if len(rows) < count or (not least and len(rows) > count):
        raise refuse("carry", "values", f"have {least}{count} rows, one for each point of the outline",
                     f"it has {len(rows)}")


def _carried(rows: Numbers, result: Offset | Borders | Rings | Band, mixes: bool) -> Numbers:
    sources = result.sources
    if isinstance(result, (Offset, Band)):
        _require(rows, len(result.removed), "")
    else:
        least = int(sources.max(initial=-1)) + 1
        _require(rows, max(least, _first(result) + len(result.removed)) if isinstance(result, Borders) else least,
                 "at least ")
    if mixes:
        if not isinstance(result, (Offset, Borders)):
            raise refuse("carry", "mix", "be False where nothing tells what merged", "it is True")
        rows = _mixed(rows, result)
    is_whole = len(sources) == len(rows) and bool((sources == numpy.arange(len(rows))).all())
    return rows if is_whole else rows[sources]


def _first(result: Offset | Borders) -> int:
    """The number of the first vertex; some vertex stays."""
    if not len(result.removed):
        return 0
    stayed = int(numpy.argmin(result.removed))
    return int(result.merged_into[stayed]) - stayed


def _mixed(rows: Numbers, result: Offset | Borders) -> Numbers:
    """The rows, those of vertices that merged replaced by their mean."""
    if rows.dtype.kind not in "fiu":
        raise refuse("carry", "values", "be numbers where they are mixed", f"they are {rows.dtype}")
    kind = rows.dtype if rows.dtype in (numpy.float32, numpy.float64) else numpy.dtype(float)
    if not result.removed.any():
        return rows.astype(kind, copy=False)
    merged: Ints = result.merged_into
    first = _first(result)
    heirs = merged - first
    for _ in range(len(heirs).bit_length() + 1):
        heirs = heirs[heirs]
    mixture = rows.astype(kind)
    sums = numpy.zeros((len(heirs), *rows.shape[1:]))
    part = rows[first : first + len(heirs)]
    numpy.add.at(sums, heirs, part)
    counts = numpy.bincount(heirs, minlength=len(heirs))
    together = counts[heirs] > 1
    means = sums / numpy.maximum(counts, 1).reshape(-1, *[1] * (rows.ndim - 1))
    mixture[first : first + len(heirs)][together] = means[heirs[together]]
    return mixture
