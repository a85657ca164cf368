#pragma once

#include "Proc/Effects/Lumetta/Kernels/Color/ColorCounts.h"

#include <array>

namespace Velnor::Proc::Kernels {

using Vector3 = std::array<double, 3>;
using Matrix3 = std::array<Vector3, 3>;

/// Mean and covariance of a picture's colours, in OKLab.
struct ColorSpread {
    Vector3 mean{};
    Matrix3 covariance{};
};

/// Of no colour at all: a mean of 0 and no spread.
ColorSpread MeasureSpread(std::vector<WeightedColor> const& colors);

/// The linear map that carries one Gaussian onto another with the least movement of colours (the Monge-Kantorovich
/// solution; F. Pitie, A. Kokaram, "The linear Monge-Kantorovitch linear colour mapping for example-based colour
/// transfer", CVMP 2007). Unlike matching each axis by itself it follows correlated colours, and unlike a Cholesky
/// factor it does not turn hues into each other. Directions in which a picture hardly varies are stretched no more than
/// MOST_STRETCH: that would be noise and banding.
class ColorTransfer {
public:
    ColorTransfer(ColorSpread const& from, ColorSpread const& to);
    Lab operator()(Lab const& color) const;

private:
    static constexpr double MOST_STRETCH = 3.0;

    Vector3 source, target;
    Matrix3 map;
};

} // namespace Velnor::Proc::Kernels
