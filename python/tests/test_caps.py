"""Tests of caps of bands, beside GEOS."""

import unittest

import korvale
import numpy
from shapely.geometry import CAP_STYLE, JOIN_STYLE, LineString, Point
from shapely.ops import unary_union

STRAIGHT = [(0, 0), (4, 0)]


def random_line(random):
    """A line of edges of 2 to 5 that turns by less than 1.2 radians a point, and does not come near itself."""
    while True:
        headings = numpy.cumsum([random.uniform(0, 6), *random.uniform(-1.2, 1.2, int(random.integers(0, 8)))])
        steps = random.uniform(2, 5, len(headings))[:, None] * [(numpy.cos(a), numpy.sin(a)) for a in headings]
        line = numpy.vstack([[(0, 0)], numpy.cumsum(steps, axis=0)])
        edges = [LineString(line[i : i + 2]) for i in range(len(headings))]
        if all(edge.distance(other) > 1.5 for i, edge in enumerate(edges) for other in edges[i + 2 :]):
            return line


def buffer(line, distance, cap=CAP_STYLE.flat, **more):
    return LineString(line).buffer(distance, cap_style=cap, join_style=JOIN_STYLE.mitre, mitre_limit=9, **more)


class CapsTest(unittest.TestCase):
    def test_square_ones_have_the_area_of_geos(self):
        random = numpy.random.default_rng(11)
        for _ in range(200):
            line, width = random_line(random), random.uniform(0.05, 0.6)
            band = korvale.band(line, width, both_sides=True, cap="square", miter_limit=9)
            other = buffer(line, width, CAP_STYLE.square)
            self.assertIsNone(band.crossing)
            polygon = band.to_shapely()
            self.assertLess(polygon.symmetric_difference(other).area, 1e-9 * other.area)

    def test_round_ones_are_halves_of_the_polygon_around_the_circle_that_the_tolerance_wants(self):
        random = numpy.random.default_rng(12)
        for _ in range(200):
            line, width = random_line(random), random.uniform(0.05, 0.6)
            tolerance = width * random.uniform(0.001, 0.1)
            band = korvale.band(line, width, both_sides=True, cap="round", tolerance=tolerance, miter_limit=9)
            polygon, flat = band.to_shapely(), korvale.band(line, width, both_sides=True, miter_limit=9).to_shapely()
            corners = len(band) - 2 * len(line)  # of both caps
            self.assertLess(width / numpy.cos(numpy.pi / corners), width + tolerance)
            self.assertGreater(width / numpy.cos(2 * numpy.pi / corners), width + tolerance)
            area = flat.area + corners * width**2 * numpy.tan(numpy.pi / corners)
            self.assertLess(abs(polygon.area - area), 1e-13 * area)
            for end in (line[0], line[-1]):
                circle = Point(end).buffer(width, resolution=64)
                self.assertLess(circle.difference(polygon).area, 1e-9 * circle.area)

    def test_flat_ones_of_one_side_have_the_area_of_geos(self):
        random = numpy.random.default_rng(13)
        for _ in range(200):
            line, width = random_line(random), random.uniform(0.05, 0.6) * random.choice([-1, 1])
            polygon = korvale.band(line, width, miter_limit=9).to_shapely()
            other = buffer(line, -width, single_sided=True)
            self.assertLess(polygon.symmetric_difference(other).area, 1e-9 * other.area)

    def test_both_sides_are_one_side_and_the_other(self):
        for cap in ("square", "round"):
            sides = [korvale.band(STRAIGHT, d, cap=cap).to_shapely() for d in (1, -1)]
            both = korvale.band(STRAIGHT, 1, both_sides=True, cap=cap).to_shapely()
            self.assertLess(unary_union(sides).symmetric_difference(both).area, 1e-12)
            self.assertLess(sides[0].intersection(sides[1]).area, 1e-12)

    def test_sides_lie_where_they_do_without_caps(self):
        line = [(0, 0), (4, 0), (8, 3)]
        flat = korvale.band(line, 0.5, both_sides=True)
        for cap in ("square", "round"):
            band = korvale.band(line, 0.5, both_sides=True, cap=cap)
            self.assertEqual(band.border.tolist(), flat.border.tolist())
            self.assertEqual(band.other_side.tolist(), flat.other_side.tolist())
            self.assertEqual(len(band.sources), len(band.outline))
            self.assertEqual(korvale.carry(numpy.arange(3), band).tolist(), band.sources.tolist())
            self.assertNotEqual(band, flat)
        self.assertEqual(len(korvale.band(line, 1, closed=True, cap="round").outline), 6)

    def test_refuses_what_is_no_cap(self):
        with self.assertRaisesRegex(korvale.Error, 'band: cap must be "flat", "square" or "round", but it is .butt.'):
            korvale.band(STRAIGHT, 1, cap="butt")
        with self.assertRaisesRegex(korvale.Error, "band: tolerance must be 0 or more, but it is -1"):
            korvale.band(STRAIGHT, 1, cap="round", tolerance=-1)


if __name__ == "__main__":
    unittest.main()
