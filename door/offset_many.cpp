// Many outlines moved in one call: the sweep of each writes its border straight into flat arrays. What cannot be used
// is refused before the first one moves.
#include "door/internal/offset.h"

#include <algorithm>
#include <iterator>
#include <numeric>

/// Borders, with room for a point for each vertex, or for what joins need.
struct korvale_borders {
    korvale::door::Block<korvale::door::Point> points;
    korvale::door::Block<int64_t> starts;
    korvale::door::Block<int32_t> sources;
    korvale::door::Block<uint8_t> collapsed, removed;
    korvale::door::Block<int32_t> merged_into;
    size_t outlines, vertices;
    int32_t first; ///< the number of the first vertex in the host's points

    /// The pages of a block are the system's until the borders that lie there are written.
    korvale_borders(size_t outline_count, size_t vertex_count, int32_t first_vertex)
        : outlines(outline_count), vertices(vertex_count), first(first_vertex)
    {
        const auto make_room = [](auto& block, size_t n) { block.make_room(std::max<size_t>(n, 1)); };
        make_room(points, vertices);
        make_room(starts, outlines + 1);
        make_room(sources, vertices);
        make_room(collapsed, outlines);
        make_room(removed, vertices);
        make_room(merged_into, vertices);
    }
};

namespace korvale::door {
namespace {

/// Vertices moved between two questions whether to go on: about a millisecond, or an outline that may take longer.
constexpr size_t kVerticesPerQuestion = 1024;

/// One distance for all outlines, or one for each.
class Distances {
public:
    Distances(const korvale_numbers* distances, int64_t outlines) : values_(distances_in(distances))
    {
        if (values_.size() != 1 && values_.size() != outlines)
            throw Refusal("distances", Text() << "have 1 value, or " << outlines << ", one for each outline",
                          Text() << "they have " << values_.size());
    }

    double operator[](size_t k) const { return values_.data()[values_.size() == 1 ? 0 : k]; }

private:
    NumbersIn values_;
};

void require_starts(const IndicesIn& starts, int64_t points)
{
    if (starts.size() == 0)
        throw Refusal("starts", "have one number more than there are outlines", "there are none");
    for (int64_t i = 0; i < starts.size(); ++i) {
        if (starts[i] < 0 || starts[i] > points)
            throw Refusal("starts", Text() << "be 0 to " << points,
                          Text() << "number " << i << " is " << starts.given(i));
        if (i > 0 && starts[i] < starts[i - 1])
            throw Refusal("starts", "ascend",
                          Text() << "number " << i << " is " << starts[i] << ", behind " << starts[i - 1]);
    }
}

/// The outlines of points in one buffer.
class Outlines {
public:
    /// Refuses outlines of fewer than three points, and numbers that are not finite.
    Outlines(const PointsIn& points, const IndicesIn& starts) : points_(points.points()), starts_(starts.indices())
    {
        for (size_t k = 0; k < size(); ++k)
            if (vertices(k) < 3)
                throw Refusal(name(k), "have at least 3 points", Text() << "it has " << vertices(k));
        if (!are_finite(points_))
            for (size_t k = 0; k < size(); ++k)
                require_finite((*this)[k], name(k));
    }

    size_t size() const { return starts_.size() - 1; }
    size_t vertices() const { return points_.size(); }
    size_t vertices(size_t k) const { return static_cast<size_t>(starts_[k + 1] - starts_[k]); }

    /// The number of the first vertex of outline k, in the host's points.
    int32_t start(size_t k) const { return starts_[k]; }

    /// How many vertices come before outline k.
    size_t before(size_t k) const { return static_cast<size_t>(starts_[k] - starts_[0]); }

    Outline operator[](size_t k) const { return points_.subspan(before(k), vertices(k)); }

private:
    static Text name(size_t k) { return Text() << "outline " << k; }

    Outline points_;
    std::span<const int32_t> starts_;
};

/// Numbers the vertices that the `size` points of the border of outline k belong to, and counts what vertices merged
/// into as the host counts its points.
void number_vertices(const Outlines& outlines, size_t k, size_t size, int32_t* sources, const korvale_borders& borders)
{
    const size_t n = outlines.vertices(k), before = outlines.before(k);
    const int32_t start = outlines.start(k);
    const uint8_t* const removed = borders.removed.data() + before;
    int32_t* const merged_into = borders.merged_into.data() + before;
    for (size_t i = 0; i < n; ++i)
        merged_into[i] += start;
    if (size == n) {
        std::iota(sources, sources + n, start);
        return;
    }
    for (size_t i = 0; i < n; ++i)
        if (removed[i] == 0)
            *sources++ = start + static_cast<int32_t>(i);
}

void move(const Outlines& outlines, const Distances& distances, Motion motion, const korvale_borders& borders)
{
    const Telling whole = motion.telling;
    const double share = 1.0 / static_cast<double>(std::max<size_t>(outlines.vertices(), 1));
    Mover mover;
    size_t end = 0, told = 0;
    borders.starts.data()[0] = 0;
    for (size_t k = 0; k < outlines.size(); ++k) {
        const size_t n = outlines.vertices(k), before = outlines.before(k);
        const bool is_long = n >= kVerticesPerQuestion;
        const double done = share * static_cast<double>(before);
        if (before - told >= kVerticesPerQuestion) {
            whole.tell(done);
            told = before;
        }
        motion.distance = distances[k];
        motion.telling = is_long ? whole.part(done, share * static_cast<double>(n)) : Telling();
        BorderOut output = {borders.points.data() + end, borders.removed.data() + before,
                            borders.merged_into.data() + before, 0, false};
        mover.move_into(outlines[k], motion, output);
        number_vertices(outlines, k, output.size, borders.sources.data() + end, borders);
        borders.collapsed.data()[k] = output.collapsed;
        end += output.size;
        borders.starts.data()[k + 1] = static_cast<int64_t>(end);
    }
}

/// With joins, of which nobody knows how many points they are before.
void move_joined(const Outlines& outlines, const Distances& distances, Motion motion, const Joins& joins,
                 korvale_borders& borders)
{
    const Telling whole = motion.telling;
    const double share = 1.0 / static_cast<double>(std::max<size_t>(outlines.vertices(), 1));
    Mover mover;
    Border border;
    Vector<Point> points;
    Vector<int32_t> sources;
    borders.starts.data()[0] = 0;
    for (size_t k = 0; k < outlines.size(); ++k) {
        const size_t n = outlines.vertices(k), before = outlines.before(k);
        const int32_t start = outlines.start(k);
        motion.distance = distances[k];
        motion.telling = whole.part(share * static_cast<double>(before), share * static_cast<double>(n));
        motion.telling.tell(0.0);
        motion.joins = joins.part(before, n);
        mover.move(outlines[k], motion, border);
        points.insert(points.end(), border.points.data(), border.points.data() + border.size);
        std::transform(border.sources.data(), border.sources.data() + border.size, std::back_inserter(sources),
                       [&](int32_t source) { return start + source; });
        std::copy_n(border.removed.data(), n, borders.removed.data() + before);
        std::transform(border.merged_into.data(), border.merged_into.data() + n, borders.merged_into.data() + before,
                       [&](int32_t heir) { return start + heir; });
        borders.collapsed.data()[k] = border.collapsed;
        borders.starts.data()[k + 1] = static_cast<int64_t>(points.size());
    }
    borders.points.make_room(points.size());
    borders.sources.make_room(points.size());
    std::copy(points.begin(), points.end(), borders.points.data());
    std::copy(sources.begin(), sources.end(), borders.sources.data());
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

korvale_status korvale_offset_many(const korvale_points* points, const korvale_indices* starts,
                                   const korvale_numbers* distances, const korvale_offset_options* options,
                                   korvale_borders** borders, korvale_error* error)
{
    if (borders != nullptr)
        *borders = nullptr;
    return answer(error, "korvale_offset_many", [&] {
        require_buffer(points, "points");
        const IndicesIn begins(starts, "starts");
        require_starts(begins, points->count);
        const int32_t first = begins[0], last = begins[begins.size() - 1];
        const korvale_points used = part_of(*points, first, last);
        const PointsIn in(&used, "points");
        const Outlines outlines(in, begins);
        const Distances moves(distances, begins.size() - 1);
        const korvale_offset_options how = options_of(options, korvale_offset_defaults);
        const JoinsIn joins(how, last - first);
        const Motion motion = motion_of(0.0, how);
        require(borders, "borders");
        Handle made(make_handle<korvale_borders>(outlines.size(), outlines.vertices(), first));
        if (joins.joins().are_some())
            move_joined(outlines, moves, motion, joins.joins(), *made);
        else
            move(outlines, moves, motion, *made);
        *borders = made.release();
    });
}

korvale_border_arrays korvale_borders_view(const korvale_borders* borders)
{
    if (borders == nullptr)
        return {};
    return {reinterpret_cast<double*>(borders->points.data()),
            borders->starts.data(),
            borders->sources.data(),
            borders->collapsed.data(),
            borders->removed.data(),
            borders->merged_into.data(),
            static_cast<int64_t>(borders->outlines),
            static_cast<int64_t>(borders->vertices),
            borders->first};
}

korvale_border_arrays korvale_borders_take(korvale_borders* borders)
{
    const korvale_border_arrays taken = korvale_borders_view(borders);
    if (borders == nullptr)
        return taken;
    borders->points.release();
    borders->starts.release();
    borders->sources.release();
    borders->collapsed.release();
    borders->removed.release();
    borders->merged_into.release();
    borders->outlines = borders->vertices = 0;
    borders->first = 0;
    return taken;
}

void korvale_borders_free(korvale_borders* borders)
{
    free_handle(borders);
}
