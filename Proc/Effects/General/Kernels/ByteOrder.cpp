#include "Proc/Effects/General/Kernels/ByteOrder.h"

#if defined(__x86_64__) && defined(__GNUC__)
#define VELNOR_BYTE_SHUFFLE
#include <tmmintrin.h>
#endif

namespace Velnor::Proc::Kernels {
namespace {

/// Pixels one by one from byte `from` of a row on. All bytes of a pixel are read before one is written.
template <std::size_t Bytes>
void ReorderRest(unsigned char const* source, unsigned char* target, std::size_t from, std::size_t width,
                 ByteOrder const& order) {
    for (std::size_t i = from; i + Bytes <= width; i += Bytes) {
        std::array<unsigned char, Bytes> pixel;
        for (std::size_t k = 0; k < Bytes; ++k) pixel[k] = source[i + order[k]];
        for (std::size_t k = 0; k < Bytes; ++k) target[i + k] = pixel[k];
    }
}

#ifdef VELNOR_BYTE_SHUFFLE
/// Blocks of sixteen bytes, of which the last whole pixel ends at `step`; what follows it is written as it was read, so
/// source and target may be the same. Four blocks are read before one is written: a block that overlaps the one just
/// written would wait for that. Returns how many bytes are done.
template <std::size_t Bytes>
__attribute__((target("ssse3"))) std::size_t ReorderBlocks(unsigned char const* source, unsigned char* target,
                                                           std::size_t width, ByteOrder const& order) {
    constexpr std::size_t BLOCKS = 4;
    constexpr std::size_t STEP = 16 / Bytes * Bytes;
    alignas(16) std::array<unsigned char, 16> lanes{};
    for (std::size_t i = 0; i < lanes.size(); ++i)
        lanes[i] = static_cast<unsigned char>(i < STEP ? i / Bytes * Bytes + order[i % Bytes] : i);
    __m128i const shuffle = _mm_load_si128(reinterpret_cast<__m128i const*>(lanes.data()));
    std::size_t at = 0;
    for (; at + (BLOCKS - 1) * STEP + 16 <= width; at += BLOCKS * STEP) {
        __m128i pixels[BLOCKS];
        for (std::size_t b = 0; b < BLOCKS; ++b)
            pixels[b] = _mm_loadu_si128(reinterpret_cast<__m128i const*>(source + at + b * STEP));
        for (std::size_t b = 0; b < BLOCKS; ++b)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(target + at + b * STEP), _mm_shuffle_epi8(pixels[b], shuffle));
    }
    return at;
}

bool HasByteShuffle() {
    __builtin_cpu_init();
    return __builtin_cpu_supports("ssse3");
}
#endif

template <std::size_t Bytes>
void ReorderRows(ConstPlane const& source, MutablePlane const& target, ByteOrder const& order) {
    std::size_t const width = target.GetWidth();
#ifdef VELNOR_BYTE_SHUFFLE
    static bool const isFast = HasByteShuffle();
#endif
    for (std::uint64_t y = 0; y < target.GetHeight(); ++y) {
        std::size_t done = 0;
#ifdef VELNOR_BYTE_SHUFFLE
        if (isFast) done = ReorderBlocks<Bytes>(source.GetRow(y), target.GetRow(y), width, order);
#endif
        ReorderRest<Bytes>(source.GetRow(y), target.GetRow(y), done, width, order);
    }
}

} // namespace

void ReorderBytes(ConstPlane const& source, MutablePlane const& target, unsigned int pixelBytes,
                  ByteOrder const& order) {
    pixelBytes == 3 ? ReorderRows<3>(source, target, order) : ReorderRows<4>(source, target, order);
}

} // namespace Velnor::Proc::Kernels
