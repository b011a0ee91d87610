#include "door/internal/faces.h"

namespace korvale::door {

namespace {

/// Three corners a face.
Vector<int32_t> sizes_of_triangles(int64_t corners)
{
    if (corners % 3 != 0)
        throw Refusal("corners", "come in threes", Text() << "there are " << corners);
    return Vector<int32_t>(static_cast<size_t>(corners / 3), 3);
}

Vector<int32_t> sizes_of(const korvale_indices& given, int64_t corners)
{
    const IndicesIn sizes(&given, "face_sizes");
    int64_t wanted = 0;
    for (int64_t f = 0; f < sizes.size(); ++f) {
        if (sizes[f] < 0)
            throw Refusal("face_sizes", "be 0 or more", Text() << "face " << f << " has " << sizes.given(f));
        wanted += sizes[f];
    }
    if (wanted != corners)
        throw Refusal("corners", Text() << "be as many as the faces have together, " << wanted,
                      Text() << "there are " << corners);
    return {sizes.indices().begin(), sizes.indices().end()};
}

} // namespace

FacesIn::FacesIn(const korvale_faces& faces, int64_t points) : corners_(&faces.corners, "corners")
{
    require_corners(corners_, "corners", points);
    sizes_ = faces.sizes.data == nullptr && faces.sizes.count == 0 ? sizes_of_triangles(corners_.size())
                                                                   : sizes_of(faces.sizes, corners_.size());
}

} // namespace korvale::door
