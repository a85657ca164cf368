#include "Proc/Effects/Lumetta/GridCut/GridPairs.h"

#include <algorithm>

namespace Velnor::Proc::Kernels {
namespace {

/// A root gives up what it sent or took; without anything left it is free.
void Use(GridNodes const& nodes, std::uint32_t root, int flow) {
    nodes.terminal[root] = static_cast<std::int16_t>(nodes.terminal[root] - flow);
    if (nodes.terminal[root] != 0) return;
    nodes.parent[root] = NO_PARENT;
    nodes.SetLabel(root, nodes.GetLabel(root) & ~unsigned{TREE_MASK});
}

int Pair(GridNodes const& nodes, std::uint32_t source, std::uint32_t sink, unsigned direction, int residual) {
    int const flow =
        std::min({int{nodes.residual[direction][source]}, int{nodes.terminal[source]}, int{nodes.terminal[sink]}});
    if (flow == 0) return 0;
    nodes.Move(source, sink, direction, flow, residual);
    Use(nodes, source, flow);
    Use(nodes, sink, flow);
    return flow;
}

} // namespace

std::uint16_t PairNeighbours(GridLayout const& layout, GridNodes const& nodes, NodeRect const& rect, int residual) {
    unsigned total = 0;
    auto const meet = [&](std::uint32_t node, unsigned direction) {
        std::uint32_t const other = layout.GetNeighbour(node, direction);
        unsigned const tree = nodes.GetLabel(node) & TREE_MASK;
        unsigned const otherTree = nodes.GetLabel(other) & TREE_MASK;
        if (tree == SOURCE && otherTree == SINK)
            total += static_cast<unsigned>(Pair(nodes, node, other, direction, residual));
        else if (tree == SINK && otherTree == SOURCE)
            total += static_cast<unsigned>(Pair(nodes, other, node, Opposite(direction), residual));
    };
    for (std::uint32_t y = rect.y0; y < rect.y1; ++y) {
        for (std::uint32_t x = rect.x0; x < rect.x1; x += GridLayout::TILE) {
            std::uint32_t const first = layout.GetNode(x, y);
            if (nodes.GetTrees(first) == 0) continue; // As most of a picture is.
            for (std::uint32_t i = 0; i < GridLayout::TILE; ++i) {
                if (y + 1 < rect.y1) meet(first + i, DOWN);
                if (x + i + 1 < rect.x1) meet(first + i, RIGHT);
            }
        }
    }
    return static_cast<std::uint16_t>(total);
}

} // namespace Velnor::Proc::Kernels
