#pragma once

#include "Proc/Interfaces/Plane.h"

#include <array>
#include <cstdint>

namespace Velnor::Proc::Kernels {

/// For each byte of a target pixel, which byte of the source pixel it takes.
using ByteOrder = std::array<std::uint8_t, 4>;

/// Changes the order of the bytes within each pixel of 3 or 4 bytes. Source and target are planes of the same size,
/// width x height pixels, and may be the same plane. Of `order` the first `pixelBytes` entries count, each below
/// `pixelBytes`.
void ReorderBytes(ConstPlane const& source, MutablePlane const& target, unsigned int pixelBytes,
                  ByteOrder const& order);

} // namespace Velnor::Proc::Kernels
