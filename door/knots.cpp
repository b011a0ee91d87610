// Knots are found as stay points are in "Mining user similarity based on location history" by Q. Li, Y. Zheng, X. Xie,
// Y. Chen, W. Liu and W.-Y. Ma, 2008: a run of points near its first one becomes their mean. Time is not known here, so
// a run counts where the line turns back in it, more often than in any bend. What is left of a knot larger than the
// reach turns back beside its mean: later passes take that in, straighten the ways in and out, and put an end of the
// line that lies beside a knot into it.
//
// Invariant: bundles follow each other without gaps. A pass looks at each of them a few times, however many turn: a
// search ends where it has met enough to know.
#include "door/internal/knots.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "border/internal/sweep.h"

namespace korvale::door {
namespace {

/// A turn with a smaller cosine, 96 degrees and more, turns back. Right angles never do, however they are rounded.
constexpr double kBack = -0.1;
/// A turn with a smaller cosine, 60 degrees and more, makes a zigzag with one that turns back to the other side.
constexpr double kZigzag = 0.5;
/// A turn with a smaller cosine, 46 degrees and more, right beside a knot is part of it.
constexpr double kBeside = 0.7;
/// No turn has a smaller one: only ends count.
constexpr double kNone = -2.0;
/// A turn with a smaller cosine, 127 degrees and more, counts twice.
constexpr double kSharp = -0.6;
/// Turns that weigh so much to one side go around further than the corners of a triangle do.
constexpr int kWhirl = 8;
/// A search that has met more turns than this without a knot ends.
constexpr int kMost = 4;
/// Where an open line ends, in the place of a turn: beside a knot its end belongs to it.
constexpr int8_t kEnd = 9;

struct Pass {
    double reach;  ///< in reaches
    double cosine; ///< of the turns that count
    bool makes_knots;
};
constexpr Pass kPasses[] = {{1.0, kBack, true},   {1.5, kBack, true},    {2.0, kBack, true},
                            {0.5, kZigzag, true}, {0.5, kBeside, false}, {1.0, kNone, false}};

struct Bundling {
    Vector<Bundle> bundles;
    Vector<int8_t> turn; ///< what the line's turn at each bundle weighs, positive to the left; 0: none; or kEnd
};

/// Weighs the turns at all bundles but the first and the last one: 4 where it is sharp, 2 where it turns back, else 1.
/// Of several bundles at one place the last one has it.
void find_turns(Bundling& b, double cosine, bool has_ends)
{
    b.turn.assign(b.bundles.size(), 0);
    b.turn.front() = b.turn.back() = has_ends ? kEnd : 0;
    Place before = {0, 0};
    for (size_t i = 0; i + 1 < b.bundles.size(); ++i) {
        Place after = b.bundles[i + 1].place - b.bundles[i].place;
        const double size = std::sqrt(dot(after, after));
        if (!(size > border::kHair))
            continue;
        after = {after.x / size, after.y / size};
        if (dot(before, after) < cosine && (before.x != 0 || before.y != 0)) {
            const double turn = dot(before, after);
            const int weight = turn < kSharp ? 4 : turn < kBack ? 2 : 1;
            b.turn[i] = static_cast<int8_t>(cross(before, after) > 0 ? weight : -weight);
        }
        before = after;
    }
}

/// What a search has met.
struct Met {
    int left = 0, right = 0; ///< weights of the turns
    int turns = 0;           ///< how many they are
    bool has_end = false;
    bool has_knot = false;

    void meet(const Bundle& bundle, int turn)
    {
        has_knot |= bundle.is_knot;
        has_end |= turn == kEnd;
        if (bundle.is_knot || turn == kEnd)
            return;
        ++turns;
        (turn > 0 ? left : right) += std::abs(turn);
    }

    bool is_knot(bool makes_knots) const
    {
        if (has_knot)
            return turns > 0 || has_end;
        if (!makes_knots)
            return turns > 0 && has_end; // a hook
        const bool is_zigzag = left > 0 && right > 0 && left + right > turns;
        return is_zigzag || std::max(left, right) >= kWhirl;
    }
};

/// The end of the knot that begins at bundle `first`, the one behind its last turn, or `first` where none does.
size_t find_end(const Bundling& b, size_t first, double reach, bool makes_knots)
{
    Met met;
    bool is_knot = false;
    size_t end = first;
    for (size_t i = first; i < b.bundles.size() && (is_knot || met.turns <= kMost); ++i) {
        const Bundle& bundle = b.bundles[i];
        const Place d = bundle.place - b.bundles[first].place;
        if (dot(d, d) > reach * reach)
            break;
        if (!bundle.is_knot && b.turn[i] == 0)
            continue;
        if (bundle.is_knot && met.has_knot && !is_knot)
            break; // a search from there finds what this one would
        met.meet(bundle, b.turn[i]);
        is_knot |= met.is_knot(makes_knots);
        end = i + 1;
    }
    return is_knot ? end : first;
}

Bundle joined(std::span<const Bundle> run)
{
    Bundle all = {run[0].first, 0, 0, {0, 0}, true};
    for (const Bundle& bundle : run) {
        all.count += bundle.count;
        all.steps += bundle.steps;
    }
    for (const Bundle& bundle : run)
        all.place = all.place + static_cast<double>(bundle.steps) / static_cast<double>(all.steps) * bundle.place;
    return all;
}

/// Joins what belongs together. False where nothing does.
bool join(Bundling& b, double reach, bool makes_knots)
{
    size_t kept = 0;
    for (size_t i = 0; i < b.bundles.size();) {
        const bool may_begin = b.turn[i] != 0 || b.bundles[i].is_knot;
        const size_t end = may_begin ? find_end(b, i, reach, makes_knots) : i;
        if (end > i + 1) {
            b.bundles[kept++] = joined(std::span(b.bundles).subspan(i, end - i));
            i = end;
        } else {
            b.bundles[kept++] = b.bundles[i++];
        }
    }
    const bool has_joined = kept < b.bundles.size();
    b.bundles.resize(kept);
    return has_joined;
}

/// Each point with those that repeat it, from `start` on, which repeats none.
Vector<Bundle> single_points(std::span<const Place> line, size_t start)
{
    Vector<Bundle> bundles;
    bundles.reserve(line.size());
    for (size_t i = 0; i < line.size(); ++i) {
        const size_t k = (start + i) % line.size();
        if (i > 0 && line[k] == bundles.back().place)
            ++bundles.back().count;
        else
            bundles.push_back({k, 1, 1, line[k], false});
    }
    return bundles;
}

/// The middle of the longest way of a closed line on which it does not turn back.
size_t find_quiet_start(const Bundling& b)
{
    const size_t n = b.turn.size();
    size_t longest = 0, start = 0, quiet = 0;
    for (size_t i = 0; i < 2 * n && quiet < n; ++i) {
        quiet = b.turn[i % n] == 0 ? quiet + 1 : 0;
        if (quiet > longest) {
            longest = quiet;
            start = (i + n - quiet / 2) % n;
        }
    }
    return start;
}

} // namespace

Vector<Bundle> bundle_knots(std::span<const Place> line, bool closed, double reach)
{
    Bundling b = {single_points(line, 0), {}};
    const auto is_near = [&](const Place& p) { return dot(p - line[0], p - line[0]) <= reach * reach; };
    if (std::all_of(line.begin(), line.end(), is_near))
        return std::move(b.bundles);
    find_turns(b, kBack, false);
    if (closed)
        b.bundles = single_points(line, b.bundles[find_quiet_start(b)].first);
    bool has_knots = false;
    for (const Pass& pass : kPasses) {
        find_turns(b, pass.cosine, !closed && !pass.makes_knots);
        has_knots |= join(b, pass.reach * reach, pass.makes_knots);
        if (!has_knots)
            break;
    }
    return std::move(b.bundles);
}

} // namespace korvale::door
