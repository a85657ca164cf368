#include "Proc/Settings/SettingsEffectBlurBokeh.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(BlurBokeh)
namespace {

using namespace Testing;

SettingsEffectBlurBokeh Make(double size, double strength = 1) {
    SettingsEffectBlurBokeh settings;
    settings.SetSize(size);
    settings.SetStrength(strength);
    return settings;
}

/// The effects are 1 output converter, 2 generator, 3 mask converter, 4 restore, 5 working and 6 kernel resizer,
/// 7 blender, 8 alpha extractor, 9 input converter.
class BlurBokehTest : public CompositionTest<CreateBlurBokeh> {
protected:
    BlurBokehTest() {
        created = recorder.Take();
        recorder.oneInput[2] = [this](DataHandle& data) {
            EXPECT_EQ(data, nullptr);
            data = MakeFlat(*context, PixFmt::GRAY8, 100, 80, {255});
        };
        recorder.oneInput[3] = [this](DataHandle& data) {
            if (data->GetPixFmt() == PixFmt::GRAY8) return;
            FrameFormat const frame = data->GetFrameFormat();
            data = MakeFlat(*context, PixFmt::GRAY8, frame.width, frame.height, {100, 120});
        };
        recorder.oneInput[4] = [this](DataHandle& data) {
            data = MakeFlat(*context, PixFmt::RGB24, restored.width, restored.height, {40});
        };
        recorder.oneInput[5] = [this](DataHandle& data) {
            data = MakeFlat(*context, PixFmt::RGB24, work.width, work.height, {50});
        };
        recorder.oneInput[6] = [this](DataHandle& data) {
            data = MakeFlat(*context, PixFmt::GRAY8, kernel.width, kernel.height, {255});
        };
        recorder.twoInput[7] = [this](DataHandle& first, ConstDataHandle const& second) {
            blended = first->GetFrameFormat();
            EXPECT_EQ(AsVideo(first).GetPlane(0).GetRow(0)[0], 40);
            EXPECT_EQ(AsVideo(second).GetPlane(0).GetRow(0)[0], 10);
            opacity = AsVideo(second).GetExtraAlpha(0).GetRow(0)[0];
            EXPECT_FALSE(AsVideo(second).GetExtraAlpha(1).IsEmpty());
        };
    }

    Calls Process(std::uint32_t width = 1000, std::uint32_t height = 700) {
        VideoHandle const input = MakeFlat(*context, PixFmt::RGB24, width, height, {10});
        DataHandle const result = Run({input});
        EXPECT_EQ(input->GetPlane(0).GetRow(0)[0], 10);
        EXPECT_TRUE(std::as_const(*input).GetExtraAlpha(0).IsEmpty());
        rectangle = AsVideo(result).GetRectangle();
        return recorder.Take();
    }

    Calls created;
    FrameFormat work = FrameFormat::Square(60, 40);
    FrameFormat kernel = FrameFormat::Square(5, 4);
    FrameFormat restored = FrameFormat::Square(1000, 700);
    FrameFormat blended;
    Rectangle rectangle;
    int opacity = -1;
};

TEST_F(BlurBokehTest, CreatesItsSubEffectsInOrderEachConfiguredAtOnce) {
    EXPECT_EQ(
        created,
        (Calls{"create 1 SettingsColorspaceConverter/Default", "set 1", "create 2 SettingsEffectVideoGenerator/Default",
               "set 2", "create 3 SettingsColorspaceConverter/Default", "set 3", "create 4 SettingsResizer/Default",
               "set 4", "create 5 SettingsResizer/Default", "set 5", "create 6 SettingsResizer/Default", "set 6",
               "create 7 SettingsEffectImageBlender/Default", "set 7 alpha=0 alpha-mode=larger",
               "create 8 SettingsEffectExtraAlphaExtractor/Default", "set 8", "set 3 formats=gray8",
               "set 8 pixel-format=rgb24"}));
}

TEST_F(BlurBokehTest, TheKernelIsKeptAndTheResizersFollowTheFrame) {
    effect->SetSettings(Make(0.16, 0.5));
    EXPECT_EQ(recorder.Take(), (Calls{"set 2", "set 7 alpha=127 alpha-mode=larger"}));
    Calls const first = Process();
    Calls const configured =
        Steps("create 9 SettingsColorspaceConverter/Default; set 9 formats=rgb24,bgr24; run 9; "
              "set 5 method=fast-bilinear mode=to-frame fitting=inside target=512x512; "
              "set 4 method=bicublin mode=to-frame fitting=stretch target=1000x700; run 5; run 2; "
              "set 6 method=bicublin mode=by-factor factor=0.08; run 6; run 3; run 4; run 3; run 8; run 7");
    EXPECT_EQ(first, configured);
    Calls const kept{"run 9", "run 5", "run 4", "run 3", "run 8", "run 7"};
    EXPECT_EQ(Process(), kept);
    work = FrameFormat::Square(40, 60);
    restored = FrameFormat::Square(702, 1000);
    EXPECT_EQ(Process(701, 999),
              (Calls{"run 9", "set 5 method=fast-bilinear mode=to-frame fitting=inside target=512x512",
                     "set 4 method=bicublin mode=to-frame fitting=stretch target=702x1000", "run 5", "run 4", "run 3",
                     "run 8", "run 7"}));
    effect->SetSettings(Make(0.16, 0.5)); // equal, and told all the same
    EXPECT_EQ(recorder.Take(), (Calls{"set 2", "set 7 alpha=127 alpha-mode=larger"}));
    EXPECT_EQ(Process(701, 999), kept);
    effect->SetSettings(Make(0.08));
    EXPECT_EQ(recorder.Take(), (Calls{"set 2", "set 7 alpha=0 alpha-mode=larger"}));
    EXPECT_EQ(Process(701, 999)[3], "set 6 method=bicublin mode=by-factor factor=0.04");
    effect->ResetSettings();
    EXPECT_EQ(recorder.Take(), Calls{});
    EXPECT_EQ(Process(701, 999)[2], "run 2");
}

TEST_F(BlurBokehTest, AKernelThatDoesNotFitIsRefusedOnEveryPicture) {
    Process();
    work = FrameFormat::Square(5, 40);
    restored = FrameFormat::Square(100, 800);
    for (int i = 0; i < 2; ++i) {
        try {
            Process(100, 800);
            FAIL();
        } catch (EffectException const& error) {
            EXPECT_EQ(*boost::get_error_info<TagTranscodingErrorCode>(error), static_cast<TranscodingErrors>(17));
            EXPECT_STREQ(*boost::get_error_info<boost::throw_function>(error),
                         "void __cdecl Velnor::Proc::BlurBokeh::ProcessInternalCSC(class boost::intrusive_ptr<class "
                         "Velnor::Proc::IDataVideo> &)");
            EXPECT_STREQ(*boost::get_error_info<boost::throw_file>(error), "Proc/Effects/Lumetta/BlurBokeh");
            EXPECT_EQ(*boost::get_error_info<boost::throw_line>(error), 140);
            std::string const text = *boost::get_error_info<TagDescription>(error);
            EXPECT_NE(text.find("5 x 4 pixels"), std::string::npos) << text;
            EXPECT_NE(text.find("5 x 40 pixels"), std::string::npos) << text;
        }
        EXPECT_EQ(recorder.Take().size(), i == 0 ? 4U : 2U); // configured once
    }
    work = FrameFormat::Square(6, 4);
    EXPECT_THROW(Process(100, 800), EffectException); // as high as the picture
    work = FrameFormat::Square(6, 5);
    EXPECT_NO_THROW(Process(100, 800));
    effect->SetSettings(Make(1e12));
    EXPECT_THROW(Process(100, 800), EffectException); // before a shape of that size is made
}

TEST_F(BlurBokehTest, OnlyAPictureSmallerThanTheWorkIsCutToItsSize) {
    auto const cut = [&](FrameFormat const& input, FrameFormat const& working) {
        work = working;
        restored = FrameFormat::Square(input.width + (input.width & 1), input.height + (input.height & 1));
        Process(input.width, input.height);
        return blended;
    };
    EXPECT_EQ(cut({101, 50, 1, 1}, {512, 253, 1, 1}), FrameFormat::Square(101, 50));
    EXPECT_EQ(cut({511, 900, 1, 1}, {291, 512, 1, 1}), FrameFormat::Square(512, 900));
    EXPECT_EQ(cut({1001, 701, 1, 1}, {512, 359, 1, 1}), FrameFormat::Square(1002, 702));
}

TEST_F(BlurBokehTest, TheMaskIsMadeOfTheRestoredBlur) {
    SettingsEffectBlurBokeh settings = Make(0.1, 1);
    settings.SetThreshold(0);
    effect->SetSettings(settings);
    Process();
    EXPECT_EQ(opacity, 255); // at the knee, of a mask of 100 and 120
    EXPECT_EQ(rectangle, (Rectangle{0, 0, 1000, 700}));
}

TEST_F(BlurBokehTest, ASubEffectThatFailsLeavesNothingHalfBuilt) {
    effect->SetSettings(Make(0.2));
    Process();
    for (std::string const failing : {"set 4", "set 5", "run 2", "set 6", "run 6"}) {
        SCOPED_TRACE(failing);
        effect->SetSettings(Make(0.1));
        effect->SetSettings(Make(0.2));
        recorder.Take();
        ExpectFailureAt(failing, [&] { Process(300, 200); });
        Calls const calls = Process();
        EXPECT_EQ(std::ranges::count(calls, "set 4 method=bicublin mode=to-frame fitting=stretch target=1000x700"), 1);
        EXPECT_EQ(std::ranges::count(calls, "run 2"), 1);
    }
}

} // namespace
} // namespace Velnor::Proc
