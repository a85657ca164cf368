#pragma once

#include <opencv2/core.hpp>

namespace Velnor::Proc {

/// Half-width of a kernel in samples, and for the gaussian its deviation. Zero leaves the axis alone.
struct BlurReach {
    double deviation = 0;
    double halfWidth = 0;
};

enum class BlurShape { Box, Gaussian, Stack };

/// Blurs a matrix of 8-bit samples, 1 to 4 channels, in place; beyond its edges it is mirrored, edge sample included.
/// Wide gaussians are computed on a picture reduced so far that a deviation is still 6 samples, by means of whole
/// blocks: within one level of the direct sum. The time is bounded whatever the width.
void BlurPlane(cv::Mat& plane, BlurShape shape, BlurReach const& across, BlurReach const& down);

} // namespace Velnor::Proc
