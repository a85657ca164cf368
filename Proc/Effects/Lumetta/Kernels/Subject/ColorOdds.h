#pragma once

#include "Proc/Effects/Lumetta/Kernels/Subject/Saliency.h"

#include <vector>

namespace Velnor::Proc::Kernels {

/// For each pixel, the natural logarithm of how much likelier its colour is in the subject than in the background, by
/// smoothed histograms of both. `shares` tells how much each pixel belongs to the subject, 0 to 1; `lab` are the planes
/// of OKLab.
std::vector<float> FindColorOdds(ColorPlanes const& lab, std::vector<float> const& shares);

} // namespace Velnor::Proc::Kernels
