"""How typed programs use korvale, for mypy; test_types.py has it checked."""

from typing import assert_type

import numpy as np
from numpy.typing import NDArray

import korvale
from korvale import raw

band: korvale.Band = korvale.band([(0, 0), (10, 0)], 1)
assert_type(band.outline, NDArray[np.float64])
assert_type(band.crossing, tuple[int, int] | None)
mesh: korvale.Mesh = korvale.bevel([(0, 0), (4, 0), (4, 4)], [(0, 0), (0, 1)])
assert_type(mesh.triangles, NDArray[np.int32])
assert_type(mesh.normals, NDArray[np.float64])
assert_type(mesh.volume, float)
mesh.save("mesh.obj")
wave = korvale.Equations("y x")
assert_type(wave.add("y = x * 2"), int)
hit = korvale.RayGrid(mesh).nearest((1, 1, 5), (0, 0, -1))
assert_type(hit, korvale.RayHit | None)
assert_type(korvale.__version__, str)

points = raw.DATAstruct(np.zeros((4, 3)))
assert_type(points.dvals, NDArray[np.float64] | None)
status = raw.BORDERStatus()
status.path = points
assert_type(raw.BORDER(status), int)
assert_type(raw.cross_product([1, 0, 0], [0, 1, 0]), NDArray[np.float64])
assert_type(raw.ray_intersect([0, 0, 0], [0, 0, 1], raw.RayStatus()), tuple[int, float])


class Vertices:
    """A host's vertices, as the protocols want them."""

    def GetVertexCount(self) -> int:
        return 0

    def GetAccessor(self, zero: int) -> None:
        return None


collection: raw.I3DVertexCollection = Vertices()
assert_type(raw.F3DKorvaleVertex2DATA(collection, points), int)
