#pragma once

#include "Proc/Interfaces/Plane.h"

namespace Velnor::Proc::Kernels {

/// Marks scratches and specks. `thin` holds how far each pixel stands out from what is left when thin structures are
/// taken away, in levels; it is overwritten with 0 for a damaged pixel and 255 for a sound one. A pixel that stands out
/// by `threshold` or more is part of a scratch when three quarters of the pixels along 25 in one of four directions do,
/// and a speck when it stands out by twice that and hardly any pixel of the 15 x 15 around it does: hair, leaves and
/// fabric do neither.
void MarkDamage(MutablePlane const& thin, int threshold);

} // namespace Velnor::Proc::Kernels
