#include "Proc/Effects/Lumetta/Effects.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectBalanceLuma.h"
#include "Proc/Settings/SettingsEffectBiColorToning.h"
#include "Proc/Settings/SettingsEffectBlackWhite.h"
#include "Proc/Settings/SettingsEffectBlendPalette.h"
#include "Proc/Settings/SettingsEffectColorBalanceAuto.h"
#include "Proc/Settings/SettingsEffectColorReduce.h"
#include "Proc/Settings/SettingsEffectCustom.h"
#include "Proc/Settings/SettingsEffectEmpty.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectGradient.h"
#include "Proc/Settings/SettingsEffectGradientPosterize.h"
#include "Proc/Settings/SettingsEffectHistogram.h"
#include "Proc/Settings/SettingsEffectPixelate.h"
#include "Proc/Settings/SettingsEffectReduceLocalLuma.h"
#include "Proc/Settings/SettingsEffectReplaceChroma.h"
#include "Proc/Settings/SettingsEffectTintTemperature.h"
#include "Proc/Settings/SettingsEffectWhiteBalance.h"

namespace {

using namespace Velnor::Proc;

using RegisterOperation = void (IEffectRegistry::*)(std::string const&, std::string const&, EffectFactoryFunction,
                                                    void*);

struct Registration {
    std::string const& classId;
    RegisterOperation operation;
    EffectFactoryFunction factory;
};

constexpr RegisterOperation ONE_INPUT = &IEffectRegistry::RegisterOneInputEffect;
constexpr RegisterOperation TWO_INPUT = &IEffectRegistry::RegisterTwoInputEffect;

} // namespace

void Registrator(IEffectRegistry* registry) {
    // The order is part of the contract: by settings class, with a few exceptions that hosts know.
    Registration const registrations[] = {
        {SettingsEffectBalanceLuma::CLASS_ID, ONE_INPUT, CreateBalanceLuma},
        {SettingsEffectBiColorToning::CLASS_ID, ONE_INPUT, CreateBiColorToning},
        {SettingsEffectBlackWhite::CLASS_ID, ONE_INPUT, CreateBlackWhite},
        {SettingsEffectBlendPalette::CLASS_ID, TWO_INPUT, CreateBlendPalette},
        {SettingsEffectColorBalanceAuto::CLASS_ID, ONE_INPUT, CreateColorBalanceAuto},
        {SettingsEffectColorReduce::CLASS_ID, ONE_INPUT, CreateColorReduce},
        {SettingsEffectCustom::CLASS_ID, ONE_INPUT, CreateCustom},
        {SettingsEffectEmpty::CLASS_ID, ONE_INPUT, CreateEmptyEffect},
        {SettingsEffectGradient::CLASS_ID, ONE_INPUT, CreateGradient},
        {SettingsEffectGradientPosterize::CLASS_ID, ONE_INPUT, CreateGradientPosterize},
        {SettingsEffectGrabCutSegmentation::CLASS_ID, TWO_INPUT, CreateGridGraph},
        {SettingsEffectHistogram::CLASS_ID, ONE_INPUT, CreateHistogram},
        {SettingsEffectPixelate::CLASS_ID, ONE_INPUT, CreatePixelate},
        {SettingsEffectReduceLocalLuma::CLASS_ID, TWO_INPUT, CreateReduceLocalLuma},
        {SettingsEffectReplaceChroma::CLASS_ID, ONE_INPUT, CreateReplaceChroma},
        {SettingsEffectTintTemperature::CLASS_ID, ONE_INPUT, CreateTintTemperature},
        {SettingsEffectWhiteBalance::CLASS_ID, ONE_INPUT, CreateWhiteBalance},
    };
    for (Registration const& entry : registrations)
        (registry->*entry.operation)(entry.classId, ImplNames::VELNOR, entry.factory, nullptr);
}
