// Frames along a wound path of n points, and flattening it.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include "bench/job.h"
#include "include/korvale.h"

#ifdef KORVALE_HAS_STEPS
#include "tests/reference/frames.h"
#endif

namespace korvale::bench {
namespace {

/// A wound path of n points.
std::vector<double> wound(int n)
{
    std::vector<double> xyz;
    for (int i = 0; i < n; ++i) {
        const double t = 6.283185307179586 * i / n;
        xyz.insert(xyz.end(),
                   {(2 + std::cos(3 * t)) * std::cos(2 * t), (2 + std::cos(3 * t)) * std::sin(2 * t), std::sin(3 * t)});
    }
    return xyz;
}

/// The path and its frames.
struct Wound {
    explicit Wound(int n) : path(3, wound(n)), frames(16 * static_cast<size_t>(n)), other(frames.size()) {}

    Xfm* out() { return reinterpret_cast<Xfm*>(frames.data()); }

    Around<Data> path;
    std::vector<double> frames, other;
};

template <int closed>
Work frames(int n)
{
    return [w = std::make_shared<Wound>(n)] { path2xfm(&w->path, closed, w->out()); };
}

/// As many bytes as the frames have.
Work copy_frames(int n)
{
    return [w = std::make_shared<Wound>(n)] {
        std::memcpy(w->other.data(), w->frames.data(), w->frames.size() * sizeof(double));
        keep(*w);
    };
}

Work flatten(int n)
{
    return [path = std::make_shared<Around<Data>>(3, wound(n))] {
        Xfm xfm, reverse;
        data_to_xy_xfms(path.get(), xfm, reverse, 1);
        keep(xfm);
    };
}

/// A pass that reads every coordinate, for the least and the greatest: what flattening cannot do without.
Work read_once(int n)
{
    return [points = wound(n)] {
        double low[3] = {points[0], points[1], points[2]}, high[3] = {points[0], points[1], points[2]};
        for (size_t i = 0; i < points.size(); i += 3)
            for (size_t k = 0; k < 3; ++k) {
                low[k] = std::min(low[k], points[i + k]);
                high[k] = std::max(high[k], points[i + k]);
            }
        keep(low);
        keep(high);
    };
}

#ifdef KORVALE_HAS_STEPS
template <int closed>
Work frames_steps(int n)
{
    return [w = std::make_shared<Wound>(n), n] {
        reference::frames_along(w->path.numbers.data(), n, closed != 0, 6.2831852, w->out());
    };
}
#endif

} // namespace

std::vector<Job> path_jobs()
{
    const std::vector<int> sizes = {16, 1000, 100000};
    return {
        {"path.frames_open", sizes, frames<0>, 1.05, 8000},   {"path.frames_open@copy", sizes, copy_frames},
        {"path.frames_closed", sizes, frames<1>, 1.05, 2000}, {"path.frames_closed@copy", sizes, copy_frames},
        {"path.flatten", sizes, flatten, 1.05, 2000},         {"path.flatten@pass", sizes, read_once},
#ifdef KORVALE_HAS_STEPS
        {"path.frames_open@steps", sizes, frames_steps<0>},   {"path.frames_closed@steps", sizes, frames_steps<1>},
#endif
    };
}

} // namespace korvale::bench
