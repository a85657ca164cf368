#pragma once

#include "Proc/Interfaces/LumaShare.h"

#include <array>

namespace Velnor::Proc::Kernels {

/// A colour in OKLab (B. Ottosson, "A perceptual color space for image processing", 2020): lightness 0 to 1 and two
/// opponents of about -0.4 to 0.4. Distances are about as far as they look. Light scaled by k scales all three by the
/// cube root of k, so a / l and b / l stay the same from light to shade.
struct Lab {
    float l = 0, a = 0, b = 0;
};

/// Red, green and blue as sRGB levels, 0 to 255.
using RgbLevels = std::array<float, 3>;

Lab ToOkLab(RgbLevels const& rgb);

/// Levels beyond 0 to 255 for colours that sRGB does not hold.
RgbLevels FromOkLab(Lab const& lab);

/// The colour itself, or where sRGB does not hold it, that of the same lightness and hue with as much of its chroma as
/// fits. Lightness below 0 is black, above 1 white.
Lab IntoGamut(Lab const& lab);

/// BT.601 luma.
inline float LumaOf(RgbLevels const& rgb) {
    using Share = LumaShare<float>;
    return Share::RED * rgb[0] + Share::GREEN * rgb[1] + Share::BLUE * rgb[2];
}

/// The colour at another luma, 0 to 255: moved along the grey axis, and drawn to grey by no more than makes it fit 0 to
/// 255. So luma is exact and the direction of the chroma stays.
RgbLevels WithLuma(RgbLevels const& rgb, float luma);

} // namespace Velnor::Proc::Kernels
