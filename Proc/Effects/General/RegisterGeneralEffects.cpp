#include "Proc/Effects/General/RegisterGeneralEffects.h"

#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Interfaces/ImplNames.h"

namespace Velnor::Proc {

// clang-format off
#define GENERAL_EFFECTS(Do) \
    Do(ColorspaceConverter) \
    Do(AlphaExtractor) \
    Do(AlphaInserter) \
    Do(ColorBalance) \
    Do(Crop) \
    Do(ExtraAlphaExtractor) \
    Do(Flip) \
    Do(ImageBlender) \
    Do(NoiseVideo) \
    Do(Pad) \
    Do(Posterize) \
    Do(Remapping) \
    Do(SplitToning) \
    Do(Vibrance) \
    Do(VideoGenerator) \
    Do(Resizer)
// clang-format on

GENERAL_EFFECTS(VELNOR_DECLARE_EFFECT)

void RegisterGeneralEffects(IEffectRegistry& registry) {
    RegisterEffects(registry, ImplNames::DEFAULT, {GENERAL_EFFECTS(VELNOR_LIST_ENTRY)});
}

} // namespace Velnor::Proc
