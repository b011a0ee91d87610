// What of the math is computed in another way than it is documented, beside the documented steps. Doubles in a row: the
// matrices a product reads and writes may lie anywhere among them and overlap.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "fuzz/input.h"
#include "math/combinatorics.h"
#include "math/transform.h"
#include "tests/reference/transform.h"

using namespace korvale::fuzz;

namespace {

bool are_same(const std::vector<double>& a, const std::vector<double>& b)
{
    for (size_t k = 0; k < a.size(); ++k)
        if (!is_same(a[k], b[k]))
            return false;
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    constexpr size_t kPlaces = 4;
    if (count < kPlaces + 16 * sizeof(double))
        return 0;
    std::vector<double> expected = doubles_of(bytes + kPlaces, count - kPlaces);
    std::vector<double> actual = expected;
    const auto at = [bytes](std::vector<double>& v, size_t place) { return v.data() + bytes[place] % (v.size() - 15); };
    const auto matrix = [&at](std::vector<double>& v, size_t place) {
        return reinterpret_cast<double(*)[4]>(at(v, place));
    };

    korvale::reference::multiply(matrix(expected, 0), matrix(expected, 1), matrix(expected, 2));
    MatrixMultiply(matrix(actual, 0), matrix(actual, 1), matrix(actual, 2));
    if (!are_same(expected, actual))
        std::abort();
    korvale::reference::transform_vector(matrix(expected, 0), at(expected, 1), at(expected, 3));
    TransformVector(matrix(actual, 0), at(actual, 1), at(actual, 3));
    if (!are_same(expected, actual))
        std::abort();
    const int exponent = bytes[3];
    if (!are_same({korvale::reference::power(expected[0], exponent)}, {power(actual[0], exponent)}))
        std::abort();
    return 0;
}
