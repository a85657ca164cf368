#pragma once

#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Lumetta/Kernels/Luma/Histogram.h"

namespace Velnor::Proc::Kernels {

/// The integer part; what no int can hold becomes the nearest that can, and what is not a number 0.
int TruncateToInt(double value);

/// How opaque the sharp picture is over the blurred one, by the brightness of the latter: 255 up to a knee between the
/// dark and the bright level (which 5% of the pixels do not reach, or pass), from there on falling in a straight line,
/// to (1 - strength) x 255 at the bright level and further behind it.
/// @param levels     the blurred picture's brightness, counted
/// @param pixels     width x height of its frame
/// @param threshold  where the knee stands: 0 at the dark level, 1 at the bright one
/// @param strength   0 to 1
Table MakeBokehMask(Histogram const& levels, std::uint32_t pixels, double threshold, double strength);

} // namespace Velnor::Proc::Kernels
