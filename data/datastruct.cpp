// Records of the second generation and their buffers. The alloc fields tell what the buffer was made for: it serves
// every shape of the same kind that is not larger, and only DATAReAllocate fits it to the element. After a failed
// allocation they describe what was wanted and the buffer is null, which counts as no room everywhere.
#include "data/datastruct.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "data/internal/buffers.h"
#include "data/internal/record.h"
#include "data/internal/trees.h"
#include "platform/internal/pointers.h"

static_assert(korvale::platform::kNarrowPointers ||
              (sizeof(DATAstruct) == 64 && offsetof(DATAstruct, dim) == 0 && offsetof(DATAstruct, count) == 4 &&
               offsetof(DATAstruct, alloc_dim) == 8 && offsetof(DATAstruct, alloc_count) == 12 &&
               offsetof(DATAstruct, type) == 16 && offsetof(DATAstruct, alloc_type) == 20 &&
               offsetof(DATAstruct, dvals) == 24 && offsetof(DATAstruct, ivals) == 32 &&
               offsetof(DATAstruct, bvals) == 40 && offsetof(DATAstruct, pvals) == 48 &&
               offsetof(DATAstruct, next) == 56));

namespace korvale::data {
namespace {

void free_buffers(DATAstruct& d)
{
    free_buffer(d.dvals);
    free_buffer(d.ivals);
    free_buffer(d.bvals);
    free_buffer(d.pvals);
    d.dvals = nullptr;
    d.ivals = nullptr;
    d.bvals = nullptr;
    d.pvals = nullptr;
}

/// Elements the buffer was allocated for, -1 while nothing is allocated; 0 when that allocation had failed.
int64_t capacity(const DATAstruct& d)
{
    if (d.alloc_count < 0 || d.alloc_dim < 0)
        return -1;
    if (component_bytes(d, d.alloc_type) != 0 && buffer_of(d, d.alloc_type) == nullptr)
        return 0;
    return components(d.alloc_count, d.alloc_dim);
}

/// Changes the buffer from `held` to `wanted` elements, keeping the leading ones. False, with nothing changed, when the
/// heap is exhausted and there are elements to keep.
bool resize_buffer(DATAstruct& d, int64_t held, int64_t wanted)
{
    void* const old = buffer_of(d, d.type);
    const size_t bytes = static_cast<size_t>(wanted) * component_bytes(d, d.type);
    if (std::min(held, wanted) < 1) {
        std::free(old);
        // Deliberate: a buffer that malloc refuses is null and no failure.
        set_buffer(d, d.type, bytes == 0 ? nullptr : std::malloc(bytes));
        return true;
    }
    void* const resized = std::realloc(old, bytes);
    if (resized == nullptr)
        return false;
    set_buffer(d, d.type, resized);
    return true;
}

bool has_slots(const DATAstruct* d, int32_t dim)
{
    return d != nullptr && d->type == DATA_TYPE_DATA && d->dim == dim && d->count >= 1 && d->pvals != nullptr;
}

} // namespace
} // namespace korvale::data

using namespace korvale::data;

void DATAInitialize(DATAstruct* d)
{
    if (d == nullptr)
        return;
    d->dim = -1;
    d->count = -1;
    d->alloc_dim = -1;
    d->alloc_count = -1;
    d->type = DATA_TYPE_DOUBLE;
    d->alloc_type = DATA_TYPE_DOUBLE;
    d->dvals = nullptr;
    d->ivals = nullptr;
    d->bvals = nullptr;
    d->pvals = nullptr;
    d->next = nullptr;
}

DATAstruct* DATANew()
{
    auto* const d = static_cast<DATAstruct*>(std::malloc(sizeof(DATAstruct)));
    DATAInitialize(d);
    return d;
}

int DATAAllocate(DATAstruct* d)
{
    if (d == nullptr || d->count < 1 || d->dim < 1)
        return -1;
    const int64_t wanted = components(d->count, d->dim);
    if (wanted > kMostElements)
        return -1;
    if (serves(*d, d->type, wanted))
        return 1;
    if (!is_wrapped(*d))
        free_buffers(*d);
    d->alloc_count = d->count;
    d->alloc_dim = d->dim;
    d->alloc_type = d->type;
    const size_t bytes = static_cast<size_t>(wanted) * component_bytes(*d, d->type);
    if (bytes == 0)
        return 1;
    void* const buffer = std::malloc(bytes);
    set_buffer(*d, d->type, buffer);
    if (buffer == nullptr)
        return -1;
    if (d->pvals == buffer)
        std::memset(buffer, 0, bytes);
    return 1;
}

int DATAReAllocate(DATAstruct* d)
{
    if (d == nullptr || d->count < 0 || d->dim < 0)
        return -1;
    const int64_t wanted = components(d->count, d->dim);
    if (wanted > kMostElements)
        return -1;
    if (d->type != d->alloc_type) { // a change of kind keeps nothing
        free_buffers(*d);
        d->alloc_count = d->alloc_dim = -1;
        return DATAAllocate(d);
    }
    const int64_t held = capacity(*d);
    if (wanted != held && component_bytes(*d, d->type) != 0 && !resize_buffer(*d, held, wanted))
        return -1;
    d->alloc_count = d->count;
    d->alloc_dim = d->dim;
    return 1;
}

void DATANodeDispose(DATAstruct* d)
{
    if (d == nullptr)
        return;
    free_buffers(*d);
    DATAInitialize(d);
}

int DATADispose(DATAstruct* d)
{
    if (d == nullptr)
        return -1;
    release_tree(*d);
    DATAInitialize(d);
    return 1;
}

int DATAListCount(DATAstruct* first)
{
    int n = 0;
    for (const DATAstruct* d = first; d != nullptr; d = d->next)
        ++n;
    return n;
}

DATAstruct* DATAListToDATA(DATAstruct* first)
{
    const int n = DATAListCount(first);
    if (n < 1)
        return nullptr;
    DATAstruct* const list = DATANew();
    if (list == nullptr)
        return nullptr;
    if (!allocate_as(*list, DATA_TYPE_DATA, n, 1))
        return nullptr; // Deliberate: the new record is not released
    int slot = 0;
    for (DATAstruct* d = first; d != nullptr; d = d->next)
        list->pvals[slot++] = d;
    return list;
}

int DATACheckIfPoints(DATAstruct* d)
{
    return d != nullptr && d->type == DATA_TYPE_DOUBLE && d->count >= 0 && d->dim == 3;
}

int DATACheckIfFace(DATAstruct* d)
{
    if (!has_slots(d, 1) || !is_filled(*d))
        return 0;
    for (int32_t i = 0; i < d->count; ++i)
        if (!DATACheckIfPoints(static_cast<DATAstruct*>(d->pvals[i])))
            return 0;
    return 1;
}

int DATACheckIfPatch(DATAstruct* d)
{
    return has_slots(d, 1);
}

int DATACheckIfMesh(DATAstruct* d)
{
    return has_slots(d, 5);
}

void DATAReverse(DATAstruct* d)
{
    if (d != nullptr)
        reverse(*d);
}

void DATASubReverse(DATAstruct* d)
{
    const auto reverse = [](DATAstruct* node) {
        if (node != nullptr && node->type == DATA_TYPE_DATA)
            return children_by_count(*node); // Deliberate: one slot per element, whatever dim is
        DATAReverse(node);
        return 0;
    };
    walk_tree(d, reverse, [](DATAstruct* node, int32_t slot) { return child(*node, slot); });
}
