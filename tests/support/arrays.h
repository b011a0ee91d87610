#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "data/data.h"
#include "data/datastruct.h"

// Small arrays of either generation for tests.
//
//     auto square = points<Data>({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
//     DataReverse(square);
//     EXPECT_TRUE(same_bits({0, 1, 0, 1, 1, 0, 1, 0, 0, 0, 0, 0}, square->dvals));
namespace korvale::test {

/// A record on the stack that is disposed when it goes out of scope. Passes as a pointer to the record.
template <class Array>
class Owned {
public:
    Owned();
    ~Owned();
    Owned(Owned&& other) noexcept;
    Owned& operator=(Owned&&) = delete;

    Array* get() { return &record_; }
    operator Array*() { return &record_; }
    Array* operator->() { return &record_; }
    const Array* operator->() const { return &record_; }
    Array& operator*() { return record_; }
    const Array& operator*() const { return record_; }

    /// Disposes what it holds and makes room for [count][dim] of `kind`; numbers are 0 afterwards.
    void allocate(int32_t kind, int32_t count, int32_t dim);

private:
    Array record_;
};

/// Names the tests of a suite that runs for both generations.
struct GenerationNames {
    template <class Array>
    static std::string GetName(int)
    {
        return std::is_same_v<Array, Data> ? "Data" : "DATAstruct";
    }
};

using OwnedData = Owned<Data>;
using OwnedDATA = Owned<DATAstruct>;

/// An allocated array [count][dim] of `kind`, numbers 0, pointer slots null.
template <class Array>
Owned<Array> array_of(int32_t kind, int32_t count, int32_t dim);

/// Arrays of the values given, values.size() / dim elements.
template <class Array>
Owned<Array> doubles(int32_t dim, const std::vector<double>& values);
template <class Array>
Owned<Array> ints(int32_t dim, const std::vector<int>& values);
template <class Array>
Owned<Array> bytes(int32_t dim, const std::vector<int>& values);

/// `doubles` of dim 3.
template <class Array>
Owned<Array> points(const std::vector<double>& xyz)
{
    return doubles<Array>(3, xyz);
}

/// A record from the heap for a slot or a list; whoever it is given to releases it.
DATAstruct* new_doubles(int32_t dim, const std::vector<double>& values);
DATAstruct* new_ints(int32_t dim, const std::vector<int>& values);
DATAstruct* new_parent(const std::vector<DATAstruct*>& children, int32_t dim = 1);

/// An array of kind `DATA_TYPE_DATA` that owns the children given.
Owned<DATAstruct> parent(const std::vector<DATAstruct*>& children, int32_t dim = 1);

/// A record around memory of the caller, as hosts build them: alloc_dim and alloc_count stay -1. Never disposed.
template <class Array>
Array wrapped(double* values, int32_t count, int32_t dim);

/// The elements as they stand, row by row.
template <class Array>
std::vector<double> values_of(const Array& array);

} // namespace korvale::test
