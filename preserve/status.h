#pragma once

#include <cstdint>

#include "../data/datastruct.h"
#include "../platform/export.h"

/// What the solver can keep of a mesh: the bits of `PreserveStatus::flags` and the argument of `PreservePreserve`.
enum {
    PRESERVE_LENGTH = 1,     ///< lengths of the edges
    PRESERVE_FACE_ANGLE = 2, ///< angles at the corners of the faces, measured as cosines
    PRESERVE_VOLUME = 4,     ///< enclosed volume
    PRESERVE_AREA = 8        ///< surface area
};

/// A mesh, the shape it is to keep, and how far it is from that shape. Zero-fill the record before its first use.
///
/// A corner is a place in the face point list; corners are counted through all faces. The previous and the next corner
/// of a face are cyclic.
struct PreserveStatus {
    int32_t flags; ///< terms switched on, 0 after `PreserveInitialize`

    // Input. Borrowed: used in place, so keep the arrays alive and do not change the connectivity.
    DATAstruct* points;      ///< [points][3] doubles, the reference positions
    DATAstruct* edges;       ///< [edges][2] ints; one that `PreserveInitialize` made is the caller's to release
    DATAstruct* face_sizes;  ///< [faces] ints, corners of each face, or null
    DATAstruct* face_points; ///< [corners] ints, the point of each corner, or null
    DATAstruct* tags;        ///< [points] bytes, nonzero holds a point fixed, or null
    DATAstruct* masses;      ///< [points] doubles, or null; kept, read by no computation

    // Connectivity. Owned, made by `PreserveInitialize` for the host; the library walks the lists that it was given.
    DATAstruct* face_starts;      ///< [faces] ints, first corner of each face; read by no computation
    DATAstruct* point_edge_count; ///< [points] ints, edges at each point, an edge from a point to itself counted twice;
                                  ///< read by no computation
    DATAstruct* point_edge_start; ///< [points] ints, where the run of each point starts in `point_edges`; read by no
                                  ///< computation
    DATAstruct* point_edges;      ///< [2 edges] ints, edges grouped by point, ascending within each; read by no
                                  ///< computation
    DATAstruct* point_faces;      ///< [2 edges] ints, faces grouped by point in the same runs, -1 where unused; read by
                                  ///< no computation

    // Reference measures. In the names here and below, o is what a measure originally was, n what it is now.
    double weights[4]; ///< weight of each term: length, face angle, volume, area; 1.0 after `PreserveInitialize`
    DATAstruct* olen;  ///< [edges] doubles, lengths, owned
    DATAstruct* ofang; ///< [corners] doubles, cosines, owned
    double ovolume;    ///< six times the enclosed volume
    double oarea;      ///< twice the surface area

    // The latest evaluation.
    DATAstruct* cur_points; ///< [points][3] doubles, the positions evaluated, borrowed
    DATAstruct* nlen;       ///< [edges] doubles, lengths, owned
    DATAstruct* nfang;      ///< [corners] doubles, cosines, owned
    double nvolume;         ///< six times the enclosed volume
    double narea;           ///< twice the surface area
    DATAstruct* force;      ///< [points][3] doubles, owned; undefined until the first evaluation of forces
    double energy;          ///< sum over the terms of weight times squared deviation
};

/// Takes a mesh over into `status`: its points and its connectivity, either edges or faces or both.
///
/// `edges` [n][2], `face_sizes` [faces] and `face_points` [corners] are ints; each may be null or empty, and one
/// without an int buffer (its kind was left at doubles, say) counts as empty. Without edges they are built from the
/// faces: one for every pair of neighbouring corners, in order of first appearance, the smaller index first. Face
/// points without face sizes are forgotten; face sizes without face points are kept, but switch no term on. A face may
/// have any number of corners, also none. Kinds and dims of the three arrays are not looked at: memory that a host
/// wraps is taken to have what count says.
///
/// Resets flags, tags, masses, the connectivity and the weights, and makes `force`. The measures, their arrays,
/// `cur_points` and `energy` keep what they hold, which is why the record starts out zero-filled.
///
/// Returns 1, or -1, with nothing changed, for a null status, `points` that are none, a point index outside 0 .. points
/// - 1, a face with corners outside the list, edges or face sizes longer than their buffers, or sizes beyond 2^31 - 1.
/// Only what is used is examined: no positions (`PreservePreserve` looks at those), no faces when one of their arrays
/// is missing, no corners behind those of the faces.
///
/// When the heap is exhausted, arrays are missing: each is made whole or is null, and the terms that need it cannot be
/// switched on.
///
/// Deliberate: a negative face size is a face without corners after which the next one starts so many corners earlier.
/// Faces that share corners in this way may have more edges than the list is long, which returns -1 where edges are
/// built; where they have as many, the faces after that add none.
///
/// Deliberate: nothing that `status` owns is released, so `PreserveDispose` before a second call.
///
/// Deliberate: a point with more faces than edges lets its faces run into the next point's run of `point_faces`.
KORVALE_API int PreserveInitialize(PreserveStatus* status, DATAstruct* points, DATAstruct* edges,
                                   DATAstruct* face_sizes, DATAstruct* face_points);

/// Attaches one byte per point; nonzero holds the point fixed in `PreserveCompute` and leaves edges and corners whose
/// points are all tagged out of the energy. The array is borrowed and may be edited or replaced at any time.
///
/// Returns 1, or -1, with nothing changed, unless `tags` is of kind byte, dim 1 and as long as the points.
KORVALE_API int PreserveSetTag(PreserveStatus* status, DATAstruct* tags);

/// Attaches one mass per point. The array is borrowed and kept; no computation reads it.
///
/// Returns 1, or -1, with nothing changed, unless `masses` is of kind double, dim 1, as long as the points and without
/// an element of 0.0 or below; a NaN passes.
KORVALE_API int PreserveSetMass(PreserveStatus* status, DATAstruct* masses);

/// Switches one term on with `weight` and records its reference measure from the reference points. A second call for
/// the same term measures again and replaces the weight.
///
/// A weight of 0.0 or below changes nothing and returns 1; a NaN weight is taken. `which` = 0 returns 1 as well.
///
/// Returns 1, or -1 when the measure cannot be taken (see `PreserveInitOlen` and its like): the term is off then, also
/// where it was on, and its weight is stored.
///
/// Deliberate: a `which` that is not one of the four bits returns -1 and yet leaves its bits in `flags`. A term
/// switched on in this way whose arrays were never made is skipped by the evaluation.
KORVALE_API int PreservePreserve(PreserveStatus* status, int which, double weight);

/// Replaces the reference points by another array of the same count, borrowed like the first.
///
/// Returns 1, or -1, with nothing changed, for an array that is not points or of another count.
///
/// Deliberate: the reference measures stay those recorded before. `PreservePreserve` with a positive weight measures a
/// term at the new points.
KORVALE_API int PreserveReInitialize(PreserveStatus* status, DATAstruct* points);

/// Releases what `status` owns. The arrays handed in, the edges (also those that `PreserveInitialize` made) and the
/// record itself stay.
///
/// Deliberate: the fields are not reset; zero-fill the record before using it again.
KORVALE_API void PreserveDispose(PreserveStatus* status);
