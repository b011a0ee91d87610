"""Tests of vectors, matrices, lines, boxes, and operations on whole arrays, to the last bit where NumPy can say it."""

import copy
import math
import pickle
import unittest

import korvale
import numpy
from test_shapes import RefusingTest

GENERATOR = numpy.random.default_rng(11)
A, B = GENERATOR.normal(size=(2, 3000, 3))
M, N = GENERATOR.normal(size=(2, 3000, 4, 4))


def product(m, n):
    """Matrix products summed from the left."""
    total = m[..., :, 0, None] * n[..., None, 0, :]
    for k in range(1, 4):
        total = total + m[..., :, k, None] * n[..., None, k, :]
    return total


def carried(m, points):
    """Points moved, summed from the left and divided."""
    x, y, z = (points[:, k, None] for k in range(3))
    rows = m[..., :, 0] * x + m[..., :, 1] * y + m[..., :, 2] * z + m[..., :, 3]
    return rows[:, :3] / rows[:, 3:]


class VectorTest(RefusingTest):
    def test_are_the_plain_sums(self):
        (ax, ay, az), (bx, by, bz) = A.T, B.T
        numpy.testing.assert_array_equal(korvale.dot(A, B), ax * bx + ay * by + az * bz)
        numpy.testing.assert_array_equal(
            korvale.cross(A, B), numpy.stack([ay * bz - az * by, az * bx - ax * bz, ax * by - ay * bx], axis=1))
        length = numpy.sqrt(ax * ax + ay * ay + az * az)
        numpy.testing.assert_array_equal(korvale.norm(A), length)
        numpy.testing.assert_array_equal(korvale.normalize(A), A / length[:, None])
        numpy.testing.assert_allclose(korvale.angle(A, B),
                                      numpy.arccos((A * B).sum(axis=1) / length / korvale.norm(B)), rtol=1e-12)

    def test_take_one_vector_for_all(self):
        numpy.testing.assert_array_equal(korvale.dot(A, B[0]), korvale.dot(A, numpy.tile(B[0], (3000, 1))))
        numpy.testing.assert_array_equal(korvale.cross(A[0], B)[7], korvale.cross(A[0], B[7]))
        self.assertEqual(korvale.norm((3, 4)), 5)
        self.assertEqual(korvale.cross(A[:1], B[0]).shape, (1, 3))
        self.assertEqual(korvale.normalize((0, 0, 5e-7)).tolist(), [0, 0, 5e-7])
        self.assertEqual(korvale.dot(numpy.zeros((0, 3)), (1, 2, 3)).shape, (0,))

    def test_say_what_they_refuse(self):
        self.assertRefuses("dot: b must have 1 row or 3000, but it has 2", lambda: korvale.dot(A, B[:2]))
        self.assertRefuses("norm: vectors must be points, (N, 2) or (N, 3), but its shape is (1, 4)",
                           lambda: korvale.norm((1, 2, 3, 4)))


class MatrixTest(RefusingTest):
    def test_multiply_and_transpose(self):
        numpy.testing.assert_array_equal(korvale.multiply(M, N), product(M, N))
        numpy.testing.assert_array_equal(korvale.multiply(M[0], N), product(M[:1], N))
        numpy.testing.assert_array_equal(korvale.transpose(M), M.transpose(0, 2, 1))
        self.assertEqual(korvale.multiply(M[0], N[0]).shape, (4, 4))

    def test_move_points_and_vectors(self):
        numpy.testing.assert_array_equal(korvale.transform_points(M, A), carried(M, A))
        numpy.testing.assert_array_equal(korvale.transform_points(M[0], A), carried(M[:1], A))
        numpy.testing.assert_array_equal(korvale.transform_points(M, A[0]), carried(M, A[:1]))
        affine = M.copy()
        affine[:, 3] = (0, 0, 0, 1)
        numpy.testing.assert_array_equal(korvale.transform_points(affine, A), carried(affine, A))
        x, y, z = A.T
        numpy.testing.assert_array_equal(korvale.transform_vectors(M[0], A)[:, 1],
                                         M[0, 1, 0] * x + M[0, 1, 1] * y + M[0, 1, 2] * z)

    def test_are_made_of_scale_rotation_and_translation(self):
        self.assertEqual(korvale.scaling((1, 2, 3)).diagonal().tolist(), [1, 2, 3, 1])
        self.assertEqual(korvale.translation((1, 2, 3))[:, 3].tolist(), [1, 2, 3, 1])
        scale, turn = numpy.abs(A) + 0.5, B / 4
        srt = korvale.from_srt(scale, turn, A)
        numpy.testing.assert_array_equal(
            srt, product(korvale.translation(A), product(korvale.rotation(turn), korvale.scaling(scale))))
        parts = korvale.take_apart(srt)
        numpy.testing.assert_allclose(parts.scale, scale, rtol=1e-12)
        numpy.testing.assert_allclose(parts.rotation, turn, atol=1e-12)
        numpy.testing.assert_array_equal(parts.translation, A)
        numpy.testing.assert_allclose(product(korvale.inverse_from_srt(scale, turn, A), srt),
                                      numpy.tile(numpy.identity(4), (3000, 1, 1)), atol=1e-12)
        numpy.testing.assert_array_equal(korvale.rotation_in_degrees((90, 0, 0)),
                                         korvale.rotation((90 * 0.0174533, 0, 0)))
        self.assertEqual(korvale.take_apart(korvale.rotation((0.3, math.pi / 2, 0))).rotation[:2].tolist(),
                         [0, 1.5707963])

    def test_lead_into_frames(self):
        into = korvale.into_frame(A, B, (0, 0, 1))
        numpy.testing.assert_allclose(korvale.transform_points(into, A), 0, atol=1e-12)
        along = korvale.transform_points(into, A + B)
        numpy.testing.assert_allclose(along, numpy.stack([0 * along[:, 0], 0 * along[:, 0], korvale.norm(B)], axis=1),
                                      atol=1e-12)
        forth, back = korvale.frame_both_ways((1, 2, 3), (0, 1, 0), (0, 0, 1))
        numpy.testing.assert_array_equal(korvale.multiply(forth, back), numpy.identity(4))
        self.assertRefuses("into_frame: reference must be longer than 1e-06 and not along z, but in row 1 it is not",
                           lambda: korvale.into_frame((0, 0, 0), [(1, 0, 0), (0, 0, 1)], (0, 0, 1)))


class TransformTest(RefusingTest):
    def test_is_a_value(self):
        turn = korvale.Transform.rotation((0, 0, 0.5))
        move = korvale.Transform.translation((1, 2, 3))
        both = move @ turn
        self.assertEqual(both.matrix.tolist(), product(move.matrix, turn.matrix).tolist())
        self.assertEqual(both, korvale.Transform.from_srt(rotation=(0, 0, 0.5), translation=(1, 2, 3)))
        self.assertEqual(len({both, move @ turn, turn}), 2)
        for twin in (copy.copy(both), copy.deepcopy(both), pickle.loads(pickle.dumps(both)), eval(repr(both))):
            self.assertEqual(twin, both)
        self.assertNotEqual(both, turn)
        self.assertNotEqual(both, 1)
        self.assertEqual(numpy.asarray(move)[:, 3].tolist(), [1, 2, 3, 1])
        self.assertEqual(move[0, 3], 1)
        self.assertEqual(korvale.Transform(numpy.arange(16))[1].tolist(), [4, 5, 6, 7])
        self.assertEqual(korvale.Transform(), korvale.Transform(numpy.identity(4)))
        with self.assertRaises(ValueError):
            both.matrix[0, 0] = 2
        with self.assertRaises(TypeError):
            both @ 2

    def test_moves_points_in_place_when_asked(self):
        move = korvale.Transform.translation((1, 2, 3))
        points = A.copy()
        self.assertIs(move(points, out=points), points)
        numpy.testing.assert_array_equal(points, A + (1, 2, 3))
        self.assertEqual(move((0, 0, 0)).tolist(), [1, 2, 3])
        self.assertEqual(move.vectors((1, 0, 0)).tolist(), [1, 0, 0])
        self.assertEqual(move.take_apart().translation.tolist(), [1, 2, 3])
        self.assertEqual(move.transposed()[3].tolist(), [1, 2, 3, 1])
        self.assertEqual(korvale.Transform.scaling(2)((1, 2, 3)).tolist(), [2, 4, 6])
        inverse = korvale.Transform.inverse_of((2, 2, 2), (0, 0, 0), (1, 0, 0))
        self.assertEqual(inverse((3, 2, 4)).tolist(), [1, 1, 2])
        into = korvale.Transform.into_frame((1, 0, 0), (0, 0, 2), (0, 1, 0))
        self.assertEqual(into((1, 0, 5)).tolist(), [0, 0, 5])

    def test_says_what_it_refuses(self):
        self.assertRefuses("Transform: matrix must be a matrix, (4, 4) or (16,), but its shape is (3, 3)",
                           lambda: korvale.Transform(numpy.zeros((3, 3))))
        self.assertRefuses("Transform.translation: by must be finite, but its row 0 is [nan, 0.0, 0.0]",
                           lambda: korvale.Transform.translation((math.nan, 0, 0)))
        self.assertRefuses("transform_points: out must be a writable array of float64, (1, 3), but it is "
                           "float64 (3, 1)",
                           lambda: korvale.transform_points(korvale.Transform(), [(0, 0, 0)], out=numpy.zeros((3, 1))))


class LineTest(RefusingTest):
    def test_pass_through_their_points_and_meet(self):
        lines = korvale.line_through(A, B)
        for points in (A, B):
            numpy.testing.assert_allclose(lines[:, 0] * points[:, 0] + lines[:, 1] * points[:, 1] + lines[:, 2], 0,
                                          atol=1e-12)
        points, sines, do_meet = korvale.lines_meet(lines[:-1], lines[1:])
        self.assertTrue(do_meet.all())
        spread = (numpy.abs(points) < 100).all(axis=1)
        numpy.testing.assert_allclose((lines[1:, :2] * points).sum(axis=1)[spread], -lines[1:, 2][spread], atol=1e-9)
        self.assertTrue((numpy.abs(sines) <= 1 + 1e-12).all())
        parallel = korvale.lines_meet((1, 0, 0), (2, 0, 5))
        self.assertEqual((parallel[0].tolist(), parallel[1], parallel[2]), ([0, 0], 0, False))
        given = numpy.array((2.0, 0, 5))
        korvale.lines_meet(given, (0, 1, 0))
        self.assertEqual(given.tolist(), [2, 0, 5])
        self.assertEqual(korvale.normalize_lines((3, 4, 10)).tolist(), [0.6, 0.8, 2])
        self.assertRefuses("line_through: b must be at least 1e-06 from a, but in row 0 it is nearer",
                           lambda: korvale.line_through((0, 0), (0, 0)))

    def test_boxes_and_small_systems(self):
        boxes = numpy.sort(GENERATOR.normal(size=(2, 500, 2, 3)), axis=2)
        low, high = boxes[:, :, 0], boxes[:, :, 1]
        expected = ((low[0] <= high[1]) & (low[1] <= high[0])).all(axis=1)
        flat = boxes.reshape(2, 500, 6)
        self.assertEqual(korvale.boxes_meet(flat[0], flat[1]).tolist(), expected.tolist())
        systems = GENERATOR.normal(size=(100, 2, 3))
        numpy.testing.assert_allclose(korvale.solve(systems), numpy.linalg.solve(systems[:, :, :2], systems[:, :, 2]),
                                      rtol=1e-9)
        self.assertEqual(korvale.determinant([(1, 2), (3, 4)]), -2)
        self.assertRefuses("solve: systems must have a determinant of 1e-06 or more, but that of row 0 is less",
                           lambda: korvale.solve([(1, 1, 2), (1, 1, 2)]))

    def test_whole_numbers(self):
        self.assertEqual([korvale.factorial(n) for n in (-1, 0, 5, 12, 13)], [1, 1, 120, 479001600, 1932053504])
        self.assertEqual([korvale.binomial(5, k) for k in range(7)], [1, 5, 10, 10, 5, 1, 1])
        self.assertEqual([korvale.power(1.5, n) for n in (-2, 0, 1, 3)], [1, 1, 1.5, 3.375])
        self.assertRefuses("factorial: n must be a whole number, but it is 1.5", lambda: korvale.factorial(1.5))


class ArrayTest(RefusingTest):
    def test_mixes(self):
        numpy.testing.assert_array_equal(korvale.mix(A, B, 0.3, -2), 0.3 * A + -2.0 * B)
        numpy.testing.assert_array_equal(korvale.mix4(A, B, A, B, 0.3, -2, 5, 0.1),
                                         0.3 * A + -2.0 * B + 5 * A + 0.1 * B)
        a = A.copy()
        self.assertIs(korvale.mix(a, B, 2, 1, out=a), a)
        numpy.testing.assert_array_equal(a, 2 * A + B)
        self.assertEqual(korvale.mix([], [], 1, 1).tolist(), [])
        self.assertRefuses("mix: b must have the shape of the first, (3000, 3), but its shape is (2, 3)",
                           lambda: korvale.mix(A, B[:2], 1, 1))

    def test_bounds(self):
        self.assertEqual(korvale.bounds(A).tolist(), [A.min(axis=0).tolist(), A.max(axis=0).tolist()])
        self.assertRefuses("bounds: array must be numbers (N, k), at least one row, but its shape is (0,)",
                           lambda: korvale.bounds([]))

    def test_reverses_and_joins(self):
        numpy.testing.assert_array_equal(korvale.reverse(A), A[::-1])
        a = A.copy()
        korvale.reverse(a, out=a)
        numpy.testing.assert_array_equal(a, A[::-1])
        numpy.testing.assert_array_equal(korvale.join(A, B[:7]), numpy.vstack([A, B[:7]]))
        self.assertEqual(korvale.join([1, 2], [3]).tolist(), [1, 2, 3])
        self.assertEqual(korvale.join(numpy.zeros((0, 3)), A[:2]).tolist(), A[:2].tolist())
        self.assertRefuses("join: b must have the columns of a, (3000, 3), but its shape is (3000, 2)",
                           lambda: korvale.join(A, B[:, :2]))

    def test_random_numbers_repeat(self):
        korvale.seed(42)
        draws = korvale.random(1000)
        korvale.seed(42)
        numpy.testing.assert_array_equal(korvale.random(1000), draws)
        self.assertTrue(((draws >= 0) & (draws <= 1)).all())
        numpy.testing.assert_array_equal(draws, numpy.round(draws * 32767) / 32767)
        korvale.seed(1)
        noise = korvale.Equations("y")
        noise.add("y = RAND")
        first = noise.evaluate()
        korvale.seed(1)
        self.assertEqual(korvale.random(1)[0], first)
        normal = korvale.gauss(20000)
        self.assertLess(abs(normal.mean()), 0.05)
        self.assertLess(abs(normal.std() - 1), 0.05)


if __name__ == "__main__":
    unittest.main()
