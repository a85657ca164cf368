#pragma once

#include "Proc/Effects/Lumetta/GridCut/GridLayout.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <span>
#include <vector>

namespace Velnor::Proc::Kernels {

/// Which search tree a node belongs to: bits 0 and 1 of its label.
inline constexpr std::uint8_t FREE = 0;
inline constexpr std::uint8_t SOURCE = 1;
inline constexpr std::uint8_t SINK = 2;
inline constexpr std::uint8_t TREE_MASK = 3;

/// Values of a node's parent beside the four directions.
inline constexpr std::uint8_t NO_PARENT = 4;
inline constexpr std::uint8_t TERMINAL_PARENT = 5;

/// The arrays of the nodes, indexed by GridLayout::GetNode.
struct GridNodes {
    std::uint8_t* label = nullptr;            ///< Tree, and an EdgeFlag for each direction that is open.
    std::uint8_t* parent = nullptr;           ///< Direction of the parent in the tree, or one of the two values above.
    std::array<std::uint16_t*, 4> residual{}; ///< Residual capacity in each direction.
    std::int16_t* terminal = nullptr;         ///< Residual capacity of the link to the terminal of the node's tree.
    std::uint32_t* nextActive = nullptr;      ///< 0 = in no list; the last member links to itself.
    std::uint32_t* cameFrom = nullptr;        ///< The node before this one on the search for a root.
    std::uint32_t* distance = nullptr;        ///< Steps to the root, as last counted.
    std::uint32_t* stamp = nullptr;           ///< What was last found out about the node, and when; see GridTrees.

    /// Labels along a region's side are read by the worker of the neighbouring region too, which then finds no edge
    /// flag between the regions set and looks no further. No order is needed for that, only that the bytes are whole.
    std::uint8_t GetLabel(std::uint32_t node) const {
        return std::atomic_ref(label[node]).load(std::memory_order_relaxed);
    }
    void SetLabel(std::uint32_t node, unsigned value) const {
        std::atomic_ref(label[node]).store(static_cast<std::uint8_t>(value), std::memory_order_relaxed);
    }

    /// The trees of a tile's row, a byte each.
    std::uint64_t GetTrees(std::uint32_t first) const {
        std::uint64_t labels = 0;
        std::memcpy(&labels, label + first, sizeof labels);
        return labels & (std::uint64_t{TREE_MASK} * 0x0101010101010101U);
    }

    /// Moves flow along the edge from a node to its neighbour in that direction: less is left of the edge, more of its
    /// reverse. Returns whether the edge stays open, which takes `least` of residual capacity.
    bool Move(std::uint32_t from, std::uint32_t to, unsigned direction, int flow, int least) const {
        unsigned const back = Opposite(direction);
        auto& left = residual[direction][from];
        auto& gained = residual[back][to];
        left = static_cast<std::uint16_t>(left - flow);
        gained = static_cast<std::uint16_t>(gained + flow);
        if (gained >= least) SetLabel(to, GetLabel(to) | EdgeFlag(back));
        if (left >= least) return true;
        SetLabel(from, GetLabel(from) & ~unsigned{EdgeFlag(direction)});
        return false;
    }
};

/// Opens those edges of a run of nodes that have at least this residual capacity, and closes their others. What is
/// closed is passed over by GridTrees.
void OpenEdges(GridNodes const& nodes, std::uint32_t first, std::uint32_t count, int residual);

/// What one worker keeps between the regions that it solves; 96 bytes apart, so no two share a cache line.
struct GridWorkerBlock {
    std::uint32_t firstActive = 0; ///< 0 = the list is empty.
    std::uint32_t lastActive = 0;
    std::uint32_t rowStep = 0; ///< GridLayout::GetRowStep.
    std::uint16_t flow = 0;    ///< Modulo 2^16.
};
static_assert(sizeof(GridWorkerBlock) <= 32);

/// Maximum flow by two search trees that grow towards each other (Boykov, Kolmogorov: An experimental comparison of
/// min-cut/max-flow algorithms, PAMI 2004), on the part of the grid that the edge flags connect to the active nodes.
///
/// Where that paper takes a branch that lost its root apart, node by node, and grows most of it again from another
/// side, the branch is turned here: a search from the orphan, within the branch, finds the nearest place where it
/// touches the rest of the tree, and only the parents on the way there change direction: on photographs a twentieth of
/// the nodes. Distances are guesses that keep paths short; nothing else depends on them.
///
/// A branch turned again and again winds through the grid, and each path along it costs more than the last. So when
/// some steps a node have been spent the trees are cut down to their roots and grow anew, breadth first: the sooner
/// again the more paths cost less for it.
class GridTrees {
public:
    using StopQuery = std::function<bool()>;

    /// @param residual  as of SetThreshold
    GridTrees(GridLayout const& gridLayout, GridNodes const& gridNodes, GridWorkerBlock& workerBlock, int residual)
        : layout(gridLayout), nodes(gridNodes), block(workerBlock), threshold(residual) {}

    /// @param residual  capacity from which edges are open; that of the last OpenEdges
    void SetThreshold(int residual) { threshold = residual; }

    /// Appends a node to the active list, once.
    void Activate(std::uint32_t node);

    /// Appends the nodes of a rectangle of whole tiles that an open edge joins to a node of another state. A sink node
    /// that touches only source nodes is left to them.
    void ActivateRect(NodeRect const& rect);

    /// Empties the active list.
    std::vector<std::uint32_t> TakeActive();

    /// Opens the edges, both ways, between these nodes and their neighbours in that direction as far as the threshold
    /// allows, and activates what they join to a node of another state.
    void Join(std::span<std::uint32_t const> border, unsigned direction);

    /// Finds parents elsewhere for these nodes if they have them in that direction, where the edges were closed.
    /// @param stamp  as of Solve
    void CutOff(std::span<std::uint32_t const> border, unsigned direction, std::uint32_t& stamp);

    /// Grows and augments until no active node is left: no open edge then leads from the source tree out of it, or into
    /// the sink tree from outside.
    /// @param stamp      of the region; at least the stamp of each of its nodes. Raised with each search.
    /// @param area       rectangles of whole tiles: the nodes that are connected by edges, and not by any to others
    /// @param isStopped  asked once in a while; ends it early, the rest in the active list
    void Solve(std::uint32_t& stamp, std::span<NodeRect const> area, StopQuery const& isStopped);

    /// Cuts the trees in an area, as of Solve, down to their roots, and activates those that can grow.
    void Regrow(std::span<NodeRect const> area);

private:
    struct PathNode {
        std::uint32_t node;
        std::uint32_t up; ///< Direction of the parent.
    };

    /// Sets of directions, a bit each, in which a tree could grow from a node.
    struct Around {
        unsigned free = 0;    ///< Towards free nodes.
        unsigned opposed = 0; ///< Towards the other tree.
    };

    /// What was spent on paths.
    struct Effort {
        std::uint64_t steps = 0; ///< From node to node: along paths, up to roots, around orphans.
        std::uint64_t paths = 0;
    };

    bool AreTangled(std::uint64_t nodesCount);
    void CutDown(std::uint32_t first);
    void ForgetStamps(std::span<NodeRect const> area);
    bool IsDeep(std::uint32_t first) const;
    bool MustBeActive(std::uint32_t node) const;
    template <std::uint8_t Tree>
    void CutOffTree(std::span<std::uint32_t const> border, unsigned direction);
    template <std::uint8_t Tree>
    Around LookAround(std::uint32_t node) const;
    template <std::uint8_t Tree>
    void Grow(std::uint32_t node);
    void Augment(std::uint32_t source, std::uint32_t sink, unsigned direction);
    template <std::uint8_t Tree>
    int Trace(std::uint32_t node, std::vector<PathNode>& path) const;
    template <std::uint8_t Tree>
    void Push(std::vector<PathNode> const& path, int flow);
    void StampSegments(std::vector<PathNode> const& path);
    template <std::uint8_t Tree>
    void AdoptOrphans();
    template <std::uint8_t Tree>
    void Adopt(std::uint32_t orphan);
    template <std::uint8_t Tree>
    unsigned FindRoot(std::uint32_t node);
    void TurnParents(std::uint32_t orphan, std::uint32_t node, unsigned direction);
    template <std::uint8_t Tree>
    void LeaveTree(std::uint32_t node);
    void AddOrphan(std::uint32_t node);
    bool HasRoot(std::uint32_t node);
    /// Whether the stamp is of a node that is known to have a root.
    bool IsRooted(std::uint32_t stamp) const { return stamp - rootedFrom <= rooted - rootedFrom; }

    GridLayout const& layout;
    GridNodes const nodes;
    GridWorkerBlock& block;
    int threshold;
    std::uint32_t now = 0;          ///< The last stamp given.
    std::uint32_t firstSegment = 0; ///< Stamp of the path's nodes up to the first orphan; beyond it, the next.
    std::uint32_t rooted = 0;       ///< Stamp of a node that is known to have a root.
    std::uint32_t rootedFrom = 0;   ///< So are those from this one on: of nodes on the path.
    std::uint32_t visited = 0;      ///< Stamp of a node that was met on the current search.
    std::uint32_t rootless = 0;     ///< Stamp of a node that is known to hang on an orphan or on one that was met.
    Effort effort;                  ///< Since the start.
    Effort regrown;                 ///< When the trees were last cut down.
    Effort watched;                 ///< When the cost of a path was last looked at.
    std::uint64_t pause = 0;        ///< Steps until they are cut down again.
    bool isFresh = false;           ///< They were when the cost was last looked at,
    double tangledCost = 0;         ///< and then it had been this before.
    std::vector<PathNode> sourcePath;
    std::vector<PathNode> sinkPath;
    std::vector<std::uint32_t> orphans; ///< Nearest to the root last.
    std::vector<std::uint32_t> met;     ///< On the current search, in the order of their distance from the orphan.
};

} // namespace Velnor::Proc::Kernels
