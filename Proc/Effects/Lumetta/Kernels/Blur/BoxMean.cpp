#include "Proc/Effects/Lumetta/Kernels/Blur/BoxMean.h"

#include <algorithm>

namespace Velnor::Proc::Kernels {
namespace {

// Running sums are kept in double: added to and taken from at every step, a float's would drift.

void MeanAcross(float const* source, float* target, std::size_t width, std::size_t radius) {
    double sum = 0;
    for (std::size_t x = 0; x < std::min(radius, width); ++x) sum += source[x];
    for (std::size_t x = 0; x < width; ++x) {
        if (x + radius < width) sum += source[x + radius];
        if (x > radius) sum -= source[x - radius - 1];
        std::size_t const first = x > radius ? x - radius : 0;
        std::size_t const last = std::min(x + radius, width - 1);
        target[x] = static_cast<float>(sum / static_cast<double>(last - first + 1));
    }
}

void MeanDown(FloatPlane const& source, FloatPlane& target, std::size_t radius) {
    std::size_t const width = source.width;
    std::size_t const height = source.height;
    std::vector<double> sums(width);
    auto const add = [&](std::size_t y, double sign) {
        float const* const row = source.GetRow(y);
        for (std::size_t x = 0; x < width; ++x) sums[x] += sign * row[x];
    };
    for (std::size_t y = 0; y < std::min(radius, height); ++y) add(y, 1);
    for (std::size_t y = 0; y < height; ++y) {
        if (y + radius < height) add(y + radius, 1);
        if (y > radius) add(y - radius - 1, -1);
        std::size_t const first = y > radius ? y - radius : 0;
        double const share = 1.0 / static_cast<double>(std::min(y + radius, height - 1) - first + 1);
        float* const row = target.GetRow(y);
        for (std::size_t x = 0; x < width; ++x) row[x] = static_cast<float>(sums[x] * share);
    }
}

} // namespace

void BoxMean(FloatPlane& plane, std::size_t radius, FloatPlane& scratch) {
    if (radius == 0) return;
    for (std::size_t y = 0; y < plane.height; ++y) MeanAcross(plane.GetRow(y), scratch.GetRow(y), plane.width, radius);
    MeanDown(scratch, plane, radius);
}

} // namespace Velnor::Proc::Kernels
