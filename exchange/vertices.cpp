// Copying vertices between arrays and a host's collection, one vertex at a time: seek, then read or write.
//
// Everything that can be refused on this side is refused before the accessor is asked for. From the first vertex on a
// failure returns at once and leaves the host's accessor as it is.
#include "exchange/vertices.h"

#include "data/internal/buffers.h"
#include "data/internal/record.h"

namespace korvale::exchange {
namespace {

constexpr int32_t kSucceeded = 0;
constexpr size_t kIgnoredBytes = 256;

/// Reads what is wanted of the current vertex.
typedef int32_t (*ReadOne)(I3DVertexAccessor& accessor, double* xyz, uint32_t* number_read);

int32_t read_position(I3DVertexAccessor& accessor, double* xyz, uint32_t* number_read)
{
    return accessor.ReadPositions(1, xyz, number_read);
}

int32_t read_normal(I3DVertexAccessor& accessor, double* xyz, uint32_t* number_read)
{
    alignas(16) unsigned char ignored[kIgnoredBytes] = {};
    return accessor.ReadNormals(1, xyz, ignored, number_read);
}

/// Deliberate: neither this nor `write_points` cleans up after a failure.
int32_t read_points(I3DVertexAccessor& accessor, ReadOne read_one, uint32_t n, double* points)
{
    for (uint32_t i = 0; i < n; ++i) {
        if (const int32_t status = accessor.Seek(i); status != kSucceeded)
            return status;
        double xyz[3] = {0.0, 0.0, 0.0};
        uint32_t number_read = 0;
        if (const int32_t status = read_one(accessor, xyz, &number_read); status != kSucceeded)
            return status;
        if (number_read != 1)
            return kStatusFailed;
        for (int k = 0; k < 3; ++k)
            points[3 * int64_t{i} + k] = xyz[k];
    }
    return kSucceeded;
}

int32_t write_points(I3DVertexAccessor& accessor, const double* points, uint32_t n)
{
    for (uint32_t i = 0; i < n; ++i) {
        if (const int32_t status = accessor.Seek(i); status != kSucceeded)
            return status;
        uint32_t number_written = 0;
        const double* const xyz = points + 3 * int64_t{i};
        if (const int32_t status = accessor.WritePositions(1, xyz, &number_written); status != kSucceeded)
            return status;
        if (number_written != 1)
            return kStatusFailed;
    }
    return kSucceeded;
}

int32_t get_count(I3DVertexCollection& collection, uint32_t& n)
{
    n = 0;
    return collection.GetVertexCount(&n);
}

int32_t get_accessor(I3DVertexCollection& collection, I3DVertexAccessor*& accessor)
{
    accessor = nullptr;
    const int32_t status = collection.GetAccessor(0, &accessor);
    return status == kSucceeded && accessor == nullptr ? kStatusFailed : status;
}

/// Makes `array` doubles [n][3] unless it is. False when the heap is exhausted.
template <class Array>
bool shape_points(Array& array, int32_t n)
{
    if (array.type == DATA_TYPE_DOUBLE && array.dim == 3 && array.count == n && is_filled(array))
        return true;
    dispose(array);
    array.dim = 3;
    array.count = n;
    return allocate(array) == 1;
}

/// Whether the buffer of `array` may hold so many values. Its dim is not looked at.
bool may_hold(const Data&, int64_t)
{
    return true;
}

bool may_hold(const DATAstruct& array, int64_t values)
{
    return is_wrapped(array) || values <= room(array);
}

/// Whether `n` points can be written out of `array`.
template <class Array>
bool can_be_written(const Array& array, uint32_t n)
{
    const int64_t values = components(n, 3);
    return n == 0 || (array.dvals != nullptr && values <= kMostElements && may_hold(array, values));
}

template <class Array>
int32_t read_vertices(I3DVertexCollection* collection, Array* array, ReadOne read_one)
{
    if (collection == nullptr || array == nullptr)
        return kStatusFailed;
    uint32_t n;
    if (const int32_t status = get_count(*collection, n); status != kSucceeded)
        return status;
    if (n == 0 || components(n, 3) > kMostElements)
        return kStatusFailed;
    if (!shape_points(*array, static_cast<int32_t>(n)))
        return kStatusFailed;

    I3DVertexAccessor* accessor;
    if (const int32_t status = get_accessor(*collection, accessor); status != kSucceeded)
        return status;
    if (const int32_t status = read_points(*accessor, read_one, n, array->dvals); status != kSucceeded)
        return status;
    accessor->Release();
    return kSucceeded;
}

template <class Array>
int32_t write_vertices(const Array* array, I3DVertexCollection* collection)
{
    if (collection == nullptr || array == nullptr)
        return kStatusFailed;
    uint32_t n;
    if (const int32_t status = get_count(*collection, n); status != kSucceeded)
        return status;
    if (int64_t{array->count} != int64_t{n} || !can_be_written(*array, n))
        return kStatusFailed;

    I3DVertexAccessor* accessor;
    if (const int32_t status = get_accessor(*collection, accessor); status != kSucceeded)
        return status;
    accessor->BeginEdit();
    if (const int32_t status = write_points(*accessor, array->dvals, n); status != kSucceeded)
        return status;
    accessor->EndEdit();
    accessor->Release();
    return kSucceeded;
}

} // namespace
} // namespace korvale::exchange

using namespace korvale::exchange;

// The two generations differ in how the record is disposed and allocated and in what is known of its buffer's size.

int32_t F3DKorvaleVertex2Data(I3DVertexCollection* collection, Data* array)
{
    return read_vertices(collection, array, read_position);
}

int32_t F3DKorvaleVertex2DATA(I3DVertexCollection* collection, DATAstruct* array)
{
    return read_vertices(collection, array, read_position);
}

int32_t F3DKorvaleNormal2Data(I3DVertexCollection* collection, Data* array)
{
    return read_vertices(collection, array, read_normal);
}

int32_t F3DKorvaleNormal2DATA(I3DVertexCollection* collection, DATAstruct* array)
{
    return read_vertices(collection, array, read_normal);
}

int32_t F3DKorvaleData2Vertex(Data* array, I3DVertexCollection* collection)
{
    return write_vertices(array, collection);
}

int32_t F3DKorvaleDATA2Vertex(DATAstruct* array, I3DVertexCollection* collection)
{
    return write_vertices(array, collection);
}

int32_t F3DKorvale2DataNormal(Data*, I3DVertexCollection*)
{
    return korvale::kStatusNotImplemented;
}

int32_t F3DKorvale2DATANormal(DATAstruct*, I3DVertexCollection*)
{
    return korvale::kStatusNotImplemented;
}
