// Operations on arrays that are views of one memory, overlapping as they like, and sampling, beside the documented
// steps: every byte of the memory has to be the same afterwards.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "data/operations.h"
#include "data/sampling.h"
#include "fuzz/input.h"
#include "tests/reference/arrays.h"
#include "tests/reference/sampling.h"

using namespace korvale::fuzz;

namespace {

constexpr int kMemory = 700;

/// Mostly a small number, now and then an odd one.
double value_of(Input& in)
{
    constexpr double kOdd[] = {0.0, -0.0, INFINITY, -INFINITY, NAN, 5e-324, 1e308, -1e308};
    const int choice = in.below(256);
    return choice < 8 ? kOdd[choice] : (choice - 130) / 16.0;
}

/// Where an array lies in the memory.
struct View {
    int offset, count, dim;

    /// A record of the array, with all the rest of the memory as its capacity.
    DATAstruct in(double* memory) const
    {
        DATAstruct d;
        DATAInitialize(&d);
        d.count = count;
        d.dim = dim;
        d.alloc_count = kMemory - offset;
        d.alloc_dim = 1;
        d.dvals = memory + offset;
        return d;
    }
};

View draw_view(Input& in, int count, int dim)
{
    const int most = kMemory - count * dim;
    return {(in.below(256) * 256 + in.below(256)) % (most + 1), count, dim};
}

int run(bool plainly, int job, double (*m)[4], const double* w, DATAstruct* d)
{
    namespace reference = korvale::reference;
    switch (job) {
    case 0:
        return plainly ? reference::cat(&d[0], &d[1], &d[4]) : DATACat(&d[0], &d[1], &d[4]);
    case 1:
        return plainly ? reference::copy(&d[0], &d[4]) : DATACopy(&d[0], &d[4]);
    case 2:
        return plainly ? reference::mix(&d[0], &d[1], w[0], w[1], &d[4]) : DATAMix(&d[0], &d[1], w[0], w[1], &d[4]);
    case 3:
        return plainly ? reference::mix_four(&d[0], &d[1], &d[2], &d[3], w, &d[4])
                       : DATA4Mix(&d[0], &d[1], &d[2], &d[3], w[0], w[1], w[2], w[3], &d[4]);
    case 4:
        return plainly ? reference::bounds(&d[0], &d[4]) : DATABounds(&d[0], &d[4]);
    case 5:
        return plainly ? reference::bbox(&d[0], &d[4]) : DATABBox(&d[0], &d[4]);
    case 6:
        plainly ? reference::reverse(&d[0]) : DATAReverse(&d[0]);
        return 1;
    default:
        plainly ? reference::transform(m, &d[0], &d[4]) : TransformDATA(m, &d[0], &d[4]);
        return 1;
    }
}

void operate(Input& in)
{
    const int job = in.below(8), dim = in.below(2) == 0 || job == 7 ? 3 : 1 + in.below(14);
    const int count = 1 + in.below(std::min(200, (kMemory / 2 - 2 * dim) / dim));
    View views[5];
    for (View& view : views)
        view = draw_view(in, count, dim);
    if (in.below(4) == 0)
        views[4] = views[0];
    if (job == 0)
        views[4].offset %= kMemory - 2 * count * dim + 1;
    if (job == 4 || job == 5)
        views[4] = draw_view(in, 2, dim);
    const int matrix_at = in.below(2) == 0 ? -1 : in.below(256) * 2;

    double ours[kMemory], plain[kMemory], w[4], apart[4][4];
    for (double& value : ours)
        value = value_of(in);
    for (double& value : w)
        value = value_of(in);
    for (auto& row : apart)
        for (double& value : row)
            value = value_of(in);
    std::memcpy(plain, ours, sizeof plain);

    int results[2];
    for (const bool plainly : {false, true}) {
        double* const memory = plainly ? plain : ours;
        DATAstruct d[5];
        for (int i = 0; i < 5; ++i)
            d[i] = views[i].in(memory);
        double(*m)[4] = matrix_at < 0 ? apart : reinterpret_cast<double(*)[4]>(memory + matrix_at);
        results[plainly ? 1 : 0] = run(plainly, job, m, w, d);
        require(d[4].dvals == memory + views[4].offset);
    }
    require(results[0] == results[1]);
    for (int i = 0; i < kMemory; ++i)
        require(is_same(ours[i], plain[i]));
}

void sample(Input& in)
{
    const int n = 1 + in.below(60), k = in.below(3), count = 1 + in.below(100);
    std::vector<double> triangles(static_cast<size_t>(9 * n)), attributes(static_cast<size_t>(3 * n * k));
    for (double& value : triangles)
        value = value_of(in);
    for (double& value : attributes)
        value = value_of(in);
    std::vector<double> points(static_cast<size_t>(3 * count)), carried(static_cast<size_t>(k * count));
    DATAstruct t, p, from, to;
    for (DATAstruct* d : {&t, &p, &from, &to})
        DATAInitialize(d);
    t.count = n, t.dim = 9, t.dvals = triangles.data();
    p.count = count, p.dim = 3, p.dvals = points.data();
    from.count = 3 * n, from.dim = k, from.dvals = attributes.data();
    to.count = count, to.dim = k, to.dvals = carried.data();
    const auto seed = static_cast<unsigned>(in.below(256));
    DATATriSample(&t, seed, &p, &from, &to);
    const auto expected = korvale::reference::sample_triangles(triangles, seed, count, attributes);
    for (size_t i = 0; i < points.size(); ++i)
        require(is_same(points[i], expected.points[i]));
    for (size_t i = 0; i < carried.size(); ++i)
        require(is_same(carried[i], expected.attributes[i]));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input in(bytes, count);
    if (in.below(4) == 0)
        sample(in);
    else
        operate(in);
    return 0;
}
