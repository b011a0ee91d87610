// A plate with two holes in a tilted plane, in the fixed interface: a list of outlines, grown and lifted off its plane.
// The outer outline comes first; holes may run either way round.

#include <cstdio>
#include <cstdlib>
#include <vector>

#include <korvale.h>

namespace {

// The plane: x along (0.8, 0, 0.6), y along (0, 1, 0), so its normal is (-0.6, 0, 0.8).
DATAstruct* new_outline(const std::vector<double>& xy)
{
    DATAstruct* const outline = DATANew(); // children belong to the list
    outline->type = DATA_TYPE_DOUBLE;
    outline->count = static_cast<int>(xy.size() / 2);
    outline->dim = 3;
    if (DATAAllocate(outline) != 1)
        std::abort();
    for (int i = 0; i < outline->count; ++i) {
        const double x = xy[2 * static_cast<size_t>(i)], y = xy[2 * static_cast<size_t>(i) + 1];
        outline->dvals[3 * i] = 0.8 * x;
        outline->dvals[3 * i + 1] = y;
        outline->dvals[3 * i + 2] = 0.6 * x;
    }
    return outline;
}

} // namespace

int main()
{
    BORDERStatus s;
    BORDERInitialize(&s);
    s.path->type = DATA_TYPE_DATA;
    s.path->count = 3;
    s.path->dim = 1;
    if (DATAAllocate(s.path) != 1)
        return 1;
    s.path->pvals[0] = new_outline({0, 0, 20, 0, 20, 10, 0, 10});
    s.path->pvals[1] = new_outline({3, 3, 7, 3, 7, 7, 3, 7});
    s.path->pvals[2] = new_outline({13, 7, 17, 7, 17, 3, 13, 3}); // the other way round

    s.distance = 1; // grows the plate and narrows the holes
    s.height = 5;   // along the outer outline's normal
    DATAstruct *const path = s.path, *const output = s.output;
    const int result = BORDER(&s);
    s.path = path; // after a failure they would stand at the child that failed
    s.output = output;
    if (result == 1)
        for (int k = 0; k < output->count; ++k) {
            const auto* const border = static_cast<const DATAstruct*>(output->pvals[k]);
            std::printf(k == 0 ? "plate:" : "hole: ");
            for (int i = 0; i < border->count; ++i)
                std::printf("  %.3f %.3f %.3f", border->dvals[3 * i], border->dvals[3 * i + 1],
                            border->dvals[3 * i + 2]);
            std::printf("\n");
        }

    for (DATAstruct* array :
         {s.path, s.output, s.flat, s.velocity, s.direction, s.line, s.dead, s.length, s.rate, s.merge}) {
        DATADispose(array); // children too
        std::free(array);
    }
}
