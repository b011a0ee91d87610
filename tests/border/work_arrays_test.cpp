// What the work arrays of `BORDER_BORDER` hold after outlines worked out by hand. The first corner lies at the origin
// and its outgoing edge along +x, counter-clockwise in z = 0, so the flattened outline is the outline itself.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "border/border.h"
#include "tests/border/records.h"
#include "tests/support/bits.h"

namespace korvale::test {
using testing::Each;
using testing::ElementsAre;

namespace {

/// How fast both coordinates of a right-angled corner move: (1 / sqrt(2)) * (1 / sqrt(0.5)) in doubles.
const double kCornerSpeed = 0x1.ffffffffffffep-1;

constexpr double kUntouched = 7.25;

/// A record whose work arrays hold `kUntouched` in every double before the sweep.
class Swept : public OwnedBORDERStatus {
public:
    explicit Swept(const Outline& outline) : OwnedBORDERStatus(outline.path)
    {
        BORDERStatus& s = **this;
        s.distance = outline.distance;
        s.keep_collapsed = outline.keep_collapsed;
        s.split_events = outline.split_events;
        for (DATAstruct* const d : {s.flat, s.velocity, s.direction, s.line, s.length, s.rate}) {
            d->type = DATA_TYPE_DOUBLE;
            d->count = s.path->count;
            d->dim = d == s.length || d == s.rate ? 1 : 3;
            EXPECT_EQ(DATAAllocate(d), 1);
            std::fill_n(d->dvals, d->count * d->dim, kUntouched);
        }
        EXPECT_EQ(BORDER_BORDER(*this), 1);
    }

    BORDERStatus& operator*() { return *operator->(); }

    /// Row i of a work array; a zero of either sign is 0.
    static std::vector<double> row(const DATAstruct* d, int i)
    {
        std::vector<double> values(d->dvals + d->dim * i, d->dvals + d->dim * (i + 1));
        for (double& v : values)
            v += 0.0;
        return values;
    }
    std::vector<int> dead() { return {operator->()->dead->bvals, operator->()->dead->bvals + count()}; }
    std::vector<int> merge() { return {operator->()->merge->ivals, operator->()->merge->ivals + count()}; }

private:
    int count() { return operator->()->path->count; }
};

const Coordinates kUnitSquare = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};

} // namespace

TEST(BORDER_BORDER, LeavesTheMeasuresOfTheUnitSquare)
{
    Swept s({kUnitSquare, 1.0});
    const double c = kCornerSpeed;
    const double corners[][2] = {{-c, -c}, {1 + c, -c}, {1 + c, 1 + c}, {-c, 1 + c}};
    const double speeds[][2] = {{-c, -c}, {c, -c}, {c, c}, {-c, c}};
    const double directions[][2] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    const double lines[][3] = {{0, 1, 0}, {-1, 0, 1}, {0, -1, 1}, {1, 0, 0}};
    for (int i = 0; i < 4; ++i) {
        EXPECT_THAT(s.row(s->flat, i), ElementsAre(corners[i][0], corners[i][1], 0.0));
        EXPECT_THAT(s.row(s->velocity, i), ElementsAre(speeds[i][0], speeds[i][1], 0.0));
        EXPECT_THAT(s.row(s->direction, i), ElementsAre(directions[i][0], directions[i][1], 0.0));
        EXPECT_THAT(s.row(s->line, i), ElementsAre(lines[i][0], lines[i][1], lines[i][2]));
        EXPECT_EQ(s->length->dvals[i], 1.0);
        EXPECT_EQ(s->rate->dvals[i], 2 * c);
    }
    EXPECT_THAT(s.dead(), Each(0));
    EXPECT_THAT(s.merge(), ElementsAre(0, 1, 2, 3));
    EXPECT_EQ(s->flat->count, 4);
    EXPECT_EQ(s->distance, 1.0);
}

TEST(BORDER_BORDER, ADistanceOfZeroTouchesOnlyMarksAndZ)
{
    Swept s({kUnitSquare, 0.0});
    EXPECT_THAT(s.row(s->velocity, 2), ElementsAre(kUntouched, kUntouched, 0.0));
    EXPECT_THAT(s.row(s->direction, 2), ElementsAre(kUntouched, kUntouched, 0.0));
    EXPECT_THAT(s.row(s->line, 2), Each(kUntouched));
    EXPECT_EQ(s->length->dvals[2], kUntouched);
    EXPECT_EQ(s->rate->dvals[2], kUntouched);
    EXPECT_THAT(s.dead(), Each(0));
    EXPECT_THAT(s.merge(), ElementsAre(0, 1, 2, 3));
}

TEST(BORDER_BORDER, WritesLinesOnlyToLookForSplits)
{
    Swept s({kUnitSquare, 1.0, true, false});
    EXPECT_THAT(s.row(s->line, 0), Each(kUntouched));
    EXPECT_EQ(s->rate->dvals[0], 2 * kCornerSpeed);
}

TEST(BORDER_BORDER, CarriesTheFlattenedZAlong)
{
    Swept s({{0, 0, 0, 1, 0, 0, 1, 1, 0.125, 0, 1, 0}, 0.5});
    EXPECT_EQ(s->flat->dvals[8], 0.125);
    EXPECT_EQ(s->output->dvals[8], 0.125);
}

// A corner at (1, 0) that bends by about h: a bend moves along the bisector, (h / 2, -1), a straight corner along the
// normal of its outgoing edge, (h, -1).
TEST(BORDER_BORDER, ABendOfLessThanAMillionthIsStraight)
{
    const auto drift = [](double h) {
        Swept s({{0, 0, 0, 1, 0, 0, 2, h, 0, 2, 3, 0, 0, 2.5, 0}, 0.5});
        return s->velocity->dvals[3] / h;
    };
    const auto bend = [](double h) {
        const double length = std::sqrt(1.0 + h * h), dx = 1.0 - 1.0 / length, dy = 0.0 - h / length;
        return std::sqrt(dx * dx + dy * dy);
    };
    double exact = 1e-06;
    while (bend(exact) < 1e-06)
        exact = std::nextafter(exact, 1.0);
    // A straight corner takes the normal, (h, -1) but for a millionth of a millionth. A bend takes the difference of
    // two directions, of which 1 - cos h, 5e-13, is known to 1e-16.
    EXPECT_NEAR(drift(0.999e-06), 1.0, 1e-12);
    EXPECT_NEAR(drift(std::nextafter(exact, 0.0)), 1.0, 1e-12);
    EXPECT_NEAR(drift(exact), 0.5, 2e-4);
    EXPECT_NEAR(drift(1.001e-06), 0.5, 2e-4);
}

TEST(BORDER_BORDER, AReflexCornerMovesIntoTheOutline)
{
    Swept s({{0, 0, 0, 4, 0, 0, 4, 2, 0, 2, 2, 0, 2, 3, 0, 0, 3, 0}, -0.25});
    EXPECT_THAT(s.row(s->velocity, 3), ElementsAre(kCornerSpeed, kCornerSpeed, 0.0));
    EXPECT_THAT(s.row(s->flat, 3), ElementsAre(2 - 0.25 * kCornerSpeed, 2 - 0.25 * kCornerSpeed, 0.0));
}

TEST(BORDER_BORDER, DividesByXOnlyWhereTheDirectionIsAboveAHalf)
{
    const double root3 = 0x1.bb67ae8584caap+0; // leads to a direction just above 0.5; the next double to 0.5 itself
    for (const double rise : {root3, std::nextafter(root3, 2.0)}) {
        Swept s({{0, 0, 0, 4, 0, 0, 5, rise, 0, 4.5, 4, 0, 0, 3, 0}, 0.5});
        const double *const v = s->velocity->dvals, *const d = s->direction->dvals + 3;
        const double by_x = (v[6] - v[3]) / d[0], by_y = (v[7] - v[4]) / d[1];
        ASSERT_NE(by_x, by_y) << "the outline does not tell the two apart";
        if (rise == root3)
            ASSERT_GT(d[0], 0.5);
        else
            ASSERT_EQ(d[0], 0.5);
        EXPECT_EQ(s->rate->dvals[1], rise == root3 ? by_x : by_y);
    }
}

// A spike stands on the upper edge: vertex 4 is its tip, 3 and 5 are its feet.
TEST(BORDER_BORDER, ATipMergesIntoTheNextVertexWhereItsIncomingEdgeIsLonger)
{
    Swept s({{0, 0, 0, 5, 0, 0, 5, 4, 0, 2, 4, 0, 2, 7, 0, 2, 5, 0, 0, 5, 0}, 0.25});
    EXPECT_THAT(s.dead(), ElementsAre(0, 0, 0, 0, 1, 0, 0));
    EXPECT_THAT(s.merge(), ElementsAre(0, 1, 2, 3, 5, 5, 6));
    // What the tip had when it died stays: the bisector unscaled, the edge, no rate.
    EXPECT_THAT(s.row(s->velocity, 4), ElementsAre(0.0, 1.0, 0.0));
    EXPECT_THAT(s.row(s->direction, 4), ElementsAre(0.0, -1.0, 0.0));
    EXPECT_THAT(s.row(s->line, 4), ElementsAre(1.0, 0.0, -2.0));
    EXPECT_EQ(s->length->dvals[4], 2.0);
    EXPECT_EQ(s->rate->dvals[4], kUntouched);
    EXPECT_EQ(s.row(s->flat, 4), s.row(s->flat, 5));
}

TEST(BORDER_BORDER, ATipMergesIntoThePreviousVertexWhereItsIncomingEdgeIsShorter)
{
    Swept s({{0, 0, 0, 5, 0, 0, 5, 4, 0, 2, 5, 0, 2, 7, 0, 2, 4, 0, 0, 4, 0}, 0.25});
    EXPECT_THAT(s.dead(), ElementsAre(0, 0, 0, 0, 1, 0, 0));
    EXPECT_EQ(s->merge->ivals[4], 3);
}

TEST(BORDER_BORDER, ATipBetweenEqualEdgesMergesIntoThePreviousVertexAndThatIntoTheNext)
{
    Swept s({{0, 0, 0, 5, 0, 0, 5, 4, 0, 2, 4, 0, 2, 7, 0, 2, 4, 0, 0, 4, 0}, 0.25});
    EXPECT_THAT(s.dead(), ElementsAre(0, 0, 0, 1, 1, 0, 0));
    EXPECT_THAT(s.merge(), ElementsAre(0, 1, 2, 5, 3, 5, 6));
    EXPECT_EQ(s.row(s->flat, 4), s.row(s->flat, 5)); // through vertex 3
}

// The feet of the spike at vertex 1 are 0 and 2. Vertex 5 stands beside the first, on the other side of the second.
TEST(BORDER_BORDER, TheLastEdgeIsMergedAwayWhenTheFootOfASpikeThatItEndsAtIsAndLeavesItShort)
{
    Swept s({{0x1p-20, 0, 0, 5, 0, 0, 0, 0, 0, -3, 4, 0, -3, -4, 0, -0x1p-20, 0, 0}, 0.25});
    EXPECT_THAT(s.dead(), ElementsAre(1, 1, 0, 0, 0, 1));
    EXPECT_THAT(s.merge(), ElementsAre(2, 0, 2, 3, 4, 2));
    EXPECT_EQ(s->length->dvals[5], 0x1p-20);
    EXPECT_EQ(s.row(s->flat, 5), s.row(s->flat, 2));
}

// The cosine of half the turn is sqrt(c / 2), c being 1 plus the cosine of the turn, a multiple of 2^-53. It is never
// 1e-06 itself: the nearest are those of 18014 * 2^-53 below and 18015 * 2^-53 above it.
TEST(BORDER_BORDER, ACornerIsAHairpinWhereTheCosineOfHalfItsTurnIsBelowAMillionth)
{
    const auto is_removed = [](double width, double height) { // of a spike: the cosine is about width / (2 height)
        Swept s({{0, 0, 0, 5, 0, 0, 5, 4, 0, 2 + width, 4, 0, 2, 4 + height, 0, 2, 4, 0, 0, 4, 0}, 1e-12, true, false});
        return s->dead->bvals[4] == 1;
    };
    const auto one_plus_cosine = [](double width, double height) {
        const double dx = 2 - (2 + width);
        return 1.0 - height / std::sqrt(dx * dx + height * height);
    };
    ASSERT_EQ(one_plus_cosine(3.74994475e-06, 1.875), 18014 * 0x1p-53);
    ASSERT_EQ(one_plus_cosine(3.74998725e-06, 1.875), 18015 * 0x1p-53);
    EXPECT_TRUE(is_removed(3.74994475e-06, 1.875));
    EXPECT_FALSE(is_removed(3.74998725e-06, 1.875));
    EXPECT_TRUE(is_removed(7.99e-06, 4));
    EXPECT_FALSE(is_removed(8.01e-06, 4));
}

TEST(BORDER_BORDER, TwoVerticesAreAHairpinThatEndsTheSweep)
{
    Swept s({{0, 0, 0, 3, 0, 0}, 1.0});
    EXPECT_THAT(s.dead(), ElementsAre(1, 0));
    EXPECT_THAT(s.merge(), ElementsAre(1, 1));
    EXPECT_EQ(s.row(s->flat, 0), s.row(s->flat, 1));
    EXPECT_EQ(s->output->count, 2);
}

TEST(BORDER_BORDER, ASinglePointStaysWhereItIs)
{
    Swept s({{1, 2, 3}, 5.0});
    EXPECT_TRUE(same_bits({1, 2, 3}, points_of(s->output)));
    EXPECT_THAT(s.dead(), ElementsAre(0));
}

TEST(BORDER_BORDER, CoincidentPointsMergeForwardsUntilOneIsLeft)
{
    Swept s({{1, 1, 0, 1, 1, 0, 1, 1, 0}, 5.0});
    EXPECT_THAT(s.dead(), ElementsAre(1, 1, 0));
    EXPECT_THAT(s.merge(), ElementsAre(1, 2, 2));
}

TEST(BORDER_BORDER, AMergeMeasuresThePreviousEdgeAgain)
{
    // Vertex 2 merges into 3, so the edge of vertex 1 now runs to (3, 0.000001).
    Swept s({{0, 0, 0, 2, 0, 0, 3, 0, 0, 3, 1e-06, 0, 3, 2, 0, 0, 2.5, 0}, 0.25});
    EXPECT_THAT(s.dead(), ElementsAre(0, 0, 1, 0, 0, 0));
    EXPECT_THAT(s.merge(), ElementsAre(0, 1, 3, 3, 4, 5));
    EXPECT_EQ(s->direction->dvals[4], 1e-06 / std::sqrt(1.0 + 1e-06 * 1e-06));
    EXPECT_THAT(s.row(s->direction, 2), ElementsAre(0.0, 1e-06, 0.0)); // not divided by the length
    EXPECT_EQ(s->length->dvals[2], 1e-06);
}

// A rectangle (2 + excess) x 2 that shrinks until its short edges vanish, leaving its long ones `excess` long.
TEST(BORDER_BORDER, AnEdgeLeftLongerThanAMillionthOutlivesTheEvent)
{
    for (const double excess : {1.000001e-06, 1.1e-06, 2e-06}) {
        Swept s({{0, 0, 0, 2 + excess, 0, 0, 2 + excess, 2, 0, 0, 2, 0}, -1.5});
        EXPECT_THAT(s.dead(), ElementsAre(1, 1, 0, 1)) << excess;
        EXPECT_THAT(s.merge(), ElementsAre(2, 2, 2, 0)) << excess;
        EXPECT_EQ(s->flat->dvals[7], 1.0);
    }
}

TEST(BORDER_BORDER, AnEdgeLeftNoLongerThanAMillionthCollapsesAndTheLastVertexStaysUnmoved)
{
    for (const double excess : {0.0, 0.5e-06, 0.999999e-06}) {
        Swept s({{0, 0, 0, 2 + excess, 0, 0, 2 + excess, 2, 0, 0, 2, 0}, -1.5});
        EXPECT_THAT(s.dead(), ElementsAre(1, 1, 1, 0)) << excess;
        EXPECT_THAT(s.merge(), ElementsAre(1, 2, 3, 3)) << excess;
        for (int i = 0; i < 4; ++i)
            EXPECT_THAT(s.row(s->flat, i), ElementsAre(0.0, 2.0, 0.0)) << excess;
    }
}

// A prong from the right whose tip, near the origin, has a bevel of e1 below and a longer one of e2 above. When the
// first vanishes, at `time`, the second is left as long as rounding says: a millionth itself, or one of its neighbours.
// The distance ends there, so that nothing is measured again.
TEST(BORDER_BORDER, AnEdgeLeftExactlyAMillionthLongHasCollapsed)
{
    const double millionth = 1e-06;
    const struct {
        double e1, e2, left;
    } cases[] = {
        {0x1.27476ca61d708p-20, 0x1.e5176eb260bdp-20, std::nextafter(millionth, 0.0)},
        {0x1.27476ca61b88p-20, 0x1.e5176eb25ed48p-20, millionth},
        {0x1.27476ca63bf88p-20, 0x1.e5176eb27f45p-20, std::nextafter(millionth, 1.0)},
    };
    for (const auto& [e1, e2, left] : cases) {
        const double x = 0x1p-17, y = 0x1p-18, height = 0x1p-17, up = y + e1 + height;
        const Coordinates pronged = {0,      0,  0, 9,           0,       0, 9, y,       0, x, y, 0, x - e1, y + e1, 0,
                                     x - e1, up, 0, x - e1 + e2, up + e2, 0, 9, up + e2, 0, 9, 5, 0, 0,      5,      0};
        Swept without({pronged, 1e-09, true, false});
        const double* const rate = without->rate->dvals;
        const double time = -without->length->dvals[3] / rate[3];
        ASSERT_EQ(time * rate[5] + without->length->dvals[5], left);
        Swept s({pronged, time, true, false});
        EXPECT_THAT(s.dead(), ElementsAre(0, 0, 0, 1, 0, left <= millionth ? 1 : 0, 0, 0, 0, 0)) << left;
    }
}

TEST(BORDER_BORDER, AnEventBeyondTheDistanceDoesNotHappen)
{
    Swept s({kUnitSquare, -0.499});
    EXPECT_THAT(s.dead(), Each(0));
    EXPECT_NEAR(s->flat->dvals[0], 0.499, 2e-16); // the speed of a corner of a square is 1 but for a rounding
}

TEST(BORDER_BORDER, ARoofShrinksToItsRidge)
{
    // 6 x 2: the short edges vanish at 1 and leave the ridge from (1, 1) to (5, 1), two vertices that turn right back.
    Swept s({{0, 0, 0, 6, 0, 0, 6, 2, 0, 0, 2, 0}, -1.25, false, true});
    EXPECT_THAT(s.dead(), ElementsAre(1, 1, 0, 1));
    EXPECT_THAT(s.merge(), ElementsAre(2, 2, 2, 0));
    ASSERT_EQ(s->output->count, 1);
    EXPECT_EQ(s->output->dvals[0], 5.0);
    EXPECT_EQ(s->output->dvals[1], 1.0);
    // The survivors move to the front; what stood behind them stays.
    EXPECT_EQ(s->flat->count, 1);
    EXPECT_EQ(s.row(s->flat, 0), s.row(s->flat, 2));
}

TEST(BORDER_BORDER, AtTheVeryDistanceOfItsRidgeARoofKeepsTheTwoEnds)
{
    // The short edges vanish at -1 / c with c = kCornerSpeed, and then nothing of the distance is left.
    for (const bool keeps : {true, false}) {
        Swept s({{0, 0, 0, 6, 0, 0, 6, 2, 0, 0, 2, 0}, -1 / kCornerSpeed, keeps, true});
        EXPECT_THAT(s.dead(), ElementsAre(0, 1, 0, 1));
        EXPECT_THAT(s.merge(), ElementsAre(0, 2, 2, 0));
        ASSERT_EQ(s->output->count, keeps ? 4 : 2);
        EXPECT_THAT(s.row(s->flat, 0), ElementsAre(1.0, 1.0, 0.0));
        EXPECT_THAT(s.row(s->flat, keeps ? 2 : 1), ElementsAre(5.0, 1.0, 0.0));
    }
}

TEST(BORDER_BORDER, WithoutSplitsANotchRunsThroughTheFootAndWhatIsLeftGrowsInsideOut)
{
    // The tip of the notch meets the foot at 2/3. The sides vanish at 2.5; the foot and the edges of the notch never.
    const Coordinates notched = {0, 0, 0, 16, 0, 0, 16, 7.5, 0, 8, 1.5, 0, 0, 7.5, 0};
    Swept s({notched, -4.0, false, false});
    EXPECT_THAT(s.dead(), ElementsAre(0, 1, 0, 0, 1));
    const double clockwise[] = {-2, 4, 18, 4, 8, -3.5};
    for (int i = 0; i < 3; ++i)
        for (int k = 0; k < 2; ++k)
            EXPECT_NEAR(s->flat->dvals[3 * i + k], clockwise[2 * i + k], 1e-14); // below 32: rounded by 2e-15 or less
    Swept split({notched, -4.0, false, true});
    EXPECT_EQ(std::ranges::count(split.dead(), 0), 1);
}

// Vertex 4 touches edge 0 from above, so the outline splits before it moves. On its left stand vertices 5, 6 and 0, on
// its right 1, 2 and 3; the boxes are those of these vertices, without vertex 4.
TEST(BORDER_BORDER, ASplitDropsTheVerticesAheadWhereTheirBoxIsSmaller)
{
    Swept s({{0, 0, 0, 8, 0, 0, 8, 4, 0, 5, 4, 0, 3, 0, 0, 2, 4, 0, 0, 4, 0}, 0.25}); // 2 x 4 against 3 x 4
    EXPECT_THAT(s.dead(), ElementsAre(1, 0, 0, 0, 0, 1, 1));
    EXPECT_THAT(s.merge(), ElementsAre(4, 1, 2, 3, 4, 4, 4));
    EXPECT_THAT(s.row(s->flat, 1), ElementsAre(8 + 0.25 * kCornerSpeed, -0.25 * kCornerSpeed, 0.0));
    EXPECT_EQ(s.row(s->flat, 0), s.row(s->flat, 4));
    EXPECT_EQ(s->flat->dvals[13], -0.25); // vertex 4 is now the left end of edge 4
}

TEST(BORDER_BORDER, ASplitDropsTheVerticesBehindWhereTheirBoxIsSmaller)
{
    Swept s({{0, 0, 0, 6, 0, 0, 6, 4, 0, 5, 4, 0, 3, 0, 0, 2, 4, 0, 0, 4, 0}, 0.25}); // 2 x 4 against 1 x 4
    EXPECT_THAT(s.dead(), ElementsAre(0, 1, 1, 1, 0, 0, 0));
    EXPECT_THAT(s.merge(), ElementsAre(0, 4, 4, 4, 4, 5, 6));
    EXPECT_THAT(s.row(s->flat, 0), ElementsAre(-0.25 * kCornerSpeed, -0.25 * kCornerSpeed, 0.0));
}

TEST(BORDER_BORDER, ASplitIntoEqualBoxesDropsTheVerticesAhead)
{
    Swept s({{0, 0, 0, 7, 0, 0, 7, 4, 0, 5, 4, 0, 3, 0, 0, 2, 4, 0, 0, 4, 0}, 0.25}); // 2 x 4 against 2 x 4
    EXPECT_THAT(s.dead(), ElementsAre(1, 0, 0, 0, 0, 1, 1));
}

TEST(BORDER_BORDER, AVertexOnAnEdgeIsNoSplitWhenSplitsAreOff)
{
    Swept s({{0, 0, 0, 8, 0, 0, 8, 4, 0, 5, 4, 0, 3, 0, 0, 2, 4, 0, 0, 4, 0}, 0.25, true, false});
    EXPECT_THAT(s.dead(), Each(0));
}

TEST(BORDER_BORDER, ASplitAtTheFullDistanceStillHappens)
{
    // Vertex 4 stands 0.5 above edge 0 and its two edges are at right angles: it moves down at sqrt(2), the edge up
    // at 1.
    const Coordinates notched = {0, 0, 0, 9, 0, 0, 9, 5, 0, 8, 5, 0, 3.5, 0.5, 0, -1, 5, 0, -2, 5, 0};
    const double time = -0.5 / (1 + std::sqrt(2.0));
    Swept before({notched, time * 0.999999});
    EXPECT_THAT(before.dead(), Each(0));
    Swept after({notched, time * 1.000001});
    EXPECT_THAT(after.dead(), testing::Contains(1));
    EXPECT_EQ(std::count(after->merge->ivals, after->merge->ivals + 7, 4), 4);
}

// Vertex 5 lies on edge 0, in an outline that winds round twice. Both its edges rise by `rise` over 6; the second falls
// where `bends`. With f the cosine of the slope the vertex moves down at f, or at 1 / f where it bends, and the edge at
// 1, so they approach at 1 - f or at 1 - 1 / f. Such differences are multiples of 2^-53 or 2^-52, never 1e-06 itself:
// the nearest are 9007199254 * 2^-53 below and 9007199255 * 2^-53 above it, 4503599627 * 2^-52 below and
// 4503599628 * 2^-52 above.
//
// A hit leaves vertices 6, 7, 8 and 0 ahead, in a box of 10 x 6, and 4, 3, 2 and 1 behind, in one of 10 x 4.01.
TEST(BORDER_BORDER, AVertexAndAnEdgeThatApproachAtLessThanAMillionthNeverMeet)
{
    const struct {
        double rise;
        bool bends;
        double approach;
        bool meets;
    } cases[] = {
        {0.00848, false, 0, false},
        {0.00848528773793, false, 9007199254 * 0x1p-53, false},
        {0.00848528773864, false, 9007199255 * 0x1p-53, true},
        {0.00849, false, 0, true},
        {0.00848, true, 0, false},
        {0.00848528349496, true, -4503599627 * 0x1p-52, false},
        {0.00848528349593, true, -4503599628 * 0x1p-52, true},
        {0.00849, true, 0, true},
    };
    for (const auto& c : cases)
        for (const double distance : {0.01, -0.01}) {
            const double end = c.bends ? -c.rise : c.rise;
            const Coordinates twice_round = {0, 0, 0, 8, 0,  0,   8, 4,  0, -2, 4, 0, -2, -c.rise,
                                             0, 4, 0, 0, 10, end, 0, 10, 6, 0,  0, 6, 0};
            if (c.approach != 0) {
                Swept without({twice_round, distance, true, false});
                ASSERT_EQ(1 + without->velocity->dvals[3 * 5 + 1], c.approach) << c.rise;
            }
            Swept s({twice_round, distance});
            if (c.meets) {
                EXPECT_THAT(s.dead(), ElementsAre(0, 1, 1, 1, 1, 0, 0, 0, 0)) << c.rise << ' ' << distance;
                EXPECT_THAT(s.merge(), ElementsAre(0, 5, 5, 5, 5, 5, 6, 7, 8)) << c.rise << ' ' << distance;
            } else {
                EXPECT_THAT(s.dead(), Each(0)) << c.rise << ' ' << distance;
                EXPECT_THAT(s.merge(), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8)) << c.rise << ' ' << distance;
            }
        }
}

// A room 0 <= x <= 12 with an arm of height 1 on its right, 8 <= x <= 12, and a prong from above, 4 <= x <= 6, whose
// tip stands `gap` above edge 0. With c = kCornerSpeed = 1 - 2^-52 the end of the arm, edge 1, vanishes at
// -1 / (2 c) = -(0.5 + 2^-53), and the prong's vertex 6 meets edge 0 at -gap / (1 + c) = -gap / (2 - 2^-52): for a gap
// of 1 at -(0.5 + 2^-53) as well, for 1 - 2^-53, the next smaller one, at -0.5.
TEST(BORDER_BORDER, AMeetingAtTheTimeOfAnEdgeEventInwardsDoesNotCount)
{
    const auto room = [](double gap) {
        return Coordinates{0, 0, 0, 12, 0,   0, 12, 1,   0, 8, 1, 0, 8, 4, 0,
                           6, 4, 0, 6,  gap, 0, 4,  gap, 0, 4, 4, 0, 0, 4, 0};
    };
    // The meeting comes first and drops 7, 8, 9 and 0: 3 x 3 against the 5 x 3 behind. Then edge 1 is too short, and
    // the tip of the arm, vertex 2, turns right back between edges of lengths 5 and 4.
    Swept before({room(1 - 0x1p-53), -0.75});
    EXPECT_THAT(before.dead(), ElementsAre(1, 1, 1, 0, 0, 0, 0, 1, 1, 1));
    EXPECT_THAT(before.merge(), ElementsAre(6, 2, 3, 3, 4, 5, 6, 6, 6, 6));

    // Edge 1 vanishes: 1 merges into 2, which turns right back between edges of lengths 11 and 4. What is left of the
    // distance is -(0.25 - 2^-53). Now vertex 6 lies on edge 0 and drops 5, 4 and 3: 1 x 3 against the 3 x 3 ahead. It
    // turns right back between edges of lengths 6 and 3. The square from (0.5, 0.5) to (3.5, 3.5) remains, and shrinks.
    Swept at_once({room(1), -0.75});
    EXPECT_THAT(at_once.dead(), ElementsAre(0, 1, 1, 1, 1, 1, 1, 0, 0, 0));
    EXPECT_THAT(at_once.merge(), ElementsAre(0, 2, 3, 6, 6, 6, 7, 7, 8, 9));
    // 0.5 + (0.25 - 2^-53) c is 0.75 - 1.5 * 2^-53, halfway between two doubles.
    EXPECT_THAT(at_once.row(at_once->flat, 0), ElementsAre(0.75 - 0x1p-52, 0.75 - 0x1p-52, 0.0));
}

// The same room as a bay in a block, open above its left part: floor edge 12, prong 6-7, end of the arm edge 11.
// Growing the block by 0.5 + 2^-53 closes the arm.
TEST(BORDER_BORDER, AMeetingAtTheTimeOfAnEdgeEventOutwardsDoesNotCount)
{
    const auto block = [](double gap) {
        return Coordinates{0,  0, 0, 2,  0, 0, 2,  -2, 0, 20, -2, 0, 20, 6, 0, 8, 6, 0, 8, gap, 0, 10, gap, 0,
                           10, 4, 0, 12, 4, 0, 12, 1,  0, 16, 1,  0, 16, 0, 0, 4, 0, 0, 4, 6,   0, 0,  6,   0};
    };
    // The meeting of vertex 6 with edge 12 comes first and drops all between them, the smaller piece.
    Swept before({block(1 - 0x1p-53), 0.75});
    EXPECT_THAT(before.dead(), ElementsAre(0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 0, 0, 0));
    EXPECT_THAT(before.merge(), ElementsAre(0, 1, 2, 3, 4, 5, 6, 6, 6, 6, 6, 6, 6, 13, 14, 15));

    // Edge 11 vanishes: 11 merges into 12, which turns right back between edges of lengths 4 and 11 and merges into 10.
    // Then vertex 6 lies on edge 10 and drops 7, 8, 9 and 10.
    Swept at_once({block(1), 0.75});
    EXPECT_THAT(at_once.dead(), ElementsAre(0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 0, 0, 0));
    EXPECT_THAT(at_once.merge(), ElementsAre(0, 1, 2, 3, 4, 5, 6, 6, 6, 6, 6, 12, 10, 13, 14, 15));
}

TEST(BORDER_BORDER, AmongVerticesThatHitAtOnceTheFirstOneSplits)
{
    // Two prongs touch edge 0, vertices 4 and 7; the first drops everything on its left, the second among it.
    Swept s({{0, 0, 0, 12, 0, 0, 12, 5, 0, 7, 5, 0, 6, 0, 0, 5, 5, 0, 4, 5, 0, 3, 0, 0, 2, 5, 0, 0, 5, 0}, 0.25});
    EXPECT_THAT(s.dead(), ElementsAre(1, 0, 0, 0, 0, 1, 1, 1, 1, 1));
    EXPECT_THAT(s.merge(), ElementsAre(4, 1, 2, 3, 4, 4, 4, 4, 4, 4));
}

TEST(BORDER_BORDER, ADistanceThatSwallowsItsMarginStillEnds)
{
    Swept s({kUnitSquare, 1e17}); // 1e17 + 1 is 1e17: the full distance counts as an event
    EXPECT_THAT(s.dead(), Each(0));
    EXPECT_EQ(s->flat->dvals[3], 1 + 1e17 * kCornerSpeed);
}

TEST(BORDER_BORDER, HugeOutlinesEndWithinTheBoundOfRounds)
{
    for (const double scale : {1e9, 1e12, 1e100, 1e300}) {
        Coordinates path = {0, 0, 0, 3, 0, 0, 4, 1, 0, 3, 2, 0, 2, 1.5, 0, 0, 2, 0};
        for (double& c : path)
            c *= scale;
        for (const double share : {-0.3, -0.9, 0.5, -2.0}) {
            OwnedBORDERStatus status(path);
            status->distance = share * scale;
            EXPECT_EQ(BORDER_BORDER(status), 1);
        }
    }
}

} // namespace korvale::test
