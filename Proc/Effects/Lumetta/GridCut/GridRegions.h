#pragma once

#include "Proc/Effects/Lumetta/GridCut/GridLayout.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace Velnor::Proc {

/// The boundary between a region and its right neighbour or the one below.
struct BoundaryRecord {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
    std::uint32_t isVertical = 0; ///< 1 = the second region is the right neighbour, 0 = the one below.
    std::uint32_t nodesCount = 0;
    std::uint32_t const* nodes = nullptr; ///< Of the first region, along its last column or row.

    /// From a listed node to its counterpart in the second region.
    unsigned GetDirection() const { return isVertical != 0 ? Kernels::RIGHT : Kernels::DOWN; }
    std::span<std::uint32_t const> GetNodes() const { return {nodes, nodesCount}; }
};

/// Which regions have become one, which are being worked on, and which boundaries are left. A region is busy until its
/// nodes may be touched by the next worker; all are at the start.
class GridRegions {
public:
    using StopQuery = std::function<bool()>;

    /// What a worker takes: the boundaries between two sets of regions, from now on one set, busy.
    struct Merge {
        std::vector<BoundaryRecord> records; ///< Empty: nothing can be merged now, or a stop was requested.
        std::vector<std::uint32_t> regions;  ///< Of the set.
        std::uint32_t root = 0;
        std::uint32_t stamp = 0; ///< Not below that of any node of the set.
        bool isLast = false;     ///< No boundary is left: the set is the whole grid.
    };

    /// Builds the records, and fills the node lists into `nodes`, which has room for 640 a boundary.
    GridRegions(Kernels::GridLayout const& layout, std::uint32_t* nodes);

    /// The boundaries that nobody has taken; to be called while no worker runs.
    std::vector<BoundaryRecord> const& GetRecords() const { return records; }

    /// Takes the first boundary whose two sets are idle, and with it all others between them. Called by all workers.
    Merge Take(StopQuery const& isStopped);

    /// Hands a region or a merged set back: whoever takes it next sees all that was written to its nodes.
    void SetIdle(std::uint32_t root, std::uint32_t stamp);

    /// Not below the stamp of any node; to be called while no worker runs.
    std::uint32_t GetHighestStamp() const { return *std::max_element(stamps.begin(), stamps.end()); }

private:
    std::uint32_t FindRoot(std::uint32_t region);
    bool IsBusy(std::uint32_t root) const { return busy[root].load(std::memory_order_acquire) != 0; }

    std::atomic<std::uint32_t> lockWord; ///< Guards records, parents and, of idle regions, stamps.
    std::vector<BoundaryRecord> records;
    std::vector<std::uint32_t> parents; ///< Union-find; a root is its own parent.
    std::vector<std::uint32_t> stamps;
    std::unique_ptr<std::atomic<std::uint8_t>[]> busy;
};

} // namespace Velnor::Proc
