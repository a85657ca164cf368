#include "Proc/Effects/Lumetta/Kernels/Color/OkLab.h"
#include "Proc/Settings/SettingsEffectReplaceChroma.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/HostRun.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
namespace {

using namespace Testing;

struct ReplaceChromaTest : HostRunTest {
    /// What becomes of one colour.
    Colour4 Replace(SettingsEffectReplaceChroma const& settings, Colour4 const& color, PixFmt format = PixFmt::RGBA) {
        VideoHandle const flat = Paint(context, format, 3, 2, [&](std::uint32_t, std::uint32_t) { return color; });
        return ReadColour(*Apply(settings, flat), 1, 1);
    }
    static SettingsEffectReplaceChroma RedToBlue() {
        SettingsEffectReplaceChroma settings;
        settings.SetKeyColor(Color(40, 40, 200, 255));
        settings.SetNewColor(Color(200, 90, 30, 255));
        return settings;
    }
    static double Hue(Colour4 const& c) {
        auto const lab = Kernels::ToOkLab({float(c.red), float(c.green), float(c.blue)});
        return std::atan2(lab.b, lab.a);
    }
};

TEST_F(ReplaceChromaTest, TheKeyColourTakesTheNewHueInLightAndShadeAndKeepsItsLuma) {
    double const wanted = Hue({30, 90, 200});
    for (double const light : {0.5, 0.8, 1.0}) {
        Colour4 const red{200 * light, 40 * light, 40 * light, 77};
        for (PixFmt const format : {PixFmt::RGBA, PixFmt::BGRA, PixFmt::RGB24, PixFmt::BGR24, PixFmt::YUV444P}) {
            Colour4 const blue = Replace(RedToBlue(), red, format);
            EXPECT_NEAR(Hue(blue), wanted, 0.12) << light;
            EXPECT_NEAR(Luma(blue), Luma(red), 1.5) << light;
        }
        EXPECT_EQ(Replace(RedToBlue(), red).alpha, 77);
    }
}

TEST_F(ReplaceChromaTest, OtherHuesGreysAndBlackStayToTheBit) {
    for (Colour4 const& other : {Colour4{40, 160, 60, 9}, Colour4{60, 80, 200, 9}, Colour4{128, 128, 128, 9},
                                 Colour4{255, 255, 255, 9}, Colour4{0, 0, 0, 9}, Colour4{225, 180, 160, 9}})
        EXPECT_EQ(Replace(RedToBlue(), other), other);
}

TEST_F(ReplaceChromaTest, StrengthAndToleranceRunFromNothing) {
    Colour4 const red{200, 40, 40, 255};
    SettingsEffectReplaceChroma settings = RedToBlue();
    double previous = 0;
    for (double const strength : {0.0, 30.0, 60.0, 100.0}) {
        settings.SetStrength(strength);
        Colour4 const result = Replace(settings, red);
        if (strength == 0) {
            EXPECT_EQ(result, red);
        } else {
            EXPECT_GT(result.blue - result.red, previous);
        }
        previous = result.blue - result.red;
    }
    settings = RedToBlue();
    settings.SetTolerance(0);
    settings.SetSoftness(10);
    Colour4 const orange{200, 90, 30, 255};
    EXPECT_EQ(Replace(settings, orange), orange);
    settings.SetTolerance(100);
    EXPECT_GT(Replace(settings, orange).blue, 100);
    settings.SetTolerance(std::nan(""));
    settings.SetStrength(-1e300);
    EXPECT_EQ(Replace(settings, red), red);
}

TEST_F(ReplaceChromaTest, ANeutralKeyIsColouredAndANeutralNewColourTakesTheColourAway) {
    SettingsEffectReplaceChroma colouring = RedToBlue();
    colouring.SetKeyColor(Color(128, 128, 128, 255));
    Colour4 const tinted = Replace(colouring, {150, 150, 150});
    EXPECT_GT(tinted.blue, tinted.red + 60);
    EXPECT_NEAR(Luma(tinted), 150, 1.5);
    SettingsEffectReplaceChroma draining = RedToBlue();
    draining.SetNewColor(Color(90, 90, 90, 255));
    Colour4 const grey = Replace(draining, {200, 40, 40});
    EXPECT_NEAR(grey.red, grey.blue, 3);
}

TEST_F(ReplaceChromaTest, NewSettingsReplaceTheKeptTable) {
    auto const effect = Make(RedToBlue());
    VideoHandle const red = MakeFlat(context, PixFmt::RGB24, 2, 2, {200, 40, 40});
    EXPECT_GT(Samples(AsVideo(effect->ProcessData({red->MakeCopy(CopyMode::Value)})))[2], 150);
    SettingsEffectReplaceChroma green = RedToBlue();
    green.SetNewColor(Color(40, 160, 40, 255));
    effect->SetSettings(green);
    auto const result = Samples(AsVideo(effect->ProcessData({red->MakeCopy(CopyMode::Value)})));
    EXPECT_GT(result[1], result[2] + 60);
}

} // namespace
} // namespace Velnor::Proc
