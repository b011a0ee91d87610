// Prints a number for each workload, made of at least 20,000 calls, and one that follows the C library: name, calls and
// number, a line each.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <vector>

#include "include/korvale.h"
#include "tests/golden/workload.h"
#include "tests/support/arrays.h"
#include "tests/support/draws.h"

namespace korvale::test {
namespace {

constexpr int kCalls = 20000;

void print(const char* name, int calls, const Hash& hash)
{
    std::printf("%-28s %6d %016" PRIx64 "\n", name, calls, hash.value());
    std::fflush(stdout);
}

void print_workloads()
{
    std::vector<Workload> all = workloads();
    std::sort(all.begin(), all.end(),
              [](const Workload& a, const Workload& b) { return std::strcmp(a.name, b.name) < 0; });
    for (const Workload& one : all) {
        const int rounds = std::max(one.rounds, (kCalls + one.calls - 1) / one.calls);
        Hash hash;
        one.run(rounds, hash);
        print(one.name, rounds * one.calls, hash);
    }
}

/// Rotations and frames of closed paths turn by sines and angles of the C library.
void print_what_follows_the_c_library()
{
    Draws random(1201);
    Hash hash;
    for (int i = 0; i < kCalls / 2; ++i) {
        double degrees[3];
        for (double& angle : degrees)
            angle = random.uniform(-360, 360);
        Xfm turned;
        RotateMatrix(degrees, turned);
        hash.add(turned[0], 16);
        const int n = random.between(3, 9);
        auto path = points<Data>(random.uniforms(3 * n, -9, 9));
        std::vector<double> frames(static_cast<size_t>(16 * n));
        path2xfm(path, 1, reinterpret_cast<Xfm*>(frames.data()));
        hash.add(frames.data(), 16 * n);
    }
    print("-CLibrary", kCalls, hash);
}

} // namespace
} // namespace korvale::test

int main()
{
    korvale::test::print_workloads();
    korvale::test::print_what_follows_the_c_library();
}
