#include "Proc/Settings/SettingsEffectTiltShift.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(TiltShift)
namespace {

using namespace Testing;

SettingsEffectTiltShift Make(int blur, double feather = 70) {
    SettingsEffectTiltShift settings;
    settings.SetBlur(blur);
    SettingsEffectShapeMask mask = settings.GetShapeMask();
    mask.SetFeather(feather);
    settings.SetShapeMask(mask);
    return settings;
}

/// The effects are 1 converter, 2 smart blur, 3 shape mask, 4 blender, 5 alpha extractor, 6 alpha inserter,
/// 7 downscaler, 8 upscaler.
class TiltShiftTest : public CompositionTest<CreateTiltShift> {
protected:
    TiltShiftTest() {
        recorder.oneInput[3] = [this](DataHandle& data) {
            data = context->CreateImage(PixFmt::GRAY8, data->GetFrameFormat());
        };
        created = recorder.Take();
    }

    Calls Process(FrameFormat const& frame = {31, 23, 1, 1}, PixFmt format = PixFmt::RGB24) {
        Run({context->CreateImage(format, frame)});
        Calls calls = recorder.Take();
        for (std::string& call : calls)
            if (call.starts_with("set 3")) call = "set 3";
        return calls;
    }

    static constexpr char const* DOWN = "set 7 method=fast-bilinear mode=to-frame fitting=inside target=1024x768";
    static constexpr char const* BLUR = "set 2 luma-blur=60 chroma-blur=60";

    Calls created;
};

TEST_F(TiltShiftTest, CreatesItsSubEffectsInOrderEachConfiguredAtOnce) {
    Calls expected;
    for (std::string const name : {"SettingsColorspaceConverter", "SettingsEffectSmartBlur", "SettingsEffectShapeMask",
                                   "SettingsEffectImageBlender", "SettingsEffectExtraAlphaExtractor",
                                   "SettingsEffectAlphaInserter", "SettingsResizer", "SettingsResizer"}) {
        std::string const number = std::to_string(expected.size() / 2 + 1);
        expected.insert(expected.end(), {"create " + number + " " + name + "/Default", "set " + number});
    }
    expected.insert(expected.end(), {"set 4", "set 5", "set 6", "set 2 luma-blur=100 chroma-blur=100"});
    EXPECT_EQ(created, expected);
}

TEST_F(TiltShiftTest, AChangeRebuildsWhatHangsOnItAndNoMore) {
    Calls const kept{"run 7", "run 2", "run 8", "run 1", "run 6", "run 4"};
    EXPECT_EQ(Process(), (Calls{DOWN, "set 8 method=bicublin mode=to-frame target=32x24", "run 7", "run 2", "run 8",
                                "set 1 formats=rgb24", "run 1", "set 3", "run 3", "set 5 pixel-format=rgb24", "run 5",
                                "run 6", "run 4"}));
    EXPECT_EQ(Process(), kept);
    // The format of the alpha is the same, so its extractor runs unconfigured.
    EXPECT_EQ(Process({31, 23, 4, 3}), (Calls{DOWN, "set 8 method=bicublin mode=to-frame target=32x24x4:3", "run 7",
                                              "run 2", "run 8", "run 1", "set 3", "run 3", "run 5", "run 6", "run 4"}));
    EXPECT_EQ(Process({31, 23, 4, 3}, PixFmt::YUV420P),
              (Calls{"run 7", "run 2", "run 8", "set 1 formats=yuv420p", "run 1", "set 5 pixel-format=yuv420p", "run 5",
                     "run 6", "run 4"}));
    EXPECT_EQ(Process({31, 23, 4, 3}, PixFmt::YUV420P), kept);
}

TEST_F(TiltShiftTest, NewSettingsReachTheSubEffectsWithTheNextPicture) {
    Process();
    effect->SetSettings(Make(60));
    EXPECT_EQ(recorder.Take(), Calls{});
    Calls const next = Steps(std::string(DOWN) + "; set 8 method=bicublin mode=to-frame target=32x24; " + BLUR +
                             "; run 7; run 2; run 8; run 1; set 3; run 3; run 5; run 6; run 4");
    EXPECT_EQ(Process(), next);
    EXPECT_EQ(Process().size(), 6U);
    effect->SetSettings(Make(60)); // equal
    EXPECT_EQ(Process().size(), 6U);
    effect->SetSettings(Make(60, 20));
    EXPECT_EQ(Process(), next);
}

TEST_F(TiltShiftTest, OnlyTheWidthDecidesWhetherThePictureIsReduced) {
    Calls const narrow = Process({4, 300, 1, 1});
    EXPECT_EQ(narrow, (Calls{"run 2", "set 1 formats=rgb24", "run 1", "set 3", "run 3", "set 5 pixel-format=rgb24",
                             "run 5", "run 6", "run 4"}));
    EXPECT_EQ(Process({5, 1, 1, 1}), (Calls{DOWN, "set 8 method=bicublin mode=to-frame target=6x2", "run 7", "run 2",
                                            "run 8", "run 1", "set 3", "run 3", "run 5", "run 6", "run 4"}));
}

TEST_F(TiltShiftTest, BlendsTheWorkCutToThePicturesSizeOverThePictureItself) {
    recorder.oneInput[2] = [](DataHandle& data) { AsVideo(data).GetMutablePlane(0).GetRow(0)[0] = 200; };
    recorder.oneInput[8] = [this](DataHandle& data) {
        VideoHandle const large = context->CreateImage(PixFmt::RGB24, {32, 24, 1, 1});
        CopyDataVideo(ConstVideoHandle(&AsVideo(data)), large, 0, 0);
        data = large;
    };
    recorder.twoInput[6] = [](DataHandle& first, ConstDataHandle const&) {
        first = AsVideo(first).MakeCopy(CopyMode::Value); // the planes go to what came back
    };
    bool isBlended = false;
    recorder.twoInput[4] = [&](DataHandle& first, ConstDataHandle const& second) {
        isBlended = true;
        EXPECT_EQ(AsVideo(first).GetPlane(0).GetRow(0)[0], 10);
        EXPECT_EQ(AsVideo(second).GetPlane(0).GetRow(0)[0], 200);
        EXPECT_EQ(second->GetFrameFormat(), first->GetFrameFormat());
        EXPECT_FALSE(AsVideo(second).GetExtraAlpha(0).IsEmpty());
        EXPECT_FALSE(AsVideo(second).GetExtraAlpha(1).IsEmpty());
        AsVideo(first).Fill(Color(3, 3, 3, 255));
    };
    for (FrameFormat const& frame : {FrameFormat{31, 23, 1, 1}, FrameFormat{3, 23, 1, 1}}) {
        VideoHandle const input = MakeFlat(*context, PixFmt::RGB24, frame.width, frame.height, {10, 20, 30});
        VideoHandle const caller = input->MakeCopy(CopyMode::Share);
        Run({input});
        EXPECT_EQ(input->GetPlane(0).GetRow(0)[0], 10);
        EXPECT_EQ(caller->GetPlane(0).GetRow(0)[0], 10);
    }
    EXPECT_TRUE(isBlended);
}

TEST_F(TiltShiftTest, ASubEffectThatFailsLeavesNothingHalfBuilt) {
    FrameFormat const other{40, 30, 1, 1};
    for (std::string const failing :
         {"set 1", "set 2", "set 3", "set 5", "set 7", "set 8", "run 2", "run 3", "run 5"}) {
        SCOPED_TRACE(failing);
        effect->SetSettings(Make(33));
        Process();
        effect->SetSettings(Make(60));
        ExpectFailureAt(failing, [&] { Process(other, PixFmt::YUV420P); });
        // Back to the frame that was cached before: nothing of the other one may be left.
        Calls calls = Process();
        bool const isBlurLeft = std::ranges::count(calls, BLUR) == 1;
        EXPECT_EQ(isBlurLeft, failing == "set 2" || failing == "set 7" || failing == "set 8");
        EXPECT_EQ(std::ranges::count(calls, "set 8 method=bicublin mode=to-frame target=32x24"), 1);
        EXPECT_EQ(std::ranges::count(calls, "run 3"), 1);
        EXPECT_EQ(std::ranges::count(calls, "run 5"), 1);
    }
}

} // namespace
} // namespace Velnor::Proc
