#pragma once

#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Kernels/Blur/BoxMean.h"
#include "Proc/Interfaces/Plane.h"

#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {

/// The luma of a picture smoothed inside regions and not across their edges: the guided filter of the luma by itself,
/// its coefficients found on a reduced picture and read between its samples (K. He, J. Sun, X. Tang, "Guided image
/// filtering", PAMI 2013; K. He, J. Sun, "Fast guided filter", 2015). Lumas are 0 to 1. Memory beside the picture is
/// that of four planes of at most REDUCED_SIDE squared numbers, and a few rows.
class LumaMap {
public:
    static constexpr std::uint64_t REDUCED_SIDE = 768;

    /// @param radius    half the side of a region, in pixels of the picture
    /// @param contrast  of edges that are kept, 0 to 1; what is fainter is smoothed away
    LumaMap(ConstPlane const& plane, PackedRgb const& format, double radius, double contrast);

    /// The smoothed luma of row y, one value a pixel, from the row's own luma.
    void SmoothRow(std::uint64_t y, float const* luma, float* smooth);

private:
    void BlendRows(std::uint64_t y);

    std::uint64_t width; ///< Of the picture, in pixels.
    std::uint64_t factor;
    FloatPlane gain, offset;         ///< The filter's coefficients: smooth = gain * luma + offset.
    std::vector<std::uint32_t> left; ///< For each pixel of a row, the reduced sample to its left,
    std::vector<float> part;         ///< and how far it is on the way to the next one.
    std::vector<float> gainRow, offsetRow;
};

/// Luma of a row of packed pixels, 0 to 1.
void ReadLumaRow(unsigned char const* pixels, std::uint64_t count, PackedRgb const& format, float* luma);

} // namespace Velnor::Proc::Kernels
