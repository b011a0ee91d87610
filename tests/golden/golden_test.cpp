// The pinned number of each workload.
#include <gtest/gtest.h>

#include "tests/golden/workload.h"

namespace korvale::test {

class Golden : public testing::TestWithParam<Workload> {};

TEST_P(Golden, NumberIsThePinnedOne)
{
    Hash hash;
    GetParam().run(GetParam().rounds, hash);
    EXPECT_EQ(hash.value(), GetParam().number) << "it is 0x" << std::hex << hash.value() << 'u';
}

INSTANTIATE_TEST_SUITE_P(Each, Golden, testing::ValuesIn(workloads()), [](const auto& one) { return one.param.name; });

} // namespace korvale::test
