#include "Proc/Effects/Lumetta/Kernels/Blur/BokehCore.h"

#include "Proc/Effects/Lumetta/Kernels/Blur/BokehMask.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace Velnor::Proc::Kernels {
namespace {

struct Bytes {
    std::uint64_t width;
    std::uint64_t height;
    std::vector<unsigned char> samples;

    Bytes(std::uint64_t rowBytes, std::uint64_t rows, unsigned int seed) : width(rowBytes), height(rows) {
        std::mt19937 random(seed);
        for (std::uint64_t i = 0; i < rows * (rowBytes + 3); ++i)
            samples.push_back(static_cast<unsigned char>(random()));
    }
    ConstPlane View() const { return {samples.data(), static_cast<std::int64_t>(width + 3), width, height}; }
    int At(std::int64_t x, std::int64_t y) const {
        return samples[static_cast<std::size_t>(y * static_cast<std::int64_t>(width + 3) + x)];
    }
};

/// A kernel with about a third of its weights 0, some of them at its rim.
BokehKernel MakeKernel(std::uint32_t width, std::uint32_t height, unsigned int seed) {
    Bytes shape(width, height, seed);
    for (unsigned char& sample : shape.samples) sample = sample < 90 ? 0 : sample;
    return MakeBokehKernel(shape.View(), 0.5, 1.7);
}

TEST(BokehKernel, IsTheShapeTurnedByHalfATurn) {
    unsigned char const shape[] = {51, 0, 255, 9, 102, 52, 204, 9};
    BokehKernel const kernel = MakeBokehKernel(ConstPlane(shape, 4, 3, 2), 0.2, 2);
    EXPECT_EQ(kernel.width, 3U);
    EXPECT_EQ(kernel.height, 2U);
    auto const f = [](int sample) { return static_cast<float>(sample) / 255.0F; };
    // 51 / 255 is not above 0.2 as a float; 52 is.
    EXPECT_EQ(kernel.weights, (std::vector<float>{2 * f(204), 2 * f(52), 2 * f(102), 2 * f(255), 0, f(51)}));
    float sum = 0;
    for (float const weight : {f(51), 0.0F, 2 * f(255), 2 * f(102), 2 * f(52), 2 * f(204)}) sum += weight;
    EXPECT_EQ(kernel.sum, sum);
}

TEST(BokehPadding, MirrorsWhateverTheConvolutionReads) {
    constexpr std::int64_t WIDTH = 13;
    constexpr std::int64_t HEIGHT = 11;
    Bytes const picture(WIDTH * 3, HEIGHT, 3);
    for (std::uint32_t kw = 0; kw < WIDTH; ++kw)
        for (std::uint32_t kh = 0; kh < HEIGHT; ++kh) {
            PaddedPicture const padded = PadPicture(picture.View(), MakeKernel(kw, kh, 1), 2, 1);
            ASSERT_EQ(padded.stride, (kw + WIDTH) * 3U);
            std::size_t const length = (kh + HEIGHT) * padded.stride;
            ASSERT_EQ(padded.values.size(), (length + 7) / 8 * 8);
            // Where the length was rounded up, the rows below are `shift` floats late.
            auto const shift = static_cast<std::int64_t>(padded.values.size() - length);
            auto const at = [&](std::int64_t x, std::int64_t y) {
                std::int64_t const mirrored = x < 0 ? -x : x >= WIDTH ? 2 * WIDTH - 2 - x : x;
                return mirrored * 3 + y * 1000;
            };
            for (std::int64_t y = -std::int64_t{kh / 2}; y < HEIGHT + kh - kh / 2 - 1; ++y)
                for (std::int64_t i = 0; i < static_cast<std::int64_t>(padded.stride) - 3; ++i) {
                    std::int64_t row = y < 0 ? -y : y >= HEIGHT ? 2 * HEIGHT - 2 - y : y;
                    std::int64_t const topmost = HEIGHT + (kh & 1); // of the rows anchored at the end
                    if (y > topmost && i < shift) row += 2;
                    std::int64_t const place = at(i / 3 - kw / 2, row);
                    float const expected = static_cast<float>(picture.At(place % 1000 + i % 3, row)) / 255.0F;
                    std::int64_t const index = (y + kh / 2) * static_cast<std::int64_t>(padded.stride) + i;
                    ASSERT_EQ(padded.values[static_cast<std::size_t>(index)], expected)
                        << kw << " x " << kh << " at " << i << ", " << y;
                }
        }
}

TEST(BokehConvolution, EveryInstructionSetGivesTheFloatsOfThePlainLoops) {
    std::mt19937 random(5);
    std::vector<std::array<std::uint32_t, 4>> sizes{{60, 40, 1, 1},   {60, 40, 1, 5},  {60, 40, 5, 1}, {60, 40, 2, 2},
                                                    {60, 40, 59, 39}, {44, 3, 43, 2},  {9, 8, 0, 0},   {9, 4, 8, 3},
                                                    {2, 2, 1, 1},     {64, 43, 41, 41}};
    for (int i = 0; i < 12; ++i) {
        auto const below = [&](std::uint32_t end) { return static_cast<std::uint32_t>(random() % end); };
        std::uint32_t const width = 2 + below(90);
        std::uint32_t const height = 2 + below(40);
        sizes.push_back({width, height, 1 + below(width - 1), 1 + below(height - 1)});
    }
    for (auto const& [width, height, kw, kh] : sizes) {
        BokehKernel const kernel = MakeKernel(kw, kh, kw + kh);
        PaddedPicture const padded = PadPicture(Bytes(width * 3, height, height).View(), kernel, 0.8, 2.5);
        std::vector<float> const expected = ConvolvePlain(padded, kernel);
        for (Target const target : SupportedBokehTargets())
            EXPECT_EQ(ConvolveWith(target, padded, kernel), expected)
                << GetTargetName(target) << " " << width << " x " << height << ", kernel " << kw << " x " << kh;
    }
}

TEST(BokehConvolution, ZeroWeightsCountForNothingEvenBesideInfiniteSamples) {
    BokehKernel kernel = MakeKernel(4, 3, 2);
    kernel.weights = {1, 0, 0, 2, 0, 0, 0, 0, 1, 1, 0, 1};
    PaddedPicture const padded = PadPicture(Bytes(150, 20, 8).View(), kernel, 0.9, 1e300);
    std::vector<float> const expected = ConvolvePlain(padded, kernel);
    for (float const value : expected) ASSERT_FALSE(std::isnan(value));
    for (Target const target : SupportedBokehTargets()) EXPECT_EQ(ConvolveWith(target, padded, kernel), expected);
}

TEST(BokehConvolution, APictureOfOneValueIsLiftedByItsOwnWeight) {
    std::vector<unsigned char> const grey(30 * 10, 100);
    unsigned char const white = 255;
    BokehKernel const one = MakeBokehKernel(ConstPlane(&white, 1, 1, 1), 2, 1);
    PaddedPicture const padded = PadPicture(ConstPlane(grey.data(), 30, 30, 10), one, 2, 1);
    std::vector<unsigned char> levels(30 * 10);
    WriteLevels(Convolve(padded, one), one.sum, MutablePlane(levels.data(), 30, 30, 10));
    EXPECT_EQ(levels, std::vector<unsigned char>(300, 200));
}

TEST(BokehLevels, AreRoundedAndClampedWhateverTheSumIs) {
    constexpr float HUGE_VALUE = std::numeric_limits<float>::infinity();
    auto const write = [](std::vector<float> const& sums, float kernelSum) {
        std::vector<unsigned char> levels(sums.size());
        WriteLevels(sums, kernelSum, MutablePlane(levels.data(), 4, sums.size(), 1));
        return std::vector<int>(levels.begin(), levels.end());
    };
    EXPECT_EQ(write({0.5F, 1, 3, -1}, 1), (std::vector<int>{128, 255, 255, 0}));
    EXPECT_EQ(write({0, 0.1F, HUGE_VALUE}, 0), (std::vector<int>{0, 255, 255}));
    EXPECT_EQ(write({std::nanf(""), 1e30F, -HUGE_VALUE}, 1), (std::vector<int>{0, 255, 0}));
}

/// One pixel of each level, a hundred times.
Histogram Ramp() {
    Histogram levels;
    levels.fill(100);
    return levels;
}

TEST(BokehMask, FallsFromTheKneeToTheBrightEndAndOnToZero) {
    // 5% of 25600 is 1280: levels 12 and 243 are the first to reach it.
    Table const table = MakeBokehMask(Ramp(), 25600, 0.5, 0.5);
    constexpr int KNEE = 12 + 116; // 115.5 rounded away from zero
    EXPECT_EQ(table[KNEE], 255);
    EXPECT_EQ(table[KNEE + 1], 254); // -128 / 115 is -1
    EXPECT_EQ(table[KNEE + 9], 255 - 10);
    EXPECT_EQ(table[243], 127); // 127.5 is cut
    EXPECT_EQ(table[255], 255 - 128 * 127 / 115);
    Table const steep = MakeBokehMask(Ramp(), 25600, 0.9, 1);
    EXPECT_EQ(steep[243], 0);
    EXPECT_EQ(steep[255], 0);
    EXPECT_EQ(steep[12], 255);
}

TEST(BokehMask, HasNoEffectOnFlatPicturesOrWithoutStrength) {
    Table const clear = [] {
        Table table;
        table.fill(255);
        return table;
    }();
    Histogram flat{};
    flat[90] = 1000;
    EXPECT_EQ(MakeBokehMask(flat, 1000, 0.5, 1), clear);
    EXPECT_EQ(MakeBokehMask(Ramp(), 25600, 0.5, 0), clear);
    EXPECT_EQ(MakeBokehMask(Ramp(), 25600, 1, 1), clear);
}

TEST(BokehMask, UnderTwentyPixelsItSpansAllLevels) {
    Histogram few{};
    few[100] = 19;
    Table const table = MakeBokehMask(few, 19, 0, 1);
    EXPECT_EQ(table[0], 255);
    EXPECT_EQ(table[100], 155);
    EXPECT_EQ(table[255], 0);
}

TEST(BokehMask, SurvivesSettingsWithoutMeaning) {
    for (double const value : {-1e300, -7.0, 7.0, 1e300, std::nan("")}) {
        MakeBokehMask(Ramp(), 25600, value, 1);
        MakeBokehMask(Ramp(), 25600, 0.5, value);
    }
    EXPECT_EQ(TruncateToInt(-1e300), std::numeric_limits<int>::min());
    EXPECT_EQ(TruncateToInt(-1.9), -1);
    EXPECT_EQ(TruncateToInt(std::nan("")), 0);
}

} // namespace
} // namespace Velnor::Proc::Kernels
