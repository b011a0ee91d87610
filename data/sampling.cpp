#include "data/sampling.h"

#include <algorithm>
#include <limits>

#include "data/internal/buffers.h"
#include "math/internal/vec.h"
#include "platform/internal/random.h"
#include "platform/internal/scratch.h"

// Sampling draws a number for each point and takes the first triangle whose cumulative share of the area reaches it.
// The shares are kept as running maxima: they reach a number at the same triangle first, and they ascend whatever the
// areas are (a share that is not a number reaches none). So the triangle is found by halving, and where many points are
// made, in a table over the few values a draw has.
namespace korvale::inside {
namespace {

/// From so many points on a table of all draws is quicker than halving.
constexpr int64_t kPointsForTable = 4096;
/// Points drawn before the first of them is written.
constexpr int kPlacesAhead = 32;
/// Components of a triangle: three vertices.
constexpr int kTriangle = 9;

struct Triangles {
    const double* values; ///< [count][stride], vertices in the first nine
    int64_t count, stride;
};

struct Points {
    double* values; ///< [count][stride], x y z in the first three
    int64_t count, stride;
};

struct Attributes {
    const double* from; ///< [triangles][3][width]
    double* to;         ///< [points][width]
    int64_t width;      ///< 0 where none are carried
};

double area(const double* triangle)
{
    double a[3], b[3], normal[3];
    subtract(triangle + 3, triangle, a);
    subtract(triangle + 6, triangle, b);
    cross(a, b, normal);
    return 0.5 * length(normal);
}

/// Fills `reached` with the running maximum of the cumulative shares of the area.
void measure_shares(const Triangles& t, double* reached)
{
    double sum = 0.0;
    for (int64_t i = 0; i < t.count; ++i) {
        reached[i] = area(t.values + i * t.stride);
        sum += reached[i];
    }
    double share = 0.0, most = -std::numeric_limits<double>::infinity();
    for (int64_t i = 0; i < t.count; ++i) {
        share += reached[i] / sum;
        if (share > most)
            most = share;
        reached[i] = most;
    }
}

/// The first triangle whose share reaches `r`, or the last.
int64_t first_reaching(double r, const double* reached, int64_t count)
{
    const int64_t found = std::lower_bound(reached, reached + count, r) - reached;
    return std::min(found, count - 1);
}

/// Writes the triangle of every draw to table[kGreatestDraw + 1].
void tabulate(const double* reached, int64_t count, int32_t* table)
{
    int64_t i = 0;
    for (int draw = 0; draw <= kGreatestDraw; ++draw) {
        while (i < count - 1 && !(unit_of(draw) <= reached[i]))
            ++i;
        table[draw] = static_cast<int32_t>(i);
    }
}

/// The weighted sum of `width` values at three places `width` apart.
void weigh(const double* corners, int64_t width, double u, double v, double w, double* out)
{
    for (int64_t k = 0; k < width; ++k)
        out[k] = u * corners[k] + v * corners[width + k] + w * corners[2 * width + k];
}

/// Where a point lies: its triangle and the weights of vertices 0 and 1.
struct Place {
    int64_t triangle;
    double u, v;
};

/// Draws the places of `count` points, in order.
void draw_places(const Triangles& t, const double* reached, const int32_t* table, int64_t count, Place* places)
{
    for (int64_t s = 0; s < count; ++s) {
        const int draw = Mwrand();
        const bool tabled = table != nullptr && draw >= 0 && draw <= kGreatestDraw;
        Place& place = places[s];
        place.triangle = tabled ? table[draw] : first_reaching(unit_of(draw), reached, t.count);
        __builtin_prefetch(t.values + place.triangle * t.stride);
        __builtin_prefetch(t.values + place.triangle * t.stride + kTriangle - 1);
        place.u = unit_draw();
        place.v = unit_draw();
        if (place.u + place.v > 1) {
            place.u = 1 - place.u;
            place.v = 1 - place.v;
        }
    }
}

void scatter(const Triangles& t, unsigned seed, const Points& p, const Attributes& attributes)
{
    Mwsrand(seed);
    Scratch<double> reached(t.count);
    if (!reached.exists())
        return;
    measure_shares(t, reached.get());
    const bool wants_table = p.count >= kPointsForTable;
    Scratch<int32_t> table(wants_table ? kGreatestDraw + 1 : 0);
    const bool has_table = wants_table && table.exists(); // without one the search goes on as for few points
    if (has_table)
        tabulate(reached.get(), t.count, table.get());

    Place places[kPlacesAhead]; // triangles are far apart in memory: ask for some before the first is used
    for (int64_t first = 0; first < p.count; first += kPlacesAhead) {
        const int64_t count = std::min<int64_t>(kPlacesAhead, p.count - first);
        draw_places(t, reached.get(), has_table ? table.get() : nullptr, count, places);
        for (int64_t k = 0; k < count; ++k) {
            const auto& [i, u, v] = places[k];
            const double w = 1 - u - v;
            weigh(t.values + i * t.stride, 3, u, v, w, p.values + (first + k) * p.stride);
            weigh(attributes.from + 3 * i * attributes.width, attributes.width, u, v, w,
                  attributes.to + (first + k) * attributes.width);
        }
    }
}

/// The attributes to carry, of width 0 where there are none or no place for them.
template <class Array>
Attributes attributes_to_carry(const Array* vertices, const Array* points, int64_t triangles, int64_t count)
{
    const Attributes none = {nullptr, nullptr, 0};
    if (vertices == nullptr || points == nullptr)
        return none;
    const int64_t values = components(vertices->count, vertices->dim);
    const int64_t width = values / (3 * triangles);
    if (width < 1 || values != width * 3 * triangles || points->count != count || points->dim != width)
        return none;
    if (!holds(*vertices, DATA_TYPE_DOUBLE, values) || !holds(*points, DATA_TYPE_DOUBLE, components(count, width)))
        return none;
    return {vertices->dvals, points->dvals, width};
}

/// Whether `d` has elements of at least `width` doubles.
template <class Array>
bool has_rows(const Array* d, int32_t width)
{
    return d != nullptr && d->count >= 1 && d->dim >= width &&
           holds(*d, DATA_TYPE_DOUBLE, components(d->count, d->dim));
}

template <class Array>
void sample(const Array* triangles, unsigned seed, Array* points, const Array* vertex_attributes,
            Array* point_attributes)
{
    if (!has_rows(triangles, kTriangle) || !has_rows(points, 3))
        return;
    scatter({triangles->dvals, triangles->count, triangles->dim}, seed, {points->dvals, points->count, points->dim},
            attributes_to_carry(vertex_attributes, point_attributes, triangles->count, points->count));
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

// DataTriSample does not look at the kinds of the two arrays; DATATriSample wants doubles. Nothing else differs.

void DataTriSample(Data* triangles, unsigned int seed, Data* points, Data* vertex_attributes, Data* point_attributes)
{
    sample(triangles, seed, points, vertex_attributes, point_attributes);
}

void DATATriSample(DATAstruct* triangles, unsigned int seed, DATAstruct* points, DATAstruct* vertex_attributes,
                   DATAstruct* point_attributes)
{
    if (triangles == nullptr || triangles->type != DATA_TYPE_DOUBLE || points == nullptr ||
        points->type != DATA_TYPE_DOUBLE)
        return;
    sample(triangles, seed, points, vertex_attributes, point_attributes);
}
