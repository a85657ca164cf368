#pragma once

#include "Proc/Interfaces/Plane.h"

#include <array>
#include <cstdint>

namespace Velnor::Proc::Kernels {

using Histogram = std::array<std::uint64_t, 256>;
using LumaWeights = std::array<std::uint32_t, 3>; ///< Per thousand, by byte of the pixel.

/// Weights of red, green and blue in brightness, by byte of a pixel.
constexpr LumaWeights WeightsByByte(bool isBlueFirst) {
    return isBlueFirst ? LumaWeights{114, 587, 299} : LumaWeights{299, 587, 114};
}

/// Counts bytes 0, 1 and 2 of every whole pixel. `pixelBytes` is 3 or 4; bytes of a row beyond whole pixels are not
/// read.
std::array<Histogram, 3> CountBytes(ConstPlane const& plane, unsigned int pixelBytes);

/// Counts the same and, fourth, the luma: (w0 b0 + w1 b1 + w2 b2) / 1000, truncated.
std::array<Histogram, 4> CountBytesAndLuma(ConstPlane const& plane, unsigned int pixelBytes,
                                           LumaWeights const& weights);

/// Counts every byte of the plane.
Histogram CountGrey(ConstPlane const& plane);

} // namespace Velnor::Proc::Kernels
