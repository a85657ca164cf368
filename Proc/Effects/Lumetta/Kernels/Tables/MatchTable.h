#pragma once

#include "Proc/Effects/Kit/ByteTables.h"
#include "Proc/Effects/Lumetta/Kernels/Luma/Histogram.h"

namespace Velnor::Proc::Kernels {

/// The table that brings a picture's levels to a normal distribution around the middle grey, by matching cumulated
/// histograms (Gonzalez and Woods, Digital Image Processing, "Histogram matching"). A level becomes the one at which
/// the wanted distribution is nearest to the picture's own; of two as near, the lower.
/// @param histogram  of the picture; must not be all zeros
/// @param deviation  of the normal distribution, in parts of the whole range: 0.1 is a tenth of it
Table MatchTable(Histogram const& histogram, double deviation);

} // namespace Velnor::Proc::Kernels
