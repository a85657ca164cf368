#pragma once

#include <opencv2/core.hpp>

#include <vector>

namespace Velnor::Proc {

/// A symmetric blur along one axis: weights of distances 0 to the half-width, in samples.
using HalfKernel = std::vector<float>;

/// exp(-x^2 / (2 deviation^2)) for |x| <= halfWidth; the identity for a deviation of 0.
HalfKernel MakeGaussianKernel(double deviation, int halfWidth);

/// The triangle halfWidth + 1 - |x|: what a box of halfWidth + 1 samples makes of another.
HalfKernel MakeTriangleKernel(int halfWidth);

/// The sums of samples of bytes or floats by the kernels' product, the weights 1 in all; 0 outside of the picture.
cv::Mat SumByKernels(cv::Mat const& source, HalfKernel const& across, HalfKernel const& down);

/// The same over (2 halfWidth + 1) samples across and down that weigh alike.
cv::Mat SumByBox(cv::Mat const& source, int halfWidthX, int halfWidthY);

/// Blurs 8-bit samples of 1 to 4 channels: at each place the mean of the samples there are, weighted by the kernels'
/// product; what lies outside of the picture does not count. Wide kernels work on means of blocks, so that time does
/// not grow with the width, and stay within one level of the direct sum.
void BlurByKernels(cv::Mat const& source, cv::Mat& target, HalfKernel const& across, HalfKernel const& down);

/// The mean over (2 halfWidth + 1) samples across and down, of those inside of the picture; at any width in the same
/// time.
void BlurByBox(cv::Mat const& source, cv::Mat& target, int halfWidthX, int halfWidthY);

} // namespace Velnor::Proc
