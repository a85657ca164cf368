#pragma once

#include "Proc/Effects/Lumetta/GridCut/GridLayout.h"
#include "Proc/Effects/Lumetta/GridCut/GridTrees.h"
#include "Proc/Effects/Lumetta/GridCut/WorkerTeam.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace Velnor::Proc {

/// The whole grid, solved by two workers when no other has any of it. A line is drawn through the middle of what is to
/// be done, and each worker solves one side of it until one of them has nothing left; then the line is opened, and the
/// next one drawn. What is left after some rounds, and needs the whole grid, one worker does.
class GridHalves {
public:
    /// @param workers        do the work while the caller waits; if it is only one, or the grid is small, it does all
    /// @param first, second  what two workers keep. No region is left to solve, so that those who own these blocks have
    ///                       nothing in them but the flow, to which more is added here; both lists of active nodes are
    ///                       empty.
    /// @param isStopped      asked once in a while
    GridHalves(Kernels::GridLayout const& layout, Kernels::GridNodes const& nodes, WorkerTeam& workers,
               Kernels::GridWorkerBlock& first, Kernels::GridWorkerBlock& second,
               Kernels::GridTrees::StopQuery isStopped);

    /// Solves the grid through its edges that have at least this residual capacity. Ends early when it is stopped.
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

    void RunSides(bool areTwo, std::function<void(std::size_t)> const& work);
    void Open(int residual);
    Kernels::NodeRect GetSide(Line const& line, std::size_t number) const;
    Line DrawLine(std::span<std::uint32_t const> active) const;
    bool IsBeyond(std::uint32_t node, Line const& line) const;
    std::vector<std::uint32_t> ListBorder(Line const& line) const;
    bool SolveSides(std::span<std::uint32_t const> border, Line const& line, std::uint32_t& stamp);

    Kernels::GridLayout const& layout;
    Kernels::GridNodes const& nodes;
    WorkerTeam& team;
    Kernels::GridTrees::StopQuery const isStopped;
    bool const isShared;
    std::array<Side, 2> sides;
};

} // namespace Velnor::Proc
