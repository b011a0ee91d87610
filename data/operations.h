#pragma once

#include "../math/transform.h"
#include "../platform/export.h"
#include "data.h"
#include "datastruct.h"

/// Operations on whole arrays. Each exists for both generations with the same arithmetic; the output comes last.
///
/// - Results are 1, or -1 for mismatched shapes, counts or dims below 1, missing input buffers, an output that is also
///   an input (a mix excepted), a kind that is not supported, and an exhausted heap.
/// - The kind and the heap are looked at last, when the output may have been reshaped; on any other failure it is as it
///   was.
/// - An output that is disposed takes its list and its children along, so no input may be among them. `DATACat`,
///   `DATACopy` and `DATABounds` shape it without disposing it: dispose an output that holds children first.
/// - Copies, joins, mixes and transforms go element by element from the first on, so buffers that overlap give what
///   that order gives.

/// Appends `second` to `first`, which have the same dim and type.
///
/// The output gets dim, type and both counts together. `DataCat` disposes and reallocates it only when its shape is
/// another and copies kinds 0 to 2; `DATACat` always shapes and allocates it, reusing its capacity, and copies kinds 0
/// to 4, sharing the children of pointer kinds (release such an output with `DATANodeDispose`). An unknown kind
/// succeeds uncopied.
KORVALE_API int DataCat(Data* first, Data* second, Data* output);
KORVALE_API int DATACat(DATAstruct* first, DATAstruct* second, DATAstruct* output);

/// Copies the elements of `source`.
///
/// `DATACopy` gives the output the shape of the source, reusing its capacity, and copies kinds 0 to 4, sharing the
/// children of pointer kinds (release such an output with `DATANodeDispose`). `DataCopy` copies kinds 0 and 1 and
/// refuses bytes after shaping the output. An unknown kind succeeds uncopied.
///
/// Deliberate: `DataCopy` reshapes the output only when the source is wider, longer or of another type. A larger output
/// keeps its dim and count, and its leading count * dim values of the source are replaced.
KORVALE_API int DataCopy(Data* source, Data* output);
KORVALE_API int DATACopy(DATAstruct* source, DATAstruct* output);

/// output = wa * a + wb * b for doubles. `a` and `b` have equal shape; the output is disposed and allocated when its
/// shape differs and may be `a` or `b`.
///
/// Other kinds return -1 after the output was reshaped; an unknown kind returns 1.
KORVALE_API int DataMix(Data* a, Data* b, double wa, double wb, Data* output);
KORVALE_API int DATAMix(DATAstruct* a, DATAstruct* b, double wa, double wb, DATAstruct* output);

/// output = ((wa * a + wb * b) + wc * c) + wd * d, otherwise as the mix of two.
KORVALE_API int Data4Mix(Data* a, Data* b, Data* c, Data* d, double wa, double wb, double wc, double wd, Data* output);
KORVALE_API int DATA4Mix(DATAstruct* a, DATAstruct* b, DATAstruct* c, DATAstruct* d, double wa, double wb, double wc,
                         double wd, DATAstruct* output);

/// Makes the output two elements: the least and the greatest value of each component of `source`, by strict
/// comparisons from element 0 on. Doubles only; other kinds return -1 after the output was shaped, an unknown kind 1.
///
/// Deliberate: `DataBounds` allocates a buffer on every call and disposes the output before only when it is narrower
/// than the source, shorter than 2 or of another type; otherwise the buffer it replaces is not released.
KORVALE_API int DataBounds(Data* source, Data* output);
KORVALE_API int DATABounds(DATAstruct* source, DATAstruct* output);

/// Writes the bounds of `src` to `box`: the dim values of the minimum corner, then those of the maximum corner.
///
/// Both are of kind double, and `box` is allocated by the caller in any shape of 2 dim components: [2][dim], [1][2
/// dim], [2 dim][1]. Both corners start at element 0 and are widened by strict comparisons, so a NaN never replaces a
/// bound.
///
/// Returns 1, or -1 for a source without elements, a box of another size or kind, or a missing buffer.
KORVALE_API int DataBBox(Data* src, Data* box);
KORVALE_API int DATABBox(DATAstruct* src, DATAstruct* box);

/// Writes every point of `source`, carried by `m` as `TransformPoint` does, to `output`, which has the same count, is
/// allocated and may be `source`. Both have dim 3; else, and for a null matrix, nothing happens.
///
/// `TransformDATA` also wants equal types and walks two trees of arrays of the same structure, slot by slot, whatever
/// their dims; a pair with a null child is skipped. For trees beyond 64 levels see `DATASubReverse`.
KORVALE_API void TransformData(Xfm m, Data* source, Data* output);
KORVALE_API void TransformDATA(Xfm m, DATAstruct* source, DATAstruct* output);
