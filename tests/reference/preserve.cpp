#include "tests/reference/preserve.h"

#include <algorithm>
#include <cmath>

namespace korvale::reference {
namespace {

struct Vector {
    double x, y, z;
};

Vector operator-(Vector a, Vector b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Vector operator+(Vector a, Vector b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

Vector operator*(double f, Vector a)
{
    return {f * a.x, f * a.y, f * a.z};
}

double dot(Vector a, Vector b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vector cross(Vector a, Vector b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double norm(Vector a)
{
    return std::sqrt(dot(a, a));
}

/// A corner of a face: its point, its neighbours' points, and its place in the face point list.
struct Corner {
    int point, previous, next, place;
};

/// A face: its n corners, and where they start in the face point list.
struct Face {
    const int* points;
    int n, first;

    Corner corner(int k) const { return {points[k], points[(k + n - 1) % n], points[(k + 1) % n], first + k}; }
};

/// Where the next face starts, in 32 bits.
int next_start(int first, int n)
{
    return static_cast<int>(static_cast<unsigned>(first) + static_cast<unsigned>(n));
}

/// Calls visit(face) for every face.
template <class Visit>
void for_each_face(const PreserveStatus& s, Visit visit)
{
    int first = 0;
    for (int f = 0; s.face_points != nullptr && f < s.face_sizes->count; ++f) {
        const int n = s.face_sizes->ivals[f];
        visit(Face{s.face_points->ivals + first, n, first});
        first = next_start(first, n);
    }
}

/// Calls visit(corner) for every corner of every face.
template <class Visit>
void for_each_corner(const PreserveStatus& s, Visit visit)
{
    for_each_face(s, [&](const Face& face) {
        for (int k = 0; k < face.n; ++k)
            visit(face.corner(k));
    });
}

Vector point(const DATAstruct& points, int i)
{
    return {points.dvals[3 * i], points.dvals[3 * i + 1], points.dvals[3 * i + 2]};
}

void add_force(PreserveStatus& s, int i, Vector f)
{
    s.force->dvals[3 * i] += f.x;
    s.force->dvals[3 * i + 1] += f.y;
    s.force->dvals[3 * i + 2] += f.z;
}

bool is_tagged(const PreserveStatus& s, int i)
{
    return s.tags != nullptr && s.tags->bvals[i] != 0;
}

double edge_length(const PreserveStatus& s, const DATAstruct& points, int e)
{
    return norm(point(points, s.edges->ivals[2 * e]) - point(points, s.edges->ivals[2 * e + 1]));
}

/// The product of the lengths of a corner's arms, and its cosine unless that is 0.
double arms_of(const DATAstruct& points, const Corner& c, double& cosine)
{
    const Vector u = point(points, c.next) - point(points, c.point);
    const Vector w = point(points, c.previous) - point(points, c.point);
    const double lengths = norm(u) * norm(w);
    cosine = lengths == 0.0 ? 0.0 : dot(u, w) / lengths;
    return lengths;
}

double volume_at(const PreserveStatus& s, const DATAstruct& points)
{
    double volume = 0.0;
    for_each_face(s, [&](const Face& face) {
        if (face.n < 3)
            return;
        Vector sum = {0.0, 0.0, 0.0};
        for (int k = 1; k <= face.n - 2; ++k)
            sum = sum + cross(point(points, face.points[k]), point(points, face.points[k + 1]));
        volume += dot(point(points, face.points[0]), sum);
    });
    return volume;
}

Vector area_vector(const DATAstruct& points, const Face& face)
{
    Vector sum = {0.0, 0.0, 0.0};
    for (int k = 0; k < face.n; ++k)
        sum = sum + cross(point(points, face.points[k]), point(points, face.points[(k + 1) % face.n]));
    return sum;
}

double area_at(const PreserveStatus& s, const DATAstruct& points)
{
    double area = 0.0;
    for_each_face(s, [&](const Face& face) { area += norm(area_vector(points, face)); });
    return area;
}

void add_energy(PreserveStatus& s, int slot, double measure, double reference)
{
    s.energy += s.weights[slot] * ((measure - reference) * (measure - reference));
}

} // namespace

std::vector<int> edges(const std::vector<int>& sizes, const std::vector<int>& corners)
{
    std::vector<int> found;
    int first = 0;
    for (int n : sizes) {
        for (int k = 0; k < n; ++k) {
            const int here = corners[static_cast<size_t>(first + k)];
            const int next = corners[static_cast<size_t>(first + (k + 1) % n)];
            const int a = std::min(here, next), b = std::max(here, next);
            bool is_known = false;
            for (size_t e = 0; e < found.size() && !is_known; e += 2)
                is_known = found[e] == a && found[e + 1] == b;
            if (!is_known)
                found.insert(found.end(), {a, b});
        }
        if (found.size() == 2 * corners.size())
            break;
        first = next_start(first, n);
    }
    return found;
}

Connectivity connectivity(int points, const std::vector<int>& edges, const std::vector<int>& sizes,
                          const std::vector<int>& corners)
{
    Connectivity c;
    int start = 0;
    for (int n : sizes) {
        c.face_starts.push_back(start);
        start = next_start(start, n);
    }
    const auto count_of = [&](int v) -> int& { return c.point_edge_count[static_cast<size_t>(v)]; };
    const auto start_of = [&](int v) -> int& { return c.point_edge_start[static_cast<size_t>(v)]; };
    c.point_edge_count.assign(static_cast<size_t>(points), 0);
    for (int end : edges)
        ++count_of(end);
    start = 0;
    for (int v = 0; v < points; ++v) {
        c.point_edge_start.push_back(start);
        start += count_of(v);
        count_of(v) = 0;
    }
    c.point_faces.assign(edges.size(), -1);
    for (size_t f = 0; f < sizes.size(); ++f)
        for (int k = 0; k < sizes[f]; ++k) {
            const int v = corners[static_cast<size_t>(c.face_starts[f] + k)];
            const auto place = static_cast<size_t>(start_of(v) + count_of(v)++);
            if (place < c.point_faces.size())
                c.point_faces[place] = static_cast<int>(f);
        }
    c.point_edge_count.assign(static_cast<size_t>(points), 0);
    c.point_edges.resize(edges.size());
    for (size_t i = 0; i < edges.size(); ++i)
        c.point_edges[static_cast<size_t>(start_of(edges[i]) + count_of(edges[i])++)] = static_cast<int>(i) / 2;
    return c;
}

std::vector<double> edge_lengths(const PreserveStatus& s)
{
    std::vector<double> lengths;
    for (int e = 0; e < s.edges->count; ++e)
        lengths.push_back(edge_length(s, *s.points, e));
    return lengths;
}

std::map<int, double> corner_cosines(const PreserveStatus& s)
{
    std::map<int, double> cosines;
    for_each_corner(s, [&](const Corner& c) { arms_of(*s.points, c, cosines[c.place]); });
    return cosines;
}

double volume(const PreserveStatus& s)
{
    return volume_at(s, *s.points);
}

double area(const PreserveStatus& s)
{
    return area_at(s, *s.points);
}

void find_energy(PreserveStatus& s)
{
    s.energy = 0.0;
    if (s.flags & PRESERVE_LENGTH)
        find_nlen(s);
    if (s.flags & PRESERVE_FACE_ANGLE)
        find_nfang(s);
    if (s.flags & PRESERVE_VOLUME)
        find_nvolume(s);
    if (s.flags & PRESERVE_AREA)
        find_narea(s);
}

void find_nlen(PreserveStatus& s)
{
    for (int e = 0; e < s.edges->count; ++e) {
        s.nlen->dvals[e] = edge_length(s, *s.cur_points, e);
        if (!is_tagged(s, s.edges->ivals[2 * e]) || !is_tagged(s, s.edges->ivals[2 * e + 1]))
            add_energy(s, 0, s.nlen->dvals[e], s.olen->dvals[e]);
    }
}

void find_nfang(PreserveStatus& s)
{
    for_each_corner(s, [&](const Corner& c) {
        if (arms_of(*s.cur_points, c, s.nfang->dvals[c.place]) == 0.0)
            return;
        if (!is_tagged(s, c.point) || !is_tagged(s, c.next) || !is_tagged(s, c.previous))
            add_energy(s, 1, s.nfang->dvals[c.place], s.ofang->dvals[c.place]);
    });
}

void find_nvolume(PreserveStatus& s)
{
    s.nvolume = volume_at(s, *s.cur_points);
    add_energy(s, 2, s.nvolume, s.ovolume);
}

void find_narea(PreserveStatus& s)
{
    s.narea = area_at(s, *s.cur_points);
    add_energy(s, 3, s.narea, s.oarea);
}

void find_force(PreserveStatus& s)
{
    std::fill(s.force->dvals, s.force->dvals + 3 * s.force->count, 0.0);
    if (s.flags & PRESERVE_LENGTH)
        find_edge_length_force(s);
    if (s.flags & PRESERVE_FACE_ANGLE)
        find_face_angle_force(s);
    if (s.flags & PRESERVE_VOLUME)
        find_volume_force(s);
    if (s.flags & PRESERVE_AREA)
        find_surface_area_force(s);
}

void find_edge_length_force(PreserveStatus& s)
{
    for (int i = 0; i < s.points->count; ++i)
        for (int k = 0; k < s.point_edge_count->ivals[i]; ++k) {
            const int e = s.point_edges->ivals[s.point_edge_start->ivals[i] + k];
            const double length = s.nlen->dvals[e], reference = s.olen->dvals[e];
            if (length == reference || length < 1e-6)
                continue;
            const int j = s.edges->ivals[2 * e] == i ? s.edges->ivals[2 * e + 1] : s.edges->ivals[2 * e];
            const double factor = ((length - reference) * (2.0 * s.weights[0])) / length;
            const Vector pull = factor * (point(*s.cur_points, i) - point(*s.cur_points, j));
            s.force->dvals[3 * i] -= pull.x;
            s.force->dvals[3 * i + 1] -= pull.y;
            s.force->dvals[3 * i + 2] -= pull.z;
        }
}

void find_face_angle_force(PreserveStatus& s)
{
    for_each_corner(s, [&](const Corner& k) {
        const double cosine = s.nfang->dvals[k.place], reference = s.ofang->dvals[k.place];
        if (cosine == reference)
            return;
        const double c = (2.0 * s.weights[1]) * (cosine - reference);
        const Vector a = point(*s.cur_points, k.previous) - point(*s.cur_points, k.point);
        const Vector b = point(*s.cur_points, k.next) - point(*s.cur_points, k.point);
        const double aa = dot(a, a), bb = dot(b, b), ab = dot(a, b);
        const double lengths = std::sqrt(aa) * std::sqrt(bb);
        if (lengths == 0.0)
            return;
        add_force(s, k.point, (((ab - aa) * -c) / (aa * lengths)) * a + (((ab - bb) * -c) / (bb * lengths)) * b);
        add_force(s, k.next, (-c / lengths) * a + ((c * ab) / (bb * lengths)) * b);
        add_force(s, k.previous, ((c * ab) / (aa * lengths)) * a + (-c / lengths) * b);
    });
}

void find_volume_force(PreserveStatus& s)
{
    const double deviation = s.nvolume - s.ovolume;
    if (std::fabs(deviation) < 1e-6)
        return;
    const double factor = (2.0 * s.weights[2]) * deviation;
    for_each_corner(s, [&](const Corner& c) {
        add_force(s, c.point, factor * cross(point(*s.cur_points, c.previous), point(*s.cur_points, c.next)));
    });
}

void find_surface_area_force(PreserveStatus& s)
{
    const double deviation = s.narea - s.oarea;
    if (std::fabs(deviation) < 1e-6)
        return;
    const double factor = (2.0 * s.weights[3]) * deviation;
    for_each_face(s, [&](const Face& face) {
        Vector normal = area_vector(*s.cur_points, face);
        const double length = norm(normal);
        if (!(length < 1e-6))
            normal = {normal.x / length, normal.y / length, normal.z / length};
        for (int k = 0; k < face.n; ++k) {
            const Corner c = face.corner(k);
            const Vector across = point(*s.cur_points, c.previous) - point(*s.cur_points, c.next);
            add_force(s, c.point, factor * cross(across, normal));
        }
    });
}

void compute(PreserveStatus& s, DATAstruct& points, int iterations)
{
    s.cur_points = &points;
    find_energy(s);
    if (s.energy == 0.0)
        return;
    const int values = 3 * s.force->count;
    double *const x = points.dvals, *const f = s.force->dvals;
    for (int i = 0; i < iterations; ++i) {
        find_force(s);
        for (int v = 0; v < s.force->count; ++v)
            if (is_tagged(s, v))
                f[3 * v] = f[3 * v + 1] = f[3 * v + 2] = 0.0;
        double squares = 0.0;
        for (int q = 0; q < values; ++q)
            squares += f[q] * f[q];
        const double before = s.energy;
        const double h = before / std::sqrt(squares);
        for (int q = 0; q < values; ++q)
            x[q] += h * f[q];
        find_energy(s);
        double share = 0.5;
        while (s.energy >= before) {
            for (int q = 0; q < values; ++q)
                x[q] -= (h * f[q]) * share;
            find_energy(s);
            if (share < 1e-6)
                break;
            share *= 0.5;
        }
        find_energy(s);
    }
}

} // namespace korvale::reference
