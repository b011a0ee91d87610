"""The tour in Python by ctypes. Run: python3 tour.py LIBRARY, such as ~/opt/korvale/lib/libkorvale.so.1"""

import sys
import threading
from ctypes import CFUNCTYPE, addressof, byref, c_double, c_int32, c_void_p, cast, sizeof

import korvale_c as c
from korvale_door import Door

door = Door(sys.argv[1])


def at(array, number=0):
    """The address of a number of an array, which is kept as long as the address."""
    address = cast(array, c_void_p)
    address.value += number * sizeof(array._type_)
    return address


def refusal(run, *arguments):
    """What a call raises."""
    try:
        run(*arguments)
    except (ValueError, ArithmeticError) as error:
        return error


def outlines():
    """An outline, moved outwards by half a unit."""
    square = (c_double * 8)(0, 0, 4, 0, 4, 4, 0, 4)
    outline = c.korvale_points(at(square), count=4, dim=2)
    moved = (c_double * 12)()
    border = c.korvale_border(moved)
    door.call("offset", outline, 0.5, None, border)
    for i in range(border.count):
        print(f"{moved[3 * i]:g} {moved[3 * i + 1]:g}")
    outline.count = 2
    print(refusal(door.call, "offset", outline, 0.5, None, border))


def rays():
    """10,000 rays from two threads at hills of 2,048 triangles."""
    side, count = 32, 10000
    hills, corners, eyes = [], [], []
    for i in range(side + 1):
        for j in range(side + 1):
            hills += j, i, (7 * i + 13 * j) % 5 / 4
    for i in range(side):
        for j in range(side):
            a, b = i * (side + 1) + j, (i + 1) * (side + 1) + j
            corners += a, a + 1, b + 1, a, b + 1, b
    for k in range(count):
        eyes += k % 100 * 0.25 + 0.125, k // 100 * 0.25 + 0.0625, 9
    hills, corners = (c_double * len(hills))(*hills), (c_int32 * len(corners))(*corners)
    eyes, down = (c_double * len(eyes))(*eyes), (c_double * 3)(0.015625, 0.0078125, -1)
    direction = c.korvale_points(at(down), count=1)
    distances, triangles = (c_double * count)(), (c_int32 * count)()
    half = count // 2

    def cast_half(grid, first):
        origins = c.korvale_points(at(eyes, 3 * first), count=half)
        met = c.korvale_ray_columns(distances=cast(at(distances, first), c.POINTER(c_double)),
                                    triangles=cast(at(triangles, first), c.POINTER(c_int32)))
        door.call("grid_cast", grid, origins, direction, met, None, None)

    mesh = c.korvale_triangles(c.korvale_points(at(hills), count=len(hills) // 3),
                               c.korvale_indices(at(corners), count=len(corners)))
    with door.made(c.korvale_grid, "grid_new", mesh, None) as grid:
        threads = [threading.Thread(target=cast_half, args=(grid, first)) for first in (0, half)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    numbers, way = 0, 0.0
    for k in range(count):
        numbers += triangles[k]
        way += distances[k]
    print(f"triangles {numbers}, distances {way:.17g}")


def equations():
    """The heights of 10,000 points, written between their other coordinates, by a function of Python."""
    rows, stride = 10000, 3 * sizeof(c_double)
    points = (c_double * (3 * rows))()
    points[::3] = [k % 100 - 50 for k in range(rows)]
    points[1::3] = [k // 100 for k in range(rows)]
    columns = (c.korvale_column * 2)((b"x", c.korvale_numbers(at(points), rows, stride)),
                                     (b"y", c.korvale_numbers(at(points, 1), rows, stride)))
    heights = c.korvale_numbers_out(at(points, 2), rows, stride)
    wave, steep = c_int32(), c_int32()
    calls = 0

    def ripple(x, _):
        nonlocal calls
        calls += 1
        return x[0] * x[0] / 8

    def root(x, _):
        if x[0] < 0:
            raise ArithmeticError(f"no root of {x[0]:g}")
        return 0.0

    def forget(_):
        print(f"called {calls} times")

    with door.made(c.korvale_equations, "equations_new") as system:
        def stop():
            door.library.korvale_equations_stop(system)
            return 0.0

        door.kept = [door.callback(c.korvale_function, ripple, stop), door.callback(c.korvale_function, root, stop),
                     door.callback(CFUNCTYPE(None, c_void_p), forget)]
        door.call("equations_declare", system, b"x y z t", 0)
        door.call("equations_function", system, b"RIPPLE", 1, door.kept[0], None, door.kept[2])
        door.call("equations_function", system, b"ROOT", 1, door.kept[1], None, None)
        door.call("equations_add", system, b"z = RIPPLE(x) + t * y", wave)
        door.call("equations_add", system, b"z = ROOT(x)", steep)
        door.call("equations_set", system, b"t", 0.5)
        door.call("equations_evaluate_rows", system, wave, columns, 2, heights, None, None)
        print(f"heights {sum(points[2::3]):.17g}")
        print(refusal(door.call, "equations_evaluate_rows", system, steep, columns, 1, heights, None, None))
        print(refusal(door.call, "equations_add", system, b"z = x+", None))


def relaxation():
    """A cube whose corner has been pulled out, until this has been told of 20 steps."""
    cube = (c_double * 24)(*(k >> axis & 1 for k in range(8) for axis in range(3)))
    sizes = (c_int32 * 6)(4, 4, 4, 4, 4, 4)
    corners = (c_int32 * 24)(0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4, 2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5)
    faces = c.korvale_faces(c.korvale_points(at(cube), count=8), c.korvale_indices(at(sizes), count=6),
                            c.korvale_indices(at(corners), count=24))
    energies = []

    def tell(step, energy, _):
        energies.append(energy)
        return step < 20

    options = door.options(c.korvale_run_options)
    options.progress = door.callback(type(options.progress), tell)
    came_to = c.korvale_relaxation()
    with door.made(c.korvale_relaxer, "relaxer_new", faces, None) as relaxer:
        door.call("relaxer_keep", relaxer, c.KORVALE_LENGTHS, 0.1)
        cube[23] = 1.5
        door.call("relaxer_run", relaxer, c.korvale_points_out(at(cube), count=8), options, came_to)
    print(f"stopped after {came_to.steps} of {options.steps} steps at {energies[-1]:.17g}: {cube[23]:.17g}")


outlines()
rays()
equations()
relaxation()
