#pragma once

#include "Proc/Interfaces/Plane.h"

#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {

/// A number from 0 to 1 without pattern for each lattice point (the finaliser of MurmurHash3, A. Appleby).
float LatticeNoise(std::uint32_t x, std::uint32_t y);

/// Hatches the dark of a plane by hand: strokes of varying length, direction, distance and pressure, in three layers of
/// which each covers a darker range than the one before. The same for the same arguments, everywhere.
///
/// @param tone     the levels that decide where strokes go and how hard they press
/// @param spacing  mean distance of neighbouring strokes, pixels; 2 at the least
/// @return         how much of the paper's white is left at each pixel, 0 to 255, row by row
std::vector<unsigned char> DrawHatching(ConstPlane const& tone, double spacing);

} // namespace Velnor::Proc::Kernels
