#pragma once

#include <array>
#include <cstdint>

namespace Velnor::Proc::Kernels {

using LumaWeights = std::array<std::uint32_t, 3>; ///< Per thousand, by byte of the pixel.

/// Weights of red, green and blue in brightness, by byte of a pixel.
constexpr LumaWeights WeightsByByte(bool isBlueFirst) {
    return isBlueFirst ? LumaWeights{114, 587, 299} : LumaWeights{299, 587, 114};
}

/// Writes the luma of `pixels` pixels of 3 or 4 bytes: (w0 b0 + w1 b1 + w2 b2) / 1000, truncated. The weights add up to
/// 1000.
void WriteLumaRow(unsigned char const* row, std::uint64_t pixels, unsigned int pixelBytes, LumaWeights const& weights,
                  unsigned char* luma);

} // namespace Velnor::Proc::Kernels
