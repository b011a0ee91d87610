#pragma once

#include <exception>
#include <functional>

#include "scatter.hpp"

namespace korvale {

/// What a relaxation can keep of a mesh.
enum class Measure {
    lengths = KORVALE_LENGTHS, ///< of the edges
    angles = KORVALE_ANGLES,   ///< at the corners of the faces, as cosines
    volume = KORVALE_VOLUME,   ///< enclosed; the mesh must be closed and turned one way
    area = KORVALE_AREA        ///< of the surface
};

/// When `Relaxer::run` stops, and whom it tells.
struct RunOptions {
    int steps = 1000;        ///< at most
    double energy = 0.0;     ///< stop at this energy or below
    double least_drop = 0.0; ///< stop when a step lowers the energy by less than this share of it

    /// Called after every step with its number, from 1, and the energy; false stops the run.
    std::function<bool(int step, double energy)> progress = {};
};

/// Why `Relaxer::run` stopped.
enum class Stop {
    steps,     ///< all steps are done
    energy,    ///< the energy wanted is reached
    stalled,   ///< a step no longer lowers the energy, or by less than `least_drop`
    cancelled, ///< `progress` returned false
    no_force   ///< there is energy, but nothing that is free to move lowers it
};

/// What a run came to.
struct Relaxation {
    int steps;     ///< steps made
    double energy; ///< that is left
    Stop stop;     ///< why it ended
};

/// A mesh that remembers its shape and brings deformed copies of its points back towards it.
///
/// ```
/// korvale::Relaxer relaxer(vertices, triangles);
/// relaxer.keep("lengths").keep("volume", 1e-4);
/// relaxer.hold(is_pinned);
/// // ... deform a copy of the vertices ...
/// auto result = relaxer.run(copy, {.steps = 500, .least_drop = 1e-6});
/// ```
///
/// Weights are not comparable: lengths and angles are sums over many small deviations, volume and area are one large
/// number squared, and the energy is also the length of the first trial of a step. See docs/preserve.md.
///
/// The relaxer keeps a copy of the mesh. One relaxer belongs to one thread at a time.
class Relaxer {
public:
    /// Triangles on shared vertices.
    Relaxer(AnyPoints vertices, AnyTriangles triangles)
        : Relaxer({detail::view_of(vertices), {}, triangles.layout()}, nullptr)
    {
    }

    /// Faces of any number of corners, `corners` face after face.
    Relaxer(AnyPoints vertices, AnyIndices face_sizes, AnyIndices corners)
        : Relaxer({detail::view_of(vertices), detail::view_of_sizes(face_sizes), corners.layout()}, nullptr)
    {
    }

    /// Edges alone, of which only lengths can be kept.
    static Relaxer of_edges(AnyPoints vertices, AnyEdges edges)
    {
        return Relaxer({detail::view_of(vertices), {}, {}}, edges.size() == 0 ? nullptr : &edges.layout());
    }

    /// Moves; what is left behind may only be destroyed or assigned to.
    ///@{
    Relaxer(Relaxer&&) noexcept = default;
    Relaxer& operator=(Relaxer&&) noexcept = default;
    ///@}

    /// The number of points.
    std::size_t size() const { return static_cast<std::size_t>(korvale_relaxer_size(handle_.get())); }

    /// The edges, as pairs of points; a copy of those of a temporary.
    ///@{
    std::span<const std::array<std::int32_t, 2>> edges() const& KORVALE_LIFETIMEBOUND
    {
        std::int64_t count = 0;
        const std::int32_t* const ends = korvale_relaxer_edges(handle_.get(), &count);
        return {reinterpret_cast<const std::array<std::int32_t, 2>*>(ends), static_cast<std::size_t>(count)};
    }
    std::vector<std::array<std::int32_t, 2>> edges() const&&
    {
        const auto edges = this->edges();
        return {edges.begin(), edges.end()};
    }
    ///@}

    /// Keeps a measure of the mesh, as it is at the vertices, with a weight above 0.
    Relaxer& keep(Measure measure, double weight = 1.0)
    {
        detail::call("Relaxer::keep", [&](korvale_error* error) {
            return korvale_relaxer_keep(handle_.get(), static_cast<std::int32_t>(measure), weight, error);
        });
        return *this;
    }

    /// The same by name: "lengths", "angles", "volume" or "area".
    Relaxer& keep(std::string_view measure, double weight = 1.0)
    {
        constexpr std::pair<std::string_view, Measure> kNames[] = {{"lengths", Measure::lengths},
                                                                   {"angles", Measure::angles},
                                                                   {"volume", Measure::volume},
                                                                   {"area", Measure::area}};
        for (const auto& [name, value] : kNames)
            if (name == measure)
                return keep(value, weight);
        throw Error("Relaxer::keep", "measure", "be lengths, angles, volume or area",
                    "it is \"" + std::string(measure) + "\"");
    }

    /// Holds points where they are: one value per point, true for those that do not move. An empty mask frees all.
    template <std::ranges::input_range Mask>
    requires std::convertible_to < std::ranges::range_value_t<Mask>,
    bool > Relaxer& hold(const Mask& mask)
    {
        std::vector<std::uint8_t> tags;
        for (const auto& value : mask)
            tags.push_back(static_cast<bool>(value) ? 1 : 0);
        detail::call("Relaxer::hold", [&](korvale_error* error) {
            return korvale_relaxer_hold(handle_.get(), tags.empty() ? nullptr : tags.data(),
                                        static_cast<std::int64_t>(tags.size()), error);
        });
        return *this;
    }

    /// Moves points towards the shape, in place, by exactly `steps` steps of steepest descent, and returns the energy.
    ///
    /// Where there is energy but nothing free to move that lowers it, the points stay as they were before the call.
    double step(PointSpan points, int steps = 1)
    {
        const korvale_points_out moving = detail::view_of_output(points);
        double energy = 0.0;
        detail::call("Relaxer::step", [&](korvale_error* error) {
            return korvale_relaxer_step(handle_.get(), &moving, steps, &energy, error);
        });
        return energy;
    }

    /// Moves points towards the shape, in place, step by step until one of the conditions holds. They end where the
    /// same number of `step`s takes them. What `progress` throws ends the run and leaves it; the steps made stay.
    Relaxation run(PointSpan points, const RunOptions& options = {})
    {
        const korvale_points_out moving = detail::view_of_output(points);
        Progress progress = {options.progress, {}};
        korvale_run_options limits;
        korvale_run_defaults(&limits, sizeof limits);
        limits.steps = options.steps;
        limits.energy = options.energy;
        limits.least_drop = options.least_drop;
        limits.progress = options.progress ? &Progress::tell : nullptr;
        limits.user = &progress;
        korvale_relaxation result = {};
        detail::call("Relaxer::run", [&](korvale_error* error) {
            return korvale_relaxer_run(handle_.get(), &moving, &limits, &result, error);
        });
        if (progress.thrown)
            std::rethrow_exception(progress.thrown);
        return {result.steps, result.energy, static_cast<Stop>(result.stop)};
    }

    /// The energy at some points, which are only read.
    double energy(AnyPoints points)
    {
        const korvale_points at = detail::view_of(points);
        double energy = 0.0;
        detail::call("Relaxer::energy",
                     [&](korvale_error* error) { return korvale_relaxer_energy(handle_.get(), &at, &energy, error); });
        return energy;
    }

    /// The force on every point, held ones included.
    Points forces(AnyPoints points)
    {
        const korvale_points at = detail::view_of(points);
        Points forces(points.size());
        detail::call("Relaxer::forces", [&](korvale_error* error) {
            return korvale_relaxer_forces(handle_.get(), &at, forces.coordinates().data(), error);
        });
        return forces;
    }

    /// The record behind the relaxer. It is a `PreserveStatus&`; include korvale.hpp for it.
    template <class Behind = korvale_relaxer>
    detail::Record<Behind>& status()
    {
        return *static_cast<detail::Record<Behind>*>(korvale_relaxer_record(handle_.get()));
    }

private:
    /// A function of the caller behind a plain pointer: what it throws is kept until the run has ended.
    struct Progress {
        const std::function<bool(int, double)>& told;
        std::exception_ptr thrown;

        static std::int32_t tell(std::int32_t step, double energy, void* user)
        {
            auto& self = *static_cast<Progress*>(user);
            try {
                return self.told(step, energy) ? 1 : 0;
            } catch (...) {
                self.thrown = std::current_exception();
                return 0;
            }
        }
    };

    struct Free {
        void operator()(korvale_relaxer* relaxer) const { korvale_relaxer_free(relaxer); }
    };

    Relaxer(const korvale_faces& faces, const korvale_indices* edges)
    {
        korvale_relaxer* made = nullptr;
        detail::call("Relaxer", [&](korvale_error* error) { return korvale_relaxer_new(&faces, edges, &made, error); });
        handle_.reset(made);
    }

    std::unique_ptr<korvale_relaxer, Free> handle_;
};

} // namespace korvale
