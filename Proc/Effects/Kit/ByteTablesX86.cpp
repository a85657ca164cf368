#include "Proc/Effects/Kit/ByteTablesX86.h"

#ifdef VELNOR_X86

#include <cstdint>
#include <cstring>
#include <immintrin.h>

namespace Velnor::Proc::Kernels {

VELNOR_TARGET_BEGIN("sse4.1")
namespace Sse4 {
namespace {
using Vector = __m128i;
using Mask = __m128i;
inline constexpr std::size_t VECTOR_BYTES = 16;
VELNOR_INLINE Vector Load(unsigned char const* p) { return _mm_loadu_si128(reinterpret_cast<Vector const*>(p)); }
VELNOR_INLINE void Store(Vector v, unsigned char* p) { _mm_storeu_si128(reinterpret_cast<Vector*>(p), v); }
VELNOR_INLINE Vector Repeat(unsigned char const* p) { return Load(p); }
VELNOR_INLINE Vector Fill(int byte) { return _mm_set1_epi8(static_cast<char>(byte)); }
VELNOR_INLINE Vector Xor(Vector a, Vector b) { return _mm_xor_si128(a, b); }
VELNOR_INLINE Vector Lower(Vector a, Vector b) { return _mm_subs_epi8(a, b); }
VELNOR_INLINE Vector Shuffle(Vector table, Vector index) { return _mm_shuffle_epi8(table, index); }
VELNOR_INLINE Mask MakeMask(Vector lanes) { return _mm_cmpgt_epi8(lanes, _mm_setzero_si128()); }
VELNOR_INLINE Vector Select(Mask mask, Vector whereSet, Vector elsewhere) {
    return _mm_blendv_epi8(elsewhere, whereSet, mask);
}
#include "Proc/Effects/Kit/ByteTablesChain-inl.h"

#include "Proc/Effects/Kit/ByteTables-inl.h"
} // namespace Sse4
VELNOR_TARGET_END

VELNOR_TARGET_BEGIN("avx2")
namespace Avx2 {
namespace {
using Vector = __m256i;
using Mask = __m256i;
inline constexpr std::size_t VECTOR_BYTES = 32;
VELNOR_INLINE Vector Load(unsigned char const* p) { return _mm256_loadu_si256(reinterpret_cast<Vector const*>(p)); }
VELNOR_INLINE void Store(Vector v, unsigned char* p) { _mm256_storeu_si256(reinterpret_cast<Vector*>(p), v); }
VELNOR_INLINE Vector Repeat(unsigned char const* p) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<__m128i const*>(p)));
}
VELNOR_INLINE Vector Fill(int byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }
VELNOR_INLINE Vector Xor(Vector a, Vector b) { return _mm256_xor_si256(a, b); }
VELNOR_INLINE Vector Lower(Vector a, Vector b) { return _mm256_subs_epi8(a, b); }
VELNOR_INLINE Vector Shuffle(Vector table, Vector index) { return _mm256_shuffle_epi8(table, index); }
VELNOR_INLINE Mask MakeMask(Vector lanes) { return _mm256_cmpgt_epi8(lanes, _mm256_setzero_si256()); }
VELNOR_INLINE Vector Select(Mask mask, Vector whereSet, Vector elsewhere) {
    return _mm256_blendv_epi8(elsewhere, whereSet, mask);
}
#include "Proc/Effects/Kit/ByteTablesChain-inl.h"

#include "Proc/Effects/Kit/ByteTables-inl.h"
} // namespace Avx2
VELNOR_TARGET_END

// The two sets with vectors of 64 bytes differ in the lookup alone.
#define VELNOR_BYTE_TABLES_512                                                                                         \
    using Vector = __m512i;                                                                                            \
    using Mask = __mmask64;                                                                                            \
    inline constexpr std::size_t VECTOR_BYTES = 64;                                                                    \
    VELNOR_INLINE Vector Load(void const* p) { return _mm512_loadu_si512(p); }                                         \
    VELNOR_INLINE void Store(Vector v, unsigned char* p) { _mm512_storeu_si512(p, v); }                                \
    VELNOR_INLINE Vector Shuffle(Vector table, Vector index) { return _mm512_shuffle_epi8(table, index); }             \
    VELNOR_INLINE Mask MakeMask(Vector lanes) { return _mm512_test_epi8_mask(lanes, lanes); }                          \
    VELNOR_INLINE Vector Select(Mask mask, Vector whereSet, Vector elsewhere) {                                        \
        return _mm512_mask_blend_epi8(mask, elsewhere, whereSet);                                                      \
    }

VELNOR_TARGET_BEGIN("avx512f,avx512bw,avx512vl,avx512dq")
namespace Avx512 {
namespace {
VELNOR_BYTE_TABLES_512

/// A table of 256 bytes as 128 pairs of neighbours in four registers, read by permutes of 16-bit lanes.
class Lookup {
public:
    void Prepare(Table const& table) {
        for (std::size_t i = 0; i < 4; ++i) quarters[i] = Load(table.data() + i * 64);
    }

    VELNOR_INLINE Vector operator()(Vector bytes) const {
        Vector const even =
            FindPairs(_mm512_srli_epi16(bytes, 1), _mm512_test_epi16_mask(bytes, _mm512_set1_epi16(128)));
        Vector const odd = FindPairs(_mm512_srli_epi16(bytes, 9), _mm512_movepi16_mask(bytes));
        // Of both neighbours, the one that an even byte, then the one that an odd byte asks for.
        Vector const lower = Select(ODD_LANES, _mm512_slli_epi16(odd, 8), even);
        Vector const upper = Select(ODD_LANES, odd, _mm512_srli_epi16(even, 8));
        return Select(_mm512_test_epi8_mask(bytes, _mm512_set1_epi8(1)), upper, lower);
    }

private:
    static constexpr Mask ODD_LANES = 0xAAAAAAAAAAAAAAAA;

    /// The pair of each 16-bit lane, whose index is its low six bits, from the upper half of the table where `top`.
    VELNOR_INLINE Vector FindPairs(Vector index, __mmask32 top) const {
        Vector const low = _mm512_permutex2var_epi16(quarters[0], index, quarters[1]);
        Vector const high = _mm512_permutex2var_epi16(quarters[2], index, quarters[3]);
        return _mm512_mask_blend_epi16(top, low, high);
    }

    Vector quarters[4];
};
#include "Proc/Effects/Kit/ByteTables-inl.h"
} // namespace Avx512
VELNOR_TARGET_END

VELNOR_TARGET_BEGIN("avx512f,avx512bw,avx512vl,avx512dq,avx512vbmi")
namespace Avx512Vbmi {
namespace {
VELNOR_BYTE_TABLES_512

/// A table of 256 bytes in four registers: a permute of each half, and the top bit of the byte says which counts.
class Lookup {
public:
    void Prepare(Table const& table) {
        for (std::size_t i = 0; i < 4; ++i) quarters[i] = Load(table.data() + i * 64);
    }

    VELNOR_INLINE Vector operator()(Vector bytes) const {
        Vector const low = _mm512_permutex2var_epi8(quarters[0], bytes, quarters[1]);
        Vector const high = _mm512_permutex2var_epi8(quarters[2], bytes, quarters[3]);
        return Select(_mm512_movepi8_mask(bytes), high, low);
    }

private:
    Vector quarters[4];
};
#include "Proc/Effects/Kit/ByteTables-inl.h"
} // namespace Avx512Vbmi
VELNOR_TARGET_END

} // namespace Velnor::Proc::Kernels

#endif
