// Offsets arbitrary outlines by both flavours, smaller ones beside the documented steps. The first byte selects, then
// follow the distance and the coordinates: as doubles, or as small integers, which make equal coordinates, straight
// runs and simultaneous events common.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "border/band.h"
#include "border/border.h"
#include "border/outlines.h"
#include "data/operations.h"
#include "fuzz/input.h"
#include "path/flatten.h"
#include "platform/layer.h"
#include "tests/reference/sweep.h"

// The work arrays of Border stay allocated on purpose.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:Border(BorderStatus*)\n";
}
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_options()
{
    return "print_suppressions=0"; // which would be most of the work
}

using namespace korvale::fuzz;

namespace {

void release(DATAstruct* d)
{
    DATADispose(d);
    std::free(d);
}

std::vector<double> read_integers(const uint8_t* bytes, size_t count)
{
    std::vector<double> values;
    for (size_t i = 0; i + 1 < count; i += 2)
        values.insert(values.end(), {bytes[i] % 16 * 0.5, bytes[i + 1] % 16 * 0.5, 0.0});
    return values;
}

BORDERStatus status_for(const std::vector<double>& points, double distance, bool keep, bool split)
{
    BORDERStatus status;
    BORDERInitialize(&status);
    status.distance = distance;
    status.keep_collapsed = keep;
    status.split_events = split;
    const auto n = static_cast<int32_t>(points.size() / 3);
    status.path->dim = 3;
    status.path->count = n;
    if (DATAAllocate(status.path) > 0)
        std::memcpy(status.path->dvals, points.data(), 3 * sizeof(double) * static_cast<size_t>(n));
    return status;
}

void release_all(BORDERStatus& status)
{
    for (DATAstruct* const d : {status.path, status.output, status.flat, status.velocity, status.direction, status.line,
                                status.dead, status.length, status.rate, status.merge})
        release(d);
}

void sweep(const std::vector<double>& points, double distance, bool keep, bool split, bool as_band)
{
    BORDERStatus status = status_for(points, distance, keep, split);
    if (as_band)
        BORDERAddWings(&status);
    const int32_t wanted = status.path->count;
    const int result = BORDER(&status);
    require(result == (wanted >= 1 && std::isfinite(distance) ? 1 : -1));
    if (result > 0) {
        int32_t live = 0;
        for (int32_t i = 0; i < wanted; ++i) {
            live += status.dead->bvals[i] == 0;
            require(status.merge->ivals[i] >= 0 && status.merge->ivals[i] < wanted);
            require(status.dead->bvals[i] == (status.merge->ivals[i] == i ? 0 : 1));
        }
        require(live >= 1);
        require(status.output->count == (keep ? wanted : live));
    }
    if (as_band) {
        BORDERRemoveWings(&status);
        BORDERMakePipe(&status);
    }
    release_all(status);
}

/// A double that the sweep may have to leave as it is.
constexpr double kUntouched = korvale::reference::SweepArrays::kUntouched;

/// Equal bits; any NaN equals any other.
void require_same(const std::vector<double>& expected, const double* actual)
{
    for (size_t i = 0; i < expected.size(); ++i)
        require(is_same(expected[i], actual[i]));
}

/// The work arrays against the documented steps.
void compare_with_steps(const std::vector<double>& points, double distance, bool split)
{
    const size_t n = points.size() / 3;
    BORDERStatus status = status_for(points, distance, true, split);
    const auto prefill = [n](DATAstruct& d, int32_t dim) {
        d.dim = dim;
        d.count = static_cast<int32_t>(n);
        require(DATAAllocate(&d) > 0);
        std::fill_n(d.dvals, n * static_cast<size_t>(dim), kUntouched);
    };
    for (DATAstruct* const d : {status.flat, status.velocity, status.direction, status.line})
        prefill(*d, 3);
    prefill(*status.length, 1);
    prefill(*status.rate, 1);

    Mwsrand(1);
    Xfm xfm, reverse;
    DATA_to_xy_xfms(status.path, xfm, reverse, 1);
    TransformDATA(xfm, status.path, status.flat);
    korvale::reference::SweepArrays steps(n);
    std::copy_n(status.flat->dvals, 3 * n, steps.flat.begin());
    korvale::reference::Sweep s = steps.sweep(distance, split);
    korvale::reference::run_sweep(s);
    korvale::reference::join_dead_vertices(s);

    Mwsrand(1);
    require(BORDER_BORDER(&status) == 1);
    require_same(steps.flat, status.flat->dvals);
    require_same(steps.velocity, status.velocity->dvals);
    require_same(steps.direction, status.direction->dvals);
    require_same(steps.line, status.line->dvals);
    require_same(steps.length, status.length->dvals);
    require_same(steps.rate, status.rate->dvals);
    require(std::memcmp(steps.dead.data(), status.dead->bvals, n) == 0);
    require(std::memcmp(steps.merge.data(), status.merge->ivals, n * sizeof(int32_t)) == 0);
    release_all(status);
}

/// As often as memory allows, since the work arrays stay.
void sweep_first_generation(std::vector<double>& points, double distance, bool keep, bool split)
{
    static int left = 100000;
    if (--left < 0)
        return;
    Data path = {3, static_cast<int32_t>(points.size() / 3), DATA_TYPE_DOUBLE, points.data(), nullptr, nullptr};
    BorderStatus status{};
    status.path = &path;
    status.distance = distance;
    status.keep_collapsed = keep;
    status.split_events = split;
    const int result = Border(&status);
    require(result == 1 || result == -1);
    require(status.output != nullptr);
    require(result < 0 || !keep || status.output->count == path.count);
    DataDispose(status.output);
    std::free(status.output);
}

/// Bands whose arrays stand around memory of the caller, as `ways` says: none of it is written, freed or replaced.
void pipe_wrapped(const std::vector<double>& points, uint8_t ways)
{
    BORDERStatus status{};
    const int32_t capacity = (ways & 1) != 0 ? -1 : 0;
    const auto n = static_cast<int32_t>(points.size() / 3);
    std::vector<double> path = points, border = points;
    const auto wrap = [capacity, n](std::vector<double>& memory) {
        return DATAstruct{3,       n,       capacity, capacity, DATA_TYPE_DOUBLE, DATA_TYPE_DOUBLE, memory.data(),
                          nullptr, nullptr, nullptr,  nullptr};
    };
    DATAstruct path_array = wrap(path), output_array = wrap(border);
    status.path = &path_array;
    status.output = &output_array;
    if ((ways & 2) != 0)
        BORDERAddWings(&status);
    if ((ways & 4) != 0)
        BORDERMakePipe(&status);
    const size_t bytes = points.size() * sizeof(double);
    for (const auto& [array, memory] : {std::pair{&path_array, &path}, std::pair{&output_array, &border}}) {
        require(array->count == n && array->alloc_count == capacity && array->alloc_dim == capacity);
        require(array->dvals == memory->data());
        require(bytes == 0 || std::memcmp(memory->data(), points.data(), bytes) == 0);
    }
    if ((ways & 8) != 0) { // both arrays are long enough
        BORDERRemoveWings(&status);
        require(path_array.count == n - 2 && output_array.count == n - 2);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    if (count < 1 + sizeof(double) || count > 4096)
        return 0;
    const bool keep = (bytes[0] & 1) != 0, split = (bytes[0] & 2) != 0, as_band = (bytes[0] & 4) != 0;
    double distance;
    std::memcpy(&distance, bytes + 1, sizeof distance);
    if ((bytes[0] & 8) != 0)
        distance = static_cast<double>(static_cast<int8_t>(bytes[1])) / 16.0;
    const uint8_t* const rest = bytes + 1 + sizeof distance;
    count -= 1 + sizeof distance;
    std::vector<double> points = (bytes[0] & 16) != 0 ? read_integers(rest, count) : doubles_of(rest, count);
    sweep(points, distance, keep, split, as_band);
    constexpr size_t kMostCompared = 120; // the steps take time in proportion to the cube
    if (points.size() >= 3 && points.size() / 3 <= kMostCompared && std::isfinite(distance))
        compare_with_steps(points, distance, split);
    if (points.size() >= 3)
        pipe_wrapped(points, bytes[1]);
    if ((bytes[0] & 0xe0) == 0xe0)
        sweep_first_generation(points, distance, keep, split);
    return 0;
}
