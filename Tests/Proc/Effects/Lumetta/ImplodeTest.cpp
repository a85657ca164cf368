#include "Proc/Settings/SettingsEffectImplode.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Lumetta/Kernels/Geometry/ImplodeMap.h"
#include "Proc/Effects/Lumetta/Kernels/Geometry/ScaleCurve.h"
#include "Proc/Interfaces/EffectExceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/StandardHost/StandardHost.h"
#include "Tests/Support/Pictures.h"
#include "Tests/Support/Places.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

#include <limits>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(Implode)
namespace {

using namespace Testing;
using Place = std::pair<float, float>;

SettingsEffectImplode Make(double strength, SettingsEffectImplode::Mode mode) {
    SettingsEffectImplode settings;
    settings.SetStrength(strength);
    settings.SetMode(mode);
    return settings;
}

TEST(ImplodeMap, FixedPointsAndWorkedValues) {
    for (float const strength : {1.0F, -0.5F, 3.0F, -2.0F}) {
        Kernels::ImplodeMap const map(40, 20, strength);
        EXPECT_EQ(map(20, 10), Place(20, 10)); // the centre
        for (Place const& rim : {Place(0, 10), {40, 10}, {20, 0}, {0, 0}, {39, 0}, {0, 19}, {39, 19}, {5, 3}})
            EXPECT_EQ(map(static_cast<int>(rim.first), static_cast<int>(rim.second)), rim);
        EXPECT_NE(map(39, 10).first, 39.0F); // there is no half-pixel shift: the last column is within
    }
    // u = 0.5, v = 0: H = 0.5, so k = 1.5 and 0.75.
    EXPECT_EQ(Kernels::ImplodeMap(40, 20, 1.0F)(30, 10), Place(35, 10));
    EXPECT_EQ(Kernels::ImplodeMap(40, 20, -0.5F)(30, 10), Place(27.5F, 10));
    EXPECT_EQ(Kernels::ImplodeMap(40, 20, 1.0F)(20, 5), Place(20, 2.5F));
    // An odd frame has its centre between two pixels.
    Kernels::ImplodeMap const odd(3, 3, -0.5F);
    EXPECT_NEAR(odd(1, 1).first, 1.1357, 1e-4); // r = sqrt(2) / 3, so H = 0.5428 and k = 0.7286
    EXPECT_EQ(odd(1, 1).first, odd(1, 1).second);
}

TEST(ImplodeMap, FalloffIsTheUnclampedHermiteSegment) {
    Kernels::ScaleCurve const curve{.inputLow = 0,
                                    .inputHigh = 1,
                                    .y0 = 1,
                                    .y1 = 0,
                                    .x0 = 0,
                                    .x1 = 1,
                                    .t0 = 0,
                                    .t1 = 1,
                                    .firstRange = {0, 0},
                                    .secondRange = {0, 0},
                                    .m0 = 0,
                                    .m1 = 0};
    unsigned int const width = 6000;
    unsigned int const height = 4000;
    Kernels::ImplodeMap const map(width, height, 0.7F);
    for (int y = 0; y < 4000; y += 97)
        for (int x = 0; x < 6000; x += 89) {
            float const u = static_cast<float>(x) / 3000.0F - 1.0F;
            float const v = static_cast<float>(y) / 2000.0F - 1.0F;
            float const r = std::sqrt(u * u + v * v);
            float const k = r < 1 ? static_cast<float>(Kernels::Evaluate(curve, r)) * 0.7F + 1.0F : 1.0F;
            Place const expected = r < 1 ? Place((k * u + 1.0F) * 3000.0F, (k * v + 1.0F) * 2000.0F) : Place(x, y);
            ASSERT_EQ(map(x, y), expected) << x << ", " << y;
        }
}

TEST(Implode, TheMapIsMadeAnewForEachFrameAndSurvivesNewSettings) {
    Recorder recorder;
    ContextHandle const context = CreateContext();
    auto const effect = CreateImplode(MakeShared<RecordingFactory>(recorder), context);
    EXPECT_EQ(recorder.Take(), (Calls{"create 1 SettingsEffectRemapping/Default", "set 1"}));
    effect->SetSettings(Make(100, SettingsEffectImplode::BULGE));
    EXPECT_EQ(recorder.Take(), Calls{});
    for (int frame = 0; frame < 2; ++frame)
        effect->ProcessData(std::vector<DataHandle>{MakeNoise(*context, PixFmt::RGB24, 8, 6)});
    EXPECT_EQ(recorder.Take(), (Calls{"set 1", "run 1", "set 1", "run 1"}));
    effect->SetSettings(Make(0, SettingsEffectImplode::BULGE));
    effect->ProcessData(std::vector<DataHandle>{MakeNoise(*context, PixFmt::RGB24, 8, 6)});
    EXPECT_EQ(recorder.Take(), Calls{}); // strength 0 leaves the picture
}

TEST(Implode, ModeZeroShrinksTheMiddleAndTheOtherEnlargesIt) {
    StandardHost host;
    host.LoadPlugin(Testing::LUMETTA_FILE);
    // A white square in the middle of a black picture: how many pixels it covers afterwards.
    auto const whiteAfter = [&](double strength, SettingsEffectImplode::Mode mode) {
        VideoHandle const picture = MakeFlat(*host.GetContext(), PixFmt::GRAY8, 100, 80, {0});
        MutablePlane const plane = picture->GetMutablePlane(0);
        for (unsigned int y = 30; y < 50; ++y) std::fill_n(plane.GetRow(y) + 40, 20, static_cast<unsigned char>(255));
        auto const effect = host.GetFactory()->CreateOneInputEffect(SettingsEffectImplode::CLASS_ID, ImplNames::VELNOR);
        effect->SetSettings(Make(strength, mode));
        DataHandle data = picture;
        effect->ProcessData(data);
        return std::ranges::count_if(Samples(AsVideo(data)), [](unsigned char level) { return level > 127; });
    };
    EXPECT_LT(whiteAfter(100, SettingsEffectImplode::PINCH), 140);
    EXPECT_GT(whiteAfter(100, SettingsEffectImplode::BULGE), 900);
}

} // namespace
} // namespace Velnor::Proc
