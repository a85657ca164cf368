#include "Proc/Effects/Lumetta/Kernels/GridTrees.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

namespace Velnor::Proc::Kernels {
namespace {

constexpr std::uint32_t SPACING = 16;
constexpr std::uint32_t NOWHERE = std::numeric_limits<std::uint32_t>::max();

/// Whether an unsaturated edge lets the parent feed the child (source tree), or drain it (sink tree).
/// @param direction  from the child to the parent
template <std::uint8_t Tree>
bool IsLinked(unsigned childLabel, unsigned parentLabel, unsigned direction) {
    if constexpr (Tree == SOURCE)
        return (parentLabel & EdgeFlag(Opposite(direction))) != 0;
    else
        return (childLabel & EdgeFlag(direction)) != 0;
}

/// Takes the lowest direction out of a set of them.
unsigned Pop(unsigned& directions) {
    auto const lowest = static_cast<unsigned>(std::countr_zero(directions));
    directions &= directions - 1;
    return lowest;
}

} // namespace

void GridTrees::Activate(std::uint32_t node) {
    if (nodes.nextActive[node] != 0) return;
    nodes.nextActive[node] = node;
    if (block.firstActive == 0)
        block.firstActive = node;
    else
        nodes.nextActive[block.lastActive] = node;
    block.lastActive = node;
}

/// Appends the nodes of a rectangle that an unsaturated edge joins to a node of another state. A sink node that touches
/// only source nodes is left to them.
void GridTrees::ActivateRect(NodeRect const& rect) {
    auto const mustBeActive = [this](std::uint32_t node) {
        unsigned const label = nodes.GetLabel(node);
        unsigned const tree = label & TREE_MASK;
        for (unsigned direction = 0; tree != FREE && direction < 4; ++direction) {
            unsigned const other = nodes.GetLabel(layout.GetNeighbour(node, direction));
            bool const isOpen = tree == SOURCE
                                    ? (label & EdgeFlag(direction)) != 0 && (other & TREE_MASK) != SOURCE
                                    : (other & EdgeFlag(Opposite(direction))) != 0 && (other & TREE_MASK) == FREE;
            if (isOpen) return true;
        }
        return false;
    };
    // The rectangle is whole tiles, so that a row of it is whole groups of eight labels, most of them free.
    for (std::uint32_t y = rect.y0; y < rect.y1; ++y) {
        for (std::uint32_t x = rect.x0; x < rect.x1; x += GridLayout::TILE) {
            std::uint32_t const first = layout.GetNode(x, y);
            std::uint64_t labels = 0;
            std::memcpy(&labels, nodes.label + first, sizeof labels);
            if ((labels & 0x0303030303030303U) == 0) continue;
            for (std::uint32_t node = first; node < first + GridLayout::TILE; ++node)
                if (mustBeActive(node)) Activate(node);
        }
    }
}

void GridTrees::SolveRect(NodeRect const& rect, int residual, std::uint32_t& stamp) {
    SetThreshold(rect, residual);
    ActivateRect(rect);
    Solve(stamp);
}

void GridTrees::SetThreshold(NodeRect const& rect, int residual) {
    threshold = residual;
    for (std::uint32_t y = rect.y0; y < rect.y1; ++y) {
        for (std::uint32_t x = rect.x0; x < rect.x1; ++x) {
            std::uint32_t const node = layout.GetNode(x, y);
            unsigned open = 0;
            if (x + 1 < rect.x1 && nodes.residual[RIGHT][node] >= residual) open |= EdgeFlag(RIGHT);
            if (y + 1 < rect.y1 && nodes.residual[DOWN][node] >= residual) open |= EdgeFlag(DOWN);
            if (y > rect.y0 && nodes.residual[UP][node] >= residual) open |= EdgeFlag(UP);
            if (x > rect.x0 && nodes.residual[LEFT][node] >= residual) open |= EdgeFlag(LEFT);
            nodes.SetLabel(node, (nodes.GetLabel(node) & TREE_MASK) | open);
        }
    }
}

void GridTrees::Solve(std::uint32_t& stamp) {
    now = stamp;
    while (block.firstActive != 0) {
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
        around.same |= (isLinked & unsigned{tree == Tree}) << direction;
        around.opposed |= (isLinked & unsigned{tree == (SOURCE ^ SINK ^ Tree)}) << direction;
    }
    return around;
}

template <std::uint8_t Tree>
void GridTrees::Grow(std::uint32_t node) {
    auto const& steps = layout.GetSteps(node);
    while ((nodes.GetLabel(node) & TREE_MASK) == Tree) {
        Around around = LookAround<Tree>(node);
        std::uint32_t const childDistance = nodes.distance[node] + SPACING;
        while (around.free != 0) {
            unsigned const direction = Pop(around.free);
            std::uint32_t const other = node + steps[direction];
            nodes.SetLabel(other, nodes.GetLabel(other) | Tree);
            nodes.parent[other] = static_cast<std::uint8_t>(Opposite(direction));
            nodes.distance[other] = childDistance;
            Activate(other);
        }
        while (around.same != 0) {
            unsigned const direction = Pop(around.same);
            std::uint32_t const other = node + steps[direction];
            if (nodes.distance[other] <= childDistance) continue;
            nodes.parent[other] = static_cast<std::uint8_t>(Opposite(direction)); // a shorter way to the root
            nodes.distance[other] = childDistance;
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
    ++now;
    int flow = nodes.residual[direction][source];
    flow = FindBottleneck<SOURCE>(source, flow);
    flow = FindBottleneck<SINK>(sink, flow);

    unsigned const back = Opposite(direction);
    auto& forth = nodes.residual[direction][source];
    auto& reverse = nodes.residual[back][sink];
    forth = static_cast<std::uint16_t>(forth - flow);
    reverse = static_cast<std::uint16_t>(reverse + flow);
    if (reverse >= threshold) nodes.SetLabel(sink, nodes.GetLabel(sink) | EdgeFlag(back));
    if (forth < threshold) nodes.SetLabel(source, nodes.GetLabel(source) & ~unsigned{EdgeFlag(direction)});

    Push<SOURCE>(source, flow);
    AdoptOrphans<SOURCE>();
    Push<SINK>(sink, flow);
    AdoptOrphans<SINK>();
    block.flow = static_cast<std::uint16_t>(block.flow + flow);
}

template <std::uint8_t Tree>
int GridTrees::FindBottleneck(std::uint32_t node, int flow) const {
    for (;;) {
        unsigned const up = nodes.parent[node];
        if (up == TERMINAL_PARENT) return std::min<int>(flow, nodes.terminal[node]);
        std::uint32_t const parent = layout.GetNeighbour(node, up);
        int const residual = Tree == SOURCE ? nodes.residual[Opposite(up)][parent] : nodes.residual[up][node];
        flow = std::min(flow, residual);
        node = parent;
    }
}

template <std::uint8_t Tree>
void GridTrees::Push(std::uint32_t node, int flow) {
    block.level = NOWHERE;
    for (;;) {
        unsigned const up = nodes.parent[node];
        if (up == TERMINAL_PARENT) break;
        unsigned const down = Opposite(up);
        std::uint32_t const parent = layout.GetNeighbour(node, up);
        // The flow comes down to the node in the source tree, and goes up from it in the sink tree.
        std::uint32_t const from = Tree == SOURCE ? parent : node;
        std::uint32_t const to = Tree == SOURCE ? node : parent;
        unsigned const forth = Tree == SOURCE ? down : up;
        auto& left = nodes.residual[forth][from];
        auto& gained = nodes.residual[Opposite(forth)][to];
        left = static_cast<std::uint16_t>(left - flow);
        gained = static_cast<std::uint16_t>(gained + flow);
        if (gained >= threshold) nodes.SetLabel(to, nodes.GetLabel(to) | EdgeFlag(Opposite(forth)));
        if (left < threshold) {
            nodes.SetLabel(from, nodes.GetLabel(from) & ~unsigned{EdgeFlag(forth)});
            AddOrphan(node);
        }
        node = parent;
    }
    nodes.terminal[node] = static_cast<std::int16_t>(nodes.terminal[node] - flow);
    if (nodes.terminal[node] == 0) AddOrphan(node);
}

void GridTrees::AddOrphan(std::uint32_t node) {
    std::uint32_t const level = nodes.distance[node] / SPACING;
    if (level >= buckets.size()) buckets.resize(level + level / 2 + 64);
    nodes.parent[node] = NO_PARENT;
    nodes.nextOrphan[node] = buckets[level];
    buckets[level] = node;
    block.level = std::min(block.level, level);
    ++block.orphans;
}

template <std::uint8_t Tree>
void GridTrees::AdoptOrphans() {
    while (block.orphans != 0) {
        while (buckets[block.level] == 0) ++block.level;
        std::uint32_t const orphan = buckets[block.level];
        buckets[block.level] = nodes.nextOrphan[orphan];
        --block.orphans;
        Adopt<Tree>(orphan);
    }
}

/// Gives an orphan the nearest parent, or frees it. What could grow into it then wakes up, in the other tree too: an active
/// node of this tree may have been meant to find that, and it may be this one.
template <std::uint8_t Tree>
void GridTrees::Adopt(std::uint32_t orphan) {
    unsigned const label = nodes.GetLabel(orphan);
    auto const& steps = layout.GetSteps(orphan);
    std::uint32_t nearest = NOWHERE;
    unsigned best = NO_PARENT;
    unsigned children = 0;
    unsigned wake = 0; // can feed the orphan, or from the other tree reach it
    for (unsigned direction = 0; direction < 4; ++direction) {
        std::uint32_t const other = orphan + steps[direction];
        unsigned const otherLabel = nodes.GetLabel(other);
        unsigned const tree = otherLabel & TREE_MASK;
        bool const isFed = IsLinked<Tree>(otherLabel, label, Opposite(direction));
        bool const canFeed = IsLinked<Tree>(label, otherLabel, direction);
        if (tree != Tree) {
            wake |= unsigned{isFed && tree != FREE} << direction;
            continue;
        }
        if (!isFed && !canFeed) continue; // it may be another worker's
        unsigned const up = nodes.parent[other];
        bool const isChild = up == Opposite(direction);
        children |= unsigned{isChild} << direction;
        wake |= unsigned{canFeed} << direction;
        if (!canFeed || isChild || up == NO_PARENT) continue;
        std::uint32_t const distance = nodes.distance[other];
        if (distance >= nearest || !HasRoot(other)) continue;
        nearest = distance;
        best = direction;
    }
    if (best == NO_PARENT) {
        while (children != 0) AddOrphan(orphan + steps[Pop(children)]);
        nodes.SetLabel(orphan, label & ~unsigned{TREE_MASK});
        while (wake != 0) Activate(orphan + steps[Pop(wake)]);
        return;
    }
    nodes.parent[orphan] = static_cast<std::uint8_t>(best);
    if (nearest < nodes.distance[orphan]) {
        nodes.distance[orphan] = std::min(nodes.distance[orphan], nearest + SPACING);
        return;
    }
    nodes.distance[orphan] = nearest + 1;
    nodes.stamp[orphan] = now;
    while (children != 0) {
        std::uint32_t const child = orphan + steps[Pop(children)];
        if (nodes.distance[child] <= nearest + 1) AddOrphan(child);
    }
}

/// Whether the node's tree path ends at a terminal. No orphan is nearer than the current level, and paths only come
/// nearer; a node that is seen to have a root keeps it until the last orphan is adopted.
bool GridTrees::HasRoot(std::uint32_t node) const {
    std::uint32_t at = node;
    for (;;) {
        unsigned const up = nodes.parent[at];
        if (nodes.distance[at] / SPACING < block.level || up == TERMINAL_PARENT || nodes.stamp[at] == now) break;
        if (up == NO_PARENT) return false;
        at = layout.GetNeighbour(at, up);
    }
    for (; node != at; node = layout.GetNeighbour(node, nodes.parent[node])) nodes.stamp[node] = now;
    return true;
}

} // namespace Velnor::Proc::Kernels
