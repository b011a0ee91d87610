// Transforms as 16 numbers.
#include <korvale.h>

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using Numbers = std::array<double, 16>;

const Numbers kIdentity = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

TEST(TransformOfSrt, ScalesThenMoves)
{
    const korvale_srt srt = {{2, 3, 4}, {0, 0, 0}, {10, 20, 30}};
    Numbers m = {}, inverse = {};
    korvale_transform_from_srt(&srt, m.data());
    EXPECT_THAT(m, ElementsAre(2, 0, 0, 10, 0, 3, 0, 20, 0, 0, 4, 30, 0, 0, 0, 1));
    korvale_transform_inverse_of_srt(&srt, inverse.data());
    EXPECT_THAT(inverse, ElementsAre(0.5, 0, 0, -5, 0, 1.0 / 3, 0, -20 * (1.0 / 3), 0, 0, 0.25, -7.5, 0, 0, 0, 1));
}

TEST(TransformOfSrt, GivesTheBitsOfThePlainCalls)
{
    const korvale_srt srt = {{1.5, 2.5, 0.7}, {0.3, -1.1, 2.0}, {5, -7, 0.1}};
    korvale_srt parts = srt;
    Xfm plain;
    Numbers m;
    SRT2Transform(parts.scale, parts.rotation, parts.translation, plain);
    korvale_transform_from_srt(&srt, m.data());
    EXPECT_EQ(std::memcmp(m.data(), plain, sizeof plain), 0);
    SRT2InvTransform(parts.scale, parts.rotation, parts.translation, plain);
    korvale_transform_inverse_of_srt(&srt, m.data());
    EXPECT_EQ(std::memcmp(m.data(), plain, sizeof plain), 0);
    rotation_matrix(parts.rotation, plain);
    korvale_transform_rotation(srt.rotation, m.data());
    EXPECT_EQ(std::memcmp(m.data(), plain, sizeof plain), 0);

    korvale_transform_from_srt(&srt, m.data());
    korvale_srt apart = {};
    korvale_transform_take_apart(m.data(), &apart);
    std::memcpy(plain, m.data(), sizeof plain);
    Transform2SRT(plain, parts.scale, parts.rotation, parts.translation);
    EXPECT_EQ(std::memcmp(&apart, &parts, sizeof parts), 0);
}

TEST(TransformOfOnePoint, MovesPointsAndOnlyTurnsVectors)
{
    const Numbers m = {0, -2, 0, 10, 2, 0, 0, 20, 0, 0, 2, 30, 0, 0, 0, 1};
    const double from[] = {1, 2, 3};
    double point[3] = {}, vector[3] = {};
    korvale_transform_point(m.data(), from, point);
    korvale_transform_vector(m.data(), from, vector);
    EXPECT_THAT(point, ElementsAre(6, 22, 36));
    EXPECT_THAT(vector, ElementsAre(-4, 2, 6));
    korvale_transform_point(m.data(), point, point);
    EXPECT_THAT(point, ElementsAre(-34, 32, 102));
}

TEST(TransformOfOnePoint, DividesByTheFourthCoordinate)
{
    const Numbers m = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 4};
    const double from[] = {1, 2, 3};
    double to[3] = {};
    korvale_transform_point(m.data(), from, to);
    EXPECT_THAT(to, ElementsAre(0.25, 0.5, 0.75));
    korvale_transform_vector(m.data(), from, to);
    EXPECT_THAT(to, ElementsAre(1, 2, 3));
}

TEST(TransformOfOnePoint, MayOverwriteItsTransform)
{
    Numbers m = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0, 1};
    const double from[] = {1, 1, 1};
    korvale_transform_point(m.data(), from, m.data());
    EXPECT_THAT(std::vector(m.begin(), m.begin() + 3), ElementsAre(10, 26, 42));
}

TEST(TransformOfOnePoint, NullChangesNothing)
{
    double point[] = {1, 2, 3};
    for (const auto move : {korvale_transform_point, korvale_transform_vector}) {
        move(nullptr, point, point);
        move(kIdentity.data(), nullptr, point);
        move(kIdentity.data(), point, nullptr);
    }
    EXPECT_THAT(point, ElementsAre(1, 2, 3));
}

TEST(TransformOfSrt, NullChangesNothing)
{
    Numbers m = kIdentity;
    korvale_srt srt = {};
    korvale_transform_from_srt(nullptr, m.data());
    korvale_transform_inverse_of_srt(nullptr, m.data());
    korvale_transform_rotation(nullptr, m.data());
    korvale_transform_multiply(nullptr, m.data(), m.data());
    korvale_transform_multiply(m.data(), nullptr, m.data());
    EXPECT_EQ(m, kIdentity);
    korvale_transform_take_apart(nullptr, &srt);
    EXPECT_EQ(srt.scale[0], 0.0);
    korvale_transform_from_srt(&srt, nullptr);
    korvale_transform_inverse_of_srt(&srt, nullptr);
    korvale_transform_rotation(srt.rotation, nullptr);
    korvale_transform_take_apart(m.data(), nullptr);
    korvale_transform_multiply(m.data(), m.data(), nullptr);
}

TEST(TransformIntoFrame, PutsTheOriginAndTheAxes)
{
    const double origin[] = {1, 2, 3}, z[] = {0, 0, 5}, reference[] = {0, 1, 0};
    Numbers m = {};
    EXPECT_EQ(korvale_transform_into_frame(origin, z, reference, m.data(), nullptr), KORVALE_OK);
    EXPECT_THAT(m, ElementsAre(1, 0, 0, -1, 0, 1, 0, -2, 0, 0, 1, -3, 0, 0, 0, 1));
}

TEST(TransformIntoFrame, RefusesAnAxisThatIsNone)
{
    const double origin[] = {0, 0, 0}, z[] = {0, 0, 1}, along[] = {0, 0, 2}, none[] = {0, 0, 0};
    Numbers m = kIdentity;
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](auto* e) { return korvale_transform_into_frame(origin, z, along, m.data(), e); }),
              "korvale_transform_into_frame: z must be longer than 1e-06 and not along reference, but it is (0, 0, 1) "
              "beside (0, 0, 2)");
    EXPECT_EQ(korvale_transform_into_frame(origin, none, z, m.data(), nullptr), KORVALE_BAD_ARGUMENT);
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](auto* e) { return korvale_transform_into_frame(origin, nullptr, along, m.data(), e); }),
              "korvale_transform_into_frame: z must be given, but it is null");
    EXPECT_EQ(m, kIdentity);
}

TEST(TransformMultiply, AppliesTheSecondFirstAndMayOverlap)
{
    Numbers scale = {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1};
    const Numbers move = {1, 0, 0, 10, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    korvale_transform_multiply(scale.data(), move.data(), scale.data());
    EXPECT_THAT(scale, ElementsAre(2, 0, 0, 20, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 1));
}

TEST(TransformInvert, UndoesMovingScalingAndExchangingAxes)
{
    const Numbers m = {0, 2, 0, 10, 4, 0, 0, 20, 0, 0, 8, 40, 0, 0, 0, 1};
    Numbers inverse = {};
    EXPECT_EQ(korvale_transform_invert(m.data(), inverse.data(), nullptr), KORVALE_OK);
    EXPECT_THAT(inverse, ElementsAre(0, 0.25, 0, -5, 0.5, 0, 0, -5, 0, 0, 0.125, -5, 0, 0, 0, 1));
    EXPECT_EQ(korvale_transform_invert(inverse.data(), inverse.data(), nullptr), KORVALE_OK); // in place
    EXPECT_EQ(inverse, m);
}

TEST(TransformInvert, OfAPerspectiveIsOneToo)
{
    const Numbers m = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0.5, 1};
    Numbers inverse = {};
    EXPECT_EQ(korvale_transform_invert(m.data(), inverse.data(), nullptr), KORVALE_OK);
    EXPECT_THAT(inverse, ElementsAre(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -0.5, 1));
}

TEST(TransformInvert, RandomOnesMultiplyToTheIdentity)
{
    Random random(20);
    for (int round = 0; round < 2000; ++round) {
        korvale_srt srt;
        for (int k = 0; k < 3; ++k) {
            srt.scale[k] = random.uniform(0.1, 10) * (random.uniform(0, 1) < 0.5 ? -1 : 1);
            srt.rotation[k] = random.uniform(-4, 4);
            srt.translation[k] = random.uniform(-100, 100);
        }
        Numbers m, inverse, product;
        korvale_transform_from_srt(&srt, m.data());
        ASSERT_EQ(korvale_transform_invert(m.data(), inverse.data(), nullptr), KORVALE_OK);
        korvale_transform_multiply(m.data(), inverse.data(), product.data());
        for (size_t i = 0; i < 16; ++i) // the largest number met is 100 * 100 / 0.1; rounding is some 1e-16 of that
            ASSERT_NEAR(product[i], kIdentity[i], 1e-11);
        for (size_t i = 12; i < 16; ++i)
            ASSERT_EQ(inverse[i], kIdentity[i]);
    }
}

TEST(TransformInvert, RefusesWhatNothingUndoes)
{
    Numbers flat = kIdentity, inverse = kIdentity;
    flat[10] = 0;
    const auto text = [&](const double* m) {
        return sentence_of(KORVALE_BAD_ARGUMENT,
                           [&](auto* e) { return korvale_transform_invert(m, inverse.data(), e); });
    };
    EXPECT_EQ(text(flat.data()),
              "korvale_transform_invert: transform must be one that another undoes, but its determinant is 0");
    Numbers odd = kIdentity;
    odd[6] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(text(odd.data()), "korvale_transform_invert: transform must be finite, but its number 6 is nan");
    Numbers tiny = kIdentity;
    tiny[0] = std::numeric_limits<double>::denorm_min();
    EXPECT_EQ(text(tiny.data()), "korvale_transform_invert: transform must be one that another undoes, but the numbers "
                                 "of that one are too large");
    EXPECT_EQ(text(nullptr), "korvale_transform_invert: transform must be given, but it is null");
    EXPECT_EQ(inverse, kIdentity);
}

TEST(TransformPoints, MovesAndDividesByTheFourth)
{
    const Numbers move = {1, 0, 0, 10, 0, 1, 0, 20, 0, 0, 1, 30, 0, 0, 0, 1};
    Numbers half = kIdentity;
    half[15] = 2;
    std::vector<double> xyz = {1, 2, 3, 4, 5, 6}, moved(6);
    const korvale_points from = points_of(xyz);
    const korvale_points_out to = points_to(moved), in_place = points_to(xyz);
    EXPECT_EQ(korvale_transform_points(move.data(), &from, &to, nullptr), KORVALE_OK);
    EXPECT_THAT(moved, ElementsAre(11, 22, 33, 14, 25, 36));
    EXPECT_EQ(korvale_transform_points(half.data(), &from, &in_place, nullptr), KORVALE_OK);
    EXPECT_THAT(xyz, ElementsAre(0.5, 1, 1.5, 2, 2.5, 3));
}

TEST(TransformPoints, ReadsAndWritesFloatsOfTwoCoordinatesWhereTheyAre)
{
    const Numbers move = {1, 0, 0, 10, 0, 1, 0, 20, 0, 0, 1, 30, 0, 0, 0, 1};
    float vertices[] = {1, 2, 99, 3, 4, 99};
    const korvale_points from = {vertices, 2, 12, 2, KORVALE_FLOAT};
    const korvale_points_out to = {vertices, 2, 12, 2, KORVALE_FLOAT};
    EXPECT_EQ(korvale_transform_points(move.data(), &from, &to, nullptr), KORVALE_OK);
    EXPECT_THAT(vertices, ElementsAre(11, 22, 99, 13, 24, 99));
}

TEST(TransformVectors, AreNotMoved)
{
    const Numbers m = {2, 0, 0, 10, 0, 3, 0, 20, 0, 0, 4, 30, 0, 0, 0, 1};
    std::vector<double> v = {1, 1, 1};
    const korvale_points from = points_of(v);
    const korvale_points_out to = points_to(v);
    EXPECT_EQ(korvale_transform_vectors(m.data(), &from, &to, nullptr), KORVALE_OK);
    EXPECT_THAT(v, ElementsAre(2, 3, 4));
}

TEST(TransformPoints, RefusesAnOutputOfAnotherLength)
{
    std::vector<double> xyz = {1, 2, 3, 4, 5, 6}, one(3, 7.0);
    const korvale_points from = points_of(xyz);
    const korvale_points_out to = points_to(one);
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](auto* e) { return korvale_transform_points(kIdentity.data(), &from, &to, e); }),
              "korvale_transform_points: output must have 2 points, but it has 1");
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](auto* e) { return korvale_transform_vectors(kIdentity.data(), nullptr, &to, e); }),
              "korvale_transform_vectors: vectors must be given, but it is null");
    EXPECT_EQ(
        sentence_of(KORVALE_BAD_ARGUMENT, [&](auto* e) { return korvale_transform_points(nullptr, &from, &to, e); }),
        "korvale_transform_points: transform must be given, but it is null");
    EXPECT_THAT(one, ElementsAre(7, 7, 7));
}

} // namespace
} // namespace korvale::test
