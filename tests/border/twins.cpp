#include "tests/border/twins.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>
#include <utility>

#include "border/internal/rounds.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

reference::SweepArrays arrays_of(const Coordinates& path)
{
    reference::SweepArrays arrays(path.size() / 3);
    arrays.flat = path;
    std::fill(arrays.dead.begin(), arrays.dead.end(), uint8_t{0});
    std::iota(arrays.merge.begin(), arrays.merge.end(), 0);
    for (size_t k = 2; k < path.size(); k += 3)
        arrays.direction[k] = arrays.velocity[k] = 0.0;
    return arrays;
}

/// The direction of an edge after one of direction `angle`: anywhere, straight on, nearly back or all the way back.
double next_angle(double angle, Random& random)
{
    switch (random.below(12)) {
    case 0:
        return angle;
    case 1:
        return angle + std::numbers::pi;
    case 2:
        return angle + std::numbers::pi + random.uniform(-4e-06, 4e-06);
    case 3:
        return angle + random.uniform(-2e-06, 2e-06);
    default:
        return random.uniform(0, 2 * std::numbers::pi);
    }
}

} // namespace

border::Rows rows_in(reference::SweepArrays& arrays)
{
    return {static_cast<int32_t>(arrays.dead.size()),
            arrays.flat.data(),
            arrays.direction.data(),
            arrays.velocity.data(),
            arrays.line.data(),
            arrays.length.data(),
            arrays.rate.data(),
            arrays.dead.data(),
            arrays.merge.data()};
}

border::Sweep quick_sweep(reference::SweepArrays& arrays, double distance, bool split_events)
{
    return {rows_in(arrays), {distance}, {split_events}};
}

Twins::Twins(const Coordinates& path, double distance)
    : documented_(arrays_of(path)), quick_(arrays_of(path)), rows_(rows_in(quick_)),
      memory_(static_cast<size_t>(border::Wavefront::doubles_for(rows_.n)), -7.5),
      steps(documented_.sweep(distance, true)), w(rows_, true, memory_.data())
{
}

void Twins::bury_some(int rarity, Random& random)
{
    for (int32_t i = 0; i < w.live; ++i) {
        if (w.live - w.buried_count <= 3 || !random.one_in(rarity))
            continue;
        const int32_t heir = next_live(w, i);
        steps.dead[w.id[i]] = 1;
        steps.merge[w.id[i]] = w.id[heir];
        bury(w, i, heir);
    }
    if (w.buried_count > 0)
        pack(w);
}

void Twins::set_any_edges(Random& random)
{
    std::swap(w.edge, w.edge_before);
    double angle = random.uniform(0, 2 * std::numbers::pi);
    for (int32_t i = 0; i < w.live; ++i) {
        angle = next_angle(angle, random);
        const int32_t k = w.id[i];
        steps.direction[3 * k] = w.edge.dx[i] = std::cos(angle);
        steps.direction[3 * k + 1] = w.edge.dy[i] = std::sin(angle);
        steps.length[k] = w.edge.length[i] = random.one_in(3) ? 1.0 : random.uniform(2e-06, 3);
    }
    note_written(w, border::Wavefront::edges);
}

void Twins::set_any_velocities(Random& random)
{
    for (int32_t i = 0; i < w.live; ++i) {
        const int32_t k = w.id[i];
        steps.velocity[3 * k] = w.velocity.x[i] = random.uniform(-2, 2);
        steps.velocity[3 * k + 1] = w.velocity.y[i] = random.uniform(-2, 2);
    }
    wrap_ends(w.velocity, w.live);
    note_written(w, border::Wavefront::velocities);
}

void Twins::set_any_rates(Random& random)
{
    for (int32_t i = 0; i < w.live; ++i)
        steps.rate[w.id[i]] = w.rate[i] = random.one_in(8) ? 0.0 : random.uniform(-2, 2);
    note_written(w, border::Wavefront::rates);
}

void Twins::set_anything(Random& random)
{
    set_any_edges(random);
    fit_edge_lines(w);
    reference::fit_edge_lines(steps);
    set_any_velocities(random);
    set_any_rates(random);
}

testing::AssertionResult Twins::are_equal()
{
    refresh(w);
    hand_back(w);
    const std::pair<const char*, std::pair<const std::vector<double>*, const std::vector<double>*>> arrays[] = {
        {"flat", {&documented_.flat, &quick_.flat}},
        {"direction", {&documented_.direction, &quick_.direction}},
        {"velocity", {&documented_.velocity, &quick_.velocity}},
        {"line", {&documented_.line, &quick_.line}},
        {"length", {&documented_.length, &quick_.length}},
        {"rate", {&documented_.rate, &quick_.rate}},
    };
    for (const auto& [name, both] : arrays)
        if (const auto result = same_bits(*both.first, *both.second); !result)
            return testing::AssertionFailure() << name << ": " << result.message();
    if (documented_.dead != quick_.dead || documented_.merge != quick_.merge)
        return testing::AssertionFailure() << "other vertices have died, or have other heirs";
    return testing::AssertionSuccess();
}

} // namespace korvale::test
