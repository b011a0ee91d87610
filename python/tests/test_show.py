"""Tests of results as pictures and as objects of Shapely."""

import re
import unittest
from xml.etree import ElementTree

import korvale
import numpy
from test_shapes import CUT, HOLE, SQUARE

RING = korvale.band(SQUARE, 1, both_sides=True, closed=True)


class PictureTest(unittest.TestCase):
    def picture(self, result):
        """The width, the height and the elements of a picture that a reader of XML takes."""
        svg = ElementTree.fromstring(result._repr_svg_())
        return svg.get("width"), svg.get("height"), [(e.tag.rpartition("}")[2], dict(e.attrib)) for e in svg]

    def test_of_a_border_is_a_closed_path(self):
        width, height, ((tag, path),) = self.picture(korvale.offset(SQUARE * (2, 1, 1), 0))
        self.assertEqual((width, height, tag), ("320", "168", "path"))
        self.assertEqual(path["d"], "M8.0,160.0L312.0,160.0L312.0,8.0L8.0,8.0Z")

    def test_has_the_holes(self):
        for result in (korvale.offset([SQUARE, HOLE], 0.1), RING):
            _, _, ((_, path),) = self.picture(result)
            self.assertEqual((path["d"].count("M"), path["fill-rule"]), (2, "evenodd"))

    def test_shows_that_nothing_is_left(self):
        for result in (korvale.offset(SQUARE, -3), korvale.offset([SQUARE, HOLE], -3),
                       korvale.offset(SQUARE, -3, keep_vertices=False)):
            _, _, ((_, path),) = self.picture(result)
            self.assertEqual(path["fill"], "none")

    def test_is_seen_where_an_outline_reaches_farthest(self):
        upright = SQUARE[:, [2, 0, 1]] * (1, 2, 1)  # in the plane of y and z
        self.assertEqual(self.picture(korvale.offset(upright, 0))[:2], ("320", "168"))

    def test_of_a_mesh_shows_what_faces_the_eye(self):
        cube = korvale.bevel(SQUARE, [(0, 0), (0, 4)])
        _, _, triangles = self.picture(cube)
        self.assertEqual([tag for tag, _ in triangles], ["polygon"] * 6)
        self.assertEqual(len({triangle["fill"] for _, triangle in triangles}), 3)

    def test_of_many_outlines_shows_those_that_are_left(self):
        waist = [(0, 0), (9, 0), (11, 4), (13, 0), (22, 0), (22, 9), (13, 9), (11, 5), (9, 9), (0, 9)]
        for result, count, fill in ((korvale.offset(waist, -1, pieces=True), 2, "#4c78a8"),
                                    (korvale.offset(waist, -9, pieces=True), 0, "none"),
                                    (korvale.offset_many([SQUARE, waist, waist], -2.5), 2, "#4c78a8"),
                                    (korvale.offset_many([SQUARE], -9), 1, "none"),
                                    (korvale.offset_many([], 1), 0, "none")):
            _, _, ((_, path),) = self.picture(result)
            self.assertEqual((path["d"].count("M"), path["fill"]), (count, fill))
        self.assertIsNone(korvale.offset_many([SQUARE] * 5001, 1)._repr_svg_())

    def test_keeps_pages_small(self):
        t = numpy.linspace(0, 2 * numpy.pi, 200000, endpoint=False)
        border = korvale.offset(numpy.stack([numpy.cos(t), numpy.sin(t)], axis=1) * 1e6, 1, split=False)
        self.assertLess(len(border._repr_svg_()), 300000)
        self.assertIsNone(korvale.tube(SQUARE[:2], border.points[::100])._repr_svg_())

    def test_has_numbers_only(self):
        huge = korvale.offset(SQUARE * 1e300, 0)
        self.assertEqual(re.findall("nan|inf", huge._repr_svg_()), [])
        self.assertIn("<svg", korvale.band([(1, 2)], 1)._repr_svg_())


class ShapelyTest(unittest.TestCase):
    def setUp(self):
        try:
            import shapely.geometry  # noqa: F401
        except ImportError:
            self.skipTest("python3-shapely is not installed")

    def test_takes_borders(self):
        polygon = korvale.offset(SQUARE, 0.5).to_shapely()
        self.assertEqual((polygon.area, polygon.is_valid, polygon.has_z), (25, True, False))
        cut = korvale.offset(CUT, -1).to_shapely()  # has lost a corner
        self.assertEqual((len(cut.exterior.coords), cut.is_valid), (5, True))
        self.assertTrue(korvale.offset(SQUARE, -2.5).to_shapely().is_empty)
        self.assertTrue(korvale.offset(SQUARE, 1, height=2).to_shapely().has_z)

    def test_takes_borders_with_holes(self):
        plate = korvale.offset([SQUARE, HOLE], 0.25).to_shapely()
        self.assertEqual((plate.area, len(plate.interiors)), (4.5 ** 2 - 1.5 ** 2, 1))
        self.assertEqual(len(korvale.offset([SQUARE, HOLE], 1.5).to_shapely().interiors), 0)  # it has closed
        self.assertTrue(korvale.offset([SQUARE, HOLE], -2.5).to_shapely().is_empty)

    def assertRefuses(self, text, result):
        with self.assertRaises(korvale.Error) as caught:
            result.to_shapely()
        self.assertEqual(str(caught.exception), text)

    def test_refuses_borders_that_are_no_polygon(self):
        self.assertRefuses("Offsets.to_shapely: border 1 must lie inside border 0, but it does not",
                           korvale.offset([SQUARE, HOLE], -0.75))  # 2.5 wide, and 3.5
        self.assertRefuses("Offsets.to_shapely: border 0 and border 1 must not meet each other, but they do at "
                           "(3.5, 0.5)", korvale.offset([SQUARE, HOLE], -0.5))
        comb = [(0, 0), (7, 0), (7, 4), (6, 4), (6, 2), (5, 2), (5, 4), (3, 4), (3, 2), (1, 2), (1, 4), (0, 4)]
        self.assertAlmostEqual(korvale.offset(comb, -0.4).to_shapely().area, 10.64, places=9)
        self.assertRefuses("Offset.to_shapely: border must not meet itself, but it does at (6.5, 1.5)",
                           korvale.offset(comb, -0.5))  # two of its teeth have come to nothing

    def test_takes_bands_with_points_that_share_a_place(self):
        random = numpy.random.default_rng(0)
        for number in range(200):
            wide, narrow = random.uniform(8.2, 12), random.uniform(0.1, 7.8)
            line = [(0, wide), (160, narrow), (160, 0), (0, 0)] + random.integers(10 ** 5, 10 ** 7, 2)
            band = korvale.band(line, 4, closed=True, both_sides=True)
            self.assertIsNone(band.crossing)
            self.assertTrue(band.to_shapely().is_valid, number)

    def test_refuses_upright_planes(self):
        sees_nothing = "must not lie in an upright plane, but it does: Shapely sees x and y alone, so flatten it"
        self.assertRefuses(f"Offset.to_shapely: border {sees_nothing}", korvale.offset(SQUARE[:, [0, 2, 1]], 1))
        self.assertRefuses(f"Offsets.to_shapely: border 0 {sees_nothing}",
                           korvale.offset([SQUARE[:, [2, 0, 1]], HOLE[:, [2, 0, 1]]], 0.25))
        turned = numpy.array([(0.6, 0.8, 0), (0, 0, 1), (0.8, -0.6, 0)])
        wall = korvale.band(numpy.array([(0, 0, 0), (0, 4, 0), (3, 4, 0)]) @ turned, 1, both_sides=True)
        self.assertRefuses(f"Band.to_shapely: band {sees_nothing}", wall)
        flat = korvale.flatten(wall.outline).to_plane(wall.outline)
        from shapely.geometry import Polygon
        self.assertAlmostEqual(Polygon(flat[:, :2]).area, 14, places=9)

    def test_keeps_the_points_of_joins_that_happen_to_be_as_many_as_vertices(self):
        outline = [(0.9, 0.6), (-0.98, 0.49), (-0.6, 0.1), (-1.98, -1.3)]
        border = korvale.offset(outline, -0.21, join="bevel")
        self.assertEqual(len(border.points), len(border.removed))
        self.assertTrue(border.removed.any())
        self.assertEqual(border.to_shapely().exterior.coords[:-1], [tuple(point) for point in border.xy.tolist()])

    def test_gives_valid_polygons_or_none(self):
        valid, refused = 0, 0
        for number in range(600):
            generator = numpy.random.default_rng(number)

            def ring(radius, centre, on_lattice):
                angles = numpy.sort(generator.uniform(0, 6.28, generator.integers(4, 12)))
                reach = radius * generator.uniform(0.4, 1, len(angles))
                points = centre + numpy.column_stack([reach * numpy.cos(angles), reach * numpy.sin(angles)])
                return numpy.round(points) if on_lattice else points

            on_lattice = number % 2 == 0
            outline = [ring(12, (0, 0), on_lattice)]
            outline += [ring(3, generator.uniform(-4, 4, 2), on_lattice) for _ in range(number % 4)]
            for distance in (-0.25, -0.5, -1, -2, 0.5, 1, 3):
                try:
                    borders = korvale.offset(outline if len(outline) > 1 else outline[0], distance)
                except korvale.Error:
                    continue  # points on one line
                try:
                    polygon = borders.to_shapely()
                except korvale.Error as error:
                    self.assertRegex(str(error), r"^Offsets?.to_shapely: border.* must (not meet|lie inside border 0)")
                    refused += 1
                    continue
                self.assertTrue(polygon.is_valid, (number, distance))
                self.assertEqual(polygon.area > 0, not borders.collapsed, (number, distance))
                valid += 1
        self.assertGreater(valid, 1000)
        self.assertGreater(refused, 500)

    def test_takes_bands(self):
        self.assertEqual(korvale.band([(0, 0), (10, 0)], 1, both_sides=True).to_shapely().area, 20)
        for distance in (1, -1):
            ring = korvale.band(SQUARE, distance, both_sides=True, closed=True).to_shapely()
            self.assertAlmostEqual(ring.area, 36 - 4, places=9)

    def test_takes_rings_without_room_inside(self):
        inner = korvale.band(SQUARE, -3, closed=True)
        self.assertTrue(inner.collapsed)
        self.assertEqual((inner.to_shapely().area, len(inner.to_shapely().interiors)), (16, 0))
        both = korvale.band(SQUARE, 3, both_sides=True, closed=True)
        self.assertEqual((len(both.to_shapely().interiors), len(korvale.outlines(both))), (0, 1))
        self.assertTrue(korvale.band([(1, 2), (1, 2)], 3).to_shapely().is_empty)

    def test_names_what_was_called(self):
        with self.assertRaisesRegex(korvale.Error, "^Band.to_shapely: band must not meet itself, but its edges from "
                                                   "points 0 and 3 do$"):
            korvale.band([(0, 0), (10, 0), (10, 3), (4, 3), (4, -5)], 1, both_sides=True).to_shapely()
        bow = korvale.band([(0, 0), (4, 4), (4, 0), (0, 4)], 1, both_sides=True, closed=True)
        with self.assertRaisesRegex(korvale.Error, "^bevel: outlines must not cross each other, but "):
            korvale.bevel(bow, [(0, 0), (0, 1)])

    def test_goes_there_and_back(self):
        plate = korvale.offset([SQUARE, HOLE], 0.25)
        self.assertEqual(korvale.offset(plate.to_shapely(), 0.5), korvale.offset(plate, 0.5))


def noisy_track(generator):
    """A walk that a receiver noted, with stops and, now and then, a loop or a point written twice."""
    track, at, heading = [], numpy.zeros(2), generator.uniform(0, 6)
    for _ in range(generator.integers(2, 5)):
        for _ in range(generator.integers(5, 20)):
            heading += generator.uniform(-0.15, 0.15)
            at = at + 6 * numpy.array([numpy.cos(heading), numpy.sin(heading)])
            track.append(at + generator.normal(0, 0.1, 2))
        track.extend(at + generator.uniform(0.3, 1.5) * generator.normal(0, 1, (generator.integers(3, 40), 2)))
        if generator.integers(0, 4) == 0:
            track.append(track[-1])
    return numpy.array(track)


class BandTest(unittest.TestCase):
    def test_that_meets_itself_nowhere_is_a_valid_polygon(self):
        try:
            import shapely.geometry  # noqa: F401
        except ImportError:
            self.skipTest("python3-shapely is not installed")
        without_crossing = 0
        for number in range(1500):
            generator = numpy.random.default_rng(number)
            track = noisy_track(generator)
            if number % 3 == 0:
                track = numpy.column_stack([track, numpy.linspace(0, 30, len(track))])
            if number % 5 == 0:
                track = 1e-5 * (track + 1e6)
            distance = generator.uniform(0.5, 8) * (1e-5 if number % 5 == 0 else 1)
            band = korvale.band(track, distance, both_sides=True, closed=number % 4 == 0,
                                up=(0, 0, 1) if number % 3 == 0 else None)
            if band.crossing is None:
                without_crossing += 1
                self.assertTrue(band.to_shapely().is_valid, number)
        self.assertGreater(without_crossing, 900)


    def test_knows_its_outlines(self):
        self.assertEqual((RING.closed, [len(outline) for outline in RING.outlines]), (True, [4, 4]))
        open_band = korvale.band(SQUARE, 1)
        self.assertEqual((open_band.closed, [len(outline) for outline in open_band.outlines]), (False, [8]))

    def test_of_a_closed_line_is_a_shape(self):
        for distance in (1, -1):
            ring = korvale.band(SQUARE, distance, both_sides=True, closed=True)
            self.assertEqual([len(outline) for outline in korvale.outlines(ring)], [4, 4])
            self.assertAlmostEqual(korvale.bevel(ring, [(0, 0), (0, 1)]).volume, 32, places=9)


if __name__ == "__main__":
    unittest.main()
