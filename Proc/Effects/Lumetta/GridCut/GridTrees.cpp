#include "Proc/Effects/Lumetta/GridCut/GridTrees.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

namespace Velnor::Proc::Kernels {
namespace {

/// Whether an unsaturated edge lets the parent feed the child (source tree), or drain it (sink tree).
/// @param direction  from the child to the parent
template <std::uint8_t Tree>
bool IsLinked(unsigned childLabel, unsigned parentLabel, unsigned direction) {
    if constexpr (Tree == SOURCE)
        return (parentLabel & EdgeFlag(Opposite(direction))) != 0;
    else
        return (childLabel & EdgeFlag(direction)) != 0;
}

constexpr std::uint64_t EACH_BYTE = 0x0101010101010101U;

/// Active nodes and steps between two looks at the controller and at the cost of the paths: a millisecond at most.
constexpr std::uint64_t STEPS_A_LOOK = 1U << 16;

/// Beyond it stamps start anew; what is given until the next look fits.
constexpr std::uint32_t LAST_STAMP = 0xC0000000U;

/// Steps a node from one growth of the trees to the next: at first, and at least. To grow costs as much as a few.
constexpr std::uint64_t FIRST_REGROWTH = 16;
constexpr std::uint64_t SOONEST_REGROWTH = 1;

/// What a path costs in trees grown anew, against what it cost before, if that was worth it.
constexpr double WORTH_IT = 0.75;

/// Takes the lowest direction out of a set of them.
unsigned Pop(unsigned& directions) {
    auto const lowest = static_cast<unsigned>(std::countr_zero(directions));
    directions &= directions - 1;
    return lowest;
}

} // namespace

void OpenEdges(GridNodes const& nodes, std::uint32_t first, std::uint32_t count, int residual) {
    std::uint8_t* const label = nodes.label + first;
    auto const least = static_cast<std::uint16_t>(residual);
    for (std::uint32_t i = 0; i < count; ++i) label[i] &= TREE_MASK;
    for (unsigned direction = 0; direction < 4; ++direction) {
        std::uint16_t const* const capacity = nodes.residual[direction] + first;
        for (std::uint32_t i = 0; i < count; ++i)
            label[i] = static_cast<std::uint8_t>(label[i] | (capacity[i] >= least ? EdgeFlag(direction) : 0));
    }
}

void GridTrees::Activate(std::uint32_t node) {
    if (nodes.nextActive[node] != 0) return;
    nodes.nextActive[node] = node;
    if (block.firstActive == 0)
        block.firstActive = node;
    else
        nodes.nextActive[block.lastActive] = node;
    block.lastActive = node;
}

void GridTrees::ActivateRect(NodeRect const& rect) {
    // The rectangle is whole tiles, so that a row of it is whole groups of eight labels, most of them free.
    for (std::uint32_t y = rect.y0; y < rect.y1; ++y) {
        bool const isInside = y > rect.y0 && y + 1 < rect.y1;
        for (std::uint32_t x = rect.x0; x < rect.x1; x += GridLayout::TILE) {
            std::uint32_t const first = layout.GetNode(x, y);
            if (nodes.GetTrees(first) == 0 || (isInside && IsDeep(first))) continue;
            for (std::uint32_t node = first; node < first + GridLayout::TILE; ++node)
                if (MustBeActive(node)) Activate(node);
        }
    }
}

template <std::uint8_t Tree>
GridTrees::Around GridTrees::LookAround(std::uint32_t node) const {
    unsigned const label = nodes.GetLabel(node);
    auto const& steps = layout.GetSteps(node);
    Around around;
    for (unsigned direction = 0; direction < 4; ++direction) { // without branches: what comes next is anybody's guess
        unsigned const other = nodes.GetLabel(node + steps[direction]);
        unsigned const tree = other & TREE_MASK;
        auto const isLinked = unsigned{IsLinked<Tree>(other, label, Opposite(direction))};
        around.free |= (isLinked & unsigned{tree == FREE}) << direction;
        around.opposed |= (isLinked & unsigned{tree == (SOURCE ^ SINK ^ Tree)}) << direction;
    }
    return around;
}

/// Whether a tile's row and all that touches it are of one tree.
bool GridTrees::IsDeep(std::uint32_t first) const {
    std::uint64_t const tree = nodes.label[first] & TREE_MASK;
    std::uint64_t const trees = nodes.GetTrees(first);
    if (trees != tree * EACH_BYTE) return false; // As at the border of the grid, where there are no more neighbours.
    std::uint32_t const last = first + GridLayout::TILE - 1;
    return nodes.GetTrees(layout.GetNeighbour(first, UP)) == trees &&
           nodes.GetTrees(layout.GetNeighbour(first, DOWN)) == trees &&
           (nodes.GetLabel(layout.GetNeighbour(first, LEFT)) & TREE_MASK) == tree &&
           (nodes.GetLabel(layout.GetNeighbour(last, RIGHT)) & TREE_MASK) == tree;
}

bool GridTrees::MustBeActive(std::uint32_t node) const {
    switch (nodes.GetLabel(node) & TREE_MASK) {
    case SOURCE: {
        Around const around = LookAround<SOURCE>(node);
        return (around.free | around.opposed) != 0;
    }
    case SINK:
        return LookAround<SINK>(node).free != 0;
    default:
        return false;
    }
}

std::vector<std::uint32_t> GridTrees::TakeActive() {
    std::vector<std::uint32_t> active;
    for (std::uint32_t node = block.firstActive; node != 0;) {
        active.push_back(node);
        std::uint32_t const next = nodes.nextActive[node];
        nodes.nextActive[node] = 0;
        node = next == node ? 0 : next;
    }
    block.firstActive = 0;
    return active;
}

void GridTrees::Join(std::span<std::uint32_t const> border, unsigned direction) {
    auto const open = [this](std::uint32_t from, unsigned way) {
        if (nodes.residual[way][from] < threshold) return false;
        nodes.SetLabel(from, nodes.GetLabel(from) | EdgeFlag(way));
        return true;
    };
    auto const wake = [this](std::uint32_t from, std::uint32_t to) {
        unsigned const fromTree = nodes.GetLabel(from) & TREE_MASK;
        unsigned const toTree = nodes.GetLabel(to) & TREE_MASK;
        if (fromTree == SOURCE && toTree != SOURCE) Activate(from);
        if (toTree == SINK && fromTree != SINK) Activate(to);
    };
    for (std::uint32_t const near : border) {
        std::uint32_t const far = layout.GetNeighbour(near, direction);
        if (open(near, direction)) wake(near, far);
        if (open(far, Opposite(direction))) wake(far, near);
    }
}

void GridTrees::CutOff(std::span<std::uint32_t const> border, unsigned direction, std::uint32_t& stamp) {
    now = stamp;
    CutOffTree<SOURCE>(border, direction);
    CutOffTree<SINK>(border, direction);
    stamp = now;
}

template <std::uint8_t Tree>
void GridTrees::CutOffTree(std::span<std::uint32_t const> border, unsigned direction) {
    for (std::uint32_t const node : border)
        if (nodes.parent[node] == direction && (nodes.GetLabel(node) & TREE_MASK) == Tree) AddOrphan(node);
    firstSegment = now + 1; // There is no path: no node has the stamp of one of its segments.
    now += 1 + static_cast<std::uint32_t>(orphans.size());
    AdoptOrphans<Tree>();
}

void GridTrees::Solve(std::uint32_t& stamp, std::span<NodeRect const> area, StopQuery const& isStopped) {
    std::uint64_t nodesCount = 0;
    for (NodeRect const& rect : area) nodesCount += std::uint64_t{rect.x1 - rect.x0} * (rect.y1 - rect.y0);
    now = stamp;
    regrown = watched = effort;
    pause = FIRST_REGROWTH * nodesCount;
    isFresh = false;
    std::uint64_t nextLook = 0;
    for (std::uint64_t grown = 0; block.firstActive != 0; ++grown) {
        if (effort.steps + grown >= nextLook) {
            nextLook = effort.steps + grown + STEPS_A_LOOK;
            if (isStopped()) break;
            if (now > LAST_STAMP) ForgetStamps(area);
            if (AreTangled(nodesCount)) Regrow(area);
        }
        std::uint32_t const node = block.firstActive;
        std::uint32_t const next = nodes.nextActive[node];
        block.firstActive = next == node ? 0 : next;
        // Out of the list before it is looked at: what wakes it meanwhile appends it again.
        nodes.nextActive[node] = 0;
        switch (nodes.GetLabel(node) & TREE_MASK) {
        case SOURCE:
            Grow<SOURCE>(node);
            break;
        case SINK:
            Grow<SINK>(node);
            break;
        default: // freed while it waited
            break;
        }
    }
    stamp = now;
}

/// Whether the trees are to grow anew: after a number of steps that is halved each time when that made paths cheaper,
/// and doubled when it did not.
bool GridTrees::AreTangled(std::uint64_t nodesCount) {
    std::uint64_t const steps = effort.steps - watched.steps;
    if (steps < SOONEST_REGROWTH * nodesCount) return false;
    double const cost = static_cast<double>(steps) / static_cast<double>(effort.paths - watched.paths + 1);
    watched = effort;
    if (std::exchange(isFresh, false))
        pause = cost < WORTH_IT * tangledCost ? std::max(pause / 2, SOONEST_REGROWTH * nodesCount) : 2 * pause;
    if (effort.steps - regrown.steps < pause) return false;
    regrown = effort;
    tangledCost = cost;
    isFresh = true;
    return true;
}

void GridTrees::Regrow(std::span<NodeRect const> area) {
    TakeActive();
    for (NodeRect const& rect : area)
        for (std::uint32_t y = rect.y0; y < rect.y1; ++y)
            for (std::uint32_t x = rect.x0; x < rect.x1; x += GridLayout::TILE) CutDown(layout.GetNode(x, y));
    for (NodeRect const& rect : area) ActivateRect(rect);
}

/// Starts the stamps anew, so that none comes up again while an old one is still on some node.
void GridTrees::ForgetStamps(std::span<NodeRect const> area) {
    for (NodeRect const& rect : area)
        for (std::uint32_t y = rect.y0; y < rect.y1; ++y)
            for (std::uint32_t x = rect.x0; x < rect.x1; x += GridLayout::TILE)
                std::fill_n(nodes.stamp + layout.GetNode(x, y), GridLayout::TILE, 0);
    now = 0;
}

/// Frees the nodes of a tile's row, but for roots.
void GridTrees::CutDown(std::uint32_t first) {
    if (nodes.GetTrees(first) == 0) return;
    for (std::uint32_t node = first; node < first + GridLayout::TILE; ++node) {
        nodes.distance[node] = 0;
        if (nodes.parent[node] == TERMINAL_PARENT) continue;
        nodes.parent[node] = NO_PARENT;
        nodes.SetLabel(node, nodes.GetLabel(node) & ~unsigned{TREE_MASK});
    }
}

template <std::uint8_t Tree>
void GridTrees::Grow(std::uint32_t node) {
    auto const& steps = layout.GetSteps(node);
    while ((nodes.GetLabel(node) & TREE_MASK) == Tree) {
        Around around = LookAround<Tree>(node);
        std::uint32_t const childDistance = nodes.distance[node] + 1;
        while (around.free != 0) {
            unsigned const direction = Pop(around.free);
            std::uint32_t const other = node + steps[direction];
            nodes.SetLabel(other, nodes.GetLabel(other) | Tree);
            nodes.parent[other] = static_cast<std::uint8_t>(Opposite(direction));
            nodes.distance[other] = childDistance;
            Activate(other);
        }
        if (around.opposed == 0) return;
        unsigned const direction = Pop(around.opposed);
        if constexpr (Tree == SOURCE)
            Augment(node, node + steps[direction], direction);
        else
            Augment(node + steps[direction], node, Opposite(direction));
    }
}

void GridTrees::Augment(std::uint32_t source, std::uint32_t sink, unsigned direction) {
    int flow = nodes.residual[direction][source];
    flow = std::min(flow, Trace<SOURCE>(source, sourcePath));
    flow = std::min(flow, Trace<SINK>(sink, sinkPath));

    nodes.Move(source, sink, direction, flow, threshold);
    Push<SOURCE>(sourcePath, flow);
    AdoptOrphans<SOURCE>();
    Push<SINK>(sinkPath, flow);
    AdoptOrphans<SINK>();
    block.flow = static_cast<std::uint16_t>(block.flow + flow);
    ++effort.paths;
    effort.steps += sourcePath.size() + sinkPath.size();
}

/// Lists the nodes from one to its root, and returns the least residual on the way, that of the terminal included.
template <std::uint8_t Tree>
int GridTrees::Trace(std::uint32_t node, std::vector<PathNode>& path) const {
    path.clear();
    int least = std::numeric_limits<int>::max();
    for (;;) {
        unsigned const up = nodes.parent[node];
        path.push_back({node, up});
        if (up == TERMINAL_PARENT) return std::min<int>(least, nodes.terminal[node]);
        std::uint32_t const parent = layout.GetNeighbour(node, up);
        int const residual = Tree == SOURCE ? nodes.residual[Opposite(up)][parent] : nodes.residual[up][node];
        least = std::min(least, residual);
        node = parent;
    }
}

/// Pushes flow along a path, and lists the orphans that it makes, the nearest to the root last.
template <std::uint8_t Tree>
void GridTrees::Push(std::vector<PathNode> const& path, int flow) {
    auto distance = static_cast<std::uint32_t>(path.size());
    for (std::size_t i = 0; i + 1 < path.size(); ++i) {
        auto const [node, up] = path[i];
        std::uint32_t const parent = path[i + 1].node;
        nodes.distance[node] = --distance;
        // The flow comes down to the node in the source tree, and goes up from it in the sink tree.
        bool const isOpen = Tree == SOURCE ? nodes.Move(parent, node, Opposite(up), flow, threshold)
                                           : nodes.Move(node, parent, up, flow, threshold);
        if (!isOpen) AddOrphan(node);
    }
    std::uint32_t const root = path.back().node;
    nodes.distance[root] = 0;
    nodes.terminal[root] = static_cast<std::int16_t>(nodes.terminal[root] - flow);
    if (nodes.terminal[root] == 0) AddOrphan(root);
    if (!orphans.empty()) StampSegments(path);
}

/// Gives the nodes of a path the stamp of their segment: up to an orphan and with it, or above the last.
void GridTrees::StampSegments(std::vector<PathNode> const& path) {
    firstSegment = ++now;
    std::size_t passed = 0;
    for (PathNode const& step : path) {
        nodes.stamp[step.node] = now;
        if (passed == orphans.size() || step.node != orphans[passed]) continue;
        ++passed;
        ++now;
    }
}

/// The last orphan first, and before the one below it all orphans that come of it: what of the path's segment below the
/// orphan is then left in the tree has a root.
template <std::uint8_t Tree>
void GridTrees::AdoptOrphans() {
    rooted = now; // Above the last orphan the path has kept its root.
    rootedFrom = now;
    while (!orphans.empty()) {
        std::uint32_t const orphan = orphans.back();
        orphans.pop_back();
        // An earlier one may have found its way through this, or freed it.
        if ((nodes.GetLabel(orphan) & TREE_MASK) == Tree && nodes.parent[orphan] == NO_PARENT) Adopt<Tree>(orphan);
        rootedFrom = std::min(rootedFrom, firstSegment + static_cast<std::uint32_t>(orphans.size()));
    }
}

/// Searches for the nearest node that has a root and from which the orphan can be fed, or drained. What it meets on the
/// way has lost its root too; if there is nothing else, all of that is free.
template <std::uint8_t Tree>
void GridTrees::Adopt(std::uint32_t orphan) {
    visited = ++now;
    rootless = ++now;
    met.assign(1, orphan);
    nodes.stamp[orphan] = visited;
    for (std::size_t at = 0; at < met.size(); ++at) {
        unsigned const direction = FindRoot<Tree>(met[at]);
        ++effort.steps;
        if (direction != NO_PARENT) return TurnParents(orphan, met[at], direction);
    }
    for (std::uint32_t const node : met) {
        nodes.SetLabel(node, nodes.GetLabel(node) & ~unsigned{TREE_MASK});
        nodes.parent[node] = NO_PARENT;
    }
    for (std::uint32_t const node : met) LeaveTree<Tree>(node);
}

/// The direction of the neighbour that has a root and could be the node's parent, the nearest to its root of several;
/// NO_PARENT if there is none. The others that could be its parent, but for want of a root, are put among those to ask.
template <std::uint8_t Tree>
unsigned GridTrees::FindRoot(std::uint32_t node) {
    unsigned const label = nodes.GetLabel(node);
    auto const& steps = layout.GetSteps(node);
    std::uint32_t nearest = std::numeric_limits<std::uint32_t>::max();
    unsigned best = NO_PARENT;
    for (unsigned direction = 0; direction < 4; ++direction) {
        std::uint32_t const other = node + steps[direction];
        unsigned const otherLabel = nodes.GetLabel(other);
        // What no edge leads to may be another worker's.
        if ((otherLabel & TREE_MASK) != Tree || !IsLinked<Tree>(label, otherLabel, direction)) continue;
        if (nodes.stamp[other] == visited) continue;
        if (!HasRoot(other)) {
            nodes.stamp[other] = visited;
            nodes.cameFrom[other] = node;
            met.push_back(other);
        } else if (nodes.distance[other] < nearest) {
            nearest = nodes.distance[other];
            best = direction;
        }
    }
    return best;
}

/// Makes the neighbour in that direction the parent of a node that was met, the node that of the one before it, and so
/// on to the orphan. What hangs on any of them stays where it is.
void GridTrees::TurnParents(std::uint32_t orphan, std::uint32_t node, unsigned direction) {
    std::uint32_t parent = layout.GetNeighbour(node, direction);
    for (;;) {
        nodes.parent[node] = static_cast<std::uint8_t>(direction);
        nodes.distance[node] = nodes.distance[parent] + 1;
        nodes.stamp[node] = rooted;
        if (node == orphan) return;
        parent = node;
        node = nodes.cameFrom[parent];
        auto const& steps = layout.GetSteps(node);
        for (direction = 0; node + steps[direction] != parent; ++direction) {
        }
    }
}

/// Makes orphans of the children of a freed node, and wakes what could grow into it: of the other tree alone, since all
/// of this tree that could was freed with it. An active node may have been meant to find that, and it may be this one.
template <std::uint8_t Tree>
void GridTrees::LeaveTree(std::uint32_t node) {
    unsigned const label = nodes.GetLabel(node);
    auto const& steps = layout.GetSteps(node);
    for (unsigned direction = 0; direction < 4; ++direction) {
        std::uint32_t const other = node + steps[direction];
        unsigned const otherLabel = nodes.GetLabel(other);
        unsigned const tree = otherLabel & TREE_MASK;
        if (tree == FREE || !IsLinked<Tree>(otherLabel, label, Opposite(direction))) continue;
        if (tree != Tree) {
            Activate(other);
        } else if (nodes.parent[other] == Opposite(direction)) {
            AddOrphan(other);
        }
    }
}

void GridTrees::AddOrphan(std::uint32_t node) {
    nodes.parent[node] = NO_PARENT;
    orphans.push_back(node);
}

/// Whether the node's tree path ends at a terminal. The nodes on it remember, and if it does their distance too: until
/// the last orphan is adopted nothing loses its root any more.
bool GridTrees::HasRoot(std::uint32_t node) {
    std::uint32_t at = node;
    std::uint32_t steps = 0;
    for (;; ++steps) {
        unsigned const up = nodes.parent[at];
        std::uint32_t const stamp = nodes.stamp[at];
        if (up == TERMINAL_PARENT || IsRooted(stamp)) break;
        if (up == NO_PARENT || stamp == visited || stamp == rootless) {
            effort.steps += steps;
            for (; node != at; node = layout.GetNeighbour(node, nodes.parent[node])) nodes.stamp[node] = rootless;
            return false;
        }
        at = layout.GetNeighbour(at, up);
    }
    effort.steps += steps;
    for (std::uint32_t distance = nodes.distance[at] + steps; node != at; --distance) {
        nodes.distance[node] = distance;
        nodes.stamp[node] = rooted;
        node = layout.GetNeighbour(node, nodes.parent[node]);
    }
    return true;
}

} // namespace Velnor::Proc::Kernels
