#pragma once

#include <cstddef>
#include <vector>

namespace Velnor::Proc::Kernels {

/// A plane of numbers, row after row.
struct FloatPlane {
    FloatPlane(std::size_t planeWidth, std::size_t planeHeight)
        : width(planeWidth), height(planeHeight), values(planeWidth * planeHeight) {}

    float* GetRow(std::size_t y) { return values.data() + y * width; }
    float const* GetRow(std::size_t y) const { return values.data() + y * width; }

    std::size_t width;
    std::size_t height;
    std::vector<float> values;
};

/// Replaces each value by the mean of the square of 2 radius + 1 values a side about it; at the borders, of the part of
/// the square that lies in the plane. The cost does not depend on the radius. `scratch` is as large as the plane.
void BoxMean(FloatPlane& plane, std::size_t radius, FloatPlane& scratch);

} // namespace Velnor::Proc::Kernels
