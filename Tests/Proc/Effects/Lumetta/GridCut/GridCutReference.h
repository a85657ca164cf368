#pragma once

#include "Proc/Effects/Lumetta/GridCut/GridGraphSolver.h"

#include <cstdint>
#include <vector>

namespace Velnor::Proc {

/// A grid with its capacities, as tests build it.
struct GridProblem {
    GridProblem(std::uint32_t gridWidth, std::uint32_t gridHeight);

    std::size_t At(std::uint32_t x, std::uint32_t y) const { return std::size_t{y} * width + x; }
    void SetRight(std::uint32_t x, std::uint32_t y, std::int16_t forth, std::int16_t back);
    void SetDown(std::uint32_t x, std::uint32_t y, std::int16_t forth, std::int16_t back);
    GridGraphSolver::Capacities GetCapacities() const { return {source, sink, left, right, up, down}; }

    std::uint32_t width;
    std::uint32_t height;
    std::vector<std::int16_t> source, sink, left, right, up, down;
};

/// A cut: its value, and for every pixel whether it lies on the sink side.
struct GridCut {
    std::uint64_t value = 0;
    std::vector<bool> isSink;

    friend bool operator==(GridCut const&, GridCut const&) = default;
};

/// By Boost.Graph, the sink side being all that reaches the sink in the residual graph.
GridCut CutByBoost(GridProblem const& problem);

/// By our solver; the value is that of the edges which its labels cut.
GridCut CutByGrid(GridProblem const& problem, unsigned workers, std::uint32_t regionSide,
                  std::uint16_t* flow = nullptr);

} // namespace Velnor::Proc
