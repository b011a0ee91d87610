"""Tests that the package gives the bits of the library's own functions, called as korvale.raw on its own records."""

import unittest

import korvale
import numpy
from korvale import raw

GENERATOR = numpy.random.default_rng(2)
CUBE = korvale.bevel([(0, 0), (2, 0), (2, 2), (0, 2)], [(0, 0), (0, 2)])


def outline(n):
    """A star of n vertices in a tilted plane."""
    t = numpy.sort(GENERATOR.uniform(0, 2 * numpy.pi, n))
    r = GENERATOR.uniform(4, 10, n)
    flat = numpy.stack([r * numpy.cos(t), r * numpy.sin(t), 0 * t], axis=1)
    return korvale.Transform.from_srt((1, 1, 1), GENERATOR.uniform(-1, 1, 3), GENERATOR.uniform(-9, 9, 3))(flat)


def status_for(distance, height, keep, split):
    status = raw.BORDERStatus()
    status.distance, status.height = distance, height
    status.keep_collapsed, status.split_events = int(keep), int(split)
    return status


class BitsTest(unittest.TestCase):
    def assertSame(self, a, b):
        a, b = numpy.ascontiguousarray(a), numpy.ascontiguousarray(b)
        self.assertEqual((a.shape, a.tobytes()), (b.shape, b.tobytes()))

    def test_offset_is_BORDER(self):
        for n in [3, 4, 5, 8, 16, 33, 64, 150] * 6:
            points = outline(n)
            distance, height = GENERATOR.uniform(-6, 6), GENERATOR.choice([0, 1.25])
            keep, split = (GENERATOR.integers(2, size=2) == 1).tolist()
            status = status_for(distance, height, keep, split)
            status.path = raw.DATAstruct(points)
            self.assertEqual(raw.BORDER(status), 1)
            border = korvale.offset(points, distance, height=height, keep_vertices=keep, split=split)
            self.assertSame(border.points, status.output.dvals)
            self.assertSame(border.merged_into, status.merge.ivals.ravel())
            self.assertSame(border.removed, status.dead.bvals.ravel().astype(bool))

    def test_offset_of_a_shape_is_BORDER_on_a_list(self):
        for n in (4, 7, 20):
            points = outline(n)
            centre = points.mean(axis=0)
            shape = [points, centre + (points - centre) * 0.4]
            status = status_for(0.3, 0.5, True, True)
            status.path = raw.DATAstruct([raw.DATAstruct(ring.copy()) for ring in shape])
            self.assertEqual(raw.BORDER(status), 1)
            for border, child in zip(korvale.offset(shape, 0.3, height=0.5), status.output.pvals):
                self.assertSame(border.points, child.dvals)

    def test_band_is_the_four_calls(self):
        line = numpy.array([(0, 0, 0), (8, 0, 0), (12, 5, 0), (15, 5, 0), (20, 9, 0)], float)
        status = status_for(1.0, 0, True, False)
        status.path = raw.DATAstruct()
        status.path.count, status.path.dim, status.path.type = len(line), 3, raw.DATA_TYPE_DOUBLE
        self.assertEqual(raw.DATAAllocate(status.path), 1)
        status.path.dvals[:] = line
        raw.BORDERAddWings(status)
        self.assertEqual(raw.BORDER(status), 1)
        raw.BORDERRemoveWings(status)
        sides = [korvale.band(line, d).border for d in (1, -1)]
        self.assertIn(status.output.dvals.tobytes(), [side.tobytes() for side in sides])

    def test_flatten_and_frames_are_theirs(self):
        for n in (3, 4, 9, 40):
            path = outline(n)
            way = korvale.flatten(path)
            for mine, its in zip(way, raw.DATA_to_xy_xfms(raw.DATAstruct(path), None, None, 1)):
                self.assertSame(mine, its)
            path += GENERATOR.normal(size=path.shape)
            for closed in (False, True):
                self.assertSame(korvale.frames(path, closed=closed), raw.PATH2xfm(raw.DATAstruct(path), closed))

    def test_scatter_is_DATATriSample(self):
        corners = CUBE.vertices[CUBE.triangles].reshape(-1, 9)
        attributes = GENERATOR.normal(size=(12, 3, 2))
        points, carried = raw.DATAstruct(numpy.empty((500, 3))), raw.DATAstruct(numpy.empty((500, 2)))
        raw.DATATriSample(raw.DATAstruct(corners), 42, points, raw.DATAstruct(attributes.reshape(36, 2)), carried)
        mine = korvale.scatter(corners, 500, seed=42, attributes=attributes)
        self.assertSame(mine.points, points.dvals)
        self.assertSame(mine.attributes, carried.dvals)
        self.assertEqual(mine.triangles.dtype, numpy.int32)
        numbers = numpy.repeat(numpy.arange(12), 3).reshape(12, 3)
        carried = korvale.scatter(corners, 500, seed=42, attributes=numbers).attributes[:, 0]
        self.assertSame(numpy.rint(carried).astype(numpy.int32), mine.triangles)

    def test_rays_are_ray_intersect(self):
        corners = GENERATOR.normal(size=(300, 9))
        grid = korvale.RayGrid(corners)
        triangles, status = raw.Data(corners), raw.RayStatus()
        raw.ray_initialize(status)
        status.nx, status.ny, status.nz = grid.cells
        raw.ray_set_triangles(triangles, status)
        raw.ray_classify(status)
        origins, directions = GENERATOR.normal(size=(2, 400, 3))
        cast = grid.cast(origins, directions)
        for i in range(400):
            met, distance = raw.ray_intersect(origins[i], directions[i], status)
            self.assertEqual(cast.counts[i], met)
            if met:
                self.assertSame(cast.distances[i], distance)
        self.assertGreater(cast.counts.max(), 1)

    def test_relaxation_is_PreserveCompute(self):
        vertices, triangles = CUBE
        status = raw.PreserveStatus()
        raw.PreserveInitialize(status, raw.DATAstruct(vertices.copy()), None,
                               raw.DATAstruct(numpy.full((12, 1), 3, numpy.int32)),
                               raw.DATAstruct(triangles.reshape(-1, 1).copy()))
        relaxer = korvale.Relaxer(CUBE)
        for name, which in (("lengths", 1), ("angles", 2), ("volume", 4), ("area", 8)):
            relaxer.keep(name, 0.25)
            self.assertEqual(raw.PreservePreserve(status, which, 0.25), 1)
        points = vertices * (1.3, 0.9, 1.1)
        moved = raw.DATAstruct(points.copy())
        raw.PreserveCompute(status, moved, 25)
        result = relaxer.step(points, 25)
        self.assertSame(result.points, moved.dvals)
        self.assertEqual(result.energy, status.energy)

    def test_equations_are_EqEvaluate(self):
        text = "y = SIN(x * 7) ^ 3 / (z + SQRT(x)) - (x ANGLE z) * EXP(0 - x) + LOG(z) / PI"
        mine, its = korvale.Equations("y x z"), raw.EquationSystem()
        self.assertEqual(raw.EqParseVariables(its, "y x z", 0) >= 0, True)
        self.assertGreater(raw.EqParseEquation(its, text), 0)
        mine.add(text)
        x, z = GENERATOR.uniform(0.1, 4, (2, 500))
        column = mine.evaluate(x=x, z=z)
        for i in range(500):
            raw.EqSetVariableByName(its, "x", x[i])
            raw.EqSetVariableByName(its, "z", z[i])
            self.assertSame(column[i], raw.EqEvaluate(its, 0))

    def test_transforms_are_TransformDATA(self):
        points = GENERATOR.normal(size=(1000, 3))
        for matrix in (GENERATOR.normal(size=(4, 4)), korvale.from_srt((1, 2, 3), (1, 2, 3), (4, 5, 6))):
            moved = raw.DATAstruct(numpy.empty((1000, 3)))
            raw.TransformDATA(matrix, raw.DATAstruct(points), moved)
            self.assertSame(korvale.Transform(matrix)(points), moved.dvals)
            self.assertSame(korvale.transform_points(numpy.tile(matrix, (1000, 1, 1)), points), moved.dvals)


if __name__ == "__main__":
    unittest.main()
