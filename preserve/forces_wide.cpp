#include "preserve/internal/forces_wide.h"

#include "math/internal/vec.h"

#ifdef KORVALE_HAS_WIDE_LANES

namespace korvale::inside {
namespace {

/// Contributions to the forces on the points of four triangles, [corner][component][triangle].
struct Pulls {
    double at[3][3][4];
};

KORVALE_AVX2_INLINE void set(Pulls& pulls, int corner, const Quad3& v)
{
    put(pulls.at[corner][0], v.x);
    put(pulls.at[corner][1], v.y);
    put(pulls.at[corner][2], v.z);
}

/// Adds them triangle by triangle.
KORVALE_AVX2_INLINE void add_pulls(const Pulls& pulls, const int32_t* corners, double* force)
{
    for (int t = 0; t < 4; ++t)
        for (int k = 0; k < 3; ++k) {
            double* const f = force + 3 * int64_t{corners[3 * t + k]};
            const double x = f[0] + pulls.at[k][0][t];
            const double y = f[1] + pulls.at[k][1][t];
            const double z = f[2] + pulls.at[k][2][t];
            f[0] = x;
            f[1] = y;
            f[2] = z;
        }
}

/// What the corners of four triangles do to their points: the first, second and third contribution to each.
struct Turns {
    Pulls first, second, third;
};

/// A corner of four triangles: its arms to the previous and the next corner, and what follows from them.
struct Arms {
    Quad3 a, b;
    Quad aa, bb, lengths;
};

/// The forces of a corner on its point, the next and the previous one.
struct Turn {
    Quad3 point, next, previous;
};

KORVALE_AVX2_INLINE Turn turn_of(const Arms& arms, Quad c)
{
    const Quad ab = dot(arms.a, arms.b), cab = c * ab, by_aa = arms.aa * arms.lengths, by_bb = arms.bb * arms.lengths;
    const Quad across = -c / arms.lengths, along_a = cab / by_aa, along_b = cab / by_bb;
    return {(ab - arms.aa) * -c / by_aa * arms.a + (ab - arms.bb) * -c / by_bb * arms.b,
            across * arms.a + along_b * arms.b, along_a * arms.a + across * arms.b};
}

/// Computes the contributions of the corners of four triangles. False where a corner may have none: it has its
/// reference cosine, or a neighbour at its own place.
KORVALE_AVX2_INLINE bool turn_four(const AngleTerm& term, int32_t first, Turns& turns)
{
    const int32_t* const corners = term.faces.corners + first;
    Quad listed[3], c[3];
    int same = 0;
    for (int i = 0; i < 3; ++i) {
        const Quad cosine = quad_at(term.measure + first + 4 * i), reference = quad_at(term.reference + first + 4 * i);
        same |= lanes_equal(cosine, reference);
        listed[i] = all(2.0 * term.weight) * (cosine - reference);
    }
    if (same != 0)
        return false;
    part_corners(listed, c);

    const double* const p = term.p;
    const Quad3 p0 = points_at(p, corners, 3), p1 = points_at(p, corners + 1, 3), p2 = points_at(p, corners + 2, 3);
    const Quad3 to1 = p1 - p0, to2 = p2 - p1, to0 = p0 - p2;
    const Quad3 from1 = p0 - p1, from2 = p1 - p2, from0 = p2 - p0;
    const Quad square01 = dot(to1, to1), square12 = dot(to2, to2), square20 = dot(to0, to0);
    const Quad side01 = root(square01), side12 = root(square12), side20 = root(square20);
    const Arms arms0 = {from0, to1, square20, square01, side20 * side01};
    const Arms arms1 = {from1, to2, square01, square12, side01 * side12};
    const Arms arms2 = {from2, to0, square12, square20, side12 * side20};
    if ((lanes_equal(arms0.lengths, all(0.0)) | lanes_equal(arms1.lengths, all(0.0)) |
         lanes_equal(arms2.lengths, all(0.0))) != 0)
        return false;

    const Turn turn0 = turn_of(arms0, c[0]), turn1 = turn_of(arms1, c[1]), turn2 = turn_of(arms2, c[2]);
    set(turns.first, 0, turn0.point);
    set(turns.first, 1, turn0.next);
    set(turns.first, 2, turn0.previous);
    set(turns.second, 0, turn1.previous);
    set(turns.second, 1, turn1.point);
    set(turns.second, 2, turn1.next);
    set(turns.third, 0, turn2.next);
    set(turns.third, 1, turn2.previous);
    set(turns.third, 2, turn2.point);
    return true;
}

/// Adds the contributions of triangle t to its three different points.
KORVALE_AVX2_INLINE void add_turns(const Turns& turns, int t, const int32_t* corners, double* force)
{
    for (int k = 0; k < 3; ++k) {
        double* const f = force + 3 * int64_t{corners[k]};
        const double x = f[0] + turns.first.at[k][0][t] + turns.second.at[k][0][t] + turns.third.at[k][0][t];
        const double y = f[1] + turns.first.at[k][1][t] + turns.second.at[k][1][t] + turns.third.at[k][1][t];
        const double z = f[2] + turns.first.at[k][2][t] + turns.second.at[k][2][t] + turns.third.at[k][2][t];
        f[0] = x;
        f[1] = y;
        f[2] = z;
    }
}

KORVALE_AVX2_INLINE bool has_repeated_point(const int32_t* corners)
{
    return corners[0] == corners[1] || corners[1] == corners[2] || corners[2] == corners[0];
}

} // namespace

KORVALE_AVX2 void pull_edges_wide(const LengthTerm& length_term, double* force)
{
    const LengthTerm term = length_term; // a copy that no store can change
    int32_t e = 0;
    for (; e <= term.edges.count - 4; e += 4) {
        const Quad lengths = quad_at(term.measure + e), reference = quad_at(term.reference + e);
        const int still = lanes_equal(lengths, reference) | lanes_less(lengths, all(kShortestEdge));
        if (still == 0b1111)
            continue;
        double stretches[4];
        put(stretches, (lengths - reference) * all(2.0 * term.weight) / lengths);
        for (int l = 0; l < 4; ++l)
            if ((still >> l & 1) == 0)
                pull_ends(term.p, term.edges.ends + 2 * (int64_t{e} + l), stretches[l], force);
    }
    for (; e < term.edges.count; ++e)
        pull_edge(term, e, force);
}

KORVALE_AVX2 void turn_faces_wide(const AngleTerm& angle_term, double* force)
{
    const AngleTerm term = angle_term; // a copy that no store can change
    const Faces faces = term.faces;
    for (int32_t f = 0, first = 0; f < faces.count;) {
        Turns turns;
        if (!are_four_triangles(faces.sizes, faces.count, f) || !turn_four(term, first, turns)) {
            turn_face(term, f, first, force);
            first = next_start(first, faces.sizes[f++]);
            continue;
        }
        for (int t = 0; t < 4; ++t, ++f, first += 3) {
            if (has_repeated_point(faces.corners + first))
                turn_face(term, f, first, force);
            else
                add_turns(turns, t, faces.corners + first, force);
        }
    }
}

KORVALE_AVX2 void press_faces_wide(const double* p, const Faces& all_faces, double pressure, double* force)
{
    const Faces faces = all_faces; // a copy that no store can change
    const Quad factor = all(pressure);
    for (int32_t f = 0, first = 0; f < faces.count;) {
        const int32_t* const corners = faces.corners + first;
        if (!are_four_triangles(faces.sizes, faces.count, f)) {
            press_face(p, corners, faces.sizes[f], pressure, force);
            first = next_start(first, faces.sizes[f++]);
            continue;
        }
        const Quad3 p0 = points_at(p, corners, 3), p1 = points_at(p, corners + 1, 3), p2 = points_at(p, corners + 2, 3);
        Pulls pulls;
        set(pulls, 0, factor * cross(p2, p1));
        set(pulls, 1, factor * cross(p0, p2));
        set(pulls, 2, factor * cross(p1, p0));
        add_pulls(pulls, corners, force);
        f += 4;
        first += 12;
    }
}

KORVALE_AVX2 void tighten_faces_wide(const double* p, const Faces& all_faces, double tension, double* force)
{
    const Faces faces = all_faces; // a copy that no store can change
    const Quad factor = all(tension);
    for (int32_t f = 0, first = 0; f < faces.count;) {
        const int32_t* const corners = faces.corners + first;
        if (!are_four_triangles(faces.sizes, faces.count, f)) {
            tighten_face(p, corners, faces.sizes[f], tension, force);
            first = next_start(first, faces.sizes[f++]);
            continue;
        }
        const Quad3 p0 = points_at(p, corners, 3), p1 = points_at(p, corners + 1, 3), p2 = points_at(p, corners + 2, 3);
        const Quad3 zero = {all(0.0), all(0.0), all(0.0)}; // turns a zero of the first product positive
        const Quad3 normal = zero + cross(p0, p1) + cross(p1, p2) + cross(p2, p0);
        const Quad size = root(dot(normal, normal)), shortest = all(kShortestVector);
        const Quad3 unit = {where_less(size, shortest, normal.x, normal.x / size),
                            where_less(size, shortest, normal.y, normal.y / size),
                            where_less(size, shortest, normal.z, normal.z / size)};
        Pulls pulls;
        set(pulls, 0, factor * cross(p2 - p1, unit));
        set(pulls, 1, factor * cross(p0 - p2, unit));
        set(pulls, 2, factor * cross(p1 - p0, unit));
        add_pulls(pulls, corners, force);
        f += 4;
        first += 12;
    }
}

} // namespace korvale::inside

#endif
