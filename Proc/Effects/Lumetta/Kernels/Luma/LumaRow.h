#pragma once

#include "Proc/Interfaces/LumaShare.h"

#include <array>
#include <cstdint>

namespace Velnor::Proc::Kernels {

using LumaWeights = std::array<std::uint32_t, 3>; ///< Per thousand, by byte of the pixel.

/// Weights of red, green and blue in brightness, by byte of a pixel.
constexpr LumaWeights WeightsByByte(bool isBlueFirst) {
    using Share = LumaShare<std::uint32_t>;
    return isBlueFirst ? LumaWeights{Share::BLUE, Share::GREEN, Share::RED}
                       : LumaWeights{Share::RED, Share::GREEN, Share::BLUE};
}

/// Writes the luma of `pixels` pixels of 3 or 4 bytes: (w0 b0 + w1 b1 + w2 b2) / 1000, truncated. The weights add up to
/// 1000.
void WriteLumaRow(unsigned char const* row, std::uint64_t pixels, unsigned int pixelBytes, LumaWeights const& weights,
                  unsigned char* luma);

} // namespace Velnor::Proc::Kernels
