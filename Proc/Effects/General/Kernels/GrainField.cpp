#include "Proc/Effects/General/Kernels/GrainField.h"

#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

/// Mean 0 and deviation 1.
float ToNormal(std::array<std::uint32_t, 4> const& bits) {
    std::uint32_t sum = 0;
    for (std::uint32_t const word : bits)
        sum += (word & 255U) + (word >> 8 & 255U) + (word >> 16 & 255U) + (word >> 24);
    constexpr float MEAN = 16 * 127.5F;
    constexpr float DEVIATION = 295.6010F; // sqrt(16 (256^2 - 1) / 12)
    return (static_cast<float>(sum) - MEAN) / DEVIATION;
}

float ToUniform(std::uint32_t bits) {
    constexpr float DEVIATION = 4842756.5F; // 2^24 / sqrt(12)
    return (static_cast<float>(bits >> 8) - 8388607.5F) / DEVIATION;
}

/// Share of the next grain at a fraction of the way to it.
float Smooth(float t) { return t * t * (3 - 2 * t); }

} // namespace

std::array<std::uint32_t, 4> Philox(std::array<std::uint32_t, 4> counter, std::array<std::uint32_t, 2> key) {
    for (int round = 0; round < 10; ++round) {
        std::uint64_t const first = std::uint64_t{0xD2511F53U} * counter[0];
        std::uint64_t const second = std::uint64_t{0xCD9E8D57U} * counter[2];
        counter = {static_cast<std::uint32_t>(second >> 32) ^ counter[1] ^ key[0], static_cast<std::uint32_t>(second),
                   static_cast<std::uint32_t>(first >> 32) ^ counter[3] ^ key[1], static_cast<std::uint32_t>(first)};
        key = {key[0] + 0x9E3779B9U, key[1] + 0xBB67AE85U};
    }
    return counter;
}

GrainField::GrainField(std::uint32_t seed, std::uint32_t channel, float size, bool uniform, std::uint32_t width)
    : seedKey(seed), channelKey(channel), grainSize(size), isUniform(uniform), noise(width) {
    std::size_t const grains = static_cast<std::size_t>(static_cast<float>(width) / size) + 2;
    upper.resize(grains);
    lower.resize(grains);
}

void GrainField::FillGrains(std::uint32_t row, std::vector<float>& grains) const {
    for (std::size_t i = 0; i < grains.size(); ++i) {
        auto const bits = Philox({static_cast<std::uint32_t>(i), row, 0, 0}, {seedKey, channelKey});
        grains[i] = isUniform ? ToUniform(bits[0]) : ToNormal(bits);
    }
}

float const* GrainField::GetRow(std::uint32_t y) {
    float const place = static_cast<float>(y) / grainSize;
    auto const row = static_cast<std::int64_t>(place);
    if (row != upperRow) {
        if (upperRow >= 0 && row == upperRow + 1)
            upper.swap(lower);
        else
            FillGrains(static_cast<std::uint32_t>(row), upper);
        FillGrains(static_cast<std::uint32_t>(row + 1), lower);
        upperRow = row;
    }
    float const down = Smooth(place - static_cast<float>(row));
    float const rowGain = (1 - down) * (1 - down) + down * down;
    for (std::size_t x = 0; x < noise.size(); ++x) {
        float const at = static_cast<float>(x) / grainSize;
        auto const i = static_cast<std::size_t>(at);
        float const right = Smooth(at - static_cast<float>(i));
        float const above = upper[i] + right * (upper[i + 1] - upper[i]);
        float const below = lower[i] + right * (lower[i + 1] - lower[i]);
        // A mean of independent numbers varies less than they do.
        float const gain = rowGain * ((1 - right) * (1 - right) + right * right);
        noise[x] = (above + down * (below - above)) / std::sqrt(gain);
    }
    return noise.data();
}

} // namespace Velnor::Proc::Kernels
