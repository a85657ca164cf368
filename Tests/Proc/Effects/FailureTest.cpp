// What a failure must not cost, and a failure that is the caller's own. That every effect leaves all as it was when
// anything fails is one of the promises of EveryEffectTest.

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsEffectCustom.h"
#include "Tests/Support/RegisteredEffects.h"

namespace Velnor::Proc {
namespace {

using namespace Testing;

/// The promise costs no copy: what works in place writes to the samples of a picture that nobody else holds.
TEST(Failure, IsNoReasonToCopyAPictureThatNobodyElseHolds) {
    std::vector<std::pair<std::string, PixFmt>> const cases{
        {"WhiteBalance", PixFmt::BGR24},         {"ColorBalanceAuto", PixFmt::RGB24}, {"ReplaceChroma", PixFmt::RGBA},
        {"BalanceLuma", PixFmt::RGB24},          {"ReduceLocalLuma", PixFmt::RGB24},  {"BlendPalette", PixFmt::RGBA},
        {"GradientPosterize", PixFmt::YUVA444P}, {"ColorBalance", PixFmt::YUV420P},   {"Vibrance", PixFmt::RGB24},
        {"SplitToning", PixFmt::RGBA},           {"NoiseVideo", PixFmt::RGB24},       {"ImageBlender", PixFmt::YUV420P},
        {"AlphaInserter", PixFmt::RGBA}};
    for (auto const& [name, format] : cases) {
        SCOPED_TRACE(name);
        auto const effect = PluginHost().GetFactory()->CreateEffect("SettingsEffect" + name, ImplNames::DEFAULT);
        effect->SetSettings(*TypicalSettings(effect->GetSettingsBase().GetType()));
        IEffectContext& context = *PluginHost().GetContext();
        DataHandle data = MakeNoise(context, format, 20, 10);
        DataHandle const second = MakeNoise(context, name == "AlphaInserter" ? PixFmt::GRAY8 : format, 20, 10);
        auto const samplesOf = [](DataHandle const& picture) { return AsVideo(picture).GetPlane(0); };
        unsigned char const* const before = samplesOf(data).GetData();
        if (auto* const one = dynamic_cast<IOneInputEffect*>(effect.get()))
            one->ProcessData(data);
        else
            dynamic_cast<ITwoInputEffect&>(*effect).ProcessData(data, second);
        EXPECT_EQ(samplesOf(data).GetData(), before);
    }
}

TEST(Failure, OfACustomFunctionLeavesTheHandle) {
    auto const effect =
        PluginHost().GetFactory()->CreateOneInputEffect(SettingsEffectCustom::CLASS_ID, ImplNames::VELNOR);
    effect->SetSettings(SettingsEffectCustom([](VideoHandle& picture) {
        picture = nullptr;
        VELNOR_THROW(ProcException, "fails");
    }));
    DataHandle data = MakeNoise(*PluginHost().GetContext(), PixFmt::RGB24, 3, 3);
    Check::Sight const before(data);
    EXPECT_THROW(effect->ProcessData(data), ProcException);
    EXPECT_TRUE(Check::Sight(data) == before);
}

} // namespace
} // namespace Velnor::Proc
