#include "door/internal/views.h"

#include "data/internal/kernels.h"

namespace korvale::door {

namespace {

/// A buffer of rows of numbers, whatever its elements are called.
struct Layout {
    const void* data;
    int64_t count, stride;
    int32_t width, kind;
};

template <class Buffer>
Layout layout_of(const Buffer& b)
{
    if constexpr (requires { b.dim; })
        return {b.data, b.count, b.stride, b.dim == 0 ? 3 : b.dim, b.kind};
    else
        return {b.data, b.count, b.stride, b.width == 0 ? 1 : b.width, b.kind};
}

int64_t bytes_of(int32_t kind)
{
    return kind == KORVALE_FLOAT ? int64_t{sizeof(float)} : int64_t{sizeof(double)};
}

void require_layout(const Layout& l, std::string_view argument, int64_t width)
{
    if (l.kind != KORVALE_DOUBLE && l.kind != KORVALE_FLOAT)
        throw Refusal(argument, "be of kind KORVALE_DOUBLE or KORVALE_FLOAT", Text() << "its kind is " << l.kind);
    if (l.count < 0)
        throw Refusal(argument, "have a count of 0 or more", Text() << "it is " << l.count);
    const int64_t most = std::numeric_limits<int32_t>::max() / width;
    if (l.count > most)
        throw Refusal(argument, Text() << "have at most " << most << " elements", Text() << "it has " << l.count);
    if (l.data == nullptr && l.count > 0)
        throw Refusal(argument, "have data", "it is null");
}

template <class Buffer>
Layout points_layout(const Buffer* points, std::string_view argument, int64_t width)
{
    require(points, argument);
    const Layout l = layout_of(*points);
    if (l.width != 2 && l.width != 3)
        throw Refusal(argument, "have a dim of 2 or 3", Text() << "it is " << l.width);
    require_layout(l, argument, width);
    return l;
}

template <class Buffer>
Layout numbers_layout(const Buffer* numbers, std::string_view argument)
{
    require(numbers, argument);
    const Layout l = layout_of(*numbers);
    if (l.width < 0)
        throw Refusal(argument, "have a width of 0 or more", Text() << "it is " << l.width);
    require_layout(l, argument, l.width);
    return l;
}

int64_t stride_of(const Layout& l)
{
    return l.stride != 0 ? l.stride : l.width * bytes_of(l.kind);
}

/// Whether the rows are `width` packed doubles that can be used where they are.
bool is_packed(const Layout& l, int64_t width)
{
    return l.kind == KORVALE_DOUBLE && l.width == width &&
           (l.count < 2 || stride_of(l) == l.width * bytes_of(l.kind)) &&
           reinterpret_cast<uintptr_t>(l.data) % alignof(double) == 0;
}

template <class Number>
void read_rows(const Layout& l, int64_t width, double* to)
{
    const auto* row = static_cast<const char*>(l.data);
    for (int64_t i = 0; i < l.count; ++i, row += stride_of(l), to += width)
        for (int64_t k = 0; k < width; ++k) {
            Number number = 0;
            if (k < l.width)
                std::memcpy(&number, row + k * int64_t{sizeof number}, sizeof number);
            to[k] = double{number};
        }
}

template <class Number>
void write_rows(const Layout& l, void* data, int64_t width, const double* from)
{
    auto* row = static_cast<char*>(data);
    for (int64_t i = 0; i < l.count; ++i, row += stride_of(l), from += width)
        for (int64_t k = 0; k < l.width; ++k) {
            const auto number = static_cast<Number>(from[k]);
            std::memcpy(row + k * int64_t{sizeof number}, &number, sizeof number);
        }
}

Vector<double> copy_of(const Layout& l, int64_t width)
{
    Vector<double> copy(static_cast<size_t>(l.count * width));
    if (l.kind == KORVALE_FLOAT)
        read_rows<float>(l, width, copy.data());
    else
        read_rows<double>(l, width, copy.data());
    return copy;
}

void write_back(const Layout& l, void* data, int64_t width, const double* from)
{
    if (l.kind == KORVALE_FLOAT)
        write_rows<float>(l, data, width, from);
    else
        write_rows<double>(l, data, width, from);
}

/// The copy that an output works in.
Vector<double> working_copy(const Layout& l, int64_t width, PointsOut::Use use)
{
    return use == PointsOut::Use::change ? copy_of(l, width) : Vector<double>(static_cast<size_t>(l.count * width));
}

template <class Index>
int64_t index_at(const korvale_indices& from, int64_t i)
{
    Index index;
    std::memcpy(&index,
                static_cast<const char*>(from.data) + i * (from.stride != 0 ? from.stride : int64_t{sizeof index}),
                sizeof index);
    return static_cast<int64_t>(index);
}

template <class Index>
void read_indices(const korvale_indices& from, int32_t* to)
{
    for (int64_t i = 0; i < from.count; ++i) {
        const int64_t index = index_at<Index>(from, i);
        to[i] = index >= 0 && index <= std::numeric_limits<int32_t>::max() ? static_cast<int32_t>(index) : -1;
    }
}

/// Calls `read` with a value of the type that a kind of indices has.
template <class Read>
auto by_kind(int32_t kind, Read read)
{
    switch (kind) {
    case KORVALE_UINT32:
        return read(uint32_t{});
    case KORVALE_INT16:
        return read(int16_t{});
    case KORVALE_UINT16:
        return read(uint16_t{});
    case KORVALE_INT64:
        return read(int64_t{});
    default:
        return read(int32_t{});
    }
}

} // namespace

// --- Points and numbers ----------------------------------------------------------------------------------------------

PointsIn::PointsIn(const korvale_points* points, std::string_view argument, int64_t width)
{
    const Layout l = points_layout(points, argument, width);
    count_ = l.count;
    if (is_packed(l, 3)) {
        data_ = static_cast<const double*>(l.data);
        return;
    }
    copy_ = copy_of(l, 3);
    data_ = copy_.data();
}

void require_buffer(const korvale_points* points, std::string_view argument)
{
    points_layout(points, argument, 3);
}

korvale_points part_of(const korvale_points& points, int64_t first, int64_t last)
{
    korvale_points part = points;
    if (first > 0) // the points may be nowhere where there are none
        part.data = static_cast<const char*>(points.data) + first * stride_of(layout_of(points));
    part.count = last - first;
    return part;
}

PointsOut::PointsOut(const korvale_points_out* points, std::string_view argument, Use use)
{
    const Layout l = points_layout(points, argument, 3);
    to_ = *points;
    count_ = l.count;
    if (is_packed(l, 3)) {
        data_ = static_cast<double*>(points->data);
        return;
    }
    copy_ = working_copy(l, 3, use);
    data_ = copy_.data();
}

void PointsOut::give_back()
{
    if (data_ == copy_.data())
        write_back(layout_of(to_), to_.data, 3, data_);
}

NumbersIn::NumbersIn(const korvale_numbers* numbers, std::string_view argument)
{
    const Layout l = numbers_layout(numbers, argument);
    count_ = l.count;
    width_ = l.width;
    if (is_packed(l, l.width)) {
        data_ = static_cast<const double*>(l.data);
        return;
    }
    copy_ = copy_of(l, l.width);
    data_ = copy_.data();
}

NumbersOut::NumbersOut(const korvale_numbers_out* numbers, std::string_view argument, PointsOut::Use use)
{
    const Layout l = numbers_layout(numbers, argument);
    to_ = *numbers;
    count_ = l.count;
    width_ = l.width;
    if (is_packed(l, l.width)) {
        data_ = static_cast<double*>(numbers->data);
        return;
    }
    copy_ = working_copy(l, l.width, use);
    data_ = copy_.data();
}

void NumbersOut::give_back()
{
    if (data_ == copy_.data())
        write_back(layout_of(to_), to_.data, width_, data_);
}

// --- Indices ---------------------------------------------------------------------------------------------------------

IndicesIn::IndicesIn(const korvale_indices* indices, std::string_view argument) : from_(), data_(nullptr), count_(0)
{
    require(indices, argument);
    from_ = *indices;
    if (from_.kind < KORVALE_INT32 || from_.kind > KORVALE_INT64)
        throw Refusal(argument, "be of a kind from KORVALE_INT32 to KORVALE_INT64",
                      Text() << "their kind is " << from_.kind);
    if (from_.count < 0 || from_.count > std::numeric_limits<int32_t>::max())
        throw Refusal(argument, Text() << "be 0 to " << std::numeric_limits<int32_t>::max(),
                      Text() << "there are " << from_.count);
    if (from_.data == nullptr && from_.count > 0)
        throw Refusal(argument, "have data", "it is null");
    count_ = from_.count;
    const bool is_packed = from_.stride == 0 || from_.stride == sizeof(int32_t) || count_ < 2;
    if (from_.kind == KORVALE_INT32 && is_packed && reinterpret_cast<uintptr_t>(from_.data) % alignof(int32_t) == 0) {
        data_ = static_cast<const int32_t*>(from_.data);
        return;
    }
    copy_.resize(static_cast<size_t>(count_));
    by_kind(from_.kind, [&](auto index) { read_indices<decltype(index)>(from_, copy_.data()); });
    data_ = copy_.data();
}

int64_t IndicesIn::given(int64_t i) const
{
    return by_kind(from_.kind, [&](auto index) { return index_at<decltype(index)>(from_, i); });
}

// --- What is asked of arguments --------------------------------------------------------------------------------------

void require(const void* pointer, std::string_view argument)
{
    if (pointer == nullptr)
        throw Refusal(argument, "be given", "it is null");
}

void require_finite(double value, std::string_view argument)
{
    if (!is_finite(value))
        throw Refusal(argument, "be finite", Text() << "it is " << value);
}

void require_finite(const double* point, std::string_view argument)
{
    for (int k = 0; k < 3; ++k)
        if (!is_finite(point[k]))
            throw Refusal(argument, "be finite", Text() << "its point 0 is " << text_of_point(point));
}

bool are_finite(std::span<const Point> points)
{
    return points.empty() || data::are_finite(points[0].data(), 3 * static_cast<int64_t>(points.size()));
}

void require_finite(std::span<const Point> points, std::string_view argument)
{
    if (are_finite(points))
        return;
    for (size_t i = 0; i < points.size(); ++i) {
        const Point& p = points[i];
        if (!is_finite(p.x) || !is_finite(p.y) || !is_finite(p.z))
            throw Refusal(argument, "be finite", Text() << "its point " << i << " is " << text_of_point(p.data()));
    }
}

void require_points(const PointsIn& points, std::string_view argument, int64_t least)
{
    if (points.size() < least)
        throw Refusal(argument, Text() << "have at least " << counted(least, "point"),
                      Text() << "it has " << points.size());
    require_finite(points.points(), argument);
}

void require_corners(const IndicesIn& corners, std::string_view argument, int64_t points)
{
    for (int64_t i = 0; i < corners.size(); ++i)
        if (corners[i] < 0 || corners[i] >= points)
            throw Refusal(argument, Text() << "name vertices 0 to " << points - 1,
                          Text() << "its corner " << i << " is " << corners.given(i));
}

// --- Records over a host's memory ------------------------------------------------------------------------------------

namespace {

DATAstruct record_of(int32_t type, int64_t count, int64_t dim)
{
    DATAstruct d;
    DATAInitialize(&d);
    d.type = type;
    d.count = static_cast<int32_t>(count);
    d.dim = static_cast<int32_t>(dim);
    return d;
}

} // namespace

DATAstruct record_over(const double* values, int64_t count, int64_t dim)
{
    DATAstruct d = record_of(DATA_TYPE_DOUBLE, count, dim);
    d.dvals = const_cast<double*>(values); // records have no const buffers
    return d;
}

DATAstruct record_over(const int32_t* values, int64_t count, int64_t dim)
{
    DATAstruct d = record_of(DATA_TYPE_INT, count, dim);
    d.ivals = const_cast<int32_t*>(values); // records have no const buffers
    return d;
}

} // namespace korvale::door
