#include "Proc/Effects/Photo/RegisterPhotoEffects.h"

#include "Proc/Effects/Photo/EffectModule.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

#include <array>
#include <utility>

namespace Velnor::Proc {
namespace {

constexpr char const* OPENCV_MODULE = "libVelnorOpenCV.so";

// clang-format off: one a line, so that a new effect is one new line
constexpr std::array EFFECTS{
    ModuleEffect{&SettingsEffectBlur::CLASS_ID, &ImplNames::DEFAULT, EffectKind::OneInput, OPENCV_MODULE, "Blur"},
    ModuleEffect{&SettingsEffectCLAHE::CLASS_ID, &ImplNames::DEFAULT, EffectKind::OneInput, OPENCV_MODULE, "CLAHE"},
    ModuleEffect{&SettingsEffectMorphology::CLASS_ID, &ImplNames::DEFAULT, EffectKind::OneInput, OPENCV_MODULE,
                 "Morphology"},
    ModuleEffect{&SettingsEffectSmartBlur::CLASS_ID, &ImplNames::DEFAULT, EffectKind::OneInput, OPENCV_MODULE,
                 "SmartBlur"},
};
// clang-format on

/// A factory function is a plain function: each row of the table has one of its own.
template <std::size_t Row>
intrusive_ptr<IEffect> CreateFromModule(FactoryHandle const& factory, ContextHandle const& context) {
    static EffectFactoryFunction const create = FindModuleEffect(EFFECTS[Row]);
    return create(factory, context);
}

void Register(IEffectRegistry& registry, ModuleEffect const& effect, EffectFactoryFunction create) {
    switch (effect.kind) {
    case EffectKind::OneInput:
        registry.RegisterOneInputEffect(*effect.classId, *effect.implName, create, nullptr);
        break;
    case EffectKind::TwoInput:
        registry.RegisterTwoInputEffect(*effect.classId, *effect.implName, create, nullptr);
        break;
    case EffectKind::VarInput:
        registry.RegisterVarInputEffect(*effect.classId, *effect.implName, create, nullptr);
        break;
    }
}

} // namespace

void RegisterPhotoEffects(IEffectRegistry& registry) {
    [&]<std::size_t... Row>(std::index_sequence<Row...>) {
        (Register(registry, EFFECTS[Row], &CreateFromModule<Row>), ...);
    }
    (std::make_index_sequence<EFFECTS.size()>());
}

} // namespace Velnor::Proc
