#include "Proc/Interfaces/EffectExceptions.h"
#include "Tests/Proc/Effects/Lumetta/GridCut/GridCutReference.h"
#include "Tests/Support/Refusal.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cmath>
#include <fstream>
#include <functional>
#include <mutex>
#include <random>
#include <set>
#include <stdexcept>
#include <string>

#include <sys/resource.h>

namespace Velnor::Proc {
namespace {

using Kernels::GridLayout;

/// Capacities as the segmentation makes them from a picture of grey levels.
GridProblem FromPicture(std::uint32_t width, std::uint32_t height,
                        std::function<int(std::uint32_t, std::uint32_t)> const& level) {
    GridProblem problem(width, height);
    auto const likeness = [](int a, int b) {
        return static_cast<std::int16_t>(std::exp(-(a - b) * (a - b) * 0.0625) * 1024 + 1);
    };
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            int const here = level(x, y);
            if (x + 1 < width) {
                auto const capacity = likeness(here, level(x + 1, y));
                problem.SetRight(x, y, capacity, capacity);
            }
            if (y + 1 < height) {
                auto const capacity = likeness(here, level(x, y + 1));
                problem.SetDown(x, y, capacity, capacity);
            }
        }
    }
    return problem;
}

void Stroke(GridProblem& problem, std::vector<std::int16_t>& terminal, std::uint32_t x0, std::uint32_t y0,
            std::uint32_t x1, std::uint32_t y1) {
    for (std::uint32_t y = y0; y < std::min(y1, problem.height); ++y)
        for (std::uint32_t x = x0; x < std::min(x1, problem.width); ++x) terminal[problem.At(x, y)] = 1024;
}

void ExpectMinimal(GridProblem const& problem, std::uint32_t regionSide, unsigned workers, GridCut const& expected,
                   std::string const& what) {
    std::uint16_t flow = 0;
    GridCut const cut = CutByGrid(problem, workers, regionSide, &flow);
    EXPECT_EQ(cut.value, expected.value) << what << ", side " << regionSide << ", workers " << workers;
    EXPECT_EQ(flow, static_cast<std::uint16_t>(expected.value)) << what;
    EXPECT_TRUE(cut.isSink == expected.isSink) << what << ", side " << regionSide << ", workers " << workers;
}

GridProblem RandomProblem(unsigned seed, std::uint32_t width, std::uint32_t height) {
    std::mt19937 random(seed);
    static constexpr int LARGEST[] = {1, 3, 20, 1025, 32767};
    auto const largest = static_cast<unsigned>(LARGEST[random() % 5]);
    auto const terminal = static_cast<unsigned>(LARGEST[random() % 5]);
    auto const rarity = static_cast<unsigned>(1 + random() % 30);
    auto const gaps = static_cast<unsigned>(random() % 4);
    auto const capacity = [&] { return static_cast<std::int16_t>(random() % 8 < gaps ? 0 : random() % (largest + 1)); };
    GridProblem problem(width, height);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            if (x + 1 < width) problem.SetRight(x, y, capacity(), capacity());
            if (y + 1 < height) problem.SetDown(x, y, capacity(), capacity());
            if (random() % rarity == 0)
                problem.source[problem.At(x, y)] = static_cast<std::int16_t>(random() % (terminal + 1));
            if (random() % rarity == 0)
                problem.sink[problem.At(x, y)] = static_cast<std::int16_t>(random() % (terminal + 1));
        }
    }
    return problem;
}

/// Requests a stop at the n-th query.
struct StopAt : Core::IProgressController {
    explicit StopAt(int query) : queries(query) {}
    void SetRange(std::uint64_t) override {}
    void SetPosition(std::uint64_t) override {}
    void Advance(std::uint64_t) override {}
    std::uint64_t GetRange() const override { return 0; }
    std::uint64_t GetPosition() const override { return 0; }
    double GetFraction() const override { return 0; }
    intrusive_ptr<Core::IProgressController> CreateChild(std::uint64_t) override { return this; }
    void RequestStop() override { queries = 0; }
    bool IsStopRequested() const override { return --queries < 0; }
    mutable std::atomic<int> queries;
};

TEST(GridLayout, PadsDividesAndNumbers) {
    struct Expected {
        std::uint32_t width, padded, regions;
    };
    for (auto const& [width, padded, regions] :
         {Expected{1, 8, 1}, Expected{6, 8, 1}, Expected{7, 16, 1}, Expected{638, 640, 1}, Expected{639, 648, 2},
          Expected{640, 648, 2}, Expected{1278, 1280, 2}, Expected{1279, 1288, 3}, Expected{1282, 1288, 3}}) {
        GridLayout const layout(width, 1, 640);
        EXPECT_EQ(layout.GetPaddedWidth(), padded) << width;
        EXPECT_EQ(layout.GetRegionsAcross(), regions) << width;
        EXPECT_EQ(layout.GetPaddedHeight(), 8U);
    }

    GridLayout const layout(37, 21, 16);
    std::vector<bool> seen(layout.GetNodesCount());
    for (std::uint32_t y = 1; y + 1 < layout.GetPaddedHeight(); ++y) {
        for (std::uint32_t x = 1; x + 1 < layout.GetPaddedWidth(); ++x) {
            std::uint32_t const node = layout.GetNode(x, y);
            ASSERT_FALSE(seen.at(node));
            seen[node] = true;
            EXPECT_EQ(layout.GetX(node), x);
            EXPECT_EQ(layout.GetY(node), y);
            EXPECT_EQ(layout.GetNeighbour(node, Kernels::RIGHT), layout.GetNode(x + 1, y));
            EXPECT_EQ(layout.GetNeighbour(node, Kernels::LEFT), layout.GetNode(x - 1, y));
            EXPECT_EQ(layout.GetNeighbour(node, Kernels::DOWN), layout.GetNode(x, y + 1));
            EXPECT_EQ(layout.GetNeighbour(node, Kernels::UP), layout.GetNode(x, y - 1));
        }
    }
}

TEST(GridRegions, ListsBoundariesAndMergesIdleSetsOnly) {
    GridLayout const layout(20, 12, 16); // 24 x 16 nodes: two regions across, one down
    EXPECT_EQ(layout.GetBoundariesCount(), 1U);
    GridLayout const square(17, 17, 16); // 24 x 24: two each way
    std::vector<std::uint32_t> nodes(640 * square.GetBoundariesCount());
    GridRegions regions(square, nodes.data());
    auto const& records = regions.GetRecords();
    ASSERT_EQ(records.size(), 4U);
    std::vector<std::array<std::uint32_t, 4>> summary;
    for (auto const& record : records)
        summary.push_back({record.first, record.second, record.isVertical, record.nodesCount});
    EXPECT_EQ(summary,
              (std::vector<std::array<std::uint32_t, 4>>{{0, 1, 1, 16}, {0, 2, 0, 16}, {1, 3, 0, 8}, {2, 3, 1, 8}}));
    EXPECT_EQ(records[0].GetNodes()[3], square.GetNode(15, 3));
    EXPECT_EQ(records[2].GetNodes()[1], square.GetNode(17, 15));

    auto const never = [] { return false; };
    EXPECT_TRUE(regions.Take(never).records.empty()) << "all regions are busy at first";
    for (std::uint32_t region : {0U, 1U, 2U}) regions.SetIdle(region, region + 5);
    auto const upper = regions.Take(never);
    EXPECT_EQ(upper.root, 1U);
    EXPECT_EQ(upper.stamp, 6U);
    EXPECT_TRUE(regions.Take(never).records.empty()) << "region 1 is busy again, with region 0 in it";
    regions.SetIdle(1, 9);
    auto const lower = regions.Take(never);
    EXPECT_EQ(lower.root, 2U);
    EXPECT_EQ(lower.stamp, 9U);
    regions.SetIdle(2, 9);
    regions.SetIdle(3, 2);
    EXPECT_TRUE(regions.Take([] { return true; }).records.empty());
    EXPECT_EQ(regions.Take(never).records.size(), 2U) << "both boundaries of region 3 lie between the same two sets";
    EXPECT_TRUE(regions.GetRecords().empty());
}

TEST(GridGraphSolver, CutsAsBoostDoes) {
    std::mt19937 random(7);
    for (unsigned seed = 0; seed < 60; ++seed) {
        auto const width = static_cast<std::uint32_t>(1 + random() % 60);
        auto const height = static_cast<std::uint32_t>(1 + random() % 60);
        GridProblem const problem = RandomProblem(seed, width, height);
        GridCut const expected = CutByBoost(problem);
        for (std::uint32_t side : {8U, 16U, 24U, 40U, 640U})
            for (unsigned workers : {1U, 2U, 12U})
                ExpectMinimal(problem, side, workers, expected, "seed " + std::to_string(seed));
    }
}

TEST(GridGraphSolver, CutsDifficultPictures) {
    std::mt19937 random(3);
    std::vector<int> noise(200 * 90);
    for (int& level : noise) level = static_cast<int>(random() % 256);
    struct Picture {
        char const* name;
        std::function<int(std::uint32_t, std::uint32_t)> level;
    };
    std::vector<Picture> const pictures{
        {"noise", [&](auto x, auto y) { return noise[y * 200 + x]; }},
        {"faint noise", [&](auto x, auto y) { return noise[y * 200 + x] / 32; }},
        {"checkerboard", [](auto x, auto y) { return (x + y) % 2 != 0 ? 3 : 0; }},
        {"one colour", [](auto, auto) { return 90; }},
        {"stripes along the regions", [](auto x, auto) { return x / 16 % 2 != 0 ? 6 : 0; }},
    };
    struct Size {
        std::uint32_t width, height;
    };
    for (auto const& picture : pictures) {
        for (auto const& [width, height] : {Size{60, 45}, Size{1, 90}, Size{200, 1}, Size{6, 7}, Size{47, 48}}) {
            GridProblem problem = FromPicture(width, height, picture.level);
            auto const check = [&](char const* strokes) {
                GridCut const expected = CutByBoost(problem);
                std::string const what = std::string(picture.name) + ", " + strokes;
                ExpectMinimal(problem, 16, 12, expected, what);
                ExpectMinimal(problem, 640, 12, expected, what);
            };
            Stroke(problem, problem.source, 0, 0, 4, 4);
            Stroke(problem, problem.sink, width - 1, height - 1, width, height);
            check("far corners");
            Stroke(problem, problem.sink, 4, 0, 9, 4);
            check("touching in one corner");
            Stroke(problem, problem.source, 0, 0, width, height);
            check("all foreground");
        }
    }
}

TEST(GridGraphSolver, CutsAroundTheBordersOfFullRegions) {
    for (std::uint32_t width : {638U, 639U, 640U, 641U, 642U, 1278U, 1279U, 1280U, 1281U, 1282U}) {
        GridProblem problem = FromPicture(width, 9, [](auto x, auto y) { return static_cast<int>(x * y % 7); });
        Stroke(problem, problem.source, 636, 0, 639, 9);
        Stroke(problem, problem.sink, 0, 0, 5, 4);
        Stroke(problem, problem.sink, width - 2, 2, width, 9);
        ExpectMinimal(problem, 640, 12, CutByBoost(problem), "width " + std::to_string(width));
    }
    GridProblem down = FromPicture(4, 1281, [](auto x, auto y) { return static_cast<int>(x * y % 5); });
    Stroke(down, down.source, 0, 630, 4, 639);
    Stroke(down, down.sink, 0, 1275, 4, 1281);
    ExpectMinimal(down, 640, 12, CutByBoost(down), "1281 down");
}

TEST(GridGraphSolver, WakesTheSinkTreeBesideFreedSourceNodes) {
    // The stroke carries 1024, its link 1025: all of it drains into the sink, and nothing is left on the source's side.
    GridProblem small = FromPicture(3, 1, [](auto, auto) { return 0; });
    small.source[0] = 1024;
    small.sink[1] = small.sink[2] = 1024;
    EXPECT_EQ(CutByGrid(small, 12, 640).isSink, (std::vector<bool>{true, true, true}));

    GridProblem across = FromPicture(700, 1, [](auto, auto) { return 0; });
    across.source[638] = 1024;
    across.sink[639] = across.sink[640] = 1024;
    EXPECT_EQ(CutByGrid(across, 12, 640).isSink, std::vector<bool>(700, true));
}

TEST(GridGraphSolver, IsTheSameForEveryInterleaving) {
    GridProblem const four = RandomProblem(11, 14, 14); // 2 x 2 regions of side 8
    GridProblem const many = RandomProblem(12, 110, 90);
    GridCut const cutOfFour = CutByBoost(four);
    GridCut const cutOfMany = CutByBoost(many);
    for (int repeat = 0; repeat < 100; ++repeat) {
        ASSERT_EQ(CutByGrid(four, 2, 8), cutOfFour);
        if (repeat % 4 == 0) {
            ASSERT_EQ(CutByGrid(many, 12, 8), cutOfMany);
        }
    }
}

TEST(GridGraphSolver, FollowsAPathThroughTheWholeGrid) {
    std::uint32_t const side = 901; // the path has 406 000 nodes
    GridProblem problem(side, side);
    for (std::uint32_t y = 0; y < side; y += 2) {
        for (std::uint32_t x = 0; x + 1 < side; ++x) problem.SetRight(x, y, 5, 5);
        if (y + 2 < side)
            for (std::uint32_t k = y; k < y + 2; ++k) problem.SetDown(y % 4 == 0 ? side - 1 : 0, k, 5, 5);
    }
    problem.source[0] = 1024;
    problem.sink[problem.At(side - 1, side - 1)] = 1024;
    problem.right[problem.At(400, 450)] = 3;
    problem.left[problem.At(401, 450)] = 3;
    for (std::uint32_t regionSide : {64U, 640U}) {
        GridCut const cut = CutByGrid(problem, 12, regionSide);
        EXPECT_EQ(cut.value, 3U);
        EXPECT_NE(cut.isSink[problem.At(400, 450)], cut.isSink[problem.At(401, 450)]);
        EXPECT_TRUE(cut.isSink[problem.At(side - 1, side - 1)]);
    }
}

/// Strokes pixel beside pixel, and corridors, between which trees would wind ever longer if nothing straightened them.
TEST(GridGraphSolver, TangledPicturesTakeFewStamps) {
    std::uint32_t const side = 120;
    std::mt19937 random(5);
    std::vector<unsigned> noise(side * side);
    for (unsigned& level : noise) level = static_cast<unsigned>(random() >> 3U);
    auto const isGap = [](auto x, auto y) { return y / 4 % 2 != 0 ? x < 3 : x + 3 >= side; };
    std::vector<std::function<int(std::uint32_t, std::uint32_t)>> const levels{
        [](auto, auto) { return 90; },
        [&](auto x, auto y) { return static_cast<int>(noise[y * side + x] % 10); },
        [&](auto x, auto y) { return static_cast<int>(noise[y * side + x] % 4); },
        [](auto x, auto y) { return (x + y) % 2 != 0 ? 3 : 0; },
        [](auto x, auto y) { return static_cast<int>((x + 2 * y) / 3); },
        [&](auto x, auto y) { return y % 4 == 3 && !isGap(x, y) ? 200 : 90; },
        [](auto x, auto y) { return y < 10 || x % 8 < 4 ? 40 : 60; },
        [](auto x, auto y) { return static_cast<int>(std::hypot(x - 60.0, y - 60.0)) / 3 % 2 != 0 ? 80 : 84; }};
    std::vector<std::function<bool(std::uint32_t, std::uint32_t)>> const objects{
        [](auto x, auto y) { return (x + y) % 2 != 0; }, [](auto, auto y) { return y % 16 == 0; },
        [](auto x, auto y) { return (x / 5 + y / 5) % 2 != 0; }};
    for (std::size_t i = 0; i < levels.size(); ++i) {
        for (std::size_t k = 0; k < objects.size(); ++k) {
            GridProblem problem = FromPicture(side, side, levels[i]);
            for (std::uint32_t y = 0; y < side; ++y)
                for (std::uint32_t x = 0; x < side; ++x)
                    if (objects[k](x, y) || k != 1 || y % 16 == 8)
                        (objects[k](x, y) ? problem.source : problem.sink)[problem.At(x, y)] = 1024;
            GridGraphSolver solver(side, side, 1, 640, Core::ProgressControllerStub::Create());
            solver.SetCapacities(problem.GetCapacities());
            solver.Compute();
            EXPECT_LT(solver.GetStamp(), 8 * side * side) << i << " " << k;
            ExpectMinimal(problem, 640, 1, CutByBoost(problem), std::to_string(i) + " " + std::to_string(k));
        }
    }
}

TEST(GridTrees, StampsStartAnewBeforeTheyComeRound) {
    GridLayout const layout(62, 62, 64);
    std::size_t const count = layout.GetNodesCount();
    auto const solve = [&](std::uint32_t stamp) {
        std::vector<std::uint8_t> label(count), parent(count, Kernels::NO_PARENT);
        std::array<std::vector<std::uint16_t>, 4> residual;
        std::vector<std::int16_t> terminal(count);
        std::array<std::vector<std::uint32_t>, 4> words;
        for (auto& one : residual) one.resize(count);
        for (auto& one : words) one.resize(count);
        std::mt19937 random(9);
        for (std::uint32_t y = 2; y < 62; ++y) {
            for (std::uint32_t x = 2; x < 62; ++x) {
                std::uint32_t const node = layout.GetNode(x, y);
                for (auto& one : residual) one[node] = static_cast<std::uint16_t>(random() % 40);
                if (random() % 3 != 0) continue;
                label[node] = static_cast<std::uint8_t>(1 + random() % 2);
                parent[node] = Kernels::TERMINAL_PARENT;
                terminal[node] = static_cast<std::int16_t>(1 + random() % 100);
            }
        }
        Kernels::GridNodes const nodes{label.data(),
                                       parent.data(),
                                       {residual[0].data(), residual[1].data(), residual[2].data(), residual[3].data()},
                                       terminal.data(),
                                       words[0].data(),
                                       words[1].data(),
                                       words[2].data(),
                                       words[3].data()};
        for (std::uint32_t i = 0; i < count; i += 64) Kernels::OpenEdges(nodes, i, 64, 1);
        Kernels::GridWorkerBlock block;
        Kernels::GridTrees trees(layout, nodes, block, 1);
        std::array const area{Kernels::NodeRect{0, 0, 64, 64}};
        std::fill(words[3].begin(), words[3].end(), stamp);
        trees.ActivateRect(area[0]);
        trees.Solve(stamp, area, [] { return false; });
        EXPECT_LT(stamp, 0x1000000U);
        for (std::uint8_t& one : label) one = (one & Kernels::TREE_MASK) == Kernels::SINK;
        return std::pair(label, block.flow);
    };
    EXPECT_TRUE(solve(0xFFFFFF00U) == solve(0));
}

TEST(GridGraphSolver, CancelsTerminalsAndCountsModulo65536) {
    auto const flowOf = [](std::uint32_t width, std::int16_t source, std::int16_t sink, std::int16_t link) {
        GridProblem problem(width, 2);
        for (std::uint32_t x = 0; x < width; ++x) {
            problem.source[x] = source;
            problem.sink[link != 0 ? width + x : x] = sink;
            problem.SetDown(x, 0, link, link);
        }
        std::uint16_t flow = 0;
        GridCut const cut = CutByGrid(problem, 12, 640, &flow);
        EXPECT_EQ(cut.value, std::uint64_t{width} * static_cast<std::uint64_t>(std::min(source, sink)));
        return flow;
    };
    EXPECT_EQ(flowOf(64, 1024, 1024, 0), 0);         // 65536, straight through equal links
    EXPECT_EQ(flowOf(3, 700, 900, 0), 2100);         // the rest of the larger link stays
    EXPECT_EQ(flowOf(100, 1025, 2000, 1500), 36964); // 102500
    EXPECT_EQ(flowOf(2, 32767, 32767, 32767), 65534);

    // Equal links leave the pixel free: not on the sink side, though it was marked.
    GridProblem equal(2, 1);
    equal.source[0] = equal.sink[0] = 9;
    EXPECT_EQ(CutByGrid(equal, 1, 8).isSink, (std::vector<bool>{false, false}));
}

TEST(GridGraphSolver, LeavesOutWhatLeadsOutOfThePictureOrIsNegative) {
    GridProblem problem(1, 1);
    problem.source[0] = -5;
    problem.sink[0] = 7;
    for (auto* array : {&problem.left, &problem.right, &problem.up, &problem.down}) (*array)[0] = 1000;
    GridCut const cut = CutByGrid(problem, 12, 640);
    EXPECT_TRUE(cut.isSink[0]);

    GridProblem pair(2, 1);
    pair.SetRight(0, 0, -1, -300);
    pair.source[0] = pair.sink[1] = 4;
    std::uint16_t flow = 1;
    EXPECT_EQ(CutByGrid(pair, 1, 640, &flow).isSink, (std::vector<bool>{false, true}));
    EXPECT_EQ(flow, 0);
}

TEST(GridGraphSolver, EndsAtEachPointWhereAStopIsSeen) {
    GridProblem const problem = RandomProblem(21, 60, 60);
    for (int query = 0; query < 160; ++query) {
        auto const progress = MakeShared<StopAt>(query);
        GridGraphSolver solver(60, 60, 4, 16, progress);
        solver.SetCapacities(problem.GetCapacities());
        solver.Compute(); // comes back
    }

    // Not between solves alone: this is a single long one.
    std::mt19937 random(2);
    GridProblem noise = FromPicture(300, 300, [&](auto, auto) { return static_cast<int>(random() % 10); });
    Stroke(noise, noise.source, 0, 0, 15, 300);
    Stroke(noise, noise.sink, 285, 0, 300, 300);
    int const many = 1 << 20;
    auto const progress = MakeShared<StopAt>(many);
    GridGraphSolver solver(300, 300, 1, 640, progress);
    solver.SetCapacities(noise.GetCapacities());
    solver.Compute();
    EXPECT_GT(many - progress->queries, 30);
}

TEST(GridGraphSolver, ReportsItsProgressAndPassesOnWhatAnObserverThrows) {
    struct Observer : Core::IProgressObserver {
        void OnProgress(double fraction) override {
            std::scoped_lock const lock(mutex);
            fractions.insert(fraction);
            if (++calls == failAt) throw std::runtime_error("observer");
        }
        std::mutex mutex;
        std::set<double> fractions;
        int calls = 0;
        int failAt = -1;
    };
    GridProblem const problem = RandomProblem(22, 60, 60);
    for (int failAt : {-1, 1, 5, 10}) {
        Observer observer;
        observer.failAt = failAt;
        auto const progress = Core::ProgressController::Create();
        GridGraphSolver solver(60, 60, 12, 16, progress);
        EXPECT_EQ(progress->GetRange(), 16U + 24U);
        progress->RegisterEventHandler(&observer);
        solver.SetCapacities(problem.GetCapacities());
        if (failAt > 0) {
            EXPECT_THROW(solver.Compute(), std::runtime_error);
        } else {
            solver.Compute();
            EXPECT_DOUBLE_EQ(*observer.fractions.rbegin(), 1.0);
            // The three stages of the whole grid come last and take most of the time.
            EXPECT_LT(*std::next(observer.fractions.rbegin(), 3), 0.4);
            EXPECT_EQ(progress->GetPosition(), 40U);
        }
    }
}

TEST(GridGraphSolver, RefusesWhatItCannotHold) {
    auto const progress = Core::ProgressControllerStub::Create();
    EXPECT_THROW(GridGraphSolver(0, 5, 12, 640, progress), EffectException);
    EXPECT_THROW(GridGraphSolver(70000, 70000, 12, 640, progress), EffectException);
    // 40 million pixels are not too many, their tiles are.
    Testing::ExpectRefusal<EffectException>([&] { GridGraphSolver(40000000, 1, 12, 640, progress); },
                                            {"it has 40000008 x 8 nodes, 268435455"});
    EXPECT_THROW(GridGraphSolver(8, 8, 12, 12, progress), EffectException);
    EXPECT_THROW(GridGraphSolver(8, 8, 12, 648, progress), EffectException);
    EXPECT_THROW(GridGraphSolver(8, 8, 0, 640, progress), EffectException);
    GridProblem problem(8, 8);
    problem.up.pop_back();
    GridGraphSolver solver(8, 8, 12, 640, progress);
    EXPECT_THROW(solver.SetCapacities(problem.GetCapacities()), EffectException);

    EXPECT_EQ(GridGraphSolver::GetBlockBytes(std::uint64_t{20000} * 10000, 900, 12),
              (std::uint64_t{1800000000} + 640 * 900 + 288) * 4 + 832);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(GridGraphSolver, ThrowsBadAllocWithoutMemory) {
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    std::ifstream statistics("/proc/self/statm");
    std::uint64_t pages = 0;
    statistics >> pages;
    rlimit const tight{pages * 4096 + (64U << 20), before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &tight), 0);
    EXPECT_THROW(GridGraphSolver(8000, 8000, 12, 640, Core::ProgressControllerStub::Create()), std::bad_alloc);
    EXPECT_EQ(setrlimit(RLIMIT_AS, &before), 0);
}
#endif

} // namespace
} // namespace Velnor::Proc
