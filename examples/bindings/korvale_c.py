"""The C interface of korvale, as tools/declare_door makes it of packaging/korvale_c.json."""

from ctypes import (
    CFUNCTYPE,
    POINTER,
    Structure,
    c_char,
    c_char_p,
    c_double,
    c_int,
    c_int32,
    c_int64,
    c_size_t,
    c_uint32,
    c_uint8,
    c_void_p,
)

KORVALE_OK = 0
KORVALE_BAD_ARGUMENT = 1
KORVALE_BAD_EQUATION = 2
KORVALE_NO_MEMORY = 3
KORVALE_STOPPED = 4
KORVALE_DOUBLE = 0
KORVALE_FLOAT = 1
KORVALE_INT32 = 0
KORVALE_UINT32 = 1
KORVALE_INT16 = 2
KORVALE_UINT16 = 3
KORVALE_INT64 = 4
KORVALE_JOIN_MITER = 0
KORVALE_JOIN_BEVEL = 1
KORVALE_JOIN_ROUND = 2
KORVALE_CAP_FLAT = 0
KORVALE_CAP_SQUARE = 1
KORVALE_CAP_ROUND = 2
KORVALE_LENGTHS = 1
KORVALE_ANGLES = 2
KORVALE_VOLUME = 4
KORVALE_AREA = 8
KORVALE_RUN_STEPS = 0
KORVALE_RUN_ENERGY = 1
KORVALE_RUN_STALLED = 2
KORVALE_RUN_CANCELLED = 3
KORVALE_RUN_NO_FORCE = 4
KORVALE_RUN_HELD = 5

korvale_progress = CFUNCTYPE(c_int32, c_double, c_void_p)
korvale_function = CFUNCTYPE(c_double, POINTER(c_double), c_void_p)


class korvale_offsetter(Structure):
    """A handle, which korvale_offsetter_free releases."""


class korvale_borders(Structure):
    """A handle, which korvale_borders_free releases."""


class korvale_rings(Structure):
    """A handle, which korvale_rings_free releases."""


class korvale_mesh(Structure):
    """A handle, which korvale_mesh_free releases."""


class korvale_grid(Structure):
    """A handle, which korvale_grid_free releases."""


class korvale_relaxer(Structure):
    """A handle, which korvale_relaxer_free releases."""


class korvale_equations(Structure):
    """A handle, which korvale_equations_free releases."""


class korvale_error(Structure):
    _fields_ = [("status", c_int32), ("place", c_int32), ("function", c_char * 48), ("argument", c_char * 64),
        ("wanted", c_char * 208), ("given", c_char * 640), ("word", c_char * 64), ("text", c_char * 1024)]


class korvale_points(Structure):
    _fields_ = [("data", c_void_p), ("count", c_int64), ("stride", c_int64), ("dim", c_int32), ("kind", c_int32)]


class korvale_points_out(Structure):
    _fields_ = [("data", c_void_p), ("count", c_int64), ("stride", c_int64), ("dim", c_int32), ("kind", c_int32)]


class korvale_numbers(Structure):
    _fields_ = [("data", c_void_p), ("count", c_int64), ("stride", c_int64), ("width", c_int32), ("kind", c_int32)]


class korvale_numbers_out(Structure):
    _fields_ = [("data", c_void_p), ("count", c_int64), ("stride", c_int64), ("width", c_int32), ("kind", c_int32)]


class korvale_indices(Structure):
    _fields_ = [("data", c_void_p), ("count", c_int64), ("stride", c_int64), ("kind", c_int32)]


class korvale_triangles(Structure):
    _fields_ = [("points", korvale_points), ("corners", korvale_indices)]


class korvale_faces(Structure):
    _fields_ = [("points", korvale_points), ("sizes", korvale_indices), ("corners", korvale_indices)]


class korvale_offset_options(Structure):
    _fields_ = [("size", c_uint32), ("keep_vertices", c_int32), ("split", c_int32), ("reserved", c_int32),
        ("height", c_double), ("progress", korvale_progress), ("user", c_void_p), ("join", c_int32),
        ("reserved_too", c_int32), ("miter_limit", c_double), ("tolerance", c_double),
        ("corner_joins", korvale_indices)]


class korvale_border(Structure):
    _fields_ = [("points", POINTER(c_double)), ("removed", POINTER(c_uint8)), ("merged_into", POINTER(c_int32)),
        ("count", c_int64), ("vertices", c_int64), ("collapsed", c_int32), ("reserved", c_int32)]


class korvale_border_arrays(Structure):
    _fields_ = [("points", POINTER(c_double)), ("starts", POINTER(c_int64)), ("sources", POINTER(c_int32)),
        ("collapsed", POINTER(c_uint8)), ("removed", POINTER(c_uint8)), ("merged_into", POINTER(c_int32)),
        ("outlines", c_int64), ("vertices", c_int64), ("first", c_int64)]


class korvale_ring_arrays(Structure):
    _fields_ = [("points", POINTER(c_double)), ("starts", POINTER(c_int64)), ("sources", POINTER(c_int32)),
        ("parents", POINTER(c_int32)), ("births", POINTER(c_double)), ("ends", POINTER(c_double)),
        ("collapsed", POINTER(c_uint8)), ("rings", c_int64)]


class korvale_band_options(Structure):
    _fields_ = [("size", c_uint32), ("both_sides", c_int32), ("has_up", c_int32), ("closed", c_int32),
        ("height", c_double), ("up", c_double * 3), ("miter_limit", c_double), ("progress", korvale_progress),
        ("user", c_void_p), ("cap", c_int32), ("reserved", c_int32), ("tolerance", c_double),
        ("outlines", POINTER(POINTER(korvale_rings)))]


class korvale_band_result(Structure):
    _fields_ = [("outline", POINTER(c_double)), ("removed", POINTER(c_uint8)), ("narrowed", POINTER(c_uint8)),
        ("collapsed", c_int32), ("crosses", c_int32), ("crossing", c_int64 * 2)]


class korvale_flatten_options(Structure):
    _fields_ = [("size", c_uint32), ("open", c_int32), ("by_extremes", c_int32), ("reserved", c_int32)]


class korvale_shapes_options(Structure):
    _fields_ = [("size", c_uint32), ("crossing", c_int32), ("tolerance", c_double), ("progress", korvale_progress),
        ("user", c_void_p), ("joined", POINTER(POINTER(korvale_rings)))]


class korvale_bevel_step(Structure):
    _fields_ = [("distance", c_double), ("height", c_double)]


class korvale_bevel_options(Structure):
    _fields_ = [("size", c_uint32), ("split", c_int32), ("progress", korvale_progress), ("user", c_void_p),
        ("crossing", c_int32), ("reserved", c_int32)]


class korvale_tube_options(Structure):
    _fields_ = [("size", c_uint32), ("closed", c_int32), ("caps", c_int32), ("reserved", c_int32),
        ("progress", korvale_progress), ("user", c_void_p)]


class korvale_scatter_options(Structure):
    _fields_ = [("size", c_uint32), ("reserved", c_int32), ("weights", korvale_numbers), ("progress", korvale_progress),
        ("user", c_void_p)]


class korvale_grid_options(Structure):
    _fields_ = [("size", c_uint32), ("borrow", c_int32), ("cells", c_int32 * 3), ("reserved", c_int32),
        ("progress", korvale_progress), ("user", c_void_p)]


class korvale_hit(Structure):
    _fields_ = [("distance", c_double), ("triangle", c_int32), ("corners", c_int32 * 3), ("weights", c_double * 3)]


class korvale_ray_columns(Structure):
    _fields_ = [("distances", POINTER(c_double)), ("triangles", POINTER(c_int32)), ("counts", POINTER(c_int32)),
        ("weights", POINTER(c_double))]


class korvale_run_options(Structure):
    _fields_ = [("size", c_uint32), ("steps", c_int32), ("energy", c_double), ("least_drop", c_double),
        ("progress", CFUNCTYPE(c_int32, c_int32, c_double, c_void_p)), ("user", c_void_p)]


class korvale_relaxation(Structure):
    _fields_ = [("steps", c_int32), ("stop", c_int32), ("energy", c_double)]


class korvale_column(Structure):
    _fields_ = [("name", c_char_p), ("values", korvale_numbers)]


class korvale_column_out(Structure):
    _fields_ = [("name", c_char_p), ("values", korvale_numbers_out)]


class korvale_srt(Structure):
    _fields_ = [("scale", c_double * 3), ("rotation", c_double * 3), ("translation", c_double * 3)]


FREE = {  # the function that releases a handle
    korvale_offsetter: "korvale_offsetter_free",
    korvale_borders: "korvale_borders_free",
    korvale_rings: "korvale_rings_free",
    korvale_mesh: "korvale_mesh_free",
    korvale_grid: "korvale_grid_free",
    korvale_relaxer: "korvale_relaxer_free",
    korvale_equations: "korvale_equations_free",
}
DEFAULTS = {  # the function that fills options
    korvale_offset_options: "korvale_offset_defaults",
    korvale_band_options: "korvale_band_defaults",
    korvale_flatten_options: "korvale_flatten_defaults",
    korvale_shapes_options: "korvale_shapes_defaults",
    korvale_bevel_options: "korvale_bevel_defaults",
    korvale_tube_options: "korvale_tube_defaults",
    korvale_scatter_options: "korvale_scatter_defaults",
    korvale_grid_options: "korvale_grid_defaults",
    korvale_run_options: "korvale_run_defaults",
}
FUNCTIONS = {  # what each returns, and its arguments; of type c_void_p a callback may be None
    "korvale_version": (c_char_p, []),
    "korvale_version_number": (c_int32, []),
    "korvale_offset_defaults": (None, [POINTER(korvale_offset_options), c_size_t]),
    "korvale_offset": (c_int, [POINTER(korvale_points), c_double, POINTER(korvale_offset_options),
        POINTER(korvale_border), POINTER(korvale_error)]),
    "korvale_offsetter_new": (c_int, [POINTER(POINTER(korvale_offsetter)), POINTER(korvale_error)]),
    "korvale_offsetter_run": (c_int, [POINTER(korvale_offsetter), POINTER(korvale_points), c_int64, c_double,
        POINTER(korvale_offset_options), POINTER(korvale_error)]),
    "korvale_offsetter_count": (c_int64, [POINTER(korvale_offsetter)]),
    "korvale_offsetter_border": (korvale_border, [POINTER(korvale_offsetter), c_int64]),
    "korvale_offsetter_sources": (POINTER(c_int32), [POINTER(korvale_offsetter), c_int64]),
    "korvale_offsetter_take": (korvale_border, [POINTER(korvale_offsetter), c_int64]),
    "korvale_offsetter_free": (None, [POINTER(korvale_offsetter)]),
    "korvale_offset_many": (c_int, [POINTER(korvale_points), POINTER(korvale_indices), POINTER(korvale_numbers),
        POINTER(korvale_offset_options), POINTER(POINTER(korvale_borders)), POINTER(korvale_error)]),
    "korvale_borders_view": (korvale_border_arrays, [POINTER(korvale_borders)]),
    "korvale_borders_take": (korvale_border_arrays, [POINTER(korvale_borders)]),
    "korvale_borders_free": (None, [POINTER(korvale_borders)]),
    "korvale_offset_rings": (c_int, [POINTER(korvale_points), c_double, POINTER(korvale_offset_options),
        POINTER(POINTER(korvale_rings)), POINTER(korvale_error)]),
    "korvale_offset_distances": (c_int, [POINTER(korvale_points), POINTER(korvale_numbers),
        POINTER(korvale_offset_options), POINTER(POINTER(korvale_rings)), POINTER(korvale_error)]),
    "korvale_rings_view": (korvale_ring_arrays, [POINTER(korvale_rings)]),
    "korvale_rings_take": (korvale_ring_arrays, [POINTER(korvale_rings)]),
    "korvale_rings_free": (None, [POINTER(korvale_rings)]),
    "korvale_band_defaults": (None, [POINTER(korvale_band_options), c_size_t]),
    "korvale_band": (c_int, [POINTER(korvale_points), c_double, POINTER(korvale_band_options),
        POINTER(korvale_band_result), POINTER(korvale_error)]),
    "korvale_thin": (c_int, [POINTER(korvale_points), c_double, POINTER(c_int32), POINTER(c_int64),
        POINTER(korvale_error)]),
    "korvale_flatten_defaults": (None, [POINTER(korvale_flatten_options), c_size_t]),
    "korvale_flatten": (c_int, [POINTER(korvale_points), POINTER(korvale_flatten_options), POINTER(c_double),
        POINTER(c_double), POINTER(korvale_error)]),
    "korvale_frames": (c_int, [POINTER(korvale_points), c_int32, POINTER(c_double), POINTER(korvale_error)]),
    "korvale_triangulate": (c_int, [POINTER(korvale_points), c_int64, POINTER(c_int32), c_int64, POINTER(c_int64),
        c_void_p, c_void_p, POINTER(korvale_error)]),
    "korvale_shapes_defaults": (None, [POINTER(korvale_shapes_options), c_size_t]),
    "korvale_shapes": (c_int, [POINTER(korvale_points), c_int64, POINTER(korvale_shapes_options), POINTER(c_int32),
        POINTER(korvale_error)]),
    "korvale_mesh_view": (korvale_triangles, [POINTER(korvale_mesh)]),
    "korvale_mesh_reached": (POINTER(c_double), [POINTER(korvale_mesh), POINTER(c_int64)]),
    "korvale_mesh_free": (None, [POINTER(korvale_mesh)]),
    "korvale_bevel_defaults": (None, [POINTER(korvale_bevel_options), c_size_t]),
    "korvale_bevel": (c_int, [POINTER(korvale_points), c_int64, POINTER(korvale_bevel_step), c_int64,
        POINTER(korvale_bevel_options), POINTER(POINTER(korvale_mesh)), POINTER(korvale_error)]),
    "korvale_tube_defaults": (None, [POINTER(korvale_tube_options), c_size_t]),
    "korvale_tube": (c_int, [POINTER(korvale_points), POINTER(korvale_points), POINTER(korvale_tube_options),
        POINTER(POINTER(korvale_mesh)), POINTER(korvale_error)]),
    "korvale_mesh_normals": (c_int, [POINTER(korvale_triangles), POINTER(c_double), POINTER(korvale_error)]),
    "korvale_mesh_areas": (c_int, [POINTER(korvale_triangles), POINTER(c_double), POINTER(korvale_error)]),
    "korvale_mesh_bounds": (c_int, [POINTER(korvale_triangles), POINTER(c_double), POINTER(c_double),
        POINTER(korvale_error)]),
    "korvale_mesh_volume": (c_int, [POINTER(korvale_triangles), POINTER(c_double), POINTER(korvale_error)]),
    "korvale_scatter_defaults": (None, [POINTER(korvale_scatter_options), c_size_t]),
    "korvale_scatter": (c_int, [POINTER(korvale_triangles), c_uint32, POINTER(korvale_scatter_options),
        POINTER(korvale_points_out), POINTER(c_int32), POINTER(korvale_numbers), POINTER(korvale_numbers_out),
        POINTER(korvale_error)]),
    "korvale_grid_defaults": (None, [POINTER(korvale_grid_options), c_size_t]),
    "korvale_grid_new": (c_int, [POINTER(korvale_triangles), POINTER(korvale_grid_options),
        POINTER(POINTER(korvale_grid)), POINTER(korvale_error)]),
    "korvale_grid_of_faces": (c_int, [POINTER(korvale_faces), POINTER(korvale_grid_options),
        POINTER(POINTER(korvale_grid)), POINTER(korvale_error)]),
    "korvale_grid_size": (c_int64, [POINTER(korvale_grid)]),
    "korvale_grid_cells": (None, [POINTER(korvale_grid), POINTER(c_int32)]),
    "korvale_grid_face": (c_int32, [POINTER(korvale_grid), c_int32]),
    "korvale_grid_triangles": (POINTER(c_double), [POINTER(korvale_grid)]),
    "korvale_grid_count": (c_int32, [POINTER(korvale_grid), POINTER(c_double), POINTER(c_double), POINTER(c_double)]),
    "korvale_grid_nearest": (korvale_hit, [POINTER(korvale_grid), POINTER(c_double), POINTER(c_double)]),
    "korvale_grid_any": (c_int32, [POINTER(korvale_grid), POINTER(c_double), POINTER(c_double), c_double]),
    "korvale_grid_hits": (c_int, [POINTER(korvale_grid), POINTER(c_double), POINTER(c_double), POINTER(korvale_hit),
        c_int64, POINTER(c_int64), POINTER(korvale_error)]),
    "korvale_grid_cast": (c_int, [POINTER(korvale_grid), POINTER(korvale_points), POINTER(korvale_points),
        POINTER(korvale_ray_columns), c_void_p, c_void_p, POINTER(korvale_error)]),
    "korvale_grid_contains": (c_int, [POINTER(korvale_grid), POINTER(korvale_points), POINTER(c_uint8), c_void_p,
        c_void_p, POINTER(korvale_error)]),
    "korvale_grid_record": (c_void_p, [POINTER(korvale_grid)]),
    "korvale_grid_free": (None, [POINTER(korvale_grid)]),
    "korvale_relaxer_new": (c_int, [POINTER(korvale_faces), POINTER(korvale_indices), POINTER(POINTER(korvale_relaxer)),
        POINTER(korvale_error)]),
    "korvale_relaxer_size": (c_int64, [POINTER(korvale_relaxer)]),
    "korvale_relaxer_edges": (POINTER(c_int32), [POINTER(korvale_relaxer), POINTER(c_int64)]),
    "korvale_relaxer_keep": (c_int, [POINTER(korvale_relaxer), c_int32, c_double, POINTER(korvale_error)]),
    "korvale_relaxer_hold": (c_int, [POINTER(korvale_relaxer), POINTER(c_uint8), c_int64, POINTER(korvale_error)]),
    "korvale_relaxer_step": (c_int, [POINTER(korvale_relaxer), POINTER(korvale_points_out), c_int32, POINTER(c_double),
        c_void_p, c_void_p, POINTER(korvale_error)]),
    "korvale_run_defaults": (None, [POINTER(korvale_run_options), c_size_t]),
    "korvale_relaxer_run": (c_int, [POINTER(korvale_relaxer), POINTER(korvale_points_out), POINTER(korvale_run_options),
        POINTER(korvale_relaxation), POINTER(korvale_error)]),
    "korvale_relaxer_energy": (c_int, [POINTER(korvale_relaxer), POINTER(korvale_points), POINTER(c_double),
        POINTER(korvale_error)]),
    "korvale_relaxer_forces": (c_int, [POINTER(korvale_relaxer), POINTER(korvale_points), POINTER(c_double),
        POINTER(korvale_error)]),
    "korvale_relaxer_record": (c_void_p, [POINTER(korvale_relaxer)]),
    "korvale_relaxer_free": (None, [POINTER(korvale_relaxer)]),
    "korvale_equations_new": (c_int, [POINTER(POINTER(korvale_equations)), POINTER(korvale_error)]),
    "korvale_equations_declare": (c_int, [POINTER(korvale_equations), c_char_p, c_int32, POINTER(korvale_error)]),
    "korvale_equations_add": (c_int, [POINTER(korvale_equations), c_char_p, POINTER(c_int32), POINTER(korvale_error)]),
    "korvale_equations_count": (c_int32, [POINTER(korvale_equations)]),
    "korvale_equations_variables": (c_int32, [POINTER(korvale_equations)]),
    "korvale_equations_name": (c_char_p, [POINTER(korvale_equations), c_int32]),
    "korvale_equations_set": (c_int, [POINTER(korvale_equations), c_char_p, c_double, POINTER(korvale_error)]),
    "korvale_equations_get": (c_int, [POINTER(korvale_equations), c_char_p, POINTER(c_double), POINTER(korvale_error)]),
    "korvale_equations_evaluate": (c_int, [POINTER(korvale_equations), c_int32, POINTER(c_double),
        POINTER(korvale_error)]),
    "korvale_equations_evaluate_rows": (c_int, [POINTER(korvale_equations), c_int32, POINTER(korvale_column), c_int64,
        POINTER(korvale_numbers_out), c_void_p, c_void_p, POINTER(korvale_error)]),
    "korvale_equations_pass": (c_int, [POINTER(korvale_equations), POINTER(korvale_error)]),
    "korvale_equations_pass_rows": (c_int, [POINTER(korvale_equations), POINTER(korvale_column), c_int64,
        POINTER(korvale_column_out), c_int64, c_void_p, c_void_p, POINTER(korvale_error)]),
    "korvale_equations_ran_in_blocks": (c_int32, [POINTER(korvale_equations)]),
    "korvale_equations_simplify": (c_int, [POINTER(korvale_equations), POINTER(korvale_error)]),
    "korvale_equations_function": (c_int, [POINTER(korvale_equations), c_char_p, c_int32, c_void_p, c_void_p, c_void_p,
        POINTER(korvale_error)]),
    "korvale_equations_stop": (None, [POINTER(korvale_equations)]),
    "korvale_equations_seed": (c_int, [POINTER(korvale_equations), c_uint32, POINTER(korvale_error)]),
    "korvale_equations_seeded": (c_int32, [POINTER(korvale_equations), POINTER(c_uint32)]),
    "korvale_equations_make_table": (c_int, [POINTER(korvale_equations), c_char_p, c_int32, POINTER(korvale_error)]),
    "korvale_equations_set_table_position": (None, [POINTER(korvale_equations), c_double]),
    "korvale_equations_record": (c_void_p, [POINTER(korvale_equations)]),
    "korvale_equations_free": (None, [POINTER(korvale_equations)]),
    "korvale_transform_from_srt": (None, [POINTER(korvale_srt), POINTER(c_double)]),
    "korvale_transform_inverse_of_srt": (None, [POINTER(korvale_srt), POINTER(c_double)]),
    "korvale_transform_rotation": (None, [POINTER(c_double), POINTER(c_double)]),
    "korvale_transform_take_apart": (None, [POINTER(c_double), POINTER(korvale_srt)]),
    "korvale_transform_into_frame": (c_int, [POINTER(c_double), POINTER(c_double), POINTER(c_double), POINTER(c_double),
        POINTER(korvale_error)]),
    "korvale_transform_multiply": (None, [POINTER(c_double), POINTER(c_double), POINTER(c_double)]),
    "korvale_transform_invert": (c_int, [POINTER(c_double), POINTER(c_double), POINTER(korvale_error)]),
    "korvale_transform_point": (None, [POINTER(c_double), POINTER(c_double), POINTER(c_double)]),
    "korvale_transform_vector": (None, [POINTER(c_double), POINTER(c_double), POINTER(c_double)]),
    "korvale_transform_points": (c_int, [POINTER(c_double), POINTER(korvale_points), POINTER(korvale_points_out),
        POINTER(korvale_error)]),
    "korvale_transform_vectors": (c_int, [POINTER(c_double), POINTER(korvale_points), POINTER(korvale_points_out),
        POINTER(korvale_error)]),
    "korvale_seed": (None, [c_int32]),
    "korvale_mix": (c_int, [POINTER(korvale_numbers), POINTER(c_double), c_int64, POINTER(korvale_numbers_out),
        POINTER(korvale_error)]),
    "korvale_bounds": (c_int, [POINTER(korvale_numbers), POINTER(c_double), POINTER(c_double), POINTER(korvale_error)]),
    "korvale_reverse": (c_int, [POINTER(korvale_numbers_out), POINTER(korvale_error)]),
}


def declare(library):
    """Gives the functions of an opened library their types."""
    for name, (returned, arguments) in FUNCTIONS.items():
        function = getattr(library, name)
        function.restype, function.argtypes = returned, arguments
    return library
