#include "Proc/Effects/General/Kernels/RemapRows.h"

#include "Proc/Effects/Kit/Targets.h"

#include <algorithm>
#include <limits>

#ifdef VELNOR_X86
#include <immintrin.h>
#endif

namespace Velnor::Proc::Kernels {
namespace {

/// A plane as the taps see it.
struct Source {
    Source(ConstPlane const& plane, unsigned int sampleBytes)
        : samples(plane.GetData()),
          stride(plane.GetStride()),
          right(plane.GetWidth() > sampleBytes ? sampleBytes : 0),
          below(plane.GetHeight() > 1 ? stride : 0),
          end((stride > 0 ? stride * static_cast<std::int64_t>(plane.GetHeight() - 1) : 0) +
              static_cast<std::int64_t>(plane.GetWidth())),
          begin(stride > 0 ? 0 : stride * static_cast<std::int64_t>(plane.GetHeight() - 1)) {}

    unsigned char const* samples;
    std::int64_t stride;
    std::int64_t right, below; ///< Bytes to the neighbours; 0 where the plane has but one column or row.
    std::int64_t end, begin;   ///< Of the samples in memory, from the first row's first.
};

template <unsigned int Bytes>
inline void SampleOne(Source const& source, RowTaps const& taps, std::size_t i, unsigned char* target) {
    unsigned char const* const upper =
        source.samples + taps.row[i] * source.stride + taps.column[i] * std::int64_t{Bytes};
    unsigned char const* const lower = upper + source.below;
    for (unsigned int k = 0; k < Bytes; ++k) {
        auto const a = static_cast<float>(upper[k]);
        auto const b = static_cast<float>(upper[source.right + k]);
        auto const c = static_cast<float>(lower[k]);
        auto const d = static_cast<float>(lower[source.right + k]);
        float const top = a + taps.right[i] * (b - a);
        float const bottom = c + taps.right[i] * (d - c);
        target[i * Bytes + k] =
            static_cast<unsigned char>(static_cast<int>(top + taps.lower[i] * (bottom - top) + 0.5F));
    }
}

template <unsigned int Bytes>
void SampleFrom(Source const& source, RowTaps const& taps, std::size_t from, unsigned char* target) {
    for (std::size_t i = from; i < taps.column.size(); ++i) SampleOne<Bytes>(source, taps, i, target);
}

template <unsigned int Bytes>
void SampleAll(Source const& source, RowTaps const& taps, unsigned char* target) {
    SampleFrom<Bytes>(source, taps, 0, target);
}

VELNOR_INLINE void Split(float const* positions, std::uint32_t size, std::int32_t* index, float* weight,
                         std::size_t count) {
    auto const last = static_cast<float>(size - 1);
    auto const lastIndex = static_cast<std::int32_t>(size > 1 ? size - 2 : 0);
    for (std::size_t i = 0; i < count; ++i) {
        float const atLeast = positions[i] > 0 ? positions[i] : 0.0F;
        float const position = atLeast < last ? atLeast : last;
        index[i] = std::min(static_cast<std::int32_t>(position), lastIndex);
        weight[i] = position - static_cast<float>(index[i]);
    }
}

VELNOR_TARGET("avx2")
void SplitAvx2(float const* positions, std::uint32_t size, std::int32_t* index, float* weight, std::size_t count) {
    Split(positions, size, index, weight, count);
}

constexpr Variants SPLIT{Variant{Target::Scalar, &Split}, Variant{Target::Avx2, &SplitAvx2}};

#ifdef VELNOR_X86

/// Sample and right neighbour of two rows, spread so that each byte becomes a lane: a0 a1 a2 a3 c0 c1 c2 c3 from the
/// samples themselves, b and d from their neighbours.
template <unsigned int Bytes>
VELNOR_TARGET("avx2")
inline void LoadTaps(unsigned char const* upper, unsigned char const* lower, __m256& left, __m256& right) {
    __m128i rows;
    if constexpr (Bytes == 2)
        rows = _mm_unpacklo_epi64(_mm_loadu_si32(upper), _mm_loadu_si32(lower));
    else
        rows = _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<__m128i const*>(upper)),
                                  _mm_loadl_epi64(reinterpret_cast<__m128i const*>(lower)));
    constexpr char B = Bytes;
    __m128i const ownBytes = _mm_setr_epi8(0, 1, 2, 3, 8, 9, 10, 11, -1, -1, -1, -1, -1, -1, -1, -1);
    __m128i const nextBytes =
        _mm_setr_epi8(B, B + 1, B + 2, B + 3, B + 8, B + 9, B + 10, B + 11, -1, -1, -1, -1, -1, -1, -1, -1);
    left = _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_shuffle_epi8(rows, ownBytes)));
    right = _mm256_cvtepi32_ps(_mm256_cvtepu8_epi32(_mm_shuffle_epi8(rows, nextBytes)));
}

/// Samples of 2 to 4 bytes, one at a time. Four bytes are written for each, of which the next sample takes back what is
/// its own, so the last ones are left: returns the first that is not written.
template <unsigned int Bytes>
VELNOR_TARGET("avx2")
std::size_t SampleWideAvx2(Source const& source, RowTaps const& taps, unsigned char* target) {
    constexpr std::int64_t READ = Bytes == 2 ? 4 : 8;
    std::int64_t const lastUpper = source.end - READ - std::max<std::int64_t>(source.below, 0);
    std::size_t const samples = taps.column.size();
    std::size_t const count = samples > 1 ? samples - 1 : 0;
    for (std::size_t i = 0; i < count; ++i) {
        std::int64_t const offset = taps.row[i] * source.stride + taps.column[i] * std::int64_t{Bytes};
        if (offset > lastUpper) {
            SampleOne<Bytes>(source, taps, i, target);
            continue;
        }
        unsigned char const* const upper = source.samples + offset;
        __m256 left;
        __m256 right;
        LoadTaps<Bytes>(upper, upper + source.below, left, right);
        __m256 const across =
            _mm256_add_ps(left, _mm256_mul_ps(_mm256_set1_ps(taps.right[i]), _mm256_sub_ps(right, left)));
        __m128 const top = _mm256_castps256_ps128(across);
        __m128 const step = _mm_sub_ps(_mm256_extractf128_ps(across, 1), top);
        __m128 const value =
            _mm_add_ps(_mm_add_ps(top, _mm_mul_ps(_mm_set1_ps(taps.lower[i]), step)), _mm_set1_ps(0.5F));
        __m128i const levels = _mm_cvttps_epi32(value);
        __m128i const bytes =
            _mm_shuffle_epi8(levels, _mm_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1));
        if constexpr (Bytes == 2)
            _mm_storeu_si16(target + i * Bytes, bytes);
        else
            _mm_storeu_si32(target + i * Bytes, bytes);
    }
    return count;
}

VELNOR_TARGET("avx2") inline __m256 ByteOf(__m256i words, int byte) {
    return _mm256_cvtepi32_ps(_mm256_and_si256(_mm256_srli_epi32(words, byte * 8), _mm256_set1_epi32(255)));
}

/// Single bytes, eight at a time, while no gathered word reaches beyond the plane. Returns the first not written.
VELNOR_TARGET("avx2") std::size_t SampleBytesAvx2(Source const& source, RowTaps const& taps, unsigned char* target) {
    constexpr std::int64_t READ = 4;
    std::size_t const samples = taps.column.size();
    std::int64_t const last = source.end - READ - std::max<std::int64_t>(source.below, 0);
    bool const fits = source.end <= std::numeric_limits<std::int32_t>::max() &&
                      source.begin >= std::numeric_limits<std::int32_t>::min() && last >= source.begin;
    if (!fits) return 0;
    __m256i const stride = _mm256_set1_epi32(static_cast<std::int32_t>(source.stride));
    __m256i const lastUpper = _mm256_set1_epi32(static_cast<std::int32_t>(last));
    auto const load = [](auto const& values, std::size_t at) __attribute__((always_inline, target("avx2"))) {
        return _mm256_loadu_si256(reinterpret_cast<__m256i const*>(values.data() + at));
    };
    auto const lower = reinterpret_cast<int const*>(source.samples + source.below);
    std::size_t i = 0;
    for (; i + 8 <= samples; i += 8) {
        __m256i const offsets = _mm256_add_epi32(_mm256_mullo_epi32(load(taps.row, i), stride), load(taps.column, i));
        if (_mm256_movemask_epi8(_mm256_cmpgt_epi32(offsets, lastUpper)) != 0) {
            for (std::size_t k = i; k < i + 8; ++k) SampleOne<1>(source, taps, k, target);
            continue;
        }
        __m256i const above = _mm256_i32gather_epi32(reinterpret_cast<int const*>(source.samples), offsets, 1);
        __m256i const below = _mm256_i32gather_epi32(lower, offsets, 1);
        __m256 const weight = _mm256_castsi256_ps(load(taps.right, i));
        __m256 const a = ByteOf(above, 0);
        __m256 const c = ByteOf(below, 0);
        __m256 const top = _mm256_add_ps(a, _mm256_mul_ps(weight, _mm256_sub_ps(ByteOf(above, 1), a)));
        __m256 const bottom = _mm256_add_ps(c, _mm256_mul_ps(weight, _mm256_sub_ps(ByteOf(below, 1), c)));
        __m256 const down = _mm256_castsi256_ps(load(taps.lower, i));
        __m256 const value =
            _mm256_add_ps(_mm256_add_ps(top, _mm256_mul_ps(down, _mm256_sub_ps(bottom, top))), _mm256_set1_ps(0.5F));
        __m256i const levels = _mm256_cvttps_epi32(value);
        __m128i const words = _mm_packs_epi32(_mm256_castsi256_si128(levels), _mm256_extracti128_si256(levels, 1));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(target + i), _mm_packus_epi16(words, words));
    }
    return i;
}

template <unsigned int Bytes>
void SampleAvx2(Source const& source, RowTaps const& taps, unsigned char* target) {
    std::size_t done = 0;
    if constexpr (Bytes == 1)
        done = SampleBytesAvx2(source, taps, target);
    else
        done = SampleWideAvx2<Bytes>(source, taps, target);
    SampleFrom<Bytes>(source, taps, done, target);
}

#endif

/// Calls `work<sample bytes>()`.
template <class Work>
void WithBytes(unsigned int bytes, Work const& work) {
    switch (bytes) {
    case 1:
        return work.template operator()<1>();
    case 2:
        return work.template operator()<2>();
    case 3:
        return work.template operator()<3>();
    default:
        return work.template operator()<4>();
    }
}

} // namespace

void SplitPositions(float const* x, float const* y, std::uint32_t width, std::uint32_t height, RowTaps& taps) {
    auto const split = SPLIT.Choose();
    split(x, width, taps.column.data(), taps.right.data(), taps.column.size());
    split(y, height, taps.row.data(), taps.lower.data(), taps.row.size());
}

void SampleRow(ConstPlane const& plane, unsigned int sampleBytes, RowTaps const& taps, unsigned char* target) {
    Source const source(plane, sampleBytes);
    WithBytes(sampleBytes, [&]<unsigned int Bytes>() {
        constexpr Variants SAMPLE{
            Variant{Target::Scalar, &SampleAll<Bytes>},
#ifdef VELNOR_X86
            Variant{Target::Avx2, &SampleAvx2<Bytes>},
#endif
        };
        SAMPLE.Choose()(source, taps, target);
    });
}

void SampleRowScalar(ConstPlane const& plane, unsigned int sampleBytes, RowTaps const& taps, unsigned char* target) {
    Source const source(plane, sampleBytes);
    WithBytes(sampleBytes, [&]<unsigned int Bytes>() { SampleAll<Bytes>(source, taps, target); });
}

void WeighRow(ConstPlane const& source, unsigned int sampleBytes, ConstPlane const& alpha, unsigned int alphaByte,
              RowTaps const& taps, unsigned char* target) {
    Source const colours(source, sampleBytes);
    auto const step = static_cast<std::int64_t>(alpha.GetSampleBytes());
    std::int64_t const alphaRight = colours.right > 0 ? step : 0;
    std::int64_t const alphaBelow = colours.below != 0 ? alpha.GetStride() : 0;
    for (std::size_t i = 0; i < taps.column.size(); ++i) {
        unsigned char const* const a = alpha.GetData() + taps.row[i] * alpha.GetStride() + taps.column[i] * step;
        unsigned char const opacities[] = {a[0], a[alphaRight], a[alphaBelow], a[alphaBelow + alphaRight]};
        if (opacities[0] == opacities[1] && opacities[0] == opacities[2] && opacities[0] == opacities[3]) continue;
        float const right = taps.right[i];
        float const lower = taps.lower[i];
        float const weights[] = {(1 - right) * (1 - lower) * opacities[0], right * (1 - lower) * opacities[1],
                                 (1 - right) * lower * opacities[2], right * lower * opacities[3]};
        float const total = weights[0] + weights[1] + weights[2] + weights[3];
        if (total <= 0) continue;
        unsigned char const* const upper =
            colours.samples + taps.row[i] * colours.stride + taps.column[i] * std::int64_t{sampleBytes};
        for (unsigned int k = 0; k < sampleBytes; ++k) {
            if (k == alphaByte) continue;
            unsigned char const* const at = upper + k;
            float const sum = weights[0] * at[0] + weights[1] * at[colours.right] + weights[2] * at[colours.below] +
                              weights[3] * at[colours.below + colours.right];
            target[i * sampleBytes + k] = static_cast<unsigned char>(std::min(sum / total + 0.5F, 255.0F));
        }
    }
}

} // namespace Velnor::Proc::Kernels
