// Prints a number made of what the C library computes: other variants of it print another.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <initializer_list>

int main()
{
    uint64_t mixed = 0;
    for (int i = 1; i < 20000; ++i) {
        const double x = i * 0.00137;
        for (const double value : {std::sin(x), std::cos(x), std::tan(x), std::asin(1 / (1 + x)), std::atan2(x, 3.0),
                                   std::exp(-x), std::log(x), std::pow(x, 0.3)})
            mixed = mixed * 1099511628211u ^ std::bit_cast<uint64_t>(value);
    }
    std::printf("%016llx\n", static_cast<unsigned long long>(mixed));
}
