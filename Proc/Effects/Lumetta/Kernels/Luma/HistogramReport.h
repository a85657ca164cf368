#pragma once

#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Kernels/Luma/Histogram.h"
#include "Proc/Interfaces/FrameFormat.h"

namespace Velnor::Proc::Kernels {

/// Counts red, green, blue and luma of a planar luma/chroma picture. Luma is counted as it is, the colours after the
/// full-range BT.601 matrix, rounded and cut to 0..255; each chroma sample serves the pixels that it covers.
/// @param shiftX, shiftY  pixels per chroma sample, as powers of two
std::array<Histogram, 4> CountPlanar(std::array<ConstPlane, 3> const& planes, unsigned int shiftX, unsigned int shiftY);

/// What is said of a channel. All 0 for an empty one.
struct LevelStatistics {
    double mean = 0, deviation = 0;
    int low = 0, high = 0;            ///< Ends of what occurs.
    std::array<int, 5> percentiles{}; ///< 1, 25, 50, 75 and 99 %: the first level that so many pixels do not exceed.
    double clippedLow = 0, clippedHigh = 0; ///< Percent at levels 0 and 255.
};
LevelStatistics Summarise(Histogram const& histogram);

/// Draws the curves of red, green and blue, mixed as light is, on a darkened panel of the picture. The tallest level
/// inside 1..254 fills the panel: clipped ends, tall as they may be, do not flatten the rest.
/// @param curves  counts of red, green and blue
/// @param panel   in pixels of the picture, inside it
void DrawCurves(MutablePlane const& plane, PackedRgb const& format, std::array<Histogram, 3> const& curves,
                Rectangle const& panel);

} // namespace Velnor::Proc::Kernels
