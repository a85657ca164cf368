#include "Proc/Effects/Lumetta/Kernels/Color/ColorCounts.h"

namespace Velnor::Proc::Kernels {
namespace {

/// The low two bits of the levels are summed, the rest is the bin: 32 bits hold 1.4 thousand million pixels.
struct Bin {
    std::uint32_t count, red, green, blue;
};

template <unsigned int PixelBytes>
bool CountPixels(ConstPlane const& plane, bool isBlueFirst, bool hasAlpha, std::vector<Bin>& bins) {
    std::size_t const redByte = isBlueFirst ? 2 : 0;
    std::uint64_t const pixels = plane.GetWidth() / PixelBytes;
    bool hasTransparent = false;
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        unsigned char const* pixel = plane.GetRow(y);
        for (std::uint64_t x = 0; x < pixels; ++x, pixel += PixelBytes) {
            if (hasAlpha && pixel[PixelBytes - 1] < HALF_OPAQUE) {
                hasTransparent = true;
                continue;
            }
            std::uint32_t const red = pixel[redByte];
            std::uint32_t const green = pixel[1];
            std::uint32_t const blue = pixel[2 - redByte];
            Bin& bin = bins[ColorBin(red, green, blue)];
            ++bin.count;
            bin.red += red & 3;
            bin.green += green & 3;
            bin.blue += blue & 3;
        }
    }
    return hasTransparent;
}

} // namespace

ColorCounts CountColors(ConstPlane const& plane, PackedRgb const& format, bool hasAlpha) {
    std::vector<Bin> bins(COLOR_BINS);
    ColorCounts counts;
    counts.hasTransparent = format.pixelBytes == 3 ? CountPixels<3>(plane, format.isBlueFirst, false, bins)
                                                   : CountPixels<4>(plane, format.isBlueFirst, hasAlpha, bins);
    for (std::uint32_t i = 0; i < COLOR_BINS; ++i) {
        Bin const& bin = bins[i];
        if (bin.count == 0) continue;
        auto const weight = static_cast<float>(bin.count);
        auto const level = [&](std::uint32_t high, std::uint32_t sum) {
            return static_cast<float>(high * 4) + static_cast<float>(sum) / weight;
        };
        counts.colors.push_back(
            {ToOkLab({level(i >> 12, bin.red), level(i >> 6 & 63, bin.green), level(i & 63, bin.blue)}), weight, i});
    }
    return counts;
}

} // namespace Velnor::Proc::Kernels
