"""Vectors, matrices, lines and boxes over whole arrays."""

from __future__ import annotations

from typing import Any

import numpy

from . import _input, _korvale
from ._errors import refuse
from ._transform import Srt, Transform, matrices
from ._types import Doubles, Numbers, NumbersLike


class _Single:
    """Whether every argument so far was one row, so that the result is one as well."""

    def __init__(self) -> None:
        self.is_single = True

    def vectors(self, value: Any, function: str, argument: str) -> Doubles:
        given, is_single = _input.points_or_point(value, function, argument)
        self.is_single &= is_single
        return given

    def rows(self, value: Any, tail: tuple[int, ...], function: str, argument: str) -> Doubles:
        text = ", ".join(map(str, tail))
        must = f"be ({text}{',' * (len(tail) == 1)}) or (N, {text})"
        given = numpy.require(_input.array(value, function, argument, must), numpy.float64, ["C", "A"])
        if given.shape == tail:
            return given[None]
        if given.shape[1:] != tail:
            raise refuse(function, argument, must, f"its shape is {given.shape}")
        self.is_single = False
        return given

    def matrices(self, value: Any, function: str, argument: str) -> Doubles:
        given = matrices(value, function, argument)
        self.is_single &= isinstance(value, Transform) or numpy.ndim(value) < 3
        return given

    def result(self, rows: Numbers) -> Any:
        return rows[0] if self.is_single else rows


def _of_two(function: str, a: Any, b: Any) -> Any:
    single = _Single()
    rows = getattr(_korvale, function)(single.vectors(a, function, "a"), single.vectors(b, function, "b"))
    return single.result(rows)


def dot(a: NumbersLike, b: NumbersLike) -> Any:
    """The dot products of vectors (N, 3) or (3,): float64 (N,). Summed x, y, z from the left.

    >>> korvale.dot([(1, 2, 3), (4, 5, 6)], (1, 1, 1))
    array([ 6., 15.])
    """
    return _of_two("dot", a, b)


def cross(a: NumbersLike, b: NumbersLike) -> Doubles:
    """The cross products of vectors (N, 3) or (3,): float64 (N, 3).

    >>> korvale.cross((1, 0, 0), (0, 1, 0))
    array([0., 0., 1.])
    """
    result: Doubles = _of_two("cross", a, b)
    return result


def angle(a: NumbersLike, b: NumbersLike) -> Any:
    """The angles between vectors (N, 3) or (3,), in radians: float64 (N,).

    The cosine is not clamped and zero lengths are not caught: both give NaN.

    >>> korvale.angle((1, 0, 0), (0, 2, 0)) * 2 == numpy.pi
    True
    """
    return _of_two("angle", a, b)


def norm(vectors: NumbersLike) -> Any:
    """The lengths of vectors (N, 3) or (3,): float64 (N,).

    >>> korvale.norm((3, 4, 0))
    5.0
    """
    single = _Single()
    return single.result(_korvale.norm(single.vectors(vectors, "norm", "vectors")))


def normalize(vectors: NumbersLike) -> Doubles:
    """Vectors (N, 3) or (3,) divided by their lengths; those shorter than 1e-06 as they are.

    >>> korvale.normalize([(0, 0, 2), (0, 0, 0)])
    array([[0., 0., 1.],
           [0., 0., 0.]])
    """
    single = _Single()
    result: Doubles = single.result(_korvale.normalize(single.vectors(vectors, "normalize", "vectors")))
    return result


# --- Matrices --------------------------------------------------------------------------------------------------------


def _matrices_of(function: str, values: Any) -> Doubles:
    single = _Single()
    result: Doubles = single.result(getattr(_korvale, function)(single.vectors(values, function, "values")))
    return result


def scaling(values: NumbersLike) -> Doubles:
    """Matrices that scale by (N, 3) or (3,): float64 (N, 4, 4).

    >>> korvale.scaling((2, 3, 4)).diagonal()
    array([2., 3., 4., 1.])
    """
    return _matrices_of("scaling", values)


def translation(values: NumbersLike) -> Doubles:
    """Matrices that move by (N, 3) or (3,): float64 (N, 4, 4).

    >>> korvale.translation([(1, 2, 3)])[0, :, 3]
    array([1., 2., 3., 1.])
    """
    return _matrices_of("translation", values)


def rotation(values: NumbersLike) -> Doubles:
    """Matrices that turn by (N, 3) or (3,) radians about x first, then y, then z: float64 (N, 4, 4).

    >>> quarter = korvale.rotation((0, 0, numpy.pi / 2))
    >>> korvale.transform_points(quarter, (1, 0, 0)).round(6)
    array([0., 1., 0.])
    """
    return _matrices_of("rotation", values)


def rotation_in_degrees(values: NumbersLike) -> Doubles:
    """Matrices that turn by (N, 3) or (3,) degrees, converted with the short factor 0.0174533.

    >>> quarter = korvale.rotation_in_degrees((0, 0, 90))
    >>> korvale.transform_points(quarter, (1, 0, 0)).round(8)
    array([-6.7e-07,  1.0e+00,  0.0e+00])
    """
    return _matrices_of("rotation_in_degrees", values)


def _from_srt(function: str, scale: Any, rotation: Any, translation: Any) -> Doubles:
    single = _Single()
    result: Doubles = single.result(getattr(_korvale, function)(
        single.vectors(scale, function, "scale"), single.vectors(rotation, function, "rotation"),
        single.vectors(translation, function, "translation")))
    return result


def from_srt(scale: NumbersLike = (1, 1, 1), rotation: NumbersLike = (0, 0, 0),
             translation: NumbersLike = (0, 0, 0)) -> Doubles:
    """Matrices that scale, then turn (radians), then move, each (N, 3) or (3,): float64 (N, 4, 4).

    >>> korvale.from_srt(scale=(2, 2, 2), translation=[(1, 0, 0), (0, 1, 0)]).shape
    (2, 4, 4)
    """
    return _from_srt("from_srt", scale, rotation, translation)


def inverse_from_srt(scale: NumbersLike = (1, 1, 1), rotation: NumbersLike = (0, 0, 0),
                     translation: NumbersLike = (0, 0, 0)) -> Doubles:
    """The inverses of `from_srt` of the same. A scale below 1e-06 is inverted to 1000000, and stays finite.

    >>> parts = {"scale": (2, 2, 2), "translation": (1, 2, 3)}
    >>> korvale.multiply(korvale.inverse_from_srt(**parts), korvale.from_srt(**parts)).diagonal()
    array([1., 1., 1., 1.])
    """
    return _from_srt("inverse_from_srt", scale, rotation, translation)


def take_apart(matrices: NumbersLike) -> Srt:
    """Scales, rotations (radians) and translations, (N, 3) each, of matrices (N, 4, 4) or (4, 4) made of them.

    >>> korvale.take_apart(korvale.from_srt(translation=(1, 2, 3))).translation
    array([1., 2., 3.])
    """
    single = _Single()
    parts = _korvale.take_apart(single.matrices(matrices, "take_apart", "matrices"))
    return Srt(*(single.result(part) for part in parts))


def multiply(a: NumbersLike, b: NumbersLike) -> Doubles:
    """The products of matrices (N, 4, 4) or (4, 4), which apply b first.

    >>> bool((korvale.multiply(numpy.identity(4), numpy.ones((5, 4, 4))) == 1).all())
    True
    """
    single = _Single()
    result: Doubles = single.result(_korvale.multiply(single.matrices(a, "multiply", "a"),
                                                            single.matrices(b, "multiply", "b")))
    return result


def transpose(matrices: NumbersLike) -> Doubles:
    """Rows and columns of matrices (N, 4, 4) or (4, 4) exchanged.

    >>> korvale.transpose(korvale.translation((1, 2, 3)))[3]
    array([1., 2., 3., 1.])
    """
    single = _Single()
    result: Doubles = single.result(_korvale.transpose(single.matrices(matrices, "transpose", "matrices")))
    return result


def into_frame(origin: NumbersLike, z: NumbersLike, reference: NumbersLike) -> Doubles:
    """Matrices from the world into frames at `origin` whose z axes run along `z`, their x axes along reference x z.

    Each (N, 3) or (3,). Returns float64 (N, 4, 4).

    >>> korvale.transform_points(korvale.into_frame((1, 2, 3), (0, 0, 1), (1, 0, 0)), (1, 2, 5))
    array([0., 0., 2.])
    """
    single = _Single()
    name = "into_frame"
    result: Doubles = single.result(_korvale.into_frame(
        single.vectors(origin, name, "origin"), single.vectors(z, name, "z"),
        single.vectors(reference, name, "reference")))
    return result


def frame_both_ways(origin: NumbersLike, x: NumbersLike, z: NumbersLike) -> tuple[Doubles, Doubles]:
    """Matrices from the world into frames at `origin` with the axes `x` (made perpendicular to z) and `z`, and back.

    Each (N, 3) or (3,). The second is the inverse where the directions are perpendicular.

    >>> there, back = korvale.frame_both_ways((1, 2, 3), (1, 0, 0), (0, 0, 1))
    >>> korvale.transform_points(back, (0, 0, 2))
    array([1., 2., 5.])
    """
    single = _Single()
    name = "frame_both_ways"
    both = _korvale.frame_both_ways(single.vectors(origin, name, "origin"), single.vectors(x, name, "x"),
                                    single.vectors(z, name, "z"))
    return single.result(both[:, 0]), single.result(both[:, 1])


# --- Lines, boxes, numbers -------------------------------------------------------------------------------------------


def line_through(a: NumbersLike, b: NumbersLike) -> Doubles:
    """Lines in the xy plane through points (N, 3) or (3,): rows a, b, c of a x + b y + c = 0, float64 (N, 3).

    >>> korvale.line_through((0, 1), (5, 1))
    array([ 0.,  1., -1.])
    """
    result: Doubles = _of_two("line_through", a, b)
    return result


def normalize_lines(lines: NumbersLike) -> Doubles:
    """Lines (N, 3) or (3,) divided by the lengths of their (a, b).

    >>> korvale.normalize_lines((3, 4, 10))
    array([0.6, 0.8, 2. ])
    """
    single = _Single()
    name = "normalize_lines"
    result: Doubles = single.result(_korvale.normalize_lines(single.rows(lines, (3,), name, "lines")))
    return result


def lines_meet(a: NumbersLike, b: NumbersLike) -> tuple[Any, Any, Any]:
    """Where lines (N, 3) or (3,) in the xy plane meet.

    Returns points (N, 2), the sine of the angle from a to b (N,), and whether they meet (N,). Where they do not,
    because the sine is below 1e-06, point and sine are 0.

    >>> korvale.lines_meet((1, 0, -2), (0, 1, -3))
    (array([2., 3.]), 1.0, True)
    """
    single = _Single()
    rows = _korvale.lines_meet(single.rows(a, (3,), "lines_meet", "a"), single.rows(b, (3,), "lines_meet", "b"))
    return single.result(rows[:, :2]), single.result(rows[:, 2]), single.result(rows[:, 3] != 0)


def boxes_meet(a: NumbersLike, b: NumbersLike) -> Any:
    """Whether boxes (N, 6) or (6,), least x, y, z and greatest x, y, z, share a point: bool (N,). Touching counts.

    >>> korvale.boxes_meet((0, 0, 0, 1, 1, 1), [(1, 1, 1, 2, 2, 2), (3, 3, 3, 4, 4, 4)])
    array([ True, False])
    """
    single = _Single()
    return single.result(_korvale.boxes_meet(single.rows(a, (6,), "boxes_meet", "a"),
                                             single.rows(b, (6,), "boxes_meet", "b")))


def determinant(matrices: NumbersLike) -> Any:
    """The determinants of matrices (N, 2, 2) or (2, 2): float64 (N,).

    >>> korvale.determinant([(1, 2), (3, 4)])
    -2.0
    """
    single = _Single()
    return single.result(_korvale.determinant(single.rows(matrices, (2, 2), "determinant", "matrices")))


def solve(systems: NumbersLike) -> Doubles:
    """Solves systems (N, 2, 3) or (2, 3) of two equations, rows a, b, c for a x + b y = c: float64 (N, 2).

    >>> korvale.solve([(2, 0, 6), (0, 3, 12)])
    array([3., 4.])
    """
    single = _Single()
    result: Doubles = single.result(_korvale.solve(single.rows(systems, (2, 3), "solve", "systems")))
    return result


def factorial(n: int) -> int:
    """n!, and 1 for n below 1. Exact up to 12; beyond that the 32-bit product wraps.

    >>> korvale.factorial(5)
    120
    """
    return int(_korvale.factorial(_input.count(n, "factorial", "n", -(2**31))))


def binomial(n: int, k: int) -> int:
    """n over k from 32-bit factorials, exact up to n = 12; 1 wherever k is not between 0 and n.

    >>> korvale.binomial(5, 2)
    10
    """
    return int(_korvale.binomial(_input.count(n, "binomial", "n", -(2**31)),
                                 _input.count(k, "binomial", "k", -(2**31))))


def power(x: float, n: int) -> float:
    """x multiplied by itself n - 1 times, in order; 1 for n below 1.

    >>> korvale.power(1.5, 3)
    3.375
    """
    return float(_korvale.power(_input.number(x, "power", "x"), _input.count(n, "power", "n", -(2**31))))


__all__ = [
    "angle", "binomial", "boxes_meet", "cross", "determinant", "dot", "factorial", "frame_both_ways",
    "from_srt", "into_frame", "inverse_from_srt", "line_through", "lines_meet", "multiply", "norm", "normalize",
    "normalize_lines", "power", "rotation", "rotation_in_degrees", "scaling", "solve", "take_apart", "translation",
    "transpose",
]
