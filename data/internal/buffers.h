#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <type_traits>

#include "data/data.h"
#include "data/datastruct.h"
#include "platform/internal/namespaces.h"

// Sizes of arrays, the same questions for both generations.
namespace korvale::data {

constexpr int64_t kMostElements = std::numeric_limits<int32_t>::max();

/// count * dim, in 64 bits.
inline int64_t components(int64_t count, int64_t dim)
{
    return count * dim;
}

/// Whether elements of a kind are pointers, which the first generation has none of.
template <class Array>
constexpr bool are_pointers(int32_t type)
{
    return std::is_same_v<Array, DATAstruct> && (type == DATA_TYPE_POINTER || type == DATA_TYPE_DATA);
}

/// Bytes of one component of a kind; 0 for an unknown kind.
template <class Array>
size_t component_bytes(const Array&, int32_t type)
{
    switch (type) {
    case DATA_TYPE_DOUBLE:
        return sizeof(double);
    case DATA_TYPE_INT:
        return sizeof(int32_t);
    case DATA_TYPE_BYTE:
        return sizeof(uint8_t);
    default:
        return are_pointers<Array>(type) ? sizeof(void*) : 0;
    }
}

/// The buffer that a kind selects, or null.
template <class Array>
void* buffer_of(const Array& d, int32_t type)
{
    switch (type) {
    case DATA_TYPE_DOUBLE:
        return d.dvals;
    case DATA_TYPE_INT:
        return d.ivals;
    case DATA_TYPE_BYTE:
        return d.bvals;
    default:
        if constexpr (requires { d.pvals; })
            return are_pointers<Array>(type) ? d.pvals : nullptr;
        return nullptr;
    }
}

/// Makes `buffer` the buffer of a kind; what stood there is not released.
template <class Array>
void set_buffer(Array& d, int32_t type, void* buffer)
{
    switch (type) {
    case DATA_TYPE_DOUBLE:
        d.dvals = static_cast<double*>(buffer);
        break;
    case DATA_TYPE_INT:
        d.ivals = static_cast<int32_t*>(buffer);
        break;
    case DATA_TYPE_BYTE:
        d.bvals = static_cast<uint8_t*>(buffer);
        break;
    default:
        if constexpr (requires { d.pvals; }) {
            if (are_pointers<Array>(type))
                d.pvals = static_cast<void**>(buffer);
        }
    }
}

/// Frees a buffer unless it is null. Most of a record's buffers are null, and a test costs less than the call.
inline void free_buffer(void* buffer)
{
    if (buffer != nullptr)
        std::free(buffer);
}

/// Releases the buffers of a record, which is left as it is.
inline void free_buffers(const Data& d)
{
    free_buffer(d.dvals);
    free_buffer(d.ivals);
    free_buffer(d.bvals);
}

/// Releases a node, or nothing, and all that follow it.
inline void free_chain(data_list_struct* node)
{
    while (node != nullptr) {
        data_list_struct* const following = node->next;
        free_buffers(*node);
        std::free(node);
        node = following;
    }
}

/// Whether any buffer the record has is the host's. The library sets a capacity of 1 or more for every buffer that it
/// makes; a host leaves -1 or, in a zero-filled record, 0.
inline bool is_wrapped(const DATAstruct& d)
{
    return d.alloc_count < 1 || d.alloc_dim < 1;
}

/// Whether `DATAReAllocate` may make the array longer in place. It would free memory of the host, and the library
/// cannot know whose that is, so an array that wraps some stays as it is; one without a buffer may get its first.
inline bool may_grow(const DATAstruct& d)
{
    const bool has_buffer = d.dvals != nullptr || d.ivals != nullptr || d.bvals != nullptr || d.pvals != nullptr;
    return !is_wrapped(d) || !has_buffer;
}

/// Components that a buffer of the record has room for: a `Data` is judged by count * dim, a `DATAstruct` by what was
/// allocated where the library allocated it.
inline int64_t room(const Data& d)
{
    return components(d.count, d.dim);
}

inline int64_t room(const DATAstruct& d)
{
    return is_wrapped(d) ? components(d.count, d.dim) : components(d.alloc_count, d.alloc_dim);
}

/// Two neighbouring 32-bit fields of a record as one 64-bit word, to be compared at once.
inline uint64_t both(const int32_t* sizes)
{
    uint64_t word;
    std::memcpy(&word, reinterpret_cast<const unsigned char*>(sizes), sizeof word);
    return word;
}

/// dim and count in one word.
template <class Array>
uint64_t shape_of(const Array& d)
{
    static_assert(offsetof(Array, count) == offsetof(Array, dim) + sizeof d.dim);
    return both(&d.dim);
}

/// Whether n <= room(d), for an array of n components. The common case, a capacity that is exactly the shape, is one
/// comparison of words.
inline bool has_room(const Data&, int64_t)
{
    return true;
}

inline bool has_room(const DATAstruct& d, int64_t n)
{
    static_assert(offsetof(DATAstruct, alloc_count) == offsetof(DATAstruct, alloc_dim) + sizeof d.alloc_dim);
    return both(&d.alloc_dim) == shape_of(d) || n <= room(d);
}

/// The number of doubles in an array of that kind whose buffer holds all it counts; 0 for any other.
template <class Array>
[[gnu::always_inline]] inline int64_t doubles_in(const Array& d)
{
    if (d.type != DATA_TYPE_DOUBLE || d.dvals == nullptr || d.count < 1 || d.dim < 1)
        return 0;
    const int64_t n = components(d.count, d.dim);
    return n <= kMostElements && has_room(d, n) ? n : 0;
}

/// Whether the buffer that the library has allocated serves for `wanted` components of kind `type`.
inline bool serves(const DATAstruct& d, int32_t type, int64_t wanted)
{
    return type == d.alloc_type && !is_wrapped(d) && wanted <= components(d.alloc_count, d.alloc_dim) &&
           (buffer_of(d, type) != nullptr || component_bytes(d, type) == 0);
}

/// Whether `wanted` components of kind `type` can be read or written: the buffer exists and has the room, and an array
/// may have as many.
template <class Array>
bool holds(const Array& d, int32_t type, int64_t wanted)
{
    return buffer_of(d, type) != nullptr && wanted <= room(d) && wanted <= kMostElements;
}

/// Whether the count * dim components of the record's own kind exist.
template <class Array>
bool is_filled(const Array& d)
{
    return d.count >= 1 && d.dim >= 1 && holds(d, d.type, components(d.count, d.dim));
}

/// Whether `d` is of the library's kinds at all.
template <class Array>
bool is_known_kind(const Array& d)
{
    return component_bytes(d, d.type) != 0;
}

} // namespace korvale::data
