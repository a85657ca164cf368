#include "Proc/Effects/Lumetta/Kernels/Luma/Histogram.h"

#include <memory>
#include <vector>

namespace Velnor::Proc::Kernels {
namespace {

/// How often each pair of neighbouring bytes occurs; the histograms of the bytes are sums over it. A processor stores
/// one counter a cycle, so pairs halve the time, and photographs are smooth: neighbours hit the same counter, and each
/// increment would wait for the one before, where pairs give it twice as long. Few pairs occur in numbers, so 16-bit
/// counters stay near the processor; what does not fit is counted apart.
class PairCounts {
public:
    void Add(unsigned char const* bytes) {
        std::size_t const pair = static_cast<std::size_t>(bytes[0]) | static_cast<std::size_t>(bytes[1]) << 8;
        if (++counts[pair] == 0) [[unlikely]]
            ++wraps[pair];
    }

    void AddTo(Histogram& firstBytes, Histogram& secondBytes) const {
        for (std::size_t pair = 0; pair < counts.size(); ++pair) {
            std::uint64_t const count = counts[pair] + wraps[pair] * (std::uint64_t{UINT16_MAX} + 1);
            firstBytes[pair & 255U] += count;
            secondBytes[pair >> 8] += count;
        }
    }

private:
    std::array<std::uint16_t, 65536> counts{};
    std::array<std::uint32_t, 65536> wraps{};
    /// Keeps equal pairs of two such objects from sharing the lower bits of their addresses: the processor would take
    /// one counter for the other, just stored, and wait.
    [[maybe_unused]] std::array<unsigned char, 64> apart{};
};

void CountPixel(std::array<Histogram, 3>& components, unsigned char const* pixel) {
    for (std::size_t k = 0; k < 3; ++k) ++components[k][pixel[k]];
}

/// Calls onRow(row, pixels) before it counts a row.
template <std::size_t PixelBytes, class OnRow>
std::array<Histogram, 3> CountComponents(ConstPlane const& plane, OnRow const& onRow) {
    constexpr std::size_t PAIRS = PixelBytes == 3 ? 3 : 2; // Of two pixels of three bytes, or of one of four.
    constexpr std::size_t STEP = PixelBytes == 3 ? 2 : 1;
    auto const counters = std::make_unique<std::array<PairCounts, PAIRS>>();
    std::array<Histogram, 3> components{};
    std::uint64_t const pixels = plane.GetWidth() / PixelBytes;
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        unsigned char const* pixel = plane.GetRow(y);
        onRow(pixel, pixels);
        for (std::uint64_t x = 0; x + STEP <= pixels; x += STEP, pixel += STEP * PixelBytes)
            for (std::size_t pair = 0; pair < PAIRS; ++pair) (*counters)[pair].Add(pixel + 2 * pair);
        if (pixels % STEP != 0) CountPixel(components, pixel);
    }
    if constexpr (PixelBytes == 3) {
        (*counters)[0].AddTo(components[0], components[1]);
        (*counters)[1].AddTo(components[2], components[0]);
        (*counters)[2].AddTo(components[1], components[2]);
    } else {
        Histogram fourth{};
        (*counters)[0].AddTo(components[0], components[1]);
        (*counters)[1].AddTo(components[2], fourth);
    }
    return components;
}

template <class OnRow>
std::array<Histogram, 3> CountBySize(ConstPlane const& plane, unsigned int pixelBytes, OnRow const& onRow) {
    return pixelBytes == 3 ? CountComponents<3>(plane, onRow) : CountComponents<4>(plane, onRow);
}

/// One histogram of rows of bytes.
class GreyCounts {
public:
    void AddRow(unsigned char const* bytes, std::uint64_t count) {
        for (std::uint64_t x = 0; x + 2 <= count; x += 2) pairs->Add(bytes + x);
        if (count % 2 != 0) ++rest[bytes[count - 1]];
    }

    Histogram Get() const {
        Histogram total = rest;
        pairs->AddTo(total, total);
        return total;
    }

private:
    std::unique_ptr<PairCounts> const pairs = std::make_unique<PairCounts>();
    Histogram rest{};
};

} // namespace

std::array<Histogram, 3> CountBytes(ConstPlane const& plane, unsigned int pixelBytes) {
    return CountBySize(plane, pixelBytes, [](unsigned char const*, std::uint64_t) {});
}

std::array<Histogram, 4> CountBytesAndLuma(ConstPlane const& plane, unsigned int pixelBytes,
                                           LumaWeights const& weights) {
    std::vector<unsigned char> row(plane.GetWidth() / pixelBytes);
    GreyCounts luma;
    auto const [first, second, third] =
        CountBySize(plane, pixelBytes, [&](unsigned char const* pixel, std::uint64_t pixels) {
            WriteLumaRow(pixel, pixels, pixelBytes, weights, row.data());
            luma.AddRow(row.data(), pixels);
        });
    return {first, second, third, luma.Get()};
}

Histogram CountGrey(ConstPlane const& plane) {
    GreyCounts counts;
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) counts.AddRow(plane.GetRow(y), plane.GetWidth());
    return counts.Get();
}

} // namespace Velnor::Proc::Kernels
