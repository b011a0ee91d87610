#include "arrays.h"

#include <cstdlib>
#include <stdexcept>

namespace gallery {
namespace {

void expect(bool held, const char* what)
{
    if (!held)
        throw std::runtime_error(what);
}

int allocate(Data& d)
{
    return DataAllocate(&d);
}

int allocate(DATAstruct& d)
{
    return DATAAllocate(&d);
}

template <class Array>
double* make_rows(Array& d, size_t count, int dim)
{
    d.count = int(count);
    d.dim = dim;
    d.type = DATA_TYPE_DOUBLE;
    expect(allocate(d) == 1, "an array cannot be allocated");
    return d.dvals;
}

template <class Array>
void fill_from_outline(Array& d, const Outline& outline, double z)
{
    double* v = make_rows(d, outline.size(), 3);
    for (Point p : outline) {
        *v++ = p.x;
        *v++ = p.y;
        *v++ = z;
    }
}

template <class Array>
void fill_from_points(Array& d, const std::vector<Vec3>& points)
{
    double* v = make_rows(d, points.size(), 3);
    for (Vec3 p : points) {
        *v++ = p.x;
        *v++ = p.y;
        *v++ = p.z;
    }
}

template <class Array>
void fill_from_mesh(Array& d, const Mesh& mesh)
{
    double* v = make_rows(d, mesh.triangles.size(), 9);
    for (const auto& t : mesh.triangles) {
        for (int corner : t) {
            const Vec3 p = mesh.points[size_t(corner)];
            *v++ = p.x;
            *v++ = p.y;
            *v++ = p.z;
        }
    }
}

template <class Array>
std::vector<Vec3> read_points(const Array& d)
{
    std::vector<Vec3> points;
    for (int i = 0; i < d.count; i++)
        points.push_back({d.dvals[3 * i], d.dvals[3 * i + 1], d.dvals[3 * i + 2]});
    return points;
}

template <class Array>
Outline read_outline(const Array& d)
{
    Outline outline;
    for (Vec3 p : read_points(d))
        outline.push_back({p.x, p.y});
    return outline;
}

} // namespace

void fill_points(Data& d, const Outline& outline, double z)
{
    fill_from_outline(d, outline, z);
}

void fill_points(DATAstruct& d, const Outline& outline, double z)
{
    fill_from_outline(d, outline, z);
}

void fill_points(Data& d, const std::vector<Vec3>& points)
{
    fill_from_points(d, points);
}

void fill_points(DATAstruct& d, const std::vector<Vec3>& points)
{
    fill_from_points(d, points);
}

void fill_list(DATAstruct& d, const Shape& shape, double z)
{
    DATADispose(&d);
    d.count = int(shape.size());
    d.dim = 1;
    d.type = DATA_TYPE_DATA;
    expect(DATAAllocate(&d) == 1, "a list cannot be allocated");
    for (size_t i = 0; i < shape.size(); i++) {
        DATAstruct* outline = DATANew();
        expect(outline != nullptr, "an array cannot be made");
        fill_points(*outline, shape[i], z);
        d.pvals[i] = outline;
    }
}

Outline outline_of(const Data& d)
{
    return read_outline(d);
}

Outline outline_of(const DATAstruct& d)
{
    return read_outline(d);
}

std::vector<Vec3> points_of(const Data& d)
{
    return read_points(d);
}

std::vector<Vec3> points_of(const DATAstruct& d)
{
    return read_points(d);
}

DATAstruct& child(const DATAstruct& d, int i)
{
    return *static_cast<DATAstruct*>(d.pvals[i]);
}

void fill_triangles(Data& d, const Mesh& mesh)
{
    fill_from_mesh(d, mesh);
}

void fill_triangles(DATAstruct& d, const Mesh& mesh)
{
    fill_from_mesh(d, mesh);
}

BorderRecord::BorderRecord()
{
    BORDERInitialize(&status_);
}

BorderRecord::~BorderRecord()
{
    for (DATAstruct* array : {status_.path, status_.output, status_.flat, status_.velocity, status_.direction,
                              status_.line, status_.dead, status_.length, status_.rate, status_.merge}) {
        DATADispose(array);
        std::free(array);
    }
}

} // namespace gallery
