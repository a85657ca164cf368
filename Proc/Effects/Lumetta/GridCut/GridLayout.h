#pragma once

#include <array>
#include <cstdint>

namespace Velnor::Proc::Kernels {

/// Directions to the four neighbours of a node. The opposite of direction d is 3 - d.
inline constexpr unsigned RIGHT = 0;
inline constexpr unsigned DOWN = 1;
inline constexpr unsigned UP = 2;
inline constexpr unsigned LEFT = 3;

constexpr unsigned Opposite(unsigned direction) { return 3 - direction; }

/// The bit of a label that says: the edge in this direction is open, having the residual capacity that is asked for.
constexpr std::uint8_t EdgeFlag(unsigned direction) { return static_cast<std::uint8_t>(4U << direction); }

/// A rectangle of nodes, the upper limits excluded.
struct NodeRect {
    std::uint32_t x0 = 0;
    std::uint32_t y0 = 0;
    std::uint32_t x1 = 0;
    std::uint32_t y1 = 0;
};

/// Where the nodes of a W x H grid lie. Pixel (x, y) is node (x + 1, y + 1), so that a border of nodes without any
/// capacity surrounds the picture and no neighbour is ever out of the arrays. Nodes are stored in tiles of 8 x 8, row
/// by row inside a tile, tiles row by row: one cache line holds the labels of a whole tile, and the four neighbours of
/// most nodes with them. Square regions, whole tiles each, divide the grid for the workers.
class GridLayout {
public:
    static constexpr std::uint32_t TILE = 8;
    static constexpr std::uint32_t MAX_REGION_SIDE = 640;
    /// Stamps, a few for every orphan of a solve, still fit 32 bits.
    static constexpr std::uint64_t MAX_NODES = (std::uint64_t{1} << 28) - 1;

    /// @param gridWidth, gridHeight  pixels, from 1; the padded grid has up to MAX_NODES
    /// @param side                   side of a region in nodes: a multiple of 8, up to MAX_REGION_SIDE
    /// Throws EffectException for anything else.
    GridLayout(std::uint32_t gridWidth, std::uint32_t gridHeight, std::uint32_t side);

    std::uint32_t GetWidth() const { return width; }   ///< Pixels.
    std::uint32_t GetHeight() const { return height; } ///< Pixels.
    std::uint32_t GetPaddedWidth() const { return paddedWidth; }
    std::uint32_t GetPaddedHeight() const { return paddedHeight; }
    std::uint32_t GetNodesCount() const { return paddedWidth * paddedHeight; }
    std::uint32_t GetRowStep() const { return rowStep; }       ///< From a tile's last row to the row below it.
    std::uint32_t GetRegionSide() const { return regionSide; } ///< Nodes.
    std::uint32_t GetRegionsAcross() const { return regionsAcross; }
    std::uint32_t GetRegionsDown() const { return regionsDown; }
    std::uint32_t GetRegionsCount() const { return regionsAcross * regionsDown; }
    std::uint64_t GetBoundariesCount() const {
        return std::uint64_t{regionsAcross - 1} * regionsDown + std::uint64_t{regionsDown - 1} * regionsAcross;
    }

    /// Index of node (x, y), which is pixel (x - 1, y - 1).
    std::uint32_t GetNode(std::uint32_t x, std::uint32_t y) const {
        return y / TILE * TILE * paddedWidth + x / TILE * (TILE * TILE) + y % TILE * TILE + x % TILE;
    }

    /// Where a node is: the inverse of GetNode.
    std::uint32_t GetX(std::uint32_t node) const {
        return node % (TILE * paddedWidth) / (TILE * TILE) * TILE + node % TILE;
    }
    std::uint32_t GetY(std::uint32_t node) const {
        return node / (TILE * paddedWidth) * TILE + node % (TILE * TILE) / TILE;
    }

    /// Index of the neighbour in that direction, for any node that is not on the border of the padded grid.
    std::uint32_t GetNeighbour(std::uint32_t node, unsigned direction) const {
        return node + GetSteps(node)[direction];
    }

    /// What leads from a node to its four neighbours when it is added, modulo 2^32.
    std::array<std::uint32_t, 4> const& GetSteps(std::uint32_t node) const { return steps[node % (TILE * TILE)]; }

    /// Nodes of a region, clipped to the padded grid. Regions are numbered row by row.
    NodeRect GetRegion(std::uint32_t region) const;

private:
    std::uint32_t width;
    std::uint32_t height;
    std::uint32_t regionSide;
    std::uint32_t paddedWidth;
    std::uint32_t paddedHeight;
    std::uint32_t rowStep;
    std::uint32_t regionsAcross;
    std::uint32_t regionsDown;
    /// By place in the tile and direction. A load of the cache's first level, where the comparison that it replaces
    /// would be mispredicted at each tile's edge.
    std::array<std::array<std::uint32_t, 4>, TILE * TILE> steps{};
};

} // namespace Velnor::Proc::Kernels
