#include "Proc/Effects/Lumetta/GridCut/GridLayout.h"
#include "Proc/Interfaces/FrameFormat.h"

#include "Proc/Interfaces/EffectExceptions.h"

#include <algorithm>
#include <string>

namespace Velnor::Proc::Kernels {
namespace {

/// Room for a node of border on each side, rounded up to whole tiles.
std::uint64_t Pad(std::uint64_t pixels) {
    return (pixels + 1) / GridLayout::TILE * GridLayout::TILE + GridLayout::TILE;
}

void Check(std::uint32_t width, std::uint32_t height, std::uint32_t side) {
    std::string const picture = "A picture of " + SizeText(width, height) + " pixels cannot be segmented: ";
    if (width == 0 || height == 0) VELNOR_THROW(EffectException, picture + "it needs at least 1 pixel each way.");
    if (Pad(width) > GridLayout::MAX_NODES / Pad(height))
        VELNOR_THROW(EffectException, picture + "with a border and rounded up to tiles of 8 x 8 it has " +
                                          SizeText(Pad(width), Pad(height)) + " nodes, " +
                                          std::to_string(GridLayout::MAX_NODES) + " in all are possible.");
    if (side == 0 || side % GridLayout::TILE != 0 || side > GridLayout::MAX_REGION_SIDE)
        VELNOR_THROW(EffectException, "The region side of a grid graph is " + std::to_string(side) +
                                          ", it must be a multiple of 8 from 8 to 640.");
}

} // namespace

GridLayout::GridLayout(std::uint32_t gridWidth, std::uint32_t gridHeight, std::uint32_t side)
    : width(gridWidth), height(gridHeight), regionSide(side) {
    Check(width, height, side);
    paddedWidth = static_cast<std::uint32_t>(Pad(width));
    paddedHeight = static_cast<std::uint32_t>(Pad(height));
    rowStep = TILE * paddedWidth - (TILE - 1) * TILE;
    regionsAcross = (paddedWidth + regionSide - 1) / regionSide;
    regionsDown = (paddedHeight + regionSide - 1) / regionSide;

    constexpr std::uint32_t TILE_STEP = TILE * TILE - (TILE - 1);
    for (std::uint32_t i = 0; i < TILE * TILE; ++i) {
        std::uint32_t const x = i % TILE;
        std::uint32_t const y = i / TILE;
        steps[i][RIGHT] = x != TILE - 1 ? 1 : TILE_STEP;
        steps[i][DOWN] = y != TILE - 1 ? TILE : rowStep;
        steps[i][UP] = 0 - (y != 0 ? TILE : rowStep);
        steps[i][LEFT] = 0 - (x != 0 ? 1 : TILE_STEP);
    }
}

NodeRect GridLayout::GetRegion(std::uint32_t region) const {
    std::uint32_t const x0 = region % regionsAcross * regionSide;
    std::uint32_t const y0 = region / regionsAcross * regionSide;
    return {x0, y0, std::min(x0 + regionSide, paddedWidth), std::min(y0 + regionSide, paddedHeight)};
}

} // namespace Velnor::Proc::Kernels
