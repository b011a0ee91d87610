#ifndef KORVALE_C_H
#define KORVALE_C_H

/// korvale for C, and for every language that can call C: the one door on which `korvale.hpp` and the Python package
/// stand as well. C99; nothing here needs C++.
///
/// - Every function that can fail returns a `korvale_status` and, where its last argument is not null, tells the whole
///   story there: which function, which argument, what it must be, what it was given. A call that fails writes nothing
///   else and keeps nothing. There is no global state of errors, nothing is printed, and an exhausted heap is a failure
///   like any other.
/// - Inputs are read where the host keeps them: `korvale_points`, `korvale_numbers` and `korvale_indices` say where the
///   first element is, how many there are, how far they are apart and of what kind they are. A zero-filled rest means
///   packed doubles x y z, packed doubles, packed 32-bit numbers.
/// - Results go into memory of the caller, or stay in a handle, which is released by the function ending in `_free`;
///   that takes null as well. What a handle shows belongs to it, until it is changed or released.
/// - Options are structs that may grow. Call the function ending in `_defaults` with the size you compiled with, change
///   what you like, hand them over; null means the defaults.
/// - Distinct handles may be used from several threads at a time, one handle by one thread; a grid that owns its
///   triangles may be asked by any number.
///
/// ```c
/// const double square[] = {0, 0, 4, 0, 4, 4, 0, 4};
/// const korvale_points outline = {.data = square, .count = 4, .dim = 2};
/// double border[12];
/// korvale_border result = {.points = border};
/// korvale_error error;
/// if (korvale_offset(&outline, 0.5, NULL, &result, &error) != KORVALE_OK)
///     fprintf(stderr, "%s\n", error.text);
/// ```

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define KORVALE_C_API __attribute__((visibility("default")))
#else
#define KORVALE_C_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

// --- Version ---------------------------------------------------------------------------------------------------------

/// The version of the library that runs, such as "1.1.0".
KORVALE_C_API const char* korvale_version(void);

/// The same as a number that grows with the version: 10000 * major + 100 * minor + patch.
KORVALE_C_API int32_t korvale_version_number(void);

// --- Failures --------------------------------------------------------------------------------------------------------

/// What came of a call.
typedef enum korvale_status {
    KORVALE_OK = 0,           ///< all is done
    KORVALE_BAD_ARGUMENT = 1, ///< an argument cannot be used
    KORVALE_BAD_EQUATION = 2, ///< the text of an equation cannot be read
    KORVALE_NO_MEMORY = 3,    ///< the heap is exhausted
    KORVALE_STOPPED = 4       ///< a function of the host asked to stop
} korvale_status;

/// What went wrong, filled by the call that was given it. After KORVALE_OK only `status` has been written. Texts end
/// with a zero; one that is too long for its place ends in "...".
typedef struct korvale_error {
    int32_t status;    ///< the status that the call returned
    int32_t place;     ///< of KORVALE_BAD_EQUATION: the character where the trouble starts, from 0; else -1
    char function[48]; ///< the function that refuses, as "korvale_offset"
    char argument[64]; ///< the argument that it refuses, as "outline" or "options.height"
    char wanted[208];  ///< what the argument must do, as "have at least 3 points"
    char given[640];   ///< what came, as "it has 2"
    char word[64];     ///< of KORVALE_BAD_EQUATION: the word or sign at `place`, empty at the end of the text
    char text[1024];   ///< all in one sentence: "korvale_offset: outline must have at least 3 points, but it has 2"
} korvale_error;

// --- Buffers of the host ---------------------------------------------------------------------------------------------

/// Kinds of numbers in a host's buffers.
enum {
    KORVALE_DOUBLE = 0, ///< 64-bit
    KORVALE_FLOAT = 1   ///< 32-bit; read as doubles, which changes no value; results are rounded to the nearest
};

/// Kinds of indices in a host's buffers.
enum {
    KORVALE_INT32 = 0,  ///< signed, 32-bit
    KORVALE_UINT32 = 1, ///< unsigned, 32-bit
    KORVALE_INT16 = 2,  ///< signed, 16-bit
    KORVALE_UINT16 = 3, ///< unsigned, 16-bit
    KORVALE_INT64 = 4   ///< signed, 64-bit
};

/// Points to read. Packed doubles x y z are read in place, all else is read once into a copy.
typedef struct korvale_points {
    const void* data; ///< the first coordinate of the first point; may be null where there are no points
    int64_t count;    ///< how many points there are
    int64_t stride;   ///< bytes from one point to the next; 0: packed
    int32_t dim;      ///< coordinates of a point: 2 (z is 0) or 3; 0 is 3
    int32_t kind;     ///< KORVALE_DOUBLE or KORVALE_FLOAT
} korvale_points;

/// Points to write, or to change in place. Of points with two coordinates z is read as 0 and not written.
typedef struct korvale_points_out {
    void* data;     ///< the first coordinate of the first point
    int64_t count;  ///< how many points there are
    int64_t stride; ///< bytes from one point to the next; 0: packed
    int32_t dim;    ///< coordinates of a point: 2 or 3; 0 is 3
    int32_t kind;   ///< KORVALE_DOUBLE or KORVALE_FLOAT
} korvale_points_out;

/// Numbers to read, rows of `width`.
typedef struct korvale_numbers {
    const void* data; ///< the first number; may be null where there are no rows
    int64_t count;    ///< how many rows there are
    int64_t stride;   ///< bytes from one row to the next; 0: packed
    int32_t width;    ///< numbers of a row, side by side; 0 is 1
    int32_t kind;     ///< KORVALE_DOUBLE or KORVALE_FLOAT
} korvale_numbers;

/// Numbers to write, or to change in place.
typedef struct korvale_numbers_out {
    void* data;     ///< the first number
    int64_t count;  ///< how many rows there are
    int64_t stride; ///< bytes from one row to the next; 0: packed
    int32_t width;  ///< numbers of a row, side by side; 0 is 1
    int32_t kind;   ///< KORVALE_DOUBLE or KORVALE_FLOAT
} korvale_numbers_out;

/// Indices to read, from 0. Packed KORVALE_INT32 are read in place where nothing has to be kept.
typedef struct korvale_indices {
    const void* data; ///< the first index; may be null where there are none
    int64_t count;    ///< how many indices there are
    int64_t stride;   ///< bytes from one index to the next; 0: packed
    int32_t kind;     ///< KORVALE_INT32 and so on
} korvale_indices;

/// Triangles: three corners each, numbers of `points`; without `corners.data` three points after one another each.
typedef struct korvale_triangles {
    korvale_points points;   ///< shared by the triangles
    korvale_indices corners; ///< [3 per triangle] numbers of points
} korvale_triangles;

/// Faces of any number of corners on shared points.
typedef struct korvale_faces {
    korvale_points points;   ///< shared by the faces
    korvale_indices sizes;   ///< the number of corners of each face; without `data` all are triangles
    korvale_indices corners; ///< numbers of points, face after face
} korvale_faces;

/// Called now and then by long work with what is done of it, from 0 to 1. Returns 0 to stop, anything else to go on.
typedef int32_t (*korvale_progress)(double done, void* user);

// --- Offset outlines -------------------------------------------------------------------------------------------------

/// What stands at corners that open: at those that stick out where an outline grows, at the others where it shrinks.
enum {
    KORVALE_JOIN_MITER = 0, ///< edges run on until they meet; with a `miter_limit` sharper corners are cut off
    KORVALE_JOIN_BEVEL = 1, ///< the ends of the moved edges are joined by an edge straight across
    KORVALE_JOIN_ROUND = 2  ///< the ends of the moved edges are joined by an arc around the vertex, of edges outside it
};

/// How an outline is moved.
typedef struct korvale_offset_options {
    uint32_t size;         ///< of this struct, in bytes
    int32_t keep_vertices; ///< 1: a point of the border per vertex of the outline; 0: removed ones are left out
    int32_t split;         ///< 1: also stop where parts of the outline meet; 0: only where an edge vanishes (quicker)
    int32_t reserved;      ///< 0
    double height;         ///< lift of the border along the normal from which the outline runs counter-clockwise
    korvale_progress progress; ///< told while outlines of many points are moved; may be null
    void* user;                ///< handed to `progress`
    int32_t join;              ///< KORVALE_JOIN_MITER and so on, at all corners; not for `korvale_offset`
    int32_t reserved_too;      ///< 0
    double miter_limit;        ///< of a mitre: corners that would be farther than so many distances from their vertex
                               ///< are cut off at the distance; 0: none
    double tolerance;          ///< of a round join: how far it may be outside the arc; 0: 1 / 200 of the distance. Less
                               ///< than a millionth of the distance counts as that
    korvale_indices corner_joins; ///< the join of each point of the outlines, instead of `join`; without `data` none
} korvale_offset_options;

/// Keeps vertices, stops at splits, height 0, no progress, sharp corners. `size` is that of the struct you compiled
/// with.
///
/// Joins: with another `join` than KORVALE_JOIN_MITER, a `miter_limit` or `corner_joins` a vertex of the outline
/// becomes as many points as its join has corners, in their order. Vertices that are removed have none; `keep_vertices`
/// is not looked at. What moves is the outline with its joins, so these meet other parts, split and vanish as edges do.
/// Where something has vanished beneath it that a bevel would bring to light again, the corner may stay cut off at the
/// distance. A corner turning by less than a 10,000th stays sharp, and so does a spike that turns right back. Lengths
/// of the outline count as nothing below a 10^7th of it.
KORVALE_C_API void korvale_offset_defaults(korvale_offset_options* options, size_t size);

/// One border. Of `korvale_offset` the caller sets the pointers; `points` has to be there, the others may be null.
typedef struct korvale_border {
    double* points;       ///< [count][3] the border; room for as many points as the outline has
    uint8_t* removed;     ///< [vertices] 1 for a vertex that was removed on the way
    int32_t* merged_into; ///< [vertices] the vertex that each one merged into, itself while it stayed
    int64_t count;        ///< written: points of the border
    int64_t vertices;     ///< written: vertices of the outline
    int32_t collapsed;    ///< written: 1 where nothing is left of the outline
    int32_t reserved;     ///< of no meaning yet
} korvale_border;

/// The border of a closed, planar outline: every edge moved sideways by `distance` in the outline's own plane, outwards
/// where it is positive, with corners kept sharp.
///
/// The last point joins the first; do not repeat it. The plane may lie anywhere. The border may be written over the
/// outline.
///
/// No random number is drawn, and outlines may have any size: one that reaches less than 1, or 2^24 and more, along
/// each axis is brought to an ordinary size by a power of two first. So lengths count as nothing below about a
/// millionth of a small outline (of up to 1 across), and below 1.2e-06 in others.
///
/// Refuses fewer than three points, numbers that are not finite, and joins, for whose points there is no room: take an
/// offsetter, `korvale_offset_many` or `korvale_offset_rings`. Where the progress stops it nothing is written.
KORVALE_C_API korvale_status korvale_offset(const korvale_points* outline, double distance,
                                            const korvale_offset_options* options, korvale_border* border,
                                            korvale_error* error);

/// Moves outlines one after the other in arrays that are kept: the quickest way to many.
typedef struct korvale_offsetter korvale_offsetter;

/// Makes one in `*offsetter`, null on failure.
KORVALE_C_API korvale_status korvale_offsetter_new(korvale_offsetter** offsetter, korvale_error* error);

/// Moves an outer outline and its holes, `count` in all: a positive distance grows the outer outline and shrinks the
/// holes, whichever way round each of them runs; all are lifted along the normal of the outer one. The outlines do not
/// see each other. Where an argument is refused the borders of the run before stay; where the heap is exhausted or the
/// progress stops it there are none.
KORVALE_C_API korvale_status korvale_offsetter_run(korvale_offsetter* offsetter, const korvale_points* outlines,
                                                   int64_t count, double distance,
                                                   const korvale_offset_options* options, korvale_error* error);

/// The borders of the latest run: as many as there were outlines, 0 before the first and after one that failed.
KORVALE_C_API int64_t korvale_offsetter_count(const korvale_offsetter* offsetter);

/// Border `k` of the latest run, in memory of the offsetter that is good until the next run; all zero where there is no
/// such border.
KORVALE_C_API korvale_border korvale_offsetter_border(const korvale_offsetter* offsetter, int64_t k);

/// The vertex that each point of border `k` belongs to, [count], in memory of the offsetter that is good until the next
/// run; null where there is no such border, and without joins: the points are those of the vertices in their order
/// then, but for removed ones where these are left out.
KORVALE_C_API const int32_t* korvale_offsetter_sources(const korvale_offsetter* offsetter, int64_t k);

/// Hands border `k` of the latest run over: its arrays are the caller's, to be released with `free`, and the offsetter
/// has no such border any more.
KORVALE_C_API korvale_border korvale_offsetter_take(korvale_offsetter* offsetter, int64_t k);

/// Releases an offsetter.
KORVALE_C_API void korvale_offsetter_free(korvale_offsetter* offsetter);

/// Borders of many outlines, one behind the other in flat arrays.
typedef struct korvale_borders korvale_borders;

/// Moves each of many outlines as `korvale_offset` moves it alone, to the last bit, in one call. Makes the borders in
/// `*borders`, null on failure.
///
/// `starts` has a number more than there are outlines: outline k are the points from number starts[k] of `points` up
/// to, but without, number starts[k + 1]. They ascend, but need not begin at 0 nor end with the last point: part of
/// them are part of the outlines, as for one thread of several. `distances`, of width 1, has one value for all outlines
/// or one for each.
///
/// Every outline is an outer one here, whichever way round it runs and whatever it lies in; holes are outlines with a
/// distance of their own. Refuses, before anything is moved, what `korvale_offset` refuses of any of them, by its
/// number from 0: "outline 7".
KORVALE_C_API korvale_status korvale_offset_many(const korvale_points* points, const korvale_indices* starts,
                                                 const korvale_numbers* distances,
                                                 const korvale_offset_options* options, korvale_borders** borders,
                                                 korvale_error* error);

/// What there is of many borders. Points of outlines, the vertices here, have the numbers that they have in the points
/// handed in; entry i of `removed` and `merged_into` is that of vertex `first` + i.
typedef struct korvale_border_arrays {
    double* points;       ///< [starts[outlines]][3] the borders, one behind the other
    int64_t* starts;      ///< [outlines + 1] where each border begins, from 0, and where the last one ends
    int32_t* sources;     ///< [starts[outlines]] the vertex that each point of a border belongs to
    uint8_t* collapsed;   ///< [outlines] 1 where nothing is left
    uint8_t* removed;     ///< [vertices] 1 for a vertex that was removed on the way
    int32_t* merged_into; ///< [vertices] the vertex that each one merged into, itself while it stayed
    int64_t outlines;     ///< how many there are
    int64_t vertices;     ///< of all outlines
    int64_t first;        ///< the number of the first vertex
} korvale_border_arrays;

/// The arrays, in memory of the borders that is good until they are released; all zero of null.
KORVALE_C_API korvale_border_arrays korvale_borders_view(const korvale_borders* borders);

/// Hands the arrays over: each is the caller's, to be released with `free`. The handle has no borders any more, and is
/// still to be released.
KORVALE_C_API korvale_border_arrays korvale_borders_take(korvale_borders* borders);

/// Releases borders.
KORVALE_C_API void korvale_borders_free(korvale_borders* borders);

/// All rings that an outline becomes.
typedef struct korvale_rings korvale_rings;

/// Moves an outline as `korvale_offset` does, and keeps every piece: where a vertex runs into an edge both go on, the
/// piece that `korvale_offset` drops as an outline of its own. Makes the rings in `*rings`, null on failure.
///
/// Ring 0 is the outline's own, with the border of `korvale_offset` without `keep_vertices`, to the last bit. Each
/// other one has been cut from a ring before it, its parent. A ring that has come to nothing has no points, but is
/// there: the rings tell what has become of the outline on the way. Outwards, those inside of others are what has been
/// closed in, and run the other way. Rings do not cross each other unless the outline crosses or touches itself, but
/// for rounding.
///
/// Without `split` there is ring 0 alone. `keep_vertices` is not looked at. Refuses what `korvale_offset` refuses.
KORVALE_C_API korvale_status korvale_offset_rings(const korvale_points* outline, double distance,
                                                  const korvale_offset_options* options, korvale_rings** rings,
                                                  korvale_error* error);

/// Moves an outline by each of `distances`, in any order and of either sign, as `korvale_offset_rings` does by that one
/// alone, to the last bit. Makes the rings of all in `*rings`, null on failure: those of each distance one behind the
/// other, in the order of the distances. Each distance begins with its ring 0, which has no parent: -1.
///
/// The outline is swept once to the farthest distance each way, and the others are passed on the way, so that all cost
/// little more than the farthest. A ring is swept once more for those distances at which it crosses itself, or where
/// rounding would lose a part. So is the outline for those for which corners are cut another way: round joins within a
/// `tolerance` that is given have more points the farther they go.
KORVALE_C_API korvale_status korvale_offset_distances(const korvale_points* outline, const korvale_numbers* distances,
                                                      const korvale_offset_options* options, korvale_rings** rings,
                                                      korvale_error* error);

/// What there is of rings.
typedef struct korvale_ring_arrays {
    double* points;     ///< [starts[rings]][3] of all rings, one behind the other; each in the order of the outline
    int64_t* starts;    ///< [rings + 1] where each ring begins, from 0, and where the last one ends
    int32_t* sources;   ///< [starts[rings]] the vertex of the outline that each point belongs to
    int32_t* parents;   ///< [rings] the ring that each one was cut from, -1 for ring 0
    double* births;     ///< [rings] the distance at which it was, 0 for ring 0
    double* ends;       ///< [rings] the distance that it has reached: that at which it came to nothing, or all
    uint8_t* collapsed; ///< [rings] 1 where it has come to nothing
    int64_t rings;      ///< how many there are
} korvale_ring_arrays;

/// The arrays, in memory of the rings that is good until they are released; all zero of null.
KORVALE_C_API korvale_ring_arrays korvale_rings_view(const korvale_rings* rings);

/// Hands the arrays over: each is the caller's, to be released with `free`. The handle has no rings any more, and is
/// still to be released.
KORVALE_C_API korvale_ring_arrays korvale_rings_take(korvale_rings* rings);

/// Releases rings.
KORVALE_C_API void korvale_rings_free(korvale_rings* rings);

// --- Bands -----------------------------------------------------------------------------------------------------------

/// How a band ends at the ends of an open line.
enum {
    KORVALE_CAP_FLAT = 0,   ///< at the end of the line, square to it
    KORVALE_CAP_SQUARE = 1, ///< a distance beyond it
    KORVALE_CAP_ROUND = 2   ///< in an arc around it, of edges outside it
};

/// How a band is laid along a line.
typedef struct korvale_band_options {
    uint32_t size;      ///< of this struct, in bytes
    int32_t both_sides; ///< 1: from the border on one side to that on the other, instead of to the line itself
    int32_t has_up;     ///< 1: `up` is given
    int32_t closed;     ///< 1: the last point joins the first, and the band is a ring with two outlines
    double height;      ///< lift of the border along `up`

    /// The side from which right is right. Without it the line has to be planar, and is seen from the side that is up
    /// in z (in y or x where its plane is upright). With it the line may rise and fall: it is offset as seen along
    /// `up`, and each point of the border is as high as its point of the line. Parts above each other are near each
    /// other as seen from there, so a ramp of more than one turn has no inner side: lay it turn by turn.
    double up[3];

    double miter_limit;        ///< no point of the border is farther from the line than this times the distance
    korvale_progress progress; ///< told while bands of many points are laid; may be null
    void* user;                ///< handed to `progress`
    int32_t cap;               ///< KORVALE_CAP_FLAT and so on, at both ends; others want `outlines`
    int32_t reserved;          ///< 0
    double tolerance;          ///< of a round cap, as of a round join: how far it may be outside the arc; 0: 1 / 200 of
                               ///< the distance. Less than a millionth of the distance counts as that
    korvale_rings** outlines;  ///< made, unless it is null: the outline of the band with its caps
} korvale_band_options;

/// One side, an open line, no `up`, height 0, miter limit 4, no progress, flat ends, no outlines.
///
/// A cap goes from the end of the border to that on the other side, or, of one side, to the place a distance beyond the
/// end of the line. It has edges where an arc around the end is touched after its quarters have been halved as often as
/// `tolerance`, or of a square one `miter_limit`, wants it: not at all but for a limit below 1.414. There is none where
/// an end of the border has given way, nor of a closed line. What it runs into does not move it; `crosses` tells.
///
/// `outlines` is to be released by the caller. Ring 0 is the border in the order of the line, the cap at its end, the
/// other side backwards and the cap at its beginning; of a closed line rings 0 and 1 are the sides. Of its arrays
/// `sources` are the points of the line, those of a cap belonging to the end. `parents` are -1, `births` and `ends` 0,
/// `collapsed` that of the band. The numbers of `crossing` are those of edges of the rings then.
KORVALE_C_API void korvale_band_defaults(korvale_band_options* options, size_t size);

/// A closed outline along a line of n points; of a closed line two of them, of n points each. The caller sets the
/// pointers; `removed` and `narrowed` may be null.
typedef struct korvale_band_result {
    double* outline;     ///< [2 n][3] the border in the order of the line, then the other side backwards
    uint8_t* removed;    ///< [n] 1 where a point gave way altogether, or is in a knot, and shares a place
    uint8_t* narrowed;   ///< [n] 1 where a point gave way in part: it is nearer to the line, or held at the miter limit
    int32_t collapsed;   ///< written: 1 where no side has a border: all points of each gave way altogether
    int32_t crosses;     ///< written: 1 where the outline crosses or touches itself: it may then enclose places twice
    int64_t crossing[2]; ///< written: two edges that meet; edge i runs from point i of its outline to the next one
} korvale_band_result;

/// The band between a line and its border at a signed distance: to the right of the line where it is positive.
///
/// The border has a point for each point of the line. Where a bend is tighter than the distance, points share a place;
/// where another part of the line is nearer than the distance, the border keeps halfway between them. A corner sharper
/// than the miter limit has its point at the limit, on the bisector: towards it the border comes nearer to the line,
/// the more the sharper the corner is. Where the line goes back and forth within a distance, as a track does that stood
/// still, the border passes by as if it were a point there, the mean: all points of such a knot share a place, seen
/// along the normal; with `up` each keeps the height of its point. So a border ends beside the mean of a knot in which
/// its line ends. Everything else is as wide as asked for. A side of a closed line on which no part has a border at the
/// distance, as inside a ring that is tighter, gives way to the one place that is farthest from the line.
///
/// No random number is drawn, and lines may have any size, as outlines of `korvale_offset`. A line at a single place
/// has no sides: its band stays there and is collapsed. Where the distance is below the rounding of the coordinates,
/// border and line are at one place and meet.
///
/// Refuses no points, fewer than 3 different ones of a closed line, a distance of 0, a line that is not planar without
/// `up`, one along `up`, a miter limit below 1, and numbers that are not finite.
KORVALE_C_API korvale_status korvale_band(const korvale_points* line, double distance,
                                          const korvale_band_options* options, korvale_band_result* band,
                                          korvale_error* error);

/// The numbers of the points that describe a line to within a tolerance: `kept` has room for one per point, `*count` of
/// them are written, ascending, the first and the last point among them. Every point left out lies within the tolerance
/// of the stretch between the two points that stay around it.
///
/// Refuses no points, a tolerance below 0, and numbers that are not finite.
KORVALE_C_API korvale_status korvale_thin(const korvale_points* line, double tolerance, int32_t* kept, int64_t* count,
                                          korvale_error* error);

// --- Planes and frames -----------------------------------------------------------------------------------------------

/// How the plane of a path is found.
typedef struct korvale_flatten_options {
    uint32_t size;       ///< of this struct, in bytes
    int32_t open;        ///< 1: the path is an open polyline; 0: an outline
    int32_t by_extremes; ///< 1: from the extremes of the bounds, whichever way the outline then runs
    int32_t reserved;    ///< 0
} korvale_flatten_options;

/// A closed outline, not by extremes.
KORVALE_C_API void korvale_flatten_defaults(korvale_flatten_options* options, size_t size);

/// The transforms that lay a planar outline into the plane z = 0, counter-clockwise there, and carry it back: 16
/// numbers each, row by row. Either may be null.
///
/// No random number is drawn, and paths may have any size, as outlines of `korvale_offset`.
///
/// Refuses no points, numbers that are not finite and, by extremes, points that lie on one line.
KORVALE_C_API korvale_status korvale_flatten(const korvale_points* path, const korvale_flatten_options* options,
                                             double* to_plane, double* from_plane, korvale_error* error);

/// One frame for every point of a polyline, 16 numbers each, row by row: `frames` [count][16]. The columns of a frame
/// are its x axis, y axis, z axis and the point. z points back along the path and halves the angle at a joint; x turns
/// as little as it can. `closed` joins the last point to the first and spreads the turn left over over all frames.
///
/// Refuses fewer than two points and numbers that are not finite.
KORVALE_C_API korvale_status korvale_frames(const korvale_points* path, int32_t closed, double* frames,
                                            korvale_error* error);

// --- Shapes ----------------------------------------------------------------------------------------------------------

/// Cuts a planar outline with holes into triangles: n + 2 k - 4 of them for n points in k outlines. They number the
/// points of all outlines in their order and run counter-clockwise where the outer outline does, whichever way round
/// the others run. Holes may touch each other and the outer outline, at points and along edges, also but for rounding:
/// what is below a 10^12th of the largest coordinate. Where outlines cross by more, triangles may overlap. Some have no
/// area where outlines touch, repeat points or turn back on themselves.
///
/// `triangles` has room for `room` triangles of three numbers; `*written` is how many there are.
///
/// `progress` is told while outlines of many points are cut; it may be null. Where it stops that nothing is written.
///
/// Refuses no outline, fewer than three points, numbers that are not finite, and too little room.
KORVALE_C_API korvale_status korvale_triangulate(const korvale_points* outlines, int64_t count, int32_t* triangles,
                                                 int64_t room, int64_t* written, korvale_progress progress, void* user,
                                                 korvale_error* error);

/// How outlines are sorted into shapes.
typedef struct korvale_shapes_options {
    uint32_t size;    ///< of this struct, in bytes
    int32_t crossing; ///< 1: outlines that cross, also themselves, are sorted all the same; 0: they are refused
    double tolerance; ///< outlines that lie within it of each other everywhere are one, and what is within it touches
    korvale_progress progress; ///< told while many outlines are sorted; may be null
    void* user;                ///< handed to `progress`
    korvale_rings** joined;    ///< made, unless it is null: the outlines as they do not overlap
} korvale_shapes_options;

/// Refuses outlines that cross, tolerance 0, no progress, nothing joined.
KORVALE_C_API void korvale_shapes_defaults(korvale_shapes_options* options, size_t size);

/// Sorts outlines seen from above, along z, into shapes. `outer` [count] is, for an outer outline, its own number, for
/// a hole that of its outer outline. It is -1 for an outline of fewer than three points, which enclose nothing, and
/// -2 - m for one that repeats outline m, the same area whichever way round: these belong to no shape.
///
/// An outline inside an even number of others is an outer one, whichever way round it runs; there is no limit to how
/// deep they nest. Outlines may touch in points and along edges. One of three points and more that has no area is where
/// its lowest point is. Of outlines that cross and are sorted all the same, some are taken for inside others and some
/// not.
///
/// With a tolerance outlines that are within it of each other everywhere, as drawings have them, are one, and so are
/// those that a chain of such ones joins: they repeat the first of them. Corners, as edges side by side meet farther
/// apart, and bends shorter than twice the tolerance may be up to twice as far. Outlines cross only where they do by
/// more than that. Without a tolerance, what is below a 10^12th of the largest coordinate is rounding.
///
/// Outlines that may cross by less than the tolerance may overlap by as much, and `korvale_triangulate` would cover
/// what they share twice. `joined` becomes rings that do not, one for each outline, to be released by the caller: all
/// points as they are, unless outlines overlap. Of those, and of outlines within twice the tolerance of them, each is
/// joined to the ones before it: its points move to their corners, else onto their edges, no farther than the
/// tolerance, and edges side by side become the same ones, for which both rings get more points. Loops of an outline no
/// larger than twice the tolerance are cut off. All that is done again, at most three times, where outlines cross in
/// their new places. `outer` tells of the outlines as they are then, with -1 where nothing is left. Of the arrays of
/// the rings `sources` are the points of each outline, or those at which the edges of added points begin, `parents` is
/// `outer`, `collapsed` is 1 where `outer` is below 0 and `births` and `ends` are 0.
///
/// Refuses numbers that are not finite, a tolerance below 0, and outlines that cross themselves or each other: it names
/// one or two of them, and where. They may touch themselves, as along a way to a hole and back. With `joined` it also
/// refuses outlines whose details are so small beside the tolerance that they still cross where they are joined; with
/// `crossing` nothing is joined.
KORVALE_C_API korvale_status korvale_shapes(const korvale_points* outlines, int64_t count,
                                            const korvale_shapes_options* options, int32_t* outer,
                                            korvale_error* error);

// --- Meshes ----------------------------------------------------------------------------------------------------------

/// Triangles on shared points, facing outwards, in memory of their own.
typedef struct korvale_mesh korvale_mesh;

/// The triangles of a mesh as other functions take them: its points, packed doubles x y z, and three packed
/// KORVALE_INT32 a triangle. They are good until it is released; all is zero of null.
KORVALE_C_API korvale_triangles korvale_mesh_view(const korvale_mesh* mesh);

/// The distance that the layer of each step of a bevel has reached, [*count], in memory of the mesh that is good until
/// it is released: the distance asked for, unless the step was held back. Null and 0 of other meshes. `count` may be
/// null.
KORVALE_C_API const double* korvale_mesh_reached(const korvale_mesh* mesh, int64_t* count);

/// Releases a mesh.
KORVALE_C_API void korvale_mesh_free(korvale_mesh* mesh);

/// One layer of a bevel.
typedef struct korvale_bevel_step {
    double distance; ///< outwards
    double height;   ///< upwards: along z over outlines at one z, else along the normal from which the outer outline
                     ///< runs counter-clockwise
} korvale_bevel_step;

/// How a bevel is made.
typedef struct korvale_bevel_options {
    uint32_t size;             ///< of this struct, in bytes
    int32_t split;             ///< as for offsets
    korvale_progress progress; ///< told while outlines of many points or many steps are made; may be null
    void* user;                ///< handed to `progress`
    int32_t crossing;          ///< 1: outlines that cross are taken as they are; 0: they are refused
    int32_t reserved;          ///< 0
} korvale_bevel_options;

/// Stops at splits, no progress, no crossings.
KORVALE_C_API void korvale_bevel_defaults(korvale_bevel_options* options, size_t size);

/// A closed mesh from an outline with holes, `count` in all, and a profile: a layer for each of `steps` steps, strips
/// between neighbours, a cap on the first and on the last layer. Makes it in `*mesh`, null on failure.
///
/// Each layer is that of `korvale_offsetter_run`, so edges that shrink to nothing close like the hips of a roof. A step
/// that would lose a part is held back: it keeps its height, goes as far as nothing is lost, and `korvale_mesh_reached`
/// tells how far that is. It is
///
/// - where an outline would fall apart, as at a neck narrower than twice the way in, or a limb of it vanish, all of it
///   at once; outlines that touch themselves go nowhere;
/// - where the outer outline has come to nothing, at the ridge of a roof. Holes may vanish;
/// - to a millionth where two outlines would cross, as those of a frame moved in by more than half its width.
///
/// A layer that would cross itself or collapse without `split` is made with it. So caps do not overlap, unless the
/// outlines do: those that cross are refused, or with `crossing` taken as they are, and go no way on which they would
/// still cross.
///
/// Points at exactly one place are one. No random number is drawn, and outlines may have any size, as those of
/// `korvale_offset`.
///
/// Refuses fewer than two steps, no outline, fewer than three points, numbers that are not finite, outlines that cross
/// themselves or each other, holes that lie outside the first outline or over each other or leave nothing of it, and
/// steps that move points farther than numbers go.
KORVALE_C_API korvale_status korvale_bevel(const korvale_points* outlines, int64_t count,
                                           const korvale_bevel_step* profile, int64_t steps,
                                           const korvale_bevel_options* options, korvale_mesh** mesh,
                                           korvale_error* error);

/// How a tube is made.
typedef struct korvale_tube_options {
    uint32_t size;             ///< of this struct, in bytes
    int32_t closed;            ///< 1: the last point of the path joins the first
    int32_t caps;              ///< 1: the two ends of an open tube are closed
    int32_t reserved;          ///< 0
    korvale_progress progress; ///< told while many points are made; may be null
    void* user;                ///< handed to `progress`
} korvale_tube_options;

/// Open, with caps, no progress.
KORVALE_C_API void korvale_tube_defaults(korvale_tube_options* options, size_t size);

/// A mesh from a path and a section, an outline in the plane z = 0 around the origin, which `korvale_frames` carries to
/// every point of the path: point k of ring i is number i * section->count + k. Neighbouring rings are joined by
/// strips. Makes it in `*mesh`, null on failure.
///
/// Refuses fewer than two points of a path (three of a closed one), fewer than three of a section, and numbers that are
/// not finite.
KORVALE_C_API korvale_status korvale_tube(const korvale_points* path, const korvale_points* section,
                                          const korvale_tube_options* options, korvale_mesh** mesh,
                                          korvale_error* error);

/// The unit normals of triangles, [triangles][3], towards the side from which their corners run counter-clockwise; of
/// one without area 0 0 0. Triangles may have any size.
///
/// Refuses corners that are no points or do not come in threes, and numbers that are not finite.
KORVALE_C_API korvale_status korvale_mesh_normals(const korvale_triangles* triangles, double* normals,
                                                  korvale_error* error);

/// The areas of triangles, [triangles]; refuses what `korvale_mesh_normals` does.
KORVALE_C_API korvale_status korvale_mesh_areas(const korvale_triangles* triangles, double* areas,
                                                korvale_error* error);

/// The least and the greatest coordinates of triangles, [3] each; refuses what `korvale_mesh_normals` does, and no
/// triangles.
KORVALE_C_API korvale_status korvale_mesh_bounds(const korvale_triangles* triangles, double* least, double* greatest,
                                                 korvale_error* error);

/// The volume inside triangles that face outwards; negative where they face inwards, 0 of none. Points at exactly one
/// place count as one.
///
/// Refuses what `korvale_mesh_normals` does, and a mesh that is not closed: each edge has to be run through as often
/// one way as the other.
KORVALE_C_API korvale_status korvale_mesh_volume(const korvale_triangles* triangles, double* volume,
                                                 korvale_error* error);

// --- Scattered points ------------------------------------------------------------------------------------------------

/// How points are scattered.
typedef struct korvale_scatter_options {
    uint32_t size;             ///< of this struct, in bytes
    int32_t reserved;          ///< 0
    korvale_numbers weights;   ///< one a triangle, which is as likely as its area times this; without `data` all are 1
    korvale_progress progress; ///< told while many points are made; may be null
    void* user;                ///< handed to `progress`
} korvale_scatter_options;

/// No weights, no progress.
KORVALE_C_API void korvale_scatter_defaults(korvale_scatter_options* options, size_t size);

/// Scatters `output->count` points over triangles, uniformly by area, or as weights have it: a weight of 2 makes a
/// triangle twice as likely, one of 0 leaves it without points. `numbers` [output->count], which may be null,
/// takes the triangle of each. `attributes` may be null; else it has a row for each point of `triangles`, and `blended`
/// takes as many rows of the same width as there are points to make.
///
/// The call has generators of its own: the same seed gives the same points in any number of threads, and the generator
/// of the process is neither seeded nor drawn from. Seeds that follow each other begin almost alike: spread numbers
/// that you count, as by 2654435761 times each.
///
/// A draw says in which of 32,768 equal steps of the area a point lies, and a second one where in that step, so every
/// triangle gets its share of the points, however many there are. Where a step lies within one triangle the points are
/// those that `DATATriSample` makes with korvale's own platform layer.
///
/// Refuses no triangles, corners that are no points, numbers that are not finite, weights below 0, an area of 0 on the
/// whole, and rows that do not fit. Where the progress stops it, some of the points are written.
KORVALE_C_API korvale_status korvale_scatter(const korvale_triangles* triangles, uint32_t seed,
                                             const korvale_scatter_options* options, const korvale_points_out* output,
                                             int32_t* numbers, const korvale_numbers* attributes,
                                             const korvale_numbers_out* blended, korvale_error* error);

// --- Rays ------------------------------------------------------------------------------------------------------------

/// Triangles for rays: those that `ray_intersect` meets in a grid of cells, to the last bit. Triangles that the grid
/// owns are found through a tree of boxes (about 100 bytes a triangle, its corners included, and 70 more while it is
/// made), and any number of threads may ask one grid at a time. Borrowed ones are found through cells and marks, and
/// then one grid belongs to one thread at a time.
///
/// Directions may be of any length but 0. A triangle that shows less than half of 1e-06 square units to a ray is not
/// met: borrowed ones should measure about 0.1 or more. Where a grid owns its triangles, small ones are met as large
/// ones are: lengths are multiplied by a power of two, which loses no bit, that makes a model which reaches less than 1
/// along each axis reach 64 to 128, and twice the area of the smallest triangle 1/64, as long as no coordinate reaches
/// 4096 by it, or the model no more than 128.
typedef struct korvale_grid korvale_grid;

/// How a grid is made.
typedef struct korvale_grid_options {
    uint32_t size; ///< of this struct, in bytes
    int32_t
        borrow; ///< 1: packed doubles without corner numbers stay the caller's, are read by every query and may move
    int32_t cells[3];          ///< along x, y and z, 0 is 1; all 0: chosen to suit the triangles
    int32_t reserved;          ///< 0
    korvale_progress progress; ///< told while a grid of its own triangles is made; may be null
    void* user;                ///< handed to `progress`
} korvale_grid_options;

/// Copies, cells chosen.
KORVALE_C_API void korvale_grid_defaults(korvale_grid_options* options, size_t size);

/// A grid over triangles in `*grid`, null on failure.
///
/// Refuses corners that are no points or do not come in threes, numbers that are not finite, more than 2^31 - 1 cells,
/// and borrowing of what would have to be copied.
KORVALE_C_API korvale_status korvale_grid_new(const korvale_triangles* triangles, const korvale_grid_options* options,
                                              korvale_grid** grid, korvale_error* error);

/// The same over faces, each cut into triangles about its first corner.
KORVALE_C_API korvale_status korvale_grid_of_faces(const korvale_faces* faces, const korvale_grid_options* options,
                                                   korvale_grid** grid, korvale_error* error);

/// The number of triangles; 0 of null.
KORVALE_C_API int64_t korvale_grid_size(const korvale_grid* grid);

/// The cells along x, y and z.
KORVALE_C_API void korvale_grid_cells(const korvale_grid* grid, int32_t* cells);

/// The face that a triangle is of: its own number where the grid was made of triangles, -1 where there is none.
KORVALE_C_API int32_t korvale_grid_face(const korvale_grid* grid, int32_t triangle);

/// The triangles, [size][9], in memory of the grid, or of the caller where they are borrowed.
KORVALE_C_API const double* korvale_grid_triangles(const korvale_grid* grid);

/// One triangle met by a ray, at corner 0 times weight 0 plus corner 1 times weight 1 plus corner 2 times weight 2.
typedef struct korvale_hit {
    double distance;    ///< from the origin of the ray, in units of length whatever the direction's
    int32_t triangle;   ///< its number, -1 for none
    int32_t corners[3]; ///< the numbers of its points: 3 k, 3 k + 1, 3 k + 2 for triangle k that shares none
    double weights[3];  ///< of the corners at the meeting; they add up to 1
} korvale_hit;

/// The number of triangles that the ray from `origin` [3] along `direction` [3] meets; 0 of a null argument. Where
/// `distance` is not null it takes the distance to the nearest of them; without one it is left alone. A ray aimed at an
/// edge or a corner, up to rounding, may meet any of the triangles there, or none.
KORVALE_C_API int32_t korvale_grid_count(const korvale_grid* grid, const double* origin, const double* direction,
                                         double* distance);

/// The nearest triangle, the one with the least number of several at the same distance; triangle -1 at infinity where
/// there is none.
KORVALE_C_API korvale_hit korvale_grid_nearest(const korvale_grid* grid, const double* origin, const double* direction);

/// Whether a triangle is met at a distance of at most `reach`, which may be infinite: 1 or 0. It stops at the first.
KORVALE_C_API int32_t korvale_grid_any(const korvale_grid* grid, const double* origin, const double* direction,
                                       double reach);

/// The triangles on the ray, nearest first, those at one distance by their numbers: the first `room` of them go to
/// `hits`, and `*met` is how many there are.
KORVALE_C_API korvale_status korvale_grid_hits(const korvale_grid* grid, const double* origin, const double* direction,
                                               korvale_hit* hits, int64_t room, int64_t* met, korvale_error* error);

/// What `korvale_grid_cast` writes, one value a ray; null for what is not wanted.
typedef struct korvale_ray_columns {
    double* distances;  ///< to the nearest triangle, infinity where there is none
    int32_t* triangles; ///< the nearest triangle, -1 where there is none
    int32_t* counts;    ///< the number of triangles met
    double* weights;    ///< [3] of the corners of the nearest triangle, zeros where there is none
} korvale_ray_columns;

/// Casts many rays: `origins` and `directions` have as many points, or one of them a single point for all. `progress`
/// may be null; where it stops the work, the columns are partly written.
KORVALE_C_API korvale_status korvale_grid_cast(const korvale_grid* grid, const korvale_points* origins,
                                               const korvale_points* directions, const korvale_ray_columns* columns,
                                               korvale_progress progress, void* user, korvale_error* error);

/// Whether each point lies inside the closed meshes that the triangles make, 1 or 0 to `inside` [points->count]: a ray
/// from it meets an odd number of triangles. A ray that comes within 1e-09 of an edge, as a weight of a corner, is not
/// trusted, and up to four others are cast along other directions; the last is taken as it is. Points on the surface
/// come out either way. `progress` as in `korvale_grid_cast`.
///
/// Refuses triangles with an open edge, one between two places that an odd number of them has. The first call looks;
/// where borrowed triangles have moved since, that is not seen.
KORVALE_C_API korvale_status korvale_grid_contains(const korvale_grid* grid, const korvale_points* points,
                                                   uint8_t* inside, korvale_progress progress, void* user,
                                                   korvale_error* error);

/// The `RayStatus` behind the grid, for hosts in C++. Where the grid owns its triangles the first call makes one, which
/// its queries do not use, and whose lengths are the host's; null where the heap is exhausted.
KORVALE_C_API void* korvale_grid_record(korvale_grid* grid);

/// Releases a grid.
KORVALE_C_API void korvale_grid_free(korvale_grid* grid);

// --- Relaxation ------------------------------------------------------------------------------------------------------

/// A mesh that remembers its shape and brings deformed copies of its points back towards it. It keeps a copy.
///
/// It measures in the units of its points: edges shorter than 1e-06 exert no force, nor do an area and a volume that
/// are off by less than 1e-06. Multiply a mesh that measures less than about 1 by a power of two, and divide what comes
/// back.
typedef struct korvale_relaxer korvale_relaxer;

/// What a relaxation can keep of a mesh.
enum {
    KORVALE_LENGTHS = 1, ///< of the edges
    KORVALE_ANGLES = 2,  ///< at the corners of the faces, as cosines
    KORVALE_VOLUME = 4,  ///< enclosed; the mesh must be closed and turned one way
    KORVALE_AREA = 8     ///< of the surface
};

/// A relaxer in `*relaxer`, null on failure. `edges` may be null; else they are pairs of points, whose lengths can be
/// kept instead of those of the faces' own edges.
///
/// Refuses no points, numbers that are not finite, corners that are no points or not as many as the faces have
/// together, and a number of edge ends that is odd.
KORVALE_C_API korvale_status korvale_relaxer_new(const korvale_faces* faces, const korvale_indices* edges,
                                                 korvale_relaxer** relaxer, korvale_error* error);

/// The number of points; 0 of null.
KORVALE_C_API int64_t korvale_relaxer_size(const korvale_relaxer* relaxer);

/// The edges as pairs of points, [*count][2], in memory of the relaxer; null where there are none.
KORVALE_C_API const int32_t* korvale_relaxer_edges(const korvale_relaxer* relaxer, int64_t* count);

/// Keeps a measure of the mesh, as it is at the points that the relaxer was made with, with a weight above 0.
///
/// Refuses another weight, and a measure that the mesh does not have: without faces there are lengths of edges only,
/// and only a closed mesh that is turned one way has a volume. Points at exactly one place count as one there.
KORVALE_C_API korvale_status korvale_relaxer_keep(korvale_relaxer* relaxer, int32_t measure, double weight,
                                                  korvale_error* error);

/// Holds points where they are: `mask` [count] is not 0 for those that do not move. No mask frees all.
KORVALE_C_API korvale_status korvale_relaxer_hold(korvale_relaxer* relaxer, const uint8_t* mask, int64_t count,
                                                  korvale_error* error);

/// Moves points towards the shape, in place, by exactly `steps` steps of steepest descent; `*energy`, which may be
/// null, takes what is left. Where there is energy but nothing free to move that lowers it, the points stay as they
/// were; where the energy becomes exactly 0 the steps left do nothing. `progress` may be null; where it stops the work
/// nothing has moved. Refuses a relaxer that keeps nothing.
KORVALE_C_API korvale_status korvale_relaxer_step(korvale_relaxer* relaxer, const korvale_points_out* points,
                                                  int32_t steps, double* energy, korvale_progress progress, void* user,
                                                  korvale_error* error);

/// When a run stops, and whom it tells.
typedef struct korvale_run_options {
    uint32_t size;     ///< of this struct, in bytes
    int32_t steps;     ///< at most
    double energy;     ///< stop at this energy or below
    double least_drop; ///< stop when a step lowers the energy by less than this share of it

    /// Called after every step with its number, from 1, and the energy; 0 stops the run. May be null.
    int32_t (*progress)(int32_t step, double energy, void* user);
    void* user; ///< handed to `progress`
} korvale_run_options;

/// 1,000 steps, energy 0, no least drop, no progress.
KORVALE_C_API void korvale_run_defaults(korvale_run_options* options, size_t size);

/// Why a run ended.
enum {
    KORVALE_RUN_STEPS = 0,     ///< all steps are done
    KORVALE_RUN_ENERGY = 1,    ///< the energy wanted is reached
    KORVALE_RUN_STALLED = 2,   ///< a step no longer lowers the energy, or by less than `least_drop`
    KORVALE_RUN_CANCELLED = 3, ///< `progress` returned 0; the steps made so far stay
    KORVALE_RUN_NO_FORCE = 4,  ///< there is energy, but nothing that is free to move lowers it
    KORVALE_RUN_HELD = 5       ///< all that is kept is lengths and angles between points that are held
};

/// What a run came to.
typedef struct korvale_relaxation {
    int32_t steps; ///< steps made
    int32_t stop;  ///< why it ended
    double energy; ///< that is left
} korvale_relaxation;

/// Moves points towards the shape, in place, step by step until one of the conditions holds. They end where the same
/// number of single steps takes them. Refuses a relaxer that keeps nothing.
KORVALE_C_API korvale_status korvale_relaxer_run(korvale_relaxer* relaxer, const korvale_points_out* points,
                                                 const korvale_run_options* options, korvale_relaxation* result,
                                                 korvale_error* error);

/// The energy at some points. Edges and angles whose points are all held do not count.
KORVALE_C_API korvale_status korvale_relaxer_energy(korvale_relaxer* relaxer, const korvale_points* points,
                                                    double* energy, korvale_error* error);

/// The force on every point, held ones included: `forces` [points][3].
KORVALE_C_API korvale_status korvale_relaxer_forces(korvale_relaxer* relaxer, const korvale_points* points,
                                                    double* forces, korvale_error* error);

/// The `PreserveStatus` behind the relaxer, for hosts in C++.
KORVALE_C_API void* korvale_relaxer_record(korvale_relaxer* relaxer);

/// Releases a relaxer.
KORVALE_C_API void korvale_relaxer_free(korvale_relaxer* relaxer);

// --- Equations -------------------------------------------------------------------------------------------------------

/// Named variables and equations over them, written as text; docs/equations.md has the language. Texts end with a zero.
/// `korvale_equations_add` refuses what that language does not have, where `EqParseEquation` passes over it.
typedef struct korvale_equations korvale_equations;

/// A system with the variables PI and E and eighteen functions in `*equations`, null on failure.
KORVALE_C_API korvale_status korvale_equations_new(korvale_equations** equations, korvale_error* error);

/// Declares variables, each 0 at first; names that exist are left alone. `reserved` ones take the result of their
/// equation at the end of a pass instead of at once. Refuses a name that is not 1 to 12 letters, or a function's.
KORVALE_C_API korvale_status korvale_equations_declare(korvale_equations* equations, const char* names,
                                                       int32_t reserved, korvale_error* error);

/// Adds an equation, "name = expression"; `*number`, which may be null, takes its number, counted from 0. A text that
/// cannot be read, or of which anything would be passed over, gives KORVALE_BAD_EQUATION, and nothing is added: the
/// error says which word, where, why, and how to write it.
KORVALE_C_API korvale_status korvale_equations_add(korvale_equations* equations, const char* text, int32_t* number,
                                                   korvale_error* error);

/// How many equations and variables there are.
///@{
KORVALE_C_API int32_t korvale_equations_count(const korvale_equations* equations);
KORVALE_C_API int32_t korvale_equations_variables(const korvale_equations* equations);
///@}

/// The name of a variable, in memory of the system that is good until a variable is declared; null where there is none.
KORVALE_C_API const char* korvale_equations_name(const korvale_equations* equations, int32_t variable);

/// Gives a variable a value, or reads it.
///@{
KORVALE_C_API korvale_status korvale_equations_set(korvale_equations* equations, const char* name, double value,
                                                   korvale_error* error);
KORVALE_C_API korvale_status korvale_equations_get(const korvale_equations* equations, const char* name, double* value,
                                                   korvale_error* error);
///@}

/// Runs an equation once; `*result`, which may be null, takes its result, which its variable also takes unless it is
/// reserved.
KORVALE_C_API korvale_status korvale_equations_evaluate(korvale_equations* equations, int32_t equation, double* result,
                                                        korvale_error* error);

/// Values of one variable, one a row.
typedef struct korvale_column {
    const char* name;       ///< the variable
    korvale_numbers values; ///< of width 1
} korvale_column;

/// Where the values of one variable go, one a row.
typedef struct korvale_column_out {
    const char* name;           ///< the variable
    korvale_numbers_out values; ///< of width 1
} korvale_column_out;

/// Runs an equation once for every row of `output`: each column sets its variable, and the result goes to `output`. The
/// variables keep the values of the last row. Columns are read where they are, row by row, and may be the output.
/// `progress` may be null; where it stops the work, the rows so far are written and the variables keep the values of
/// the last of them.
KORVALE_C_API korvale_status korvale_equations_evaluate_rows(korvale_equations* equations, int32_t equation,
                                                             const korvale_column* columns, int64_t column_count,
                                                             const korvale_numbers_out* output,
                                                             korvale_progress progress, void* user,
                                                             korvale_error* error);

/// Runs all equations in order.
KORVALE_C_API korvale_status korvale_equations_pass(korvale_equations* equations, korvale_error* error);

/// Runs all equations in order once for every row; `results` take the values of their variables after each pass. There
/// are as many rows as the first column has values, or, without columns, the first result. `progress` as in
/// `korvale_equations_evaluate_rows`.
KORVALE_C_API korvale_status korvale_equations_pass_rows(korvale_equations* equations, const korvale_column* columns,
                                                         int64_t column_count, const korvale_column_out* results,
                                                         int64_t result_count, korvale_progress progress, void* user,
                                                         korvale_error* error);

/// 1 where the last call over columns ran a block of rows at a time, which is many times as quick and gives the same
/// bits; 0 where it ran row by row: for few rows, where equations call RAND, GAUSS (but from a table) or a function of
/// the host, where one reads a variable that it or a later one sets, and where an output lies shifted over a column.
KORVALE_C_API int32_t korvale_equations_ran_in_blocks(const korvale_equations* equations);

/// Replaces functions of constants in all equations by their values.
KORVALE_C_API korvale_status korvale_equations_simplify(korvale_equations* equations, korvale_error* error);

/// A function of the host for equations, called inside evaluations and tables with its 0, 1 or 2 arguments.
typedef double (*korvale_function)(const double* arguments, void* user);

/// Adds a function of 0, 1 or 2 arguments for the equations added from now on. `name` is 1 to 12 letters that stand for
/// nothing yet. `release`, which may be null, is called with `user` once: when the system is released, or at once where
/// this fails. `EqEvaluate` on the record calls the function as well.
///
/// A process has room for 512 different pairs of function and user of each number of arguments at a time.
KORVALE_C_API korvale_status korvale_equations_function(korvale_equations* equations, const char* name,
                                                        int32_t arguments, korvale_function function, void* user,
                                                        void (*release)(void* user), korvale_error* error);

/// For functions of the host that have failed: the call that is evaluating returns KORVALE_STOPPED as soon as the row
/// at work is done, without its result.
KORVALE_C_API void korvale_equations_stop(korvale_equations* equations);

/// Gives RAND and GAUSS of this system a random generator of its own, or seeds it anew: they repeat whatever else
/// draws, in any thread, and are what the generator of the process gives after `korvale_seed`. `EqEvaluate` on the
/// record draws from it as well. A system with a generator needs the room of two functions without arguments.
KORVALE_C_API korvale_status korvale_equations_seed(korvale_equations* equations, uint32_t seed, korvale_error* error);

/// 1 where the system has a generator of its own; `*seed`, which may be null, takes the seed that goes on from here.
KORVALE_C_API int32_t korvale_equations_seeded(const korvale_equations* equations, uint32_t* seed);

/// Replaces a function without arguments, such as RAND, by a table of `rows` rows of its values. Call it after the
/// equations that name the function: each place that does has a column of its own.
KORVALE_C_API korvale_status korvale_equations_make_table(korvale_equations* equations, const char* name, int32_t rows,
                                                          korvale_error* error);

/// Moves all tables to a row; between two rows values are interpolated.
KORVALE_C_API void korvale_equations_set_table_position(korvale_equations* equations, double row);

/// The `EquationSystem` behind the equations, for hosts in C++.
KORVALE_C_API void* korvale_equations_record(korvale_equations* equations);

/// Releases a system.
KORVALE_C_API void korvale_equations_free(korvale_equations* equations);

// --- Transforms ------------------------------------------------------------------------------------------------------
// 16 numbers, row by row; points are columns, so the translation is in numbers 3, 7 and 11. Results may overlap what
// they are made of. Where a pointer is null nothing happens.

/// Scale, rotation about x, then y, then z in radians, and translation, applied in this order.
typedef struct korvale_srt {
    double scale[3];       ///< along x, y and z
    double rotation[3];    ///< about x, y and z, in radians
    double translation[3]; ///< along x, y and z
} korvale_srt;

/// Scales, then turns, then moves.
KORVALE_C_API void korvale_transform_from_srt(const korvale_srt* srt, double* transform);

/// The inverse of that. A scale strictly between -1e-06 and 1e-06 is inverted to 1000000, so that the result stays
/// finite.
KORVALE_C_API void korvale_transform_inverse_of_srt(const korvale_srt* srt, double* transform);

/// By `radians` [3] about x first, then y, then z.
KORVALE_C_API void korvale_transform_rotation(const double* radians, double* transform);

/// Scale, rotation and translation of a transform made of them. Where the y rotation is a quarter turn x and z turn
/// about one axis and only their sum or difference is known: x comes out as 0.
KORVALE_C_API void korvale_transform_take_apart(const double* transform, korvale_srt* srt);

/// From the world into the frame at `origin` whose z axis runs along `z` and whose x axis is `reference` x z. Refuses a
/// z that is not longer than 1e-06 or runs along `reference`.
KORVALE_C_API korvale_status korvale_transform_into_frame(const double* origin, const double* z,
                                                          const double* reference, double* transform,
                                                          korvale_error* error);

/// First b, then a.
KORVALE_C_API void korvale_transform_multiply(const double* a, const double* b, double* product);

/// The transform that undoes another, by Gauss-Jordan elimination with partial pivoting; of a transform whose last row
/// is 0 0 0 1 that row is exact. Refuses one that nothing undoes, or that is not finite.
KORVALE_C_API korvale_status korvale_transform_invert(const double* transform, double* inverse, korvale_error* error);

/// Moves one point [3], divided by its fourth coordinate unless that is exactly 1, or turns and scales one vector [3]
/// without moving it.
///@{
KORVALE_C_API void korvale_transform_point(const double* transform, const double* point, double* output);
KORVALE_C_API void korvale_transform_vector(const double* transform, const double* vector, double* output);
///@}

/// Moves points to `output`, which has as many and may be the same; each is divided by its fourth coordinate unless
/// that is exactly 1.
KORVALE_C_API korvale_status korvale_transform_points(const double* transform, const korvale_points* points,
                                                      const korvale_points_out* output, korvale_error* error);

/// Turns and scales vectors without moving them.
KORVALE_C_API korvale_status korvale_transform_vectors(const double* transform, const korvale_points* vectors,
                                                       const korvale_points_out* output, korvale_error* error);

// --- Whole arrays ----------------------------------------------------------------------------------------------------

/// Seeds the random generator of the process.
KORVALE_C_API void korvale_seed(int32_t seed);

/// Sums `count` arrays of one shape, 2 or 4, each times its weight, into `output`, which has that shape and may be one
/// of them: w0 * a0 + w1 * a1, and with four + w2 * a2 + w3 * a3, added from the left.
KORVALE_C_API korvale_status korvale_mix(const korvale_numbers* arrays, const double* weights, int64_t count,
                                         const korvale_numbers_out* output, korvale_error* error);

/// The least and the greatest value of each column, [width] each. Of a column that begins with NaN both are NaN, a
/// later one is passed over. Refuses an array without rows.
KORVALE_C_API korvale_status korvale_bounds(const korvale_numbers* array, double* least, double* greatest,
                                            korvale_error* error);

/// Turns the order of the rows round, in place.
KORVALE_C_API korvale_status korvale_reverse(const korvale_numbers_out* array, korvale_error* error);

#ifdef __cplusplus
}
#endif

#endif
