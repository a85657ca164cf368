#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectBiColorToning.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/ColourPictures.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(BiColorToning)
namespace {

using namespace Testing;

SettingsEffectBiColorToning Tones(Color const& shadow, Color const& highlight) {
    SettingsEffectBiColorToning settings;
    settings.SetShadowColor(shadow);
    settings.SetHighlightColor(highlight);
    return settings;
}

struct BiColorToningTest : CompositionTest<CreateBiColorToning> {};

TEST_F(BiColorToningTest, CreatesInOneOrderAndRunsInAnother) {
    EXPECT_EQ(recorder.Take(),
              (Calls{"create 1 SettingsEffectImageBlender/Default", "set 1 alpha=127",
                     "create 2 SettingsEffectColorBalance/Default", "set 2 brightness=10",
                     "create 3 SettingsEffectSplitToning/Default", "set 3 shadow-color=#204080 highlight-color=#e0a040",
                     "create 4 SettingsEffectVibrance/Default", "set 4 strength=50",
                     "create 5 SettingsColorspaceConverter/Default", "set 5"}));
    effect->ProcessData({MakeNoise(*context, PixFmt::BGR24, 4, 3)});
    EXPECT_EQ(recorder.Take(), (Calls{"set 5 formats=bgr24", "run 3", "run 5", "run 1", "run 4", "run 2"}));
    effect->ProcessData({MakeNoise(*context, PixFmt::BGR24, 8, 3)});
    EXPECT_EQ(recorder.Take(), (Calls{"run 3", "run 5", "run 1", "run 4", "run 2"}));
    effect->ProcessData({MakeNoise(*context, PixFmt::NV12, 8, 3)});
    EXPECT_EQ(recorder.Take(), (Calls{"set 5 formats=nv12", "run 3", "run 5", "run 1", "run 4", "run 2"}));
}

TEST_F(BiColorToningTest, EqualSettingsStillReachSplitToningBitForBit) {
    recorder.Take();
    SettingsEffectBiColorToning const settings = Tones(Color(1, 2, 3, 4), Color(250, 251, 252, 253));
    for (int i = 0; i < 2; ++i) {
        effect->SetSettings(settings);
        EXPECT_EQ(recorder.Take(), Calls{"set 3 shadow-color=#03020104 highlight-color=#fcfbfafd"});
    }
}

TEST_F(BiColorToningTest, TheTonedPictureGoesFirstAndTheInputIsAsItWas) {
    VideoHandle const input = MakeNoise(*context, PixFmt::RGB24, 4, 3);
    std::vector<unsigned char> const before = Samples(*input);
    // Split toning in place: the one that could tone the second picture too.
    recorder.oneInput[3] = [](DataHandle& data) { AsVideo(data).Fill(Color(7, 7, 7, 255)); };
    bool blended = false;
    recorder.twoInput[1] = [&](DataHandle& first, ConstDataHandle const& second) {
        EXPECT_EQ(AsVideo(first).GetPlane(0).GetRow(0)[0], 7);
        EXPECT_EQ(Samples(AsVideo(second)), before);
        blended = true;
    };
    input->SetTimeStamp(3);
    DataHandle const result = effect->ProcessData({input});
    EXPECT_TRUE(blended);
    EXPECT_NE(result, input);
    EXPECT_EQ(result->GetTimeStamp(), 3);
    EXPECT_EQ(Samples(*input), before);
}

TEST(BiColorToning, WithTheHostTintsShadowsAndHighlightsOfEveryFormat) {
    StandardHost host;
    Registrator(&host.GetRegistry());
    auto const effect =
        host.GetFactory()->CreateOneInputEffect(SettingsEffectBiColorToning::CLASS_ID, ImplNames::DEFAULT);
    effect->SetSettings(Tones(Color(220, 60, 20, 255), Color(20, 140, 230, 255)));
    for (PixFmt const format : {PixFmt::RGB24, PixFmt::BGRA, PixFmt::YUV420P, PixFmt::UYVY422, PixFmt::PAL8}) {
        for (int const level : {80, 180}) {
            auto const byte = static_cast<unsigned char>(level);
            VideoHandle const grey = host.GetContext()->CreateImage(format, FrameFormat::Square(8, 4));
            grey->Fill(Color(byte, byte, byte, 255));
            DataHandle data = grey;
            effect->ProcessData(data);
            Colour4 const toned = ReadColour(AsVideo(data), 3, 2);
            EXPECT_EQ(toned.blue > toned.red, level == 80) << grey->GetDescription().name << level;
            EXPECT_NEAR(Luma(toned), level + 10, 3);
        }
    }
}

TEST_F(BiColorToningTest, AConverterThatFailedIsConfiguredAgain) {
    recorder.Take();
    recorder.onCall = [](std::string const& call) {
        if (call == "set 5 formats=rgb24") throw std::bad_alloc();
    };
    EXPECT_THROW(effect->ProcessData({MakeNoise(*context, PixFmt::RGB24, 4, 3)}), std::bad_alloc);
    recorder.onCall = nullptr;
    recorder.Take();
    effect->ProcessData({MakeNoise(*context, PixFmt::RGB24, 4, 3)});
    EXPECT_EQ(recorder.Take()[0], "set 5 formats=rgb24");
}

} // namespace
} // namespace Velnor::Proc
