#pragma once

#include <cstdint>

#include "../data/data.h"
#include "../data/datastruct.h"
#include "../platform/export.h"

/// What `Border` works on: one closed planar outline, the distance to offset it by, and the border that results.
///
/// The caller owns the record and, once set, both arrays; no function disposes it. Set `path` and the parameters after
/// `BorderInitialize`.
struct BorderStatus {
    Data* path;             ///< input, a new empty array: outline [n][3] of doubles; the last point joins the first
    Data* output;           ///< result, null: border [m][3] of doubles; released and made anew by every call
    double height;          ///< 0.0: distance of the border from the plane of the outline, along the flattened z
    double distance;        ///< 1.0: signed offset; above 0 outwards, unless flattening turns the outline over
    int32_t keep_collapsed; ///< 1: a point of the border per input point; 0: removed vertices are left out
    int32_t reserved1;      ///< 1: kept for hosts that read it
    int32_t split_events;   ///< 1: stop also where a vertex meets a far edge; 0: only where an edge vanishes
    int32_t reserved2;      ///< 5: kept for hosts that read it
    int32_t reserved3;      ///< 0: kept for hosts that read it
};

/// What `BORDER`, `BORDER_BORDER` and the edits for bands work on, with the work arrays that survive from call to call.
///
/// The caller owns the record and all ten arrays; no function disposes it. After a sweep the work arrays, one entry
/// per input point, hold its final state: entries of a removed vertex stay as they were when it was removed, except
/// those of `flat`. That array holds the points of the border: with `keep_collapsed` a removed vertex has the place of
/// the one it merged into, without it the live vertices stand in front, and what follows them is left over.
struct BORDERStatus {
    DATAstruct* path;       ///< input, a new empty array: outline [n][3] of doubles, or for `BORDER` a list of outlines
    DATAstruct* output;     ///< result, a new empty array: border [m][3] of doubles, or a list of borders
    DATAstruct* flat;       ///< work [n][3] doubles: the flattened outline, then the moving vertices
    DATAstruct* velocity;   ///< work [n][3] doubles: motion of vertex i per unit of distance, z 0
    DATAstruct* direction;  ///< work [n][3] doubles: unit direction of the edge from vertex i to the next live one, z 0
    DATAstruct* line;       ///< work [n][3] doubles: a, b, c of the line of edge i; written with `split_events` only
    DATAstruct* dead;       ///< work [n][1] bytes: 1 once vertex i has been removed
    DATAstruct* length;     ///< work [n][1] doubles: length of edge i
    DATAstruct* rate;       ///< work [n][1] doubles: change of that length per unit of distance
    DATAstruct* merge;      ///< work [n][1] int32: the vertex that vertex i merged into, itself while live
    double height;          ///< 0.0: `BORDER` adds it to the flattened z of every point of the border
    double distance;        ///< 1.0: signed offset; above 0 outwards
    int32_t keep_collapsed; ///< 1: a point of the border per input point; 0: removed vertices are left out
    int32_t split_events;   ///< 1: stop also where a vertex meets a far edge; 0: only where an edge vanishes
};

/// Sets the defaults named at the fields and gives `status` a new `path`. Releases nothing: arrays of an earlier
/// initialisation are abandoned. `path` is null when the heap is exhausted.
KORVALE_API void BorderInitialize(BorderStatus* status);

/// Sets the defaults named at the fields and gives `status` ten new arrays. Releases nothing: arrays of an earlier
/// initialisation are abandoned. An array is null when the heap is exhausted.
KORVALE_API void BORDERInitialize(BORDERStatus* status);
