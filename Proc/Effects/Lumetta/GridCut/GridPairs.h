#pragma once

#include "Proc/Effects/Lumetta/GridCut/GridLayout.h"
#include "Proc/Effects/Lumetta/GridCut/GridTrees.h"

#include <cstdint>

namespace Velnor::Proc::Kernels {

/// Lets the flow that goes from a node with a link to the source straight into a neighbour with one to the sink, both
/// inside the rectangle, pass before any tree grows. Nodes give and take in the order of the rows, each from the one
/// below and then the one to the right, so that little is left in between: strokes painted pixel beside pixel, on which
/// trees of one node each meet everywhere, are then all but done.
/// @param residual  as of GridTrees::SetThreshold
/// Returns the flow modulo 2^16.
std::uint16_t PairNeighbours(GridLayout const& layout, GridNodes const& nodes, NodeRect const& rect, int residual);

} // namespace Velnor::Proc::Kernels
