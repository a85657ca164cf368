#include "Proc/Settings/SettingsEffectVignette.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Vignette)
namespace {

using namespace Testing;

constexpr FrameFormat FRAME{20, 14, 1, 1};

SettingsEffectVignette Make(Color color, double feather = 75) {
    SettingsEffectVignette settings;
    settings.SetColor(color);
    SettingsEffectShapeMask mask = settings.GetShapeMask();
    mask.SetFeather(feather);
    settings.SetShapeMask(mask);
    return settings;
}

/// The effects are 1 converter, 2 shape mask, 3 blender, 4 alpha extractor, 5 alpha inserter.
class VignetteTest : public CompositionTest<CreateVignette> {
protected:
    VignetteTest() {
        recorder.oneInput[2] = [this](DataHandle& data) {
            data = context->CreateImage(PixFmt::GRAY8, data->GetFrameFormat());
            AsVideo(data).Fill(Color(77, 77, 77, 255));
        };
        recorder.twoInput[3] = [this](DataHandle&, ConstDataHandle const& second) {
            layer = second;
            layerAlpha = AsVideo(second).GetExtraAlpha(0).GetRow(0)[0];
        };
        created = recorder.Take();
    }

    /// What is called for one picture, without settings' values.
    Calls Process(FrameFormat const& frame = FRAME, PixFmt format = PixFmt::RGBA) {
        Run({context->CreateImage(format, frame)});
        Calls calls = recorder.Take();
        for (std::string& call : calls)
            if (call.starts_with("set 2")) call = "set 2";
        return calls;
    }

    Calls created;
    ConstDataHandle layer;
    int layerAlpha = 0;
};

TEST_F(VignetteTest, CreatesAndConfiguresItsSubEffectsInOrder) {
    EXPECT_EQ(created,
              (Calls{"create 1 SettingsColorspaceConverter/Default", "set 1 formats=gray8,argb,rgba,abgr,bgra",
                     "create 2 SettingsEffectShapeMask/Default", "set 2", "create 3 SettingsEffectImageBlender/Default",
                     "set 3", "create 4 SettingsEffectExtraAlphaExtractor/Default", "set 4",
                     "create 5 SettingsEffectAlphaInserter/Default", "set 5"}));
}

TEST_F(VignetteTest, AChangeRebuildsWhatHangsOnItAndNoMore) {
    Calls const all{"run 1", "set 2", "run 2", "set 4 pixel-format=rgba", "run 4", "run 5", "run 3"};
    Calls const kept{"run 1", "run 3"};
    EXPECT_EQ(Process(), all); // the default colour, too, needs a layer
    EXPECT_EQ(Process(), kept);
    EXPECT_EQ(Process({20, 14, 4, 3}), all);
    EXPECT_EQ(Process({22, 14, 4, 3}), all);
    Calls const formatAlone{"run 1", "set 4 pixel-format=gray8", "run 4", "run 5", "run 3"};
    EXPECT_EQ(Process({22, 14, 4, 3}, PixFmt::GRAY8), formatAlone);
    EXPECT_EQ(Process({22, 14, 4, 3}, PixFmt::GRAY8), kept);
    effect->SetSettings(Make(Color(10, 20, 30, 255)));
    Calls const colorAlone{"run 1", "run 5", "run 3"};
    EXPECT_EQ(Process({22, 14, 4, 3}, PixFmt::GRAY8), colorAlone);
    effect->SetSettings(Make(Color(10, 20, 30, 255)));
    EXPECT_EQ(Process({22, 14, 4, 3}, PixFmt::GRAY8), kept);
    effect->SetSettings(Make(Color(10, 20, 30, 255), 40));
    EXPECT_EQ(Process({22, 14, 4, 3}).size(), all.size());
    effect->ResetSettings();
    EXPECT_EQ(Process({22, 14, 4, 3}), all);
}

TEST_F(VignetteTest, TheConvertedPicturesFormatCounts) {
    recorder.oneInput[1] = [this](DataHandle& data) {
        data = context->CreateImage(PixFmt::BGRA, data->GetFrameFormat());
    };
    Process(FRAME, PixFmt::BGR24);
    EXPECT_EQ(Process(FRAME, PixFmt::YUV420P), (Calls{"run 1", "run 3"}));
    EXPECT_EQ(layer->GetPixFmt(), PixFmt::BGRA);
}

TEST_F(VignetteTest, TheLayerHasTheColourAndTheMasksOpacity) {
    recorder.twoInput[5] = [](DataHandle& first, ConstDataHandle const&) {
        first = AsVideo(first).MakeCopy(CopyMode::Value); // the planes go to what came back
    };
    effect->SetSettings(Make(Color(10, 20, 30, 255)));
    Process();
    EXPECT_EQ(layerAlpha, 77);
    unsigned char const* const pixel = AsVideo(layer).GetPlane(0).GetRow(5);
    EXPECT_EQ(std::vector<int>(pixel, pixel + 3), (std::vector<int>{30, 20, 10}));
    EXPECT_EQ(AsVideo(layer).GetExtraAlpha(1).GetRow(0)[0], 77);
}

TEST_F(VignetteTest, SubEffectsThatWriteInPlaceReachNeitherTheCallersPictureNorTheMask) {
    recorder.oneInput[4] = [](DataHandle& data) { AsVideo(data).GetMutablePlane(0).GetRow(0)[0] = 9; };
    recorder.twoInput[3] = [this](DataHandle& first, ConstDataHandle const& second) {
        AsVideo(first).Fill(Color(1, 1, 1, 255));
        layerAlpha = AsVideo(second).GetExtraAlpha(0).GetRow(0)[0];
    };
    VideoHandle const input = MakeNoise(*context, PixFmt::RGBA, 20, 14);
    auto const before = Samples(*input);
    Run({input});
    EXPECT_EQ(Samples(*input), before);
    EXPECT_EQ(layerAlpha, 77);
}

TEST_F(VignetteTest, IsEmptyWhenTheMaskIsForegroundAlone) {
    SettingsEffectVignette settings = Make(Color(1, 2, 3, 255));
    SettingsEffectShapeMask mask;
    mask.SetBackground(mask.GetForeground());
    settings.SetShapeMask(mask);
    effect->SetSettings(settings);
    EXPECT_EQ(Process(), Calls{});
}

TEST_F(VignetteTest, ASubEffectThatFailsLeavesNothingHalfBuilt) {
    Calls const all = Process();
    for (std::string const failing : {"set 2", "run 2", "set 4", "run 4", "run 5"}) {
        SCOPED_TRACE(failing);
        effect->SetSettings(Make(Color(1, 2, 3, 255), static_cast<double>(failing[0] + failing[4])));
        Process();
        effect->SetSettings(Make(Color(3, 2, 1, 255), 3));
        ExpectFailureAt(failing, [&] { Process(); });
        layer = nullptr;
        Calls const again = Process();
        std::size_t const stage = failing.ends_with('2') ? 0 : failing.ends_with('4') ? 2 : 4;
        Calls expected{"run 1"};
        expected.insert(expected.end(), all.begin() + 1 + static_cast<std::ptrdiff_t>(stage), all.end());
        EXPECT_EQ(again, expected);
        EXPECT_EQ(layerAlpha, 77);
    }
}

} // namespace
} // namespace Velnor::Proc
