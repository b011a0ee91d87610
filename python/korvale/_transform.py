"""Transforms as values."""

from __future__ import annotations

from typing import Any, NamedTuple

import numpy

from . import _input, _korvale, _records
from ._errors import Error, refuse, renamed
from ._types import Doubles, Number, Numbers, NumbersLike, PointLike, PointsLike


@_records.compared
@_records.described(
    scale="float64 (3,) or (N, 3).",
    rotation="float64 (3,) or (N, 3), in radians.",
    translation="float64 (3,) or (N, 3).",
)
class Srt(NamedTuple):
    """Scale, rotation about x, then y, then z in radians, and translation, applied in this order: (3,) or (N, 3)."""

    scale: Doubles
    rotation: Doubles
    translation: Doubles


class Transform:
    """Transform(matrix=None): a 4x4 transform as a value; the identity without a matrix (4, 4) or (16,), row by row.

    Points are columns, so `a @ b` applies b first and the translation is in column 3. Calling it moves points.

    >>> from math import pi
    >>> place = korvale.Transform.translation((10, 0, 0)) @ korvale.Transform.rotation((0, 0, pi / 2))
    >>> place((1, 0, 0)).round(12)
    array([10.,  1.,  0.])
    >>> place([(1, 0, 0), (0, 1, 0)]).shape
    (2, 3)
    """

    __slots__ = ("_matrix",)

    def __init__(self, matrix: NumbersLike | None = None) -> None:
        if matrix is None:
            self._matrix = numpy.identity(4)
        else:
            self._matrix = matrices(matrix, "Transform", "matrix", single=True)[0].copy()
        self._matrix.flags.writeable = False

    @classmethod
    def _of(cls, rows: Doubles) -> Transform:
        self = cls.__new__(cls)
        self._matrix = rows.reshape(4, 4)
        self._matrix.flags.writeable = False
        return self

    @classmethod
    def scaling(cls, scale: Number | PointLike) -> Transform:
        """Scales by (3,), or by one number in all directions."""
        along: Any = (scale,) * 3 if numpy.isscalar(scale) else scale
        return cls._of(_korvale.scaling(_vector(along, "Transform.scaling", "scale")))

    @classmethod
    def translation(cls, by: PointLike) -> Transform:
        """Moves by (3,)."""
        return cls._of(_korvale.translation(_vector(by, "Transform.translation", "by")))

    @classmethod
    def rotation(cls, radians: PointLike) -> Transform:
        """Turns by (3,) radians about x first, then y, then z."""
        return cls._of(_korvale.rotation(_vector(radians, "Transform.rotation", "radians")))

    @classmethod
    def rotation_in_degrees(cls, degrees: PointLike) -> Transform:
        """Turns by (3,) degrees, converted with the short factor 0.0174533."""
        return cls._of(_korvale.rotation_in_degrees(_vector(degrees, "Transform.rotation_in_degrees", "degrees")))

    @classmethod
    def from_srt(cls, scale: PointLike = (1, 1, 1), rotation: PointLike = (0, 0, 0),
                 translation: PointLike = (0, 0, 0)) -> Transform:
        """Scales, then turns (radians), then moves."""
        name = "Transform.from_srt"
        return cls._of(_korvale.from_srt(_vector(scale, name, "scale"), _vector(rotation, name, "rotation"),
                                         _vector(translation, name, "translation")))

    @classmethod
    def inverse_of(cls, scale: PointLike = (1, 1, 1), rotation: PointLike = (0, 0, 0),
                   translation: PointLike = (0, 0, 0)) -> Transform:
        """The inverse of `from_srt` of the same. A scale below 1e-06 is inverted to 1000000, and stays finite."""
        name = "Transform.inverse_of"
        return cls._of(_korvale.inverse_from_srt(_vector(scale, name, "scale"), _vector(rotation, name, "rotation"),
                                                 _vector(translation, name, "translation")))

    @classmethod
    def into_frame(cls, origin: PointLike, z: PointLike, reference: PointLike) -> Transform:
        """From the world into the frame at `origin` whose z axis runs along `z`, its x axis along reference x z."""
        name = "Transform.into_frame"
        given = _vector(origin, name, "origin"), _vector(z, name, "z"), _vector(reference, name, "reference")
        try:
            return cls._of(_korvale.into_frame(*given))
        except Error as error:
            raise renamed(error, name) from None

    @property
    def matrix(self) -> Doubles:
        """float64 (4, 4), not writable."""
        return self._matrix

    def __call__(self, points: PointsLike | PointLike, out: Doubles | None = None) -> Doubles:
        """The points (N, 3) or (3,) moved; divided by their fourth coordinate unless that is exactly 1.

        out: where they go, a float64 array of the same shape, which may be `points` itself.
        """
        return _carry(_korvale.transform_points, self._matrix, points, out, "Transform", "points")

    def vectors(self, vectors: PointsLike | PointLike, out: Doubles | None = None) -> Doubles:
        """The vectors (N, 3) or (3,) turned and scaled, not moved."""
        return _carry(_korvale.transform_vectors, self._matrix, vectors, out, "Transform.vectors", "vectors")

    def __matmul__(self, other: Transform) -> Transform:
        if not isinstance(other, Transform):
            return NotImplemented
        return Transform._of(_korvale.multiply(self._matrix[None], other._matrix[None]))

    __mul__ = __matmul__

    def transposed(self) -> Transform:
        """Rows and columns exchanged."""
        return Transform._of(_korvale.transpose(self._matrix[None]))

    def take_apart(self) -> Srt:
        """Scale, rotation and translation (3,) of a transform made of them.

        Where the y rotation is a quarter turn, x and z turn about one axis and only their sum or difference is known:
        x comes out as 0.
        """
        return Srt(*(part[0] for part in _korvale.take_apart(self._matrix[None])))

    def __array__(self, dtype: Any = None, copy: bool | None = None) -> Numbers:
        return self._matrix.astype(dtype or numpy.float64, copy=bool(copy))

    def __getitem__(self, key: Any) -> Any:
        return self._matrix[key]

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Transform):
            return NotImplemented
        return bool((self._matrix == other._matrix).all())

    def __hash__(self) -> int:
        return hash(tuple((self._matrix.ravel() + 0.0).tolist()))

    def __repr__(self) -> str:
        return f"korvale.Transform({self._matrix.tolist()})"

    def __reduce__(self) -> Any:
        return Transform, (self._matrix.copy(),)


def _vector(value: Any, function: str, argument: str) -> Doubles:
    return _input.finite(_input.point(value, function, argument), function, argument)


def matrices(value: Any, function: str, argument: str, single: bool = False) -> Doubles:
    """Matrices as a plain array (N, 4, 4)."""
    if isinstance(value, Transform):
        return value.matrix[None]
    must = "be a matrix, (4, 4) or (16,)" if single else "be matrices, (N, 4, 4) or (4, 4)"
    given = numpy.require(_input.array(value, function, argument, must), numpy.float64, ["C", "A"])
    if given.shape in ((4, 4), (16,)):
        return given.reshape(1, 4, 4)
    if single or given.ndim != 3 or given.shape[1:] != (4, 4):
        raise refuse(function, argument, must, f"its shape is {given.shape}")
    return given


def _carry(by: Any, matrix: Any, rows: Any, out: Doubles | None, function: str, argument: str) -> Doubles:
    m = matrices(matrix, function, "matrices")
    given, is_single = _input.points_or_point(rows, function, argument)
    n = len(given) if len(m) == 1 else len(m)
    alone = is_single and (isinstance(matrix, Transform) or numpy.ndim(matrix) < 3)
    result = _input.output(out, (3,) if alone else (n, 3), function)
    place = _input.workplace(result, m, given)
    by(m, given, place)
    return _input.deliver(result, place)


def transform_points(matrices: NumbersLike, points: PointsLike | PointLike, *, out: Doubles | None = None) -> Doubles:
    """Points moved by one transform or by one each: float64 (N, 3).

    matrices: a `Transform`, (4, 4) or (N, 4, 4). points: (N, 3) or (3,). out: where they go, which may be `points`.
    The points are divided by their fourth coordinate unless that is exactly 1.

    >>> korvale.transform_points(korvale.Transform.scaling(2), [(1, 2, 3)])
    array([[2., 4., 6.]])
    """
    return _carry(_korvale.transform_points, matrices, points, out, "transform_points", "points")


def transform_vectors(matrices: NumbersLike, vectors: PointsLike | PointLike, *,
                      out: Doubles | None = None) -> Doubles:
    """Vectors turned and scaled, not moved, by one transform or by one each: float64 (N, 3).

    >>> korvale.transform_vectors(korvale.translation((1, 2, 3)), [(1, 0, 0)])
    array([[1., 0., 0.]])
    """
    return _carry(_korvale.transform_vectors, matrices, vectors, out, "transform_vectors", "vectors")
