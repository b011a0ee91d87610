#pragma once

#include <cstdint>

#include "../platform/export.h"
#include "data.h"

/// The second array generation: a table of `count` elements of `dim` components that remembers its capacity, can hold
/// other arrays and forms lists.
///
/// Component k of element i is at i * dim + k. Records and buffers come from malloc. A record reached through `next` or
/// through a slot of kind `DATA_TYPE_DATA` is owned by the record that points to it.
///
/// A host that wraps its own memory leaves alloc_dim and alloc_count at -1 or 0. Such an array is read, and written in
/// place, by count * dim alone. Functions that append to an array refuse one that wraps memory. Those that shape an
/// array (`DATAAllocate`, `DATAReAllocate`, an output that is shaped) and those that dispose one free its memory or
/// put a new buffer in its place: there it has to come from malloc, and results are found in the record, not in the
/// old memory.
struct DATAstruct {
    int32_t dim;         ///< components per element; -1 when unset
    int32_t count;       ///< elements; -1 when unset
    int32_t alloc_dim;   ///< dim the buffer was allocated for; -1 when none
    int32_t alloc_count; ///< count the buffer was allocated for; -1 when none
    int32_t type;        ///< element kind wanted
    int32_t alloc_type;  ///< element kind of the buffer
    double* dvals;       ///< buffer of kind `DATA_TYPE_DOUBLE`, owned
    int32_t* ivals;      ///< buffer of kind `DATA_TYPE_INT`, owned
    uint8_t* bvals;      ///< buffer of kind `DATA_TYPE_BYTE`, owned
    void** pvals;        ///< buffer of kinds `DATA_TYPE_POINTER` and `DATA_TYPE_DATA`, owned
    DATAstruct* next;    ///< following record of a list, owned, or null
};

/// Makes `d` empty: sizes -1, kinds 0, all pointers null. Releases nothing.
KORVALE_API void DATAInitialize(DATAstruct* d);

/// A new empty record from the heap, to be freed by the caller; null when the heap is exhausted.
KORVALE_API DATAstruct* DATANew();

/// Makes room for count * dim elements of kind `type`; set the three before. The contents are not kept.
///
/// A buffer of the same kind that is large enough is reused as it stands, and alloc_dim and alloc_count keep its larger
/// capacity. Otherwise all buffers are freed, but for memory that a host wraps, and a new one is made: numbers are not
/// cleared, pointer slots are null. An unknown kind gets no buffer and succeeds. Children in slots that are freed are
/// not released: dispose an array of arrays before.
///
/// Returns 1, or -1 for a null record, a count or dim below 1 or more than 2^31 - 1 elements (nothing changes), or an
/// exhausted heap (the alloc fields then already describe the shape that was wanted).
KORVALE_API int DATAAllocate(DATAstruct* d);

/// Gives `d` a buffer of exactly count * dim elements of kind `type`, keeping the leading elements.
///
/// Set count, dim and type before the call; zero is allowed while the kind stays. The first min(old, new) elements
/// survive by flat index, so a changed dim regroups values rather than moving rows. A changed kind releases all and
/// acts as `DATAAllocate`, whose result it returns. Pointers into a replaced buffer are invalid afterwards. For 0
/// elements the buffer is null.
///
/// Returns 1, or -1 for a null record, a negative size or more than 2^31 - 1 elements (nothing changes then).
///
/// When the heap is exhausted and elements would have to move, returns -1 and leaves the record as it was; when none
/// would, returns 1 with a null buffer.
///
/// Deliberate: slots gained by a pointer kind are not cleared; fill them before anything disposes the array.
KORVALE_API int DATAReAllocate(DATAstruct* d);

/// Frees the four buffers without following pointer slots and makes `d` empty; `next` is forgotten, not released. This
/// is the way to release an array that shares its children with another.
KORVALE_API void DATANodeDispose(DATAstruct* d);

/// Releases the buffers of `d`, the children in all slots of its capacity when it is of kind `DATA_TYPE_DATA`, and the
/// rest of its list, and makes `d` empty. The record itself is not freed.
///
/// A record that is reached several times, through slots or lists on whatever level, is released once. The buffers of
/// every record are released, whatever its sizes say.
///
/// Returns 1, or -1 for a null record.
KORVALE_API int DATADispose(DATAstruct* d);

/// The number of records along `next`, 0 for null.
KORVALE_API int DATAListCount(DATAstruct* first);

/// A new array of kind `DATA_TYPE_DATA` [n][1] whose slots hold the records of the list in order; their `next` links
/// stay. The new array owns the records. Null for an empty list or when the heap is exhausted.
///
/// Deliberate: the new record is not released when the heap has no room for its slots.
KORVALE_API DATAstruct* DATAListToDATA(DATAstruct* first);

/// 1 for points: kind double, dim 3, count 0 or more; else 0.
KORVALE_API int DATACheckIfPoints(DATAstruct* d);

/// 1 for a face: kind `DATA_TYPE_DATA`, dim 1, count 1 or more, points in every slot; else 0.
KORVALE_API int DATACheckIfFace(DATAstruct* d);

/// 1 for a patch: kind `DATA_TYPE_DATA`, dim 1, count 1 or more, with slots; else 0. The children are not examined.
KORVALE_API int DATACheckIfPatch(DATAstruct* d);

/// 1 for a mesh: kind `DATA_TYPE_DATA`, dim 5, count 1 or more, with slots; else 0. The children are not examined.
KORVALE_API int DATACheckIfMesh(DATAstruct* d);

/// Reverses the order of the elements in place; pointer kinds exchange their slots. Nothing happens for fewer than two
/// elements, a dim below 1, an unknown kind or a missing buffer.
KORVALE_API void DATAReverse(DATAstruct* d);

/// `DATAReverse` on every leaf of a tree of arrays: an array of kind `DATA_TYPE_DATA` passes it on to its first count
/// slots, whatever its dim, and keeps their order. A leaf in several slots is reversed for each.
///
/// A tree may be of any depth. Beyond 64 levels the walk takes memory from the heap; where there is none, what lies
/// deeper stays as it is.
KORVALE_API void DATASubReverse(DATAstruct* d);
