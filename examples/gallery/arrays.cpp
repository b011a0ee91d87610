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

void make_points(DATAstruct& d, size_t count)
{
    d.count = int(count);
    d.dim = 3;
    d.type = DATA_TYPE_DOUBLE;
    expect(DATAAllocate(&d) == 1, "an array cannot be allocated");
}

} // namespace

void fill_points(DATAstruct& d, const Outline& outline, double z)
{
    make_points(d, outline.size());
    double* v = d.dvals;
    for (Point p : outline) {
        *v++ = p.x;
        *v++ = p.y;
        *v++ = z;
    }
}

void fill_points(DATAstruct& d, const std::vector<Vec3>& points)
{
    make_points(d, points.size());
    double* v = d.dvals;
    for (Vec3 p : points) {
        *v++ = p.x;
        *v++ = p.y;
        *v++ = p.z;
    }
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

void fill_triangles(Data& d, const Mesh& mesh)
{
    d.count = int(mesh.triangles.size());
    d.dim = 9;
    d.type = DATA_TYPE_DOUBLE;
    expect(DataAllocate(&d) == 1, "an array cannot be allocated");
    double* v = d.dvals;
    for (const auto& t : mesh.triangles) {
        for (int corner : t) {
            const Vec3 p = mesh.points[size_t(corner)];
            *v++ = p.x;
            *v++ = p.y;
            *v++ = p.z;
        }
    }
}

Outline outline_of(const DATAstruct& d)
{
    Outline outline;
    for (Vec3 p : points_of(d))
        outline.push_back({p.x, p.y});
    return outline;
}

std::vector<Vec3> points_of(const DATAstruct& d)
{
    std::vector<Vec3> points;
    for (int i = 0; i < d.count; i++)
        points.push_back({d.dvals[3 * i], d.dvals[3 * i + 1], d.dvals[3 * i + 2]});
    return points;
}

DATAstruct& child(const DATAstruct& d, int i)
{
    return *static_cast<DATAstruct*>(d.pvals[i]);
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
