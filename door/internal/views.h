#pragma once

#include <limits>
#include <optional>
#include <span>

#include "data/datastruct.h"
#include "door/internal/failure.h"
#include "door/internal/heap.h"
#include "platform/internal/bit_cast.h"

// Buffers of the host as the cores want them: packed doubles, packed 32-bit indices. What is laid out so already is
// read, and written, where it is.
namespace korvale::door {

/// A point or vector x, y, z.
struct Point {
    double x, y, z;

    double operator[](int k) const { return (&x)[k]; }
    double& operator[](int k) { return (&x)[k]; }
    double* data() { return &x; }
    const double* data() const { return &x; }
    friend bool operator==(const Point&, const Point&) = default;
};
static_assert(sizeof(Point) == 3 * sizeof(double));

/// Points to read.
class PointsIn {
public:
    /// Refuses a buffer that is not there, and more than the library's arrays of `width` numbers can hold.
    PointsIn(const korvale_points* points, std::string_view argument, int64_t width = 3);

    const double* data() const { return data_; }
    int64_t size() const { return count_; }
    const Point& operator[](int64_t i) const { return reinterpret_cast<const Point*>(data_)[i]; }
    std::span<const Point> points() const
    {
        return {reinterpret_cast<const Point*>(data_), static_cast<size_t>(count_)};
    }

private:
    const double* data_;
    int64_t count_;
    Vector<double> copy_;
};

/// Refuses a buffer of points that is not there, without reading any.
void require_buffer(const korvale_points* points, std::string_view argument);

/// The points of a sound buffer from number `first` up to, but without, number `last`.
korvale_points part_of(const korvale_points& points, int64_t first, int64_t last);

/// Points to write or to change in place. The host's memory changes in `give_back`, or at once where the points are
/// packed doubles with z.
class PointsOut {
public:
    enum class Use { write, change };
    PointsOut(const korvale_points_out* points, std::string_view argument, Use use);

    double* data() { return data_; }
    int64_t size() const { return count_; }
    Point& operator[](int64_t i) { return reinterpret_cast<Point*>(data_)[i]; }
    std::span<Point> points() { return {reinterpret_cast<Point*>(data_), static_cast<size_t>(count_)}; }

    /// Hands over what has been written.
    void give_back();

private:
    korvale_points_out to_;
    double* data_;
    int64_t count_;
    Vector<double> copy_;
};

/// Rows of numbers to read.
class NumbersIn {
public:
    NumbersIn(const korvale_numbers* numbers, std::string_view argument);

    const double* data() const { return data_; }
    int64_t size() const { return count_; }
    int64_t width() const { return width_; }

private:
    const double* data_;
    int64_t count_, width_;
    Vector<double> copy_;
};

/// Rows of numbers to write or to change in place, as for points.
class NumbersOut {
public:
    NumbersOut(const korvale_numbers_out* numbers, std::string_view argument, PointsOut::Use use);

    double* data() { return data_; }
    int64_t size() const { return count_; }
    int64_t width() const { return width_; }
    void give_back();

private:
    korvale_numbers_out to_;
    double* data_;
    int64_t count_, width_;
    Vector<double> copy_;
};

/// Indices to read. Those that no 32-bit number holds are -1 here, so that whatever names no element is refused alike.
class IndicesIn {
public:
    IndicesIn(const korvale_indices* indices, std::string_view argument);

    const int32_t* data() const { return data_; }
    int64_t size() const { return count_; }
    int32_t operator[](int64_t i) const { return data_[i]; }
    std::span<const int32_t> indices() const { return {data_, static_cast<size_t>(count_)}; }

    /// Index `i` as the host has it.
    int64_t given(int64_t i) const;

private:
    korvale_indices from_;
    const int32_t* data_;
    int64_t count_;
    Vector<int32_t> copy_;
};

/// Asked of the bits, so that no choice of a compiler changes the answer.
///@{
inline bool is_finite(double value)
{
    return (~platform::bit_cast<uint64_t>(value) & 0x7ff0000000000000u) != 0;
}
inline bool is_nan(double value)
{
    return (platform::bit_cast<uint64_t>(value) << 1) > 0xffe0000000000000u;
}
///@}

bool are_finite(std::span<const Point> points);

void require(const void* pointer, std::string_view argument);
void require_finite(double value, std::string_view argument);
void require_finite(const double* point, std::string_view argument);
void require_finite(std::span<const Point> points, std::string_view argument);

/// At least so many, all finite.
void require_points(const PointsIn& points, std::string_view argument, int64_t least);

/// That every index names one of `points` points.
void require_corners(const IndicesIn& corners, std::string_view argument, int64_t points);

/// Records over memory of the host, for functions that neither change their size nor write to them where it is const.
///@{
DATAstruct record_over(const double* values, int64_t count, int64_t dim);
DATAstruct record_over(const int32_t* values, int64_t count, int64_t dim);
inline DATAstruct record_over(std::span<const Point> points)
{
    return record_over(points.empty() ? nullptr : points[0].data(), static_cast<int64_t>(points.size()), 3);
}
///@}

/// The options of a call: those given, the defaults for what an older host does not know, and a refusal of what this
/// library does not know.
template <class Options>
Options options_of(const Options* given, void (*defaults)(Options*, size_t))
{
    Options options;
    defaults(&options, sizeof options);
    if (given == nullptr)
        return options;
    if (given->size < sizeof given->size)
        throw Refusal("options.size", "be the size of the struct", Text() << "it is " << given->size);
    const auto* const bytes = reinterpret_cast<const unsigned char*>(given);
    for (size_t i = sizeof options; i < given->size; ++i)
        if (bytes[i] != 0)
            throw Refusal("options", "be of this version of the library", "a field of a later one is set");
    std::memcpy(&options, given, given->size < sizeof options ? given->size : sizeof options);
    options.size = sizeof options;
    return options;
}

/// Fills the first `size` bytes of options with defaults.
template <class Options>
void give_defaults(Options* options, size_t size, Options defaults)
{
    if (options == nullptr || size < sizeof defaults.size)
        return;
    std::memset(static_cast<void*>(options), 0, size);
    std::memcpy(static_cast<void*>(options), &defaults, size < sizeof defaults ? size : sizeof defaults);
    options->size = static_cast<uint32_t>(size);
}

} // namespace korvale::door
