#include "Proc/Effects/Lumetta/Kernels/Luma/LumaRow.h"

#include "Proc/Effects/Kit/Targets.h"

#ifdef VELNOR_X86
#include <immintrin.h>
#endif

namespace Velnor::Proc::Kernels {
namespace {

void WriteOneByOne(unsigned char const* row, std::uint64_t pixels, unsigned int pixelBytes, LumaWeights const& weights,
                   unsigned char* luma) {
    for (std::uint64_t x = 0; x < pixels; ++x) {
        unsigned char const* const pixel = row + x * pixelBytes;
        luma[x] =
            static_cast<unsigned char>((weights[0] * pixel[0] + weights[1] * pixel[1] + weights[2] * pixel[2]) / 1000);
    }
}

#ifdef VELNOR_X86

/// Byte numbers that bring bytes `first` and `second` of four pixels into the halves of 32 bits; -1 is a zero.
__m128i PickPairs(int pixelBytes, int first, int second) {
    alignas(16) std::array<char, 16> picked;
    picked.fill(-1);
    for (int pixel = 0; pixel < 4; ++pixel) {
        auto const at = static_cast<std::size_t>(4 * pixel);
        picked[at] = static_cast<char>(pixel * pixelBytes + first);
        if (second >= 0) picked[at + 2] = static_cast<char>(pixel * pixelBytes + second);
    }
    return _mm_load_si128(reinterpret_cast<__m128i const*>(picked.data()));
}

__m128i RepeatPair(std::uint32_t low, std::uint32_t high) { return _mm_set1_epi32(static_cast<int>(low | high << 16)); }

/// As many pixels as can be read eight at a time; their number comes back. Without division: an eighth of the weighted
/// sum is below 2^15, and of such a number t / 125 is t * 33555 / 2^22, truncated, since 33555 * 125 is above 2^22 by
/// 71 alone and 71 t is below 2^22.
VELNOR_TARGET("ssse3")
std::uint64_t WriteByEights(unsigned char const* row, std::uint64_t pixels, unsigned int pixelBytes,
                            LumaWeights const& weights, unsigned char* luma) {
    __m128i const pickPair = PickPairs(static_cast<int>(pixelBytes), 0, 1);
    __m128i const pickLast = PickPairs(static_cast<int>(pixelBytes), 2, -1);
    __m128i const pairWeights = RepeatPair(weights[0], weights[1]);
    __m128i const lastWeight = RepeatPair(weights[2], 0);
    __m128i const reciprocal = _mm_set1_epi16(static_cast<short>(33555));
    std::uint64_t x = 0;
    for (; (pixels - x) * pixelBytes >= 4 * pixelBytes + 16; x += 8) {
        unsigned char const* const pixel = row + x * pixelBytes;
        __m128i eighths[2];
        for (unsigned int half = 0; half < 2; ++half) {
            __m128i const four = _mm_loadu_si128(reinterpret_cast<__m128i const*>(pixel + 4 * half * pixelBytes));
            __m128i const pair = _mm_madd_epi16(_mm_shuffle_epi8(four, pickPair), pairWeights);
            __m128i const last = _mm_madd_epi16(_mm_shuffle_epi8(four, pickLast), lastWeight);
            eighths[half] = _mm_srli_epi32(_mm_add_epi32(pair, last), 3);
        }
        __m128i const quotients = _mm_mulhi_epu16(_mm_packs_epi32(eighths[0], eighths[1]), reciprocal);
        __m128i const levels = _mm_srli_epi16(quotients, 6);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(luma + x), _mm_packus_epi16(levels, levels));
    }
    return x;
}

void WriteSsse3(unsigned char const* row, std::uint64_t pixels, unsigned int pixelBytes, LumaWeights const& weights,
                unsigned char* luma) {
    std::uint64_t const done = WriteByEights(row, pixels, pixelBytes, weights, luma);
    WriteOneByOne(row + done * pixelBytes, pixels - done, pixelBytes, weights, luma + done);
}

#endif

constexpr Variants WRITE{
    Variant{Target::Scalar, &WriteOneByOne},
#ifdef VELNOR_X86
    Variant{Target::Ssse3, &WriteSsse3},
#endif
};

} // namespace

void WriteLumaRow(unsigned char const* row, std::uint64_t pixels, unsigned int pixelBytes, LumaWeights const& weights,
                  unsigned char* luma) {
    WRITE.Choose()(row, pixels, pixelBytes, weights, luma);
}

} // namespace Velnor::Proc::Kernels
