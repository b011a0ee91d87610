// Transforms and points of the C++ face, beside the direct calls.
#include "direct.h"

namespace korvale::test {
namespace {

TEST(FaceTransform, AppliesTheRightFactorFirst)
{
    const Transform place = Transform::translation({10, 0, 0}) * Transform::scaling({2, 3, 4});
    EXPECT_EQ(place.point({1, 1, 1}), (Point{12, 3, 4}));
    EXPECT_EQ(place.vector({1, 1, 1}), (Point{2, 3, 4}));
    EXPECT_EQ(place(0, 3), 10);
    EXPECT_EQ(place.transposed()(3, 0), 10);
    EXPECT_EQ(Transform() * place, place);
    EXPECT_EQ(Transform(place.rows()), place);
}

TEST(FaceTransform, TimesAPointMovesIt)
{
    const Transform place = Transform::translation({10, 20, 30}) * Transform::scaling({2, 3, 4});
    EXPECT_EQ(place * Point({1, 1, 1}), (Point{12, 23, 34}));
}

TEST(FaceTransform, ItsInverseUndoesIt)
{
    const Transform place = Transform::translation({10, 20, 30}) * Transform::scaling({2, 4, 8});
    EXPECT_EQ(place.inverse() * Point({12, 24, 38}), (Point{1, 1, 1}));
    EXPECT_EQ(place.inverse() * place, Transform());
    const double rows[] = {0, 0, 1, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1};
    EXPECT_EQ(Transform(rows).inverse(), Transform(rows).transposed());
}

TEST(FaceTransform, IsTheDirectCallsToTheBit)
{
    Random random(1209);
    for (int round = 0; round < rounds(100); ++round) {
        Srt srt;
        for (size_t k = 0; k < 3; ++k) {
            srt.scale[k] = random.uniform(0.2, 3);
            srt.rotation[k] = random.uniform(-1.5, 1.5);
            srt.translation[k] = random.uniform(-9, 9);
        }
        Srt copy = srt, back;
        Xfm m, inverse, turn, product;
        SRT2Transform(copy.scale.data(), copy.rotation.data(), copy.translation.data(), m);
        SRT2InvTransform(copy.scale.data(), copy.rotation.data(), copy.translation.data(), inverse);
        rotation_matrix(copy.rotation.data(), turn);
        MatrixMultiply(m, turn, product);
        const Transform t = Transform::from(srt);
        ASSERT_TRUE(same_bits(&m[0][0], t.rows().data(), 16));
        ASSERT_TRUE(same_bits(&inverse[0][0], Transform::inverse_of(srt).rows().data(), 16));
        ASSERT_TRUE(same_bits(&product[0][0], (t * Transform::rotation(srt.rotation)).rows().data(), 16));
        Transform2SRT(m, back.scale.data(), back.rotation.data(), back.translation.data());
        ASSERT_EQ(t.take_apart(), back);
        RotationMatrix(copy.rotation.data(), turn);
        ASSERT_TRUE(same_bits(&turn[0][0], Transform::rotation_in_degrees(srt.rotation).rows().data(), 16));
        TransformPoint(m, copy.rotation.data(), back.scale.data());
        TransformVector(m, copy.rotation.data(), back.rotation.data());
        ASSERT_TRUE(same_bits(back.scale.data(), t.point(srt.rotation).data(), 3));
        ASSERT_TRUE(same_bits(back.rotation.data(), t.vector(srt.rotation).data(), 3));

        Outline points = random_outline(random, 17, 0, 0, 5), moved(17);
        t.apply(points, moved);
        for (size_t i = 0; i < 17; ++i)
            ASSERT_EQ(moved[i], t.point(points[i]));
        t.apply(points);
        ASSERT_EQ(points, moved);
    }
}

TEST(FaceTransform, TellsThePole)
{
    const double quarter = 1.5707963267948966;
    EXPECT_TRUE(at_pole(Transform::rotation({0.3, quarter, 0.2}).take_apart()));
    EXPECT_TRUE(at_pole(Transform::rotation({0.3, -quarter, 0.2}).take_apart()));
    EXPECT_FALSE(at_pole(Transform::rotation({0.3, 1.5, 0.2}).take_apart()));
    EXPECT_FALSE(at_pole(Transform().take_apart()));
}

TEST(FaceTransform, SaysWhatItRefuses)
{
    EXPECT_EQ(refusal_of([] {
                  Transform::into_frame({0, 0, 0}, {0, 0, 2}, {0, 0, 1});
              }),
              "Transform::into_frame: z must be longer than 1e-06 and not along reference, but it is (0, 0, 2) beside "
              "(0, 0, 1)");
    Outline one(1), two(2);
    EXPECT_EQ(refusal_of([&] { Transform().apply(two, one); }),
              "Transform::apply: output must have 2 points, but it has 1");
    EXPECT_EQ(refusal_of([] {
                  Transform::scaling({1, 0, 1}).inverse();
              }),
              "Transform::inverse: transform must be one that another undoes, but its determinant is 0");
}

TEST(FacePoints, HandTheirBlockOver)
{
    Points points = offset({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}, 1).points;
    const double* const block = points.coordinates().data();
    double* const released = points.release();
    EXPECT_EQ(released, block);
    EXPECT_TRUE(points.empty());
    std::free(released);
}

} // namespace
} // namespace korvale::test
