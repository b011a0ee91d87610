// Offsetting: waves, coasts, combs and gears, and all pieces of coasts.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include "bench/job.h"
#include "include/korvale.h"
#include "include/korvale_c.h"
#include "tests/support/outlines.h"

#ifdef KORVALE_HAS_STEPS
#include "tests/reference/sweep.h"
#endif
#ifdef KORVALE_HAS_POLYCLIPPING
#include <polyclipping/clipper.hpp>
#endif
#ifdef KORVALE_HAS_GEOS
#include <geos_c.h>
#endif

namespace korvale::bench {
namespace {

using Points = test::Coordinates;

/// The coasts, in kilometres, each named by how many points it has: Greenland, Chile, Norway, the United Kingdom,
/// Iceland, Japan, Italy.
const std::vector<int> kCoasts = {1953, 1144, 993, 507, 452, 384, 382};

Points coast(int wanted)
{
    std::ifstream file(KORVALE_EXAMPLE_DATA "/coasts.txt");
    std::string word;
    while (file >> word) {
        int count = 0;
        if (word != "outline" || !(file >> count) || count != wanted || !std::getline(file, word))
            continue;
        Points points;
        double x, y;
        while (points.size() < 3 * static_cast<size_t>(count) && file >> x >> y)
            points.insert(points.end(), {x, y, 0.0});
        return points;
    }
    std::abort();
}

double width_of(const Points& points)
{
    double low = points[0], high = points[0];
    for (size_t i = 0; i < points.size(); i += 3) {
        low = std::min(low, points[i]);
        high = std::max(high, points[i]);
    }
    return high - low;
}

struct Case {
    Points points;
    double distance;
    bool split_events = true;
    int depths = 1; ///< up to the distance, as far from each other
};

Case few_points(int n)
{
    return {n % 4 == 0 ? test::gear(n / 4, 10, 11) : test::wiggly(n, 1, 0.5), 0.1};
}
/// A wave every 16 points.
Case no_event(int n)
{
    return {test::wiggly(n, n / 16, 1.0 / n), -1.0 / n};
}
Case no_event_without_splits(int n)
{
    return {test::wiggly(n, n / 16, 1.0 / n), -1.0 / n, false};
}
Case many_events(int n)
{
    return {test::wiggly(n, n / 16, 0.5), -20.0};
}
Case many_without_splits(int n)
{
    return {test::wiggly(n, n / 16, 0.5), -20.0, false};
}
Case gear_outwards(int n)
{
    return {test::gear(n / 4, 9, 10), 2.0};
}
Case gear_inwards(int n)
{
    return {test::gear(n / 4, 9, 10), -2.0};
}
Case comb_inwards(int n)
{
    return {test::comb(n / 4, 0.5), -0.6};
}
Case comb_outwards(int n)
{
    return {test::comb(n / 4, 0.5), 0.5};
}

/// A coast by `share` of its width.
Case coast_by(int n, double share)
{
    Case c = {coast(n), 0.0};
    c.distance = share * width_of(c.points);
    return c;
}
Case coast_out_little(int n)
{
    return coast_by(n, 0.005);
}
Case coast_out(int n)
{
    return coast_by(n, 0.03);
}
Case coast_in_little(int n)
{
    return coast_by(n, -0.005);
}
Case coast_in(int n)
{
    return coast_by(n, -0.03);
}
Case coast_out_without_splits(int n)
{
    Case c = coast_out_little(n);
    c.split_events = false;
    return c;
}

/// Twenty depths down to a tenth of the width of a coast, which little of Norway survives.
Case coast_rings(int n)
{
    Case c = coast_by(n, -0.1);
    c.depths = 20;
    return c;
}

/// The record with the outline in it; static, as the process is the job's own.
BORDERStatus& status_of(const Case& c)
{
    static BORDERStatus status;
    BORDERInitialize(&status);
    status.distance = c.distance;
    status.split_events = c.split_events;
    status.path->dim = 3;
    status.path->count = static_cast<int32_t>(c.points.size() / 3);
    need(DATAAllocate(status.path) == 1);
    std::copy(c.points.begin(), c.points.end(), status.path->dvals);
    return status;
}

template <Case (*make)(int)>
Work sweep(int n)
{
    BORDERStatus& status = status_of(make(n));
    return [&status] { BORDER_BORDER(&status); };
}

korvale_points points_of(const Case& c)
{
    return {c.points.data(), static_cast<int64_t>(c.points.size() / 3), 0, 3, KORVALE_DOUBLE};
}

/// All pieces at the distance.
template <Case (*make)(int)>
Work pieces(int n)
{
    return [c = make(n)] {
        const korvale_points points = points_of(c);
        korvale_rings* rings = nullptr;
        need(korvale_offset_rings(&points, c.distance, nullptr, &rings, nullptr) == KORVALE_OK);
        korvale_rings_free(rings);
    };
}

/// All pieces at all depths.
template <Case (*make)(int)>
Work pieces_at_depths(int n)
{
    const Case c = make(n);
    std::vector<double> depths;
    for (int k = 1; k <= c.depths; ++k)
        depths.push_back(c.distance * k / c.depths);
    return [c, depths] {
        const korvale_points points = points_of(c);
        const korvale_numbers each = {depths.data(), c.depths, 0, 1, KORVALE_DOUBLE};
        korvale_rings* rings = nullptr;
        need(korvale_offset_distances(&points, &each, nullptr, &rings, nullptr) == KORVALE_OK);
        korvale_rings_free(rings);
    };
}

#ifdef KORVALE_HAS_STEPS
/// What `BORDER_BORDER` does, in the arrays of the record.
template <Case (*make)(int)>
Work sweep_steps(int n)
{
    BORDERStatus& status = status_of(make(n));
    BORDER_BORDER(&status); // makes the arrays
    return [&status] {
        Xfm xfm, reverse;
        DATA_to_xy_xfms(status.path, xfm, reverse, 1);
        status.flat->count = status.path->count;
        TransformDATA(xfm, status.path, status.flat);
        reference::Sweep s{};
        s.n = status.path->count;
        s.remaining = status.distance;
        s.split_events = status.split_events != 0;
        s.flat = status.flat->dvals;
        s.direction = status.direction->dvals;
        s.velocity = status.velocity->dvals;
        s.line = status.line->dvals;
        s.length = status.length->dvals;
        s.rate = status.rate->dvals;
        s.dead = status.dead->bvals;
        s.merge = status.merge->ivals;
        reference::run_sweep(s);
        reference::join_dead_vertices(s);
        TransformDATA(reverse, status.flat, status.output);
    };
}
#endif

#ifdef KORVALE_HAS_POLYCLIPPING
template <Case (*make)(int)>
Work clipper(int n)
{
    return [c = make(n)] {
        constexpr double kGrid = 1e6;
        ClipperLib::Path path;
        for (size_t i = 0; i < c.points.size(); i += 3)
            path.emplace_back(std::llround(c.points[i] * kGrid), std::llround(c.points[i + 1] * kGrid));
        ClipperLib::ClipperOffset offset(1000.0);
        offset.AddPath(path, ClipperLib::jtMiter, ClipperLib::etClosedPolygon);
        for (int k = 1; k <= c.depths; ++k) {
            ClipperLib::Paths result;
            offset.Execute(result, c.distance * k / c.depths * kGrid);
            keep(result);
        }
    };
}
#endif

#ifdef KORVALE_HAS_GEOS
template <Case (*make)(int)>
Work geos(int n)
{
    const Case c = make(n);
    GEOSContextHandle_t const context = GEOS_init_r();
    const auto count = static_cast<unsigned>(c.points.size() / 3);
    GEOSCoordSequence* const ring = GEOSCoordSeq_create_r(context, count + 1, 2);
    for (unsigned i = 0; i <= count; ++i)
        GEOSCoordSeq_setXY_r(context, ring, i, c.points[3 * (i % count)], c.points[3 * (i % count) + 1]);
    GEOSGeometry* const polygon =
        GEOSGeom_createPolygon_r(context, GEOSGeom_createLinearRing_r(context, ring), nullptr, 0);
    return [context, polygon, distance = c.distance, depths = c.depths] {
        for (int k = 1; k <= depths; ++k)
            GEOSGeom_destroy_r(context, GEOSBufferWithStyle_r(context, polygon, distance * k / depths, 8,
                                                              GEOSBUF_CAP_FLAT, GEOSBUF_JOIN_MITRE, 1000.0));
    };
}
#endif

/// The same by Clipper and GEOS.
template <Case (*make)(int)>
void add_peers([[maybe_unused]] std::vector<Job>& jobs, [[maybe_unused]] const std::string& name,
               [[maybe_unused]] std::vector<int> sizes)
{
#ifdef KORVALE_HAS_POLYCLIPPING
    jobs.push_back({"border." + name + "@Clipper", sizes, clipper<make>});
#endif
#ifdef KORVALE_HAS_GEOS
    if (name != "many_events") // GEOS sees from the extent that nothing can be left
        jobs.push_back({"border." + name + "@GEOS", sizes, geos<make>});
#endif
}

/// The steps are run at those of the sizes only at which they take less than minutes.
template <Case (*make)(int)>
void add(std::vector<Job>& jobs, const std::string& name, std::vector<int> sizes,
         [[maybe_unused]] std::vector<int> sizes_of_steps, double exponent = 0.0, int counted = 0)
{
    jobs.push_back({"border." + name, sizes, sweep<make>, exponent, counted});
#ifdef KORVALE_HAS_STEPS
    if (!sizes_of_steps.empty())
        jobs.push_back({"border." + name + "@steps", sizes_of_steps, sweep_steps<make>});
#endif
    if (!name.ends_with("without_splits")) // which peers do not do
        add_peers<make>(jobs, name, sizes);
}

/// All pieces of coasts at many depths, beside the farthest alone and as many calls of the peers.
void add_rings(std::vector<Job>& jobs)
{
    jobs.push_back({"border.coast_rings", kCoasts, pieces_at_depths<coast_rings>});
    jobs.push_back({"border.coast_rings@farthest", kCoasts, pieces<coast_rings>});
    add_peers<coast_rings>(jobs, "coast_rings", kCoasts);
}

} // namespace

std::vector<Job> border_jobs()
{
    std::vector<Job> jobs;
    add<few_points>(jobs, "few_points", {3, 4, 8, 12, 16, 24}, {3, 4, 8, 12, 16, 24});
    add<no_event>(jobs, "no_event", {4, 8, 16, 24, 64, 256, 1024, 4096}, {16, 64, 256, 1024, 4096}, 1.1, 1024);
    add<no_event_without_splits>(jobs, "no_event_without_splits", {64, 1024, 4096}, {64, 1024, 4096});
    add<many_events>(jobs, "many_events", {16, 256, 1024, 4096}, {16, 256}, 2.0, 256);
    add<many_without_splits>(jobs, "many_without_splits", {256, 1024, 4096}, {256}, 2.0, 256);
    add<comb_inwards>(jobs, "comb_inwards", {254, 1022, 4094}, {254, 1022}, 1.95, 256);
    add<comb_outwards>(jobs, "comb_outwards", {254, 1022, 4094}, {254, 1022}, 1.95, 256);
    // Teeth of a larger gear are as tall but narrower, so the boxes of their flanks meet those of more others.
    add<gear_outwards>(jobs, "gear_outwards", {1024, 4096}, {1024}, 1.55, 1024);
    add<gear_inwards>(jobs, "gear_inwards", {1024, 4096}, {1024});
    add<coast_out_little>(jobs, "coast_out_0.5_percent", kCoasts, {});
    add<coast_out>(jobs, "coast_out_3_percent", kCoasts, {});
    add<coast_in_little>(jobs, "coast_in_0.5_percent", kCoasts, {});
    add<coast_in>(jobs, "coast_in_3_percent", kCoasts, {});
    add<coast_out_without_splits>(jobs, "coast_out_without_splits", kCoasts, {});
    add_rings(jobs);
    return jobs;
}

} // namespace korvale::bench
