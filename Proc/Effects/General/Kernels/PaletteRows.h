#pragma once

#include "Proc/Interfaces/Plane.h"

namespace Velnor::Proc::Kernels {

/// Writes for every index the sample of that number.
/// @param indices  width x height bytes
/// @param samples  256 of `bytes` bytes each
/// @param bytes    1 to 4
/// @param target   width x height samples
void LookUpSamples(ConstPlane const& indices, unsigned char const* samples, unsigned int bytes,
                   MutablePlane const& target);

} // namespace Velnor::Proc::Kernels
