#pragma once

#include <cstdint>

#include "../platform/export.h"

/// Element kinds of both array generations; the last two exist in `DATAstruct` only.
enum {
    DATA_TYPE_DOUBLE = 0,  ///< 64-bit floating point in `dvals`
    DATA_TYPE_INT = 1,     ///< signed 32-bit in `ivals`
    DATA_TYPE_BYTE = 2,    ///< unsigned 8-bit in `bvals`
    DATA_TYPE_POINTER = 3, ///< untyped pointer in `pvals`, not owned: never followed or freed
    DATA_TYPE_DATA = 4     ///< pointer to a child `DATAstruct` in `pvals`, owned: disposed and freed with the array
};

/// A table of `count` elements of `dim` components, all of one kind. Component k of element i is at i * dim + k.
///
/// The record owns its buffer, which comes from malloc. Only the buffer of the record's own kind is in use; the other
/// pointers are null.
struct Data {
    int32_t dim;    ///< components per element; -1 when unset
    int32_t count;  ///< elements; -1 when unset
    int32_t type;   ///< `DATA_TYPE_DOUBLE`, `DATA_TYPE_INT` or `DATA_TYPE_BYTE`
    double* dvals;  ///< buffer of kind `DATA_TYPE_DOUBLE`, else null
    int32_t* ivals; ///< buffer of kind `DATA_TYPE_INT`, else null
    uint8_t* bvals; ///< buffer of kind `DATA_TYPE_BYTE`, else null
};

/// An array in a singly linked list; usable wherever a `Data` is. The first node belongs to whoever holds it, every
/// following node came from the heap and is owned by the list.
struct data_list_struct : Data {
    data_list_struct* next; ///< the following node, or null
};

/// Makes `d` empty: dim and count -1, type 0, no buffers. Releases nothing.
KORVALE_API void DataInitialize(Data* d);

/// `DataInitialize`, and no following node.
KORVALE_API void DataListInitialize(data_list_struct* node);

/// A new empty record from the heap, to be freed by the caller; null when the heap is exhausted.
KORVALE_API Data* DataNew();

/// A new empty list node from the heap; null when the heap is exhausted.
KORVALE_API data_list_struct* DataListNew();

/// Gives `d` a new buffer of count * dim elements of kind `type`; set the three before. The elements are not cleared.
/// An unknown kind gets no buffer and succeeds.
///
/// Returns 1, or -1 for a null record, a count or dim below 1 or more than 2^31 - 1 elements (nothing changes), or an
/// exhausted heap (the buffer is null then).
///
/// Deliberate: a buffer the record already holds is neither looked at nor released; `DataDispose` first.
KORVALE_API int DataAllocate(Data* d);

/// Frees the buffers and makes `d` empty. The record itself is not freed.
KORVALE_API void DataDispose(Data* d);

/// Disposes every node of the list, frees all but the first and leaves the first empty and unlinked.
KORVALE_API void DataListDispose(data_list_struct* head);

/// Reverses the order of the elements in place. Nothing happens for fewer than two elements, a dim below 1, an unknown
/// kind or a missing buffer.
KORVALE_API void DataReverse(Data* d);
