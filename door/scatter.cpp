// Points scattered over triangles.
#include <algorithm>

#include "data/internal/sampling.h"
#include "door/internal/triangles.h"

namespace korvale::door {
namespace {

void require_rows(int64_t rows, std::string_view argument, int64_t wanted, std::string_view noun)
{
    if (rows != wanted)
        throw Refusal(argument, Text() << "have a row for each of " << counted(wanted, noun),
                      Text() << "it has " << rows);
}

/// The rows of attributes at every corner of the triangles, one after the other.
Vector<double> gather_rows(const TrianglesIn& triangles, const NumbersIn& attributes)
{
    Vector<double> gathered(static_cast<size_t>(3 * triangles.size() * attributes.width()));
    double* to = gathered.data();
    for (int64_t i = 0; i < 3 * triangles.size(); ++i, to += attributes.width())
        std::copy_n(attributes.data() + triangles.corner(i) * attributes.width(), attributes.width(), to);
    return gathered;
}

void scatter(const TrianglesIn& triangles, uint32_t seed, PointsOut& output, const inside::SampledAttributes& carried,
             int32_t* numbers)
{
    const inside::SamplePoints points = {output.data(), output.size(), 3, numbers};
    if (output.size() > 0 && !inside::scatter_alone({triangles.data(), triangles.size(), 9}, seed, points, carried))
        throw std::bad_alloc();
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

korvale_status korvale_scatter(const korvale_triangles* triangles, uint32_t seed, const korvale_points_out* output,
                               int32_t* numbers, const korvale_numbers* attributes, const korvale_numbers_out* blended,
                               korvale_error* error)
{
    return answer(error, "korvale_scatter", [&] {
        const TrianglesIn surface(triangles, "triangles");
        if (surface.size() == 0)
            throw Refusal("triangles", "have at least 1 triangle", "there is none");
        PointsOut points(output, "output", PointsOut::Use::write);
        if (attributes == nullptr) {
            scatter(surface, seed, points, {nullptr, nullptr, 0}, numbers);
            points.give_back();
            return;
        }
        const NumbersIn values(attributes, "attributes");
        NumbersOut results(blended, "blended", PointsOut::Use::write);
        require_rows(values.size(), "attributes", surface.points(), "point");
        require_rows(results.size(), "blended", points.size(), "point");
        if (results.width() != values.width())
            throw Refusal("blended", Text() << "have a width of " << values.width() << " like the attributes",
                          Text() << "it has " << results.width());
        const bool is_gathered = !surface.corners().empty();
        const Vector<double> at_corners = is_gathered ? gather_rows(surface, values) : Vector<double>();
        scatter(surface, seed, points,
                {is_gathered ? at_corners.data() : values.data(), results.data(), values.width()}, numbers);
        points.give_back();
        results.give_back();
    });
}
