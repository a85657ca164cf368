#include "Proc/Interfaces/FrameFormat.h"
#include "Proc/Interfaces/IEffect.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Velnor::Proc {
namespace {

TEST(FrameFormat, EachOfFourWordsCounts) {
    FrameFormat const frame{640, 480, 1, 1};
    EXPECT_EQ(FrameFormat::Square(640, 480), frame);
    EXPECT_NE((FrameFormat{641, 480, 1, 1}), frame);
    EXPECT_NE((FrameFormat{640, 481, 1, 1}), frame);
    EXPECT_NE((FrameFormat{640, 480, 2, 1}), frame);
    EXPECT_NE((FrameFormat{640, 480, 1, 2}), frame);
    std::uint32_t words[4];
    static_assert(sizeof words == sizeof(FrameFormat));
    FrameFormat const distinct{1, 2, 3, 4};
    std::memcpy(words, &distinct, sizeof words);
    for (std::uint32_t i = 0; i < 4; ++i) EXPECT_EQ(words[i], i + 1);
}

TEST(CropInfo, ApartRoundsEachMarginUpToItsStep) {
    CropInfo crop(1, 2, 4, 7);
    EXPECT_EQ(&crop.Apart(4, 3), &crop);
    EXPECT_EQ(crop, CropInfo(4, 3, 4, 9));
    EXPECT_EQ(CropInfo(1, 2, 3, 5).Apart(0, 1), CropInfo(1, 2, 3, 5));
    EXPECT_EQ(CropInfo(0, 0, 0, 0).Apart(16, 16), CropInfo());
    for (CropInfo const& other :
         {CropInfo(1, 0, 0, 0), CropInfo(0, 1, 0, 0), CropInfo(0, 0, 1, 0), CropInfo(0, 0, 0, 1)})
        EXPECT_FALSE(other == CropInfo());
}

TEST(TimeToProgress, MapsMediaTimeAndHasAController) {
    TimeToProgress progress;
    ASSERT_TRUE(progress.controller);
    EXPECT_EQ(progress.GetFraction(12345), 1.0); // a still
    progress.begin = 1000;
    progress.end = 3000;
    EXPECT_EQ(progress.GetFraction(1500), 0.25);
    EXPECT_EQ(progress.GetFraction(-5), 0.0);
    EXPECT_EQ(progress.GetFraction(9999), 1.0);
}

} // namespace
} // namespace Velnor::Proc
