// Sampling where the host brings a random generator of its own: this program's stands in for that of the layer.
#include <vector>

#include <gtest/gtest.h>

#include "data/sampling.h"
#include "platform/layer.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"

namespace {

unsigned seeded = 0;
std::vector<int> numbers; // drawn in turn, over and over
size_t drawn = 0;

} // namespace

extern "C" {

void Mwsrand(unsigned seed)
{
    seeded = seed;
    drawn = 0;
}

int Mwrand()
{
    return numbers[drawn++ % numbers.size()];
}
}

namespace korvale::test {
namespace {

const std::vector<double> kWeights = {1, 0, 0, 0, 1, 0, 0, 0, 1};

TEST(OwnGenerator, IsSeededAndDrawnThreeTimesAPoint)
{
    numbers = {5, 16384, 8192, 32767, 32767, 1, 0, 0, 0};
    auto triangle = doubles<Data>(9, kWeights);
    for (const int count : {1, 3, 40, 5000}) {
        auto points = array_of<Data>(DATA_TYPE_DOUBLE, count, 3);
        DataTriSample(triangle, 77, points, nullptr, nullptr);
        EXPECT_EQ(seeded, 77u);
        EXPECT_EQ(drawn, static_cast<size_t>(3 * count));
        for (int i = 0; i < count; ++i) {
            const double us[] = {16384 / 32767.0, 1 - 32767 / 32767.0, 0}, vs[] = {8192 / 32767.0, 1 - 1 / 32767.0, 0};
            const double u = us[i % 3], v = vs[i % 3];
            ASSERT_TRUE(same_bits({u, v, 1 - u - v}, values_of(*points).data() + 3 * i)) << i;
        }
    }
}

TEST(OwnGenerator, ChoosesTheTriangleByTheFirstOfThree)
{
    // Shares 0.25, 1: the draws 8191 and 8192 lie on either side.
    numbers = {8191, 0, 0, 8192, 0, 0};
    auto triangles = doubles<Data>(9, {0, 0, 1, 1, 0, 1, 0, 1, 1, 0, 0, 2, 3, 0, 2, 0, 1, 2});
    for (const int count : {2, 40, 70000}) {
        auto points = array_of<Data>(DATA_TYPE_DOUBLE, count, 3);
        DataTriSample(triangles, 1, points, nullptr, nullptr);
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(points->dvals[3 * i + 2], i % 2 == 0 ? 1.0 : 2.0) << i;
    }
}

TEST(OwnGenerator, FoldsOnlyWeightsOfMoreThanOne)
{
    numbers = {0, 32767, 0, 0, 0, 32767, 0, 32767, 1}; // u + v is 1, 1 and a little more
    auto triangle = doubles<Data>(9, kWeights);
    auto points = array_of<Data>(DATA_TYPE_DOUBLE, 40, 3);
    DataTriSample(triangle, 1, points, nullptr, nullptr);
    const double v = 1 - 1 / 32767.0;
    for (int i = 0; i < 39; i += 3)
        EXPECT_TRUE(same_bits({1, 0, 0, 0, 1, 0, 0, v, 1 - 0.0 - v}, points->dvals + 3 * i)) << i;
}

TEST(OwnGenerator, TakesTheFirstTriangleThatReachesTheDraw)
{
    // Shares 0, 0.5, 0.5, 1: a draw of 0 is reached by the first, what is above 0.5 by the last alone.
    numbers = {0, 0, 0, 1, 0, 0, 16384, 0, 0, 32767, 0, 0};
    const auto triangle = [](double z, double width) { return std::vector<double>{0, 0, z, width, 0, z, 0, 1, z}; };
    std::vector<double> corners;
    for (const auto& t : {triangle(1, 0), triangle(2, 1), triangle(3, 0), triangle(4, 1)})
        corners.insert(corners.end(), t.begin(), t.end());
    auto triangles = doubles<Data>(9, corners);
    for (const int count : {4, 40, 40000}) {
        auto points = array_of<Data>(DATA_TYPE_DOUBLE, count, 3);
        DataTriSample(triangles, 1, points, nullptr, nullptr);
        const double chosen[] = {1, 2, 4, 4};
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(points->dvals[3 * i + 2], chosen[i % 4]) << i;
    }
}

TEST(OwnGenerator, MayGiveNumbersBeyondItsRange)
{
    numbers = {40000, -3, 5, -1, 2, 3};
    auto triangles = doubles<Data>(9, {0, 0, 1, 1, 0, 1, 0, 1, 1, 0, 0, 2, 3, 0, 2, 0, 1, 2});
    for (const int count : {2, 70000}) {
        auto points = array_of<Data>(DATA_TYPE_DOUBLE, count, 3);
        DataTriSample(triangles, 1, points, nullptr, nullptr);
        EXPECT_EQ(points->dvals[2], 2.0) << "above every share: the last";
        EXPECT_EQ(points->dvals[5], 1.0) << "below every share: the first";
    }
}

} // namespace
} // namespace korvale::test
