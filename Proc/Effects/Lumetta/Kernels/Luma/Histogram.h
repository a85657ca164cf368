#pragma once

#include "Proc/Effects/Lumetta/Kernels/Luma/LumaRow.h"
#include "Proc/Interfaces/Plane.h"

#include <array>
#include <cstdint>

namespace Velnor::Proc::Kernels {

using Histogram = std::array<std::uint64_t, 256>;

/// Counts bytes 0, 1 and 2 of every whole pixel. `pixelBytes` is 3 or 4; bytes of a row beyond whole pixels are not
/// read.
std::array<Histogram, 3> CountBytes(ConstPlane const& plane, unsigned int pixelBytes);

/// Counts the same and, fourth, the luma as WriteLumaRow has it.
std::array<Histogram, 4> CountBytesAndLuma(ConstPlane const& plane, unsigned int pixelBytes,
                                           LumaWeights const& weights);

/// Counts every byte of the plane.
Histogram CountGrey(ConstPlane const& plane);

} // namespace Velnor::Proc::Kernels
