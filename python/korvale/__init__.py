"""Numeric geometry over NumPy arrays.

| to | use |
|---|---|
| offset an outline, with or without holes, in any plane; many at once | `offset`, `offset_many` |
| lay a band along a line, leave points of a line out | `band`, `thin` |
| take values of points along to borders, rings and bands | `carry` |
| make solids, cut shapes into triangles | `bevel`, `tube`, `triangulate` |
| lay an outline flat, place sections along a path | `flatten`, `frames` |
| take shapes from a text or from other packages | `shapes`, `outlines` |
| scatter points on triangles | `scatter` |
| cast rays | `RayGrid` |
| keep a deforming mesh in shape | `Relaxer` |
| evaluate equations written as text, over columns | `Equations`, `evaluate` |
| move points | `Transform`, `transform_points`, `transform_vectors` |
| vectors | `dot`, `cross`, `norm`, `normalize`, `angle` |
| many matrices at a time | `from_srt`, `take_apart`, `multiply`, `rotation`, `into_frame` and more |
| whole arrays | `mix`, `mix4`, `bounds`, `reverse`, `join` |
| repeat random numbers | `seed`, `random`, `gauss` |
| call the library's own functions on its own records | `korvale.raw` |

Points are rows of arrays (N, 3), or (N, 2) where z is 0. Contiguous float64 arrays are read where they are; lists,
tuples, other kinds of numbers, and rings, polygons, paths and meshes of Shapely, matplotlib, trimesh and meshio are
converted. What comes back are arrays over the library's own memory, float64 (N, 3), or small objects that hold some.
Angles are in radians; lengths are in units of the input. Outlines, paths and lines may have any size: `offset`, `band`,
`bevel`, `flatten`, `frames` and `tube` bring small ones to an ordinary size by a power of two, and draw no random
numbers. Elsewhere thresholds are absolute (mostly 1e-06): work in units in which a model measures about 1 or more.

    >>> import korvale
    >>> square = [(0, 0), (4, 0), (4, 4), (0, 4)]
    >>> korvale.offset(square, 1).xy
    array([[-1., -1.],
           [ 5., -1.],
           [ 5.,  5.],
           [-1.,  5.]])

The same calls give the same bits as in C++, on every x86-64 processor; docs/math.md names the few that follow the
C library.

Arguments that cannot be used raise `korvale.Error`, a ValueError that names the function, the argument, what it must
be, and what came. Calls of more than about 20 microseconds let other threads run; objects may be shared by threads,
which then take turns, but one for each is quicker; a `RayGrid` serves all at once. Results, `Equations`, `Relaxer`,
`RayGrid` and `Transform` can be copied, compared and pickled, so work spreads over processes:

    with concurrent.futures.ProcessPoolExecutor() as executor:
        borders = list(executor.map(functools.partial(korvale.offset, distance=1), outlines, chunksize=500))
"""

from . import raw
from ._arrays import bounds, gauss, join, mix, mix4, random, reverse, seed
from ._carry import carry
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
    Borders, Flattening, Offsets, Rings, Scattered, band, bevel, flatten, frames, offset, offset_many, outlines,
    scatter, shapes, thin, triangulate, tube,
)
from ._transform import Srt, Transform, transform_points, transform_vectors
from ._version import __version__

__all__ = [
    "Band", "Borders", "Cast", "EquationError", "Equations", "Error", "Flattening", "Mesh", "Offset", "Offsets",
    "RayGrid", "RayHit", "Relaxation", "Relaxer", "Rings", "Scattered", "Srt", "Transform", "__version__", "angle",
    "band", "bevel", "binomial", "bounds", "boxes_meet", "carry", "cross", "determinant", "dot", "evaluate",
    "factorial", "flatten", "frame_both_ways", "frames", "from_srt", "gauss", "into_frame", "inverse_from_srt", "join",
    "line_through", "lines_meet", "mix", "mix4", "multiply", "norm", "normalize", "normalize_lines", "offset",
    "offset_many", "outlines", "power", "random", "raw", "reverse", "rotation", "rotation_in_degrees", "scaling",
    "scatter", "seed", "shapes", "solve", "take_apart", "thin", "transform_points", "transform_vectors",
    "translation", "transpose", "triangulate", "tube",
]

# Public classes show themselves, and are pickled, by the place where people find them.
for _name in __all__:
    if isinstance(globals()[_name], type):
        globals()[_name].__module__ = __name__
del _name
