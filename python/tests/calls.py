"""A call of each public function and method, on small input, and one that each refuses."""

import copy
import pickle

import korvale
import numpy

SQUARE = numpy.array([(0, 0, 0), (4, 0, 0), (4, 4, 0), (0, 4, 0)], float)
HOLE = SQUARE / 2 + (1, 1, 0)
LINE = SQUARE[:3].copy()
SECTION = SQUARE / 4 - (0.5, 0.5, 0)
CUBE = korvale.bevel(SQUARE, [(0, 0), (0, 4)])
VERTICES, TRIANGLES = CUBE
CORNERS = VERTICES[TRIANGLES]
MATRICES = korvale.from_srt((1, 2, 3), (0.1, 0.2, 0.3), SQUARE)
PLACE = korvale.Transform(MATRICES[1])
GRID = korvale.RayGrid(CUBE)
RELAXER = korvale.Relaxer(CUBE).keep("lengths").keep("area", 0.1)
EQUATIONS = korvale.Equations("y x")
EQUATIONS.function("TWICE", lambda x: 2 * x)
EQUATIONS.add("y = SIN(x) * TWICE(x)")
EQUATIONS.add("y = SIN(x) + RAND")
X = numpy.arange(5.0)
BORDER = korvale.offset(SQUARE, 1)
BAND = korvale.band(LINE, 1)
DOWN = (0.0, 0.0, -1.0)
ABOVE = VERTICES + (0.3, 0.2, 9)


def made_equations():
    equations = korvale.Equations("y x")
    equations.declare("r", reserved=True)
    equations.function("ZERO", lambda: 0)
    equations.add("y = RAND + ZERO + SIN(1)")
    equations.simplify()
    equations.make_table("RAND", 3)
    equations.fill_table("RAND", equations.table("RAND"))
    equations.table_position = 1
    return equations


def twins(value):
    return copy.copy(value) == copy.deepcopy(value) == pickle.loads(pickle.dumps(value)) == value, repr(value)


# By the name in the package or of a class there.
CALLS = {
    "offset": lambda: korvale.offset(SQUARE, 0.5),
    "offset of a list": lambda: korvale.offset(SQUARE.tolist(), 0.5),
    "offset with a hole": lambda: korvale.offset([SQUARE, HOLE], 0.5),
    "Offset": lambda: (BORDER.points, BORDER.xy, BORDER.removed, BORDER.merged_into, list(BORDER), BORDER[1]),
    "Offset, copied": lambda: twins(BORDER),
    "Offsets": lambda: twins(korvale.offset([SQUARE, HOLE], 0.5)),
    "offset with joins": lambda: (twins(korvale.offset(SQUARE, 1, join="round")), korvale.offset(SQUARE, 1, join=[
        "bevel", "miter", "round", "miter"]).sources, korvale.offset([SQUARE, HOLE], 1, miter_limit=1)),
    "offset_many": lambda: korvale.offset_many([SQUARE, HOLE, [*SQUARE, SQUARE[0]]], [0.5, -0.5, 1]),
    "offset_many with starts": lambda: korvale.offset_many(VERTICES, 0.5, starts=[0, 4, 8]),
    "Borders": lambda: (twins(korvale.offset_many([SQUARE], 1)), korvale.offset_many([SQUARE], 1).singly()),
    "offset, all pieces": lambda: korvale.offset(SQUARE, -0.5, pieces=True),
    "offset, many distances": lambda: korvale.offset(SQUARE, [-0.5, 1], pieces=True),
    "Rings": lambda: (twins(korvale.offset(SQUARE, 1, pieces=True)), korvale.offset(SQUARE, 1, pieces=True).singly()),
    "outlines": lambda: korvale.outlines([SQUARE, HOLE]),
    "shapes": lambda: korvale.shapes([SQUARE, HOLE]),
    "band": lambda: korvale.band(LINE, 1, both_sides=True, up=(0, 0, 1)),
    "carry": lambda: (korvale.carry(X[:3], BAND), korvale.carry(X[:4], BORDER, mix=True)),
    "thin": lambda: korvale.thin(LINE, 1),
    "band with caps": lambda: twins(korvale.band(LINE, 1, both_sides=True, cap="round")),
    "Band": lambda: (BAND.outline, BAND.border, BAND.removed, BAND.crossing, twins(BAND)),
    "bevel": lambda: korvale.bevel([SQUARE, HOLE], [(0, 0), (-0.25, 1)]),
    "tube": lambda: korvale.tube(LINE, SECTION),
    "Mesh": lambda: twins(korvale.Mesh(VERTICES, TRIANGLES)),
    "Mesh, measured": lambda: (CUBE.normals, CUBE.areas, CUBE.bounds, CUBE.volume),
    "triangulate": lambda: korvale.triangulate([SQUARE, HOLE]),
    "flatten": lambda: korvale.flatten(SQUARE),
    "Flattening": lambda: korvale.flatten(SQUARE, closed=False, by_extremes=True).to_plane,
    "frames": lambda: korvale.frames(LINE),
    "scatter": lambda: korvale.scatter(CUBE, 5, seed=1, attributes=VERTICES),
    "Scattered": lambda: korvale.scatter(CORNERS, 5, seed=1, attributes=CORNERS).attributes,
    "RayGrid": lambda: twins(korvale.RayGrid(CUBE)),
    "RayGrid of corners": lambda: korvale.RayGrid(CORNERS, cells=(1, 2, 3)).faces,
    "RayHit": lambda: (GRID.nearest((1, 2, 9), DOWN), GRID.hits((1, 2, 9), DOWN), GRID.count((1, 2, 9), DOWN)),
    "Cast": lambda: GRID.cast(ABOVE, DOWN),
    "Relaxer": lambda: twins(korvale.Relaxer(CUBE).keep("volume").hold([0])),
    "Relaxer of edges": lambda: korvale.Relaxer(SQUARE, edges=[(0, 1)]).keep("lengths").edges,
    "Relaxation": lambda: (RELAXER.step(VERTICES * 1.5), RELAXER.run(VERTICES * 1.5, steps=2),
                           RELAXER.run(VERTICES * 1.5, steps=2, progress=lambda *told: None)),
    "Relaxer, looked at": lambda: (RELAXER.energy(ABOVE), RELAXER.forces(ABOVE), RELAXER.kept, len(RELAXER)),
    "Equations": made_equations,
    "Equations, evaluated": lambda: (EQUATIONS.evaluate(0, x=X), EQUATIONS.evaluate(1),
                                     EQUATIONS.evaluate_all("y", x=X), EQUATIONS.evaluate_all()),
    "Equations, looked at": lambda: (EQUATIONS.variables, EQUATIONS.equations, repr(EQUATIONS), "x" in EQUATIONS),
    "Equations, copied": lambda: copy.copy(EQUATIONS) == EQUATIONS == EQUATIONS.copy(),
    "evaluate": lambda: korvale.evaluate("SIN(x) / 2", x=X),
    "Transform": lambda: (twins(PLACE @ korvale.Transform()), hash(PLACE), PLACE(SQUARE), PLACE.vectors(SQUARE),
                          PLACE.take_apart(), PLACE.transposed()),
    "Transform, made": lambda: (korvale.Transform.scaling(2), korvale.Transform.translation((1, 2, 3)),
                                korvale.Transform.rotation((1, 2, 3)), korvale.Transform.from_srt(),
                                korvale.Transform.rotation_in_degrees((1, 2, 3)), korvale.Transform.inverse_of(),
                                korvale.Transform.into_frame((0, 0, 0), (0, 0, 1), (0, 1, 0))),
    "Srt": lambda: korvale.take_apart(MATRICES).scale,
    "transform_points": lambda: korvale.transform_points(MATRICES, SQUARE),
    "transform_vectors": lambda: korvale.transform_vectors(MATRICES, SQUARE),
    "dot": lambda: korvale.dot(SQUARE, HOLE),
    "cross": lambda: korvale.cross(SQUARE, HOLE),
    "angle": lambda: korvale.angle(HOLE, HOLE),
    "norm": lambda: korvale.norm(SQUARE),
    "normalize": lambda: korvale.normalize(SQUARE),
    "scaling": lambda: korvale.scaling(SQUARE),
    "translation": lambda: korvale.translation(SQUARE),
    "rotation": lambda: korvale.rotation(SQUARE),
    "rotation_in_degrees": lambda: korvale.rotation_in_degrees(SQUARE),
    "from_srt": lambda: korvale.from_srt(HOLE, HOLE, HOLE),
    "inverse_from_srt": lambda: korvale.inverse_from_srt(HOLE, HOLE, HOLE),
    "take_apart": lambda: korvale.take_apart(MATRICES),
    "multiply": lambda: korvale.multiply(MATRICES, MATRICES),
    "transpose": lambda: korvale.transpose(MATRICES),
    "into_frame": lambda: korvale.into_frame(SQUARE, HOLE, (0, 0, 1)),
    "frame_both_ways": lambda: korvale.frame_both_ways(SQUARE, HOLE, (0, 0, 1)),
    "line_through": lambda: korvale.line_through(SQUARE, HOLE + (9, 8, 0)),
    "normalize_lines": lambda: korvale.normalize_lines(HOLE),
    "lines_meet": lambda: korvale.lines_meet(HOLE, (1, 2, 3)),
    "boxes_meet": lambda: korvale.boxes_meet((0, 0, 0, 1, 1, 1), (1, 1, 1, 2, 2, 2)),
    "determinant": lambda: korvale.determinant([(1, 2), (3, 4)]),
    "solve": lambda: korvale.solve([(1, 2, 3), (4, 5, 6)]),
    "factorial": lambda: korvale.factorial(5),
    "binomial": lambda: korvale.binomial(5, 2),
    "power": lambda: korvale.power(1.5, 3),
    "mix": lambda: korvale.mix(SQUARE, HOLE, 0.25, 0.75),
    "mix4": lambda: korvale.mix4(SQUARE, HOLE, SQUARE, HOLE, 1, 2, 3, 4),
    "bounds": lambda: korvale.bounds(SQUARE),
    "reverse": lambda: korvale.reverse(SQUARE),
    "join": lambda: korvale.join(SQUARE, HOLE),
    "seed": lambda: korvale.seed(1),
    "random": lambda: korvale.random(5),
    "gauss": lambda: korvale.gauss(5),
}

NAN = float("nan")


def fail(*ignored):
    raise ValueError("no")


FAILING = korvale.Equations("y x")
FAILING.function("FAIL", fail, arguments=1)
FAILING.add("y = FAIL(x)")

# Calls that are refused at various depths: when converting, by the C++ face, by the library, by Python called back.
REFUSED = {
    "offset": lambda: korvale.offset(SQUARE, NAN),
    "offset of what is no outline": lambda: korvale.offset([(1, 2), (3,)], 1),
    "offset with a bad hole": lambda: korvale.offset([SQUARE, HOLE[:2]], 1),
    "offset_many": lambda: korvale.offset_many([SQUARE, HOLE[:2]], 1),
    "offset_many with bad starts": lambda: korvale.offset_many(SQUARE, 1, starts=[0, 9]),
    "band": lambda: korvale.band(LINE, 0),
    "thin": lambda: korvale.thin(LINE, -1),
    "bevel": lambda: korvale.bevel(SQUARE, [(0, 0)]),
    "tube": lambda: korvale.tube(LINE, SECTION[:2]),
    "Mesh": lambda: korvale.Mesh(SQUARE, [(0, 1, 9)]),
    "volume": lambda: korvale.Mesh(SQUARE, [(0, 1, 2)]).volume,
    "triangulate": lambda: korvale.triangulate([]),
    "flatten": lambda: korvale.flatten([]),
    "frames": lambda: korvale.frames(LINE * NAN),
    "scatter": lambda: korvale.scatter(CUBE, 5, seed=1, attributes=X),
    "RayGrid": lambda: korvale.RayGrid(CUBE, cells=(0, 1, 1)),
    "cast": lambda: GRID.cast(ABOVE, ABOVE[:2]),
    "keep": lambda: RELAXER.keep("size"),
    "run": lambda: RELAXER.run(VERTICES * 1.5, progress=fail),
    "add": lambda: EQUATIONS.add("y = x + z"),
    "evaluate": lambda: EQUATIONS.evaluate(7),
    "a function": lambda: FAILING.evaluate(0, x=X),
    "dot": lambda: korvale.dot(SQUARE, SQUARE[:2]),
    "solve": lambda: korvale.solve(numpy.zeros((2, 3))),
    "mix": lambda: korvale.mix(SQUARE, X, 1, 1),
}
