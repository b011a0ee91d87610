"""How typed programs use korvale, for mypy; test_types.py has it checked."""

from typing import Any, Literal, assert_type

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
square = [(0, 0), (4, 0), (4, 4), (0, 4)]
border = korvale.offset(square, 1)
assert_type(border, korvale.Offset)
assert_type(korvale.offset(border.points, 1), korvale.Offset)
assert_type(korvale.offset([square, [(1, 1), (2, 1), (2, 2)]], 1), korvale.Offsets)
assert_type(korvale.offset([border.points, border.points / 2], 1), korvale.Offsets)
assert_type(korvale.offset(korvale.shapes([border.points])[0], 1), korvale.Offsets)
borders = korvale.offset_many([square, square], [1, -0.5])
assert_type(borders, korvale.Borders)
assert_type(borders.singly(), list[NDArray[np.float64]])
assert_type(korvale.offset_many([border.points, border.points], 1).collapsed, NDArray[np.bool_])
assert_type(korvale.offset_many(border.points, 1, starts=[0, 4]).sources, NDArray[np.int32])
assert_type(korvale.offset(square, 1, pieces=True), korvale.Rings)
assert_type(korvale.offset(border.points, 1, pieces=True).births, NDArray[np.float64])
assert_type(korvale.offset(square, [1, 2], pieces=True), list[korvale.Rings])
assert_type(korvale.offset(square, 1, pieces=False), korvale.Offset)
assert_type(korvale.offset(square, 1, join="round", tolerance=0.1).sources, NDArray[np.int32])
assert_type(korvale.offset(square, 1, pieces=True, join=["bevel", "miter", "miter", "round"]), korvale.Rings)
assert_type(korvale.carry([1, 2, 3, 4], border), NDArray[Any])
assert_type(korvale.carry(border.points, korvale.offset([square], 1)), list[NDArray[Any]])
assert_type(korvale.thin(square, 1), NDArray[np.int64])
assert_type(korvale.scatter((border.points, [(0, 1, 2)]), 5, seed=1).triangles, NDArray[np.int32])
wave = korvale.Equations("y x")
assert_type(wave.add("y = x * 2"), int)
assert_type(wave.evaluate(x=2), float)
assert_type(wave.evaluate(x=border.points[:, 0]), NDArray[np.float64])
assert_type(wave.evaluate_all("y", x=[1, 2, 3]), dict[str, NDArray[np.float64]])
assert_type(korvale.evaluate("x * 2", x=2), float)


@wave.function("STEP")
def step(x: float) -> float:
    return float(x > 0)


assert_type(korvale.Relaxer(mesh).keep("lengths").run(mesh.vertices).stop,
            Literal["steps", "energy", "stalled", "cancelled", "no_force", "held"])
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
