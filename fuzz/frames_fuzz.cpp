// Frames along arbitrary points. The first byte says whether the path is closed, the rest are coordinates.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "path/frames.h"

namespace {

struct Frame {
    Xfm m;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    if (count == 0)
        return 0;
    std::vector<double> points((count - 1) / sizeof(double));
    if (!points.empty())
        std::memcpy(points.data(), bytes + 1, points.size() * sizeof(double));
    const size_t n = points.size() / 3;
    std::vector<Frame> frames(n); // exactly as many as there are points: one more written is caught

    Data data = {3, static_cast<int32_t>(n), DATA_TYPE_DOUBLE, points.data(), nullptr, nullptr};
    path2xfm(&data, bytes[0] & 1, n == 0 ? nullptr : &frames.data()->m);
    for (size_t i = 1; i < n; ++i)
        for (int r = 0; r < 3; ++r) { // every frame stands at its point, unless a product with it is not a number
            const double at = frames[i].m[r][3], point = points[3 * i + static_cast<size_t>(r)];
            if (at == at && at != point)
                std::abort();
        }
    return 0;
}
