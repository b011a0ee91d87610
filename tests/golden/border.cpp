// The fixed results of the border sweep, work arrays included, for both flavours.
#include <vector>

#include "platform/layer.h"
#include "tests/border/records.h"
#include "tests/golden/workload.h"
#include "tests/support/draws.h"

namespace korvale::test {
namespace {

/// A closed outline about the origin made of plain arithmetic: a diamond whose radius goes up and down.
std::vector<double> random_outline(Draws& random)
{
    std::vector<double> xyz;
    const int n = random.between(3, 90);
    const double depth = random.uniform(0, 0.9), tilt = random.one_in(2) ? random.uniform(-1, 1) : 0.0;
    for (int i = 0; i < n; ++i) {
        const double t = 4.0 * i / n, u = t - static_cast<int>(t), radius = 10.0 * (1.0 - depth * random.unit());
        double x = 1.0 - u, y = u;
        for (int quarter = static_cast<int>(t); quarter > 0; --quarter) {
            const double turned = -y;
            y = x;
            x = turned;
        }
        x *= radius;
        y *= radius;
        xyz.insert(xyz.end(), {x, y, tilt * x});
    }
    return xyz;
}

} // namespace

WORKLOAD(BorderSweep, 1200, 0xb88ff34070954da5u, 2)
{
    Draws random(1006);
    for (int i = 0; i < rounds; ++i) {
        const std::vector<double> path = random_outline(random);
        const double distance = random.uniform(-4, 4);
        const bool keep = random.one_in(2), split = !random.one_in(3);
        OwnedBORDERStatus second(path);
        second->distance = distance;
        second->keep_collapsed = keep;
        second->split_events = split;
        Mwsrand(static_cast<unsigned>(i));
        hash.add(BORDER_BORDER(second)).add_array(*second->output);
        for (const DATAstruct* work : {second->flat, second->direction, second->velocity, second->length, second->rate,
                                       second->dead, second->merge})
            hash.add_array(*work);
        if (split)
            hash.add_array(*second->line);

        OwnedBorderStatus first(path);
        first->distance = distance;
        first->keep_collapsed = keep;
        first->split_events = split;
        first->height = 0.25;
        const int result = Border(first);
        hash.add(result);
        if (result == 1)
            hash.add_array(*first->output);
    }
}

} // namespace korvale::test
