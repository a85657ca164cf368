#include "Proc/Effects/General/Kernels/BlendRows.h"

#include "Proc/Effects/Kit/Targets.h"

#include <algorithm>
#include <cstdint>

// The loops are plain and left to the compiler's vectoriser; they are compiled a second time for AVX2.
namespace Velnor::Proc::Kernels {
namespace {

/// (sum + 127) / 255 for sums of 0 to 255 * 255. No sum lies half-way between two multiples of 255, so this is the
/// division rounded to the nearest; by s / 255 = s / 256 + s / 65536 + ..., of which two terms suffice in that range.
/// No intermediate exceeds 16 bits.
VELNOR_INLINE std::uint16_t DivideBy255(std::uint16_t sum) {
    auto const biased = static_cast<std::uint16_t>(sum + 128);
    return static_cast<std::uint16_t>(static_cast<std::uint16_t>(biased + (biased >> 8)) >> 8);
}

VELNOR_INLINE void BlendBytes(unsigned char* __restrict first, unsigned char const* __restrict second,
                              unsigned char const* __restrict alpha, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        auto const over = static_cast<std::uint16_t>(alpha[i] * second[i]);
        auto const under = static_cast<std::uint16_t>(static_cast<unsigned char>(255 - alpha[i]) * first[i]);
        first[i] = static_cast<unsigned char>(DivideBy255(static_cast<std::uint16_t>(over + under)));
    }
}

/// Gives each byte of a pixel the pixel's alpha, a stretch at a time that stays in the nearest cache.
template <unsigned int Bytes>
VELNOR_INLINE void BlendWide(unsigned char* __restrict first, unsigned char const* __restrict second,
                             unsigned char const* __restrict alpha, std::size_t pixels,
                             std::array<unsigned char, 4> const& mask) {
    constexpr std::size_t STRETCH = 1024;
    unsigned char spread[STRETCH * Bytes];
    for (std::size_t done = 0; done < pixels; done += STRETCH) {
        std::size_t const now = std::min(STRETCH, pixels - done);
        for (std::size_t x = 0; x < now; ++x)
            for (unsigned int k = 0; k < Bytes; ++k)
                spread[x * Bytes + k] = static_cast<unsigned char>(alpha[done + x] & mask[k]);
        BlendBytes(first + done * Bytes, second + done * Bytes, spread, now * Bytes);
    }
}

VELNOR_INLINE void Blend(unsigned char* first, unsigned char const* second, unsigned char const* alpha,
                         std::size_t pixels, BlendShape const& shape) {
    switch (shape.pixelBytes) {
    case 1:
        if (shape.mask[0] != 0) BlendBytes(first, second, alpha, pixels);
        return;
    case 2:
        return BlendWide<2>(first, second, alpha, pixels, shape.mask);
    case 3:
        return BlendWide<3>(first, second, alpha, pixels, shape.mask);
    default:
        return BlendWide<4>(first, second, alpha, pixels, shape.mask);
    }
}

VELNOR_TARGET("avx2")
void BlendAvx2(unsigned char* first, unsigned char const* second, unsigned char const* alpha, std::size_t pixels,
               BlendShape const& shape) {
    Blend(first, second, alpha, pixels, shape);
}

constexpr Variants BLEND{Variant{Target::Scalar, &Blend}, Variant{Target::Avx2, &BlendAvx2}};

} // namespace

void BlendPixels(unsigned char* first, unsigned char const* second, unsigned char const* alpha, std::size_t pixels,
                 BlendShape const& shape) {
    BLEND.Choose()(first, second, alpha, pixels, shape);
}

void MultiplyAlpha(unsigned char* alpha, std::size_t pixels, unsigned char constant) {
    for (std::size_t x = 0; x < pixels; ++x)
        alpha[x] = static_cast<unsigned char>(DivideBy255(static_cast<std::uint16_t>(alpha[x] * constant)));
}

} // namespace Velnor::Proc::Kernels
