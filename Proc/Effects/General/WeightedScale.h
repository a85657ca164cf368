#pragma once

#include "Proc/Effects/General/Scaler.h"
#include "Proc/Interfaces/IEffectContext.h"

namespace Velnor::Proc {

/// The samples of a plane and the alpha that they count by, one byte for each at the distance of its sample bytes.
struct WeightedSamples {
    ConstPlane samples;
    unsigned int sampleBytes = 1;
    int alphaByte = -1; ///< Of a sample, that is no colour.
    ConstPlane alpha;
};

/// Scales a plane anew to a target that has been scaled without weights: colours there become the means of products
/// with alpha, divided by those of alpha, in 16 bits. Where all that counts is opaque, or clear, they stay.
void ScaleByAlpha(IEffectContext& pictures, Scaler& scaler, WeightedSamples const& source, MutablePlane const& target,
                  SettingsResizer::ResizeMethods method);

} // namespace Velnor::Proc
