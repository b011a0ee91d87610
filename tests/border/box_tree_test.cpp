// The tree of boxes against all pairs.
#include "border/internal/box_tree.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace korvale::test {
using namespace border;

namespace {

using Pairs = std::set<std::pair<int, int>>;

/// Boxes of n vertices along a closed walk, in columns as a search has them.
class WalkBoxes {
public:
    WalkBoxes(int n, double size, Random& random)
        : n_(n), memory_(static_cast<size_t>(4 * boxes_for_vertices(n)), -7.5),
          boxes_(boxes_in(memory_.data(), boxes_for_vertices(n)))
    {
        double x = 0, y = 0;
        const bool straight = random.one_in(2), upright = random.one_in(2);
        const int onwards = random.one_in(2) ? 3 : -3;
        for (int i = 0; i < n; ++i) {
            const int along = straight && !random.one_in(12) ? onwards : random.between(-2, 2);
            const int aside = random.between(-2, 2);
            x += upright ? aside : along;
            y += upright ? along : aside;
            Box box = box_at(x, y);
            widen(box, x + random.uniform(-size, size), y + random.uniform(-size, size));
            boxes_.set(i, random.one_in(4) ? box_at(x, y) : box);
        }
        boxes_.set(n, boxes_[0]);
    }

    int count() const { return n_; }
    const Boxes& boxes() const { return boxes_; }
    Box edge(int e) const { return hull(boxes_[e], boxes_[e + 1]); }

private:
    int n_;
    std::vector<double> memory_;
    Boxes boxes_;
};

Pairs all_pairs(const WalkBoxes& walk)
{
    Pairs pairs;
    for (int m = 0; m < walk.count(); ++m)
        for (int e = 0; e < walk.count(); ++e)
            if (e != m && (e + 1) % walk.count() != m && overlap(walk.boxes()[m], walk.edge(e)))
                pairs.emplace(m, e);
    return pairs;
}

} // namespace

TEST(Box, BoxesThatTouchShareAPoint)
{
    const Box box = {0, 0, 1, 1};
    EXPECT_TRUE(overlap(box, {1, 1, 2, 2}));
    EXPECT_FALSE(overlap(box, {1.0000001, 0, 2, 1}));
    EXPECT_FALSE(overlap({0, -2, 1, -0.0000001}, box));
    EXPECT_TRUE(overlap(box, {0.25, 0.25, 0.5, 0.5}));
}

TEST(BoxTree, FindsEveryMeetingWithAnEdgeThatIsNotItsOwnOnce)
{
    Random random(1);
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        const WalkBoxes walk(9 + random.below(round % 10 == 0 ? 700 : 90), random.uniform(0, 3), random);
        const int n = walk.count();
        std::vector<double> memory(static_cast<size_t>(doubles_for_tree(n)));
        const BoxTree tree = grow_tree(walk.boxes(), n, memory.data());
        std::vector<std::pair<int, int>> found;
        EXPECT_TRUE(for_meeting_boxes(tree, walk.boxes(), n, [&found](int32_t m, int32_t e) {
            found.emplace_back(m, e);
            return true;
        }));
        EXPECT_EQ(Pairs(found.begin(), found.end()), all_pairs(walk)) << n << " vertices";
        EXPECT_EQ(found.size(), all_pairs(walk).size()) << n << " vertices";
    }
}

TEST(BoxTree, StopsWhenItIsTold)
{
    Random random(2);
    const WalkBoxes walk(100, 2.0, random);
    std::vector<double> memory(static_cast<size_t>(doubles_for_tree(100)));
    const BoxTree tree = grow_tree(walk.boxes(), 100, memory.data());
    int calls = 0;
    EXPECT_FALSE(for_meeting_boxes(tree, walk.boxes(), 100, [&calls](int32_t, int32_t) { return ++calls < 7; }));
    EXPECT_EQ(calls, 7);
}

TEST(BoxTree, ItsOwnBoxIsThatAroundAll)
{
    Random random(3);
    for (const int n : {9, 64, 65, 513}) {
        const WalkBoxes walk(n, 1.0, random);
        std::vector<double> memory(static_cast<size_t>(doubles_for_tree(n)));
        const Box found = box_around(grow_tree(walk.boxes(), n, memory.data()));
        Box all = walk.boxes()[0];
        for (int i = 1; i < n; ++i)
            all = hull(all, walk.boxes()[i]);
        EXPECT_EQ(found.low_x, all.low_x);
        EXPECT_EQ(found.low_y, all.low_y);
        EXPECT_EQ(found.high_x, all.high_x);
        EXPECT_EQ(found.high_y, all.high_y);
    }
}

TEST(BoxTree, BoxesAreInLineWhereEachIsClearOfTheNextOnTheSameSide)
{
    Random random(5);
    int in_line[4] = {};
    for (int round = 0; round < rounds(400); ++round) {
        const WalkBoxes walk(40, random.uniform(0, 1.5), random);
        const Boxes& boxes = walk.boxes();
        for (int first = 0; first < 40 - BoxTree::kFan; ++first) {
            bool clear[4] = {true, true, true, true};
            for (int i = first; i < first + BoxTree::kFan; ++i) {
                clear[0] = clear[0] && boxes[i].high_x < boxes[i + 1].low_x;
                clear[1] = clear[1] && boxes[i + 1].high_x < boxes[i].low_x;
                clear[2] = clear[2] && boxes[i].high_y < boxes[i + 1].low_y;
                clear[3] = clear[3] && boxes[i + 1].high_y < boxes[i].low_y;
            }
            const bool expected = clear[0] || clear[1] || clear[2] || clear[3];
            EXPECT_EQ(are_in_line<Pair>(boxes, first), expected);
            EXPECT_EQ(are_in_line<double>(boxes, first), expected);
            for (int k = 0; k < 4; ++k)
                in_line[k] += clear[k];
        }
    }
    for (const int count : in_line)
        EXPECT_GT(count, 20);
}

TEST(BoxTree, OverlapsOfEveryWidthAreTheSame)
{
    Random random(4);
    const WalkBoxes walk(64, 2.0, random);
    for (int k = 0; k < 64; ++k) {
        const Box box = walk.edge(k);
        for (int first = 0; first <= 56; ++first) {
            unsigned expected = 0;
            for (int c = 0; c < BoxTree::kFan; ++c)
                expected |= unsigned{overlap(walk.boxes()[first + c], box)} << c;
            EXPECT_EQ(find_overlaps<Pair>(walk.boxes(), first, box), expected);
            EXPECT_EQ(find_overlaps<double>(walk.boxes(), first, box), expected);
        }
    }
}

} // namespace korvale::test
