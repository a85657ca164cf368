#include "Proc/Effects/Lumetta/Effects.h"

#include "Proc/Interfaces/ImplNames.h"
#include "Proc/Settings/SettingsEffectAligner.h"
#include "Proc/Settings/SettingsEffectAutoEnhance.h"
#include "Proc/Settings/SettingsEffectAutoGlareRemove.h"
#include "Proc/Settings/SettingsEffectBalanceLuma.h"
#include "Proc/Settings/SettingsEffectBiColorToning.h"
#include "Proc/Settings/SettingsEffectBlackWhite.h"
#include "Proc/Settings/SettingsEffectBlendPalette.h"
#include "Proc/Settings/SettingsEffectBlurBokeh.h"
#include "Proc/Settings/SettingsEffectBlurRadial.h"
#include "Proc/Settings/SettingsEffectColorBalanceAuto.h"
#include "Proc/Settings/SettingsEffectColorReduce.h"
#include "Proc/Settings/SettingsEffectColoredGlass.h"
#include "Proc/Settings/SettingsEffectCustom.h"
#include "Proc/Settings/SettingsEffectCutter.h"
#include "Proc/Settings/SettingsEffectDetailsEnhance.h"
#include "Proc/Settings/SettingsEffectDirectionalAreaDeformation.h"
#include "Proc/Settings/SettingsEffectDrawFace.h"
#include "Proc/Settings/SettingsEffectEdgeRemove.h"
#include "Proc/Settings/SettingsEffectEmpty.h"
#include "Proc/Settings/SettingsEffectEyeExtending.h"
#include "Proc/Settings/SettingsEffectFaceMask.h"
#include "Proc/Settings/SettingsEffectFaceThinning.h"
#include "Proc/Settings/SettingsEffectGrabCut.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectGradient.h"
#include "Proc/Settings/SettingsEffectGradientPosterize.h"
#include "Proc/Settings/SettingsEffectHistogram.h"
#include "Proc/Settings/SettingsEffectHorizonDetector.h"
#include "Proc/Settings/SettingsEffectImplode.h"
#include "Proc/Settings/SettingsEffectOilPaint.h"
#include "Proc/Settings/SettingsEffectPixelate.h"
#include "Proc/Settings/SettingsEffectReduceLocalLuma.h"
#include "Proc/Settings/SettingsEffectRemoveBackground.h"
#include "Proc/Settings/SettingsEffectReplaceChroma.h"
#include "Proc/Settings/SettingsEffectRestorer.h"
#include "Proc/Settings/SettingsEffectShapeMask.h"
#include "Proc/Settings/SettingsEffectSketch.h"
#include "Proc/Settings/SettingsEffectStitcher.h"
#include "Proc/Settings/SettingsEffectTiltShift.h"
#include "Proc/Settings/SettingsEffectTintTemperature.h"
#include "Proc/Settings/SettingsEffectVignette.h"
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
constexpr RegisterOperation VAR_INPUT = &IEffectRegistry::RegisterVarInputEffect;

} // namespace

void Registrator(IEffectRegistry* registry) {
    // The order is part of the contract: by settings class, with a few exceptions that hosts know.
    Registration const registrations[] = {
        {SettingsEffectAligner::CLASS_ID, ONE_INPUT, CreateAligner},
        {SettingsEffectAutoEnhance::CLASS_ID, ONE_INPUT, CreateAutoEnhance},
        {SettingsEffectAutoGlareRemove::CLASS_ID, ONE_INPUT, CreateAutoGlareRemove},
        {SettingsEffectBalanceLuma::CLASS_ID, ONE_INPUT, CreateBalanceLuma},
        {SettingsEffectBiColorToning::CLASS_ID, ONE_INPUT, CreateBiColorToning},
        {SettingsEffectBlackWhite::CLASS_ID, ONE_INPUT, CreateBlackWhite},
        {SettingsEffectBlendPalette::CLASS_ID, TWO_INPUT, CreateBlendPalette},
        {SettingsEffectBlurBokeh::CLASS_ID, ONE_INPUT, CreateBlurBokeh},
        {SettingsEffectBlurRadial::CLASS_ID, ONE_INPUT, CreateBlurRadial},
        {SettingsEffectColorBalanceAuto::CLASS_ID, ONE_INPUT, CreateColorBalanceAuto},
        {SettingsEffectColoredGlass::CLASS_ID, ONE_INPUT, CreateColoredGlass},
        {SettingsEffectColorReduce::CLASS_ID, ONE_INPUT, CreateColorReduce},
        {SettingsEffectCustom::CLASS_ID, ONE_INPUT, CreateCustom},
        {SettingsEffectCutter::CLASS_ID, VAR_INPUT, CreateCutter},
        {SettingsEffectDetailsEnhance::CLASS_ID, ONE_INPUT, CreateDetailsEnhance},
        {SettingsEffectDirectionalAreaDeformation::CLASS_ID, ONE_INPUT, CreateDirectionalAreaDeformation},
        {SettingsEffectDrawFace::CLASS_ID, ONE_INPUT, CreateDrawFace},
        {SettingsEffectEdgeRemove::CLASS_ID, VAR_INPUT, CreateEdgeRemove},
        {SettingsEffectEmpty::CLASS_ID, ONE_INPUT, CreateEmptyEffect},
        {SettingsEffectEyeExtending::CLASS_ID, ONE_INPUT, CreateEyeExtending},
        {SettingsEffectGrabCut::CLASS_ID, TWO_INPUT, CreateGrabCut},
        {SettingsEffectGradient::CLASS_ID, ONE_INPUT, CreateGradient},
        {SettingsEffectGradientPosterize::CLASS_ID, ONE_INPUT, CreateGradientPosterize},
        {SettingsEffectGrabCutSegmentation::CLASS_ID, TWO_INPUT, CreateGridGraph},
        {SettingsEffectFaceMask::CLASS_ID, ONE_INPUT, CreateFaceMask},
        {SettingsEffectFaceThinning::CLASS_ID, ONE_INPUT, CreateFaceThinning},
        {SettingsEffectHistogram::CLASS_ID, ONE_INPUT, CreateHistogram},
        {SettingsEffectHorizonDetector::CLASS_ID, ONE_INPUT, CreateHorizonDetector},
        {SettingsEffectImplode::CLASS_ID, ONE_INPUT, CreateImplode},
        {SettingsEffectOilPaint::CLASS_ID, ONE_INPUT, CreateOilPaint},
        {SettingsEffectPixelate::CLASS_ID, ONE_INPUT, CreatePixelate},
        {SettingsEffectReduceLocalLuma::CLASS_ID, TWO_INPUT, CreateReduceLocalLuma},
        {SettingsEffectRemoveBackground::CLASS_ID, VAR_INPUT, CreateRemoveBackground},
        {SettingsEffectReplaceChroma::CLASS_ID, ONE_INPUT, CreateReplaceChroma},
        {SettingsEffectRestorer::CLASS_ID, ONE_INPUT, CreateRestorer},
        {SettingsEffectShapeMask::CLASS_ID, ONE_INPUT, CreateShapeMask},
        {SettingsEffectSketch::CLASS_ID, ONE_INPUT, CreateSketch},
        {SettingsEffectStitcher::CLASS_ID, VAR_INPUT, CreateStitcher},
        {SettingsEffectTiltShift::CLASS_ID, ONE_INPUT, CreateTiltShift},
        {SettingsEffectTintTemperature::CLASS_ID, ONE_INPUT, CreateTintTemperature},
        {SettingsEffectVignette::CLASS_ID, ONE_INPUT, CreateVignette},
        {SettingsEffectWhiteBalance::CLASS_ID, ONE_INPUT, CreateWhiteBalance},
    };
    for (Registration const& entry : registrations)
        (registry->*entry.operation)(entry.classId, ImplNames::VELNOR, entry.factory, nullptr);
}
