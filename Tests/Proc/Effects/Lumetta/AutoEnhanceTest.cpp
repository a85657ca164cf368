#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Lumetta/Kernels/Tables/MatchTable.h"
#include "Proc/Settings/SettingsEffectAutoEnhance.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/RecordingFactory.h"

#include <gmock/gmock.h>

#include <cmath>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(AutoEnhance)
namespace {

using namespace Testing;
using ::testing::ElementsAre;
using ::testing::SizeIs;

// The sub-effects by order of creation.
constexpr int BLENDER = 1;
constexpr int BLUR = 2;
constexpr int CONTRAST = 3;
constexpr int GAMMA = 4;
constexpr int BALANCE = 5;
constexpr int EXTRACTOR = 6;
constexpr int BACK = 7;
constexpr int LUMA = 8;

int First(IDataVideo const& picture) { return *picture.GetPlane(0).GetRow(0); }

struct AutoEnhanceTest : CompositionTest<CreateAutoEnhance> {

    AutoEnhanceTest() {
        recorder.oneInput[LUMA] = [this](DataHandle& data) { data = MakeLevel(PixFmt::YUV444P, First(AsVideo(data))); };
    }
    VideoHandle MakeLevel(PixFmt format, int level) const {
        VideoHandle const picture = context->CreateImage(format, FrameFormat::Square(4, 3));
        for (unsigned char i = 0; i < GetPlanesCount(*picture); ++i) {
            MutablePlane const plane = picture->GetMutablePlane(i);
            for (std::uint64_t y = 0; y < plane.GetHeight(); ++y)
                std::fill_n(plane.GetRow(y), plane.GetWidth(), static_cast<unsigned char>(level));
        }
        return picture;
    }
    void SetIntensity(double percent) {
        SettingsEffectAutoEnhance settings;
        settings.SetIntensity(percent);
        effect->SetSettings(settings);
    }
    DataHandle Run(PixFmt format = PixFmt::RGB24) { return effect->ProcessData({MakeLevel(format, 100)}); }

    /// The blender's opacity at each of its runs so far, through all calls.
    static std::vector<int> Opacities(Calls const& calls) {
        std::vector<int> all;
        int now = -1;
        for (std::string const& call : calls) {
            if (call == "set 1") now = 255;
            if (call.starts_with("set 1 alpha=")) now = std::stoi(call.substr(12));
            if (call == "run 1") all.push_back(now);
        }
        return all;
    }
};

TEST_F(AutoEnhanceTest, CreatesAndRunsInItsOrder) {
    EXPECT_EQ(
        recorder.Take(),
        (Calls{"create 1 SettingsEffectImageBlender/Default", "set 1 alpha=127", "create 2 SettingsEffectBlur/Default",
               "set 2", "create 3 SettingsEffectCLAHE/Default", "set 3", "create 4 SettingsEffectColorBalance/Default",
               "set 4", "create 5 SettingsEffectColorBalanceAuto/Default", "set 5",
               "create 6 SettingsEffectExtraAlphaExtractor/Default", "set 6",
               "create 7 SettingsColorspaceConverter/Default", "set 7", "create 8 SettingsColorspaceConverter/Default",
               "set 8 formats=yuv444p"}));
    Calls core = Steps("run 8; run 3; set 4 gamma=-30; run 4; set 2 kernel-length=2 dev-x=100 dev-y=100; run 2; "
                       "set 4 gamma=-25; run 4; set 4 gamma=25; run 4; run 1; run 8; run 1; set 4 gamma=5; run 4; "
                       "set 5 exposure=10; run 5; set 6 pixel-format=rgb24; run 6; set 1; run 1; set 1 alpha=127; "
                       "run 8; run 1; set 5 light-balance=true; run 5");
    EXPECT_EQ(Run()->GetPixFmt(), PixFmt::YUV444P);
    Calls first = core;
    first.insert(first.begin(), "set 7 formats=rgb24");
    EXPECT_EQ(recorder.Take(), first);

    recorder.oneInput[BACK] = [this](DataHandle& data) { data = MakeLevel(PixFmt::RGB24, First(AsVideo(data))); };
    SetIntensity(20);
    EXPECT_EQ(Run()->GetPixFmt(), PixFmt::RGB24);
    core.insert(core.end(), {"set 1 alpha=204", "run 7", "run 1"});
    EXPECT_EQ(recorder.Take(), core);
    Run(PixFmt::NV12);
    Calls const other = recorder.Take();
    EXPECT_EQ(other.front(), "set 7 formats=nv12");
    EXPECT_THAT(other, ::testing::Contains("set 6 pixel-format=nv12"));
}

TEST_F(AutoEnhanceTest, TheBlendersOpacityIsCarriedOverFromCallToCall) {
    Run();
    EXPECT_THAT(Opacities(recorder.calls), ElementsAre(127, 127, 255, 127));
    SetIntensity(20);
    Run();
    Run();
    SetIntensity(SettingsEffectAutoEnhance::DEFAULT_INTENSITY);
    Run();
    Run();
    EXPECT_THAT(Opacities(recorder.calls),
                ElementsAre(127, 127, 255, 127, /* then */ 127, 127, 255, 127, 204, /* then */ 204, 204, 255, 127, 204,
                            /* then */ 204, 204, 255, 127, /* then */ 127, 127, 255, 127));
    for (auto const& [intensity, opacity] : std::vector<std::pair<double, int>>{
             {0, 255}, {50, 127}, {33.3, 170}, {99.99, 0}, {200, -255}, {-10, 280}, {-1e300, 2147483647}}) {
        SetIntensity(intensity);
        Run();
        EXPECT_EQ(Opacities(recorder.calls).back(), opacity) << intensity;
    }
}

TEST_F(AutoEnhanceTest, AfterAFailureTheBlenderIsAsTheLastFinishedPictureLeftIt) {
    SetIntensity(20);
    Run();
    recorder.onCall = [runs = 0](std::string const& call) mutable {
        if (call == "run 1" && ++runs == 3) throw std::bad_alloc();
    };
    EXPECT_THROW(Run(), std::bad_alloc);
    recorder.onCall = nullptr;
    Run();
    Run();
    EXPECT_THAT(Opacities(recorder.calls), ElementsAre(127, 127, 255, 127, 204, /* fails */ 204, 204, 255, //
                                                       204, 204, 255, 127, 204, 204, 204, 255, 127, 204));
}

/// Each sub-effect leaves a level of its own, so that a trace of levels shows which picture went where.
TEST_F(AutoEnhanceTest, PicturesFlowAsTheyShould) {
    std::vector<std::string> trace;
    int gammaNow = 0;
    recorder.onCall = [&](std::string const& call) {
        if (call.starts_with("set 4 gamma=")) gammaNow = std::stoi(call.substr(12));
    };
    auto const see = [&](std::string const& name, DataHandle& data, int level) {
        trace.push_back(name + " " + std::to_string(First(AsVideo(data))));
        data = MakeLevel(data->GetPixFmt(), level); // Another picture, as an effect may give.
    };
    recorder.oneInput[CONTRAST] = [&](DataHandle& data) { see("contrast", data, 60); };
    recorder.oneInput[GAMMA] = [&](DataHandle& data) { see("gamma", data, First(AsVideo(data)) + gammaNow); };
    recorder.oneInput[BLUR] = [&](DataHandle& data) { see("blur", data, 200); };
    recorder.oneInput[BALANCE] = [&](DataHandle& data) { see("balance", data, First(AsVideo(data)) + 3); };
    recorder.oneInput[EXTRACTOR] = [&](DataHandle& data) { see("extract", data, 222); };
    recorder.oneInput[BACK] = [&](DataHandle& data) { see("back", data, 90); };
    int blended = 0;
    recorder.twoInput[BLENDER] = [&](DataHandle& first, ConstDataHandle const& second) {
        std::string text =
            "blend " + std::to_string(First(AsVideo(first))) + " " + std::to_string(First(AsVideo(second)));
        for (unsigned char index = 0; index < 2; ++index)
            if (ConstPlane const alpha = AsVideo(second).GetExtraAlpha(index); !alpha.IsEmpty())
                text += " alpha " + std::to_string(*alpha.GetRow(0));
        trace.push_back(text);
        first = MakeLevel(first->GetPixFmt(), ++blended);
    };
    SetIntensity(10);
    VideoHandle const input = MakeLevel(PixFmt::RGB24, 100);
    DataHandle const result = effect->ProcessData({input});
    EXPECT_THAT(trace,
                ElementsAre("contrast 100", "gamma 100", "blur 255", "gamma 100", "gamma 100", "blend 125 75",
                            "blend 60 1", "gamma 100", "balance 105", "extract 200", "blend 108 75 alpha 200 alpha 222",
                            "blend 2 3", "balance 4", "back 7", "blend 90 100"));
    EXPECT_EQ(First(AsVideo(result)), 5);
    EXPECT_EQ(First(*input), 100);

    trace.clear();
    gammaNow = 0;
    DataHandle const dark = effect->ProcessData({MakeLevel(PixFmt::RGB24, 69)});
    EXPECT_THAT(trace, ::testing::Contains("blur 0")); // 69 - 30 is below 40.
}

TEST(MatchTable, LevelsGoToTheNearestOfTheNormalDistribution) {
    using Kernels::Histogram;
    constexpr double DEVIATION = 24.0 / 255.0;
    std::array<double, 256> wanted{};
    double total = 0;
    for (std::size_t i = 0; i < 256; ++i)
        total += wanted[i] = std::exp(-std::pow(double(i) / 255 - 0.5, 2) / (2 * DEVIATION * DEVIATION));
    std::uint32_t state = 5;
    for (int round = 0; round < 20; ++round) {
        Histogram histogram{};
        for (std::size_t i = 0; i < 256; ++i) {
            state = state * 1664525U + 1013904223U;
            histogram[i] = round % 2 == 0 || i % 7 == 0 ? state >> (8 + round) : 0;
        }
        histogram[90] += 1;
        double pixels = 0;
        for (std::uint64_t const count : histogram) pixels += double(count);
        Kernels::Table const table = Kernels::MatchTable(histogram, DEVIATION);
        double below = 0;
        for (std::size_t i = 0; i < 256; ++i) {
            below += double(histogram[i]) / pixels;
            double best = 2;
            double cumulated = 0;
            double atChosen = 0;
            for (std::size_t j = 0; j < 256; ++j) {
                cumulated += wanted[j] / total;
                best = std::min(best, std::abs(cumulated - below));
                if (j == table[i]) atChosen = std::abs(cumulated - below);
            }
            EXPECT_NEAR(atChosen, best, 1e-12) << round << " " << i;
        }
    }
}

TEST(MatchTable, OfEquallyNearLevelsTheLowestIsTaken) {
    Kernels::Histogram histogram{};
    histogram[10] = 7;
    Kernels::Table const one = Kernels::MatchTable(histogram, 24.0 / 255.0);
    EXPECT_EQ(one[9], 0); // Nothing lies below: all levels there are as near.
    EXPECT_EQ(one[10], 255);
    histogram[200] = 7;
    Kernels::Table const two = Kernels::MatchTable(histogram, 24.0 / 255.0);
    EXPECT_EQ(two[10], 127); // Half lies below, as at 127 of a distribution around 127.5.
    EXPECT_EQ(two[199], 127);
    // A deviation so small that all its weight is at two levels: the levels on either side of them are equal.
    histogram[10] = 1;
    histogram[200] = 999999;
    Kernels::Table const narrow = Kernels::MatchTable(histogram, 1e-4);
    EXPECT_EQ(narrow[10], 0);
    EXPECT_EQ(narrow[200], 128);
}

} // namespace
} // namespace Velnor::Proc
