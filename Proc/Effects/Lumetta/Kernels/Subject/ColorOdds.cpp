#include "Proc/Effects/Lumetta/Kernels/Subject/ColorOdds.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

constexpr std::size_t BINS = 24; ///< Along each channel.
using Counts = std::vector<double>;

/// Bins of a channel's values, from the least to the greatest.
std::vector<std::size_t> ToBins(FloatPlane const& channel) {
    auto const [least, most] = std::ranges::minmax(channel.values);
    float const scale = most > least ? static_cast<float>(BINS - 1) / (most - least) : 0.0F;
    std::vector<std::size_t> bins;
    for (float const value : channel.values) bins.push_back(static_cast<std::size_t>((value - least) * scale + 0.5F));
    return bins;
}

/// Spreads each count over its neighbours along one axis, 1 : 2 : 1.
void SmoothAlong(Counts& counts, std::size_t step) {
    Counts const before = counts;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        std::size_t const at = i / step % BINS;
        double const low = before[at == 0 ? i : i - step];
        double const high = before[at + 1 == BINS ? i : i + step];
        counts[i] = (low + 2 * before[i] + high) / 4;
    }
}

/// To a sum of 1.
void Normalise(Counts& counts) {
    for (std::size_t const step : {std::size_t{1}, BINS, BINS * BINS}) {
        SmoothAlong(counts, step);
        SmoothAlong(counts, step);
    }
    double sum = 0;
    for (double const count : counts) sum += count;
    if (sum > 0)
        for (double& count : counts) count /= sum;
}

} // namespace

std::vector<float> FindColorOdds(ColorPlanes const& lab, std::vector<float> const& shares) {
    constexpr double UNSEEN = 2e-5; // What a colour that a model never saw counts in it.
    std::vector<std::size_t> places(shares.size(), 0);
    for (FloatPlane const& channel : lab) {
        std::vector<std::size_t> const bins = ToBins(channel);
        for (std::size_t i = 0; i < places.size(); ++i) places[i] = places[i] * BINS + bins[i];
    }
    Counts subject(BINS * BINS * BINS), background(subject.size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        subject[places[i]] += shares[i];
        background[places[i]] += 1 - shares[i];
    }
    Normalise(subject);
    Normalise(background);
    std::vector<float> odds;
    for (std::size_t const place : places)
        odds.push_back(static_cast<float>(std::log((subject[place] + UNSEEN) / (background[place] + UNSEEN))));
    return odds;
}

} // namespace Velnor::Proc::Kernels
