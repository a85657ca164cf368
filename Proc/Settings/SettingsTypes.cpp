// The list of all settings classes. A class is added to the macro below, and nowhere else: from it come the CLASS_ID
// of each and the catalogue that the command line and the reference pages read.

#include "Proc/Interfaces/DefineSettings.h"
#include "Proc/Interfaces/IResize.h"
#include "Proc/Settings/SettingsColorspaceConverter.h"
#include "Proc/Settings/SettingsEffectAligner.h"
#include "Proc/Settings/SettingsEffectAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectAlphaInserter.h"
#include "Proc/Settings/SettingsEffectAutoEnhance.h"
#include "Proc/Settings/SettingsEffectAutoGlareRemove.h"
#include "Proc/Settings/SettingsEffectBalanceLuma.h"
#include "Proc/Settings/SettingsEffectBiColorToning.h"
#include "Proc/Settings/SettingsEffectBlackWhite.h"
#include "Proc/Settings/SettingsEffectBlendPalette.h"
#include "Proc/Settings/SettingsEffectBlur.h"
#include "Proc/Settings/SettingsEffectBlurBokeh.h"
#include "Proc/Settings/SettingsEffectBlurRadial.h"
#include "Proc/Settings/SettingsEffectCLAHE.h"
#include "Proc/Settings/SettingsEffectColorBalance.h"
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
#include "Proc/Settings/SettingsEffectExtraAlphaExtractor.h"
#include "Proc/Settings/SettingsEffectEyeExtending.h"
#include "Proc/Settings/SettingsEffectFaceDetector.h"
#include "Proc/Settings/SettingsEffectFaceMask.h"
#include "Proc/Settings/SettingsEffectFaceThinning.h"
#include "Proc/Settings/SettingsEffectGrabCut.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"
#include "Proc/Settings/SettingsEffectGradient.h"
#include "Proc/Settings/SettingsEffectGradientPosterize.h"
#include "Proc/Settings/SettingsEffectHistogram.h"
#include "Proc/Settings/SettingsEffectHorizonDetector.h"
#include "Proc/Settings/SettingsEffectImageBlender.h"
#include "Proc/Settings/SettingsEffectImplode.h"
#include "Proc/Settings/SettingsEffectMidEqualizer.h"
#include "Proc/Settings/SettingsEffectMorphology.h"
#include "Proc/Settings/SettingsEffectNeuralBase.h"
#include "Proc/Settings/SettingsEffectNeuralPredict.h"
#include "Proc/Settings/SettingsEffectNoiseVideo.h"
#include "Proc/Settings/SettingsEffectOilPaint.h"
#include "Proc/Settings/SettingsEffectPad.h"
#include "Proc/Settings/SettingsEffectPanorama.h"
#include "Proc/Settings/SettingsEffectPixelate.h"
#include "Proc/Settings/SettingsEffectPosterize.h"
#include "Proc/Settings/SettingsEffectReduceLocalLuma.h"
#include "Proc/Settings/SettingsEffectRemapping.h"
#include "Proc/Settings/SettingsEffectRemoveBackground.h"
#include "Proc/Settings/SettingsEffectReplaceChroma.h"
#include "Proc/Settings/SettingsEffectRestorer.h"
#include "Proc/Settings/SettingsEffectRotate.h"
#include "Proc/Settings/SettingsEffectShapeMask.h"
#include "Proc/Settings/SettingsEffectSketch.h"
#include "Proc/Settings/SettingsEffectSmartBlur.h"
#include "Proc/Settings/SettingsEffectSplitToning.h"
#include "Proc/Settings/SettingsEffectStitcher.h"
#include "Proc/Settings/SettingsEffectTiltShift.h"
#include "Proc/Settings/SettingsEffectTintTemperature.h"
#include "Proc/Settings/SettingsEffectVibrance.h"
#include "Proc/Settings/SettingsEffectVideoGenerator.h"
#include "Proc/Settings/SettingsEffectVignette.h"
#include "Proc/Settings/SettingsEffectWhiteBalance.h"
#include "Proc/Settings/SettingsHistogramChannel.h"
#include "Proc/Settings/SettingsResizer.h"

#include <algorithm>

namespace Velnor::Proc {

// One a line, so that a new class is one new line.
// clang-format off
#define VELNOR_SETTINGS_CLASSES(Do) \
    Do(SettingsColorspaceConverter) \
    Do(SettingsEffectAligner) \
    Do(SettingsEffectAlphaExtractor) \
    Do(SettingsEffectAlphaInserter) \
    Do(SettingsEffectAutoEnhance) \
    Do(SettingsEffectAutoGlareRemove) \
    Do(SettingsEffectBalanceLuma) \
    Do(SettingsEffectBiColorToning) \
    Do(SettingsEffectBlackWhite) \
    Do(SettingsEffectBlendPalette) \
    Do(SettingsEffectBlur) \
    Do(SettingsEffectBlurBokeh) \
    Do(SettingsEffectBlurRadial) \
    Do(SettingsEffectCLAHE) \
    Do(SettingsEffectColorBalance) \
    Do(SettingsEffectColorBalanceAuto) \
    Do(SettingsEffectColorReduce) \
    Do(SettingsEffectColoredGlass) \
    Do(SettingsEffectCustom) \
    Do(SettingsEffectCutter) \
    Do(SettingsEffectDetailsEnhance) \
    Do(SettingsEffectDirectionalAreaDeformation) \
    Do(SettingsEffectDrawFace) \
    Do(SettingsEffectEdgeRemove) \
    Do(SettingsEffectEmpty) \
    Do(SettingsEffectExtraAlphaExtractor) \
    Do(SettingsEffectEyeExtending) \
    Do(SettingsEffectFaceDetector) \
    Do(SettingsEffectFaceMask) \
    Do(SettingsEffectFaceThinning) \
    Do(SettingsEffectGrabCut) \
    Do(SettingsEffectGrabCutSegmentation) \
    Do(SettingsEffectGradient) \
    Do(SettingsEffectGradientPosterize) \
    Do(SettingsEffectHistogram) \
    Do(SettingsEffectHorizonDetector) \
    Do(SettingsEffectImageBlender) \
    Do(SettingsEffectImplode) \
    Do(SettingsEffectMidEqualizer) \
    Do(SettingsEffectMorphology) \
    Do(SettingsEffectNeuralBase) \
    Do(SettingsEffectNeuralPredict) \
    Do(SettingsEffectNoiseVideo) \
    Do(SettingsEffectOilPaint) \
    Do(SettingsEffectPad) \
    Do(SettingsEffectPanorama) \
    Do(SettingsEffectPixelate) \
    Do(SettingsEffectPosterize) \
    Do(SettingsEffectReduceLocalLuma) \
    Do(SettingsEffectRemapping) \
    Do(SettingsEffectRemoveBackground) \
    Do(SettingsEffectReplaceChroma) \
    Do(SettingsEffectRestorer) \
    Do(SettingsEffectRotate) \
    Do(SettingsEffectShapeMask) \
    Do(SettingsEffectSketch) \
    Do(SettingsEffectSmartBlur) \
    Do(SettingsEffectSplitToning) \
    Do(SettingsEffectStitcher) \
    Do(SettingsEffectTiltShift) \
    Do(SettingsEffectTintTemperature) \
    Do(SettingsEffectVibrance) \
    Do(SettingsEffectVideoGenerator) \
    Do(SettingsEffectVignette) \
    Do(SettingsEffectWhiteBalance) \
    Do(SettingsHistogramChannel) \
    Do(SettingsResizer)
// clang-format on

VELNOR_SETTINGS_CLASSES(VELNOR_DEFINE_SETTINGS)
std::string const IResize::CLASS_ID = SettingsResizer::CLASS_ID;

std::vector<SettingsType const*> const& SettingsType::GetAll() {
#define VELNOR_LIST_TYPE(Class) &Class::StaticType(),
    static std::vector<SettingsType const*> const types{VELNOR_SETTINGS_CLASSES(VELNOR_LIST_TYPE)};
    return types;
}

SettingsType const* SettingsType::Find(std::string_view classId) {
    auto const found = std::ranges::find(GetAll(), classId, &SettingsType::classId);
    return found == GetAll().end() ? nullptr : *found;
}

} // namespace Velnor::Proc
