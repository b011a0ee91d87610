#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <utility>

#include "result.hpp"
#include "views.hpp"

namespace korvale {

namespace detail {

/// Asked of the bits, so that a program compiled to take every number for finite is told the truth as well.
inline bool is_finite(double value)
{
    return (~std::bit_cast<std::uint64_t>(value) & 0x7ff0000000000000u) != 0;
}

inline bool is_nan(double value)
{
    return (std::bit_cast<std::uint64_t>(value) << 1) > 0xffe0000000000000u;
}

/// "1 point", "3 points".
inline std::string counted(std::size_t n, const char* noun)
{
    return text_of(n) + " " + noun + (n == 1 ? "" : "s");
}

} // namespace detail

/// Numbers in a block of the C heap, released with the value: a contiguous range. Moves, and copies by `clone` alone;
/// `release` hands the block over.
template <class T>
class Array {
public:
    /// What a range has.
    ///@{
    using value_type = T;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = T&;
    using const_reference = const T&;
    using pointer = T*;
    using const_pointer = const T*;
    using iterator = T*;
    using const_iterator = const T*;
    ///@}

    Array() = default;

    /// Takes over `size` elements at `data`, which came from malloc.
    Array(T* data, std::size_t size) : data_(data), size_(data == nullptr ? 0 : size) {}

    /// `size` elements, not cleared.
    explicit Array(std::size_t size)
        : data_(static_cast<T*>(std::malloc(std::max<std::size_t>(1, size * sizeof(T))))), size_(size)
    {
        if (data_ == nullptr)
            detail::raise(std::bad_alloc());
    }

    /// What is moved away leaves no elements.
    ///@{
    Array(Array&& other) noexcept : data_(std::move(other.data_)), size_(std::exchange(other.size_, 0)) {}
    Array& operator=(Array&& other) noexcept
    {
        data_ = std::move(other.data_);
        size_ = std::exchange(other.size_, 0);
        return *this;
    }
    ///@}

    /// The same elements in a block of their own.
    Array clone() const
    {
        Array copy(size_);
        std::ranges::copy(*this, copy.begin());
        return copy;
    }

    /// The elements.
    ///@{
    T* data() noexcept KORVALE_LIFETIMEBOUND { return data_.get(); }
    const T* data() const noexcept KORVALE_LIFETIMEBOUND { return data_.get(); }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    T& operator[](std::size_t i) KORVALE_LIFETIMEBOUND { return data_.get()[i]; }
    const T& operator[](std::size_t i) const KORVALE_LIFETIMEBOUND { return data_.get()[i]; }
    T& front() KORVALE_LIFETIMEBOUND { return data_.get()[0]; }
    const T& front() const KORVALE_LIFETIMEBOUND { return data_.get()[0]; }
    T& back() KORVALE_LIFETIMEBOUND { return data_.get()[size_ - 1]; }
    const T& back() const KORVALE_LIFETIMEBOUND { return data_.get()[size_ - 1]; }
    T* begin() noexcept KORVALE_LIFETIMEBOUND { return data(); }
    T* end() noexcept KORVALE_LIFETIMEBOUND { return data() + size_; }
    const T* begin() const noexcept KORVALE_LIFETIMEBOUND { return data(); }
    const T* end() const noexcept KORVALE_LIFETIMEBOUND { return data() + size_; }
    ///@}

    /// As many elements, each equal.
    friend bool operator==(const Array& a, const Array& b) { return std::ranges::equal(a, b); }

    /// Hands the block over, to be released with `free`; the array is empty afterwards.
    T* release() noexcept
    {
        size_ = 0;
        return data_.release();
    }

private:
    struct Free {
        void operator()(T* p) const noexcept { std::free(p); }
    };
    std::unique_ptr<T[], Free> data_;
    std::size_t size_ = 0;
};

/// Points that a function gives back: a contiguous range of `Point` over memory that the library filled. Moves, and
/// copies by `clone` alone.
///
/// ```
/// korvale::Points border = korvale::offset(outline, 0.5).points;
/// for (auto [x, y, z] : border)
///     std::printf("%g %g %g\n", x, y, z);
/// std::vector<korvale::Point> mine(border.begin(), border.end());
/// ```
class Points {
public:
    /// What a range has.
    ///@{
    using value_type = Point;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = Point&;
    using const_reference = const Point&;
    using pointer = Point*;
    using const_pointer = const Point*;
    using iterator = Point*;
    using const_iterator = const Point*;
    ///@}

    Points() = default;

    /// Takes over 3 * `count` doubles at `coordinates`, which came from malloc.
    Points(double* coordinates, std::size_t count) : numbers_(coordinates, 3 * count) {}

    /// `count` points, not cleared.
    explicit Points(std::size_t count) : numbers_(3 * count) {}

    /// The same points in a block of their own.
    Points clone() const
    {
        Points copy;
        copy.numbers_ = numbers_.clone();
        return copy;
    }

    /// The points.
    ///@{
    std::size_t size() const noexcept { return numbers_.size() / 3; }
    bool empty() const noexcept { return size() == 0; }
    Point* data() noexcept KORVALE_LIFETIMEBOUND { return reinterpret_cast<Point*>(numbers_.data()); }
    const Point* data() const noexcept KORVALE_LIFETIMEBOUND { return reinterpret_cast<const Point*>(numbers_.data()); }
    Point& operator[](std::size_t i) KORVALE_LIFETIMEBOUND { return data()[i]; }
    const Point& operator[](std::size_t i) const KORVALE_LIFETIMEBOUND { return data()[i]; }
    Point& front() KORVALE_LIFETIMEBOUND { return data()[0]; }
    const Point& front() const KORVALE_LIFETIMEBOUND { return data()[0]; }
    Point& back() KORVALE_LIFETIMEBOUND { return data()[size() - 1]; }
    const Point& back() const KORVALE_LIFETIMEBOUND { return data()[size() - 1]; }
    Point* begin() noexcept KORVALE_LIFETIMEBOUND { return data(); }
    Point* end() noexcept KORVALE_LIFETIMEBOUND { return data() + size(); }
    const Point* begin() const noexcept KORVALE_LIFETIMEBOUND { return data(); }
    const Point* end() const noexcept KORVALE_LIFETIMEBOUND { return data() + size(); }
    ///@}

    /// x y z of all points.
    ///@{
    std::span<double> coordinates() & noexcept KORVALE_LIFETIMEBOUND { return {numbers_.data(), numbers_.size()}; }
    std::span<const double> coordinates() const& noexcept KORVALE_LIFETIMEBOUND
    {
        return {numbers_.data(), numbers_.size()};
    }
    ///@}

    /// As many points, each equal.
    friend bool operator==(const Points&, const Points&) = default;

    /// Hands the coordinates over, to be released with `free`; there are no points afterwards.
    double* release() noexcept { return numbers_.release(); }

private:
    Array<double> numbers_;
};

namespace detail {

/// The record of korvale.h behind a handle of the C interface, which korvale.hpp names: so the face does without the
/// names of korvale.h.
template <class Handle>
struct RecordBehind;

template <class Handle>
using Record = typename RecordBehind<Handle>::type;

/// A view as the C interface takes it.
///@{
inline korvale_points view_of(PointView points)
{
    return points.layout();
}
inline korvale_points view_of(const AnyPoints& points)
{
    return points.view().layout();
}
inline korvale_points_out view_of_output(PointSpan points)
{
    return points.layout();
}
inline korvale_indices view_of(std::span<const std::int32_t> indices)
{
    return {indices.data(), static_cast<std::int64_t>(indices.size()), 0, KORVALE_INT32};
}

/// Sizes of faces: there are some, if only none.
inline korvale_indices view_of_sizes(const AnyIndices& sizes)
{
    korvale_indices view = sizes.layout();
    if (view.data == nullptr)
        view.data = ""; // somewhere
    return view;
}

/// Triangles on shared vertices; without any, none of the vertices either, as they would be triangles by themselves.
inline korvale_triangles triangles_of(const AnyPoints& vertices, const AnyTriangles& triangles)
{
    korvale_triangles view = {view_of(vertices), triangles.layout()};
    if (triangles.size() == 0)
        view.points.count = 0;
    return view;
}
///@}

inline Points copy_of(std::span<const Point> points)
{
    Points copy(points.size());
    std::ranges::copy(points, copy.begin());
    return copy;
}

/// Copies points to `to`; returns where they end there.
inline Point* copy_points(PointView from, Point* to)
{
    if (!from.empty() && from.is_packed())
        std::memcpy(to, from.data(), from.size() * sizeof(Point));
    else
        for (std::size_t i = 0; i < from.size(); ++i)
            to[i] = from[i];
    return to + from.size();
}

/// "(1, 2, nan)".
inline std::string text_of_point(const Point& p)
{
    return "(" + text_of(p[0]) + ", " + text_of(p[1]) + ", " + text_of(p[2]) + ")";
}

/// Refuses more elements than fit the library's arrays of `width` numbers.
inline std::optional<Failure> refuse_count(const char* function, const char* argument, std::size_t count,
                                           std::size_t width)
{
    const std::size_t most = std::size_t{std::numeric_limits<std::int32_t>::max()} / width;
    if (count <= most)
        return {};
    return Failure(function, argument, "have at most " + text_of(most) + " elements", "it has " + text_of(count));
}

/// A value to be used as a size of the library's arrays of `width` numbers.
inline std::int32_t count_for(const char* function, const char* argument, std::size_t count, std::size_t width)
{
    const std::size_t most = std::size_t{std::numeric_limits<std::int32_t>::max()} / width;
    if (count > most)
        raise(Error(function, argument, "have at most " + text_of(most) + " elements", "it has " + text_of(count)));
    return static_cast<std::int32_t>(count);
}

inline void require_finite(const char* function, const char* argument, double value)
{
    if (!is_finite(value))
        raise(Error(function, argument, "be finite", "it is " + text_of(value)));
}

inline void require_finite(const char* function, const char* argument, PointView points)
{
    for (std::size_t i = 0; i < points.size(); ++i)
        for (const double v : points[i])
            if (!is_finite(v))
                raise(Error(function, argument, "be finite",
                            "its point " + text_of(i) + " is " + text_of_point(points[i])));
}

inline void require_points(const char* function, const char* argument, PointView points, std::size_t least)
{
    if (points.size() < least)
        raise(
            Error(function, argument, "have at least " + counted(least, "point"), "it has " + text_of(points.size())));
    count_for(function, argument, points.size(), 3);
    require_finite(function, argument, points);
}

// Vectors where a value reads better than an array to fill.

inline Point minus(const Point& a, const Point& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline double dot(const Point& a, const Point& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Point cross(const Point& a, const Point& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

} // namespace detail
} // namespace korvale
