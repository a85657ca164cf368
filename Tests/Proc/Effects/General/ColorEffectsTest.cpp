// Colour balance, vibrance, split toning and posterize.
#include "Proc/Settings/SettingsEffectColorBalance.h"
#include "Proc/Settings/SettingsEffectPosterize.h"
#include "Proc/Settings/SettingsEffectSplitToning.h"
#include "Proc/Settings/SettingsEffectVibrance.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/HostRun.h"

#include <gtest/gtest.h>

#include <map>

namespace Velnor::Proc {
namespace {

using namespace Testing;

class ColorEffectsTest : public HostRunTest {
protected:
    static SettingsEffectColorBalance Balance(int gamma, int brightness) {
        SettingsEffectColorBalance settings;
        settings.SetGamma(gamma);
        settings.SetBrightness(brightness);
        return settings;
    }
    static SettingsEffectVibrance Vibrance(int strength) {
        SettingsEffectVibrance settings;
        settings.SetStrength(strength);
        return settings;
    }
    static SettingsEffectSplitToning Tones(Color const& shadow, Color const& highlight) {
        SettingsEffectSplitToning settings;
        settings.SetShadowColor(shadow);
        settings.SetHighlightColor(highlight);
        return settings;
    }
    static SettingsEffectPosterize Classes(int count, bool isPalette) {
        SettingsEffectPosterize settings;
        settings.SetColorsNumber(count);
        settings.SetIsPal(isPalette);
        return settings;
    }
    template <class SettingsClass>
    std::vector<int> OnePixel(SettingsClass const& settings, PixFmt format, std::initializer_list<int> pixel) {
        std::vector<unsigned char> const bytes = Samples(*Apply(settings, MakeFlat(context, format, 1, 1, pixel)));
        return {bytes.begin(), bytes.end()};
    }
};

TEST_F(ColorEffectsTest, BalanceMapsColourOrLumaAndNothingElse) {
    SettingsEffectColorBalance const settings = Balance(-30, 12);
    auto const level = [](double value) {
        return std::clamp(std::round(255 * std::pow(value / 255, std::exp2(0.6))) + 12, 0.0, 255.0);
    };
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        VideoHandle const picture = MakeNoise(context, format.format, 17, 6);
        std::vector<unsigned char> const before = Samples(*picture);
        VideoHandle const result = Apply(settings, picture);
        ASSERT_EQ(result->GetPixFmt(), format.format);
        EXPECT_EQ(Samples(*picture), before) << format.name;
        bool const isLuma = format.model == ColorModel::Luma;
        for (std::uint32_t y = 0; y < 6; ++y)
            for (std::uint32_t x = 0; x < 17; ++x) {
                if (format.model == ColorModel::Palette || format.model == ColorModel::Rgb) {
                    Colour4 const old = ReadColour(*picture, x, y);
                    ASSERT_EQ(ReadColour(*result, x, y),
                              (Colour4{level(old.red), level(old.green), level(old.blue), old.alpha}))
                        << format.name;
                    continue;
                }
                for (std::size_t k = 0; k < format.componentsCount; ++k) {
                    int const old = Sample(*picture, format.components[k], isLuma && k == 0, x, y);
                    ASSERT_EQ(Sample(*result, format.components[k], isLuma && k == 0, x, y), k == 0 ? level(old) : old)
                        << format.name;
                }
                if (format.hasAlpha) {
                    ASSERT_EQ(Sample(*result, format.alpha, false, x, y), Sample(*picture, format.alpha, false, x, y));
                }
            }
    }
}

TEST_F(ColorEffectsTest, BalanceAtItsEnds) {
    using V = std::vector<int>;
    EXPECT_EQ(OnePixel(Balance(0, 0), PixFmt::RGB24, {0, 99, 255}), (V{0, 99, 255}));
    EXPECT_EQ(OnePixel(Balance(50, 0), PixFmt::RGB24, {0, 64, 255}), (V{0, 128, 255})); // The square root.
    EXPECT_EQ(OnePixel(Balance(-50, 0), PixFmt::RGB24, {0, 128, 255}), (V{0, 64, 255}));
    EXPECT_EQ(OnePixel(Balance(0, 255), PixFmt::RGB24, {0, 1, 255}), (V{255, 255, 255}));
    EXPECT_EQ(OnePixel(Balance(0, std::numeric_limits<int>::min()), PixFmt::RGB24, {0, 1, 255}), (V{0, 0, 0}));
    EXPECT_EQ(OnePixel(Balance(std::numeric_limits<int>::max(), 0), PixFmt::RGB24, {0, 1, 255}), (V{0, 255, 255}));
    EXPECT_EQ(OnePixel(Balance(std::numeric_limits<int>::min(), 0), PixFmt::RGB24, {0, 254, 255}), (V{0, 0, 255}));
}

TEST_F(ColorEffectsTest, VibranceSpreadsWeakColoursMoreThanStrongOnesAboutTheirGrey) {
    for (PixFmt const format : {PixFmt::RGB24, PixFmt::BGR24, PixFmt::RGBA, PixFmt::BGRX})
        for (int const strength : {-100, -30, 50, 100}) {
            VideoHandle const picture = MakeNoise(context, format, 67, 9);
            std::vector<unsigned char> const before = Samples(*picture);
            VideoHandle const result = Apply(Vibrance(strength), picture);
            EXPECT_EQ(Samples(*picture), before);
            for (std::uint32_t y = 0; y < 9; ++y)
                for (std::uint32_t x = 0; x < 67; ++x) {
                    Colour4 const c = ReadColour(*picture, x, y);
                    double const spread = std::max({c.red, c.green, c.blue}) - std::min({c.red, c.green, c.blue});
                    double const factor = strength / 100.0 * (1 - spread / 255);
                    auto const wanted = [&](double v) { return std::clamp(v + (v - Luma(c)) * factor, 0.0, 255.0); };
                    Colour4 const got = ReadColour(*result, x, y);
                    // The luma is rounded before it is used.
                    ASSERT_NEAR(got.red, wanted(c.red), 1.2);
                    ASSERT_NEAR(got.green, wanted(c.green), 1.2);
                    ASSERT_NEAR(got.blue, wanted(c.blue), 1.2);
                    ASSERT_EQ(got.alpha, c.alpha);
                }
        }
    using V = std::vector<int>;
    for (int level = 0; level < 256; ++level)
        ASSERT_EQ(OnePixel(Vibrance(100), PixFmt::RGB24, {level, level, level}), (V{level, level, level}));
    EXPECT_EQ(OnePixel(Vibrance(100), PixFmt::RGB24, {255, 0, 0}), (V{255, 0, 0}));
    EXPECT_EQ(OnePixel(Vibrance(0), PixFmt::RGB24, {9, 80, 33}), (V{9, 80, 33}));
    EXPECT_EQ(OnePixel(Vibrance(5000), PixFmt::RGB24, {90, 80, 33}),
              OnePixel(Vibrance(100), PixFmt::RGB24, {90, 80, 33}));
    EXPECT_EQ(OnePixel(Vibrance(50), PixFmt::BGRA, {33, 80, 90, 7})[0],
              OnePixel(Vibrance(50), PixFmt::RGB24, {90, 80, 33})[2]);
}

TEST_F(ColorEffectsTest, SplitToningTintsShadowsAndHighlightsAndKeepsBrightnessBlackAndWhite) {
    Color const blue(200, 60, 20, 255);
    Color const orange(20, 140, 220, 255);
    for (PixFmt const format : {PixFmt::RGB24, PixFmt::BGRA, PixFmt::BGR24, PixFmt::RGBX})
        for (int level = 0; level < 256; level += 5) {
            VideoHandle const grey = context.CreateImage(format, FrameFormat::Square(3, 2));
            auto const byte = static_cast<unsigned char>(level);
            grey->Fill(Color(byte, byte, byte, 90));
            Colour4 const toned = ReadColour(*Apply(Tones(blue, orange), grey), 2, 1);
            ASSERT_NEAR(Luma(toned), level, 1.0) << level;
            double const w = level / 255.0;
            auto const tinted = [&](unsigned int k) {
                auto const tint = [&](Color const& tone) {
                    return tone[k] - (0.299 * tone.GetRed() + 0.587 * tone.GetGreen() + 0.114 * tone.GetBlue());
                };
                return std::clamp(level + std::lround(4 * w * (1 - w) * ((1 - w) * tint(blue) + w * tint(orange))), 0L,
                                  255L);
            };
            ASSERT_EQ(toned, (Colour4{double(tinted(2)), double(tinted(1)), double(tinted(0)), toned.alpha})) << level;
            ASSERT_EQ(toned.alpha, ReadColour(*grey, 2, 1).alpha);
            if (level > 20 && level < 90) {
                ASSERT_GT(toned.blue, toned.red);
            }
            if (level > 165 && level < 235) {
                ASSERT_GT(toned.red, toned.blue);
            }
            if (level == 0 || level == 255) {
                ASSERT_EQ(toned.red, toned.blue);
            }
        }
    VideoHandle const noise = MakeNoise(context, PixFmt::YUV420P, 12, 5);
    EXPECT_EQ(Apply(Tones(Color(9, 9, 9, 255), Color(200, 1, 3, 0)), noise)->GetPlane(0).GetData(),
              noise->GetPlane(0).GetData())
        << "grey and clear tones do nothing";
    // Half of the opacity is half of the tint.
    int const full = OnePixel(Tones(blue, blue), PixFmt::RGB24, {100, 100, 100})[2] - 100;
    int const half =
        OnePixel(Tones(Color(200, 60, 20, 128), Color(200, 60, 20, 128)), PixFmt::RGB24, {100, 100, 100})[2] - 100;
    EXPECT_GT(full, 60);
    EXPECT_NEAR(half, full / 2.0, 1.0);
}

TEST_F(ColorEffectsTest, PosterizeMakesClassesOfEqualWidthOverThePicturesOwnRange) {
    VideoHandle const grey = context.CreateImage(PixFmt::GRAY8, FrameFormat::Square(101, 2));
    for (std::uint64_t y = 0; y < 2; ++y)
        for (std::uint64_t x = 0; x < 101; ++x)
            grey->GetMutablePlane(0).GetRow(y)[x] = static_cast<unsigned char>(50 + x);
    for (int const count : {1, 2, 7, 101, 256}) {
        VideoHandle const result = Apply(Classes(count, true), grey);
        ASSERT_EQ(result->GetPixFmt(), PixFmt::PAL8);
        std::map<int, std::pair<int, int>> sums;
        for (int x = 0; x < 101; ++x) {
            int const number = result->GetPlane(0).GetRow(1)[x];
            ASSERT_EQ(number, x * count / 101);
            sums[number].first += 50 + x;
            ++sums[number].second;
        }
        for (auto const& [number, sum] : sums)
            for (int k = 0; k < 4; ++k)
                ASSERT_EQ(result->GetPlane(1).GetRow(0)[number * 4 + k],
                          k == 3 ? 255 : (2 * sum.first + sum.second) / (2 * sum.second));
    }
}

TEST_F(ColorEffectsTest, PosterizeTakesEveryFormatAndLeavesTheCallersPicture) {
    for (PixFmtDescription const& format : PixFmtDescription::GetAll()) {
        VideoHandle const picture = MakeBars(context, format.format, 131, 7);
        std::vector<unsigned char> const before = Samples(*picture);
        VideoHandle const palette = Apply(Classes(3, true), picture);
        EXPECT_EQ(palette->GetPixFmt(), PixFmt::PAL8);
        VideoHandle const back = Apply(Classes(3, false), picture);
        EXPECT_EQ(back->GetPixFmt(), format.format);
        EXPECT_EQ(Samples(*picture), before) << format.name;
        for (std::uint32_t x = 0; x < 131; ++x) {
            if (format.hasAlpha && ReadColour(*picture, x, 3).alpha == 0) continue; // It goes with what is around.
            double const luma = Luma(ReadColour(*picture, x, 3)); // From 0 to 255 in steps far from the classes' ends.
            ASSERT_EQ(palette->GetPlane(0).GetRow(3)[x], std::min(2, static_cast<int>((luma + 0.5) * 3 / 256)))
                << format.name;
        }
    }
}

} // namespace
} // namespace Velnor::Proc
