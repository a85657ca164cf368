// Runs the benchmarks with their repetitions mixed, so that a busy spell of the machine falls on all alike, and closes
// with the ratios of the shortest times of each.
#include "Benchmarks/Ratios.h"

#include <benchmark/benchmark.h>
#include <opencv2/core/utility.hpp>

#include <algorithm>
#include <cstdio>
#include <map>

namespace Velnor::Benchmarks {
namespace {

std::vector<Ratio>& Ratios() {
    static std::vector<Ratio> ratios;
    return ratios;
}

class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(std::vector<Run> const& runs) override {
        for (Run const& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            double const seconds = run.real_accumulated_time / static_cast<double>(run.iterations);
            double& least = shortest.try_emplace(run.run_name.function_name, seconds).first->second;
            least = std::min(least, seconds);
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override {
        std::printf("\n%-52s %9s %9s %7s %6s\n", "shortest times", "ms", "peer ms", "ratio", "goal");
        for (Ratio const& ratio : GetRatios()) {
            auto const ours = shortest.find(ratio.ours);
            auto const peer = shortest.find(ratio.peer);
            if (ours == shortest.end() || peer == shortest.end()) continue;
            std::printf("%-52s %9.2f %9.2f %7.3f", (ratio.ours + " / " + ratio.peer).c_str(), ours->second * 1e3,
                        peer->second * 1e3, ours->second / peer->second);
            std::printf(ratio.goal > 0 ? " %6.2f\n" : "\n", ratio.goal);
        }
    }

private:
    std::map<std::string, double> shortest; ///< Seconds a call, by benchmark.
};

} // namespace

bool Compare(Ratio ratio) {
    Ratios().push_back(std::move(ratio));
    return true;
}

std::vector<Ratio> const& GetRatios() { return Ratios(); }

} // namespace Velnor::Benchmarks

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    std::vector<char*> arguments{argv[0]};
    char mixed[] = "--benchmark_enable_random_interleaving=true";
    char repetitions[] = "--benchmark_repetitions=7";
    char shortRuns[] = "--benchmark_min_time=0.1";
    arguments.insert(arguments.end(), {mixed, repetitions, shortRuns}); // what the caller gives comes later and counts
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 1;
    Velnor::Benchmarks::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
