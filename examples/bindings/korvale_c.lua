-- The C interface of korvale, as tools/declare_door makes it of packaging/korvale_c.json.
require("ffi").cdef[[
typedef enum korvale_status { KORVALE_OK = 0, KORVALE_BAD_ARGUMENT = 1, KORVALE_BAD_EQUATION = 2, KORVALE_NO_MEMORY = 3,
    KORVALE_STOPPED = 4 } korvale_status;
enum { KORVALE_DOUBLE = 0, KORVALE_FLOAT = 1 };
enum { KORVALE_INT32 = 0, KORVALE_UINT32 = 1, KORVALE_INT16 = 2, KORVALE_UINT16 = 3, KORVALE_INT64 = 4 };
enum { KORVALE_JOIN_MITER = 0, KORVALE_JOIN_BEVEL = 1, KORVALE_JOIN_ROUND = 2 };
enum { KORVALE_CAP_FLAT = 0, KORVALE_CAP_SQUARE = 1, KORVALE_CAP_ROUND = 2 };
enum { KORVALE_LENGTHS = 1, KORVALE_ANGLES = 2, KORVALE_VOLUME = 4, KORVALE_AREA = 8 };
enum { KORVALE_RUN_STEPS = 0, KORVALE_RUN_ENERGY = 1, KORVALE_RUN_STALLED = 2, KORVALE_RUN_CANCELLED = 3,
    KORVALE_RUN_NO_FORCE = 4, KORVALE_RUN_HELD = 5 };
typedef struct korvale_offsetter korvale_offsetter;
typedef struct korvale_borders korvale_borders;
typedef struct korvale_rings korvale_rings;
typedef struct korvale_mesh korvale_mesh;
typedef struct korvale_grid korvale_grid;
typedef struct korvale_relaxer korvale_relaxer;
typedef struct korvale_equations korvale_equations;
typedef int32_t (*korvale_progress)(double done, void* user);
typedef double (*korvale_function)(const double* arguments, void* user);
typedef struct korvale_error { int32_t status; int32_t place; char function[48]; char argument[64]; char wanted[208];
    char given[640]; char word[64]; char text[1024]; } korvale_error;
typedef struct korvale_points { const void* data; int64_t count; int64_t stride; int32_t dim; int32_t kind; }
    korvale_points;
typedef struct korvale_points_out { void* data; int64_t count; int64_t stride; int32_t dim; int32_t kind; }
    korvale_points_out;
typedef struct korvale_numbers { const void* data; int64_t count; int64_t stride; int32_t width; int32_t kind; }
    korvale_numbers;
typedef struct korvale_numbers_out { void* data; int64_t count; int64_t stride; int32_t width; int32_t kind; }
    korvale_numbers_out;
typedef struct korvale_indices { const void* data; int64_t count; int64_t stride; int32_t kind; } korvale_indices;
typedef struct korvale_triangles { korvale_points points; korvale_indices corners; } korvale_triangles;
typedef struct korvale_faces { korvale_points points; korvale_indices sizes; korvale_indices corners; } korvale_faces;
typedef struct korvale_offset_options { uint32_t size; int32_t keep_vertices; int32_t split; int32_t reserved;
    double height; korvale_progress progress; void* user; int32_t join; int32_t reserved_too; double miter_limit;
    double tolerance; korvale_indices corner_joins; } korvale_offset_options;
typedef struct korvale_border { double* points; uint8_t* removed; int32_t* merged_into; int64_t count; int64_t vertices;
    int32_t collapsed; int32_t reserved; } korvale_border;
typedef struct korvale_border_arrays { double* points; int64_t* starts; int32_t* sources; uint8_t* collapsed;
    uint8_t* removed; int32_t* merged_into; int64_t outlines; int64_t vertices; int64_t first; } korvale_border_arrays;
typedef struct korvale_ring_arrays { double* points; int64_t* starts; int32_t* sources; int32_t* parents;
    double* births; double* ends; uint8_t* collapsed; int64_t rings; } korvale_ring_arrays;
typedef struct korvale_band_options { uint32_t size; int32_t both_sides; int32_t has_up; int32_t closed; double height;
    double up[3]; double miter_limit; korvale_progress progress; void* user; int32_t cap; int32_t reserved;
    double tolerance; korvale_rings** outlines; } korvale_band_options;
typedef struct korvale_band_result { double* outline; uint8_t* removed; uint8_t* narrowed; int32_t collapsed;
    int32_t crosses; int64_t crossing[2]; } korvale_band_result;
typedef struct korvale_flatten_options { uint32_t size; int32_t open; int32_t by_extremes; int32_t reserved; }
    korvale_flatten_options;
typedef struct korvale_shapes_options { uint32_t size; int32_t crossing; double tolerance; korvale_progress progress;
    void* user; korvale_rings** joined; } korvale_shapes_options;
typedef struct korvale_bevel_step { double distance; double height; } korvale_bevel_step;
typedef struct korvale_bevel_options { uint32_t size; int32_t split; korvale_progress progress; void* user;
    int32_t crossing; int32_t reserved; } korvale_bevel_options;
typedef struct korvale_tube_options { uint32_t size; int32_t closed; int32_t caps; int32_t reserved;
    korvale_progress progress; void* user; } korvale_tube_options;
typedef struct korvale_scatter_options { uint32_t size; int32_t reserved; korvale_numbers weights;
    korvale_progress progress; void* user; } korvale_scatter_options;
typedef struct korvale_grid_options { uint32_t size; int32_t borrow; int32_t cells[3]; int32_t reserved;
    korvale_progress progress; void* user; } korvale_grid_options;
typedef struct korvale_hit { double distance; int32_t triangle; int32_t corners[3]; double weights[3]; } korvale_hit;
typedef struct korvale_ray_columns { double* distances; int32_t* triangles; int32_t* counts; double* weights; }
    korvale_ray_columns;
typedef struct korvale_run_options { uint32_t size; int32_t steps; double energy; double least_drop;
    int32_t (*progress)(int32_t, double, void*); void* user; } korvale_run_options;
typedef struct korvale_relaxation { int32_t steps; int32_t stop; double energy; } korvale_relaxation;
typedef struct korvale_column { const char* name; korvale_numbers values; } korvale_column;
typedef struct korvale_column_out { const char* name; korvale_numbers_out values; } korvale_column_out;
typedef struct korvale_srt { double scale[3]; double rotation[3]; double translation[3]; } korvale_srt;
const char* korvale_version(void);
int32_t korvale_version_number(void);
void korvale_offset_defaults(korvale_offset_options* options, size_t size);
korvale_status korvale_offset(const korvale_points* outline, double distance, const korvale_offset_options* options,
    korvale_border* border, korvale_error* error);
korvale_status korvale_offsetter_new(korvale_offsetter** offsetter, korvale_error* error);
korvale_status korvale_offsetter_run(korvale_offsetter* offsetter, const korvale_points* outlines, int64_t count,
    double distance, const korvale_offset_options* options, korvale_error* error);
int64_t korvale_offsetter_count(const korvale_offsetter* offsetter);
korvale_border korvale_offsetter_border(const korvale_offsetter* offsetter, int64_t k);
const int32_t* korvale_offsetter_sources(const korvale_offsetter* offsetter, int64_t k);
korvale_border korvale_offsetter_take(korvale_offsetter* offsetter, int64_t k);
void korvale_offsetter_free(korvale_offsetter* offsetter);
korvale_status korvale_offset_many(const korvale_points* points, const korvale_indices* starts,
    const korvale_numbers* distances, const korvale_offset_options* options, korvale_borders** borders,
    korvale_error* error);
korvale_border_arrays korvale_borders_view(const korvale_borders* borders);
korvale_border_arrays korvale_borders_take(korvale_borders* borders);
void korvale_borders_free(korvale_borders* borders);
korvale_status korvale_offset_rings(const korvale_points* outline, double distance,
    const korvale_offset_options* options, korvale_rings** rings, korvale_error* error);
korvale_status korvale_offset_distances(const korvale_points* outline, const korvale_numbers* distances,
    const korvale_offset_options* options, korvale_rings** rings, korvale_error* error);
korvale_ring_arrays korvale_rings_view(const korvale_rings* rings);
korvale_ring_arrays korvale_rings_take(korvale_rings* rings);
void korvale_rings_free(korvale_rings* rings);
void korvale_band_defaults(korvale_band_options* options, size_t size);
korvale_status korvale_band(const korvale_points* line, double distance, const korvale_band_options* options,
    korvale_band_result* band, korvale_error* error);
korvale_status korvale_thin(const korvale_points* line, double tolerance, int32_t* kept, int64_t* count,
    korvale_error* error);
void korvale_flatten_defaults(korvale_flatten_options* options, size_t size);
korvale_status korvale_flatten(const korvale_points* path, const korvale_flatten_options* options, double* to_plane,
    double* from_plane, korvale_error* error);
korvale_status korvale_frames(const korvale_points* path, int32_t closed, double* frames, korvale_error* error);
korvale_status korvale_triangulate(const korvale_points* outlines, int64_t count, int32_t* triangles, int64_t room,
    int64_t* written, korvale_progress progress, void* user, korvale_error* error);
void korvale_shapes_defaults(korvale_shapes_options* options, size_t size);
korvale_status korvale_shapes(const korvale_points* outlines, int64_t count, const korvale_shapes_options* options,
    int32_t* outer, korvale_error* error);
korvale_triangles korvale_mesh_view(const korvale_mesh* mesh);
const double* korvale_mesh_reached(const korvale_mesh* mesh, int64_t* count);
void korvale_mesh_free(korvale_mesh* mesh);
void korvale_bevel_defaults(korvale_bevel_options* options, size_t size);
korvale_status korvale_bevel(const korvale_points* outlines, int64_t count, const korvale_bevel_step* profile,
    int64_t steps, const korvale_bevel_options* options, korvale_mesh** mesh, korvale_error* error);
void korvale_tube_defaults(korvale_tube_options* options, size_t size);
korvale_status korvale_tube(const korvale_points* path, const korvale_points* section,
    const korvale_tube_options* options, korvale_mesh** mesh, korvale_error* error);
korvale_status korvale_mesh_normals(const korvale_triangles* triangles, double* normals, korvale_error* error);
korvale_status korvale_mesh_areas(const korvale_triangles* triangles, double* areas, korvale_error* error);
korvale_status korvale_mesh_bounds(const korvale_triangles* triangles, double* least, double* greatest,
    korvale_error* error);
korvale_status korvale_mesh_volume(const korvale_triangles* triangles, double* volume, korvale_error* error);
void korvale_scatter_defaults(korvale_scatter_options* options, size_t size);
korvale_status korvale_scatter(const korvale_triangles* triangles, uint32_t seed,
    const korvale_scatter_options* options, const korvale_points_out* output, int32_t* numbers,
    const korvale_numbers* attributes, const korvale_numbers_out* blended, korvale_error* error);
void korvale_grid_defaults(korvale_grid_options* options, size_t size);
korvale_status korvale_grid_new(const korvale_triangles* triangles, const korvale_grid_options* options,
    korvale_grid** grid, korvale_error* error);
korvale_status korvale_grid_of_faces(const korvale_faces* faces, const korvale_grid_options* options,
    korvale_grid** grid, korvale_error* error);
int64_t korvale_grid_size(const korvale_grid* grid);
void korvale_grid_cells(const korvale_grid* grid, int32_t* cells);
int32_t korvale_grid_face(const korvale_grid* grid, int32_t triangle);
const double* korvale_grid_triangles(const korvale_grid* grid);
int32_t korvale_grid_count(const korvale_grid* grid, const double* origin, const double* direction, double* distance);
korvale_hit korvale_grid_nearest(const korvale_grid* grid, const double* origin, const double* direction);
int32_t korvale_grid_any(const korvale_grid* grid, const double* origin, const double* direction, double reach);
korvale_status korvale_grid_hits(const korvale_grid* grid, const double* origin, const double* direction,
    korvale_hit* hits, int64_t room, int64_t* met, korvale_error* error);
korvale_status korvale_grid_cast(const korvale_grid* grid, const korvale_points* origins,
    const korvale_points* directions, const korvale_ray_columns* columns, korvale_progress progress, void* user,
    korvale_error* error);
korvale_status korvale_grid_contains(const korvale_grid* grid, const korvale_points* points, uint8_t* inside,
    korvale_progress progress, void* user, korvale_error* error);
void* korvale_grid_record(korvale_grid* grid);
void korvale_grid_free(korvale_grid* grid);
korvale_status korvale_relaxer_new(const korvale_faces* faces, const korvale_indices* edges, korvale_relaxer** relaxer,
    korvale_error* error);
int64_t korvale_relaxer_size(const korvale_relaxer* relaxer);
const int32_t* korvale_relaxer_edges(const korvale_relaxer* relaxer, int64_t* count);
korvale_status korvale_relaxer_keep(korvale_relaxer* relaxer, int32_t measure, double weight, korvale_error* error);
korvale_status korvale_relaxer_hold(korvale_relaxer* relaxer, const uint8_t* mask, int64_t count, korvale_error* error);
korvale_status korvale_relaxer_step(korvale_relaxer* relaxer, const korvale_points_out* points, int32_t steps,
    double* energy, korvale_progress progress, void* user, korvale_error* error);
void korvale_run_defaults(korvale_run_options* options, size_t size);
korvale_status korvale_relaxer_run(korvale_relaxer* relaxer, const korvale_points_out* points,
    const korvale_run_options* options, korvale_relaxation* result, korvale_error* error);
korvale_status korvale_relaxer_energy(korvale_relaxer* relaxer, const korvale_points* points, double* energy,
    korvale_error* error);
korvale_status korvale_relaxer_forces(korvale_relaxer* relaxer, const korvale_points* points, double* forces,
    korvale_error* error);
void* korvale_relaxer_record(korvale_relaxer* relaxer);
void korvale_relaxer_free(korvale_relaxer* relaxer);
korvale_status korvale_equations_new(korvale_equations** equations, korvale_error* error);
korvale_status korvale_equations_declare(korvale_equations* equations, const char* names, int32_t reserved,
    korvale_error* error);
korvale_status korvale_equations_add(korvale_equations* equations, const char* text, int32_t* number,
    korvale_error* error);
int32_t korvale_equations_count(const korvale_equations* equations);
int32_t korvale_equations_variables(const korvale_equations* equations);
const char* korvale_equations_name(const korvale_equations* equations, int32_t variable);
korvale_status korvale_equations_set(korvale_equations* equations, const char* name, double value,
    korvale_error* error);
korvale_status korvale_equations_get(const korvale_equations* equations, const char* name, double* value,
    korvale_error* error);
korvale_status korvale_equations_evaluate(korvale_equations* equations, int32_t equation, double* result,
    korvale_error* error);
korvale_status korvale_equations_evaluate_rows(korvale_equations* equations, int32_t equation,
    const korvale_column* columns, int64_t column_count, const korvale_numbers_out* output, korvale_progress progress,
    void* user, korvale_error* error);
korvale_status korvale_equations_pass(korvale_equations* equations, korvale_error* error);
korvale_status korvale_equations_pass_rows(korvale_equations* equations, const korvale_column* columns,
    int64_t column_count, const korvale_column_out* results, int64_t result_count, korvale_progress progress,
    void* user, korvale_error* error);
int32_t korvale_equations_ran_in_blocks(const korvale_equations* equations);
korvale_status korvale_equations_simplify(korvale_equations* equations, korvale_error* error);
korvale_status korvale_equations_function(korvale_equations* equations, const char* name, int32_t arguments,
    korvale_function function, void* user, void (*release)(void*), korvale_error* error);
void korvale_equations_stop(korvale_equations* equations);
korvale_status korvale_equations_seed(korvale_equations* equations, uint32_t seed, korvale_error* error);
int32_t korvale_equations_seeded(const korvale_equations* equations, uint32_t* seed);
korvale_status korvale_equations_make_table(korvale_equations* equations, const char* name, int32_t rows,
    korvale_error* error);
void korvale_equations_set_table_position(korvale_equations* equations, double row);
void* korvale_equations_record(korvale_equations* equations);
void korvale_equations_free(korvale_equations* equations);
void korvale_transform_from_srt(const korvale_srt* srt, double* transform);
void korvale_transform_inverse_of_srt(const korvale_srt* srt, double* transform);
void korvale_transform_rotation(const double* radians, double* transform);
void korvale_transform_take_apart(const double* transform, korvale_srt* srt);
korvale_status korvale_transform_into_frame(const double* origin, const double* z, const double* reference,
    double* transform, korvale_error* error);
void korvale_transform_multiply(const double* a, const double* b, double* product);
korvale_status korvale_transform_invert(const double* transform, double* inverse, korvale_error* error);
void korvale_transform_point(const double* transform, const double* point, double* output);
void korvale_transform_vector(const double* transform, const double* vector, double* output);
korvale_status korvale_transform_points(const double* transform, const korvale_points* points,
    const korvale_points_out* output, korvale_error* error);
korvale_status korvale_transform_vectors(const double* transform, const korvale_points* vectors,
    const korvale_points_out* output, korvale_error* error);
void korvale_seed(int32_t seed);
korvale_status korvale_mix(const korvale_numbers* arrays, const double* weights, int64_t count,
    const korvale_numbers_out* output, korvale_error* error);
korvale_status korvale_bounds(const korvale_numbers* array, double* least, double* greatest, korvale_error* error);
korvale_status korvale_reverse(const korvale_numbers_out* array, korvale_error* error);
]]
return {
    free = { -- the function that releases a handle
        korvale_offsetter = "korvale_offsetter_free",
        korvale_borders = "korvale_borders_free",
        korvale_rings = "korvale_rings_free",
        korvale_mesh = "korvale_mesh_free",
        korvale_grid = "korvale_grid_free",
        korvale_relaxer = "korvale_relaxer_free",
        korvale_equations = "korvale_equations_free",
    },
    defaults = { -- the function that fills options
        korvale_offset_options = "korvale_offset_defaults",
        korvale_band_options = "korvale_band_defaults",
        korvale_flatten_options = "korvale_flatten_defaults",
        korvale_shapes_options = "korvale_shapes_defaults",
        korvale_bevel_options = "korvale_bevel_defaults",
        korvale_tube_options = "korvale_tube_defaults",
        korvale_scatter_options = "korvale_scatter_defaults",
        korvale_grid_options = "korvale_grid_defaults",
        korvale_run_options = "korvale_run_defaults",
    },
}
