#include "tests/border/records.h"

#include <algorithm>
#include <cstdlib>

namespace korvale::test {
namespace {

template <class Array>
void shape_points(Array& d, const Coordinates& points)
{
    d.dim = 3;
    d.count = static_cast<int32_t>(points.size() / 3);
    d.type = DATA_TYPE_DOUBLE;
}

} // namespace

void warm_up()
{
    OwnedBORDERStatus status(gear(16, 9, 10));
    BORDER_BORDER(status);
}

void release(Data* d)
{
    DataDispose(d);
    std::free(d);
}

void release(DATAstruct* d)
{
    DATADispose(d);
    std::free(d);
}

void fill_points(DATAstruct& d, const Coordinates& points)
{
    DATADispose(&d);
    shape_points(d, points);
    if (DATAAllocate(&d) > 0)
        std::copy(points.begin(), points.end(), d.dvals);
}

void fill_points(Data& d, const Coordinates& points)
{
    DataDispose(&d);
    shape_points(d, points);
    if (DataAllocate(&d) > 0)
        std::copy(points.begin(), points.end(), d.dvals);
}

OwnedBORDERStatus::OwnedBORDERStatus()
{
    BORDERInitialize(&status_);
}

OwnedBORDERStatus::OwnedBORDERStatus(const Coordinates& path) : OwnedBORDERStatus()
{
    set_path(path);
}

OwnedBORDERStatus::~OwnedBORDERStatus()
{
    if (status_.output != status_.path)
        release(status_.output);
    for (DATAstruct* const d : {status_.path, status_.flat, status_.velocity, status_.direction, status_.line,
                                status_.dead, status_.length, status_.rate, status_.merge})
        release(d);
}

void OwnedBORDERStatus::set_path(const Coordinates& points)
{
    fill_points(*status_.path, points);
}

OwnedBorderStatus::OwnedBorderStatus()
{
    BorderInitialize(&status_);
}

OwnedBorderStatus::OwnedBorderStatus(const Coordinates& path) : OwnedBorderStatus()
{
    set_path(path);
}

OwnedBorderStatus::~OwnedBorderStatus()
{
    if (status_.output != status_.path)
        release(status_.output);
    release(status_.path);
}

void OwnedBorderStatus::set_path(const Coordinates& points)
{
    fill_points(*status_.path, points);
}

} // namespace korvale::test
