#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectBlackWhite.h"
#include "Proc/Settings/SettingsEffectColorBalanceAuto.h"
#include "Proc/Settings/SettingsEffectGradient.h"
#include "Proc/Settings/SettingsEffectTintTemperature.h"
#include "Tests/Support/HostRun.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Gradient)
VELNOR_DECLARE_EFFECT(TintTemperature)
namespace {

using namespace Testing;
using Bytes = std::vector<unsigned char>;

class ToneEffectsTest : public HostRunTest {
protected:
    Bytes FirstPixel(VideoHandle const& picture, std::size_t bytes) {
        Bytes const all = Samples(*picture);
        return Bytes(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(bytes));
    }
    Bytes LumaOf(VideoHandle const& data) {
        VideoHandle const converted = Convert(data, PixFmt::YUV444P);
        Bytes bytes = Samples(*converted);
        bytes.resize(bytes.size() / 3);
        return bytes;
    }
};

TEST_F(ToneEffectsTest, WarmthMovesRedAgainstBlueInBothByteOrdersAndKeepsBrightness) {
    SettingsEffectTintTemperature cooler;
    cooler.SetTemperature(-20);
    for (PixFmt const format : {PixFmt::RGB24, PixFmt::BGR24, PixFmt::RGBA, PixFmt::YUV420P}) {
        VideoHandle const grey = context.CreateImage(format, FrameFormat::Square(8, 8));
        grey->Fill(Color(120, 120, 120, 255));
        VideoHandle const result = Apply(cooler, grey);
        EXPECT_EQ(result->GetPixFmt(), format);
        Bytes const rgb = FirstPixel(Convert(result, PixFmt::RGB24), 3);
        EXPECT_LT(rgb[0], 110);
        EXPECT_GT(rgb[2], 130);
        Bytes const luma = LumaOf(result);
        for (unsigned char const level : luma) ASSERT_NEAR(level, 120, 2);
    }
}

TEST_F(ToneEffectsTest, TintTablesFollowEverySetSettings) {
    auto const effect = CreateTintTemperature(host.GetFactory(), host.GetContext());
    SettingsEffectTintTemperature greener;
    greener.SetTint(40);
    effect->SetSettings(greener);
    effect->SetSettings(SettingsEffectTintTemperature());
    effect->SetSettings(greener);
    DataHandle const grey = MakeFlat(context, PixFmt::RGB24, 4, 4, {100, 100, 100});
    Bytes const rgb = Samples(AsVideo(effect->ProcessData(std::vector<DataHandle>{grey})));
    EXPECT_GT(rgb[1], rgb[0] + 25);
    EXPECT_NEAR(rgb[0], rgb[2], 2);
}

TEST_F(ToneEffectsTest, BalanceOfOneColourFollowsTheArithmetic) {
    SettingsEffectColorBalanceAuto white;
    white.SetWhiteBalance(true);
    SettingsEffectColorBalanceAuto light;
    light.SetLightBalance(true);
    SettingsEffectColorBalanceAuto both = light;
    both.SetWhiteBalance(true);
    auto const balanced = [&](SettingsEffectColorBalanceAuto const& settings, std::uint32_t width,
                              std::uint32_t height) {
        return FirstPixel(Apply(settings, MakeFlat(context, PixFmt::RGB24, width, height, {100, 150, 200})), 3);
    };
    EXPECT_EQ(balanced(white, 30, 30), (Bytes{100, 150, 200}));
    EXPECT_EQ(balanced(white, 64, 64), (Bytes{0, 150, 0}));
    EXPECT_EQ(balanced(white, 100, 100), (Bytes{0, 0, 0}));
    EXPECT_EQ(balanced(white, 300, 200), (Bytes{100, 150, 200}));
    EXPECT_EQ(balanced(light, 300, 200), (Bytes{49, 154, 255}));
    EXPECT_EQ(balanced(both, 300, 200), (Bytes{49, 158, 255}));
}

TEST_F(ToneEffectsTest, BalanceIsTheSameInAllPackedFormats) {
    SettingsEffectColorBalanceAuto settings;
    settings.SetWhiteBalance(true);
    settings.SetExposure(-4);
    VideoHandle const red = MakeNoise(context, PixFmt::RGB24, 61, 40);
    Bytes const expected = Samples(*Apply(settings, red));
    for (PixFmt const format : {PixFmt::BGR24, PixFmt::RGBA, PixFmt::BGRA, PixFmt::RGBX, PixFmt::BGRX}) {
        VideoHandle const result = Apply(settings, Convert(red, format));
        EXPECT_EQ(result->GetPixFmt(), format);
        EXPECT_EQ(Samples(*Convert(result, PixFmt::RGB24)), expected);
    }
}

TEST_F(ToneEffectsTest, BalanceKeepsTheFourthByteAndTheSharedInput) {
    SettingsEffectColorBalanceAuto settings;
    settings.SetExposure(10);
    VideoHandle const input = MakeFlat(context, PixFmt::BGRA, 5, 5, {10, 100, 200, 77});
    EXPECT_EQ(FirstPixel(Apply(settings, input), 4), (Bytes{13, 130, 255, 77}));
    EXPECT_EQ(FirstPixel(input, 4), (Bytes{10, 100, 200, 77}));
}

TEST_F(ToneEffectsTest, BlackWhiteGivesATwoColourPalette) {
    SettingsEffectBlackWhite settings;
    settings.SetFirstColor(Color(1, 2, 3, 4));
    settings.SetSecondColor(Color(0, 0, 255, 255)); // pure red
    VideoHandle const grey = MakeFlat(context, PixFmt::GRAY8, 4, 1, {0, 127, 128, 255});
    auto const indices = [&](double threshold) {
        settings.SetThreshold(threshold);
        return FirstPixel(Apply(settings, grey), 4);
    };
    EXPECT_EQ(indices(0.5), (Bytes{0, 0, 1, 1}));
    EXPECT_EQ(indices(0.0), (Bytes{1, 1, 1, 1}));
    EXPECT_EQ(indices(-3.0), (Bytes{1, 1, 1, 1}));
    EXPECT_EQ(indices(1.0), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(indices(1e300), (Bytes{0, 0, 0, 0}));
    EXPECT_EQ(indices(0.998), (Bytes{0, 0, 0, 1}));
    EXPECT_EQ(indices(126.5 / 256.0), (Bytes{0, 1, 1, 1}));

    settings.SetThreshold(0.5);
    VideoHandle const result = Apply(settings, MakeFlat(context, PixFmt::RGB24, 3, 3, {9, 9, 9}));
    EXPECT_EQ(result->GetPixFmt(), PixFmt::PAL8);
    ConstPlane const palette = result->GetPlane(1);
    EXPECT_EQ(Bytes(palette.GetData(), palette.GetData() + 12), (Bytes{3, 2, 1, 4, 255, 0, 0, 255, 0, 0, 0, 0}));
}

TEST_F(ToneEffectsTest, GradientTakesItsColoursAndKeepsTheBrightness) {
    SettingsEffectGradient settings;
    settings.SetStops({{0, Color(0, 0, 255, 255)}}); // red everywhere
    VideoHandle const picture = MakeFlat(context, PixFmt::RGB24, 8, 8, {90, 90, 90});
    VideoHandle const result = Apply(settings, picture);
    EXPECT_EQ(result->GetPixFmt(), PixFmt::RGB24);
    Bytes const rgb = FirstPixel(result, 3);
    EXPECT_GT(rgb[0], rgb[2] + 60);
    for (unsigned char const level : LumaOf(result)) ASSERT_NEAR(level, 90, 14); // saturated red clips in RGB
}

TEST_F(ToneEffectsTest, AGradientWithoutStopsIsRefusedAndTheOldOneStays) {
    auto const effect = CreateGradient(host.GetFactory(), host.GetContext());
    DataHandle const picture = MakeNoise(context, PixFmt::RGB24, 6, 6);
    auto const run = [&] {
        return Samples(
            AsVideo(effect->ProcessData(std::vector<DataHandle>{AsVideo(picture).MakeCopy(CopyMode::Value)})));
    };
    Bytes const before = run();
    EXPECT_NE(before, Samples(AsVideo(picture))); // the default gradient is there from the start
    EXPECT_EQ(RefusalOf<EffectException>([&] { effect->SetSettings(SettingsEffectGradient().SetStops({})); }),
              "The setting stops is empty; one or more are accepted.");
    EXPECT_EQ(run(), before);
}

} // namespace
} // namespace Velnor::Proc
