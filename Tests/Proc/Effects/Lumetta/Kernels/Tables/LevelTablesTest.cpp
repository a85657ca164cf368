#include "Proc/Effects/Lumetta/Kernels/Tables/LevelTables.h"

#include "Proc/Effects/Lumetta/Kernels/Luma/Histogram.h"
#include "Proc/Effects/Lumetta/Kernels/Tables/GradientTable.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <climits>
#include <numeric>

namespace Velnor::Proc::Kernels {
namespace {

using namespace Testing;

TEST(LevelTables, StretchIsTheExactQuotientRoundedHalfUp) {
    for (int low = 0; low < 256; ++low)
        for (int high = low + 1; high < 256; ++high) {
            Table const table = StretchTable({static_cast<unsigned char>(low), static_cast<unsigned char>(high)});
            int const range = high - low;
            for (int i = 0; i < 256; ++i) {
                int const expected = i <= low ? 0 : i >= high ? 255 : (2 * 255 * (i - low) + range) / (2 * range);
                ASSERT_EQ(table[static_cast<std::size_t>(i)], expected) << low << ".." << high << " at " << i;
            }
        }
    EXPECT_EQ(StretchTable({77, 77}), IdentityTable());
}

TEST(LevelTables, ExposureIsRoundedInDoublePrecisionAndBounded) {
    EXPECT_EQ(ExposureTable(10)[200], 255);
    EXPECT_EQ(ExposureTable(10)[100], 130);
    EXPECT_EQ(ExposureTable(-10)[255], 196);
    EXPECT_EQ(ExposureTable(5)[50], 57); // 50 * 1.15 is just below 57.5
    EXPECT_EQ(ExposureTable(0), IdentityTable());
    for (int const steps : {INT_MAX, INT_MIN}) {
        Table const table = ExposureTable(steps);
        EXPECT_EQ(table[0], 0);
        for (std::size_t i = 1; i < 256; ++i) ASSERT_EQ(table[i], steps > 0 ? 255 : 0);
    }
}

TEST(LevelTables, OffsetsAreClampedForAnyValue) {
    for (std::int64_t const offset :
         {std::int64_t{0}, std::int64_t{-20}, std::int64_t{300}, std::int64_t{INT_MAX}, -std::int64_t{INT_MIN}}) {
        Table const table = OffsetTable(offset);
        for (int i = 0; i < 256; ++i)
            ASSERT_EQ(table[static_cast<std::size_t>(i)], std::clamp<std::int64_t>(i + offset, 0, 255));
    }
}

TEST(LevelTables, ClipPointsStepUntilEnoughPixelsLieBehind) {
    Histogram histogram{};
    histogram[10] = 5;
    histogram[20] = 5;
    histogram[200] = 5;
    EXPECT_EQ(FindClipPair(histogram, 0, 0), (ClipPair{0, 255}));
    EXPECT_EQ(FindClipPair(histogram, 5, 5), (ClipPair{10, 200}));
    EXPECT_EQ(FindClipPair(histogram, 6, 6), (ClipPair{20, 20}));
    EXPECT_EQ(FindClipPair(histogram, 100, 100), (ClipPair{255, 0})); // more than there are: the other end
    EXPECT_EQ(Soften({11, 200}), (ClipPair{5, 227}));
}

TEST(Histogram, CountsLikeAPlainLoopWhateverTheRows) {
    auto const context = CreateContext();
    for (auto const& [format, bytes] : {std::pair{PixFmt::BGR24, 3U}, {PixFmt::RGBA, 4U}})
        for (std::uint32_t width : {1U, 3U, 4U, 17U, 64U}) {
            VideoHandle const picture = MakeNoise(*context, format, width, 5);
            ConstPlane const samples = picture->GetPlane(0);
            LumaWeights const weights = WeightsByByte(format == PixFmt::BGR24);
            std::array<Histogram, 4> expected{};
            for (std::uint64_t y = 0; y < 5; ++y)
                for (std::uint64_t x = 0; x < width; ++x) {
                    unsigned char const* const pixel = samples.GetRow(y) + x * bytes;
                    for (std::size_t k = 0; k < 3; ++k) ++expected[k][pixel[k]];
                    ++expected[3][(weights[0] * pixel[0] + weights[1] * pixel[1] + weights[2] * pixel[2]) / 1000];
                }
            auto const counted = CountBytesAndLuma(samples, bytes, weights);
            EXPECT_EQ(counted, expected);
            auto const components = CountBytes(samples, bytes);
            EXPECT_TRUE(std::equal(components.begin(), components.end(), expected.begin()));
        }
}

TEST(Histogram, CountsMoreOfOneLevelThanACounterHolds) {
    constexpr std::uint32_t SIDE = 401; // An odd row: pairs and a rest, 80,200 pairs in all.
    VideoHandle const picture = MakeFlat(*CreateContext(), PixFmt::RGB24, SIDE, SIDE, {7, 8, 9});
    auto const counted = CountBytesAndLuma(picture->GetPlane(0), 3, WeightsByByte(false));
    for (auto const& [channel, level] : {std::pair{0U, 7U}, {1U, 8U}, {2U, 9U}, {3U, 7U}}) {
        Histogram expected{};
        expected[level] = std::uint64_t{SIDE} * SIDE;
        EXPECT_EQ(counted[channel], expected) << channel;
    }
}

TEST(Histogram, LumaFollowsTheColourAndNotTheByteOrder) {
    auto const context = CreateContext();
    auto const lumaOf = [&](PixFmt format, std::initializer_list<int> pixel, unsigned int bytes, bool blueFirst) {
        VideoHandle const picture = MakeFlat(*context, format, 4, 4, pixel);
        auto const counted = CountBytesAndLuma(picture->GetPlane(0), bytes, WeightsByByte(blueFirst))[3];
        return std::distance(counted.begin(), std::ranges::max_element(counted));
    };
    EXPECT_EQ(lumaOf(PixFmt::RGB24, {200, 100, 50}, 3, false), 124); // 124200 / 1000
    EXPECT_EQ(lumaOf(PixFmt::BGRA, {50, 100, 200, 9}, 4, true), 124);
}

std::array<int, 4> Entry(PaletteTable const& table, std::size_t level) {
    return {table[4 * level], table[4 * level + 1], table[4 * level + 2], table[4 * level + 3]};
}

TEST(GradientTable, RampsTruncateTowardZeroAndRedComesFirst) {
    PaletteTable const falling = GradientTable({{0, Color(200, 10, 0, 255)}, {3, Color(199, 10, 0, 255)}});
    for (std::size_t level : {0U, 1U, 2U}) EXPECT_EQ(Entry(falling, level), (std::array<int, 4>{0, 10, 200, 255}));
    EXPECT_EQ(Entry(falling, 3), (std::array<int, 4>{0, 10, 199, 255}));
    EXPECT_EQ(Entry(GradientTable({{90, Color(0, 0, 255, 7)}}), 200), (std::array<int, 4>{255, 0, 0, 7}));
}

TEST(GradientTable, EndsAreFlatAndTheStopsAtTheEndsAreKept) {
    Color const black(0, 0, 0, 255);
    Color const white(255, 255, 255, 255);
    PaletteTable const ramp = GradientTable({{0, black}, {255, white}});
    EXPECT_EQ(Entry(ramp, 254), (std::array<int, 4>{254, 254, 254, 255}));
    EXPECT_EQ(Entry(ramp, 255), (std::array<int, 4>{255, 255, 255, 255}));
    PaletteTable const half = GradientTable({{0, black}, {128, white}});
    EXPECT_EQ(Entry(half, 200), (std::array<int, 4>{255, 255, 255, 255}));
    PaletteTable const full = GradientTable({{0, black}, {256, white}});
    EXPECT_EQ(Entry(full, 255), (std::array<int, 4>{254, 254, 254, 255}));
    // A stop past the end shapes the ramp that leads to it and writes nothing beyond entry 255.
    PaletteTable const beyond = GradientTable({{0, black}, {512, white}});
    EXPECT_EQ(Entry(beyond, 255), (std::array<int, 4>{254, 254, 254, 255}));
}

} // namespace
} // namespace Velnor::Proc::Kernels
