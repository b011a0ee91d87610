"""Operations on whole arrays, and the random generator of the process."""

from __future__ import annotations

from typing import Any

import numpy

from . import _input, _korvale
from ._errors import refuse
from ._types import Doubles, Number, NumbersLike


def _alike(function: str, **arrays: Any) -> list[Doubles]:
    """Arrays of one shape."""
    given = [numpy.require(_input.array(value, function, name, "be numbers"), numpy.float64, ["C", "A"])
             for name, value in arrays.items()]
    for name, one in zip(arrays, given):
        if one.ndim == 0:
            raise refuse(function, name, "be an array", f"it is {one.item()}")
        if one.shape != given[0].shape:
            raise refuse(function, name, f"have the shape of the first, {given[0].shape}", f"its shape is {one.shape}")
    return given


def mix(a: NumbersLike, b: NumbersLike, wa: Number, wb: Number, *, out: Doubles | None = None) -> Doubles:
    """wa * a + wb * b of arrays of one shape, as float64. out: where it goes, which may be a or b.

    >>> korvale.mix([(0, 0, 0), (2, 2, 2)], [(4, 4, 4), (4, 4, 4)], 0.75, 0.25)
    array([[1. , 1. , 1. ],
           [2.5, 2.5, 2.5]])
    """
    x, y = _alike("mix", a=a, b=b)
    result = _input.output(out, x.shape, "mix")
    place = _input.workplace(result, x, y)
    _korvale.mix(x, y, _input.number(wa, "mix", "wa"), _input.number(wb, "mix", "wb"), place)
    return _input.deliver(result, place)


def mix4(a: NumbersLike, b: NumbersLike, c: NumbersLike, d: NumbersLike, wa: Number, wb: Number, wc: Number, wd: Number,
         *, out: Doubles | None = None) -> Doubles:
    """((wa * a + wb * b) + wc * c) + wd * d of arrays of one shape, as float64. out: where it goes.

    >>> korvale.mix4([1], [2], [3], [4], 1, 10, 100, 1000)
    array([4321.])
    """
    p, q, r, s = _alike("mix4", a=a, b=b, c=c, d=d)
    weights = [_input.number(w, "mix4", name) for name, w in zip(("wa", "wb", "wc", "wd"), (wa, wb, wc, wd))]
    result = _input.output(out, p.shape, "mix4")
    place = _input.workplace(result, p, q, r, s)
    _korvale.mix4(p, q, r, s, weights, place)
    return _input.deliver(result, place)


def bounds(array: NumbersLike) -> Doubles:
    """The least and the greatest of each column of an array (N, k): float64 (2, k).

    Comparisons are strict: a NaN never replaces a value, but one in the first row stays.

    >>> korvale.bounds([(0, 5, 1), (2, 3, 1)])
    array([[0., 3., 1.],
           [2., 5., 1.]])
    """
    given = numpy.require(_input.array(array, "bounds", "array", "be numbers (N, k)"), numpy.float64, ["C", "A"])
    if given.ndim != 2 or given.size == 0:
        raise refuse("bounds", "array", "be numbers (N, k), at least one row", f"its shape is {given.shape}")
    result = numpy.empty((2, given.shape[1]))
    _korvale.bounds(given, result)
    return result


def reverse(array: NumbersLike, *, out: Doubles | None = None) -> Doubles:
    """The rows of an array in reverse order, as float64. out: where they go; `array` itself reverses it in place.

    >>> korvale.reverse([(1, 2), (3, 4)])
    array([[3., 4.],
           [1., 2.]])
    """
    given, = _alike("reverse", array=array)
    result = _input.output(out, given.shape, "reverse")
    place = _input.workplace(result, given)
    if place is not given:
        place[...] = given
    _korvale.reverse(place)
    return _input.deliver(result, place)


def join(a: NumbersLike, b: NumbersLike) -> Doubles:
    """The rows of a and then those of b, which have as many columns, as float64.

    >>> korvale.join([(1, 2)], [(3, 4), (5, 6)]).shape
    (3, 2)
    """
    x = numpy.require(_input.array(a, "join", "a", "be numbers (N, k)"), numpy.float64, ["C", "A"])
    y = numpy.require(_input.array(b, "join", "b", "be numbers (N, k)"), numpy.float64, ["C", "A"])
    if x.ndim == 0:
        raise refuse("join", "a", "be numbers (N, k)", f"it is {x.item()}")
    if x.ndim != y.ndim or x.shape[1:] != y.shape[1:]:
        raise refuse("join", "b", f"have the columns of a, {x.shape}", f"its shape is {y.shape}")
    if x.size == 0 or y.size == 0:
        return (y if x.size == 0 else x).copy()
    result = numpy.empty((len(x) + len(y), *x.shape[1:]))
    _korvale.join(x, y, result)
    return result


# --- Random numbers --------------------------------------------------------------------------------------------------


def seed(seed: int) -> None:
    """Sets the state of the random generator of the process, which RAND and GAUSS, `random` and `gauss` draw from.

    The whole process shares it: a sequence repeats only where no other thread draws. `scatter` has one of its own.

    >>> korvale.seed(1)
    >>> korvale.random(2).round(6)
    array([0.001251, 0.563585])
    """
    _korvale.seed(_input.count(seed, "seed", "seed", -(2**31)))


def random(count: int) -> Doubles:
    """Draws in [0, 1], of which there are 32768, as the RAND of equations gives: float64 (count,).

    >>> korvale.seed(7)
    >>> first = korvale.random(3)
    >>> korvale.seed(7)
    >>> bool((korvale.random(3) == first).all())
    True
    """
    return _korvale.random(_input.count(count, "random", "count"))


def gauss(count: int) -> Doubles:
    """About normal values in [-3.4641016, 3.4641016], from four draws each: float64 (count,).

    >>> korvale.seed(1)
    >>> korvale.gauss(2).round(6)
    array([-0.750184,  0.538904])
    """
    return _korvale.gauss(_input.count(count, "gauss", "count"))
