// BalanceLuma and ReduceLocalLuma.
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectBalanceLuma.h"
#include "Proc/Settings/SettingsEffectReduceLocalLuma.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/HostRun.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
namespace {

using namespace Testing;

struct LumaEffectsTest : HostRunTest {
    static SettingsEffectBalanceLuma Balance(double shadows, double highlights) {
        SettingsEffectBalanceLuma settings;
        settings.SetShadows(shadows);
        settings.SetHighlights(highlights);
        return settings;
    }
    static SettingsEffectReduceLocalLuma Burn(double strength, double feather) {
        SettingsEffectReduceLocalLuma settings;
        settings.SetStrength(strength);
        settings.SetFeather(feather);
        return settings;
    }
    VideoHandle Grey(std::uint32_t width, std::uint32_t height, double (*level)(std::uint32_t x, std::uint32_t y)) {
        return Paint(context, PixFmt::RGB24, width, height, [&](std::uint32_t x, std::uint32_t y) {
            double const v = level(x, y);
            return Colour4{v, v, v, 255};
        });
    }
};

TEST_F(LumaEffectsTest, BalanceOfNothingIsNothingAndMoreIsMore) {
    VideoHandle const noise = MakeNoise(context, PixFmt::BGRA, 37, 23);
    EXPECT_EQ(Samples(*Apply(Balance(0, 0), noise)), Samples(*noise));
    VideoHandle const dark = MakeFlat(context, PixFmt::RGB24, 9, 9, {40, 40, 40});
    VideoHandle const bright = MakeFlat(context, PixFmt::RGB24, 9, 9, {230, 230, 230});
    int lifted = 40;
    int held = 230;
    for (double const strength : {30.0, 60.0, 100.0}) {
        int const up = Samples(*Apply(Balance(strength, 0), dark))[0];
        int const down = Samples(*Apply(Balance(0, strength), bright))[0];
        EXPECT_GT(up, lifted);
        EXPECT_LT(down, held);
        lifted = up;
        held = down;
    }
    EXPECT_EQ(Samples(*Apply(Balance(100, 0), bright))[0], 230);
    EXPECT_EQ(Samples(*Apply(Balance(0, 100), dark))[0], 40);
}

TEST_F(LumaEffectsTest, BalanceKeepsHueAlphaAndTheOrderOfFlatLevels) {
    VideoHandle const dark = MakeFlat(context, PixFmt::RGBA, 8, 8, {40, 20, 10, 99});
    std::vector<unsigned char> const lifted = Samples(*Apply(Balance(100, 0), dark));
    EXPECT_GT(lifted[0], 60);
    EXPECT_NEAR(lifted[0], 2 * lifted[1], 2);
    EXPECT_NEAR(lifted[1], 2 * lifted[2], 2);
    EXPECT_EQ(lifted[3], 99);
    int previous = -1;
    for (int level = 0; level < 256; ++level) {
        VideoHandle const flat = MakeFlat(context, PixFmt::RGB24, 3, 3, {level, level, level});
        int const result = Samples(*Apply(Balance(100, 100), flat))[0];
        EXPECT_GE(result, previous) << level;
        previous = result;
    }
}

TEST_F(LumaEffectsTest, BalanceLeavesNoHaloAtAnEdge) {
    VideoHandle const edge = Grey(400, 60, [](std::uint32_t x, std::uint32_t) { return x < 200 ? 40.0 : 200.0; });
    std::vector<unsigned char> const out = Samples(*Apply(Balance(100, 100), edge));
    auto const at = [&](std::size_t x) { return int{out[(30 * 400 + x) * 3]}; };
    for (std::size_t x = 0; x < 200; ++x) EXPECT_NEAR(at(x), at(0), 6) << x;
    for (std::size_t x = 200; x < 400; ++x) EXPECT_NEAR(at(x), at(399), 6) << x;
}

TEST_F(LumaEffectsTest, BalanceWorksOnThePictureNotOnItsReduction) {
    // Wider than the map, so that the map is reduced: fine texture keeps its contrast.
    VideoHandle const texture =
        Grey(1999, 11, [](std::uint32_t x, std::uint32_t y) { return (x + y) % 2 == 0 ? 40.0 : 60.0; });
    std::vector<unsigned char> const out = Samples(*Apply(Balance(80, 0), texture));
    for (std::size_t x = 1; x < 1999; ++x) EXPECT_GT(std::abs(out[x * 3] - out[x * 3 - 3]), 20);
}

TEST_F(LumaEffectsTest, BurnsWhereTheMaskSaysAndDodgesBelowZero) {
    VideoHandle const picture = MakeFlat(context, PixFmt::BGRA, 40, 20, {60, 120, 180, 33});
    VideoHandle const mask = Paint(context, PixFmt::GRAY8, 40, 20, [](std::uint32_t x, std::uint32_t) {
        double const v = x < 20 ? 0 : 255;
        return Colour4{v, v, v, 255};
    });
    VideoHandle const burnt = Apply(Burn(50, 0), picture, mask);
    EXPECT_EQ(ReadColour(*burnt, 19, 5), (Colour4{180, 120, 60, 33}));
    EXPECT_EQ(ReadColour(*burnt, 20, 5), (Colour4{131, 88, 44, 33})); // one stop: times 2^(-1 / 2.2)
    VideoHandle const dodged = Apply(Burn(-50, 0), picture, mask);
    EXPECT_GT(ReadColour(*dodged, 30, 5).green, 140);
    EXPECT_EQ(ReadColour(*dodged, 3, 5).green, 120);
    EXPECT_EQ(Samples(*Apply(Burn(0, 5), picture, mask)), Samples(*picture));
}

TEST_F(LumaEffectsTest, TheEdgeOfTheMaskIsSoftAndTheMaskItselfStays) {
    VideoHandle const picture = MakeFlat(context, PixFmt::RGB24, 100, 100, {128, 128, 128});
    VideoHandle const mask = Paint(context, PixFmt::GRAY8, 100, 100, [](std::uint32_t x, std::uint32_t) {
        double const v = x < 50 ? 0 : 255;
        return Colour4{v, v, v, 255};
    });
    std::vector<unsigned char> const before = Samples(*mask);
    std::vector<unsigned char> const out = Samples(*Apply(Burn(100, 8), picture, mask));
    EXPECT_EQ(Samples(*mask), before);
    EXPECT_EQ(out[0], 128);
    for (std::size_t x = 1; x < 100; ++x) {
        int const step = out[x * 3 - 3] - out[x * 3];
        EXPECT_GE(step, 0);
        EXPECT_LE(step, 6); // a hard edge would be 60
    }
}

TEST_F(LumaEffectsTest, TonesChooseWhatIsBurntAndNeverTurnLevelsRound) {
    VideoHandle const ramp = Grey(256, 1, [](std::uint32_t x, std::uint32_t) { return double(x); });
    VideoHandle const mask = MakeFlat(context, PixFmt::GRAY8, 256, 1, {255});
    for (auto const tones : {SettingsEffectReduceLocalLuma::ALL, SettingsEffectReduceLocalLuma::SHADOWS,
                             SettingsEffectReduceLocalLuma::HIGHLIGHTS})
        for (double const strength : {-100.0, 100.0}) {
            SettingsEffectReduceLocalLuma settings = Burn(strength, 0);
            settings.SetTones(tones);
            std::vector<unsigned char> const out = Samples(*Apply(settings, ramp, mask));
            for (std::size_t x = 1; x < 256; ++x) EXPECT_GE(out[x * 3], out[x * 3 - 3]);
            if (tones == SettingsEffectReduceLocalLuma::SHADOWS) {
                EXPECT_NEAR(out[250 * 3], 250, 3);
            }
            if (tones == SettingsEffectReduceLocalLuma::HIGHLIGHTS) {
                EXPECT_NEAR(out[20 * 3], 20, 2);
            }
        }
}

TEST_F(LumaEffectsTest, ExposureByTonesKeepsHueAndSaturation) {
    VideoHandle const colours = Paint(context, PixFmt::BGR24, 64, 16, [](std::uint32_t x, std::uint32_t y) {
        return Colour4{60.0 + 3 * x, 40.0 + 2 * x + 5 * (y % 4), 30.0 + x};
    });
    VideoHandle const mask = MakeFlat(context, PixFmt::GRAY8, 64, 16, {255});
    for (auto const tones : {SettingsEffectReduceLocalLuma::ALL, SettingsEffectReduceLocalLuma::SHADOWS,
                             SettingsEffectReduceLocalLuma::HIGHLIGHTS})
        for (double const strength : {-90.0, 40.0}) {
            SettingsEffectReduceLocalLuma settings = Burn(strength, 0);
            settings.SetTones(tones);
            VideoHandle const result = Apply(settings, colours, mask);
            for (std::uint32_t x = 0; x < 64; x += 7) {
                Colour4 const in = ReadColour(*colours, x, 5);
                Colour4 const out = ReadColour(*result, x, 5);
                double const gain = out.red / in.red; // Of the largest component, whose rounding weighs least.
                EXPECT_NEAR(out.green, gain * in.green, 1);
                EXPECT_NEAR(out.blue, gain * in.blue, 1);
                EXPECT_EQ(out.red > in.red, strength < 0);
            }
        }
}

TEST_F(LumaEffectsTest, AMaskOfAnotherSizeIsRefusedAndThePictureStays) {
    VideoHandle const picture = MakeNoise(context, PixFmt::YUV420P, 10, 8);
    std::vector<unsigned char> const before = Samples(*picture);
    auto const effect = Make(Burn(50, 2));
    try {
        effect->ProcessData({picture, MakeNoise(context, PixFmt::GRAY8, 10, 9)});
        ADD_FAILURE();
    } catch (EffectException const& refusal) {
        EXPECT_EQ(*boost::get_error_info<TagDescription>(refusal),
                  "The mask is 10 x 9 pixels, the picture 10 x 8: they must be of one size.");
    }
    EXPECT_EQ(Samples(*picture), before);
}

} // namespace
} // namespace Velnor::Proc
