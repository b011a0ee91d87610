"""Numeric geometry over NumPy arrays, with the same bits as the C++ library."""

from ._errors import EquationError, Error
from ._korvale import Band, Mesh, Offset
from ._shapes import (
    Flattening, Offsets, Scattered, band, bevel, flatten, frames, offset, outlines, scatter, shapes, triangulate, tube,
)
from ._transform import Srt, Transform, transform_points, transform_vectors
from ._version import __version__

__all__ = [
    "Band", "EquationError", "Error", "Flattening", "Mesh", "Offset", "Offsets", "Scattered", "Srt", "Transform",
    "__version__", "band", "bevel", "flatten", "frames", "offset", "outlines", "scatter", "shapes", "transform_points",
    "transform_vectors", "triangulate", "tube",
]
