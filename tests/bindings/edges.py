"""usage: edges.py LIBRARY EXAMPLES: where bindings of ctypes break if they break: layouts, texts, failures in functions
of the host, threads."""

import gc
import json
import pathlib
import sys
import threading
from ctypes import POINTER, addressof, byref, c_double, c_int32, c_void_p, cast, sizeof

sys.path.insert(0, sys.argv[2])
import korvale_c as c
from korvale_door import Door

door = Door(sys.argv[1])


def same(seen, wanted):
    """Ends the test where something is not as it should be."""
    if seen != wanted:
        sys.exit(f"{seen!r} instead of {wanted!r}")


def raised(run, *arguments):
    """The text of what a call raises."""
    try:
        run(*arguments)
    except Exception as error:
        return str(error)
    return None


def structs_lie_as_described():
    description = pathlib.Path(sys.argv[2], "../../packaging/korvale_c.json").read_text(encoding="utf-8")
    for struct in json.loads(description)["structs"]:
        kind = getattr(c, struct["name"])
        same(sizeof(kind), struct["size"])
        for field in struct["fields"]:
            same((struct["name"], field["name"], getattr(kind, field["name"]).offset),
                 (struct["name"], field["name"], field["offset"]))


def texts_outlive_what_they_were_of():
    same(door.library.korvale_version().decode().count("."), 2)
    with door.made(c.korvale_equations, "equations_new") as system:
        for k in range(100):  # each text is gone after its call
            door.call("equations_declare", system, f"v{chr(97 + k // 26)}{chr(97 + k % 26)}".encode(), 0)
        gc.collect()
        count = door.library.korvale_equations_variables(system)
        names = [door.library.korvale_equations_name(system, k) for k in range(count)]
        error = c.korvale_error()
        door.library.korvale_equations_add(system, b"vaa = vzz", None, byref(error))
    same(names[:3] + names[-1:], [b"PI", b"E", b"vaa", b"vdv"])
    same((error.word, error.place), (b"vzz", 6))


def failures_of_progress_come_back():
    corner = (c_double * 9)(0, 0, 0, 1, 0, 0, 0, 1, 0)
    points = c.korvale_points(cast(corner, c_void_p), count=3)
    numbers = (c_int32 * 3)(0, 1, 2)
    faces = c.korvale_faces(points, c.korvale_indices(), c.korvale_indices(cast(numbers, c_void_p), count=3))

    def fails(step, energy, _):
        raise KeyError(f"at step {step}")

    options = door.options(c.korvale_run_options)
    options.progress = door.callback(type(options.progress), fails)
    came_to = c.korvale_relaxation()
    with door.made(c.korvale_relaxer, "relaxer_new", faces, None) as relaxer:
        door.call("relaxer_keep", relaxer, c.KORVALE_LENGTHS, 0.1)
        corner[0] = -0.5
        moving = c.korvale_points_out(cast(corner, c_void_p), count=3)
        same(raised(door.call, "relaxer_run", relaxer, moving, options, came_to), "'at step 1'")
        same((came_to.steps, came_to.stop), (1, c.KORVALE_RUN_CANCELLED))
        options.progress = type(options.progress)()  # null: nobody is told
        door.call("relaxer_run", relaxer, moving, options, came_to)
    same(came_to.stop != c.KORVALE_RUN_CANCELLED, True)


def what_fails_leaves_no_handle():
    grid = POINTER(c.korvale_grid)()
    odd = (c_int32 * 2)(0, 1)
    mesh = c.korvale_triangles(c.korvale_points(), c.korvale_indices(addressof(odd), count=2))
    same(raised(door.call, "grid_new", mesh, None, byref(grid)).split(" must ")[0], "korvale_grid_new: triangles")
    same(bool(grid), False)
    for free in c.FREE.values():
        getattr(door.library, free)(None)


def threads_have_errors_of_their_own():
    seen = []

    def refuse(dim):
        outline = c.korvale_points(count=3, dim=dim)
        for _ in range(200):
            text = raised(door.call, "offset", outline, 1, None, None)
            if f"{dim}" not in text:
                seen.append(text)

    threads = [threading.Thread(target=refuse, args=(dim,)) for dim in (7, 8)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    same(seen, [])


structs_lie_as_described()
texts_outlive_what_they_were_of()
failures_of_progress_come_back()
what_fails_leaves_no_handle()
threads_have_errors_of_their_own()
