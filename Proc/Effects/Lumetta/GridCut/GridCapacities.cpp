#include "Proc/Effects/Lumetta/GridCut/GridCapacities.h"

#include <algorithm>
#include <cmath>

namespace Velnor::Proc::Kernels {
namespace {

template <unsigned PixelBytes, unsigned First, unsigned Count>
unsigned SquaredDifference(std::uint8_t const* a, std::uint8_t const* b) {
    unsigned sum = 0;
    for (unsigned k = First; k < First + Count; ++k) {
        int const difference = a[k] - b[k];
        sum += static_cast<unsigned>(difference * difference);
    }
    return sum;
}

/// Capacities between `count` pairs of pixels, written for both ways of each pair.
template <unsigned PixelBytes, unsigned First, unsigned Count>
void LinkPairs(std::uint8_t const* a, std::uint8_t const* b, std::size_t count, SimilarityTable const& table,
               std::int16_t* forth, std::int16_t* back) {
    for (std::size_t i = 0; i < count; ++i, a += PixelBytes, b += PixelBytes) {
        std::int16_t const capacity = table[SquaredDifference<PixelBytes, First, Count>(a, b)];
        forth[i] = capacity;
        back[i] = capacity;
    }
}

auto ChooseLinkPairs(ColourBytes const& bytes) {
    if (bytes.pixelBytes == 3) return LinkPairs<3, 0, 3>;
    if (bytes.pixelBytes == 4) return bytes.first == 1 ? LinkPairs<4, 1, 3> : LinkPairs<4, 0, 3>;
    return LinkPairs<1, 0, 1>;
}

} // namespace

std::optional<ColourBytes> ColourBytes::Find(PixFmt format) {
    switch (format) {
    case PixFmt::RGB24:
    case PixFmt::BGR24:
        return ColourBytes{3, 0, 3};
    case PixFmt::ARGB:
    case PixFmt::ABGR:
    case PixFmt::XRGB:
    case PixFmt::XBGR:
        return ColourBytes{4, 1, 3};
    case PixFmt::RGBA:
    case PixFmt::BGRA:
    case PixFmt::RGBX:
    case PixFmt::BGRX:
        return ColourBytes{4, 0, 3};
    case PixFmt::GRAY8:
        return ColourBytes{1, 0, 1};
    default:
        return std::nullopt;
    }
}

SimilarityTable::SimilarityTable(unsigned colourBytes) {
    double const divisor = colourBytes == 3 ? 9.0 : 1.0;
    for (unsigned d = 0; d <= LAST; ++d)
        entries[d] = static_cast<std::int16_t>(std::exp(-static_cast<double>(d) / divisor * 0.0625) * 1024.0 + 1.0);
}

GridCapacities::GridCapacities(std::uint32_t pixelsAcross, std::uint32_t pixelsDown)
    : width(pixelsAcross),
      pixelsCount(width * pixelsDown),
      block(6 * (pixelsCount * sizeof(std::int16_t) + ZeroBlock::LINE)),
      source(block.Take<std::int16_t>(pixelsCount)),
      sink(block.Take<std::int16_t>(pixelsCount)),
      left(block.Take<std::int16_t>(pixelsCount)),
      right(block.Take<std::int16_t>(pixelsCount)),
      up(block.Take<std::int16_t>(pixelsCount)),
      down(block.Take<std::int16_t>(pixelsCount)) {}

void GridCapacities::MarkRow(std::uint32_t y, std::uint8_t const* strokes, std::uint8_t foreground,
                             std::uint8_t background) {
    std::size_t const row = y * width;
    // Only marks are written: where there are none the zeros need not even come into memory.
    for (std::size_t x = 0; x < width; ++x) {
        if (strokes[x] == foreground)
            source[row + x] = STROKE;
        else if (strokes[x] == background)
            sink[row + x] = STROKE;
    }
}

void GridCapacities::LinkRow(std::uint32_t y, std::uint8_t const* pixels, std::uint8_t const* below,
                             ColourBytes const& bytes, SimilarityTable const& table) {
    std::size_t const row = y * width;
    auto const linkPairs = ChooseLinkPairs(bytes);
    linkPairs(pixels, pixels + bytes.pixelBytes, width - 1, table, right + row, left + row + 1);
    if (below != nullptr) linkPairs(pixels, below, width, table, down + row, up + row + width);
}

} // namespace Velnor::Proc::Kernels
