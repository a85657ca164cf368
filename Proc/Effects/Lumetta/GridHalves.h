#pragma once

#include "Proc/Effects/Lumetta/Kernels/GridLayout.h"
#include "Proc/Effects/Lumetta/Kernels/GridTrees.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace Velnor::Proc {

/// The whole grid, solved on two threads when no other worker has any of it. A line is drawn through the middle of what
/// is to be done, and each thread solves one side of it until one of them has nothing left; then the line is opened,
/// and the next one drawn. What is left after some rounds, and needs the whole grid, one thread does.
class GridHalves {
public:
    /// @param first, second  blocks of two workers, the second with nothing active; if one and the same, one thread
    ///                       does it all
    GridHalves(Kernels::GridLayout const& layout, Kernels::GridNodes const& nodes, Kernels::GridWorkerBlock& first,
               Kernels::GridWorkerBlock& second);

    /// Solves the grid through its edges that have at least this residual capacity.
    /// @param stamp  as of GridTrees::Solve
    void Solve(int residual, std::uint32_t& stamp);

private:
    /// Between two tiles, through the whole grid.
    struct Line {
        bool isUpright = false;
        std::uint32_t at = 0; ///< First column, or row, beyond it.

        unsigned GetDirection() const { return isUpright ? Kernels::RIGHT : Kernels::DOWN; } ///< Across it.
    };

    /// What one thread works with; two of them share no cache line.
    struct alignas(128) Side {
        Kernels::GridTrees trees;
        Kernels::GridWorkerBlock& block;
        std::uint32_t stamp = 0;
    };

    void Open(int residual);
    Line DrawLine(std::span<std::uint32_t const> active) const;
    bool IsBeyond(std::uint32_t node, Line const& line) const;
    std::vector<std::uint32_t> ListBorder(Line const& line) const;
    bool SolveSides(std::span<std::uint32_t const> border, Line const& line, std::uint32_t& stamp);

    Kernels::GridLayout const& layout;
    Kernels::GridNodes const& nodes;
    bool const isShared;
    std::array<Side, 2> sides;
};

} // namespace Velnor::Proc
