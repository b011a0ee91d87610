#include "tests/support/arrays.h"

#include <cstdlib>
#include <cstring>

#include "data/internal/record.h"

namespace korvale::test {
namespace {

using namespace data;

/// A test cannot go on without its input.
void must(bool done)
{
    if (!done)
        std::abort();
}

template <class Array>
void shape(Array& d, int32_t kind, size_t count, int32_t dim)
{
    shape_as(d, kind, static_cast<int32_t>(count), dim);
    must(count == 0 || allocate(d) == 1);
}

template <class Array>
void clear_numbers(Array& d)
{
    const auto n = static_cast<size_t>(d.count) * static_cast<size_t>(d.dim);
    if (d.dvals != nullptr)
        std::memset(d.dvals, 0, n * sizeof *d.dvals);
    if (d.ivals != nullptr)
        std::memset(d.ivals, 0, n * sizeof *d.ivals);
    if (d.bvals != nullptr)
        std::memset(d.bvals, 0, n * sizeof *d.bvals);
}

template <class Array>
void fill_doubles(Array& d, int32_t dim, const std::vector<double>& values)
{
    shape(d, DATA_TYPE_DOUBLE, values.size() / static_cast<size_t>(dim), dim);
    for (size_t i = 0; i < values.size(); ++i)
        d.dvals[i] = values[i];
}

template <class Array>
void fill_ints(Array& d, int32_t dim, const std::vector<int>& values)
{
    shape(d, DATA_TYPE_INT, values.size() / static_cast<size_t>(dim), dim);
    for (size_t i = 0; i < values.size(); ++i)
        d.ivals[i] = values[i];
}

void fill_children(DATAstruct& d, const std::vector<DATAstruct*>& children, int32_t dim)
{
    shape(d, DATA_TYPE_DATA, children.size() / static_cast<size_t>(dim), dim);
    for (size_t i = 0; i < children.size(); ++i)
        d.pvals[i] = children[i];
}

DATAstruct* new_record()
{
    DATAstruct* const d = DATANew();
    must(d != nullptr);
    return d;
}

} // namespace

template <class Array>
Owned<Array>::Owned()
{
    initialize(record_);
}

template <class Array>
Owned<Array>::~Owned()
{
    dispose(record_);
}

template <class Array>
Owned<Array>::Owned(Owned&& other) noexcept : record_(other.record_)
{
    initialize(other.record_);
}

template <class Array>
void Owned<Array>::allocate(int32_t kind, int32_t count, int32_t dim)
{
    dispose(record_);
    shape(record_, kind, static_cast<size_t>(count), dim);
    clear_numbers(record_);
}

template <class Array>
Owned<Array> array_of(int32_t kind, int32_t count, int32_t dim)
{
    Owned<Array> d;
    d.allocate(kind, count, dim);
    return d;
}

template <class Array>
Owned<Array> doubles(int32_t dim, const std::vector<double>& values)
{
    Owned<Array> d;
    fill_doubles(*d, dim, values);
    return d;
}

template <class Array>
Owned<Array> ints(int32_t dim, const std::vector<int>& values)
{
    Owned<Array> d;
    fill_ints(*d, dim, values);
    return d;
}

template <class Array>
Owned<Array> bytes(int32_t dim, const std::vector<int>& values)
{
    Owned<Array> d;
    shape(*d, DATA_TYPE_BYTE, values.size() / static_cast<size_t>(dim), dim);
    for (size_t i = 0; i < values.size(); ++i)
        d->bvals[i] = static_cast<uint8_t>(values[i]);
    return d;
}

DATAstruct* new_doubles(int32_t dim, const std::vector<double>& values)
{
    DATAstruct* const d = new_record();
    fill_doubles(*d, dim, values);
    return d;
}

DATAstruct* new_ints(int32_t dim, const std::vector<int>& values)
{
    DATAstruct* const d = new_record();
    fill_ints(*d, dim, values);
    return d;
}

DATAstruct* new_parent(const std::vector<DATAstruct*>& children, int32_t dim)
{
    DATAstruct* const d = new_record();
    fill_children(*d, children, dim);
    return d;
}

Owned<DATAstruct> parent(const std::vector<DATAstruct*>& children, int32_t dim)
{
    Owned<DATAstruct> d;
    fill_children(*d, children, dim);
    return d;
}

template <class Array>
Array wrapped(double* values, int32_t count, int32_t dim)
{
    Array d;
    initialize(d);
    d.dim = dim;
    d.count = count;
    d.dvals = values;
    return d;
}

template <class Array>
std::vector<double> values_of(const Array& array)
{
    const int64_t n = array.count < 1 || array.dim < 1 ? 0 : static_cast<int64_t>(array.count) * array.dim;
    return array.dvals == nullptr ? std::vector<double>() : std::vector<double>(array.dvals, array.dvals + n);
}

#define KORVALE_BOTH_GENERATIONS(Array)                                                                                \
    template class Owned<Array>;                                                                                       \
    template Owned<Array> array_of<Array>(int32_t, int32_t, int32_t);                                                  \
    template Owned<Array> doubles<Array>(int32_t, const std::vector<double>&);                                         \
    template Owned<Array> ints<Array>(int32_t, const std::vector<int>&);                                               \
    template Owned<Array> bytes<Array>(int32_t, const std::vector<int>&);                                              \
    template Array wrapped<Array>(double*, int32_t, int32_t);                                                          \
    template std::vector<double> values_of<Array>(const Array&);
KORVALE_BOTH_GENERATIONS(Data)
KORVALE_BOTH_GENERATIONS(DATAstruct)

} // namespace korvale::test
