#pragma once

#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Kernels/Color/OkLab.h"
#include "Proc/Interfaces/Plane.h"

#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {

/// A colour of a picture and how many pixels have it.
struct WeightedColor {
    Lab lab;
    float weight = 0;
    std::uint32_t bin = 0; ///< Where it was counted: unlike for any two, so that orders are total.
};

/// Colours of a picture in 64 x 64 x 64 bins, each with the mean of what fell into it: picked up in one pass, few
/// enough for work in floating point.
struct ColorCounts {
    std::vector<WeightedColor> colors; ///< Of the bins that are not empty, by bin. Transparent pixels do not count.
    bool hasTransparent = false;       ///< Whether a pixel's opacity is below 128.
};

/// @param hasAlpha  whether a pixel's fourth byte is its opacity
ColorCounts CountColors(ConstPlane const& plane, PackedRgb const& format, bool hasAlpha);

/// The bin of a colour.
inline std::uint32_t ColorBin(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return (red >> 2) << 12 | (green >> 2) << 6 | blue >> 2;
}

constexpr std::uint32_t COLOR_BINS = 1U << 18;
constexpr unsigned char HALF_OPAQUE = 128; ///< Opacity from which a pixel counts.

} // namespace Velnor::Proc::Kernels
