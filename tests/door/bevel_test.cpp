// Solids between outlines that move from step to step.
#include <korvale.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <numbers>
#include <thread>

#include <gmock/gmock.h>

#include "solids.h"
#include "support.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;

using Profile = std::vector<korvale_bevel_step>;

Solid bevelled(const Outlines& outlines, const Profile& profile, bool split = true, bool crossing = false)
{
    const std::vector<korvale_points> views = views_of(outlines);
    korvale_bevel_options options;
    korvale_bevel_defaults(&options, sizeof options);
    options.split = split;
    options.crossing = crossing;
    korvale_mesh* mesh = nullptr;
    korvale_error error;
    EXPECT_EQ(korvale_bevel(views.data(), static_cast<int64_t>(views.size()), profile.data(),
                            static_cast<int64_t>(profile.size()), &options, &mesh, &error),
              KORVALE_OK)
        << error.text;
    return taken(mesh);
}

Numbers square(double side)
{
    return {0, 0, 0, side, 0, 0, side, side, 0, 0, side, 0};
}

using test::times; // and, of a profile:

Profile times(double factor, Profile profile)
{
    for (korvale_bevel_step& step : profile)
        step = {factor * step.distance, factor * step.height};
    return profile;
}

/// Round a place, with corners at different distances from it.
Numbers star(Random& random, int corners, double x, double y, double size)
{
    Numbers outline;
    for (int i = 0; i < corners; ++i) {
        const double angle = 6.283185307179586 * i / corners, r = size * random.uniform(0.5, 1);
        outline.insert(outline.end(), {x + r * std::cos(angle), y + r * std::sin(angle), 0});
    }
    return outline;
}

/// The letters and signs of a serif face, 1000 units per em, with their holes.
std::vector<Outlines> letters()
{
    std::ifstream file(KORVALE_EXAMPLE_DATA "/serif-bold.txt");
    std::vector<Outlines> letters;
    std::string word, line;
    while (file >> word)
        if (word == "outer" || word == "hole") {
            int points = 0;
            file >> points;
            if (word == "outer")
                letters.emplace_back();
            Numbers& outline = letters.back().emplace_back();
            for (double x = 0, y = 0; points > 0 && file >> x >> y; --points)
                outline.insert(outline.end(), {x, y, 0});
        } else {
            std::getline(file, line);
        }
    return letters;
}

/// Twice the area of a triangle seen from above.
double doubled_area(const double* a, const double* b, const double* c)
{
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

double distance(const double* a, const double* b)
{
    return std::hypot(b[0] - a[0], b[1] - a[1]);
}

/// A solid whose steps have heights of their own, looked at plainly.
struct Look {
    const Solid& solid;
    double size; ///< of its outlines

    using Edge = std::pair<int32_t, int32_t>;

    const double* point(int32_t i) const { return &solid.points[3 * static_cast<size_t>(i)]; }

    bool is_closed() const
    {
        std::map<Edge, int> balance;
        for (size_t i = 0; i < solid.corners.size(); ++i) {
            const int32_t a = solid.corners[i], b = solid.corners[i % 3 == 2 ? i - 2 : i + 1];
            balance[std::minmax(a, b)] += a < b ? 1 : -1;
        }
        return std::ranges::all_of(balance, [](const auto& edge) { return edge.second == 0; });
    }

    /// Whether the triangles at a height face up, or down, and do not overlap. Lengths below a billionth count as
    /// nothing.
    bool has_sound_cap(double height, bool up) const
    {
        const double slack = 1e-9 * size;
        std::map<Edge, int> balance;
        for (size_t t = 0; t < solid.corners.size(); t += 3) {
            const int32_t corners[] = {solid.corners[t], solid.corners[t + (up ? 1 : 2)],
                                       solid.corners[t + (up ? 2 : 1)]};
            const double *const a = point(corners[0]), *const b = point(corners[1]), *const c = point(corners[2]);
            if (a[2] != height || b[2] != height || c[2] != height)
                continue;
            if (doubled_area(a, b, c) < -slack * std::max({distance(a, b), distance(b, c), distance(c, a)}))
                return false;
            for (int k = 0; k < 3; ++k)
                ++balance[{corners[k], corners[(k + 1) % 3]}];
        }
        std::vector<Edge> rim;
        for (const auto& [edge, times] : balance)
            if (const auto back = balance.find({edge.second, edge.first}); back == balance.end())
                rim.insert(rim.end(), static_cast<size_t>(times), edge);
        const auto parts = [&](const Edge& e, const Edge& f) {
            const double *const a = point(e.first), *const b = point(e.second), length = distance(a, b);
            const double p = doubled_area(a, b, point(f.first)) / length,
                         q = doubled_area(a, b, point(f.second)) / length;
            return std::min(p, q) < -slack && std::max(p, q) > slack;
        };
        for (size_t i = 0; i < rim.size(); ++i)
            for (size_t k = 0; k < i; ++k)
                if (parts(rim[i], rim[k]) && parts(rim[k], rim[i]))
                    return false;
        return true;
    }
};

TEST(DoorBevel, OfASquareIsABlock)
{
    const Solid block = bevelled({square(4)}, {{0, 0}, {0, 3}});
    EXPECT_THAT(block.points, ElementsAre(0, 4, 0, 4, 0, 0, 0, 0, 0, 4, 4, 0, 4, 0, 3, 0, 0, 3, 4, 4, 3, 0, 4, 3));
    EXPECT_EQ(block.corners.size(), 36u);
    EXPECT_EQ(block.volume, 48);
}

TEST(DoorBevel, HolesShrinkWhereTheOuterOutlineGrows)
{
    const Solid solid = bevelled({square(8), times(0.5, square(8)), {6, 6, 0, 6, 7, 0, 7, 7, 0, 7, 6, 0}},
                                 {{0, 0}, {0, 1}, {0.25, 1}, {0.25, 2}});
    EXPECT_EQ(solid.volume, (64 - 16 - 1) + (8.5 * 8.5 - 3.5 * 3.5 - 0.5 * 0.5));
}

TEST(DoorBevel, ASmallOneStandsUpright)
{
    for (const double side : {0.1, 0.05, 0.01, 1e-9}) {
        const Solid solid = bevelled({square(side)}, {{0, 0}, {0, side}, {-side / 8, 1.125 * side}});
        double lowest = 1, highest = -1;
        for (size_t i = 2; i < solid.points.size(); i += 3) {
            lowest = std::min(lowest, solid.points[i]);
            highest = std::max(highest, solid.points[i]);
        }
        EXPECT_EQ(lowest, 0) << "side " << side;
        EXPECT_EQ(highest, 1.125 * side) << "side " << side;
        EXPECT_NEAR(solid.volume / (side * side * side), 1 + 37.0 / 384, 1e-15) << "side " << side;
    }
}

TEST(DoorBevel, ScalesExactlyByPowersOfTwo)
{
    Random random(1270);
    for (int round = 0; round < rounds(100); ++round) {
        const Outlines shape = {star(random, random.between(4, 30), 0, 0, 1.5),
                                star(random, random.between(3, 9), 0.1, 0, 0.4)};
        const Profile profile = {{random.uniform(-0.1, 0.1), 0}, {0, 0.5}, {random.uniform(-0.4, 0.1), 0.75}};
        const Solid plain = bevelled(shape, profile);
        for (const int exponent : {-30, -12, 28}) {
            const double scale = std::ldexp(1.0, exponent);
            Outlines moved = shape;
            for (Numbers& outline : moved)
                outline = times(scale, outline);
            const Solid solid = bevelled(moved, times(scale, profile));
            ASSERT_EQ(solid.points, times(scale, plain.points)) << "2^" << exponent;
            ASSERT_EQ(solid.corners, plain.corners) << "2^" << exponent;
        }
    }
}

TEST(DoorBevel, IsTheSameWhateverHasBeenDrawnAndDrawsNothing)
{
    Random random(1271);
    for (int round = 0; round < rounds(100); ++round) {
        const Outlines shape = {star(random, random.between(3, 30), 0, 0, 0.05)};
        const Profile profile = {{0, 0}, {0, 0.02}, {-0.005, 0.025}};
        Mwsrand(5);
        const int next = Mwrand();
        Mwsrand(5);
        const Solid first = bevelled(shape, profile);
        EXPECT_EQ(Mwrand(), next);
        Solid second;
        std::thread([&] { second = bevelled(shape, profile); }).join();
        ASSERT_EQ(first, second);
    }
}

TEST(DoorBevel, IsClosedWhereOutlinesVanish)
{
    Random random(1272);
    for (int round = 0; round < rounds(300); ++round) {
        Outlines shape = {star(random, random.between(3, 40), 0, 0, 40)};
        for (int hole = random.between(0, 3); hole > 0; --hole)
            shape.push_back(star(random, random.between(3, 12), 8.0 * hole - 16, 2.0 * hole, 3));
        Profile profile;
        for (int i = 0; i < 4; ++i)
            profile.push_back({random.uniform(-25, 4), 3.0 * i});
        bevelled(shape, profile, random.one_in(2), true); // which measures what is closed
    }
}

TEST(DoorBevel, IsClosedWhereARoofEndsInALine)
{
    Random random(1274);
    for (int round = 0; round < rounds(300); ++round) {
        const double long_side = random.uniform(3, 20);
        Numbers plan = {0, 0, 0, long_side, 0, 0, long_side, 2, 0, 0, 2, 0};
        double turn[16];
        const double radians[] = {random.uniform(-3, 3), random.uniform(-3, 3), random.uniform(-3, 3)};
        korvale_transform_rotation(radians, turn);
        const korvale_points points = points_of(plan);
        const korvale_points_out output = points_to(plan);
        ASSERT_EQ(korvale_transform_points(turn, &points, &output, nullptr), KORVALE_OK);
        const Solid roof = bevelled({plan}, {{0, 0}, {-1, 1}}); // the ridge is as narrow as rounding makes it
        ASSERT_GT(roof.volume, 1) << "round " << round;
    }
}

TEST(DoorBevel, AStepThatMakesOutlinesCrossIsHeldBack)
{
    const Outlines frame = {{0, 0, 0, 10, 0, 0, 10, 10, 0, 0, 10, 0}, {2, 2, 0, 8, 2, 0, 8, 8, 0, 2, 8, 0}};
    const Solid solid = bevelled(frame, {{0, 0}, {-0.5, 1}, {-1.5, 2}, {-7, 3}, {-0.75, 4}});
    ASSERT_EQ(solid.reached.size(), 5u);
    EXPECT_EQ(solid.reached[0], 0);
    EXPECT_EQ(solid.reached[1], -0.5);
    EXPECT_GT(solid.reached[2], -1);
    EXPECT_LT(solid.reached[2], -0.999999);
    EXPECT_EQ(solid.reached[3], solid.reached[2]);
    EXPECT_EQ(solid.reached[4], -0.75);
    EXPECT_TRUE((Look{solid, 10}.has_sound_cap(4, true)));
    const auto area = [](double distance) {
        return (10 + 2 * distance) * (10 + 2 * distance) - (6 - 2 * distance) * (6 - 2 * distance);
    };
    const Solid chamfer = bevelled(frame, {{0, 0}, {-1.5, 2}});
    EXPECT_NEAR(chamfer.reached[1], -1, 1e-6);
    EXPECT_NEAR(chamfer.volume, (area(0) + area(-1)) / 2 * 2, 1e-4); // the area falls evenly
}

TEST(DoorBevel, AHoleIsNotLeftWithoutItsOuterOutline)
{
    // The waist gives way at 1, and with it the right part, which is the smaller one.
    const Numbers waist = {0,  0,  0, 10, 0,  0, 10, 4, 0, 14, 4, 0, 14, 0,  0, 22, 0,  0,
                           22, 10, 0, 14, 10, 0, 14, 6, 0, 10, 6, 0, 10, 10, 0, 0,  10, 0};
    const Numbers left = {4, 4, 0, 6, 4, 0, 6, 6, 0, 4, 6, 0}, right = {17, 4, 0, 18, 4, 0, 18, 5, 0, 17, 5, 0};
    const Profile profile = {{0, 0}, {-1.25, 2}};
    for (const Outlines& shape : {Outlines{waist}, Outlines{waist, left}, Outlines{waist, left, right}}) {
        const Solid held = bevelled(shape, profile);
        EXPECT_NEAR(held.reached[1], -1, 4e-16);
        EXPECT_TRUE((Look{held, 22}.has_sound_cap(2, true)));
    }
}

TEST(DoorBevel, AStepIsHeldWhereTheOutlineFallsApart)
{
    // Two chambers, and between them a neck of 1.5 at a bump, which has a slope of 1 in 4 on either side.
    const Numbers chambers = {0, 0,  0,  10, 0,  0,  10, 4,  0, 12, 4.5, 0, 14, 4,  0,  14, 0, 0,  22, 0,
                              0, 22, 10, 0,  14, 10, 0,  14, 6, 0,  10,  6, 0,  10, 10, 0,  0, 10, 0};
    const Solid solid = bevelled({chambers}, {{0, 0}, {-0.5, 1}, {-3, 4}, {-0.25, 5}});
    EXPECT_EQ(solid.reached[1], -0.5);
    EXPECT_NEAR(solid.reached[2], -1.5 / (1 + std::sqrt(1.0625)), 2e-16); // a rounding
    EXPECT_EQ(solid.reached[3], -0.25);
    EXPECT_TRUE((Look{solid, 22}.has_sound_cap(5, true)));
}

TEST(DoorBevel, AStepIsHeldWhereALimbVanishes)
{
    // A plate of 12 x 6 with a limb of 2 x 8: 88 - 52 d + 4 d^2 are left of it, d in, until the limb has gone at 1.
    const Numbers tee = {0, 0, 0, 5, 0, 0, 5, -8, 0, 7, -8, 0, 7, 0, 0, 12, 0, 0, 12, 6, 0, 0, 6, 0};
    for (const bool split : {false, true}) {
        const Solid solid = bevelled({tee}, {{0, 0}, {-1.5, 3}}, split);
        EXPECT_NEAR(solid.reached[1], -1, 4e-16); // two roundings
        EXPECT_EQ(solid.volume, 3 * (88 - 52 / 2.0 + 4 / 3.0));
    }
    // Outwards the bay of a U closes all at once.
    const Numbers bay = {0, 0, 0, 10, 0, 0, 10, 10, 0, 6, 10, 0, 6, 4, 0, 4, 4, 0, 4, 10, 0, 0, 10, 0};
    EXPECT_NEAR(bevelled({bay}, {{0, 0}, {3, 1}}).reached[1], 1, 4e-16);
}

TEST(DoorBevel, ARoofEndsAtItsRidge)
{
    const Numbers plan = {0, 0, 0, 10, 0, 0, 10, 4, 0, 0, 4, 0};
    for (const bool split : {false, true}) {
        const Solid roof = bevelled({plan}, {{0, 0}, {-3, 2}}, split);
        EXPECT_NEAR(roof.reached[1], -2, 1e-15); // two roundings
        EXPECT_EQ(roof.points.size(), 3 * 6u);
        EXPECT_EQ(roof.volume, 40 - 16.0 / 3);
        const Solid pyramid = bevelled({square(4)}, {{0, 0}, {-3, 2}}, split);
        EXPECT_NEAR(pyramid.reached[1], -2, 1e-15);
        EXPECT_EQ(pyramid.points.size(), 3 * 5u);
        EXPECT_EQ(pyramid.volume, 16 * 2 / 3.0);
    }
}

TEST(DoorBevel, LettersReachAsFarInAnySize)
{
    int held = 0, equal = 0, unequal = 0;
    for (const Outlines& letter : letters())
        for (const double distance : {-200.0, -20.0, 60.0}) {
            const double reached = bevelled(letter, {{0, 0}, {distance, 50}}).reached[1];
            for (const double scale : {0.01, 0.7, 13.0}) {
                Outlines scaled = letter;
                for (Numbers& outline : scaled)
                    outline = times(scale, outline);
                const double other = bevelled(scaled, times(scale, Profile{{0, 0}, {distance, 50}})).reached[1];
                // Where sides meet nearly all along, what counts as collapsed decides a little.
                ASSERT_NEAR(other / scale, reached, 2e-4 * std::fabs(reached)) << distance << " times " << scale;
                ++(std::fabs(other / scale - reached) < 1e-6 * std::fabs(reached) ? equal : unequal);
            }
            held += reached != distance;
        }
    EXPECT_GT(held, 100);
    EXPECT_LT(unequal, 5);
    EXPECT_GT(equal, 900);
}

TEST(DoorBevel, LevelOutlinesAreBevelledUpwardsWhicheverWayTheyRun)
{
    const Numbers plan = {0, 0, 7, 8, 0, 7, 8, 6, 7, 0, 6, 7}, back = {0, 6, 7, 8, 6, 7, 8, 0, 7, 0, 0, 7};
    const Numbers hole = {1, 1, 7, 2, 1, 7, 2, 2, 7, 1, 2, 7};
    for (const Outlines& shape : {Outlines{plan, hole}, Outlines{back, hole}}) {
        const Solid solid = bevelled(shape, {{0, 0}, {0, 1}, {-0.25, 2}});
        double lowest = 100, highest = -100;
        for (size_t i = 2; i < solid.points.size(); i += 3) {
            lowest = std::min(lowest, solid.points[i]);
            highest = std::max(highest, solid.points[i]);
        }
        EXPECT_EQ(lowest, 7);
        EXPECT_EQ(highest, 9);
        EXPECT_EQ(solid.volume, 47 + 47 - 32 * 0.25 / 2); // the corners add up to nothing
        EXPECT_TRUE((Look{solid, 8}.has_sound_cap(9, true)));
    }
    // On a wall they go where the outline runs counter-clockwise.
    const Numbers front = {0, 0, 0, 4, 0, 0, 4, 0, 4, 0, 0, 4}, rear = {0, 0, 4, 4, 0, 4, 4, 0, 0, 0, 0, 0};
    EXPECT_THAT(bevelled({front}, {{0, 0}, {0, 1}}).points, Contains(-1));
    EXPECT_THAT(bevelled({rear}, {{0, 0}, {0, 1}}).points, Contains(1));
}

TEST(DoorBevel, RefusesOutlinesThatCrossUnlessToldOtherwise)
{
    const Profile chamfer = {{0, 0}, {0, 1}, {-0.5, 2}};
    const auto refusal = [&](const Outlines& outlines) {
        const std::vector<korvale_points> views = views_of(outlines);
        korvale_mesh* mesh = nullptr;
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_bevel(views.data(), static_cast<int64_t>(views.size()), chamfer.data(), 3, nullptr, &mesh,
                                 error);
        });
    };
    const Numbers bow = {0, 0, 0, 4, 4, 0, 4, 0, 0, 0, 5, 0}, beyond = {3, 1, 0, 5, 1, 0, 5, 2, 0, 3, 2, 0};
    EXPECT_EQ(refusal({bow}), "korvale_bevel: outline 0 must not cross itself, but its edges from points 0 and 2 do");
    EXPECT_EQ(refusal({square(10), bow}),
              "korvale_bevel: outline 1 must not cross itself, but its edges from points 0 and 2 do");
    EXPECT_EQ(
        refusal({square(4), beyond}),
        "korvale_bevel: outlines must not cross each other, but outlines 0 and 1 do, by their edges from points 1 "
        "and 0");
    // Edges that lie in line do not cross.
    const auto box = [](double x, double y, double right, double top) {
        return Numbers{x, y, 0, right, y, 0, right, top, 0, x, top, 0};
    };
    const std::string over = "korvale_bevel: outlines must be an outer one and holes apart from each other, but some "
                             "holes lie over others";
    EXPECT_EQ(refusal({square(10), box(2, 2, 4, 4), box(3, 2, 6, 4)}), over);
    EXPECT_EQ(refusal({square(10), box(2, 2, 4, 4), box(2, 2, 4, 4)}), over);
    EXPECT_EQ(refusal({square(10), box(2, 2, 6, 6), box(2, 2, 4, 4)}), over);
    const std::string out = "korvale_bevel: outline 1 must lie inside outline 0, as a hole in it, but it does not";
    EXPECT_EQ(refusal({square(10), box(-1, 0, 5, 10)}), out);
    EXPECT_EQ(refusal({square(10), box(12, 2, 15, 7)}), out);
    EXPECT_EQ(refusal({square(10), box(-10, -10, 20, 20)}), out);
    // Holes leave something.
    const std::string all = "korvale_bevel: outline 1 must leave some of outline 0, but it goes round all of it";
    EXPECT_EQ(refusal({square(10), square(10)}), all);
    EXPECT_EQ(refusal({square(10), {10, 10, 0, 10, 0, 0, 0, 0, 0, 0, 10, 0}}), all);
    EXPECT_EQ(refusal({square(10), square(10), box(2, 2, 4, 4)}), all);
    EXPECT_EQ(refusal({square(10), box(2, 2, 4, 4), square(10)}),
              "korvale_bevel: outline 2 must leave some of outline 0, but it goes round all of it");
    EXPECT_EQ(refusal({square(10), box(0, 0, 4, 10), box(4, 0, 10, 10)}),
              "korvale_bevel: outlines must be an outer one and holes that leave some of it, but the holes fill it");
    EXPECT_EQ(bevelled({square(10), box(0, 0, 4, 10), box(4, 0, 10, 9)}, {{0, 0}, {0, 1}}).volume, 6);
    EXPECT_EQ(bevelled({square(10), square(10)}, {{0, 0}, {0, 1}}, true, true).volume, 0);
    // What is let through goes no way on which it would still cross.
    EXPECT_THAT(bevelled({bow}, chamfer, true, true).reached, ElementsAre(0, 0, 0));
    EXPECT_THAT(bevelled({square(4), beyond}, chamfer, true, true).reached, ElementsAre(0, 0, 0));
    // To touch is not to cross.
    EXPECT_EQ(bevelled({{0, 0, 0, 4, 0, 0, 4, 4, 0, 2, 0, 0, 0, 4, 0}}, {{0, 0}, {0, 1}}).volume, 12 - 4 / 1.0);
}

TEST(DoorBevel, IsAskedWhileItLooksForCrossings)
{
    // Thin spikes, whose boxes all overlap: the search looks at nearly every pair.
    std::vector<double> star;
    for (int i = 0; i < 4000; ++i) {
        const double angle = 2 * std::numbers::pi * i / 4000, radius = i % 2 == 0 ? 1 : 2;
        star.insert(star.end(), {radius * std::cos(angle), radius * std::sin(angle), 0});
    }
    const korvale_points outline = points_of(star);
    const Profile wall = {{0, 0}, {0, 1}};
    size_t told[2];
    for (const int crossing : {0, 1}) {
        Course course = {{}, SIZE_MAX};
        korvale_bevel_options options;
        korvale_bevel_defaults(&options, sizeof options);
        options.crossing = crossing;
        options.progress = &Course::tell;
        options.user = &course;
        korvale_mesh* mesh = nullptr;
        EXPECT_EQ(korvale_bevel(&outline, 1, wall.data(), 2, &options, &mesh, nullptr), KORVALE_OK);
        korvale_mesh_free(mesh);
        EXPECT_TRUE(std::ranges::is_sorted(course.told));
        told[crossing] = course.told.size();
    }
    EXPECT_GT(told[0], told[1] + 20);
}

TEST(DoorBevel, OutlinesThatTouchDoNotMoveTowardsEachOther)
{
    const Outlines shape = {square(8), {0, 4, 0, 2, 2, 0, 4, 4, 0, 2, 6, 0}};
    EXPECT_EQ(bevelled(shape, {{0, 0}, {-1, 1}}).reached[1], 0);
    EXPECT_EQ(bevelled(shape, {{0, 0}, {0.5, 1}}).reached[1], 0.5);
}

TEST(DoorBevel, RoofsGoAsFarAsAsked)
{
    EXPECT_THAT(bevelled({square(4)}, {{0, 0}, {-2, 2}}).reached, ElementsAre(0, -2));
    const Solid ridge = bevelled({{0, 0, 0, 10, 0, 0, 10, 4, 0, 0, 4, 0}}, {{0, 0}, {-2, 2}});
    EXPECT_EQ(ridge.reached[1], -2);
    EXPECT_NEAR(ridge.volume, 40 - 16.0 / 3, 3e-14); // products of 10 by 4 by 2, rounded by 1e-14
}

TEST(DoorBevel, CapsOfLettersDoNotOverlap)
{
    int held = 0, reached = 0;
    for (const Outlines& letter : letters())
        for (const double distance : {-200, -80, -40, -20, 60})
            for (const bool split : {false, true}) {
                const Solid solid = bevelled(letter, {{0, 0}, {distance, 50}}, split);
                const Look look = {solid, 1000};
                ASSERT_TRUE(look.is_closed());
                ASSERT_GT(solid.volume, 0);
                ASSERT_TRUE(look.has_sound_cap(50, true)) << distance;
                ++(solid.reached[1] == distance ? reached : held);
            }
    EXPECT_GT(held, 450);
    EXPECT_GT(reached, 400);
}

TEST(DoorBevel, CapsOfPlatesWithHolesDoNotOverlap)
{
    Random random(1275);
    int held = 0;
    for (int round = 0; round < rounds(300); ++round) {
        Outlines shape = {star(random, random.between(5, 40), 0, 0, 40)};
        for (int hole = random.between(0, 4); hole > 0; --hole)
            shape.push_back(star(random, random.between(3, 12), 9.0 * hole - 24, 3.0 * (hole - 2), 3));
        const double distance = random.uniform(-15, 5);
        const Solid solid = bevelled(shape, {{0, 0}, {distance, 5}}, random.one_in(2), true);
        const Look look = {solid, 40};
        ASSERT_TRUE(look.is_closed()) << "round " << round;
        ASSERT_GT(solid.volume, 0) << "round " << round;
        if (look.has_sound_cap(0, false)) // else the outlines themselves cross
            ASSERT_TRUE(look.has_sound_cap(5, true)) << "round " << round;
        else
            ASSERT_TRUE(solid.reached[1] == distance || solid.reached[1] == 0) << "round " << round;
        held += solid.reached[1] != distance;
    }
    EXPECT_GT(held, rounds(300) / 6);
}

TEST(DoorBevel, CapsCoverWhatIsLeftWhereHolesVanish)
{
    Random random(1273);
    int vanished = 0;
    for (int round = 0; round < rounds(200); ++round) {
        const Outlines shape = {star(random, random.between(4, 30), 0, 0, 40), star(random, 3, -8, 0, 2),
                                star(random, random.between(4, 9), 8, 3, 2)};
        Numbers border(shape[0].size());
        korvale_border result = {};
        result.points = border.data();
        const korvale_points outer = points_of(shape[0]);
        ASSERT_EQ(korvale_offset(&outer, 3, nullptr, &result, nullptr), KORVALE_OK);
        double doubled_area = 0;
        for (size_t i = 0; i < border.size(); i += 3) {
            const size_t next = i + 3 < border.size() ? i + 3 : 0;
            doubled_area += border[i] * border[next + 1] - border[next] * border[i + 1];
        }

        const Solid solid = bevelled(shape, {{0, 0}, {3, 5}});
        if (solid.reached[1] != 3)
            continue; // a hole falls apart
        ++vanished;
        double covered = 0;
        for (size_t t = 0; t < solid.corners.size(); t += 3) {
            const auto corner = [&](size_t k) { return &solid.points[3 * static_cast<size_t>(solid.corners[t + k])]; };
            const double *const a = corner(0), *const b = corner(1), *const c = corner(2);
            if (a[2] < 4 || b[2] < 4 || c[2] < 4)
                continue;
            const double twice = (b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1]);
            ASSERT_GT(twice, -1e-9) << "round " << round;
            covered += twice;
        }
        ASSERT_NEAR(covered, doubled_area, 1e-14 * doubled_area) << "round " << round;
    }
    EXPECT_GT(vanished, rounds(200) / 4);
}

TEST(DoorBevel, ReadsFloatsInThePlane)
{
    const float corners[] = {0, 0, 4, 0, 4, 4, 0, 4};
    const korvale_points outline = {corners, 4, 0, 2, KORVALE_FLOAT};
    const korvale_bevel_step wall[] = {{0, 0}, {0, 3}};
    korvale_mesh* mesh = nullptr;
    ASSERT_EQ(korvale_bevel(&outline, 1, wall, 2, nullptr, &mesh, nullptr), KORVALE_OK);
    EXPECT_EQ(taken(mesh), bevelled({square(4)}, {{0, 0}, {0, 3}}));
}

TEST(DoorBevel, SaysWhatItRefuses)
{
    const Outlines shape = {square(4), {0, 0, 0, 1, 0, 0}};
    const std::vector<korvale_points> views = views_of(shape);
    const auto refusal = [&](int64_t count, const Profile& profile,
                             korvale_bevel_options options = {8, 1, nullptr, nullptr, 0, 0}) {
        int place = 0;
        korvale_mesh* mesh = reinterpret_cast<korvale_mesh*>(&place);
        const std::string sentence = sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_bevel(views.data(), count, profile.data(), static_cast<int64_t>(profile.size()), &options,
                                 &mesh, error);
        });
        EXPECT_EQ(mesh, nullptr);
        return sentence;
    };
    const Profile wall = {{0, 0}, {0, 1}};
    EXPECT_EQ(refusal(1, {}), "korvale_bevel: profile must have at least 2 steps, but it has 0");
    EXPECT_EQ(refusal(1, {{0, 0}}), "korvale_bevel: profile must have at least 2 steps, but it has 1");
    EXPECT_EQ(refusal(1, {{0, 0}, {NAN, 0}}), "korvale_bevel: profile must be finite, but it is nan");
    EXPECT_EQ(refusal(1, {{0, 0}, {0, -INFINITY}}), "korvale_bevel: profile must be finite, but it is -inf");
    EXPECT_EQ(refusal(0, wall), "korvale_bevel: outlines must have an outer outline, but there is none");
    EXPECT_EQ(refusal(-1, wall), "korvale_bevel: count must be 0 or more, but it is -1");
    EXPECT_EQ(refusal(2, wall), "korvale_bevel: outline 1 must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal(1, wall, {3, 1, nullptr, nullptr, 0, 0}),
              "korvale_bevel: options.size must be the size of the struct, but it is 3");

    korvale_mesh* mesh = nullptr;
    const auto other = [&](const korvale_points* outlines, const korvale_bevel_step* profile, int64_t steps,
                           korvale_mesh** to) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_bevel(outlines, 1, profile, steps, nullptr, to, error);
        });
    };
    EXPECT_EQ(other(nullptr, wall.data(), 2, &mesh), "korvale_bevel: outlines must be given, but it is null");
    EXPECT_EQ(other(views.data(), nullptr, 2, &mesh), "korvale_bevel: profile must be given, but it is null");
    EXPECT_EQ(other(views.data(), wall.data(), 2, nullptr), "korvale_bevel: mesh must be given, but it is null");
    EXPECT_EQ(other(views.data(), wall.data(), -1, &mesh),
              "korvale_bevel: profile must have at least 2 steps, but it has -1");
    const Numbers sharp = {0, 0, 0, 8, 0, 0, 0, 1, 0};
    const korvale_points needle = points_of(sharp);
    const Profile far = {{0, 0}, {0, 1}, {1e308, 2}};
    EXPECT_EQ(other(&needle, far.data(), 3, &mesh),
              "korvale_bevel: profile must keep points where there are numbers for them, but its step 2 moves some "
              "beyond");
    const Numbers much(3 * 1000);
    const Profile long_profile(238610, {0, 0});
    const korvale_points many = points_of(much);
    EXPECT_EQ(other(&many, long_profile.data(), 238610, &mesh),
              "korvale_bevel: profile must have at most 238609 steps for 1000 points, but it has 238610");
}

TEST(DoorBevel, AnExhaustedHeapMakesNothing)
{
    NEEDS_HEAP_FAILURES();
    const Outlines shape = {square(4), {1, 1, 0, 2, 1, 0, 2, 2, 0, 1, 2, 0}};
    const std::vector<korvale_points> views = views_of(shape);
    const korvale_bevel_step profile[] = {{0, 0}, {0, 1}, {-0.5, 2}};
    const int64_t failed = fail_each_allocation([&](int64_t) {
        korvale_mesh* mesh = nullptr;
        if (korvale_bevel(views.data(), 2, profile, 3, nullptr, &mesh, nullptr) == KORVALE_NO_MEMORY) {
            EXPECT_EQ(mesh, nullptr);
        } else {
            EXPECT_EQ(korvale_mesh_view(mesh).points.count, 24);
        }
        korvale_mesh_free(mesh);
    });
    EXPECT_GT(failed, 40);
}

TEST(DoorBevel, TellsOfItsStepsAndStopsWhenAsked)
{
    const Outlines outlines = {square(10), {2, 2, 0, 8, 2, 0, 8, 8, 0, 2, 8, 0}};
    const std::vector<korvale_points> views = views_of(outlines);
    const Profile wall = {{0, 0}, {0, 1}, {-0.5, 2}, {-0.75, 3}}, held = {{0, 0}, {-1.5, 1}}; // it is 2 wide
    Told told;
    korvale_bevel_options options;
    korvale_bevel_defaults(&options, sizeof options);
    options.progress = &Told::tell;
    options.user = &told;
    const auto bevel = [&](const Profile& profile, korvale_error* error) {
        int place = 0;
        auto* mesh = reinterpret_cast<korvale_mesh*>(&place);
        const korvale_status status = korvale_bevel(views.data(), 2, profile.data(),
                                                    static_cast<int64_t>(profile.size()), &options, &mesh, error);
        EXPECT_EQ(mesh == nullptr, status != KORVALE_OK);
        korvale_mesh_free(mesh);
        return status;
    };
    EXPECT_EQ(bevel(wall, nullptr), KORVALE_OK);
    EXPECT_THAT(told.done, ElementsAre(0, 0.125, 0.25, 0.375, 0.5));
    told = {};
    EXPECT_EQ(bevel(held, nullptr), KORVALE_OK);
    EXPECT_THAT(told.done, ElementsAre(0, 0.25, 0.5, 0.75, 0.875)); // made again, held back
    for (const double end : {0.25, 0.5, 0.75}) {
        told = {{}, end};
        korvale_error error;
        EXPECT_EQ(bevel(held, &error), KORVALE_STOPPED) << end;
        EXPECT_STREQ(error.text, "korvale_bevel: it was asked to stop");
        EXPECT_EQ(told.done.back(), end);
    }
}

TEST(DoorBevel, DefaultsFillWhatTheHostKnows)
{
    Told told;
    korvale_bevel_options bevel = {77, 77, &Told::tell, &told, 77, 77};
    korvale_bevel_defaults(&bevel, sizeof bevel.size);
    EXPECT_EQ(bevel.size, 4u);
    EXPECT_EQ(bevel.split, 77);
    korvale_bevel_defaults(&bevel, sizeof bevel);
    EXPECT_EQ(bevel.split, 1);
    EXPECT_EQ(bevel.progress, nullptr);
    EXPECT_EQ(bevel.user, nullptr);
    EXPECT_EQ(bevel.crossing, 0);
    EXPECT_EQ(bevel.reserved, 0);
    korvale_bevel_defaults(nullptr, sizeof bevel);
}

} // namespace
} // namespace korvale::test
