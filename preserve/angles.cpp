// A corner's cosine depends on its triangle only. So triangles are measured, and their forces computed, in lanes;
// energies and forces are added one after the other, in the documented order.
//
// - The three corners of a triangle share its sides, so there are three square roots and not six. Every arm is a
//   difference of its own: b - a and -(a - b) differ in the sign of a zero, which reaches the cosine.
// - Additions are software-pipelined: those of one group of triangles run while the next groups are measured.
// - Faces of other sizes, and triangles at which something is degenerate, go corner by corner.
// - Where volume and area are yet to be measured, the same walk over the faces (loop fusion) measures them: it has the
//   points loaded, and the sums are independent chains.
#include "preserve/angles.h"

#include "data/internal/kernels.h"
#include "math/internal/vector.h"
#include "preserve/internal/measures.h"

namespace korvale::preserve {
namespace {

/// What the term reads, and where it leaves the cosines.
struct Angles {
    const double* p;
    Faces faces;
    Tags tags;
    double weight;
    const double* reference; // [corners]
    double* measure;         // [corners]
};

Angles angles_in(const PreserveStatus& s, const Mesh& mesh)
{
    return {mesh.p, mesh.faces, mesh.tags, kAngles.weight(s), mesh.cosines.reference, mesh.cosines.current};
}

// Corner by corner.

/// The cosine of the corner at `point`. False, with the cosine 0.0, where a neighbour is at the same place.
bool corner_cosine(const double* p, int32_t point, int32_t previous, int32_t next, double& cosine)
{
    double u[3], w[3];
    subtract(p + 3 * int64_t{next}, p + 3 * int64_t{point}, u);
    subtract(p + 3 * int64_t{previous}, p + 3 * int64_t{point}, w);
    const double lengths = length(u) * length(w);
    if (lengths == 0.0) {
        cosine = 0.0;
        return false;
    }
    cosine = dot(u, w) / lengths;
    return true;
}

/// Measures face f, the first corner of which is corner `first`, and adds the energies of its corners.
[[gnu::noinline]] double add_angles_of(const Angles& t, int32_t f, int32_t first, double energy)
{
    for_each_corner_of(t.faces, f, first, [&](int32_t point, int32_t previous, int32_t next, int32_t corner) {
        double cosine;
        const bool has_angle = corner_cosine(t.p, point, previous, next, cosine);
        t.measure[corner] = cosine;
        if (has_angle && (!t.tags.contain(point) || !t.tags.contain(next) || !t.tags.contain(previous)))
            energy += penalty(t.weight, cosine - t.reference[corner]);
    });
    return energy;
}

/// f += ca * a + cb * b
void add_mixed(double ca, const double* a, double cb, const double* b, double* f)
{
    f[0] += ca * a[0] + cb * b[0];
    f[1] += ca * a[1] + cb * b[1];
    f[2] += ca * a[2] + cb * b[2];
}

/// Adds the forces of one corner on its point and its neighbours: -c times the derivatives of ab / D, the cosine.
void turn_corner(const double* p, int32_t point, int32_t previous, int32_t next, double c, double* force)
{
    double a[3], b[3];
    subtract(p + 3 * int64_t{previous}, p + 3 * int64_t{point}, a);
    subtract(p + 3 * int64_t{next}, p + 3 * int64_t{point}, b);
    const double aa = dot(a, a), bb = dot(b, b), ab = dot(a, b);
    const double lengths = root(aa) * root(bb);
    if (lengths == 0.0)
        return;
    add_mixed((ab - aa) * -c / (aa * lengths), a, (ab - bb) * -c / (bb * lengths), b, force + 3 * int64_t{point});
    add_mixed(-c / lengths, a, c * ab / (bb * lengths), b, force + 3 * int64_t{next});
    add_mixed(c * ab / (aa * lengths), a, -c / lengths, b, force + 3 * int64_t{previous});
}

/// Adds the forces of the corners of face f, the first of which is corner `first`.
[[gnu::noinline]] void turn_face(const Angles& t, int32_t f, int32_t first, double* force)
{
    for_each_corner_of(t.faces, f, first, [&](int32_t point, int32_t previous, int32_t next, int32_t corner) {
        const double cosine = t.measure[corner], reference = t.reference[corner];
        if (cosine != reference)
            turn_corner(t.p, point, previous, next, 2.0 * t.weight * (cosine - reference), force);
    });
}

// One triangle per lane. Corner k of a triangle has arm a to the previous corner and b to the next.

template <class V>
struct Arms {
    Lanes3<V> a, b;
    V aa, bb, lengths; // squares, and the product of the lengths
};

template <class V>
struct Corners {
    Arms<V> c0, c1, c2;

    /// Whether a corner may have a neighbour at its own place.
    KORVALE_OVER_LANES bool may_be_degenerate() const
    {
        const V none = all<V>(0.0);
        return any((c0.lengths == none) | (c1.lengths == none) | (c2.lengths == none));
    }
};

template <class V>
KORVALE_OVER_LANES Corners<V> corners_of(const Triangles<V>& t)
{
    const Lanes3<V> to1 = t.p1 - t.p0, to2 = t.p2 - t.p1, to0 = t.p0 - t.p2;
    const Lanes3<V> from1 = t.p0 - t.p1, from2 = t.p1 - t.p2, from0 = t.p2 - t.p0;
    const V square01 = dot(to1, to1), square12 = dot(to2, to2), square20 = dot(to0, to0);
    const V side01 = root(square01), side12 = root(square12), side20 = root(square20);
    return {{from0, to1, square20, square01, side20 * side01},
            {from1, to2, square01, square12, side01 * side12},
            {from2, to0, square12, square20, side12 * side20}};
}

template <class V>
KORVALE_OVER_LANES V cosine_of(const Arms<V>& arms)
{
    return dot(arms.b, arms.a) / arms.lengths;
}

/// Stores the cosines of corners first ... and writes their energies.
template <class V>
KORVALE_OVER_LANES void measure_corners(const Angles& t, int32_t first, const V& cosines, double* energies)
{
    store(t.measure + first, cosines);
    store(energies, penalty<V>(t.weight, cosines - load<V>(t.reference + first)));
}

/// Measures the triangles that begin with corner `first`. False, with nothing stored, where one may be degenerate: its
/// corner has no energy, which lanes do not tell apart.
template <class V>
KORVALE_OVER_LANES bool measure_triangles(const Angles& t, const Triangles<V>& triangles, int32_t first,
                                          double* energies)
{
    constexpr int n = width_of<V>;
    const Corners<V> c = corners_of(triangles);
    if (c.may_be_degenerate())
        return false;
    const V cosines[3] = {cosine_of(c.c0), cosine_of(c.c1), cosine_of(c.c2)};
    V listed[3];
    list_three(cosines, listed);
    measure_corners(t, first, listed[0], energies);
    measure_corners(t, first + n, listed[1], energies + n);
    measure_corners(t, first + 2 * n, listed[2], energies + 2 * n);
    return true;
}

/// A queue of energies: sums are chains of additions, each waiting for the one before. While the energies of one group
/// of triangles are added, the next kGroups groups are measured, so the processor has independent work.
template <class V>
struct Waiting {
    static constexpr int kGroups = 2, kSlots = kGroups + 1, n = 3 * width_of<V>;
    double energies[kSlots][n];
    int32_t firsts[kSlots];
    int next = 0, count = 0; // the slot to fill, and how many before it wait

    KORVALE_OVER_LANES double* slot() { return energies[next]; }

    /// Adds the energies of the group that has waited longest, of triangles with an untagged corner.
    KORVALE_OVER_LANES double add_one(const Angles& t, double energy)
    {
        const int slot = next >= count ? next - count : next - count + kSlots;
        const double* const e = energies[slot];
        --count;
        if (!t.tags.exist())
            return with_all<n>(energy, e);
        const int32_t* const corners = t.faces.corners + firsts[slot];
        for (int i = 0; i < n; i += 3)
            if (!t.tags.contain(corners[i]) || !t.tags.contain(corners[i + 1]) || !t.tags.contain(corners[i + 2]))
                energy = energy + e[i] + e[i + 1] + e[i + 2];
        return energy;
    }

    /// Queues what the slot has been filled with, for the triangles from corner `first` on.
    KORVALE_OVER_LANES double keep(const Angles& t, int32_t first, double energy)
    {
        firsts[next] = first;
        next = next + 1 == kSlots ? 0 : next + 1;
        ++count;
        return count > kGroups ? add_one(t, energy) : energy;
    }

    KORVALE_OVER_LANES double add_all(const Angles& t, double energy)
    {
        while (count > 0)
            energy = add_one(t, energy);
        return energy;
    }
};

/// Adds the energies of all corners and, with `measuring`, the measures of all faces.
template <class V, bool measuring>
KORVALE_OVER_LANES double add_energies(const Angles& term, double energy, const Ceiling& limit, Measures& measures)
{
    const Angles t = term; // copies: no store can alias them, so they stay in registers
    const Ceiling ceiling = limit;
    Measures sums;
    Waiting<V> waiting;
    int32_t first = 0;
    for (int32_t f = 0; f < t.faces.count && !ceiling.is_reached(energy);) {
        if (are_triangles<width_of<V>>(t.faces, f)) {
            const Triangles<V> triangles = triangles_at<V>(t.p, t.faces.corners + first);
            if (measure_triangles(t, triangles, first, waiting.slot())) {
                if constexpr (measuring)
                    add_triangles(triangles, sums);
                energy = waiting.keep(t, first, energy);
                f += width_of<V>;
                first += 3 * width_of<V>;
                continue;
            }
        }
        energy = add_angles_of(t, f, first, waiting.add_all(t, energy));
        if constexpr (measuring)
            add_measures_of(t.p, t.faces, f, first, sums);
        first = next_start(first, t.faces.sizes[f++]);
    }
    measures = sums;
    return waiting.add_all(t, energy);
}

/// The forces of the corners of triangles on their points. Each point gets three contributions, one from each corner.
template <class V>
struct Turns {
    Separate3<V> at[3][3]; // [point][contribution]
};

/// The forces of a corner on its point, the next and the previous one.
template <class V>
struct Turn {
    Lanes3<V> point, next, previous;
};

template <class V>
KORVALE_OVER_LANES Turn<V> turn_of(const Arms<V>& arms, const V& c)
{
    const V ab = dot(arms.a, arms.b), cab = c * ab, by_aa = arms.aa * arms.lengths, by_bb = arms.bb * arms.lengths;
    const V across = -c / arms.lengths, along_a = cab / by_aa, along_b = cab / by_bb;
    return {(ab - arms.aa) * -c / by_aa * arms.a + (ab - arms.bb) * -c / by_bb * arms.b,
            across * arms.a + along_b * arms.b, along_a * arms.a + across * arms.b};
}

/// The forces of corner k are contribution k to each of the three points.
template <class V, int k>
KORVALE_OVER_LANES void turn_corners(const Arms<V>& arms, const V& c, Turns<V>& turns)
{
    const Turn<V> turn = turn_of(arms, c);
    separate(turn.point, turns.at[k][k]);
    separate(turn.next, turns.at[(k + 1) % 3][k]);
    separate(turn.previous, turns.at[(k + 2) % 3][k]);
}

/// Twice the weight times the deviations of corners first ...; sets bits of `same` where a deviation is 0.
template <class V>
KORVALE_OVER_LANES V deviations(const Angles& t, int32_t first, int& same)
{
    const V cosines = load<V>(t.measure + first), references = load<V>(t.reference + first);
    same |= bits(cosines == references);
    return all<V>(2.0 * t.weight) * (cosines - references);
}

/// Adds the three contributions of a triangle to one of its points.
template <class V>
KORVALE_OVER_LANES void add_to_point(const Separate3<V> (&at)[3], int lane, double* f)
{
    store(f, load<Pair>(f) + load<Pair>(at[0].xy_of(lane)) + load<Pair>(at[1].xy_of(lane)) +
                 load<Pair>(at[2].xy_of(lane)));
    f[2] = f[2] + at[0].z[lane] + at[1].z[lane] + at[2].z[lane];
}

/// Adds the forces of the triangles from `lane` to `last`, point by point. That is the documented order, corner by
/// corner, where the points of a triangle differ. Two may be the same where a coordinate is not finite, but then all
/// forces are NaN; other triangles of this kind have a side of length 0 and never come here.
template <int lane, int last, class V>
KORVALE_OVER_LANES void add_turns(const Turns<V>& turns, const int32_t* corners, double* force)
{
    add_to_point(turns.at[0], lane, force + 3 * int64_t{corners[3 * lane]});
    add_to_point(turns.at[1], lane, force + 3 * int64_t{corners[3 * lane + 1]});
    add_to_point(turns.at[2], lane, force + 3 * int64_t{corners[3 * lane + 2]});
    if constexpr (lane < last)
        add_turns<lane + 1, last>(turns, corners, force);
}

/// Software pipelining of the forces: while the divisions of one group of triangles run, the forces of the group before
/// are added. Two buffers take turns.
template <class V>
struct WaitingTurns {
    Turns<V> turns[2];
    const int32_t* corners = nullptr; // of those that wait, or none
    int filled = 0;                   // which of the two they are in

    template <int first, int last>
    KORVALE_OVER_LANES void add(double* force) const
    {
        if (corners != nullptr)
            add_turns<first, last>(turns[filled], corners, force);
    }

    KORVALE_OVER_LANES void add_all(double* force)
    {
        add<0, width_of<V> - 1>(force);
        corners = nullptr;
    }
};

/// Computes the forces of the triangles that begin with corner `first`, adds those that wait, and lets these wait.
/// False, with nothing done, where a corner may have no force: it has its reference cosine, or a neighbour at its own
/// place.
template <class V>
KORVALE_OVER_LANES bool add_triangle_turns(const Angles& t, int32_t first, WaitingTurns<V>& waiting, double* force)
{
    constexpr int n = width_of<V>;
    int same = 0;
    const V listed[3] = {deviations<V>(t, first, same), deviations<V>(t, first + n, same),
                         deviations<V>(t, first + 2 * n, same)};
    if (same != 0)
        return false;
    const Corners<V> corners = corners_of(triangles_at<V>(t.p, t.faces.corners + first));
    if (corners.may_be_degenerate())
        return false;
    V c[3];
    part_three(listed, c);
    Turns<V>& turns = waiting.turns[1 - waiting.filled];
    turn_corners<V, 0>(corners.c0, c[0], turns);
    waiting.template add<0, n / 2 - 1>(force);
    turn_corners<V, 1>(corners.c1, c[1], turns);
    waiting.template add<n / 2, n - 1>(force);
    turn_corners<V, 2>(corners.c2, c[2], turns);
    waiting.filled = 1 - waiting.filled;
    waiting.corners = t.faces.corners + first;
    return true;
}

template <class V>
KORVALE_OVER_LANES void add_forces(const Angles& term, double* force)
{
    constexpr int n = width_of<V>;
    const Angles t = term; // a copy: no store can alias it
    WaitingTurns<V> waiting;
    for (int32_t f = 0, first = 0; f < t.faces.count;) {
        if (are_triangles<n>(t.faces, f) && add_triangle_turns(t, first, waiting, force)) {
            f += n;
            first += 3 * n;
        } else {
            waiting.add_all(force);
            turn_face(t, f, first, force);
            first = next_start(first, t.faces.sizes[f++]);
        }
    }
    waiting.add_all(force);
}

template <bool measuring>
double add_all_energies(const Angles& term, double energy, const Ceiling& ceiling, Measures& measures)
{
    return over_lanes([&]<class V>() { return add_energies<V, measuring>(term, energy, ceiling, measures); });
}

bool measure_reference(PreserveStatus& s, const Mesh& mesh)
{
    const Faces& faces = mesh.faces;
    if (!mesh.has_faces || !mesh.has_positions || !make_room(s.ofang, faces.corner_count) ||
        !make_room(s.nfang, faces.corner_count))
        return false;
    double* const cosines = s.ofang->dvals;
    for_each_face(faces, [&](const int32_t*, int32_t, int32_t first, int32_t f) {
        for_each_corner_of(faces, f, first, [&](int32_t point, int32_t previous, int32_t next, int32_t corner) {
            corner_cosine(mesh.p, point, previous, next, cosines[corner]);
        });
    });
    return true;
}

/// Of a list longer than its faces the end was never measured.
bool has_finite_references(const PreserveStatus&, const Mesh& mesh)
{
    bool are_sound = true;
    if (mesh.cosines.reference != nullptr)
        for_each_face(mesh.faces, [&](const int32_t*, int32_t n, int32_t first, int32_t) {
            are_sound = are_sound && are_finite(mesh.cosines.reference + first, n);
        });
    return are_sound;
}

double add_energy(PreserveStatus& s, const Mesh& mesh, double energy, Ceiling& ceiling)
{
    if (!mesh.cosines.exists() || !mesh.has_positions)
        return energy;
    const Angles term = angles_in(s, mesh);
    Measures measures;
    if (ceiling.is_known || (ceiling.terms & (PRESERVE_VOLUME | PRESERVE_AREA)) == 0)
        return add_all_energies<false>(term, energy, ceiling, measures);
    energy = add_all_energies<true>(term, energy, ceiling, measures);
    note_measures(s, measures, ceiling);
    return energy;
}

void add_force(const PreserveStatus& s, const Mesh& mesh)
{
    if (!mesh.cosines.exists())
        return;
    const Angles term = angles_in(s, mesh);
    over_lanes([&]<class V>() { add_forces<V>(term, mesh.force); });
}

} // namespace

const Term kAngles = {PRESERVE_FACE_ANGLE, 1, measure_reference, has_finite_references, add_energy, add_force};

} // namespace korvale::preserve

using namespace korvale::preserve;

int PreserveInitOfang(PreserveStatus* status)
{
    return take_reference(status, kAngles);
}

int PreserveFindNfang(PreserveStatus* status)
{
    return find_energy_of(status, kAngles);
}

int PreserveFindFaceAngleForce(PreserveStatus* status)
{
    return find_force_of(status, kAngles);
}
