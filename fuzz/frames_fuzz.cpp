// Frames along arbitrary points, beside the documented steps. The first byte says whether the path is closed, the rest
// are coordinates.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "fuzz/input.h"
#include "path/frames.h"
#include "tests/reference/frames.h"

using namespace korvale::fuzz;

namespace {

struct Frame {
    Xfm m;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    if (count == 0)
        return 0;
    std::vector<double> points = doubles_of(bytes + 1, count - 1);
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
