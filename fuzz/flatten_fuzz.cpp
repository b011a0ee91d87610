// Flattens arbitrary points by both methods of both generations. The first byte selects, the rest are coordinates.
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/input.h"
#include "path/flatten.h"

using namespace korvale::fuzz;

namespace {

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    if (count == 0)
        return 0;
    const int closed = bytes[0] & 1;
    const bool with_reverse = (bytes[0] & 2) != 0;
    std::vector<double> points = doubles_of(bytes + 1, count - 1);
    const std::vector<double> before = points;
    const auto n = static_cast<int32_t>(points.size() / 3);

    Xfm xfm, reverse;
    Data data = {3, n, DATA_TYPE_DOUBLE, points.data(), nullptr, nullptr};
    const int result = data_to_xy_xfms(&data, xfm, with_reverse ? reverse : nullptr, closed);
    require(result == 1 || result == -1);
    require(result == 1 || (xfm[0][0] == 1.0 && xfm[2][3] == 0.0)); // the identity where no plane is found

    DATAstruct datastruct;
    DATAInitialize(&datastruct);
    datastruct.dim = 3;
    datastruct.count = n;
    datastruct.dvals = points.data();
    DATA_to_xy_xfms(&datastruct, xfm, with_reverse ? reverse : nullptr, closed);
    require(points.empty() || std::memcmp(points.data(), before.data(), points.size() * sizeof(double)) == 0);
    return 0;
}
