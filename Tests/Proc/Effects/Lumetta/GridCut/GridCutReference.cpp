#include "Tests/Proc/Effects/Lumetta/GridCut/GridCutReference.h"

// Boost's edge iterators are copied before they are set; the compiler sees that only when it inlines them here.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/boykov_kolmogorov_max_flow.hpp>

#include <algorithm>

namespace Velnor::Proc {
namespace {

using Traits = boost::adjacency_list_traits<boost::vecS, boost::vecS, boost::directedS>;
using Graph = boost::adjacency_list<
    boost::vecS, boost::vecS, boost::directedS,
    boost::property<boost::vertex_color_t, boost::default_color_type,
                    boost::property<boost::vertex_distance_t, long,
                                    boost::property<boost::vertex_predecessor_t, Traits::edge_descriptor>>>,
    boost::property<boost::edge_capacity_t, long,
                    boost::property<boost::edge_residual_capacity_t, long,
                                    boost::property<boost::edge_reverse_t, Traits::edge_descriptor>>>>;

void AddPair(Graph& graph, std::size_t from, std::size_t to, long forth, long back) {
    auto const capacity = get(boost::edge_capacity, graph);
    auto const reverse = get(boost::edge_reverse, graph);
    auto const ahead = add_edge(from, to, graph).first;
    auto const behind = add_edge(to, from, graph).first;
    capacity[ahead] = forth;
    capacity[behind] = back;
    reverse[ahead] = behind;
    reverse[behind] = ahead;
}

Graph BuildGraph(GridProblem const& problem) {
    std::size_t const pixels = problem.source.size();
    Graph graph(pixels + 2);
    for (std::uint32_t y = 0; y < problem.height; ++y) {
        for (std::uint32_t x = 0; x < problem.width; ++x) {
            std::size_t const i = problem.At(x, y);
            AddPair(graph, pixels, i, problem.source[i], 0);
            AddPair(graph, i, pixels + 1, problem.sink[i], 0);
            if (x + 1 < problem.width) AddPair(graph, i, i + 1, problem.right[i], problem.left[i + 1]);
            if (y + 1 < problem.height)
                AddPair(graph, i, i + problem.width, problem.down[i], problem.up[i + problem.width]);
        }
    }
    return graph;
}

} // namespace

GridProblem::GridProblem(std::uint32_t gridWidth, std::uint32_t gridHeight) : width(gridWidth), height(gridHeight) {
    for (auto* array : {&source, &sink, &left, &right, &up, &down}) array->assign(std::size_t{width} * height, 0);
}

void GridProblem::SetRight(std::uint32_t x, std::uint32_t y, std::int16_t forth, std::int16_t back) {
    right[At(x, y)] = forth;
    left[At(x + 1, y)] = back;
}

void GridProblem::SetDown(std::uint32_t x, std::uint32_t y, std::int16_t forth, std::int16_t back) {
    down[At(x, y)] = forth;
    up[At(x, y + 1)] = back;
}

GridCut CutByBoost(GridProblem const& problem) {
    std::size_t const pixels = problem.source.size();
    Graph graph = BuildGraph(problem);
    GridCut cut;
    cut.value = static_cast<std::uint64_t>(boost::boykov_kolmogorov_max_flow(graph, pixels, pixels + 1));

    // Backwards from the sink: an edge leads to the node at hand when the edge's reverse starts there.
    auto const residual = get(boost::edge_residual_capacity, graph);
    auto const reverse = get(boost::edge_reverse, graph);
    cut.isSink.assign(pixels + 2, false);
    std::vector<std::size_t> pending{pixels + 1};
    cut.isSink[pixels + 1] = true;
    while (!pending.empty()) {
        std::size_t const node = pending.back();
        pending.pop_back();
        for (auto [edge, end] = out_edges(node, graph); edge != end; ++edge) {
            std::size_t const other = target(*edge, graph);
            if (cut.isSink[other] || residual[reverse[*edge]] == 0) continue;
            cut.isSink[other] = true;
            pending.push_back(other);
        }
    }
    cut.isSink.resize(pixels);
    return cut;
}

GridCut CutByGrid(GridProblem const& problem, unsigned workers, std::uint32_t regionSide, std::uint16_t* flow) {
    GridGraphSolver solver(problem.width, problem.height, workers, regionSide, Core::ProgressController::Create());
    solver.SetCapacities(problem.GetCapacities());
    solver.Compute();
    if (flow != nullptr) *flow = solver.GetFlow();

    GridCut cut;
    cut.isSink.resize(problem.source.size());
    auto const isSink = [&](std::uint32_t x, std::uint32_t y) { return solver.GetTree(x, y) == Kernels::SINK; };
    auto const pair = [&](bool from, bool to, std::int16_t forth, std::int16_t back) {
        if (from != to) cut.value += static_cast<std::uint64_t>(to ? forth : back);
    };
    for (std::uint32_t y = 0; y < problem.height; ++y) {
        for (std::uint32_t x = 0; x < problem.width; ++x) {
            std::size_t const i = problem.At(x, y);
            bool const here = isSink(x, y);
            cut.isSink[i] = here;
            cut.value += static_cast<std::uint64_t>(here ? problem.source[i] : problem.sink[i]);
            if (x + 1 < problem.width) pair(here, isSink(x + 1, y), problem.right[i], problem.left[i + 1]);
            if (y + 1 < problem.height) pair(here, isSink(x, y + 1), problem.down[i], problem.up[i + problem.width]);
        }
    }
    return cut;
}

} // namespace Velnor::Proc
