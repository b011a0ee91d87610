// Frames along arbitrary points, beside the documented steps. The first byte says whether the path is closed, the rest
// are coordinates.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "path/frames.h"
#include "tests/reference/frames.h"

namespace {

struct Frame {
    Xfm m;
};

/// Whether both have the same bits or both are not numbers.
bool is_same(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0 || (a != a && b != b);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    if (count == 0)
        return 0;
    std::vector<double> points((count - 1) / sizeof(double));
    if (!points.empty())
        std::memcpy(points.data(), bytes + 1, points.size() * sizeof(double));
    const bool closed = (bytes[0] & 1) != 0;
    const size_t n = points.size() / 3;
    std::vector<Frame> frames(n), expected(n); // exactly as many as there are points: one more written is caught

    Data data = {3, static_cast<int32_t>(n), DATA_TYPE_DOUBLE, points.data(), nullptr, nullptr};
    path2xfm(&data, closed, n == 0 ? nullptr : &frames.data()->m);
    if (n == 0)
        return 0;
    korvale::reference::frames_along(points.data(), data.count, closed, 6.2831852, &expected.data()->m);
    for (size_t i = 0; i < n; ++i)
        for (int k = 0; k < 16; ++k)
            if (!is_same(frames[i].m[k / 4][k % 4], expected[i].m[k / 4][k % 4]))
                std::abort();
    return 0;
}
