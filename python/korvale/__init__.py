"""Numeric geometry over NumPy arrays, with the same bits as the C++ library."""

from ._equations import Equations, evaluate
from ._errors import EquationError, Error
from ._korvale import Band, Mesh, Offset
from ._rays import Cast, RayGrid, RayHit
from ._relaxer import Relaxation, Relaxer
from ._shapes import (
    Flattening, Offsets, Scattered, band, bevel, flatten, frames, offset, outlines, scatter, shapes, triangulate, tube,
)
from ._transform import Srt, Transform, transform_points, transform_vectors
from ._version import __version__

__all__ = [
    "Band", "Cast", "EquationError", "Equations", "Error", "Flattening", "Mesh", "Offset", "Offsets", "RayGrid",
    "RayHit", "Relaxation", "Relaxer", "Scattered", "Srt", "Transform", "__version__", "band", "bevel", "evaluate",
    "flatten", "frames", "offset", "outlines", "scatter", "shapes", "transform_points", "transform_vectors",
    "triangulate", "tube",
]
