#include "Proc/Effects/Lumetta/Kernels/Blur/TurnedMean.h"

#include "Proc/Effects/Kit/Targets.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#ifdef VELNOR_X86
#include <emmintrin.h>
#endif

namespace Velnor::Proc::Kernels {
namespace {

/// Positions in 1/65536 pixel.
constexpr int FRACTION_BITS = 16;
constexpr int WEIGHT_BITS = 8;
constexpr int ONE = 1 << WEIGHT_BITS;
constexpr int SHIFT = 2 * WEIGHT_BITS + 1; ///< Of a sum over both positions.

struct Walk {
    std::int64_t x, y, stepX, stepY;
};

/// Where row y of the target begins in the source, and the way to the next pixel.
Walk MakeWalk(Similarity const& map, std::uint64_t y) {
    auto const fixed = [](double value) { return std::llround(value * (1 << FRACTION_BITS)); };
    double const dy = static_cast<double>(y) - map.centerY;
    double const x0 = map.centerX - map.a * map.centerX - map.b * dy;
    double const y0 = map.centerY - map.b * map.centerX + map.a * dy;
    return {fixed(x0), fixed(y0), fixed(map.a), fixed(map.b)};
}

/// The four neighbours of a position and their weights.
struct Corners {
    std::array<unsigned char const*, 4> at;
    std::array<int, 4> weight;
};

template <std::size_t Bytes>
Corners FindCorners(ConstPlane const& source, std::int64_t x, std::int64_t y) {
    auto const lastX = static_cast<std::int64_t>(source.GetWidth() / Bytes) - 1;
    auto const lastY = static_cast<std::int64_t>(source.GetHeight()) - 1;
    x = std::clamp<std::int64_t>(x, 0, lastX << FRACTION_BITS);
    y = std::clamp<std::int64_t>(y, 0, lastY << FRACTION_BITS);
    std::int64_t const left = x >> FRACTION_BITS;
    std::int64_t const top = y >> FRACTION_BITS;
    unsigned char const* const upper = source.GetData() + top * source.GetStride();
    unsigned char const* const lower = top < lastY ? upper + source.GetStride() : upper;
    std::int64_t const right = left < lastX ? left + 1 : left;
    int const u = static_cast<int>(x >> (FRACTION_BITS - WEIGHT_BITS)) & (ONE - 1);
    int const v = static_cast<int>(y >> (FRACTION_BITS - WEIGHT_BITS)) & (ONE - 1);
    constexpr auto STEP = static_cast<std::int64_t>(Bytes);
    return {{upper + left * STEP, upper + right * STEP, lower + left * STEP, lower + right * STEP},
            {(ONE - u) * (ONE - v), u * (ONE - v), (ONE - u) * v, u * v}};
}

/// Sums of both positions' neighbours, weighted, in each byte of a pixel.
template <std::size_t Bytes>
void WriteMean(ConstPlane const& source, Walk const& one, Walk const& other, unsigned char* to) {
    Corners const p = FindCorners<Bytes>(source, one.x, one.y);
    Corners const q = FindCorners<Bytes>(source, other.x, other.y);
    for (std::size_t k = 0; k < Bytes; ++k) {
        int sum = 1 << (SHIFT - 1);
        for (std::size_t c = 0; c < 4; ++c) sum += p.weight[c] * p.at[c][k] + q.weight[c] * q.at[c][k];
        to[k] = static_cast<unsigned char>(sum >> SHIFT);
    }
}

/// Pixels of a row.
struct Span {
    std::int64_t begin, end;
};

#ifdef VELNOR_X86
/// Steps at which `at` is from 0 to below `limit`.
Span StepsInside(std::int64_t at, std::int64_t step, std::int64_t limit, std::int64_t count) {
    if (step < 0) return StepsInside(limit - 1 - at, -step, limit, count);
    if (step == 0) return {0, at >= 0 && at < limit ? count : 0};
    auto const until = [=](std::int64_t border) { return border <= at ? 0 : (border - at - 1) / step + 1; };
    return {std::min(until(0), count), std::min(until(limit), count)};
}

Span Common(Span const& a, Span const& b) {
    std::int64_t const begin = std::max(a.begin, b.begin);
    return {begin, std::max(begin, std::min(a.end, b.end))};
}

/// The same along a walk whose four neighbours, and what is read together with them, lie in the plane: all bytes of a
/// pixel at a time.
template <std::size_t Bytes>
class InnerWalk {
public:
    static Span FindInside(ConstPlane const& plane, Walk const& walk, std::int64_t count) {
        auto const width = static_cast<std::int64_t>(plane.GetWidth());
        auto const height = static_cast<std::int64_t>(plane.GetHeight());
        std::int64_t const columns = width >= READ ? (width - READ) / STEP + 1 : 0;
        return Common(StepsInside(walk.x, walk.stepX, columns << FRACTION_BITS, count),
                      StepsInside(walk.y, walk.stepY, (height - 1) << FRACTION_BITS, count));
    }

    InnerWalk(ConstPlane const& plane, Walk const& start, std::int64_t skipped)
        : data(plane.GetData()),
          stride(plane.GetStride()),
          walk{start.x + skipped * start.stepX, start.y + skipped * start.stepY, start.stepX, start.stepY},
          across(Spread(walk.x)),
          down(Spread(walk.y)),
          stepAcross(Spread(walk.stepX)),
          stepDown(Spread(walk.stepY)) {}

    /// The weighted sums of the pixel's bytes, less LACK, and on to the next pixel.
    __m128i Next() {
        unsigned char const* const at = data + (walk.y >> FRACTION_BITS) * stride + (walk.x >> FRACTION_BITS) * STEP;
        __m128i const none = _mm_setzero_si128();
        __m128i const lower = _mm_srli_epi16(down, FRACTION_BITS - WEIGHT_BITS);
        __m128i const upper = _mm_sub_epi16(_mm_set1_epi16(ONE), lower);
        // Of both columns, the left one's bytes before the right one's.
        __m128i const sums = _mm_add_epi16(_mm_mullo_epi16(_mm_unpacklo_epi8(Read(at), none), upper),
                                           _mm_mullo_epi16(_mm_unpacklo_epi8(Read(at + stride), none), lower));
        __m128i const inTurn = _mm_unpacklo_epi16(sums, _mm_srli_si128(sums, 2 * Bytes));
        __m128i const centred = _mm_xor_si128(inTurn, _mm_set1_epi16(std::numeric_limits<short>::min()));
        // ONE - right in the even words, right in the odd ones.
        __m128i const right = _mm_srli_epi16(across, FRACTION_BITS - WEIGHT_BITS);
        __m128i const weights = _mm_add_epi16(_mm_xor_si128(right, _mm_set1_epi32(0xffff)), _mm_set1_epi32(ONE + 1));
        walk.x += walk.stepX;
        walk.y += walk.stepY;
        across = _mm_add_epi16(across, stepAcross);
        down = _mm_add_epi16(down, stepDown);
        return _mm_madd_epi16(centred, weights);
    }

    /// Words from 0 to 65535 are multiplied as signed ones about their middle; the weights' sum is ONE.
    static constexpr int LACK = ONE << 15;

private:
    static constexpr auto STEP = static_cast<std::int64_t>(Bytes);
    static constexpr std::int64_t READ = 8; ///< Bytes of a row.

    static __m128i Spread(std::int64_t value) { return _mm_set1_epi16(static_cast<short>(value)); }
    static __m128i Read(unsigned char const* at) { return _mm_loadl_epi64(reinterpret_cast<__m128i const*>(at)); }

    unsigned char const* data;
    std::int64_t stride;
    Walk walk;
    __m128i across, down; ///< The fractions of the place, which wrap around.
    __m128i stepAcross, stepDown;
};

/// Writes the part of a row where both walks are inside.
template <std::size_t Bytes>
Span WriteInside(ConstPlane const& source, Walk const& one, Walk const& other, unsigned char* to, std::int64_t count) {
    using Inner = InnerWalk<Bytes>;
    Span const inside = Common(Inner::FindInside(source, one, count), Inner::FindInside(source, other, count));
    Inner first(source, one, inside.begin);
    Inner second(source, other, inside.begin);
    __m128i const rounding = _mm_set1_epi32(2 * Inner::LACK + (1 << (SHIFT - 1)));
    to += static_cast<std::size_t>(inside.begin) * Bytes;
    for (std::int64_t i = inside.begin; i < inside.end; ++i, to += Bytes) {
        __m128i const sums = _mm_add_epi32(_mm_add_epi32(first.Next(), second.Next()), rounding);
        __m128i const means = _mm_srli_epi32(sums, SHIFT);
        __m128i const words = _mm_packs_epi32(means, means);
        int const pixel = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
        std::memcpy(to, &pixel, Bytes);
    }
    return inside;
}
#endif

template <std::size_t Bytes>
Span WriteNothing(ConstPlane const&, Walk const&, Walk const&, unsigned char*, std::int64_t) {
    return {0, 0};
}

template <std::size_t Bytes>
void WriteNearBorder(ConstPlane const& source, Walk const& one, Walk const& other, unsigned char* to,
                     Span const& pixels) {
    for (std::int64_t i = pixels.begin; i < pixels.end; ++i)
        WriteMean<Bytes>(source, {one.x + i * one.stepX, one.y + i * one.stepY, 0, 0},
                         {other.x + i * other.stepX, other.y + i * other.stepY, 0, 0},
                         to + static_cast<std::size_t>(i) * Bytes);
}

template <std::size_t Bytes>
void MeanRows(ConstPlane const& source, MutablePlane const& target, Similarity const& first, Similarity const& second) {
    constexpr Variants INSIDE{
        Variant{Target::Scalar, &WriteNothing<Bytes>},
#ifdef VELNOR_X86
        Variant{Target::Sse2, &WriteInside<Bytes>},
#endif
    };
    auto const width = static_cast<std::int64_t>(target.GetWidth() / Bytes);
    for (std::uint64_t row = 0; row < target.GetHeight(); ++row) {
        Walk const one = MakeWalk(first, row);
        Walk const other = MakeWalk(second, row);
        unsigned char* const to = target.GetRow(row);
        Span const inside = INSIDE.Choose()(source, one, other, to, width);
        WriteNearBorder<Bytes>(source, one, other, to, {0, inside.begin});
        WriteNearBorder<Bytes>(source, one, other, to, {inside.end, width});
    }
}

/// A pixel's mean with weights times alpha; it stays where those are equal.
template <std::size_t Bytes>
void WeighPixel(ConstPlane const& source, ConstPlane const& alpha, int alphaByte, Walk const& one, Walk const& other,
                unsigned char* to) {
    Corners const opacity[] = {FindCorners<Bytes>(alpha, one.x, one.y), FindCorners<Bytes>(alpha, other.x, other.y)};
    std::array<std::int64_t, 8> weights;
    std::int64_t total = 0;
    int least = 255;
    int most = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        Corners const& corners = opacity[i / 4];
        int const value = *corners.at[i % 4];
        least = std::min(least, value);
        most = std::max(most, value);
        weights[i] = std::int64_t{corners.weight[i % 4]} * value;
        total += weights[i];
    }
    if (least == most || total == 0) return;
    Corners const colours[] = {FindCorners<Bytes>(source, one.x, one.y), FindCorners<Bytes>(source, other.x, other.y)};
    for (std::size_t k = 0; k < Bytes; ++k) {
        if (static_cast<int>(k) == alphaByte) continue;
        std::int64_t sum = total / 2;
        for (std::size_t i = 0; i < weights.size(); ++i) sum += weights[i] * colours[i / 4].at[i % 4][k];
        to[k] = static_cast<unsigned char>(sum / total);
    }
}

template <std::size_t Bytes>
void WeighRows(ConstPlane const& source, MutablePlane const& target, ConstPlane const& alpha, int alphaByte,
               Similarity const& first, Similarity const& second) {
    for (std::uint64_t row = 0; row < target.GetHeight(); ++row) {
        Walk one = MakeWalk(first, row);
        Walk other = MakeWalk(second, row);
        unsigned char* to = target.GetRow(row);
        for (std::uint64_t x = 0; x < target.GetWidth() / Bytes; ++x, to += Bytes) {
            WeighPixel<Bytes>(source, alpha, alphaByte, one, other, to);
            for (Walk* walk : {&one, &other}) {
                walk->x += walk->stepX;
                walk->y += walk->stepY;
            }
        }
    }
}

} // namespace

void WeighMeanOfTwo(ConstPlane const& source, MutablePlane const& target, unsigned int pixelBytes,
                    ConstPlane const& alpha, int alphaByte, Similarity const& first, Similarity const& second) {
    constexpr std::array LOOPS{&WeighRows<1>, &WeighRows<2>, &WeighRows<3>, &WeighRows<4>};
    LOOPS.at(pixelBytes - 1)(source, target, alpha, alphaByte, first, second);
}

void MeanOfTwo(ConstPlane const& source, MutablePlane const& target, unsigned int pixelBytes, Similarity const& first,
               Similarity const& second) {
    constexpr std::array LOOPS{&MeanRows<1>, &MeanRows<2>, &MeanRows<3>, &MeanRows<4>};
    LOOPS.at(pixelBytes - 1)(source, target, first, second);
}

} // namespace Velnor::Proc::Kernels
