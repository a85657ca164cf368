// Why the cut is minimal and the same for every interleaving of the workers
//
// Write a -> b for an edge with residual capacity whose flag is set, S and T for the trees. Between two steps of the
// search, every edge out of S or into T is still on the list of things to do. Exactly, for each a -> b of that kind
//     a is active if b is free;   b is active if a is free;   one of them is if a is in S and b in T.
// ActivateRect establishes this, and each step of GridTrees keeps it: a node that joins a tree is active, and leaves
// the list only after all its edges were looked at; pushing flow opens only edges up a source path, down a sink path,
// or from T to S, none of the three kinds; a freed node wakes each neighbour in T that it has an edge to, or in S that
// has an edge to it, if that is of the other tree. (In its own, nothing is left with such an edge: see Parents.) Flow
// runs along a path from source to sink, bounded by every residual on it. So with no active node left and all flags
// restored the flow is maximal by the cut {T, rest}. A node of T has a path of residual edges to the sink; none outside
// T has. That set depends on the graph alone, not on the flow.
//
// Parents. All nodes that can lose their root by an augmentation hang on an orphan. The search from an orphan goes to
// what could be its parent, and that node's, and so on, and meets only nodes without a root until it ends: at a node
// that has one, whose path therefore holds none of those met, so that turning the parents between makes no cycle; or
// when all that could feed one of those met was met itself. Then all of them are freed, and their children are the next
// orphans. Whoever has a root keeps it until the last orphan is done, so a stamp that says so stays true. Nodes of the
// path above its last orphan have kept theirs; when an orphan and all orphans that came of it are done, what is left in
// the tree of the segment below it has one. Stamps are raised before each search, and a merged set starts from the
// larger one: what an earlier search, or the other half, left on a node is never taken for news.
//
// Pairs. What PairNeighbours lets pass is flow along paths of one edge, before any tree has more than its root.
//
// Growing anew. Trees cut down to their roots, with ActivateRect after it, are a state like that at the start: the flow
// stays, and the condition holds again. Nothing but the time depends on when that is done.
//
// Thin edges. Regions and merges are solved with only the wider edges open; the argument holds for that graph. When no
// boundary is left the set is the whole grid: the active list is seeded as at the start, and again with all edges open.
// Two workers solve halves of it, kept apart as regions are, after orphans were made of nodes with a parent in the
// other half. The line between is opened as in a merge; the last solve is of the whole.
//
// Regions. Before the workers start, the flags of all edges between regions are cleared both ways; residuals stay.
// Every step tests a flag before it touches more of a neighbour than its label, so a worker stays inside the regions
// joined so far. A merge sets the flags of each pair from the residuals and wakes nodes so that the condition above
// holds for these edges too. A record whose two ends have become one set by other records is merged with itself in the
// same way.
//
// Threads. A worker touches nodes of sets that it holds busy; others only load labels beside them, relaxed, and find no
// flag set (regions are whole tiles: nothing else shares their cache lines). Busy goes from 0 to 1 under the lock. It
// is cleared outside, by a release store after the nodes and the stamp were written; the acquire load in Take pairs
// with it. The lock word (acquire to take, release to give back) orders records, union-find and reads of stamps. A
// worker first clears busy and then walks: of two that finish neighbouring sets the later one finds both idle. So a
// worker that finds nothing can end, as each record left waits for one that still works. The phases of WorkerTeam order
// all else: each begins and ends under its mutex.
#include "Proc/Effects/Lumetta/GridCut/GridGraphSolver.h"

#include "Proc/Effects/Lumetta/GridCut/GridHalves.h"
#include "Proc/Effects/Lumetta/GridCut/GridPairs.h"
#include "Proc/Interfaces/EffectExceptions.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace Velnor::Proc {

using Kernels::EdgeFlag;
using Kernels::Opposite;

namespace {

constexpr std::size_t WORKER_BYTES = 96;

/// Residual capacity of the edges that are used until all regions are one. Across a whole photograph the thin edges
/// break the flow into several times as many paths, each a thousand nodes long and with trees to mend; once the wide
/// ones are exhausted little is left to do. Of 16 to 128 this does best at 2 and 12 megapixels taken together.
constexpr int WIDE = 32;

void CheckSize(std::span<std::int16_t const> array, std::size_t pixels, char const* name) {
    if (array.size() != pixels)
        VELNOR_THROW(EffectException, std::string("The array of ") + name + " capacities has " +
                                          std::to_string(array.size()) + " elements, the picture " +
                                          std::to_string(pixels) + " pixels: one element a pixel is needed.");
}

unsigned CheckWorkers(unsigned workers) {
    if (workers == 0) VELNOR_THROW(EffectException, "A grid graph needs at least 1 worker, 0 are given.");
    return workers;
}

} // namespace

GridGraphSolver::Memory::Memory(Kernels::GridLayout const& layout, unsigned workers)
    : block(GetBlockBytes(layout.GetNodesCount(), layout.GetBoundariesCount(), workers)) {
    std::size_t const count = layout.GetNodesCount();
    nodes.label = block.Take<std::uint8_t>(count);
    nodes.parent = block.Take<std::uint8_t>(count);
    std::memset(nodes.parent, Kernels::NO_PARENT, count);
    for (auto& residual : nodes.residual) residual = block.Take<std::uint16_t>(count);
    nodes.terminal = block.Take<std::int16_t>(count);
    nodes.nextActive = block.Take<std::uint32_t>(count);
    nodes.cameFrom = block.Take<std::uint32_t>(count);
    nodes.distance = block.Take<std::uint32_t>(count);
    nodes.stamp = block.Take<std::uint32_t>(count);
    boundaryNodes = block.Take<std::uint32_t>(layout.GetBoundariesCount() * Kernels::GridLayout::MAX_REGION_SIDE);
    workerBlocks = block.Take<std::byte>(workers * WORKER_BYTES);
    for (unsigned worker = 0; worker < workers; ++worker)
        new (workerBlocks + worker * WORKER_BYTES) Kernels::GridWorkerBlock{.rowStep = layout.GetRowStep()};
}

GridGraphSolver::GridGraphSolver(std::uint32_t width, std::uint32_t height, unsigned workers, std::uint32_t regionSide,
                                 intrusive_ptr<Core::IProgressController> controller)
    : layout(width, height, regionSide),
      workersCount(CheckWorkers(workers)),
      progress(std::move(controller)),
      memory(layout, workers),
      regions(layout, memory.boundaryNodes),
      processors(std::max(1U, std::thread::hardware_concurrency())),
      share(*progress, layout.GetRegionsCount(), layout.GetBoundariesCount()),
      team(workers) {}

Kernels::GridWorkerBlock& GridGraphSolver::GetWorkerBlock(unsigned worker) const {
    return *std::launder(
        reinterpret_cast<Kernels::GridWorkerBlock*>(memory.workerBlocks + std::size_t{worker} * WORKER_BYTES));
}

void GridGraphSolver::SetCapacities(Capacities const& capacities) {
    std::size_t const pixels = std::size_t{layout.GetWidth()} * layout.GetHeight();
    CheckSize(capacities.source, pixels, "source");
    CheckSize(capacities.sink, pixels, "sink");
    CheckSize(capacities.left, pixels, "left");
    CheckSize(capacities.right, pixels, "right");
    CheckSize(capacities.up, pixels, "up");
    CheckSize(capacities.down, pixels, "down");
    team.RunRows(layout.GetHeight(), [&](std::uint32_t y) { SetRow(capacities, y); });
}

void GridGraphSolver::SetRow(Capacities const& capacities, std::uint32_t y) {
    std::uint32_t const width = layout.GetWidth();
    std::size_t const row = std::size_t{y} * width;
    bool const isFirst = y == 0;
    bool const isLast = y + 1 == layout.GetHeight();
    auto const setEdge = [this](unsigned direction, std::uint32_t node, int capacity) {
        int const usable = std::max(capacity, 0);
        nodes.residual[direction][node] = static_cast<std::uint16_t>(usable);
        return usable >= WIDE ? unsigned{EdgeFlag(direction)} : 0U;
    };
    // Pixel x is node x + 1, so that the first group of a row has seven pixels, and each further one eight.
    for (std::uint32_t x = 0; x < width;) {
        std::uint32_t const end = std::min(width, (x + 1) / 8 * 8 + 7);
        std::uint32_t node = layout.GetNode(x + 1, y + 1);
        for (; x < end; ++x, ++node) {
            std::size_t const pixel = row + x;
            unsigned const flags = setEdge(Kernels::RIGHT, node, x + 1 < width ? capacities.right[pixel] : 0) |
                                   setEdge(Kernels::DOWN, node, isLast ? 0 : capacities.down[pixel]) |
                                   setEdge(Kernels::UP, node, isFirst ? 0 : capacities.up[pixel]) |
                                   setEdge(Kernels::LEFT, node, x > 0 ? capacities.left[pixel] : 0);
            nodes.label[node] = static_cast<std::uint8_t>(flags);
            if (capacities.source[pixel] > 0 || capacities.sink[pixel] > 0) SetTerminals(capacities, pixel, node);
        }
    }
}

void GridGraphSolver::SetTerminals(Capacities const& capacities, std::size_t pixel, std::uint32_t node) {
    int const source = std::max<int>(capacities.source[pixel], 0);
    int const sink = std::max<int>(capacities.sink[pixel], 0);
    flow.fetch_add(static_cast<std::uint16_t>(std::min(source, sink)), std::memory_order_relaxed); // straight through
    if (source == sink) return;
    nodes.terminal[node] = static_cast<std::int16_t>(std::abs(source - sink));
    nodes.label[node] =
        static_cast<std::uint8_t>(nodes.label[node] | (source > sink ? Kernels::SOURCE : Kernels::SINK));
    nodes.parent[node] = Kernels::TERMINAL_PARENT;
}

/// Closes all edges between regions. A corner node stands in two lists: only the bit of the list's direction goes.
void GridGraphSolver::SeparateRegions() {
    for (BoundaryRecord const& record : regions.GetRecords()) {
        unsigned const direction = record.GetDirection();
        for (std::uint32_t const near : record.GetNodes()) {
            std::uint32_t const far = layout.GetNeighbour(near, direction);
            nodes.SetLabel(near, nodes.GetLabel(near) & ~unsigned{EdgeFlag(direction)});
            nodes.SetLabel(far, nodes.GetLabel(far) & ~unsigned{EdgeFlag(Opposite(direction))});
        }
    }
}

void GridGraphSolver::Compute() {
    SeparateRegions();
    team.Run(workersCount, [this](unsigned worker) {
        try {
            Work(worker);
        } catch (...) {
            failed.store(true, std::memory_order_relaxed);
            throw;
        }
    });
    SolveWhole();
    for (unsigned worker = 0; worker < workersCount; ++worker)
        flow.fetch_add(GetWorkerBlock(worker).flow, std::memory_order_relaxed);
}

void GridGraphSolver::Work(unsigned worker) {
    Kernels::GridWorkerBlock& block = GetWorkerBlock(worker);
    Kernels::GridTrees trees(layout, nodes, block, WIDE);
    SolveRegions(trees, block);
    MergeRegions(trees);
}

void GridGraphSolver::SolveRegions(Kernels::GridTrees& trees, Kernels::GridWorkerBlock& block) {
    for (;;) {
        WorkPermits::Holder const permit(processors);
        if (IsStopped()) return;
        std::uint32_t const region = nextRegion.fetch_add(1, std::memory_order_relaxed);
        if (region >= layout.GetRegionsCount()) return;
        std::array const area{layout.GetRegion(region)};
        std::uint16_t const paired = Kernels::PairNeighbours(layout, nodes, area[0], WIDE);
        block.flow = static_cast<std::uint16_t>(block.flow + paired);
        std::uint32_t regionStamp = 0;
        if (layout.GetRegionsCount() > 1) { // Else it is the whole grid.
            trees.ActivateRect(area[0]);
            trees.Solve(regionStamp, area, [this] { return IsStopped(); });
        }
        regions.SetIdle(region, regionStamp);
        share.AddRegion();
    }
}

void GridGraphSolver::MergeRegions(Kernels::GridTrees& trees) {
    for (;;) {
        WorkPermits::Holder const permit(processors);
        GridRegions::Merge merge = regions.Take([this] { return IsStopped(); });
        if (merge.records.empty()) return;
        if (!merge.isLast) { // Else the set is the whole grid, which more than one worker can solve.
            std::vector<Kernels::NodeRect> area;
            for (std::uint32_t const region : merge.regions) area.push_back(layout.GetRegion(region));
            for (BoundaryRecord const& record : merge.records) trees.Join(record.GetNodes(), record.GetDirection());
            trees.Solve(merge.stamp, area, [this] { return IsStopped(); });
        }
        regions.SetIdle(merge.root, merge.stamp);
        share.AddBoundaries(merge.records.size());
    }
}

/// Ends the work, once all regions are one set.
void GridGraphSolver::SolveWhole() {
    stamp = regions.GetHighestStamp();
    GridHalves halves(layout, nodes, team, GetWorkerBlock(0), GetWorkerBlock(workersCount > 1 ? 1 : 0),
                      [this] { return IsStopped(); });
    for (int const residual : {WIDE, 4, 1}) {
        if (IsStopped()) return;
        halves.Solve(residual, stamp);
        share.AddStage();
    }
}

void GridGraphSolver::WriteRow(std::uint32_t y, std::uint8_t sinkValue, std::uint8_t otherValue,
                               std::uint8_t* row) const {
    for (std::uint32_t x = 0; x < layout.GetWidth(); ++x)
        row[x] = GetTree(x, y) == Kernels::SINK ? sinkValue : otherValue;
}

} // namespace Velnor::Proc
