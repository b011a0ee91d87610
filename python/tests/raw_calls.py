"""One ordinary call of every raw function with what it gives; test_raw.py looks at the results, test_raw_memory.py
repeats them. What a call needs is made anew by each, so that it shows what is not given back."""

import io

import numpy as np
from korvale import raw

SQUARE = np.array([[0.0, 0, 0], [4, 0, 0], [4, 4, 0], [0, 4, 0]])
TRIANGLE = [[0.0, 0, 1, 1, 0, 1, 0, 1, 1]]
QUARTER = [[0, -1, 0, 0], [1, 0, 0, 0], [0, 0, 1, 0], [0, 0, 0, 1]]  # a quarter turn about z
IDENTITY = np.identity(4).tolist()
MOVE = [[1, 0, 0, 1], [0, 1, 0, 2], [0, 0, 1, 3], [0, 0, 0, 1]]


def plain(value):
    """A result as lists and numbers, rounded to what can be written down."""
    if isinstance(value, tuple):
        return tuple(plain(part) for part in value)
    if isinstance(value, np.ndarray):
        return (np.round(value, 9) + 0.0).tolist()
    if isinstance(value, float):
        return round(value, 9)
    if isinstance(value, (raw.Data, raw.DATAstruct)):
        return repr(value)
    return value


def table(values=SQUARE):
    return raw.Data(np.array(values, dtype=float))


def tree(values=SQUARE):
    return raw.DATAstruct(np.array(values, dtype=float))


def ints(values):
    return raw.DATAstruct(np.array(values, dtype=np.int32))


def sized(record, count, dim, kind=raw.DATA_TYPE_DOUBLE):
    record.count, record.dim, record.type = count, dim, kind
    return record


def nested():
    return raw.DATAstruct([tree(), tree()])


def shown(record):
    """The numbers of a record."""
    return None if record.dvals is None else plain(record.dvals)


def on(record, function, show=shown):
    """The result of a function of one record, and the record afterwards."""
    return function(record), show(record)


def linked():
    head, tail = raw.data_list_struct([1.0]), raw.data_list_struct([2.0])
    head.next = tail
    return head


def chain():
    first = tree()
    first.next = tree()
    return first


def into(function, output, *inputs):
    """The result of a function whose output comes last, and the output."""
    return function(*inputs, output), shown(output)


def border(function, **fields):
    status = raw.BORDERStatus()
    status.path = fields.pop("path", None) or tree()
    for name, value in fields.items():
        setattr(status, name, value)
    return function(status), shown(status.output)


def first_border():
    status = raw.BorderStatus()
    status.path, status.distance = table(), 0.5
    return raw.Border(status), shown(status.output)


def band(function):
    status = raw.BORDERStatus()
    status.path = tree([[0, 0, 0], [1, 0, 0], [2, 1, 0]])
    status.keep_collapsed, status.split_events, status.distance = 1, 0, 0.25
    raw.BORDERAddWings(status)
    if function is raw.BORDERAddWings:
        return len(status.path)
    raw.BORDER(status)
    raw.BORDERRemoveWings(status)
    if function is raw.BORDERRemoveWings:
        return len(status.path), len(status.output)
    raw.BORDERMakePipe(status)
    return len(status.path), len(status.output)


def system(*equations, names="x y"):
    es = raw.EquationSystem()
    raw.EqParseVariables(es, names)
    for equation in equations:
        raw.EqParseEquation(es, equation)
    return es


def with_function(register, function, equation):
    es = system()
    registered = register(es, "HOST", function)
    return registered, raw.EqParseEquation(es, equation), raw.EqEvaluate(es, 0)


def on_system(function, *arguments, equations=("y = 3 * x + 1",), x=2.0):
    es = system(*equations)
    raw.EqSetVariableByName(es, "x", x)
    return function(es, *arguments), raw.EqReadVariableByName(es, "x"), raw.EqReadVariableByName(es, "y")


def sampled(function, *arguments):
    raw.EqSeed(1)
    es = system("y = RAND")
    return function(es, *arguments), raw.EqTableRead(es, 15)


def operator_stack():
    kinds, operands = ints(np.zeros(100)), ints(np.zeros(100))
    stack = ints([0, 0, 2])  # a multiplication waits
    result = raw.new_bi_item(0, 2, 2, 0, kinds, operands, stack)
    return result, kinds.ivals[0, 0], operands.ivals[0, 0], stack.ivals[:, 0].tolist()


def mesh(which=15):
    status, points = raw.PreserveStatus(), tree([[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1]])
    faces = ints([0, 2, 1, 0, 1, 3, 1, 2, 3, 0, 3, 2])
    raw.PreserveInitialize(status, points, None, ints([3, 3, 3, 3]), faces)
    for bit in (1, 2, 4, 8):
        if which & bit:
            raw.PreservePreserve(status, bit, 1.0)
    return status


def stretched(status):
    return tree(status.points.dvals * 2)


def on_mesh(function, which=15, show=lambda status: plain(status.energy)):
    status = mesh(which)
    points = stretched(status)
    raw.PreserveGetForce(status, points)
    status.energy = 0.0
    return function(status), show(status)


def compute():
    status = mesh()
    points = stretched(status)
    before = raw.PreserveGetForce(status, points) and status.energy
    return raw.PreserveCompute(status, points, 20), status.energy < before / 1000


def rays(function=None, *arguments):
    status = raw.RayStatus()
    raw.ray_set_triangles(table(TRIANGLE), status)
    raw.ray_classify(status)
    result = function(*arguments, status) if function else None
    return result, raw.ray_intersect([0.2, 0.2, 0], [0, 0, 1], status)


class Cursor:
    def __init__(self, points):
        self.points, self.vertex = points, 0

    def Seek(self, vertex):
        self.vertex = vertex

    def ReadPositions(self, number):
        return self.points[self.vertex : self.vertex + number]

    def WritePositions(self, number, positions):
        self.points[self.vertex : self.vertex + number] = positions

    def ReadNormals(self, number):
        return [0.0, 0.0, 1.0]


class Vertices:
    def __init__(self, points):
        self.points = np.array(points, dtype=float)

    def GetVertexCount(self):
        return len(self.points)

    def GetAccessor(self, zero):
        return Cursor(self.points)


def read_host(function, record):
    return function(Vertices(SQUARE), record), shown(record)


def write_host(function, record):
    host = Vertices(np.zeros((4, 3)))
    return function(record, host), plain(host.points)


def printed():
    stream = io.StringIO()
    raw.PrintMatrix(stream, MOVE)
    return stream.getvalue()


def handle_of(function):
    handle = raw.MwInitDLL("guest")
    result = function(handle)
    if function is not raw.MwDllInPostDestruct:
        raw.MwDllInPostDestruct(handle)
    return result


def seeded(seed, function, *arguments):
    raw.Mwsrand(seed)
    return function(*arguments)


def scattered(function, record):
    points = record(np.zeros((2, 3)))
    function(record(TRIANGLE), 7, points)
    inside = points.dvals[:, :2].min() >= 0 and points.dvals[:, :2].sum(axis=1).max() <= 1
    return inside, plain(points.dvals[:, 2])


def in_place(function, values, *more):
    array = np.array(values, dtype=float)
    return function(array, *more), plain(array)


SHIFTED = (SQUARE + [1, 2, 3]).tolist()
GROWN = [[-0.5, -0.5, 0], [4.5, -0.5, 0], [4.5, 4.5, 0], [-0.5, 4.5, 0]]
BOX = [[0, 0, 0], [4, 4, 0]]
TURNED = SQUARE[::-1].tolist()
TWICE = SQUARE.tolist() * 2

# name: (call, what it gives)
CALLS = {
    # Arrays of the first generation.
    "DataInitialize": (lambda: on(table(), raw.DataInitialize, repr), (None, "Data(count=-1, dim=-1, type=double)")),
    "DataListInitialize": (lambda: on(linked(), raw.DataListInitialize, lambda n: n.next), (None, None)),
    "DataNew": (raw.DataNew, "Data(count=-1, dim=-1, type=double)"),
    "DataListNew": (raw.DataListNew, "data_list_struct(count=-1, dim=-1, type=double)"),
    "DataAllocate": (lambda: on(sized(table(), 2, 3), raw.DataAllocate, lambda d: d.dvals.shape), (1, (2, 3))),
    "DataDispose": (lambda: on(table(), raw.DataDispose), (None, None)),
    "DataListDispose": (lambda: on(linked(), raw.DataListDispose, lambda n: (n.next, n.dvals)), (None, (None, None))),
    "DataReverse": (lambda: on(table(), raw.DataReverse), (None, TURNED)),
    "DataCat": (lambda: into(raw.DataCat, raw.Data(), table(), table()), (1, TWICE)),
    "DataCopy": (lambda: into(raw.DataCopy, raw.Data(), table()), (1, SQUARE.tolist())),
    "DataMix": (lambda: (lambda o: (raw.DataMix(table(), table(), 1, 1, o), shown(o)))(raw.Data()),
                (1, (2 * SQUARE).tolist())),
    "Data4Mix": (lambda: (lambda o: (raw.Data4Mix(*[table() for _ in "abcd"], 1, 2, 3, 4, o), shown(o)))(raw.Data()),
                 (1, (10 * SQUARE).tolist())),
    "DataBounds": (lambda: into(raw.DataBounds, raw.Data(), table()), (1, BOX)),
    "DataBBox": (lambda: into(raw.DataBBox, table(np.zeros((2, 3))), table()), (1, BOX)),
    "TransformData": (lambda: into(raw.TransformData, table(), MOVE, table()), (None, SHIFTED)),
    "DataTriSample": (lambda: scattered(raw.DataTriSample, table), (True, [1, 1])),
    # Arrays of the second generation.
    "DATAInitialize": (lambda: on(tree(), raw.DATAInitialize), (None, None)),
    "DATANew": (raw.DATANew, "DATAstruct(count=-1, dim=-1, type=double)"),
    "DATAAllocate": (lambda: on(sized(tree(), 5, 2), raw.DATAAllocate, lambda d: d.dvals.shape), (1, (5, 2))),
    "DATAReAllocate": (lambda: on(sized(tree(), 2, 3), raw.DATAReAllocate), (1, SQUARE[:2].tolist())),
    "DATANodeDispose": (lambda: on(nested(), raw.DATANodeDispose, lambda d: d.pvals), (None, None)),
    "DATADispose": (lambda: on(nested(), raw.DATADispose, lambda d: d.pvals), (1, None)),
    "DATAListCount": (lambda: raw.DATAListCount(chain()), 2),
    "DATAListToDATA": (lambda: len(raw.DATAListToDATA(chain()).pvals), 2),
    "DATACheckIfPoints": (lambda: raw.DATACheckIfPoints(tree()), 1),
    "DATACheckIfFace": (lambda: raw.DATACheckIfFace(nested()), 1),
    "DATACheckIfPatch": (lambda: raw.DATACheckIfPatch(nested()), 1),
    "DATACheckIfMesh": (lambda: raw.DATACheckIfMesh(nested()), 0),
    "DATAReverse": (lambda: on(tree(), raw.DATAReverse), (None, TURNED)),
    "DATASubReverse": (lambda: on(nested(), raw.DATASubReverse, lambda d: shown(d.pvals[1])), (None, TURNED)),
    "DATACat": (lambda: into(raw.DATACat, raw.DATAstruct(), tree(), tree()), (1, TWICE)),
    "DATACopy": (lambda: into(raw.DATACopy, raw.DATAstruct(), tree()), (1, SQUARE.tolist())),
    "DATAMix": (lambda: (lambda o: (raw.DATAMix(tree(), tree(), 1, 1, o), shown(o)))(raw.DATAstruct()),
                (1, (2 * SQUARE).tolist())),
    "DATA4Mix": (lambda: (lambda o: (raw.DATA4Mix(*[tree() for _ in "abcd"], 1, 2, 3, 4, o), shown(o)))(
        raw.DATAstruct()), (1, (10 * SQUARE).tolist())),
    "DATABounds": (lambda: into(raw.DATABounds, raw.DATAstruct(), tree()), (1, BOX)),
    "DATABBox": (lambda: into(raw.DATABBox, tree(np.zeros((2, 3))), tree()), (1, BOX)),
    "TransformDATA": (lambda: into(raw.TransformDATA, tree(), MOVE, tree()), (None, SHIFTED)),
    "DATATriSample": (lambda: scattered(raw.DATATriSample, tree), (True, [1, 1])),
    # Paths.
    "data_to_xy_xfms": (lambda: raw.data_to_xy_xfms(table(SQUARE + [0, 0, 2]))[0], 1),
    "DATA_to_xy_xfms": (lambda: raw.DATA_to_xy_xfms(tree([[1, 2, 5]])), (
        [[1, 0, 0, 0], [0, 1, 0, 0], [0, 0, 1, -5], [0, 0, 0, 1]],
        [[1, 0, 0, 0], [0, 1, 0, 0], [0, 0, 1, 5], [0, 0, 0, 1]])),
    "path2xfm": (lambda: raw.path2xfm(table(), 0)[:, :3, 3], SQUARE.tolist()),
    "PATH2xfm": (lambda: raw.PATH2xfm(tree(), 0)[:, :3, 3], SQUARE.tolist()),
    # Borders.
    "BorderInitialize": (lambda: on(raw.BorderStatus(), raw.BorderInitialize, lambda s: s.reserved2), (None, 5)),
    "BORDERInitialize": (lambda: on(raw.BORDERStatus(), raw.BORDERInitialize, lambda s: s.distance), (None, 1.0)),
    "Border": (first_border, (1, GROWN)),
    "BORDER_BORDER": (lambda: border(raw.BORDER_BORDER, distance=0.5), (1, GROWN)),
    "BORDER": (lambda: border(raw.BORDER, distance=0.5, height=2.0), (1, (np.array(GROWN) + [0, 0, 2]).tolist())),
    "BORDERAddWings": (lambda: band(raw.BORDERAddWings), 5),
    "BORDERRemoveWings": (lambda: band(raw.BORDERRemoveWings), (3, 3)),
    "BORDERMakePipe": (lambda: band(raw.BORDERMakePipe), (3, 6)),
    # Equations.
    "EqSystemInitialize": (lambda: on_system(raw.EqSystemInitialize), (1, 0.0, 0.0)),
    "EqSystemDispose": (lambda: on(system(), raw.EqSystemDispose, lambda es: es.var_vals), (None, None)),
    "EqParseVariables": (lambda: raw.EqParseVariables(raw.EquationSystem(), "a b c"), 5),
    "EqLookupVariable": (lambda: raw.EqLookupVariable(system(), "y"), 3),
    "EqLookupFunction": (lambda: raw.EqLookupFunction(system(), "COS"), 7),
    "EqSetVariable": (lambda: on_system(raw.EqSetVariable, 2, 9.0), (None, 9.0, 0.0)),
    "EqReadVariable": (lambda: on_system(raw.EqReadVariable, 2), (2.0, 2.0, 0.0)),
    "EqReserveVariable": (lambda: on_system(raw.EqReserveVariable, 2, 1), (None, 2.0, 0.0)),
    "EqSetVariableByName": (lambda: on_system(raw.EqSetVariableByName, "y", 4.0), (1, 2.0, 4.0)),
    "EqReadVariableByName": (lambda: on_system(raw.EqReadVariableByName, "x"), (2.0, 2.0, 0.0)),
    "EqReserveVariableByName": (lambda: on_system(raw.EqReserveVariableByName, "z", 1), (-1, 2.0, 0.0)),
    "EqAddFuncBinary": (lambda: with_function(raw.EqAddFuncBinary, lambda a, b: a - 2 * b, "y = 7 HOST 3"), (1, 4, 1)),
    "EqAddFuncUnary": (lambda: with_function(raw.EqAddFuncUnary, lambda a: a * a, "y = HOST 3"), (1, 3, 9)),
    "EqAddFuncNoArg": (lambda: with_function(raw.EqAddFuncNoArg, lambda: 8.0, "y = HOST + 1"), (1, 4, 9)),
    "EqAnotherFunc": (lambda: raw.EqAnotherFunc(system()), 18),
    "EqSeed": (lambda: raw.EqSeed(3) or raw.Mwrand(), 48),
    "gauss_init": (lambda: raw.gauss_init(3) or raw.Mwrand(), 48),
    "EqFuncRand": (lambda: seeded(3, raw.EqFuncRand), round(48 / 32767, 9)),
    "gauss": (lambda: abs(seeded(3, raw.gauss)) < 3.5, True),
    "EqFuncAdd": (lambda: raw.EqFuncAdd(2, 3), 5.0),
    "EqFuncSubtract": (lambda: raw.EqFuncSubtract(2, 3), -1.0),
    "EqFuncMultiply": (lambda: raw.EqFuncMultiply(2, 3), 6.0),
    "EqFuncDivide": (lambda: (raw.EqFuncDivide(3, 2), raw.EqFuncDivide(3, 0)), (1.5, 0.0)),
    "EqFuncNegate": (lambda: raw.EqFuncNegate(2), -2.0),
    "EqParseEquation": (lambda: raw.EqParseEquation(system(), "y = x * 2"), 4),
    "new_bi_item": (operator_stack, ((1, 2, 1, 1), raw.EQ_ITEM_BINARY, 2, [0, 0, 0])),
    "op_isp": (lambda: [raw.op_isp(code) > raw.op_isp(-1) for code in (0, 2, 4)], [True, True, True]),
    "op_icp": (lambda: raw.op_icp(4) > raw.op_icp(2) > raw.op_icp(0), True),
    "EqEvaluate": (lambda: on_system(raw.EqEvaluate, 0), (7.0, 2.0, 7.0)),
    "EqSystemEvaluate": (lambda: on_system(raw.EqSystemEvaluate, equations=("y = x", "x = y + 1")), (1, 3.0, 2.0)),
    "EqSimplify": (lambda: on_system(raw.EqSimplify, 0, equations=("y = 2 + 3",)), (1, 2.0, 0.0)),
    "EqSystemSimplify": (lambda: on_system(raw.EqSystemSimplify, equations=("y = 2 + 3",)), (1, 2.0, 0.0)),
    "EqMakeTable": (lambda: sampled(raw.EqMakeTable, 15, 4, 1)[0], 1),
    "EqMakeTableByName": (lambda: sampled(raw.EqMakeTableByName, "RAND", 4, 1)[0], 1),
    "EqSetTableIndex": (lambda: on(system(), lambda es: raw.EqSetTableIndex(es, 2.5), lambda es: es.table_index),
                        (None, 2.5)),
    "EqTableRead": (lambda: raw.EqTableRead(system(), 3), 0.0),
    # Relaxation.
    "PreserveInitialize": (lambda: mesh().edges.ivals.shape, (6, 2)),
    "PreserveDispose": (lambda: on_mesh(raw.PreserveDispose, show=lambda s: s.force), (None, None)),
    "PreserveSetTag": (lambda: raw.PreserveSetTag(mesh(), raw.DATAstruct(np.array([1, 0, 0, 0], np.uint8))), 1),
    "PreserveSetMass": (lambda: raw.PreserveSetMass(mesh(), tree([1, 1, 1, 2])), 1),
    "PreservePreserve": (lambda: (lambda s: (raw.PreservePreserve(s, 4, 1.0), s.ovolume))(mesh(0)), (1, 1.0)),
    "PreserveReInitialize": (lambda: raw.PreserveReInitialize(mesh(), tree(np.ones((4, 3)))), 1),
    "PreserveInitOlen": (lambda: on_mesh(raw.PreserveInitOlen, 1, lambda s: plain(s.olen.dvals[0])), (1, [1])),
    "PreserveInitOfang": (lambda: on_mesh(raw.PreserveInitOfang, 2, lambda s: plain(s.ofang.dvals[0])), (1, [0])),
    "PreserveInitOvolume": (lambda: on_mesh(raw.PreserveInitOvolume, 4, lambda s: s.ovolume), (1, 1.0)),
    "PreserveInitOarea": (lambda: on_mesh(raw.PreserveInitOarea, 8, lambda s: plain(s.oarea)),
                          (1, round(3 + 3**0.5, 9))),
    "PreserveFindNlen": (lambda: on_mesh(raw.PreserveFindNlen, 1), (1, 9.0)),
    "PreserveFindNfang": (lambda: on_mesh(raw.PreserveFindNfang, 2), (1, 0.0)),
    "PreserveFindNvolume": (lambda: on_mesh(raw.PreserveFindNvolume, 4), (1, 49.0)),
    "PreserveFindNarea": (lambda: on_mesh(raw.PreserveFindNarea, 8), (1, round((3 * (3 + 3**0.5)) ** 2, 9))),
    "PreserveFindEdgeLengthForce": (
        lambda: on_mesh(raw.PreserveFindEdgeLengthForce, 1, lambda s: bool(np.abs(s.force.dvals).max() > 0)),
        (1, True)),
    "PreserveFindFaceAngleForce": (
        lambda: on_mesh(raw.PreserveFindFaceAngleForce, 2, lambda s: bool(np.isfinite(s.force.dvals).all())),
        (1, True)),
    "PreserveFindVolumeForce": (
        lambda: on_mesh(raw.PreserveFindVolumeForce, 4, lambda s: bool(np.abs(s.force.dvals).max() > 0)), (1, True)),
    "PreserveFindSurfaceAreaForce": (
        lambda: on_mesh(raw.PreserveFindSurfaceAreaForce, 8, lambda s: bool(np.abs(s.force.dvals).max() > 0)),
        (1, True)),
    "PreserveFindEnergy": (lambda: on_mesh(raw.PreserveFindEnergy, 5), (1, 58.0)),
    "PreserveFindForce": (lambda: on_mesh(raw.PreserveFindForce, 1, lambda s: plain(s.force.dvals.sum(axis=0))),
                          (1, [0, 0, 0])),
    "PreserveCompute": (compute, (1, True)),
    "PreserveGetForce": (lambda: (lambda s, out: (raw.PreserveGetForce(s, stretched(s), out), out.dvals.shape))(
        mesh(), raw.DATAstruct()), (1, (4, 3))),
    # Rays.
    "ray_initialize": (lambda: on(raw.RayStatus(), raw.ray_initialize, lambda s: (s.nx, s.ny, s.nz)), (1, (4, 4, 4))),
    "ray_set_triangles": (lambda: rays()[1], (1, 1.0)),
    "ray_classify": (lambda: rays(raw.ray_classify), (None, (1, 1.0))),
    "ray_make_sub_bbox": (lambda: rays(raw.ray_make_sub_bbox)[1], (0, float("inf"))),
    "ray_add_tri_to_bbox": (
        lambda: rays(lambda s: raw.ray_add_tri_to_bbox(s, 0, 63) or s.cell(63)[1].tolist()), ([0, 0], (1, 1.0))),
    "ray_declassify": (lambda: rays(raw.ray_declassify)[1], (0, float("inf"))),
    "ray_intersect": (lambda: rays(raw.ray_intersect, [2, 2, 0], [0, 0, 1])[0], (0, float("inf"))),
    "ray_compute_xfm": (lambda: raw.ray_compute_xfm([1, 2, 3], [0, 0, 2]),
                        [[1, 0, 0, -1], [0, 1, 0, -2], [0, 0, 1, -3], [0, 0, 0, 1]]),
    "ray_int_bbox": (lambda: raw.ray_int_bbox([0.5, 0.5, -1], [0, 0, 1], [0, 0, 0, 1, 1, 1]), 1),
    "ray_int_x_plane": (lambda: raw.ray_int_x_plane([0, 1, 2], [1, 0, 0], 5), (1, 1.0, 2.0)),
    "ray_int_y_plane": (lambda: raw.ray_int_y_plane([0, 1, 2], [0, 1, 0], 5), (1, 0.0, 2.0)),
    "ray_int_z_plane": (lambda: raw.ray_int_z_plane([0, 1, 2], [0, 0, -1], 5), (0, 0.0, 0.0)),
    "z_intersect": (lambda: raw.z_intersect([0.2, 0.2, 0], TRIANGLE), (1, 1.0)),
    # Exchange.
    "F3DKorvaleVertex2Data": (lambda: read_host(raw.F3DKorvaleVertex2Data, raw.Data()), (0, SQUARE.tolist())),
    "F3DKorvaleVertex2DATA": (lambda: read_host(raw.F3DKorvaleVertex2DATA, raw.DATAstruct()), (0, SQUARE.tolist())),
    "F3DKorvaleNormal2Data": (lambda: read_host(raw.F3DKorvaleNormal2Data, raw.Data()), (0, [[0, 0, 1]] * 4)),
    "F3DKorvaleNormal2DATA": (lambda: read_host(raw.F3DKorvaleNormal2DATA, raw.DATAstruct()), (0, [[0, 0, 1]] * 4)),
    "F3DKorvaleData2Vertex": (lambda: write_host(raw.F3DKorvaleData2Vertex, table()), (0, SQUARE.tolist())),
    "F3DKorvaleDATA2Vertex": (lambda: write_host(raw.F3DKorvaleDATA2Vertex, tree()), (0, SQUARE.tolist())),
    "F3DKorvale2DataNormal": (lambda: raw.F3DKorvale2DataNormal(table(), None), raw.kStatusNotImplemented),
    "F3DKorvale2DATANormal": (lambda: raw.F3DKorvale2DATANormal(tree(), None), raw.kStatusNotImplemented),
    # Vectors and matrices.
    "dot_product": (lambda: raw.dot_product([1, 2, 3], [4, 5, 6]), 32.0),
    "cross_product": (lambda: raw.cross_product([1, 0, 0], [0, 1, 0]), [0, 0, 1]),
    "norm": (lambda: raw.norm([3, 4, 12]), 13.0),
    "normalize": (lambda: in_place(raw.normalize, [0, 0, 5]), (1, [0, 0, 1])),
    "angle": (lambda: raw.angle([1, 0, 0], [0, 2, 0]), round(np.pi / 2, 9)),
    "bbox_intersect": (lambda: raw.bbox_intersect([0, 0, 0, 1, 1, 1], [1, 1, 1, 2, 2, 2]), True),
    "make_identity": (raw.make_identity, IDENTITY),
    "TransformVector": (lambda: raw.TransformVector(MOVE, [1, 1, 1]), [1, 1, 1]),
    "TransformPoint": (lambda: raw.TransformPoint(MOVE, [1, 1, 1]), [2, 3, 4]),
    "xfm_pnt": (lambda: raw.xfm_pnt(np.ravel(MOVE), [0, 0, 0]), [1, 2, 3]),
    "MatrixMultiply": (lambda: raw.MatrixMultiply(MOVE, QUARTER)[:2], [[0, -1, 0, 1], [1, 0, 0, 2]]),
    "MatrixTranspose": (lambda: raw.MatrixTranspose(MOVE)[3], [1, 2, 3, 1]),
    "ScaleMatrix": (lambda: raw.ScaleMatrix([2, 3, 4]).diagonal(), [2, 3, 4, 1]),
    "TranslateMatrix": (lambda: raw.TranslateMatrix([1, 2, 3]), MOVE),
    "xfm2array": (lambda: raw.xfm2array(MOVE)[:4], [1, 0, 0, 1]),
    "array2xfm": (lambda: raw.array2xfm(np.ravel(MOVE)), MOVE),
    "PrintMatrix": (printed, "1.000000  0.000000  0.000000  1.000000  \n0.000000  1.000000  0.000000  2.000000  \n"
                             "0.000000  0.000000  1.000000  3.000000  \n0.000000  0.000000  0.000000  1.000000  \n"),
    "rotation_matrix": (lambda: raw.rotation_matrix([0, 0, np.pi / 2]), QUARTER),
    "RotationMatrix": (lambda: raw.RotationMatrix([0, 0, 90]).round(5), QUARTER),
    "RotateMatrix": (lambda: raw.RotateMatrix([0, 0, 90]).round(5), QUARTER),
    "SRT2Transform": (lambda: raw.SRT2Transform([1, 1, 1], [0, 0, 0], [1, 2, 3]), MOVE),
    "SRT2InvTransform": (lambda: raw.SRT2InvTransform([1, 1, 1], [0, 0, 0], [-1, -2, -3]), MOVE),
    "Transform2SRT": (lambda: raw.Transform2SRT(MOVE), ([1, 1, 1], [0, 0, 0], [1, 2, 3])),
    "orientation_xfm": (lambda: raw.orientation_xfm([0, 0, 0], [0, 0, 1], [0, 1, 0]),
                        (1, np.ravel(IDENTITY).tolist())),
    "orientation_xfm_and_reverse": (lambda: raw.orientation_xfm_and_reverse([0, 0, 0], [1, 0, 0], [0, 0, 1]),
                                    (1, IDENTITY, IDENTITY)),
    "find_line": (lambda: raw.find_line([0, 1, 0], [1, 1, 0]), (1, [0, 1, -1])),
    "line_normalize": (lambda: in_place(raw.line_normalize, [3, 4, 10]), (None, [0.6, 0.8, 2])),
    "find_intersect": (lambda: raw.find_intersect(np.array([0.0, 1, -1]), np.array([0.6, 0.8, -2])), None),
    "TwoByTwoDeterminant": (lambda: raw.TwoByTwoDeterminant([[1, 2], [3, 4]]), -2.0),
    "SolveTwoByTwo": (lambda: raw.SolveTwoByTwo([[1, 0, 5], [0, 2, 6]]), (1, 5.0, 3.0)),
    "factorial": (lambda: raw.factorial(5), 120),
    "binomial": (lambda: raw.binomial(5, 2), 10),
    "power": (lambda: raw.power(3, 4), 81.0),
    # The frame and the layer.
    "_korvale_DllMain": (lambda: raw._korvale_DllMain(0, 0), 1),
    "Mw___korvale_wrapDllMain": (lambda: raw.Mw___korvale_wrapDllMain(0, 0), 1),
    "GethKorvaleInstance": (lambda: raw.GethKorvaleInstance() == raw._Initializerkorvale.handle, True),
    "GetKorvaleRefCount": (raw.GetKorvaleRefCount, 0),
    "__ImageBasePtr": (lambda: getattr(raw, "__ImageBasePtr")() == raw._Initializerkorvale.handle, True),
    "_pRawDllMain": (raw._pRawDllMain, 0),
    "Mw___korvale_DependancyNode": (lambda: [name for name, _ in raw.Mw___korvale_DependancyNode()],
                                    ["gdiuser32", "advapi32", "kernel32", "stub", "msvcrt"]),
    "MwInitDLL": (lambda: handle_of(lambda handle: handle != 0), True),
    "MwDllInPostConstruct": (lambda: handle_of(raw.MwDllInPostConstruct), None),
    "MwDllInPreDestruct": (lambda: handle_of(raw.MwDllInPreDestruct), None),
    "MwDllInPostDestruct": (lambda: handle_of(raw.MwDllInPostDestruct), None),
    "DisableThreadLibraryCalls": (lambda: raw.DisableThreadLibraryCalls(0), 1),
    "RegisterWindowMessageA": (lambda: raw.RegisterWindowMessageA("a") == raw.RegisterWindowMessageA("a"), True),
    "Mwsrand": (lambda: raw.Mwsrand(1) or raw.Mwrand(), 41),
    "Mwrand": (lambda: seeded(1, raw.Mwrand), 41),
    "korvale_draw_many": (lambda: seeded(1, raw.korvale_draw_many, 3), (1, [41, 18467, 6334])),
}
