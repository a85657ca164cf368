#pragma once

#include "Proc/Interfaces/Plane.h"

#include <array>
#include <cstdint>

namespace Velnor::Proc::Kernels {

/// For each byte of a target pixel, which byte of the source pixel it takes, or OPAQUE_BYTE.
using ByteOrder = std::array<std::uint8_t, 4>;
constexpr std::uint8_t OPAQUE_BYTE = 0x80; ///< The target's byte becomes 255: an alpha that the source lacks.

/// Moves the bytes of each pixel to their places in another packed format. Source and target are planes of width x
/// height pixels, `sourceBytes` and `targetBytes` a pixel, each 3 or 4; where these are equal both may be one plane. Of
/// `order` the first `targetBytes` entries count, each below `sourceBytes` or OPAQUE_BYTE.
void ReorderBytes(ConstPlane const& source, unsigned int sourceBytes, MutablePlane const& target,
                  unsigned int targetBytes, ByteOrder const& order);

} // namespace Velnor::Proc::Kernels
