// The plug-in's effects: the only list of them.
#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/ImplNames.h"

namespace Velnor::Proc {

// The order is part of the contract: by settings class, with a few exceptions that hosts know. One a line, so that a
// new effect is one new line.
// clang-format off
#define LUMETTA_EFFECTS(Do) \
    Do(Aligner) \
    Do(AutoEnhance) \
    Do(AutoGlareRemove) \
    Do(BalanceLuma) \
    Do(BiColorToning) \
    Do(BlackWhite) \
    Do(BlendPalette) \
    Do(BlurBokeh) \
    Do(BlurRadial) \
    Do(ColorBalanceAuto) \
    Do(ColoredGlass) \
    Do(ColorReduce) \
    Do(Custom) \
    Do(Cutter) \
    Do(DetailsEnhance) \
    Do(DirectionalAreaDeformation) \
    Do(DrawFace) \
    Do(EdgeRemove) \
    Do(EmptyEffect) \
    Do(EyeExtending) \
    Do(GrabCut) \
    Do(Gradient) \
    Do(GradientPosterize) \
    Do(GridGraph) \
    Do(FaceMask) \
    Do(FaceThinning) \
    Do(Histogram) \
    Do(HorizonDetector) \
    Do(Implode) \
    Do(OilPaint) \
    Do(Pixelate) \
    Do(ReduceLocalLuma) \
    Do(RemoveBackground) \
    Do(ReplaceChroma) \
    Do(Restorer) \
    Do(ShapeMask) \
    Do(Sketch) \
    Do(Stitcher) \
    Do(TiltShift) \
    Do(TintTemperature) \
    Do(Vignette) \
    Do(WhiteBalance)
// clang-format on

LUMETTA_EFFECTS(VELNOR_DECLARE_EFFECT)

} // namespace Velnor::Proc

void Registrator(Velnor::Proc::IEffectRegistry* registry) {
    using namespace Velnor::Proc;
    RegisterEffects(*registry, ImplNames::VELNOR, {LUMETTA_EFFECTS(VELNOR_LIST_ENTRY)});
}
