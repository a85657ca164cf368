#include "Proc/Effects/Lumetta/Kernels/Tables/BalanceTable.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

namespace Velnor::Proc::Kernels {
namespace {

/// Entry i in exact rational terms: 255 stretched over what is left above c, or 2 a step where that begins with a jump.
int ExpectedEntry(int c, int grey, int i) {
    int const roomIn = 255 - c;
    int const roomOut = 255 - grey;
    if (i <= c && c > 0) return grey * i / c;
    bool const jumps = roomIn > 0 && roomOut >= 5 * roomIn;
    return jumps ? grey + 2 * (i - c) : grey + roomOut * (i - c) / roomIn;
}

TEST(BalanceTable, HoldsForEveryPairThatAColourCanHave) {
    std::set<std::pair<int, int>> pairs;
    for (int c = 0; c <= 255; ++c)
        for (int others = 0; others <= 510; ++others) pairs.emplace(c, (c + others) / 3);
    for (auto const& [c, grey] : pairs) {
        Table const table = BalanceTable(c, grey);
        for (int i = 0; i <= 255; ++i) {
            int const expected = ExpectedEntry(c, grey, i);
            ASSERT_GE(expected, 0);
            ASSERT_LE(expected, 255);
            ASSERT_EQ(table[static_cast<std::size_t>(i)], expected)
                << "c " << c << ", grey " << grey << ", entry " << i;
        }
        ASSERT_EQ(table[static_cast<std::size_t>(c)], grey);
    }
}

TEST(BalanceTable, SteepTablesRiseByTwoAndEndBelowWhite) {
    Table const steep = BalanceTable(250, 150);
    EXPECT_EQ(steep[0], 0);
    EXPECT_EQ(steep[125], 75);
    EXPECT_EQ(steep[250], 150);
    EXPECT_EQ(steep[251], 152);
    EXPECT_EQ(steep[255], 160);

    Table const gentle = BalanceTable(200, 133);
    EXPECT_EQ(gentle[200], 133);
    EXPECT_EQ(gentle[201], 135);
    EXPECT_EQ(gentle[255], 255);
}

TEST(BalanceTable, JumpOfFiveIsTheFirstSteepOne) {
    // 10 above c: 49 / 10 is 4 and stretches, 50 / 10 is 5 and does not.
    EXPECT_EQ(BalanceTable(245, 206)[255], 255);
    EXPECT_EQ(BalanceTable(245, 205)[255], 225);
}

TEST(BalanceTable, EndsOfTheRange) {
    Table const dark = BalanceTable(0, 85);
    EXPECT_EQ(dark[0], 85);
    EXPECT_EQ(dark[1], 85);
    EXPECT_EQ(dark[3], 87);
    EXPECT_EQ(dark[255], 255);

    Table const bright = BalanceTable(255, 85);
    EXPECT_EQ(bright[0], 0);
    EXPECT_EQ(bright[254], 84);
    EXPECT_EQ(bright[255], 85);
}

TEST(BalanceTable, GreyReferenceChangesNothing) {
    for (int c = 0; c <= 255; ++c) {
        Table const table = BalanceTable(c, c);
        for (std::size_t i = 0; i < table.size(); ++i) ASSERT_EQ(table[i], i) << "reference " << c;
    }
}

} // namespace
} // namespace Velnor::Proc::Kernels
