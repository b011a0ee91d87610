// The first example, which the README shows.
#include "tests/gallery/files.h"
#include "tests/gallery/outcome.h"

#include <gtest/gtest.h>

namespace korvale::test {
namespace {

TEST(OffsetSquare, PrintsTheCornersOfTheWiderSquare)
{
    const Outcome outcome = run_program("\"" OFFSET_SQUARE_PROGRAM "\"");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.printed, "-0.5 -0.5\n4.5 -0.5\n4.5 4.5\n-0.5 4.5\n");
}

TEST(OffsetSquare, IsTheExampleOfTheReadme)
{
    const std::string readme = read_file(PROJECT_FOLDER "/README.md"), start = "```cpp\n";
    const size_t from = readme.find(start) + start.size();
    const std::string example = readme.substr(from, readme.find("```", from) - from);
    const std::string source = read_file(PROJECT_FOLDER "/examples/offset_square/offset_square.cpp");
    EXPECT_EQ(source.substr(source.find("#include")), example);
}

} // namespace
} // namespace korvale::test
