#include "Proc/Effects/Lumetta/Kernels/Luma/LumaMap.h"
#include "Proc/Interfaces/LumaShare.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

template <std::size_t PixelBytes>
void ReadLuma(unsigned char const* pixels, std::uint64_t count, float w0, float w1, float w2, float* luma) {
    for (std::uint64_t x = 0; x < count; ++x, pixels += PixelBytes)
        luma[x] = w0 * static_cast<float>(pixels[0]) + w1 * static_cast<float>(pixels[1]) +
                  w2 * static_cast<float>(pixels[2]);
}

std::uint64_t ReductionOf(std::uint64_t width, std::uint64_t height) {
    return (std::max(width, height) + LumaMap::REDUCED_SIDE - 1) / LumaMap::REDUCED_SIDE;
}

/// The mean luma of each factor x factor block; blocks at the right and at the bottom may be smaller.
void ReduceLuma(ConstPlane const& plane, PackedRgb const& format, std::uint64_t factor, FloatPlane& reduced) {
    std::uint64_t const width = plane.GetWidth() / format.pixelBytes;
    std::vector<float> luma(width);
    std::vector<double> sums(reduced.width);
    for (std::size_t row = 0; row < reduced.height; ++row) {
        std::uint64_t const first = row * factor;
        std::uint64_t const last = std::min(first + factor, plane.GetHeight());
        std::ranges::fill(sums, 0.0);
        for (std::uint64_t y = first; y < last; ++y) {
            ReadLumaRow(plane.GetRow(y), width, format, luma.data());
            for (std::size_t column = 0; column < reduced.width; ++column) {
                float sum = 0;
                for (std::uint64_t x = column * factor; x < std::min((column + 1) * factor, width); ++x) sum += luma[x];
                sums[column] += sum;
            }
        }
        for (std::size_t column = 0; column < reduced.width; ++column) {
            std::uint64_t const columns = std::min(factor, width - column * factor);
            reduced.GetRow(row)[column] =
                static_cast<float>(sums[column] / static_cast<double>(columns * (last - first)));
        }
    }
}

/// Place of a pixel among the reduced samples: the one before it, and the part of the way to the next.
struct Between {
    std::size_t first;
    std::size_t second;
    float part;
};

Between Place(std::uint64_t at, std::uint64_t factor, std::size_t count) {
    double const place = std::clamp((static_cast<double>(at) + 0.5) / static_cast<double>(factor) - 0.5, 0.0,
                                    static_cast<double>(count - 1));
    auto const first = static_cast<std::size_t>(place);
    return {first, std::min(first + 1, count - 1), static_cast<float>(place - static_cast<double>(first))};
}

} // namespace

void ReadLumaRow(unsigned char const* pixels, std::uint64_t count, PackedRgb const& format, float* luma) {
    constexpr float RED = LumaShare<float>::RED / 255.0F;
    constexpr float GREEN = LumaShare<float>::GREEN / 255.0F;
    constexpr float BLUE = LumaShare<float>::BLUE / 255.0F;
    float const first = format.isBlueFirst ? BLUE : RED;
    float const last = format.isBlueFirst ? RED : BLUE;
    if (format.pixelBytes == 3)
        ReadLuma<3>(pixels, count, first, GREEN, last, luma);
    else
        ReadLuma<4>(pixels, count, first, GREEN, last, luma);
}

LumaMap::LumaMap(ConstPlane const& plane, PackedRgb const& format, double radius, double contrast)
    : width(plane.GetWidth() / format.pixelBytes),
      factor(ReductionOf(width, plane.GetHeight())),
      gain((width + factor - 1) / factor, (plane.GetHeight() + factor - 1) / factor),
      offset(gain.width, gain.height),
      left(width),
      part(width),
      gainRow(gain.width + 1),
      offsetRow(gain.width + 1) {
    FloatPlane& mean = offset;
    FloatPlane& square = gain;
    FloatPlane scratch(gain.width, gain.height);
    ReduceLuma(plane, format, factor, mean);
    for (std::size_t i = 0; i < mean.values.size(); ++i) square.values[i] = mean.values[i] * mean.values[i];
    auto const reach = static_cast<std::size_t>(std::lround(std::max(1.0, radius / static_cast<double>(factor))));
    BoxMean(mean, reach, scratch);
    BoxMean(square, reach, scratch);
    auto const epsilon = static_cast<float>(contrast * contrast);
    for (std::size_t i = 0; i < mean.values.size(); ++i) {
        float const level = mean.values[i];
        float const variance = std::max(0.0F, square.values[i] - level * level);
        gain.values[i] = variance / (variance + epsilon);
        offset.values[i] = level * (1 - gain.values[i]);
    }
    BoxMean(gain, reach, scratch);
    BoxMean(offset, reach, scratch);
    for (std::uint64_t x = 0; x < width; ++x) {
        Between const place = Place(x, factor, gain.width);
        left[x] = static_cast<std::uint32_t>(place.first);
        part[x] = place.part;
    }
}

void LumaMap::BlendRows(std::uint64_t y) {
    Between const place = Place(y, factor, gain.height);
    auto const blend = [&](FloatPlane const& plane, std::vector<float>& row) {
        float const* const above = plane.GetRow(place.first);
        float const* const below = plane.GetRow(place.second);
        for (std::size_t x = 0; x < plane.width; ++x) row[x] = above[x] + place.part * (below[x] - above[x]);
        row[plane.width] = row[plane.width - 1]; // the right neighbour of the last sample
    };
    blend(gain, gainRow);
    blend(offset, offsetRow);
}

void LumaMap::SmoothRow(std::uint64_t y, float const* luma, float* smooth) {
    BlendRows(y);
    for (std::uint64_t x = 0; x < width; ++x) {
        float const* const g = &gainRow[left[x]];
        float const* const o = &offsetRow[left[x]];
        smooth[x] = (g[0] + part[x] * (g[1] - g[0])) * luma[x] + o[0] + part[x] * (o[1] - o[0]);
    }
}

} // namespace Velnor::Proc::Kernels
