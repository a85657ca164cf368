#include "Proc/Settings/SettingsEffectPixelate.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Tests/Support/LogCapture.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Pixelate)
namespace {

using namespace Testing;

SettingsEffectPixelate Strength(double value) {
    SettingsEffectPixelate settings;
    settings.SetStrength(value);
    return settings;
}

class PixelateTest : public CompositionTest<CreatePixelate> {
protected:
    void Process(FrameFormat const& frame, PixFmt format = PixFmt::RGB24) {
        DataHandle data = context->CreateImage(format, frame);
        Run({data});
    }
};

TEST_F(PixelateTest, ResizersShareOneRecordAndAreConfiguredOnce) {
    EXPECT_EQ(recorder.Take(),
              (Calls{"create 1 SettingsResizer/Default", "set 1", "create 2 SettingsResizer/Default", "set 2"}));
    LogCapture log(0);
    effect->SetSettings(Strength(100));
    FrameFormat const frame{640, 480, 4, 3};
    Process(frame);
    Process(frame, PixFmt::GRAY8); // another pixel format alone is the resizers' business
    EXPECT_EQ(recorder.Take(),
              (Calls{"set 1 method=area mode=by-factor factor=0.06666666666666667",
                     "set 2 method=point mode=to-frame fitting=stretch factor=0.06666666666666667 target=640x480x4:3",
                     "run 1", "run 2", "run 1", "run 2"}));
    EXPECT_EQ(log.lines, Calls{"Pixelate.cpp: Pixelate scale: 0.0666667"}); // whatever the verbose level
}

TEST_F(PixelateTest, AnyWordOfTheFrameOrNewSettingsConfigureAgain) {
    effect->SetSettings(Strength(50));
    Process({64, 48, 1, 1});
    auto const configured = [&] {
        Calls const calls = recorder.Take();
        return std::ranges::count_if(calls, [](std::string const& call) { return call.starts_with("set"); });
    };
    configured();
    for (FrameFormat const& frame :
         {FrameFormat{65, 48, 1, 1}, FrameFormat{65, 49, 1, 1}, FrameFormat{65, 49, 2, 1}, FrameFormat{65, 49, 2, 3}}) {
        Process(frame);
        EXPECT_EQ(configured(), 2);
        Process(frame);
        EXPECT_EQ(configured(), 0);
    }
    effect->SetSettings(Strength(50)); // equal
    Process({65, 49, 2, 3});
    EXPECT_EQ(configured(), 0);
    effect->SetSettings(Strength(51));
    Process({65, 49, 2, 3});
    EXPECT_EQ(configured(), 2);
}

TEST_F(PixelateTest, ResultIsCutToTheSizeThatThePictureHadBeforeBothRuns) {
    recorder.oneInput[1] = [this](DataHandle& data) { data = MakeNoise(*context, PixFmt::RGB24, 3, 2); };
    recorder.oneInput[2] = [this](DataHandle& data) { data = MakeNoise(*context, PixFmt::RGB24, 42, 32); };
    DataHandle const result = Run({context->CreateImage(PixFmt::RGB24, FrameFormat::Square(41, 31))});
    EXPECT_EQ(AsVideo(result).GetRectangle(), (Rectangle{0, 0, 41, 31}));
}

TEST_F(PixelateTest, AResizerThatFailsOnceIsConfiguredAgain) {
    recorder.Take();
    for (std::string const& failing : {std::string("set 1"), std::string("set 2")}) {
        ExpectFailureAt(failing, [&] { Process({40, 40, 1, 1}); });
        Process({40, 40, 1, 1});
        Calls const calls = recorder.Take();
        ASSERT_EQ(calls.size(), 4U) << failing;
        EXPECT_TRUE(calls[0].starts_with("set 1") && calls[1].starts_with("set 2")) << failing;
        effect->SetSettings(Strength(failing == "set 1" ? 11 : 12));
    }
}

} // namespace
} // namespace Velnor::Proc
