// Every operation on lanes beside the same operation on doubles, bit by bit, over values of which many are zeros of
// both signs, infinite, denormal or not a number. A step is run value by value, in pairs, and four at a time.
#include "platform/internal/lanes.h"

#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "platform/internal/lanes3.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

using namespace korvale::platform;

namespace korvale::test {
namespace {

constexpr int64_t kCount = 4003; // leaves a pair and an odd one
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Inputs {
    std::vector<double> a, b, c;
};

/// Awkward values, and each pair of a few special ones.
Inputs awkward_inputs()
{
    Random random(20261121);
    Inputs in = {random.awkwards(kCount), random.awkwards(kCount), random.awkwards(kCount)};
    const double special[] = {0.0, -0.0, 1.0, -1.0, kInfinity, -kInfinity, kNaN, -kNaN, 5e-324, -5e-324, 1e308};
    size_t k = 0;
    for (const double x : special)
        for (const double y : special) {
            in.a[k] = x;
            in.b[k++] = y;
        }
    for (; k < static_cast<size_t>(kCount) / 2; k += 3)
        in.b[k] = in.a[k]; // equals
    return in;
}

/// Runs step.operator()<V>(in, i, out), which stores width_of<V> results at out + i, in every width.
template <class Step>
void expect_same_in_every_width(Step step)
{
    const Inputs in = awkward_inputs();
    std::vector<double> one(kCount), two(kCount, 77.0), four(kCount, 77.0), widest_of_all(kCount, 77.0);
    for (int64_t i = 0; i < kCount; ++i)
        step.template operator()<double>(in, i, one.data());
    for_two_lanes<int64_t>(0, kCount, [&]<class V>(int64_t i) { step.template operator()<V>(in, i, two.data()); });
    EXPECT_TRUE(same_bits(one, two));
    for_lanes(0, kCount, [&]<class V>(int64_t i) { step.template operator()<V>(in, i, widest_of_all.data()); });
    EXPECT_TRUE(same_bits(one, widest_of_all));
    if (!kFourLanes || has_avx2()) {
        for_four_lanes<int64_t>(0, kCount,
                                [&]<class V>(int64_t i) { step.template operator()<V>(in, i, four.data()); });
        EXPECT_TRUE(same_bits(one, four));
    }
}

#define STEP(...)                                                                                                      \
    []<class V>(const Inputs& in, int64_t i, double* out) {                                                            \
        const V a = load<V>(in.a.data() + i), b = load<V>(in.b.data() + i), c = load<V>(in.c.data() + i);              \
        (void)a, (void)b, (void)c;                                                                                     \
        store<V>(out + i, __VA_ARGS__);                                                                                \
    }

TEST(Lanes, ArithmeticIsThatOfDoubles)
{
    expect_same_in_every_width(STEP(a + b));
    expect_same_in_every_width(STEP(a - b));
    expect_same_in_every_width(STEP(a * b));
    expect_same_in_every_width(STEP(a / b));
    expect_same_in_every_width(STEP(-a));
}

TEST(Lanes, ADoubleStandsForItsValueInEachLane)
{
    expect_same_in_every_width(STEP(a + 3.7));
    expect_same_in_every_width(STEP(a - 3.7));
    expect_same_in_every_width(STEP(a * 3.7));
    expect_same_in_every_width(STEP(a / 3.7));
    expect_same_in_every_width(STEP(3.7 + a));
    expect_same_in_every_width(STEP(3.7 - a));
    expect_same_in_every_width(STEP(3.7 * a));
    expect_same_in_every_width(STEP(3.7 / a));
    expect_same_in_every_width(STEP(all<V>(3.7)));
    expect_same_in_every_width(STEP(V()));
    expect_same_in_every_width(STEP(select(a < 1.0, b, c)));
    expect_same_in_every_width(STEP(select(1.0 < a, b, c)));
}

TEST(Lanes, IntegersAreLoadedAsDoubles)
{
    Random random(20261122);
    std::vector<int32_t> integers(3 * kCount);
    for (int32_t& value : integers)
        value = static_cast<int32_t>(random.bits());
    integers[0] = std::numeric_limits<int32_t>::min();
    integers[1] = std::numeric_limits<int32_t>::max();
    const int32_t* const from = integers.data();
    expect_same_in_every_width(
        [from]<class V>(const Inputs&, int64_t i, double* out) { store<V>(out + i, load<V>(from + i)); });
    expect_same_in_every_width([from]<class V>(const Inputs&, int64_t i, double* out) {
        const Lanes3<V> p = load_points<V>(from + 3 * i);
        store<V>(out + i, (p.x - p.y) * 0.5 + p.z);
    });
}

TEST(Lanes, NothingIsFusedOrReordered)
{
    expect_same_in_every_width(STEP(a * b + c));
    expect_same_in_every_width(STEP(a + b + c));
    expect_same_in_every_width(STEP(c - a * b));
    expect_same_in_every_width(STEP(a / b * c));
    expect_same_in_every_width(STEP(a - b + b));
}

TEST(Lanes, ConditionsAreThoseOfDoubles)
{
    expect_same_in_every_width(STEP(select(a == b, all<V>(1.0), all<V>(-0.0))));
    expect_same_in_every_width(STEP(select(a != b, all<V>(1.0), all<V>(-0.0))));
    expect_same_in_every_width(STEP(select(a < b, all<V>(1.0), all<V>(-0.0))));
    expect_same_in_every_width(STEP(select(a <= b, all<V>(1.0), all<V>(-0.0))));
    expect_same_in_every_width(STEP(select(a > b, all<V>(1.0), all<V>(-0.0))));
    expect_same_in_every_width(STEP(select(a >= b, all<V>(1.0), all<V>(-0.0))));
    expect_same_in_every_width(STEP(select((a < b) & (b < c), a, c)));
    expect_same_in_every_width(STEP(select((a < b) | (b < c), a, c)));
}

TEST(Lanes, FunctionsAreThoseOfDoubles)
{
    expect_same_in_every_width(STEP(root(a)));
    expect_same_in_every_width(STEP(absolute(a)));
    expect_same_in_every_width(STEP(lesser(a, b)));
    expect_same_in_every_width(STEP(greater(a, b)));
}

/// What four lanes hold, {} where the processor has none.
template <class Make>
std::vector<double> four_lanes_of(Make make)
{
    std::vector<double> result;
    if (kFourLanes && !has_avx2())
        return result;
    result.resize(4);
    for_four_lanes<int>(0, 4, [&]<class V>(int) { store(result.data(), make.template operator()<V>()); });
    return result;
}

TEST(Lanes, TheSecondOfEqualsAndOfWhatIsNotANumberIsKept)
{
    EXPECT_TRUE(same_bits(-0.0, lesser(0.0, -0.0)));
    EXPECT_TRUE(same_bits(0.0, lesser(-0.0, 0.0)));
    EXPECT_TRUE(same_bits(-0.0, greater(0.0, -0.0)));
    EXPECT_TRUE(same_bits(0.0, greater(-0.0, 0.0)));
    EXPECT_TRUE(same_bits(2.0, lesser(kNaN, 2.0)));
    EXPECT_TRUE(same_bits(2.0, greater(kNaN, 2.0)));
    EXPECT_TRUE(same_bits(kNaN, lesser(2.0, kNaN)));
    EXPECT_TRUE(same_bits(kNaN, greater(2.0, kNaN)));
}

TEST(Lanes, TheSignOfANaNIsCleared)
{
    const double negative = std::copysign(kNaN, -1.0);
    double pair[2];
    store(pair, absolute(Pair{negative, -0.0}));
    EXPECT_FALSE(std::signbit(pair[0]));
    EXPECT_FALSE(std::signbit(pair[1]));
    for (const double v : four_lanes_of([negative]<class V>() { return absolute(all<V>(negative)); }))
        EXPECT_FALSE(std::signbit(v));
}

/// Calls check(holds, bits, any, any_false) for every combination of conditions in the lanes of V.
template <class V>
struct Combinations {
    static constexpr int kLanes = width_of<V>;

    /// The answers are stored, as only they may leave a function of four lanes.
    struct Answers {
        int bits[16];
        bool any[16], any_false[16];
    };

    KORVALE_OVER_LANES static void ask(Answers& answers)
    {
        for (int set = 0; set < 1 << kLanes; ++set) {
            double values[kLanes];
            for (int l = 0; l < kLanes; ++l)
                values[l] = (set >> l & 1) != 0 ? -1.0 : kNaN;
            const auto condition = load<V>(values) < 0.0;
            answers.bits[set] = bits(condition);
            answers.any[set] = any(condition);
            answers.any_false[set] = any_false(condition);
        }
    }

    static void check(const Answers& answers)
    {
        for (int set = 0; set < 1 << kLanes; ++set) {
            EXPECT_EQ(set, answers.bits[set]);
            EXPECT_EQ(set != 0, answers.any[set]) << set;
            EXPECT_EQ(set != (1 << kLanes) - 1, answers.any_false[set]) << set;
        }
    }
};

TEST(Lanes, EveryCombinationOfConditionsIsTold)
{
    for_two_lanes<int>(0, 3, []<class V>(int) {
        typename Combinations<V>::Answers answers;
        Combinations<V>::ask(answers);
        Combinations<V>::check(answers);
    });
    if (kFourLanes && !has_avx2())
        GTEST_SKIP() << "no four lanes here";
    typename Combinations<Quad>::Answers answers;
    for_four_lanes<int>(0, 4, [&answers]<class V>(int) {
        if constexpr (width_of<V> == 4)
            Combinations<V>::ask(answers);
    });
    Combinations<Quad>::check(answers);
}

TEST(Lanes, LanesAreReducedInTurn)
{
    EXPECT_TRUE(same_bits(-3.0, reduce_least(Pair{2.0, -3.0})));
    EXPECT_TRUE(same_bits(2.0, reduce_greatest(Pair{2.0, -3.0})));
    EXPECT_TRUE(same_bits(-0.0, reduce_least(Pair{0.0, -0.0})));
    EXPECT_TRUE(same_bits(2.0, reduce_least(Pair{kNaN, 2.0})));
    EXPECT_TRUE(same_bits(5.0, reduce_least(5.0)));
    EXPECT_TRUE(same_bits(5.0, reduce_greatest(5.0)));
    const double values[] = {2.0, kNaN, -7.0, 4.0};
    for (const double v : four_lanes_of([&values]<class V>() { return all<V>(reduce_least(load<V>(values))); }))
        EXPECT_EQ(-7.0, v);
    for (const double v : four_lanes_of([&values]<class V>() { return all<V>(reduce_greatest(load<V>(values))); }))
        EXPECT_TRUE(same_bits(4.0, v));
}

TEST(Lanes, ALaneIsReadByItsNumber)
{
    for (const double v : four_lanes_of([]<class V>() {
             if constexpr (width_of<V> == 4)
                 return all<V>(Quad(1.0, 2.0, 4.0, 8.0)[2]);
             else
                 return all<V>(0.0);
         }))
        EXPECT_EQ(4.0, v);
}

TEST(Lanes, ALoopVisitsEachNumberOnceAndInOrder)
{
    for (int begin : {0, 1, 5})
        for (int count = 0; count < 20; ++count) {
            std::vector<int> expected, two, four, either;
            for (int i = begin; i < begin + count; ++i)
                expected.push_back(i);
            const auto note = [](std::vector<int>& seen) {
                return [&seen]<class V>(int i) {
                    for (int l = 0; l < width_of<V>; ++l)
                        seen.push_back(i + l);
                };
            };
            for_two_lanes<int>(begin, begin + count, note(two));
            EXPECT_EQ(expected, two);
            for_lanes(begin, begin + count, note(either));
            EXPECT_EQ(expected, either);
            if (!kFourLanes || has_avx2()) {
                for_four_lanes<int>(begin, begin + count, note(four));
                EXPECT_EQ(expected, four);
            }
        }
    std::vector<int> none;
    for_lanes(3, 1, [&none]<class V>(int i) { none.push_back(i); });
    EXPECT_TRUE(none.empty());
}

TEST(Lanes, TheLeastAndTheGreatestPassOverWhatIsNotANumber)
{
    Random random(3);
    for (int n = 0; n < 40; ++n)
        for (int round = 0; round < 20; ++round) {
            const std::vector<double> values = random.awkwards(n);
            double least = 2.5, greatest = -2.5;
            for (const double v : values) {
                least = v < least ? v : least;
                greatest = v > greatest ? v : greatest;
            }
            const double* const p = values.data();
            const auto step = [p]<class V>(int i) { return load<V>(p + i); };
            EXPECT_EQ(least, least_over(0, n, 2.5, step));
            EXPECT_EQ(least, least_over_two_lanes<int>(0, n, 2.5, step));
            EXPECT_EQ(greatest, greatest_over(0, n, -2.5, step));
        }
}

// Points.

/// A step over three vectors a = (a, b, c), b = (b, c, a), that stores one value.
#define STEP3(...)                                                                                                     \
    []<class V>(const Inputs& in, int64_t i, double* out) {                                                            \
        const V x = load<V>(in.a.data() + i), y = load<V>(in.b.data() + i), z = load<V>(in.c.data() + i);              \
        const Lanes3<V> p = {x, y, z}, q = {y, z, x};                                                                  \
        (void)p, (void)q;                                                                                              \
        store<V>(out + i, __VA_ARGS__);                                                                                \
    }

TEST(Lanes3, ArithmeticIsThatOfTheCoordinates)
{
    expect_same_in_every_width(STEP3((p + q).x));
    expect_same_in_every_width(STEP3((p + q).y));
    expect_same_in_every_width(STEP3((p + q).z));
    expect_same_in_every_width(STEP3((p - q).x));
    expect_same_in_every_width(STEP3((p - q).y));
    expect_same_in_every_width(STEP3((p - q).z));
    expect_same_in_every_width(STEP3((q.x * p).x));
    expect_same_in_every_width(STEP3((q.x * p).y));
    expect_same_in_every_width(STEP3((q.x * p).z));
    expect_same_in_every_width(STEP3((p / q.x).x));
    expect_same_in_every_width(STEP3((p / q.x).y));
    expect_same_in_every_width(STEP3((p / q.x).z));
    expect_same_in_every_width(STEP3(dot(p, q)));
    expect_same_in_every_width(STEP3(cross(p, q).x));
    expect_same_in_every_width(STEP3(cross(p, q).y));
    expect_same_in_every_width(STEP3(cross(p, q).z));
}

TEST(Lanes3, DotAndCrossAreSummedFromTheLeft)
{
    const Lanes3<double> p = {1e16, 1.0, -1e16}, ones = {1.0, 1.0, 1.0};
    EXPECT_EQ(0.0, dot(p, ones));
    const Lanes3<double> c = cross(Lanes3<double>{1, 2, 3}, Lanes3<double>{5, 7, 11});
    EXPECT_EQ(1.0, c.x);
    EXPECT_EQ(4.0, c.y);
    EXPECT_EQ(-3.0, c.z);
}

/// Calls step.operator()<V>() in each width there is.
template <class Step>
void in_every_width(Step step)
{
    for_two_lanes<int>(0, 3, [&]<class V>(int) { step.template operator()<V>(); });
    if (!kFourLanes || has_avx2())
        for_four_lanes<int>(0, 4, [&]<class V>(int) { step.template operator()<V>(); });
}

TEST(Lanes3, PointsArePartedByCoordinateAndListedAgain)
{
    const double p[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    in_every_width([&p]<class V>() {
        constexpr int n = width_of<V>;
        double x[n], y[n], z[n], again[3 * n];
        const Lanes3<V> points = load_points<V>(p);
        store(x, points.x);
        store(y, points.y);
        store(z, points.z);
        store_points(again, points);
        for (int l = 0; l < n; ++l) {
            EXPECT_EQ(p[3 * l], x[l]);
            EXPECT_EQ(p[3 * l + 1], y[l]);
            EXPECT_EQ(p[3 * l + 2], z[l]);
        }
        for (int k = 0; k < 3 * n; ++k)
            EXPECT_EQ(p[k], again[k]);
        V listed[3] = {load<V>(p), load<V>(p + n), load<V>(p + 2 * n)};
        part_three(listed, listed); // in place
        list_three(listed, listed);
        for (int k = 0; k < 3; ++k)
            store(again + k * n, listed[k]);
        for (int k = 0; k < 3 * n; ++k)
            EXPECT_EQ(p[k], again[k]);
    });
}

TEST(Lanes3, PointsAreFetchedByNumber)
{
    std::vector<double> p;
    for (int k = 0; k < 30; ++k)
        p.push_back(k);
    const int32_t numbers[] = {7, -1, 0, -1, 9, -1, 7, -1};
    in_every_width([&]<class V>() {
        constexpr int n = width_of<V>;
        double x[n], y[n], z[n];
        const Lanes3<V> points = points_at<V>(p.data(), numbers, 2);
        store(x, points.x);
        store(y, points.y);
        store(z, points.z);
        for (int l = 0; l < n; ++l) {
            EXPECT_EQ(3.0 * numbers[2 * l], x[l]);
            EXPECT_EQ(3.0 * numbers[2 * l] + 1.0, y[l]);
            EXPECT_EQ(3.0 * numbers[2 * l] + 2.0, z[l]);
        }
    });
}

TEST(Lanes3, VectorsAreSeparatedForAdding)
{
    const double p[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    in_every_width([&p]<class V>() {
        Separate3<V> at;
        separate(load_points<V>(p), at);
        for (int l = 0; l < width_of<V>; ++l) {
            EXPECT_EQ(p[3 * l], at.xy_of(l)[0]);
            EXPECT_EQ(p[3 * l + 1], at.xy_of(l)[1]);
            EXPECT_EQ(p[3 * l + 2], at.z[l]);
        }
    });
}

// Dispatch.

TEST(Widest, CallsTheWideFunctionWhereThereIsOneToCall)
{
    EXPECT_EQ(kFourLanes && has_avx2() ? 4 : 2, widest([] { return 4; }, [] { return 2; }));
    int called = 0;
    widest([&called] { called += 1; }, [&called] { called += 1; });
    EXPECT_EQ(1, called);
}

} // namespace
} // namespace korvale::test
