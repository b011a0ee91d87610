#pragma once

#include <korvale.h>

#include "mesh.h"

// Between the gallery's own types and the library's arrays: what a host does at its border.
namespace gallery {

/// A points array [n][3] of an outline, at height z. Fill an empty or used record; its buffer is reused.
void fill_points(DATAstruct& d, const Outline& outline, double z = 0);

/// A points array of points.
void fill_points(DATAstruct& d, const std::vector<Vec3>& points);

/// A list of outlines: an array of kind `DATA_TYPE_DATA` with one points array per outline.
void fill_list(DATAstruct& d, const Shape& shape, double z = 0);

/// A triangle list [n][9] of a mesh, as the ray caster and the sampler take it. Fill an empty record.
void fill_triangles(Data& d, const Mesh& mesh);

/// The x and y of the points of an array.
Outline outline_of(const DATAstruct& d);

/// The points of an array.
std::vector<Vec3> points_of(const DATAstruct& d);

/// The child in slot i of an array of kind `DATA_TYPE_DATA`.
DATAstruct& child(const DATAstruct& d, int i);

/// A border record with all its arrays, released at the end of the block.
class BorderRecord {
public:
    BorderRecord();
    ~BorderRecord();
    BorderRecord(const BorderRecord&) = delete;
    BorderRecord& operator=(const BorderRecord&) = delete;

    BORDERStatus* operator->() { return &status_; }
    BORDERStatus* get() { return &status_; }

private:
    BORDERStatus status_;
};

} // namespace gallery
