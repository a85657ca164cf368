#include "Proc/Effects/Lumetta/Kernels/Blur/BoxMean.h"
#include "Proc/Effects/Lumetta/Kernels/Color/ColorCube.h"
#include "Tests/Support/Pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

using namespace Testing;

TEST(OkLab, AgreesWithThePublishedValuesAndComesBack) {
    Lab const white = ToOkLab({255, 255, 255});
    EXPECT_NEAR(white.l, 1, 1e-4);
    EXPECT_NEAR(white.a, 0, 1e-4);
    Lab const red = ToOkLab({255, 0, 0});
    EXPECT_NEAR(red.l, 0.62796, 1e-4);
    EXPECT_NEAR(red.a, 0.22486, 1e-4);
    EXPECT_NEAR(red.b, 0.12585, 1e-4);
    for (float const r : {0.0F, 3.0F, 100.0F, 255.0F})
        for (float const b : {0.0F, 77.0F, 255.0F}) {
            RgbLevels const back = FromOkLab(ToOkLab({r, 128, b}));
            EXPECT_NEAR(back[0], r, 0.05);
            EXPECT_NEAR(back[1], 128, 0.05);
            EXPECT_NEAR(back[2], b, 0.05);
        }
}

TEST(OkLab, AColourAtAnotherLumaFitsAndKeepsItsDirection) {
    for (float const luma : {0.0F, 20.0F, 128.0F, 250.0F, 255.0F})
        for (RgbLevels const& rgb : {RgbLevels{255, 0, 0}, RgbLevels{-40, 90, 300}, RgbLevels{77, 77, 77}}) {
            RgbLevels const moved = WithLuma(rgb, luma);
            EXPECT_NEAR(LumaOf(moved), luma, 0.01);
            for (float const level : moved) {
                EXPECT_GE(level, -0.01F);
                EXPECT_LE(level, 255.01F);
            }
            float const cross = (moved[0] - luma) * (rgb[2] - LumaOf(rgb)) - (moved[2] - luma) * (rgb[0] - LumaOf(rgb));
            EXPECT_NEAR(cross, 0, 0.5);
        }
}

TEST(ColorCube, TheIdentityIsExactAndALinearMapIsRight) {
    ContextHandle const context = CreateContext();
    for (unsigned int const shift : {2U, 3U}) {
        ColorCube same(shift, [](RgbLevels const& rgb) { return rgb; });
        ColorCube mixed(shift, [](RgbLevels const& rgb) {
            return RgbLevels{rgb[2], 255.0F - rgb[1], 0.5F * (rgb[0] + rgb[1])};
        });
        for (PixFmt const format : {PixFmt::RGB24, PixFmt::BGR24, PixFmt::RGBA, PixFmt::BGRX}) {
            VideoHandle const noise = MakeNoise(*context, format, 61, 40);
            std::vector<unsigned char> const in = Samples(*noise);
            same.Apply(noise->GetMutablePlane(0), PackedRgb(format));
            EXPECT_EQ(Samples(*noise), in);
            mixed.Apply(noise->GetMutablePlane(0), PackedRgb(format));
            std::vector<unsigned char> const out = Samples(*noise);
            PackedRgb const layout(format);
            std::size_t const red = layout.isBlueFirst ? 2 : 0;
            for (std::size_t i = 0; i < in.size(); i += layout.pixelBytes) {
                ASSERT_EQ(out[i + red], in[i + 2 - red]);
                ASSERT_EQ(out[i + 1], 255 - in[i + 1]);
                ASSERT_NEAR(out[i + 2 - red], 0.5 * (in[i + red] + in[i + 1]), 0.51);
                std::size_t const last = i + layout.pixelBytes - 1;
                if (layout.pixelBytes == 4) {
                    ASSERT_EQ(out[last], in[last]);
                }
            }
        }
    }
}

TEST(ColorCube, ResultsBeyondTheRangeAreCut) {
    ContextHandle const context = CreateContext();
    VideoHandle const noise = MakeNoise(*context, PixFmt::RGB24, 20, 20);
    ColorCube cut(2, [](RgbLevels const&) { return RgbLevels{1e9F, -1e9F, 255.9F}; });
    cut.Apply(noise->GetMutablePlane(0), PackedRgb(PixFmt::RGB24));
    std::vector<unsigned char> const out = Samples(*noise);
    EXPECT_EQ(out[0], 255);
    EXPECT_EQ(out[1], 0);
    EXPECT_EQ(out[2], 255);
}

TEST(BoxMean, IsTheMeanOfTheSquareThatLiesInThePlane) {
    for (auto const& [width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {13, 7}})
        for (int const radius : {0, 1, 3, 50}) {
            FloatPlane plane(static_cast<std::size_t>(width), static_cast<std::size_t>(height));
            for (std::size_t i = 0; i < plane.values.size(); ++i) plane.values[i] = static_cast<float>(i * 7919 % 101);
            FloatPlane const before = plane;
            FloatPlane scratch = plane;
            BoxMean(plane, static_cast<std::size_t>(radius), scratch);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    double sum = 0;
                    int count = 0;
                    for (int v = std::max(0, y - radius); v <= std::min(height - 1, y + radius); ++v)
                        for (int u = std::max(0, x - radius); u <= std::min(width - 1, x + radius); ++u, ++count)
                            sum += before.GetRow(static_cast<std::size_t>(v))[u];
                    EXPECT_NEAR(plane.GetRow(static_cast<std::size_t>(y))[x], sum / count, 1e-3);
                }
        }
}

} // namespace
} // namespace Velnor::Proc::Kernels
