#include "Proc/Effects/Lumetta/Kernels/TurnedMean.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace Velnor::Proc::Kernels {
namespace {

/// Positions in 1/65536 pixel.
constexpr int FRACTION_BITS = 16;
constexpr int WEIGHT_BITS = 8;

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
    constexpr int ONE = 1 << WEIGHT_BITS;
    int const u = static_cast<int>(x >> (FRACTION_BITS - WEIGHT_BITS)) & (ONE - 1);
    int const v = static_cast<int>(y >> (FRACTION_BITS - WEIGHT_BITS)) & (ONE - 1);
    constexpr auto STEP = static_cast<std::int64_t>(Bytes);
    return {{upper + left * STEP, upper + right * STEP, lower + left * STEP, lower + right * STEP},
            {(ONE - u) * (ONE - v), u * (ONE - v), (ONE - u) * v, u * v}};
}

template <std::size_t Bytes>
void MeanRows(ConstPlane const& source, MutablePlane const& target, Similarity const& first, Similarity const& second) {
    constexpr int SHIFT = 2 * WEIGHT_BITS + 1;
    std::uint64_t const width = target.GetWidth() / Bytes;
    for (std::uint64_t row = 0; row < target.GetHeight(); ++row) {
        Walk one = MakeWalk(first, row);
        Walk other = MakeWalk(second, row);
        unsigned char* to = target.GetRow(row);
        for (std::uint64_t i = 0; i < width; ++i, to += Bytes) {
            Corners const p = FindCorners<Bytes>(source, one.x, one.y);
            Corners const q = FindCorners<Bytes>(source, other.x, other.y);
            for (std::size_t k = 0; k < Bytes; ++k) {
                int sum = 1 << (SHIFT - 1);
                for (std::size_t c = 0; c < 4; ++c) sum += p.weight[c] * p.at[c][k] + q.weight[c] * q.at[c][k];
                to[k] = static_cast<unsigned char>(sum >> SHIFT);
            }
            one.x += one.stepX;
            one.y += one.stepY;
            other.x += other.stepX;
            other.y += other.stepY;
        }
    }
}

} // namespace

void MeanOfTwo(ConstPlane const& source, MutablePlane const& target, unsigned int pixelBytes, Similarity const& first,
               Similarity const& second) {
    constexpr std::array LOOPS{&MeanRows<1>, &MeanRows<2>, &MeanRows<3>, &MeanRows<4>};
    LOOPS.at(pixelBytes - 1)(source, target, first, second);
}

} // namespace Velnor::Proc::Kernels
