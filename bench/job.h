#pragma once

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

// The jobs of the library, each with the sizes that matter, and the same work done by its peers, of which the
// documented steps written out are one. They call exported functions only, so the program runs with any build of the
// library.
namespace korvale::bench {

/// One call of the work, on input made beforehand; what it captures lives as long as it does.
using Work = std::function<void()>;

struct Job {
    std::string name;          ///< subsystem.job, or subsystem.job@peer
    std::vector<int> sizes;    ///< the sizes that the table shows
    Work (*prepare)(int size); ///< makes the input
    double exponent = 0.0;     ///< instructions grow no faster than this power of the size; 0 where growth is not held
    int counted = 0;           ///< the smallest of the three sizes, each double the last, that growth is counted at
};

std::vector<Job> border_jobs();
std::vector<Job> ray_jobs();
std::vector<Job> equation_jobs();
std::vector<Job> preserve_jobs();
std::vector<Job> array_jobs();
std::vector<Job> path_jobs();
std::vector<Job> door_jobs();
std::vector<Job> column_jobs();
std::vector<Job> many_jobs();
std::vector<Job> grid_jobs();
std::vector<Job> shape_jobs();
std::vector<Job> math_jobs();

/// The least that keeps a compiler from dropping a result.
template <class T>
void keep(const T& value)
{
    asm volatile("" : : "g"(&value) : "memory");
}

/// Ends the program where something fails: what it then takes says nothing.
inline void need(bool done)
{
    if (!done)
        std::abort();
}

/// Numbers in [0, 1) that are the same everywhere (Knuth's linear congruential generator).
class Numbers {
public:
    double unit()
    {
        state_ = state_ * 6364136223846793005u + 1442695040888963407u;
        return static_cast<double>(state_ >> 11) * 0x1p-53;
    }
    double uniform(double low, double high) { return low + (high - low) * unit(); }

private:
    uint64_t state_ = 1;
};

/// A record of the library's around numbers of its own.
template <class Array>
struct Around : Array {
    Around(int width, std::vector<double> numbers);
    Around(const Around&) = delete;
    Around& operator=(const Around&) = delete;

    std::vector<double> numbers;
};

/// The teapot, its triangles divided into four until there are `count`: 992, 3968, 15872, 63488, 253952, 1015808.
std::vector<double> teapot(int count);

/// The sizes of the teapot.
inline const std::vector<int> kTeapots = {992, 3968, 15872, 63488, 253952, 1015808};

/// Rays from around a mesh [.][9] towards points in its box: origins and directions [count][3].
struct Rays {
    Rays(const std::vector<double>& mesh, int count);

    std::vector<double> origins, directions;
};

} // namespace korvale::bench
