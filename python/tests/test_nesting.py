"""Outlines sorted into shapes, against what Shapely finds covers what."""

import math
import random
import unittest

import korvale
import numpy

try:
    import shapely.geometry as shapely
    from shapely.ops import unary_union
except ImportError:
    shapely = None

SIDES = ((1, 0), (0, 1), (-1, 0), (0, -1))


def outline_of(cells):
    """The outline of some squares of a lattice, counter-clockwise; None where it has holes or meets itself."""
    after = {}
    for x, y in cells:
        corners = (x, y), (x + 1, y), (x + 1, y + 1), (x, y + 1)
        for k, (a, beside) in enumerate(zip(corners, ((x, y - 1), (x + 1, y), (x, y + 1), (x - 1, y)))):
            if beside not in cells:
                if a in after:
                    return None
                after[a] = corners[(k + 1) % 4]
    outline = [min(after)]
    while after[outline[-1]] != outline[0]:
        outline.append(after[outline[-1]])
    return outline if len(outline) == len(after) else None


def grown(rng, room, size):
    """Some squares that hang together."""
    cells = {rng.choice(sorted(room))}
    for _ in range(3 * size):
        if len(cells) < size:
            x, y = rng.choice(sorted(cells))
            dx, dy = rng.choice(SIDES)
            if (x + dx, y + dy) in room:
                cells.add((x + dx, y + dy))
    return cells


def nest(rng, room, depth, outlines):
    """Adds outlines inside of some squares, side by side, and others inside of these."""
    for _ in range(rng.randrange(1, 3)):
        if not room or depth == 0:
            return
        cells = grown(rng, room, rng.randrange(len(room) // 3 + 1, len(room) + 1))
        outline = outline_of(cells)
        if outline is None:
            continue
        outlines.append(outline)
        room = room - cells
        nest(rng, cells, depth - 1, outlines)


def drawing(rng):
    """Outlines that touch each other at points and along edges, some twice, in any order, direction and slant."""
    outlines = []
    nest(rng, {(x, y) for x in range(5) for y in range(5)}, 6, outlines)
    outlines += rng.sample(outlines, rng.randrange(min(3, len(outlines) + 1)))
    rng.shuffle(outlines)
    slant = rng.choice(((1, 0, 0, 1), (1, 2, -1, 1), (3, 1, 1, -2)))
    for k, outline in enumerate(outlines):
        if rng.random() < 0.5:  # no points on sides
            outline = [b for a, b, c in zip([outline[-1], *outline], outline, [*outline[1:], outline[0]])
                       if (b[0] - a[0]) * (c[1] - b[1]) != (b[1] - a[1]) * (c[0] - b[0])]
        first = rng.randrange(len(outline))
        outline = outline[first:] + outline[:first]
        if rng.random() < 0.5:
            outline.reverse()
        outlines[k] = [(slant[0] * x + slant[1] * y, slant[2] * x + slant[3] * y, float(k)) for x, y in outline]
    return outlines


def by_shapely(outlines):
    """The numbers of outer outlines with those of their holes."""
    polygons = {}  # by number, with their bounds
    for k, outline in enumerate(outlines):
        polygon = shapely.Polygon([point[:2] for point in outline])
        bounds = polygon.bounds
        if not any(bounds == of_other and polygon.equals(other) for other, of_other in polygons.values()):
            polygons[k] = polygon, bounds

    def is_around(a, b):
        (outer, (left, low, right, high)), (inner, bounds) = polygons[a], polygons[b]
        return (a != b and left <= bounds[0] and low <= bounds[1] and right >= bounds[2] and high >= bounds[3]
                and outer.covers(inner))

    around = {k: [other for other in polygons if is_around(other, k)] for k in polygons}
    shapes = {k: {k} for k in around if len(around[k]) % 2 == 0}
    for k in around:
        if k not in shapes:
            shapes[min(shapes.keys() & around[k], key=lambda other: polygons[other][0].area)].add(k)
    return shapes


@unittest.skipIf(shapely is None, "python3-shapely is not installed")
class NestingTest(unittest.TestCase):
    def test_is_what_shapely_finds(self):
        rng = random.Random(1701)
        total = 0
        for case in range(10000):
            outlines = drawing(rng)
            shapes = {int(shape[0][0, 2]): {int(ring[0, 2]) for ring in shape} for shape in korvale.shapes(outlines)}
            self.assertEqual(shapes, by_shapely(outlines), f"case {case}: {outlines}")
            total += len(outlines)
        self.assertGreater(total, 150000)

    def test_refuses_what_overlaps_in_shapely(self):
        rng = random.Random(1702)
        refused = 0
        for case in range(3000):
            outlines = []
            while len(outlines) < rng.randrange(2, 5):
                room = {(x + rng.randrange(3), y + rng.randrange(3)) for x in range(3) for y in range(3)}
                outline = outline_of(grown(rng, room, rng.randrange(1, 7)))
                if rng.random() < 0.3:
                    outline = [(rng.randrange(5), rng.randrange(5)) for _ in range(3)]
                if outline and shapely.Polygon(outline).area > 0:
                    outlines.append(outline)
            polygons = [shapely.Polygon(outline) for outline in outlines]
            overlap = any(a.overlaps(b) for k, a in enumerate(polygons) for b in polygons[:k])
            try:
                korvale.shapes(outlines)
                crossing = False
            except korvale.Error:
                crossing = True
            self.assertEqual(crossing, overlap, f"case {case}: {outlines}")
            refused += crossing
        self.assertTrue(500 < refused < 2500, refused)

    def test_double_contours_are_one_where_shapely_finds_them_near(self):
        rng = random.Random(1703)
        told = {"one": 0, "refused": 0, "two": 0}
        for case in range(1500):
            tolerance = rng.choice((0.005, 0.02))
            first = outline_of(grown(rng, {(x, y) for x in range(4) for y in range(4)}, rng.randrange(1, 9)))
            if first is None:
                continue
            first = turned(first, rng.choice((0, rng.random())))
            second = doubled(rng, first, tolerance)
            a, b = (shapely.Polygon(outline).exterior for outline in (first, second))
            is_one = near(a, b, 0.99 * tolerance)
            may_be_one = near(a, b, 2.01 * tolerance)
            try:
                shapes = korvale.shapes([first, second], tolerance=tolerance)
            except korvale.Error:
                self.assertFalse(is_one, f"case {case}: {first}, {second}")
                told["refused"] += 1
                continue
            one = sum(map(len, shapes)) == 1
            self.assertTrue(one >= is_one, f"case {case} is one: {first}, {second}")
            self.assertTrue(one <= may_be_one, f"case {case} is not one: {first}, {second}")
            self.assertEqual(len(shapes), 1, f"case {case} overlaps: {first}, {second}")
            told["one" if one else "two"] += 1
        self.assertTrue(all(count > 20 for count in told.values()), told)

    def test_what_overlaps_within_the_tolerance_is_joined(self):
        rng = random.Random(1704)
        told = {"joined": 0, "refused": 0, "filled": 0}
        for case in range(1500):
            tolerance = rng.choice((1e-4, 0.005, 0.02))
            angle = rng.choice((0, 6 * rng.random()))
            outlines = [moved(rng, turned([(x, y) for x, y, _ in outline], angle), 0.34 * tolerance)
                        for outline in drawing(rng)]
            try:
                shapes = korvale.shapes(outlines, tolerance=tolerance)
            except korvale.Error:
                told["refused"] += 1
                continue
            told["joined"] += 1
            for shape in shapes:
                outer, *holes = (shapely.Polygon(ring[:, :2]) for ring in shape)
                self.assertTrue(all(ring.is_valid for ring in (outer, *holes)), f"case {case}")
                expected = outer.difference(unary_union(holes)).area if holes else outer.area
                corners = numpy.concatenate(shape)[korvale.triangulate(shape)]
                a, b = corners[:, 1] - corners[:, 0], corners[:, 2] - corners[:, 0]
                twice = a[:, 0] * b[:, 1] - a[:, 1] * b[:, 0]
                self.assertAlmostEqual(abs(twice).sum() / 2, expected, 8, f"case {case}")
                self.assertAlmostEqual(abs(twice.sum()) / 2, expected, 8, f"case {case}")
                if expected > 1e-9:
                    korvale.bevel(shape, [(0, 0), (0, 1)])
                    continue
                told["filled"] += 1
                with self.assertRaisesRegex(korvale.Error, "but the holes fill it$|but it goes round all of it$"):
                    korvale.bevel(shape, [(0, 0), (0, 1)])
        self.assertLess(told["refused"], 30, told)
        self.assertGreater(told["filled"], 0, told)


def moved(rng, outline, far):
    """An outline with each of its corners moved a little, and points on its sides."""
    points = []
    for (x, y), (next_x, next_y) in zip(outline, outline[1:] + outline[:1]):
        for share in (0, *sorted(rng.random() for _ in range(rng.choice((0, 0, 1, 2))))):
            points.append((x + share * (next_x - x) + rng.uniform(-far, far),
                           y + share * (next_y - y) + rng.uniform(-far, far)))
    return points


def turned(outline, angle):
    c, s = math.cos(angle), math.sin(angle)
    return [(c * x - s * y, s * x + c * y) for x, y in outline]


def doubled(rng, outline, tolerance):
    """An outline again, all or each of its corners moved a little, with more points, from another point on."""
    far = rng.choice((0.3, 0.6, 0.64, 1, 1.5, 3)) * tolerance
    move = rng.uniform(-far, far), rng.uniform(-far, far)
    each = rng.random() < 0.3
    points = []
    for (x, y), (next_x, next_y) in zip(outline, outline[1:] + outline[:1]):
        if each:
            move = rng.uniform(-far, far), rng.uniform(-far, far)
        for share in (0, *sorted(rng.random() for _ in range(rng.randrange(3)))):
            points.append((x + share * (next_x - x) + move[0], y + share * (next_y - y) + move[1]))
    first = rng.randrange(len(points))
    points = points[first:] + points[:first]
    return points[::rng.choice((-1, 1))]


def near(a, b, distance):
    """Whether two lines are nowhere farther from each other than that."""
    return a.buffer(distance, 64).covers(b) and b.buffer(distance, 64).covers(a)


if __name__ == "__main__":
    unittest.main()
