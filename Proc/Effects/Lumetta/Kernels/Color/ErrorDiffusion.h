#pragma once

#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Kernels/Color/PaletteSearch.h"
#include "Proc/Interfaces/Plane.h"

#include <vector>

namespace Velnor::Proc::Kernels {

/// Finds the palette's entries for a picture, row after row from the top.
class PaletteRows {
public:
    /// @param diffuse  whether the error of each pixel is spread over those that follow (R. Floyd, L. Steinberg, "An
    ///                 adaptive algorithm for spatial grey scale", 1976), every second row from right to left so that
    ///                 the pattern does not drift
    /// @param leastOpacity  of the pixels that will be seen, by their fourth byte, the others' error being spread over
    ///                      nothing; 0: all are seen
    PaletteRows(PaletteMap& paletteMap, std::uint64_t widthInPixels, bool diffuse, unsigned int leastOpacity);

    /// Writes one index a pixel.
    void MapRow(unsigned char const* pixels, PackedRgb const& format, unsigned char* indices);

private:
    void Plain(unsigned char const* pixels, PackedRgb const& format, unsigned char* indices);
    void Diffuse(unsigned char const* pixels, PackedRgb const& format, unsigned char* indices);

    PaletteMap& map;
    std::uint64_t width;
    unsigned int leastSeen;
    bool isDiffusing;
    bool isLeftward = false;
    std::vector<std::array<int, 3>> errors,
        next; ///< Of this row and the one below in sixteenths; a margin at each end.
};

} // namespace Velnor::Proc::Kernels
