#pragma once

#include <vector>

#include "band.hpp"
#include "offset.hpp"

namespace korvale {

/// Values that have been carried along, one for each point of a result: a contiguous range. See `carry`.
template <class T>
class Carried {
public:
    /// What a range has.
    ///@{
    using value_type = T;
    using size_type = std::size_t;
    using const_iterator = const T*;
    ///@}

    /// The values of the caller themselves.
    explicit Carried(std::span<const T> values) noexcept : given_(values), is_view_(true) {}

    /// Values of its own.
    explicit Carried(std::vector<T> values) noexcept : own_(std::move(values)) {}

    /// Whether these are the caller's values themselves, where they lie: the points of the result are those of the
    /// outline in their order.
    bool is_view() const noexcept { return is_view_; }

    /// The values.
    ///@{
    std::size_t size() const noexcept { return is_view_ ? given_.size() : own_.size(); }
    bool empty() const noexcept { return size() == 0; }
    const T* data() const noexcept KORVALE_LIFETIMEBOUND { return is_view_ ? given_.data() : own_.data(); }
    const T* begin() const noexcept KORVALE_LIFETIMEBOUND { return data(); }
    const T* end() const noexcept KORVALE_LIFETIMEBOUND { return data() + size(); }
    const T& operator[](std::size_t i) const KORVALE_LIFETIMEBOUND { return data()[i]; }
    ///@}

private:
    std::span<const T> given_;
    std::vector<T> own_;
    bool is_view_ = false;
};

namespace detail {

/// Whose values the points of a result take.
struct Takers {
    std::size_t points;                    ///< of the result
    std::size_t values;                    ///< of the outline
    bool are_all;                          ///< there are no more values; else they may be of more than the result tells
    std::span<const std::int32_t> sources; ///< of the points; empty: those of the outline in their order
    std::vector<std::int32_t> room = {};   ///< for sources that had to be made
    std::span<const std::int32_t> merged_into = {}; ///< of the vertices
    std::size_t first = 0;                          ///< the number of the first vertex

    std::size_t source(std::size_t i) const { return sources.empty() ? i : static_cast<std::size_t>(sources[i]); }

    /// Whether value i goes to point i, for all of so many values.
    bool keep_all(std::size_t count) const
    {
        for (std::size_t i = 0; i < points; ++i)
            if (source(i) != i)
                return false;
        return points == count;
    }
};

/// As many values as numbers of points need.
inline std::size_t needed_by(std::span<const std::int32_t> numbers)
{
    return numbers.empty() ? 0 : static_cast<std::size_t>(*std::ranges::max_element(numbers)) + 1;
}

inline Takers takers_of(const Offset& offset)
{
    const std::size_t n = offset.removed.size();
    Takers takers = {offset.points.size(), n, true, offset.sources, {}, offset.merged_into};
    if (offset.sources.empty() && takers.points != n) {
        for (std::size_t i = 0; i < n && takers.room.size() < takers.points; ++i)
            if (offset.removed[i] == 0)
                takers.room.push_back(static_cast<std::int32_t>(i));
        takers.sources = takers.room;
        takers.points = takers.room.size();
    }
    return takers;
}

inline Takers takers_of(const Borders& borders)
{
    const std::size_t values = std::max(needed_by(borders.sources), borders.first + borders.removed.size());
    return {borders.points.size(), values, false, borders.sources, {}, borders.merged_into, borders.first};
}

inline Takers takers_of(const Rings& rings)
{
    return {rings.points.size(), needed_by(rings.sources), false, rings.sources};
}

inline Takers takers_of(const Band& band)
{
    const std::size_t n = band.removed.size();
    Takers takers = {band.outline.size(), n, true, band.sources};
    if (band.sources.empty()) {
        for (std::size_t i = 0; i < takers.points; ++i)
            takers.room.push_back(static_cast<std::int32_t>(i < n ? i : 2 * n - 1 - i));
        takers.sources = takers.room;
    }
    return takers;
}

/// A result whose points belong to points of an outline or a line.
template <class T>
concept Taking = requires(const T& result)
{
    takers_of(result);
};

/// A result that also tells which vertices merged.
template <class T>
concept Merging = std::same_as<T, Offset> || std::same_as<T, Borders>;

/// Refuses other than one value for each point.
template <class T>
std::optional<Failure> failure_of_values(std::span<const T> values, const Takers& takers)
{
    if (takers.are_all ? values.size() == takers.values : values.size() >= takers.values)
        return {};
    return Failure("carry", "values",
                   (takers.are_all ? "be " : "be at least ") + text_of(takers.values) +
                       ", one for each point of the outline",
                   "there are " + text_of(values.size()));
}

/// The vertex that each one is part of in the end, counted from the first one.
inline std::vector<std::size_t> heirs_of(const Takers& takers)
{
    std::vector<std::size_t> heirs(takers.merged_into.size());
    for (std::size_t i = 0; i < heirs.size(); ++i)
        heirs[i] = static_cast<std::size_t>(takers.merged_into[i]) - takers.first;
    bool goes_on = true;
    for (int round = 0; goes_on && round < 32; ++round) {
        goes_on = false;
        for (std::size_t& heir : heirs) {
            goes_on |= heirs[heir] != heir;
            heir = heirs[heir];
        }
    }
    return heirs;
}

/// A value for each point, mixed from all vertices that are part of the one it belongs to, where there are several.
template <class T, class Mix>
std::vector<T> mixed(std::span<const T> values, const Takers& takers, Mix& mix)
{
    const std::vector<std::size_t> heirs = heirs_of(takers);
    std::vector<std::size_t> ends(heirs.size() + 1), own(heirs.size());
    for (std::size_t heir : heirs)
        ++ends[heir + 1];
    for (std::size_t i = 0; i < heirs.size(); ++i)
        ends[i + 1] += ends[i]; // the starts of what each vertex gathers, which filling moves to their ends
    std::vector<std::size_t> order(heirs.size());
    for (std::size_t i = 0; i < heirs.size(); ++i)
        order[ends[heirs[i]]++] = i;

    std::vector<T> mixtures, together, made;
    for (std::size_t i = 0, start = 0; i < heirs.size(); start = ends[i++])
        if (ends[i] - start > 1) {
            together.clear();
            for (std::size_t k = start; k < ends[i]; ++k)
                together.push_back(values[takers.first + order[k]]);
            mixtures.push_back(mix(std::span<const T>(together)));
            own[i] = mixtures.size();
        }
    made.reserve(takers.points);
    for (std::size_t i = 0; i < takers.points; ++i) {
        const std::size_t vertex = takers.source(i), mixture = own[heirs[vertex - takers.first]];
        made.push_back(mixture == 0 ? values[vertex] : mixtures[mixture - 1]);
    }
    return made;
}

template <class T>
std::vector<T> gathered(std::span<const T> values, const Takers& takers)
{
    std::vector<T> made;
    made.reserve(takers.points);
    for (std::size_t i = 0; i < takers.points; ++i)
        made.push_back(values[takers.source(i)]);
    return made;
}

/// The values themselves where they `may_stay` and each goes to the point of its number, else those that are made.
template <class T, Taking Of, class Make>
Result<Carried<T>> carried(std::span<const T> values, const Of& result, bool may_stay, Make make)
{
    return within_memory("carry", [&]() -> Result<Carried<T>> {
        const Takers takers = takers_of(result);
        if (const std::optional<Failure> failure = failure_of_values(values, takers))
            return *failure;
        return may_stay && takers.keep_all(values.size()) ? Carried<T>(values) : Carried<T>(make(values, takers));
    });
}

} // namespace detail

/// `carry`, telling of failures by its result.
///@{
template <detail::Contiguous R, detail::Taking Of>
Result<Carried<detail::ElementValue<R>>> try_carry(const R& values KORVALE_LIFETIMEBOUND, const Of& result)
{
    using T = detail::ElementValue<R>;
    return detail::carried(std::span<const T>(values), result, true, detail::gathered<T>);
}
template <detail::Contiguous R, detail::Merging Of, class Mix>
requires(std::is_invocable_r_v<detail::ElementValue<R>, Mix&, std::span<const detail::ElementValue<R>>>)
    Result<Carried<detail::ElementValue<R>>> try_carry(const R& values KORVALE_LIFETIMEBOUND, const Of& result, Mix mix)
{
    using T = detail::ElementValue<R>;
    const bool are_all_there = std::ranges::find(result.removed, 1) == result.removed.end();
    return detail::carried(
        std::span<const T>(values), result, are_all_there,
        [&](std::span<const T> given, const detail::Takers& takers) { return detail::mixed(given, takers, mix); });
}
///@}

/// Takes a value for each point of an outline or a line, of any kind, along to the points of what was made of it: an
/// `Offset`, `Borders`, `Rings` or a `Band`. Each point takes the value of the one that it belongs to.
///
/// Nothing is copied where the points are those of the outline in their order, as those of an `Offset` with sharp
/// corners and all vertices: what comes back are the values themselves then, so these have to stay.
///
/// ```
/// const std::vector<Colour> colours = colours_of(outline);
/// const korvale::Offset border = korvale::offset(outline, 2, {.join = korvale::Join::round});
/// draw(border.points, korvale::carry(colours, border));
/// ```
///
/// Throws `Error` for other than one value for each point handed in. `Borders` and `Rings` do not know how many these
/// were: there have to be as many as they name.
template <detail::Contiguous R, detail::Taking Of>
Carried<detail::ElementValue<R>> carry(const R& values KORVALE_LIFETIMEBOUND, const Of& result)
{
    return try_carry(values, result).value();
}

/// The same, mixed where vertices merged: `mix` is given the values of those that are one vertex in the end, in the
/// order of the outline, and returns that of its points, also of removed ones that are kept. Nothing is copied where no
/// vertex was removed.
///
/// ```
/// const std::vector<double> heat = heat_of(outline);
/// const korvale::Offset border = korvale::offset(outline, -2);
/// draw(border.points, korvale::carry(heat, border, [](std::span<const double> merged) {
///     return *std::ranges::max_element(merged);
/// }));
/// ```
template <detail::Contiguous R, detail::Merging Of, class Mix>
requires(std::is_invocable_r_v<detail::ElementValue<R>, Mix&, std::span<const detail::ElementValue<R>>>)
    Carried<detail::ElementValue<R>> carry(const R& values KORVALE_LIFETIMEBOUND, const Of& result, Mix mix)
{
    return try_carry(values, result, std::move(mix)).value();
}

} // namespace korvale
