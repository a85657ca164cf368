#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Lumetta/Exceptions.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Tests/Support/Places.h"
#include "Tests/Support/RecordingFactory.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace Velnor::Proc {
namespace {

struct FakeRegistry : IEffectRegistry {
    struct Entry {
        std::string classId;
        std::string impl;
        std::string kind;
        EffectFactoryFunction factory;
        void* reserved;
    };
    std::vector<Entry> entries;
    std::size_t throwAt = 1000;

    void Add(std::string const& classId, std::string const& impl, char const* kind, EffectFactoryFunction factory,
             void* reserved) {
        if (entries.size() == throwAt) VELNOR_THROW(ProcException, "full");
        entries.push_back({classId, impl, kind, factory, reserved});
    }
    EffectFactoryFunction FindOneInputEffect(std::string const&, std::string const&) const override { return nullptr; }
    EffectFactoryFunction FindTwoInputEffect(std::string const&, std::string const&) const override { return nullptr; }
    EffectFactoryFunction FindVarInputEffect(std::string const&, std::string const&) const override { return nullptr; }
    void RegisterOneInputEffect(std::string const& id, std::string const& impl, EffectFactoryFunction factory,
                                void* reserved) override {
        Add(id, impl, "one", factory, reserved);
    }
    void RegisterTwoInputEffect(std::string const& id, std::string const& impl, EffectFactoryFunction factory,
                                void* reserved) override {
        Add(id, impl, "two", factory, reserved);
    }
    void RegisterVarInputEffect(std::string const& id, std::string const& impl, EffectFactoryFunction factory,
                                void* reserved) override {
        Add(id, impl, "var", factory, reserved);
    }
};

/// The whole table of the contract, in its order.
constexpr auto CONTRACT = std::to_array<std::array<char const*, 2>>({
    {"SettingsEffectAligner", "one"},
    {"SettingsEffectAutoEnhance", "one"},
    {"SettingsEffectAutoGlareRemove", "one"},
    {"SettingsEffectBalanceLuma", "one"},
    {"SettingsEffectBiColorToning", "one"},
    {"SettingsEffectBlackWhite", "one"},
    {"SettingsEffectBlendPalette", "two"},
    {"SettingsEffectBlurBokeh", "one"},
    {"SettingsEffectBlurRadial", "one"},
    {"SettingsEffectColorBalanceAuto", "one"},
    {"SettingsEffectColoredGlass", "one"},
    {"SettingsEffectColorReduce", "one"},
    {"SettingsEffectCustom", "one"},
    {"SettingsEffectCutter", "var"},
    {"SettingsEffectDetailsEnhance", "one"},
    {"SettingsEffectDirectionalAreaDeformation", "one"},
    {"SettingsEffectDrawFace", "one"},
    {"SettingsEffectEdgeRemove", "var"},
    {"SettingsEffectEmpty", "one"},
    {"SettingsEffectEyeExtending", "one"},
    {"SettingsEffectGrabCut", "two"},
    {"SettingsEffectGradient", "one"},
    {"SettingsEffectGradientPosterize", "one"},
    {"SettingsEffectGrabCutSegmentation", "two"},
    {"SettingsEffectFaceMask", "one"},
    {"SettingsEffectFaceThinning", "one"},
    {"SettingsEffectHistogram", "one"},
    {"SettingsEffectHorizonDetector", "one"},
    {"SettingsEffectImplode", "one"},
    {"SettingsEffectOilPaint", "one"},
    {"SettingsEffectPixelate", "one"},
    {"SettingsEffectReduceLocalLuma", "two"},
    {"SettingsEffectRemoveBackground", "var"},
    {"SettingsEffectReplaceChroma", "one"},
    {"SettingsEffectRestorer", "one"},
    {"SettingsEffectShapeMask", "one"},
    {"SettingsEffectSketch", "one"},
    {"SettingsEffectStitcher", "var"},
    {"SettingsEffectTiltShift", "one"},
    {"SettingsEffectTintTemperature", "one"},
    {"SettingsEffectVignette", "one"},
    {"SettingsEffectWhiteBalance", "one"},
});

TEST(Registrator, RegistersInTheOrderOfTheContractUnderTheFrameworksName) {
    FakeRegistry registry;
    Registrator(&registry);
    ASSERT_EQ(registry.entries.size(), CONTRACT.size());
    for (std::size_t row = 0; row < CONTRACT.size(); ++row) {
        FakeRegistry::Entry const& entry = registry.entries[row];
        EXPECT_EQ(entry.classId, CONTRACT[row][0]) << "in row " << row;
        EXPECT_EQ(entry.kind, CONTRACT[row][1]) << entry.classId;
        EXPECT_EQ(entry.impl, ImplNames::VELNOR);
        EXPECT_EQ(entry.reserved, nullptr);
    }
}

TEST(Registrator, ARegistryThatThrowsEndsTheRegistration) {
    FakeRegistry registry;
    registry.throwAt = 2;
    EXPECT_THROW(Registrator(&registry), ProcException);
    EXPECT_EQ(registry.entries.size(), 2U);
}

TEST(Registrator, EachCallOfAFactoryFunctionMakesAnObjectOfItsOwn) {
    FakeRegistry registry;
    Registrator(&registry);
    Testing::Recorder recorder;
    FactoryHandle const factory = MakeShared<Testing::RecordingFactory>(recorder);
    for (FakeRegistry::Entry const& entry : registry.entries) {
        auto const first = entry.factory(factory, nullptr);
        auto const second = entry.factory(factory, nullptr);
        EXPECT_NE(first, second) << entry.classId;
        EXPECT_EQ(first->GetRefCount(), 1U) << entry.classId;
        EXPECT_EQ(first->GetSettingsBase().GetType().classId, entry.classId);
    }
}

TEST(Plugin, ExportsRegistratorAndNothingElse) {
    FILE* const pipe = popen((std::string("nm -D --defined-only '") + Testing::LUMETTA_FILE + "'").c_str(), "r");
    ASSERT_NE(pipe, nullptr);
    std::vector<std::string> names;
    char line[512];
    while (std::fgets(line, sizeof line, pipe) != nullptr) {
        std::string text(line);
        text.erase(text.find_last_not_of('\n') + 1);
        names.push_back(text.substr(text.rfind(' ') + 1));
    }
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_EQ(names, std::vector<std::string>{"Registrator"});
}

TEST(Plugin, WhatItThrowsIsCaughtByTypeOutside) {
    void* const library = dlopen(Testing::LUMETTA_FILE, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto const registrator = reinterpret_cast<RegistratorFunction>(dlsym(library, "Registrator"));
    ASSERT_NE(registrator, nullptr);
    FakeRegistry registry;
    registrator(&registry);
    auto const empty = std::ranges::find(registry.entries, "SettingsEffectEmpty", &FakeRegistry::Entry::classId);
    ASSERT_NE(empty, registry.entries.end());
    intrusive_ptr<IEffect> const effect = empty->factory(nullptr, nullptr);
    std::vector<DataHandle> const none(1);
    EXPECT_THROW(effect->ProcessData(none), EffectException);
    EXPECT_THROW(effect->ProcessData(none), ProcException);
    try {
        effect->ProcessData(none);
    } catch (boost::exception const& error) {
        EXPECT_NE(boost::get_error_info<TagDescription>(error), nullptr);
        EXPECT_FALSE(boost::get_error_info<TagCallStack>(error)->empty());
        EXPECT_STREQ(*boost::get_error_info<boost::throw_file>(error), "Proc/Effects/Lumetta/EffectBase");
    }
}

} // namespace
} // namespace Velnor::Proc
