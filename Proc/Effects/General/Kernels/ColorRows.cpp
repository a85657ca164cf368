#include "Proc/Effects/General/Kernels/ColorRows.h"

#include "Proc/Effects/Kit/Targets.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace Velnor::Proc::Kernels {
namespace {

static_assert(std::endian::native == std::endian::little);

/// BT.601, weights in 1/256 that sum to 1: a grey is its own luma.
VELNOR_INLINE int Luma(int red, int green, int blue) { return (77 * red + 150 * green + 29 * blue + 128) >> 8; }

VELNOR_INLINE unsigned char Clamp(int level) { return static_cast<unsigned char>(std::clamp(level, 0, 255)); }

constexpr int FRACTION_BITS = 16;

/// A row of pixels of `Bytes` bytes, red at byte `Red`.
template <unsigned int Bytes, unsigned int Red>
VELNOR_INLINE void VibranceRow(unsigned char* row, std::size_t pixels, int factor) {
    for (std::size_t x = 0; x < pixels; ++x) {
        unsigned char* const pixel = row + x * Bytes;
        // Four bytes are read and written as one: one that is left out keeps compilers from using vectors.
        std::uint32_t word = 0;
        if constexpr (Bytes == 4) std::memcpy(&word, pixel, 4);
        auto const levelAt = [&](unsigned int byte) __attribute__((always_inline)) {
            return static_cast<int>(Bytes == 4 ? word >> (8 * byte) & 255U : pixel[byte]);
        };
        int const red = levelAt(Red);
        int const green = levelAt(1);
        int const blue = levelAt(2 - Red);
        int const luma = Luma(red, green, blue);
        int const spread = std::max(std::max(red, green), blue) - std::min(std::min(red, green), blue);
        int const weight = factor * (255 - spread);
        auto const push = [&](int level) __attribute__((always_inline)) {
            constexpr int HALF = 1 << (FRACTION_BITS - 1);
            return Clamp(level + (((level - luma) * weight + HALF) >> FRACTION_BITS));
        };
        if constexpr (Bytes == 4) {
            word = (word & 0xff000000U) | std::uint32_t{push(red)} << (8 * Red) | std::uint32_t{push(green)} << 8 |
                   std::uint32_t{push(blue)} << (16 - 8 * Red);
            std::memcpy(pixel, &word, 4);
        } else {
            pixel[Red] = push(red);
            pixel[1] = push(green);
            pixel[2 - Red] = push(blue);
        }
    }
}

// The same code once more, for products of 32 bits, which the oldest of these processors cannot do in vectors.
template <unsigned int Bytes, unsigned int Red>
VELNOR_TARGET("avx2")
void VibranceRowAvx2(unsigned char* row, std::size_t pixels, int factor) {
    VibranceRow<Bytes, Red>(row, pixels, factor);
}

template <unsigned int Bytes, unsigned int Red>
void TonesRow(unsigned char* row, std::size_t pixels, ToneTable const& tones) {
    for (std::size_t x = 0; x < pixels; ++x) {
        unsigned char* const pixel = row + x * Bytes;
        auto const& tone = tones[static_cast<std::size_t>(Luma(pixel[Red], pixel[1], pixel[2 - Red]))];
        for (unsigned int k = 0; k < 3; ++k) pixel[k] = Clamp(pixel[k] + tone[k]);
    }
}

/// Calls `work<pixel bytes, byte of red>(row, pixels)` for each row.
template <class Work>
void ForEachRow(MutablePlane const& plane, PackedRgb const& format, Work const& work) {
    std::size_t const pixels = plane.GetWidth() / format.pixelBytes;
    for (std::uint64_t y = 0; y < plane.GetHeight(); ++y) {
        unsigned char* const row = plane.GetRow(y);
        if (format.pixelBytes == 3)
            format.isBlueFirst ? work.template operator()<3, 2>(row, pixels)
                               : work.template operator()<3, 0>(row, pixels);
        else
            format.isBlueFirst ? work.template operator()<4, 2>(row, pixels)
                               : work.template operator()<4, 0>(row, pixels);
    }
}

} // namespace

void ApplyVibrance(MutablePlane const& plane, PackedRgb const& format, int strength) {
    // |c - luma| * weight stays below 255 * 255 * 258 < 2^24.
    int const factor = (strength * (1 << FRACTION_BITS)) / (100 * 255);
    ForEachRow(plane, format, [&]<unsigned int Bytes, unsigned int Red>(unsigned char* row, std::size_t pixels) {
        constexpr Variants VIBRANCE{Variant{Target::Scalar, &VibranceRow<Bytes, Red>},
                                    Variant{Target::Avx2, &VibranceRowAvx2<Bytes, Red>}};
        VIBRANCE.Choose()(row, pixels, factor);
    });
}

void AddTones(MutablePlane const& plane, PackedRgb const& format, ToneTable const& tones) {
    ForEachRow(plane, format, [&]<unsigned int Bytes, unsigned int Red>(unsigned char* row, std::size_t pixels) {
        TonesRow<Bytes, Red>(row, pixels, tones);
    });
}

} // namespace Velnor::Proc::Kernels
