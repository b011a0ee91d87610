#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "data/datastruct.h"
#include "data/internal/buffers.h"

// Arrays of dim 1 or more that serve as lists: how much of them exists, whatever a host has done to the record.
namespace korvale::data {

/// Components of kind `type` that exist: 0 for a null record or buffer.
inline int64_t room(const DATAstruct* d, int32_t type)
{
    return d == nullptr || buffer_of(*d, type) == nullptr ? 0 : room(*d);
}

/// The kind of a list of such elements.
template <class T>
inline constexpr int32_t kKindOf = DATA_TYPE_DOUBLE;
template <>
inline constexpr int32_t kKindOf<int32_t> = DATA_TYPE_INT;
template <>
inline constexpr int32_t kKindOf<uint8_t> = DATA_TYPE_BYTE;
template <>
inline constexpr int32_t kKindOf<void*> = DATA_TYPE_POINTER;

/// The buffer of a list, or null.
template <class T>
T* buffer_in(const DATAstruct* list)
{
    return list == nullptr ? nullptr : static_cast<T*>(buffer_of(*list, kKindOf<T>));
}

/// The elements of a list that exist: those it counts, but no more than its buffer has.
template <class T>
struct Elements {
    T* first;
    int32_t count;
};

/// The count of `elements_in`, whatever a host has done to the record.
[[gnu::noinline, gnu::pure]] inline int32_t checked_count(const DATAstruct* list, int32_t type, int32_t dim)
{
    const int64_t held = room(list, type) / dim;
    return held < 1 || list->count < 1 ? 0 : static_cast<int32_t>(std::min<int64_t>(held, list->count));
}

/// The elements of a list, of `dim` components each. Inlined for the common case, a list that the library allocated.
template <class T>
[[gnu::always_inline]] inline Elements<T> elements_in(const DATAstruct* list, int32_t dim = 1)
{
    T* const first = buffer_in<T>(list);
    const bool is_common =
        first != nullptr && list->alloc_dim == dim && list->count >= 0 && list->count <= list->alloc_count;
    return {first, is_common ? list->count : checked_count(list, kKindOf<T>, dim)};
}

/// Whether `note_room` has marked the array as holding nothing, by a capacity of one element of 0 components. Neither
/// hosts nor the library leave a buffer beside that capacity.
inline bool is_noted_empty(const DATAstruct& d)
{
    return d.alloc_count == 1 && d.alloc_dim == 0;
}

/// Call before changing count or dim of an array that wraps host memory. Keeps the old size, count * dim, in the alloc
/// fields, from then on the only record of how far that memory reaches. Afterwards `is_wrapped` is false for it, unless
/// it holds nothing.
///
/// Does nothing for an array without a buffer, one that the library allocated, and one marked before.
inline void note_room(DATAstruct& d, int32_t count, int32_t dim)
{
    if (!is_wrapped(d) || is_noted_empty(d) || buffer_of(d, d.type) == nullptr)
        return;
    const bool is_empty = count < 1 || dim < 1;
    d.alloc_count = is_empty ? 1 : count;
    d.alloc_dim = is_empty ? 0 : dim;
    d.alloc_type = d.type;
}

/// `room`, but 0 for an array that `note_room` has marked as holding nothing.
inline int64_t noted_room(const DATAstruct& d, int32_t type)
{
    return is_wrapped(d) && is_noted_empty(d) ? 0 : room(&d, type);
}

/// Whether all of the arrays exist and may grow in place.
inline bool may_all_grow(std::initializer_list<const DATAstruct*> arrays)
{
    return std::all_of(arrays.begin(), arrays.end(), [](const DATAstruct* d) { return d != nullptr && may_grow(*d); });
}

/// Changes the array to count * dim components and clears those it gains; false where it has fewer then.
inline bool grow_cleared(DATAstruct& d)
{
    const int64_t held = room(&d, d.type);
    const int64_t wanted = components(d.count, d.dim);
    if (DATAReAllocate(&d) < 0 || !holds(d, d.type, wanted))
        return false;
    if (wanted > held) {
        const size_t bytes = component_bytes(d, d.type);
        auto* const buffer = static_cast<unsigned char*>(buffer_of(d, d.type));
        std::memset(buffer + static_cast<size_t>(held) * bytes, 0, static_cast<size_t>(wanted - held) * bytes);
    }
    return true;
}

} // namespace korvale::data
