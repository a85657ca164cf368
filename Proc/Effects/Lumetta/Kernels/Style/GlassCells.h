#pragma once

#include "Proc/Interfaces/Plane.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Velnor::Proc::Kernels {

/// How a picture is divided into cells.
struct CellShape {
    double side = 16; ///< Of a cell where there is little detail, pixels; at least 2.
    /// 0: cells of one size by distance alone (centroidal Voronoi); 1: colour counts as much, and cells are smaller
    /// wherever there are edges.
    double edgeAwareness = 0;
    std::uint32_t seed = 1;
};

/// The cells of a picture: the number of each pixel's cell, row by row, and of each cell the mean colour and the side
/// of the square that it began in.
struct GlassCells {
    std::uint32_t width = 0;
    std::vector<std::uint32_t> labels;
    std::vector<std::array<unsigned char, 3>> colours; ///< By the byte of a pixel.
    std::vector<float> sides;                          ///< Pixels.
};

/// Divides a picture of pixels of 3 or 4 bytes: centres at random places in squares, moved five times to the centre of
/// what is nearer to them than to any other (S. Lloyd, "Least squares quantization in PCM", 1982), in place and,
/// weighted, in the colour of the smoothed picture (R. Achanta et al., "SLIC Superpixels", PAMI 34, 2012). Crumbs that
/// are cut off from their cells go to a neighbour. Needs 16 bytes for each pixel.
GlassCells FindCells(ConstPlane const& picture, unsigned int pixelBytes, CellShape const& shape);

/// For each pixel the distance to the nearest cell border, in a third of a pixel, by the chamfer metric 3-4
/// (G. Borgefors, "Distance transformations in digital images", 1986).
std::vector<std::uint16_t> FindBorderDistances(GlassCells const& cells);

} // namespace Velnor::Proc::Kernels
