#pragma once

#include "Proc/Effects/Kit/PackedFormats.h"
#include "Proc/Effects/Lumetta/Kernels/Color/OkLab.h"
#include "Proc/Interfaces/Plane.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace Velnor::Proc::Kernels {

/// Any change of colour as a grid of samples, read between them by tetrahedra (J. Sakamoto, H. Itooka, US patent
/// 4275413, 1981, long expired): four grid points a pixel, and greys stay grey where the grid keeps them so. The
/// identity comes out bit for bit. Samples are taken when a colour near them first comes up: pictures hold few of all.
class ColorCube {
public:
    using Map = std::function<RgbLevels(RgbLevels const&)>;

    /// @param shift  the grid's step as a power of two: 2 for 65 points a side, 3 for 33
    /// @param map    asked at levels 0 to 256; what is read is cut to 0 to 255
    ColorCube(unsigned int shift, Map const& map);

    /// Changes bytes 0 to 2 of every pixel, colours by the format's order; a fourth byte stays.
    void Apply(MutablePlane const& plane, PackedRgb const& format);

private:
    struct Node {
        std::int16_t red, green, blue; ///< Levels in steps of 2^-SCALE_BITS.
        bool isFilled;
        bool isCellFilled; ///< This node and the seven above it.
    };
    static constexpr int SCALE_BITS = 6;

    template <unsigned int Shift, unsigned int PixelBytes, bool IsBlueFirst>
    void ApplyRows(MutablePlane const& plane);
    template <unsigned int Shift>
    void ApplyBySize(MutablePlane const& plane, PackedRgb const& format);
    void FillCell(std::size_t corner);
    void FillNode(std::size_t index);

    Map map;
    unsigned int shift;
    std::uint32_t side;
    std::vector<Node> nodes;
};

} // namespace Velnor::Proc::Kernels
