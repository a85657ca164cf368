#include "Proc/Host/Host.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectPixelate.h"
#include "Proc/StandardHost/StandardHost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Velnor::Proc {
namespace {

TEST(Host, OffersItsOwnEffectsAndThoseOfTheInstalledPlugins) {
    StandardHost host;
    std::vector<RegisteredEffect> const own = host.GetEffects();
    ASSERT_FALSE(own.empty());
    EXPECT_TRUE(std::ranges::all_of(own, [](RegisteredEffect const& effect) { return effect.origin == "host"; }));
    EXPECT_TRUE(host.GetFactory()->HasOneInputEffect(SettingsColorspaceConverter::CLASS_ID, ImplNames::DEFAULT));
    EXPECT_FALSE(host.GetFactory()->Has(SettingsEffectPixelate::CLASS_ID, ImplNames::DEFAULT));

    host.LoadInstalledPlugins();
    std::set<std::string> origins;
    for (RegisteredEffect const& effect : host.GetEffects()) origins.insert(effect.origin);
    EXPECT_EQ(origins, (std::set<std::string>{"host", "libLumetta.so"}));
    EXPECT_TRUE(host.GetFactory()->HasOneInputEffect(SettingsEffectPixelate::CLASS_ID, ImplNames::DEFAULT));

    std::size_t const count = host.GetEffects().size();
    EXPECT_THROW(host.LoadInstalledPlugins(), ProcException);
    EXPECT_EQ(host.GetEffects().size(), count);
}

TEST(Host, HasTheEffectsThatItIsHandedAlone) {
    EXPECT_TRUE(Host([](IEffectRegistry&) {}).GetEffects().empty());
    Host const host([](IEffectRegistry& registry) {
        registry.RegisterTwoInputEffect(
            "SettingsMine", "Mine", [](auto&, auto&) { return intrusive_ptr<IEffect>(); }, nullptr);
    });
    ASSERT_EQ(host.GetEffects().size(), 1U);
    EXPECT_EQ(host.GetEffects()[0].classId + host.GetEffects()[0].origin, "SettingsMinehost");
    EXPECT_THROW(Host([](IEffectRegistry&) { VELNOR_THROW(ProcException, "none today"); }), ProcException);
}

TEST(Host, EffectsAndPicturesOutliveIt) {
    auto host = std::make_unique<StandardHost>();
    host->LoadInstalledPlugins();
    auto const effect = host->GetFactory()->CreateOneInputEffect(SettingsEffectPixelate::CLASS_ID, ImplNames::DEFAULT);
    SettingsEffectPixelate settings;
    settings.SetStrength(50);
    effect->SetSettings(settings);
    DataHandle data = host->GetContext()->CreateImage(PixFmt::RGB24, FrameFormat::Square(64, 48));
    AsVideo(data).Fill(Color(30, 20, 10, 255));
    host.reset();
    effect->ProcessData(data);
    EXPECT_EQ(data->GetFrameFormat(), FrameFormat::Square(64, 48));
    EXPECT_EQ(AsVideo(data).GetPlane(0).GetRow(47)[63 * 3], 10);
}

} // namespace
} // namespace Velnor::Proc
