#pragma once

#include "Proc/Effects/Lumetta/Kernels/Color/ColorCounts.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {

/// Up to `count` colours that stand for the given ones: median cut (P. Heckbert, "Color image quantization for frame
/// buffer display", SIGGRAPH 1982), each time of the box with the largest squared error, refined by k-means (S. Lloyd,
/// "Least squares quantization in PCM", 1982), all in OKLab. Fewer than `count` when there are no more.
/// @param refinements  most passes of k-means, 50 at the utmost; it ends earlier when nothing moves
std::vector<Lab> FindPalette(std::vector<WeightedColor> colors, std::size_t count, int refinements);

/// The entry of a palette nearest to any colour, by its bin: each bin is asked for once.
class PaletteMap {
public:
    /// @param entries  1 to 256
    explicit PaletteMap(std::vector<Lab> const& entries);

    std::size_t GetCount() const { return palette.size(); }

    /// Red, green and blue of an entry.
    std::array<unsigned char, 3> const& GetEntry(std::size_t index) const { return levels[index]; }

    std::size_t Find(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
        std::uint16_t& known = nearest[ColorBin(red, green, blue)];
        if (known == UNKNOWN) known = Search(red, green, blue);
        return known;
    }

private:
    static constexpr std::uint16_t UNKNOWN = 0xffff;
    std::uint16_t Search(std::uint32_t red, std::uint32_t green, std::uint32_t blue) const;

    std::vector<Lab> palette; ///< As distances are taken.
    std::vector<std::array<unsigned char, 3>> levels;
    std::vector<std::uint16_t> nearest;
};

} // namespace Velnor::Proc::Kernels
