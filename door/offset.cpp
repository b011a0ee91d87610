// Outlines moved sideways, as hosts ask for it: into memory of their own, or into borders that a handle keeps.
#include "door/internal/offset.h"

/// The borders of the latest run.
struct korvale_offsetter {
    korvale::door::Mover mover;
    korvale::door::Vector<korvale::door::Border> borders;
    size_t count = 0; ///< borders that there are; the others keep their memory
    bool has_sources = false;
};

namespace korvale::door {
namespace {

void require_outline(const PointsIn& outline, std::string_view argument)
{
    require_points(outline, argument, 3);
}

void run(korvale_offsetter& offsetter, std::span<const Outline> outlines, Motion motion, const Joins& joins)
{
    motion.joins = joins;
    offsetter.has_sources = joins.are_some();
    offsetter.count = 0;
    if (offsetter.borders.size() < outlines.size())
        offsetter.borders.resize(outlines.size());
    if (outlines.size() == 1)
        offsetter.mover.move(outlines[0], motion, offsetter.borders[0]);
    else
        offsetter.mover.move_with_holes(outlines, motion, offsetter.borders);
    offsetter.count = outlines.size();
}

/// Border k of an offsetter, or null.
const Border* find_border(const korvale_offsetter* offsetter, int64_t k)
{
    if (offsetter == nullptr || k < 0 || k >= static_cast<int64_t>(offsetter->count))
        return nullptr;
    const Border& border = offsetter->borders[static_cast<size_t>(k)];
    return border.points.data() != nullptr ? &border : nullptr;
}

korvale_border shown(const Border& border)
{
    return {border.points.data()->data(),
            border.removed.data(),
            border.merged_into.data(),
            static_cast<int64_t>(border.size),
            static_cast<int64_t>(border.vertices),
            border.collapsed,
            0};
}

} // namespace

Motion motion_of(double distance, const korvale_offset_options& options)
{
    require_finite(distance, "distance");
    require_finite(options.height, "options.height");
    return {distance, options.height, options.keep_vertices != 0, options.split != 0, {options.progress, options.user}};
}

NumbersIn distances_in(const korvale_numbers* distances)
{
    NumbersIn numbers(distances, "distances");
    if (numbers.width() != 1)
        throw Refusal("distances", "have a width of 1", Text() << "it is " << numbers.width());
    for (int64_t i = 0; i < numbers.size(); ++i)
        if (const double distance = numbers.data()[i]; !is_finite(distance))
            throw Refusal("distances", "be finite", Text() << "number " << i << " is " << distance);
    return numbers;
}

} // namespace korvale::door

using namespace korvale::door;

void korvale_offset_defaults(korvale_offset_options* options, size_t size)
{
    give_defaults(
        options, size,
        korvale_offset_options{sizeof *options, 1, 1, 0, 0.0, nullptr, nullptr, KORVALE_JOIN_MITER, 0, 0.0, 0.0, {}});
}

korvale_status korvale_offset(const korvale_points* outline, double distance, const korvale_offset_options* options,
                              korvale_border* border, korvale_error* error)
{
    return answer(error, "korvale_offset", [&] {
        const PointsIn in(outline, "outline");
        require_outline(in, "outline");
        const korvale_offset_options how = options_of(options, korvale_offset_defaults);
        const Motion motion = motion_of(distance, how);
        if (JoinsIn(how, in.size()).joins().are_some())
            throw Refusal("options.join", "leave corners sharp where there is no room for more points", "it does not");
        require(border, "border");
        require(border->points, "border.points");
        BorderOut output = {reinterpret_cast<Point*>(border->points), border->removed, border->merged_into, 0, false};
        Mover().move_into(in.points(), motion, output);
        border->count = static_cast<int64_t>(output.size);
        border->vertices = in.size();
        border->collapsed = output.collapsed;
    });
}

korvale_status korvale_offsetter_new(korvale_offsetter** offsetter, korvale_error* error)
{
    return answer(error, "korvale_offsetter_new", [&] {
        require(offsetter, "offsetter");
        *offsetter = nullptr;
        *offsetter = make_handle<korvale_offsetter>();
    });
}

korvale_status korvale_offsetter_run(korvale_offsetter* offsetter, const korvale_points* outlines, int64_t count,
                                     double distance, const korvale_offset_options* options, korvale_error* error)
{
    return answer(error, "korvale_offsetter_run", [&] {
        require(offsetter, "offsetter");
        if (count < 1)
            throw Refusal("outlines", "have an outer outline", "there is none");
        require(outlines, "outlines");
        if (count == 1) { // without a list, for the sake of speed
            const PointsIn in(outlines, "outline 0");
            require_outline(in, "outline 0");
            const Outline outline = in.points();
            const korvale_offset_options how = options_of(options, korvale_offset_defaults);
            const JoinsIn joins(how, in.size());
            run(*offsetter, {&outline, 1}, motion_of(distance, how), joins.joins());
            return;
        }
        Vector<PointsIn> ins;
        Vector<Outline> views;
        ins.reserve(static_cast<size_t>(count));
        views.reserve(static_cast<size_t>(count));
        int64_t points = 0;
        for (int64_t k = 0; k < count; ++k) {
            const Text name = Text() << "outline " << k;
            ins.emplace_back(&outlines[k], name);
            require_outline(ins.back(), name);
            views.push_back(ins.back().points());
            points += ins.back().size();
        }
        const korvale_offset_options how = options_of(options, korvale_offset_defaults);
        const JoinsIn joins(how, points);
        run(*offsetter, views, motion_of(distance, how), joins.joins());
    });
}

int64_t korvale_offsetter_count(const korvale_offsetter* offsetter)
{
    return offsetter == nullptr ? 0 : static_cast<int64_t>(offsetter->count);
}

korvale_border korvale_offsetter_border(const korvale_offsetter* offsetter, int64_t k)
{
    const Border* const border = find_border(offsetter, k);
    return border == nullptr ? korvale_border{} : shown(*border);
}

const int32_t* korvale_offsetter_sources(const korvale_offsetter* offsetter, int64_t k)
{
    const Border* const border = find_border(offsetter, k);
    return border == nullptr || !offsetter->has_sources ? nullptr : border->sources.data();
}

korvale_border korvale_offsetter_take(korvale_offsetter* offsetter, int64_t k)
{
    if (find_border(offsetter, k) == nullptr)
        return {};
    Border& border = offsetter->borders[static_cast<size_t>(k)];
    const korvale_border taken = shown(border);
    border.points.release();
    border.removed.release();
    border.merged_into.release();
    return taken;
}

void korvale_offsetter_free(korvale_offsetter* offsetter)
{
    free_handle(offsetter);
}
