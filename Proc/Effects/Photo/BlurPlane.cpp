#include "Proc/Effects/Photo/BlurPlane.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>

namespace Velnor::Proc {
namespace {

constexpr int EDGE = cv::BORDER_REFLECT;
constexpr double REDUCED_DEVIATION = 6;

/// Beyond four times the side, the mirrored picture has met every sample several times: wider changes nothing.
BlurReach LimitReach(BlurReach const& reach, BlurShape shape, int side) {
    constexpr double SMALLEST_WEIGHT = 8; // Deviations from the centre, where a gaussian has no weight left.
    double const deviation = std::min(reach.deviation, 4.0 * side);
    double const halfWidth = std::min(reach.halfWidth, 4.0 * side);
    return {deviation, shape == BlurShape::Gaussian ? std::min(halfWidth, SMALLEST_WEIGHT * deviation) : halfWidth};
}

int Round(double value) { return static_cast<int>(std::lround(value)); }

/// Width of a box that stands for `halfWidth` samples on both sides of the centre.
int BoxWidth(double halfWidth) { return 2 * Round(halfWidth) + 1; }

/// One axis after the other: the sum of a wide and high box would overflow 32 bits.
void Box(cv::Mat& plane, int width, int height) {
    if (width > 1) cv::blur(plane, plane, {width, 1}, {-1, -1}, EDGE);
    if (height > 1) cv::blur(plane, plane, {1, height}, {-1, -1}, EDGE);
}

/// How many samples a side is reduced to, so that a deviation is still REDUCED_DEVIATION of them.
int ReducedSide(int side, BlurReach const& reach) {
    double const factor = reach.deviation / REDUCED_DEVIATION;
    return factor < 2 ? side : std::max(1, static_cast<int>(side / factor));
}

/// A truncated gaussian of unit sum: deviation and half-width in samples. The sample at each end counts for the part of
/// it that lies within the half-width.
cv::Mat MakeGaussian(double deviation, double halfWidth) {
    if (deviation <= 0) return cv::Mat::ones(1, 1, CV_32F);
    int const radius = static_cast<int>(std::ceil(halfWidth));
    cv::Mat kernel(1, 2 * radius + 1, CV_32F);
    double sum = 0;
    for (int i = -radius; i <= radius; ++i) {
        double const part = std::clamp(halfWidth - std::abs(i) + 0.5, 0.0, 1.0);
        double const weight = part * std::exp(-0.5 * i * i / (deviation * deviation));
        kernel.at<float>(i + radius) = static_cast<float>(weight);
        sum += weight;
    }
    kernel /= sum;
    return kernel;
}

/// Means over equal shares of the side, the gaussian on them, and linear interpolation between their centres: the mirror
/// at an edge falls between two shares, so it is the same mirror.
void Gaussian(cv::Mat& plane, BlurReach const& across, BlurReach const& down) {
    cv::Size const size(ReducedSide(plane.cols, across), ReducedSide(plane.rows, down));
    double const scaleX = static_cast<double>(size.width) / plane.cols;
    double const scaleY = static_cast<double>(size.height) / plane.rows;
    cv::Mat reduced = plane;
    if (size != plane.size()) cv::resize(plane, reduced, size, 0, 0, cv::INTER_AREA);
    bool const isWhole = size == plane.size();
    cv::Mat blurred;
    cv::sepFilter2D(reduced, blurred, isWhole ? plane.depth() : CV_32F,
                    MakeGaussian(across.deviation * scaleX, across.halfWidth * scaleX),
                    MakeGaussian(down.deviation * scaleY, down.halfWidth * scaleY), {-1, -1}, 0, EDGE);
    if (isWhole) return blurred.copyTo(plane);
    cv::Mat large;
    cv::resize(blurred, large, plane.size(), 0, 0, cv::INTER_LINEAR);
    large.convertTo(plane, plane.type());
}

} // namespace

void BlurPlane(cv::Mat& plane, BlurShape shape, BlurReach const& across, BlurReach const& down) {
    BlurReach const x = LimitReach(across, shape, plane.cols);
    BlurReach const y = LimitReach(down, shape, plane.rows);
    switch (shape) {
    case BlurShape::Box:
        return Box(plane, BoxWidth(x.halfWidth), BoxWidth(y.halfWidth));
    case BlurShape::Stack:
        for (int pass = 0; pass < 2; ++pass) Box(plane, BoxWidth(x.halfWidth / 2), BoxWidth(y.halfWidth / 2));
        return;
    case BlurShape::Gaussian:
        return Gaussian(plane, x, y);
    }
}

} // namespace Velnor::Proc
