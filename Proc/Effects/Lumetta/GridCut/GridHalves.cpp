#include "Proc/Effects/Lumetta/GridCut/GridHalves.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <thread>

namespace Velnor::Proc {
namespace {

constexpr std::uint32_t TILE = Kernels::GridLayout::TILE;

/// A bound for pictures on which each round finds a little, as one with many small objects. On a photograph of 12
/// megapixels some ten do most of the work, and then `lead` ends them.
constexpr unsigned ROUNDS = 64;

/// With fewer active nodes a round is not worth its threads: with 10 left, each side has 5 paths to find, some
/// microseconds each, and two threads are woken for them.
constexpr std::size_t LEAST_ACTIVE = 16;

/// Of so many nodes one is active, or more, where much is left to do: on a comb of 4 megapixels whose teeth end in thin
/// edges 85 000 are, all of their flow has to cross the first line, and trees that were cut along it in vain take four
/// times as long as fresh ones. On photographs it is one of several thousand.
constexpr std::uint32_t MANY_ACTIVE = 500;

/// Active nodes to draw a line by. Of 50 000 that lie along an edge every 49th is looked at: their median is then
/// within a few nodes of the true one, where any place near the middle would do.
constexpr std::size_t SAMPLES = 1024;

} // namespace

GridHalves::GridHalves(Kernels::GridLayout const& gridLayout, Kernels::GridNodes const& gridNodes, WorkerTeam& workers,
                       Kernels::GridWorkerBlock& first, Kernels::GridWorkerBlock& second,
                       Kernels::GridTrees::StopQuery stopQuery)
    : layout(gridLayout),
      nodes(gridNodes),
      team(workers),
      isStopped(std::move(stopQuery)),
      isShared(team.GetCount() > 1 && std::thread::hardware_concurrency() > 1 &&
               layout.GetNodesCount() > 2 * layout.GetRegionSide() * layout.GetRegionSide()),
      sides{Side{{layout, nodes, first, 1}, first}, Side{{layout, nodes, second, 1}, second}} {}

/// Calls `work` with 0 on one worker and, if there are to be two, with 1 on another.
void GridHalves::RunSides(bool areTwo, std::function<void(std::size_t)> const& work) { team.Run(areTwo ? 2 : 1, work); }

/// Opens the edges that have at least this residual capacity, and activates what open edges join to a node of another
/// state.
void GridHalves::Open(int residual) {
    std::uint32_t const width = layout.GetPaddedWidth();
    std::uint32_t const height = layout.GetPaddedHeight();
    std::uint32_t const middle = isShared ? height / 2 / TILE * TILE : height;
    std::array const rects{Kernels::NodeRect{0, 0, width, middle}, Kernels::NodeRect{0, middle, width, height}};
    RunSides(isShared, [&](std::size_t number) {
        Kernels::NodeRect const& rect = rects[number];
        Kernels::OpenEdges(nodes, layout.GetNode(0, rect.y0), width * (rect.y1 - rect.y0), residual);
        sides[number].trees.SetThreshold(residual);
    });
    // After all edges are open: along the middle each looks at labels of both.
    RunSides(isShared, [&](std::size_t number) { sides[number].trees.ActivateRect(rects[number]); });
    for (std::uint32_t const node : sides[1].trees.TakeActive()) sides[0].trees.Activate(node);
}

void GridHalves::Solve(int residual, std::uint32_t& stamp) {
    Open(residual);
    std::vector<std::uint32_t> active = sides[0].trees.TakeActive();
    std::size_t left = 0; // of them by the side that was stopped: there is more to do than where the line was opened
    int lead = 0;         // of useful rounds over the others
    bool isCutInVain = false;
    for (unsigned round = 0; isShared && !isStopped() && round < ROUNDS && lead >= 0 && active.size() >= LEAST_ACTIVE;
         ++round) {
        Line const line = DrawLine(std::span(active).first(left > 0 ? left : active.size()));
        for (std::uint32_t const node : active) sides[IsBeyond(node, line) ? 1 : 0].trees.Activate(node);
        std::vector<std::uint32_t> const border = ListBorder(line);
        lead = SolveSides(border, line, stamp) ? std::min(lead + 1, 2) : lead - 1;
        isCutInVain = round == 0 && lead < 0;

        active = sides[0].trees.TakeActive();
        std::ranges::copy(sides[1].trees.TakeActive(), std::back_inserter(active));
        left = active.size();
        sides[0].trees.Join(border, line.GetDirection());
        std::ranges::copy(sides[0].trees.TakeActive(), std::back_inserter(active));
    }
    for (std::uint32_t const node : active) sides[0].trees.Activate(node);
    std::array const whole{Kernels::NodeRect{0, 0, layout.GetPaddedWidth(), layout.GetPaddedHeight()}};
    RunSides(false, [&](std::size_t) {
        if (isCutInVain && active.size() > layout.GetNodesCount() / MANY_ACTIVE) sides[0].trees.Regrow(whole);
        sides[0].trees.Solve(stamp, whole, isStopped);
    });
}

/// Through the median of the active nodes, across the direction in which they are spread most.
GridHalves::Line GridHalves::DrawLine(std::span<std::uint32_t const> active) const {
    std::vector<std::uint32_t> columns;
    std::vector<std::uint32_t> rows;
    std::size_t const step = 1 + active.size() / SAMPLES;
    for (std::size_t i = 0; i < active.size(); i += step) {
        columns.push_back(layout.GetX(active[i]));
        rows.push_back(layout.GetY(active[i]));
    }
    std::ranges::sort(columns);
    std::ranges::sort(rows);
    auto const spread = [](std::vector<std::uint32_t> const& sorted) {
        return sorted[sorted.size() * 3 / 4] - sorted[sorted.size() / 4];
    };
    std::uint32_t const width = layout.GetPaddedWidth();
    std::uint32_t const height = layout.GetPaddedHeight();
    bool const isUpright = height == TILE || (width > TILE && spread(columns) > spread(rows));
    std::vector<std::uint32_t> const& sorted = isUpright ? columns : rows;
    std::uint32_t const median = sorted[sorted.size() / 2] / TILE * TILE;
    return {isUpright, std::clamp(median, TILE, (isUpright ? width : height) - TILE)};
}

bool GridHalves::IsBeyond(std::uint32_t node, Line const& line) const {
    return (line.isUpright ? layout.GetX(node) : layout.GetY(node)) >= line.at;
}

/// The nodes on one side of a line.
Kernels::NodeRect GridHalves::GetSide(Line const& line, std::size_t number) const {
    Kernels::NodeRect rect{0, 0, layout.GetPaddedWidth(), layout.GetPaddedHeight()};
    if (number == 0)
        (line.isUpright ? rect.x1 : rect.y1) = line.at;
    else
        (line.isUpright ? rect.x0 : rect.y0) = line.at;
    return rect;
}

/// The nodes just before a line.
std::vector<std::uint32_t> GridHalves::ListBorder(Line const& line) const {
    std::uint32_t const length = line.isUpright ? layout.GetPaddedHeight() : layout.GetPaddedWidth();
    std::vector<std::uint32_t> border(length);
    for (std::uint32_t i = 0; i < length; ++i)
        border[i] = line.isUpright ? layout.GetNode(line.at - 1, i) : layout.GetNode(i, line.at - 1);
    return border;
}

/// Closes the line, and solves both sides until one has nothing left to do. Returns whether either found some flow:
/// where all of it has to cross the line, as on a picture without features, rounds would only move the trees about.
bool GridHalves::SolveSides(std::span<std::uint32_t const> border, Line const& line, std::uint32_t& stamp) {
    unsigned const direction = line.GetDirection();
    unsigned const opposite = Kernels::Opposite(direction);
    std::vector<std::uint32_t> beyond;
    for (std::uint32_t const near : border) {
        std::uint32_t const far = layout.GetNeighbour(near, direction);
        nodes.SetLabel(near, nodes.GetLabel(near) & ~unsigned{Kernels::EdgeFlag(direction)});
        nodes.SetLabel(far, nodes.GetLabel(far) & ~unsigned{Kernels::EdgeFlag(opposite)});
        beyond.push_back(far);
    }
    std::array const flows{sides[0].block.flow, sides[1].block.flow};
    std::atomic<bool> isOneDone = false;
    RunSides(true, [&](std::size_t number) {
        Side& side = sides[number];
        side.stamp = stamp;
        if (number == 0)
            side.trees.CutOff(border, direction, side.stamp);
        else
            side.trees.CutOff(beyond, opposite, side.stamp);
        side.trees.Solve(side.stamp, std::array{GetSide(line, number)},
                         [&] { return isOneDone.load() || isStopped(); });
        isOneDone.store(true);
    });
    stamp = std::max(sides[0].stamp, sides[1].stamp);
    return sides[0].block.flow != flows[0] || sides[1].block.flow != flows[1];
}

} // namespace Velnor::Proc
