#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <ranges>
#include <span>
#include <type_traits>
#include <vector>

#include "refusal.hpp"

/// What holds on to a parameter or to the value itself, where the compiler warns of those that are gone.
#if defined(__clang__)
#define KORVALE_LIFETIMEBOUND [[clang::lifetimebound]]
#else
#define KORVALE_LIFETIMEBOUND
#endif

namespace korvale {

/// A point or vector x, y, z. Types of your own serve as well wherever points are read, see `PointView`.
using Point = std::array<double, 3>;

/// The three vertices of a triangle, counter-clockwise seen from outside.
using Triangle = std::array<std::int32_t, 3>;

namespace detail {

/// A class with members x, y and, of three, z of type Number, side by side.
///@{
template <class T, class Number>
concept HasXy = std::is_class_v<T> && std::is_standard_layout_v<T> && requires(T& p)
{
    requires std::same_as<decltype((p.x)), Number&>;
    requires std::same_as<decltype((p.y)), Number&>;
    requires offsetof(T, y)
    == offsetof(T, x) + sizeof(Number);
};
template <class T, class Number>
concept HasXyz = HasXy<T, Number> && requires(T& p)
{
    requires std::same_as<decltype((p.z)), Number&>;
    requires offsetof(T, z)
    == offsetof(T, y) + sizeof(Number);
};
///@}

/// `n` of type Number and nothing else, behind an index. A range of two has to tell so, as a span is as large.
template <class T, class Number, std::size_t n>
concept Indexed = !std::is_pointer_v<T> && std::is_trivially_copyable_v<T> && std::is_standard_layout_v<T> &&
                  !std::ranges::enable_view<T> && sizeof(T) == n * sizeof(Number) &&
                  (n == 3 || std::is_array_v<T> || !std::ranges::range<T> || requires { std::tuple_size<T>::value; }) &&
                  requires(T & p)
{
    requires std::same_as<decltype((p[0])), Number&>;
};

/// Where the coordinates of a point of some type are.
struct PointLayout {
    std::int32_t dim;   // 0: it is no point
    std::int32_t kind;  // KORVALE_DOUBLE or KORVALE_FLOAT
    std::size_t offset; // of the first one
};

template <class T>
constexpr PointLayout layout_of_point()
{
    if constexpr (HasXyz<T, double>)
        return {3, KORVALE_DOUBLE, offsetof(T, x)};
    else if constexpr (HasXyz<T, float>)
        return {3, KORVALE_FLOAT, offsetof(T, x)};
    else if constexpr (requires(T & p) { p.z; })
        return {};
    else if constexpr (HasXy<T, double>)
        return {2, KORVALE_DOUBLE, offsetof(T, x)};
    else if constexpr (HasXy<T, float>)
        return {2, KORVALE_FLOAT, offsetof(T, x)};
    else if constexpr (Indexed<T, double, 3>)
        return {3, KORVALE_DOUBLE, 0};
    else if constexpr (Indexed<T, float, 3>)
        return {3, KORVALE_FLOAT, 0};
    else if constexpr (Indexed<T, double, 2>)
        return {2, KORVALE_DOUBLE, 0};
    else if constexpr (Indexed<T, float, 2>)
        return {2, KORVALE_FLOAT, 0};
    else
        return {};
}

template <class T>
concept Number = std::same_as<T, double> || std::same_as<T, float>;

template <class T>
concept AnyPoint = layout_of_point<T>()
.dim != 0;

/// A kind of numbers of points.
template <class T>
concept Index = std::integral<T> && !std::same_as<T, bool> && sizeof(T) >= 2 && sizeof(T) <= 8 &&
                !std::same_as<T, wchar_t> && !std::same_as<T, char16_t> && !std::same_as<T, char32_t>;

template <Index T>
constexpr std::int32_t kind_of_index()
{
    if (sizeof(T) == 8)
        return KORVALE_INT64; // unsigned ones that it does not hold are refused like others that name no point
    if (sizeof(T) == 4)
        return std::is_signed_v<T> ? KORVALE_INT32 : KORVALE_UINT32;
    return std::is_signed_v<T> ? KORVALE_INT16 : KORVALE_UINT16;
}

template <class R>
concept Contiguous = std::ranges::contiguous_range<R> && std::ranges::sized_range<R>;

/// Whether the elements of R go with it, unlike those of a span.
template <class R>
concept Container = !std::ranges::enable_borrowed_range<std::remove_cvref_t<R>>;

template <class R>
using Element = std::remove_reference_t<std::ranges::range_reference_t<R>>;

template <class R>
using ElementValue = std::remove_const_t<Element<R>>;

/// Whether elements of R can be seen as coordinates of kind Double (const or not).
template <class R, class Double>
concept Coordinates = Contiguous<R> &&
    (std::is_const_v<Double> || !std::is_const_v<Element<R>>)&&(Number<ElementValue<R>> || AnyPoint<ElementValue<R>>);

/// A pointer to plain bytes, const where From is.
template <class Double>
using Bytes = std::conditional_t<std::is_const_v<Double>, const char, char>;

} // namespace detail

/// A type laid out as three doubles and nothing else: with members x, y, z or with an index.
template <class T>
concept PointLike = std::is_trivially_copyable_v<T> && std::is_standard_layout_v<T> &&
                        sizeof(T) == 3 * sizeof(double) &&
                    alignof(T) == alignof(double) && (detail::HasXyz<T, double> || detail::Indexed<T, double, 3>);

class AnyPoints;

/// Points of someone else, read where they are. It must not outlive them, so it is not made of temporaries; parameters
/// of type `AnyPoints` take those as well.
///
/// It is made from any contiguous range
/// - of points with three, or two, doubles or floats: members x, y, z side by side, whatever else there is, or an index
///   and nothing else, as in `std::array<float, 3>`,
/// - of anything that has a point as a member, as in `PointView(vertices, &Vertex::position)`,
/// - of plain doubles or floats, three a point.
///
/// Points with two coordinates have z = 0. Packed doubles x y z are read by the library in place, others by way of a
/// copy for the time of a call.
template <class Double>
class BasicPointView {
public:
    BasicPointView() = default;

    /// All of a range; plain numbers have to come in threes.
    ///@{
    template <class R>
    requires(!std::same_as<std::remove_cvref_t<R>, BasicPointView> && detail::Coordinates<R, Double> &&
             detail::Container<R> && std::is_lvalue_reference_v<R>)
        BasicPointView(R&& range KORVALE_LIFETIMEBOUND) // NOLINT: views are made in passing
        : BasicPointView(see(range))
    {
    }
    template <class R>
    requires(!std::same_as<std::remove_cvref_t<R>, BasicPointView> && detail::Coordinates<R, Double> &&
             !detail::Container<R>) BasicPointView(R&& range) // NOLINT
        : BasicPointView(see(range))
    {
    }
    ///@}

    /// The range would be gone: give it a name, or, for an argument, take `AnyPoints`.
    template <class R>
    requires(!std::same_as<std::remove_cvref_t<R>, BasicPointView> && detail::Coordinates<R, Double> &&
             detail::Container<R> && !std::is_lvalue_reference_v<R>) BasicPointView(R&& range)
    = delete;

    /// The points that are a member of the elements of a range.
    template <class R, class Member, class Whole>
    requires(detail::Contiguous<R>&& std::ranges::borrowed_range<R>&&
                 std::derived_from<detail::ElementValue<R>, Whole>&& detail::AnyPoint<Member> &&
             (std::is_const_v<Double> || !std::is_const_v<detail::Element<R>>))
        BasicPointView(R&& range, Member Whole::*member)
    {
        constexpr detail::PointLayout layout = detail::layout_of_point<Member>();
        count_ = std::ranges::size(range);
        if (count_ > 0)
            data_ = reinterpret_cast<Byte*>(&(std::ranges::data(range)->*member)) + layout.offset;
        stride_ = sizeof(detail::Element<R>);
        dim_ = layout.dim;
        kind_ = layout.kind;
    }

    /// Points to change may be read.
    template <class Other>
    requires(std::is_const_v<Double>&& std::same_as<Other, double>)
        BasicPointView(const BasicPointView<Other>& other) // NOLINT
        : data_(other.data_), count_(other.count_), stride_(other.stride_), dim_(other.dim_), kind_(other.kind_)
    {
    }

    /// `count` points from `first` on, a double or a float, `stride` bytes from one to the next (0: packed), of `dim`
    /// coordinates, 2 or 3.
    template <class Number>
    requires(detail::Number<std::remove_const_t<Number>> &&
             (std::is_const_v<Double> || !std::is_const_v<Number>)) static BasicPointView
        at(Number* first, std::size_t count, std::ptrdiff_t stride = 0, int dim = 3)
    {
        BasicPointView view;
        view.data_ = reinterpret_cast<Byte*>(first);
        view.count_ = count;
        view.stride_ = stride != 0 ? stride : dim * std::ptrdiff_t{sizeof(Number)};
        view.dim_ = dim;
        view.kind_ = kind_of<std::remove_const_t<Number>>();
        return view;
    }

    /// How many points there are.
    ///@{
    std::size_t size() const noexcept { return count_; }
    bool empty() const noexcept { return count_ == 0; }
    ///@}

    /// Whether the points are packed doubles x y z.
    bool is_packed() const noexcept { return kind_ == KORVALE_DOUBLE && dim_ == 3 && stride_ == 3 * sizeof(double); }

    /// The first coordinate of the first point, where the points are packed doubles x y z; else null.
    Double* data() const noexcept { return is_packed() ? reinterpret_cast<Double*>(data_) : nullptr; }

    /// x y z of all points, where they are packed doubles x y z; else empty.
    std::span<Double> coordinates() const noexcept
    {
        return is_packed() ? std::span<Double>(data(), 3 * count_) : std::span<Double>();
    }

    /// Point i, as a copy.
    Point operator[](std::size_t i) const noexcept
    {
        const Byte* const first = data_ + static_cast<std::ptrdiff_t>(i) * stride_;
        return kind_ == KORVALE_FLOAT ? point_at<float>(first) : point_at<double>(first);
    }

    /// Its layout as the C interface takes it, a `korvale_points` or, for points to change, a `korvale_points_out`.
    auto layout() const noexcept
    {
        using Layout = std::conditional_t<std::is_const_v<Double>, korvale_points, korvale_points_out>;
        return Layout{data_, static_cast<std::int64_t>(count_), stride_, dim_, kind_};
    }

private:
    template <class>
    friend class BasicPointView;
    friend class AnyPoints;
    using Byte = detail::Bytes<Double>;

    template <class Number>
    static constexpr std::int32_t kind_of()
    {
        return std::same_as<Number, float> ? KORVALE_FLOAT : KORVALE_DOUBLE;
    }

    template <class R>
    static BasicPointView see(R&& range)
    {
        using Value = detail::ElementValue<R>;
        const auto n = static_cast<std::size_t>(std::ranges::size(range));
        BasicPointView view;
        view.data_ = reinterpret_cast<Byte*>(std::ranges::data(range));
        if constexpr (detail::Number<Value>) {
            if (n % 3 != 0)
                detail::raise(Error("points", "the coordinates", "come in threes", "there are " + detail::text_of(n)));
            view.count_ = n / 3;
            view.stride_ = 3 * sizeof(Value);
            view.kind_ = kind_of<Value>();
        } else {
            constexpr detail::PointLayout layout = detail::layout_of_point<Value>();
            if (n > 0)
                view.data_ += layout.offset;
            view.count_ = n;
            view.stride_ = sizeof(Value);
            view.dim_ = layout.dim;
            view.kind_ = layout.kind;
        }
        return view;
    }

    template <class Number>
    Point point_at(const Byte* first) const noexcept
    {
        Number numbers[3] = {};
        std::memcpy(numbers, first, static_cast<std::size_t>(dim_) * sizeof(Number));
        return {numbers[0], numbers[1], numbers[2]};
    }

    Byte* data_ = nullptr;
    std::size_t count_ = 0;
    std::ptrdiff_t stride_ = 3 * sizeof(double); // bytes from one point to the next
    std::int32_t dim_ = 3;
    std::int32_t kind_ = KORVALE_DOUBLE;
};

/// Points to read.
using PointView = BasicPointView<const double>;

/// Points to change in place, of any layout.
using PointSpan = BasicPointView<double>;

/// Points as an argument: all that `PointView` takes, temporaries, and points written out as
/// `{{0, 0, 0}, {1, 0, 0}}`, all of which outlive the call. It cannot be kept.
class AnyPoints {
public:
    /// All of a range.
    template <class R>
    requires(detail::Coordinates<R, const double>) AnyPoints(R&& range KORVALE_LIFETIMEBOUND) // NOLINT: made in passing
        : view_(PointView::see(range))
    {
    }

    /// Points written out.
    AnyPoints(std::initializer_list<Point> points KORVALE_LIFETIMEBOUND) // NOLINT
        : view_(PointView::at(points.size() == 0 ? nullptr : points.begin()->data(), points.size()))
    {
    }

    /// What is a view or becomes one.
    template <class T>
    requires(!detail::Coordinates<T, const double> && !std::same_as<std::remove_cvref_t<T>, AnyPoints> &&
             std::convertible_to<T, PointView>) AnyPoints(T&& points) // NOLINT
        : view_(std::forward<T>(points))
    {
    }

    AnyPoints(const AnyPoints&) = delete;
    AnyPoints& operator=(const AnyPoints&) = delete;

    /// The points, which are there until the call ends.
    ///@{
    PointView view() const noexcept { return view_; }
    operator PointView() const noexcept { return view_; } // NOLINT
    ///@}

    /// How many there are.
    std::size_t size() const noexcept { return view_.size(); }

private:
    PointView view_;
};

/// Triangles of someone else, by their corners, three points a triangle: made from whatever a `PointView` is made from,
/// without a copy. It must not outlive the range.
class TriangleView {
public:
    TriangleView() = default;

    /// All of a range.
    ///@{
    template <class R>
    requires(!std::same_as<std::remove_cvref_t<R>, TriangleView> && detail::Coordinates<R, const double> &&
             detail::Container<R>) TriangleView(R&& corners KORVALE_LIFETIMEBOUND) // NOLINT: views are made in passing
        : TriangleView(PointView(std::forward<R>(corners)))
    {
    }
    template <class R>
    requires(!std::same_as<std::remove_cvref_t<R>, TriangleView> && detail::Coordinates<R, const double> &&
             !detail::Container<R>) TriangleView(R&& corners) // NOLINT
        : TriangleView(PointView(std::forward<R>(corners)))
    {
    }
    ///@}

    /// Corners, which have to come in threes.
    TriangleView(PointView corners) : corners_(corners) // NOLINT
    {
        if (corners.size() % 3 != 0)
            detail::raise(
                Error("triangles", "the corners", "come in threes", "there are " + detail::text_of(corners.size())));
    }

    /// How many triangles there are.
    std::size_t size() const noexcept { return corners_.size() / 3; }

    /// The corners, three a triangle.
    PointView corners() const noexcept { return corners_; }

    /// The numbers of the triangles, nine each, where they are packed doubles; else null and empty.
    ///@{
    const double* data() const noexcept { return corners_.data(); }
    std::span<const double> coordinates() const noexcept { return corners_.coordinates(); }
    ///@}

private:
    PointView corners_;
};

/// Triangles by their corners as an argument: all that `TriangleView` takes, temporaries, and points written out. It
/// cannot be kept.
class AnyCorners {
public:
    /// A view, or corners of any kind, which have to come in threes.
    ///@{
    AnyCorners(TriangleView triangles) : view_(triangles) {} // NOLINT: made in passing
    template <class T>
    requires(!std::same_as<std::remove_cvref_t<T>, TriangleView> && !std::same_as<std::remove_cvref_t<T>, AnyCorners> &&
             std::convertible_to<T, AnyPoints>) AnyCorners(T&& corners KORVALE_LIFETIMEBOUND) // NOLINT
        : view_(AnyPoints(corners).view())
    {
    }
    AnyCorners(std::initializer_list<Point> corners KORVALE_LIFETIMEBOUND)
        : view_(AnyPoints(corners).view()) {} // NOLINT
    ///@}

    AnyCorners(const AnyCorners&) = delete;
    AnyCorners& operator=(const AnyCorners&) = delete;

    /// The triangles, which are there until the call ends.
    TriangleView view() const noexcept { return view_; }

private:
    TriangleView view_;
};

/// Numbers as an argument, such as those of points or corners: any contiguous range of integers of 16, 32 or 64 bits,
/// signed or not, or `{4, 3, 3}`. It cannot be kept.
class AnyIndices {
public:
    AnyIndices() = default;

    /// All of a range.
    template <detail::Contiguous R>
    requires(detail::Index<detail::ElementValue<R>>)
        AnyIndices(R&& range KORVALE_LIFETIMEBOUND) // NOLINT: made in passing
        : layout_{std::ranges::data(range), static_cast<std::int64_t>(std::ranges::size(range)), 0,
                  detail::kind_of_index<detail::ElementValue<R>>()}
    {
    }

    /// Numbers written out.
    AnyIndices(std::initializer_list<std::int32_t> numbers KORVALE_LIFETIMEBOUND) // NOLINT
        : layout_{numbers.begin(), static_cast<std::int64_t>(numbers.size()), 0, KORVALE_INT32}
    {
    }

    AnyIndices(const AnyIndices&) = delete;
    AnyIndices& operator=(const AnyIndices&) = delete;

    /// Where they are, as the C interface takes it.
    const korvale_indices& layout() const noexcept { return layout_; }

private:
    korvale_indices layout_ = {};
};

/// Groups of n numbers of points as an argument: any contiguous range of arrays of n integers of 16, 32 or 64 bits, or
/// of plain integers, n after one another, or groups written out, as `{{0, 1, 2}, {2, 1, 3}}`. It cannot be kept.
template <std::size_t n>
class AnyGroups {
public:
    AnyGroups() = default;

    /// All of a range of plain integers, which have to come in groups.
    template <detail::Contiguous R>
    requires(detail::Index<detail::ElementValue<R>>)
        AnyGroups(R&& range KORVALE_LIFETIMEBOUND) // NOLINT: made in passing
        : layout_{std::ranges::data(range), static_cast<std::int64_t>(std::ranges::size(range)), 0,
                  detail::kind_of_index<detail::ElementValue<R>>()}
    {
        if (std::ranges::size(range) % n != 0)
            detail::raise(Error(n == 3 ? "triangles" : "edges", n == 3 ? "the corners" : "the ends",
                                n == 3 ? "come in threes" : "come in twos",
                                "there are " + detail::text_of(std::ranges::size(range))));
    }

    /// All of a range of groups.
    template <detail::Contiguous R>
    requires requires(detail::ElementValue<R>& group)
    {
        requires detail::Indexed<detail::ElementValue<R>, std::remove_reference_t<decltype(group[0])>, n>;
        requires detail::Index<std::remove_reference_t<decltype(group[0])>>;
    }
    AnyGroups(R&& range KORVALE_LIFETIMEBOUND) // NOLINT
        : layout_{std::ranges::data(range), static_cast<std::int64_t>(n * std::ranges::size(range)), 0,
                  detail::kind_of_index<std::remove_cvref_t<decltype((*std::ranges::data(range))[0])>>()}
    {
    }

    /// Groups written out.
    AnyGroups(std::initializer_list<std::array<std::int32_t, n>> groups KORVALE_LIFETIMEBOUND) // NOLINT
        : layout_{groups.begin(), static_cast<std::int64_t>(n * groups.size()), 0, KORVALE_INT32}
    {
    }

    AnyGroups(const AnyGroups&) = delete;
    AnyGroups& operator=(const AnyGroups&) = delete;

    /// How many groups there are.
    std::size_t size() const noexcept { return static_cast<std::size_t>(layout_.count) / n; }

    /// Where their numbers are, as the C interface takes it.
    const korvale_indices& layout() const noexcept { return layout_; }

private:
    korvale_indices layout_ = {};
};

/// Triangles on shared vertices, three numbers each, as an argument.
using AnyTriangles = AnyGroups<3>;

/// Edges, two numbers of points each, as an argument.
using AnyEdges = AnyGroups<2>;

class AnyOutlines;

/// An outer outline and its holes, each a `PointView`: made from a range of ranges of points, without copying the
/// points.
class ShapeView {
public:
    /// A range of outlines, the outer one first.
    template <std::ranges::input_range R>
    requires(!std::same_as<std::remove_cvref_t<R>, ShapeView> &&
             !detail::AnyPoint<std::remove_cvref_t<std::ranges::range_reference_t<R>>> &&
             std::convertible_to<std::ranges::range_reference_t<R>, PointView> &&
             (std::ranges::borrowed_range<R> || std::same_as<std::ranges::range_value_t<R>, PointView>))
        ShapeView(R&& outlines KORVALE_LIFETIMEBOUND) // NOLINT: views are made in passing
    {
        for (auto&& outline : outlines)
            outlines_.push_back(PointView(outline));
    }

    /// The outlines would be gone: give them a name, or, for an argument, take `AnyShape`.
    template <std::ranges::input_range R>
    requires(!std::same_as<std::remove_cvref_t<R>, ShapeView> &&
             !detail::AnyPoint<std::remove_cvref_t<std::ranges::range_reference_t<R>>> &&
             std::convertible_to<std::ranges::range_reference_t<R>, PointView> && !std::ranges::borrowed_range<R> &&
             !std::same_as<std::ranges::range_value_t<R>, PointView>) ShapeView(R&& outlines)
    = delete;

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
    friend class AnyOutlines;
    ShapeView() = default;

    std::vector<PointView> outlines_;
};

/// Outlines as an argument, such as an outer one and its holes: all that `ShapeView` takes, temporaries, and outlines
/// written out. It cannot be kept.
class AnyOutlines {
public:
    /// A range of outlines, the outer one first.
    template <std::ranges::input_range R>
    requires(!std::same_as<std::remove_cvref_t<R>, ShapeView> &&
             !std::derived_from<std::remove_cvref_t<R>, AnyOutlines> &&
             !detail::AnyPoint<std::remove_cvref_t<std::ranges::range_reference_t<R>>> &&
             std::convertible_to<std::ranges::range_reference_t<R>, PointView>)
        AnyOutlines(R&& outlines KORVALE_LIFETIMEBOUND) // NOLINT: made in passing
    {
        for (auto&& outline : outlines)
            view_.outlines_.push_back(PointView(outline));
    }

    /// Outlines of any kind, as `{outer, hole, hole}`.
    AnyOutlines(std::initializer_list<AnyPoints> outlines KORVALE_LIFETIMEBOUND) // NOLINT
    {
        for (const AnyPoints& outline : outlines)
            view_.outlines_.push_back(outline.view());
    }

    /// A view.
    AnyOutlines(ShapeView outlines) : view_(std::move(outlines)) {} // NOLINT

    AnyOutlines(const AnyOutlines&) = delete;
    AnyOutlines& operator=(const AnyOutlines&) = delete;

    /// The outlines, which are there until the call ends.
    ///@{
    const ShapeView& view() const noexcept KORVALE_LIFETIMEBOUND { return view_; }
    operator const ShapeView&() const noexcept KORVALE_LIFETIMEBOUND { return view_; } // NOLINT
    std::size_t size() const noexcept { return view_.size(); }
    PointView operator[](std::size_t i) const { return view_[i]; }
    auto begin() const noexcept { return view_.begin(); }
    auto end() const noexcept { return view_.end(); }
    ///@}

protected:
    /// A single outline.
    explicit AnyOutlines(PointView outline) { view_.outlines_.push_back(outline); }

private:
    ShapeView view_;
};

/// A shape as an argument: a single outline, of all kinds that `AnyPoints` takes, or an outer outline and its holes. It
/// cannot be kept.
class AnyShape : public AnyOutlines {
public:
    /// Outlines, the outer one first.
    ///@{
    template <class T>
    requires(!std::derived_from<std::remove_cvref_t<T>, AnyOutlines> && std::convertible_to<T, AnyOutlines>)
        AnyShape(T&& outlines KORVALE_LIFETIMEBOUND) // NOLINT: made in passing
        : AnyOutlines(std::forward<T>(outlines))
    {
    }
    AnyShape(std::initializer_list<AnyPoints> outlines KORVALE_LIFETIMEBOUND) : AnyOutlines(outlines) {} // NOLINT
    ///@}

    /// A single outline, or its points written out.
    ///@{
    template <class T>
    requires(!std::convertible_to<T, AnyOutlines> && !std::derived_from<std::remove_cvref_t<T>, AnyOutlines> &&
             std::convertible_to<T, AnyPoints>) AnyShape(T&& outline KORVALE_LIFETIMEBOUND) // NOLINT: made in passing
        : AnyOutlines(AnyPoints(outline).view())
    {
    }
    AnyShape(std::initializer_list<Point> points KORVALE_LIFETIMEBOUND)
        : AnyOutlines(AnyPoints(points).view()) {} // NOLINT
    ///@}
};

} // namespace korvale
