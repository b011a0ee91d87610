// What the library says of itself while it runs.
#include <korvale.h>
#include <korvale_c.h>

#include <gtest/gtest.h>

namespace korvale::test {
namespace {

TEST(Version, IsThatOfTheHeader)
{
    EXPECT_STREQ(korvale_version(), KORVALE_VERSION);
    EXPECT_EQ(korvale_version_number(),
              10000 * KORVALE_VERSION_MAJOR + 100 * KORVALE_VERSION_MINOR + KORVALE_VERSION_PATCH);
    EXPECT_GE(korvale_version_number(), 10100);
}

} // namespace
} // namespace korvale::test
