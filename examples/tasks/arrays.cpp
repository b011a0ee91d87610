// Arrays of points in the fixed interface: filled, joined, mixed, moved, measured, released.

#include <cstdio>

#include <korvale.h>

namespace {

// A record with room for `count` points; false when the heap is exhausted.
bool make_points(DATAstruct& d, int count)
{
    DATAInitialize(&d);
    d.type = DATA_TYPE_DOUBLE;
    d.count = count;
    d.dim = 3;
    return DATAAllocate(&d) == 1;
}

void print(const char* what, const DATAstruct& d)
{
    std::printf("%s:", what);
    for (int i = 0; i < d.count; ++i)
        std::printf("  %g %g %g", d.dvals[3 * i], d.dvals[3 * i + 1], d.dvals[3 * i + 2]);
    std::printf("\n");
}

} // namespace

int main()
{
    DATAstruct start, end, result;
    DATAInitialize(&result); // outputs need no room: they are shaped as wanted
    if (!make_points(start, 2) || !make_points(end, 2))
        return 1;
    const double from[] = {0, 0, 0, 1, 0, 0}, to[] = {0, 0, 4, 3, 2, 4};
    for (int k = 0; k < 6; ++k) {
        start.dvals[k] = from[k];
        end.dvals[k] = to[k];
    }

    if (DATACat(&start, &end, &result) == 1)
        print("joined", result);
    if (DATABounds(&result, &result) != 1) // an output is never an input
        std::printf("bounds into their own input are refused\n");
    if (DATAMix(&start, &end, 0.5, 0.5, &result) == 1)
        print("halfway", result);

    Xfm turn;
    double degrees[] = {0, 0, 180};
    RotationMatrix(degrees, turn);
    turn[0][3] = 10; // and then moved along x
    TransformDATA(turn, &end, &end);
    DATAReverse(&end);
    std::printf("turned, backwards: %.3f %.3f\n", end.dvals[0], end.dvals[1]);

    DATADispose(&start); // frees the buffers; the records are ours
    DATADispose(&end);
    DATADispose(&result);
}
