#pragma once

#include <cstdint>

#include "../data/data.h"
#include "../data/datastruct.h"
#include "../platform/export.h"

/// Copying vertices between arrays and a host's vertex collection.
///
/// The host's objects are reached through the two interfaces below by the position of their virtual functions, so the
/// order of the declarations is part of the contract, and a host may implement them in any way that lays out the same
/// table. Statuses are 32 bits in the manner of COM: 0 is success, everything else is passed on as it is.

namespace korvale {

constexpr int32_t kStatusFailed = static_cast<int32_t>(0x80004005);         ///< a mismatch found on this side
constexpr int32_t kStatusNotImplemented = static_cast<int32_t>(0x80004001); ///< not provided

} // namespace korvale

/// A host's cursor over the vertices of a collection.
class I3DVertexAccessor {
public:
    /// The host's; never called.
    virtual int32_t QueryInterface(const void* identifier, void** object) = 0; // 0
    /// The host's; never called.
    virtual uint32_t AddRef() = 0; // 1

    /// Gives a reference back; the result is ignored.
    virtual uint32_t Release() = 0; // 2

    /// Reads `number` (always 1) positions x, y, z from the current vertex on.
    virtual int32_t ReadPositions(uint32_t number, double* positions, uint32_t* number_read) = 0; // 3

    /// Keeps a place in the table.
    virtual void Unused4() {} // 4

    /// Writes `number` (always 1) positions x, y, z from the current vertex on.
    virtual int32_t WritePositions(uint32_t number, const double* positions, uint32_t* number_written) = 0; // 5

    /// Keeps a place in the table.
    virtual void Unused6() {} // 6

    /// Makes `vertex` the current one.
    virtual int32_t Seek(uint32_t vertex) = 0; // 7

    /// Reads `number` (always 1) normals x, y, z from the current vertex on. `ignored` has room for 256 bytes of what
    /// else the host keeps with a normal.
    virtual int32_t ReadNormals(uint32_t number, double* normals, void* ignored, uint32_t* number_read) = 0; // 8

    /// Announces that positions will be written; the result is ignored.
    virtual int32_t BeginEdit() = 0; // 9

    /// Announces that all positions were written; the result is ignored.
    virtual int32_t EndEdit() = 0; // 10

protected:
    ~I3DVertexAccessor() = default; // not virtual: it would take a place in the table
};

/// A host's collection of vertices.
class I3DVertexCollection {
public:
    /// The host's; never called.
    virtual int32_t QueryInterface(const void* identifier, void** object) = 0; // 0
    /// The host's; never called.
    virtual uint32_t AddRef() = 0; // 1
    /// The host's; never called.
    virtual uint32_t Release() = 0; // 2

    /// Writes the number of vertices.
    virtual int32_t GetVertexCount(uint32_t* count) = 0; // 3

    /// Keeps a place in the table.
    virtual void Unused4() {} // 4

    /// Hands out an accessor with a reference that the caller releases; `zero` is always 0.
    virtual int32_t GetAccessor(uint32_t zero, I3DVertexAccessor** accessor) = 0; // 5

protected:
    ~I3DVertexCollection() = default;
};

/// Reads the positions, or the normals, of all vertices into `array`, one element each.
///
/// An array that is not of doubles [vertices][3], or has no buffer of that size, is disposed and allocated anew before
/// the accessor is asked for: whatever fails from then on, its old elements are gone and its new ones hold only what
/// was read. The list that follows a disposed `DATAstruct` is released with it. Memory of the host's own that does not
/// fit has to come from malloc, as disposing frees it.
///
/// Returns 0; a status of the host that is not 0, at once; or 0x80004005 for null arguments, a collection without
/// vertices or with more than fit an array, an exhausted heap, a missing accessor, and a read that does not deliver
/// exactly one vertex. An empty collection leaves the array as it was.
///
/// Deliberate: a failure while vertices are being read does not release the accessor, and the elements read before it
/// stay.
KORVALE_API int32_t F3DKorvaleVertex2Data(I3DVertexCollection* collection, Data* array);
KORVALE_API int32_t F3DKorvaleVertex2DATA(I3DVertexCollection* collection, DATAstruct* array);
KORVALE_API int32_t F3DKorvaleNormal2Data(I3DVertexCollection* collection, Data* array);
KORVALE_API int32_t F3DKorvaleNormal2DATA(I3DVertexCollection* collection, DATAstruct* array);

/// Writes the elements of `array`, three doubles each, as the positions of all vertices, within one edit.
///
/// Returns 0; a status of the host that is not 0, at once; or 0x80004005 for null arguments, a count other than the
/// collection's or of more than 2^31 - 1 coordinates (the host is only asked for its count then), an array without a
/// buffer, a `DATAstruct` whose capacity is known and too small, a missing accessor, and a write that does not take
/// exactly one vertex. An empty array fits an empty collection: the edit is begun and ended.
///
/// Deliberate: the array's dim is taken to be 3 and not looked at. A failure while vertices are being written neither
/// ends the edit nor releases the accessor, and the vertices written before it stay.
KORVALE_API int32_t F3DKorvaleData2Vertex(Data* array, I3DVertexCollection* collection);
KORVALE_API int32_t F3DKorvaleDATA2Vertex(DATAstruct* array, I3DVertexCollection* collection);

/// Normals cannot be written: returns 0x80004001 and looks at nothing.
KORVALE_API int32_t F3DKorvale2DataNormal(Data* array, I3DVertexCollection* collection);
KORVALE_API int32_t F3DKorvale2DATANormal(DATAstruct* array, I3DVertexCollection* collection);
