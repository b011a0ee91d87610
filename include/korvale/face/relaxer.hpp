#pragma once

#include <functional>

#include "scatter.hpp"

namespace korvale {

/// What a relaxation can keep of a mesh.
enum class Measure {
    lengths = PRESERVE_LENGTH,    ///< of the edges
    angles = PRESERVE_FACE_ANGLE, ///< at the corners of the faces, as cosines
    volume = PRESERVE_VOLUME,     ///< enclosed; the mesh must be closed and turned one way
    area = PRESERVE_AREA          ///< of the surface
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
    Relaxer(PointView vertices, std::span<const Triangle> triangles)
        : Relaxer(vertices, std::vector<std::int32_t>(triangles.size(), 3), detail::corners_of(triangles), {})
    {
    }

    /// Faces of any number of corners, `corners` face after face.
    Relaxer(PointView vertices, std::span<const std::int32_t> face_sizes, std::span<const std::int32_t> corners)
        : Relaxer(vertices, std::vector<std::int32_t>(face_sizes.begin(), face_sizes.end()), corners, {})
    {
    }

    /// Edges alone, of which only lengths can be kept.
    static Relaxer of_edges(PointView vertices, std::span<const std::array<std::int32_t, 2>> edges)
    {
        return Relaxer(vertices, {}, {}, {edges.empty() ? nullptr : edges[0].data(), 2 * edges.size()});
    }

    /// Moves; what is left behind may only be destroyed or assigned to.
    ///@{
    Relaxer(Relaxer&&) noexcept = default;
    Relaxer& operator=(Relaxer&&) noexcept = default;
    ///@}

    /// The number of points.
    std::size_t size() const { return state_->reference.size() / 3; }

    /// The edges, as pairs of points.
    std::span<const std::array<std::int32_t, 2>> edges() const
    {
        const DATAstruct* const edges = state_->status.edges;
        if (edges == nullptr || edges->ivals == nullptr)
            return {};
        return {reinterpret_cast<const std::array<std::int32_t, 2>*>(edges->ivals),
                static_cast<std::size_t>(edges->count)};
    }

    /// Keeps a measure of the mesh, as it is at the vertices, with a weight above 0.
    Relaxer& keep(Measure measure, double weight = 1.0)
    {
        if (!(weight > 0.0) || !detail::is_finite(weight))
            throw Error("Relaxer::keep", "weight", "be finite and above 0", "it is " + detail::text_of(weight));
        const State& s = *state_;
        const bool has_measure = !s.corners.empty() || (measure == Measure::lengths && !s.edges.empty());
        if (!has_measure)
            throw Error("Relaxer::keep", "measure", "be one that the mesh has",
                        "the mesh has no faces or edges for it");
        if (PreservePreserve(&state_->status, static_cast<int>(measure), weight) != 1)
            throw std::bad_alloc();
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
        if (tags.empty())
            tags.assign(size(), 0);
        if (tags.size() != size())
            throw Error("Relaxer::hold", "mask", "have one value for each of " + detail::counted(size(), "point"),
                        "it has " + detail::text_of(tags.size()));
        State& s = *state_;
        s.tags = std::move(tags);
        s.tag_record = detail::record_over(DATA_TYPE_BYTE, s.tags.size(), 1);
        s.tag_record.bvals = s.tags.data();
        PreserveSetTag(&s.status, &s.tag_record);
        return *this;
    }

    /// Moves points towards the shape, in place, by exactly `steps` steps of steepest descent, and returns the energy.
    ///
    /// Where there is energy but nothing free to move that lowers it, the points stay as they were before the call.
    double step(PointSpan points, int steps = 1)
    {
        look_at("Relaxer::step", points);
        detail::require_finite("Relaxer::step", "points", points);
        if (steps < 0)
            throw Error("Relaxer::step", "steps", "be 0 or more", "it is " + detail::text_of(steps));
        std::vector<double> before(points.coordinates().begin(), points.coordinates().end());
        compute(points, steps);
        if (!is_sound(points)) {
            std::ranges::copy(before, points.data());
            compute(points, 0);
        }
        return state_->status.energy;
    }

    /// Moves points towards the shape, in place, step by step until one of the conditions holds. They end where the
    /// same number of `step`s takes them.
    Relaxation run(PointSpan points, const RunOptions& options = {})
    {
        look_at("Relaxer::run", points);
        detail::require_finite("Relaxer::run", "points", points);
        std::vector<double> before(points.coordinates().size());
        compute(points, 0);
        double energy = state_->status.energy;
        for (int done = 0;; ++done) {
            if (energy <= options.energy)
                return {done, energy, Stop::energy};
            if (done >= options.steps)
                return {done, energy, Stop::steps};
            std::ranges::copy(points.coordinates(), before.begin());
            compute(points, 1);
            const double after = state_->status.energy;
            if (!is_sound(points)) {
                std::ranges::copy(before, points.data());
                compute(points, 0);
                return {done, energy, Stop::no_force};
            }
            const double drop = energy - after;
            const bool is_stalled = !(drop > 0.0) || drop < options.least_drop * energy;
            energy = after;
            if (options.progress && !options.progress(done + 1, energy))
                return {done + 1, energy, Stop::cancelled};
            if (is_stalled && !(energy <= options.energy))
                return {done + 1, energy, Stop::stalled};
        }
    }

    /// The energy at some points, which are only read.
    double energy(PointView points)
    {
        look_at("Relaxer::energy", points);
        compute(PointSpan::at(detail::unconst(points.data()), points.size()), 0);
        return state_->status.energy;
    }

    /// The force on every point, held ones included.
    Points forces(PointView points)
    {
        look_at("Relaxer::forces", points);
        DATAstruct record = detail::record_over(points), copy;
        DATAInitialize(&copy);
        const int result = PreserveGetForce(&state_->status, &record, &copy);
        state_->status.cur_points = nullptr;
        if (result != 1 || copy.dvals == nullptr)
            throw std::bad_alloc();
        return Points(copy.dvals, static_cast<std::size_t>(copy.count));
    }

    /// The record behind the relaxer.
    PreserveStatus& status() { return state_->status; }

private:
    struct State {
        State()
        {
            for (DATAstruct* record : {&points, &sizes, &corner_record, &edge_record, &tag_record})
                DATAInitialize(record);
        }
        ~State()
        {
            DATAstruct* const used = status.edges;
            PreserveDispose(&status);
            if (used != nullptr && used != &edge_record) { // edges that were built are the caller's
                DATADispose(used);
                std::free(used);
            }
        }
        State(const State&) = delete;
        State& operator=(const State&) = delete;

        std::vector<double> reference;
        std::vector<std::int32_t> face_sizes, corners, edges;
        std::vector<std::uint8_t> tags;
        DATAstruct points, sizes, corner_record, edge_record, tag_record; // over the vectors
        PreserveStatus status = {};
    };

    Relaxer(PointView vertices, std::vector<std::int32_t> face_sizes, std::span<const std::int32_t> corners,
            std::span<const std::int32_t> edges)
        : state_(std::make_unique<State>())
    {
        detail::require_points("Relaxer", "vertices", vertices, 1);
        detail::count_for("Relaxer", "face_sizes", face_sizes.size(), 1);
        detail::count_for("Relaxer", "corners", corners.size(), 2);
        detail::count_for("Relaxer", "edges", edges.size(), 2);
        detail::require_faces("Relaxer", face_sizes, corners, vertices.size());
        detail::require_corners("Relaxer", "edges", edges, vertices.size());

        State& s = *state_;
        s.reference.assign(vertices.coordinates().begin(), vertices.coordinates().end());
        s.face_sizes = std::move(face_sizes);
        s.corners.assign(corners.begin(), corners.end());
        s.edges.assign(edges.begin(), edges.end());
        s.points = detail::record_over(PointView(s.reference));
        s.sizes = detail::record_over(std::span<const std::int32_t>(s.face_sizes));
        s.corner_record = detail::record_over(std::span<const std::int32_t>(s.corners));
        s.edge_record = detail::record_over(std::span<const std::int32_t>(s.edges), 2);
        if (PreserveInitialize(&s.status, &s.points, s.edges.empty() ? nullptr : &s.edge_record,
                               s.face_sizes.empty() ? nullptr : &s.sizes,
                               s.corners.empty() ? nullptr : &s.corner_record) != 1)
            throw std::bad_alloc();
        // Where the heap is exhausted arrays are missing.
        const bool has_edges = !s.edges.empty() || std::ranges::any_of(s.face_sizes, [](int n) { return n > 1; });
        if (s.status.force == nullptr || s.status.force->dvals == nullptr || (has_edges && s.status.edges == nullptr) ||
            (!s.corners.empty() && s.status.face_starts == nullptr))
            throw std::bad_alloc();
    }

    void look_at(const char* function, PointView points) const
    {
        if (points.size() != size())
            throw Error(function, "points", "be " + detail::text_of(size()) + " like the mesh's",
                        "there are " + detail::text_of(points.size()));
    }

    void compute(PointSpan points, int steps)
    {
        DATAstruct record = detail::record_over(points);
        const int result = PreserveCompute(&state_->status, &record, steps);
        state_->status.cur_points = nullptr; // the record ends here
        if (result != 1)
            throw std::bad_alloc();
    }

    /// Whether no step has divided by a force of 0.
    bool is_sound(PointView points) const
    {
        return detail::is_finite(state_->status.energy) && std::ranges::none_of(points.coordinates(), detail::is_nan);
    }

    std::unique_ptr<State> state_;
};

} // namespace korvale
