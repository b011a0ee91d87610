"""Tests of outlines, bands, solids, frames and scattered points."""

import copy
import math
import os
import pathlib
import pickle
import struct
import tempfile
import unittest

import korvale
import numpy

SQUARE = numpy.array([(0, 0, 0), (4, 0, 0), (4, 4, 0), (0, 4, 0)], float)
HOLE = numpy.array([(1, 1, 0), (3, 1, 0), (3, 3, 0), (1, 3, 0)], float)
# A plate whose corner is cut by a short edge, which goes first.
CUT = [(0, 0), (4, 0), (4, 3.9), (3.9, 4), (0, 4)]


class RefusingTest(unittest.TestCase):
    def assertRefuses(self, text, call):
        with self.assertRaises(ValueError) as caught:
            call()
        self.assertIsInstance(caught.exception, korvale.Error)
        self.assertEqual(str(caught.exception), text)


class OffsetTest(RefusingTest):
    def test_moves_the_edges_of_a_square(self):
        border = korvale.offset(SQUARE, 0.5)
        numpy.testing.assert_allclose(border.points, [(-0.5, -0.5, 0), (4.5, -0.5, 0), (4.5, 4.5, 0), (-0.5, 4.5, 0)],
                                      atol=1e-12)
        self.assertEqual(border.removed.tolist(), [False] * 4)
        self.assertEqual(border.merged_into.tolist(), [0, 1, 2, 3])
        self.assertIs(border.collapsed, False)

    def test_tells_that_nothing_is_left(self):
        self.assertFalse(korvale.offset(SQUARE, -1.99).collapsed)
        self.assertTrue(korvale.offset(SQUARE, -2).collapsed)
        self.assertTrue(korvale.offset(SQUARE, -2.5).collapsed)
        self.assertEqual(korvale.offset(SQUARE, -10).points.shape, (4, 3))
        self.assertLess(len(korvale.offset(SQUARE, -10, keep_vertices=False)), 4)

    def test_tells_that_an_outline_without_splits_has_turned_inside_out(self):
        # The tip of the notch runs through the foot; what is left is a triangle that grows downwards.
        notched = [(0, 0), (16, 0), (16, 7.5), (8, 1.5), (0, 7.5)]
        for outline in (notched, notched[::-1]):
            border = korvale.offset(outline, -4, keep_vertices=False, split=False)
            self.assertEqual(sorted(border.xy.round(9).tolist()), [[-2, 4], [8, -3.5], [18, 4]])
            self.assertTrue(border.collapsed)
            self.assertFalse(korvale.offset(outline, -1.71, split=False).collapsed)
            self.assertTrue(korvale.offset(outline, -1.72, split=False).collapsed)
            self.assertFalse(korvale.offset(outline, 4, split=False).collapsed)
        profile = [(0, 0), (-4, 3)]
        self.assertEqual(korvale.bevel(notched, profile, split=False), korvale.bevel(notched, profile))

    def test_names_removed_vertices_and_leaves_them_out_when_asked(self):
        kept = korvale.offset(CUT, -1)
        self.assertEqual(len(kept), 5)
        self.assertEqual(kept.removed.sum(), 1)
        dropped = korvale.offset(CUT, -1, keep_vertices=False)
        numpy.testing.assert_array_equal(dropped.points, kept.points[~kept.removed])

    def test_lifts_by_the_height(self):
        numpy.testing.assert_allclose(korvale.offset(SQUARE, -1, height=2),
                                      [(1, 1, 2), (3, 1, 2), (3, 3, 2), (1, 3, 2)], atol=1e-12)

    def test_moves_holes_the_other_way(self):
        for hole in (HOLE, HOLE[::-1]):
            borders = korvale.offset([SQUARE, hole], 0.25)
            self.assertIsInstance(borders, korvale.Offsets)
            self.assertEqual(borders.outer.points.max(), 4.25)
            self.assertEqual([border.points.max() for border in borders.holes], [2.75])
        grown = korvale.offset([SQUARE, HOLE], 1.5)
        self.assertFalse(grown.collapsed)
        self.assertTrue(grown.holes[0].collapsed)

    def test_may_stand_in_any_plane(self):
        place = korvale.Transform.from_srt((1, 1, 1), (0.3, -0.2, 0.9), (5, 6, 7))
        border = korvale.offset(place(SQUARE), 0.5)
        numpy.testing.assert_allclose(border, place(korvale.offset(SQUARE, 0.5)), atol=1e-6)

    def test_drops_a_closing_point(self):
        closed = numpy.vstack([SQUARE, SQUARE[:1]])
        self.assertEqual(korvale.offset(closed, 0.5), korvale.offset(SQUARE, 0.5))
        self.assertEqual(korvale.offset([closed, HOLE], 0.5), korvale.offset([SQUARE, HOLE], 0.5))

    def test_is_its_points_to_numpy(self):
        border = korvale.offset(SQUARE, 0.5)
        self.assertEqual(numpy.asarray(border).shape, (4, 3))
        self.assertEqual(len(border), 4)
        self.assertEqual([point.tolist() for point in border], border.points.tolist())
        self.assertEqual(border[2].tolist(), [4.5, 4.5, 0])
        self.assertEqual(border.xy.shape, (4, 2))
        self.assertEqual(korvale.offset(border, -0.5).points.tolist(), SQUARE.tolist())

    def test_is_equal_where_all_is(self):
        border = korvale.offset(SQUARE, 0.5)
        self.assertEqual(border, korvale.offset(SQUARE, 0.5))
        self.assertNotEqual(border, korvale.offset(SQUARE, 0.75))
        self.assertNotEqual(border, None)

    def test_shows_itself(self):
        self.assertEqual(repr(korvale.offset(SQUARE, 0.5)), "<korvale.Offset of 4 points>")
        self.assertEqual(repr(korvale.offset(SQUARE, -3, keep_vertices=False)),
                         "<korvale.Offset of 1 point, collapsed>")

    def test_copies_and_pickles(self):
        for border in (korvale.offset(CUT, -1), korvale.offset([SQUARE, HOLE], 0.1), korvale.offset(SQUARE, -9)):
            for twin in (copy.copy(border), copy.deepcopy(border), pickle.loads(pickle.dumps(border))):
                self.assertEqual(twin, border)
                self.assertIs(type(twin), type(border))

    def test_says_what_it_refuses(self):
        nan = math.nan
        self.assertRefuses("offset: outline must have at least 3 points, but it has 2",
                           lambda: korvale.offset(SQUARE[:2], 1))
        self.assertRefuses("offset: outline must have at least 3 points, but it has 0", lambda: korvale.offset([], 1))
        self.assertRefuses("offset: outline must be finite, but its point 1 is (nan, 0, 0)",
                           lambda: korvale.offset([(0, 0), (nan, 0), (1, 1)], 1))
        self.assertRefuses("offset: distance must be finite, but it is nan", lambda: korvale.offset(SQUARE, nan))
        self.assertRefuses("offset: height must be finite, but it is inf",
                           lambda: korvale.offset(SQUARE, 1, height=math.inf))
        self.assertRefuses("offset: distance must be a number, but it is 'far'", lambda: korvale.offset(SQUARE, "far"))
        self.assertRefuses("offset: outline must be points, (N, 2) or (N, 3), but its shape is (4, 4)",
                           lambda: korvale.offset(numpy.zeros((4, 4)), 1))
        self.assertRefuses("offset: outline must be points, (N, 2) or (N, 3), but its shape is (3,)",
                           lambda: korvale.offset([1, 2, 3], 1))
        self.assertRefuses("offset: outline must be an outline, (N, 2) or (N, 3), or a list of outlines, but it is 7",
                           lambda: korvale.offset(7, 1))
        self.assertRefuses("offset: outline must be points, (N, 2) or (N, 3), but it holds complex numbers",
                           lambda: korvale.offset(SQUARE * 1j, 1))
        self.assertRefuses("offset: outline 1 must have at least 3 points, but it has 2",
                           lambda: korvale.offset([SQUARE, HOLE[:2]], 1))
        with self.assertRaises(korvale.Error) as caught:
            korvale.offset(SQUARE, nan)
        self.assertEqual((caught.exception.function, caught.exception.argument), ("offset", "distance"))
        twin = pickle.loads(pickle.dumps(caught.exception))
        self.assertEqual((str(twin), twin.argument), (str(caught.exception), "distance"))


def rings(count, seed=5):
    """Outlines with 3 to 40 points, some of which repeat their first point, once or several times."""
    generator = numpy.random.default_rng(seed)
    made = []
    for k in range(count):
        n = int(generator.integers(3, 41))
        turn, radius = numpy.arange(n) * (2 * numpy.pi / n), generator.uniform(1, 5, n)
        made.append(numpy.column_stack([radius * numpy.cos(turn) + k, radius * numpy.sin(turn), numpy.full(n, k % 3)]))
        if generator.random() < 0.3:
            made[-1] = numpy.vstack([made[-1], made[-1][[0] * int(generator.integers(1, 4))]])
    return made


class OffsetManyTest(RefusingTest):
    def assertAlone(self, borders, outlines, distances, base=0, **options):
        """That borders are those of each outline alone, whose points are numbered from `base` on."""
        self.assertEqual([len(border) for border in borders.singly()], numpy.diff(borders.starts).tolist())
        at = 0
        for k, (border, outline, distance) in enumerate(zip(borders.singly(), outlines, distances, strict=True)):
            alone = korvale.offset(outline, distance, **options)
            numpy.testing.assert_array_equal(border, alone.points)
            self.assertEqual(borders.collapsed[k], alone.collapsed)
            n = len(alone.removed)
            live = numpy.arange(n) if options.get("keep_vertices", True) else numpy.flatnonzero(~alone.removed)
            sources = borders.sources[borders.starts[k]:borders.starts[k + 1]]
            numpy.testing.assert_array_equal(sources, base + at + live)
            numpy.testing.assert_array_equal(borders.removed[at:at + n], alone.removed)
            numpy.testing.assert_array_equal(borders.merged_into[at:at + n], base + at + alone.merged_into)
            for repeat in range(n, len(outline)):
                self.assertEqual((borders.removed[at + repeat], borders.merged_into[at + repeat]), (True, base + at))
            at += len(outline)
        self.assertEqual((len(borders.removed), len(borders.merged_into)), (at, at))

    def test_gives_what_each_outline_gives_alone(self):
        outlines = rings(300)
        distances = numpy.random.default_rng(6).uniform(-2, 2, 300)
        flat = numpy.concatenate(outlines)
        starts = numpy.cumsum([0, *map(len, outlines)])
        for options in ({}, {"keep_vertices": False}, {"split": False, "height": 2}):
            borders = korvale.offset_many(outlines, distances, **options)
            self.assertAlone(borders, outlines, distances, **options)
            self.assertEqual(korvale.offset_many(flat, distances, starts=starts, **options), borders)
        self.assertAlone(korvale.offset_many(outlines, -0.5), outlines, [-0.5] * 300)

    def test_takes_part_of_the_starts(self):
        outlines = rings(50)
        flat, starts = numpy.concatenate(outlines), numpy.cumsum([0, *map(len, outlines)])
        for first, last in ((0, 20), (20, 50), (13, 14), (7, 7)):
            part = korvale.offset_many(flat, 0.5, starts=starts[first:last + 1])
            self.assertAlone(part, outlines[first:last], [0.5] * (last - first), starts[first])
        without = [korvale.outlines(outline)[0] for outline in outlines]
        starts = numpy.cumsum([0, *map(len, without)])
        part = korvale.offset_many(numpy.concatenate(without), 0.5, starts=starts[20:31])
        self.assertAlone(part, without[20:30], [0.5] * 10, starts[20])

    def test_takes_lists_of_anything_that_is_an_outline(self):
        expected = korvale.offset_many([SQUARE, HOLE], 0.5)
        closed = numpy.vstack([HOLE, HOLE[:1]])
        for outlines in ([SQUARE.tolist(), HOLE], (SQUARE[:, :2], HOLE[:, :2]), numpy.array([SQUARE, HOLE]),
                         iter([SQUARE, HOLE]), [SQUARE.astype(int), HOLE[:, :2]], [korvale.offset(SQUARE, 0), HOLE],
                         [SQUARE.astype("f4"), HOLE.astype(">f8")]):
            self.assertEqual(korvale.offset_many(outlines, 0.5), expected)
        numpy.testing.assert_array_equal(korvale.offset_many([SQUARE, closed], 0.5).points, expected.points)
        self.assertEqual(korvale.offset_many([], 1).singly(), [])
        flat = numpy.concatenate([SQUARE, HOLE])[:, :2].tolist()
        self.assertEqual(korvale.offset_many(flat, [0.5, 0.5], starts=numpy.array([0, 4, 8], numpy.uint16)), expected)

    def test_results_are_values(self):
        borders = korvale.offset_many([SQUARE, HOLE], 0.5)
        for copied in (copy.copy(borders), copy.deepcopy(borders), pickle.loads(pickle.dumps(borders))):
            self.assertEqual(copied, borders)
        self.assertEqual([array.dtype for array in borders], ["f8", "i8", "i4", "?", "?", "i4"])
        views = borders.singly()
        self.assertTrue(numpy.shares_memory(views[1], borders.points))

    def test_says_what_it_refuses(self):
        many = korvale.offset_many
        self.assertRefuses("offset_many: outline 1 must have at least 3 points, but it has 2",
                           lambda: many([SQUARE, SQUARE[:2]], 1))
        self.assertRefuses("offset_many: outline 1 must be finite, but its point 0 is (nan, nan, 0)",
                           lambda: many([SQUARE, SQUARE * (math.nan, math.nan, 1)], 1))
        self.assertRefuses("offset_many: outline 1 must be points, (N, 2) or (N, 3), but its shape is ()",
                           lambda: many([SQUARE, 7], 1))
        self.assertRefuses("offset_many: distance must have 1 value, or 2, one for each outline, but they have 3",
                           lambda: many([SQUARE, HOLE], [1, 2, 3]))
        self.assertRefuses("offset_many: distance must be a number or numbers (n,), but its shape is (1, 2)",
                           lambda: many([SQUARE, HOLE], [[1, 2]]))
        self.assertRefuses("offset_many: starts must be 0 to 4, but number 1 is 5",
                           lambda: many(SQUARE, 1, starts=[0, 5]))
        self.assertRefuses("offset_many: starts must ascend, but number 1 is 0, behind 4",
                           lambda: many(SQUARE, 1, starts=[4, 0]))
        self.assertRefuses("offset_many: starts must be whole numbers (n + 1,), but it is [0.5]",
                           lambda: many(SQUARE, 1, starts=[0.5]))
        self.assertRefuses("offset_many: starts must have one number more than there are outlines, but there are none",
                           lambda: many(SQUARE, 1, starts=numpy.zeros(0, int)))
        self.assertRefuses("offset_many: outlines must be outlines, or points with starts, but it is None",
                           lambda: many(None, 1))


def distances(points, line):
    """How far points are from a line."""
    along = numpy.diff(line, axis=0)
    share = ((points[:, None] - line[:-1]) * along).sum(axis=2) / (along**2).sum(axis=1)
    return numpy.linalg.norm(points[:, None] - line[:-1] - share.clip(0, 1)[..., None] * along, axis=2).min(axis=1)


def nearest_shares(number, noise):
    """How near both borders of a band, for a track that stood still before a corner, come to the way without noise.

    All lengths are in distances of the band.
    """
    generator = numpy.random.default_rng(number)
    turn = numpy.radians(generator.uniform(-120, 120))
    corner = numpy.array([22.0, 0])
    way = numpy.vstack([(0, 0), corner, corner + 24 * numpy.array([numpy.cos(turn), numpy.sin(turn)])])
    stop = corner - (generator.uniform(0, 2), 0)
    still = stop + noise * generator.normal(size=(generator.integers(5, 40), 2))
    before = [(x, 0) for x in numpy.arange(0, stop[0], 2)]
    after = corner + numpy.arange(0, 25, 2)[:, None] / 24 * (way[2] - corner)
    band = korvale.band(numpy.vstack([before, still, after]), 1, both_sides=True)
    return [distances(side[:, :2], way).min() for side in (band.border, band.other_side)]


class BandTest(RefusingTest):
    def test_lies_to_the_right_of_the_line(self):
        band = korvale.band([(0, 0), (10, 0), (10, 10)], 1)
        numpy.testing.assert_allclose(band.border, [(0, -1, 0), (11, -1, 0), (11, 10, 0)], atol=1e-12)
        self.assertEqual(band.outline[3:].tolist(), [[10, 10, 0], [10, 0, 0], [0, 0, 0]])
        self.assertEqual((band.collapsed, band.crossing, band.removed.tolist()), (False, None, [False] * 3))

    def test_takes_straight_lines_and_lines_that_rise(self):
        self.assertEqual(korvale.band([(0, 0), (10, 0)], 2).border.tolist(), [[0, -2, 0], [10, -2, 0]])
        rising = korvale.band([(0, 0, 0), (10, 0, 1), (10, 10, 3)], 1, up=(0, 0, 1))
        numpy.testing.assert_allclose(rising.border[:, 2], [0, 1, 3], atol=1e-12)

    def test_keeps_heights_where_a_track_stood_still(self):
        generator = numpy.random.default_rng(3)
        still = (30, 0) + 0.7 * generator.normal(size=(15, 2))
        way = numpy.column_stack([numpy.arange(0, 80, 8), numpy.zeros(10)])
        track = numpy.vstack([way[:4], still, way[4:]])
        rising = numpy.column_stack([track, numpy.linspace(0, 5, len(track))])
        band = korvale.band(rising, 5, up=(0, 0, 1))
        self.assertTrue(band.removed[4:19].all())
        self.assertEqual(len(numpy.unique(band.border[4:19, :2], axis=0)), 1)
        numpy.testing.assert_allclose(band.border[:, 2], rising[:, 2], atol=1e-15)

    def test_keeps_its_distance_from_corners_beside_a_stop(self):
        for noise, near in ((0.1, 0.93), (0.3, 0.74)):
            shares = [share for number in range(100) for share in nearest_shares(number, noise)]
            self.assertGreater(numpy.quantile(shares, 0.05), near)

    def test_is_as_narrow_as_it_is_told(self):
        line = numpy.array([(0, 0, 0), (9, 0, 0), (9, 9, 0)], float)
        for distance in (1e-3, 1e-12, 1e-200, 1e-308, 1e-320, 5e-324):
            band = korvale.band(line, distance)
            self.assertEqual(band.border[0].tolist(), [0, -distance, 0])
            self.assertLessEqual(abs(band.border - line).max(), 1.01 * distance)
            self.assertEqual((band.collapsed, band.crossing is None), (False, distance > 1e-15))

    def test_names_points_that_gave_way(self):
        tight = korvale.band([(0, 0), (5, 0), (5, 1), (3, 3)], -0.8)
        self.assertEqual(tight.removed.tolist(), [False, True, False, False])
        folded = korvale.band([(0, 0), (10, 0), (10, 0.5), (0, 0.5)], -2)
        self.assertEqual(folded.narrowed.tolist(), [True] * 4)
        numpy.testing.assert_allclose(folded.border[[0, 3]], [(0, 0.25, 0), (0, 0.25, 0)], atol=1e-6)

    def test_of_a_closed_line_has_two_outlines(self):
        ring = korvale.band([(0, 0), (4, 0), (4, 4), (0, 4), (0, 0)], 1, both_sides=True, closed=True)
        numpy.testing.assert_allclose(ring.border[:, :2], [(-1, -1), (5, -1), (5, 5), (-1, 5)], atol=1e-12)
        numpy.testing.assert_allclose(ring.other_side[:, :2], [(1, 3), (3, 3), (3, 1), (1, 1)], atol=1e-12)

    def test_keeps_corners_within_the_miter_limit(self):
        spike = [(0, 0), (10, 0), (0, 1)]
        self.assertAlmostEqual(numpy.linalg.norm(korvale.band(spike, 1).border[1] - (10, 0, 0)), 4)
        self.assertGreater(numpy.linalg.norm(korvale.band(spike, 1, miter_limit=25).border[1] - (10, 0, 0)), 20)

    def test_thin_names_the_points_that_stay(self):
        track = numpy.array([(0, 0), (1, 0.4), (2, 0), (3, 0.6), (4, 0)])
        self.assertEqual(korvale.thin(track, 0.5).tolist(), [0, 3, 4])
        self.assertRefuses("thin: tolerance must be 0 or more, but it is -1", lambda: korvale.thin(track, -1))

    def test_tells_where_it_meets_itself(self):
        crossing = korvale.band([(0, 0), (10, 0), (10, 3), (4, 3), (4, -5)], 1, both_sides=True).crossing
        self.assertIsNotNone(crossing)
        self.assertEqual(len(crossing), 2)

    def test_copies_pickles_and_shows_itself(self):
        band = korvale.band([(0, 0), (10, 0), (10, 3), (4, 3), (4, -5)], 1, both_sides=True)
        for twin in (copy.copy(band), copy.deepcopy(band), pickle.loads(pickle.dumps(band))):
            self.assertEqual(twin, band)
        self.assertNotEqual(band, korvale.band([(0, 0), (10, 0)], 2))
        self.assertEqual(repr(band), "<korvale.Band of 10 points, meets itself>")
        self.assertEqual(len(band), 10)
        self.assertEqual(numpy.asarray(band).tolist(), band.outline.tolist())

    def test_says_what_it_refuses(self):
        self.assertRefuses("band: line must have at least 1 point, but it has 0", lambda: korvale.band([], 1))
        self.assertRefuses("band: line must have at least 3 different points where it is closed, but it has 2",
                           lambda: korvale.band([(0, 0), (1, 0), (0, 0)], 1, closed=True))
        self.assertRefuses("band: distance must be other than 0, but it is 0",
                           lambda: korvale.band([(0, 0), (1, 0)], 0))
        self.assertRefuses("band: up must be a point, (3,) or (2,), but its shape is (4,)",
                           lambda: korvale.band([(0, 0), (1, 0)], 1, up=(1, 2, 3, 4)))


class SolidTest(RefusingTest):
    def volume(self, mesh):
        a, b, c = (mesh.vertices[mesh.triangles[:, k]] for k in range(3))
        return (a * numpy.cross(b, c)).sum() / 6

    def test_bevels_a_plate_with_a_hole(self):
        mesh = korvale.bevel([SQUARE, HOLE], [(0, 0), (0, 2)])
        self.assertAlmostEqual(self.volume(mesh), (16 - 4) * 2, places=12)
        self.assertEqual((mesh.vertices.shape, mesh.vertices.dtype), ((16, 3), numpy.float64))
        self.assertEqual((mesh.triangles.shape[1], mesh.triangles.dtype), (3, numpy.int32))
        self.assertEqual(mesh.faces.tolist(), mesh.triangles.tolist())

    def test_keeps_all_pieces(self):
        waist = [(0, 0), (9, 0), (11, 4), (13, 0), (22, 0), (22, 9), (13, 9), (11, 5), (9, 9), (0, 9)]
        rings = korvale.offset(waist, -1, height=2, pieces=True)
        self.assertEqual(rings.parents.tolist(), [-1, 0])
        self.assertEqual([len(ring) for ring in rings.singly()], [5, 5])
        self.assertEqual(rings.collapsed.tolist(), [False, False])
        numpy.testing.assert_array_equal(rings.ends, [-1, -1])
        plain = korvale.offset(waist, -1, height=2, keep_vertices=False)
        numpy.testing.assert_array_equal(rings.singly()[0], plain.points)
        self.assertEqual(len(korvale.offset(waist, -9, pieces=True).points), 0)
        self.assertEqual(korvale.offset(waist, -1, pieces=True), korvale.offset([*waist, waist[0]], -1, pieces=True))
        self.assertEqual(korvale.offset(waist, -1, pieces=False), korvale.offset(waist, -1))

    def test_keeps_all_pieces_at_many_distances(self):
        waist = [(0, 0), (9, 0), (11, 4), (13, 0), (22, 0), (22, 9), (13, 9), (11, 5), (9, 9), (0, 9)]
        distances = [-1, 0.5, -9, 0, -0.2, -1]
        many = korvale.offset(waist, distances, height=2, pieces=True)
        self.assertEqual(len(many), 6)
        for distance, rings in zip(distances, many):
            self.assertEqual(rings, korvale.offset(waist, distance, height=2, pieces=True))
        self.assertEqual(many[5].parents.tolist(), [-1, 0])
        self.assertEqual(korvale.offset(waist, numpy.float32([-1]), pieces=True),
                         [korvale.offset(waist, -1, pieces=True)])
        self.assertEqual(korvale.offset(waist, [], pieces=True), [])
        self.assertEqual(korvale.offset(waist, numpy.array(-1), pieces=True), korvale.offset(waist, -1, pieces=True))
        self.assertRefuses("offset: distance must be finite, but number 1 is nan",
                           lambda: korvale.offset(waist, [1, math.nan], pieces=True))
        self.assertRefuses("offset: distance must be a number or, where pieces are kept, numbers (n,), but its shape "
                           "is (1, 2)", lambda: korvale.offset(waist, [[1, 2]], pieces=True))

    def test_joins_corners(self):
        bevelled = korvale.offset(SQUARE, 1, join="bevel")
        numpy.testing.assert_allclose(bevelled.xy, [(-1, 0), (0, -1), (4, -1), (5, 0), (5, 4), (4, 5), (0, 5), (-1, 4)],
                                      atol=1e-14)
        self.assertEqual(bevelled.sources.tolist(), [0, 0, 1, 1, 2, 2, 3, 3])
        self.assertEqual(pickle.loads(pickle.dumps(bevelled)), bevelled)
        self.assertEqual(pickle.loads(pickle.dumps(bevelled)).sources.tolist(), bevelled.sources.tolist())
        self.assertEqual(len(korvale.offset(SQUARE, 1, miter_limit=1)), 8)
        each = ["bevel", "miter", "round", "miter"]
        self.assertEqual(korvale.offset(SQUARE, 1, join=each, tolerance=0.1).sources.tolist(), [0, 0, 1, 2, 2, 3])
        plate = korvale.offset([SQUARE, HOLE], 0.5, join=[*each, *["bevel"] * 4], tolerance=0.1)
        self.assertEqual([len(border) for border in plate], [6, 4])
        each = [*each, "miter", *["bevel"] * 4]
        many = korvale.offset_many([[*SQUARE, SQUARE[0]], HOLE], 1, join=each, tolerance=0.1)
        self.assertEqual(many.sources.tolist(), [0, 0, 1, 2, 2, 3, 5, 5, 6, 6, 7, 7, 8, 8])
        self.assertEqual(korvale.offset(SQUARE, 1).sources.tolist(), [0, 1, 2, 3])
        self.assertEqual(len(korvale.offset(CUT, -1, keep_vertices=False).sources), 4)
        self.assertRefuses("offset: join must have 4, one for each point, or none, but there are 2",
                           lambda: korvale.offset(SQUARE, 1, join=["round", "miter"]))

    def test_joins_are_those_of_geos_where_nothing_splits(self):
        from shapely.geometry import Polygon
        random = numpy.random.default_rng(23)
        styles = {"round": {"join_style": 1, "resolution": 64}, "miter": {"join_style": 2, "mitre_limit": 1},
                  "bevel": {"join_style": 3}}
        compared = dict.fromkeys(styles, 0)
        for _ in range(10000):
            n = random.integers(3, 24)
            angles = 2 * numpy.pi * (numpy.arange(n) + random.uniform(0, 0.9, n)) / n
            star = numpy.column_stack([numpy.cos(angles), numpy.sin(angles)]) * random.uniform(4, 10, (n, 1))
            distance = 10 ** random.uniform(-3, 0) * random.choice([-1, 1])
            join = str(random.choice(list(styles)))
            rings = korvale.offset(star, distance, pieces=True, join=join, miter_limit=1,
                                   tolerance=0.01 * abs(distance))
            # Bevels may stay cut off at the distance where vertices are lost.
            expected = Polygon(star).buffer(distance, **styles[join])
            whole = len(rings.parents) == 1 and expected.geom_type == "Polygon" and not expected.interiors
            if whole and (join != "bevel" or len(set(rings.sources.tolist())) == n):
                off = expected.hausdorff_distance(Polygon(rings.points[:, :2]))
                self.assertLess(off, (0.011 if join == "round" else 1e-6) * abs(distance), (star, distance, join))
                compared[join] += 1
        self.assertGreater(min(compared.values()), 3000)

    def test_refuses_pieces_of_outlines_with_holes(self):
        self.assertRefuses("offset: outline must be one outline where pieces are kept, but it has 1 hole",
                           lambda: korvale.offset([SQUARE, HOLE], 1, pieces=True))
        self.assertRefuses("offset: pieces must be True or False, but it is 2",
                           lambda: korvale.offset(SQUARE, 1, pieces=2))

    def test_pieces_neither_cross_nor_overlap(self):
        from shapely.geometry import Polygon
        from shapely.ops import unary_union
        random = numpy.random.default_rng(7)
        several = 0
        for _ in range(200):
            n = random.integers(6, 40)
            angles = 2 * numpy.pi * (numpy.arange(n) + random.uniform(0, 0.9, n)) / n
            star = numpy.column_stack([numpy.cos(angles), numpy.sin(angles)]) * random.uniform(1, 10, (n, 1))
            rings = korvale.offset(star, random.uniform(-3, 0), pieces=True).singly()
            several += len(rings) > 1
            pieces = [Polygon(ring[:, :2]).buffer(0) for ring in rings]
            for ring, piece in zip(rings, pieces):
                x, y = ring[:, 0], ring[:, 1]
                area = (x * numpy.roll(y, -1) - numpy.roll(x, -1) * y).sum() / 2
                self.assertAlmostEqual(area, piece.area, 5)
                self.assertLess(piece.difference(Polygon(star)).area, 1e-5)
            self.assertAlmostEqual(unary_union(pieces).area, sum(piece.area for piece in pieces), 5)
        self.assertGreater(several, 30)

    def test_bevels_a_level_outline_upwards_whichever_way_it_runs(self):
        for outline in (SQUARE, SQUARE[::-1]):
            low, high = korvale.bounds(korvale.bevel(outline, [(0, 0), (0, 2)]).vertices)
            self.assertEqual((low[2], high[2]), (0, 2))

    def test_refuses_to_bevel_what_crosses_unless_told_otherwise(self):
        bow = [(0, 0), (4, 4), (4, 0), (0, 5)]
        self.assertRefuses("bevel: outline 0 must not cross itself, but its edges from points 0 and 2 do",
                           lambda: korvale.bevel(bow, [(0, 0), (-1, 2)]))
        self.assertEqual(korvale.bevel(bow, [(0, 0), (-1, 2)], crossing=True).reached.tolist(), [0, 0])
        self.assertRefuses("bevel: outline 1 must leave some of outline 0, but it goes round all of it",
                           lambda: korvale.bevel([SQUARE, SQUARE], [(0, 0), (0, 2)]))

    def test_tells_how_far_a_bevel_has_come(self):
        mesh = korvale.bevel([SQUARE, HOLE], [(0, 0), (-0.25, 1), (-0.75, 2)])  # a frame 1 wide
        self.assertEqual(mesh.reached[:2].tolist(), [0, -0.25])
        self.assertAlmostEqual(mesh.reached[2], -0.5, delta=1e-6)
        self.assertGreater(mesh.volume, 0)
        for twin in (copy.copy(mesh), pickle.loads(pickle.dumps(mesh))):
            self.assertEqual(twin.reached.tolist(), mesh.reached.tolist())
        self.assertEqual(korvale.Mesh(*mesh).reached.tolist(), [])

    def test_meshes_compare_copy_and_pickle(self):
        mesh = korvale.bevel(SQUARE, [(0, 0), (0, 2)])
        vertices, triangles = mesh
        self.assertEqual(korvale.Mesh(vertices, triangles), mesh)
        for twin in (copy.copy(mesh), copy.deepcopy(mesh), pickle.loads(pickle.dumps(mesh))):
            self.assertEqual(twin, mesh)
        self.assertNotEqual(korvale.Mesh(vertices + 1, triangles), mesh)
        self.assertEqual(repr(mesh), "<korvale.Mesh of 8 vertices, 12 triangles>")
        self.assertRefuses("Mesh: triangles must name vertices 0 to 3, but 4 is among them",
                           lambda: korvale.Mesh(SQUARE, [(0, 1, 4)]))

    def test_meshes_measure_their_triangles(self):
        wall = korvale.bevel([(0, 0), (3, 0), (3, 4), (0, 4)], [(0, 0), (0, 2)])
        self.assertEqual(wall.volume, 24)
        self.assertEqual(wall.areas.sum(), 2 * (12 + 6 + 8))
        self.assertEqual(wall.bounds.tolist(), [[0, 0, 0], [3, 4, 2]])
        self.assertEqual(sorted(map(tuple, wall.normals.tolist())),
                         sorted(2 * [(0, 0, -1), (0, 0, 1), (0, -1, 0), (0, 1, 0), (-1, 0, 0), (1, 0, 0)]))
        self.assertEqual((wall.normals.dtype, wall.areas.dtype), (numpy.float64, numpy.float64))
        nothing = korvale.Mesh([], [])
        self.assertEqual((nothing.normals.shape, nothing.areas.shape, nothing.volume), ((0, 3), (0,), 0))

    def test_says_what_meshes_do_not_measure(self):
        self.assertRefuses("Mesh.volume: triangles must be closed and face one way, but the edge between points 0 and "
                           "1 runs one way in 1 and the other way in 0 of the triangles",
                           lambda: korvale.Mesh(SQUARE, [(0, 1, 2)]).volume)
        self.assertRefuses("Mesh.bounds: triangles must have at least 1 triangle, but there is none",
                           lambda: korvale.Mesh([], []).bounds)
        self.assertRefuses("Mesh.normals: triangles must be finite, but its point 1 is (nan, 0, 0)",
                           lambda: korvale.Mesh([(0, 0), (numpy.nan, 0), (0, 1)], [(0, 1, 2)]).normals)

    def test_tubes_close(self):
        section = [(1, 0), (0, 1), (-1, 0), (0, -1)]
        self.assertAlmostEqual(self.volume(korvale.tube([(0, 0, 0), (0, 0, 5)], section)), 10, places=12)
        loop = [(9 * math.cos(t), 9 * math.sin(t), 0) for t in numpy.linspace(0, 2 * math.pi, 41)]
        loop[-1] = loop[0]  # it may be closed by a repeated point
        ring = korvale.tube(loop, section, closed=True)
        self.assertEqual(len(ring.vertices), 160)
        self.assertGreater(self.volume(ring), 100)

    def test_meshes_are_saved_as_obj(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "triangle.obj"
            korvale.Mesh([(0, 0, 0), (0.1, 0, -2e-300), (0, 1, 0)], [(0, 1, 2)]).save(path)
            self.assertEqual(path.read_text(), "v 0.0 0.0 0.0\nv 0.1 0.0 -2e-300\nv 0.0 1.0 0.0\nf 1 2 3\n")

    def test_meshes_are_saved_as_stl(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "triangle.STL")
            korvale.Mesh([(0, 0, 0), (0.5, 0, 0), (0, 1, 0)], [(0, 1, 2)]).save(path)
            with open(path, "rb") as file:
                content = file.read()
            self.assertEqual(struct.unpack("<80sI12fH", content),
                             (b"korvale" + 73 * b" ", 1, 0, 0, 1, 0, 0, 0, 0.5, 0, 0, 0, 1, 0, 0))

    def test_meshes_are_saved_as_ply(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(os.fsencode(folder), b"triangle.ply")
            korvale.Mesh([(0, 0, 0), (0.1, 0, 0), (0, 1, 0)], [(0, 1, 2)]).save(path)
            with open(path, "rb") as file:
                header, content = file.read().split(b"end_header\n")
            self.assertEqual(header.decode().splitlines(), [
                "ply", "format binary_little_endian 1.0", "element vertex 3", "property double x", "property double y",
                "property double z", "element face 1", "property list uchar int vertex_indices"])
            self.assertEqual(struct.unpack("<9dB3i", content), (0, 0, 0, 0.1, 0, 0, 0, 1, 0, 3, 0, 1, 2))

    def test_meshes_of_nothing_are_saved(self):
        with tempfile.TemporaryDirectory() as folder:
            for suffix, size in ((".obj", 0), (".stl", 84), (".ply", 172)):
                path = pathlib.Path(folder) / ("nothing" + suffix)
                korvale.Mesh([], []).save(path)
                self.assertEqual(path.stat().st_size, size)

    def test_what_save_refuses_leaves_no_file(self):
        mesh = korvale.Mesh([(0, 0, 0), (1e39, 0, 0), (0, 1, 0)], [(0, 1, 2)])
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "mesh")
            self.assertRefuses(f"Mesh.save: path must end in .obj, .stl or .ply, but it is {path!r}",
                               lambda: mesh.save(path))
            self.assertRefuses("Mesh.save: vertices must be within 3.40282e+38 for STL, but one has 1e+39",
                               lambda: mesh.save(path + ".stl"))
            self.assertRefuses("Mesh.save: path must be a path, but it is 7", lambda: mesh.save(7))
            bad = korvale.Mesh([(0, 0), (numpy.inf, 0), (0, 1)], [])
            self.assertRefuses("Mesh.save: vertices must be finite, but its row 1 is [inf, 0.0, 0.0]",
                               lambda: bad.save(path + ".ply"))
            self.assertEqual(os.listdir(folder), [])

    def test_shapes_take_what_is_nearly_there_twice_once(self):
        near = SQUARE + 0.001
        self.assertEqual([len(shape) for shape in korvale.shapes([SQUARE, near, HOLE], tolerance=0.01)], [2])
        self.assertEqual(korvale.shapes([near, SQUARE], tolerance=0.01)[0][0].tolist(), near.tolist())

    def test_shapes_join_what_overlaps_a_little(self):
        plate = [(0, 0), (10, 0), (10, 10), (0, 10)]
        holes = [[(2, 2), (4.01, 2), (4.01, 4), (2, 4)], [(4, 2), (6, 2), (6, 4), (4, 4)]]
        shape, = korvale.shapes([plate, *holes], tolerance=0.02)
        self.assertEqual([ring[:, :2].tolist() for ring in shape],
                         [[list(point) for point in plate], [list(point) for point in holes[0]],
                          [[4.01, 2], [6, 2], [6, 4], [4.01, 4]]])
        korvale.bevel(shape, [(0, 0), (0, 1)])
        drawn, = korvale.shapes([plate, *holes], tolerance=0.02, crossing=True)
        self.assertEqual(drawn[2][:, :2].tolist(), [list(point) for point in holes[1]])

    def test_no_outline_repeats_its_first_point(self):
        for repeats in (1, 2, 5):
            closed = numpy.vstack([SQUARE, SQUARE[[0] * repeats]])
            self.assertEqual(korvale.shapes([closed])[0][0].tolist(), SQUARE.tolist())
            self.assertEqual(korvale.outlines(closed)[0].tolist(), SQUARE.tolist())
            self.assertEqual(korvale.offset(closed, 1), korvale.offset(SQUARE, 1))
            self.assertEqual(korvale.offset([closed, HOLE], 1), korvale.offset([SQUARE, HOLE], 1))
            self.assertEqual(korvale.triangulate(closed).tolist(), korvale.triangulate(SQUARE).tolist())
        self.assertEqual(korvale.outlines([(1, 1)] * 5)[0].tolist(), [[1, 1, 0]])
        doubled = numpy.vstack([SQUARE[:1], SQUARE])  # only what is at the end repeats
        self.assertEqual(korvale.outlines(doubled)[0].tolist(), doubled.tolist())

    def test_letters_repeat_no_point_at_their_end(self):
        try:
            from matplotlib.textpath import TextPath
        except ImportError:
            self.skipTest("python3-matplotlib is not installed")
        for sign in "ABDOPQRabdegopq0689&%@$":
            for shape in korvale.shapes(TextPath((0, 0), sign, size=10)):
                for outline in shape:
                    self.assertNotEqual(outline[0].tolist(), outline[-1].tolist(), sign)

    def test_shapes_refuse_what_crosses(self):
        crossing = [SQUARE, SQUARE + (1, 1, 0)]
        self.assertRefuses("shapes: outlines must not cross each other, but outlines 0 and 1 do, near (4, 1); set "
                           "tolerance to allow small ones, or crossing to allow all", lambda: korvale.shapes(crossing))
        bow = [(1, 1), (3, 1), (1, 3), (3, 3)]
        self.assertRefuses("shapes: outline 1 must not cross itself, but it does near (2, 2); set tolerance "
                           "to allow small ones, or crossing to allow all", lambda: korvale.shapes([SQUARE, bow]))
        self.assertEqual(len(korvale.shapes([SQUARE, bow], crossing=True)), 1)
        self.assertEqual(len(korvale.shapes(crossing, crossing=True)), 1)
        self.assertRefuses("shapes: tolerance must be 0 or more, but it is -1",
                           lambda: korvale.shapes([SQUARE], tolerance=-1))

    def test_triangles_cover_a_shape_once(self):
        triangles = korvale.triangulate([SQUARE, HOLE[::-1]])
        points = numpy.vstack(korvale.outlines([SQUARE, HOLE[::-1]]))
        a, b, c = (points[triangles[:, k]] for k in range(3))
        areas = numpy.cross(b - a, c - a)[:, 2] / 2
        self.assertTrue((areas > 0).all())
        self.assertAlmostEqual(areas.sum(), 12, places=12)

    def test_says_what_it_refuses(self):
        self.assertRefuses("bevel: profile must have at least 2 steps, but it has 1",
                           lambda: korvale.bevel(SQUARE, [(0, 0)]))
        self.assertRefuses("bevel: profile must be steps, (S, 2), but its shape is (2, 3)",
                           lambda: korvale.bevel(SQUARE, [(0, 0, 0), (0, 1, 2)]))
        self.assertRefuses("tube: section must have at least 3 points, but it has 2",
                           lambda: korvale.tube([(0, 0), (1, 0)], [(0, 0), (1, 1)]))


class PathTest(RefusingTest):
    def test_flattens_and_carries_back(self):
        place = korvale.Transform.from_srt((1, 1, 1), (0.3, -0.2, 0.9), (5, 6, 7))
        outline = place(SQUARE)
        way = korvale.flatten(outline)
        flat = way.to_plane(outline)
        self.assertLess(abs(flat[:, 2]).max(), 1e-6)
        numpy.testing.assert_allclose(way.from_plane(flat), outline, atol=1e-6)
        self.assertRefuses("flatten: path must span a plane, but its points lie on one line or too close together",
                           lambda: korvale.flatten([(0, 0), (1, 1), (2, 2)], by_extremes=True))

    def test_frames_stand_at_the_points(self):
        path = numpy.array([(0, 0, 0), (1, 0, 0), (1, 1, 0), (1, 1, 1)], float)
        frames = korvale.frames(path)
        self.assertEqual(frames.shape, (4, 4, 4))
        numpy.testing.assert_array_equal(frames[:, :3, 3], path)
        half = math.sqrt(0.5)  # z points back along the path and halves the angle at a joint
        numpy.testing.assert_allclose(frames[:2, :3, 2], [(-1, 0, 0), (-half, -half, 0)], atol=1e-12)

    def test_frames_of_planar_loops_are_numbers(self):
        t = numpy.linspace(0, 2 * numpy.pi, 30, endpoint=False)
        loop = numpy.stack([numpy.cos(t), numpy.sin(t), 0.3 * numpy.cos(t)], axis=1)
        self.assertTrue(numpy.isfinite(korvale.frames(loop, closed=True)).all())


class ScatterTest(RefusingTest):
    def setUp(self):
        self.mesh = korvale.bevel(SQUARE, [(0, 0), (0, 4)])

    def test_gives_the_same_points_of_a_mesh_and_of_its_corners(self):
        vertices, triangles = self.mesh
        points = korvale.scatter(self.mesh, 500, seed=42).points
        corners = vertices[triangles]
        for given in (lambda: korvale.scatter((vertices, triangles), 500, seed=42),
                      lambda: korvale.scatter(vertices, 500, seed=42, triangles=triangles),
                      lambda: korvale.scatter(corners, 500, seed=42),
                      lambda: korvale.scatter(corners.reshape(-1, 9), 500, seed=42)):
            numpy.testing.assert_array_equal(given().points, points)
        self.assertFalse((korvale.scatter(self.mesh, 500, seed=43).points == points).all())

    def test_carries_attributes(self):
        vertices, triangles = self.mesh
        points, carried, _ = korvale.scatter(self.mesh, 100, seed=7, attributes=vertices)
        numpy.testing.assert_array_equal(points, carried)
        points, carried, _ = korvale.scatter(vertices[triangles], 100, seed=7, attributes=vertices[triangles])
        numpy.testing.assert_array_equal(points, carried)
        self.assertEqual(korvale.scatter(self.mesh, 100, seed=7, attributes=vertices[:, 0]).attributes.shape, (100, 1))
        self.assertIsNone(korvale.scatter(self.mesh, 100, seed=7).attributes)

    def test_takes_weights(self):
        normals = self.mesh.normals
        upwards = (normals[:, 2] > 0.5).astype(float)
        made = korvale.scatter(self.mesh, 500, seed=7, weights=upwards)
        self.assertTrue((abs(made.points[:, 2] - 4) < 1e-14).all())  # weights add up to 1 but for a rounding
        self.assertTrue((normals[made.triangles] == (0, 0, 1)).all())
        corners = self.mesh.vertices[self.mesh.triangles]
        self.assertEqual(korvale.scatter(corners, 500, seed=7, weights=upwards), made)
        self.assertEqual(korvale.scatter(self.mesh, 500, seed=7, weights=[1] * len(normals)),
                         korvale.scatter(self.mesh, 500, seed=7))
        prism = [(0, 0), (1, 0), (1, 1), (0, 1), (2, 0), (3, 0), (2, 1)]
        made = korvale.scatter((prism, [(0, 1, 2, 3), (4, 5, 6)]), 100, seed=7, weights=[1, 0])
        self.assertEqual((made.points[:, 0].max() < 1, set(made.triangles)), (True, {0, 1}))

    def test_tells_of_progress(self):
        told = []
        made = korvale.scatter(self.mesh, 10000000, seed=7, progress=told.append)
        self.assertEqual((told[-1], told == sorted(told)), (1000, True))
        self.assertEqual(made.points.shape, (10000000, 3))
        with self.assertRaisesRegex(korvale.Error, "scatter: progress must go on, but it has stopped the work"):
            korvale.scatter(self.mesh, 10000000, seed=7, progress=lambda done: False)

    def test_results_with_arrays_compare_by_one_truth(self):
        grid, relaxer = korvale.RayGrid(self.mesh), korvale.Relaxer(self.mesh).keep("lengths")
        above = self.mesh.vertices + (0.3, 0.2, 9)
        for make in (lambda k: korvale.scatter(self.mesh, 10 * k, seed=7, attributes=self.mesh.vertices),
                     lambda k: korvale.scatter(self.mesh, 10, seed=k),
                     lambda k: grid.cast(above * k, (0, 0, -1), counts=False),
                     lambda k: relaxer.run(above * k, steps=5),
                     lambda k: korvale.take_apart(korvale.from_srt(SQUARE * k + 1, SQUARE, SQUARE))):
            result = make(1)
            self.assertIs(result == make(1), True)
            self.assertIs(result != make(1), False)
            self.assertIs(result == make(2), False)
            self.assertIs(result != make(2), True)
            self.assertIs(result == tuple(make(1)), True)
            self.assertIs(tuple(make(1)) != result, False)
            self.assertIs(result == None or result == result[:1] or result == list(result), False)  # noqa: E711
            self.assertEqual(copy.deepcopy(result), result)
            with self.assertRaisesRegex(TypeError, "unhashable"):
                hash(result)
        with self.assertRaisesRegex(TypeError, "unhashable"):
            hash(korvale.offset(SQUARE, 1))

    def test_says_what_it_refuses(self):
        self.assertRefuses("scatter: mesh must have at least 1 triangle, but there is none",
                           lambda: korvale.scatter(numpy.zeros((0, 9)), 5, seed=1))
        self.assertRefuses("scatter: attributes must be (8,) or (8, k), a row a vertex, but its shape is (9,)",
                           lambda: korvale.scatter(self.mesh, 5, seed=1, attributes=numpy.zeros(9)))
        self.assertRefuses("scatter: attributes must be (12, 3) or (12, 3, k), a row a corner, but its shape is (12,)",
                           lambda: korvale.scatter(self.mesh.vertices[self.mesh.triangles], 5, seed=1,
                                                   attributes=numpy.zeros(12)))
        self.assertRefuses("scatter: weights must be (12,), one a triangle, but its shape is (8,)",
                           lambda: korvale.scatter(self.mesh, 5, seed=1, weights=range(8)))
        self.assertRefuses("scatter: weights must be finite and 0 or more, but its row 1 is -1",
                           lambda: korvale.scatter(self.mesh, 5, seed=1, weights=[1, -1] * 6))
        self.assertRefuses("scatter: weights must be above 0 for a triangle with an area, but it is for none",
                           lambda: korvale.scatter(self.mesh, 5, seed=1, weights=numpy.zeros(12)))
        self.assertRefuses("scatter: count must be 0 to 2147483647, but it is -1",
                           lambda: korvale.scatter(self.mesh, -1, seed=1))
        self.assertEqual(korvale.scatter(self.mesh, 0, seed=1).points.shape, (0, 3))


if __name__ == "__main__":
    unittest.main()
