// The length of an edge depends on its two points only, so edges are measured in lanes; their energies are added one
// after the other. An edge pulls both its points when its turn comes. Edges come in ascending order, which is the order
// of each point's run in `point_edges`. So every point sums its edges in the documented order, as if it walked along
// that run.
#include "preserve/lengths.h"

#include "data/internal/kernels.h"
#include "platform/internal/lanes3.h"
#include "preserve/internal/terms.h"

namespace korvale::preserve {
namespace {

/// An edge shorter than this has no direction to pull in.
constexpr double kShortestPull = 1e-06;

/// What the term reads, and where it leaves the lengths.
struct Lengths {
    const double* p;
    EdgeList edges;
    Tags tags;
    double weight;
    const double* reference; // [edges]
    double* measure;         // [edges]

    const int32_t* ends(int32_t e) const { return edges.ends + 2 * int64_t{e}; }
};

Lengths lengths_in(const PreserveStatus& s, const Mesh& mesh)
{
    return {mesh.p, mesh.edges, mesh.tags, kLengths.weight(s), mesh.lengths.reference, mesh.lengths.current};
}

/// The lengths of edges, one per lane.
template <class V>
KORVALE_OVER_LANES V lengths_of(const double* p, const int32_t* ends)
{
    const Lanes3<V> along = points_at<V>(p, ends, 2) - points_at<V>(p, ends + 1, 2);
    return root(dot(along, along));
}

template <class V>
KORVALE_OVER_LANES void measure_edges(const double* p, const EdgeList& edges, double* measure)
{
    constexpr int n = width_of<V>;
    int32_t e = 0;
    for (; e <= edges.count - n; e += n)
        store(measure + e, lengths_of<V>(p, edges.ends + 2 * int64_t{e}));
    for (; e < edges.count; ++e)
        measure[e] = lengths_of<double>(p, edges.ends + 2 * int64_t{e});
}

/// Measures the edges from e on, one per lane, and adds the energies of those with a free end.
template <class V>
KORVALE_OVER_LANES double add_edges(const Lengths& t, int32_t e, double energy)
{
    constexpr int n = width_of<V>;
    const V lengths = lengths_of<V>(t.p, t.ends(e));
    store(t.measure + e, lengths);
    double energies[n];
    store(energies, penalty<V>(t.weight, lengths - load<V>(t.reference + e)));
    if (!t.tags.exist())
        return with_all<n>(energy, energies);
    for (int l = 0; l < n; ++l)
        if (!t.tags.contain(t.ends(e)[2 * l]) || !t.tags.contain(t.ends(e)[2 * l + 1]))
            energy += energies[l];
    return energy;
}

template <class V>
KORVALE_OVER_LANES double add_energies(const Lengths& term, double energy, const Ceiling& limit)
{
    const Lengths t = term; // copies: no store can alias them, so they stay in registers
    const Ceiling ceiling = limit;
    int32_t e = 0;
    for (; e <= t.edges.count - width_of<V> && !ceiling.is_reached(energy); e += width_of<V>)
        energy = add_edges<V>(t, e, energy);
    for (; e < t.edges.count && !ceiling.is_reached(energy); ++e)
        energy = add_edges<double>(t, e, energy);
    return energy;
}

/// Adds the forces of an edge on its two points: `stretch` times the vector from the other point, a pull for a positive
/// stretch and a push for a negative one. Both vectors are subtracted, since a negated one would have zeros of the
/// other sign.
inline void pull_ends(const double* p, const int32_t* ends, double stretch, double* force)
{
    const double *const a = p + 3 * int64_t{ends[0]}, *const b = p + 3 * int64_t{ends[1]};
    double *const fa = force + 3 * int64_t{ends[0]}, *const fb = force + 3 * int64_t{ends[1]};
    const Pair along = stretch * (load<Pair>(a) - load<Pair>(b)), back = stretch * (load<Pair>(b) - load<Pair>(a));
    const double along_z = stretch * (a[2] - b[2]), back_z = stretch * (b[2] - a[2]);
    store(fa, load<Pair>(fa) - along);
    fa[2] -= along_z;
    store(fb, load<Pair>(fb) - back);
    fb[2] -= back_z;
}

/// Adds the forces of the edges from e on, one per lane.
template <class V>
KORVALE_OVER_LANES void pull_edges(const Lengths& t, int32_t e, double* force)
{
    constexpr int n = width_of<V>;
    const V lengths = load<V>(t.measure + e), reference = load<V>(t.reference + e);
    const int still = bits(lengths == reference) | bits(lengths < all<V>(kShortestPull));
    double stretches[n];
    store(stretches, (lengths - reference) * all<V>(2.0 * t.weight) / lengths);
    for (int l = 0; l < n; ++l)
        if ((still >> l & 1) == 0)
            pull_ends(t.p, t.ends(e) + 2 * l, stretches[l], force);
}

template <class V>
KORVALE_OVER_LANES void add_forces(const Lengths& term, double* force)
{
    const Lengths t = term; // a copy: no store can alias it
    int32_t e = 0;
    for (; e <= t.edges.count - width_of<V>; e += width_of<V>)
        pull_edges<V>(t, e, force);
    for (; e < t.edges.count; ++e)
        pull_edges<double>(t, e, force);
}

bool measure_reference(PreserveStatus& s, const Mesh& mesh)
{
    if (!mesh.has_edges || !mesh.has_positions || !make_room(s.olen, mesh.edges.count) ||
        !make_room(s.nlen, mesh.edges.count))
        return false;
    double* const lengths = s.olen->dvals;
    over_lanes([&]<class V>() { measure_edges<V>(mesh.p, mesh.edges, lengths); });
    return true;
}

bool has_finite_references(const PreserveStatus&, const Mesh& mesh)
{
    return mesh.lengths.reference == nullptr || are_finite(mesh.lengths.reference, mesh.edges.count);
}

double add_energy(PreserveStatus& s, const Mesh& mesh, double energy, Ceiling& ceiling)
{
    if (!mesh.lengths.exists() || !mesh.has_positions)
        return energy;
    const Lengths term = lengths_in(s, mesh);
    return over_lanes([&]<class V>() { return add_energies<V>(term, energy, ceiling); });
}

void add_force(const PreserveStatus& s, const Mesh& mesh)
{
    if (!mesh.lengths.exists())
        return;
    const Lengths term = lengths_in(s, mesh);
    over_lanes([&]<class V>() { add_forces<V>(term, mesh.force); });
}

} // namespace

const Term kLengths = {PRESERVE_LENGTH, 0, measure_reference, has_finite_references, add_energy, add_force};

} // namespace korvale::preserve

using namespace korvale::preserve;

int PreserveInitOlen(PreserveStatus* status)
{
    return take_reference(status, kLengths);
}

int PreserveFindNlen(PreserveStatus* status)
{
    return find_energy_of(status, kLengths);
}

int PreserveFindEdgeLengthForce(PreserveStatus* status)
{
    return find_force_of(status, kLengths);
}
