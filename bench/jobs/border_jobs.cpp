// Offsetting: waves, coasts, combs and gears.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <numbers>

#include "bench/jobs/job.h"
#include "include/korvale.h"

#ifdef KORVALE_HAS_POLYCLIPPING
#include <polyclipping/clipper.hpp>
#endif
#ifdef KORVALE_HAS_GEOS
#include <geos_c.h>
#endif

namespace korvale::bench {
namespace {

using Points = std::vector<double>;

constexpr double kFullTurn = 2.0 * std::numbers::pi;

/// A circle of radius 10 with a wave every 16 points.
Points wiggly(int n, double depth)
{
    Points points;
    for (int i = 0; i < n; ++i) {
        const double angle = kFullTurn * i / n, radius = 10.0 + depth * std::sin(n / 16 * angle + std::sin(5 * angle));
        points.insert(points.end(), {radius * std::cos(angle), radius * std::sin(angle), 0.0});
    }
    return points;
}

/// n / 4 teeth, four points each, all alike.
Points gear(int n)
{
    Points points;
    for (int i = 0; i < n; ++i) {
        const double angle = kFullTurn * i / n, radius = i % 4 < 2 ? 9.0 : 10.0;
        points.insert(points.end(), {radius * std::cos(angle), radius * std::sin(angle), 0.0});
    }
    return points;
}

/// n / 4 narrow teeth, four points each, on a bar of two more points.
Points comb(int n)
{
    constexpr double kPitch = 1.5;
    const int teeth = n / 4;
    Points points = {0, 0, 0, kPitch * teeth, 0, 0};
    for (int i = teeth - 1; i >= 0; --i) {
        const double left = kPitch * i, right = left + 1.0;
        points.insert(points.end(), {right, 1, 0, right, 5, 0, left, 5, 0, left, 1, 0});
    }
    return points;
}

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
};

Case no_event(int n)
{
    return {wiggly(n, 1.0 / n), -1.0 / n};
}
Case many_events(int n)
{
    return {wiggly(n, 0.5), -20.0};
}
Case many_without_splits(int n)
{
    return {wiggly(n, 0.5), -20.0, false};
}
Case gear_outwards(int n)
{
    return {gear(n), 2.0};
}
Case gear_inwards(int n)
{
    return {gear(n), -2.0};
}
Case comb_inwards(int n)
{
    return {comb(n), -0.6};
}
Case comb_outwards(int n)
{
    return {comb(n), 0.5};
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

/// The record and the outline in it; never released, the process is the job's own.
template <Case (*make)(int)>
Work sweep(int n)
{
    auto* const status = new BORDERStatus;
    BORDERInitialize(status);
    const Case c = make(n);
    status->distance = c.distance;
    status->split_events = c.split_events;
    status->path->dim = 3;
    status->path->count = static_cast<int32_t>(c.points.size() / 3);
    if (DATAAllocate(status->path) < 0)
        std::abort();
    std::copy(c.points.begin(), c.points.end(), status->path->dvals);
    return [status] { BORDER_BORDER(status); };
}

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
        ClipperLib::Paths result;
        offset.Execute(result, c.distance * kGrid);
        keep(result);
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
    return [context, polygon, distance = c.distance] {
        GEOSGeometry* const result =
            GEOSBufferWithStyle_r(context, polygon, distance, 8, GEOSBUF_CAP_FLAT, GEOSBUF_JOIN_MITRE, 1000.0);
        GEOSGeom_destroy_r(context, result);
    };
}
#endif

template <Case (*make)(int)>
void add(std::vector<Job>& jobs, const std::string& name, std::vector<int> sizes, double exponent = 0.0,
         int counted = 0)
{
    jobs.push_back({"border." + name, sizes, sweep<make>, exponent, counted});
#ifdef KORVALE_HAS_POLYCLIPPING
    jobs.push_back({"border." + name + "@Clipper", sizes, clipper<make>});
#endif
#ifdef KORVALE_HAS_GEOS
    if (name != "many_events") // GEOS sees from the extent that nothing can be left
        jobs.push_back({"border." + name + "@GEOS", sizes, geos<make>});
#endif
}

} // namespace

std::vector<Job> border_jobs()
{
    std::vector<Job> jobs;
    add<no_event>(jobs, "no_event", {4, 8, 16, 24, 64, 256, 1024, 4096}, 1.1, 1024);
    add<many_events>(jobs, "many_events", {16, 256, 1024, 4096}, 2.0, 256);
    jobs.push_back({"border.many_without_splits", {256, 1024, 4096}, sweep<many_without_splits>, 2.0, 256});
    add<comb_inwards>(jobs, "comb_inwards", {254, 1022, 4094}, 1.95, 256);
    add<comb_outwards>(jobs, "comb_outwards", {254, 1022, 4094}, 1.95, 256);
    // Teeth of a larger gear are as tall but narrower, so the boxes of their flanks meet those of more others.
    add<gear_outwards>(jobs, "gear_outwards", {1024, 4096}, 1.55, 1024);
    add<gear_inwards>(jobs, "gear_inwards", {1024, 4096});
    add<coast_out_little>(jobs, "coast_out_0.5_percent", kCoasts);
    add<coast_out>(jobs, "coast_out_3_percent", kCoasts);
    add<coast_in_little>(jobs, "coast_in_0.5_percent", kCoasts);
    add<coast_in>(jobs, "coast_in_3_percent", kCoasts);
    jobs.push_back({"border.coast_out_without_splits", kCoasts, sweep<coast_out_without_splits>});
    return jobs;
}

} // namespace korvale::bench
