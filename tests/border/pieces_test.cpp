// The pieces that sweeps drop, beside those of the documented steps, of which each is swept in its turn; and what
// sweeps leave at their stops, beside sweeps that end there.
#include <algorithm>
#include <cmath>
#include <numeric>

#include <gtest/gtest.h>

#include "tests/border/shapes.h"
#include "tests/border/twins.h"
#include "tests/support/bits.h"
#include "tests/support/outlines.h"

namespace korvale::test {
namespace {

/// A piece that has been dropped.
struct Piece {
    double remaining;
    std::vector<int32_t> vertices; ///< ascending
    std::vector<double> xy;        ///< two for each
};

/// The documented sweep, with a look at each split.
std::vector<Piece> documented_pieces(reference::Sweep& s)
{
    std::vector<Piece> pieces;
    std::fill_n(s.dead, s.n, uint8_t{0});
    std::iota(s.merge, s.merge + s.n, 0);
    for (int64_t round = 0; round < 4 * s.n + 64 && s.remaining != 0.0; ++round) {
        if (!measure_edges(s))
            return pieces;
        fit_edge_lines(s);
        const reference::Corners corners = aim_vertices(s);
        if (corners == reference::Corners::outline_gone)
            return pieces;
        if (corners == reference::Corners::hairpin_removed)
            continue;
        set_length_rates(s);
        const reference::Event event = earlier_split_event(s, first_edge_event(s));
        if (std::fabs(event.time) > std::fabs(s.remaining)) {
            move_all(s, s.remaining);
            return pieces;
        }
        if (event.vertex < 0) {
            collapse_edges(s, event.time);
        } else {
            move_all(s, event.time);
            const std::vector<uint8_t> before(s.dead, s.dead + s.n);
            const bool goes_on = drop_smaller_piece(s, event.vertex, event.edge);
            Piece piece = {s.remaining - event.time, {}, {}};
            for (int32_t i = 0; i < s.n; ++i)
                if (i == event.vertex || s.dead[i] != before[static_cast<size_t>(i)]) {
                    piece.vertices.push_back(i);
                    piece.xy.insert(piece.xy.end(), {s.flat[3 * i], s.flat[3 * i + 1]});
                }
            pieces.push_back(piece);
            if (!goes_on)
                return pieces;
        }
        s.remaining -= event.time;
    }
    return pieces;
}

/// The pieces of a quick sweep.
struct Gathered {
    const border::Sweep& sweep;
    std::vector<Piece> pieces;

    static void drop(const border::DroppedPiece& dropped, void* receiver)
    {
        auto& self = *static_cast<Gathered*>(receiver);
        Piece piece = {dropped.remaining, {dropped.dropped, dropped.dropped + dropped.count}, {}};
        piece.vertices.push_back(dropped.vertex);
        std::sort(piece.vertices.begin(), piece.vertices.end());
        for (const int32_t i : piece.vertices) {
            const double* const p = self.sweep.rows.flat + 3 * int64_t{i};
            piece.xy.push_back(i == dropped.vertex ? dropped.x : p[0]);
            piece.xy.push_back(i == dropped.vertex ? dropped.y : p[1]);
        }
        self.pieces.push_back(piece);
    }
};

/// What a sweep has left.
struct Left {
    double remaining;
    std::vector<double> flat;
    std::vector<uint8_t> dead;
    std::vector<int32_t> merge;
    bool has_lost;
    size_t pieces; ///< dropped on the way
};

/// What a sweep leaves at its stops.
struct Looks {
    const border::Sweep& sweep;
    std::vector<Left> left = {};
    size_t pieces = 0;

    static void drop(const border::DroppedPiece&, void* receiver) { ++static_cast<Looks*>(receiver)->pieces; }

    static void pass(int32_t stop, void* receiver)
    {
        auto& self = *static_cast<Looks*>(receiver);
        EXPECT_EQ(static_cast<size_t>(stop), self.left.size());
        self.look(self.sweep.progress.stops[stop]);
    }

    void look(double remaining)
    {
        const border::Rows& rows = sweep.rows;
        left.push_back({remaining,
                        {+rows.flat, rows.flat + 3 * int64_t{rows.n}},
                        {+rows.dead, rows.dead + rows.n},
                        {+rows.merge, rows.merge + rows.n},
                        sweep.found.has_lost,
                        pieces});
    }
};

/// An outline of up to so many points, and waves of as many now and then.
Coordinates any_path(int most, Random& random)
{
    return random.one_in(3) ? rough(wiggly(most, most / 8, 2.5), 0.3, random) : any_outline(most, random);
}

} // namespace

TEST(SweepStops, FindWhatASweepOfTheirDistanceLeaves)
{
    Random random(63);
    int64_t stops_seen = 0, ended = 0;
    for (int round = 0; round < rounds(3000) && !testing::Test::HasFailure(); ++round) {
        const Coordinates path = any_path(round % 10 == 0 ? 300 : 25, random);
        const size_t n = path.size() / 3;
        const bool split_events = !random.one_in(8);
        const double farthest = random.one_in(3) ? random.uniform(0, 3) : random.uniform(-5, 0);
        std::vector<double> distances;
        for (int i = random.below(6); i > 0; --i)
            distances.push_back(random.one_in(8) ? farthest : random.uniform(0, 1) * farthest);
        std::sort(distances.begin(), distances.end(), [](double a, double b) { return std::fabs(a) < std::fabs(b); });

        reference::SweepArrays arrays(n);
        std::copy(path.begin(), path.end(), arrays.flat.begin());
        border::Sweep s = quick_sweep(arrays, farthest, split_events);
        std::vector<double> left = distances;
        Looks looks = {s};
        s.progress.stops = left.data();
        s.progress.stop_count = static_cast<int32_t>(left.size());
        s.request.drop = &Looks::drop;
        s.request.pass = &Looks::pass;
        s.request.receiver = &looks;
        ASSERT_TRUE(border::run_sweep(s));
        looks.look(s.progress.remaining);
        distances.push_back(farthest);
        ASSERT_EQ(looks.left.size(), distances.size());
        for (size_t i = 0; i < distances.size(); ++i) {
            SCOPED_TRACE(testing::Message() << "outline " << round << ", distance " << distances[i]);
            reference::SweepArrays alone(n);
            std::copy(path.begin(), path.end(), alone.flat.begin());
            border::Sweep expected = quick_sweep(alone, distances[i], split_events);
            Looks split = {expected};
            expected.request.drop = &Looks::drop;
            expected.request.receiver = &split;
            ASSERT_TRUE(border::run_sweep(expected));
            const Left& seen = looks.left[i];
            ASSERT_TRUE(same_bits({expected.progress.remaining}, &seen.remaining));
            ASSERT_TRUE(same_bits(alone.flat, seen.flat.data()));
            ASSERT_TRUE(std::equal(seen.dead.begin(), seen.dead.end(), alone.dead.begin()));
            ASSERT_TRUE(std::equal(seen.merge.begin(), seen.merge.end(), alone.merge.begin()));
            ASSERT_EQ(seen.has_lost, expected.found.has_lost);
            ASSERT_EQ(seen.pieces, split.pieces);
            stops_seen += i + 1 < distances.size() && distances[i] != farthest;
            ended += expected.progress.remaining != 0.0;
        }
    }
    EXPECT_GT(stops_seen, rounds(3000));
    EXPECT_GT(ended, rounds(3000) / 100);
}

TEST(DroppedPieces, AreThoseOfTheDocumentedSteps)
{
    Random random(62);
    int64_t dropped = 0, in_turn = 0;
    for (int round = 0; round < rounds(3000) && !testing::Test::HasFailure(); ++round) {
        const Coordinates path = any_path(round % 10 == 0 ? 150 : 25, random);
        std::vector<Piece> waiting = {{random.uniform(-4, 2), {}, {}}};
        for (size_t i = 0; i < path.size(); i += 3)
            waiting[0].xy.insert(waiting[0].xy.end(), {path[i], path[i + 1]});
        for (size_t k = 0; k < waiting.size() && k < 40; ++k) {
            const size_t n = waiting[k].xy.size() / 2;
            reference::SweepArrays documented(n), quick(n);
            for (size_t i = 0; i < 2 * n; ++i)
                documented.flat[i / 2 * 3 + i % 2] = quick.flat[i / 2 * 3 + i % 2] = waiting[k].xy[i];
            reference::Sweep steps = documented.sweep(waiting[k].remaining, true);
            border::Sweep s = quick_sweep(quick, waiting[k].remaining);
            Gathered gathered = {s, {}};
            s.request.drop = &Gathered::drop;
            s.request.receiver = &gathered;
            ASSERT_TRUE(border::run_sweep(s));
            const std::vector<Piece> expected = documented_pieces(steps);
            SCOPED_TRACE(testing::Message() << "outline " << round << ", piece " << k);
            ASSERT_EQ(gathered.pieces.size(), expected.size());
            for (size_t j = 0; j < expected.size(); ++j) {
                ASSERT_TRUE(same_bits({expected[j].remaining}, &gathered.pieces[j].remaining));
                ASSERT_EQ(gathered.pieces[j].vertices, expected[j].vertices);
                ASSERT_TRUE(same_bits(expected[j].xy, gathered.pieces[j].xy.data()));
                if (expected[j].vertices.size() > 2)
                    waiting.push_back(expected[j]);
            }
            dropped += k == 0 ? static_cast<int64_t>(expected.size()) : 0;
            in_turn += k == 0 ? 0 : static_cast<int64_t>(expected.size());
            ASSERT_TRUE(same_bits(documented.flat, quick.flat.data()));
        }
    }
    EXPECT_GT(dropped, rounds(3000));
    EXPECT_GT(in_turn, rounds(3000) / 10);
}

} // namespace korvale::test
