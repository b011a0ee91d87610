"""Numeric geometry over NumPy arrays, with the same bits as the C++ library."""

from ._arrays import bounds, gauss, join, mix, mix4, random, reverse, seed
from ._equations import Equations, evaluate
from ._errors import EquationError, Error
from ._korvale import Band, Mesh, Offset
from ._math import (
    angle, binomial, boxes_meet, cross, determinant, dot, factorial, frame_both_ways, from_srt, into_frame,
    inverse_from_srt, line_through, lines_meet, multiply, norm, normalize, normalize_lines, power, rotation,
    rotation_in_degrees, scaling, solve, take_apart, translation, transpose,
)
from ._rays import Cast, RayGrid, RayHit
from ._relaxer import Relaxation, Relaxer
from ._shapes import (
    Flattening, Offsets, Scattered, band, bevel, flatten, frames, offset, outlines, scatter, shapes, triangulate, tube,
)
from ._transform import Srt, Transform, transform_points, transform_vectors
from ._version import __version__

__all__ = [
    "Band", "Cast", "EquationError", "Equations", "Error", "Flattening", "Mesh", "Offset", "Offsets", "RayGrid",
    "RayHit", "Relaxation", "Relaxer", "Scattered", "Srt", "Transform", "__version__", "angle", "band", "bevel",
    "binomial", "bounds", "boxes_meet", "cross", "determinant", "dot", "evaluate", "factorial", "flatten",
    "frame_both_ways", "frames", "from_srt", "gauss", "into_frame", "inverse_from_srt", "join", "line_through",
    "lines_meet", "mix", "mix4", "multiply", "norm", "normalize", "normalize_lines", "offset", "outlines", "power",
    "random", "reverse", "rotation", "rotation_in_degrees", "scaling", "scatter", "seed", "shapes", "solve",
    "take_apart", "transform_points", "transform_vectors", "translation", "transpose", "triangulate", "tube",
]
