// What the tests of the C interface share: the host's side of it, with fewer words.
#pragma once

#include <korvale_c.h>

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace korvale::test {

using Numbers = std::vector<double>;

/// A packed buffer of points x y z, to read or to write.
///@{
inline korvale_points points_of(const std::vector<double>& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}
inline korvale_points_out points_to(std::vector<double>& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}
///@}

/// A packed buffer of rows, to read or to write.
///@{
inline korvale_numbers rows_of(const std::vector<double>& values, int32_t width = 1)
{
    return {values.data(), static_cast<int64_t>(values.size()) / width, 0, width, KORVALE_DOUBLE};
}
inline korvale_numbers_out rows_to(std::vector<double>& values, int32_t width = 1)
{
    return {values.data(), static_cast<int64_t>(values.size()) / width, 0, width, KORVALE_DOUBLE};
}
///@}

/// The shares of some work that have been told, and the share that ends the work.
struct Told {
    std::vector<double> done;
    double end = 2;

    static int32_t tell(double done, void* user)
    {
        auto& self = *static_cast<Told*>(user);
        self.done.push_back(done);
        return done < self.end;
    }
};

/// The shares of some work that have been told, and how many are before the next one ends it.
struct Course {
    std::vector<double> told;
    size_t patience;

    static int32_t tell(double done, void* user)
    {
        auto& self = *static_cast<Course*>(user);
        self.told.push_back(done);
        return self.told.size() <= self.patience ? 1 : 0;
    }
};

/// How an outline is moved.
inline korvale_offset_options offset_options(double height, int32_t keep_vertices = 1, int32_t split = 1)
{
    korvale_offset_options options;
    korvale_offset_defaults(&options, sizeof options);
    options.height = height;
    options.keep_vertices = keep_vertices;
    options.split = split;
    return options;
}

/// Calls a function with an error of its own as last argument, expects the status, and returns the sentence, which is
/// empty after KORVALE_OK.
template <class Call>
std::string sentence_of(korvale_status status, Call call)
{
    korvale_error error = {};
    EXPECT_EQ(call(&error), status) << error.text;
    EXPECT_EQ(error.status, status);
    EXPECT_EQ(call(static_cast<korvale_error*>(nullptr)), status) << "without an error record";
    return error.text;
}

inline Numbers times(double factor, Numbers numbers)
{
    for (double& number : numbers)
        number *= factor;
    return numbers;
}

/// Where nothing else is told coordinates are below 16 and rounded by 9e-16 a few times; a band is swept at some ten
/// times its size.
inline void expect_near(const Numbers& numbers, const Numbers& expected, double slack = 5e-14)
{
    ASSERT_EQ(numbers.size(), expected.size());
    for (size_t i = 0; i < numbers.size(); ++i)
        EXPECT_NEAR(numbers[i], expected[i], slack) << "number " << i;
}

} // namespace korvale::test
