// Names in slots: found one by one, and kept apart by comparison or by hashing.
#include "equation/internal/names.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using equation::kNameBytes;
using equation::Names;
using equation::Word;

/// Names in slots as the records have them.
std::vector<uint8_t> slots_of(const std::vector<std::string>& names)
{
    std::vector<uint8_t> slots;
    for (const std::string& name : names) {
        slots.insert(slots.end(), name.begin(), name.end());
        slots.resize((slots.size() / kNameBytes + 1) * kNameBytes);
    }
    return slots;
}

std::vector<std::string> added_to(const Names& names)
{
    std::vector<std::string> added;
    for (int64_t i = 0; i < names.count(); ++i)
        added.emplace_back(reinterpret_cast<const char*>(names.added() + i * kNameBytes));
    return added;
}

Word word(const std::string& text)
{
    return {text.data(), text.size()};
}

TEST(Names, AreFoundWholeAndTheFirstOfEqualOnes)
{
    const std::vector<uint8_t> slots = slots_of({"a", "ab", "twelveletter", "ab", ""});
    const auto find = [&](const std::string& name) { return equation::find_name(slots.data(), 5, word(name)); };
    EXPECT_EQ(find("a"), 0);
    EXPECT_EQ(find("ab"), 1);
    EXPECT_EQ(find("twelveletter"), 2);
    EXPECT_EQ(find(""), 4);
    EXPECT_EQ(find("b"), -1);
    EXPECT_EQ(find("A"), -1);
    EXPECT_EQ(find("abc"), -1);
    EXPECT_EQ(find("twelvelette"), -1);
    EXPECT_EQ(find("twelveletters"), -1);
    EXPECT_EQ(equation::find_name(slots.data(), 0, word("a")), -1);
}

TEST(Names, WhatFollowsTheZeroOfASlotDoesNotCount)
{
    std::vector<uint8_t> slots = slots_of({"a", "", "abcdefgh"});
    slots[2] = slots[kNameBytes + 1] = slots[2 * kNameBytes + 9] = 'x';
    EXPECT_EQ(equation::find_name(slots.data(), 3, word("a")), 0);
    EXPECT_EQ(equation::find_name(slots.data(), 3, word("")), 1);
    EXPECT_EQ(equation::find_name(slots.data(), 3, word("abcdefgh")), 2);
    EXPECT_EQ(equation::find_name(slots.data(), 3, word("abcdefghx")), -1);
}

TEST(Names, OnlyTheCharactersOfTheWordAreRead)
{
    const std::vector<uint8_t> slots = slots_of({"abc"});
    EXPECT_EQ(equation::find_name(slots.data(), 1, {"abcdef", 3}), 0);
    EXPECT_EQ(equation::find_name(slots.data(), 1, {"abcdef", 4}), -1);
}

TEST(Names, AreRunsOfLetters)
{
    const Word first = equation::next_run_of_letters(" 1_Ab,c");
    EXPECT_EQ(std::string(first.first, first.length), "Ab");
    const Word second = equation::next_run_of_letters(first.first + first.length);
    EXPECT_EQ(std::string(second.first, second.length), "c");
    EXPECT_EQ(equation::next_run_of_letters(second.first + 1).length, 0u);
}

TEST(Names, AFewAreAddedOnceAndInOrder)
{
    const std::vector<uint8_t> slots = slots_of({"PI", "E"});
    Names names(slots.data(), 2, 4);
    ASSERT_TRUE(names.exists());
    for (const char* name : {"x", "PI", "y", "x"})
        names.add_unless_known(equation::word_of(name));
    EXPECT_EQ(added_to(names), (std::vector<std::string>{"x", "y"}));
}

TEST(Names, NoNamesStandOnNoSlots)
{
    Names names(nullptr, 0, 20);
    ASSERT_TRUE(names.exists());
    EXPECT_EQ(names.count(), 0);
    names.add_unless_known(equation::word_of("x"));
    EXPECT_EQ(added_to(names), std::vector<std::string>{"x"});
}

TEST(Names, LongListsAreTheSameAsComparedOneByOne)
{
    Random random(20260301);
    const auto name = [&] {
        std::string text;
        for (int letters = random.one_in(3) ? 12 : random.between(1, 3); letters > 0; --letters)
            text += "abAB"[random.below(4)];
        return text;
    };
    for (int round = 0; round < rounds(200); ++round) {
        std::vector<std::string> known, expected;
        for (int i = random.below(30); i > 0; --i)
            known.push_back(name());
        const std::vector<uint8_t> slots = slots_of(known);
        const int most = random.between(1, 200);
        Names names(slots.data(), static_cast<int64_t>(known.size()), most);
        ASSERT_TRUE(names.exists());
        for (int i = 0; i < most; ++i) {
            const std::string text = name();
            names.add_unless_known(word(text));
            const auto is_in = [&](const auto& list) {
                return std::find(list.begin(), list.end(), text) != list.end();
            };
            if (!is_in(known) && !is_in(expected))
                expected.push_back(text);
        }
        ASSERT_EQ(added_to(names), expected);
    }
}

} // namespace
} // namespace korvale::test
