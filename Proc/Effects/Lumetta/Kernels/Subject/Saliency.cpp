#include "Proc/Effects/Lumetta/Kernels/Subject/Saliency.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Velnor::Proc::Kernels {
namespace {

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
std::vector<float> BorderContrast(ColorPlanes const& lab) {
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

/// How much finest detail there is around, beyond what the borders have, 0 to 1: a lens blurs what lies behind its
/// subject.
std::vector<float> FindSharpness(FloatPlane const& lightness) {
    constexpr float PLENTY = 0.008F; // More than this says nothing more.
    FloatPlane detail = lightness;
    FloatPlane scratch = lightness;
    BoxMean(detail, 1, scratch);
    for (std::size_t i = 0; i < detail.values.size(); ++i)
        detail.values[i] = std::min(0.03F, std::abs(lightness.values[i] - detail.values[i]));
    BoxMean(detail, std::max(detail.width, detail.height) / 40, scratch);
    float border = 0;
    for (std::size_t y = 0; y < detail.height; ++y) border += detail.GetRow(y)[0] + detail.GetRow(y)[detail.width - 1];
    for (std::size_t x = 0; x < detail.width; ++x) border += 2 * detail.GetRow(0)[x];
    border /= static_cast<float>(2 * (detail.height + detail.width));
    for (float& value : detail.values) value = std::clamp((value - border) / PLENTY, 0.0F, 1.0F);
    return detail.values;
}

} // namespace

FloatPlane FindSaliency(ColorPlanes const& lab) {
    FloatPlane saliency(lab[0].width, lab[0].height);
    std::vector<float> barriers(saliency.values.size());
    for (FloatPlane const& channel : lab) {
        Barriers const found(channel);
        std::ranges::transform(barriers, found.Get(), barriers.begin(), std::plus<>());
    }
    AddScaled(barriers, saliency.values);
    AddScaled(BorderContrast(lab), saliency.values);
    std::vector<float> const sharpness = FindSharpness(lab[0]);
    for (std::size_t i = 0; i < sharpness.size(); ++i) saliency.values[i] += 0.7F * sharpness[i];
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

} // namespace Velnor::Proc::Kernels
