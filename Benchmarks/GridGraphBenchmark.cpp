// The segmentation from strokes against Boost.Graph's and OpenCV's maximum flow, on photographs, same capacities.
//
//     grid-graph-benchmark [options of Google Benchmark] megapixels[,megapixels...] photograph...
//
// A photograph called "flat" is one colour with small strokes in two far corners, which such solvers find hardest on
// average; PATTERNS has more names of that kind: on them branches wind, or every pixel is a root.
//
// Ours is the whole effect: capacities, layout, flow and mask. The peers are their graph and flow alone, from
// capacities that are already there; --benchmark_filter=Lumetta leaves them out. The first table at the end gives the
// seconds and how many times slower than us each peer is, by wall time and, for a machine that is not free, by
// processor time. The second tells of us alone: nanoseconds of wall time, and peak is what memory came on top.
#include "Proc/Effects/Kit/EffectEntry.h"
#include "Proc/Effects/Lumetta/GridCut/GridCapacities.h"
#include "Proc/Effects/Lumetta/GridCut/WorkerTeam.h"
#include "Proc/Host/Context.h"
#include "Proc/Settings/SettingsEffectGrabCutSegmentation.h"

#include <benchmark/benchmark.h>
#include <boost/graph/boykov_kolmogorov_max_flow.hpp>
#include <boost/graph/compressed_sparse_row_graph.hpp>
#include <malloc.h>
#include <opencv2/core.hpp> // which the next one needs
#include <opencv2/imgproc/detail/gcgraph.hpp>
#include <vips/vips.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace Velnor::Proc {
VELNOR_DECLARE_EFFECT(GridGraph)
namespace {

constexpr std::uint8_t FOREGROUND = 255;
constexpr std::uint8_t BACKGROUND = 128;

struct Scene {
    std::string name;
    VideoHandle picture;
    VideoHandle strokes;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

struct Result {
    double wall = 0;
    double processor = 0;
    double peak = 0; ///< Bytes on top of those before.
    std::int64_t cut = 0;
};

std::map<std::string, std::map<std::string, Result>> results; ///< By scene and solver.
std::map<std::string, double> capacitySeconds;                ///< By scene.

double GetProcessorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// A figure of this process in bytes: VmRSS, or VmHWM for the highest since ForgetPeak.
double GetMemory(std::string const& name) {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;)
        if (double kilobytes = 0; word == name + ":" && status >> kilobytes) return kilobytes * 1024;
    return 0;
}

/// Gives back what is free first, so that its next use counts.
void ForgetPeak() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;
}

VideoHandle LoadPhotograph(IEffectContext& context, std::string const& file, double megapixels) {
    VipsImage* image = vips_image_new_from_file(file.c_str(), nullptr);
    if (image == nullptr) vips_error_exit("%s", file.c_str());
    double const scale = std::sqrt(megapixels * 1e6 / (double(image->Xsize) * image->Ysize));
    VipsImage* scaled = nullptr;
    VipsImage* rgb = nullptr;
    if (vips_resize(image, &scaled, scale, nullptr) != 0 ||
        vips_extract_band(scaled, &rgb, 0, "n", std::min(3, scaled->Bands), nullptr) != 0 || rgb->Bands != 3)
        vips_error_exit("%s", file.c_str());
    std::size_t bytes = 0;
    auto* samples = static_cast<std::uint8_t*>(vips_image_write_to_memory(rgb, &bytes));
    auto const width = static_cast<std::uint32_t>(rgb->Xsize);
    auto const height = static_cast<std::uint32_t>(rgb->Ysize);
    VideoHandle const picture = context.CreateImage(PixFmt::RGB24, FrameFormat::Square(width, height));
    MutablePlane const plane = picture->GetMutablePlane(0);
    for (std::uint32_t y = 0; y < height; ++y)
        std::copy_n(samples + std::size_t{y} * width * 3, std::size_t{width} * 3, plane.GetRow(y));
    g_free(samples);
    for (VipsImage* owned : {image, scaled, rgb}) g_object_unref(owned);
    return picture;
}

/// Broad strokes as a hand would draw them: a curve through the middle, and one along three of the sides.
VideoHandle DrawStrokes(IEffectContext& context, std::uint32_t width, std::uint32_t height) {
    VideoHandle const strokes = context.CreateImage(PixFmt::GRAY8, FrameFormat::Square(width, height));
    MutablePlane const plane = strokes->GetMutablePlane(0);
    double const radius = 0.03;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            double const u = (x + 0.5) / width;
            double const v = (y + 0.5) / height;
            double const wave = 0.5 + 0.15 * std::sin(12 * u);
            bool const isObject = u > 0.3 && u < 0.7 && std::abs(v - wave) < 2 * radius;
            bool const isGround =
                std::abs(u - 0.06) < radius || std::abs(u - 0.94) < radius || std::abs(v - 0.06) < radius;
            plane.GetRow(y)[x] = isObject ? FOREGROUND : isGround ? BACKGROUND : std::uint8_t{0};
        }
    }
    return strokes;
}

struct Point {
    std::uint32_t x, y, side;
    std::uint32_t noise; ///< 0 to 9, at random.
};

/// A picture of greys that is hard for such solvers, and where it is painted on.
struct Pattern {
    char const* name;
    int (*level)(Point const&);
    std::uint8_t (*stroke)(Point const&);
};

std::uint8_t EveryPixel(Point const& at) { return (at.x + at.y) % 2 != 0 ? FOREGROUND : BACKGROUND; }
std::uint8_t EveryRow(Point const& at) { return at.y % 2 != 0 ? FOREGROUND : BACKGROUND; }
std::uint8_t FarCorners(Point const& at) {
    std::uint32_t const edge = at.side / 10;
    if (at.x < edge && at.y < edge) return FOREGROUND;
    return at.x >= at.side - edge && at.y >= at.side - edge ? BACKGROUND : std::uint8_t{0};
}

int OneColour(Point const&) { return 90; }
int Noise(Point const& at) { return static_cast<int>(at.noise); }
int Ramp(Point const& at) { return static_cast<int>(at.x * 255ULL / at.side); }
int Comb(Point const& at) { return at.y < at.side / 20 || at.x % 8 < 4 ? 40 : 60; }
int Zigzag(Point const& at) {
    bool const isGap = at.y / 4 % 2 != 0 ? at.x < 3 : at.x + 3 >= at.side;
    return at.y % 4 == 3 && !isGap ? 200 : 90;
}
int Rings(Point const& at) {
    double const middle = at.side / 2.0;
    return static_cast<int>(std::hypot(at.x - middle, at.y - middle)) / 6 % 2 != 0 ? 80 : 92;
}

constexpr Pattern PATTERNS[] = {{"flat", OneColour, FarCorners}, {"checkerboard", Noise, EveryPixel},
                                {"rows", Noise, EveryRow},       {"flat-checkerboard", OneColour, EveryPixel},
                                {"ramp", Ramp, FarCorners},      {"ramp-checkerboard", Ramp, EveryPixel},
                                {"comb", Comb, FarCorners},      {"comb-rows", Comb, EveryRow},
                                {"zigzag", Zigzag, FarCorners},  {"zigzag-checkerboard", Zigzag, EveryPixel},
                                {"rings", Rings, FarCorners},    {"rings-checkerboard", Rings, EveryPixel}};

Scene MakePatternScene(IEffectContext& context, Pattern const& pattern, std::string const& megapixels) {
    auto const side = static_cast<std::uint32_t>(std::sqrt(std::stod(megapixels) * 1e6));
    Scene scene{std::string(pattern.name) + "@" + megapixels,
                context.CreateImage(PixFmt::RGB24, FrameFormat::Square(side, side)),
                context.CreateImage(PixFmt::GRAY8, FrameFormat::Square(side, side)), side, side};
    MutablePlane const picture = scene.picture->GetMutablePlane(0);
    MutablePlane const strokes = scene.strokes->GetMutablePlane(0);
    std::minstd_rand random;
    for (std::uint32_t y = 0; y < side; ++y) {
        for (std::uint32_t x = 0; x < side; ++x) {
            Point const at{x, y, side, static_cast<std::uint32_t>(random() / 7 % 10)};
            std::fill_n(picture.GetRow(y) + std::size_t{x} * 3, 3, static_cast<std::uint8_t>(pattern.level(at)));
            strokes.GetRow(y)[x] = pattern.stroke(at);
        }
    }
    return scene;
}

Scene MakeScene(IEffectContext& context, std::string const& file, std::string const& megapixels) {
    for (Pattern const& pattern : PATTERNS)
        if (file == pattern.name) return MakePatternScene(context, pattern, megapixels);
    Scene scene;
    scene.name = std::filesystem::path(file).stem().string().substr(0, 20) + "@" + megapixels;
    scene.picture = LoadPhotograph(context, file, std::stod(megapixels));
    scene.width = scene.picture->GetFrameFormat().width;
    scene.height = scene.picture->GetFrameFormat().height;
    scene.strokes = DrawStrokes(context, scene.width, scene.height);
    return scene;
}

Kernels::GridCapacities BuildCapacities(Scene const& scene) {
    Kernels::GridCapacities capacities(scene.width, scene.height);
    Kernels::ColourBytes const bytes{3, 0, 3};
    Kernels::SimilarityTable const table(3);
    ConstPlane const pixels = scene.picture->GetPlane(0);
    ConstPlane const strokes = scene.strokes->GetPlane(0);
    WorkerTeam(12).RunRows(scene.height, [&](std::uint32_t y) {
        capacities.MarkRow(y, strokes.GetRow(y), FOREGROUND, BACKGROUND);
        capacities.LinkRow(y, pixels.GetRow(y), y + 1 < scene.height ? pixels.GetRow(y + 1) : nullptr, bytes, table);
    });
    return capacities;
}

/// Value of the cut that a mask stands for.
std::int64_t CutValue(Scene const& scene, Kernels::GridCapacities const& capacities, IDataVideo const& mask) {
    ConstPlane const plane = mask.GetPlane(0);
    std::int64_t value = 0;
    for (std::uint32_t y = 0; y < scene.height; ++y) {
        for (std::uint32_t x = 0; x < scene.width; ++x) {
            std::size_t const i = std::size_t{y} * scene.width + x;
            bool const isSink = plane.GetRow(y)[x] == BACKGROUND;
            value += isSink ? capacities.GetSource()[i] : capacities.GetSink()[i];
            if (x + 1 < scene.width && isSink != (plane.GetRow(y)[x + 1] == BACKGROUND))
                value += capacities.GetRight()[i];
            if (y + 1 < scene.height && isSink != (plane.GetRow(y + 1)[x] == BACKGROUND))
                value += capacities.GetDown()[i];
        }
    }
    return value;
}

VideoHandle CutByLumetta(Scene const& scene, ContextHandle const& context) {
    auto const effect = CreateGridGraph(FactoryHandle(), context);
    SettingsEffectGrabCutSegmentation settings;
    settings.SetForeground(FOREGROUND);
    settings.SetBackground(BACKGROUND);
    effect->SetSettings(settings);
    DataHandle const result = effect->ProcessData(std::vector<DataHandle>{scene.picture, scene.strokes});
    return VideoHandle(&AsVideo(result));
}

std::int64_t CutByOpenCV(Scene const& scene, Kernels::GridCapacities const& capacities) {
    std::size_t const pixels = std::size_t{scene.width} * scene.height;
    cv::detail::GCGraph<int> graph(static_cast<unsigned>(pixels), static_cast<unsigned>(4 * pixels));
    for (std::uint32_t y = 0; y < scene.height; ++y) {
        for (std::uint32_t x = 0; x < scene.width; ++x) {
            int const node = graph.addVtx();
            auto const i = static_cast<std::size_t>(node);
            graph.addTermWeights(node, capacities.GetSource()[i], capacities.GetSink()[i]);
            if (x > 0) graph.addEdges(node - 1, node, capacities.GetLeft()[i], capacities.GetLeft()[i]);
            if (y > 0) {
                int const above = node - static_cast<int>(scene.width);
                graph.addEdges(above, node, capacities.GetUp()[i], capacities.GetUp()[i]);
            }
        }
    }
    return graph.maxFlow();
}

std::int64_t CutByBoost(Scene const& scene, Kernels::GridCapacities const& capacities) {
    using Graph = boost::compressed_sparse_row_graph<boost::directedS, boost::no_property, boost::no_property,
                                                     boost::no_property, std::uint32_t, std::uint32_t>;
    using Edge = boost::graph_traits<Graph>::edge_descriptor;
    std::size_t const pixels = std::size_t{scene.width} * scene.height;
    auto const source = static_cast<std::uint32_t>(pixels);
    std::uint32_t const sink = source + 1;

    // Edges sorted by where they start, as the graph stores them, so that an edge's number is its place.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> ends;
    std::vector<int> capacity;
    auto const add = [&](std::uint32_t from, std::uint32_t to, int value) {
        ends.emplace_back(from, to);
        capacity.push_back(value);
    };
    ends.reserve(4 * pixels + pixels / 2);
    capacity.reserve(4 * pixels + pixels / 2);
    for (std::uint32_t i = 0; i < pixels; ++i) {
        std::uint32_t const x = i % scene.width;
        if (i >= scene.width) add(i, i - scene.width, capacities.GetUp()[i]);
        if (x > 0) add(i, i - 1, capacities.GetLeft()[i]);
        if (x + 1 < scene.width) add(i, i + 1, capacities.GetRight()[i]);
        if (i + scene.width < pixels) add(i, i + scene.width, capacities.GetDown()[i]);
        if (capacities.GetSource()[i] > 0) add(i, source, 0);
        if (capacities.GetSink()[i] > 0) add(i, sink, capacities.GetSink()[i]);
    }
    for (std::uint32_t i = 0; i < pixels; ++i)
        if (capacities.GetSource()[i] > 0) add(source, i, capacities.GetSource()[i]);
    for (std::uint32_t i = 0; i < pixels; ++i)
        if (capacities.GetSink()[i] > 0) add(sink, i, 0);
    Graph const graph(boost::edges_are_sorted, ends.begin(), ends.end(), sink + 1);

    std::vector<Edge> reverse(ends.size());
    std::vector<std::uint32_t> next(pixels + 2); // where each node's next edge to a lower numbered node is
    std::vector<std::uint32_t> begin(pixels + 3);
    for (auto const& [from, to] : ends) ++begin[from + 1];
    for (std::size_t i = 1; i < begin.size(); ++i) begin[i] += begin[i - 1];
    std::copy(begin.begin(), begin.end() - 1, next.begin());
    // Edges of a node are sorted by their ends, so the reverses of the edges into it come up in its own order.
    for (std::uint32_t i = 0; i < ends.size(); ++i) {
        std::uint32_t const back = next[ends[i].second]++;
        reverse[back] = Edge(ends[i].first, i);
    }
    std::vector<int> residual(ends.size());
    std::vector<Edge> predecessor(pixels + 2);
    std::vector<boost::default_color_type> colour(pixels + 2);
    std::vector<int> distance(pixels + 2);
    auto const edgeIndex = get(boost::edge_index, graph);
    auto const nodeIndex = get(boost::vertex_index, graph);
    return boost::boykov_kolmogorov_max_flow(graph, boost::make_iterator_property_map(capacity.begin(), edgeIndex),
                                             boost::make_iterator_property_map(residual.begin(), edgeIndex),
                                             boost::make_iterator_property_map(reverse.begin(), edgeIndex),
                                             boost::make_iterator_property_map(predecessor.begin(), nodeIndex),
                                             boost::make_iterator_property_map(colour.begin(), nodeIndex),
                                             boost::make_iterator_property_map(distance.begin(), nodeIndex), nodeIndex,
                                             source, sink);
}

template <class Work>
void Measure(benchmark::State& state, Scene const& scene, std::string const& solver, Work const& work) {
    auto const building = std::chrono::steady_clock::now();
    Kernels::GridCapacities const capacities = BuildCapacities(scene);
    double& fastest = capacitySeconds.try_emplace(scene.name, 1e9).first->second;
    fastest = std::min(fastest, std::chrono::duration<double>(std::chrono::steady_clock::now() - building).count());
    for (auto _ : state) {
        ForgetPeak();
        double const memory = GetMemory("VmRSS");
        auto const start = std::chrono::steady_clock::now();
        double const processorStart = GetProcessorSeconds();
        Result result;
        auto const outcome = work(scene, capacities);
        result.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        result.processor = GetProcessorSeconds() - processorStart;
        result.peak = GetMemory("VmHWM") - memory;
        state.SetIterationTime(result.wall);
        if constexpr (std::is_same_v<decltype(outcome), VideoHandle const>)
            result.cut = CutValue(scene, capacities, *outcome);
        else
            result.cut = outcome;
        Result& best = results[scene.name][solver];
        if (best.wall == 0 || result.processor < best.processor) best = result;
    }
}

void Register(Scene const& scene, ContextHandle const& context) {
    auto const add = [&scene](char const* solver, int iterations, auto work) {
        benchmark::RegisterBenchmark(
            (scene.name + "/" + solver).c_str(),
            [&scene, solver, work](benchmark::State& state) { Measure(state, scene, solver, work); })
            ->Iterations(iterations)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    };
    add("Lumetta", 3, [context](Scene const& picture, auto const&) { return CutByLumetta(picture, context); });
    add("OpenCV", 1, CutByOpenCV);
    add("Boost", 1, CutByBoost);
}

double Divide(double dividend, double divisor) { return divisor > 0 ? dividend / divisor : 0; }

void PrintRatios(std::vector<Scene> const& scenes) {
    std::printf("\nSeconds, and times that the peers take longer (0 = not run), wall / processor\n%-26s %16s %15s %15s"
                " %15s %15s  %s\n",
                "", "Lumetta", "OpenCV", "Boost", "OpenCV times", "Boost times", "cut");
    for (Scene const& scene : scenes) {
        auto& row = results[scene.name];
        Result const& ours = row["Lumetta"];
        std::printf("%-26s %7.3f /%7.3f", scene.name.c_str(), ours.wall, ours.processor);
        for (char const* peer : {"OpenCV", "Boost"}) std::printf(" %7.2f /%6.2f", row[peer].wall, row[peer].processor);
        bool isSame = true;
        for (char const* peer : {"OpenCV", "Boost"}) {
            Result const& theirs = row[peer];
            std::printf(" %7.2f /%6.2f", Divide(theirs.wall, ours.wall), Divide(theirs.processor, ours.processor));
            isSame = isSame && (theirs.wall == 0 || theirs.cut == ours.cut);
        }
        std::printf("  %s\n", isSame ? "same" : "DIFFERENT");
    }
}

/// @param sizesCount  scenes of one picture, in a row
void PrintCosts(std::vector<Scene> const& scenes, std::size_t sizesCount) {
    std::printf("\n%-26s %8s %18s %12s %16s %18s\n", "Lumetta", "ns/pixel", "growth from first", "bytes/pixel",
                "processor/wall", "capacities in ms");
    double first = 0;
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        Scene const& scene = scenes[i];
        double const pixels = double(scene.width) * scene.height;
        Result const& ours = results[scene.name]["Lumetta"];
        double const cost = ours.wall * 1e9 / pixels;
        if (i % sizesCount == 0) first = cost;
        std::printf("%-26s %8.0f %18.2f %12.1f %16.2f %18.1f\n", scene.name.c_str(), cost, Divide(cost, first),
                    ours.peak / pixels, Divide(ours.processor, ours.wall), capacitySeconds[scene.name] * 1e3);
    }
}

} // namespace

int RunGridGraphBenchmark(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    if (VIPS_INIT(arguments[0]) != 0 || count < 3) {
        std::fprintf(stderr, "usage: grid-graph-benchmark megapixels[,megapixels...] photograph...\n");
        return 1;
    }
    ContextHandle const context = MakeShared<Context>();
    std::vector<Scene> scenes;
    for (int i = 2; i < count; ++i) {
        std::istringstream sizes(arguments[1]);
        for (std::string size; std::getline(sizes, size, ',');)
            scenes.push_back(MakeScene(*context, arguments[i], size));
    }
    for (Scene const& scene : scenes) Register(scene, context);
    benchmark::RunSpecifiedBenchmarks();
    PrintRatios(scenes);
    PrintCosts(scenes, scenes.size() / static_cast<std::size_t>(count - 2));
    return 0;
}

} // namespace Velnor::Proc

int main(int count, char** arguments) { return Velnor::Proc::RunGridGraphBenchmark(count, arguments); }
