#include "Proc/Effects/General/Kernels/ByteOrder.h"

#include "Proc/Effects/Kit/Targets.h"

#ifdef VELNOR_X86
#include <tmmintrin.h>
#endif

#include <algorithm>

namespace Velnor::Proc::Kernels {
namespace {

/// The pixels from `first` on. All bytes of a pixel are read before one is written.
template <std::size_t From, std::size_t To>
void ReorderRest(unsigned char const* source, unsigned char* target, std::size_t first, std::size_t pixels,
                 ByteOrder const& order) {
    for (std::size_t x = first; x < pixels; ++x) {
        std::array<unsigned char, To> pixel;
        for (std::size_t k = 0; k < To; ++k) pixel[k] = order[k] == OPAQUE_BYTE ? 255 : source[x * From + order[k]];
        for (std::size_t k = 0; k < To; ++k) target[x * To + k] = pixel[k];
    }
}

#ifdef VELNOR_X86
/// Blocks of sixteen bytes, of which the last whole pixel ends before the next block. What follows it is written over
/// by that, or by the rest; in place, where the next block is still to be read, it stays as it was. Four blocks are
/// read before one is written: a block that overlaps the one just written would wait for that. Returns the pixels done.
template <std::size_t From, std::size_t To>
VELNOR_TARGET("ssse3")
std::size_t
    ReorderBlocks(unsigned char const* source, unsigned char* target, std::size_t pixels, ByteOrder const& order) {
    constexpr std::size_t BLOCKS = 4;
    constexpr std::size_t STEP = 16 / std::max(From, To); // Pixels of a block.
    constexpr std::size_t SMALLER = std::min(From, To);
    alignas(16) std::array<unsigned char, 16> lanes{};
    alignas(16) std::array<unsigned char, 16> opaque{};
    for (std::size_t i = 0; i < lanes.size(); ++i) {
        bool const isPixel = i < STEP * To;
        std::uint8_t const from = isPixel ? order[i % To] : 0;
        opaque[i] = from == OPAQUE_BYTE ? 255 : 0;
        lanes[i] = from == OPAQUE_BYTE ? OPAQUE_BYTE : static_cast<unsigned char>(isPixel ? i / To * From + from : i);
    }
    __m128i const shuffle = _mm_load_si128(reinterpret_cast<__m128i const*>(lanes.data()));
    __m128i const filled = _mm_load_si128(reinterpret_cast<__m128i const*>(opaque.data()));
    std::size_t x = 0;
    // The last block must lie within the row of the smaller pixels, and then does within the other.
    for (; (x + (BLOCKS - 1) * STEP) * SMALLER + 16 <= pixels * SMALLER; x += BLOCKS * STEP) {
        __m128i blocks[BLOCKS];
        for (std::size_t b = 0; b < BLOCKS; ++b)
            blocks[b] = _mm_loadu_si128(reinterpret_cast<__m128i const*>(source + (x + b * STEP) * From));
        for (std::size_t b = 0; b < BLOCKS; ++b)
            _mm_storeu_si128(reinterpret_cast<__m128i*>(target + (x + b * STEP) * To),
                             _mm_or_si128(_mm_shuffle_epi8(blocks[b], shuffle), filled));
    }
    return x;
}

template <std::size_t From, std::size_t To>
void ReorderRowSsse3(unsigned char const* source, unsigned char* target, std::size_t pixels, ByteOrder const& order) {
    std::size_t const done = ReorderBlocks<From, To>(source, target, pixels, order);
    ReorderRest<From, To>(source, target, done, pixels, order);
}
#endif

template <std::size_t From, std::size_t To>
void ReorderRow(unsigned char const* source, unsigned char* target, std::size_t pixels, ByteOrder const& order) {
    ReorderRest<From, To>(source, target, 0, pixels, order);
}

template <std::size_t From, std::size_t To>
void ReorderRows(ConstPlane const& source, MutablePlane const& target, ByteOrder const& order) {
    constexpr Variants ROW{
        Variant{Target::Scalar, &ReorderRow<From, To>},
#ifdef VELNOR_X86
        Variant{Target::Ssse3, &ReorderRowSsse3<From, To>},
#endif
    };
    auto const reorder = ROW.Choose();
    for (std::uint64_t y = 0; y < target.GetHeight(); ++y)
        reorder(source.GetRow(y), target.GetRow(y), target.GetWidth() / To, order);
}

} // namespace

void ReorderBytes(ConstPlane const& source, unsigned int sourceBytes, MutablePlane const& target,
                  unsigned int targetBytes, ByteOrder const& order) {
    if (sourceBytes == 3)
        targetBytes == 3 ? ReorderRows<3, 3>(source, target, order) : ReorderRows<3, 4>(source, target, order);
    else
        targetBytes == 3 ? ReorderRows<4, 3>(source, target, order) : ReorderRows<4, 4>(source, target, order);
}

} // namespace Velnor::Proc::Kernels
