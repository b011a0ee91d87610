// Sampling draws a number for each point and takes the first triangle whose cumulative share of the area reaches it.
//
// The shares are kept as running maxima. A draw is first reached at the same triangle by either, and maxima ascend
// whatever the areas are: a share that is a NaN never raises them. So the triangle is found by binary search. Where
// many points are made, a table over the 32,768 values of a draw answers instead. Calls that draw by themselves part
// the area into as many steps, and a second number says where in its step a point lies.
//
// Points are made in blocks of 32, in four passes: draw, turn draws into weights (lanes), find and prefetch the
// triangles, weigh their vertices. Areas are measured in lanes and summed in order. With a single block the sum of
// shares stops at its largest draw.
#include "data/sampling.h"

#include <algorithm>
#include <bit>
#include <limits>

#include "data/internal/buffers.h"
#include "data/internal/sampling.h"
#include "platform/internal/generator.h"
#include "platform/internal/lanes3.h"
#include "platform/internal/random.h"
#include "platform/internal/scratch.h"

namespace korvale::data {
namespace {

/// Points of a block: enough to hide the latency of their prefetches, few enough for the stack. Chosen.
constexpr int kBlock = 32;
/// Values of a draw.
constexpr int kDraws = kGreatestDraw + 1;
/// A table of all draws is made where binary search would take more than two steps per draw. The factor is chosen.
constexpr int64_t kStepsForTable = 2 * int64_t{kDraws};
/// Shares that are kept on the stack.
constexpr int64_t kNearbyShares = 16;
/// Components of a triangle: three vertices.
constexpr int kTriangle = 9;

/// The draws of a block, three a point, and what they mean.
struct Draws {
    int numbers[3 * kBlock];
    double share[kBlock];        ///< the first, as a value in [0, 1]: it chooses the triangle
    double u[kBlock], v[kBlock]; ///< the others: weights of vertices 0 and 1
};

/// Numbers of the process: a draw is a share of the area.
struct OfProcess {
    static constexpr bool kIsFine = false;

    void draw(int* numbers, int count) const { draw_numbers(numbers, count); }
    bool goes_on(int64_t, int64_t) const { return true; }
};

/// Numbers of one call: a draw is one of 32,768 steps of the area, and a number of a second generator the share of it.
struct OfCall {
    static constexpr bool kIsFine = true;

    uint32_t state;
    uint64_t second_state;
    SamplingCourse course;

    void draw(int* numbers, int count) { state = draw_after(state, numbers, count); }

    /// Asks before the first point, after each kPointsToTell, and after the last one.
    bool goes_on(int64_t made, int64_t count) const
    {
        constexpr int64_t kPointsToTell = 512 * kBlock;
        if (course.ask == nullptr || (made % kPointsToTell != 0 && made < count))
            return true;
        return course.ask(static_cast<double>(made) / static_cast<double>(count), course.user);
    }

    /// Makes shares of the 15 bits of a draw and 38 of the second generator: 53, as many as a double holds. The last
    /// bit is set, so no share lies at the end of a step.
    void refine(int count, Draws& draws)
    {
        constexpr int kBits = 38;
        for (int k = 0; k < count; ++k) {
            const uint64_t within = draw_word(second_state) >> (64 - kBits) | 1;
            const uint64_t fine = static_cast<uint64_t>(draws.numbers[3 * k]) << kBits | within;
            draws.share[k] = static_cast<double>(static_cast<int64_t>(fine)) * 0x1p-53; // signed: one instruction
        }
    }
};

// Areas and shares.

/// The vertex at `p` of one triangle per lane, `stride` apart.
template <class V>
KORVALE_OVER_LANES Lanes3<V> vertex_of(const double* p, int64_t stride)
{
    Lanes3<V> vertices;
    if constexpr (width_of<V> == 1)
        vertices = {p[0], p[1], p[2]};
    else if constexpr (width_of<V> == 2)
        vertices = {Pair{p[0], p[stride]}, Pair{p[1], p[stride + 1]}, Pair{p[2], p[stride + 2]}};
    else
        gather_points(p, p + stride, p + 2 * stride, p + 3 * stride, vertices);
    return vertices;
}

/// Writes the areas from triangle i on, as far as whole groups go, and adds them to `sum` in order. Returns the first
/// triangle not measured.
template <class V>
KORVALE_OVER_LANES int64_t measure_by(const SampledTriangles& t, int64_t i, double* areas, double& sum)
{
    for (; i + width_of<V> <= t.count; i += width_of<V>) {
        const double* const p = t.values + i * t.stride;
        const Lanes3<V> first = vertex_of<V>(p, t.stride);
        const Lanes3<V> normal = cross(vertex_of<V>(p + 3, t.stride) - first, vertex_of<V>(p + 6, t.stride) - first);
        store<V>(areas + i, 0.5 * root(dot(normal, normal)));
        for (int l = 0; l < width_of<V>; ++l)
            sum += areas[i + l];
    }
    return i;
}

/// Writes the areas of all triangles. Returns their sum.
double measure_areas(const SampledTriangles& t, double* areas)
{
    double sum = 0.0;
    int64_t i = 0;
    if (t.count >= width_of<Quad>)
        i = over_lanes([&]<class V>() { return measure_by<V>(t, 0, areas, sum); });
    measure_by<double>(t, i, areas, sum);
    return sum;
}

/// Weighs areas. Returns their sum.
double weigh_areas(const SampledTriangles& t, double* areas)
{
    double sum = 0.0;
    for (int64_t i = 0; i < t.count; ++i) {
        areas[i] *= t.weights[i];
        sum += areas[i];
    }
    return sum;
}

/// Replaces the areas by running maxima of their cumulative shares, up to the first that reaches `most_wanted`. Returns
/// the number of shares.
int64_t accumulate_shares(double* areas, int64_t count, double sum, double most_wanted)
{
    double share = 0.0, most = -std::numeric_limits<double>::infinity();
    int64_t i = 0;
    while (i < count && most < most_wanted) {
        share += areas[i] / sum;
        most = greater(share, most);
        areas[i++] = most;
    }
    return i;
}

// The triangle of a draw: the first whose share reaches it, or the last.

/// Binary search for the first share that reaches r. It always takes all its steps, so they do not depend on the draw.
int64_t first_reaching(double r, const double* reached, int64_t count)
{
    const double* first = reached; // the answer is among the `count` shares from here on
    for (; count > 1; count -= count / 2)
        first += first[count / 2 - 1] < r ? count / 2 : 0;
    return first - reached;
}

/// Writes the triangle of k / steps to table[k], for k from 0 to `steps`.
void tabulate(const double* reached, int64_t count, int steps, int32_t* table)
{
    int64_t i = 0;
    for (int k = 0; k <= steps; ++k) {
        while (i < count - 1 && reached[i] < k / static_cast<double>(steps))
            ++i;
        table[k] = static_cast<int32_t>(i);
    }
}

/// How the triangle of a draw is found.
template <bool kIsFine>
struct Choice {
    /// Shares that have a triangle in the table: all draws, or the ends of their steps.
    static constexpr int kSteps = kIsFine ? kDraws : kGreatestDraw;

    const double* reached; ///< [count]
    int64_t count;
    const int32_t* table; ///< [kSteps + 1], or null

    int64_t operator()(int draw, double share) const
    {
        if (table == nullptr || draw < 0 || draw > kGreatestDraw)
            return first_reaching(share, reached, count);
        const int64_t first = table[draw];
        if constexpr (kIsFine)
            return first + first_reaching(share, reached + first, table[draw + 1] - first + 1);
        return first;
    }
};

// Points.

/// Turns the draws from the k-th point on into shares and weights, as far as whole groups go. Returns the first point
/// left.
template <class V>
KORVALE_OVER_LANES int read_units_by(int k, int count, Draws& draws)
{
    const V one = all<V>(1.0);
    for (; k + width_of<V> <= count; k += width_of<V>) {
        const Lanes3<V> units = load_points<V>(draws.numbers + 3 * k) / all<V>(kGreatestDraw);
        const V &u = units.y, &v = units.z;
        const auto folds = u + v > one;
        store<V>(draws.share + k, units.x);
        store<V>(draws.u + k, select(folds, one - u, u));
        store<V>(draws.v + k, select(folds, one - v, v));
    }
    return k;
}

/// Turns the draws of `count` points into shares and weights.
void read_units(int count, Draws& draws)
{
    int k = 0;
    if (count >= 2 * width_of<Quad>)
        k = over_lanes([&]<class V>() { return read_units_by<V>(0, count, draws); });
    read_units_by<double>(k, count, draws);
}

/// The weighted sum of `width` values at three places `width` apart.
[[gnu::always_inline]] inline void weigh(const double* corners, int64_t width, double u, double v, double w,
                                         double* out)
{
#pragma GCC unroll 3
    for (int64_t k = 0; k < width; ++k)
        out[k] = u * corners[k] + v * corners[width + k] + w * corners[2 * width + k];
}

/// Finds the triangles of the points and prefetches them: they are far apart in memory, and the other points of the
/// block are found until they arrive.
template <class Choice>
void choose_triangles(const SampledTriangles& t, const Choice& choice, const Draws& draws, int count,
                      int64_t (&triangles)[kBlock])
{
    for (int k = 0; k < count; ++k) {
        triangles[k] = choice(draws.numbers[3 * k], draws.share[k]);
        const double* const corners = t.values + triangles[k] * t.stride;
        __builtin_prefetch(corners);
        __builtin_prefetch(corners + kTriangle - 1);
    }
}

/// Numbers of points that are made at a time.
struct Batch {
    int64_t first;
    int count;
};

/// Makes the points of a batch.
template <class Choice>
void make_points(const SampledTriangles& t, const Choice& choice, const Draws& draws, const SamplePoints& p,
                 const SampledAttributes& attributes, Batch batch)
{
    const auto [first, count] = batch;
    int64_t triangles[kBlock];
    if (t.count == 1)
        std::fill_n(triangles, count, 0);
    else
        choose_triangles(t, choice, draws, count, triangles);
    if (p.triangles != nullptr)
        std::transform(triangles, triangles + count, p.triangles + first,
                       [](int64_t number) { return static_cast<int32_t>(number); });
    for (int k = 0; k < count; ++k) {
        const double u = draws.u[k], v = draws.v[k], w = 1 - u - v;
        weigh(t.values + triangles[k] * t.stride, 3, u, v, w, p.values + (first + k) * p.stride);
        if (attributes.width > 0)
            weigh(attributes.from + 3 * triangles[k] * attributes.width, attributes.width, u, v, w,
                  attributes.to + (first + k) * attributes.width);
    }
}

/// Draws what the next `count` points are made of.
template <class Numbers>
void draw_points(Numbers& numbers, int count, Draws& draws)
{
    numbers.draw(draws.numbers, 3 * count);
    read_units(count, draws);
    if constexpr (Numbers::kIsFine)
        numbers.refine(count, draws);
}

/// Scatters points.
template <class Numbers>
Sampled scatter(const SampledTriangles& t, const SamplePoints& p, const SampledAttributes& attributes, Numbers numbers)
{
    using Choice = data::Choice<Numbers::kIsFine>;
    Scratch<double, kNearbyShares> reached(t.count);
    if (!reached.exists())
        return Sampled::no_room;
    if (!numbers.goes_on(0, p.count))
        return Sampled::stopped;
    const int in_first = static_cast<int>(std::min<int64_t>(kBlock, p.count));
    Draws draws;
    draw_points(numbers, in_first, draws);
    Choice choice = {reached.get(), t.count, nullptr};
    if (t.count > 1 || Numbers::kIsFine) {
        double most_wanted = std::numeric_limits<double>::infinity();
        if (p.count <= kBlock)
            most_wanted = *std::max_element(draws.share, draws.share + in_first);
        double sum = measure_areas(t, reached.get());
        if constexpr (Numbers::kIsFine) {
            if (t.weights != nullptr)
                sum = weigh_areas(t, reached.get());
            if (!(std::fabs(sum) > 0.0))
                return sum == 0.0 ? Sampled::no_area : Sampled::too_large;
            if (!(sum <= std::numeric_limits<double>::max()))
                return Sampled::too_large;
        }
        choice.count = accumulate_shares(reached.get(), t.count, sum, most_wanted);
        if constexpr (Numbers::kIsFine) // the last triangle is one that adds to the area
            choice.count = first_reaching(reached[choice.count - 1], reached.get(), choice.count) + 1;
    }
    const bool wants_table = p.count * std::bit_width(static_cast<uint64_t>(t.count - 1)) > kStepsForTable;
    Scratch<int32_t> table(wants_table ? Choice::kSteps + 1 : 0);
    if (wants_table && table.exists()) { // without it binary search goes on
        tabulate(reached.get(), choice.count, Choice::kSteps, table.get());
        choice.table = table.get();
    }

    make_points(t, choice, draws, p, attributes, {0, in_first});
    for (int64_t first = in_first; first < p.count; first += kBlock) {
        if (!numbers.goes_on(first, p.count))
            return Sampled::stopped;
        const int count = static_cast<int>(std::min<int64_t>(kBlock, p.count - first));
        draw_points(numbers, count, draws);
        make_points(t, choice, draws, p, attributes, {first, count});
    }
    return numbers.goes_on(p.count, p.count) ? Sampled::done : Sampled::stopped;
}

/// The attributes to carry, of width 0 where there are none or no place for them.
template <class Array>
SampledAttributes attributes_to_carry(const Array* vertices, const Array* points, int64_t triangles, int64_t count)
{
    const SampledAttributes none = {nullptr, nullptr, 0};
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
    Mwsrand(seed);
    scatter({triangles->dvals, triangles->count, triangles->dim}, {points->dvals, points->count, points->dim, nullptr},
            attributes_to_carry(vertex_attributes, point_attributes, triangles->count, points->count), OfProcess());
}

} // namespace

Sampled scatter_alone(const SampledTriangles& triangles, uint32_t seed, const SamplePoints& points,
                      const SampledAttributes& attributes, const SamplingCourse& course)
{
    return scatter(triangles, points, attributes, OfCall{seed, seed, course});
}

} // namespace korvale::data

using namespace korvale::data;

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
