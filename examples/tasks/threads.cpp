// Two threads, a half of the outlines each. Distinct values share nothing, so no lock is needed.

#include <cmath>
#include <cstdio>
#include <thread>
#include <vector>

#include <korvale.hpp>

namespace {

using Outline = std::vector<korvale::Point>;

// A gear with `teeth` teeth.
Outline gear(int teeth)
{
    Outline outline;
    for (int i = 0; i < 4 * teeth; ++i) {
        const double angle = 1.57079632679489662 * i / teeth, radius = i % 4 < 2 ? 10 : 8.5;
        outline.push_back({radius * std::cos(angle), radius * std::sin(angle), 0});
    }
    return outline;
}

void shrink(const std::vector<Outline>& gears, size_t first, size_t step, std::vector<korvale::Offset>& results)
{
    for (size_t i = first; i < gears.size(); i += step)
        results[i] = korvale::offset(gears[i], -0.2);
}

} // namespace

int main()
{
    std::vector<Outline> gears;
    for (int teeth = 5; teeth < 45; ++teeth)
        gears.push_back(gear(teeth));

    std::vector<korvale::Offset> alone(gears.size()), together(gears.size());
    shrink(gears, 0, 1, alone);
    std::thread even(shrink, std::cref(gears), 0, 2, std::ref(together));
    std::thread odd(shrink, std::cref(gears), 1, 2, std::ref(together));
    even.join();
    odd.join();

    size_t points = 0, equal = 0;
    for (size_t i = 0; i < gears.size(); ++i)
        for (size_t k = 0; k < alone[i].points.size(); ++k) {
            points += 1;
            equal += alone[i].points[k] == together[i].points[k];
        }
    std::printf("%zu of %zu points are equal to the last bit\n", equal, points);
}
