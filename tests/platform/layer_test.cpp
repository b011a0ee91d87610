// The thin platform layer by itself.
#include "platform/layer.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvale::test {
using testing::ElementsAre;

namespace {

std::vector<int> draws(int n)
{
    std::vector<int> drawn;
    for (int i = 0; i < n; ++i)
        drawn.push_back(Mwrand());
    return drawn;
}

TEST(Mwrand, FollowsTheClassicGeneratorFromSeedOne)
{
    Mwsrand(1);
    EXPECT_THAT(draws(6), ElementsAre(41, 18467, 6334, 26500, 19169, 15724));
}

TEST(Mwrand, FollowsTheClassicGeneratorFromSeedSeven)
{
    Mwsrand(7);
    EXPECT_THAT(draws(6), ElementsAre(61, 17422, 15215, 7040, 15521, 6516));
}

TEST(Mwrand, AppliesTheStepToWholeThirtyTwoBitStates)
{
    Mwsrand(0); // 2531011 >> 16
    EXPECT_EQ(Mwrand(), 38);
    Mwsrand(0xFFFFFFFF); // (2531011 - 214013) >> 16
    EXPECT_EQ(Mwrand(), 35);
    Mwsrand(0x80000001); // the top bit of the state never reaches a result
    EXPECT_EQ(Mwrand(), 41);
}

TEST(Mwrand, SameSeedGivesTheSameNumbers)
{
    Mwsrand(12345);
    const std::vector<int> first = draws(1000);
    Mwsrand(12345);
    EXPECT_EQ(draws(1000), first);
}

TEST(Mwrand, ReachesBothEndsOfItsRange)
{
    Mwsrand(1);
    const std::vector<int> drawn = draws(300000);
    const auto [least, most] = std::minmax_element(drawn.begin(), drawn.end());
    EXPECT_EQ(*least, 0);
    EXPECT_EQ(*most, 32767);
}

TEST(Mwrand, StartsFromSeedOne)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a process of its own, in which nothing was seeded
    EXPECT_EXIT(std::exit(Mwrand() == 41 && Mwrand() == 18467 ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST(Mwrand, MayBeDrawnFromSeveralThreads)
{
    constexpr int kThreads = 4, kEach = 5000; // what each is given is not told: two may draw the same number
    std::vector<std::vector<int>> drawn(kThreads, std::vector<int>(2 * kEach));
    std::vector<std::thread> threads;
    for (std::vector<int>& mine : drawn)
        threads.emplace_back([&mine] {
            for (int i = 0; i < kEach; ++i)
                mine[static_cast<size_t>(i)] = Mwrand();
            korvale_draw_many(Mwrand, Mwsrand, mine.data() + kEach, kEach);
        });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<int>& mine : drawn)
        EXPECT_TRUE(std::all_of(mine.begin(), mine.end(), [](int number) { return number >= 0 && number <= 32767; }));
    Mwsrand(1);
    EXPECT_EQ(Mwrand(), 41);
    EXPECT_EQ(Mwrand(), 18467);
}

// --- Window messages -------------------------------------------------------------------------------------------------

TEST(RegisterWindowMessageA, CountsUpFromTheFirstOfTheRange)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(RegisterWindowMessageA("first") == 0xC000 && RegisterWindowMessageA("second") == 0xC001 &&
                                  RegisterWindowMessageA("third") == 0xC002
                              ? 0
                              : 1),
                testing::ExitedWithCode(0), "");
}

TEST(RegisterWindowMessageA, GivesANameItsIdentifierAgain)
{
    const unsigned one = RegisterWindowMessageA("one");
    const unsigned other = RegisterWindowMessageA("other");
    EXPECT_NE(one, other);
    EXPECT_GE(one, 0xC000u);
    EXPECT_LE(one, 0xFFFFu);
    EXPECT_EQ(RegisterWindowMessageA("one"), one);
    EXPECT_EQ(RegisterWindowMessageA("other"), other);
}

TEST(RegisterWindowMessageA, KeepsItsOwnCopyOfTheName)
{
    char name[] = "a name of the host's";
    const unsigned identifier = RegisterWindowMessageA(name);
    name[0] = 'b';
    EXPECT_NE(RegisterWindowMessageA(name), identifier);
    EXPECT_EQ(RegisterWindowMessageA("a name of the host's"), identifier);
}

TEST(RegisterWindowMessageA, TellsAPrefixFromTheName)
{
    EXPECT_NE(RegisterWindowMessageA("message"), RegisterWindowMessageA("messages"));
    EXPECT_NE(RegisterWindowMessageA(""), RegisterWindowMessageA("m"));
}

TEST(RegisterWindowMessageA, ReturnsZeroWithoutAName)
{
    EXPECT_EQ(RegisterWindowMessageA(nullptr), 0u);
}

/// 0 if the range gives exactly its 0x4000 identifiers and then none, while names it has keep theirs.
int use_up_the_range()
{
    for (unsigned i = 0; i < 0x4000; ++i)
        if (RegisterWindowMessageA(std::to_string(i).c_str()) != 0xC000 + i)
            return 1;
    if (RegisterWindowMessageA("one more") != 0 || RegisterWindowMessageA("another") != 0)
        return 2;
    return RegisterWindowMessageA("0") == 0xC000 && RegisterWindowMessageA("16383") == 0xFFFF ? 0 : 3;
}

TEST(RegisterWindowMessageA, ReturnsZeroOnceTheRangeIsUsedUp)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::exit(use_up_the_range()), testing::ExitedWithCode(0), "");
}

int a_hosts_rand()
{
    return 7;
}

void a_hosts_srand(unsigned)
{
}

TEST(korvale_draw_many, GivesWhatSoManyCallsGive)
{
    for (int count = 0; count <= 70; ++count) {
        const unsigned seed = 2463534242u * static_cast<unsigned>(count);
        std::vector<int> expected, drawn(static_cast<size_t>(count));
        Mwsrand(seed);
        for (int i = 0; i < count; ++i)
            expected.push_back(Mwrand());
        const int next = Mwrand();
        Mwsrand(seed);
        EXPECT_EQ(korvale_draw_many(Mwrand, Mwsrand, drawn.data(), count), 1);
        EXPECT_EQ(drawn, expected);
        EXPECT_EQ(Mwrand(), next) << count;
    }
}

TEST(korvale_draw_many, DrawsNothingWhereAHostStandsIn)
{
    Mwsrand(1);
    int number = -1;
    EXPECT_EQ(korvale_draw_many(a_hosts_rand, Mwsrand, &number, 1), 0);
    EXPECT_EQ(korvale_draw_many(Mwrand, a_hosts_srand, &number, 1), 0);
    EXPECT_EQ(number, -1);
    EXPECT_EQ(Mwrand(), 41);
}

// --- Registration of libraries ---------------------------------------------------------------------------------------

struct EntryCall {
    void* instance;
    unsigned reason;
    void* reserved;
};
std::vector<EntryCall> entry_calls;

int entry(void* instance, unsigned reason, void* reserved)
{
    entry_calls.push_back({instance, reason, reserved});
    return 1;
}

TEST(MwInitDLL, AttachesTheLibraryWithItsHandleAsInstance)
{
    entry_calls.clear();
    const MwDependancyNode node = {};
    void* const handle = MwInitDLL("library", entry, nullptr, &node);
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(entry_calls.size(), 1u);
    EXPECT_EQ(entry_calls[0].instance, handle);
    EXPECT_EQ(entry_calls[0].reason, 1u);
    EXPECT_EQ(entry_calls[0].reserved, nullptr);
    MwDllInPostConstruct(handle);
    MwDllInPreDestruct(handle);
    MwDllInPostDestruct(handle);
    EXPECT_EQ(entry_calls.size(), 1u);
}

TEST(MwInitDLL, GivesLoadedLibrariesDifferentHandles)
{
    void* const one = MwInitDLL("one", entry, nullptr, nullptr);
    void* const other = MwInitDLL("other", nullptr, nullptr, nullptr);
    EXPECT_NE(one, nullptr);
    EXPECT_NE(other, nullptr);
    EXPECT_NE(one, other);
    MwDllInPostDestruct(one);
    MwDllInPostDestruct(other);
}

TEST(MwApplicationBugCheck, PrintsTheMessageAndAborts)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(MwApplicationBugCheck(" *** wrong ***"), testing::KilledBySignal(SIGABRT),
                " \\*\\*\\* wrong \\*\\*\\*\n");
}

TEST(DisableThreadLibraryCalls, ReturnsOne)
{
    int instance;
    EXPECT_EQ(DisableThreadLibraryCalls(&instance), 1);
    EXPECT_EQ(DisableThreadLibraryCalls(nullptr), 1);
}

} // namespace

} // namespace korvale::test
