#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Settings/SettingsEffectHorizonDetector.h"
#include "Proc/Settings/SettingsEffectNeuralPredict.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"
#include "Tests/Support/Refusal.h"

#include <gmock/gmock.h>

#include <limits>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(HorizonDetector)
namespace {

using namespace Testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

struct HorizonDetectorTest : CompositionTest<CreateHorizonDetector> {

    bool Verdict() const {
        return dynamic_cast<SettingsEffectHorizonDetector const&>(effect->GetSettingsBase()).HasHorizon();
    }
    bool VerdictFor(std::vector<float> const& scores) {
        recorder.findings[1] = [=](Settings& settings) {
            dynamic_cast<SettingsEffectNeuralPredict&>(settings).SetResult(scores);
        };
        effect->ProcessData({MakeNoise(*context, PixFmt::RGB24, 4, 3)});
        return Verdict();
    }
};

TEST_F(HorizonDetectorTest, TheSecondScoreMustBeTheLarger) {
    float const none = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(VerdictFor({0.4F, 0.6F}));
    EXPECT_FALSE(VerdictFor({0.5F, 0.5F}));
    EXPECT_TRUE(VerdictFor({-3.0F, -2.5F, 9.0F}));
    EXPECT_FALSE(VerdictFor({0.6F, 0.4F}));
    EXPECT_FALSE(VerdictFor({none, 0.4F}));
    EXPECT_FALSE(VerdictFor({0.4F, none}));
    ExpectRefusal<EffectException>([&] { VerdictFor({1.0F}); }, {"gives 1 scores"});
}

TEST_F(HorizonDetectorTest, TheNetworkAloneDecidesWhetherTheVerdictStays) {
    SettingsEffectHorizonDetector settings;
    EXPECT_THAT(recorder.Take(), ElementsAre("create 1 SettingsEffectNeuralPredict/Default",
                                             "set 1 neural.model=horizon.onnx fix-min=17"));
    effect->SetSettings(settings);
    EXPECT_THAT(recorder.Take(), ElementsAre("set 1 neural.model=horizon.onnx fix-min=17"));
    EXPECT_TRUE(VerdictFor({0.0F, 1.0F}));
    recorder.Take();
    effect->SetSettings(settings); // Says "no horizon", and is not asked.
    EXPECT_THAT(recorder.Take(), ElementsAre("set 1 neural.model=horizon.onnx fix-min=17"));
    EXPECT_TRUE(Verdict());

    SettingsEffectNeuralBase other = settings.GetNeural();
    other.SetModel("other.onnx");
    settings.SetNeural(other);
    effect->SetSettings(settings);
    EXPECT_THAT(recorder.Take(), ElementsAre("set 1 neural.model=other.onnx fix-min=17"));
    EXPECT_FALSE(Verdict());
    settings.SetHasHorizon(true);
    effect->SetSettings(settings);
    EXPECT_FALSE(Verdict());
}

TEST_F(HorizonDetectorTest, ThePicturePassesUntouchedWhateverThePredictorDoes) {
    VideoHandle const picture = MakeNoise(*context, PixFmt::RGB24, 4, 3);
    std::vector<unsigned char> const before = Samples(*picture);
    recorder.findings[1] = [](Settings& settings) {
        dynamic_cast<SettingsEffectNeuralPredict&>(settings).SetResult({0.0F, 1.0F});
    };
    for (bool const replaces : {false, true}) {
        recorder.oneInput[1] = [&](DataHandle& data) {
            EXPECT_EQ(Samples(AsVideo(data)), before);
            AsVideo(data).Fill(Color(1, 2, 3, 255));
            if (replaces) data = MakeNoise(*context, PixFmt::GRAY8, 1, 1);
        };
        DataHandle data = picture;
        dynamic_cast<IOneInputEffect&>(*effect).ProcessData(data);
        EXPECT_EQ(data, picture);
        EXPECT_EQ(Samples(*picture), before);
    }
}

} // namespace
} // namespace Velnor::Proc
