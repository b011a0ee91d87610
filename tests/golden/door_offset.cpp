// The fixed results of outlines moved sideways, planes and frames through the C interface, on coordinates that need no
// trigonometry.
#include "include/korvale_c.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {
namespace {

/// Adds all that there is of rings, and releases them.
void add_rings(Hash& hash, korvale_rings* rings)
{
    const korvale_ring_arrays all = korvale_rings_view(rings);
    const int64_t left = all.starts[all.rings];
    hash.add(all.points, 3 * left).add(all.sources, left).add(all.parents, all.rings);
    hash.add(all.births, all.rings).add(all.ends, all.rings);
    for (int64_t k = 0; k < all.rings; ++k)
        hash.add(all.collapsed[k]);
    korvale_rings_free(rings);
}

} // namespace

WORKLOAD(DoorOffset, 2000, 0x84f9062365ce55cau, 3)
{
    Draws random(1105);
    for (int i = 0; i < rounds; ++i) {
        const int n = random.between(3, 40);
        const double size = random.one_in(2) ? 10 : random.one_in(2) ? 0.01 : 1e8;
        std::vector<double> outline(static_cast<size_t>(3 * n)), border(outline.size()),
            frames(16 * outline.size() / 3);
        for (int k = 0; k < n; ++k) { // up one side, down the other
            const double along = 2 * k < n ? k : n - k;
            outline[static_cast<size_t>(3 * k)] = size * (2 * k < n ? random.uniform(1, 2) : random.uniform(-2, -1));
            outline[static_cast<size_t>(3 * k + 1)] = size * along;
            outline[static_cast<size_t>(3 * k + 2)] = 0.25 * outline[static_cast<size_t>(3 * k + 1)];
        }
        const korvale_points points = {outline.data(), n, 0, 3, KORVALE_DOUBLE};
        korvale_offset_options options;
        korvale_offset_defaults(&options, sizeof options);
        options.height = size * random.uniform(-1, 1);
        options.split = random.between(0, 1);
        options.keep_vertices = random.between(0, 1);
        korvale_border result = {};
        result.points = border.data();
        hash.add(korvale_offset(&points, size * random.uniform(-1, 1), &options, &result, nullptr));
        hash.add(border.data(), 3 * result.count).add(result.collapsed);

        korvale_flatten_options how;
        korvale_flatten_defaults(&how, sizeof how);
        how.open = random.between(0, 1);
        how.by_extremes = random.between(0, 1);
        double to_plane[16] = {}, from_plane[16] = {};
        hash.add(korvale_flatten(&points, &how, to_plane, from_plane, nullptr));
        hash.add(to_plane, 16).add(from_plane, 16);
        hash.add(korvale_frames(&points, 0, frames.data(), nullptr)).add(frames.data(), 16 * n);
    }
}

WORKLOAD(DoorOffsetMany, 100, 0x9feea391be892bdau, 20)
{
    Draws random(1107);
    for (int i = 0; i < rounds; ++i) {
        std::vector<double> points, distances;
        std::vector<int32_t> starts = {0};
        for (int k = 0; k < 20; ++k) {
            const int n = random.between(3, 40);
            for (int j = 0; j < n; ++j) { // up one side, down the other
                const double x = 2 * j < n ? random.uniform(1, 2) : random.uniform(-2, -1);
                points.insert(points.end(), {x, double(2 * j < n ? j : n - j), 0.5 * x});
            }
            starts.push_back(starts.back() + n);
            distances.push_back(random.uniform(-1, 1));
        }
        const korvale_points outlines = {points.data(), starts.back(), 0, 3, KORVALE_DOUBLE};
        const korvale_indices begins = {starts.data(), 21, 0, KORVALE_INT32};
        const korvale_numbers each = {distances.data(), 20, 0, 1, KORVALE_DOUBLE};
        korvale_offset_options options;
        korvale_offset_defaults(&options, sizeof options);
        options.keep_vertices = random.between(0, 1);
        korvale_borders* borders = nullptr;
        hash.add(korvale_offset_many(&outlines, &begins, &each, &options, &borders, nullptr));
        const korvale_border_arrays all = korvale_borders_view(borders);
        const int64_t n = all.starts[20];
        hash.add(all.points, 3 * n).add(all.sources, n).add(all.merged_into, all.vertices);
        for (int64_t k = 0; k < 20; ++k)
            hash.add(all.collapsed[k]);
        korvale_borders_free(borders);
    }
}

WORKLOAD(DoorOffsetRings, 1000, 0x61fdd2533958b23du, 1)
{
    Draws random(1115);
    for (int i = 0; i < rounds; ++i) {
        const int n = random.between(3, 60);
        std::vector<double> points;
        for (int j = 0; j < n; ++j) { // up one side, down the other
            const double x = 2 * j < n ? random.uniform(0.5, 4) : random.uniform(-4, -0.5);
            points.insert(points.end(), {x, double(2 * j < n ? j : n - j), 0.5 * x});
        }
        const korvale_points outline = {points.data(), n, 0, 3, KORVALE_DOUBLE};
        korvale_rings* rings = nullptr;
        hash.add(korvale_offset_rings(&outline, random.uniform(-1.5, 1), nullptr, &rings, nullptr));
        add_rings(hash, rings);
    }
}

WORKLOAD(DoorOffsetDistances, 500, 0xedfb37f1547e811eu, 6)
{
    Draws random(1124);
    for (int i = 0; i < rounds; ++i) {
        const int n = random.between(3, 60);
        std::vector<double> points, distances;
        for (int j = 0; j < n; ++j) { // up one side, down the other
            const double x = 2 * j < n ? random.uniform(0.5, 4) : random.uniform(-4, -0.5);
            points.insert(points.end(), {x, double(2 * j < n ? j : n - j), 0.5 * x});
        }
        for (int j = 0; j < 6; ++j)
            distances.push_back(random.uniform(-1.5, 1));
        const korvale_points outline = {points.data(), n, 0, 3, KORVALE_DOUBLE};
        const korvale_numbers each = {distances.data(), 6, 0, 1, KORVALE_DOUBLE};
        korvale_rings* rings = nullptr;
        hash.add(korvale_offset_distances(&outline, &each, nullptr, &rings, nullptr));
        add_rings(hash, rings);
    }
}

WORKLOAD(DoorOffsetJoins, 1000, 0x22a726e870228800u, 1)
{
    Draws random(1123);
    for (int i = 0; i < rounds; ++i) {
        const int n = random.between(3, 24);
        std::vector<double> points;
        std::vector<int32_t> joins;
        for (int j = 0; j < n; ++j) { // up one side, down the other
            const double x = 2 * j < n ? random.uniform(0.5, 4) : random.uniform(-4, -0.5);
            points.insert(points.end(), {x, double(2 * j < n ? j : n - j), 0.5 * x});
            joins.push_back(random.between(KORVALE_JOIN_MITER, KORVALE_JOIN_ROUND));
        }
        const korvale_points outline = {points.data(), n, 0, 3, KORVALE_DOUBLE};
        korvale_offset_options options;
        korvale_offset_defaults(&options, sizeof options);
        options.miter_limit = random.uniform(1, 2);
        options.tolerance = 0.1;
        options.corner_joins = {joins.data(), n, 0, KORVALE_INT32};
        korvale_rings* rings = nullptr;
        hash.add(korvale_offset_rings(&outline, random.uniform(-1, 1), &options, &rings, nullptr));
        const korvale_ring_arrays all = korvale_rings_view(rings);
        const int64_t left = all.starts[all.rings];
        hash.add(all.points, 3 * left).add(all.sources, left).add(all.parents, all.rings);
        korvale_rings_free(rings);
    }
}

WORKLOAD(DoorBand, 1000, 0x29c63c9c6e043a12u, 2)
{
    Draws random(1106);
    for (int i = 0; i < rounds; ++i) {
        const int n = random.between(1, 40);
        const double size = random.one_in(2) ? 1 : random.one_in(2) ? 0.001 : 1e7;
        std::vector<double> line, outline(static_cast<size_t>(6 * n));
        double x = 0, y = 0;
        for (int k = 0; k < n; ++k) {
            x += size * random.uniform(-0.4, 1);
            y += size * random.uniform(-0.7, 0.7);
            line.insert(line.end(), {x, y, 0.5 * x});
        }
        const korvale_points points = {line.data(), n, 0, 3, KORVALE_DOUBLE};
        korvale_band_options options;
        korvale_band_defaults(&options, sizeof options);
        options.both_sides = random.between(0, 1);
        options.closed = 1; // the detour of an open line follows the C library
        options.has_up = 1;
        options.up[2] = 1;
        std::vector<uint8_t> removed(line.size()), narrowed(line.size());
        korvale_band_result band = {outline.data(), removed.data(), narrowed.data(), 0, 0, {0, 0}};
        const korvale_status status = korvale_band(&points, size * random.uniform(-1, 1), &options, &band, nullptr);
        hash.add(status).add(outline.data(), 6 * n).add(band.collapsed).add(band.crosses);
        for (size_t k = 0; k < static_cast<size_t>(n); ++k)
            hash.add(removed[k]).add(narrowed[k]);
        int32_t kept[40] = {};
        int64_t count = 0;
        hash.add(korvale_thin(&points, size * random.uniform(0, 1), kept, &count, nullptr)).add(kept, 40);
    }
}

} // namespace korvale::test
