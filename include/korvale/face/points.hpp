#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <limits>
#include <memory>
#include <new>
#include <ranges>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "../korvale_c.h"

namespace korvale {

/// A point or vector x, y, z. Types of your own with three doubles x, y, z serve as well wherever points are read.
using Point = std::array<double, 3>;

/// An argument that cannot be used. `what()` is one sentence: the function, the argument, what it must be, what came.
class Error : public std::invalid_argument {
public:
    /// "function: argument must `must`, but `but`".
    Error(std::string_view function, std::string_view argument, std::string_view must, std::string_view but)
        : std::invalid_argument(std::string(function) + ": " + std::string(argument) + " must " + std::string(must) +
                                ", but " + std::string(but)),
          function_(function), argument_(argument)
    {
    }

    /// The function or member function that refuses, such as "offset" or "Relaxer::step".
    const std::string& function() const noexcept { return function_; }

    /// The name of the argument it refuses.
    const std::string& argument() const noexcept { return argument_; }

private:
    std::string function_, argument_;
};

namespace detail {

/// Members x, y, z that are doubles.
template <class T>
concept HasXyz = requires(T& p)
{
    requires std::same_as<decltype((p.x)), double&>;
    requires std::same_as<decltype((p.y)), double&>;
    requires std::same_as<decltype((p.z)), double&>;
};

/// An index that gives doubles.
template <class T>
concept HasIndex = requires(T& p)
{
    requires std::same_as<decltype((p[0])), double&>;
};

} // namespace detail

/// A type laid out as three doubles and nothing else: with members x, y, z or with an index.
template <class T>
concept PointLike = std::is_trivially_copyable_v<T> && std::is_standard_layout_v<T> &&
                        sizeof(T) == 3 * sizeof(double) &&
                    alignof(T) == alignof(double) && (detail::HasXyz<T> || detail::HasIndex<T>);

namespace detail {

/// The shortest text that reads back as `value`, under every locale.
template <class Number>
std::string text_of(Number value)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

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

template <class R>
concept Contiguous = std::ranges::contiguous_range<R> && std::ranges::sized_range<R>;

template <class R>
using Element = std::remove_reference_t<std::ranges::range_reference_t<R>>;

/// Whether elements of R can be seen through doubles of kind Double (const or not).
template <class R, class Double>
concept Coordinates = Contiguous<R> &&
    (std::is_const_v<Double> || !std::is_const_v<Element<R>>)&&(std::same_as<std::remove_const_t<Element<R>>, double> ||
                                                                PointLike<std::remove_const_t<Element<R>>>);

} // namespace detail

/// Points of someone else, x y z after one another: made from any contiguous range of points (`Point`, or a type of
/// yours with three doubles) or of plain doubles, without a copy. It must not outlive the range.
template <class Double>
class BasicPointView {
public:
    BasicPointView() = default;

    /// All of a range; plain doubles have to come in threes.
    template <class R>
    requires(!std::same_as<std::remove_cvref_t<R>, BasicPointView> && detail::Coordinates<R, Double>)
        BasicPointView(R&& range) // NOLINT: views are made in passing
    {
        using Value = std::remove_const_t<detail::Element<R>>;
        const auto n = static_cast<std::size_t>(std::ranges::size(range));
        data_ = reinterpret_cast<Double*>(std::ranges::data(range));
        if constexpr (std::same_as<Value, double>) {
            if (n % 3 != 0)
                throw Error("points", "the coordinates", "come in threes", "there are " + detail::text_of(n));
            count_ = n / 3;
        } else {
            count_ = n;
        }
    }

    /// Points written out, as `{{0, 0, 0}, {1, 0, 0}}`: for an argument, whose call they outlive.
    BasicPointView(std::initializer_list<Point> points) // NOLINT
        requires(std::is_const_v<Double>)
        : data_(points.begin()->data()), count_(points.size())
    {
    }

    /// Points to change may be read.
    template <class Other>
    requires(std::is_const_v<Double>&& std::same_as<Other, double>)
        BasicPointView(const BasicPointView<Other>& other) // NOLINT
        : data_(other.data()), count_(other.size())
    {
    }

    /// `count` points from `first` on, 3 count doubles.
    static BasicPointView at(Double* first, std::size_t count)
    {
        BasicPointView view;
        view.data_ = first;
        view.count_ = count;
        return view;
    }

    /// How many points there are.
    ///@{
    std::size_t size() const noexcept { return count_; }
    bool empty() const noexcept { return count_ == 0; }
    ///@}

    /// The first coordinate of the first point.
    Double* data() const noexcept { return data_; }

    /// x y z of all points.
    std::span<Double> coordinates() const noexcept { return {data_, 3 * count_}; }

    /// Point i, as a copy.
    Point operator[](std::size_t i) const { return {data_[3 * i], data_[3 * i + 1], data_[3 * i + 2]}; }

private:
    Double* data_ = nullptr;
    std::size_t count_ = 0;
};

/// Points to read.
using PointView = BasicPointView<const double>;

/// Points to change in place.
using PointSpan = BasicPointView<double>;

/// Numbers in a block of the C heap, released with the value. Moves, does not copy; `release` hands the block over.
template <class T>
class Array {
public:
    Array() = default;

    /// Takes over `size` elements at `data`, which came from malloc.
    Array(T* data, std::size_t size) : data_(data), size_(data == nullptr ? 0 : size) {}

    /// `size` elements, not cleared.
    explicit Array(std::size_t size)
        : data_(static_cast<T*>(std::malloc(std::max<std::size_t>(1, size * sizeof(T))))), size_(size)
    {
        if (data_ == nullptr)
            throw std::bad_alloc();
    }

    /// A contiguous range of elements.
    ///@{
    T* data() noexcept { return data_.get(); }
    const T* data() const noexcept { return data_.get(); }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    T& operator[](std::size_t i) { return data_.get()[i]; }
    const T& operator[](std::size_t i) const { return data_.get()[i]; }
    T* begin() noexcept { return data(); }
    T* end() noexcept { return data() + size_; }
    const T* begin() const noexcept { return data(); }
    const T* end() const noexcept { return data() + size_; }
    ///@}

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

/// Points that a function gives back: a range of `Point` over memory that the library filled. Moves, does not copy.
///
/// ```
/// korvale::Points border = korvale::offset(outline, 0.5).points;
/// for (auto [x, y, z] : border)
///     std::printf("%g %g %g\n", x, y, z);
/// std::vector<korvale::Point> mine(border.begin(), border.end());
/// ```
class Points {
public:
    Points() = default;

    /// Takes over 3 * `count` doubles at `coordinates`, which came from malloc.
    Points(double* coordinates, std::size_t count) : numbers_(coordinates, 3 * count) {}

    /// `count` points, not cleared.
    explicit Points(std::size_t count) : numbers_(3 * count) {}

    /// A contiguous range of points.
    ///@{
    std::size_t size() const noexcept { return numbers_.size() / 3; }
    bool empty() const noexcept { return size() == 0; }
    Point* data() noexcept { return reinterpret_cast<Point*>(numbers_.data()); }
    const Point* data() const noexcept { return reinterpret_cast<const Point*>(numbers_.data()); }
    Point& operator[](std::size_t i) { return data()[i]; }
    const Point& operator[](std::size_t i) const { return data()[i]; }
    Point* begin() noexcept { return data(); }
    Point* end() noexcept { return data() + size(); }
    const Point* begin() const noexcept { return data(); }
    const Point* end() const noexcept { return data() + size(); }
    ///@}

    /// x y z of all points.
    ///@{
    std::span<double> coordinates() noexcept { return {numbers_.data(), numbers_.size()}; }
    std::span<const double> coordinates() const noexcept { return {numbers_.data(), numbers_.size()}; }
    ///@}

    /// Hands the coordinates over, to be released with `free`; there are no points afterwards.
    double* release() noexcept { return numbers_.release(); }

private:
    Array<double> numbers_;
};

/// An outer outline and its holes: made from any range of ranges of points, without copying the points.
class ShapeView {
public:
    /// A range of outlines, the outer one first.
    template <std::ranges::input_range R>
    requires(!std::same_as<std::remove_cvref_t<R>, ShapeView> &&
             !PointLike<std::remove_cvref_t<std::ranges::range_reference_t<R>>> &&
             std::convertible_to<std::ranges::range_reference_t<R>, PointView>)
        ShapeView(R&& outlines) // NOLINT: views are made in passing
    {
        for (auto&& outline : outlines)
            outlines_.push_back(PointView(outline));
    }

    /// Outlines by name, as `{outer, hole, hole}`.
    ShapeView(std::initializer_list<PointView> outlines) : outlines_(outlines) {}

    /// A range of outlines.
    ///@{
    std::size_t size() const noexcept { return outlines_.size(); }
    PointView operator[](std::size_t i) const { return outlines_[i]; }
    auto begin() const noexcept { return outlines_.begin(); }
    auto end() const noexcept { return outlines_.end(); }
    ///@}

private:
    std::vector<PointView> outlines_;
};

namespace detail {

/// The record of korvale.h behind a handle of the C interface, which korvale.hpp names: so the face does without the
/// names of korvale.h.
template <class Handle>
struct RecordBehind;

template <class Handle>
using Record = typename RecordBehind<Handle>::type;

/// Throws what a call of the C interface tells, in the name of a function of this one.
inline void check(const char* function, korvale_status status, const korvale_error& error)
{
    if (status == KORVALE_OK)
        return;
    if (status == KORVALE_NO_MEMORY)
        throw std::bad_alloc();
    throw Error(function, error.argument, error.wanted, error.given);
}

/// Calls a function of the C interface, which takes an error record last, in the name of one of this.
template <class Call>
void call(const char* function, Call call)
{
    korvale_error error;
    check(function, call(&error), error);
}

/// A view as the C interface takes it.
///@{
inline korvale_points view_of(PointView points)
{
    return {points.data(), static_cast<std::int64_t>(points.size()), 0, 3, KORVALE_DOUBLE};
}
inline korvale_points_out view_of_output(PointSpan points)
{
    return {points.data(), static_cast<std::int64_t>(points.size()), 0, 3, KORVALE_DOUBLE};
}
inline korvale_indices view_of(std::span<const std::int32_t> indices)
{
    return {indices.data(), static_cast<std::int64_t>(indices.size()), 0, KORVALE_INT32};
}

/// Sizes of faces: there are some, if only none.
inline korvale_indices view_of_sizes(std::span<const std::int32_t> sizes)
{
    korvale_indices view = view_of(sizes);
    if (view.data == nullptr)
        view.data = ""; // somewhere
    return view;
}
///@}

/// "(1, 2, nan)".
inline std::string text_of_point(const Point& p)
{
    return "(" + text_of(p[0]) + ", " + text_of(p[1]) + ", " + text_of(p[2]) + ")";
}

/// A value to be used as a size of the library's arrays of `width` numbers.
inline std::int32_t count_for(const char* function, const char* argument, std::size_t count, std::size_t width)
{
    const std::size_t most = std::size_t{std::numeric_limits<std::int32_t>::max()} / width;
    if (count > most)
        throw Error(function, argument, "have at most " + text_of(most) + " elements", "it has " + text_of(count));
    return static_cast<std::int32_t>(count);
}

inline void require_finite(const char* function, const char* argument, double value)
{
    if (!is_finite(value))
        throw Error(function, argument, "be finite", "it is " + text_of(value));
}

inline void require_finite(const char* function, const char* argument, PointView points)
{
    if (std::ranges::all_of(points.coordinates(), is_finite))
        return;
    for (std::size_t i = 0; i < points.size(); ++i)
        for (const double v : points[i])
            if (!is_finite(v))
                throw Error(function, argument, "be finite",
                            "its point " + text_of(i) + " is " + text_of_point(points[i]));
}

inline void require_points(const char* function, const char* argument, PointView points, std::size_t least)
{
    if (points.size() < least)
        throw Error(function, argument, "have at least " + counted(least, "point"), "it has " + text_of(points.size()));
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
