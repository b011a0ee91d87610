#pragma once

#include "door/internal/views.h"

namespace korvale::door {

/// Faces on `points` points: every corner is a point, and there are as many corners as the faces have together.
class FacesIn {
public:
    FacesIn(const korvale_faces& faces, int64_t points);

    /// The number of corners of each face.
    const Vector<int32_t>& sizes() const { return sizes_; }

    /// Numbers of points, face after face.
    std::span<const int32_t> corners() const { return corners_.indices(); }

private:
    IndicesIn corners_;
    Vector<int32_t> sizes_;
};

} // namespace korvale::door
