#pragma once

#include "Proc/Interfaces/Plane.h"

namespace Velnor::Proc::Kernels {

/// Brings a plane of bytes to the resolution of chroma: each target sample is the mean, rounded to the nearest level,
/// of the 2^shiftX x 2^shiftY samples that it stands for, or of those that there are at the right and lower edge.
/// The target is as large as the source shifted, rounded up, and shares no byte with it; shifts are 0 to 2. Throws
/// ProcException for a target of another size.
VELNOR_API void MeanOverChroma(ConstPlane const& source, MutablePlane const& target, unsigned int shiftX,
                               unsigned int shiftY);

} // namespace Velnor::Proc::Kernels
