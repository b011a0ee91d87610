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

/// The weights of triangles, or null where there are none.
const double* weights_of(const std::optional<NumbersIn>& weights, int64_t triangles)
{
    constexpr std::string_view kArgument = "options.weights";
    if (!weights)
        return nullptr;
    require_rows(weights->size(), kArgument, triangles, "triangle");
    if (weights->width() != 1)
        throw Refusal(kArgument, "have a width of 1", Text() << "it has " << weights->width());
    for (int64_t i = 0; i < triangles; ++i)
        if (const double weight = weights->data()[i]; !(weight >= 0.0) || !is_finite(weight))
            throw Refusal(kArgument, "be finite and 0 or more", Text() << "its row " << i << " is " << weight);
    return weights->data();
}

/// Everything that a scattering goes by.
struct Scattering {
    const TrianglesIn& triangles;
    const double* weights;
    uint32_t seed;
    Telling telling;

    static bool ask(double done, void* user) { return static_cast<const Telling*>(user)->goes_on(done); }
};

void scatter(Scattering s, PointsOut& output, const data::SampledAttributes& carried, int32_t* numbers)
{
    using data::Sampled;
    if (output.size() == 0)
        return;
    const std::string_view argument = s.weights == nullptr ? "triangles" : "options.weights";
    switch (data::scatter_alone({s.triangles.data(), s.triangles.size(), 9, s.weights}, s.seed,
                                {output.data(), output.size(), 3, numbers}, carried,
                                {s.telling.progress == nullptr ? nullptr : &Scattering::ask, &s.telling})) {
    case Sampled::done:
        return;
    case Sampled::no_room:
        throw std::bad_alloc();
    case Sampled::no_area:
        if (s.weights != nullptr)
            throw Refusal(argument, "be above 0 for a triangle with an area", "it is for none");
        throw Refusal(argument, "have an area", "it is 0");
    case Sampled::too_large:
        throw Refusal(argument, "leave an area that is finite", "it is not");
    case Sampled::stopped:
        throw Stop();
    }
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

void korvale_scatter_defaults(korvale_scatter_options* options, size_t size)
{
    give_defaults(options, size, korvale_scatter_options{sizeof *options, 0, {}, nullptr, nullptr});
}

korvale_status korvale_scatter(const korvale_triangles* triangles, uint32_t seed,
                               const korvale_scatter_options* options, const korvale_points_out* output,
                               int32_t* numbers, const korvale_numbers* attributes, const korvale_numbers_out* blended,
                               korvale_error* error)
{
    return answer(error, "korvale_scatter", [&] {
        const korvale_scatter_options how = options_of(options, korvale_scatter_defaults);
        const TrianglesIn surface(triangles, "triangles");
        if (surface.size() == 0)
            throw Refusal("triangles", "have at least 1 triangle", "there is none");
        std::optional<NumbersIn> weights;
        if (how.weights.data != nullptr || how.weights.count != 0)
            weights.emplace(&how.weights, "options.weights");
        const Scattering s = {surface, weights_of(weights, surface.size()), seed, {how.progress, how.user}};
        PointsOut points(output, "output", PointsOut::Use::write);
        if (attributes == nullptr) {
            scatter(s, points, {nullptr, nullptr, 0}, numbers);
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
        scatter(s, points, {is_gathered ? at_corners.data() : values.data(), results.data(), values.width()}, numbers);
        points.give_back();
        results.give_back();
    });
}
