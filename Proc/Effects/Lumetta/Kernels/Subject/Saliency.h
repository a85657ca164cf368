#pragma once

#include "Proc/Effects/Lumetta/Kernels/Blur/BoxMean.h"

#include <array>

namespace Velnor::Proc::Kernels {

/// Three channels of a picture.
using ColorPlanes = std::array<FloatPlane, 3>;

/// How much each pixel stands out, 0 (not at all) to 2.7: the minimum barrier distance from the borders in three
/// scans (J. Zhang et al., "Minimum Barrier Salient Object Detection at 80 FPS", ICCV 2015), the contrast to the mean
/// colours of the borders, and sharpness, favouring the middle. The lower border is no background by itself: most
/// subjects are cut by it. Colours are in OKLab, or channels like its.
FloatPlane FindSaliency(ColorPlanes const& lab);

} // namespace Velnor::Proc::Kernels
