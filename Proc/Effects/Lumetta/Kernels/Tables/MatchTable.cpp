#include "Proc/Effects/Lumetta/Kernels/Tables/MatchTable.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

namespace Velnor::Proc::Kernels {
namespace {

using Distribution = std::array<double, 256>; ///< Share of what lies at a level or below it.

template <class Weights>
Distribution Accumulate(Weights const& weights) {
    double const total = std::accumulate(weights.begin(), weights.end(), 0.0);
    Distribution distribution;
    double sum = 0;
    for (std::size_t i = 0; i < distribution.size(); ++i) {
        sum += static_cast<double>(weights[i]);
        distribution[i] = sum / total;
    }
    return distribution;
}

Distribution NormalDistribution(double deviation) {
    std::array<double, 256> density;
    for (std::size_t i = 0; i < density.size(); ++i) {
        double const x = static_cast<double>(i) / 255.0 - 0.5;
        density[i] =
            std::exp(-0.5 * (x * x) / (deviation * deviation)) * 1.0 / (std::sqrt(2.0 * std::numbers::pi) * deviation);
    }
    return Accumulate(density);
}

} // namespace

Table MatchTable(Histogram const& histogram, double deviation) {
    Distribution const own = Accumulate(histogram);
    Distribution const wanted = NormalDistribution(deviation);
    Table table;
    for (std::size_t i = 0; i < table.size(); ++i) {
        auto const isNearer = [&](double a, double b) { return std::abs(a - own[i]) < std::abs(b - own[i]); };
        auto const nearest = std::min_element(wanted.begin(), wanted.end(), isNearer); // The first of equals.
        table[i] = static_cast<unsigned char>(nearest - wanted.begin());
    }
    return table;
}

} // namespace Velnor::Proc::Kernels
