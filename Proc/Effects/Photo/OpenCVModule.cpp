// The module of the effects on OpenCV's core and image processing.

#include "Proc/Effects/Photo/PhotoEffects.h"
#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"

extern "C" VELNOR_API void Registrator(Velnor::Proc::IEffectRegistry* registry);

void Registrator(Velnor::Proc::IEffectRegistry* registry) {
    using namespace Velnor::Proc;
    auto const oneInput = [&](std::string const& classId, EffectFactoryFunction create) {
        registry->RegisterOneInputEffect(classId, ImplNames::DEFAULT, create, nullptr);
    };
    oneInput(SettingsEffectBlur::CLASS_ID, CreateBlur);
    oneInput(SettingsEffectCLAHE::CLASS_ID, CreateCLAHE);
    oneInput(SettingsEffectMorphology::CLASS_ID, CreateMorphology);
    oneInput(SettingsEffectRotate::CLASS_ID, CreateRotate);
    oneInput(SettingsEffectSmartBlur::CLASS_ID, CreateSmartBlur);
    registry->RegisterTwoInputEffect(SettingsEffectGrabCutSegmentation::CLASS_ID, ImplPhotoNames::OPENCV,
                                     CreateGrabCutSegmentation, nullptr);
}
