// Records of the first generation: a shape, a kind and a buffer, and lists of them. No capacity is remembered, so an
// allocation never looks at what the record holds.
#include "data/data.h"

#include <cstddef>
#include <cstdlib>

#include "data/internal/buffers.h"
#include "data/internal/record.h"
#include "platform/internal/pointers.h"

using namespace korvale::data;

static_assert(korvale::platform::kNarrowPointers ||
              (sizeof(Data) == 40 && offsetof(Data, dim) == 0 && offsetof(Data, count) == 4 &&
               offsetof(Data, type) == 8 && offsetof(Data, dvals) == 16 && offsetof(Data, ivals) == 24 &&
               offsetof(Data, bvals) == 32));
static_assert(korvale::platform::kNarrowPointers || sizeof(data_list_struct) == 48);

void DataInitialize(Data* d)
{
    if (d == nullptr)
        return;
    d->dim = -1;
    d->count = -1;
    d->type = DATA_TYPE_DOUBLE;
    d->dvals = nullptr;
    d->ivals = nullptr;
    d->bvals = nullptr;
}

void DataListInitialize(data_list_struct* node)
{
    if (node == nullptr)
        return;
    DataInitialize(node);
    node->next = nullptr;
}

Data* DataNew()
{
    auto* const d = static_cast<Data*>(std::malloc(sizeof(Data)));
    DataInitialize(d);
    return d;
}

data_list_struct* DataListNew()
{
    auto* const node = static_cast<data_list_struct*>(std::malloc(sizeof(data_list_struct)));
    DataListInitialize(node);
    return node;
}

int DataAllocate(Data* d)
{
    if (d == nullptr || d->count < 1 || d->dim < 1)
        return -1;
    const int64_t n = components(d->count, d->dim);
    if (n > kMostElements)
        return -1;
    const size_t bytes = component_bytes(*d, d->type);
    if (bytes == 0)
        return 1;
    set_buffer(*d, d->type, std::malloc(static_cast<size_t>(n) * bytes));
    return buffer_of(*d, d->type) != nullptr ? 1 : -1;
}

void DataDispose(Data* d)
{
    if (d == nullptr)
        return;
    free_buffers(*d);
    DataInitialize(d);
}

void DataListDispose(data_list_struct* head)
{
    if (head == nullptr)
        return;
    DataDispose(head);
    free_chain(head->next);
    DataListInitialize(head);
}

void DataReverse(Data* d)
{
    if (d != nullptr)
        reverse(*d);
}
