#include "Proc/Effects/Lumetta/Kernels/Histogram.h"

#include <memory>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

// Photographs are smooth: neighbours hit the same counter, and each increment would wait for the store of the one
// before. Neighbouring pixels therefore count into histograms of their own, added up at the end.
constexpr std::size_t LANES = 4;

/// Four channels of 256 counters would put the lanes 4096 bytes apart: the processor then takes the counter of one lane
/// for the one just stored in another, and waits.
constexpr std::size_t COUNTERS = 256 + 16;

template <std::size_t Channels>
struct Counters {
    std::array<std::array<std::array<std::uint32_t, COUNTERS>, Channels>, LANES> lanes{};
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

/// Calls count(lane, pixel, x) for each whole pixel of the plane, after begin(row, pixels) for each row; 32-bit lanes are
/// emptied before they could overflow.
template <std::size_t Channels, class Begin, class Count>
std::array<Histogram, Channels> CountPixels(ConstPlane const& plane, unsigned int pixelBytes, Begin const& begin,
                                            Count const& count) {
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
        begin(pixel, pixels);
        std::uint64_t x = 0;
        while (x + LANES <= pixels)
            for (std::size_t lane = 0; lane < LANES; ++lane, ++x, pixel += pixelBytes)
                count(counters->lanes[lane], pixel, x);
        for (; x < pixels; ++x, pixel += pixelBytes) count(counters->lanes[0], pixel, x);
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
template <std::size_t Channels, class Begin, class Count>
std::array<Histogram, Channels> CountBySize(ConstPlane const& plane, unsigned int pixelBytes, Begin const& begin,
                                            Count const& count) {
    if (pixelBytes == 3) return CountPixels<Channels>(plane, 3, begin, count);
    return CountPixels<Channels>(plane, pixelBytes, begin, count);
}

constexpr auto NOTHING = [](unsigned char const*, std::uint64_t) {};

} // namespace

std::array<Histogram, 3> CountBytes(ConstPlane const& plane, unsigned int pixelBytes) {
    return CountBySize<3>(plane, pixelBytes, NOTHING,
                          [](auto& lane, unsigned char const* pixel, std::uint64_t) { CountComponents(lane, pixel); });
}

std::array<Histogram, 4> CountBytesAndLuma(ConstPlane const& plane, unsigned int pixelBytes,
                                           LumaWeights const& weights) {
    std::vector<unsigned char> luma(plane.GetWidth() / pixelBytes);
    auto const begin = [&](unsigned char const* row, std::uint64_t pixels) {
        WriteLumaRow(row, pixels, pixelBytes, weights, luma.data());
    };
    return CountBySize<4>(plane, pixelBytes, begin, [&](auto& lane, unsigned char const* pixel, std::uint64_t x) {
        CountComponents(lane, pixel);
        ++lane[3][luma[x]];
    });
}

Histogram CountGrey(ConstPlane const& plane) {
    return CountPixels<1>(plane, 1, NOTHING,
                          [](auto& lane, unsigned char const* pixel, std::uint64_t) { ++lane[0][*pixel]; })[0];
}

} // namespace Velnor::Proc::Kernels
