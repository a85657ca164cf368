#pragma once

#include "Core/Progress.h"
#include "Proc/Effects/Lumetta/GridCut/GridLayout.h"
#include "Proc/Effects/Lumetta/GridCut/GridProgress.h"
#include "Proc/Effects/Lumetta/GridCut/GridRegions.h"
#include "Proc/Effects/Lumetta/GridCut/GridTrees.h"
#include "Proc/Effects/Lumetta/GridCut/WorkPermits.h"
#include "Proc/Effects/Lumetta/GridCut/WorkerTeam.h"
#include "Proc/Effects/Lumetta/GridCut/ZeroBlock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace Velnor::Proc {

/// Minimum cut of a 4-connected grid with a source and a sink, on several threads. Used once: construct, SetCapacities,
/// Compute, then read labels and flow.
class GridGraphSolver {
public:
    static constexpr unsigned WORKERS = 12;
    static constexpr std::uint32_t REGION_SIDE = Kernels::GridLayout::MAX_REGION_SIDE;

    /// Capacities by pixel, index y * width + x; values below 1 are no link. An edge that leads out of the picture is
    /// none whatever its capacity.
    struct Capacities {
        std::span<std::int16_t const> source, sink, left, right, up, down;
    };

    /// Lays everything out in one block of zeros, gives the progress controller a range of boundaries + regions, and
    /// starts the workers.
    /// @param width, height  pixels
    /// @param workers        threads to compute with, from 1
    /// @param regionSide     nodes: a multiple of 8 up to 640
    /// @param controller     advanced from all workers, and asked for a stop; not null
    /// Throws EffectException for a size out of range, std::bad_alloc when the block does not fit in memory,
    /// std::system_error when no thread can be had; fewer than asked for do the work.
    GridGraphSolver(std::uint32_t width, std::uint32_t height, unsigned workers, std::uint32_t regionSide,
                    intrusive_ptr<Core::IProgressController> controller);
    GridGraphSolver(GridGraphSolver const&) = delete;
    GridGraphSolver& operator=(GridGraphSolver const&) = delete;

    /// The workers, for what comes before and after: they wait for it until this is destroyed.
    WorkerTeam& GetTeam() { return team; }

    /// Throws EffectException when an array has another size than the picture.
    void SetCapacities(Capacities const& capacities);

    /// Solves. Ends early, with labels that mean nothing, when a stop is requested. What a worker or an observer of its
    /// progress throws is thrown from here, once all workers have ended.
    void Compute();

    /// The flow modulo 2^16: capacities are of that width, and callers know the total in it.
    std::uint16_t GetFlow() const { return flow.load(std::memory_order_relaxed); }

    /// How many stamps the searches of the whole grid, and of what it was merged from one after another, have used.
    std::uint32_t GetStamp() const { return stamp; }

    /// Kernels::SINK for a pixel that can still reach the sink, else Kernels::SOURCE or FREE. These sets are the same
    /// for every order of the work: the sink side is the smallest of all minimum cuts.
    std::uint8_t GetTree(std::uint32_t x, std::uint32_t y) const {
        return nodes.label[layout.GetNode(x + 1, y + 1)] & Kernels::TREE_MASK;
    }

    /// Writes a row of pixels: one value on the sink side, another elsewhere.
    void WriteRow(std::uint32_t y, std::uint8_t sinkValue, std::uint8_t otherValue, std::uint8_t* row) const;

    Kernels::GridLayout const& GetLayout() const { return layout; }

    /// Size of the block: nine words a node, a boundary's node list, the workers, and room to align all parts.
    static std::uint64_t GetBlockBytes(std::uint64_t nodes, std::uint64_t boundaries, std::uint64_t workers) {
        return (nodes * 9 + 640 * boundaries + 24 * workers) * 4 + 832;
    }

private:
    /// The block and where its parts begin.
    struct Memory {
        Memory(Kernels::GridLayout const& layout, unsigned workers);

        Kernels::ZeroBlock block;
        Kernels::GridNodes nodes;
        std::uint32_t* boundaryNodes = nullptr;
        std::byte* workerBlocks = nullptr;
    };

    void SetRow(Capacities const& capacities, std::uint32_t y);
    void SetTerminals(Capacities const& capacities, std::size_t pixel, std::uint32_t node);
    void SeparateRegions();

    void Work(unsigned worker);
    void SolveRegions(Kernels::GridTrees& trees, Kernels::GridWorkerBlock& block);
    void MergeRegions(Kernels::GridTrees& trees);
    void SolveWhole();
    bool IsStopped() const { return failed.load(std::memory_order_relaxed) || progress->IsStopRequested(); }
    Kernels::GridWorkerBlock& GetWorkerBlock(unsigned worker) const;

    Kernels::GridLayout const layout;
    unsigned const workersCount;
    intrusive_ptr<Core::IProgressController> const progress;
    Memory memory;
    Kernels::GridNodes const& nodes = memory.nodes;
    GridRegions regions;
    std::atomic<std::uint16_t> flow{0};

    std::atomic<std::uint32_t> nextRegion{0};
    WorkPermits processors;          ///< To solve: regions beyond the processors would share their caches.
    std::atomic<bool> failed{false}; ///< A worker threw: the others end as for a stop.
    GridProgress share;
    std::uint32_t stamp = 0;
    WorkerTeam team; ///< Last: it is joined before anything that it uses goes.
};

} // namespace Velnor::Proc
