#include "data/internal/elements.h"

#include <cstring>

#include "data/internal/scratch.h"
#include "math/internal/mat.h"
#include "platform/module_start.h"

namespace korvale {

bool reverse_elements(void* buffer, int64_t count, size_t bytes)
{
    Scratch<unsigned char> held(static_cast<int64_t>(bytes));
    if (!held.exists())
        return false;
    auto* low = static_cast<unsigned char*>(buffer);
    auto* high = low + static_cast<size_t>(count - 1) * bytes;
    for (; low < high; low += bytes, high -= bytes) {
        std::memcpy(held.get(), low, bytes);
        std::memcpy(low, high, bytes);
        std::memcpy(high, held.get(), bytes);
    }
    return true;
}

void find_bounds(const double* values, int64_t count, int64_t dim, double* least, double* greatest)
{
    for (int64_t k = 0; k < dim; ++k)
        least[k] = greatest[k] = values[k];
    for (int64_t i = 1; i < count; ++i)
        for (int64_t k = 0; k < dim; ++k) {
            const double value = values[i * dim + k];
            if (least[k] > value)
                least[k] = value;
            if (value > greatest[k])
                greatest[k] = value;
        }
}

void carry_points(const double (*m)[4], const double* from, int64_t count, double* to)
{
    for (int64_t i = 0; i < count; ++i)
        carry_point(m, from + 3 * i, to + 3 * i);
}

} // namespace korvale
