#include "Proc/Effects/Lumetta/Kernels/SubjectStrokes.h"

#include "Proc/Effects/Lumetta/Kernels/BoxMean.h"
#include "Proc/Effects/Lumetta/Kernels/OkLab.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace Velnor::Proc::Kernels {
namespace {

using LabPlanes = std::array<FloatPlane, 3>;

LabPlanes ToPlanes(ConstPlane const& rgb) {
    std::size_t const width = rgb.GetWidth() / 3;
    LabPlanes planes{FloatPlane(width, rgb.GetHeight()), FloatPlane(width, rgb.GetHeight()),
                     FloatPlane(width, rgb.GetHeight())};
    for (std::size_t y = 0; y < rgb.GetHeight(); ++y)
        for (std::size_t x = 0; x < width; ++x) {
            unsigned char const* const pixel = rgb.GetRow(y) + 3 * x;
            Lab const lab =
                ToOkLab({static_cast<float>(pixel[0]), static_cast<float>(pixel[1]), static_cast<float>(pixel[2])});
            // Lightness counts half: light and shade are often of one thing.
            planes[0].GetRow(y)[x] = lab.l / 2;
            planes[1].GetRow(y)[x] = lab.a * 2;
            planes[2].GetRow(y)[x] = lab.b * 2;
        }
    return planes;
}

/// Barriers of one channel: the least span of values on a way from the border, nearly.
class Barriers {
public:
    explicit Barriers(FloatPlane const& channel)
        : width(channel.width),
          height(channel.height),
          values(channel.values),
          highest(values),
          lowest(values),
          distances(values.size(), std::numeric_limits<float>::max()) {
        for (std::size_t x = 0; x < width; ++x) distances[x] = 0;
        for (std::size_t y = 0; y < height; ++y) distances[y * width] = distances[y * width + width - 1] = 0;
        for (int pass = 0; pass < 4; ++pass) pass % 2 == 0 ? ScanDown() : ScanUp();
    }

    std::vector<float> const& Get() const { return distances; }

private:
    void Reach(std::size_t at, std::size_t from) {
        float const high = std::max(highest[from], values[at]);
        float const low = std::min(lowest[from], values[at]);
        if (high - low >= distances[at] || distances[from] == std::numeric_limits<float>::max()) return;
        distances[at] = high - low;
        highest[at] = high;
        lowest[at] = low;
    }
    void ScanDown() {
        for (std::size_t at = 0; at < values.size(); ++at) {
            if (at >= width) Reach(at, at - width);
            if (at % width != 0) Reach(at, at - 1);
        }
    }
    void ScanUp() {
        for (std::size_t at = values.size(); at-- > 0;) {
            if (at + width < values.size()) Reach(at, at + width);
            if (at % width + 1 != width) Reach(at, at + 1);
        }
    }

    std::size_t width, height;
    std::vector<float> const& values;
    std::vector<float> highest, lowest, distances;
};

/// Adds `from`, scaled to a greatest value of 1.
void AddScaled(std::vector<float> const& from, std::vector<float>& to) {
    float const most = *std::ranges::max_element(from);
    if (most < 0.02F) return; // Noise.
    for (std::size_t i = 0; i < to.size(); ++i) to[i] += from[i] / most;
}

/// Distance to the nearest of the mean colours of the borders' pieces, all but the lower border's.
std::vector<float> BorderContrast(LabPlanes const& lab) {
    constexpr std::size_t PIECES = 4;
    std::size_t const width = lab[0].width;
    std::size_t const height = lab[0].height;
    std::size_t const thick = std::max<std::size_t>(1, std::min(width, height) / 12);
    std::array<std::array<double, 4>, 3 * PIECES> sums{};
    for (std::size_t y = 0; y < height; ++y)
        for (std::size_t x = 0; x < width; ++x) {
            bool const isTop = y < thick;
            if (!isTop && x >= thick && x + thick < width) continue;
            std::size_t const piece = isTop ? x * PIECES / width : y * PIECES / height;
            auto& sum = sums[piece + (isTop ? 0 : (x < thick ? PIECES : 2 * PIECES))];
            for (std::size_t k = 0; k < 3; ++k) sum[k] += lab[k].GetRow(y)[x];
            sum[3] += 1;
        }
    std::vector<float> contrast(width * height, std::numeric_limits<float>::max());
    for (auto const& sum : sums) {
        if (sum[3] == 0) continue;
        for (std::size_t i = 0; i < contrast.size(); ++i) {
            float square = 0;
            for (std::size_t k = 0; k < 3; ++k)
                square += std::pow(lab[k].values[i] - static_cast<float>(sum[k] / sum[3]), 2.0F);
            contrast[i] = std::min(contrast[i], std::sqrt(square));
        }
    }
    return contrast;
}

FloatPlane FindSaliency(LabPlanes const& lab) {
    FloatPlane saliency(lab[0].width, lab[0].height);
    std::vector<float> barriers(saliency.values.size());
    for (FloatPlane const& channel : lab) {
        Barriers const found(channel);
        std::ranges::transform(barriers, found.Get(), barriers.begin(), std::plus<>());
    }
    AddScaled(barriers, saliency.values);
    AddScaled(BorderContrast(lab), saliency.values);
    for (std::size_t y = 0; y < saliency.height; ++y)
        for (std::size_t x = 0; x < saliency.width; ++x) {
            float const right = 2 * (static_cast<float>(x) + 0.5F) / static_cast<float>(saliency.width) - 1;
            float const down = (static_cast<float>(y) + 0.5F) / static_cast<float>(saliency.height) - 0.6F;
            saliency.GetRow(y)[x] *= std::exp(-1.2F * right * right - 1.2F * down * down);
        }
    FloatPlane scratch(saliency.width, saliency.height);
    BoxMean(saliency, std::max(saliency.width, saliency.height) / 80, scratch);
    return saliency;
}

/// The level that parts the values best in two (N. Otsu, 1979).
float FindThreshold(std::vector<float> const& values) {
    constexpr std::size_t BINS = 128;
    float const most = *std::ranges::max_element(values);
    std::array<double, BINS> counts{};
    for (float const value : values) ++counts[std::min(BINS - 1, static_cast<std::size_t>(value / most * BINS))];
    double total = 0;
    for (std::size_t i = 0; i < BINS; ++i) total += static_cast<double>(i) * counts[i];
    double below = 0, sum = 0, best = -1;
    std::size_t threshold = 0;
    for (std::size_t i = 0; i + 1 < BINS; ++i) {
        below += counts[i];
        sum += static_cast<double>(i) * counts[i];
        double const above = static_cast<double>(values.size()) - below;
        if (below == 0 || above == 0) continue;
        double const parting = below * above * std::pow(sum / below - (total - sum) / above, 2);
        if (parting <= best) continue;
        best = parting;
        threshold = i + 1;
    }
    return most * static_cast<float>(threshold) / BINS;
}

} // namespace

std::vector<Stroke> FindSubjectStrokes(ConstPlane const& rgb) {
    FloatPlane const saliency = FindSaliency(ToPlanes(rgb));
    std::vector<Stroke> strokes(saliency.values.size(), Stroke::None);
    if (*std::ranges::max_element(saliency.values) <= 0) return strokes;
    float const threshold = FindThreshold(saliency.values);
    for (std::size_t i = 0; i < strokes.size(); ++i) {
        if (saliency.values[i] > 1.25F * threshold) strokes[i] = Stroke::Subject;
        if (saliency.values[i] < 0.7F * threshold) strokes[i] = Stroke::Background;
    }
    return strokes;
}

} // namespace Velnor::Proc::Kernels
