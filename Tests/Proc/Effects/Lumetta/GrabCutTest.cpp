#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/WarningNode.h"
#include "Proc/Settings/SettingsEffectGrabCut.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gmock/gmock.h>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(GrabCut)
namespace {

using namespace Testing;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using Bytes = std::vector<int>;

constexpr int ALPHA_EXTRACTOR = 2;
constexpr int SEGMENTATION = 3; ///< With the first settings.

struct GrabCutTest : CompositionTest<CreateGrabCut> {
    SettingsEffectGrabCut settings;

    GrabCutTest() {
        recorder.oneInput[ALPHA_EXTRACTOR] = [](DataHandle& data) { data = nullptr; };
    }

    VideoHandle MakeGrey(std::uint32_t width, Bytes const& samples) const {
        auto const height = static_cast<std::uint32_t>(samples.size()) / width;
        VideoHandle const picture = context->CreateImage(PixFmt::GRAY8, FrameFormat::Square(width, height));
        for (std::uint32_t i = 0; i < samples.size(); ++i)
            picture->GetMutablePlane(0).GetRow(i / width)[i % width] = static_cast<unsigned char>(samples[i]);
        return picture;
    }
    static Bytes Read(DataHandle const& picture) {
        std::vector<unsigned char> const samples = Samples(AsVideo(picture));
        return {samples.begin(), samples.end()};
    }
    /// The segmentation gives these samples, in rows of three.
    void Cut(Bytes const& samples, int segmentation = SEGMENTATION) {
        recorder.twoInput[segmentation] = [=, this](DataHandle& first, ConstDataHandle const&) {
            first = MakeGrey(3, samples);
        };
    }
    Bytes Run(Bytes const& strokes) {
        DataHandle const result = effect->ProcessData({MakeNoise(*context, PixFmt::RGB24, 3, 2), MakeGrey(3, strokes)});
        return Read(result);
    }
};

TEST_F(GrabCutTest, CreatesTheSegmentationAnewWithEachSettings) {
    EXPECT_THAT(recorder.Take(), ElementsAre("create 1 SettingsEffectMorphology/Default", "set 1",
                                             "create 2 SettingsEffectAlphaExtractor/Default", "set 2"));
    EXPECT_THROW(Run({255, 128, 0, 0, 0, 0}), EffectException);
    recorder.Take();
    effect->SetSettings(settings);
    EXPECT_THAT(recorder.Take(), ElementsAre("create 3 SettingsEffectGrabCutSegmentation/Default", "set 3"));
    effect->SetSettings(settings);
    EXPECT_THAT(recorder.Take(), ElementsAre("create 4 SettingsEffectGrabCutSegmentation/Default", "set 4"));
    settings.SetForeground(7);
    settings.SetBackground(300);
    settings.SetSmooth(3);
    settings.SetAlgorithm(SettingsEffectGrabCut::OPENCV);
    effect->SetSettings(settings);
    EXPECT_THAT(recorder.Take(),
                ElementsAre("create 5 SettingsEffectGrabCutSegmentation/" + ImplPhotoNames::OPENCV,
                            "set 5 foreground=7 background=300", "set 1 operation=smooth iterations=3"));
    settings.SetAlgorithm(static_cast<SettingsEffectGrabCut::Algorithm>(2));
    effect->SetSettings(settings);
    EXPECT_EQ(recorder.Take()[0], "create 6 SettingsEffectGrabCutSegmentation/Default");
}

TEST_F(GrabCutTest, StrokesOfOneKindAreTheResultAndAWarning) {
    settings.SetSmooth(2);
    settings.SetKeepSelection(true);
    effect->SetSettings(settings);
    auto const warning = [&] {
        Core::Property const statistic = effect->GetStatistic();
        Core::Property const* const node = statistic.FindChild(WARNING_NODE);
        return node != nullptr ? node->GetValue() : std::string();
    };
    recorder.Take();
    for (auto const& [strokes, missing] : std::vector<std::pair<Bytes, std::string>>{
             {{255, 0, 255, 7, 0, 0}, "no strokes on the background (value 128)"},
             {{0, 0, 0, 0, 0, 128}, "no strokes on the object (value 255)"},
             {{0, 0, 1, 2, 3, 254}, "no strokes on the object (value 255) or on the background (value 128)"}}) {
        VideoHandle const marks = MakeGrey(3, strokes);
        DataHandle const result = effect->ProcessData({MakeNoise(*context, PixFmt::RGB24, 3, 2), marks});
        EXPECT_EQ(Read(result), strokes);
        EXPECT_NE(result, DataHandle(marks));
        EXPECT_THAT(warning(), HasSubstr(missing));
    }
    EXPECT_THAT(recorder.Take(), IsEmpty());
    EXPECT_EQ(effect->GetStatistic().FindChild("Count")->GetValue(), "3");
    Cut({255, 128, 128, 128, 128, 128});
    recorder.oneInput[1] = [](DataHandle&) {};
    Run({255, 128, 0, 0, 0, 0});
    EXPECT_EQ(warning(), "");
}

TEST_F(GrabCutTest, TheAlphaValueStandsOnTheObjectWhereThePictureShows) {
    settings.SetForeground(511); // The low byte counts.
    settings.SetAlpha(456);
    effect->SetSettings(settings);
    Cut({255, 128, 255, 7, 0, 255});
    VideoHandle const input = MakeNoise(*context, PixFmt::RGB24, 3, 2);
    recorder.twoInput[SEGMENTATION] = [&, cut = recorder.twoInput[SEGMENTATION]](DataHandle& first,
                                                                                 ConstDataHandle const& second) {
        EXPECT_NE(first, DataHandle(input));
        EXPECT_EQ(Samples(AsVideo(first)), Samples(*input));
        cut(first, second);
    };
    auto const run = [&] { return Read(effect->ProcessData({input, MakeGrey(3, {255, 128, 0, 0, 0, 0})})); };
    EXPECT_EQ(run(), (Bytes{200, 0, 200, 0, 0, 200}));
    recorder.oneInput[ALPHA_EXTRACTOR] = [&](DataHandle& data) {
        EXPECT_EQ(Samples(AsVideo(data)), Samples(*input)); // The picture, not the cut.
        data = MakeGrey(3, {1, 255, 0, 255, 255, 128});
    };
    EXPECT_EQ(run(), (Bytes{200, 0, 0, 0, 0, 200}));
}

TEST_F(GrabCutTest, SmoothingWorksInABlackBorder) {
    settings.SetSmooth(2);
    effect->SetSettings(settings);
    Cut({255, 128, 255, 128, 128, 128});
    recorder.oneInput[1] = [&](DataHandle& data) {
        EXPECT_EQ(data->GetFrameFormat(), FrameFormat::Square(7, 6));
        Bytes expected(42, 0);
        expected[2 * 7 + 2] = expected[2 * 7 + 4] = 255;
        EXPECT_EQ(Read(data), expected);
        data = MakeGrey(7, Bytes(42, 9)); // Another picture, as an effect may give.
        AsVideo(data).GetMutablePlane(0).GetRow(2)[4] = 77;
    };
    EXPECT_EQ(Run({255, 128, 0, 0, 0, 0}), (Bytes{9, 9, 77, 9, 9, 9}));
    settings.SetSmooth(0);
    effect->SetSettings(settings);
    Cut({255, 128, 255, 128, 128, 128}, SEGMENTATION + 1);
    recorder.Take();
    EXPECT_EQ(Run({255, 128, 0, 0, 0, 0}), (Bytes{255, 0, 255, 0, 0, 0}));
    EXPECT_THAT(recorder.Take(), ElementsAre("run 4", "run 2"));
}

TEST_F(GrabCutTest, KeptStrokesLieOverTheSmoothMaskWhateverTheirValue) {
    settings.SetSmooth(1);
    settings.SetKeepSelection(true);
    effect->SetSettings(settings);
    Cut({255, 255, 255, 255, 255, 255});
    recorder.oneInput[1] = [](DataHandle& data) { AsVideo(data).Fill(Color(50, 50, 50, 255)); };
    EXPECT_EQ(Run({255, 128, 0, 7, 0, 0}), (Bytes{255, 128, 50, 7, 50, 50}));
}

TEST_F(GrabCutTest, AStopLeavesWhatTheSegmentationGave) {
    for (bool const shows : {true, false}) {
        auto const controller = Core::ProgressController::Create();
        effect->SetProgressController(controller);
        settings.SetShowProgress(shows);
        settings.SetKeepSelection(true);
        effect->SetSettings(settings);
        recorder.twoInput[recorder.created] = [&](DataHandle& first, ConstDataHandle const&) {
            first = MakeGrey(3, {255, 128, 128, 3, 2, 1});
            controller->RequestStop();
        };
        recorder.Take();
        EXPECT_EQ(Run({255, 128, 0, 0, 0, 0}), (Bytes{255, 128, 128, 3, 2, 1}));
        EXPECT_EQ(recorder.Take().size(), 1U);
    }
}

TEST_F(GrabCutTest, RefusesStrokesAndCutsThatAreNoMasks) {
    effect->SetSettings(settings);
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 3, 2);
    auto const refusal = [&](VideoHandle const& strokes) {
        try {
            effect->ProcessData({picture, strokes});
        } catch (EffectException const& error) {
            return DescribeException(error);
        }
        return std::string("accepted");
    };
    EXPECT_THAT(refusal(MakeNoise(*context, PixFmt::RGB24, 3, 2)), HasSubstr("strokes are in the format rgb24"));
    VideoHandle const strokes = MakeGrey(3, {255, 128, 0, 0, 0, 0});
    EXPECT_THAT(refusal(strokes), HasSubstr("cut is in the format rgb24")); // This segmentation gives the picture back.
    Cut({255, 128, 128});
    EXPECT_THAT(refusal(strokes), HasSubstr("cut has 3 x 1 pixels, 3 x 2 are needed"));
}

} // namespace
} // namespace Velnor::Proc
