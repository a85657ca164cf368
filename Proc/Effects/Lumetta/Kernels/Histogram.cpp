#include "Proc/Effects/Lumetta/Kernels/Histogram.h"

#include <memory>

namespace Velnor::Proc::Kernels {
namespace {

// Photographs are smooth: neighbours hit the same counter, and each increment would wait for the store of the one
// before. Neighbouring pixels therefore count into histograms of their own, added up at the end.
constexpr std::size_t LANES = 4;

template <std::size_t Channels>
struct Counters {
    std::array<std::array<std::array<std::uint32_t, 256>, Channels>, LANES> lanes{};
    std::array<Histogram, Channels> total{};

    void Flush() {
        for (auto& lane : lanes)
            for (std::size_t channel = 0; channel < Channels; ++channel)
                for (std::size_t level = 0; level < 256; ++level) {
                    total[channel][level] += lane[channel][level];
                    lane[channel][level] = 0;
                }
    }
};

/// Calls count(lane, pixel) for each whole pixel of the plane; 32-bit lanes are emptied before they could overflow.
template <std::size_t Channels, class Count>
std::array<Histogram, Channels> CountPixels(ConstPlane const& plane, unsigned int pixelBytes, Count const& count) {
    auto counters = std::make_unique<Counters<Channels>>();
    std::uint64_t const pixels = plane.GetWidth() / pixelBytes;
    std::uint64_t counted = 0;
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        if (counted + pixels > UINT32_MAX) {
            counters->Flush();
            counted = 0;
        }
        counted += pixels;
        unsigned char const* pixel = plane.GetRow(y);
        std::uint64_t x = 0;
        for (; x + LANES <= pixels; x += LANES)
            for (std::size_t lane = 0; lane < LANES; ++lane, pixel += pixelBytes) count(counters->lanes[lane], pixel);
        for (; x < pixels; ++x, pixel += pixelBytes) count(counters->lanes[0], pixel);
    }
    counters->Flush();
    return counters->total;
}

template <class Lane>
void CountComponents(Lane& lane, unsigned char const* pixel) {
    ++lane[0][pixel[0]];
    ++lane[1][pixel[1]];
    ++lane[2][pixel[2]];
}

/// With the pixel size known to the compiler, the loop has no multiplication.
template <std::size_t Channels, class Count>
std::array<Histogram, Channels> CountBySize(ConstPlane const& plane, unsigned int pixelBytes, Count const& count) {
    if (pixelBytes == 3) return CountPixels<Channels>(plane, 3, count);
    return CountPixels<Channels>(plane, pixelBytes, count);
}

} // namespace

std::array<Histogram, 3> CountBytes(ConstPlane const& plane, unsigned int pixelBytes) {
    return CountBySize<3>(plane, pixelBytes,
                          [](auto& lane, unsigned char const* pixel) { CountComponents(lane, pixel); });
}

std::array<Histogram, 4> CountBytesAndLuma(ConstPlane const& plane, unsigned int pixelBytes,
                                           LumaWeights const& weights) {
    return CountBySize<4>(plane, pixelBytes, [weights](auto& lane, unsigned char const* pixel) {
        CountComponents(lane, pixel);
        ++lane[3][(weights[0] * pixel[0] + weights[1] * pixel[1] + weights[2] * pixel[2]) / 1000];
    });
}

Histogram CountGrey(ConstPlane const& plane) {
    return CountPixels<1>(plane, 1, [](auto& lane, unsigned char const* pixel) { ++lane[0][*pixel]; })[0];
}

} // namespace Velnor::Proc::Kernels
