#include "Proc/Effects/Photo/RegisterPhotoEffects.h"

#include "Proc/Host/PluginLoader.h"
#include "Proc/Host/Registry.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Interfaces/ProcException.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

#include <array>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace Velnor::Proc {
namespace {

/// An effect, and the file in the host's installed folder that registers it.
struct PhotoEffect {
    std::string const& classId;
    std::string const& implName;
    EffectKind kind;
    char const* module;
};

constexpr char const* OPENCV = "libVelnorOpenCV.so";

constexpr std::size_t EFFECTS_COUNT = 6;
std::array<PhotoEffect, EFFECTS_COUNT> const& GetPhotoEffects() {
    static std::array<PhotoEffect, EFFECTS_COUNT> const effects{{
        {SettingsEffectBlur::CLASS_ID, ImplNames::DEFAULT, EffectKind::OneInput, OPENCV},
        {SettingsEffectCLAHE::CLASS_ID, ImplNames::DEFAULT, EffectKind::OneInput, OPENCV},
        {SettingsEffectGrabCutSegmentation::CLASS_ID, ImplPhotoNames::OPENCV, EffectKind::TwoInput, OPENCV},
        {SettingsEffectMorphology::CLASS_ID, ImplNames::DEFAULT, EffectKind::OneInput, OPENCV},
        {SettingsEffectRotate::CLASS_ID, ImplNames::DEFAULT, EffectKind::OneInput, OPENCV},
        {SettingsEffectSmartBlur::CLASS_ID, ImplNames::DEFAULT, EffectKind::OneInput, OPENCV},
    }};
    return effects;
}

/// What a module registers. A module stays loaded; one that failed is tried again.
Registry const& LoadModule(char const* file) {
    static std::mutex mutex;
    static std::map<std::string, Registry> modules;
    std::lock_guard const lock(mutex);
    auto const [at, isNew] = modules.try_emplace(file, file);
    if (!isNew) return at->second;
    try {
        LoadPluginFile(GetInstalledFolder() / file, at->second);
    } catch (...) {
        modules.erase(at);
        throw;
    }
    return at->second;
}

EffectFactoryFunction FindFactory(PhotoEffect const& effect) {
    for (Registration const& each : LoadModule(effect.module).GetAllOf(effect.classId))
        if (each.effect.implName == effect.implName && each.effect.kind == effect.kind) return each.factory;
    VELNOR_THROW(ProcException, "Module " + (GetInstalledFolder() / effect.module).string() + " has no " +
                                    std::string(GetKindName(effect.kind)) + " effect \"" + effect.classId + "\" as \"" +
                                    effect.implName + "\"; it is not of this version.");
}

template <std::size_t Row>
intrusive_ptr<IEffect> CreateFromModule(FactoryHandle const& factory, ContextHandle const& context) {
    static EffectFactoryFunction const create = FindFactory(GetPhotoEffects()[Row]);
    return create(factory, context);
}

template <std::size_t... Row>
void RegisterRows(IEffectRegistry& registry, std::index_sequence<Row...>) {
    auto const add = [&](PhotoEffect const& effect, EffectFactoryFunction create) {
        switch (effect.kind) {
        case EffectKind::OneInput:
            return registry.RegisterOneInputEffect(effect.classId, effect.implName, create, nullptr);
        case EffectKind::TwoInput:
            return registry.RegisterTwoInputEffect(effect.classId, effect.implName, create, nullptr);
        case EffectKind::VarInput:
            return registry.RegisterVarInputEffect(effect.classId, effect.implName, create, nullptr);
        }
    };
    (add(GetPhotoEffects()[Row], &CreateFromModule<Row>), ...);
}

} // namespace

void RegisterPhotoEffects(IEffectRegistry& registry) {
    RegisterRows(registry, std::make_index_sequence<EFFECTS_COUNT>());
}

} // namespace Velnor::Proc
