"""Kinds of arrays, and what functions take.

What NumPy makes an array of is wider than any annotation: lists of lists of Decimal are taken, strings are not. These
annotations name what people write, and leave out what is refused.
"""

from __future__ import annotations

from collections.abc import Callable, Iterable, Sequence
from typing import Any, Literal, Protocol, SupportsFloat, SupportsIndex, Union

import numpy
from numpy.typing import NDArray

Doubles = NDArray[numpy.float64]
Ints = NDArray[numpy.int32]
Truths = NDArray[numpy.bool_]
Numbers = NDArray[Any]


class HasArray(Protocol):
    """Whatever NumPy makes an array of, such as arrays, frames of pandas, borders and bands."""

    def __array__(self) -> NDArray[Any]: ...


class HasCoords(Protocol):
    """Rings, lines and points of Shapely."""

    @property
    def coords(self) -> Any: ...


class HasExterior(Protocol):
    """Polygons of Shapely."""

    @property
    def exterior(self) -> Any: ...
    @property
    def interiors(self) -> Any: ...


class HasGeoms(Protocol):
    """Groups of Shapely."""

    @property
    def geoms(self) -> Any: ...


class HasCodes(Protocol):
    """Paths of matplotlib."""

    @property
    def vertices(self) -> Any: ...
    @property
    def codes(self) -> Any: ...


class HasDiscrete(Protocol):
    """Paths of trimesh."""

    @property
    def discrete(self) -> Any: ...


class HasFaces(Protocol):
    """Meshes of korvale and trimesh."""

    @property
    def vertices(self) -> Any: ...
    @property
    def faces(self) -> Any: ...


class HasCells(Protocol):
    """Meshes of meshio."""

    @property
    def points(self) -> Any: ...
    @property
    def cells(self) -> Any: ...


class Bar(Protocol):
    """A bar such as tqdm's."""

    def update(self, n: int = 1) -> object: ...


Number = Union[SupportsFloat, SupportsIndex]
Path = Union[HasCodes, HasDiscrete]
PointLike = Union[HasArray, Sequence[Number], HasCoords]
RowsLike = Union[HasArray, Iterable[Sequence[Number]], Iterable[HasArray]]
PointsLike = Union[RowsLike, HasCoords, HasGeoms]
LineLike = Union[PointsLike, HasExterior, Path]
ShapeLike = Union[LineLike, Iterable[LineLike]]
ShapesLike = Union[ShapeLike, Iterable[ShapeLike]]
OutlinesLike = Union[RowsLike, HasGeoms, Iterable[LineLike]]
ValuesLike = Union[HasArray, Sequence[Any]]
NumbersLike = Union[HasArray, Sequence[Number], Sequence[Sequence[Number]], Sequence[Sequence[Sequence[Number]]]]
FacesLike = Union[HasArray, Sequence[Sequence[SupportsIndex]]]
MeshLike = Union[HasFaces, HasCells, "tuple[RowsLike, FacesLike]", RowsLike, Sequence[Sequence[Sequence[Number]]]]
ChoiceLike = Union[HasArray, Sequence[SupportsIndex]]
ColumnLike = Union[Number, HasArray, Iterable[Number]]
ProgressLike = Union[Callable[[int], object], Bar, "type[Bar]", None]
Wanted = Union[bool, Doubles]
WantedInts = Union[bool, Ints]
Join = Literal["miter", "bevel", "round"]
CapLike = Literal["flat", "square", "round"]
JoinLike = Union[Join, Sequence[Join]]
Measure = Literal["lengths", "angles", "volume", "area"]
Stop = Literal["steps", "energy", "stalled", "cancelled", "no_force", "held"]
