#include "Proc/Effects/General/RegisterGeneralEffects.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"
#include "Proc/Settings/SettingsEffectColorBalance.h"
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/Settings/SettingsEffectNoiseVideo.h"
#include "Proc/Settings/SettingsEffectPad.h"
#include "Proc/Settings/SettingsEffectPosterize.h"
#include "Proc/Settings/SettingsEffectRemapping.h"
#include "Proc/Settings/SettingsEffectSplitToning.h"
#include "Proc/Settings/SettingsEffectVibrance.h"
#include "Proc/Settings/SettingsEffectVideoGenerator.h"
#include "Proc/Settings/SettingsResizer.h"

namespace Velnor::Proc {

void RegisterGeneralEffects(IEffectRegistry& registry) {
    std::string const& name = ImplNames::DEFAULT;
    auto const oneInput = [&](std::string const& classId, EffectFactoryFunction create) {
        registry.RegisterOneInputEffect(classId, name, create, nullptr);
    };
    auto const twoInput = [&](std::string const& classId, EffectFactoryFunction create) {
        registry.RegisterTwoInputEffect(classId, name, create, nullptr);
    };
    oneInput(SettingsColorspaceConverter::CLASS_ID, &CreateColorspaceConverter);
    oneInput(SettingsEffectAlphaExtractor::CLASS_ID, &CreateAlphaExtractor);
    twoInput(SettingsEffectAlphaInserter::CLASS_ID, &CreateAlphaInserter);
    oneInput(SettingsEffectColorBalance::CLASS_ID, &CreateColorBalance);
    oneInput(SettingsEffectExtraAlphaExtractor::CLASS_ID, &CreateExtraAlphaExtractor);
    twoInput(SettingsEffectImageBlender::CLASS_ID, &CreateImageBlender);
    oneInput(SettingsEffectNoiseVideo::CLASS_ID, &CreateNoiseVideo);
    oneInput(SettingsEffectPad::CLASS_ID, &CreatePad);
    oneInput(SettingsEffectPosterize::CLASS_ID, &CreatePosterize);
    oneInput(SettingsEffectRemapping::CLASS_ID, &CreateRemapping);
    oneInput(SettingsEffectSplitToning::CLASS_ID, &CreateSplitToning);
    oneInput(SettingsEffectVibrance::CLASS_ID, &CreateVibrance);
    oneInput(SettingsEffectVideoGenerator::CLASS_ID, &CreateVideoGenerator);
    oneInput(SettingsResizer::CLASS_ID, &CreateResizer);
}

} // namespace Velnor::Proc
