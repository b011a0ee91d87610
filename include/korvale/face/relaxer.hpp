#pragma once

#include <exception>
#include <functional>
#include <stop_token>

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

    std::stop_token stop = {}; ///< ends the run after the step at work, as `cancelled`
};

/// Why `Relaxer::run` stopped.
enum class Stop {
    steps,     ///< all steps are done
    energy,    ///< the energy wanted is reached
    stalled,   ///< a step no longer lowers the energy, or by less than `least_drop`
    cancelled, ///< `progress` returned false, or `stop` was asked for
    no_force,  ///< there is energy, but nothing that is free to move lowers it
    held       ///< all that is kept is lengths and angles between points that are held
};

/// What a run came to.
struct Relaxation {
    int steps;     ///< steps made
    double energy; ///< that is left
    Stop stop;     ///< why it ended

    /// The same numbers and the same end.
    friend bool operator==(const Relaxation&, const Relaxation&) = default;
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
/// It measures in the units of its points: edges shorter than 1e-06 exert no force, nor do an area and a volume that
/// are off by less than 1e-06. Multiply a mesh that measures less than about 1 by a power of two, and divide what comes
/// back.
///
/// The relaxer keeps a copy of the mesh. One relaxer belongs to one thread at a time.
class Relaxer {
public:
    /// Triangles on shared vertices.
    Relaxer(AnyPoints vertices, AnyTriangles triangles)
        : Relaxer(make({detail::view_of(vertices), {}, triangles.layout()}, nullptr).value())
    {
    }

    /// Faces of any number of corners, `corners` face after face.
    Relaxer(AnyPoints vertices, AnyIndices face_sizes, AnyIndices corners)
        : Relaxer(
              make({detail::view_of(vertices), detail::view_of_sizes(face_sizes), corners.layout()}, nullptr).value())
    {
    }

    /// Edges alone, of which only lengths can be kept.
    static Relaxer of_edges(AnyPoints vertices, AnyEdges edges)
    {
        return make({detail::view_of(vertices), {}, {}}, edges.size() == 0 ? nullptr : &edges.layout()).value();
    }

    /// The same three, telling of failures by their result.
    ///@{
    static Result<Relaxer> try_make(AnyPoints vertices, AnyTriangles triangles)
    {
        return make({detail::view_of(vertices), {}, triangles.layout()}, nullptr);
    }
    static Result<Relaxer> try_make(AnyPoints vertices, AnyIndices face_sizes, AnyIndices corners)
    {
        return make({detail::view_of(vertices), detail::view_of_sizes(face_sizes), corners.layout()}, nullptr);
    }
    static Result<Relaxer> try_of_edges(AnyPoints vertices, AnyEdges edges)
    {
        return make({detail::view_of(vertices), {}, {}}, edges.size() == 0 ? nullptr : &edges.layout());
    }
    ///@}

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

    /// Keeps a measure of the mesh, as it is at the vertices, with a weight above 0. Throws `Error` for a measure that
    /// the mesh does not have, such as the volume of one that is not closed and turned one way; points at exactly one
    /// place count as one there.
    Relaxer& keep(Measure measure, double weight = 1.0)
    {
        try_keep(measure, weight).value();
        return *this;
    }

    /// The same by name: "lengths", "angles", "volume" or "area".
    Relaxer& keep(std::string_view measure, double weight = 1.0)
    {
        try_keep(measure, weight).value();
        return *this;
    }

    /// The same two, telling of failures by their result.
    ///@{
    Result<void> try_keep(Measure measure, double weight = 1.0)
    {
        return detail::done("Relaxer::keep", [&](korvale_error* error) {
            return korvale_relaxer_keep(handle_.get(), static_cast<std::int32_t>(measure), weight, error);
        });
    }
    Result<void> try_keep(std::string_view measure, double weight = 1.0)
    {
        constexpr std::pair<std::string_view, Measure> kNames[] = {{"lengths", Measure::lengths},
                                                                   {"angles", Measure::angles},
                                                                   {"volume", Measure::volume},
                                                                   {"area", Measure::area}};
        for (const auto& [name, value] : kNames)
            if (name == measure)
                return try_keep(value, weight);
        return Failure("Relaxer::keep", "measure", "be lengths, angles, volume or area",
                       "it is \"" + std::string(measure) + "\"");
    }
    ///@}

    /// Holds points where they are: one bool or `std::uint8_t` per point, true or not 0 for those that do not move. An
    /// empty mask frees all. What could be numbers of points, as ints, does not compile.
    template <std::ranges::input_range Mask>
    Relaxer& hold(const Mask& mask)
    {
        try_hold(mask).value();
        return *this;
    }

    /// The same, telling of failures by its result.
    template <std::ranges::input_range Mask>
    Result<void> try_hold(const Mask& mask)
    {
        using Value = std::ranges::range_value_t<Mask>;
        static_assert(std::same_as<Value, bool> || std::same_as<Value, std::uint8_t>,
                      "a mask is one bool or std::uint8_t for each point; of numbers of points make one: "
                      "std::vector<bool> mask(relaxer.size()); for (int point : held) mask[point] = true;");
        return detail::within_memory("Relaxer::hold", [&]() -> Result<void> {
            std::vector<std::uint8_t> tags;
            for (const auto& value : mask)
                tags.push_back(static_cast<bool>(value) ? 1 : 0);
            return detail::done("Relaxer::hold", [&](korvale_error* error) {
                return korvale_relaxer_hold(handle_.get(), tags.empty() ? nullptr : tags.data(),
                                            static_cast<std::int64_t>(tags.size()), error);
            });
        });
    }

    /// Moves points towards the shape, in place, by exactly `steps` steps of steepest descent, and returns the energy.
    ///
    /// Where there is energy but nothing free to move that lowers it, the points stay as they were before the call;
    /// where the energy becomes exactly 0 the steps left do nothing. Throws `Error` where nothing is kept, and where
    /// `progress` has stopped it; nothing has moved then.
    double step(PointSpan points, int steps = 1, const Progress& progress = {})
    {
        return try_step(points, steps, progress).value();
    }

    /// The same, telling of failures by its result: of KORVALE_STOPPED where `progress` has stopped it. What `progress`
    /// throws is thrown on.
    Result<double> try_step(PointSpan points, int steps = 1, const Progress& progress = {})
    {
        const korvale_points_out moving = detail::view_of_output(points);
        double energy = 0.0;
        const Result<void> done =
            detail::done("Relaxer::step", progress, [&](korvale_progress told, void* user, korvale_error* error) {
                return korvale_relaxer_step(handle_.get(), &moving, steps, &energy, told, user, error);
            });
        if (!done)
            return done.error();
        return energy;
    }

    /// Moves points towards the shape, in place, step by step until one of the conditions holds. They end where the
    /// same number of `step`s takes them. What `progress` throws ends the run and leaves it; the steps made stay.
    /// Throws `Error` where nothing is kept.
    Relaxation run(PointSpan points, const RunOptions& options = {}) { return try_run(points, options).value(); }

    /// The same, telling of failures by its result; what `progress` throws is thrown on.
    Result<Relaxation> try_run(PointSpan points, const RunOptions& options = {})
    {
        const korvale_points_out moving = detail::view_of_output(points);
        Told told = {options, {}};
        korvale_run_options limits;
        korvale_run_defaults(&limits, sizeof limits);
        limits.steps = options.steps;
        limits.energy = options.energy;
        limits.least_drop = options.least_drop;
        limits.progress = options.progress || options.stop.stop_possible() ? &Told::tell : nullptr;
        limits.user = &told;
        korvale_relaxation result = {};
        const Result<void> done = detail::done("Relaxer::run", [&](korvale_error* error) {
            return korvale_relaxer_run(handle_.get(), &moving, &limits, &result, error);
        });
        if (told.thrown)
            std::rethrow_exception(told.thrown);
        if (!done)
            return done.error();
        return Relaxation{result.steps, result.energy, static_cast<Stop>(result.stop)};
    }

    /// The energy at some points, which are only read. Edges and angles whose points are all held do not count.
    double energy(AnyPoints points) { return try_energy(points.view()).value(); }

    /// The same, telling of failures by its result.
    Result<double> try_energy(AnyPoints points)
    {
        const korvale_points at = detail::view_of(points);
        double energy = 0.0;
        return detail::given("Relaxer::energy", energy, [&](korvale_error* error) {
            return korvale_relaxer_energy(handle_.get(), &at, &energy, error);
        });
    }

    /// The force on every point, held ones included.
    Points forces(AnyPoints points) { return try_forces(points.view()).value(); }

    /// The same, telling of failures by its result.
    Result<Points> try_forces(AnyPoints points)
    {
        return detail::within_memory("Relaxer::forces", [&]() -> Result<Points> {
            const korvale_points at = detail::view_of(points);
            Points forces(points.size());
            return detail::given("Relaxer::forces", forces, [&](korvale_error* error) {
                return korvale_relaxer_forces(handle_.get(), &at, forces.coordinates().data(), error);
            });
        });
    }

    /// The record behind the relaxer. It is a `PreserveStatus&`; include korvale.hpp for it.
    template <class Behind = korvale_relaxer>
    detail::Record<Behind>& status()
    {
        return *static_cast<detail::Record<Behind>*>(korvale_relaxer_record(handle_.get()));
    }

private:
    /// What the caller wants to know of a run, behind a plain pointer: what it throws is kept until the run has ended.
    struct Told {
        const RunOptions& options;
        std::exception_ptr thrown;

        static std::int32_t tell(std::int32_t step, double energy, void* user)
        {
            auto& self = *static_cast<Told*>(user);
            bool goes_on = false;
            self.thrown = detail::caught([&] {
                goes_on = (!self.options.progress || self.options.progress(step, energy)) &&
                          !self.options.stop.stop_requested();
            });
            return goes_on ? 1 : 0;
        }
    };

    struct Free {
        void operator()(korvale_relaxer* relaxer) const { korvale_relaxer_free(relaxer); }
    };

    explicit Relaxer(korvale_relaxer* made) noexcept : handle_(made) {}

    static Result<Relaxer> make(const korvale_faces& faces, const korvale_indices* edges)
    {
        korvale_relaxer* made = nullptr;
        korvale_error error;
        if (const korvale_status status = korvale_relaxer_new(&faces, edges, &made, &error); status != KORVALE_OK)
            return Failure("Relaxer", status, error);
        return Relaxer(made);
    }

    std::unique_ptr<korvale_relaxer, Free> handle_;
};

} // namespace korvale
