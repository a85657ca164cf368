#include "Proc/Effects/Lumetta/Kernels/Luma/HistogramReport.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace Velnor::Proc::Kernels {

std::array<Histogram, 4> CountPlanar(std::array<ConstPlane, 3> const& planes, unsigned int shiftX,
                                     unsigned int shiftY) {
    std::array<Histogram, 4> counts{};
    auto const level = [](int fixed) { return static_cast<std::size_t>(std::clamp(fixed >> 16, 0, 255)); };
    constexpr int HALF = 1 << 15;
    for (std::uint64_t y = 0; y < planes[0].GetHeight(); ++y) {
        unsigned char const* const luma = planes[0].GetRow(y);
        unsigned char const* const blueRow = planes[1].GetRow(y >> shiftY);
        unsigned char const* const redRow = planes[2].GetRow(y >> shiftY);
        for (std::uint64_t x = 0; x < planes[0].GetWidth(); ++x) {
            int const grey = luma[x] * 65536 + HALF;
            int const u = blueRow[x >> shiftX] - 128;
            int const v = redRow[x >> shiftX] - 128;
            ++counts[0][level(grey + 91881 * v)];
            ++counts[1][level(grey - 22554 * u - 46802 * v)];
            ++counts[2][level(grey + 116130 * u)];
            ++counts[3][luma[x]];
        }
    }
    return counts;
}

LevelStatistics Summarise(Histogram const& histogram) {
    LevelStatistics result;
    std::uint64_t total = 0;
    double sum = 0;
    double squares = 0;
    for (std::size_t i = 0; i < histogram.size(); ++i) {
        auto const count = static_cast<double>(histogram[i]);
        auto const value = static_cast<double>(i);
        if (histogram[i] > 0 && total == 0) result.low = static_cast<int>(i);
        if (histogram[i] > 0) result.high = static_cast<int>(i);
        total += histogram[i];
        sum += count * value;
        squares += count * value * value;
    }
    if (total == 0) return result;
    auto const pixels = static_cast<double>(total);
    result.mean = sum / pixels;
    result.deviation = std::sqrt(std::max(0.0, squares / pixels - result.mean * result.mean));
    result.clippedLow = 100.0 * static_cast<double>(histogram[0]) / pixels;
    result.clippedHigh = 100.0 * static_cast<double>(histogram[255]) / pixels;
    constexpr std::array<std::uint64_t, 5> PERCENT{1, 25, 50, 75, 99};
    for (std::size_t k = 0; k < PERCENT.size(); ++k) {
        std::uint64_t below = histogram[0];
        while (below * 100 < total * PERCENT[k]) below += histogram[static_cast<std::size_t>(++result.percentiles[k])];
    }
    return result;
}

namespace {

/// Height of each curve in each column of the panel, 0 to `rows`.
std::vector<std::array<float, 3>> CurveHeights(std::array<Histogram, 3> const& curves, std::size_t columns,
                                               double rows) {
    std::uint64_t tallest = 0;
    for (Histogram const& curve : curves) tallest = std::max(tallest, *std::max_element(&curve[1], &curve[255]));
    if (tallest == 0) // nothing but clipped pixels
        for (Histogram const& curve : curves) tallest = std::max({tallest, curve[0], curve[255]});
    std::vector<std::array<float, 3>> heights(columns);
    for (std::size_t x = 0; x < columns; ++x) {
        double const place = std::max(0.0, (static_cast<double>(x) + 0.5) * 256.0 / static_cast<double>(columns) - 0.5);
        auto const left = std::min(static_cast<std::size_t>(place), std::size_t{255});
        std::size_t const right = std::min(left + 1, std::size_t{255});
        double const part = place - static_cast<double>(left);
        for (std::size_t k = 0; k < 3; ++k) {
            double const count =
                static_cast<double>(curves[k][left]) * (1 - part) + static_cast<double>(curves[k][right]) * part;
            heights[x][k] = static_cast<float>(std::min(1.0, count / static_cast<double>(tallest)) * rows);
        }
    }
    return heights;
}

} // namespace

void DrawCurves(MutablePlane const& plane, PackedRgb const& format, std::array<Histogram, 3> const& curves,
                Rectangle const& panel) {
    constexpr float DIMMED = 0.3F;   // of the picture under the panel
    constexpr float BRIGHT = 235.0F; // of a curve's inside
    constexpr float OPACITY = 0.8F;
    auto const heights = CurveHeights(curves, panel.width, panel.height);
    for (std::uint32_t y = 0; y < panel.height; ++y) {
        unsigned char* pixel = plane.GetRow(panel.y + y) + std::size_t{panel.x} * format.pixelBytes;
        auto const above = static_cast<float>(panel.height - 1 - y);
        for (std::uint32_t x = 0; x < panel.width; ++x, pixel += format.pixelBytes)
            for (std::size_t k = 0; k < 3; ++k) {
                unsigned char& level = pixel[format.isBlueFirst ? 2 - k : k];
                float const cover = OPACITY * std::clamp(heights[x][k] - above, 0.0F, 1.0F);
                float const under = DIMMED * static_cast<float>(level);
                level = static_cast<unsigned char>(under + cover * (BRIGHT - under) + 0.5F);
            }
    }
}

} // namespace Velnor::Proc::Kernels
