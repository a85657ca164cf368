#include "Proc/Effects/Photo/RegisterPhotoEffects.h"

#include "Proc/Effects/Photo/EffectModule.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectMidEqualizer.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

#include <array>
#include <utility>

namespace Velnor::Proc {
namespace {

constexpr char const* OPENCV_MODULE = "libVelnorOpenCV.so";
constexpr EffectKind ONE = EffectKind::OneInput;
constexpr EffectKind TWO = EffectKind::TwoInput;

constexpr std::array EFFECTS{
    ModuleEffect{&SettingsEffectBlur::CLASS_ID, &ImplNames::DEFAULT, ONE, OPENCV_MODULE, "Blur"},
    ModuleEffect{&SettingsEffectCLAHE::CLASS_ID, &ImplNames::DEFAULT, ONE, OPENCV_MODULE, "CLAHE"},
    ModuleEffect{&SettingsEffectGrabCutSegmentation::CLASS_ID, &ImplPhotoNames::OPENCV, TWO, OPENCV_MODULE,
                 "GrabCutSegmentation"},
    ModuleEffect{&SettingsEffectMidEqualizer::CLASS_ID, &ImplNames::DEFAULT, TWO, OPENCV_MODULE, "MidEqualizer"},
    ModuleEffect{&SettingsEffectMorphology::CLASS_ID, &ImplNames::DEFAULT, ONE, OPENCV_MODULE, "Morphology"},
    ModuleEffect{&SettingsEffectRotate::CLASS_ID, &ImplNames::DEFAULT, ONE, OPENCV_MODULE, "Rotate"},
    ModuleEffect{&SettingsEffectSmartBlur::CLASS_ID, &ImplNames::DEFAULT, ONE, OPENCV_MODULE, "SmartBlur"},
};

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
