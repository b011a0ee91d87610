// Both measures are sums over the faces, added in the order of the faces in one walk; triangles are measured in lanes.
// The force on a corner depends on its face only: triangles go in lanes, other faces corner by corner, and every point
// adds its forces in the order of the corners.
#include "preserve/volume_area.h"

#include <cmath>

#include "math/internal/vector.h"
#include "preserve/internal/measures.h"

namespace korvale::preserve {
namespace {

/// A volume or an area this close to its reference is left alone.
constexpr double kSmallestDeviation = 1e-06;

// Face by face.

/// Six times the volume of the fan from the origin to a face.
double fan_volume(const double* p, const int32_t* corners, int32_t n)
{
    double sum[3] = {0.0, 0.0, 0.0}, product[3];
    for (int32_t k = 1; k + 1 < n; ++k) {
        cross(p + 3 * int64_t{corners[k]}, p + 3 * int64_t{corners[k + 1]}, product);
        add(sum, product, sum);
    }
    return dot(p + 3 * int64_t{corners[0]}, sum);
}

/// The sum over the corners of a face of each point x the next: twice its area, along its normal.
void area_vector(const double* p, const int32_t* corners, int32_t n, double* out)
{
    double product[3];
    out[0] = out[1] = out[2] = 0.0;
    for (int32_t k = 0; k < n; ++k) {
        cross(p + 3 * int64_t{corners[k]}, p + 3 * int64_t{corners[k + 1 == n ? 0 : k + 1]}, product);
        add(out, product, out);
    }
}

/// f += scale * v
void add_scaled(double scale, const double* v, double* f)
{
    f[0] += scale * v[0];
    f[1] += scale * v[1];
    f[2] += scale * v[2];
}

/// The pressure of the volume: along the product of the two neighbours' points.
struct Pressure {
    double factor; // twice weight times deviation

    /// Adds the forces of one face.
    [[gnu::noinline]] void add_forces_of(const double* p, const Faces& faces, int32_t f, int32_t first,
                                         double* force) const
    {
        for_each_corner_of(faces, f, first, [=, this](int32_t point, int32_t previous, int32_t next, int32_t) {
            double product[3]; // Deliberate: the rule for triangles, whatever the face
            cross(p + 3 * int64_t{previous}, p + 3 * int64_t{next}, product);
            add_scaled(factor, product, force + 3 * int64_t{point});
        });
    }

    /// The forces on the corners of triangles, one triangle per lane.
    template <class V>
    KORVALE_OVER_LANES void find(const Triangles<V>& t, Lanes3<V> (&forces)[3]) const
    {
        const V k = all<V>(factor);
        forces[0] = k * cross(t.p2, t.p1);
        forces[1] = k * cross(t.p0, t.p2);
        forces[2] = k * cross(t.p1, t.p0);
    }
};

/// The tension of the area: across the side between the neighbours, in the plane of the face.
struct Tension {
    double factor; // twice weight times deviation

    [[gnu::noinline]] void add_forces_of(const double* p, const Faces& faces, int32_t f, int32_t first,
                                         double* force) const
    {
        if (faces.sizes[f] < 1)
            return;
        double normal[3];
        area_vector(p, faces.corners + first, faces.sizes[f], normal);
        make_unit(normal); // Deliberate: too short a vector is used as it is
        for_each_corner_of(faces, f, first, [&](int32_t point, int32_t previous, int32_t next, int32_t) {
            double across[3], pull[3];
            subtract(p + 3 * int64_t{previous}, p + 3 * int64_t{next}, across);
            cross(across, normal, pull);
            add_scaled(factor, pull, force + 3 * int64_t{point});
        });
    }

    template <class V>
    KORVALE_OVER_LANES void find(const Triangles<V>& t, Lanes3<V> (&forces)[3]) const
    {
        const V k = all<V>(factor), zero = all<V>(0.0);
        const Lanes3<V> none = {zero, zero, zero}; // summed from +0, as documented: -0 + 0 is +0
        const Lanes3<V> normal = none + cross(t.p0, t.p1) + cross(t.p1, t.p2) + cross(t.p2, t.p0);
        const V size = root(dot(normal, normal));
        const auto is_short = size < all<V>(kShortestVector);
        const Lanes3<V> unit = {select(is_short, normal.x, normal.x / size),
                                select(is_short, normal.y, normal.y / size),
                                select(is_short, normal.z, normal.z / size)};
        forces[0] = k * cross(t.p2 - t.p1, unit);
        forces[1] = k * cross(t.p0 - t.p2, unit);
        forces[2] = k * cross(t.p1 - t.p0, unit);
    }
};

// One triangle per lane.

template <class V>
KORVALE_OVER_LANES Measures measure_faces_over(const double* p, const Faces& all_faces)
{
    const Faces faces = all_faces; // a copy: no store can alias it
    Measures sums;
    for (int32_t f = 0, first = 0; f < faces.count;) {
        if (are_triangles<width_of<V>>(faces, f)) {
            add_triangles(triangles_at<V>(p, faces.corners + first), sums);
            f += width_of<V>;
            first += 3 * width_of<V>;
        } else {
            add_measures_of(p, faces, f, first, sums);
            first = next_start(first, faces.sizes[f++]);
        }
    }
    return sums;
}

template <class V>
KORVALE_OVER_LANES void add_to_point(const Separate3<V>& at, int lane, double* f)
{
    store(f, load<Pair>(f) + load<Pair>(at.xy_of(lane)));
    f[2] += at.z[lane];
}

/// Adds the forces on the corners of the triangles from `lane` on, corner by corner.
template <int lane, class V>
KORVALE_OVER_LANES void add_to_corners(const Separate3<V> (&at)[3], const int32_t* corners, double* force)
{
    add_to_point(at[0], lane, force + 3 * int64_t{corners[3 * lane]});
    add_to_point(at[1], lane, force + 3 * int64_t{corners[3 * lane + 1]});
    add_to_point(at[2], lane, force + 3 * int64_t{corners[3 * lane + 2]});
    if constexpr (lane + 1 < width_of<V>)
        add_to_corners<lane + 1>(at, corners, force);
}

/// Adds the forces of a rule on every corner of every face.
template <class V, class Rule>
KORVALE_OVER_LANES void add_forces(const double* p, const Faces& all_faces, const Rule& given, double* force)
{
    constexpr int n = width_of<V>;
    const Faces faces = all_faces; // copies: no store can alias them
    const Rule rule = given;
    for (int32_t f = 0, first = 0; f < faces.count;) {
        const int32_t* const corner = faces.corners + first;
        if (!are_triangles<n>(faces, f)) {
            rule.add_forces_of(p, faces, f, first, force);
            first = next_start(first, faces.sizes[f++]);
            continue;
        }
        Lanes3<V> forces[3];
        rule.template find<V>(triangles_at<V>(p, corner), forces);
        Separate3<V> at[3];
        separate(forces[0], at[0]);
        separate(forces[1], at[1]);
        separate(forces[2], at[2]);
        add_to_corners<0>(at, corner, force);
        f += n;
        first += 3 * n;
    }
}

/// The two sums over all faces.
Measures measure_faces(const double* p, const Faces& faces)
{
    return over_lanes([&]<class V>() { return measure_faces_over<V>(p, faces); });
}

/// Adds the forces of a measure that is off by `deviation`.
template <class Rule>
void add_rule(const Mesh& mesh, double deviation, double weight)
{
    if (absolute(deviation) < kSmallestDeviation)
        return;
    const Rule rule = {2.0 * weight * deviation};
    over_lanes([&]<class V>() { add_forces<V>(mesh.p, mesh.faces, rule, mesh.force); });
}

bool can_be_measured(const Mesh& mesh)
{
    return mesh.has_faces && mesh.has_positions;
}

// The two terms.

bool measure_reference_volume(PreserveStatus& s, const Mesh& mesh)
{
    if (!can_be_measured(mesh))
        return false;
    s.ovolume = measure_faces(mesh.p, mesh.faces).volume;
    return true;
}

bool measure_reference_area(PreserveStatus& s, const Mesh& mesh)
{
    if (!can_be_measured(mesh))
        return false;
    s.oarea = measure_faces(mesh.p, mesh.faces).area;
    return true;
}

bool has_finite_volume(const PreserveStatus& s, const Mesh&)
{
    return std::isfinite(s.ovolume);
}

bool has_finite_area(const PreserveStatus& s, const Mesh&)
{
    return std::isfinite(s.oarea);
}

double add_volume_energy(PreserveStatus& s, const Mesh& mesh, double energy, Ceiling& ceiling)
{
    if (!ceiling.is_known)
        measure_volume_and_area(s, mesh, ceiling);
    return ceiling.is_known ? energy + ceiling.volume : energy;
}

double add_area_energy(PreserveStatus& s, const Mesh& mesh, double energy, Ceiling& ceiling)
{
    if (!ceiling.is_known)
        measure_volume_and_area(s, mesh, ceiling);
    return ceiling.is_known ? energy + ceiling.area : energy;
}

void add_volume_force(const PreserveStatus& s, const Mesh& mesh)
{
    add_rule<Pressure>(mesh, s.nvolume - s.ovolume, kVolume.weight(s));
}

void add_area_force(const PreserveStatus& s, const Mesh& mesh)
{
    add_rule<Tension>(mesh, s.narea - s.oarea, kArea.weight(s));
}

} // namespace

const Term kVolume = {PRESERVE_VOLUME, 2, measure_reference_volume, has_finite_volume, add_volume_energy,
                      add_volume_force};
const Term kArea = {PRESERVE_AREA, 3, measure_reference_area, has_finite_area, add_area_energy, add_area_force};

[[gnu::noinline]] void add_measures_of(const double* p, const Faces& faces, int32_t f, int32_t first, Measures& sums)
{
    const int32_t n = faces.sizes[f];
    if (n < 1)
        return;
    double normal[3];
    if (n >= 3)
        sums.volume += fan_volume(p, faces.corners + first, n);
    area_vector(p, faces.corners + first, n, normal);
    sums.area += length(normal);
}

void note_measures(PreserveStatus& s, const Measures& measures, Ceiling& ceiling)
{
    if ((ceiling.terms & PRESERVE_VOLUME) != 0) {
        s.nvolume = measures.volume;
        ceiling.volume = penalty(kVolume.weight(s), s.nvolume - s.ovolume);
    }
    if ((ceiling.terms & PRESERVE_AREA) != 0) {
        s.narea = measures.area;
        ceiling.area = penalty(kArea.weight(s), s.narea - s.oarea);
    }
    ceiling.is_known = true;
}

void measure_volume_and_area(PreserveStatus& s, const Mesh& mesh, Ceiling& ceiling)
{
    if ((ceiling.terms & (PRESERVE_VOLUME | PRESERVE_AREA)) == 0 || (mesh.faces.count > 0 && !mesh.has_positions))
        return;
    note_measures(s, mesh.faces.count > 0 ? measure_faces(mesh.p, mesh.faces) : Measures{}, ceiling);
}

} // namespace korvale::preserve

using namespace korvale::preserve;

int PreserveInitOvolume(PreserveStatus* status)
{
    return take_reference(status, kVolume);
}

int PreserveInitOarea(PreserveStatus* status)
{
    return take_reference(status, kArea);
}

int PreserveFindNvolume(PreserveStatus* status)
{
    return find_energy_of(status, kVolume);
}

int PreserveFindNarea(PreserveStatus* status)
{
    return find_energy_of(status, kArea);
}

int PreserveFindVolumeForce(PreserveStatus* status)
{
    return find_force_of(status, kVolume);
}

int PreserveFindSurfaceAreaForce(PreserveStatus* status)
{
    return find_force_of(status, kArea);
}
