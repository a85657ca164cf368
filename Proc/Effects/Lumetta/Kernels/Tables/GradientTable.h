#pragma once

#include "Proc/Interfaces/GradientStops.h"

#include <array>

namespace Velnor::Proc::Kernels {

/// 256 palette entries of red, green, blue, opacity.
using PaletteTable = std::array<unsigned char, 256 * 4>;

/// Spreads the stops over the levels 0..255, linearly between two stops, flat before the first and after the last.
/// Integer arithmetic; divisions truncate toward zero. At least one stop is needed. Stops beyond 256 shape the ramp
/// that leads to them and are otherwise unseen.
PaletteTable GradientTable(GradientStops const& stops);

} // namespace Velnor::Proc::Kernels
